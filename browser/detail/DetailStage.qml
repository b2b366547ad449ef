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
            ahead: root.view.photosAhead

            Connections {
                target: root.view

                function onZoomWillChange(curve) {
                    photoView.animate(curve);
                }
            }

            DragArea {
                anchors.fill: parent
                canMove: root.view.isZoomed

                onDragged: translation => root.view.handleDrag(translation)
                onEnded: translation => root.view.endDrag(translation)
                onCanceled: root.view.endDrag(root.view.dragOffset)
                onDoubleClicked: root.view.handleDoubleClick()
            }

            MagnificationArea {
                anchors.fill: parent
                wheelStart: root.view.zoomScale
                wheelFloor: root.view.fittedScale

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
