#pragma once

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <span>

namespace lumagrid {

// By how much a picture may be off.
struct Tolerance {
  int levels = 0;  // of 255, in any channel of any pixel
  int pixels = 0;  // that may be off by more
};

struct Difference {
  QImage mask;     // white where the pictures are off by more than the tolerance
  int worst = 0;   // levels
  int pixels = 0;  // that are white
};

inline Difference differenceBetween(const QImage& one, const QImage& other, int tolerated) {
  Difference difference{one};
  {
    QPainter painter(&difference.mask);
    painter.setCompositionMode(QPainter::CompositionMode_Difference);
    painter.drawImage(0, 0, other);
  }
  auto* pixels = reinterpret_cast<QRgb*>(difference.mask.bits());
  for (QRgb& pixel : std::span(pixels, std::size_t(one.width()) * std::size_t(one.height()))) {
    const int levels = std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)});
    difference.worst = std::max(difference.worst, levels);
    if (levels > tolerated) ++difference.pixels;
    pixel = levels > tolerated ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
  }
  return difference;
}

inline void save(const QImage& image, const QString& file) {
  if (!image.save(file, "PNG", 0)) qFatal("Cannot write %s", qPrintable(file));
}

// Side by side, or one below the other.
inline QImage joined(const QList<QImage>& images, Qt::Orientation orientation) {
  const QPoint step = orientation == Qt::Horizontal ? QPoint(1, 0) : QPoint(0, 1);
  QRect all;
  QList<QPoint> places;
  for (const QImage& image : images) {
    places.append({all.width() * step.x(), all.height() * step.y()});
    all |= QRect(places.last(), image.size());
  }
  QImage result(all.size(), QImage::Format_RGB32);
  result.fill(Qt::magenta);  // nothing in the window is
  QPainter painter(&result);
  for (int i = 0; i < images.size(); ++i) painter.drawImage(places[i], images[i]);
  return result;
}

// Compares a picture with the one of this name in tests/pictures. Nothing is said if they agree; otherwise by how much
// they do not, and where both are to be seen with their difference. With LUMAGRID_UPDATE_PICTURES in the environment,
// this picture becomes the one to compare with.
inline QString differenceFromPicture(const QString& name, const QImage& actual, const Tolerance& tolerance) {
  const QString file = QStringLiteral(PICTURES "/%1.png").arg(name);
  const QImage picture = actual.convertToFormat(QImage::Format_RGB32);
  if (qEnvironmentVariableIsSet("LUMAGRID_UPDATE_PICTURES")) {
    save(picture, file);
    return {};
  }
  QImage expected = QImage(file).convertToFormat(QImage::Format_RGB32);
  expected.setDevicePixelRatio(1);  // whatever the name says
  QList<QImage> panels{expected, picture};
  QString reason = QStringLiteral("it is of another size");
  if (expected.size() == picture.size()) {
    const Difference difference = differenceBetween(expected, picture, tolerance.levels);
    if (difference.pixels <= tolerance.pixels) return {};
    panels.append(difference.mask);
    reason = QStringLiteral("%1 pixels are off by more than %2 levels, by up to %3")
                 .arg(QString::number(difference.pixels), QString::number(tolerance.levels),
                      QString::number(difference.worst));
  }
  if (!QDir().mkpath(QStringLiteral(PICTURE_REPORTS))) qFatal("Cannot make a folder");
  const QString report = QStringLiteral(PICTURE_REPORTS "/%1-%2.png").arg(name, QGuiApplication::platformName());
  save(joined(panels, Qt::Horizontal), report);
  return QStringLiteral("%1: %2; expected, actual and difference: %3").arg(name, reason, report);
}

}  // namespace lumagrid
