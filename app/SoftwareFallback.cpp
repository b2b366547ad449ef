#include "SoftwareFallback.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QFile>
#include <QQuickWindow>
#include <cstdio>
#include <cstdlib>

namespace lumagrid {

void fallBackToSoftware(QQuickWindow& window, char* const* arguments) {
  QObject::connect(&window, &QQuickWindow::sceneGraphError, &window, [arguments](auto, const QString& message) {
    std::fputs("lumagrid: no usable OpenGL driver; drawing in software\n", stderr);
    ::setenv("QT_QUICK_BACKEND", "software", 1);
    ::execv(QFile::encodeName(QCoreApplication::applicationFilePath()).constData(), arguments);
    qFatal("%s", qPrintable(message));
  });
}

}  // namespace lumagrid
