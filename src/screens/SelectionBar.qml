import QtQuick
import QtQuick.Layouts
import Tidewick

// At the foot of the chart screen while items are picked for a batch: how
// many and how much, the one way to the Trash for all of them, and Clear.
Rectangle {
    id: bar
    required property AppState appState

    implicitHeight: row.implicitHeight + 16
    color: Style.tint(Style.accent, 0.10)
    Accessible.role: Accessible.ToolBar
    Accessible.name: bar.appState.selectionText

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.leftMargin: 18
        anchors.rightMargin: 18
        spacing: 10
        SymbolIcon {
            symbol: "checkmark"
            tint: Style.accent
            size: 15
        }
        Text {
            objectName: "selectionText"
            Layout.fillWidth: true
            text: bar.appState.selectionText
            font.pixelSize: 13
            font.weight: Font.Medium
            color: Style.primary
            elide: Text.ElideRight
        }
        PushButton {
            objectName: "selectionClear"
            text: Loc.strings["selection.clear"]
            onClicked: bar.appState.clearSelection()
        }
        PushButton {
            objectName: "selectionTrash"
            destructive: true
            text: Loc.strings["menu.moveToTrash"]
            onClicked: bar.appState.requestBatchDelete()
        }
    }
}
