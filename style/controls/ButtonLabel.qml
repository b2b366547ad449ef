import QtQuick
import Lumagrid.Style

// The icon and the text of a button, side by side and centered; either may be missing.
Item {
    id: label

    property alias iconName: icon.name
    property alias text: title.text
    property color color
    property int size
    property int weight

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight
    Accessible.ignored: true

    Row {
        id: row

        // Whole points: a text on half a pixel is blurred.
        x: Math.round((label.width - width) / 2)
        y: Math.round((label.height - height) / 2)
        spacing: 6

        Icon {
            id: icon

            anchors.verticalCenter: parent.verticalCenter
            visible: name.length > 0
            size: label.size
            weight: label.weight
            color: label.color
        }

        Text {
            id: title

            anchors.verticalCenter: parent.verticalCenter
            visible: text.length > 0
            textFormat: Text.PlainText
            font: Fonts.system(label.size, label.weight)
            color: label.color
            Accessible.ignored: true
        }
    }
}
