import QtQuick
import QtQuick.Controls
import Tidewick

// The interface language: its own name in the bar, every language in the menu.
AbstractButton {
    id: button
    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 8

    contentItem: Item {
        Row {
            id: label
            anchors.centerIn: parent
            spacing: 5
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "globe"
                tint: Style.primary
                size: 12
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: Loc.languages[Loc.current].name
                font.pixelSize: 12
                font.weight: Font.Medium
                color: Style.primary
            }
            SymbolIcon {
                anchors.verticalCenter: parent.verticalCenter
                symbol: "chevron.down"
                tint: Style.secondary
                size: 9
            }
        }
    }
    ToolTip.visible: hovered && !menu.visible
    ToolTip.delay: 600
    ToolTip.text: Loc.strings["language.picker"]
    onClicked: menu.popup(0, height)

    Menu {
        id: menu
        objectName: "languageMenu"
        Repeater {
            model: Loc.languages
            MenuItem {
                required property var modelData
                text: modelData.name
                // The current language carries the check mark.
                icon.source: Loc.current === modelData.value
                             ? "image://symbol/checkmark/" + encodeURIComponent(String(Style.primary)) : ""
                onTriggered: Loc.current = modelData.value
            }
        }
    }
}
