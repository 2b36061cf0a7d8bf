import QtQuick
import "components"

// Loads the view of one screen by its controller's identifier and hands it the controller. Enter or Space on a
// focused control presses it; keys its focused items leave unused go to the controller, which takes them only
// while its screen is in front.
Loader {
    id: loader
    property QtObject controller
    anchors.fill: parent
    Component.onCompleted: setSource(Qt.resolvedUrl("screens/" + controller.identifier + ".qml"),
                                     { "controller": controller, "focus": true })
    Keys.onPressed: (event) => {
        event.accepted = A11y.pressFocused(event, Window.activeFocusItem, [loader, loader.item])
                         || controller.pressKey(event.key, event.modifiers, event.text)
    }
}
