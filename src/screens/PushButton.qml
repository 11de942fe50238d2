import QtQuick
import QtQuick.Controls
import Tidewick

// The screens' push button: plain, prominent (accent fill) or destructive
// (red fill), with an optional leading symbol.
Button {
    id: button
    property string symbol
    property bool prominent: false
    property bool destructive: false
    readonly property bool filled: prominent || destructive
    readonly property color fill: destructive ? Style.destructive : Style.accent

    implicitWidth: Math.max(64, label.implicitWidth + 24)
    implicitHeight: label.implicitHeight + 10
    font.pixelSize: 13
    // Tab reaches it; a click does not take the keyboard, so Return and
    // Escape stay with the dialog's own shortcuts.
    focusPolicy: Qt.TabFocus
    Accessible.name: text

    background: Rectangle {
        radius: 6
        color: button.filled ? (button.down ? Qt.darker(button.fill, 1.15) : button.fill)
                             : (button.down ? Style.controlPressed : Style.controlBackground)
        border.color: button.filled ? "transparent" : Style.controlEdge
        border.width: 1
        opacity: button.enabled ? 1 : 0.5
        FocusRing {
            control: button
            cornerRadius: 6
        }
    }
    contentItem: Item {
        implicitWidth: label.implicitWidth
        implicitHeight: label.implicitHeight
        Row {
            id: label
            anchors.centerIn: parent
            spacing: 5
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.symbol !== ""
                symbol: button.symbol
                tint: button.filled ? Style.textOnAccent : Style.primary
                size: 13
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: button.text
                font: button.font
                color: button.filled ? Style.textOnAccent : Style.primary
            }
        }
    }
}
