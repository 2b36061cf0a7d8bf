import QtQuick
import QtQuick.Shapes
import "components"

// The front alert of the queue, over everything; touches below are blocked while it is up. It has the keyboard
// while it is up: Escape presses its cancel button when it has one, Enter the button Tab reached, else its main
// (last) button.
Item {
    id: overlay
    visible: alerts.visible
    z: 1000
    Keys.onPressed: (event) => {
        if (A11y.pressFocused(event, Window.activeFocusItem, [overlay]))
            event.accepted = true
        else if (event.key === Qt.Key_Escape)
            alerts.cancel()
        else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
            alerts.press(alerts.buttons.length - 1)
        // Nothing reaches the screens below while the alert is up; Tab still moves through its buttons.
        event.accepted = event.key !== Qt.Key_Tab && event.key !== Qt.Key_Backtab
    }

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
        // Read as a dialog: its title, then its message, then its buttons.
        Accessible.role: Accessible.Dialog
        Accessible.name: alerts.title.length > 0 ? alerts.title : alerts.message
        Accessible.description: alerts.title.length > 0 ? alerts.message : ""
        width: Math.min(parent.width - 48, 420)
        height: column.implicitHeight + (alerts.tone.length > 0 ? 52 : 28)
        anchors.centerIn: parent
        radius: 18
        color: Theme.paper
        // A battle's outcome has its own colour and emblem: a star for a win, an arrow down for a loss, two
        // crossed blades for a tie.
        readonly property color toneColor: alerts.tone === "won" ? "#2fa84f" : alerts.tone === "lost" ? "#d8413e"
                                         : alerts.tone === "tied" ? "#2d7be0" : Theme.gold
        border.color: toneColor
        border.width: alerts.tone.length > 0 ? 4 : 2

        Rectangle {
            id: emblem
            objectName: "alertEmblem"
            visible: alerts.tone.length > 0
            width: 64; height: 64; radius: 32
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.verticalCenter: parent.top
            color: box.toneColor
            border.color: Theme.paper
            border.width: 4
            Shape {
                anchors.centerIn: parent
                width: 40; height: 40
                visible: alerts.tone === "won"
                ShapePath {
                    strokeColor: "#fff3b0"
                    strokeWidth: 2
                    fillColor: Theme.gold
                    joinStyle: ShapePath.RoundJoin
                    // A five-pointed star.
                    PathPolyline {
                        path: {
                            const points = []
                            for (let i = 0; i <= 10; ++i) {
                                const r = i % 2 === 0 ? 19 : 8
                                const a = -Math.PI / 2 + i * Math.PI / 5
                                points.push(Qt.point(20 + r * Math.cos(a), 21 + r * Math.sin(a)))
                            }
                            return points
                        }
                    }
                }
            }
            Repeater {
                // A tie: two crossed blades.
                model: alerts.tone === "tied" ? 2 : 0
                delegate: Rectangle {
                    width: 6
                    height: 36
                    radius: 3
                    color: "#ffffff"
                    x: emblem.width / 2 - width / 2
                    y: emblem.height / 2 - height / 2
                    rotation: index === 0 ? 45 : -45
                }
            }
            Shape {
                // A loss: an arrow down.
                anchors.centerIn: parent
                width: 36; height: 36
                visible: alerts.tone === "lost"
                ShapePath {
                    strokeColor: "#ffffff"
                    strokeWidth: 6
                    fillColor: "transparent"
                    capStyle: ShapePath.RoundCap
                    joinStyle: ShapePath.RoundJoin
                    PathPolyline { path: [Qt.point(18, 4), Qt.point(18, 32)] }
                }
                ShapePath {
                    strokeColor: "#ffffff"
                    strokeWidth: 6
                    fillColor: "transparent"
                    capStyle: ShapePath.RoundCap
                    joinStyle: ShapePath.RoundJoin
                    PathPolyline { path: [Qt.point(6, 20), Qt.point(18, 32), Qt.point(30, 20)] }
                }
            }
        }

        Column {
            id: column
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 16
            anchors.topMargin: alerts.tone.length > 0 ? 40 : 16
            spacing: 12

            Text {
                Accessible.role: Accessible.Heading
                Accessible.name: text
                Accessible.ignored: !visible
                width: parent.width
                text: alerts.title
                visible: text.length > 0
                font.family: Theme.fontFamily
                font.pixelSize: 19
                font.bold: true
                color: alerts.tone.length > 0 ? box.toneColor : Theme.ink
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }
            Text {
                objectName: "alertMessage"
                Accessible.role: Accessible.StaticText
                Accessible.name: text
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
