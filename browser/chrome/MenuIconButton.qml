import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The borderless face of a menu: an icon in a square of 28 points.
StyledButton {
    id: button

    implicitWidth: 28
    implicitHeight: 28
    cornerRadius: 8

    contentItem: Icon {
        name: button.iconName
        size: 13
        weight: Font.DemiBold
        color: WindowPalette.text
        opacity: button.whilePressed(1, 0.5)
    }

    Accessible.role: Accessible.ButtonMenu
}
