import QtQuick
import QtQuick.Controls
import ".."
import "../components"

// A friend request: the players it goes to, the message they will read, and the send button.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea {
        anchors.fill: parent
        onClicked: messageArea.focus = false
    }
    TopBar {
        id: bar
        width: parent.width
        title: "طلب صداقة"
        onBack: controller.cancel()
    }
    Column {
        anchors.top: bar.bottom
        anchors.topMargin: 14 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width - 28 * screen.u, 560 * screen.u)
        spacing: 12 * screen.u
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignLeft // mirrored: the right edge
            font.family: Theme.fontFamily
            font.pixelSize: 15 * screen.u
            font.bold: true
            color: "#ffffff"
            text: "إلى"
        }
        Flow {
            objectName: "recipients"
            width: parent.width
            spacing: 8 * screen.u
            Repeater {
                model: controller.recipients
                delegate: Rectangle {
                    objectName: "recipient_" + modelData.playerID
                    height: 36 * screen.u
                    width: chip.implicitWidth + 18 * screen.u
                    radius: height / 2
                    color: "#33ffffff"
                    border.color: "#66ffffff"
                    Row {
                        id: chip
                        anchors.centerIn: parent
                        spacing: 6 * screen.u
                        PlayerFace {
                            width: 26 * screen.u; height: width
                            anchors.verticalCenter: parent.verticalCenter
                            playerID: modelData.playerID; name: modelData.name
                        }
                        Text {
                            anchors.verticalCenter: parent.verticalCenter
                            font.family: Theme.fontFamily
                            font.pixelSize: 15 * screen.u
                            color: "#ffffff"
                            text: modelData.name
                        }
                        Text {
                            objectName: "remove_" + modelData.playerID
                            anchors.verticalCenter: parent.verticalCenter
                            visible: controller.recipients.length > 1
                            font.pixelSize: 15 * screen.u
                            color: "#ccffffff"
                            text: "✕"
                            MouseArea {
                                anchors.fill: parent
                                anchors.margins: -8 * screen.u
                                onClicked: controller.removeRecipient(modelData.playerID)
                                Accessible.role: Accessible.Button
                                Accessible.name: A11y.text("a11y.removeRecipient").arg(modelData.name)
                                Accessible.ignored: !enabled || !parent.visible
                                Accessible.onPressAction: controller.removeRecipient(modelData.playerID)
                                activeFocusOnTab: parent.visible
                            }
                        }
                    }
                }
            }
        }
        // More players by name.
        TextField {
            id: search
            objectName: "searchField"
            width: parent.width
            height: 38 * screen.u
            placeholderText: "ابحث عن لاعب بالاسم"
            font.family: Theme.fontFamily
            font.pixelSize: 14 * screen.u
            horizontalAlignment: TextInput.AlignRight
            maximumLength: 32
            onTextEdited: searchDelay.restart()
            onAccepted: controller.findPlayers(text)
            Timer {
                id: searchDelay
                interval: 350
                onTriggered: controller.findPlayers(search.text)
            }
        }
        Flow {
            objectName: "foundPlayers"
            width: parent.width
            spacing: 6 * screen.u
            visible: search.text.length > 0
            Repeater {
                model: controller.found
                delegate: Rectangle {
                    objectName: "found_" + modelData.playerID
                    height: 32 * screen.u
                    width: foundName.implicitWidth + 34 * screen.u
                    radius: height / 2
                    color: modelData.added ? Theme.gold : "#22ffffff"
                    border.color: "#66ffffff"
                    Text {
                        id: foundName
                        anchors.centerIn: parent
                        font.family: Theme.fontFamily
                        font.pixelSize: 14 * screen.u
                        color: modelData.added ? Theme.ink : "#ffffff"
                        text: (modelData.added ? "✓ " : "+ ") + modelData.name
                    }
                    MouseArea {
                        anchors.fill: parent
                        onClicked: controller.addFoundPlayer(modelData.playerID)
                        Accessible.role: Accessible.CheckBox
                        Accessible.name: modelData.name
                        Accessible.checkable: true
                        Accessible.checked: modelData.added
                        Accessible.ignored: !enabled
                        Accessible.onPressAction: controller.addFoundPlayer(modelData.playerID)
                        activeFocusOnTab: true
                    }
                }
            }
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignLeft // mirrored: the right edge
            font.family: Theme.fontFamily
            font.pixelSize: 15 * screen.u
            font.bold: true
            color: "#ffffff"
            text: "الرسالة"
        }
        Rectangle {
            width: parent.width
            height: 130 * screen.u
            radius: 12 * screen.u
            color: "#ffffff"
            TextArea {
                id: messageArea
                objectName: "messageArea"
                anchors.fill: parent
                anchors.margins: 6 * screen.u
                wrapMode: TextEdit.Wrap
                horizontalAlignment: TextEdit.AlignRight
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                color: "#222222"
                background: null
                text: controller.message
                onTextChanged: {
                    if (text !== controller.message) {
                        controller.message = text
                        if (text !== controller.message) {
                            text = controller.message
                            cursorPosition = text.length
                        }
                    }
                }
            }
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignRight // mirrored: the left edge
            font.family: Theme.fontFamily
            font.pixelSize: 12 * screen.u
            color: "#ccffffff"
            text: controller.message.length + " / " + controller.maxMessageLength
        }
        Text {
            objectName: "composeStatus"
            width: parent.width
            visible: text.length > 0
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            font.family: Theme.fontFamily
            font.pixelSize: 14 * screen.u
            color: controller.busy ? "#ffffff" : "#ffd0d0"
            text: controller.status
        }
        GameButton {
            objectName: "sendFriendRequest"
            anchors.horizontalCenter: parent.horizontalCenter
            width: 220 * screen.u
            height: 46 * screen.u
            fontSize: 17 * screen.u
            opacity: controller.busy || controller.recipients.length === 0 ? 0.5 : 1
            text: "إرسال"
            onClicked: controller.send()
        }
    }
}
