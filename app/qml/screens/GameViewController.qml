import QtQuick
import ".."
import "../components"

// The play screen: the top bar, the four pictures, the solution bar with its boxes and the tray of twelve.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0.0; color: Theme.backgroundTop }
            GradientStop { position: 1.0; color: Theme.backgroundBottom }
        }
    }

    // Top bar: back, the game's name and the level's number, help.
    Rectangle {
        id: topBar
        x: controller.topBarFrame.x
        y: controller.topBarFrame.y
        width: controller.topBarFrame.width
        height: controller.topBarFrame.height
        color: controller.topBarColor

        Item {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: Math.min(parent.height, device.isPad ? 72 : 52)

            Text {
                anchors.centerIn: parent
                text: controller.gameNameText
                font.family: Theme.fontFamily
                font.pixelSize: device.isPad ? 28 : 21
                font.bold: true
                color: "#ffffff"
            }
            Rectangle {
                objectName: "levelBadge"
                anchors.left: parent.left
                anchors.leftMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                height: parent.height * 0.66
                width: levelRow.implicitWidth + 22
                radius: height / 2
                color: "#00000055"
                border.color: Theme.gold
                border.width: 1.5
                Row {
                    id: levelRow
                    anchors.centerIn: parent
                    spacing: 6
                    Text {
                        text: "المرحلة"
                        font.family: Theme.fontFamily
                        font.pixelSize: device.isPad ? 17 : 13
                        color: "#e8e2ff"
                        anchors.verticalCenter: parent.verticalCenter
                    }
                    Text {
                        objectName: "levelLabel"
                        text: controller.levelText
                        font.family: Theme.fontFamily
                        font.pixelSize: device.isPad ? 22 : 17
                        font.bold: true
                        color: Theme.gold
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
            Rectangle {
                objectName: "helpButton"
                anchors.right: parent.right
                anchors.rightMargin: 12
                anchors.verticalCenter: parent.verticalCenter
                width: parent.height * 0.66
                height: width
                radius: width / 2
                color: Theme.gold
                Text {
                    anchors.centerIn: parent
                    text: "؟"
                    font.family: Theme.fontFamily
                    font.pixelSize: parent.height * 0.6
                    font.bold: true
                    color: Theme.ink
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.displayHelpView()
                }
            }
        }
    }

    WordViewItem {
        x: controller.gameViewFrame.x
        y: controller.gameViewFrame.y
        width: controller.gameViewFrame.width
        height: controller.gameViewFrame.height
        gameView: controller.gameView
        z: 2
    }

    // The working view: the solution bar with its boxes, and the tray.
    Item {
        id: workView
        objectName: "workView"
        x: controller.workViewFrame.x
        y: controller.workViewFrame.y
        width: controller.workViewFrame.width
        height: controller.workViewFrame.height
        z: 3

        Image {
            id: solutionBar
            objectName: "solutionBar"
            x: controller.solutionBarFrame.x
            y: controller.solutionBarFrame.y
            width: controller.solutionBarFrame.width
            height: controller.solutionBarFrame.height
            source: Theme.image(controller.solutionBarImage)
            sourceSize.width: width * 2
            sourceSize.height: height * 2
        }
        Repeater {
            model: controller.boxes
            delegate: Image {
                objectName: "box" + index
                x: solutionBar.x + modelData.frame.x
                y: solutionBar.y + modelData.frame.y
                width: modelData.frame.width
                height: modelData.frame.height
                source: Theme.image(modelData.image)
                sourceSize.width: 128
                sourceSize.height: 160
            }
        }
        Repeater {
            model: controller.tiles
            delegate: LetterTile {
                objectName: "tile" + index
                label: modelData
                onTapped: controller.tapTile(index)
            }
        }
    }

    HelpPopup {
        anchors.fill: parent
        visible: controller.helpPopupVisible
        z: 50
        onDismissed: controller.dismissHelpAction()
        onCreditsRequested: controller.openCredits()
    }
}
