import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// The Applications mode: the searchable, sortable list of installed
// applications and, for the selected one, where its bytes lie. Holds only
// the search, the sort and the selection; the list lives in AppState.
Item {
    id: view
    required property AppState appState
    // A dialog or alert is up: the screen's shortcuts stand still.
    property bool modalUp: false
    property InstalledApp selected: null

    function select(app: InstalledApp) {
        if (app === null || app === view.selected)
            return
        view.selected = app
        view.appState.loadRelatedIfNeeded(app)
    }
    // Arrows walk the visible rows from the selection.
    function step(delta: int) {
        const from = apps.indexOf(view.selected)
        const to = from < 0 ? 0 : Math.max(0, Math.min(apps.count - 1, from + delta))
        if (apps.count === 0)
            return
        view.select(apps.appAt(to))
        list.positionViewAtIndex(to, ListView.Contain)
    }
    function uninstall(app: InstalledApp) {
        if (app === null)
            return
        view.appState.loadRelatedIfNeeded(app)
        view.appState.uninstallCandidate = app
    }
    function ensureLoaded() {
        if (view.visible && view.appState.appCount === 0 && !view.appState.appsLoading)
            view.appState.loadApps()
    }

    onVisibleChanged: ensureLoaded()
    Component.onCompleted: ensureLoaded()

    AppsListModel {
        id: apps
        state: view.appState
        // A reload gives every application a new identity, and an uninstall
        // takes one away: a selection that left the list closes the panel.
        onAppsChanged: {
            if (view.selected !== null && !apps.contains(view.selected))
                view.selected = null
        }
    }

    Shortcut {
        enabled: view.visible && !view.modalUp
        sequences: [StandardKey.Find]
        onActivated: search.forceActiveFocus()
    }

    RowLayout {
        anchors.fill: parent
        anchors.margins: 14
        spacing: 14

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            radius: 14
            color: Style.thinMaterial
            border.color: Style.sheen
            border.width: 0.5

            ColumnLayout {
                anchors.fill: parent
                spacing: 0

                RowLayout {
                    Layout.fillWidth: true
                    Layout.leftMargin: 18
                    Layout.rightMargin: 18
                    Layout.topMargin: 10
                    Layout.bottomMargin: 10
                    spacing: 8
                    SymbolIcon {
                        Layout.preferredWidth: 14
                        Layout.preferredHeight: 14
                        symbol: "magnifyingglass"
                        tint: Style.secondary
                        size: 14
                    }
                    TextField {
                        id: search
                        objectName: "appsSearch"
                        Layout.fillWidth: true
                        placeholderText: Loc.strings["apps.search"]
                        font.pixelSize: 13
                        background: null
                        Accessible.name: Loc.strings["apps.search"]
                        onTextChanged: apps.search = text
                        Keys.onDownPressed: {
                            list.forceActiveFocus()
                            view.step(view.selected === null ? 0 : 1)
                        }
                        Keys.onEscapePressed: text = ""
                    }
                    ComboBox {
                        id: sortPicker
                        objectName: "appsSort"
                        Layout.preferredWidth: 180
                        model: apps.sortKeys.map(key => Loc.strings[key])
                        currentIndex: apps.sort
                        font.pixelSize: 12
                        Accessible.name: Loc.strings[apps.sortKeys[apps.sort]]
                        onActivated: index => apps.sort = index
                    }
                    ToolbarButton {
                        id: reload
                        objectName: "appsReload"
                        symbol: "arrow.clockwise"
                        help: Loc.strings["apps.reload"]
                        focusPolicy: Qt.StrongFocus
                        Accessible.name: Loc.strings["apps.reload"]
                        onClicked: view.appState.reloadApps()
                        NumberAnimation on symbolRotation {
                            running: view.appState.appsLoading && view.visible
                            from: 0
                            to: 360
                            duration: 900
                            loops: Animation.Infinite
                            // A full turn ends at rest, not mid-way.
                            onRunningChanged: if (!running) reload.symbolRotation = 0
                        }
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

                    Column {
                        objectName: "appsLoading"
                        anchors.centerIn: parent
                        spacing: 10
                        visible: view.appState.appsLoading && view.appState.appCount === 0
                        BusyIndicator {
                            anchors.horizontalCenter: parent.horizontalCenter
                            running: parent.visible
                            scale: 1.2
                        }
                        Text {
                            text: Loc.strings["apps.loading"]
                            font.pixelSize: 13
                            color: Style.secondary
                        }
                    }

                    // Discovery found nothing: say so, and where it looked.
                    Column {
                        objectName: "appsEmpty"
                        anchors.centerIn: parent
                        width: Math.min(parent.width - 40, 420)
                        spacing: 6
                        visible: !view.appState.appsLoading && view.appState.appCount === 0
                                 && view.appState.appFolders.length > 0
                        Text {
                            width: parent.width
                            horizontalAlignment: Text.AlignHCenter
                            wrapMode: Text.Wrap
                            text: Loc.strings["apps.none"]
                            font.pixelSize: 13
                            font.weight: Font.DemiBold
                            color: Style.primary
                        }
                        Text {
                            width: parent.width
                            horizontalAlignment: Text.AlignHCenter
                            wrapMode: Text.Wrap
                            text: Loc.strings["apps.lookedIn"]
                            font.pixelSize: 11
                            color: Style.secondary
                        }
                        Repeater {
                            model: view.appState.appFolders
                            Text {
                                required property string modelData
                                width: parent.width
                                horizontalAlignment: Text.AlignHCenter
                                elide: Text.ElideMiddle
                                text: modelData
                                font.pixelSize: 11
                                font.family: Style.monospace
                                color: Style.secondary
                            }
                        }
                    }

                    ListView {
                        id: list
                        objectName: "appsList"
                        anchors.fill: parent
                        visible: !(view.appState.appsLoading && view.appState.appCount === 0)
                        clip: true
                        model: apps
                        activeFocusOnTab: true
                        keyNavigationEnabled: false
                        boundsBehavior: Flickable.StopAtBounds
                        ScrollBar.vertical: ScrollBar {}
                        Accessible.role: Accessible.List
                        Accessible.name: Loc.strings["mode.apps"]
                        // Behind a dialog the list keeps the keyboard but not its keys.
                        Keys.onUpPressed: if (!view.modalUp) view.step(-1)
                        Keys.onDownPressed: if (!view.modalUp) view.step(1)
                        Keys.onReturnPressed: if (!view.modalUp) view.uninstall(view.selected)
                        Keys.onEnterPressed: if (!view.modalUp) view.uninstall(view.selected)
                        delegate: AppRowView {
                            width: ListView.view.width
                            isSelected: app === view.selected
                            listFocused: list.activeFocus
                            onSelectRequested: {
                                list.forceActiveFocus()
                                view.select(app)
                            }
                            onDeleteRequested: view.uninstall(app)
                            onRevealRequested: view.appState.revealApp(app)
                            onOpenRequested: Qt.openUrlExternally(apps.fileUrl(app))
                        }
                    }
                }
            }
        }

        AppDetailPanel {
            id: panel
            objectName: "appDetailPanel"
            Layout.preferredWidth: 300
            Layout.fillHeight: true
            app: view.selected
            // Loc.code: the counts follow the language.
            breakdown: view.selected !== null && view.selected.relatedLoaded && Loc.code !== ""
                       ? apps.breakdown(view.selected) : []
            sizeText: view.selected !== null ? apps.sizeText(view.selected.totalSize) : ""
            bundleSizeText: view.selected !== null ? apps.sizeText(view.selected.bundleSize) : ""
            visible: opacity > 0
            opacity: view.selected !== null ? 1 : 0
            Layout.rightMargin: view.selected !== null ? 0 : -40
            Behavior on opacity {
                NumberAnimation { duration: 200; easing.type: Easing.InOutQuad }
            }
            Behavior on Layout.rightMargin {
                NumberAnimation { duration: 200; easing.type: Easing.InOutQuad }
            }
            onDeleteRequested: view.uninstall(view.selected)
            onRevealRequested: view.appState.revealApp(view.selected)
        }
    }
}
