import QtQuick
import Lumagrid.Style

// A title in the menu bar.
StyledButton {
    id: button

    implicitHeight: 24
    leftPadding: 10
    rightPadding: 10
    cornerRadius: 6

    background: Rectangle {
        radius: 6
        color: WindowPalette.softButton
        visible: button.enabled && (button.hovered || button.down)
    }

    contentItem: Text {
        text: button.text
        textFormat: Text.PlainText
        font: Fonts.system(13, Font.Medium)
        color: WindowPalette.text
        opacity: button.isAvailable ? 1 : 0.42
        verticalAlignment: Text.AlignVCenter
    }

    Accessible.role: Accessible.ButtonMenu
}
