import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// What is known of the current photo: its name, the status line and its place in the folder.
ContinuousRectangle {
    id: root

    required property ContentView view

    implicitHeight: row.height + 28
    radius: 18
    color: WindowPalette.withOpacity(WindowPalette.windowBackground, 0.9)
    strokeColor: WindowPalette.line
    strokeWidth: 1

    Item {
        id: row

        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: 16
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        height: texts.height

        Column {
            id: texts

            anchors.left: parent.left
            anchors.right: counter.left
            anchors.rightMargin: 14 + 8 + 14
            spacing: 4

            SingleLineText {
                width: parent.width
                content: root.view.shown.currentName
                font: Fonts.system(17, Font.Bold)
                color: WindowPalette.text
                elide: Text.ElideMiddle
            }

            SingleLineText {
                width: parent.width
                content: root.view.shown.statusMessage
                font: Fonts.system(13, Font.Medium)
                color: root.view.shown.statusIsError ? WindowPalette.danger : WindowPalette.muted
                elide: Text.ElideRight
            }
        }

        Text {
            id: counter

            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            width: Math.ceil(implicitWidth) // it starts at a whole point
            text: root.view.shown.counterText
            textFormat: Text.PlainText
            font: Fonts.system(13, Font.DemiBold)
            color: WindowPalette.muted
            Accessible.role: Accessible.StaticText
            Accessible.name: counter.text
        }
    }
}
