import QtQuick
import Tidewick

// The chart item with its hub label and context menu.
Item {
    id: chart
    required property AppState appState
    required property ChartScreenModel screen
    readonly property alias view: view
    // The Kinds tab's and the search's marks on the chart.
    property ChartEmphasis emphasis: null

    SunburstView {
        id: view
        objectName: "sunburst"
        anchors.fill: parent
        state: chart.appState
        hubColor: Style.windowBackground
        dark: Style.dark
        labelDark: Style.chartLabelDark
        labelLight: Style.chartLabelLight
        animatesDrill: !Style.reduceMotion
        emphasis: chart.emphasis
        kindColours: Style.kindColours
        markColor: Style.accent
        // The subject of an open menu stays highlighted.
        holdsHover: menu.visible
        // A picture to a screen reader: the focus it shows; its sectors are
        // read through the Largest list.
        Accessible.role: Accessible.Chart
        Accessible.name: chart.screen.hubName + ", " + chart.screen.hubSize
                         + (chart.appState.selectionText !== "" ? ", " + chart.appState.selectionText : "")
        onContextMenuRequested: (x, y) => {
            // No hover, no menu.
            if (actions.takeHovered())
                menu.popup(view, x, y);
        }
    }

    NodeActions {
        id: actions
        state: chart.appState
    }

    NodeContextMenu {
        id: menu
        objectName: "chartMenu"
        actions: actions
    }

    // Text takes no mouse events, so a click on the label reaches the chart.
    Column {
        anchors.centerIn: view
        spacing: 4
        visible: chart.screen.hasFocus

        Text {
            objectName: "hubName"
            anchors.horizontalCenter: parent.horizontalCenter
            width: Math.min(implicitWidth, view.hubRadius * 1.6)
            text: chart.screen.hubName
            font.pixelSize: 14
            font.weight: Font.Medium
            color: Style.secondary
            elide: Text.ElideMiddle
            horizontalAlignment: Text.AlignHCenter
        }
        Text {
            objectName: "hubSize"
            anchors.horizontalCenter: parent.horizontalCenter
            text: chart.screen.hubSize
            font.pixelSize: 22
            font.weight: Font.DemiBold
            color: Style.primary
        }
        Text {
            objectName: "hubFiles"
            anchors.horizontalCenter: parent.horizontalCenter
            text: chart.screen.hubFiles
            font.pixelSize: 11
            color: Style.secondary
            opacity: 0.8
        }
    }
}
