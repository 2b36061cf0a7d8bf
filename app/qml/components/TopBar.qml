import QtQuick

// The bar at the top of a pushed screen: a back button at the start side and a title.
Rectangle {
    id: bar
    property alias title: titleText.text
    property bool showBack: true
    signal back()
    color: "#99333300"
    height: device.isPad ? 72 : (device.deviceClass === 1 ? 96 : 52)

    Item {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: device.isPad ? 72 : 52
        Text {
            id: titleText
            Accessible.role: Accessible.Heading
            Accessible.ignored: !enabled
            Accessible.name: text
            anchors.centerIn: parent
            font.family: Theme.fontFamily
            font.pixelSize: device.isPad ? 28 : 21
            font.bold: true
            color: "#ffffff"
        }
        Rectangle {
            objectName: "backButton"
            visible: bar.showBack
            Accessible.role: Accessible.Button
            Accessible.ignored: !enabled
            Accessible.name: A11y.text("a11y.back")
            Accessible.onPressAction: bar.back()
            activeFocusOnTab: true
            anchors.left: parent.left
            anchors.leftMargin: 10
            anchors.verticalCenter: parent.verticalCenter
            width: parent.height * 0.7
            height: width
            radius: width / 2
            color: "#22ffffff"
            border.color: "#55ffffff"
            // An arrow that points to the start side: right in Arabic.
            Text {
                Accessible.ignored: true
                anchors.centerIn: parent
                text: "→"
                font.pixelSize: parent.height * 0.55
                font.bold: true
                color: "#ffffff"
            }
            MouseArea {
                anchors.fill: parent
                onClicked: bar.back()
            }
        }
    }
}
