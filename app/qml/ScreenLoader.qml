import QtQuick

// Loads the view of one screen by its controller's identifier and hands it the controller.
Loader {
    id: loader
    property QtObject controller
    anchors.fill: parent
    Component.onCompleted: setSource(Qt.resolvedUrl("screens/" + controller.identifier + ".qml"),
                                     { "controller": controller })
}
