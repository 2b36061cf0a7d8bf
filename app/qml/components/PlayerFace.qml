import QtQuick
import "."

// A player's picture in a framed square, with a stand-in while there is none.
Rectangle {
    id: face
    property string playerID: ""
    property string name: ""
    radius: width * 0.18
    color: "#33ffffff"
    Accessible.role: Accessible.Graphic
    Accessible.ignored: !enabled
    Accessible.name: face.name
    // The stand-in picture while the photo loads, and for good when there is none.
    Image {
        anchors.fill: parent
        visible: photo.status !== Image.Ready
        fillMode: Image.PreserveAspectCrop
        source: "qrc:/images/profle.png"
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
