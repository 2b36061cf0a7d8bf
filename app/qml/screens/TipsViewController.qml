import QtQuick
import ".."
import "../components"

// Every playing tip, in rows of alternating shade.
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
        title: "نصائح"
        onBack: controller.close()
    }
    ListView {
        id: list
        objectName: "tipsList"
        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 12 * screen.u
        spacing: 6 * screen.u
        clip: true
        model: controller.tips
        delegate: Rectangle {
            width: list.width
            height: tip.implicitHeight + 24 * screen.u
            radius: 14 * screen.u
            color: index % 2 === 0 ? "#2effffff" : "#12ffffff"
            Text {
                id: tip
                anchors.centerIn: parent
                width: parent.width - 28 * screen.u
                text: modelData.trim()
                wrapMode: Text.WordWrap
                LayoutMirroring.enabled: false
                horizontalAlignment: Text.AlignRight
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                lineHeight: 1.15
                color: "#ffffff"
            }
        }
    }
}
