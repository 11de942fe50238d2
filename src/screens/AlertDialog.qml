import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// An alert: title, message and one or two buttons, over the window.
Dialog {
    id: alert
    property string message
    property bool shown: false
    property string acceptText: "OK"
    property string rejectText: ""

    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    visible: shown
    closePolicy: Popup.NoAutoClose
    width: 380
    padding: 20

    contentItem: ColumnLayout {
        spacing: 12
        Text {
            Layout.fillWidth: true
            text: alert.title
            font.pixelSize: 14
            font.weight: Font.DemiBold
            color: Style.primary
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
        Text {
            objectName: "alertMessage"
            Layout.fillWidth: true
            text: alert.message
            font.pixelSize: 12
            color: Style.primary
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
        RowLayout {
            Layout.fillWidth: true
            Layout.topMargin: 6
            spacing: 8
            PushButton {
                Layout.fillWidth: true
                visible: alert.rejectText !== ""
                text: alert.rejectText
                onClicked: alert.reject()
            }
            PushButton {
                Layout.fillWidth: true
                prominent: true
                text: alert.acceptText
                onClicked: alert.accept()
            }
        }
    }
    header: Item {}
    footer: Item {}
}
