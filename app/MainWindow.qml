import QtQuick
import Lumagrid.App
import Lumagrid.Browser

Window {
    id: window

    required property ContentView view
    required property AppMenus menus
    property bool isOpening: false // what to show is on its way

    width: minimumWidth
    height: minimumHeight
    minimumWidth: view.leastSize.width
    minimumHeight: view.leastSize.height + menuBar.height
    title: Application.displayName

    // Before the content for the Tab key, above it for the eye.
    MainMenuBar {
        id: menuBar

        z: 1
        menus: window.menus
    }

    BrowserContent {
        anchors.fill: parent
        view: window.view
        topInset: menuBar.height
        isBlank: window.isOpening
    }

    Shortcut {
        sequences: ["Ctrl+Q"]
        context: Qt.ApplicationShortcut // also while a menu has the keyboard
        onActivated: window.menus.quit()
        onActivatedAmbiguously: window.menus.quit() // another window listens too
    }
}
