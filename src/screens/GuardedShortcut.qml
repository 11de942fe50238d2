import QtQuick
import Tidewick

// A key that stands for a control: it acts only while that control is
// visible and enabled, so never from a screen that is not shown. The window
// disables its screens while a dialog or an alert is up (ContentView), so a
// modal stops it too.
Shortcut {
    required property Item control

    enabled: control.visible && control.enabled
}
