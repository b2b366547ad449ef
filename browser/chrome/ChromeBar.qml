import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The capsule behind a bar's row of controls. While a bar leaves, its controls look as they did and do nothing.
ContinuousRectangle {
    id: bar

    default property alias controls: content.data
    property bool isLeaving: false

    radius: height / 2
    color: WindowPalette.withOpacity(WindowPalette.windowBackground, 0.92)
    strokeColor: WindowPalette.line
    strokeWidth: 1

    // A click between the controls, or on one that does nothing, is not meant for the tile below.
    MouseArea {
        anchors.fill: parent
    }

    Item {
        id: content

        anchors.fill: parent
        enabled: !bar.isLeaving
    }
}
