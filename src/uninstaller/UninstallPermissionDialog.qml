import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// After an uninstall the system refused: which permission is missing, the
// way to its settings, and what stayed. Changes nothing itself.
ColumnLayout {
    id: dialog
    property var prompt: ({})
    readonly property var failedPaths: prompt.failedPaths ?? []
    readonly property int succeededCount: prompt.succeededCount ?? 0
    signal openAppManagement()
    signal openFullDiskAccess()
    signal dismiss()

    width: 480
    spacing: 14

    component Card: Rectangle {
        id: card
        property string title
        property string body
        property string action
        signal opened()
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        implicitHeight: cardColumn.implicitHeight + 20
        radius: 8
        color: Style.tint(Style.secondary, 0.08)
        Column {
            id: cardColumn
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 6
            Text {
                width: parent.width
                text: card.title
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Style.primary
            }
            Text {
                width: parent.width
                text: card.body
                font.pixelSize: 11
                color: Style.secondary
                wrapMode: Text.Wrap
            }
            PushButton {
                text: card.action
                focusPolicy: Qt.StrongFocus
                Accessible.name: text
                onClicked: card.opened()
            }
        }
    }

    RowLayout {
        Layout.topMargin: 20
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        spacing: 12
        SymbolIcon {
            Layout.preferredWidth: 28
            Layout.preferredHeight: 28
            symbol: "lock.shield"
            tint: Style.orange
            size: 28
        }
        Column {
            Layout.fillWidth: true
            spacing: 2
            Text {
                width: parent.width
                text: Loc.strings["perm.title"]
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Style.primary
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                text: Loc.strings["delete.failed"]
                font.pixelSize: 12
                color: Style.secondary
            }
        }
    }

    Text {
        objectName: "permSummary"
        visible: dialog.succeededCount >= 1
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        text: Loc.strings["perm.summary"].replace("%d", dialog.succeededCount).replace("%d", dialog.failedPaths.length)
        font.pixelSize: 11
        color: Style.secondary
        wrapMode: Text.Wrap
    }

    Card {
        objectName: "appManagementCard"
        visible: dialog.prompt.needsAppManagement === true
        title: Loc.strings["perm.appMgmt.title"]
        body: Loc.strings["perm.appMgmt.body"]
        action: Loc.strings["perm.appMgmt.open"]
        onOpened: dialog.openAppManagement()
    }
    Card {
        objectName: "fullDiskAccessCard"
        visible: dialog.prompt.needsFullDiskAccess === true
        title: Loc.strings["perm.fda.title"]
        body: Loc.strings["perm.fda.body"]
        action: Loc.strings["perm.fda.open"]
        onOpened: dialog.openFullDiskAccess()
    }

    Text {
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        text: Loc.strings["perm.whatFailed"]
        font.pixelSize: 11
        color: Style.primary
    }
    ScrollView {
        id: failedScroll
        objectName: "failedPaths"
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.preferredHeight: Math.min(90, failedColumn.implicitHeight)
        contentWidth: availableWidth
        clip: true
        Column {
            id: failedColumn
            width: failedScroll.availableWidth
            Repeater {
                model: dialog.failedPaths
                Text {
                    required property string modelData
                    width: failedColumn.width
                    text: modelData
                    font.pixelSize: 10
                    font.family: Style.monospace
                    color: Style.secondary
                    elide: Text.ElideMiddle
                }
            }
        }
    }

    Text {
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        text: Loc.strings["perm.restartHint"]
        font.pixelSize: 11
        color: Style.secondary
        wrapMode: Text.Wrap
    }

    RowLayout {
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.bottomMargin: 20
        Item { Layout.fillWidth: true }
        PushButton {
            objectName: "permClose"
            prominent: true
            text: Loc.strings["perm.close"]
            focusPolicy: Qt.StrongFocus
            Accessible.name: text
            onClicked: dialog.dismiss()
        }
    }
    Shortcut {
        enabled: dialog.visible
        sequences: ["Return", "Enter", StandardKey.Cancel]
        onActivated: dialog.dismiss()
    }
}
