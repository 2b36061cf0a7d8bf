import QtQuick
import "components"

// A match picker (turn-based or live): an automatic match, or a friend from the list; what it is doing
// shows under the button.
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
        title: controller.title
        onBack: controller.cancel()
    }
    Column {
        id: head
        anchors.top: bar.bottom
        anchors.topMargin: 16 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 32 * screen.u
        spacing: 12 * screen.u
        GameButton {
            objectName: "automaticMatch"
            anchors.horizontalCenter: parent.horizontalCenter
            width: 240 * screen.u
            height: 46 * screen.u
            fontSize: 17 * screen.u
            visible: controller.offersChoice
            opacity: controller.busy ? 0.5 : 1
            text: "مباراة تلقائية"
            onClicked: controller.startAutomaticMatch()
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            font.family: Theme.fontFamily
            font.pixelSize: 13 * screen.u
            color: "#ddffffff"
            visible: controller.offersChoice
            text: controller.hint
        }
        Text {
            objectName: "pickerStatus"
            width: parent.width
            visible: text.length > 0
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            font.family: Theme.fontFamily
            font.pixelSize: 14 * screen.u
            color: controller.busy ? "#ffffff" : "#ffd0d0"
            text: controller.status
        }
        Text {
            width: parent.width
            LayoutMirroring.enabled: false
            horizontalAlignment: Text.AlignRight
            font.family: Theme.fontFamily
            font.pixelSize: 16 * screen.u
            font.bold: true
            color: "#ffffff"
            visible: controller.offersChoice
            text: "الأصدقاء"
        }
    }
    ListView {
        id: list
        objectName: "friendsList"
        anchors.top: head.bottom
        anchors.topMargin: 8 * screen.u
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 12 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 32 * screen.u
        spacing: 6 * screen.u
        clip: true
        visible: controller.offersChoice
        model: controller.friends
        delegate: Rectangle {
            // The name reads from the right and the button stands at the left, whatever the mirroring.
            LayoutMirroring.enabled: false
            LayoutMirroring.childrenInherit: true
            width: list.width
            height: 52 * screen.u
            radius: 14 * screen.u
            color: index % 2 === 0 ? "#2effffff" : "#12ffffff"
            Text {
                anchors.right: parent.right
                anchors.rightMargin: 16 * screen.u
                anchors.left: invite.right
                anchors.leftMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignRight
                elide: Text.ElideLeft
                font.family: Theme.fontFamily
                font.pixelSize: 16 * screen.u
                color: "#ffffff"
                text: modelData.name
            }
            GameButton {
                id: invite
                objectName: "invite_" + modelData.playerID
                anchors.left: parent.left
                anchors.leftMargin: 10 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 90 * screen.u
                height: 34 * screen.u
                fontSize: 14 * screen.u
                opacity: controller.busy ? 0.5 : 1
                text: controller.pickTitle
                onClicked: controller.pickFriend(modelData.playerID)
            }
        }
    }
    Text {
        anchors.centerIn: list
        visible: controller.offersChoice && list.count === 0
        width: list.width
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        font.family: Theme.fontFamily
        font.pixelSize: 14 * screen.u
        color: "#ccffffff"
        text: controller.loadingFriends ? "جارٍ تحميل الأصدقاء…" : "لا أصدقاء بعد؛ أضفهم من لوحة المتصدرين"
    }
}
