import QtQuick
import QtQuick.Window
import Tidewick

// The one window. The application makes the AppState and hands it over.
Window {
    id: window
    required property AppState appState
    property AdService adService: null
    // Room the platform's window buttons need at the top row's leading edge.
    property int leadingInset: 0

    width: 1080
    height: 720
    minimumWidth: 1080
    minimumHeight: 720
    visible: true
    title: "Tidewick"
    color: Style.windowBackground

    ContentView {
        anchors.fill: parent
        appState: window.appState
        adService: window.adService
        leadingInset: window.leadingInset
    }
}
