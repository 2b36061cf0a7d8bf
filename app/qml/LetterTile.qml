import QtQuick
import "components"

// One tile of the tray. Its frame comes from the board; a change of frame is the tile's move, drawn over 0.3 s.
Item {
    id: tile
    property QtObject label
    signal tapped()

    x: label.frame.x
    y: label.frame.y
    width: label.frame.width
    height: label.frame.height
    z: label.z
    visible: label.onScreen && label.text.length > 0

    Behavior on x { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }
    Behavior on y { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }
    Behavior on width { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }
    Behavior on height { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }

    Image {
        anchors.fill: parent
        source: Theme.image("tile")
        sourceSize.width: 160
        sourceSize.height: 160
    }
    Text {
        anchors.fill: parent
        anchors.bottomMargin: parent.height * 0.08
        text: label.text
        color: label.titleColor
        font.family: Theme.fontFamily
        font.bold: true
        font.pixelSize: Math.max(8, Math.min(parent.width, parent.height) * 0.56)
        fontSizeMode: Text.Fit
        minimumPixelSize: Math.max(6, font.pixelSize * 0.5)
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
    }
    MouseArea {
        anchors.fill: parent
        enabled: label.recognizer !== 0
        onClicked: tile.tapped()
    }
}
