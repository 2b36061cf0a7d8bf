import QtQuick
import ".."
import "../components"

// The rounds: finished, current and locked, each with its rank.
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
        title: controller.titleLabel
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
    }
    PromoPanel {
        id: promo
        u: screen.u
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 12 * screen.u
        title: controller.promoTitle
        icon: controller.promoIcon
        onTapped: controller.openPromoView()
    }
    ListView {
        id: list
        objectName: "roundsList"
        anchors.top: bar.bottom
        anchors.bottom: promo.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 12 * screen.u
        spacing: 10 * screen.u
        clip: true
        // The arrows go to the screen, which moves its focus in reading order.
        keyNavigationEnabled: false
        model: controller.rows
        Connections {
            target: controller
            function onRowsChanged() {
                if (controller.currentGroup < list.count)
                    list.positionViewAtIndex(controller.currentGroup, ListView.Center)
            }
            // The keyboard's focus stays in sight, and its row takes the keys.
            function onFocusChanged() {
                if (!controller.focusShown || controller.focusIndex >= list.count)
                    return
                list.positionViewAtIndex(controller.focusIndex, ListView.Contain)
                const row = list.itemAtIndex(controller.focusIndex)
                if (row && !row.area.activeFocus)
                    row.area.forceActiveFocus()
            }
        }
        Component.onCompleted: if (controller.currentGroup < count) positionViewAtIndex(controller.currentGroup, ListView.Center)

        delegate: Rectangle {
            objectName: "round" + index
            readonly property alias area: rowArea
            width: list.width
            height: 92 * screen.u
            radius: 18 * screen.u
            readonly property bool locked: modelData.state === 2
            readonly property bool current: modelData.state === 1
            color: locked ? "#0cffffff" : (current ? "#fff1c9" : "#fff8ea")
            border.color: current ? Theme.gold : "transparent"
            border.width: 3

            Image {
                id: rowBadge
                anchors.left: parent.left
                anchors.leftMargin: 10 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 64 * screen.u
                height: width
                source: "qrc:/images/badges/" + (locked ? modelData.lockedBadge : modelData.badge)
                sourceSize.width: 128
                sourceSize.height: 128
                opacity: locked ? 0.7 : 1.0
                mipmap: true
            }
            Column {
                anchors.left: rowBadge.right
                anchors.leftMargin: 10 * screen.u
                anchors.right: side.left
                anchors.rightMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                spacing: 4 * screen.u
                Row {
                    spacing: 8
                    Text {
                        text: "الجولة " + modelData.number
                        font.family: Theme.fontFamily
                        font.pixelSize: 17 * screen.u
                        font.bold: true
                        color: locked ? "#b7b0d6" : Theme.ink
                    }
                    Text {
                        text: "· " + modelData.name
                        font.family: Theme.fontFamily
                        font.pixelSize: 15 * screen.u
                        color: locked ? "#948dba" : "#6b4e16"
                        anchors.baseline: parent.children[0].baseline
                    }
                }
                Text {
                    width: parent.width
                    text: modelData.desc
                    font.family: Theme.fontFamily
                    font.pixelSize: 11 * screen.u
                    color: locked ? "#8f87ad" : "#8a7a5a"
                    elide: Text.ElideRight
                    maximumLineCount: 1
                }
                Row {
                    visible: !locked
                    spacing: 8
                    Rectangle {
                        width: 120 * screen.u
                        height: 9 * screen.u
                        radius: height / 2
                        color: "#e3d8bd"
                        anchors.verticalCenter: parent.verticalCenter
                        Rectangle {
                            width: parent.width * modelData.progress
                            height: parent.height
                            radius: height / 2
                            color: modelData.state === 0 ? Theme.green : Theme.gold
                        }
                    }
                    Text {
                        objectName: "percent" + index
                        text: modelData.percent
                        font.family: Theme.fontFamily
                        font.pixelSize: 12 * screen.u
                        font.bold: true
                        color: Theme.ink
                    }
                }
            }
            // The leaderboard place held in that round, or the lock.
            Item {
                id: side
                anchors.right: parent.right
                anchors.rightMargin: 12 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 62 * screen.u
                height: parent.height - 20
                Lock {
                    visible: locked
                    anchors.centerIn: parent
                    width: 24 * screen.u
                    height: 28 * screen.u
                }
                Column {
                    visible: !locked
                    anchors.centerIn: parent
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: "ترتيبك"
                        font.family: Theme.fontFamily
                        font.pixelSize: 10 * screen.u
                        color: "#8a7a5a"
                    }
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: modelData.leaderboard
                        font.family: Theme.fontFamily
                        font.pixelSize: 14 * screen.u
                        font.bold: true
                        color: Theme.accent
                    }
                }
            }
            MouseArea {
                id: rowArea
                anchors.fill: parent
                onClicked: controller.tableViewDidSelectRowAtIndexPath(index)
                // One focus for Tab and the arrows: the row Tab reaches takes the ring, and the row an arrow
                // moves the ring to takes the keys (so Enter presses the row the ring is on).
                onActiveFocusChanged: if (activeFocus) controller.focusOn(index)
                Accessible.role: Accessible.ListItem
                Accessible.name: "الجولة " + modelData.number + " · " + modelData.name + "، " + modelData.percent
                Accessible.description: modelData.desc
                Accessible.ignored: !enabled
                Accessible.onPressAction: controller.tableViewDidSelectRowAtIndexPath(index)
                activeFocusOnTab: true
            }
            // The keyboard's focus ring, inside the row (the list clips what is outside).
            Rectangle {
                objectName: "roundFocus"
                visible: controller.focusShown && controller.focusIndex === index
                anchors.fill: parent
                radius: parent.radius
                color: "transparent"
                border.color: Theme.focus
                border.width: 4
            }
        }
    }
}
