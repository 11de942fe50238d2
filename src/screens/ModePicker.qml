import QtQuick
import QtQuick.Controls
import Tidewick

// Disk Analysis or Applications: a segmented control.
Rectangle {
    id: picker
    required property AppState appState

    implicitWidth: 280
    implicitHeight: 26
    radius: 7
    color: Style.tint(Style.primary, 0.07)

    Row {
        anchors.fill: parent
        anchors.margins: 2
        Repeater {
            model: [
                { mode: AppState.Mode.folder, key: "mode.folder" },
                { mode: AppState.Mode.apps, key: "mode.apps" }
            ]
            AbstractButton {
                id: segment
                required property var modelData
                readonly property bool selected: picker.appState.mode === modelData.mode
                objectName: "segment_" + modelData.key
                width: (picker.width - 4) / 2
                height: picker.height - 4
                focusPolicy: Qt.TabFocus
                Accessible.checkable: true
                Accessible.checked: selected
                Accessible.role: Accessible.PageTab
                Accessible.name: Loc.strings[modelData.key]
                background: Rectangle {
                    radius: 5
                    color: segment.selected ? Style.controlBackground : "transparent"
                    border.color: segment.selected ? Style.controlEdge : "transparent"
                    FocusRing {
                        control: segment
                        cornerRadius: 5
                    }
                }
                contentItem: Text {
                    text: Loc.strings[segment.modelData.key]
                    font.pixelSize: 12
                    font.weight: segment.selected ? Font.Medium : Font.Normal
                    color: Style.primary
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    elide: Text.ElideRight
                }
                onClicked: picker.appState.mode = modelData.mode
            }
        }
    }
}
