import QtQuick
import Lumagrid.Browser
import Lumagrid.Thumbnails

PhotoThumbnailTile {
    id: tile

    Accessible.role: Accessible.Button
    Accessible.name: tile.name
    Accessible.checkable: true
    Accessible.checked: tile.isChecked
    Accessible.selected: tile.isCurrentlyViewing
    Accessible.onPressAction: tile.click(Qt.NoModifier)
    Accessible.onToggleAction: tile.click(Qt.ControlModifier)
}
