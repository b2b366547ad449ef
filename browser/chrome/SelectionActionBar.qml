import QtQuick
import Lumagrid.Browser
import Lumagrid.Style

// How many photos are selected, and what can be done with them.
ChromeBar {
    id: root

    required property ContentView view

    implicitWidth: label.width + 10 + 8 + 10 + buttons.width + 32
    implicitHeight: buttons.height + 20

    Row {
        id: label

        anchors.left: parent.left
        anchors.leftMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 10

        Icon {
            anchors.verticalCenter: parent.verticalCenter
            name: "checkmarkCircleFill"
            size: 16
            weight: Font.DemiBold
            color: WindowPalette.accent
        }

        Text {
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("%n selected", "", root.view.shown.lastSelectedCount)
            textFormat: Text.PlainText
            font: Fonts.system(14, Font.DemiBold)
            color: WindowPalette.text
            Accessible.role: Accessible.StaticText
            Accessible.name: text
            Accessible.ignored: root.isLeaving
        }
    }

    Row {
        id: buttons

        anchors.right: parent.right
        anchors.rightMargin: 16
        anchors.verticalCenter: parent.verticalCenter
        spacing: 10

        ChromeButtonStyle {
            text: qsTr("Clear")
            backgroundColor: WindowPalette.withOpacity(WindowPalette.windowBackground, 0.92)
            foregroundColor: WindowPalette.text
            onClicked: root.view.clearSelection()
        }

        ChromeButtonStyle {
            text: qsTr("Delete")
            iconName: "trash"
            backgroundColor: WindowPalette.danger
            foregroundColor: "white"
            onClicked: root.view.deleteSelectedWithConfirmation()
        }
    }
}
