pragma Singleton
import QtQuick

QtObject {
    readonly property string fontFamily: "Noto Kufi Arabic"
    readonly property color backgroundTop: "#2e2560"
    readonly property color backgroundBottom: "#161130"
    readonly property color gold: "#f9c32d"
    readonly property color ink: "#3b2a12"
    readonly property color paper: "#fff8ea"
    readonly property color accent: "#1474fb"
    readonly property color green: "#148814"
    readonly property color red: "#ea4144"
    // The ring around what the keyboard has in focus.
    readonly property color focus: "#3ec6ff"
    function image(name) { return "qrc:/images/" + name + ".svg" }
}
