import QtQuick

// A share target's icon: a disc in the brand's colour with its letter or sign, and its name below.
Item {
    id: icon
    property string glyph
    property color disc: "#5b6b7f"
    property color glyphColor: "#ffffff"
    property string name
    property real side: 52
    // What a screen reader says: the name under the icon, or a fuller one where there is none.
    property string accessibleName: name.length > 0 ? name : glyph
    signal tapped()
    Accessible.role: Accessible.Button
    Accessible.name: accessibleName
    Accessible.ignored: !enabled
    Accessible.onPressAction: icon.tapped()
    activeFocusOnTab: true
    width: side + 12
    height: side + (name.length > 0 ? 26 : 0)

    Rectangle {
        id: circle
        width: icon.side
        height: width
        radius: width / 2
        anchors.horizontalCenter: parent.horizontalCenter
        color: icon.disc
        border.color: Qt.darker(icon.disc, 1.25)
        border.width: 1
        scale: area.pressed ? 0.92 : 1.0
        Behavior on scale { NumberAnimation { duration: 80 } }
        // A soft light on the upper half.
        Rectangle {
            anchors.fill: parent
            radius: parent.radius
            gradient: Gradient {
                GradientStop { position: 0.0; color: "#33ffffff" }
                GradientStop { position: 0.55; color: "#00ffffff" }
            }
        }
        Text {
            anchors.centerIn: parent
            text: icon.glyph
            font.pixelSize: icon.side * 0.5
            font.bold: true
            color: icon.glyphColor
        }
    }
    Text {
        visible: icon.name.length > 0
        anchors.top: circle.bottom
        anchors.topMargin: 4
        anchors.horizontalCenter: parent.horizontalCenter
        width: icon.width + 10
        horizontalAlignment: Text.AlignHCenter
        elide: Text.ElideRight
        text: icon.name
        font.family: Theme.fontFamily
        font.pixelSize: 12
        color: "#3a3a3c"
    }
    MouseArea { id: area; anchors.fill: parent; onClicked: icon.tapped() }
}
