// Components for a Loader cannot be bound in Qt 6.4, and without that the linter knows no ids of the file inside them.
// qmllint disable unqualified

import QtQuick
import Lumagrid.Browser

// The whole content of a window: backdrop, the stage of the current mode, and the chrome that floats above it.
FocusScope {
    id: root

    required property ContentView view
    property real topInset: 0 // taken by the menu bar, under which the backdrop runs on
    property bool isBlank: false // nothing but the backdrop shows

    focus: true

    BackgroundLayer {
        id: backdrop

        anchors.fill: parent
        card: Qt.rect(stage.backdropOrigin.x, stage.backdropOrigin.y, stage.width, stage.height)
    }

    Item {
        id: content

        anchors.fill: parent
        anchors.topMargin: root.topInset
        visible: !root.isBlank

        // Before the stage for the Tab key, above it for the eye.
        OverlayChrome {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            z: 1
            view: root.view
        }

        Loader {
            id: stage

            readonly property point backdropOrigin: Qt.point(stage.x, content.y + stage.y)

            anchors.fill: parent
            anchors.margins: root.view.stageMargin
            focus: true
            active: !root.isBlank
            sourceComponent: root.view.showsGrid ? gridStage : detailStage
        }
    }

    WindowKeys {
        view: root.view
    }

    Component {
        id: gridStage

        GridStage {
            view: root.view
            backdropSize: Qt.size(backdrop.width, backdrop.height)
            backdropOrigin: stage.backdropOrigin
        }
    }

    Component {
        id: detailStage

        DetailStage {
            view: root.view
            backdropSize: Qt.size(backdrop.width, backdrop.height)
            backdropOrigin: stage.backdropOrigin
        }
    }

    DropArea {
        anchors.fill: parent
        keys: ["text/uri-list"]

        // Taken as a copy whatever is offered: a source that moves may delete its files afterwards.
        onEntered: drag => {
            if (root.view.acceptsDrop(drag.urls))
                drag.accept(Qt.CopyAction);
            else
                drag.accepted = false;
        }
        onPositionChanged: drag => drag.accept(Qt.CopyAction)
        onDropped: drop => {
            if (root.view.handleDrop(drop.urls))
                drop.accept(Qt.CopyAction);
        }
    }
}
