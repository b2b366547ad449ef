import QtQuick
import Lumagrid.Style

// One line of plain text, whatever it holds: line breaks and other control characters show as spaces. What is cut off
// is shown whole in a tooltip.
Text {
    id: root

    required property string content

    height: Math.ceil(metrics.height) // as tall for every script that the name is written in
    verticalAlignment: Text.AlignVCenter
    text: root.content.replace(/[\u0000-\u001f\u007f-\u009f\u2028\u2029]/g, " ")
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
