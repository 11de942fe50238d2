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
            color: Qt.rgba(0, 0, 0, 0.2 / 10)
        }
    }
    Rectangle {
        anchors.fill: parent
        radius: 8
        color: "#f6f6f6"
        border.color: Qt.rgba(0, 0, 0, 0.12)
        border.width: 0.5
    }
}
