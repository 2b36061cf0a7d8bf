import QtQuick
import "components"

// The share panel of a screen, over a dimmed layer that closes it: the picture of the screen (in the picture
// form) and the buttons of the targets, by their tags.
Item {
    id: panelLayer
    objectName: "shareLayer"
    property QtObject view
    signal dismissed()

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.5
    }
    MouseArea {
        anchors.fill: parent
        onClicked: panelLayer.dismissed()
        Accessible.role: Accessible.Button
        Accessible.name: A11y.text("a11y.close")
        Accessible.ignored: !enabled
        Accessible.onPressAction: panelLayer.dismissed()
    }

    Rectangle {
        id: panel
        objectName: "shareView"
        Accessible.role: Accessible.Dialog
        Accessible.name: title.text
        Accessible.ignored: !enabled
        width: parent.width * 0.86
        height: column.implicitHeight + 32
        anchors.centerIn: parent
        radius: panelLayer.view ? panelLayer.view.cornerRadius : 10
        color: Theme.paper
        border.color: Theme.gold
        border.width: 3
        MouseArea { anchors.fill: parent }

        Column {
            id: column
            anchors.top: parent.top
            anchors.topMargin: 16
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width - 32
            spacing: 12

            Text {
                id: title
                Accessible.role: Accessible.Heading
                Accessible.name: text
                Accessible.ignored: !enabled
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: panelLayer.view && panelLayer.view.imageForm ? "استعن بأصدقائك" : "شارك اللعبة"
                font.family: Theme.fontFamily
                font.pixelSize: 20
                font.bold: true
                color: Theme.ink
            }
            Text {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
                visible: panelLayer.view && panelLayer.view.imageForm
                text: "أرسل صورة المرحلة لأصدقائك ليساعدوك في الحل"
                font.family: Theme.fontFamily
                font.pixelSize: 13
                color: "#6b5a3a"
            }
            // Tag 90: the picture that goes out.
            Rectangle {
                visible: panelLayer.view && panelLayer.view.imageForm
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(parent.width, 180)
                height: width * 1.25
                radius: 8
                color: "#20000000"
                Image {
                    objectName: "shareViewPreview"
                    anchors.fill: parent
                    anchors.margins: 4
                    fillMode: Image.PreserveAspectFit
                    source: panelLayer.view ? panelLayer.view.screenshotSource : ""
                    cache: false
                }
            }
            Grid {
                anchors.horizontalCenter: parent.horizontalCenter
                columns: 3
                columnSpacing: 14
                rowSpacing: 8
                Repeater {
                    model: panelLayer.view ? panelLayer.view.buttons : []
                    delegate: BrandIcon {
                        objectName: "shareButton" + modelData.tag
                        side: 50
                        glyph: modelData.glyph
                        disc: modelData.color
                        glyphColor: modelData.color === "#fffc00" || modelData.color === "#f9c32d" ? "#2b2b2b" : "#ffffff"
                        name: modelData.name
                        onTapped: panelLayer.view.buttonTapped(modelData.tag)
                    }
                }
            }
        }
    }
}
