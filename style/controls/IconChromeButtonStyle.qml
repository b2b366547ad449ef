import QtQuick
import Lumagrid.Style

// An icon on a faint disc of 34 points, for bars.
StyledButton {
    id: button

    implicitWidth: 34
    implicitHeight: 34
    pressedScale: 0.96

    background: ContinuousRectangle {
        radius: button.cornerRadius
        color: "black"
        opacity: button.isAvailable ? button.whilePressed(0.06, 0.1) : 0.02
    }

    contentItem: ButtonLabel {
        iconName: button.iconName
        text: button.text
        color: WindowPalette.text
        opacity: button.isAvailable ? 1 : 0.42
        size: 15
        weight: Font.Bold
    }
}
