import QtQuick
import QtQuick.Controls
import Tidewick

// A large welcome-screen button: symbol and text; the prominent one is
// filled with the accent colour.
Button {
    id: button
    property string symbol
    property bool prominent: false
    property real minimumWidth: 160

    implicitWidth: Math.max(minimumWidth, label.implicitWidth + 32)
    implicitHeight: label.implicitHeight + 12 + 14
    font.pixelSize: 14
    // Tab reaches it; a click does not take the keyboard, so Return and
    // Escape stay with the dialog's own shortcuts.
    focusPolicy: Qt.TabFocus
    Accessible.name: text

    background: Rectangle {
        radius: 7
        color: button.prominent ? (button.down ? Qt.darker(Style.accent, 1.15) : Style.accent)
                                : (button.down ? Style.controlPressed : Style.controlBackground)
        border.color: button.prominent ? "transparent" : Style.controlEdge
        border.width: 1
        FocusRing {
            control: button
            cornerRadius: 7
        }
    }
    contentItem: Item {
        implicitWidth: label.implicitWidth
        implicitHeight: label.implicitHeight
        Row {
            id: label
            anchors.centerIn: parent
            spacing: 7
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: button.symbol
                tint: button.prominent ? Style.textOnAccent : Style.primary
                size: 16
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: button.text
                font: button.font
                color: button.prominent ? Style.textOnAccent : Style.primary
            }
        }
    }
}
