import QtQuick
import QtQuick.Controls
import Tidewick

// The way from the scan's root to the focus; a click goes back up. It takes
// the room the toolbar leaves it and gives way from the middle: elements
// there shrink, then fold behind one "…", so the root and the focused
// folder's name stay readable and the toolbar never grows past the window.
Item {
    id: crumbs
    required property ChartScreenModel screen
    readonly property int separatorWidth: 6 + 9 + 6
    readonly property var naturals: screen.crumbs.map(c => Math.ceil((c.isFocus ? boldMetrics : metrics).advanceWidth(c.label)))
    readonly property var plan: screen.planCrumbs(naturals, width, separatorWidth,
                                                  Math.ceil(metrics.advanceWidth("…")), 48)

    implicitWidth: naturals.reduce((sum, w) => sum + w, 0) + separatorWidth * Math.max(naturals.length - 1, 0)
    implicitHeight: row.implicitHeight
    clip: true

    FontMetrics {
        id: metrics
        font.pixelSize: 12
    }
    FontMetrics {
        id: boldMetrics
        font.pixelSize: 12
        font.weight: Font.DemiBold
    }

    Row {
        id: row
        anchors.verticalCenter: parent.verticalCenter
        spacing: 6

        Repeater {
            model: crumbs.screen.crumbs
            Row {
                id: crumb
                required property var modelData
                required property int index
                readonly property bool folded: (crumbs.plan.widths[index] ?? 0) < 0
                readonly property bool isEllipsis: index === crumbs.plan.ellipsisAt
                visible: !folded || isEllipsis
                spacing: 6

                AbstractButton {
                    objectName: "crumb_" + crumb.index
                    anchors.verticalCenter: parent.verticalCenter
                    implicitWidth: crumb.isEllipsis ? label.implicitWidth
                                                    : Math.min(label.implicitWidth, crumbs.plan.widths[crumb.index] ?? label.implicitWidth)
                    implicitHeight: label.implicitHeight
                    focusPolicy: Qt.TabFocus
                    Accessible.name: crumb.modelData.label
                    Accessible.role: Accessible.Link
                    contentItem: Text {
                        id: label
                        text: crumb.isEllipsis ? "…" : crumb.modelData.label
                        font.pixelSize: 12
                        font.weight: crumb.modelData.isFocus && !crumb.isEllipsis ? Font.DemiBold : Font.Normal
                        color: crumb.modelData.isFocus ? Style.primary : Style.secondary
                        elide: Text.ElideMiddle
                    }
                    background: Item {
                        FocusRing {
                            control: parent.parent
                            cornerRadius: 3
                        }
                    }
                    onClicked: crumbs.screen.selectCrumb(crumb.index)
                }
                SymbolIcon {
                    anchors.verticalCenter: parent.verticalCenter
                    visible: crumb.index < crumbs.screen.crumbs.length - 1
                    symbol: "chevron.right"
                    tint: Style.secondary
                    opacity: 0.5
                    size: 9
                }
            }
        }
    }
}
