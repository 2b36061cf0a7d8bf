import QtQuick
import ".."
import "../components"

// A card for one of the maker's other games over a dimming background. A tap on the card or its button
// goes to the game's page; the cross closes it.
Item {
    id: screen
    property QtObject controller
    readonly property QtObject card: controller.card
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.6
    }
    MouseArea { anchors.fill: parent }

    Rectangle {
        id: body
        objectName: "appPromoCard"
        visible: !screen.card.hidden
        width: Math.min(parent.width - 40 * screen.u, 440)
        height: column.implicitHeight + 24 * screen.u
        anchors.centerIn: parent
        radius: 22 * screen.u
        color: Theme.paper
        clip: true
        scale: 0.9
        opacity: 0
        Component.onCompleted: { scale = 1; opacity = 1 }
        Behavior on scale { NumberAnimation { duration: 260; easing.type: Easing.OutBack } }
        Behavior on opacity { NumberAnimation { duration: 200 } }

        MouseArea {
            anchors.fill: parent
            onClicked: screen.card.handleSingleTap()
            Accessible.role: Accessible.Button
            Accessible.name: A11y.text("a11y.promo")
            Accessible.ignored: !enabled
            Accessible.onPressAction: screen.card.handleSingleTap()
            activeFocusOnTab: true
        }

        Column {
            id: column
            width: parent.width
            spacing: 12 * screen.u
            Image {
                objectName: "promoImage"
                width: parent.width
                height: width * 4 / 7
                source: screen.card.promoImage
                sourceSize.width: width * 2
                fillMode: Image.PreserveAspectCrop
            }
            Item {
                width: parent.width
                height: 64 * screen.u
                // The layout is mirrored: "left" is the start side, on the right.
                Rectangle {
                    id: iconWhiteView
                    anchors.left: parent.left
                    anchors.leftMargin: 18 * screen.u
                    anchors.verticalCenter: parent.verticalCenter
                    width: 64 * screen.u
                    height: width
                    radius: screen.card.iconCornerRadius * screen.u
                    color: "#ffffff"
                    border.color: "#e6dcc4"
                    Image {
                        anchors.fill: parent
                        anchors.margins: 4 * screen.u
                        source: screen.card.iconImage
                        sourceSize.width: width * 2
                    }
                }
                Text {
                    objectName: "promoTitle"
                    anchors.left: iconWhiteView.right
                    anchors.leftMargin: 14 * screen.u
                    anchors.right: parent.right
                    anchors.rightMargin: 14 * screen.u
                    anchors.verticalCenter: parent.verticalCenter
                    text: screen.card.titleLabel
                    elide: Text.ElideRight
                    font.family: Theme.fontFamily
                    font.pixelSize: 22 * screen.u
                    font.bold: true
                    color: Theme.ink
                }
            }
            Text {
                width: parent.width - 36 * screen.u
                anchors.horizontalCenter: parent.horizontalCenter
                text: screen.card.descLabel
                wrapMode: Text.WordWrap
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                color: "#5b4a2e"
            }
            Rectangle {
                objectName: "downloadButton"
                anchors.horizontalCenter: parent.horizontalCenter
                width: parent.width - 36 * screen.u
                height: 50 * screen.u
                radius: height / 2
                color: downloadArea.pressed ? Qt.darker(Theme.green, 1.3) : Theme.green
                Text {
                    anchors.centerIn: parent
                    text: "تحميل"
                    font.family: Theme.fontFamily
                    font.pixelSize: 18 * screen.u
                    font.bold: true
                    color: "#ffffff"
                }
                MouseArea {
                    id: downloadArea
                    anchors.fill: parent
                    onClicked: screen.card.gotoAppAction()
                    Accessible.role: Accessible.Button
                    Accessible.name: "تحميل"
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: screen.card.gotoAppAction()
                    activeFocusOnTab: true
                }
            }
        }
        Rectangle {
            objectName: "closeButton"
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 10 * screen.u
            width: 34 * screen.u
            height: width
            radius: width / 2
            color: "#80000000"
            Text { anchors.centerIn: parent; text: "✕"; color: "#ffffff"; font.pixelSize: 16 * screen.u }
            MouseArea {
                anchors.fill: parent
                onClicked: screen.card.closeAction()
                Accessible.role: Accessible.Button
                Accessible.name: A11y.text("a11y.close")
                Accessible.ignored: !enabled
                Accessible.onPressAction: screen.card.closeAction()
                activeFocusOnTab: true
            }
        }
    }
}
