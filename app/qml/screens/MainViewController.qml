import QtQuick
import ".."
import "../components"

// The main screen: where the player stands, and the way to play.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}

    Column {
        anchors.horizontalCenter: parent.horizontalCenter
        y: (device.deviceClass === 1 ? 70 : 28) * screen.u
        width: parent.width - 40 * screen.u
        spacing: 12 * screen.u

        Item {
            width: parent.width
            height: 34 * screen.u
        Row {
            anchors.left: parent.left
            spacing: 8
            Pill {
                objectName: "creditsPill"
                Accessible.name: A11y.text("a11y.gold").arg(controller.creditsLabel)
                text: controller.creditsLabel
                glyph: "$"
                fontSize: 15 * screen.u
                height: 34 * screen.u
            }
            Pill {
                objectName: "skipsPill"
                Accessible.name: A11y.text("a11y.skips").arg(controller.skipsLabel)
                text: controller.skipsLabel
                disc: "#7fd3ff"
                glyph: "»"
                fontSize: 15 * screen.u
                height: 34 * screen.u
            }
        }
        // Sharing and rating the game, then the settings and the about hub, at the end side.
        Repeater {
            model: [
                { "name": "shareButton", "glyph": "⤴", "offset": 3 },
                { "name": "rateButton", "glyph": "★", "offset": 2 }
            ]
            delegate: Rectangle {
                objectName: modelData.name
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text(modelData.name === "shareButton" ? "a11y.share" : "a11y.rate")
                Accessible.onPressAction: modelData.name === "shareButton" ? controller.shareAction() : controller.rateAction()
                activeFocusOnTab: true
                anchors.right: parent.right
                anchors.rightMargin: modelData.offset * (34 * screen.u + 8)
                width: 34 * screen.u
                height: width
                radius: width / 2
                color: "#66000000"
                border.color: "#33ffffff"
                Text {
                    Accessible.ignored: true
                    anchors.centerIn: parent
                    text: modelData.glyph
                    font.pixelSize: 18 * screen.u
                    color: Theme.gold
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: modelData.name === "shareButton" ? controller.shareAction() : controller.rateAction()
                }
            }
        }
        Rectangle {
            id: aboutButton
            objectName: "aboutButton"
            Accessible.role: Accessible.Button
            Accessible.ignored: !enabled
            Accessible.name: A11y.text("a11y.about")
            Accessible.onPressAction: controller.openAbout()
            activeFocusOnTab: true
            anchors.right: settingsButton.left
            anchors.rightMargin: 8
            width: 34 * screen.u
            height: width
            radius: width / 2
            color: "#66000000"
            border.color: "#33ffffff"
            Text {
                Accessible.ignored: true
                anchors.centerIn: parent
                text: "i"
                font.family: Theme.fontFamily
                font.pixelSize: 18 * screen.u
                font.bold: true
                color: "#ffffff"
            }
            MouseArea { anchors.fill: parent; onClicked: controller.openAbout() }
        }
        Rectangle {
            id: settingsButton
            objectName: "settingsButton"
            Accessible.role: Accessible.Button
            Accessible.ignored: !enabled
            Accessible.name: A11y.text("a11y.settings")
            Accessible.onPressAction: controller.openSettings()
            activeFocusOnTab: true
            anchors.right: parent.right
            width: 34 * screen.u
            height: width
            radius: width / 2
            color: "#66000000"
            border.color: "#33ffffff"
            Text {
                Accessible.ignored: true
                anchors.centerIn: parent
                text: "⚙"
                font.pixelSize: 20 * screen.u
                color: "#ffffff"
            }
            MouseArea { anchors.fill: parent; onClicked: controller.openSettings() }
        }
        }

        // The title, and beside it the maker's promoted game when it is shown, pulsing.
        Item {
            width: parent.width
            height: titleText.implicitHeight
            Text {
                id: titleText
                Accessible.role: Accessible.Heading
                Accessible.ignored: !enabled
                Accessible.name: text
                anchors.horizontalCenter: parent.horizontalCenter
                text: "طارفولين"
                font.family: Theme.fontFamily
                font.pixelSize: 42 * screen.u
                font.bold: true
                color: Theme.gold
                style: Text.Raised
                styleColor: "#7a4f00"
            }
            Rectangle {
                objectName: "promoView"
                visible: controller.promoVisible
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.promo")
                Accessible.onPressAction: controller.openPromoView()
                activeFocusOnTab: true
                // The layout is mirrored: "right" is the end side, on the left, clear of the title.
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                width: 44 * screen.u
                height: width
                radius: 8 * screen.u
                color: "#ffffff"
                opacity: controller.promoAlpha
                Behavior on opacity { NumberAnimation { duration: 250 } }
                Image {
                    anchors.fill: parent
                    anchors.margins: 2
                    source: controller.promoIcon
                    sourceSize.width: width * 2
                }
                MouseArea { anchors.fill: parent; onClicked: controller.openPromoView() }
            }
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "أربع صور .. كلمة واحدة"
            font.family: Theme.fontFamily
            font.pixelSize: 15 * screen.u
            color: "#d9d2f5"
        }

        // The rank card: a tap opens the ladder.
        Rectangle {
            objectName: "rankView"
            Accessible.role: Accessible.Button
            Accessible.ignored: !enabled
            Accessible.name: A11y.text("a11y.rank").arg(controller.currentBadgeLabel)
            Accessible.onPressAction: controller.openRankings()
            activeFocusOnTab: true
            Accessible.description: controller.currentBadgeDesc
            width: parent.width
            // Tall enough for its texts with a margin: the Arabic font's lines are tall.
            height: Math.max(132 * screen.u, rankColumn.implicitHeight + 14 * screen.u)
            radius: 20 * screen.u
            color: "#14ffffff"
            border.color: "#30ffffff"
            Image {
                id: badge
                objectName: "badgeImage"
                anchors.right: parent.right
                anchors.rightMargin: 16 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 100 * screen.u
                height: width
                source: "qrc:/images/badges/" + controller.currentBadgeImage
                sourceSize.width: 192
                sourceSize.height: 192
                smooth: true
                mipmap: true
            }
            Column {
                id: rankColumn
                anchors.right: badge.left
                anchors.rightMargin: 14 * screen.u
                anchors.left: parent.left
                anchors.leftMargin: 14 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                spacing: 3 * screen.u
                Text {
                    width: parent.width
                    text: "رتبتك"
                    font.family: Theme.fontFamily
                    font.pixelSize: 13 * screen.u
                    color: "#bdb4e0"
                }
                Text {
                    width: parent.width
                    objectName: "rankName"
                    text: controller.currentBadgeLabel
                    font.family: Theme.fontFamily
                    font.pixelSize: 24 * screen.u
                    font.bold: true
                    color: "#ffffff"
                }
                Text {
                    width: parent.width
                    text: controller.currentBadgeDesc
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: "#d9d2f5"
                    wrapMode: Text.WordWrap
                }
            }
            MouseArea { anchors.fill: parent; onClicked: controller.openRankings() }
        }

        // Level, round, points and the tasks met.
        Row {
            id: figures
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 8 * screen.u
            Repeater {
                model: [
                    { "caption": "المرحلة", "value": controller.currentLevelLabel, "name": "levelValue" },
                    { "caption": "الجولة", "value": controller.currentRoundLabel, "name": "roundValue" },
                    { "caption": "النقاط", "value": controller.totalPointsLabel, "name": "pointsValue" },
                    { "caption": "المهمات", "value": controller.completedAchmtsLabel, "name": "completedAchmtsLabel" }
                ]
                delegate: Rectangle {
                    objectName: modelData.name === "completedAchmtsLabel" ? "achievementsView" : ""
                    // The figures read as "المرحلة 3"; the tasks' card opens the achievements.
                    Accessible.role: modelData.name === "completedAchmtsLabel" ? Accessible.Button : Accessible.StaticText
                    Accessible.ignored: !enabled
                    Accessible.name: modelData.name === "completedAchmtsLabel"
                        ? A11y.text("a11y.achievements") + ": " + modelData.value
                        : modelData.caption + " " + modelData.value
                    Accessible.onPressAction: if (modelData.name === "completedAchmtsLabel") controller.openAchievements()
                    activeFocusOnTab: modelData.name === "completedAchmtsLabel"
                    width: (figures.parent.width - 3 * figures.spacing) / 4
                    height: 74 * screen.u
                    radius: 16 * screen.u
                    color: "#44000000"
                    border.color: "#26ffffff"
                    Column {
                        Accessible.ignored: true
                        anchors.centerIn: parent
                        spacing: 2
                        Text {
                            objectName: modelData.name
                            anchors.horizontalCenter: parent.horizontalCenter
                            text: modelData.value
                            font.family: Theme.fontFamily
                            font.pixelSize: 22 * screen.u
                            fontSizeMode: Text.HorizontalFit
                            minimumPixelSize: 12 * screen.u
                            width: Math.min(implicitWidth, parent.parent.width - 8 * screen.u)
                            horizontalAlignment: Text.AlignHCenter
                            font.bold: true
                            color: Theme.gold
                        }
                        Text {
                            anchors.horizontalCenter: parent.horizontalCenter
                            text: modelData.caption
                            font.family: Theme.fontFamily
                            font.pixelSize: 12 * screen.u
                            color: "#d9d2f5"
                        }
                    }
                    // A task waits to be collected: the tile flashes green.
                    Rectangle {
                        anchors.fill: parent
                        radius: parent.radius
                        color: "#32c832"
                        opacity: 0
                        SequentialAnimation on opacity {
                            running: modelData.name === "completedAchmtsLabel" && controller.achievementsEffect === "flash"
                            loops: Animation.Infinite
                            onRunningChanged: if (!running) parent.opacity = 0
                            NumberAnimation { from: 0; to: 0.55; duration: 250 }
                            NumberAnimation { from: 0.55; to: 0; duration: 250 }
                        }
                    }
                    MouseArea {
                        anchors.fill: parent
                        enabled: modelData.name === "completedAchmtsLabel"
                        onClicked: controller.openAchievements()
                    }
                }
            }
        }
        // The game service: the prompt to log in, or the player's place and how it moved in two days.
        Rectangle {
            objectName: "gamecenterView"
            Accessible.role: Accessible.Button
            Accessible.ignored: !enabled
            Accessible.name: controller.notLoggedVisible ? A11y.text("a11y.login") : A11y.text("a11y.leaderboard") + ": " + controller.playerRankLabel
            Accessible.onPressAction: controller.notLoggedVisible ? controller.loginToGameCenterAction() : controller.openGameCenter()
            activeFocusOnTab: true
            width: parent.width
            height: 54 * screen.u
            radius: 16 * screen.u
            color: "#26ffffff"
            border.color: "#44ffffff"
            Text {
                objectName: "notLoggedLabel"
                anchors.centerIn: parent
                visible: controller.notLoggedVisible
                text: controller.notLoggedLabel
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#ffffff"
            }
            Row {
                anchors.centerIn: parent
                visible: !controller.notLoggedVisible
                spacing: 10 * screen.u
                Text {
                    text: "ترتيبك في قائمة الأذكياء"
                    font.family: Theme.fontFamily
                    font.pixelSize: 13 * screen.u
                    color: "#d9d2f5"
                    anchors.verticalCenter: parent.verticalCenter
                }
                Text {
                    objectName: "playerRankLabel"
                    text: controller.playerRankLabel
                    font.family: Theme.fontFamily
                    font.pixelSize: 22 * screen.u
                    font.bold: true
                    color: Theme.gold
                    anchors.verticalCenter: parent.verticalCenter
                }
                Text {
                    objectName: "gcRankArrow"
                    visible: controller.gcRankVisible && controller.gcRankArrow.length > 0
                    text: controller.gcRankArrow === "red-arrow.png" ? "▼" : "▲"
                    font.pixelSize: 16 * screen.u
                    color: controller.gcRankChangeColor
                    anchors.verticalCenter: parent.verticalCenter
                }
                Text {
                    objectName: "gcRankChange"
                    visible: controller.gcRankVisible
                    text: controller.gcRankChange
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    font.bold: true
                    color: controller.gcRankChangeColor
                    anchors.verticalCenter: parent.verticalCenter
                }
            }
            MouseArea {
                anchors.fill: parent
                onClicked: controller.notLoggedVisible ? controller.loginToGameCenterAction() : controller.openGameCenter()
            }
        }

    }

    Column {
        id: buttons
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: (device.deviceClass === 1 ? 60 : 34) * screen.u
        spacing: 14 * screen.u
        GameButton {
            id: startButton
            objectName: "startButton"
            anchors.horizontalCenter: parent.horizontalCenter
            transformOrigin: Item.Center
            // The first session: a shake every three seconds.
            Timer {
                interval: 3000
                repeat: true
                running: controller.startButtonEffect === "shake"
                onTriggered: tada.restart()
            }
            SequentialAnimation {
                id: tada
                ParallelAnimation {
                    NumberAnimation { target: startButton; property: "scale"; to: 0.9; duration: 100 }
                    NumberAnimation { target: startButton; property: "rotation"; to: -3; duration: 100 }
                }
                NumberAnimation { target: startButton; property: "scale"; to: 1.1; duration: 100 }
                SequentialAnimation {
                    loops: 3
                    NumberAnimation { target: startButton; property: "rotation"; to: 3; duration: 80 }
                    NumberAnimation { target: startButton; property: "rotation"; to: -3; duration: 80 }
                }
                ParallelAnimation {
                    NumberAnimation { target: startButton; property: "scale"; to: 1.0; duration: 100 }
                    NumberAnimation { target: startButton; property: "rotation"; to: 0; duration: 100 }
                }
            }
            width: 250 * screen.u
            height: 64 * screen.u
            fontSize: 24 * screen.u
            text: "ابدأ اللعب"
            onClicked: controller.startAction()
        }
        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 12 * screen.u
            GameButton {
                objectName: "storeButton"
                width: 150 * screen.u
                height: 44 * screen.u
                fontSize: 16 * screen.u
                primary: false
                text: "المتجر"
                onClicked: controller.openStore()
            }
            // Battles open after two solved levels; the label counts battles / wins.
            GameButton {
                objectName: "battleButton"
                visible: controller.battleButtonVisible
                width: 150 * screen.u
                height: 44 * screen.u
                fontSize: 15 * screen.u
                tint: "#ff8a5c"
                text: "⚔ معركة   " + controller.totalWinsLabel
                accessibleName: A11y.text("a11y.battle").arg(controller.totalWinsLabel)
                onClicked: controller.startBattle()
            }
        }
    }
}
