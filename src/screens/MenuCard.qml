import QtQuick
import Tidewick

// The background of the screens' menus: a rounded card with a soft shadow.
Item {
    implicitWidth: 200
    implicitHeight: 20

    Repeater {
        model: 5
        Rectangle {
            required property int index
            x: -index * 1.5
            y: 3 - index * 1.5
            width: parent.width + index * 3
            height: parent.height + index * 3
            radius: 8 + index * 1.5
            color: Style.tint(Style.shadow, 0.2 / 10)
        }
    }
    Rectangle {
        anchors.fill: parent
        radius: 8
        color: Style.menuBackground
        border.color: Style.menuEdge
        border.width: 0.5
    }
}
