pragma ComponentBehavior: Bound

import QtQuick
import Lumagrid.Style

// A short plain text on a small card below its target (above it where there is no room), over everything else in the
// target's window. It exists only while it is shown.
Item {
    id: bubble

    required property Item target
    required property string text

    readonly property Item surface: target.Window.contentItem

    function place(): void {
        if (!surface)
            return;
        const below = target.mapToItem(surface, target.width / 2, target.height + 8);
        const above = target.mapToItem(surface, target.width / 2, -8);
        x = Math.round(Math.max(8, Math.min(below.x - width / 2, surface.width - width - 8)));
        y = Math.round(below.y + height + 8 <= surface.height ? below.y : above.y - height);
    }

    parent: surface
    z: 1000
    width: Math.ceil(label.width) + 20
    height: Math.ceil(label.height) + 12
    Accessible.ignored: true
    Component.onCompleted: place()

    ShapeShadow {
        anchors.fill: parent
        radius: 8
        blur: 10
        offsetY: 3
        color: Qt.rgba(0, 0, 0, 0.18)
    }

    ContinuousRectangle {
        anchors.fill: parent
        radius: 8
        color: WindowPalette.windowBackground
        strokeColor: WindowPalette.line
        strokeWidth: 1
    }

    Text {
        id: label

        anchors.centerIn: parent
        width: Math.min(implicitWidth, 480)
        wrapMode: Text.Wrap
        text: bubble.text
        textFormat: Text.PlainText
        font: Fonts.system(12, Font.Normal)
        color: WindowPalette.text
        Accessible.ignored: true
    }
}
