import QtQuick
import ".."
import "../components"

// The tasks: met ones in green; a met one not yet collected flashes until it is tapped.
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
        title: "المهمات"
        onBack: controller.goBack()
    }
    Pill {
        objectName: "counterLabel"
        anchors.top: bar.bottom
        anchors.topMargin: 10 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        text: controller.counterLabel
        glyph: "✓"
        fontSize: 15 * screen.u
        height: 32 * screen.u
    }
    ListView {
        id: list
        objectName: "tasks"
        anchors.top: bar.bottom
        anchors.topMargin: 52 * screen.u
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 10 * screen.u
        spacing: 6 * screen.u
        clip: true
        model: controller.rows
        delegate: Rectangle {
            id: row
            width: list.width
            height: 58 * screen.u
            radius: 14 * screen.u
            color: modelData.achieved ? "#5532c832" : "#1fffffff"
            border.color: "#26ffffff"
            Rectangle {
                anchors.fill: parent
                radius: parent.radius
                color: "#32c832"
                opacity: 0
                SequentialAnimation on opacity {
                    running: modelData.flashing
                    loops: Animation.Infinite
                    NumberAnimation { from: 0; to: 0.6; duration: 120 }
                    NumberAnimation { from: 0.6; to: 0; duration: 120 }
                }
            }
            Rectangle {
                id: mark
                anchors.right: parent.right
                anchors.rightMargin: 10 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 30 * screen.u
                height: width
                radius: width / 2
                color: modelData.achieved ? Theme.green : "#44ffffff"
                Text {
                    anchors.centerIn: parent
                    text: modelData.achieved ? "✓" : ""
                    font.pixelSize: 18 * screen.u
                    font.bold: true
                    color: "#ffffff"
                }
            }
            Text {
                anchors.right: mark.left
                anchors.rightMargin: 10 * screen.u
                anchors.left: gold.right
                anchors.leftMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                text: modelData.desc
                wrapMode: Text.WordWrap
                // Mirrored with the layout: the text starts at the right.
                horizontalAlignment: Text.AlignLeft
                font.family: Theme.fontFamily
                font.pixelSize: 13 * screen.u
                color: "#ffffff"
            }
            Pill {
                id: gold
                anchors.left: parent.left
                anchors.leftMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                text: modelData.reward
                glyph: "$"
                fontSize: 13 * screen.u
                height: 28 * screen.u
            }
            MouseArea {
                anchors.fill: parent
                onClicked: controller.tableViewDidSelectRowAtIndexPath(index)
                Accessible.role: Accessible.ListItem
                Accessible.name: modelData.desc + (modelData.achieved ? "، " + A11y.text("a11y.done") : "")
                Accessible.description: A11y.text("a11y.reward").arg(modelData.reward)
                Accessible.ignored: !enabled
                Accessible.onPressAction: controller.tableViewDidSelectRowAtIndexPath(index)
                activeFocusOnTab: true
            }
        }
    }
}
