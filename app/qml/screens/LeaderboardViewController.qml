import QtQuick
import ".."
import "../components"

// The leaderboard: everyone or friends, with the player's own place.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea {
        anchors.fill: parent
    }
    TopBar {
        id: bar
        width: parent.width
        title: "قائمة الأذكياء"
        onBack: controller.close()
    }
    Row {
        id: tabs
        anchors.top: bar.bottom
        anchors.topMargin: 12 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8
        Repeater {
            model: ["الجميع", "الأصدقاء"]
            delegate: Rectangle {
                objectName: "scope" + index
                width: 130 * screen.u
                height: 36 * screen.u
                radius: height / 2
                color: controller.scope === index ? Theme.gold : "#33ffffff"
                Text {
                    anchors.centerIn: parent
                    text: modelData
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    font.bold: true
                    color: controller.scope === index ? Theme.ink : "#ffffff"
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.setScope(index)
                }
            }
        }
    }
    Rectangle {
        id: mine
        objectName: "localScore"
        anchors.top: tabs.bottom
        anchors.topMargin: 12 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 24 * screen.u
        height: 56 * screen.u
        radius: 14
        color: "#fff1c9"
        border.color: Theme.gold
        border.width: 2
        Row {
            anchors.left: parent.left
            anchors.leftMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            spacing: 10
            Text {
                text: "ترتيبك"
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#8a7a5a"
                anchors.verticalCenter: parent.verticalCenter
            }
            Text {
                objectName: "localRank"
                text: controller.localRankText
                font.family: Theme.fontFamily
                font.pixelSize: 22 * screen.u
                font.bold: true
                color: Theme.accent
                anchors.verticalCenter: parent.verticalCenter
            }
        }
        Text {
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            text: controller.localScoreText + " نقطة · من " + controller.totalText
            font.family: Theme.fontFamily
            font.pixelSize: 13 * screen.u
            color: Theme.ink
        }
    }
    ListView {
        id: list
        objectName: "leaderboardList"
        anchors.top: mine.bottom
        anchors.topMargin: 10 * screen.u
        anchors.bottom: account.top
        anchors.bottomMargin: 10 * screen.u
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 12 * screen.u
        clip: true
        spacing: 6
        model: controller.rows
        delegate: Rectangle {
            objectName: "leaderRow" + index
            width: list.width
            height: 48 * screen.u
            radius: 12
            color: modelData.isLocal ? "#fff1c9" : "#1fffffff"
            // A tap on another player's row opens his details (the add button keeps its own tap).
            MouseArea {
                anchors.fill: parent
                onClicked: controller.openPlayer(index)
            }
            Text {
                id: rankText
                anchors.left: parent.left
                anchors.leftMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                width: 52 * screen.u
                text: modelData.rank
                font.family: Theme.fontFamily
                font.pixelSize: 16 * screen.u
                font.bold: true
                color: modelData.isLocal ? Theme.ink : Theme.gold
            }
            Image {
                id: avatar
                objectName: "avatar" + index
                anchors.left: rankText.right
                anchors.leftMargin: 4
                anchors.verticalCenter: parent.verticalCenter
                width: 34 * screen.u
                height: width
                source: "image://players/" + modelData.playerID
                sourceSize.width: 68
                sourceSize.height: 68
                asynchronous: true
            }
            Text {
                anchors.left: avatar.right
                anchors.leftMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                text: modelData.name
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                color: modelData.isLocal ? Theme.ink : "#ffffff"
            }
            Row {
                anchors.right: parent.right
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                spacing: 8
                Rectangle {
                    objectName: "addFriend" + index
                    visible: !modelData.isLocal && !modelData.isFriend
                    width: 30 * screen.u
                    height: width
                    radius: width / 2
                    color: Theme.green
                    anchors.verticalCenter: parent.verticalCenter
                    Text {
                        anchors.centerIn: parent
                        text: "+"
                        font.pixelSize: parent.height * 0.7
                        font.bold: true
                        color: "#ffffff"
                    }
                    MouseArea {
                        anchors.fill: parent
                        onClicked: controller.addFriend(modelData.playerID)
                    }
                }
                Text {
                    text: modelData.score
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    font.bold: true
                    color: modelData.isLocal ? Theme.ink : "#d9d2f5"
                    anchors.verticalCenter: parent.verticalCenter
                }
            }
        }
    }
    Text {
        anchors.centerIn: list
        visible: controller.messageText.length > 0
        text: controller.messageText
        font.family: Theme.fontFamily
        font.pixelSize: 15 * screen.u
        color: "#d9d2f5"
        width: parent.width * 0.8
        wrapMode: Text.WordWrap
        horizontalAlignment: Text.AlignHCenter
    }
    Row {
        id: account
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 20 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 10 * screen.u
        GameButton {
            objectName: "profileButton"
            width: 130 * screen.u
            height: 46 * screen.u
            primary: false
            fontSize: 15 * screen.u
            text: "ارقامي"
            onClicked: controller.openUserProfile()
        }
        GameButton {
            objectName: "accountButton"
            width: 190 * screen.u
            height: 46 * screen.u
            primary: false
            fontSize: 15 * screen.u
            text: "حسابي وأصدقائي"
            onClicked: controller.openAccount()
        }
    }
}
