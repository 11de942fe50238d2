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
    ChartEmphasis {
        id: chartEmphasis
        state: chartScreen.appState
    }
    KindsModel {
        id: kindsModel
        state: chartScreen.appState
        active: sideTabs.currentIndex === 1 || chartEmphasis.colourByKind
        emphasis: chartEmphasis
    }
    SearchModel {
        id: searchModel
        state: chartScreen.appState
        emphasis: chartEmphasis
    }
    // ⌘F (Ctrl+F elsewhere): only on this screen and with no dialog up.
    GuardedShortcut {
        control: chartScreen
        sequences: [StandardKey.Find]
        onActivated: {
            searchPanel.visible = true;
            searchPanel.begin();
        }
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
                emphasis: chartEmphasis
            }

            // What the colours mean while the chart is coloured by kind.
            Rectangle {
                objectName: "kindLegend"
                anchors.left: parent.left
                anchors.bottom: parent.bottom
                anchors.margins: 16
                visible: chartEmphasis.colourByKind && legendRepeater.count > 0
                width: legendColumn.implicitWidth + 16
                height: legendColumn.implicitHeight + 12
                radius: 8
                color: Style.ultraThinMaterial
                border.color: Style.menuEdge
                border.width: 0.5
                Accessible.role: Accessible.StaticText
                Accessible.name: Loc.strings["kinds.legend"]
                Column {
                    id: legendColumn
                    x: 8
                    y: 6
                    spacing: 3
                    Repeater {
                        id: legendRepeater
                        model: kindsModel
                        Row {
                            required property int kind
                            required property string key
                            spacing: 6
                            Rectangle {
                                anchors.verticalCenter: parent.verticalCenter
                                width: 10
                                height: 10
                                radius: 2
                                color: Style.kindColours[parent.kind]
                            }
                            Text {
                                text: Loc.strings[parent.key]
                                font.pixelSize: 10
                                color: Style.primary
                            }
                        }
                    }
                }
            }

            SearchPanel {
                id: searchPanel
                objectName: "searchPanel"
                visible: false
                anchors.top: parent.top
                anchors.right: parent.right
                anchors.margins: 12
                width: Math.min(460, parent.width - 24)
                search: searchModel
                onCloseRequested: {
                    visible = false;
                    searchModel.query = "";
                    chartEmphasis.clearHighlight();
                }
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

        // "Largest" and "Kinds", one at a time.
        ColumnLayout {
            Layout.preferredWidth: 280
            Layout.maximumWidth: 280
            Layout.fillHeight: true
            Layout.rightMargin: 14
            Layout.topMargin: 14
            Layout.bottomMargin: 14
            spacing: 8

            TabBar {
                id: sideTabs
                objectName: "sideTabs"
                Layout.fillWidth: true
                Accessible.name: Loc.strings["details.largest"] + ", " + Loc.strings["details.kinds"]
                background: Rectangle {
                    radius: 8
                    color: Style.tint(Style.primary, 0.06)
                }
                Repeater {
                    model: ["details.largest", "details.kinds"]
                    TabButton {
                        id: tab
                        required property string modelData
                        objectName: "tab-" + modelData
                        text: Loc.strings[modelData]
                        font.pixelSize: 12
                        font.weight: checked ? Font.DemiBold : Font.Normal
                        Accessible.name: text
                        contentItem: Text {
                            text: tab.text
                            font: tab.font
                            color: tab.checked ? Style.primary : Style.secondary
                            horizontalAlignment: Text.AlignHCenter
                            verticalAlignment: Text.AlignVCenter
                            elide: Text.ElideRight
                        }
                        background: Rectangle {
                            radius: 7
                            color: tab.checked ? Style.controlBackground : "transparent"
                            FocusRing {
                                control: tab
                                cornerRadius: 7
                            }
                        }
                    }
                }
            }
            DetailsPanel {
                objectName: "detailsPanel"
                Layout.fillWidth: true
                Layout.fillHeight: true
                visible: sideTabs.currentIndex === 0
                showsHeader: false
                appState: chartScreen.appState
            }
            KindsPanel {
                objectName: "kindsPanel"
                Layout.fillWidth: true
                Layout.fillHeight: true
                visible: sideTabs.currentIndex === 1
                kinds: kindsModel
                emphasis: chartEmphasis
            }
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
