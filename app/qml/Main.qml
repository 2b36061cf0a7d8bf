import QtQuick
import QtQuick.Window

// The window: screens of the navigator's stack, presented screens over them, then alerts and the progress
// display. Every screen is drawn in design units of the device class and scaled to fit the window.
Window {
    id: root
    visible: true
    width: device.designSize.width
    height: device.designSize.height
    title: "طارفولين"
    color: "#120e24"

    LayoutMirroring.enabled: true
    LayoutMirroring.childrenInherit: true

    Item {
        id: canvas
        objectName: "canvas"
        width: device.designSize.width
        height: device.designSize.height
        anchors.centerIn: parent
        scale: Math.min(root.width / width, root.height / height)

        Repeater {
            model: navigator.screens
            delegate: ScreenLoader {
                controller: modelData
                visible: index === navigator.depth - 1
                enabled: visible && navigator.presented.length === 0
            }
        }
        Repeater {
            model: navigator.presented
            delegate: ScreenLoader {
                controller: modelData
                enabled: index === navigator.presented.length - 1
            }
        }
        EmitterOverlay {
            anchors.fill: parent
        }
        AdOverlay {
            anchors.fill: parent
        }
        ShareSheetOverlay {
            anchors.fill: parent
        }
        DropdownBanner {
            anchors.left: parent.left
            anchors.right: parent.right
        }
        AlertOverlay {
            anchors.fill: parent
        }
        ProgressOverlay {
            anchors.fill: parent
        }
        PaymentSheetOverlay {
            anchors.fill: parent
        }
    }
}
