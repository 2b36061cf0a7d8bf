import QtQuick
import ".."
import "../components"

// The play screen: the top bar, the four pictures, the solution bar with its boxes and the tray of twelve.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    // How to play, the help popup or the share panel is up: what lies under it is out of reach, for a tap (the
    // overlay takes it) as for a screen reader.
    readonly property bool overlayUp: controller.helpPopupVisible || controller.revealViewVisible
                                      || controller.shareView !== null

    Background {}

    // Top bar: back, the level's number, gold and skips.
    Rectangle {
        id: topBar
        enabled: !screen.overlayUp
        x: controller.topBarFrame.x
        y: controller.topBarFrame.y
        width: controller.topBarFrame.width
        height: controller.topBarFrame.height
        color: controller.topBarColor

        // In a battle: the question, the clock and the way out take the bar's place.
        Item {
            id: battleBar
            objectName: "battleBar"
            visible: controller.battleBarVisible
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: Math.min(parent.height, device.isPad ? 72 : 52)
            readonly property int seconds: parseInt(controller.battleSecondsText)

            Rectangle {
                objectName: "battleCloseButton"
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.leaveBattle")
                Accessible.onPressAction: controller.closeBattleButtonTapped()
                activeFocusOnTab: true
                anchors.left: parent.left
                anchors.leftMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                width: parent.height * 0.7
                height: width
                radius: width / 2
                color: "#33000000"
                border.color: "#77ffffff"
                Text {
                    anchors.centerIn: parent
                    text: "✕"
                    font.pixelSize: parent.height * 0.45
                    font.bold: true
                    color: "#ffffff"
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.closeBattleButtonTapped()
                }
            }
            Text {
                objectName: "battleQuestion"
                Accessible.role: Accessible.Heading
                Accessible.ignored: !enabled
                Accessible.name: text
                anchors.left: parent.left
                anchors.leftMargin: parent.height * 0.9
                anchors.right: clock.left
                anchors.rightMargin: 8
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignHCenter
                elide: Text.ElideRight
                text: controller.battleQuestionText
                font.family: Theme.fontFamily
                font.pixelSize: device.isPad ? 20 : 15
                font.bold: true
                color: "#ffffff"
            }
            Rectangle {
                id: clock
                objectName: "battleClock"
                Accessible.role: Accessible.StaticText
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.secondsLeft").arg(controller.battleSecondsText)
                anchors.right: parent.right
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                width: parent.height * 0.82
                height: width
                radius: width / 2
                color: battleBar.seconds <= 10 ? Theme.red : "#55000000"
                border.color: Theme.gold
                border.width: 2.5
                Behavior on color { ColorAnimation { duration: 200 } }
                Text {
                    objectName: "battleSeconds"
                    anchors.centerIn: parent
                    text: controller.battleSecondsText
                    font.family: Theme.fontFamily
                    font.pixelSize: parent.height * 0.48
                    font.bold: true
                    color: "#ffffff"
                }
            }
        }

        Item {
            visible: !controller.battleBarVisible
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: Math.min(parent.height, device.isPad ? 72 : 52)

            Rectangle {
                objectName: "backButton"
                visible: controller.canGoBack
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.back")
                Accessible.onPressAction: controller.goBack(null)
                activeFocusOnTab: true
                anchors.left: parent.left
                anchors.leftMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                width: parent.height * 0.7
                height: width
                radius: width / 2
                color: "#22ffffff"
                border.color: "#55ffffff"
                Text {
                    anchors.centerIn: parent
                    text: "→"
                    font.pixelSize: parent.height * 0.55
                    font.bold: true
                    color: "#ffffff"
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.goBack(null)
                }
            }
            // Asks friends for help: the share panel with a picture of the level.
            Rectangle {
                id: shareLevelButton
                objectName: "shareLevelButton"
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.askFriends")
                Accessible.onPressAction: controller.shareLevelWithFriends(null)
                activeFocusOnTab: true
                anchors.left: parent.left
                anchors.leftMargin: controller.canGoBack ? 18 + parent.height * 0.7 : 10
                anchors.verticalCenter: parent.verticalCenter
                width: parent.height * 0.7
                height: width
                radius: width / 2
                color: "#22ffffff"
                border.color: "#55ffffff"
                Text {
                    anchors.centerIn: parent
                    text: "⤴"
                    font.pixelSize: parent.height * 0.5
                    font.bold: true
                    color: Theme.gold
                }
                MouseArea {
                    id: shareLevelArea
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: controller.shareLevelWithFriends(null)
                }
                Rectangle {
                    visible: shareLevelButton.activeFocus
                    anchors.fill: parent
                    anchors.margins: -3
                    radius: width / 2
                    color: "transparent"
                    border.color: Theme.focus
                    border.width: 3
                }
                ShortcutTip {
                    hovered: shareLevelArea.containsMouse
                    text: controller.helpToolTip(4)
                }
            }
            Rectangle {
                objectName: "levelBadge"
                Accessible.role: Accessible.StaticText
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.level").arg(controller.levelText)
                anchors.horizontalCenter: parent.horizontalCenter
                anchors.verticalCenter: parent.verticalCenter
                height: parent.height * 0.7
                width: levelRow.implicitWidth + 24
                radius: height / 2
                color: "#55000000"
                border.color: Theme.gold
                border.width: 1.5
                Row {
                    id: levelRow
                    Accessible.ignored: true
                    anchors.centerIn: parent
                    spacing: 6
                    Text {
                        text: "المرحلة"
                        font.family: Theme.fontFamily
                        font.pixelSize: device.isPad ? 18 : 14
                        color: "#e8e2ff"
                        anchors.verticalCenter: parent.verticalCenter
                    }
                    Text {
                        objectName: "levelLabel"
                        text: controller.levelText
                        font.family: Theme.fontFamily
                        font.pixelSize: device.isPad ? 24 : 18
                        font.bold: true
                        color: Theme.gold
                        anchors.verticalCenter: parent.verticalCenter
                    }
                }
            }
            Row {
                anchors.right: parent.right
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                spacing: 6
                Pill {
                    objectName: "creditsPill"
                    Accessible.role: Accessible.Button
                    Accessible.ignored: !enabled
                    Accessible.name: A11y.text("a11y.gold").arg(controller.creditsText)
                    Accessible.description: A11y.text("a11y.openStore")
                    Accessible.onPressAction: controller.openStore(null)
                    activeFocusOnTab: true
                    height: topBar.height > 60 && !device.isPad ? 34 : (device.isPad ? 40 : 32)
                    fontSize: device.isPad ? 18 : 14
                    glyph: "$"
                    text: controller.creditsText
                    MouseArea {
                        anchors.fill: parent
                        onClicked: controller.openStore(null)
                    }
                }
                Pill {
                    objectName: "skipsPill"
                    Accessible.name: A11y.text("a11y.skips").arg(controller.skipsText)
                    height: topBar.height > 60 && !device.isPad ? 34 : (device.isPad ? 40 : 32)
                    fontSize: device.isPad ? 18 : 14
                    disc: "#7fd3ff"
                    glyph: "»"
                    text: controller.skipsText
                }
            }
        }
    }

    // The game's title, shown on the bar only while the picture of the level is taken.
    Rectangle {
        objectName: "screenshotTitleLabel"
        visible: controller.screenshotTitleVisible
        x: controller.topBarFrame.x
        y: controller.topBarFrame.y
        width: controller.topBarFrame.width
        height: controller.topBarFrame.height
        color: controller.topBarColor
        z: 1
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: Math.max(0, (Math.min(parent.height, device.isPad ? 72 : 52) - height) / 2)
            text: controller.screenshotTitleText
            font.family: Theme.fontFamily
            font.pixelSize: device.isPad ? 28 : 22
            font.bold: true
            color: Theme.gold
            style: Text.Raised
            styleColor: "#7a4f00"
        }
    }

    WordViewItem {
        enabled: !screen.overlayUp
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
        enabled: !screen.overlayUp
        x: controller.workViewFrame.x
        y: controller.workViewFrame.y
        width: controller.workViewFrame.width
        height: controller.workViewFrame.height
        z: 3

        Image {
            id: solutionBar
            objectName: "solutionBar"
            Accessible.ignored: true
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
                // The tile standing in this box, if any: it is read, and pressed, as the box.
                readonly property QtObject occupant: {
                    for (const tile of controller.tiles) {
                        if (tile.box === index && tile.onScreen)
                            return tile;
                    }
                    return null;
                }
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.box").arg(index + 1).arg(controller.boxes.length)
                    .arg(occupant ? occupant.text : A11y.text("a11y.boxEmpty"))
                Accessible.onPressAction: {
                    const at = occupant ? controller.tiles.indexOf(occupant) : -1;
                    if (at >= 0 && occupant.recognizer !== 0)
                        controller.tapTile(at);
                }
                activeFocusOnTab: true
                x: solutionBar.x + modelData.frame.x
                y: solutionBar.y + modelData.frame.y
                width: modelData.frame.width
                height: modelData.frame.height
                source: Theme.image(modelData.image)
                sourceSize.width: 128
                sourceSize.height: 160
            }
        }
        // The tray in reading order, before the help row under it, so that a screen reader and the tab key meet
        // the tiles as they are seen (the tiles' own order is the answer's).
        Repeater {
            model: controller.trayOrder
            delegate: LetterTile {
                objectName: "tile" + modelData
                label: controller.tiles[modelData]
                onTapped: controller.tapTile(modelData)
            }
        }
        // The help row, read right to left: a letter, the removal of wrong letters, a skip, and all help.
        Row {
            id: helpRow
            x: controller.removeButtonFrame.x
            y: controller.revealButtonFrame.y
            width: controller.revealButtonFrame.x + controller.revealButtonFrame.width - controller.removeButtonFrame.x
            height: controller.revealButtonFrame.height
            spacing: 6
            readonly property real unit: (width - 3 * spacing) / 10
            HelpButton {
                objectName: "revealButton"
                width: helpRow.unit * 3
                height: helpRow.height
                text: "حرف"
                accessibleName: A11y.text("a11y.revealLetter")
                cost: controller.revealCostText
                toolTip: controller.helpToolTip(1)
                onClicked: controller.revealLetter(null)
            }
            HelpButton {
                objectName: "removeWrongButton"
                width: helpRow.unit * 3
                height: helpRow.height
                text: "حذف"
                accessibleName: A11y.text("a11y.removeWrong")
                cost: controller.removeCostText
                toolTip: controller.helpToolTip(2)
                onClicked: controller.removeWrongLetters(null)
            }
            HelpButton {
                objectName: "skipButton"
                width: helpRow.unit * 2.4
                height: helpRow.height
                text: "تجاوز"
                accessibleName: A11y.text("a11y.skipLevel")
                cost: controller.skipsText
                costGlyph: "»"
                costDisc: "#7fd3ff"
                toolTip: controller.helpToolTip(3)
                onClicked: controller.skipLevel(null)
            }
            HelpButton {
                objectName: "moreHelpButton"
                width: helpRow.unit * 1.6
                height: helpRow.height
                text: "؟"
                accessibleName: A11y.text("a11y.moreHelp")
                fontScale: 1.6
                toolTip: controller.helpToolTip(9)
                onClicked: controller.showRevealView(null)
            }
        }
    }

    // The banner's strip along the bottom.
    Item {
        objectName: "adsView"
        enabled: !screen.overlayUp
        x: controller.adsView.frame.x
        y: controller.adsView.frame.y
        width: controller.adsView.frame.width
        height: controller.adsView.frame.height
        z: 30
        Repeater {
            model: controller.adsView.subviews
            // Centred in the strip when the ad is narrower than the screen.
            delegate: BannerAdView { view: modelData; x: Math.max(0, (parent.width - width) / 2) }
        }
    }

    RevealView {
        anchors.fill: parent
        visible: controller.revealViewVisible
        z: 40
        controller: screen.controller
    }

    ShareView {
        anchors.fill: parent
        visible: controller.shareView !== null
        view: controller.shareView
        z: 45
        onDismissed: controller.dismissShareViewAction()
    }

    HelpPopup {
        anchors.fill: parent
        visible: controller.helpPopupVisible
        z: 50
        onDismissed: controller.dismissHelpAction()
        onCreditsRequested: controller.openCredits()
    }
}
