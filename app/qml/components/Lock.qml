import QtQuick

// A padlock drawn from shapes.
Item {
    id: lock
    property color tint: "#8f87ad"
    implicitWidth: 22
    implicitHeight: 26
    Rectangle {
        width: parent.width * 0.62
        height: parent.height * 0.55
        radius: width / 2
        anchors.horizontalCenter: parent.horizontalCenter
        y: 0
        color: "transparent"
        border.color: lock.tint
        border.width: Math.max(2, parent.width * 0.13)
    }
    Rectangle {
        width: parent.width
        height: parent.height * 0.58
        y: parent.height * 0.42
        radius: 4
        color: lock.tint
        Rectangle {
            width: parent.width * 0.16
            height: parent.height * 0.36
            radius: width / 2
            anchors.centerIn: parent
            color: Qt.darker(lock.tint, 1.6)
        }
    }
}
