pragma ComponentBehavior: Bound

import QtQuick
import Lumagrid.Style

// A short plain text on a small card, over everything else in the window of its area.
Item {
    id: bubble

    required property ToolTipArea area
    readonly property point position: area.positionOf(Qt.size(width, height))

    parent: area.Window.contentItem
    z: 1000
    x: position.x
    y: position.y
    width: Math.ceil(label.width) + 20
    height: Math.ceil(label.height) + 12
    Accessible.role: Accessible.ToolTip
    Accessible.name: area.text

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
        text: bubble.area.text
        textFormat: Text.PlainText
        font: Fonts.system(12, Font.Normal)
        color: WindowPalette.text
        Accessible.ignored: true
    }
}
