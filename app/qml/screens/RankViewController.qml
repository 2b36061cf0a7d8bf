import QtQuick
import ".."
import "../components"

// The ladder of ranks: the player's place, the badges won and to win.
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
        title: "الرتب"
        onBack: controller.goBack()
    }
    // The badges, won in colour.
    ListView {
        id: badgeStrip
        objectName: "badges"
        anchors.top: bar.bottom
        anchors.topMargin: 10 * screen.u
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: 10 * screen.u
        anchors.rightMargin: 10 * screen.u
        height: 58 * screen.u
        orientation: ListView.Horizontal
        layoutDirection: Qt.RightToLeft
        spacing: 6 * screen.u
        clip: true
        model: controller.badges
        delegate: Rectangle {
            width: 52 * screen.u
            height: width
            radius: 12 * screen.u
            color: modelData.won ? "#5532c832" : "#33ffffff"
            Image {
                anchors.fill: parent
                anchors.margins: 5 * screen.u
                source: "qrc:/images/badges/" + modelData.image
                sourceSize.width: 96
                sourceSize.height: 96
                smooth: true
            }
        }
        Component.onCompleted: positionViewAtIndex(controller.currentRankIndex, ListView.Center)
    }
    ListView {
        id: ladder
        objectName: "ladder"
        anchors.top: badgeStrip.bottom
        anchors.topMargin: 10 * screen.u
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 10 * screen.u
        spacing: 6 * screen.u
        clip: true
        model: controller.rows
        delegate: Rectangle {
            width: ladder.width
            height: 72 * screen.u
            radius: 14 * screen.u
            color: modelData.tinted ? "#5532c832" : "#1fffffff"
            border.color: index === controller.currentRankIndex ? Theme.gold : "#26ffffff"
            border.width: index === controller.currentRankIndex ? 2 : 1
            Image {
                id: rowBadge
                anchors.right: parent.right
                anchors.rightMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 56 * screen.u
                height: width
                source: "qrc:/images/badges/" + modelData.badge
                sourceSize.width: 96
                sourceSize.height: 96
                smooth: true
            }
            Column {
                anchors.right: rowBadge.left
                anchors.rightMargin: 10 * screen.u
                anchors.left: reward.right
                anchors.leftMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                spacing: 2
                Text {
                    width: parent.width
                    text: modelData.name
                    font.family: Theme.fontFamily
                    font.pixelSize: 17 * screen.u
                    font.bold: true
                    color: "#ffffff"
                    elide: Text.ElideLeft
                }
                Text {
                    width: parent.width
                    text: modelData.desc
                    font.family: Theme.fontFamily
                    font.pixelSize: 11 * screen.u
                    color: "#d9d2f5"
                    elide: Text.ElideLeft
                }
            }
            Text {
                id: reward
                anchors.left: parent.left
                anchors.leftMargin: 10 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 70 * screen.u
                text: modelData.reward
                wrapMode: Text.WordWrap
                horizontalAlignment: Text.AlignHCenter
                font.family: Theme.fontFamily
                font.pixelSize: 11 * screen.u
                color: Theme.gold
            }
        }
        Component.onCompleted: positionViewAtIndex(controller.currentRankIndex, ListView.Center)
    }
}
