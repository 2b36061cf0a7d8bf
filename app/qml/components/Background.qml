import QtQuick

// The game's backdrop: a deep violet gradient.
Rectangle {
    anchors.fill: parent
    gradient: Gradient {
        GradientStop { position: 0.0; color: Theme.backgroundTop }
        GradientStop { position: 1.0; color: Theme.backgroundBottom }
    }
}
