import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// The last stop before an uninstall: the bundle and its leftovers by kind,
// each with why it is offered; shared data unticked; no removal while the
// search runs or the application runs. Escape cancels, Return confirms.
ColumnLayout {
    id: dialog
    required property AppState appState
    property InstalledApp app: null
    readonly property bool active: dialog.visible && dialog.app !== null

    function open(candidate: InstalledApp) {
        dialog.app = candidate
        choices.reset()
    }

    width: 540
    spacing: 14

    UninstallChoices {
        id: choices
        objectName: "uninstallChoices"
        state: dialog.appState
        app: dialog.app
    }

    RowLayout {
        Layout.topMargin: 20
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        spacing: 12
        Image {
            Layout.preferredWidth: 48
            Layout.preferredHeight: 48
            sourceSize: Qt.size(48 * Screen.devicePixelRatio, 48 * Screen.devicePixelRatio)
            source: dialog.app ? "image://appicon/" + encodeURIComponent(dialog.app.path) : ""
            fillMode: Image.PreserveAspectFit
        }
        Column {
            Layout.fillWidth: true
            spacing: 2
            Text {
                objectName: "uninstallTitle"
                width: parent.width
                text: dialog.app ? Loc.strings["uninstall.confirmTitle"].replace("%@", dialog.app.name) : ""
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Style.primary
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                text: dialog.app ? dialog.app.bundleID : ""
                font.pixelSize: 10
                font.family: Style.monospace
                color: Style.secondary
                elide: Text.ElideMiddle
            }
            Text {
                visible: dialog.app !== null && dialog.app.version !== ""
                text: dialog.app ? "v" + dialog.app.version : ""
                font.pixelSize: 11
                color: Style.secondary
            }
        }
        Text {
            text: choices.selectedSizeText
            font.pixelSize: 15
            font.weight: Font.DemiBold
            color: Style.primary
        }
    }

    Rectangle {
        objectName: "runningBanner"
        visible: choices.runningStatus
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        implicitHeight: banner.implicitHeight + 20
        radius: 8
        color: Style.tint(Style.orange, 0.12)
        RowLayout {
            id: banner
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 10
            SymbolIcon {
                Layout.preferredWidth: 18
                Layout.preferredHeight: 18
                symbol: "exclamationmark.triangle.fill"
                tint: Style.orange
                size: 18
            }
            Column {
                Layout.fillWidth: true
                Text {
                    width: parent.width
                    text: Loc.strings["uninstall.running"]
                    font.pixelSize: 13
                    font.weight: Font.DemiBold
                    color: Style.primary
                    wrapMode: Text.Wrap
                }
                Text {
                    width: parent.width
                    text: dialog.app ? Loc.strings["uninstall.runningHelp"].replace("%@", dialog.app.name) : ""
                    font.pixelSize: 11
                    color: Style.secondary
                    wrapMode: Text.Wrap
                }
            }
        }
    }

    ScrollView {
        id: scroller
        objectName: "uninstallItems"
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.preferredHeight: Math.min(260, items.implicitHeight)
        contentWidth: availableWidth
        clip: true

        Column {
            id: items
            width: scroller.availableWidth
            spacing: 10

            Rectangle {
                width: parent.width
                implicitHeight: bundleRow.implicitHeight + 16
                radius: 6
                color: Style.tint(Style.secondary, 0.06)
                RowLayout {
                    id: bundleRow
                    x: 8
                    y: 8
                    width: parent.width - 16
                    spacing: 8
                    CheckBox {
                        objectName: "bundleCheck"
                        checked: choices.bundleChecked
                        Accessible.name: Loc.strings["uninstall.bundleLabel"]
                        onToggled: choices.bundleChecked = checked
                    }
                    SymbolIcon {
                        Layout.preferredWidth: 16
                        Layout.preferredHeight: 16
                        symbol: "app.fill"
                        tint: Style.accent
                        size: 16
                    }
                    Column {
                        Layout.fillWidth: true
                        Text {
                            text: Loc.strings["uninstall.bundleLabel"]
                            font.pixelSize: 12
                            font.weight: Font.DemiBold
                            color: Style.primary
                        }
                        Text {
                            width: parent.width
                            text: dialog.app ? dialog.app.path : ""
                            font.pixelSize: 10
                            font.family: Style.monospace
                            color: Style.secondary
                            elide: Text.ElideMiddle
                        }
                    }
                    Text {
                        text: choices.bundleSizeText
                        font.pixelSize: 11
                        font.weight: Font.Medium
                        color: Style.secondary
                    }
                }
            }

            Row {
                objectName: "uninstallSearching"
                visible: choices.searching
                spacing: 6
                BusyIndicator {
                    width: 16
                    height: 16
                    running: parent.visible
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: Loc.strings["uninstall.searching"]
                    font.pixelSize: 11
                    color: Style.secondary
                }
            }

            Repeater {
                objectName: "uninstallGroups"
                model: choices.groups
                Column {
                    id: group
                    required property var modelData
                    width: items.width
                    spacing: 6
                    Row {
                        spacing: 6
                        SymbolIcon {
                            Layout.preferredWidth: 13
                            Layout.preferredHeight: 13
                            symbol: group.modelData.symbol
                            tint: Style.tint(Style.accent, 0.8)
                            size: 13
                        }
                        Text {
                            text: group.modelData.title
                            font.pixelSize: 11
                            font.weight: Font.DemiBold
                            color: Style.secondary
                        }
                    }
                    Repeater {
                        model: group.modelData.files
                        Rectangle {
                            id: file
                            required property var modelData
                            width: group.width
                            implicitHeight: fileRow.implicitHeight + 16
                            radius: 6
                            color: Style.tint(Style.secondary, 0.04)
                            RowLayout {
                                id: fileRow
                                x: 8
                                y: 8
                                width: parent.width - 16
                                spacing: 8
                                CheckBox {
                                    checked: file.modelData.checked
                                    Accessible.name: file.modelData.name
                                    Accessible.description: file.modelData.reason
                                    onToggled: choices.setChecked(file.modelData.id, checked)
                                }
                                Column {
                                    Layout.fillWidth: true
                                    spacing: 1
                                    Text {
                                        width: parent.width
                                        text: file.modelData.name
                                        font.pixelSize: 12
                                        color: Style.primary
                                        elide: Text.ElideRight
                                    }
                                    Text {
                                        width: parent.width
                                        text: file.modelData.path
                                        font.pixelSize: 10
                                        font.family: Style.monospace
                                        color: Style.secondary
                                        elide: Text.ElideMiddle
                                    }
                                    // Why this item is offered as the application's.
                                    Text {
                                        objectName: "reason"
                                        width: parent.width
                                        text: file.modelData.reason
                                        font.pixelSize: 10
                                        color: Style.secondary
                                        wrapMode: Text.Wrap
                                    }
                                    Text {
                                        visible: file.modelData.shared
                                        width: parent.width
                                        text: Loc.strings["uninstall.sharedData"]
                                        font.pixelSize: 10
                                        color: Style.orange
                                        wrapMode: Text.Wrap
                                    }
                                }
                                Text {
                                    text: file.modelData.size
                                    font.pixelSize: 11
                                    font.weight: Font.Medium
                                    color: Style.secondary
                                }
                            }
                        }
                    }
                }
            }
        }
    }

    Flow {
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.bottomMargin: 20
        layoutDirection: Qt.RightToLeft
        spacing: 8
        PushButton {
            objectName: "uninstallConfirm"
            destructive: true
            enabled: choices.confirmEnabled
            text: choices.confirmTitle
            focusPolicy: Qt.StrongFocus
            Accessible.name: text
            onClicked: choices.confirm()
        }
        PushButton {
            objectName: "uninstallQuit"
            visible: choices.runningStatus
            text: Loc.strings["uninstall.quit"]
            focusPolicy: Qt.StrongFocus
            Accessible.name: text
            onClicked: choices.quit()
        }
        PushButton {
            objectName: "uninstallCancel"
            text: Loc.strings["common.cancel"]
            focusPolicy: Qt.StrongFocus
            Accessible.name: text
            onClicked: dialog.appState.cancelUninstall()
        }
    }
    Shortcut {
        enabled: dialog.active
        sequence: StandardKey.Cancel
        onActivated: dialog.appState.cancelUninstall()
    }
    Shortcut {
        enabled: dialog.active
        sequences: ["Return", "Enter"]
        onActivated: choices.confirm()
    }
}
