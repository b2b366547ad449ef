// Components for a Loader cannot be bound in Qt 6.4, and without that the linter knows no ids of the file inside them.
// qmllint disable unqualified

import QtQuick
import Lumagrid.Style

// The tooltip of its parent. Its bubble exists only while it is shown.
ToolTipArea {
    id: toolTip

    anchors.fill: parent

    Loader {
        active: toolTip.isShown
        sourceComponent: ToolTipBubble {
            area: toolTip
        }
    }
}
