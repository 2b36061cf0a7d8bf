import QtQuick
import "components"

// The sandbox store's confirmation sheet, where a phone's payment sheet would rise: over everything, from
// the bottom, naming the product, its price and the account. No money moves.
Item {
    id: overlay
    visible: paymentSheet.visible
    // Escape is its cancel; Enter or Space presses the button Tab reached.
    Keys.onPressed: (event) => { event.accepted = A11y.pressFocused(event, Window.activeFocusItem, [overlay]) }
    Keys.onEscapePressed: paymentSheet.cancel()
    z: 1100

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.5
    }
    MouseArea { anchors.fill: parent }

    Rectangle {
        id: sheet
        objectName: "paymentSheet"
        width: Math.min(parent.width, 520)
        height: column.implicitHeight + 40
        anchors.horizontalCenter: parent.horizontalCenter
        y: overlay.visible ? parent.height - height + 16 : parent.height
        Behavior on y { NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        radius: 16
        color: "#f4f4f7"

        Column {
            id: column
            anchors.top: parent.top
            anchors.topMargin: 14
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width - 40
            spacing: 10

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 40; height: 5; radius: 2.5
                color: "#c7c7cc"
            }
            // The layout is mirrored: "left" is the start side, on the right.
            Item {
                width: parent.width
                height: 28
                Text {
                    anchors.left: parent.left
                    anchors.verticalCenter: parent.verticalCenter
                    text: "متجر التجربة"
                    font.family: Theme.fontFamily
                    font.pixelSize: 19
                    font.bold: true
                    color: "#1c1c1e"
                }
                Rectangle {
                    anchors.right: parent.right
                    anchors.verticalCenter: parent.verticalCenter
                    width: tagText.implicitWidth + 14
                    height: 24
                    radius: 12
                    color: "#ff9500"
                    Text {
                        id: tagText
                        anchors.centerIn: parent
                        text: "بيئة تجريبية"
                        font.family: Theme.fontFamily
                        font.pixelSize: 12
                        font.bold: true
                        color: "#ffffff"
                    }
                }
            }
            Rectangle { width: parent.width; height: 1; color: "#d1d1d6" }
            Row {
                width: parent.width
                spacing: 12
                Rectangle {
                    width: 56; height: 56; radius: 12
                    color: Theme.backgroundTop
                    Rectangle {
                        anchors.centerIn: parent
                        width: 30; height: 30; radius: 15
                        color: Theme.gold
                        border.color: "#b8860b"
                        border.width: 2
                    }
                }
                Column {
                    width: parent.width - 68
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 2
                    Text {
                        objectName: "paymentSheetProduct"
                        width: parent.width
                        text: paymentSheet.productTitle
                        elide: Text.ElideLeft
                        font.family: Theme.fontFamily
                        font.pixelSize: 16
                        font.bold: true
                        color: "#1c1c1e"
                    }
                    Text {
                        text: "طارفولين · شراء داخل اللعبة"
                        font.family: Theme.fontFamily
                        font.pixelSize: 12
                        color: "#6c6c70"
                    }
                }
            }
            Rectangle { width: parent.width; height: 1; color: "#d1d1d6" }
            Item {
                width: parent.width
                height: 26
                Text { anchors.left: parent.left; text: "الحساب"; font.family: Theme.fontFamily; font.pixelSize: 14; color: "#6c6c70" }
                Text { anchors.right: parent.right; text: paymentSheet.accountName; font.family: Theme.fontFamily; font.pixelSize: 14; color: "#1c1c1e" }
            }
            Item {
                width: parent.width
                height: 30
                Text { anchors.left: parent.left; text: "السعر"; font.family: Theme.fontFamily; font.pixelSize: 14; color: "#6c6c70" }
                Text {
                    objectName: "paymentSheetPrice"
                    anchors.right: parent.right
                    text: paymentSheet.priceText
                    font.family: Theme.fontFamily
                    font.pixelSize: 18
                    font.bold: true
                    color: "#1c1c1e"
                }
            }
            Text {
                width: parent.width
                wrapMode: Text.WordWrap
                text: "هذا متجر تجريبي: لن يُخصم أي مبلغ، وتصلك الحزمة كما لو اشتريتها."
                font.family: Theme.fontFamily
                font.pixelSize: 12
                color: "#6c6c70"
            }
            Rectangle {
                objectName: "paymentSheetBuy"
                width: parent.width
                height: 48
                radius: 12
                color: buyArea.pressed ? "#0062cc" : "#007aff"
                Text { anchors.centerIn: parent; text: "شراء"; font.family: Theme.fontFamily; font.pixelSize: 17; font.bold: true; color: "#ffffff" }
                MouseArea {
                    id: buyArea
                    anchors.fill: parent
                    onClicked: paymentSheet.buy()
                    Accessible.role: Accessible.Button
                    Accessible.name: "شراء"
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: paymentSheet.buy()
                    activeFocusOnTab: true
                }
            }
            Rectangle {
                objectName: "paymentSheetCancel"
                width: parent.width
                height: 40
                radius: 12
                color: "transparent"
                Text { anchors.centerIn: parent; text: "إلغاء"; font.family: Theme.fontFamily; font.pixelSize: 16; color: "#007aff" }
                MouseArea {
                    anchors.fill: parent
                    onClicked: paymentSheet.cancel()
                    Accessible.role: Accessible.Button
                    Accessible.name: "إلغاء"
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: paymentSheet.cancel()
                    activeFocusOnTab: true
                }
            }
            Item { width: 1; height: 10 }
        }
    }
}
