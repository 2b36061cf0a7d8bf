import QtQuick
import QtQuick.Controls
import ".."
import "../components"

// A battle with an automatically matched player: the two sides, what each outcome brings, the message and
// the play button.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea { anchors.fill: parent }
    TopBar {
        id: bar
        width: parent.width
        title: "معركة تحدي"
        onBack: controller.close()
    }
    Column {
        anchors.top: bar.bottom
        anchors.topMargin: 18 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 32 * screen.u
        spacing: 14 * screen.u

        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 18 * screen.u
            Column {
                spacing: 6 * screen.u
                PlayerFace {
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: 84 * screen.u; height: width
                    playerID: controller.senderID; name: controller.senderName
                }
                Text {
                    objectName: "senderLabel"
                    anchors.horizontalCenter: parent.horizontalCenter
                    text: controller.senderName
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    font.bold: true
                    color: "#ffffff"
                }
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: "⚔"
                font.pixelSize: 40 * screen.u
                color: Theme.gold
            }
            Column {
                spacing: 6 * screen.u
                PlayerFace {
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: 84 * screen.u; height: width
                    playerID: controller.receiverID; name: controller.receiverName
                }
                Text {
                    objectName: "receiverLabel"
                    anchors.horizontalCenter: parent.horizontalCenter
                    text: controller.hasMatch ? controller.receiverName : "…"
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    font.bold: true
                    color: "#ffffff"
                }
            }
        }
        Rectangle {
            visible: controller.senderMessageVisible
            width: parent.width
            height: messageColumn.implicitHeight + 20 * screen.u
            radius: 14 * screen.u
            color: "#26ffffff"
            Column {
                id: messageColumn
                anchors.centerIn: parent
                width: parent.width - 24 * screen.u
                Text {
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    text: "رسالة المتحدي"
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: "#ccffffff"
                }
                Text {
                    objectName: "senderMessageLabel"
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    text: controller.senderMessage
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    color: "#ffffff"
                }
            }
        }
        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 6 * screen.u
            Repeater {
                model: [
                    { "text": controller.winTitle, "tint": Theme.green },
                    { "text": controller.drawTitle, "tint": Theme.accent },
                    { "text": controller.loseTitle, "tint": Theme.red }
                ]
                delegate: Rectangle {
                    width: 250 * screen.u
                    height: 32 * screen.u
                    radius: height / 2
                    color: Qt.rgba(modelData.tint.r, modelData.tint.g, modelData.tint.b, 0.35)
                    border.color: modelData.tint
                    Text {
                        anchors.centerIn: parent
                        text: modelData.text
                        font.family: Theme.fontFamily
                        font.pixelSize: 13 * screen.u
                        color: "#ffffff"
                    }
                }
            }
        }
        TextField {
            // Return puts the keyboard away.
            onAccepted: focus = false
            id: message
            objectName: "messageTextField"
            width: parent.width
            height: 42 * screen.u
            enabled: controller.hasMatch
            placeholderText: controller.isNewMatch ? "رسالة للاعب الذي سيواجهك" : "ردك على المتحدي"
            font.family: Theme.fontFamily
            font.pixelSize: 15 * screen.u
            horizontalAlignment: TextInput.AlignRight
            maximumLength: 100
        }
        GameButton {
            objectName: "playTheTurn"
            anchors.horizontalCenter: parent.horizontalCenter
            width: 220 * screen.u
            height: 46 * screen.u
            fontSize: 17 * screen.u
            opacity: controller.hasMatch ? 1 : 0.5
            text: controller.isNewMatch ? "ابدأ المعركة" : "العب دورك"
            onClicked: controller.playTheTurn(message.text)
        }
    }
}
