import QtQuick
import QtQuick.Shapes
import "components"

// The full-screen ad on screen (adPresenter): a picture fitted to the window or a card drawn from the ad's
// words and colours. An interstitial closes at once with ×; a rewarded one counts its seconds down and pays at
// the end, and its close button says whether the reward is lost. Over the screens, under alerts and the
// progress display; touches below are blocked while it is up.
Item {
    id: overlay
    objectName: "adOverlay"
    visible: adPresenter.visible
    z: 900
    // It has the keyboard while it is up: Escape is its close button (a rewarded ad's gives the reward up
    // until the time is over, as a tap on it does); Enter or Space presses what Tab reached. Nothing reaches
    // the screens below.
    Keys.onPressed: (event) => {
        if (!A11y.pressFocused(event, Window.activeFocusItem, [overlay]) && event.key === Qt.Key_Escape)
            adPresenter.close()
        event.accepted = event.key !== Qt.Key_Tab && event.key !== Qt.Key_Backtab
    }

    readonly property QtObject ad: adPresenter.ad
    readonly property bool picture: ad !== null && ad.kind === "picture"
    readonly property color background: ad ? ad.background : "#120e24"
    readonly property color foreground: ad ? ad.foreground : "#ffffff"
    readonly property color accent: ad ? ad.accent : Theme.gold

    // Dark or light letters, whichever reads on the colour.
    function inkOn(c) {
        return 0.299 * c.r + 0.587 * c.g + 0.114 * c.b > 0.6 ? "#1c1408" : "#ffffff"
    }

    onAdChanged: {
        if (ad !== null) {
            entrance.restart()
        }
    }

    Rectangle {
        anchors.fill: parent
        color: overlay.background
    }
    MouseArea {
        anchors.fill: parent
    }

    // Soft rings of the accent colour drifting behind the card.
    Repeater {
        model: overlay.picture ? 0 : 3
        delegate: Rectangle {
            readonly property real size: overlay.width * (0.55 + index * 0.25)
            width: size
            height: size
            radius: size / 2
            color: "transparent"
            border.color: overlay.accent
            border.width: 18 - index * 5
            opacity: 0.16
            x: overlay.width * (index === 1 ? 0.45 : -0.2) + drift * (index % 2 === 0 ? 1 : -1)
            y: overlay.height * (0.08 + index * 0.3)
            property real drift: 0
            SequentialAnimation on drift {
                running: overlay.visible
                loops: Animation.Infinite
                NumberAnimation { from: 0; to: 24; duration: 2600 + index * 700; easing.type: Easing.InOutSine }
                NumberAnimation { from: 24; to: 0; duration: 2600 + index * 700; easing.type: Easing.InOutSine }
            }
        }
    }

    Item {
        id: stage
        anchors.fill: parent
        anchors.topMargin: 64
        anchors.bottomMargin: adPresenter.rewarded ? 40 : 24

        ParallelAnimation {
            id: entrance
            NumberAnimation { target: stage; property: "opacity"; from: 0; to: 1; duration: 300 }
            NumberAnimation {
                target: stage; property: "scale"; from: 0.88; to: 1; duration: 450; easing.type: Easing.OutBack
            }
        }

        Image {
            id: pictureView
            objectName: "adPicture"
            visible: overlay.picture
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.top: parent.top
            anchors.topMargin: 56
            anchors.bottom: caption.top
            anchors.bottomMargin: 16
            width: parent.width - 32
            source: overlay.picture ? overlay.ad.imageSource : ""
            sourceSize.width: width * 2
            fillMode: Image.PreserveAspectFit
            asynchronous: true
            // A rewarded picture moves gently while the seconds run.
            SequentialAnimation on scale {
                running: overlay.visible && adPresenter.rewarded && !adPresenter.rewardEarned
                loops: Animation.Infinite
                NumberAnimation { from: 1; to: 1.05; duration: 3000; easing.type: Easing.InOutSine }
                NumberAnimation { from: 1.05; to: 1; duration: 3000; easing.type: Easing.InOutSine }
            }
            MouseArea {
                anchors.fill: parent
                enabled: adPresenter.actionEnabled
                onClicked: adPresenter.tapCallToAction()
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.adAction")
                Accessible.ignored: !enabled
                Accessible.onPressAction: adPresenter.tapCallToAction()
                activeFocusOnTab: true
            }
        }

        Rectangle {
            id: card
            objectName: "adCard"
            visible: overlay.ad !== null && !overlay.picture
            width: Math.min(parent.width - 40, 460)
            height: cardColumn.implicitHeight + 56
            anchors.horizontalCenter: parent.horizontalCenter
            y: (cta.y - height) / 2 + bob
            radius: 26
            color: Qt.lighter(overlay.background, 1.25)
            border.color: overlay.accent
            border.width: 3
            property real bob: 0
            SequentialAnimation on bob {
                running: overlay.visible && !overlay.picture
                loops: Animation.Infinite
                NumberAnimation { from: 0; to: -8; duration: 1800; easing.type: Easing.InOutSine }
                NumberAnimation { from: -8; to: 0; duration: 1800; easing.type: Easing.InOutSine }
            }

            Column {
                id: cardColumn
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                anchors.margins: 24
                spacing: 18

                Rectangle {
                    // The emblem: the title's first letter on the accent colour.
                    width: 84; height: 84; radius: 42
                    anchors.horizontalCenter: parent.horizontalCenter
                    color: overlay.accent
                    Text {
                        anchors.centerIn: parent
                        text: overlay.ad ? overlay.ad.title.charAt(0) : ""
                        font.family: Theme.fontFamily
                        font.pixelSize: 40
                        font.bold: true
                        color: overlay.inkOn(overlay.accent)
                    }
                }
                Text {
                    objectName: "adTitle"
                    width: parent.width
                    text: overlay.ad ? overlay.ad.title : ""
                    font.family: Theme.fontFamily
                    font.pixelSize: 26
                    font.bold: true
                    color: overlay.foreground
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                }
                Text {
                    width: parent.width
                    text: overlay.ad ? overlay.ad.body : ""
                    visible: text.length > 0
                    font.family: Theme.fontFamily
                    font.pixelSize: 16
                    color: overlay.foreground
                    opacity: 0.9
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    lineHeight: 1.2
                }
            }
        }

        // A picture's words, under it.
        Column {
            id: caption
            visible: overlay.picture
            width: parent.width - 48
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: cta.top
            anchors.bottomMargin: 18
            spacing: 6
            Text {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: overlay.ad ? overlay.ad.title : ""
                wrapMode: Text.WordWrap
                font.family: Theme.fontFamily
                font.pixelSize: 24
                font.bold: true
                color: overlay.ad ? overlay.ad.foreground : "#ffffff"
            }
            Text {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: overlay.ad ? overlay.ad.body : ""
                wrapMode: Text.WordWrap
                font.family: Theme.fontFamily
                font.pixelSize: 15
                color: overlay.ad ? overlay.ad.foreground : "#ffffff"
                opacity: 0.9
            }
        }

        Rectangle {
            id: cta
            objectName: "adCallToAction"
            visible: overlay.ad !== null && overlay.ad.callToAction.length > 0
            width: Math.min(parent.width - 80, Math.max(200, ctaLabel.implicitWidth + 56))
            height: 54
            radius: 27
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.bottom: parent.bottom
            anchors.bottomMargin: 20
            color: overlay.accent
            opacity: adPresenter.actionEnabled ? 1 : 0.45
            Text {
                id: ctaLabel
                anchors.centerIn: parent
                text: overlay.ad ? overlay.ad.callToAction : ""
                font.family: Theme.fontFamily
                font.pixelSize: 18
                font.bold: true
                color: overlay.inkOn(overlay.accent)
            }
            SequentialAnimation on scale {
                running: overlay.visible && adPresenter.actionEnabled
                loops: Animation.Infinite
                NumberAnimation { from: 1; to: 1.06; duration: 700; easing.type: Easing.InOutSine }
                NumberAnimation { from: 1.06; to: 1; duration: 700; easing.type: Easing.InOutSine }
            }
            MouseArea {
                anchors.fill: parent
                enabled: adPresenter.actionEnabled
                onClicked: adPresenter.tapCallToAction()
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.adAction")
                Accessible.ignored: !enabled
                Accessible.onPressAction: adPresenter.tapCallToAction()
                activeFocusOnTab: true
            }
        }
    }

    // The mark that this is an ad, and whose.
    Rectangle {
        anchors.left: parent.left
        anchors.top: parent.top
        anchors.margins: 16
        width: markLabel.implicitWidth + 20
        height: 26
        radius: 13
        color: "#000000"
        opacity: 0.45
        Text {
            id: markLabel
            anchors.centerIn: parent
            text: overlay.ad && overlay.ad.promotion === "cross" ? "إعلان · من ألعابنا" : "إعلان"
            font.family: Theme.fontFamily
            font.pixelSize: 12
            color: "#ffffff"
        }
    }

    // An interstitial's close button, there from the start.
    Rectangle {
        objectName: "adCloseButton"
        visible: overlay.ad !== null && !adPresenter.rewarded
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 12
        width: 40
        height: 40
        radius: 20
        color: "#000000"
        opacity: 0.6
        Text {
            anchors.centerIn: parent
            text: "×"
            font.pixelSize: 28
            color: "#ffffff"
        }
        MouseArea {
            anchors.fill: parent
            anchors.margins: -6
            onClicked: adPresenter.close()
            Accessible.role: Accessible.Button
            Accessible.name: A11y.text("a11y.close")
            Accessible.ignored: !enabled
            Accessible.onPressAction: adPresenter.close()
            activeFocusOnTab: true
        }
    }

    // A rewarded ad's countdown: the seconds left in a ring that fills, and a bar along the bottom.
    Item {
        id: countdown
        objectName: "adCountdown"
        visible: adPresenter.rewarded
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.top: parent.top
        anchors.topMargin: 8
        width: 52
        height: 52

        property real shown: adPresenter.progress
        Behavior on shown { NumberAnimation { duration: 950 } }

        Shape {
            anchors.fill: parent
            ShapePath {
                strokeColor: "#55000000"
                strokeWidth: 6
                fillColor: "#33000000"
                PathAngleArc { centerX: 26; centerY: 26; radiusX: 23; radiusY: 23; startAngle: 0; sweepAngle: 360 }
            }
            ShapePath {
                strokeColor: overlay.accent
                strokeWidth: 6
                fillColor: "transparent"
                capStyle: ShapePath.RoundCap
                PathAngleArc {
                    centerX: 26; centerY: 26; radiusX: 23; radiusY: 23
                    startAngle: -90
                    sweepAngle: 360 * countdown.shown
                }
            }
        }
        Text {
            objectName: "adSecondsLeft"
            anchors.centerIn: parent
            text: adPresenter.rewardEarned ? "✓" : adPresenter.secondsLeft
            font.family: Theme.fontFamily
            font.pixelSize: 18
            font.bold: true
            color: overlay.foreground
        }
    }
    Rectangle {
        objectName: "adRewardCloseButton"
        visible: adPresenter.rewarded
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: 12
        width: closeLabel.implicitWidth + 24
        height: 36
        radius: 18
        color: adPresenter.rewardEarned ? Theme.gold : "#000000"
        opacity: adPresenter.rewardEarned ? 1 : 0.6
        Text {
            id: closeLabel
            anchors.centerIn: parent
            text: adPresenter.closeTitle
            font.family: Theme.fontFamily
            font.pixelSize: 13
            font.bold: adPresenter.rewardEarned
            color: adPresenter.rewardEarned ? Theme.ink : "#ffffff"
        }
        MouseArea {
            anchors.fill: parent
            anchors.margins: -4
            onClicked: adPresenter.close()
            Accessible.role: Accessible.Button
            Accessible.name: A11y.text("a11y.close")
            Accessible.ignored: !enabled
            Accessible.onPressAction: adPresenter.close()
            activeFocusOnTab: true
        }
    }
    Text {
        visible: adPresenter.rewarded
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: progressBar.top
        anchors.bottomMargin: 10
        text: adPresenter.rewardEarned ? "حصلت على المكافأة!" : "المكافأة بعد " + adPresenter.secondsLeft + " ثانية"
        font.family: Theme.fontFamily
        font.pixelSize: 14
        font.bold: adPresenter.rewardEarned
        color: overlay.foreground
    }
    Rectangle {
        id: progressBar
        visible: adPresenter.rewarded
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: 6
        color: "#44000000"
        Rectangle {
            anchors.left: parent.left
            anchors.top: parent.top
            anchors.bottom: parent.bottom
            width: parent.width * countdown.shown
            color: overlay.accent
        }
    }
}
