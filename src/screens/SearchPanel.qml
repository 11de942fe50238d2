import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// The chart screen's search: a field and, as the user types, the matching
// items of the whole scan, largest first. Return opens a result's folder on
// the chart with the result marked; Escape closes.
Rectangle {
    id: panel
    required property SearchModel search
    signal closeRequested()

    function begin() {
        field.forceActiveFocus();
        field.selectAll();
    }

    radius: 12
    color: Style.ultraThinMaterial
    border.color: Style.menuEdge
    border.width: 0.5
    implicitHeight: content.implicitHeight + 16

    NodeActions {
        id: actions
        state: panel.search.state
    }
    NodeContextMenu {
        id: menu
        objectName: "searchMenu"
        actions: actions
    }

    ColumnLayout {
        id: content
        x: 8
        y: 8
        width: parent.width - 16
        spacing: 6

        RowLayout {
            Layout.fillWidth: true
            spacing: 6
            SymbolIcon {
                symbol: "magnifyingglass"
                tint: Style.secondary
                size: 14
            }
            TextField {
                id: field
                objectName: "searchField"
                Layout.fillWidth: true
                placeholderText: Loc.strings["search.placeholder"]
                text: panel.search.query
                onTextEdited: panel.search.query = text
                font.pixelSize: 13
                color: Style.primary
                Accessible.name: Loc.strings["search.field"]
                Keys.onDownPressed: if (results.count > 0) { results.currentIndex = 0; results.forceActiveFocus(); }
                Keys.onReturnPressed: panel.search.activate(Math.max(results.currentIndex, 0))
                Keys.onEnterPressed: panel.search.activate(Math.max(results.currentIndex, 0))
                Keys.onEscapePressed: panel.closeRequested()
            }
            ToolbarButton {
                objectName: "closeSearch"
                symbol: "xmark"
                help: Loc.strings["search.close"]
                onClicked: panel.closeRequested()
            }
        }
        Text {
            objectName: "searchStatus"
            Layout.fillWidth: true
            visible: panel.search.query !== ""
            text: panel.search.searching ? Loc.strings["search.searching"]
                : Loc.strings["search.found"].replace("%d", panel.search.total)
                  + (panel.search.total > results.count ? ", " + Loc.strings["search.shownLargest"].replace("%d", results.count) : "")
            font.pixelSize: 10
            color: Style.secondary
            elide: Text.ElideRight
        }
        ListView {
            id: results
            objectName: "searchResults"
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(contentHeight, 320)
            visible: count > 0
            clip: true
            model: panel.search
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}
            activeFocusOnTab: true
            keyNavigationEnabled: true
            currentIndex: -1
            Accessible.role: Accessible.List
            Accessible.name: Loc.strings["search.results"]
            Keys.onReturnPressed: panel.search.activate(currentIndex)
            Keys.onEnterPressed: panel.search.activate(currentIndex)
            Keys.onEscapePressed: panel.closeRequested()
            Keys.onUpPressed: {
                if (currentIndex <= 0)
                    field.forceActiveFocus();
                else
                    decrementCurrentIndex();
            }
            Keys.onMenuPressed: {
                if (currentIndex >= 0 && panel.search.offerRow(actions, currentIndex))
                    menu.popup(currentItem, 0, currentItem.height);
            }

            delegate: Rectangle {
                id: row
                required property int index
                required property string name
                required property string sizeText
                required property string folder
                required property bool isDirectory
                readonly property bool isCurrent: ListView.isCurrentItem && results.activeFocus

                width: ListView.view.width
                implicitHeight: rowContent.implicitHeight + 8
                radius: 6
                color: isCurrent ? Style.tint(Style.accent, 0.16) : area.containsMouse ? Style.tint(Style.accent, 0.08) : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.name: name + ", " + sizeText + ", " + folder
                Accessible.focusable: true
                Accessible.focused: isCurrent

                RowLayout {
                    id: rowContent
                    x: 6
                    width: parent.width - 12
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 8
                    SymbolIcon {
                        Layout.preferredWidth: 14
                        symbol: row.isDirectory ? "folder.fill" : "doc.fill"
                        tint: Style.accent
                        size: 13
                        opacity: 0.8
                    }
                    Column {
                        Layout.fillWidth: true
                        spacing: 1
                        Text {
                            width: parent.width
                            text: row.name
                            font.pixelSize: 12
                            font.weight: Font.Medium
                            color: Style.primary
                            elide: Text.ElideMiddle
                        }
                        Text {
                            width: parent.width
                            text: row.folder
                            font.pixelSize: 9
                            font.family: Style.monospace
                            color: Style.secondary
                            elide: Text.ElideMiddle
                        }
                    }
                    Text {
                        text: row.sizeText
                        font.pixelSize: 11
                        font.weight: Font.Medium
                        color: Style.secondary
                    }
                }
                MouseArea {
                    id: area
                    anchors.fill: parent
                    hoverEnabled: true
                    acceptedButtons: Qt.LeftButton | Qt.RightButton
                    onClicked: mouse => {
                        if (mouse.button === Qt.LeftButton)
                            results.currentIndex = row.index;
                    }
                    onDoubleClicked: mouse => {
                        if (mouse.button === Qt.LeftButton)
                            panel.search.activate(row.index);
                    }
                    onPressed: mouse => {
                        if (mouse.button === Qt.RightButton && panel.search.offerRow(actions, row.index))
                            menu.popup(row, mouse.x, mouse.y);
                    }
                }
            }
        }
    }
}
