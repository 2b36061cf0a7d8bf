import QtQuick
import QtQuick.Controls

// The tooltip of a control with a keyboard shortcut (its name and its keys): shown while the pointer rests on
// the control, and at once while the control has the keyboard's focus.
ToolTip {
    id: tip
    // The pointer is on the control.
    property bool hovered: false
    readonly property bool focused: parent !== null && parent.activeFocus
    visible: text.length > 0 && (hovered || focused)
    delay: focused ? 0 : 500
    font.family: Theme.fontFamily
    font.pixelSize: 13
}
