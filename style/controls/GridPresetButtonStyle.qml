import QtQuick
import Lumagrid.Style

// A small capsule: filled while it is the active one of its kind, outlined otherwise.
StyledButton {
    id: button

    required property bool isActive

    leftPadding: 12
    rightPadding: 12
    topPadding: 9
    bottomPadding: 9
    pressedScale: 0.98
    Accessible.checkable: true
    Accessible.checked: isActive

    background: Item {
        ContinuousRectangle {
            anchors.fill: parent
            visible: button.isActive
            radius: button.cornerRadius
            color: WindowPalette.accent
            opacity: button.whilePressed(1, 0.86)
        }

        ContinuousRectangle {
            anchors.fill: parent
            visible: !button.isActive
            radius: button.cornerRadius
            strokeColor: Qt.rgba(0, 0, 0, 0.08)
            strokeWidth: 1
        }
    }

    contentItem: ButtonLabel {
        iconName: button.iconName
        text: button.text
        color: button.isActive ? "white" : WindowPalette.text
        size: 13
        weight: Font.DemiBold
    }
}
