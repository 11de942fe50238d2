import QtQuick
import QtQuick.Window
import Tidewick

// A symbol by its SF Symbol name, drawn as a template in `tint`, `size`
// points square whatever the screen: layouts read the implicit size, which
// is the point size, never the bitmap's; the bitmap is drawn at the screen's
// pixel density.
Image {
    property string symbol
    property color tint: Style.primary
    property real size: 16

    width: size
    height: size
    implicitWidth: size
    implicitHeight: size
    sourceSize: Qt.size(Math.ceil(size * Screen.devicePixelRatio), Math.ceil(size * Screen.devicePixelRatio))
    fillMode: Image.PreserveAspectFit
    smooth: true
    source: symbol === "" ? "" : "image://symbol/" + symbol + "/" + encodeURIComponent(String(tint))
}
