import QtQuick
import QtQuick.Controls
import ".."
import "../components"

// Create an account or log in to the game service.
Item {
    id: screen
    property QtObject controller
    property bool creating: true
    anchors.fill: parent

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.7
    }
    MouseArea {
        anchors.fill: parent
    }
    Rectangle {
        objectName: "loginCard"
        width: parent.width * 0.88
        height: column.implicitHeight + 40
        anchors.centerIn: parent
        radius: 22
        color: Theme.paper
        border.color: Theme.gold
        border.width: 3

        Column {
            id: column
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: 20
            spacing: 12

            Text {
                width: parent.width
                text: screen.creating ? "حساب جديد" : "تسجيل الدخول"
                font.family: Theme.fontFamily
                font.pixelSize: 22
                font.bold: true
                color: Theme.ink
                horizontalAlignment: Text.AlignHCenter
            }
            Text {
                width: parent.width
                text: "نافس اللاعبين على قائمة الأذكياء وأضف أصدقاءك"
                font.family: Theme.fontFamily
                font.pixelSize: 13
                color: "#8a7a5a"
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }
            TextField {
                id: nameField
                objectName: "nameField"
                width: parent.width
                placeholderText: "الاسم"
                font.family: Theme.fontFamily
                font.pixelSize: 16
                horizontalAlignment: TextInput.AlignRight
                maximumLength: 32
            }
            TextField {
                id: passwordField
                objectName: "passwordField"
                width: parent.width
                placeholderText: "كلمة المرور"
                echoMode: TextInput.Password
                font.family: Theme.fontFamily
                font.pixelSize: 16
                horizontalAlignment: TextInput.AlignRight
                maximumLength: 128
                onAccepted: controller.submit(nameField.text, passwordField.text, screen.creating)
            }
            Text {
                objectName: "loginError"
                width: parent.width
                visible: controller.errorText.length > 0
                text: controller.errorText
                font.family: Theme.fontFamily
                font.pixelSize: 13
                color: Theme.red
                wrapMode: Text.WordWrap
                horizontalAlignment: Text.AlignHCenter
            }
            GameButton {
                objectName: "submitButton"
                anchors.horizontalCenter: parent.horizontalCenter
                width: parent.width * 0.8
                height: 48
                enabled: !controller.busy
                opacity: controller.busy ? 0.6 : 1
                text: controller.busy ? "لحظة..." : (screen.creating ? "أنشئ الحساب" : "ادخل")
                onClicked: controller.submit(nameField.text, passwordField.text, screen.creating)
            }
            Text {
                objectName: "switchMode"
                width: parent.width
                text: screen.creating ? "لديك حساب؟ سجل الدخول" : "ليس لديك حساب؟ أنشئ حسابا جديدا"
                font.family: Theme.fontFamily
                font.pixelSize: 14
                font.underline: true
                color: Theme.accent
                horizontalAlignment: Text.AlignHCenter
MouseArea {
                    anchors.fill: parent
                    onClicked: screen.creating = !screen.creating
                    Accessible.role: Accessible.Link
                    Accessible.name: parent.text
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: screen.creating = !screen.creating
                    activeFocusOnTab: true
                }
            }
            Text {
                objectName: "cancelLogin"
                width: parent.width
                text: "ليس الآن"
                font.family: Theme.fontFamily
                font.pixelSize: 14
                color: "#8a7a5a"
                horizontalAlignment: Text.AlignHCenter
MouseArea {
                    anchors.fill: parent
                    onClicked: controller.cancel()
                    Accessible.role: Accessible.Button
                    Accessible.name: parent.text
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: controller.cancel()
                    activeFocusOnTab: true
                }
            }
        }
    }
}
