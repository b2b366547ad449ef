import QtQuick
import Lumagrid.Style

// The filled shape of a button with its soft shadow. An icon casts one too, as far as the fill above it does not; the
// share of a text, on fills of an opacity of 0.79 and more, and that of a rim are about a level of 255, and left out.
// Lengths in points.
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
