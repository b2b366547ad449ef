import QtQuick
import Lumagrid.Style

// The filled shape of a button with its soft shadow. Where the fill is see-through, the icon's own shadow shows too. The
// shadows of a text and of a rim would change a pixel by about 1 of 255, and are left out. Lengths in points.
Item {
    id: shape

    property color color
    property real fillOpacity: 1
    property real shadowOpacity
    property real shadowBlur
    property real shadowOffset
    property string iconName
    property int iconSize
    property int iconWeight
    property real iconOpacity: 1
    readonly property real opacityOfFill: color.a * fillOpacity

    Icon {
        anchors.centerIn: parent
        anchors.verticalCenterOffset: shape.shadowOffset
        visible: name.length > 0
        name: shape.iconName
        size: shape.iconSize
        weight: shape.iconWeight
        blur: shape.shadowBlur
        color: Qt.rgba(0, 0, 0, shape.shadowOpacity * shape.iconOpacity)
        opacity: 1 - shape.opacityOfFill
    }

    ShapeShadow {
        anchors.fill: parent
        radius: shape.height / 2
        blur: shape.shadowBlur
        offsetY: shape.shadowOffset
        color: Qt.rgba(0, 0, 0, shape.shadowOpacity)
        opacity: shape.opacityOfFill
    }

    ContinuousRectangle {
        anchors.fill: parent
        radius: shape.height / 2
        color: shape.color
        opacity: shape.fillOpacity
    }
}
