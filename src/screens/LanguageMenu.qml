import QtQuick
import QtQuick.Controls
import Tidewick

// The interface language: its own name in the bar, every language in the menu.
AbstractButton {
    id: button
    implicitWidth: label.implicitWidth + 16
    implicitHeight: label.implicitHeight + 8
    focusPolicy: Qt.TabFocus
    Accessible.role: Accessible.ButtonMenu
    Accessible.name: Loc.strings["language.picker"] + ": " + Loc.languages[Loc.current].name
    background: Item {
        FocusRing {
            control: button
            cornerRadius: 5
        }
    }

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
    // Under the button, its right edge with the button's: the menu stays in the window.
    onClicked: menu.popup(width - menu.width, height)

    Menu {
        id: menu
        objectName: "languageMenu"
        padding: 4
        background: MenuCard {
            implicitWidth: 140
        }
        Repeater {
            model: Loc.languages
            MenuItem {
                id: entry
                required property var modelData
                readonly property bool current: Loc.current === modelData.value
                text: modelData.name
                Accessible.name: modelData.name
                Accessible.checkable: true
                Accessible.checked: current
                // The names aligned at the leading edge, the current one's
                // check mark after it.
                contentItem: Row {
                    spacing: 6
                    Text {
                        anchors.verticalCenter: parent.verticalCenter
                        text: entry.text
                        font.pixelSize: 13
                        color: Style.primary
                    }
                    SymbolIcon {
                        anchors.verticalCenter: parent.verticalCenter
                        visible: entry.current
                        symbol: "checkmark"
                        tint: Style.primary
                        size: 11
                    }
                }
                onTriggered: Loc.current = modelData.value
            }
        }
    }
}
