import QtQuick
import Lumagrid.Style

// A filled capsule around a title, with or without an icon, with a soft shadow. It looks the same when disabled.
StyledButton {
    id: button

    required property color backgroundColor
    required property color foregroundColor

    leftPadding: 18
    rightPadding: 18
    topPadding: 12
    bottomPadding: 12
    pressedScale: 0.985

    background: ButtonShape {
        color: button.backgroundColor
        fillOpacity: button.whilePressed(1, 0.86)
        shadowOpacity: 0.1
        shadowBlur: 8
        shadowOffset: 3
    }

    contentItem: ButtonLabel {
        iconName: button.iconName
        text: button.text
        color: button.foregroundColor
        size: 15
        weight: Font.DemiBold
    }
}
