import QtQuick
import QtQuick.Window

// The main window. The screens arrive with their own work; until then it is
// an empty frame at the smallest size the layout allows.
Window {
    id: window
    width: 1080
    height: 720
    minimumWidth: 1080
    minimumHeight: 720
    visible: true
    title: "Tidewick"
    color: palette.window
}
