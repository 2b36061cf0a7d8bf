import QtQuick
import QtQuick.Controls
import ".."
import "../components"

// The player's gold exchanges: requests that came in, to answer with gold or refuse, and those that went out.
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
        title: "تبادلات الذهب"
        onBack: controller.close()
    }
    Rectangle {
        id: total
        objectName: "goldTotal"
        anchors.top: bar.bottom
        anchors.topMargin: 10 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width - 24 * screen.u, 420 * screen.u)
        height: 58 * screen.u
        radius: 14 * screen.u
        color: "#33000000"
        border.color: Theme.gold
        border.width: 1.5
        Row {
            anchors.centerIn: parent
            spacing: 12 * screen.u
            Rectangle {
                // A gold coin.
                anchors.verticalCenter: parent.verticalCenter
                width: 28 * screen.u; height: width; radius: width / 2
                color: Theme.gold
                border.color: "#b8860b"
                border.width: 3 * screen.u
                Rectangle {
                    anchors.centerIn: parent
                    width: parent.width * 0.45; height: width; radius: width / 2
                    color: "transparent"
                    border.color: "#fff3b0"
                    border.width: 1.5 * screen.u
                }
            }
            Text {
                objectName: "totalGoldLabel"
                anchors.verticalCenter: parent.verticalCenter
                text: controller.totalGold
                font.family: Theme.fontFamily
                font.pixelSize: 22 * screen.u
                font.bold: true
                color: Theme.gold
            }
            Text {
                objectName: "goldTextLabel"
                anchors.verticalCenter: parent.verticalCenter
                text: controller.goldText
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#ffffff"
            }
        }
    }
    Row {
        id: segments
        anchors.top: total.bottom
        anchors.topMargin: 12 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8
        Repeater {
            model: ["طلبات وصلتني", "طلبات أرسلتها"]
            delegate: Rectangle {
                objectName: "segment" + index
                width: 140 * screen.u
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
        objectName: "exchangesList"
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
            objectName: "exchangeRow" + index
            width: list.width
            height: content.implicitHeight + 20 * screen.u
            radius: 14 * screen.u
            color: modelData.kind === "ReceivedRequestCell" ? "#3df9c32d"
                   : modelData.goldTint === "green" ? "#4a148814" : "#26ffffff"
            border.color: modelData.kind === "ReceivedRequestCell" ? Theme.gold : "#44ffffff"
            Column {
                id: content
                anchors.centerIn: parent
                width: parent.width - 20 * screen.u
                spacing: 6 * screen.u
                Row {
                    width: parent.width
                    spacing: 10 * screen.u
                    PlayerFace {
                        width: 42 * screen.u; height: width
                        playerID: modelData.otherID; name: modelData.otherName
                    }
                    Column {
                        anchors.verticalCenter: parent.verticalCenter
                        width: parent.width - 52 * screen.u
                        Text {
                            width: parent.width
                            horizontalAlignment: Text.AlignLeft // mirrored: the right edge
                            elide: Text.ElideRight
                            text: (modelData.kind === "SentRequestCell" ? "طلبت من " : "طلب منك ")
                                  + (modelData.otherName.length > 0 ? modelData.otherName : "…")
                            font.family: Theme.fontFamily
                            font.pixelSize: 14 * screen.u
                            font.bold: true
                            color: "#ffffff"
                        }
                        Text {
                            width: parent.width
                            horizontalAlignment: Text.AlignLeft
                            text: modelData.date
                            font.family: Theme.fontFamily
                            font.pixelSize: 11 * screen.u
                            color: "#ccffffff"
                        }
                    }
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
                // Answered: the reply and what became of the gold, and remove.
                Text {
                    width: parent.width
                    visible: modelData.kind !== "ReceivedRequestCell" && modelData.reply.length > 0
                    horizontalAlignment: Text.AlignHCenter
                    wrapMode: Text.WordWrap
                    text: "الرد: " + modelData.reply
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: "#eeffffff"
                }
                Row {
                    visible: modelData.kind !== "ReceivedRequestCell"
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 14 * screen.u
                    Text {
                        objectName: "goldText" + index
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.goldText || ""
                        font.family: Theme.fontFamily
                        font.pixelSize: 16 * screen.u
                        font.bold: true
                        color: modelData.goldTint === "green" ? "#8ff08f" : "#ff9a9a"
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
                // Open: the reply, the amount, send or refuse.
                TextField {
                    // Return puts the keyboard away.
                    onAccepted: focus = false
                    id: reply
                    objectName: "replyField" + index
                    visible: modelData.kind === "ReceivedRequestCell"
                    width: parent.width
                    height: 36 * screen.u
                    placeholderText: "ردك على الطلب"
                    font.family: Theme.fontFamily
                    font.pixelSize: 13 * screen.u
                    horizontalAlignment: TextInput.AlignRight
                    maximumLength: 100
                }
                Row {
                    visible: modelData.kind === "ReceivedRequestCell"
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 10 * screen.u
                    SpinBox {
                        id: stepper
                        objectName: "stepper" + index
                        anchors.verticalCenter: parent.verticalCenter
                        width: 130 * screen.u
                        height: 36 * screen.u
                        from: 0
                        to: controller.maximumGift
                        editable: false
                        value: modelData.amount !== undefined ? parseInt(modelData.amount) : 0
                        onValueModified: controller.stepperTapped(index, value)
                    }
                    Text {
                        objectName: "amount" + index
                        anchors.verticalCenter: parent.verticalCenter
                        text: (modelData.amount || "0") + " ذهبة"
                        font.family: Theme.fontFamily
                        font.pixelSize: 15 * screen.u
                        font.bold: true
                        color: Theme.gold
                    }
                }
                Row {
                    visible: modelData.kind === "ReceivedRequestCell"
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 10 * screen.u
                    GameButton {
                        objectName: "sendGold" + index
                        width: 120 * screen.u
                        height: 34 * screen.u
                        fontSize: 14 * screen.u
                        text: "أرسل الذهب"
                        onClicked: controller.sendGoldButtonTapped(index, reply.text)
                    }
                    GameButton {
                        objectName: "reject" + index
                        primary: false
                        width: 90 * screen.u
                        height: 34 * screen.u
                        fontSize: 14 * screen.u
                        text: "ارفض"
                        onClicked: controller.rejectButtonTapped(index, reply.text)
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
        text: controller.segment === 0 ? "لم يطلب منك أحد ذهبا بعد" : "لم تطلب ذهبا من أحد بعد؛ اطلبه من صفحة أي لاعب"
        font.family: Theme.fontFamily
        font.pixelSize: 14 * screen.u
        color: "#ccffffff"
    }
}
