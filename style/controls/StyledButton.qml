pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import Lumagrid.Style

// What the button styles share: the pressed state that everything animates by, the focus ring, the tooltip, the keys and
// what assistive technology hears. A style adds its background and its content.
T.AbstractButton {
    id: button

    // The name of an icon, shown before the text.
    property string iconName
    // Explains the button in a tooltip; names it where it has no text.
    property string helpText
    // The size of the whole while it is pressed.
    property real pressedScale: 1
    // What the button does can be done: it is enabled where its surroundings are. It looks disabled only by this, so
    // that a bar that leaves can be disabled as a whole without a change of its look.
    property bool isAvailable: true
    // The radius of the shape, for the focus ring.
    property real cornerRadius: height / 2

    // 0 released, 1 pressed. The only thing that is animated: a change of any other state shows at once.
    property real pressAmount: down ? 1 : 0

    function whilePressed(released: real, pressed: real): real {
        return released + (pressed - released) * pressAmount;
    }

    // A key that is held down clicks once.
    function clickOnce(event: var): void {
        if (!event.isAutoRepeat)
            clicked();
    }

    // Whole points, so that neighbors in a row stay on the pixel grid.
    implicitWidth: Math.ceil(implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: Math.ceil(implicitContentHeight + topPadding + bottomPadding)
    scale: whilePressed(1, pressedScale)
    enabled: isAvailable
    hoverEnabled: true
    focusPolicy: Qt.TabFocus

    Accessible.role: Accessible.Button
    Accessible.name: text.length > 0 ? text : helpText
    Accessible.description: helpText
    Accessible.ignored: !!parent && !parent.enabled
    Accessible.onPressAction: if (enabled)
        clicked()

    Keys.onReturnPressed: event => clickOnce(event)
    Keys.onEnterPressed: event => clickOnce(event)

    Behavior on pressAmount {
        NumberAnimation {
            duration: 120 * Curves.pace
            easing: Curves.easeOut
        }
    }

    // No HoverHandler: an item with one takes every button of the mouse.
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.NoButton
        cursorShape: button.enabled ? Qt.PointingHandCursor : Qt.ArrowCursor
    }

    // The focus ring; its halo sets it off from whatever photo is beneath.
    Repeater {
        model: button.visualFocus ? [4, 2] : []

        ContinuousRectangle {
            required property int modelData

            anchors.fill: parent
            anchors.margins: -3
            radius: button.cornerRadius + 3
            strokeColor: modelData > 2 ? WindowPalette.windowBackground : WindowPalette.focusRing
            strokeWidth: modelData
        }
    }

    ToolTip {
        text: button.helpText
    }
}
