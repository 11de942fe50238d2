import QtQuick
import QtQuick.Controls
import QtQuick.Layouts
import Tidewick

// After a scan that met closed folders: how many, and the way to the grant.
// Where no grant would help (Linux, or a Mac that has it) the same banner
// tells the count without the way: `offersSettings` false, other texts.
Rectangle {
    id: banner
    property int inaccessibleCount: 0
    property bool offersSettings: true
    property string titleKey: "fda.banner.title"
    property string bodyKey: "fda.banner.body"
    signal openSettings()
    signal dismiss()

    implicitHeight: content.implicitHeight + 16
    color: Style.tint(Style.orange, 0.12)

    RowLayout {
        id: content
        anchors.fill: parent
        anchors.leftMargin: 14
        anchors.rightMargin: 14
        anchors.topMargin: 8
        anchors.bottomMargin: 8
        spacing: 12

        SymbolIcon {
            symbol: "exclamationmark.lock.fill"
            tint: Style.orange
            size: 16
        }
        Column {
            spacing: 1
            Text {
                objectName: "bannerTitle"
                text: Loc.strings[banner.titleKey].replace("%d", banner.inaccessibleCount)
                font.pixelSize: 12
                font.weight: Font.DemiBold
                color: Style.primary
            }
            Text {
                text: Loc.strings[banner.bodyKey]
                font.pixelSize: 11
                color: Style.secondary
            }
        }
        Item {
            Layout.fillWidth: true
        }
        PushButton {
            objectName: "bannerOpenSettings"
            visible: banner.offersSettings
            text: Loc.strings["fda.openSettings"]
            font.pixelSize: 11
            onClicked: banner.openSettings()
        }
        ToolButton {
            objectName: "bannerDismiss"
            flat: true
            implicitWidth: 22
            implicitHeight: 22
            focusPolicy: Qt.TabFocus
            Accessible.name: Loc.strings["common.dismiss"]
            background: Item {
                FocusRing {
                    control: parent.parent
                    cornerRadius: 4
                }
            }
            contentItem: Item {
                SymbolIcon {
                    anchors.centerIn: parent
                    symbol: "xmark"
                    tint: Style.secondary
                    size: 10
                }
            }
            onClicked: banner.dismiss()
        }
    }
}
