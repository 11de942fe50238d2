import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// An alert: title, message and one or two buttons, over the window. Return
// answers with the main button; Escape with Cancel where there is one, else
// with the main button too, so no alert leaves the keyboard stranded.
Dialog {
    id: alert
    property string message
    property bool shown: false
    property string acceptText: "OK"
    property string rejectText: ""

    parent: Overlay.overlay
    anchors.centerIn: parent
    modal: true
    // Follows `shown` without a binding to `visible`, which closing breaks.
    onShownChanged: shown ? open() : close()
    Component.onCompleted: if (shown) open()
    closePolicy: Popup.NoAutoClose
    width: 380
    padding: 20

    background: Item {
        // A soft shadow, a few layers of black spread 4 points down.
        Repeater {
            model: 6
            Rectangle {
                required property int index
                x: -index * 2
                y: 4 - index * 2
                width: parent.width + index * 4
                height: parent.height + index * 4
                radius: 12 + index * 2
                color: Style.tint(Style.shadow, 0.22 / 12)
            }
        }
        Rectangle {
            anchors.fill: parent
            radius: 12
            color: Style.windowBackground
            border.color: Style.menuEdge
            border.width: 0.5
        }
    }

    contentItem: ColumnLayout {
        spacing: 12
        Accessible.role: Accessible.AlertMessage
        Accessible.name: alert.title
        Accessible.description: alert.message
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
        // Buttons at their natural width, the main one at the trailing end.
        RowLayout {
            Layout.alignment: Qt.AlignRight
            Layout.topMargin: 6
            spacing: 8
            PushButton {
                objectName: "alertReject"
                visible: alert.rejectText !== ""
                text: alert.rejectText
                onClicked: alert.reject()
            }
            PushButton {
                objectName: "alertAccept"
                prominent: true
                text: alert.acceptText
                onClicked: alert.accept()
            }
        }
        // Inside the popup, so the popup's modality lets them through.
        Shortcut {
            enabled: alert.visible
            sequences: ["Return", "Enter"]
            onActivated: alert.accept()
        }
        Shortcut {
            enabled: alert.visible
            sequence: StandardKey.Cancel
            onActivated: alert.rejectText !== "" ? alert.reject() : alert.accept()
        }
    }
    header: Item {}
    footer: Item {}
}
