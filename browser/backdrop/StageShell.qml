import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The rounded card in which a stage draws its content; nothing of the content shows outside of it. The card's colors
// are part of the backdrop.
Item {
    id: root

    default property alias content: contentItem.data
    property size backdropSize
    property point backdropOrigin

    clip: true

    ContinuousRectangle {
        anchors.fill: parent
        radius: 32
        strokeColor: WindowPalette.line
        strokeWidth: 1
    }

    Item {
        id: contentItem

        anchors.fill: parent
    }

    StageCorners {
        anchors.fill: parent
        radius: 32
        backdropSize: root.backdropSize
        backdropOrigin: root.backdropOrigin
    }
}
