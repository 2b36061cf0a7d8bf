import QtQuick
import "components"

// Every kind of help in one popup: paid letters and removal, a skip, and the free options.
Item {
    id: view
    property QtObject controller

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.6
    }
    MouseArea {
        anchors.fill: parent
        onClicked: view.controller.dismissPopupViewAction()
        Accessible.role: Accessible.Button
        Accessible.name: A11y.text("a11y.close")
        Accessible.ignored: !enabled
        Accessible.onPressAction: view.controller.dismissPopupViewAction()
    }
    Rectangle {
        objectName: "revealViewCard"
        Accessible.role: Accessible.Dialog
        Accessible.name: "تحتاج مساعدة؟"
        Accessible.ignored: !enabled
        width: parent.width * 0.86
        height: column.implicitHeight + 36
        anchors.centerIn: parent
        radius: 22
        color: Theme.paper
        border.color: Theme.gold
        border.width: 3
        MouseArea {
            anchors.fill: parent
        }
        Column {
            id: column
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 18
            spacing: 10
            Text {
                Accessible.role: Accessible.Heading
                Accessible.name: text
                Accessible.ignored: !enabled
                width: parent.width
                text: "تحتاج مساعدة؟"
                font.family: Theme.fontFamily
                font.pixelSize: 22
                font.bold: true
                color: Theme.ink
                horizontalAlignment: Text.AlignHCenter
            }
            Repeater {
                model: [
                    // "key": the digit of the option's shortcut on the play screen (Ctrl+digit).
                    { "tag": 51, "key": 1, "t": "كشف حرف", "c": "50 ذهبة" },
                    { "tag": 52, "key": 2, "t": "حذف الحروف الخاطئة", "c": "100 ذهبة" },
                    { "tag": 53, "key": 3, "t": "تجاوز المرحلة", "c": "تجاوز واحد" },
                    { "tag": 54, "key": 5, "t": "شاهد فيديو واربح ذهبا", "c": "مجانا" },
                    { "tag": 55, "key": 6, "t": "شارك اللعبة عبر واتس اب", "c": "مجانا" },
                    { "tag": 1, "key": 7, "t": "شارك المرحلة واكشف حرفا", "c": "مجانا" },
                    { "tag": 2, "key": 8, "t": "انتظر الحل بتنبيه", "c": "مجانا" }
                ]
                delegate: Rectangle {
                    objectName: "revealOption" + modelData.tag
                    Accessible.role: Accessible.Button
                    Accessible.name: modelData.t
                    Accessible.description: modelData.c
                    Accessible.ignored: !visible || !enabled
                    Accessible.onPressAction: choose()
                    // Tab walks the options (their tooltips show on focus), Enter or Space chooses one.
                    activeFocusOnTab: visible
                    visible: modelData.tag !== 1 || view.controller.shareRevealVisible
                    width: column.width
                    height: visible ? 44 : 0
                    radius: 12
                    color: area.pressed ? "#f0e0b8" : "#fbf0d6"
                    function choose() {
                        if (modelData.tag === 1) {
                            view.controller.dismissPopupViewAction()
                            view.controller.shareAppAndReveal(null)
                        } else if (modelData.tag === 2) {
                            view.controller.dismissPopupViewAction()
                            view.controller.scheduleSolutionNotification(null)
                        } else {
                            view.controller.revealViewGeneralAction(modelData.tag)
                        }
                    }
                    border.color: activeFocus ? Theme.focus : "#e2c98a"
                    border.width: activeFocus ? 3 : 1
                    Text {
                        anchors.right: parent.right
                        anchors.rightMargin: 14
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.t
                        font.family: Theme.fontFamily
                        font.pixelSize: 15
                        color: Theme.ink
                    }
                    Text {
                        anchors.left: parent.left
                        anchors.leftMargin: 14
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.c
                        font.family: Theme.fontFamily
                        font.pixelSize: 13
                        font.bold: true
                        color: modelData.c === "مجانا" ? Theme.green : "#9a6a00"
                    }
                    ShortcutTip {
                        hovered: area.containsMouse
                        text: view.controller.helpToolTip(modelData.key)
                    }
                    MouseArea {
                        id: area
                        anchors.fill: parent
                        hoverEnabled: true
                        onClicked: parent.choose()
                    }
                }
            }
        }
    }
}
