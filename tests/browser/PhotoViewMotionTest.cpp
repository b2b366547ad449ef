#include "PhotoViewMotion.h"

#include <QTest>
#include <cmath>
#include <numbers>

using namespace lumagrid;
using Curve = PhotoViewMotion::Curve;

namespace {

constexpr double kStep = 0.001;  // seconds
const PhotoPlacement kZoomed{4, {300, -200}};
const PhotoPlacement kFitted{};

}  // namespace

class PhotoViewMotionTest : public QObject {
  Q_OBJECT

 private Q_SLOTS:
  void arrives() {
    for (const auto& [curve, longest] : {std::pair(Curve::Spring, 0.8), std::pair(Curve::EaseOut, 0.12)}) {
      const PhotoViewMotion motion(curve, kZoomed, kFitted);
      QVERIFY(motion.duration() > 0 && motion.duration() <= longest);
      QCOMPARE(motion.at(0), kZoomed);
      QCOMPARE(motion.at(motion.duration()), kFitted);
      // The last step cannot be seen.
      const PhotoPlacement nearly = motion.at(motion.duration() - kStep / 10);
      QVERIFY(std::abs(nearly.scale - 1) < 0.001 && std::hypot(nearly.offset.x(), nearly.offset.y()) < 0.5);
    }
    QCOMPARE(PhotoViewMotion(Curve::EaseOut, kZoomed, kFitted).at(0.06).scale, 1.75);  // three quarters at half time
    const PhotoViewMotion arrived(Curve::Spring, kZoomed, kFitted);
    QCOMPARE(arrived.retargeted(Curve::EaseOut, kFitted, 10).duration(), 0.0);
  }

  void springPassesItsTargetOnceToSee() {
    const PhotoViewMotion motion(Curve::Spring, kZoomed, kFitted);
    // Monotone down to the first turn, which lies below the target by e^(-pi z / sqrt(1 - z^2)) of the way, z = 0.8.
    const double expected = 3 * std::exp(-std::numbers::pi * 0.8 / 0.6);
    double seconds = 0;
    while (motion.at(seconds + kStep).scale < motion.at(seconds).scale) seconds += kStep;
    QVERIFY(std::abs((1 - motion.at(seconds).scale) - expected) < 0.001);
    // Half a damped period: pi / (w sqrt(1 - z^2)), w = 2 pi / 0.3 s.
    QVERIFY(std::abs(seconds - 0.25) < 2 * kStep);
    for (; seconds < motion.duration(); seconds += kStep) {
      QVERIFY(std::abs(motion.at(seconds).scale - 1) < expected + 1e-9);
    }
  }

  void newTargetKeepsPlaceAndSpeed() {
    const PhotoViewMotion first(Curve::Spring, kZoomed, kFitted);
    for (const double seconds : {0.02, 0.1, 0.3}) {
      const PhotoViewMotion second = first.retargeted(Curve::Spring, {2, {-50, 70}}, seconds);
      QVERIFY(std::abs(second.at(0).scale - first.at(seconds).scale) < 1e-9);
      constexpr double kMoment = 1e-5;
      const double before = (first.at(seconds).scale - first.at(seconds - kMoment).scale) / kMoment;
      const double after = (second.at(kMoment).scale - second.at(0).scale) / kMoment;
      QVERIFY2(std::abs(after - before) < 0.05, qPrintable(QStringLiteral("%1 %2").arg(before).arg(after)));
      QCOMPARE(second.at(second.duration()), (PhotoPlacement{2, {-50, 70}}));
    }
  }
};

QTEST_APPLESS_MAIN(PhotoViewMotionTest)
#include "PhotoViewMotionTest.moc"
