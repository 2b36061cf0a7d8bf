pragma Singleton
import QtQuick

// The texts a screen reader says, by their keys in strings/Localizable.json ("a11y.back", …), through the
// game's `strings` object. A view loaded on an engine of its own, without that object, reads the keys.
QtObject {
    function text(key) {
        return typeof strings !== "undefined" ? strings.text(key) : key
    }

    // Enter, Return or Space on the control that has the keyboard's focus presses it: the press action a
    // screen reader would do, so a key and a screen reader reach the same code. `holders` have the focus when
    // no control of theirs has it (a screen, an overlay): they are not pressed. Returns whether a control was
    // pressed.
    function pressFocused(event, focused, holders) {
        const keys = [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Space]
        if (!keys.includes(event.key) || (event.modifiers & ~Qt.KeypadModifier) !== Qt.NoModifier)
            return false
        if (!focused || holders.includes(focused) || !focused.enabled)
            return false
        const pressable = [Accessible.Button, Accessible.CheckBox, Accessible.RadioButton, Accessible.Link,
                           Accessible.PageTab, Accessible.ListItem, Accessible.Graphic]
        if (!pressable.includes(focused.Accessible.role))
            return false
        focused.Accessible.pressAction()
        return true
    }
}
