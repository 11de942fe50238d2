import QtQuick
import QtQuick.Controls
import Tidewick

// The way from the scan's root to the focus; a click goes back up.
Row {
    id: crumbs
    required property ChartScreenModel screen
    spacing: 6

    Repeater {
        model: crumbs.screen.crumbs
        Row {
            id: crumb
            required property var modelData
            required property int index
            spacing: 6

            AbstractButton {
                anchors.verticalCenter: parent.verticalCenter
                implicitWidth: label.implicitWidth
                implicitHeight: label.implicitHeight
                contentItem: Text {
                    id: label
                    text: crumb.modelData.label
                    font.pixelSize: 12
                    font.weight: crumb.modelData.isFocus ? Font.DemiBold : Font.Normal
                    color: crumb.modelData.isFocus ? Style.primary : Style.secondary
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
