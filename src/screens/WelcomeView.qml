import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import QtQuick.Window
import Tidewick

// Before any scan: the mark, three ways to begin, and the reclaim of local
// snapshots when there are any.
Item {
    id: welcome
    property int localSnapshotCount: 0
    property bool thinning: false
    signal scanEntireMac()
    signal scanHome()
    signal pickFolder()
    signal thinSnapshots()
    // Each time the screen comes into view, so the snapshot count is fresh.
    signal appeared()

    onVisibleChanged: if (visible) appeared()
    Component.onCompleted: if (visible) appeared()

    ColumnLayout {
        anchors.centerIn: parent
        width: Math.min(parent.width - 80, implicitWidth)
        spacing: 28

        Image {
            objectName: "logo"
            Layout.alignment: Qt.AlignHCenter
            Layout.preferredWidth: 160
            Layout.preferredHeight: 160
            sourceSize.width: Math.ceil(160 * Screen.devicePixelRatio)
            sourceSize.height: Math.ceil(160 * Screen.devicePixelRatio)
            fillMode: Image.PreserveAspectFit
            smooth: true
            mipmap: true
            source: "qrc:/Tidewick/main_logo.png"
            onStatusChanged: {
                // Without the logo the application's icon stands in.
                if (status === Image.Error && source !== "qrc:/Tidewick/app_icon.png")
                    source = "qrc:/Tidewick/app_icon.png";
            }
        }

        Column {
            Layout.alignment: Qt.AlignHCenter
            spacing: 8
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: "Tidewick"
                font.pixelSize: 34
                font.weight: Font.DemiBold
                color: Style.primary
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                text: Loc.strings["welcome.title"]
                font.pixelSize: 15
                color: Style.secondary
            }
        }

        Row {
            Layout.alignment: Qt.AlignHCenter
            spacing: 12
            WelcomeButton {
                objectName: "scanMacButton"
                prominent: true
                minimumWidth: 200
                symbol: "internaldrive"
                text: Loc.strings["welcome.scanMac"]
                onClicked: welcome.scanEntireMac()
            }
            WelcomeButton {
                objectName: "scanHomeButton"
                minimumWidth: 200
                symbol: "house"
                text: Loc.strings["welcome.scanHome"]
                onClicked: welcome.scanHome()
            }
            WelcomeButton {
                id: pickFolderButton
                objectName: "pickFolderButton"
                minimumWidth: 160
                symbol: "folder"
                text: Loc.strings["welcome.pick"]
                onClicked: welcome.pickFolder()
            }
        }
        // Only here, and only while no dialog is up: elsewhere it would
        // replace a running scan or the tree a dialog is asking about.
        GuardedShortcut {
            control: pickFolderButton
            sequence: "Ctrl+O"
            onActivated: welcome.pickFolder()
        }

        Button {
            id: reclaim
            objectName: "reclaimButton"
            Layout.alignment: Qt.AlignHCenter
            visible: welcome.localSnapshotCount >= 1
            enabled: !welcome.thinning
            readonly property string label: Loc.strings["welcome.thinSnapshots"].replace("%d", welcome.localSnapshotCount)
            Accessible.name: label
            Accessible.description: Loc.strings["welcome.thinSnapshots.help"]
            padding: 4
            leftPadding: 10
            rightPadding: 10
            contentItem: Row {
                spacing: 6
                // Disabled while a reclaim runs: the count stays, dimmed.
                opacity: reclaim.enabled ? 1 : 0.4
                SymbolIcon {
                    anchors.verticalCenter: parent.verticalCenter
                    symbol: "clock.arrow.circlepath"
                    tint: Style.primary
                    size: 14
                }
                Text {
                    anchors.verticalCenter: parent.verticalCenter
                    text: reclaim.label
                    font.pixelSize: 13
                    color: Style.primary
                }
            }
            // Its face from the screens' own colours, so it reads in both looks.
            background: Rectangle {
                radius: 6
                color: reclaim.down ? Style.controlPressed : Style.controlBackground
                border.color: Style.controlEdge
                FocusRing {
                    control: reclaim
                    cornerRadius: 6
                }
            }
            focusPolicy: Qt.TabFocus
            ToolTip.visible: hovered
            ToolTip.delay: 600
            ToolTip.text: Loc.strings["welcome.thinSnapshots.help"]
            onClicked: welcome.thinSnapshots()
        }

        Text {
            Layout.alignment: Qt.AlignHCenter
            text: Loc.strings["welcome.privacy"]
            font.pixelSize: 11
            color: Style.secondary
            opacity: 0.7
        }
    }
}
