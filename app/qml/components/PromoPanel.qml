import QtQuick

// The panel of one of the maker's games: its icon and name, and a call to try it.
Rectangle {
    id: panel
    property string title: ""
    property url icon
    property real u: 1
    signal tapped()
    objectName: "promoView"
    height: 58 * u
    radius: 14 * u
    color: "#2affffff"
    border.color: "#55f9c32d"

    // The layout is mirrored: "left" is the start side, on the right.
    Rectangle {
        id: iconBox
        anchors.left: parent.left
        anchors.leftMargin: 8 * panel.u
        anchors.verticalCenter: parent.verticalCenter
        width: 42 * panel.u
        height: width
        radius: 10 * panel.u
        color: "#ffffff"
        Image {
            anchors.fill: parent
            anchors.margins: 3 * panel.u
            source: panel.icon
            sourceSize.width: width * 2
        }
    }
    Column {
        anchors.left: iconBox.right
        anchors.leftMargin: 10 * panel.u
        anchors.verticalCenter: parent.verticalCenter
        Text {
            text: "من ألعابنا"
            font.family: Theme.fontFamily
            font.pixelSize: 11 * panel.u
            color: "#ccffffff"
        }
        Text {
            text: panel.title
            font.family: Theme.fontFamily
            font.pixelSize: 16 * panel.u
            font.bold: true
            color: "#ffffff"
        }
    }
    Rectangle {
        anchors.right: parent.right
        anchors.rightMargin: 10 * panel.u
        anchors.verticalCenter: parent.verticalCenter
        width: tryLabel.implicitWidth + 24 * panel.u
        height: 32 * panel.u
        radius: height / 2
        color: Theme.gold
        Text {
            id: tryLabel
            anchors.centerIn: parent
            text: "جرّبها"
            font.family: Theme.fontFamily
            font.pixelSize: 14 * panel.u
            font.bold: true
            color: Theme.ink
        }
    }
    MouseArea {
        anchors.fill: parent
        onClicked: panel.tapped()
        Accessible.role: Accessible.Button
        Accessible.name: A11y.text("a11y.promo")
        Accessible.ignored: !enabled
        Accessible.onPressAction: panel.tapped()
        activeFocusOnTab: true
    }
}
