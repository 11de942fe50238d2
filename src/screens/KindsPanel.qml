import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// The Kinds tab: what the focus holds by kind of file. Choosing a kind
// brings its files forward on the chart and lists the largest of them; the
// switch colours the whole chart by kind.
Rectangle {
    id: panel
    required property KindsModel kinds
    required property ChartEmphasis emphasis

    radius: 14
    color: Style.thinMaterial
    border.color: Style.sheen
    border.width: 0.5

    NodeActions {
        id: actions
        state: panel.kinds.state
    }
    NodeContextMenu {
        id: menu
        objectName: "kindFileMenu"
        actions: actions
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Switch {
            id: colourSwitch
            objectName: "colourByKind"
            Layout.fillWidth: true
            Layout.margins: 8
            text: Loc.strings["kinds.colourByKind"]
            checked: panel.emphasis.colourByKind
            onToggled: panel.emphasis.colourByKind = checked
            font.pixelSize: 12
            Accessible.name: text
            FocusRing {
                control: colourSwitch
                cornerRadius: 6
            }
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
        }
        Text {
            Layout.margins: 14
            visible: panel.kinds.counting
            text: Loc.strings["kinds.counting"]
            font.pixelSize: 12
            color: Style.secondary
        }
        ListView {
            id: list
            objectName: "kindsList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            Layout.minimumHeight: 120
            visible: !panel.kinds.counting
            clip: true
            model: panel.kinds
            topMargin: 6
            bottomMargin: 6
            leftMargin: 6
            rightMargin: 6
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}
            activeFocusOnTab: true
            keyNavigationEnabled: true
            currentIndex: -1
            Accessible.role: Accessible.List
            Accessible.name: Loc.strings["details.kinds"]
            Keys.onReturnPressed: panel.kinds.choose(currentIndex)
            Keys.onEnterPressed: panel.kinds.choose(currentIndex)
            Keys.onSpacePressed: panel.kinds.choose(currentIndex)
            onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0

            delegate: Rectangle {
                id: row
                required property int index
                required property int kind
                required property string key
                required property string sizeText
                required property string shareText
                required property string filesText
                required property bool isSelected
                readonly property bool isCurrent: ListView.isCurrentItem && list.activeFocus

                width: ListView.view.width - 12
                implicitHeight: rowContent.implicitHeight + 12
                radius: 8
                color: isSelected ? Style.tint(Style.accent, 0.18) : area.containsMouse ? Style.tint(Style.accent, 0.08) : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.name: Loc.strings[key] + ", " + sizeText + ", " + shareText + ", " + filesText
                Accessible.selected: isSelected
                Accessible.focusable: true
                Accessible.focused: isCurrent

                FocusRing {
                    visible: row.isCurrent
                    control: null
                    cornerRadius: 8
                    anchors.margins: -1
                }
                RowLayout {
                    id: rowContent
                    x: 10
                    width: parent.width - 20
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 10
                    Rectangle {
                        objectName: "kindSwatch"
                        implicitWidth: 12
                        implicitHeight: 12
                        radius: 3
                        color: Style.kindColours[row.kind]
                    }
                    Column {
                        Layout.fillWidth: true
                        spacing: 2
                        Text {
                            width: parent.width
                            text: Loc.strings[row.key]
                            font.pixelSize: 12
                            font.weight: Font.Medium
                            color: Style.primary
                            elide: Text.ElideRight
                        }
                        Text {
                            width: parent.width
                            text: row.sizeText + "  •  " + row.shareText + "  •  " + row.filesText
                            font.pixelSize: 10
                            color: Style.secondary
                            elide: Text.ElideRight
                        }
                    }
                }
                MouseArea {
                    id: area
                    anchors.fill: parent
                    hoverEnabled: true
                    onClicked: {
                        list.currentIndex = row.index;
                        panel.kinds.choose(row.index);
                    }
                }
            }
        }
        // The chosen kind's largest files in the focus.
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Style.divider
            visible: panel.kinds.selectedKey !== ""
        }
        Text {
            Layout.fillWidth: true
            visible: panel.kinds.selectedKey !== ""
            text: panel.kinds.selectedKey === "" ? "" : Loc.strings["kinds.largestOfKind"].replace("%@", Loc.strings[panel.kinds.selectedKey])
            font.pixelSize: 12
            font.weight: Font.DemiBold
            color: Style.secondary
            elide: Text.ElideRight
            leftPadding: 14
            rightPadding: 14
            topPadding: 8
            bottomPadding: 4
        }
        ListView {
            id: files
            objectName: "kindFiles"
            Layout.fillWidth: true
            Layout.preferredHeight: Math.min(contentHeight + 12, panel.height * 0.45)
            visible: panel.kinds.selectedKey !== ""
            clip: true
            model: panel.kinds.largestFiles
            leftMargin: 6
            rightMargin: 6
            bottomMargin: 6
            boundsBehavior: Flickable.StopAtBounds
            ScrollBar.vertical: ScrollBar {}
            activeFocusOnTab: true
            keyNavigationEnabled: true
            currentIndex: -1
            Accessible.role: Accessible.List
            Accessible.name: Loc.strings["kinds.largestOfKind"].replace("%@", Loc.strings[panel.kinds.selectedKey] ?? "")
            Keys.onReturnPressed: panel.kinds.showFile(currentIndex)
            Keys.onEnterPressed: panel.kinds.showFile(currentIndex)
            Keys.onMenuPressed: {
                if (currentIndex >= 0 && panel.kinds.offerFile(actions, currentIndex))
                    menu.popup(currentItem, 0, currentItem.height);
            }
            onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0) currentIndex = 0

            delegate: Rectangle {
                id: fileRow
                required property int index
                required property var modelData
                readonly property bool isCurrent: ListView.isCurrentItem && files.activeFocus
                width: ListView.view.width - 12
                implicitHeight: fileColumn.implicitHeight + 10
                radius: 8
                color: fileArea.containsMouse ? Style.tint(Style.accent, 0.08) : "transparent"
                Accessible.role: Accessible.ListItem
                Accessible.name: modelData.name + ", " + modelData.sizeText + ", " + modelData.folder
                Accessible.focusable: true
                Accessible.focused: isCurrent
                FocusRing {
                    visible: fileRow.isCurrent
                    control: null
                    cornerRadius: 8
                    anchors.margins: -1
                }
                Column {
                    id: fileColumn
                    x: 10
                    width: parent.width - 20
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 1
                    Row {
                        width: parent.width
                        spacing: 6
                        Text {
                            width: parent.width - sizeLabel.implicitWidth - 6
                            text: fileRow.modelData.name
                            font.pixelSize: 11
                            font.weight: Font.Medium
                            color: Style.primary
                            elide: Text.ElideMiddle
                        }
                        Text {
                            id: sizeLabel
                            text: fileRow.modelData.sizeText
                            font.pixelSize: 10
                            color: Style.secondary
                        }
                    }
                    Text {
                        width: parent.width
                        text: fileRow.modelData.folder
                        font.pixelSize: 9
                        font.family: Style.monospace
                        color: Style.secondary
                        elide: Text.ElideMiddle
                    }
                }
                MouseArea {
                    id: fileArea
                    anchors.fill: parent
                    hoverEnabled: true
                    acceptedButtons: Qt.LeftButton | Qt.RightButton
                    onDoubleClicked: panel.kinds.showFile(fileRow.index)
                    onPressed: mouse => {
                        if (mouse.button === Qt.RightButton && panel.kinds.offerFile(actions, fileRow.index))
                            menu.popup(fileRow, mouse.x, mouse.y);
                    }
                }
            }
        }
    }
}
