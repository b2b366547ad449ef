import QtQuick
import Lumagrid.Style

// One line of plain text. What is cut off is shown whole in a tooltip.
Text {
    id: root

    required property string content

    height: Math.ceil(metrics.height) // as tall for every script that the name is written in
    verticalAlignment: Text.AlignVCenter
    text: root.content
    textFormat: Text.PlainText
    maximumLineCount: 1
    wrapMode: Text.NoWrap
    Accessible.role: Accessible.StaticText
    Accessible.name: root.text

    FontMetrics {
        id: metrics

        font: root.font
    }

    ToolTip {
        text: root.truncated ? root.text : ""
        delay: 0
    }
}
