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
    }
    Rectangle {
        objectName: "revealViewCard"
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
                    { "tag": 51, "t": "كشف حرف", "c": "50 ذهبة" },
                    { "tag": 52, "t": "حذف الحروف الخاطئة", "c": "100 ذهبة" },
                    { "tag": 53, "t": "تجاوز المرحلة", "c": "تجاوز واحد" },
                    { "tag": 54, "t": "شاهد فيديو واربح ذهبا", "c": "مجانا" },
                    { "tag": 55, "t": "شارك اللعبة عبر واتس اب", "c": "مجانا" },
                    { "tag": 1, "t": "شارك المرحلة واكشف حرفا", "c": "مجانا" },
                    { "tag": 2, "t": "انتظر الحل بتنبيه", "c": "مجانا" }
                ]
                delegate: Rectangle {
                    objectName: "revealOption" + modelData.tag
                    visible: modelData.tag !== 1 || view.controller.shareRevealVisible
                    width: column.width
                    height: visible ? 44 : 0
                    radius: 12
                    color: area.pressed ? "#f0e0b8" : "#fbf0d6"
                    border.color: "#e2c98a"
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
                    MouseArea {
                        id: area
                        anchors.fill: parent
                        onClicked: {
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
                    }
                }
            }
        }
    }
}
