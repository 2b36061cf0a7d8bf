import QtQuick
import "components"

// A rounded button of the game's look.
Item {
    id: button
    property alias text: label.text
    property bool primary: true
    property color tint: primary ? Theme.gold : "#d8d2ea"
    property int fontSize: 16
    // What a screen reader says for the button: its text unless a use gives a fuller one.
    property string accessibleName: label.text
    signal clicked()

    Accessible.role: Accessible.Button
    Accessible.ignored: !enabled
    Accessible.name: accessibleName
    Accessible.onPressAction: if (button.enabled) button.clicked()
    activeFocusOnTab: true

    implicitWidth: 120
    implicitHeight: 44

    Rectangle {
        anchors.fill: parent
        anchors.topMargin: 4
        radius: height / 2
        color: Qt.darker(button.tint, 1.45)
    }
    Rectangle {
        anchors.fill: parent
        anchors.bottomMargin: area.pressed ? 0 : 4
        anchors.topMargin: area.pressed ? 4 : 0
        radius: height / 2
        color: button.tint
        Text {
            id: label
            Accessible.ignored: true
            anchors.centerIn: parent
            font.family: Theme.fontFamily
            font.pixelSize: button.fontSize
            font.bold: true
            color: Theme.ink
        }
    }
    MouseArea {
        id: area
        anchors.fill: parent
        onClicked: button.clicked()
    }
    // Where Tab stopped: Enter or Space presses this button.
    Rectangle {
        objectName: "focusRing"
        visible: button.activeFocus
        anchors.fill: parent
        anchors.margins: -3
        radius: height / 2
        color: "transparent"
        border.color: Theme.focus
        border.width: 3
    }
}
