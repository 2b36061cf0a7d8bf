import QtQuick
import ".."
import "../components"

// The hub: how to play, tips, sharing and rating the game, the maker's pages and games, the credits.
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
        title: "حول اللعبة"
        onBack: controller.close()
    }

    component HubButton: Rectangle {
        id: hub
        property string label
        property string glyph
        signal tapped()
        width: (column.width - 10 * screen.u) / 2
        height: 74 * screen.u
        radius: 18 * screen.u
        color: area.pressed ? "#44ffffff" : "#26ffffff"
        border.color: "#44ffffff"
        Column {
            anchors.centerIn: parent
            spacing: 4 * screen.u
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: hub.glyph
                font.pixelSize: 24 * screen.u
                color: Theme.gold
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: hub.label
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                font.bold: true
                color: "#ffffff"
            }
        }
        MouseArea {
            id: area
            anchors.fill: parent
            onClicked: hub.tapped()
            Accessible.role: Accessible.Button
            Accessible.name: hub.label
            Accessible.ignored: !enabled
            Accessible.onPressAction: hub.tapped()
            activeFocusOnTab: true
        }
    }

    Column {
        id: column
        anchors.top: bar.bottom
        anchors.topMargin: 18 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 32 * screen.u
        spacing: 12 * screen.u

        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "طارفولين"
            font.family: Theme.fontFamily
            font.pixelSize: 34 * screen.u
            font.bold: true
            color: Theme.gold
        }
        Grid {
            columns: 2
            spacing: 10 * screen.u
            HubButton { objectName: "openHelp"; label: "طريقة اللعب"; glyph: "؟"; onTapped: controller.openHelp() }
            HubButton { objectName: "openTips"; label: "نصائح"; glyph: "✦"; onTapped: controller.openTips() }
            HubButton { objectName: "shareGame"; label: "شارك اللعبة"; glyph: "⤴"; onTapped: controller.shareGame() }
            HubButton { objectName: "rateGame"; label: "قيّم اللعبة"; glyph: "★"; onTapped: controller.rateGame() }
            HubButton { objectName: "openOurGames"; label: "ألعابنا الأخرى"; glyph: "▦"; onTapped: controller.openOurGames() }
            HubButton { objectName: "openCredits"; label: "شكر وحقوق"; glyph: "©"; onTapped: controller.openCredits() }
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "تابعنا"
            font.family: Theme.fontFamily
            font.pixelSize: 15 * screen.u
            color: "#d9d2f5"
        }
        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 14 * screen.u
            Repeater {
                model: [
                    { "name": "openFacebookPage", "label": "f", "spoken": "a11y.facebook", "color": "#1877f2" },
                    { "name": "openTwitterPage", "label": "X", "spoken": "a11y.x", "color": "#0f1419" },
                    { "name": "openInstagramPage", "label": "◎", "spoken": "a11y.instagram", "color": "#d6249f" }
                ]
                delegate: BrandIcon {
                    objectName: modelData.name
                    accessibleName: A11y.text(modelData.spoken)
                    side: 52 * screen.u
                    glyph: modelData.label
                    disc: modelData.color
                    onTapped: controller[modelData.name]()
                }
            }
        }
    }
}
