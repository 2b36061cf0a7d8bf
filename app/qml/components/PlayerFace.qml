import QtQuick
import "."

// A player's picture in a framed square, with his initial while there is none.
Rectangle {
    id: face
    property string playerID: ""
    property string name: ""
    radius: width * 0.18
    color: "#33ffffff"
    Text {
        anchors.centerIn: parent
        visible: photo.status !== Image.Ready
        text: face.playerID.length > 0 ? (face.name.length > 0 ? face.name.charAt(0) : "؟") : "؟"
        font.family: Theme.fontFamily
        font.pixelSize: face.height * 0.45
        font.bold: true
        color: "#ffffff"
    }
    Image {
        id: photo
        anchors.fill: parent
        fillMode: Image.PreserveAspectCrop
        asynchronous: true
        sourceSize.width: 128
        sourceSize.height: 128
        source: face.playerID.length > 0 ? "image://players/" + face.playerID : ""
    }
    Rectangle {
        anchors.fill: parent
        radius: face.radius
        color: "transparent"
        border.color: "#aaffffff"
        border.width: 1.5
    }
}
