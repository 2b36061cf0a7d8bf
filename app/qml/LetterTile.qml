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

    // A tile standing in a box is read as that box's content, not as a tile of the tray; nothing of a screen
    // covered by another (and so disabled) is read.
    Accessible.role: Accessible.Button
    Accessible.name: A11y.text("a11y.tile").arg(label.text)
    Accessible.ignored: !visible || !enabled || label.box >= 0
    Accessible.onPressAction: if (label.recognizer !== 0) tile.tapped()
    // Tab reaches the tiles of the tray. A focused tile that leaves the tray (pressed, so on its way to a box, or
    // revealed into one) hands the keyboard's focus on to the next control at once, as Tab would.
    readonly property bool inTray: visible && label.inTray
    activeFocusOnTab: inTray || activeFocus
    onInTrayChanged: {
        if (inTray || !activeFocus)
            return
        const next = nextItemInFocusChain(true)
        if (next && next !== tile)
            next.forceActiveFocus(Qt.TabFocusReason)
    }

    Behavior on x { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }
    Behavior on y { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }
    Behavior on width { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }
    Behavior on height { NumberAnimation { duration: 300; easing.type: Easing.OutCubic } }

    Image {
        Accessible.ignored: true
        anchors.fill: parent
        source: Theme.image("tile")
        sourceSize.width: 160
        sourceSize.height: 160
    }
    Text {
        Accessible.ignored: true
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
    Rectangle {
        objectName: "focusRing"
        visible: tile.activeFocus
        anchors.fill: parent
        anchors.margins: -3
        radius: 10
        color: "transparent"
        border.color: Theme.focus
        border.width: 3
    }
}
