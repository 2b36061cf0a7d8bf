import QtQuick
import ".."
import "../components"

// Sound, music and volume, and the daily trainings.
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
        title: "الإعدادات"
        onBack: controller.goBack()
    }

    component Toggle: Rectangle {
        id: toggle
        property bool on: false
        property string label
        signal toggled()
        Accessible.role: Accessible.CheckBox
        Accessible.name: label
        Accessible.checkable: true
        Accessible.checked: on
        Accessible.ignored: !enabled
        Accessible.onPressAction: toggle.toggled()
        Accessible.onToggleAction: toggle.toggled()
        activeFocusOnTab: true
        width: 58 * screen.u
        height: 32 * screen.u
        radius: height / 2
        color: on ? Theme.green : "#55ffffff"
        Rectangle {
            width: parent.height - 6
            height: width
            radius: width / 2
            y: 3
            x: toggle.on ? 3 : parent.width - width - 3
            color: "#ffffff"
            Behavior on x { NumberAnimation { duration: 150 } }
        }
        MouseArea { anchors.fill: parent; onClicked: toggle.toggled() }
    }
    component Caption: Text {
        font.family: Theme.fontFamily
        font.pixelSize: 16 * screen.u
        color: "#ffffff"
    }

    Column {
        anchors.top: bar.bottom
        anchors.topMargin: 18 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 32 * screen.u
        spacing: 14 * screen.u

        Rectangle {
            width: parent.width
            height: soundColumn.implicitHeight + 28 * screen.u
            radius: 18 * screen.u
            color: "#1fffffff"
            border.color: "#33ffffff"
            Column {
                id: soundColumn
                anchors.centerIn: parent
                width: parent.width - 32 * screen.u
                spacing: 14 * screen.u
                Item {
                    width: parent.width
                    height: 34 * screen.u
                    Caption { anchors.right: parent.right; anchors.verticalCenter: parent.verticalCenter; text: "المؤثرات الصوتية" }
                    Toggle {
                        objectName: "soundToggle"
                        label: "المؤثرات الصوتية"
                        anchors.left: parent.left
                        anchors.verticalCenter: parent.verticalCenter
                        on: controller.soundOn
                        onToggled: controller.toggleGeneralSound()
                    }
                }
                Item {
                    width: parent.width
                    height: 34 * screen.u
                    Caption { anchors.right: parent.right; anchors.verticalCenter: parent.verticalCenter; text: "الموسيقى" }
                    Toggle {
                        objectName: "musicToggle"
                        label: "الموسيقى"
                        anchors.left: parent.left
                        anchors.verticalCenter: parent.verticalCenter
                        on: controller.musicOn
                        onToggled: controller.toggleBackgroundMusic()
                    }
                }
                Caption { anchors.right: parent.right; text: "مستوى الصوت" }
                // The volume: the start side is quiet.
                Item {
                    id: slider
                    objectName: "volumeSlider"
                    // Read as a slider; a screen reader raises or lowers it a tenth at a time.
                    Accessible.role: Accessible.Slider
                    Accessible.name: "مستوى الصوت"
                    Accessible.description: Math.round(value * 100) + "٪"
                    Accessible.ignored: !enabled
                    Accessible.onIncreaseAction: {
                        controller.soundVolumeChanged(Math.min(1, value + 0.1))
                        controller.soundSliderReleased()
                    }
                    Accessible.onDecreaseAction: {
                        controller.soundVolumeChanged(Math.max(0, value - 0.1))
                        controller.soundSliderReleased()
                    }
                    activeFocusOnTab: true
                    width: parent.width
                    height: 30 * screen.u
                    readonly property real value: controller.sliderValue
                    Rectangle {
                        anchors.verticalCenter: parent.verticalCenter
                        width: parent.width
                        height: 8 * screen.u
                        radius: height / 2
                        color: "#44ffffff"
                        // From the start side (the right) to the knob.
                        Rectangle {
                            x: parent.width * (1 - slider.value)
                            width: parent.width * slider.value
                            height: parent.height
                            radius: height / 2
                            color: Theme.gold
                        }
                    }
                    Rectangle {
                        width: 26 * screen.u
                        height: width
                        radius: width / 2
                        anchors.verticalCenter: parent.verticalCenter
                        x: (parent.width - width) * (1 - slider.value)
                        color: "#ffffff"
                        border.color: Theme.gold
                        border.width: 3
                    }
                    MouseArea {
                        anchors.fill: parent
                        function valueAt(mx) { return Math.max(0, Math.min(1, 1 - mx / width)) }
                        onPressed: (mouse) => controller.soundVolumeChanged(valueAt(mouse.x))
                        onPositionChanged: (mouse) => controller.soundVolumeChanged(valueAt(mouse.x))
                        onReleased: controller.soundSliderReleased()
                    }
                }
            }
        }

        Rectangle {
            width: parent.width
            height: trainingColumn.implicitHeight + 28 * screen.u
            radius: 18 * screen.u
            color: "#1fffffff"
            border.color: "#33ffffff"
            Column {
                id: trainingColumn
                anchors.centerIn: parent
                width: parent.width - 32 * screen.u
                spacing: 12 * screen.u
                Caption { anchors.right: parent.right; text: "التمرين الدماغي اليومي"; font.bold: true }
                Row {
                    anchors.horizontalCenter: parent.horizontalCenter
                    spacing: 6 * screen.u
                    Repeater {
                        model: ["بدون", "مرة", "مرتين"]
                        delegate: Rectangle {
                            objectName: "segment" + index
                            Accessible.role: Accessible.RadioButton
                            Accessible.name: "التمرين الدماغي اليومي: " + modelData
                            Accessible.checkable: true
                            Accessible.checked: controller.selectedSegment === index
                            Accessible.ignored: !enabled
                            Accessible.onPressAction: controller.dailyNotificationsSegmentChanged(index)
                            activeFocusOnTab: true
                            width: (trainingColumn.width - 12 * screen.u) / 3
                            height: 36 * screen.u
                            radius: 10 * screen.u
                            color: controller.selectedSegment === index ? Theme.gold : "#33ffffff"
                            Text {
                                anchors.centerIn: parent
                                text: modelData
                                font.family: Theme.fontFamily
                                font.pixelSize: 14 * screen.u
                                font.bold: true
                                color: controller.selectedSegment === index ? Theme.ink : "#ffffff"
                            }
                            MouseArea { anchors.fill: parent; onClicked: controller.dailyNotificationsSegmentChanged(index) }
                        }
                    }
                }
                Item {
                    width: parent.width
                    height: 28 * screen.u
                    Caption {
                        objectName: "trainingLabel"
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        text: controller.trainingLabel
                        font.pixelSize: 14 * screen.u
                        color: "#d9d2f5"
                    }
                    Pill {
                        objectName: "goldLabel"
                        anchors.left: parent.left
                        anchors.verticalCenter: parent.verticalCenter
                        text: controller.goldLabel
                        glyph: "$"
                        fontSize: 13 * screen.u
                        height: 26 * screen.u
                    }
                }
            }
        }

        Rectangle {
            objectName: "notificationsView"
            visible: !controller.notificationsViewHidden
            width: parent.width
            height: offer.implicitHeight + 28 * screen.u
            radius: 18 * screen.u
            color: "#33f9c32d"
            border.color: Theme.gold
            Column {
                id: offer
                anchors.centerIn: parent
                width: parent.width - 32 * screen.u
                spacing: 10 * screen.u
                Caption {
                    width: parent.width
                    wrapMode: Text.WordWrap
                    LayoutMirroring.enabled: false
                    horizontalAlignment: Text.AlignRight
                    font.pixelSize: 14 * screen.u
                    text: "فعّل التنبيهات ليصلك الحل الصحيح بعد الانتظار وتمرينك اليومي"
                }
                GameButton {
                    objectName: "enableNotifications"
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: 180 * screen.u
                    height: 40 * screen.u
                    fontSize: 15 * screen.u
                    text: "تفعيل التنبيهات"
                    onClicked: controller.enableNotifications()
                }
            }
        }
    }
}
