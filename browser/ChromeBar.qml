import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The capsule behind a bar's row of controls.
ContinuousRectangle {
    radius: height / 2
    color: WindowPalette.withOpacity(WindowPalette.windowBackground, 0.92)
    strokeColor: WindowPalette.line
    strokeWidth: 1

    // A click between the controls, or on one that is disabled, is not meant for the tile below.
    MouseArea {
        anchors.fill: parent
    }
}
