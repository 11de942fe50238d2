import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// Where one application's bytes lie: the bundle and its leftovers by kind.
Rectangle {
    id: panel
    property InstalledApp app: null
    property var breakdown: []
    property string sizeText
    property string bundleSizeText
    signal deleteRequested()
    signal revealRequested()

    radius: 14
    color: Style.thinMaterial
    border.color: Style.sheen
    border.width: 0.5

    component BreakdownRow: Rectangle {
        id: item
        property string symbol
        property string title
        property string count
        property string size
        width: parent ? parent.width : 0
        implicitHeight: rowLayout.implicitHeight + 12
        radius: 6
        color: Style.tint(Style.secondary, 0.06)
        Accessible.role: Accessible.StaticText
        Accessible.name: title + ", " + size + (count !== "" ? ", " + count : "")
        RowLayout {
            id: rowLayout
            x: 8
            y: 6
            width: item.width - 16
            spacing: 8
            SymbolIcon {
                Layout.preferredWidth: 16
                Layout.preferredHeight: 16
                symbol: item.symbol
                tint: Style.tint(Style.accent, 0.8)
                size: 16
            }
            Column {
                Layout.fillWidth: true
                Text {
                    width: parent.width
                    text: item.title
                    font.pixelSize: 12
                    font.weight: Font.DemiBold
                    color: Style.primary
                    elide: Text.ElideRight
                }
                Text {
                    visible: item.count !== ""
                    text: item.count
                    font.pixelSize: 10
                    color: Style.secondary
                }
            }
            Text {
                text: item.size
                font.pixelSize: 11
                font.weight: Font.Medium
                color: Style.primary
            }
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.margins: 14
            spacing: 10
            Image {
                Layout.preferredWidth: 56
                Layout.preferredHeight: 56
                sourceSize: Qt.size(56 * Screen.devicePixelRatio, 56 * Screen.devicePixelRatio)
                source: panel.app ? "image://appicon/" + encodeURIComponent(panel.app.path) : ""
                fillMode: Image.PreserveAspectFit
            }
            Column {
                Layout.fillWidth: true
                spacing: 2
                Text {
                    objectName: "detailName"
                    width: parent.width
                    text: panel.app ? panel.app.name : ""
                    font.pixelSize: 15
                    font.weight: Font.DemiBold
                    color: Style.primary
                    elide: Text.ElideRight
                }
                Text {
                    visible: panel.app !== null && panel.app.version !== ""
                    text: panel.app ? "v" + panel.app.version : ""
                    font.pixelSize: 11
                    color: Style.secondary
                }
                Text {
                    width: parent.width
                    text: panel.app ? panel.app.bundleID : ""
                    font.pixelSize: 10
                    color: Style.secondary
                    elide: Text.ElideMiddle
                }
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
        }
        ScrollView {
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentWidth: availableWidth
            Column {
                x: 10
                y: 10
                width: parent.width - 20
                spacing: 6
                RowLayout {
                    width: parent.width
                    Text {
                        Layout.fillWidth: true
                        text: Loc.strings["apps.breakdown"]
                        font.pixelSize: 11
                        font.weight: Font.DemiBold
                        color: Style.secondary
                    }
                    Text {
                        text: panel.sizeText
                        font.pixelSize: 11
                        font.weight: Font.DemiBold
                        color: Style.secondary
                    }
                }
                BreakdownRow {
                    symbol: "app"
                    title: Loc.strings["apps.application"]
                    size: panel.bundleSizeText
                }
                Repeater {
                    objectName: "breakdownGroups"
                    model: panel.breakdown
                    BreakdownRow {
                        required property var modelData
                        symbol: modelData.symbol
                        title: modelData.title
                        count: modelData.count
                        size: modelData.size
                    }
                }
                Text {
                    visible: panel.app !== null && panel.app.relatedLoaded && panel.breakdown.length === 0
                    text: Loc.strings["apps.noRelated"]
                    font.pixelSize: 11
                    color: Style.secondary
                }
                Row {
                    visible: panel.app !== null && !panel.app.relatedLoaded
                    spacing: 6
                    BusyIndicator {
                        width: 16
                        height: 16
                        running: parent.visible
                    }
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: Loc.strings["apps.lookingRelated"]
                        font.pixelSize: 11
                        color: Style.secondary
                    }
                }
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
        }
        RowLayout {
            Layout.margins: 12
            spacing: 8
            PushButton {
                objectName: "detailReveal"
                symbol: "folder"
                text: Loc.strings["menu.revealInFinderShort"]
                focusPolicy: Qt.StrongFocus
                Accessible.name: text
                onClicked: panel.revealRequested()
            }
            Item { Layout.fillWidth: true }
            PushButton {
                objectName: "detailUninstall"
                symbol: "trash"
                destructive: true
                text: Loc.strings["menu.uninstallEllipsis"]
                focusPolicy: Qt.StrongFocus
                Accessible.name: text
                onClicked: panel.deleteRequested()
            }
        }
    }
}
