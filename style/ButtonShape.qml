import QtQuick
import Lumagrid.Style

// The filled shape of a button with its soft shadow. Lengths in points.
Item {
    id: shape

    property color color
    property real fillOpacity: 1
    property real shadowOpacity
    property real shadowBlur
    property real shadowOffset

    ShapeShadow {
        anchors.fill: parent
        radius: shape.height / 2
        blur: shape.shadowBlur
        offsetY: shape.shadowOffset
        color: Qt.rgba(0, 0, 0, shape.shadowOpacity)
        // What see-through glass casts is fainter by as much.
        opacity: shape.color.a * shape.fillOpacity
    }

    ContinuousRectangle {
        anchors.fill: parent
        radius: shape.height / 2
        color: shape.color
        opacity: shape.fillOpacity
    }
}
