import QtQuick
import ".."
import "../components"

// The levels of one round: solved, the next one, and locked.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    TopBar {
        id: bar
        width: parent.width
        color: controller.topbarColor
        title: "الجولة " + controller.currentRoundLabel
        onBack: controller.goBack()
        // The about hub, at the end side of the bar.
        Rectangle {
            objectName: "aboutButton"
            anchors.right: parent.right
            anchors.rightMargin: 10
            anchors.bottom: parent.bottom
            anchors.bottomMargin: (device.isPad ? 72 : 52) * 0.15
            width: (device.isPad ? 72 : 52) * 0.7
            height: width
            radius: width / 2
            color: "#22ffffff"
            border.color: "#55ffffff"
            Text {
                anchors.centerIn: parent
                text: "i"
                font.family: Theme.fontFamily
                font.pixelSize: parent.height * 0.55
                font.bold: true
                color: "#ffffff"
            }
            MouseArea {
                anchors.fill: parent
                onClicked: controller.openAbout()
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.about")
                Accessible.ignored: !enabled
                Accessible.onPressAction: controller.openAbout()
                activeFocusOnTab: true
            }
        }
        // The tip of the day, beside it.
        Rectangle {
            objectName: "tipButton"
            anchors.right: parent.right
            anchors.rightMargin: 16 + (device.isPad ? 72 : 52) * 0.7
            anchors.bottom: parent.bottom
            anchors.bottomMargin: (device.isPad ? 72 : 52) * 0.15
            width: (device.isPad ? 72 : 52) * 0.7
            height: width
            radius: width / 2
            color: "#22ffffff"
            border.color: "#55ffffff"
            Text {
                anchors.centerIn: parent
                text: "؟"
                font.family: Theme.fontFamily
                font.pixelSize: parent.height * 0.6
                font.bold: true
                color: Theme.gold
            }
            MouseArea {
                anchors.fill: parent
                onClicked: controller.showTipOfTheDay()
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.tip")
                Accessible.ignored: !enabled
                Accessible.onPressAction: controller.showTipOfTheDay()
                activeFocusOnTab: true
            }
        }
    }
    PromoPanel {
        id: promo
        u: screen.u
        width: Math.min(parent.width - 24 * screen.u, 520)
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12 * screen.u
        title: controller.promoTitle
        icon: controller.promoIcon
        onTapped: controller.openPromoView()
    }
    Grid {
        id: grid
        anchors.top: bar.bottom
        anchors.topMargin: 26 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        columns: 5
        spacing: 12 * screen.u
        Repeater {
            model: controller.cells
            delegate: Item {
                id: cell
                objectName: "level" + index
                width: 58 * screen.u
                height: width
                readonly property int state: modelData.state
                Rectangle {
                    anchors.fill: parent
                    anchors.topMargin: 4
                    radius: 14 * screen.u
                    color: cell.state === 0 ? "#0d5e0d" : (cell.state === 1 ? "#a2720a" : "#2a2450")
                }
                Rectangle {
                    id: face
                    anchors.fill: parent
                    anchors.bottomMargin: 4
                    radius: 14 * screen.u
                    color: cell.state === 0 ? Theme.green : (cell.state === 1 ? Theme.gold : "#3d356e")
                    Text {
                        visible: cell.state !== 2
                        anchors.centerIn: parent
                        text: modelData.number
                        font.family: Theme.fontFamily
                        font.pixelSize: 22 * screen.u
                        font.bold: true
                        color: cell.state === 1 ? Theme.ink : "#ffffff"
                    }
                    Lock {
                        visible: cell.state === 2
                        anchors.centerIn: parent
                        width: 18 * screen.u
                        height: 22 * screen.u
                    }
                    SequentialAnimation on scale {
                        running: cell.state === 1
                        loops: Animation.Infinite
                        NumberAnimation { from: 1.0; to: 0.9; duration: 700; easing.type: Easing.InQuad }
                        NumberAnimation { from: 0.9; to: 1.0; duration: 700; easing.type: Easing.OutQuad }
                    }
                }
                MouseArea {
                    id: cellArea
                    anchors.fill: parent
                    onClicked: controller.collectionViewDidSelectItemAtIndexPath(index)
                    // One focus for Tab and the arrows: the level Tab reaches takes the ring, and the level an
                    // arrow moves the ring to takes the keys (so Enter presses the level the ring is on).
                    onActiveFocusChanged: if (activeFocus) controller.focusOn(index)
                    Connections {
                        target: controller
                        function onFocusChanged() {
                            if (controller.focusShown && controller.focusIndex === index && !cellArea.activeFocus)
                                cellArea.forceActiveFocus()
                        }
                    }
                    // "المرحلة 7، محلولة" / "الحالية" / "مقفلة".
                    Accessible.role: Accessible.Button
                    Accessible.name: A11y.text("a11y.level").arg(modelData.number) + "، "
                        + A11y.text(cell.state === 0 ? "a11y.solved" : cell.state === 1 ? "a11y.current" : "a11y.locked")
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: controller.collectionViewDidSelectItemAtIndexPath(index)
                    activeFocusOnTab: true
                }
                // The keyboard's focus ring, around the cell.
                Rectangle {
                    objectName: "levelFocus"
                    visible: controller.focusShown && controller.focusIndex === index
                    anchors.fill: parent
                    anchors.margins: -5 * screen.u
                    radius: 18 * screen.u
                    color: "transparent"
                    border.color: Theme.focus
                    border.width: 3
                }
            }
        }
    }
    Row {
        anchors.top: grid.bottom
        anchors.topMargin: 28 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 18 * screen.u
        Repeater {
            model: [
                { "c": Theme.green, "t": "مرحلة محلولة" },
                { "c": Theme.gold, "t": "المرحلة التالية" },
                { "c": "#3d356e", "t": "مقفلة" }
            ]
            delegate: Row {
                spacing: 6
                Rectangle {
                    width: 14 * screen.u
                    height: width
                    radius: 4
                    color: modelData.c
                    anchors.verticalCenter: parent.verticalCenter
                }
                Text {
                    text: modelData.t
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: "#d9d2f5"
                }
            }
        }
    }
    // The maker's pages, at the foot of the screen above the promotion panel.
    Row {
        objectName: "socialIcons"
        anchors.bottom: promo.top
        anchors.bottomMargin: 12 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 16 * screen.u
        Repeater {
            model: [
                { "name": "openFacebookPage", "glyph": "f", "spoken": "a11y.facebook", "color": "#1877f2" },
                { "name": "openTwitterPage", "glyph": "X", "spoken": "a11y.x", "color": "#0f1419" },
                { "name": "openInstaPage", "glyph": "◎", "spoken": "a11y.instagram", "color": "#d6249f" }
            ]
            delegate: BrandIcon {
                objectName: modelData.name
                accessibleName: A11y.text(modelData.spoken)
                side: 40 * screen.u
                glyph: modelData.glyph
                disc: modelData.color
                onTapped: controller[modelData.name]()
            }
        }
    }
}
