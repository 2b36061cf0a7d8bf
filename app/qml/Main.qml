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

    // An overlay covers every screen: the screens take neither touches nor the keyboard's focus meanwhile.
    readonly property bool covered: alerts.visible || progressHud.visible || paymentSheet.visible
                                    || shareSheet.visible || adPresenter.visible
    // The keyboard's focus: on the alert, the sheet or the full-screen ad that is up, else on the screen in front.
    function focusFront() {
        if (alerts.visible) {
            alertOverlay.forceActiveFocus()
            return
        }
        if (paymentSheet.visible || shareSheet.visible) {
            (paymentSheet.visible ? paymentSheetOverlay : shareSheetOverlay).forceActiveFocus()
            return
        }
        if (adPresenter.visible) {
            adOverlay.forceActiveFocus()
            return
        }
        const front = presentedScreens.count > 0 ? presentedScreens.itemAt(presentedScreens.count - 1)
                                                 : stackScreens.itemAt(stackScreens.count - 1)
        if (front)
            front.forceActiveFocus()
    }
    onCoveredChanged: Qt.callLater(root.focusFront)
    Connections { target: navigator; function onChanged() { Qt.callLater(root.focusFront) } }
    Connections { target: alerts; function onChanged() { Qt.callLater(root.focusFront) } }
    Component.onCompleted: Qt.callLater(root.focusFront)

    Item {
        id: canvas
        objectName: "canvas"
        width: device.designSize.width
        height: device.designSize.height
        anchors.centerIn: parent
        scale: Math.min(root.width / width, root.height / height)

        Repeater {
            id: stackScreens
            model: navigator.screens
            delegate: ScreenLoader {
                controller: modelData
                visible: index === navigator.depth - 1
                // A presented screen or an overlay over it takes its touches and keys, and a screen reader skips it.
                enabled: visible && navigator.presented.length === 0 && !root.covered
            }
        }
        Repeater {
            id: presentedScreens
            model: navigator.presented
            delegate: ScreenLoader {
                controller: modelData
                enabled: index === navigator.presented.length - 1 && !root.covered
            }
        }
        EmitterOverlay {
            anchors.fill: parent
        }
        AdOverlay {
            id: adOverlay
            anchors.fill: parent
        }
        ShareSheetOverlay {
            id: shareSheetOverlay
            anchors.fill: parent
        }
        DropdownBanner {
            anchors.left: parent.left
            anchors.right: parent.right
        }
        AlertOverlay {
            id: alertOverlay
            anchors.fill: parent
        }
        ProgressOverlay {
            anchors.fill: parent
        }
        PaymentSheetOverlay {
            id: paymentSheetOverlay
            anchors.fill: parent
        }
    }
}
