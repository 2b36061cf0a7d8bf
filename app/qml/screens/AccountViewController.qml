import QtQuick
import ".."
import "../components"

// The player's account: friends and the requests waiting for an answer.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea {
        anchors.fill: parent
    }
    TopBar {
        id: bar
        width: parent.width
        title: controller.displayName
        onBack: controller.close()
    }
    Flickable {
        anchors.top: bar.bottom
        anchors.bottom: logout.top
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.margins: 14 * screen.u
        contentHeight: body.implicitHeight
        clip: true
        Column {
            id: body
            width: parent.width
            spacing: 8 * screen.u
            Text {
                width: parent.width
                text: "طلبات الصداقة"
                font.family: Theme.fontFamily
                font.pixelSize: 17 * screen.u
                font.bold: true
                color: Theme.gold
            }
            Text {
                width: parent.width
                visible: controller.requests.length === 0
                text: "لا توجد طلبات جديدة"
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#bdb4e0"
            }
            Repeater {
                model: controller.requests
                delegate: Rectangle {
                    objectName: "request" + index
                    width: body.width
                    height: 64 * screen.u
                    radius: 12
                    color: Theme.paper
                    Column {
                        anchors.left: parent.left
                        anchors.leftMargin: 12
                        anchors.verticalCenter: parent.verticalCenter
                        Text {
                            text: modelData.name
                            font.family: Theme.fontFamily
                            font.pixelSize: 16 * screen.u
                            font.bold: true
                            color: Theme.ink
                        }
                        Text {
                            text: modelData.message
                            font.family: Theme.fontFamily
                            font.pixelSize: 12 * screen.u
                            color: "#8a7a5a"
                        }
                    }
                    Row {
                        anchors.right: parent.right
                        anchors.rightMargin: 10
                        anchors.verticalCenter: parent.verticalCenter
                        spacing: 6
                        GameButton {
                            objectName: "accept" + index
                            width: 70 * screen.u
                            height: 36 * screen.u
                            fontSize: 14 * screen.u
                            text: "قبول"
                            onClicked: controller.answer(modelData.requestID, true)
                        }
                        GameButton {
                            objectName: "decline" + index
                            width: 70 * screen.u
                            height: 36 * screen.u
                            fontSize: 14 * screen.u
                            primary: false
                            text: "رفض"
                            onClicked: controller.answer(modelData.requestID, false)
                        }
                    }
                }
            }
            Item {
                width: 1
                height: 10
            }
            Text {
                width: parent.width
                text: "أصدقائي"
                font.family: Theme.fontFamily
                font.pixelSize: 17 * screen.u
                font.bold: true
                color: Theme.gold
            }
            Text {
                width: parent.width
                visible: controller.friends.length === 0
                text: "أضف أصدقاء من قائمة الأذكياء"
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#bdb4e0"
            }
            Repeater {
                model: controller.friends
                delegate: Rectangle {
                    objectName: "friend" + index
                    width: body.width
                    height: 44 * screen.u
                    radius: 12
                    color: "#1fffffff"
                    Text {
                        anchors.left: parent.left
                        anchors.leftMargin: 12
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData.name
                        font.family: Theme.fontFamily
                        font.pixelSize: 15 * screen.u
                        color: "#ffffff"
                    }
                }
            }
        }
    }
    GameButton {
        id: logout
        objectName: "logoutButton"
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 20 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: 200 * screen.u
        height: 44 * screen.u
        primary: false
        text: "تسجيل الخروج"
        onClicked: controller.logOut()
    }
}
