import QtQuick
import ".."
import "../components"

// The Game Center pages: a row of page buttons, the first at the right, over the pages side by side. A tap
// moves through the pages between; a swipe moves to a neighbour.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    Rectangle {
        id: buttons
        objectName: "pageButtons"
        z: 2
        width: parent.width
        height: (device.deviceClass === 1 ? 84 : 44) * screen.u + (device.isPad ? 12 : 0)
        color: "#cc1c1640"
        Row {
            id: row
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 4 * screen.u
            anchors.horizontalCenter: parent.horizontalCenter
            height: 36 * screen.u
            Repeater {
                model: controller.buttonText
                delegate: Rectangle {
                    objectName: "pageButton" + index
                    width: (buttons.width - 16 * screen.u) / Math.max(1, controller.buttonText.length)
                    height: row.height
                    radius: 10 * screen.u
                    color: index === controller.currentPageIndex ? "#44ffffff" : "transparent"
                    Text {
                        anchors.centerIn: parent
                        text: modelData
                        font.family: Theme.fontFamily
                        font.pixelSize: 15 * screen.u
                        font.bold: index === controller.currentPageIndex
                        color: index === controller.currentPageIndex ? "#ffffff" : "#bbffffff"
                    }
MouseArea {
                        anchors.fill: parent
                        onClicked: controller.tapSegmentButton(index)
                        Accessible.role: Accessible.PageTab
                        Accessible.name: modelData
                        Accessible.ignored: !enabled
                        Accessible.onPressAction: controller.tapSegmentButton(index)
                        Accessible.checkable: true
                        Accessible.checked: index === controller.currentPageIndex
                        activeFocusOnTab: true
                    }
                }
            }
        }
        // The selection bar follows the pages as they move.
        Rectangle {
            objectName: "selectionBar"
            anchors.bottom: parent.bottom
            height: 3 * screen.u
            radius: height / 2
            color: Theme.gold
            readonly property real step: (buttons.width - 16 * screen.u) / Math.max(1, controller.buttonText.length)
            width: step - 20 * screen.u
            x: buttons.width - 8 * screen.u - step * (1 + pages.contentX / Math.max(1, pages.width)
                                                       - pages.originX / Math.max(1, pages.width)) + 10 * screen.u
        }
    }
    ListView {
        id: pages
        objectName: "pages"
        anchors.top: buttons.bottom
        anchors.bottom: parent.bottom
        width: parent.width
        orientation: ListView.Horizontal
        layoutDirection: Qt.RightToLeft
        snapMode: ListView.SnapOneItem
        highlightRangeMode: ListView.StrictlyEnforceRange
        highlightMoveDuration: 250
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        cacheBuffer: width * 4
        model: controller.pages
        currentIndex: controller.currentPageIndex
        onMovementStarted: controller.setPageScrolling(true)
        onMovementEnded: {
            controller.setPageScrolling(false)
            controller.pageShown(currentIndex)
        }
        delegate: Item {
            width: pages.width
            height: pages.height
            ScreenLoader { controller: modelData }
        }
    }
}
