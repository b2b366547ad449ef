// Components for a Loader cannot be bound in Qt 6.4, and without that the linter knows no ids of the file inside them.
// qmllint disable unqualified

import QtQuick
import QtQuick.Templates as T
import Lumagrid.Browser
import Lumagrid.Style

// The open folder as a scrolling grid of tiles.
StageShell {
    id: root

    required property ContentView view

    Loader {
        anchors.fill: parent
        focus: true
        sourceComponent: root.view.shown.photoCount === 0 ? placeholder : grid
    }

    GridStatus {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 18
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(implicitWidth, 760, parent.width - 48)
        view: root.view
    }

    Component {
        id: placeholder

        Item {
            PlaceholderContent {
                anchors.centerIn: parent
                title: qsTr("Choose a folder to start browsing.")
                subtitle: qsTr("Use the folder button, then pinch to zoom the grid or click any photo to open it.")
            }
        }
    }

    Component {
        id: grid

        Flickable {
            id: flickable

            contentWidth: width
            contentHeight: photoGrid.contentHeight
            boundsBehavior: Flickable.StopAtBounds
            pixelAligned: true

            WheelHandler {
                acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
                acceptedModifiers: Qt.NoModifier
                onWheel: event => photoGrid.scrollByWheel(event.pixelDelta, event.angleDelta)
            }

            // Keeps the mouse from dragging the content where there is no tile.
            MouseArea {
                width: flickable.contentWidth
                height: Math.max(flickable.height, flickable.contentHeight)
                preventStealing: true
            }

            PhotoGrid {
                id: photoGrid

                focus: true
                width: flickable.contentWidth
                height: contentHeight
                view: root.view
                viewport: Qt.size(flickable.width, flickable.height)
                contentY: flickable.contentY
                delegate: GridTile {}

                onScrollRequested: (contentY, scrolling) => {
                    scroll.stop();
                    if (scrolling === PhotoGrid.Immediate) {
                        flickable.contentY = contentY;
                        return;
                    }
                    scroll.to = contentY;
                    scroll.duration = (scrolling === PhotoGrid.Animated ? 180 : 120) * Curves.pace;
                    scroll.easing = scrolling === PhotoGrid.Animated ? Curves.easeInOut : Curves.easeOut;
                    scroll.start();
                }
            }

            NumberAnimation {
                id: scroll

                target: flickable
                property: "contentY"
            }

            MagnificationArea {
                parent: flickable
                anchors.fill: parent

                onMagnified: magnification => root.view.handleGridMagnification(magnification)
                onEnded: root.view.endGridMagnification()
            }

            T.ScrollBar.vertical: T.ScrollBar {
                id: bar

                topPadding: 24
                bottomPadding: 24
                rightPadding: 4
                implicitWidth: 10
                minimumSize: 0.05
                visible: size < 1
                contentItem: Rectangle {
                    implicitWidth: 6
                    radius: width / 2
                    color: WindowPalette.text
                    opacity: bar.pressed ? 0.85 : bar.hovered ? 0.7 : 0.55
                }
            }
        }
    }
}
