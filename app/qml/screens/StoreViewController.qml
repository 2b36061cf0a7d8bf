import QtQuick
import ".."
import "../components"

// The store: five packs of gold and skips, each with its price as the buy button.
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
        title: "المتجر"
        onBack: controller.goBack(null)
    }

    // A heap of coins that grows with the pack.
    component Coins: Item {
        id: coins
        property int count: 1
        width: 64 * screen.u
        height: 52 * screen.u
        Repeater {
            model: coins.count
            delegate: Rectangle {
                readonly property int row: index < 3 ? 0 : (index < 5 ? 1 : 2)
                readonly property int col: index < 3 ? index : (index < 5 ? index - 3 : 0)
                readonly property int inRow: row === 0 ? Math.min(3, coins.count) : (row === 1 ? Math.min(2, coins.count - 3) : 1)
                width: 24 * screen.u
                height: 24 * screen.u
                radius: width / 2
                x: coins.width / 2 - inRow * width * 0.42 + col * width * 0.84 - width * 0.08
                y: coins.height - height - row * height * 0.62
                color: Theme.gold
                border.color: "#b8860b"
                border.width: 2 * screen.u
                Rectangle {
                    anchors.centerIn: parent
                    width: parent.width * 0.56
                    height: width
                    radius: width / 2
                    color: "transparent"
                    border.color: "#e0a514"
                    border.width: 1.5 * screen.u
                }
            }
        }
    }

    component Pack: Rectangle {
        id: pack
        property int number: 1
        property string credits: ""
        property string skips: ""
        property string price: ""
        property bool best: false
        signal buy()
        width: parent.width
        height: 78 * screen.u
        radius: 16 * screen.u
        color: best ? "#33f9c32d" : "#1fffffff"
        border.color: best ? Theme.gold : "#33ffffff"
        border.width: best ? 2 : 1

        // The layout is mirrored: "left" is the start side, on the right.
        Coins {
            count: pack.number
            anchors.left: parent.left
            anchors.leftMargin: 12 * screen.u
            anchors.verticalCenter: parent.verticalCenter
        }
        Column {
            anchors.left: parent.left
            anchors.leftMargin: 88 * screen.u
            anchors.verticalCenter: parent.verticalCenter
            spacing: 2 * screen.u
            Text {
                objectName: "pack" + pack.number + "Credits"
                text: pack.credits + " ذهبة"
                font.family: Theme.fontFamily
                font.pixelSize: 20 * screen.u
                font.bold: true
                color: Theme.gold
            }
            Text {
                text: "+ " + pack.skips + " تجاوز"
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#ffffff"
            }
        }
        Rectangle {
            objectName: "pack" + pack.number + "Buy"
            anchors.right: parent.right
            anchors.rightMargin: 12 * screen.u
            anchors.verticalCenter: parent.verticalCenter
            width: Math.max(92 * screen.u, priceText.implicitWidth + 24 * screen.u)
            height: 44 * screen.u
            radius: height / 2
            color: buyArea.pressed ? Qt.darker(Theme.green, 1.3) : Theme.green
            border.color: "#7be07b"
            Text {
                id: priceText
                anchors.centerIn: parent
                text: pack.price
                font.family: Theme.fontFamily
                font.pixelSize: 17 * screen.u
                font.bold: true
                color: "#ffffff"
            }
            MouseArea {
                id: buyArea
                anchors.fill: parent
                onClicked: pack.buy()
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.buy").arg(pack.credits).arg(pack.skips).arg(pack.price)
                Accessible.ignored: !enabled
                Accessible.onPressAction: pack.buy()
                activeFocusOnTab: true
            }
        }
        Rectangle {
            visible: pack.best
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.verticalCenter: parent.top
            width: bestText.implicitWidth + 18 * screen.u
            height: 22 * screen.u
            radius: height / 2
            color: Theme.gold
            Text {
                id: bestText
                anchors.centerIn: parent
                text: "الأوفر"
                font.family: Theme.fontFamily
                font.pixelSize: 12 * screen.u
                font.bold: true
                color: Theme.ink
            }
        }
    }

    Column {
        anchors.top: bar.bottom
        anchors.topMargin: 14 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(parent.width - 28 * screen.u, 560)
        spacing: 12 * screen.u

        Text {
            objectName: "storeBalance"
            anchors.horizontalCenter: parent.horizontalCenter
            text: "رصيدك: " + controller.balanceText
            font.family: Theme.fontFamily
            font.pixelSize: 15 * screen.u
            color: "#ffffff"
        }
        Pack { number: 1; credits: controller.pack1CreditsLabel; skips: controller.pack1SkipsLabel; price: controller.pack1PriceLabel; onBuy: controller.buyPack1(null) }
        Pack { number: 2; credits: controller.pack2CreditsLabel; skips: controller.pack2SkipsLabel; price: controller.pack2PriceLabel; onBuy: controller.buyPack2(null) }
        Pack { number: 3; credits: controller.pack3CreditsLabel; skips: controller.pack3SkipsLabel; price: controller.pack3PriceLabel; onBuy: controller.buyPack3(null) }
        Pack { number: 4; credits: controller.pack4CreditsLabel; skips: controller.pack4SkipsLabel; price: controller.pack4PriceLabel; onBuy: controller.buyPack4(null) }
        Pack { number: 5; best: true; credits: controller.pack5CreditsLabel; skips: controller.pack5SkipsLabel; price: controller.pack5PriceLabel; onBuy: controller.buyPack5(null) }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: "بعد أول عملية شراء تتوقف الإعلانات التي تملأ الشاشة"
            font.family: Theme.fontFamily
            font.pixelSize: 13 * screen.u
            color: "#ccffffff"
        }
    }
}
