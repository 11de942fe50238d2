import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import QtQuick.Layouts
import Tidewick

// Everything the main window holds: the mode bar, the screen chosen by mode
// and phase, the modal layer and the alerts. A pure function of AppState.
Item {
    id: content
    required property AppState appState
    // The sponsored feed; no bar without one (tests and the screenshot tool).
    property AdService adService: null
    property int leadingInset: 0
    // What a host that paints the window behind this content paints it with.
    readonly property color windowBackground: Style.windowBackground
    // The stock controls (fields, menus, combo boxes, tooltips) in the
    // screens' colours, so they read in the light and the dark look alike.
    palette.window: Style.windowBackground
    palette.windowText: Style.primary
    palette.base: Style.controlBackground
    palette.alternateBase: Style.menuBackground
    palette.text: Style.primary
    palette.button: Style.controlBackground
    palette.buttonText: Style.primary
    palette.highlight: Style.accent
    palette.highlightedText: Style.textOnAccent
    palette.toolTipBase: Style.menuBackground
    palette.toolTipText: Style.primary
    palette.placeholderText: Style.secondary
    palette.mid: Style.controlEdge
    // A dialog, an alert or the folder picker is up. The screens beneath are
    // disabled meanwhile: Tab stays within the dialog, and no key of a
    // screen's (GuardedShortcut) acts behind it.
    readonly property bool modalUp: fdaPromptCard.shown || deleteCard.shown || errorAlert.shown
                                    || thinConfirmAlert.shown || thinResultAlert.shown
                                    || folderDialog.visible
                                    || appState.uninstallCandidate !== null
                                    || appState.permissionPrompt.id !== undefined

    Component.onCompleted: if (adService) adService.start()

    ScreensModel {
        id: screensModel
        state: content.appState
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0
        enabled: !content.modalUp

        RowLayout {
            objectName: "modeBar"
            Layout.fillWidth: true
            Layout.leftMargin: 18 + content.leadingInset
            Layout.rightMargin: 18
            Layout.topMargin: 10
            Layout.bottomMargin: 10

            ModePicker {
                objectName: "modePicker"
                Layout.preferredWidth: 280
                appState: content.appState
            }
            Item {
                Layout.fillWidth: true
            }
            LanguageMenu {
                objectName: "languageButton"
            }
        }

        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
            opacity: 0.4
        }

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            AppsView {
                objectName: "appsScreen"
                anchors.fill: parent
                visible: content.appState.mode === AppState.Mode.apps
                appState: content.appState
                modalUp: content.modalUp
            }
            WelcomeView {
                objectName: "welcomeScreen"
                anchors.fill: parent
                visible: content.appState.mode === AppState.Mode.folder && content.appState.phase === AppState.Phase.welcome
                localSnapshotCount: content.appState.localSnapshotCount
                thinning: content.appState.thinningSnapshots
                onScanEntireMac: {
                    UsageEvents.scanStartedEntireMac();
                    content.appState.requestScan("/");
                }
                onScanHome: {
                    UsageEvents.scanStartedHome();
                    content.appState.requestScan(screensModel.homePath);
                }
                onPickFolder: folderDialog.open()
                onThinSnapshots: content.appState.confirmThinSnapshots = true
                onAppeared: content.appState.refreshSnapshotCount()
            }
            ScanProgressView {
                objectName: "progressScreen"
                anchors.fill: parent
                visible: content.appState.mode === AppState.Mode.folder && content.appState.phase === AppState.Phase.scanning
                screens: screensModel
                onCancel: content.appState.cancelScan()
            }
            Loader {
                objectName: "chartScreenLoader"
                anchors.fill: parent
                active: content.appState.mode === AppState.Mode.folder && content.appState.phase === AppState.Phase.ready
                        && content.appState.hasTree
                sourceComponent: ChartScreen {
                    appState: content.appState
                    onOpenFullDiskAccessSettings: Qt.openUrlExternally(screensModel.fullDiskAccessSettingsUrl)
                }
            }
        }

        UndoBanner {
            objectName: "undoBanner"
            Layout.fillWidth: true
            visible: content.appState.undoText !== ""
            appState: content.appState
        }

        AdBarView {
            objectName: "adBar"
            Layout.fillWidth: true
            Layout.preferredHeight: implicitHeight
            ads: content.adService
        }
    }

    // The modal layer, back to front.
    ModalCard {
        id: fdaPromptCard
        objectName: "fdaPromptCard"
        shown: content.appState.fdaPromptForURL !== ""
        FullDiskAccessPrompt {
            pathLabel: screensModel.fdaPathLabel
            onOpenSettings: Qt.openUrlExternally(screensModel.fullDiskAccessSettingsUrl)
            onContinueAnyway: content.appState.continueWithoutFullDiskAccess()
            onCancel: content.appState.dismissFullDiskAccessPrompt()
        }
    }

    ModalCard {
        id: deleteCard
        objectName: "deleteCard"
        shown: content.appState.hasDeleteCandidate
        DeleteConfirmDialog {
            facts: screensModel.deleteFacts
            onCancel: content.appState.cancelDelete()
            onConfirm: content.appState.confirmDelete()
        }
    }

    ModalCard {
        objectName: "batchCard"
        shown: content.appState.batchConfirmOpen
        BatchDeleteDialog {
            facts: content.appState.batchFacts
            onCancel: content.appState.cancelBatchDelete()
            onConfirm: content.appState.confirmBatchDelete()
        }
    }

    ModalCard {
        objectName: "uninstallCard"
        shown: content.appState.uninstallCandidate !== null
        AppUninstallDialog {
            id: uninstallDialog
            appState: content.appState
        }
    }
    // The dialog keeps its application while the card fades out, and starts
    // with fresh choices each time it opens.
    Connections {
        target: content.appState
        function onUninstallCandidateChanged() {
            if (content.appState.uninstallCandidate !== null)
                uninstallDialog.open(content.appState.uninstallCandidate)
        }
        // Likewise the permission dialog keeps its prompt while fading out.
        function onPermissionPromptChanged() {
            if (content.appState.permissionPrompt.id !== undefined)
                permissionDialog.prompt = content.appState.permissionPrompt
        }
    }

    ModalCard {
        objectName: "permissionCard"
        shown: content.appState.permissionPrompt.id !== undefined
        UninstallPermissionDialog {
            id: permissionDialog
            onOpenAppManagement: Qt.openUrlExternally(screensModel.appManagementSettingsUrl)
            onOpenFullDiskAccess: Qt.openUrlExternally(screensModel.fullDiskAccessSettingsUrl)
            onDismiss: content.appState.dismissPermissionPrompt()
        }
    }

    FolderDialog {
        id: folderDialog
        objectName: "folderDialog"
        title: Loc.strings["panel.message"]
        acceptLabel: Loc.strings["panel.prompt"]
        parentWindow: content.Window.window
        onAccepted: {
            UsageEvents.scanStartedFolder();
            screensModel.scanPickedFolder(selectedFolder);
        }
    }

    AlertDialog {
        id: errorAlert
        objectName: "errorAlert"
        title: Loc.strings["delete.failed"]
        message: content.appState.errorMessage
        shown: content.appState.errorMessage !== ""
        acceptText: "OK"
        onAccepted: content.appState.clearErrorMessage()
    }
    AlertDialog {
        id: thinConfirmAlert
        objectName: "thinConfirmAlert"
        title: Loc.strings["snapshots.confirm.title"]
        message: Loc.strings["snapshots.confirm.body"]
        shown: content.appState.confirmThinSnapshots
        acceptText: Loc.strings["snapshots.confirm.action"]
        rejectText: Loc.strings["common.cancel"]
        onAccepted: content.appState.thinSnapshots()
        onRejected: content.appState.confirmThinSnapshots = false
    }
    AlertDialog {
        id: thinResultAlert
        objectName: "thinResultAlert"
        title: Loc.strings["snapshots.result.title"]
        message: content.appState.thinResultMessage
        shown: content.appState.thinResultMessage !== ""
        acceptText: "OK"
        onAccepted: content.appState.clearThinResultMessage()
    }
}
