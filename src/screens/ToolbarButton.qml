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
    // A click does not take the keyboard: Return and Escape stay with the
    // dialog's own shortcuts.
    focusPolicy: Qt.NoFocus
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
