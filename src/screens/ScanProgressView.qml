import QtQuick
import QtQuick.Controls
import Tidewick

// While a scan runs: how far the walk has come, and Cancel.
Item {
    id: progressView
    required property ScreensModel screens
    signal cancel()

    Column {
        anchors.centerIn: parent
        spacing: 18

        BusyIndicator {
            anchors.horizontalCenter: parent.horizontalCenter
            running: progressView.visible
            scale: 1.4
        }
        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 6
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: Loc.strings["scan.progress"]
                font.pixelSize: 17
                font.weight: Font.DemiBold
                color: Style.primary
            }
            Text {
                objectName: "progressCounts"
                anchors.horizontalCenter: parent.horizontalCenter
                text: progressView.screens.progressCounts
                font.pixelSize: 13
                color: Style.secondary
            }
            Text {
                objectName: "progressRate"
                anchors.horizontalCenter: parent.horizontalCenter
                visible: text !== ""
                text: progressView.screens.progressRate
                font.pixelSize: 11
                color: Style.secondary
                opacity: 0.7
            }
            Text {
                objectName: "progressPath"
                anchors.horizontalCenter: parent.horizontalCenter
                width: Math.min(implicitWidth, 520)
                text: progressView.screens.progressPath
                font.pixelSize: 11
                color: Style.secondary
                opacity: 0.7
                elide: Text.ElideMiddle
            }
        }
        PushButton {
            id: cancelButton
            objectName: "cancelScanButton"
            anchors.horizontalCenter: parent.horizontalCenter
            text: Loc.strings["common.cancel"]
            onClicked: progressView.cancel()
        }
        GuardedShortcut {
            control: cancelButton
            sequence: StandardKey.Cancel
            onActivated: progressView.cancel()
        }
    }
}
