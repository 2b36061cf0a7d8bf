import QtQuick
import ".."
import "../components"

// The start of a live match: the player and his opponent face to face, and where the match stands.
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
        title: "مباراة مباشرة"
        onBack: controller.close()
    }

    component PlayerCard: Rectangle {
        id: card
        property var player: ({})
        property bool mine: false
        width: (screen.width - 70 * screen.u) / 2
        height: column.implicitHeight + 24 * screen.u
        radius: 16 * screen.u
        color: "#33000000"
        border.color: mine ? Theme.gold : "#88ffffff"
        border.width: 2
        Column {
            id: column
            anchors.centerIn: parent
            width: parent.width - 20 * screen.u
            spacing: 6 * screen.u
            PlayerFace {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 72 * screen.u; height: width
                playerID: card.player.playerID || ""
                name: card.player.name || ""
            }
            Text {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
                text: card.player.name || "…"
                font.family: Theme.fontFamily
                font.pixelSize: 16 * screen.u
                font.bold: true
                color: "#ffffff"
            }
            Repeater {
                model: [
                    { "key": "rank", "label": "الترتيب" },
                    { "key": "levels", "label": "المراحل" },
                    { "key": "battles", "label": "المعارك" },
                    { "key": "wins", "label": "الانتصارات" }
                ]
                delegate: Row {
                    visible: card.player[modelData.key] !== undefined
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 6 * screen.u
                    Text {
                        text: card.player[modelData.key] || ""
                        font.family: Theme.fontFamily
                        font.pixelSize: 14 * screen.u
                        font.bold: true
                        color: Theme.gold
                    }
                    Text {
                        text: modelData.label
                        font.family: Theme.fontFamily
                        font.pixelSize: 12 * screen.u
                        color: "#ddffffff"
                    }
                }
            }
        }
    }

    Row {
        id: faces
        anchors.top: bar.bottom
        anchors.topMargin: 40 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 10 * screen.u
        PlayerCard { objectName: "player1"; player: controller.player1; mine: true }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: "⚔"
            font.pixelSize: 30 * screen.u
            color: Theme.gold
        }
        PlayerCard { objectName: "player2"; player: controller.player2 }
    }
    Rectangle {
        objectName: "statusLabel"
        anchors.top: faces.bottom
        anchors.topMargin: 30 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: status.implicitWidth + 40 * screen.u
        height: 44 * screen.u
        radius: height / 2
        color: controller.connected ? "#5a148814" : "#33ffffff"
        border.color: controller.connected ? "#8ff08f" : "#66ffffff"
        Text {
            id: status
            anchors.centerIn: parent
            text: controller.statusText
            font.family: Theme.fontFamily
            font.pixelSize: 16 * screen.u
            font.bold: true
            color: "#ffffff"
        }
    }
}
