import QtQuick
import "components"

// A rounded button of the game's look.
Item {
    id: button
    property alias text: label.text
    property bool primary: true
    property color tint: primary ? Theme.gold : "#d8d2ea"
    property int fontSize: 16
    signal clicked()

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
}
