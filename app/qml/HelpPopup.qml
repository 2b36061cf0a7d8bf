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
    // What a screen reader finds: a dialog with its heading, the four steps, the credits link and a button that
    // does what the tap anywhere does.
    Rectangle {
        objectName: "helpCard"
        Accessible.role: Accessible.Dialog
        Accessible.name: "كيف تلعب؟"
        Accessible.ignored: !enabled
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
                Accessible.role: Accessible.Heading
                Accessible.name: text
                Accessible.ignored: !enabled
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
                    Accessible.role: Accessible.StaticText
                    Accessible.name: modelData.n + ". " + modelData.t
                    Accessible.ignored: !enabled
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
                Accessible.role: Accessible.Link
                Accessible.name: text
                Accessible.ignored: !enabled
                Accessible.onPressAction: popup.creditsRequested()
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
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.start")
                Accessible.description: text
                Accessible.ignored: !enabled
                Accessible.onPressAction: popup.dismissed()
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
