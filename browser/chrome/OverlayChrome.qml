// Components for a Loader cannot be bound in Qt 6.4, and without that the linter knows no ids of the file inside them.
// qmllint disable unqualified

import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The row that floats along the top edge of the window. What follows from a selection that begins or ends is animated;
// everything else shows at once.
Item {
    id: root

    required property ContentView view
    readonly property bool hasSelection: view.shown.selectedCount > 0
    readonly property real rowWidth: width - 44
    readonly property real rowHeight: view.showsGrid ? gridBar.height : gridButton.height

    property real selectionAmount: hasSelection ? 1 : 0 // 0 without a selection, 1 with one

    implicitHeight: 22 + Math.max(gridBar.height, selectionBar.height)

    Behavior on selectionAmount {
        NumberAnimation {
            duration: 180 * Curves.pace
            easing: Curves.easeInOut
        }
    }

    GridControlBar {
        id: gridBar

        x: 22
        y: 22
        view: root.view
        isLeaving: root.hasSelection
        opacity: 1 - root.selectionAmount
        visible: root.view.showsGrid && opacity > 0
    }

    Loader {
        id: selectionBar

        x: 22
        y: 22
        active: root.view.showsGrid && root.selectionAmount > 0
        sourceComponent: SelectionActionBar {
            view: root.view
            isLeaving: !root.hasSelection
            // Its own flexible space and the row's share what is left over.
            width: Math.max(implicitWidth, Math.floor((root.rowWidth - 12) / 2))
            scale: 0.96 + 0.04 * root.selectionAmount
            opacity: root.selectionAmount
        }
    }

    ChromeButtonStyle {
        id: gridButton

        x: 22
        y: 22
        visible: !root.view.showsGrid
        text: qsTr("Grid")
        iconName: "squareGrid3x3Fill"
        helpText: qsTr("Back to grid (Esc)")
        backgroundColor: WindowPalette.withOpacity(WindowPalette.windowBackground, 0.92)
        foregroundColor: WindowPalette.text
        onClicked: root.view.exitDetailMode()
    }

    // What the button lets through while it leaves is not meant for a tile.
    MouseArea {
        anchors.fill: chooseFolder
        visible: chooseFolder.visible
    }

    ChromeButtonStyle {
        id: chooseFolder

        anchors.right: parent.right
        anchors.rightMargin: 22
        y: 22 + Math.round((root.rowHeight - height) / 2)
        text: qsTr("Choose Folder")
        iconName: "folderBadgePlus"
        backgroundColor: WindowPalette.accent
        foregroundColor: "white"
        isAvailable: !root.hasSelection
        opacity: 1 - root.selectionAmount
        visible: opacity > 0
        onClicked: root.view.chooseFolderAndShowGrid()
        Accessible.ignored: root.hasSelection
    }
}
