import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// Asks once before a batch of picked items goes to the Trash: how many, how
// much in all, and each name with its size (scrolling past ten). Worded as
// the one-item dialog is; Escape cancels, Return confirms.
ColumnLayout {
    id: dialog
    property var facts: ({})
    signal cancel()
    signal confirm()

    width: Math.max(460, buttons.implicitWidth + 40)
    spacing: 14

    RowLayout {
        Layout.topMargin: 20
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        spacing: 12
        SymbolIcon {
            symbol: "trash.fill"
            tint: Style.destructive
            size: 30
        }
        Column {
            Layout.fillWidth: true
            spacing: 3
            Text {
                objectName: "batchTitle"
                width: parent.width
                text: dialog.facts.title ?? ""
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Style.primary
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                text: dialog.facts.body ?? ""
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
        implicitHeight: column.implicitHeight + 20
        radius: 8
        color: Style.tint(Style.secondary, 0.08)
        Column {
            id: column
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 6
            ListView {
                id: list
                objectName: "batchItems"
                width: parent.width
                readonly property int rowHeight: 20
                height: Math.min(count, 10) * rowHeight
                clip: true
                model: dialog.facts.items ?? []
                boundsBehavior: Flickable.StopAtBounds
                activeFocusOnTab: true
                Accessible.role: Accessible.List
                Accessible.name: dialog.facts.title ?? ""
                ScrollBar.vertical: ScrollBar { policy: list.count > 10 ? ScrollBar.AlwaysOn : ScrollBar.AsNeeded }
                delegate: RowLayout {
                    id: item
                    required property var modelData
                    width: ListView.view.width - 12
                    height: list.rowHeight
                    spacing: 8
                    Accessible.role: Accessible.ListItem
                    Accessible.name: modelData.name + ", " + modelData.size
                    SymbolIcon {
                        symbol: item.modelData.isDirectory ? "folder.fill" : "doc.fill"
                        tint: Style.accent
                        size: 12
                    }
                    Text {
                        Layout.fillWidth: true
                        text: item.modelData.name
                        font.pixelSize: 12
                        color: Style.primary
                        elide: Text.ElideMiddle
                    }
                    Text {
                        text: item.modelData.size
                        font.pixelSize: 11
                        color: Style.secondary
                    }
                }
            }
            Rectangle {
                width: parent.width
                height: 1
                color: Style.divider
            }
            RowLayout {
                width: parent.width - 12
                Text {
                    Layout.fillWidth: true
                    text: Loc.strings["batch.total"]
                    font.pixelSize: 12
                    font.weight: Font.DemiBold
                    color: Style.secondary
                }
                Text {
                    objectName: "batchTotal"
                    text: dialog.facts.total ?? ""
                    font.pixelSize: 12
                    font.weight: Font.DemiBold
                    color: Style.primary
                }
            }
        }
    }

    Row {
        id: buttons
        Layout.alignment: Qt.AlignRight
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.bottomMargin: 20
        layoutDirection: Qt.RightToLeft
        spacing: 8
        PushButton {
            objectName: "batchConfirm"
            destructive: true
            text: Loc.strings["delete.confirm"]
            onClicked: dialog.confirm()
        }
        PushButton {
            objectName: "batchCancel"
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
