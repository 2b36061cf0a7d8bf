import QtQuick
import "components"

// The four pictures in a two-by-two grid; a tap enlarges a picture over the grid, another tap shrinks it back.
Item {
    id: view
    property QtObject gameView

    Repeater {
        model: view.gameView ? view.gameView.pictures : []
        delegate: Item {
            id: picture
            objectName: "picture" + index
            x: modelData.frame.x
            y: modelData.frame.y
            width: modelData.frame.width
            height: modelData.frame.height
            z: modelData.z

            // A tap enlarges the picture; a screen reader says what it shows.
            Accessible.role: Accessible.Graphic
            Accessible.ignored: !enabled
            Accessible.name: modelData.description
            Accessible.description: A11y.text("a11y.pictureHint")
            Accessible.onPressAction: if (view.gameView && view.gameView.touchesEnabled) view.gameView.tapPicture(index)
            activeFocusOnTab: true

            Behavior on x { NumberAnimation { duration: 200 } }
            Behavior on y { NumberAnimation { duration: 200 } }
            Behavior on width { NumberAnimation { duration: 200 } }
            Behavior on height { NumberAnimation { duration: 200 } }

            Rectangle {
                anchors.fill: parent
                anchors.margins: -3
                radius: 10
                color: "#ffffff"
            }
            Rectangle {
                anchors.fill: parent
                radius: 8
                color: "#e9e4f5"
                clip: true
                Image {
                    anchors.fill: parent
                    source: modelData.source
                    fillMode: Image.PreserveAspectCrop
                    asynchronous: false
                    smooth: true
                    mipmap: true
                }
            }
            MouseArea {
                anchors.fill: parent
                enabled: view.gameView && view.gameView.touchesEnabled
                onClicked: view.gameView.tapPicture(index)
            }
        }
    }
}
