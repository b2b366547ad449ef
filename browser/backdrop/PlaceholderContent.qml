import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The message of an empty stage. Texts start at whole points: between two pixels they are blurred.
Column {
    id: root

    required property string title
    required property string subtitle

    padding: 24
    spacing: 16

    Icon {
        anchors.horizontalCenter: parent.horizontalCenter
        name: "photoOnRectangleAngled"
        size: 46
        weight: Font.Medium
        color: WindowPalette.muted
    }

    Text {
        x: Math.round((root.width - width) / 2)
        text: root.title
        textFormat: Text.PlainText
        font: Fonts.system(22, Font.Bold)
        color: WindowPalette.text
        Accessible.role: Accessible.StaticText
        Accessible.name: root.title
    }

    Text {
        x: Math.round((root.width - width) / 2)
        width: Math.min(implicitWidth, 520)
        text: root.subtitle
        textFormat: Text.PlainText
        font: Fonts.system(15, Font.Medium)
        color: WindowPalette.muted
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        Accessible.role: Accessible.StaticText
        Accessible.name: root.subtitle
    }
}
