import QtQuick
import "components"

// A help button of the play screen: a word and its price. Tab reaches it, Enter or Space presses it (as every
// control's press action, see ScreenLoader), and its tooltip names its action and shortcut.
Item {
    id: button
    property alias text: label.text
    property alias toolTip: tip.text
    property string cost: ""
    property string costGlyph: "$"
    property color costDisc: Theme.gold
    property real fontScale: 1.0
    property string accessibleName: label.text
    signal clicked()

    Accessible.role: Accessible.Button
    Accessible.ignored: !enabled
    Accessible.name: accessibleName
    Accessible.description: cost.length > 0 ? A11y.text(costGlyph === "$" ? "a11y.costGold" : "a11y.costSkips").arg(cost) : ""
    Accessible.onPressAction: if (button.enabled) button.clicked()
    activeFocusOnTab: true

    Rectangle {
        anchors.fill: parent
        anchors.topMargin: 4
        radius: 14
        color: "#1f1844"
    }
    Rectangle {
        anchors.fill: parent
        anchors.bottomMargin: area.pressed ? 0 : 4
        anchors.topMargin: area.pressed ? 4 : 0
        radius: 14
        color: "#4b3f8f"
        border.color: "#30ffffff"
        Row {
            anchors.centerIn: parent
            spacing: 5
            Accessible.ignored: true
            Text {
                id: label
                font.family: Theme.fontFamily
                font.pixelSize: Math.min(15, button.height * 0.32) * button.fontScale
                font.bold: true
                color: "#ffffff"
                anchors.verticalCenter: parent.verticalCenter
            }
            Row {
                visible: button.cost.length > 0
                spacing: 3
                anchors.verticalCenter: parent.verticalCenter
                Rectangle {
                    width: button.height * 0.36
                    height: width
                    radius: width / 2
                    color: button.costDisc
                    anchors.verticalCenter: parent.verticalCenter
                    Text {
                        anchors.centerIn: parent
                        text: button.costGlyph
                        font.pixelSize: parent.height * 0.6
                        font.bold: true
                        color: Theme.ink
                    }
                }
                Text {
                    text: button.cost
                    font.family: Theme.fontFamily
                    font.pixelSize: Math.min(14, button.height * 0.3)
                    font.bold: true
                    color: Theme.gold
                    anchors.verticalCenter: parent.verticalCenter
                }
            }
        }
    }
    MouseArea {
        id: area
        anchors.fill: parent
        hoverEnabled: true
        onClicked: button.clicked()
    }
    Rectangle {
        objectName: "focusRing"
        visible: button.activeFocus
        anchors.fill: parent
        anchors.margins: -3
        radius: 16
        color: "transparent"
        border.color: Theme.focus
        border.width: 3
    }
    ShortcutTip {
        id: tip
        hovered: area.containsMouse
    }
}
