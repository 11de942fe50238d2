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
            id: upButton
            objectName: "upButton"
            symbol: "chevron.left"
            help: Loc.strings["toolbar.up"]
            enabled: model.canGoUp
            onClicked: chartScreen.appState.goUp()
        }
        // Takes what the buttons and figures leave, and no more.
        BreadcrumbView {
            objectName: "breadcrumb"
            Layout.fillWidth: true
            Layout.minimumWidth: 0
            screen: model
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
        GuardedShortcut {
            control: refreshButton
            sequence: "Ctrl+R"
            onActivated: chartScreen.appState.refresh()
        }
        // Up: Backspace, and ⌘↑ (Ctrl+↑ elsewhere; Qt writes ⌘ as Ctrl).
        GuardedShortcut {
            control: upButton
            sequences: ["Backspace", "Ctrl+Up"]
            onActivated: chartScreen.appState.goUp()
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
                Accessible.role: Accessible.StaticText
                Accessible.name: Loc.strings["toolbar.fileSizesHelp"]
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

    FDABanner {
        objectName: "unreadableBanner"
        Layout.fillWidth: true
        visible: chartScreen.appState.showsUnreadableNotice
        inaccessibleCount: model.inaccessibleCount
        offersSettings: false
        titleKey: "scan.unreadable.title"
        bodyKey: "scan.unreadable.body"
        onDismiss: chartScreen.appState.showsUnreadableNotice = false
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
                id: chart
                anchors.fill: parent
                anchors.margins: 12
                appState: chartScreen.appState
                screen: model
            }

            // In the first corner where it covers no part of the hovered
            // sector; it stays put while fading out.
            function placeTooltip() {
                if (!model.hasTooltip)
                    return;
                const w = tooltip.width, h = tooltip.height;
                const left = 16, right = width - w - 16, top = 16, bottom = height - h - 16;
                const corners = [[left, top], [right, top], [left, bottom], [right, bottom]];
                for (const corner of corners) {
                    const area = Qt.rect(corner[0] - chart.x, corner[1] - chart.y, w, h);
                    if (!chart.view.hoveredSectorMeets(area)) {
                        tooltip.x = corner[0];
                        tooltip.y = corner[1];
                        return;
                    }
                }
                tooltip.x = left;
                tooltip.y = top;
            }
            Connections {
                target: model
                function onTooltipChanged() { Qt.callLater(chartArea.placeTooltip) }
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

    // Several items at once: shown while anything is picked.
    SelectionBar {
        id: selectionBar
        objectName: "selectionBar"
        Layout.fillWidth: true
        visible: chartScreen.appState.selectionCount > 0
        appState: chartScreen.appState
    }
    GuardedShortcut {
        control: selectionBar
        sequence: "Escape"
        onActivated: chartScreen.appState.clearSelection()
    }
}
