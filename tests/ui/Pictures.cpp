#include "Pictures.h"

#include <QDir>
#include <QGuiApplication>
#include <QPainter>

namespace lumagrid {

namespace {

int differenceOf(QRgb one, QRgb other) {
  return std::max(
      {std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)), std::abs(qBlue(one) - qBlue(other))});
}

struct Difference {
  QImage image;    // white where the pictures are off by more than the tolerance, grey where by less
  int worst = 0;   // levels
  int pixels = 0;  // off by more than the tolerance
};

Difference differenceBetween(const QImage& one, const QImage& other, int tolerated) {
  Difference difference;
  difference.image = QImage(one.size(), QImage::Format_RGB32);
  for (int y = 0; y < one.height(); ++y) {
    const auto* left = reinterpret_cast<const QRgb*>(one.constScanLine(y));
    const auto* right = reinterpret_cast<const QRgb*>(other.constScanLine(y));
    auto* out = reinterpret_cast<QRgb*>(difference.image.scanLine(y));
    for (int x = 0; x < one.width(); ++x) {
      const int levels = differenceOf(left[x], right[x]);
      difference.worst = std::max(difference.worst, levels);
      if (levels > tolerated) ++difference.pixels;
      const int grey = levels > tolerated ? 255 : 8 * levels;
      out[x] = qRgb(grey, grey, grey);
    }
  }
  return difference;
}

void save(const QImage& image, const QString& file) {
  constexpr int kSmallest = 0;
  if (!image.save(file, "PNG", kSmallest)) qFatal("Cannot write %s", qPrintable(file));
}

}  // namespace

QString differenceFromPicture(const QString& name, const QImage& actual, const Tolerance& tolerance) {
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
    panels.append(difference.image);
    reason = QStringLiteral("%1 pixels are off by more than %2 levels, by up to %3")
                 .arg(QString::number(difference.pixels), QString::number(tolerance.levels),
                      QString::number(difference.worst));
  }
  if (!QDir().mkpath(QStringLiteral(PICTURE_REPORTS))) qFatal("Cannot make a folder");
  const QString report = QStringLiteral(PICTURE_REPORTS "/%1-%2.png").arg(name, QGuiApplication::platformName());
  save(joined(panels, Qt::Horizontal), report);
  return QStringLiteral("%1: %2; expected, actual and difference: %3").arg(name, reason, report);
}

QImage joined(const QList<QImage>& images, Qt::Orientation orientation) {
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

}  // namespace lumagrid
