import QtQuick
import QtQuick.Window
import Tidewick

// A symbol by its SF Symbol name, drawn as a template in `tint`, `size`
// points square whatever the screen. Layouts read the implicit size, which
// is the point size, never the bitmap's; the bitmap is drawn at the screen's
// pixel density. (An Image's own implicit size is its bitmap's and cannot
// be set, hence the frame around it.)
Item {
    id: symbolIcon
    property string symbol
    property color tint: Style.primary
    property real size: 16

    width: size
    height: size
    implicitWidth: size
    implicitHeight: size

    Image {
        anchors.fill: parent
        sourceSize.width: Math.ceil(symbolIcon.size * Screen.devicePixelRatio)
        sourceSize.height: Math.ceil(symbolIcon.size * Screen.devicePixelRatio)
        fillMode: Image.PreserveAspectFit
        smooth: true
        source: symbolIcon.symbol === "" ? ""
                : "image://symbol/" + symbolIcon.symbol + "/" + encodeURIComponent(String(symbolIcon.tint))
    }
}
