import QtQuick

// The touch-blocking progress display: a clear or black mask with a spinner.
Item {
    visible: progressHud.visible
    z: 999
    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: progressHud.maskType === 3 ? 0.6 : 0.0
    }
    MouseArea {
        anchors.fill: parent
    }
    Rectangle {
        width: 86
        height: 86
        radius: 16
        anchors.centerIn: parent
        color: "#222222"
        opacity: 0.85
        Rectangle {
            width: 40
            height: 40
            radius: 20
            anchors.centerIn: parent
            color: "transparent"
            border.width: 5
            border.color: "#f9c32d"
            Rectangle {
                width: 12
                height: 12
                radius: 6
                color: "#ffffff"
                x: 14
                y: -4
            }
            RotationAnimation on rotation {
                from: 0
                to: 360
                duration: 900
                loops: Animation.Infinite
                running: progressHud.visible
            }
        }
    }
}
