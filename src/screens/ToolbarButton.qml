import QtQuick
import QtQuick.Controls
import Tidewick

// A borderless symbol button with a help text on hover.
ToolButton {
    id: button
    property string symbol
    property string help
    property alias symbolRotation: icon.rotation

    flat: true
    // Tab reaches it; a click does not take the keyboard, so Return and
    // Escape stay with the dialog's own shortcuts.
    focusPolicy: Qt.TabFocus
    // Only a symbol shows: the help text is what a screen reader says.
    Accessible.name: help
    Accessible.role: Accessible.Button
    background: Rectangle {
        radius: 6
        color: button.down ? Style.tint(Style.primary, 0.12) : button.hovered && button.enabled ? Style.tint(Style.primary, 0.06) : "transparent"
        FocusRing {
            control: button
            cornerRadius: 6
        }
    }
    implicitWidth: 28
    implicitHeight: 28
    contentItem: Item {
        SymbolIcon {
            id: icon
            anchors.centerIn: parent
            symbol: button.symbol
            tint: Style.primary
            size: 16
            opacity: button.enabled ? 1 : 0.35
        }
    }
    ToolTip.visible: hovered && help !== ""
    ToolTip.delay: 600
    ToolTip.text: help
}
