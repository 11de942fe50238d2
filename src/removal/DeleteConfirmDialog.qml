import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// Asks before one file or folder goes to the Trash: what it is, where, how
// big. Escape cancels; Return confirms, as the red button says.
ColumnLayout {
    id: dialog
    property var facts: ({})
    signal cancel()
    signal confirm()

    // Wider only where a language's buttons would not fit on one row.
    width: Math.max(460, buttons.implicitWidth + 40)
    spacing: 14

    RowLayout {
        Layout.topMargin: 20
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        spacing: 12
        SymbolIcon {
            objectName: "deleteSymbol"
            symbol: "trash.fill"
            tint: Style.destructive
            size: 30
        }
        Column {
            Layout.fillWidth: true
            spacing: 3
            Text {
                width: parent.width
                text: Loc.strings["delete.title"]
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Style.primary
                wrapMode: Text.Wrap
            }
            Text {
                objectName: "deleteBody"
                width: parent.width
                text: Loc.strings[dialog.facts.isDirectory ? "delete.bodyDir" : "delete.bodyFile"]
                font.pixelSize: 13
                color: Style.secondary
                wrapMode: Text.Wrap
            }
        }
    }

    Rectangle {
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        implicitHeight: factRows.implicitHeight + 20
        radius: 8
        color: Style.tint(Style.secondary, 0.08)
        Column {
            id: factRows
            objectName: "deleteFacts"
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 6
            Repeater {
                model: [
                    { key: "delete.name", value: dialog.facts.name ?? "", shown: true },
                    { key: "delete.path", value: dialog.facts.path ?? "", shown: true },
                    { key: "delete.size", value: dialog.facts.size ?? "", shown: true },
                    { key: "delete.count", value: dialog.facts.files ?? "", shown: dialog.facts.isDirectory === true }
                ]
                Row {
                    id: fact
                    required property var modelData
                    visible: modelData.shown
                    width: factRows.width
                    Text {
                        width: 52
                        text: Loc.strings[fact.modelData.key]
                        font.pixelSize: 11
                        color: Style.secondary
                        elide: Text.ElideRight
                        // Label and value share their first baseline.
                        anchors.baseline: value.baseline
                    }
                    // Selectable, truncated in the middle while not being read.
                    TextInput {
                        id: value
                        width: parent.width - 52
                        readOnly: true
                        selectByMouse: true
                        text: activeFocus ? fact.modelData.value
                                          : metrics.elidedText
                        font.pixelSize: 12
                        color: Style.primary
                        clip: true
                        TextMetrics {
                            id: metrics
                            font.pixelSize: 12
                            text: fact.modelData.value
                            elide: Text.ElideMiddle
                            elideWidth: fact.width - 52
                        }
                    }
                }
            }
        }
    }

    // Buttons on one row at the trailing edge.
    Row {
        id: buttons
        Layout.alignment: Qt.AlignRight
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.bottomMargin: 20
        layoutDirection: Qt.RightToLeft
        spacing: 8
        PushButton {
            objectName: "deleteConfirm"
            destructive: true
            text: Loc.strings["delete.confirm"]
            onClicked: dialog.confirm()
        }
        PushButton {
            objectName: "deleteCancel"
            text: Loc.strings["common.cancel"]
            onClicked: dialog.cancel()
        }
    }
    Shortcut {
        enabled: dialog.visible
        sequence: StandardKey.Cancel
        onActivated: dialog.cancel()
    }
    Shortcut {
        enabled: dialog.visible
        sequences: ["Return", "Enter"]
        onActivated: dialog.confirm()
    }
}
