import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// The twelve largest children of the focus, sharing hover and actions with
// the chart.
Rectangle {
    id: panel
    required property AppState appState
    // Off where tabs above the panel name it.
    property bool showsHeader: true

    implicitWidth: 280
    radius: 14
    color: Style.thinMaterial
    border.color: Style.sheen
    border.width: 0.5

    LargestChildrenModel {
        id: rows
        state: panel.appState
    }
    UnseenSpaceModel {
        id: unseen
        state: panel.appState
    }
    NodeActions {
        id: actions
        state: panel.appState
    }
    NodeContextMenu {
        id: menu
        objectName: "rowMenu"
        actions: actions
        // Closed with the pointer elsewhere: the subject is no longer hovered.
        onClosed: {
            const subject = list.itemAtIndex(actions.subjectRow);
            if (subject && !subject.pointerInside && !(list.activeFocus && list.currentIndex === actions.subjectRow))
                rows.leave(actions.subjectRow);
        }
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Text {
            visible: panel.showsHeader
            text: Loc.strings["details.largest"]
            font.pixelSize: 12
            font.weight: Font.DemiBold
            color: Style.secondary
            leftPadding: 14
            rightPadding: 14
            topPadding: 12
            bottomPadding: 8
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
            visible: panel.showsHeader
        }
        ListView {
            id: list
            objectName: "largestList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: rows
            topMargin: 6
            bottomMargin: 6
            leftMargin: 6
            rightMargin: 6
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}
            // The keyboard's way through the chart's sectors: Tab in, the
            // arrows move, Return opens a folder. The row under the keys is
            // hovered like one under the pointer, so the tooltip names it.
            activeFocusOnTab: true
            keyNavigationEnabled: true
            currentIndex: -1
            Accessible.role: Accessible.List
            Accessible.name: Loc.strings["details.largest"]
            Keys.onReturnPressed: rows.drillIn(currentIndex)
            // Space picks the current row for a batch, Ctrl/⌘-A all rows.
            Keys.onSpacePressed: rows.toggleSelected(currentIndex)
            Keys.onPressed: event => {
                if (event.matches(StandardKey.SelectAll)) {
                    rows.selectAll();
                    event.accepted = true;
                }
            }
            Keys.onEnterPressed: rows.drillIn(currentIndex)
            onActiveFocusChanged: {
                if (activeFocus && currentIndex < 0 && count > 0)
                    currentIndex = 0;
                else if (activeFocus)
                    rows.enter(currentIndex);
                else if (!menu.visible)
                    rows.leave(currentIndex);
            }
            onCurrentIndexChanged: if (activeFocus) rows.enter(currentIndex)
            onCountChanged: currentIndex = activeFocus && count > 0 ? 0 : -1

            delegate: Rectangle {
                id: row
                required property int index
                required property string name
                required property bool isDirectory
                required property string sizeText
                required property string shareText
                required property bool isHovered
                required property string unreadable
                required property string inCloud
                required property string accessibleText
                required property bool isSelected
                readonly property bool isCurrent: ListView.isCurrentItem && list.activeFocus
                readonly property bool pointerInside: area.containsMouse

                width: ListView.view.width - 12
                implicitHeight: content.implicitHeight + 12
                radius: 8
                color: isSelected ? Style.tint(Style.accent, 0.22)
                                  : isHovered ? Style.tint(Style.accent, 0.12) : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.selectable: true
                Accessible.selected: isSelected
                Accessible.name: accessibleText
                Accessible.focusable: true
                Accessible.focused: isCurrent

                FocusRing {
                    visible: row.isCurrent
                    control: null
                    cornerRadius: 8
                    anchors.margins: -1
                }

                RowLayout {
                    id: content
                    x: 10
                    width: parent.width - 20
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 10

                    // A picked row shows a check mark in place of its kind.
                    SymbolIcon {
                        Layout.preferredWidth: 16
                        symbol: row.isSelected ? "checkmark"
                                               : row.isDirectory ? "folder.fill" : "doc.fill"
                        tint: Style.accent
                        opacity: 0.8
                    }
                    Column {
                        Layout.fillWidth: true
                        spacing: 2
                        Row {
                            width: parent.width
                            spacing: 4
                            Text {
                                width: parent.width - (lock.visible ? lock.width + 4 : 0)
                                text: row.name
                                font.pixelSize: 12
                                font.weight: Font.Medium
                                color: Style.primary
                                elide: Text.ElideMiddle
                            }
                            // A folder that could not be read: its size is what was seen.
                            SymbolIcon {
                                id: lock
                                objectName: "unreadableMark"
                                anchors.verticalCenter: parent.verticalCenter
                                visible: row.unreadable !== ""
                                symbol: "exclamationmark.lock.fill"
                                tint: Style.orange
                                size: 11
                            }
                        }
                        Row {
                            spacing: 6
                            Text {
                                text: row.sizeText
                                font.pixelSize: 10
                                font.weight: Font.Medium
                                color: Style.secondary
                            }
                            Text {
                                text: "•"
                                font.pixelSize: 10
                                color: Style.secondary
                                opacity: 0.5
                            }
                            Text {
                                text: row.shareText
                                font.pixelSize: 10
                                color: Style.secondary
                            }
                            // Its contents are with a file provider, not on this disk.
                            Text {
                                objectName: "inCloudMark"
                                visible: row.inCloud !== ""
                                text: row.inCloud
                                font.pixelSize: 10
                                color: Style.secondary
                            }
                        }
                    }
                }

                MouseArea {
                    id: area
                    anchors.fill: parent
                    hoverEnabled: true
                    acceptedButtons: Qt.LeftButton | Qt.RightButton
                    onEntered: rows.enter(row.index)
                    // The subject of an open menu stays highlighted.
                    onExited: if (!menu.visible) rows.leave(row.index)
                    onDoubleClicked: mouse => {
                        if (mouse.button === Qt.LeftButton)
                            rows.drillIn(row.index);
                    }
                    onClicked: mouse => {
                        if (mouse.button !== Qt.LeftButton)
                            return;
                        if (mouse.modifiers & Qt.ShiftModifier)
                            rows.selectRange(row.index);
                        else if (mouse.modifiers & Qt.ControlModifier)
                            rows.toggleSelected(row.index);
                    }
                    onPressed: mouse => {
                        if (mouse.button === Qt.RightButton && actions.takeRow(rows, row.index))
                            menu.popup(row, mouse.x, mouse.y);
                    }
                }
            }
        }

        // At the foot while the scanned volume's root is focused: the used
        // space that no file walk could see.
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
            visible: unseen.shown
        }
        RowLayout {
            objectName: "unseenRow"
            Layout.fillWidth: true
            Layout.margins: 6
            Layout.leftMargin: 16
            Layout.rightMargin: 10
            visible: unseen.shown
            spacing: 10

            SymbolIcon {
                Layout.preferredWidth: 16
                symbol: "internaldrive"
                tint: Style.secondary
                size: 16
            }
            Column {
                Layout.fillWidth: true
                spacing: 2
                Text {
                    width: parent.width
                    text: Loc.strings["details.unseen"]
                    font.pixelSize: 12
                    font.weight: Font.Medium
                    color: Style.primary
                    elide: Text.ElideRight
                }
                Text {
                    objectName: "unseenSize"
                    text: unseen.sizeText
                    font.pixelSize: 10
                    font.weight: Font.Medium
                    color: Style.secondary
                }
            }
            Item {
                id: unseenInfo
                objectName: "unseenInfo"
                implicitWidth: 22
                implicitHeight: 22
                activeFocusOnTab: true
                Accessible.role: Accessible.Button
                Accessible.name: Loc.strings["details.unseen"]
                Accessible.description: unseen.helpText
                readonly property bool helpShown: unseenHover.hovered || activeFocus

                SymbolIcon {
                    anchors.centerIn: parent
                    symbol: "info.circle"
                    tint: Style.secondary
                    size: 13
                }
                Rectangle {
                    anchors.fill: parent
                    radius: width / 2
                    color: "transparent"
                    border.color: Style.accent
                    border.width: 2
                    visible: unseenInfo.activeFocus
                }
                HoverHandler { id: unseenHover }
                ToolTip {
                    objectName: "unseenHelp"
                    visible: unseenInfo.helpShown
                    delay: 600
                    text: unseen.helpText
                    // Several lines of help: wrapped, and kept inside the window.
                    width: Math.min(implicitWidth, 360)
                    x: unseenInfo.width - width
                    y: -height - 6
                }
            }
        }
    }
}
