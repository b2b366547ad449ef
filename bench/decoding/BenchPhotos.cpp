#include "BenchPhotos.h"

#include <lcms2.h>

#include <QDir>
#include <QFile>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <ctime>
#include <random>

#include "Figures.h"
#include "SamplePictures.h"

namespace lumagrid {
namespace {

// Gradients, edges and fine texture, each stronger in some parts than in others, as in a landscape.
QImage madePicture() {
  constexpr int kWidth = 6000;
  constexpr int kHeight = 4000;
  QImage picture(kWidth, kHeight, QImage::Format_RGBX8888);
  std::minstd_rand random(5);
  for (int y = 0; y < kHeight; ++y) {
    uchar* pixel = picture.scanLine(y);
    const float sky = 200.0F - 120.0F * static_cast<float>(y) / kHeight;
    for (int x = 0; x < kWidth; ++x) {
      const float region = 0.5F + 0.5F * std::sin(static_cast<float>(x) * 0.0013F + static_cast<float>(y) * 0.0021F);
      const float edge = ((x / 170 + y / 130) % 3 == 0 ? 30.0F : 0.0F) * region;
      const float wave = 18.0F * std::sin(static_cast<float>(x * 3 + y * 5) * 0.11F) * region;
      const float noise = (static_cast<float>(random() % 256) - 128.0F) * 0.22F * region * region;
      const float light = sky - edge + wave + noise;
      const float tints[3] = {region * 40.0F - 20.0F, 0.0F, 25.0F - region * 50.0F};
      for (int channel = 0; channel < 3; ++channel) {
        *pixel++ = static_cast<uchar>(std::clamp(light + tints[channel], 0.0F, 255.0F));
      }
      *pixel++ = 255;
    }
  }
  return picture;
}

}  // namespace

std::vector<BenchPhoto> benchPhotos() {
  std::vector<BenchPhoto> photos;
  const QString folder = qEnvironmentVariable("LUMAGRID_BENCH_PHOTOS");
  if (!folder.isEmpty()) {
    const QStringList patterns = {QStringLiteral("*.jpg"), QStringLiteral("*.jpeg")};
    for (const QFileInfo& info : QDir(folder).entryInfoList(patterns, QDir::Files, QDir::Name)) {
      QFile file(info.filePath());
      if (file.open(QIODevice::ReadOnly)) photos.push_back({info.fileName().toStdString(), file.readAll()});
    }
  }
  if (photos.empty()) {
    const QImage picture = madePicture();
    const auto add = [&](const char* name, samples::JpegSpec spec) {
      spec.quality = 85;
      photos.push_back({name, samples::jpeg(picture, spec)});
    };
    add("made, color halved", {});
    add("made, full color", {.sampling = {{1, 1}, {1, 1}, {1, 1}}});
    add("made, progressive", {.coding = &jpeg_simple_progression});
    add("made, with restarts", {.restartInterval = 375});  // after each row of MCUs
  }
  return photos;
}

QByteArray withWideGamut(const QByteArray& jpeg) {
  const cmsCIExyY white = {0.3127, 0.3290, 1};
  const cmsCIExyYTRIPLE primaries = {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
  const cmsFloat64Number srgb[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  cmsToneCurve* const curve = cmsBuildParametricToneCurve(nullptr, 4, srgb);
  cmsToneCurve* const curves[3] = {curve, curve, curve};
  cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  QByteArray content("ICC_PROFILE\0\1\1", 14);
  const qsizetype head = content.size();
  content.resize(head + static_cast<qsizetype>(size));
  cmsSaveProfileToMem(profile, content.data() + head, &size);
  cmsCloseProfile(profile);
  cmsFreeToneCurve(curve);
  QByteArray segment("\xff\xe2\0\0", 4);
  qToBigEndian(static_cast<quint16>(content.size() + 2), segment.data() + 2);
  return QByteArray(jpeg).insert(2, segment + content);
}

Times timesSoFar() {
  const auto milliseconds = [](clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  };
  return {milliseconds(CLOCK_PROCESS_CPUTIME_ID), milliseconds(CLOCK_MONOTONIC)};
}

Times median(const std::vector<Times>& times) {
  const auto middleOf = [&times](double Times::*kind) {
    std::vector<double> values;
    values.reserve(times.size());
    for (const Times& one : times) values.push_back(one.*kind);
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  };
  return {middleOf(&Times::processor), middleOf(&Times::clock)};
}

void report(const std::string& name, const std::string& referenceName, const std::vector<Comparison>& photos) {
  if (photos.empty()) return;
  const auto sorted = [&photos](const auto& valueOf) {
    std::vector<double> values(photos.size());
    std::transform(photos.begin(), photos.end(), values.begin(), valueOf);
    std::sort(values.begin(), values.end());
    return values;
  };
  const auto middle = photos.size() / 2;
  const auto reportOne = [&](double Times::*kind, const char* of, const char* meaning) {
    const auto ours = sorted([kind](const Comparison& photo) { return photo.ours.*kind; });
    const auto reference = sorted([kind](const Comparison& photo) { return photo.reference.*kind; });
    const auto ratios = sorted([kind](const Comparison& photo) { return photo.ours.*kind / photo.reference.*kind; });
    report(Figure{name + of, milliseconds(ours[middle]), referenceName + " " + milliseconds(reference[middle]),
                  ratio(ratios.front()) + "  " + ratio(ratios[middle]) + "  " + ratio(ratios.back()), meaning});
  };
  if (photos.front().reference.processor > 0) {
    reportOne(&Times::processor, ", processor", "least, median and largest ratio of the photos; what a photo costs");
  }
  reportOne(&Times::clock, ", clock", "the same ratios of what one waits; below the processor's: cores side by side");
}

}  // namespace lumagrid
