// Components for a Loader cannot be bound in Qt 6.4, and without that the linter knows no ids of the file inside them.
// qmllint disable unqualified

import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// The current photo large, with its buttons and its info bar.
StageShell {
    id: root

    required property ContentView view

    Loader {
        anchors.fill: parent
        sourceComponent: root.view.shown.hasImage ? photo : placeholder
    }

    Component {
        id: placeholder

        Item {
            PlaceholderContent {
                anchors.centerIn: parent
                title: qsTr("No photo selected")
                subtitle: qsTr("Go back to the grid and choose a photo to start browsing.")
            }
        }
    }

    Component {
        id: photo

        PhotoView {
            id: photoView

            // A QImage has no type of its own in QML.
            // qmllint disable type
            image: root.view.shown.currentImage
            zoomScale: root.view.zoomScale
            offset: root.view.displacement

            Connections {
                target: root.view

                function onZoomWillChange(animation) {
                    if (animation === ContentView.Spring)
                        photoView.animate(PhotoView.Spring);
                    else if (animation === ContentView.EaseOut)
                        photoView.animate(PhotoView.EaseOut);
                }
            }

            MouseArea {
                property point start
                property bool isDragging: false

                function translation(mouse: MouseEvent): size {
                    return Qt.size(mouse.x - start.x, mouse.y - start.y);
                }

                function end(translation: size) {
                    if (isDragging)
                        root.view.endDrag(translation);
                    isDragging = false;
                }

                anchors.fill: parent
                cursorShape: root.view.zoomScale <= 1 ? Qt.ArrowCursor : isDragging ? Qt.ClosedHandCursor : Qt.OpenHandCursor

                onPressed: mouse => start = Qt.point(mouse.x, mouse.y)
                onPositionChanged: mouse => {
                    const way = translation(mouse);
                    isDragging = isDragging || Math.hypot(way.width, way.height) >= 10;
                    if (isDragging)
                        root.view.handleDrag(way);
                }
                onReleased: mouse => end(translation(mouse))
                onCanceled: end(root.view.dragOffset)
                onDoubleClicked: root.view.handleDoubleClick()
            }

            MagnificationArea {
                anchors.fill: parent
                wheelStart: root.view.zoomScale
                wheelFloor: 1

                onMagnified: magnification => root.view.handleDetailMagnification(magnification)
                onEnded: root.view.endDetailMagnification()
            }
        }
    }

    // What a disabled button lets through is not meant for the photo.
    MouseArea {
        anchors.fill: previous
    }

    MouseArea {
        anchors.fill: nextAndTrash
    }

    SideIconButtonStyle {
        id: previous

        anchors.left: parent.left
        anchors.leftMargin: 22
        anchors.verticalCenter: parent.verticalCenter
        iconName: "chevronLeft"
        backgroundColor: WindowPalette.softButton
        foregroundColor: WindowPalette.text
        helpText: qsTr("Previous photo")
        isAvailable: root.view.shown.hasPreviousPhoto
        onClicked: root.view.showPrevious()
    }

    Column {
        id: nextAndTrash

        anchors.right: parent.right
        anchors.rightMargin: 22
        anchors.verticalCenter: parent.verticalCenter
        spacing: 14

        SideIconButtonStyle {
            iconName: "chevronRight"
            backgroundColor: WindowPalette.softButton
            foregroundColor: WindowPalette.text
            helpText: qsTr("Next photo")
            isAvailable: root.view.shown.canGoNext
            onClicked: root.view.showNext()
        }

        SideIconButtonStyle {
            iconName: "trash"
            backgroundColor: WindowPalette.danger
            foregroundColor: "white"
            helpText: qsTr("Move current photo to Trash")
            isAvailable: root.view.shown.hasCurrentPhoto
            onClicked: root.view.deleteCurrentPhoto()
        }
    }

    InfoBar {
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 18
        anchors.horizontalCenter: parent.horizontalCenter
        width: Math.min(760, parent.width - 48)
        view: root.view
    }
}
