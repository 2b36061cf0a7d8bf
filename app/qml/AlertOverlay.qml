import QtQuick
import "components"

// The front alert of the queue, over everything; touches below are blocked while it is up.
Item {
    id: overlay
    visible: alerts.visible
    z: 1000

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.55
    }
    MouseArea {
        anchors.fill: parent
    }
    Rectangle {
        id: box
        objectName: "alertBox"
        width: Math.min(parent.width - 48, 420)
        height: column.implicitHeight + 28
        anchors.centerIn: parent
        radius: 18
        color: Theme.paper
        border.color: Theme.gold
        border.width: 2

        Column {
            id: column
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 16
            spacing: 12

            Text {
                width: parent.width
                text: alerts.title
                visible: text.length > 0
                font.family: Theme.fontFamily
                font.pixelSize: 19
                font.bold: true
                color: Theme.ink
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }
            Text {
                objectName: "alertMessage"
                width: parent.width
                text: alerts.message
                font.family: Theme.fontFamily
                font.pixelSize: 15
                color: "#4a3b22"
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
                lineHeight: 1.15
            }
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 10
                Repeater {
                    model: alerts.buttons
                    delegate: GameButton {
                        objectName: "alertButton" + index
                        width: Math.max(110, (box.width - 42) / Math.max(1, alerts.buttons.length))
                        height: 44
                        text: modelData
                        primary: index === alerts.buttons.length - 1
                        onClicked: alerts.press(index)
                    }
                }
            }
        }
    }
}
