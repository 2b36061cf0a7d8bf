import QtQuick
import ".."
import "../components"

// After a solved level: the full answer and the way on.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.7
    }
    MouseArea {
        anchors.fill: parent
    }
    Rectangle {
        objectName: "successCard"
        width: parent.width * 0.84
        height: column.implicitHeight + 48
        anchors.centerIn: parent
        radius: 24
        color: Theme.paper
        border.color: Theme.gold
        border.width: 3

        Column {
            id: column
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 24
            spacing: 18

            Text {
                Accessible.role: Accessible.Heading
                Accessible.ignored: !enabled
                Accessible.name: text
                width: parent.width
                text: controller.titleText
                font.family: Theme.fontFamily
                font.pixelSize: 28
                font.bold: true
                color: Theme.green
                horizontalAlignment: Text.AlignHCenter
            }
            Text {
                Accessible.ignored: true
                width: parent.width
                text: "الحل"
                font.family: Theme.fontFamily
                font.pixelSize: 15
                color: "#8a7a5a"
                horizontalAlignment: Text.AlignHCenter
            }
            Rectangle {
                Accessible.role: Accessible.StaticText
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.solution").arg(controller.solutionText)
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(parent.width, answer.implicitWidth + 48)
                height: answer.implicitHeight + 16
                radius: 14
                color: "#3b2f73"
                Text {
                    id: answer
                    objectName: "solutionText"
                    Accessible.ignored: true
                    anchors.centerIn: parent
                    text: controller.solutionText
                    font.family: Theme.fontFamily
                    font.pixelSize: 32
                    font.bold: true
                    color: "#ffffff"
                }
            }
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 12
                Pill {
                    objectName: "creditsWon"
                    Accessible.name: A11y.text("a11y.gold").arg(text)
                    text: "+" + controller.creditsText
                    glyph: "$"
                    color: "#3b2f73"
                }
                Pill {
                    objectName: "pointsWon"
                    Accessible.name: A11y.text("a11y.points").arg(text)
                    text: "+" + controller.pointsText
                    disc: "#9be28f"
                    glyph: "★"
                    color: "#3b2f73"
                }
            }
            // The leaderboard place: before, now, and how far it rose.
            Rectangle {
                id: gcView
                objectName: "gcView"
                Accessible.role: Accessible.Button
                Accessible.ignored: !enabled
                Accessible.name: A11y.text("a11y.leaderboard")
                Accessible.description: rankColumn.visibleText
                Accessible.onPressAction: controller.openLeaderboardAction()
                activeFocusOnTab: true
                width: parent.width
                height: rankColumn.implicitHeight + 16
                radius: 14
                color: "#f3e6c4"
                // The place rose: a pulse every two seconds while the screen lasts.
                Timer {
                    interval: 2000
                    repeat: true
                    running: controller.pulseGcView
                    triggeredOnStart: true
                    onTriggered: pulse.restart()
                }
                SequentialAnimation {
                    id: pulse
                    NumberAnimation { target: gcView; property: "scale"; to: 1.06; duration: 180; easing.type: Easing.OutQuad }
                    NumberAnimation { target: gcView; property: "scale"; to: 1.0; duration: 220; easing.type: Easing.InQuad }
                }
                Column {
                    id: rankColumn
                    // What the card says, for a screen reader, in one line.
                    readonly property string visibleText: [controller.rankIsChangedLabel,
                        controller.currentRankText.length > 0 ? "ترتيبك " + controller.currentRankText : "",
                        controller.rankRose ? controller.rankChangeText : ""].filter(t => t.length > 0).join("، ")
                    Accessible.ignored: true
                    anchors.centerIn: parent
                    width: parent.width - 20
                    spacing: 4
                    Text {
                        objectName: "rankIsChangedLabel"
                        width: parent.width
                        text: controller.rankIsChangedLabel
                        font.family: Theme.fontFamily
                        font.pixelSize: 14
                        font.bold: controller.rankRose
                        color: controller.rankRose ? Theme.green : "#6b4e16"
                        horizontalAlignment: Text.AlignHCenter
                        wrapMode: Text.WordWrap
                    }
                    Row {
                        anchors.horizontalCenter: parent.horizontalCenter
                        spacing: 10
                        visible: controller.currentRankText.length > 0
                        Text {
                            text: "ترتيبك " + controller.currentRankText
                            font.family: Theme.fontFamily
                            font.pixelSize: 18
                            font.bold: true
                            color: Theme.accent
                        }
                        Text {
                            objectName: "rankChange"
                            visible: controller.rankRose
                            text: controller.rankChangeText
                            font.family: Theme.fontFamily
                            font.pixelSize: 18
                            font.bold: true
                            color: Theme.green
                        }
                    }
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.openLeaderboardAction()
                }
            }
            Text {
                width: parent.width
                text: "مجموع نقاطك: " + controller.totalPointsText
                font.family: Theme.fontFamily
                font.pixelSize: 14
                color: "#8a7a5a"
                horizontalAlignment: Text.AlignHCenter
            }
            GameButton {
                objectName: "nextButton"
                anchors.horizontalCenter: parent.horizontalCenter
                width: parent.width * 0.8
                height: 52
                fontSize: 19
                text: controller.nextButtonText
                enabled: controller.buttonsEnabled
                opacity: enabled ? 1 : 0.5
                onClicked: controller.nextLevelAction()
            }
            GameButton {
                objectName: "menuButton"
                anchors.horizontalCenter: parent.horizontalCenter
                width: parent.width * 0.5
                height: 42
                fontSize: 15
                primary: false
                text: "القائمة"
                enabled: controller.buttonsEnabled
                opacity: enabled ? 1 : 0.5
                onClicked: controller.goHomeAction()
            }
        }
    }
}
