import QtQuick

// A small counter: an icon disc and a number.
Rectangle {
    id: pill
    property alias text: label.text
    property color disc: Theme.gold
    property string glyph: ""
    property int fontSize: 16
    // A counter reads as text; a use that opens something on a tap makes it a button.
    Accessible.role: Accessible.StaticText
    Accessible.ignored: !enabled
    Accessible.name: label.text
    implicitWidth: row.implicitWidth + 18
    implicitHeight: 34
    radius: height / 2
    color: "#66000000"
    border.color: "#33ffffff"
    Row {
        id: row
        Accessible.ignored: true
        anchors.centerIn: parent
        spacing: 6
        Rectangle {
            width: pill.height - 12
            height: width
            radius: width / 2
            color: pill.disc
            anchors.verticalCenter: parent.verticalCenter
            border.color: Qt.darker(pill.disc, 1.4)
            border.width: 2
            Text {
                anchors.centerIn: parent
                text: pill.glyph
                font.pixelSize: parent.height * 0.55
                font.bold: true
                color: Theme.ink
            }
        }
        Text {
            id: label
            font.family: Theme.fontFamily
            font.pixelSize: pill.fontSize
            font.bold: true
            color: "#ffffff"
            anchors.verticalCenter: parent.verticalCenter
        }
    }
}
