import QtQuick
import QtQuick.Controls
import ".."
import "../components"

// The player's battles: the totals, a new battle, and the battles in play or finished.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea { anchors.fill: parent }
    TopBar {
        id: bar
        width: parent.width
        title: "معاركي"
        onBack: controller.close()
    }
    Row {
        id: totals
        objectName: "battleTotals"
        anchors.top: bar.bottom
        anchors.topMargin: 10 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8 * screen.u
        Repeater {
            model: [
                { "label": "فوز", "value": controller.winsText, "tint": Theme.green },
                { "label": "تعادل", "value": controller.drawsText, "tint": Theme.accent },
                { "label": "خسارة", "value": controller.lossesText, "tint": Theme.red },
                { "label": "نقاط المعارك", "value": controller.finalPointsText, "tint": Theme.gold }
            ]
            delegate: Rectangle {
                width: (screen.width - 48 * screen.u) / 4
                height: 52 * screen.u
                radius: 12 * screen.u
                color: "#33000000"
                border.color: modelData.tint
                border.width: 1.5
                Column {
                    anchors.centerIn: parent
                    Row {
                        // The sign stands left of the digits, as numbers read, whatever the paragraph's
                        // direction: a text of its own, the two laid out left to right.
                        objectName: "total_" + index
                        anchors.horizontalCenter: parent.horizontalCenter
                        LayoutMirroring.enabled: false
                        readonly property bool negative: modelData.value.startsWith("-")
                        Text {
                            visible: parent.negative
                            text: "−"
                            font.family: Theme.fontFamily
                            font.pixelSize: 18 * screen.u
                            font.bold: true
                            color: "#ffffff"
                        }
                        Text {
                            text: parent.negative ? modelData.value.substring(1) : modelData.value
                            font.family: Theme.fontFamily
                            font.pixelSize: 18 * screen.u
                            font.bold: true
                            color: "#ffffff"
                        }
                    }
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: modelData.label
                        font.family: Theme.fontFamily
                        font.pixelSize: 11 * screen.u
                        color: "#ddffffff"
                    }
                }
            }
        }
    }
    Row {
        id: newBattle
        anchors.top: totals.bottom
        anchors.topMargin: 10 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 10 * screen.u
        GameButton {
            objectName: "randomBattle"
            width: 165 * screen.u
            height: 40 * screen.u
            fontSize: 14 * screen.u
            text: "معركة مع لاعب عشوائي"
            onClicked: controller.startBattleWithRandomPlayer()
        }
        GameButton {
            objectName: "autoMatch"
            primary: false
            width: 165 * screen.u
            height: 40 * screen.u
            fontSize: 14 * screen.u
            text: "اختيار المنافس"
            onClicked: controller.sendAutoMatchRequest()
        }
    }
    Row {
        id: segments
        anchors.top: newBattle.bottom
        anchors.topMargin: 12 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8
        Repeater {
            model: ["الجارية", "المنتهية"]
            delegate: Rectangle {
                objectName: "segment" + index
                width: 130 * screen.u
                height: 34 * screen.u
                radius: height / 2
                color: controller.segment === index ? Theme.gold : "#33ffffff"
                Text {
                    anchors.centerIn: parent
                    text: modelData
                    font.family: Theme.fontFamily
                    font.pixelSize: 14 * screen.u
                    font.bold: true
                    color: controller.segment === index ? Theme.ink : "#ffffff"
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.segmentChanged(index)
                    Accessible.role: Accessible.PageTab
                    Accessible.name: modelData
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: controller.segmentChanged(index)
                    Accessible.checkable: true
                    Accessible.checked: controller.segment === index
                    activeFocusOnTab: true
                }
            }
        }
    }
    ListView {
        id: list
        objectName: "battlesList"
        anchors.top: segments.bottom
        anchors.topMargin: 10 * screen.u
        anchors.bottom: parent.bottom
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 20 * screen.u
        spacing: 8 * screen.u
        clip: true
        model: controller.rows
        delegate: Rectangle {
            id: card
            objectName: "battleRow" + index
            width: list.width
            height: content.implicitHeight + 20 * screen.u
            radius: 14 * screen.u
            color: modelData.kind === "FinishedBattleCell"
                   ? (modelData.outcomeTint === "green" ? "#5a148814" : modelData.outcomeTint === "red" ? "#5aea4144"
                      : modelData.outcomeTint === "blue" ? "#5a1474fb" : "#26ffffff")
                   : (modelData.kind === "ReceivedBattleCell" ? "#3df9c32d" : "#26ffffff")
            Column {
                id: content
                anchors.centerIn: parent
                width: parent.width - 20 * screen.u
                spacing: 6 * screen.u
                // The two players, the sender at the right.
                Row {
                    width: parent.width
                    spacing: 8 * screen.u
                    PlayerFace {
                        width: 40 * screen.u; height: width
                        playerID: modelData.senderID; name: modelData.senderName
                    }
                    Text {
                        width: parent.width - 2 * 48 * screen.u - 30 * screen.u
                        anchors.verticalCenter: parent.verticalCenter
                        horizontalAlignment: Text.AlignHCenter
                        elide: Text.ElideMiddle
                        text: modelData.senderName + "  ⚔  " + (modelData.receiverName.length > 0 ? modelData.receiverName : "???")
                        font.family: Theme.fontFamily
                        font.pixelSize: 14 * screen.u
                        font.bold: true
                        color: "#ffffff"
                    }
                    PlayerFace {
                        width: 40 * screen.u; height: width
                        playerID: modelData.receiverID; name: modelData.receiverName
                    }
                }
                Text {
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    text: modelData.date + (modelData.kind !== "FinishedBattleCell" ? "   •   باقي " + modelData.hoursLeft + " ساعة" : "")
                    font.family: Theme.fontFamily
                    font.pixelSize: 11 * screen.u
                    color: "#ccffffff"
                }
                Text {
                    width: parent.width
                    visible: modelData.message.length > 0
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    text: "«" + modelData.message + "»"
                    font.family: Theme.fontFamily
                    font.pixelSize: 13 * screen.u
                    color: "#ffffff"
                }
                Text {
                    width: parent.width
                    visible: modelData.kind !== "FinishedBattleCell"
                    horizontalAlignment: Text.AlignHCenter
                    text: "أجاب المتحدي: " + modelData.senderAnswered
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: modelData.senderAnswered === "نعم" ? "#8ff08f" : "#ff9a9a"
                }
                // Received: the reply and the play button.
                Row {
                    visible: modelData.kind === "ReceivedBattleCell"
                    width: parent.width
                    spacing: 8 * screen.u
                    TextField {
                        // Return puts the keyboard away.
                        onAccepted: focus = false
                        id: reply
                        objectName: "replyField" + index
                        width: parent.width - play.width - 8 * screen.u
                        height: 36 * screen.u
                        placeholderText: "رسالتك للمتحدي"
                        font.family: Theme.fontFamily
                        font.pixelSize: 13 * screen.u
                        horizontalAlignment: TextInput.AlignRight
                        maximumLength: 100
                    }
                    GameButton {
                        id: play
                        objectName: "playBattle" + index
                        width: 90 * screen.u
                        height: 36 * screen.u
                        fontSize: 14 * screen.u
                        text: "العب"
                        onClicked: controller.playBattleButtonTapped(index, reply.text)
                    }
                }
                // Finished: the reply, the outcome, the points, remove and rematch.
                Text {
                    width: parent.width
                    visible: modelData.kind === "FinishedBattleCell" && modelData.reply.length > 0
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    text: "الرد: " + modelData.reply
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: "#eeffffff"
                }
                Row {
                    visible: modelData.kind === "FinishedBattleCell"
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 10 * screen.u
                    Text {
                        objectName: "outcome" + index
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.outcomeText
                        font.family: Theme.fontFamily
                        font.pixelSize: 18 * screen.u
                        font.bold: true
                        color: modelData.outcomeTint === "green" ? "#8ff08f" : modelData.outcomeTint === "red" ? "#ff9a9a"
                               : modelData.outcomeTint === "blue" ? "#9cc8ff" : "#ffffff"
                    }
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.pointsText
                        font.family: Theme.fontFamily
                        font.pixelSize: 12 * screen.u
                        color: "#ffffff"
                    }
                }
                Row {
                    visible: modelData.kind === "FinishedBattleCell"
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 10 * screen.u
                    GameButton {
                        objectName: "rematch" + index
                        width: 120 * screen.u
                        height: 32 * screen.u
                        fontSize: 13 * screen.u
                        text: "إعادة المعركة"
                        onClicked: controller.rematchButtonTapped(index)
                    }
                    GameButton {
                        objectName: "remove" + index
                        primary: false
                        width: 90 * screen.u
                        height: 32 * screen.u
                        fontSize: 13 * screen.u
                        text: "حذف"
                        onClicked: controller.removeButtonTapped(index)
                    }
                }
            }
        }
    }
    Text {
        anchors.centerIn: list
        visible: list.count === 0
        width: list.width - 40 * screen.u
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: controller.segment === 0 ? "لا معارك جارية؛ ابدأ معركة جديدة!" : "لا معارك منتهية بعد"
        font.family: Theme.fontFamily
        font.pixelSize: 14 * screen.u
        color: "#ccffffff"
    }
}
