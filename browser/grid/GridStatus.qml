import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// A new status, on the grid, where there is no info bar: a quiet line that leaves by itself; an error stays until
// another status takes its place.
ContinuousRectangle {
    id: root

    required property ContentView view
    readonly property bool isError: view.shown.statusIsError

    implicitWidth: Math.ceil(label.implicitWidth) + 32
    implicitHeight: label.height + 20
    radius: 18
    color: isError ? WindowPalette.errorBackground : WindowPalette.withOpacity(WindowPalette.windowBackground, 0.9)
    strokeColor: WindowPalette.line
    strokeWidth: 1
    visible: root.view.shown.newStatus.length > 0

    Accessible.role: Accessible.AlertMessage
    Accessible.name: root.view.shown.newStatus

    SingleLineText {
        id: label

        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, root.width - 32)
        content: root.view.shown.newStatus
        font: Fonts.system(13, Font.Medium)
        color: root.isError ? WindowPalette.danger : WindowPalette.muted
        elide: Text.ElideRight
        Accessible.ignored: true // the whole has its name
    }

    Timer {
        id: leaving

        interval: 4000
        running: root.visible && !root.isError
        onTriggered: root.view.shown.dismissNewStatus()
    }

    Connections {
        target: root.view.shown

        function onNewStatusChanged() {
            if (leaving.running)
                leaving.restart();
        }
    }
}
