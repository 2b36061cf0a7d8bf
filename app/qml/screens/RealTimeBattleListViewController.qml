import QtQuick
import ".."
import "../components"

// The finished live matches, newest first, under the battle totals.
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
        title: "المباريات المباشرة"
        onBack: controller.close()
    }
    Row {
        id: totals
        anchors.top: bar.bottom
        anchors.topMargin: 10 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8 * screen.u
        Repeater {
            model: [
                { "name": "winsLabel", "label": "فوز", "value": controller.winsText, "tint": Theme.green },
                { "name": "drawsLabel", "label": "تعادل", "value": controller.drawsText, "tint": Theme.accent },
                { "name": "lossesLabel", "label": "خسارة", "value": controller.lossesText, "tint": Theme.red },
                { "name": "finalPointsLabel", "label": "نقاط المعارك", "value": controller.finalPointsText, "tint": Theme.gold }
            ]
            delegate: Rectangle {
                objectName: modelData.name
                width: (screen.width - 48 * screen.u) / 4
                height: 52 * screen.u
                radius: 12 * screen.u
                color: "#33000000"
                border.color: modelData.tint
                border.width: 1.5
                Column {
                    anchors.centerIn: parent
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: modelData.value
                        font.family: Theme.fontFamily
                        font.pixelSize: 18 * screen.u
                        font.bold: true
                        color: "#ffffff"
                    }
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: modelData.label
                        font.family: Theme.fontFamily
                        font.pixelSize: 11 * screen.u
                        color: "#ddffffff"
                    }
                }
            }
        }
    }
    ListView {
        id: list
        objectName: "liveBattlesList"
        anchors.top: totals.bottom
        anchors.topMargin: 12 * screen.u
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 20 * screen.u
        spacing: 8 * screen.u
        clip: true
        model: controller.rows
        delegate: Rectangle {
            width: list.width
            height: 64 * screen.u
            radius: 14 * screen.u
            color: modelData.tint === "green" ? Qt.rgba(0, 0.8, 0, 0.35)
                   : modelData.tint === "red" ? Qt.rgba(0.9, 0, 0, 0.35) : Qt.rgba(1, 0.85, 0, 0.35)
            Row {
                anchors.fill: parent
                anchors.margins: 10 * screen.u
                spacing: 10 * screen.u
                PlayerFace {
                    anchors.verticalCenter: parent.verticalCenter
                    width: 42 * screen.u; height: width
                    name: modelData.opponentName
                }
                Column {
                    anchors.verticalCenter: parent.verticalCenter
                    width: parent.width - 150 * screen.u
                    Text {
                        width: parent.width
                        horizontalAlignment: Text.AlignLeft
                        elide: Text.ElideRight
                        text: modelData.opponentName
                        font.family: Theme.fontFamily
                        font.pixelSize: 15 * screen.u
                        font.bold: true
                        color: "#ffffff"
                    }
                    Text {
                        width: parent.width
                        horizontalAlignment: Text.AlignLeft
                        text: modelData.date
                        font.family: Theme.fontFamily
                        font.pixelSize: 11 * screen.u
                        color: "#ddffffff"
                    }
                }
                Column {
                    anchors.verticalCenter: parent.verticalCenter
                    Text {
                        text: modelData.outcome
                        font.family: Theme.fontFamily
                        font.pixelSize: 17 * screen.u
                        font.bold: true
                        color: "#ffffff"
                    }
                    Text {
                        text: modelData.points
                        font.family: Theme.fontFamily
                        font.pixelSize: 11 * screen.u
                        color: "#ffffff"
                    }
                }
            }
        }
    }
    Text {
        anchors.centerIn: list
        visible: list.count === 0
        width: list.width - 40 * screen.u
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: "لا مباريات مباشرة منتهية بعد"
        font.family: Theme.fontFamily
        font.pixelSize: 14 * screen.u
        color: "#ccffffff"
    }
}
