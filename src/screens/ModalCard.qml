import QtQuick
import Tidewick

// One dialog of the modal layer: dimming over the whole window and a card in
// the middle, entering and leaving with opacity and a slight scale. A click
// on the dimming does nothing.
Item {
    id: modal
    property bool shown: false
    default property alias content: card.data

    anchors.fill: parent
    opacity: shown ? 1 : 0
    visible: opacity > 0
    Behavior on opacity {
        NumberAnimation { duration: 200; easing.type: Easing.InOutQuad }
    }

    Rectangle {
        anchors.fill: parent
        color: Style.tint(Style.shadow, 0.25)
        // Swallows clicks and hovers meant for what lies below.
        MouseArea {
            anchors.fill: parent
            hoverEnabled: true
            acceptedButtons: Qt.AllButtons
        }
    }

    // Shadow: black at 0.4, spread over 30 points, 14 points down.
    Repeater {
        model: 12
        Rectangle {
            required property int index
            x: card.x - index * 2.5
            y: card.y + 14 - index * 2.5
            width: card.width + index * 5
            height: card.height + index * 5
            radius: 14 + index * 2.5
            color: Style.tint(Style.shadow, 0.4 / 24)
            scale: card.scale
        }
    }
    Rectangle {
        id: card
        anchors.centerIn: parent
        width: childrenRect.width
        height: childrenRect.height
        radius: 14
        color: Style.windowBackground
        scale: modal.shown ? 1 : 0.96
        Behavior on scale {
            NumberAnimation { duration: 200; easing.type: Easing.InOutQuad }
        }
    }
}
