import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// One application in the list: icon, name, version and identifier, size and
// last use; a trash button while hovered; the context menu.
Rectangle {
    id: row
    required property InstalledApp app
    required property string sizeText
    required property string openedText
    property bool isSelected: false
    property bool listFocused: false
    readonly property bool hover: hoverArea.containsMouse || trash.hovered
    signal selectRequested()
    signal deleteRequested()
    signal revealRequested()
    signal openRequested()

    implicitHeight: content.implicitHeight + 16 + 1
    color: isSelected ? Style.tint(Style.accent, 0.14) : hover ? Style.tint(Style.secondary, 0.06) : "transparent"
    Accessible.role: Accessible.ListItem
    Accessible.name: row.app ? row.app.name + ", " + row.sizeText : ""
    Accessible.selected: isSelected

    // The list's keyboard focus shows on the selected row.
    Rectangle {
        anchors.fill: parent
        anchors.margins: 1
        visible: row.isSelected && row.listFocused
        color: "transparent"
        border.color: Style.accent
        border.width: 2
        radius: 4
    }

    MouseArea {
        id: hoverArea
        anchors.fill: parent
        hoverEnabled: true
        acceptedButtons: Qt.LeftButton | Qt.RightButton
        onClicked: mouse => {
            if (mouse.button === Qt.RightButton)
                menu.popup(row, mouse.x, mouse.y)
            else
                row.selectRequested()
        }
    }

    RowLayout {
        id: content
        x: 14
        y: 8
        width: row.width - 28
        spacing: 10

        Image {
            Layout.preferredWidth: 36
            Layout.preferredHeight: 36
            sourceSize: Qt.size(36 * Screen.devicePixelRatio, 36 * Screen.devicePixelRatio)
            source: row.app ? "image://appicon/" + encodeURIComponent(row.app.path) : ""
            fillMode: Image.PreserveAspectFit
            asynchronous: true
        }
        Column {
            Layout.fillWidth: true
            spacing: 2
            Text {
                width: parent.width
                text: row.app ? row.app.name : ""
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Style.primary
                elide: Text.ElideRight
            }
            Row {
                spacing: 4
                width: parent.width
                Text {
                    visible: row.app !== null && row.app.version !== ""
                    text: row.app ? "v" + row.app.version : ""
                    font.pixelSize: 11
                    color: Style.secondary
                }
                Text {
                    text: "•"
                    font.pixelSize: 11
                    color: Style.secondary
                    opacity: 0.5
                }
                Text {
                    text: row.app ? row.app.bundleID : ""
                    font.pixelSize: 11
                    color: Style.secondary
                    elide: Text.ElideRight
                }
            }
        }
        Column {
            spacing: 2
            Text {
                anchors.right: parent.right
                text: row.sizeText
                font.pixelSize: 13
                font.weight: Font.DemiBold
                color: Style.primary
            }
            Text {
                anchors.right: parent.right
                text: row.openedText
                font.pixelSize: 10
                color: Style.secondary
            }
        }
        ToolButton {
            id: trash
            objectName: "rowTrash"
            Layout.preferredWidth: 26
            Layout.preferredHeight: 26
            flat: true
            focusPolicy: Qt.NoFocus
            opacity: row.hover ? 1 : 0
            enabled: opacity > 0
            Behavior on opacity {
                NumberAnimation { duration: 150 }
            }
            contentItem: Item {
                SymbolIcon {
                    anchors.centerIn: parent
                    symbol: "trash"
                    tint: Style.destructive
                    size: 14
                }
            }
            Accessible.name: Loc.strings["apps.deleteHelp"]
            ToolTip.visible: hovered
            ToolTip.delay: 600
            ToolTip.text: Loc.strings["apps.deleteHelp"]
            onClicked: row.deleteRequested()
        }
    }

    Rectangle {
        anchors.bottom: parent.bottom
        width: parent.width
        height: 1
        color: Style.divider
        opacity: 0.3
    }

    Menu {
        id: menu
        objectName: "appRowMenu"
        MenuItem {
            text: Loc.strings["menu.revealInFinder"]
            onTriggered: row.revealRequested()
        }
        MenuItem {
            text: Loc.strings["menu.open"]
            onTriggered: row.openRequested()
        }
        MenuSeparator {}
        MenuItem {
            text: Loc.strings["menu.uninstallEllipsis"]
            palette.windowText: Style.destructive
            palette.text: Style.destructive
            onTriggered: row.deleteRequested()
        }
    }
}
