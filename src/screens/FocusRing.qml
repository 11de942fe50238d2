import QtQuick
import Tidewick

// The keyboard's focus ring around a control: shown only while the control
// has focus from the keyboard (`visualFocus`), never after a click. Put it in
// the control's background, with the control's corner radius.
Rectangle {
    property Item control: parent
    property real cornerRadius: 6

    anchors.fill: parent
    anchors.margins: -3
    radius: cornerRadius + 3
    color: "transparent"
    border.width: 3
    border.color: Style.focusRing
    visible: control !== null && (control.visualFocus ?? control.activeFocus) === true
}
