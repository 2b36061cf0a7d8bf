import QtQuick
import "components"

// How to play, over a dark layer; a tap anywhere closes it.
Item {
    id: popup
    signal dismissed()
    signal creditsRequested()

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.75
    }
    MouseArea {
        anchors.fill: parent
        onClicked: popup.dismissed()
    }
    Rectangle {
        objectName: "helpCard"
        width: parent.width * 0.86
        height: column.implicitHeight + 40
        anchors.centerIn: parent
        radius: 22
        color: Theme.paper
        border.color: Theme.gold
        border.width: 3

        Column {
            id: column
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 20
            spacing: 14

            Text {
                width: parent.width
                text: "كيف تلعب؟"
                font.family: Theme.fontFamily
                font.pixelSize: 24
                font.bold: true
                color: Theme.ink
                horizontalAlignment: Text.AlignHCenter
            }
            Repeater {
                model: [
                    { "n": "1", "t": "أربع صور تشترك في كلمة واحدة." },
                    { "n": "2", "t": "المس حرفاً لينتقل إلى أول خانة فارغة." },
                    { "n": "3", "t": "المس حرفاً في الخانات لتعيده إلى مكانه." },
                    { "n": "4", "t": "المس صورة لتكبيرها، والمسها مرة أخرى لتصغيرها." }
                ]
                delegate: Row {
                    width: column.width
                    spacing: 10
                    Rectangle {
                        width: 30
                        height: 30
                        radius: 15
                        color: Theme.gold
                        Text {
                            anchors.centerIn: parent
                            text: modelData.n
                            font.family: Theme.fontFamily
                            font.pixelSize: 15
                            font.bold: true
                            color: Theme.ink
                        }
                    }
                    Text {
                        width: parent.width - 40
                        text: modelData.t
                        font.family: Theme.fontFamily
                        font.pixelSize: 15
                        color: "#4a3b22"
                        wrapMode: Text.WordWrap
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
            Text {
                objectName: "creditsLink"
                width: parent.width
                text: "حقوق الصور والخط"
                font.family: Theme.fontFamily
                font.pixelSize: 13
                font.underline: true
                color: Theme.accent
                horizontalAlignment: Text.AlignHCenter
                MouseArea {
                    anchors.fill: parent
                    onClicked: popup.creditsRequested()
                }
            }
            Text {
                width: parent.width
                text: "المس الشاشة للبدء"
                font.family: Theme.fontFamily
                font.pixelSize: 14
                color: "#8a7a5a"
                horizontalAlignment: Text.AlignHCenter
            }
        }
    }
}
