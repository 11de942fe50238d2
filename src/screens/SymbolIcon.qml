import QtQuick
import Tidewick

// A symbol by its SF Symbol name, drawn as a template in `tint`.
Image {
    property string symbol
    property color tint: Style.primary
    property real size: 16

    width: size
    height: size
    sourceSize: Qt.size(Math.ceil(size * 2), Math.ceil(size * 2))
    fillMode: Image.PreserveAspectFit
    smooth: true
    source: symbol === "" ? "" : "image://symbol/" + symbol + "/" + encodeURIComponent(String(tint))
}
