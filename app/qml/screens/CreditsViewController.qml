import QtQuick
import ".."
import "../components"

// The attributions of the game's pictures, font and libraries.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent

    Background {}
    MouseArea {
        anchors.fill: parent
    }
    Text {
        id: heading
        anchors.top: parent.top
        anchors.topMargin: 24
        anchors.horizontalCenter: parent.horizontalCenter
        text: "شكر وحقوق"
        font.family: Theme.fontFamily
        font.pixelSize: 24
        font.bold: true
        color: Theme.gold
    }
    Rectangle {
        anchors.top: heading.bottom
        anchors.bottom: closeButton.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 16
        radius: 16
        color: Theme.paper
        Flickable {
            id: flick
            anchors.fill: parent
            anchors.margins: 14
            contentHeight: body.implicitHeight
            clip: true
            Text {
                id: body
                objectName: "creditsText"
                width: flick.width
                text: controller.html
                textFormat: Text.RichText
                wrapMode: Text.Wrap
                font.family: Theme.fontFamily
                font.pixelSize: 13
                lineHeight: 1.2
                color: Theme.ink
                onLinkActivated: (link) => Qt.openUrlExternally(link)
            }
        }
    }
    GameButton {
        id: closeButton
        objectName: "closeCredits"
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 20
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width * 0.6
        height: 48
        text: "رجوع"
        onClicked: controller.close()
    }
}
