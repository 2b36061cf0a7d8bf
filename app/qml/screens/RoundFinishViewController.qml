import QtQuick
import ".."
import "../components"

// A finished round: its number, the rank's badge and the round's gold.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent

    Rectangle {
        anchors.fill: parent
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#3b2f73" }
            GradientStop { position: 1.0; color: "#140f2b" }
        }
    }
    MouseArea {
        anchors.fill: parent
    }
    Column {
        anchors.centerIn: parent
        width: parent.width * 0.84
        spacing: 18
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "أنهيت الجولة " + controller.finishedRoundLabel
            font.family: Theme.fontFamily
            font.pixelSize: 28
            font.bold: true
            color: Theme.gold
        }
        Image {
            objectName: "roundBadge"
            anchors.horizontalCenter: parent.horizontalCenter
            width: 170
            height: 170
            source: "qrc:/images/badges/" + controller.currentBadge
            sourceSize.width: 192
            sourceSize.height: 192
            mipmap: true
            SequentialAnimation on scale {
                loops: Animation.Infinite
                NumberAnimation { from: 1.0; to: 1.06; duration: 900; easing.type: Easing.InOutQuad }
                NumberAnimation { from: 1.06; to: 1.0; duration: 900; easing.type: Easing.InOutQuad }
            }
        }
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: "رتبتك الآن: " + controller.rankName
            font.family: Theme.fontFamily
            font.pixelSize: 18
            color: "#ffffff"
        }
        Pill {
            objectName: "roundCredits"
            anchors.horizontalCenter: parent.horizontalCenter
            text: "+" + controller.rewardedCreditsLabel
            glyph: "$"
            fontSize: 20
            height: 44
        }
        GameButton {
            objectName: "startNextRound"
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width * 0.8
            height: 54
            fontSize: 20
            text: "الجولة التالية"
            onClicked: controller.startNextRound()
        }
    }
}
