pragma Singleton
import QtQuick
import Tidewick

// The screens' colours and sizes, in one place, after the system's own
// palettes: label colours are black (light) or white (dark) at the system's
// opacities. Every colour follows the system's appearance as it changes.
QtObject {
    readonly property bool dark: Appearance.dark
    // The user asked the system for less motion: nothing on screen animates
    // beyond what it must.
    readonly property bool reduceMotion: Appearance.reduceMotion

    readonly property color windowBackground: dark ? "#323232" : "#ececec"
    readonly property color primary: dark ? Qt.rgba(1, 1, 1, 0.85) : Qt.rgba(0, 0, 0, 0.85)
    readonly property color secondary: dark ? Qt.rgba(1, 1, 1, 0.55) : Qt.rgba(0, 0, 0, 0.5)
    readonly property color accent: Appearance.accent
    readonly property color destructive: dark ? "#ff453a" : "#ff3b30"
    readonly property color orange: dark ? "#ff9f0a" : "#ff9500"
    readonly property color divider: dark ? Qt.rgba(1, 1, 1, 0.1) : Qt.rgba(0, 0, 0, 0.1)
    readonly property color thinMaterial: dark ? Qt.rgba(0.18, 0.18, 0.18, 0.6) : Qt.rgba(1, 1, 1, 0.55)
    readonly property color ultraThinMaterial: dark ? Qt.rgba(0.16, 0.16, 0.16, 0.86) : Qt.rgba(1, 1, 1, 0.82)
    // A push button's face, at rest and pressed, and its rim.
    readonly property color controlBackground: dark ? "#5b5b5b" : "#ffffff"
    readonly property color controlPressed: dark ? "#6e6e6e" : "#dcdcdc"
    readonly property color controlEdge: dark ? Qt.rgba(1, 1, 1, 0.1) : Qt.rgba(0, 0, 0, 0.13)
    // Text and symbols on an accent or destructive fill.
    readonly property color textOnAccent: "#ffffff"
    // Names on the chart's sectors: each takes the one that stands out more
    // from its sector's fill, in either appearance.
    readonly property color chartLabelDark: Qt.rgba(0, 0, 0, 0.85)
    readonly property color chartLabelLight: Qt.rgba(1, 1, 1, 0.95)
    // Menus and alerts: their face and rim.
    readonly property color menuBackground: dark ? "#2b2b2b" : "#f6f6f6"
    readonly property color menuEdge: dark ? Qt.rgba(1, 1, 1, 0.16) : Qt.rgba(0, 0, 0, 0.12)
    // The light catch on a material's edge, the dimming under a dialog and shadows.
    readonly property color sheen: dark ? Qt.rgba(1, 1, 1, 0.06) : Qt.rgba(1, 1, 1, 0.08)
    readonly property color shadow: "#000000"
    // The keyboard's focus ring.
    readonly property color focusRing: tint(accent, 0.5)
    readonly property string monospace: "DejaVu Sans Mono"
    // One colour a kind of file, in the order of FileKind: video, audio,
    // pictures, documents, archives, code, applications, caches, system,
    // other (the system's purple, pink, orange, blue, brown, green, indigo,
    // yellow, teal and grey).
    readonly property var kindColours: dark
        ? ["#bf5af2", "#ff375f", "#ff9f0a", "#0a84ff", "#ac8e68", "#30d158", "#5e5ce6", "#ffd60a", "#40c8e0", "#98989d"]
        : ["#af52de", "#ff2d55", "#ff9500", "#007aff", "#a2845e", "#34c759", "#5856d6", "#ffcc00", "#30b0c7", "#8e8e93"]

    // A named colour at a given opacity, as the screens describe "the
    // secondary colour at opacity 0.08".
    function tint(colour: color, opacity: real): color {
        return Qt.rgba(colour.r, colour.g, colour.b, colour.a * opacity)
    }
}
