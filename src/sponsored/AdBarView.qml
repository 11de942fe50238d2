import QtQuick
import QtQuick.Controls
import QtQuick.Window
import Tidewick

// The sponsored strip at the foot of the window. The whole strip is one
// button: no caption, no close button. With no item it takes no room.
Item {
    id: bar
    property AdService ads: null
    readonly property var ad: ads ? ads.ad : ({})
    readonly property bool shown: ads !== null && ads.hasAd
    readonly property bool isBanner: ad.kind === "banner"

    implicitHeight: shown ? strip.implicitHeight : 0
    opacity: shown ? 1 : 0
    // Visible while it shows an item or is still folding away.
    visible: shown || height > 0
    // The strip rises from the bottom edge as the bar grows, and fades.
    clip: true
    Behavior on implicitHeight {
        NumberAnimation {
            duration: 250
            easing.type: Easing.InOutQuad
        }
    }
    Behavior on opacity {
        NumberAnimation {
            duration: 250
            easing.type: Easing.InOutQuad
        }
    }

    Column {
        id: strip
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top

        Rectangle {
            width: parent.width
            height: 1
            color: Style.divider
            opacity: 0.4
        }

        AbstractButton {
            id: button
            objectName: "adButton"
            width: parent.width
            implicitHeight: bar.isBanner ? 128 : textRow.implicitHeight + 12
            // Reachable by Tab; a click leaves the keyboard where it was.
            focusPolicy: Qt.TabFocus
            Accessible.name: bar.isBanner ? (bar.ad.alt || "") : (bar.ad.text || "")
            Accessible.description: bar.ad.link || ""
            ToolTip.visible: hovered && !!bar.ad.link
            ToolTip.delay: 600
            ToolTip.text: bar.ad.link || ""
            onClicked: {
                const link = bar.ad.link;
                bar.ads.press();
                Qt.openUrlExternally(link);
            }
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()

            background: Rectangle {
                color: bar.isBanner ? Style.tint(Style.secondary, 0.06) : Style.tint(Style.primary, 0.04)
                border.width: button.visualFocus ? 2 : 0
                border.color: Style.accent
            }

            // Plain children rather than a deferred contentItem, so that the
            // row's parts can name each other.
            Item {
                anchors.fill: parent
                Row {
                    id: textRow
                    objectName: "adTextRow"
                    visible: !bar.isBanner
                    anchors.fill: parent
                    anchors.leftMargin: 14
                    anchors.rightMargin: 14
                    anchors.topMargin: 6
                    anchors.bottomMargin: 6
                    spacing: 10

                    // The icon's square, its placeholder until (and unless) the icon arrives.
                    Rectangle {
                        objectName: "adIconSquare"
                        width: 18
                        height: 18
                        anchors.verticalCenter: parent.verticalCenter
                        radius: 4
                        color: Style.tint(Style.secondary, 0.15)
                        clip: true
                        Image {
                            id: icon
                            objectName: "adIcon"
                            anchors.fill: parent
                            source: bar.isBanner ? "" : (bar.ad.iconUrl || "")
                            sourceSize.width: 18 * Screen.devicePixelRatio
                            sourceSize.height: 18 * Screen.devicePixelRatio
                            fillMode: Image.PreserveAspectCrop
                            smooth: true
                            mipmap: true
                            asynchronous: true
                            visible: status === Image.Ready
                        }
                    }
                    Text {
                        objectName: "adText"
                        anchors.verticalCenter: parent.verticalCenter
                        width: textRow.width - 18 - arrow.width - 2 * textRow.spacing
                        text: bar.ad.text || ""
                        font.pixelSize: 12
                        color: Style.primary
                        elide: Text.ElideRight
                        maximumLineCount: 1
                        textFormat: Text.PlainText
                    }
                    SymbolIcon {
                        id: arrow
                        anchors.verticalCenter: parent.verticalCenter
                        symbol: "arrow.up.right"
                        tint: Style.secondary
                        size: 10
                    }
                }

                Image {
                    objectName: "adBanner"
                    visible: bar.isBanner && status === Image.Ready
                    anchors.fill: parent
                    source: bar.isBanner ? (bar.ad.imageUrl || "") : ""
                    sourceSize.height: 128 * Screen.devicePixelRatio
                    fillMode: Image.PreserveAspectFit
                    smooth: true
                    mipmap: true
                    asynchronous: true
                }
            }
        }
    }
}
