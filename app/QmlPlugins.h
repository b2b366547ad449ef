#pragma once

#include <QtQml/qqmlextensionplugin.h>

// The QML modules of a program that shows the window. To be included in one source file of the program, outside of
// every namespace.
Q_IMPORT_QML_PLUGIN(Lumagrid_StylePlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_ThumbnailsPlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_BrowserPlugin)
Q_IMPORT_QML_PLUGIN(Lumagrid_AppPlugin)
