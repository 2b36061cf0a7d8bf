import QtQuick
import "components"

// The dropdown banner: slides in from the top with a title and a line, and leaves by itself or on a tap.
Item {
    id: root
    objectName: "dropdownBanner"
    height: card.height + 16
    y: banner.visible ? 0 : -height - 10
    visible: y > -height - 10
    Behavior on y { NumberAnimation { duration: 250; easing.type: Easing.OutCubic } }

    Rectangle {
        id: card
        anchors.top: parent.top
        anchors.topMargin: 10
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 20
        height: column.implicitHeight + 22
        radius: 14
        color: "#f7c932"
        border.color: "#b98a00"
        Column {
            id: column
            anchors.centerIn: parent
            width: parent.width - 28
            spacing: 4
            Text {
                width: parent.width
                objectName: "bannerTitle"
                text: banner.title
                font.family: Theme.fontFamily
                font.pixelSize: 15
                font.bold: true
                color: "#2b1d00"
                LayoutMirroring.enabled: false
                horizontalAlignment: Text.AlignRight
            }
            Text {
                width: parent.width
                objectName: "bannerMessage"
                text: banner.message
                wrapMode: Text.WordWrap
                font.family: Theme.fontFamily
                font.pixelSize: 13
                color: "#3d2a00"
                LayoutMirroring.enabled: false
                horizontalAlignment: Text.AlignRight
            }
        }
        MouseArea {
            anchors.fill: parent
            onClicked: banner.dismiss()
            Accessible.role: Accessible.Button
            Accessible.name: banner.message
            Accessible.ignored: !enabled
            Accessible.onPressAction: banner.dismiss()
            activeFocusOnTab: true
        }
    }
}
