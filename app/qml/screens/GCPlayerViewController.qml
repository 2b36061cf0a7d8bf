import QtQuick
import QtQuick.Controls
import ".."
import "../components"

// Another player's details: his place and summary, and a challenge, a friend request or a request for gold.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea {
        anchors.fill: parent
        onClicked: message.focus = false
    }
    TopBar {
        id: bar
        width: parent.width
        title: controller.playerAlias
        onBack: controller.close()
    }
    Flickable {
        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        contentHeight: body.implicitHeight + 30 * screen.u
        clip: true
        Column {
            id: body
            y: 14 * screen.u
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width - 28 * screen.u
            spacing: 12 * screen.u
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 16 * screen.u
                PlayerFace {
                    width: 84 * screen.u; height: width
                    playerID: controller.playerID; name: controller.playerAlias
                }
                Column {
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 4 * screen.u
                    Text {
                        objectName: "gcRankLabel"
                        text: "الترتيب " + controller.gcRank
                        font.family: Theme.fontFamily
                        font.pixelSize: 20 * screen.u
                        font.bold: true
                        color: Theme.gold
                    }
                    Text {
                        objectName: "totalPointsLabel"
                        text: controller.totalPoints + " نقطة"
                        font.family: Theme.fontFamily
                        font.pixelSize: 15 * screen.u
                        color: "#ffffff"
                    }
                    Text {
                        objectName: "lastPlayedLabel"
                        text: "آخر لعب: " + controller.lastPlayed
                        font.family: Theme.fontFamily
                        font.pixelSize: 13 * screen.u
                        color: "#ccffffff"
                    }
                }
            }
            // The summary that the player's score carries. It holds one battle figure and one gold figure, so
            // the journeys through time, the trainings and the battles show the first, and the levels shared
            // and the gold used the second.
            Grid {
                objectName: "details"
                anchors.horizontalCenter: parent.horizontalCenter
                columns: 3
                spacing: 8 * screen.u
                Repeater {
                    model: [
                        { "key": "currentLevel", "label": "المرحلة" },
                        { "key": "currentRound", "label": "الجولة" },
                        { "key": "achievements", "label": "المهمات" },
                        { "key": "activeDays", "label": "أيام النشاط" },
                        { "key": "totalBattles", "label": "المعارك" },
                        { "key": "timeTraveled", "label": "السفر عبر الزمن" },
                        { "key": "trainingsTaken", "label": "التمارين" },
                        { "key": "levelsShared", "label": "المراحل المشاركة" },
                        { "key": "usedCredits", "label": "الذهب المستخدم" }
                    ]
                    delegate: Rectangle {
                        visible: controller.details[modelData.key] !== undefined
                        width: (body.width - 16 * screen.u) / 3
                        height: 52 * screen.u
                        radius: 12 * screen.u
                        color: "#26ffffff"
                        Column {
                            anchors.centerIn: parent
                            Text {
                                anchors.horizontalCenter: parent.horizontalCenter
                                text: controller.details[modelData.key] || ""
                                font.family: Theme.fontFamily
                                font.pixelSize: 17 * screen.u
                                font.bold: true
                                color: "#ffffff"
                            }
                            Text {
                                anchors.horizontalCenter: parent.horizontalCenter
                                text: modelData.label
                                font.family: Theme.fontFamily
                                font.pixelSize: 11 * screen.u
                                color: "#ccffffff"
                            }
                        }
                    }
                }
            }
            Row {
                visible: controller.details.badge !== undefined
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 8 * screen.u
                Image {
                    width: 36 * screen.u; height: width
                    source: controller.details.badge ? "qrc:/images/badges/" + controller.details.badge : ""
                    fillMode: Image.PreserveAspectFit
                }
                Text {
                    objectName: "badgeLabel"
                    anchors.verticalCenter: parent.verticalCenter
                    text: controller.details.badgeLabel || ""
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    color: "#ffffff"
                }
            }
            TextField {
                // Return puts the keyboard away.
                onAccepted: focus = false
                id: message
                objectName: "messageTextField"
                width: parent.width
                height: 42 * screen.u
                placeholderText: "رسالة التحدي أو الطلب"
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                horizontalAlignment: TextInput.AlignRight
                maximumLength: 100
            }
            GameButton {
                objectName: "sendBattleRequest"
                anchors.horizontalCenter: parent.horizontalCenter
                width: 240 * screen.u
                height: 46 * screen.u
                fontSize: 17 * screen.u
                text: "⚔ بدء معركة"
                onClicked: controller.sendBattleRequest(message.text)
            }
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 10 * screen.u
                GameButton {
                    objectName: "sendExchangeRequest"
                    primary: false
                    width: 150 * screen.u
                    height: 40 * screen.u
                    fontSize: 14 * screen.u
                    text: "اطلب ذهبا"
                    onClicked: controller.sendExchangeRequest(message.text)
                }
                GameButton {
                    objectName: "sendFriendshipRequest"
                    primary: false
                    width: 150 * screen.u
                    height: 40 * screen.u
                    fontSize: 14 * screen.u
                    text: "طلب صداقة"
                    onClicked: controller.sendFriendshipRequest()
                }
            }
        }
    }
}
