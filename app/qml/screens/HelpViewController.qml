import QtQuick
import ".."
import "../components"

// How to play: three pages, by the button or a swipe; the last page's button ends the show.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea {
        anchors.fill: parent
        property real startX: 0
        onPressed: (mouse) => startX = mouse.x
        onReleased: (mouse) => {
            const dx = mouse.x - startX
            if (Math.abs(dx) > 40)
                controller.swipeHandler(dx < 0 ? 2 : 1)
        }
    }

    Text {
        id: titleLabel
        objectName: "helpTitle"
        anchors.top: parent.top
        anchors.topMargin: (device.deviceClass === 1 ? 64 : 28) * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        text: controller.title
        font.family: Theme.fontFamily
        font.pixelSize: 26 * screen.u
        font.bold: true
        color: Theme.gold
    }
    Rectangle {
        objectName: "closeButton"
        visible: !controller.closeButtonHidden
        anchors.verticalCenter: titleLabel.verticalCenter
        anchors.left: parent.left
        anchors.leftMargin: 16 * screen.u
        width: 36 * screen.u
        height: width
        radius: width / 2
        color: "#33ffffff"
        Text { anchors.centerIn: parent; text: "✕"; color: "#ffffff"; font.pixelSize: 18 * screen.u }
        MouseArea {
            anchors.fill: parent
            onClicked: controller.goBack()
            Accessible.role: Accessible.Button
            Accessible.name: A11y.text("a11y.close")
            Accessible.ignored: !enabled
            Accessible.onPressAction: controller.goBack()
            activeFocusOnTab: true
        }
    }

    component Line: Text {
        width: parent.width
        wrapMode: Text.WordWrap
        // The page's text starts at the right, whatever the mirroring of the layout.
        LayoutMirroring.enabled: false
        horizontalAlignment: Text.AlignRight
        font.family: Theme.fontFamily
        font.pixelSize: 15 * screen.u
        lineHeight: 1.2
        color: Theme.ink
    }
    component Bullet: Row {
        property alias text: line.text
        property string mark: "●"
        width: parent.width
        spacing: 8 * screen.u
        Text { text: mark; color: Theme.accent; font.pixelSize: 14 * screen.u; anchors.top: parent.top; anchors.topMargin: 4 * screen.u }
        Line { id: line; width: parent.width - 24 * screen.u }
    }

    // The page in the middle; it slides out and the next slides in.
    Rectangle {
        id: centerView
        objectName: "centerView"
        anchors.top: titleLabel.bottom
        anchors.topMargin: 18 * screen.u
        anchors.bottom: dots.top
        anchors.bottomMargin: 14 * screen.u
        x: (parent.width - width) / 2
        width: parent.width - 32 * screen.u
        radius: 22 * screen.u
        color: Theme.paper
        clip: true

        Loader {
            id: page
            anchors.fill: parent
            anchors.margins: 20 * screen.u
            sourceComponent: [features, howTo, about][controller.currentPage]
        }
        Connections {
            target: controller
            function onChanged() { slideIn.restart() }
        }
        SequentialAnimation {
            id: slideIn
            NumberAnimation { target: centerView; property: "x"; to: controller.slide >= 0 ? -centerView.width : screen.width; duration: 0 }
            NumberAnimation { target: centerView; property: "x"; to: (screen.width - centerView.width) / 2; duration: 400; easing.type: Easing.OutCubic }
        }
    }

    Component {
        id: features
        Column {
            spacing: 12 * screen.u
            Bullet { text: "أربع صور تجمعها كلمة واحدة: اكتشفها وأكمل المرحلة" }
            Bullet { text: "جولات من ٢٥ مرحلة، ومع كل جولة تنهيها ترتقي رتبة جديدة من ٤١ رتبة" }
            Bullet { text: "اربح الذهب والنقاط مع كل مرحلة، وجوائز يومية وأسبوعية وشهرية كلما عدت للعب" }
            Bullet { text: "المهمات تنتظرك بجوائزها، وقائمة الأذكياء تضعك في منافسة مع اللاعبين" }
        }
    }
    Component {
        id: howTo
        Column {
            spacing: 12 * screen.u
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 6 * screen.u
                Repeater {
                    model: ["#7fd3ff", "#ffd27f", "#b4f08c", "#f5a3c7"]
                    delegate: Rectangle { width: 48 * screen.u; height: width; radius: 8; color: modelData }
                }
            }
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 4 * screen.u
                Repeater {
                    model: ["ب", "ح", "ر", ""]
                    delegate: Rectangle {
                        width: 34 * screen.u; height: width; radius: 6
                        color: modelData === "" ? "#e6dcc6" : "#ffffff"; border.color: "#c9b98f"
                        Text { anchors.centerIn: parent; text: modelData; font.family: Theme.fontFamily; font.pixelSize: 18 * screen.u; font.bold: true; color: Theme.ink }
                    }
                }
            }
            Bullet { text: "انظر إلى الصور الأربع وفكّر في الكلمة التي تجمعها"; mark: "١" }
            Bullet { text: "اضغط على الحروف في الأسفل لتنتقل إلى المربعات، واضغط على حرف في المربعات لتعيده"; mark: "٢" }
            Bullet { text: "عند اكتمال الكلمة الصحيحة تنتقل إلى المرحلة التالية، وإن احترت فاستعن بالمساعدة"; mark: "٣" }
        }
    }
    Component {
        id: about
        Column {
            spacing: 14 * screen.u
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: "طارفولين"
                font.family: Theme.fontFamily
                font.pixelSize: 34 * screen.u
                font.bold: true
                color: "#c98a00"
            }
            Line { text: "لعبة كلمات عربية تختبر ذكاءك وسرعة بديهتك. كل مرحلة تنهيها تضيف إلى رصيدك وترفع ترتيبك بين اللاعبين." }
            Line { text: "إن صعبت عليك كلمة فاكشف حرفا أو احذف الحروف الزائدة أو تخطَّ المرحلة، أو انتظر قليلا ليصلك الحل في تنبيه." }
        }
    }

    Row {
        id: dots
        objectName: "pageControl"
        anchors.bottom: nextButton.top
        anchors.bottomMargin: 16 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 8 * screen.u
        Repeater {
            model: controller.pageCount
            delegate: Rectangle {
                width: 10 * screen.u; height: width; radius: width / 2
                color: index === controller.currentPage ? Theme.gold : "#55ffffff"
            }
        }
    }
    GameButton {
        id: nextButton
        objectName: "nextButton"
        anchors.bottom: parent.bottom
        anchors.bottomMargin: (device.deviceClass === 1 ? 50 : 26) * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: 220 * screen.u
        height: 52 * screen.u
        fontSize: 20 * screen.u
        text: controller.nextButtonText
        onClicked: controller.nextButtonAction(true)
    }
}
