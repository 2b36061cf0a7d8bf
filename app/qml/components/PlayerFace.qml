import QtQuick
import "."

// A player's picture in a circle, with his initial while there is none.
Rectangle {
    id: face
    property string playerID: ""
    property string name: ""
    radius: width / 2
    color: "#33ffffff"
    border.color: "#88ffffff"
    clip: true
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
        anchors.margins: 2
        fillMode: Image.PreserveAspectCrop
        asynchronous: true
        source: face.playerID.length > 0 ? "image://players/" + face.playerID : ""
    }
}
