import QtQuick
import Tidewick

// Names the hovered node, in a card that stays in the chart's corner.
Item {
    id: tooltip
    required property ChartScreenModel screen
    // The last hover's texts: kept while the card fades out, so it never
    // shrinks to an empty card on the way.
    property var info: screen.tooltip

    Connections {
        target: tooltip.screen
        function onTooltipChanged() {
            if (tooltip.screen.hasTooltip)
                tooltip.info = tooltip.screen.tooltip;
        }
    }

    implicitWidth: Math.min(340, lines.implicitWidth + 20)
    implicitHeight: lines.implicitHeight + 20

    // A soft shadow: faint layers spread a point apart, 3 points down.
    Repeater {
        model: 8
        Rectangle {
            required property int index
            x: -index
            y: 3 - index
            width: tooltip.width + index * 2
            height: tooltip.height + index * 2
            radius: 10 + index
            color: Style.tint(Style.shadow, 0.16 / 8)
        }
    }
    Rectangle {
        anchors.fill: parent
        radius: 10
        color: Style.ultraThinMaterial
        border.color: Style.sheen
        border.width: 0.5
    }

    Column {
        id: lines
        objectName: "tooltipLines"
        x: 10
        y: 10
        width: tooltip.width - 20
        spacing: 4

        Row {
            spacing: 6
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: tooltip.info.isDirectory ? "folder.fill" : "doc.fill"
                tint: Style.accent
                size: 14
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: tooltip.info.name ?? ""
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Style.primary
                width: Math.min(implicitWidth, 300)
                elide: Text.ElideRight
            }
        }
        Text {
            width: Math.min(implicitWidth, 320)
            text: tooltip.info.path ?? ""
            font.pixelSize: 10
            font.family: Style.monospace
            color: Style.secondary
            elide: Text.ElideMiddle
        }
        Row {
            spacing: 10
            Row {
                spacing: 4
                SymbolIcon {
                    anchors.verticalCenter: parent.verticalCenter
                    symbol: "internaldrive"
                    tint: Style.primary
                    size: 12
                }
                Text {
                    text: tooltip.info.size ?? ""
                    font.pixelSize: 11
                    font.weight: Font.Medium
                    color: Style.primary
                }
            }
            Text {
                text: tooltip.info.share ?? ""
                font.pixelSize: 11
                color: Style.secondary
            }
        }
        Text {
            visible: tooltip.info.isDirectory === true
            text: tooltip.info.files ?? ""
            font.pixelSize: 10
            color: Style.secondary
        }
        Row {
            objectName: "tooltipUnreadable"
            visible: (tooltip.info.unreadable ?? "") !== ""
            spacing: 4
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "exclamationmark.lock.fill"
                tint: Style.orange
                size: 11
            }
            Text {
                text: tooltip.info.unreadable ?? ""
                font.pixelSize: 10
                color: Style.secondary
            }
        }
        Row {
            objectName: "tooltipInCloud"
            visible: (tooltip.info.inCloud ?? "") !== ""
            spacing: 4
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "icloud"
                tint: Style.secondary
                size: 11
            }
            Text {
                text: tooltip.info.inCloud ?? ""
                font.pixelSize: 10
                color: Style.secondary
            }
        }
    }
}
