import QtQuick
import Lumagrid.App

// The window's menus: the application's own and "File", which has entries once a folder was opened.
Row {
    id: root

    required property AppMenus menus

    leftPadding: 14
    topPadding: 2
    bottomPadding: 2
    Accessible.role: Accessible.MenuBar

    MainMenuButton {
        text: "Lumagrid"
        onClicked: root.menus.openApplicationMenu(Window.window, mapToGlobal(0, height + 2))
    }

    MainMenuButton {
        text: qsTr("File")
        isAvailable: root.menus.fileMenuHasEntries
        onClicked: root.menus.openFileMenu(Window.window, mapToGlobal(0, height + 2))
    }
}
