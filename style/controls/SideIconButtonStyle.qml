import QtQuick
import Lumagrid.Style

// A round button of 56 points with a white rim and a soft shadow, for the edges of the stage.
StyledButton {
    id: button

    required property color backgroundColor
    required property color foregroundColor

    implicitWidth: 56
    implicitHeight: 56
    pressedScale: 0.97

    background: ButtonShape {
        color: button.backgroundColor
        fillOpacity: button.isAvailable ? button.whilePressed(0.96, 0.86) : 0.42
        shadowOpacity: 0.12
        shadowBlur: 10
        shadowOffset: 4
        iconName: button.iconName
        iconSize: 20
        iconWeight: Font.Bold
        iconOpacity: button.foregroundColor.a

        ContinuousRectangle {
            anchors.fill: parent
            radius: button.cornerRadius
            strokeColor: Qt.rgba(1, 1, 1, button.isAvailable ? 0.55 : 0.2)
            strokeWidth: 1
        }
    }

    contentItem: ButtonLabel {
        iconName: button.iconName
        text: button.text
        color: button.foregroundColor
        size: 20
        weight: Font.Bold
    }
}
