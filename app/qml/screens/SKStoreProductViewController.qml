import QtQuick
import ".."
import "../components"

// The store sheet for an app: its name and store page, a way to open the page in the browser, and "done".
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent

    Rectangle { anchors.fill: parent; color: "#f4f4f7" }
    MouseArea { anchors.fill: parent }

    Rectangle {
        id: bar
        width: parent.width
        height: device.isPad ? 72 : (device.deviceClass === 1 ? 96 : 56)
        color: "#ffffff"
        Item {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: 52
            Text {
                anchors.centerIn: parent
                text: "المتجر"
                font.family: Theme.fontFamily
                font.pixelSize: 18
                font.bold: true
                color: "#1c1c1e"
            }
            Text {
                objectName: "storeSheetDone"
                anchors.right: parent.right
                anchors.rightMargin: 16
                anchors.verticalCenter: parent.verticalCenter
                text: "تم"
                font.family: Theme.fontFamily
                font.pixelSize: 17
                font.bold: true
                color: "#007aff"
                MouseArea {
                    anchors.fill: parent
                    anchors.margins: -10
                    onClicked: controller.done()
                    Accessible.role: Accessible.Button
                    Accessible.name: "تم"
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: controller.done()
                    activeFocusOnTab: true
                }
            }
        }
        Rectangle { anchors.bottom: parent.bottom; width: parent.width; height: 1; color: "#d1d1d6" }
    }

    Column {
        anchors.top: bar.bottom
        anchors.topMargin: 28
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 48
        spacing: 14

        Rectangle {
            anchors.horizontalCenter: parent.horizontalCenter
            width: 96; height: 96; radius: 22
            color: Theme.backgroundTop
            Text {
                anchors.centerIn: parent
                text: controller.loaded ? controller.productTitle.charAt(0) : "?"
                font.family: Theme.fontFamily
                font.pixelSize: 44
                font.bold: true
                color: Theme.gold
            }
        }
        Text {
            objectName: "storeSheetTitle"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: controller.loaded ? controller.productTitle : "تعذر تحميل صفحة التطبيق"
            font.family: Theme.fontFamily
            font.pixelSize: 22
            font.bold: true
            color: "#1c1c1e"
        }
        Text {
            visible: controller.loaded
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: controller.productPage
            elide: Text.ElideMiddle
            font.pixelSize: 13
            color: "#6c6c70"
        }
        Rectangle {
            objectName: "storeSheetOpen"
            visible: controller.loaded
            anchors.horizontalCenter: parent.horizontalCenter
            width: 220
            height: 44
            radius: 22
            color: openArea.pressed ? "#0062cc" : "#007aff"
            Text { anchors.centerIn: parent; text: "افتح صفحة المتجر"; font.family: Theme.fontFamily; font.pixelSize: 16; font.bold: true; color: "#ffffff" }
            MouseArea {
                id: openArea
                anchors.fill: parent
                onClicked: controller.openProductPage()
                Accessible.role: Accessible.Button
                Accessible.name: "افتح صفحة المتجر"
                Accessible.ignored: !enabled
                Accessible.onPressAction: controller.openProductPage()
                activeFocusOnTab: true
            }
        }
    }
}
