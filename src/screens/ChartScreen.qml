import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// The ready screen: toolbar, the Full Disk Access banner, the chart and the
// list of the largest items.
ColumnLayout {
    id: chartScreen
    required property AppState appState
    signal openFullDiskAccessSettings()

    spacing: 0

    ChartScreenModel {
        id: model
        state: chartScreen.appState
    }

    RowLayout {
        objectName: "toolbar"
        Layout.fillWidth: true
        Layout.leftMargin: 18
        Layout.rightMargin: 18
        Layout.topMargin: 12
        Layout.bottomMargin: 12
        spacing: 10

        ToolbarButton {
            objectName: "newScanButton"
            symbol: "sidebar.left"
            help: Loc.strings["toolbar.newScan"]
            onClicked: chartScreen.appState.resetToWelcome()
        }
        ToolbarButton {
            objectName: "upButton"
            symbol: "chevron.left"
            help: Loc.strings["toolbar.up"]
            enabled: model.canGoUp
            onClicked: chartScreen.appState.goUp()
        }
        BreadcrumbView {
            objectName: "breadcrumb"
            screen: model
        }
        Item {
            Layout.fillWidth: true
        }
        ToolbarButton {
            id: refreshButton
            objectName: "refreshButton"
            symbol: "arrow.clockwise"
            help: Loc.strings["toolbar.refresh"]
            enabled: !chartScreen.appState.isRefreshing
            onClicked: chartScreen.appState.refresh()

            RotationAnimation on symbolRotation {
                running: chartScreen.appState.isRefreshing
                from: 0
                to: 360
                duration: 900
                loops: Animation.Infinite
                onStopped: refreshButton.symbolRotation = 0
            }
        }
        Shortcut {
            sequence: "Ctrl+R"
            // Not behind a dialog: the dialog's subject belongs to this tree.
            enabled: refreshButton.enabled && !chartScreen.appState.hasDeleteCandidate
            onActivated: chartScreen.appState.refresh()
        }
        Row {
            objectName: "figures"
            spacing: 8
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: model.fileSizesText
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Style.secondary
                HoverHandler { id: sizesHover }
                ToolTip.visible: sizesHover.hovered
                ToolTip.delay: 600
                ToolTip.text: Loc.strings["toolbar.fileSizesHelp"]
            }
            SymbolIcon {
                objectName: "infoSymbol"
                anchors.verticalCenter: parent.verticalCenter
                visible: model.showsInfo
                symbol: "info.circle"
                tint: Style.secondary
                size: 13
                HoverHandler { id: infoHover }
                ToolTip.visible: infoHover.hovered
                ToolTip.delay: 600
                ToolTip.text: Loc.strings["toolbar.fileSizesHelp"]
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                visible: model.capacityText !== ""
                text: "•"
                color: Style.secondary
                opacity: 0.5
            }
            Text {
                objectName: "capacityText"
                anchors.verticalCenter: parent.verticalCenter
                visible: model.capacityText !== ""
                text: model.capacityText
                font.pixelSize: 12
                color: Style.secondary
                HoverHandler { id: capacityHover }
                ToolTip.visible: capacityHover.hovered
                ToolTip.delay: 600
                ToolTip.text: Loc.strings["toolbar.volumeCapacity"]
            }
        }
    }

    FDABanner {
        objectName: "fdaBanner"
        Layout.fillWidth: true
        visible: chartScreen.appState.needsFullDiskAccess
        inaccessibleCount: model.inaccessibleCount
        onOpenSettings: chartScreen.openFullDiskAccessSettings()
        onDismiss: chartScreen.appState.needsFullDiskAccess = false
    }

    Rectangle {
        Layout.fillWidth: true
        implicitHeight: 1
        color: Style.divider
        opacity: 0.4
    }

    RowLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: 0

        Item {
            id: chartArea
            Layout.fillWidth: true
            Layout.fillHeight: true

            SunburstChart {
                anchors.fill: parent
                anchors.margins: 12
                appState: chartScreen.appState
                screen: model
            }

            TooltipView {
                id: tooltip
                objectName: "tooltip"
                x: 16
                y: 16
                screen: model
                opacity: model.hasTooltip ? 1 : 0
                visible: opacity > 0
                Behavior on opacity {
                    NumberAnimation { duration: 150 }
                }
            }
        }

        DetailsPanel {
            objectName: "detailsPanel"
            Layout.preferredWidth: 280
            Layout.fillHeight: true
            Layout.rightMargin: 14
            Layout.topMargin: 14
            Layout.bottomMargin: 14
            appState: chartScreen.appState
        }
    }
}
