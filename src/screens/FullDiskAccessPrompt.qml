import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// Before a scan of a protected place without the grant: how to give it, or
// go on with gaps.
ColumnLayout {
    id: prompt
    property string pathLabel
    signal openSettings()
    signal continueAnyway()
    signal cancel()

    // Wider only where a language's buttons would not fit on one row.
    width: Math.max(500, buttons.implicitWidth + 40)
    spacing: 14

    RowLayout {
        Layout.topMargin: 20
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        spacing: 12
        SymbolIcon {
            symbol: "lock.shield.fill"
            tint: Style.accent
            size: 30
        }
        Column {
            Layout.fillWidth: true
            Text {
                width: parent.width
                text: Loc.strings["fda.prompt.title"]
                font.pixelSize: 15
                font.weight: Font.DemiBold
                color: Style.primary
                wrapMode: Text.Wrap
            }
            Text {
                width: parent.width
                text: Loc.strings["fda.prompt.body"]
                font.pixelSize: 13
                color: Style.secondary
                wrapMode: Text.Wrap
            }
        }
    }

    Rectangle {
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        implicitHeight: steps.implicitHeight + 20
        radius: 8
        color: Style.tint(Style.secondary, 0.08)
        Column {
            id: steps
            x: 10
            y: 10
            width: parent.width - 20
            spacing: 8
            Repeater {
                model: ["fda.step.open", "fda.step.toggle", "fda.step.continue"]
                Row {
                    required property string modelData
                    required property int index
                    width: steps.width
                    spacing: 8
                    Rectangle {
                        width: 18
                        height: 18
                        radius: 9
                        color: Style.tint(Style.accent, 0.18)
                        Text {
                            anchors.centerIn: parent
                            text: index + 1
                            font.pixelSize: 10
                            font.weight: Font.DemiBold
                            color: Style.accent
                        }
                    }
                    Text {
                        width: parent.width - 26
                        anchors.verticalCenter: parent.verticalCenter
                        text: Loc.strings[modelData]
                        font.pixelSize: 12
                        color: Style.primary
                        wrapMode: Text.Wrap
                    }
                }
            }
        }
    }

    Text {
        objectName: "fdaPath"
        Layout.fillWidth: true
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        text: prompt.pathLabel
        font.pixelSize: 10
        color: Style.secondary
        elide: Text.ElideMiddle
    }

    // Buttons on one row at the trailing edge.
    Row {
        id: buttons
        Layout.alignment: Qt.AlignRight
        Layout.leftMargin: 20
        Layout.rightMargin: 20
        Layout.bottomMargin: 20
        layoutDirection: Qt.RightToLeft
        spacing: 8
        PushButton {
            objectName: "fdaOpenSettings"
            prominent: true
            symbol: "gearshape"
            text: Loc.strings["fda.openSettings"]
            onClicked: prompt.openSettings()
        }
        PushButton {
            objectName: "fdaContinue"
            text: Loc.strings["fda.continueAnyway"]
            onClicked: prompt.continueAnyway()
        }
        PushButton {
            objectName: "fdaCancel"
            text: Loc.strings["common.cancel"]
            onClicked: prompt.cancel()
        }
    }
    // Keys act only while the prompt is up.
    Shortcut {
        enabled: prompt.visible
        sequence: StandardKey.Cancel
        onActivated: prompt.cancel()
    }
    Shortcut {
        enabled: prompt.visible
        sequences: ["Return", "Enter"]
        onActivated: prompt.openSettings()
    }
}
