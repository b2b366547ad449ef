pragma ComponentBehavior: Bound

import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The grid's column count and the order of the photos.
ChromeBar {
    id: root

    required property ContentView view

    implicitWidth: row.width + 16
    implicitHeight: row.height + 16

    Row {
        id: row

        anchors.centerIn: parent
        spacing: 8

        IconChromeButtonStyle {
            anchors.verticalCenter: parent.verticalCenter
            iconName: "minusMagnifyingGlass"
            helpText: qsTr("Zoom in to show fewer thumbnails")
            isAvailable: root.view.canShowFewerTiles
            onClicked: root.view.setGridDimension(root.view.gridDimension - 1)
        }

        Repeater {
            model: root.view.gridPresets

            GridPresetButtonStyle {
                id: preset

                required property int modelData
                readonly property int columns: root.view.presetColumns(modelData)

                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("%1").arg(modelData)
                helpText: qsTr("%1 x %1 grid").arg(columns)
                isActive: root.view.gridDimension === columns
                onClicked: root.view.setGridDimension(columns)
            }
        }

        IconChromeButtonStyle {
            anchors.verticalCenter: parent.verticalCenter
            iconName: "plusMagnifyingGlass"
            helpText: qsTr("Zoom out to show more thumbnails")
            isAvailable: root.view.canShowMoreTiles
            onClicked: root.view.setGridDimension(root.view.gridDimension + 1)
        }

        Item {
            anchors.verticalCenter: parent.verticalCenter
            width: 5
            height: 18

            Rectangle {
                x: 2
                width: 1
                height: parent.height
                color: WindowPalette.line
            }
        }

        MenuIconButton {
            id: sort

            anchors.verticalCenter: parent.verticalCenter
            iconName: "arrowUpArrowDown"
            helpText: qsTr("Sort order")
            onClicked: root.view.openSortMenu(Window.window, sort.mapToGlobal(0, sort.height + 4))
        }
    }
}
