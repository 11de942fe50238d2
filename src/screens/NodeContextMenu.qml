import QtQuick
import QtQuick.Controls
import Tidewick

// The menu of a file or folder, for the chart and the details rows alike.
// Its subject is whatever `actions` took when the menu was asked for.
Menu {
    id: menu
    required property NodeActions actions
    padding: 4
    background: MenuCard {}

    MenuItem {
        text: Loc.strings["menu.revealInFinder"]
        onTriggered: menu.actions.reveal()
    }
    MenuItem {
        // Only a folder with children can be opened.
        visible: menu.actions.canOpen
        height: visible ? implicitHeight : 0
        text: Loc.strings["menu.openHere"]
        onTriggered: menu.actions.open()
    }
    MenuSeparator {}
    MenuItem {
        text: Loc.strings["menu.moveToTrash"]
        palette.windowText: Style.destructive
        palette.text: Style.destructive
        onTriggered: menu.actions.moveToTrash()
    }
    // Last, so the items above keep their places: one folder walked again.
    MenuItem {
        objectName: "rescanItem"
        visible: menu.actions.canRescan
        height: visible ? implicitHeight : 0
        text: Loc.strings["menu.rescan"]
        onTriggered: menu.actions.rescan()
    }
}
