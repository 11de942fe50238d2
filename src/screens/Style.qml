pragma Singleton
import QtQuick

// The screens' colours and sizes, in one place. Light appearance, after the
// system's own: label colours are black at the system's opacities.
QtObject {
    readonly property color windowBackground: "#ececec"
    readonly property color primary: Qt.rgba(0, 0, 0, 0.85)
    readonly property color secondary: Qt.rgba(0, 0, 0, 0.5)
    readonly property color accent: "#007aff"
    readonly property color destructive: "#ff3b30"
    readonly property color orange: "#ff9500"
    readonly property color divider: Qt.rgba(0, 0, 0, 0.1)
    readonly property color thinMaterial: Qt.rgba(1, 1, 1, 0.55)
    readonly property color ultraThinMaterial: Qt.rgba(1, 1, 1, 0.82)
    readonly property string monospace: "DejaVu Sans Mono"
}
