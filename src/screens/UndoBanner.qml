import QtQuick
import QtQuick.Layouts
import Tidewick

// After a removal from the app: what went, and the way to take it back.
// Stays until the next removal, a new scan or its close button.
Rectangle {
    id: banner
    required property AppState appState

    implicitHeight: row.implicitHeight + 12
    color: Style.tint(Style.secondary, 0.10)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: banner.appState.undoText

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: 18
        anchors.rightMargin: 12
        spacing: 10
        SymbolIcon {
            symbol: "trash"
            tint: Style.secondary
            size: 14
        }
        Text {
            objectName: "undoText"
            Layout.fillWidth: true
            text: banner.appState.undoText
            font.pixelSize: 12
            color: Style.primary
            elide: Text.ElideRight
        }
        PushButton {
            id: undoButton
            objectName: "undoButton"
            text: Loc.strings["undo.action"]
            onClicked: banner.appState.undoLastRemoval()
        }
        PushButton {
            objectName: "undoClose"
            symbol: "xmark"
            text: ""
            Accessible.name: Loc.strings["undo.close"]
            onClicked: banner.appState.dismissUndo()
        }
    }
    // ⌘Z / Ctrl+Z while the banner shows and no dialog is up.
    GuardedShortcut {
        control: undoButton
        sequences: [StandardKey.Undo]
        onActivated: banner.appState.undoLastRemoval()
    }
}
