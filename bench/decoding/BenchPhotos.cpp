#include "BenchPhotos.h"

#include <lcms2.h>
#include <turbojpeg.h>

#include <QDir>
#include <QFile>
#include <QtEndian>
#include <algorithm>
#include <cmath>
#include <ctime>
#include <random>

namespace lumagrid {
namespace {

// Gradients, edges and fine texture, each stronger in some parts than in others, as in a landscape.
QByteArray madePhoto(int subsampling, int flags = 0) {
  constexpr int kWidth = 6000;
  constexpr int kHeight = 4000;
  constexpr int kQuality = 85;
  std::vector<unsigned char> pixels(size_t{kWidth} * kHeight * 3);
  std::minstd_rand random(5);
  for (int y = 0; y < kHeight; ++y) {
    const float sky = 200.0F - 120.0F * static_cast<float>(y) / kHeight;
    for (int x = 0; x < kWidth; ++x) {
      const float region = 0.5F + 0.5F * std::sin(static_cast<float>(x) * 0.0013F + static_cast<float>(y) * 0.0021F);
      const float edge = ((x / 170 + y / 130) % 3 == 0 ? 30.0F : 0.0F) * region;
      const float wave = 18.0F * std::sin(static_cast<float>(x * 3 + y * 5) * 0.11F) * region;
      const float noise = (static_cast<float>(random() % 256) - 128.0F) * 0.22F * region * region;
      const float light = sky - edge + wave + noise;
      unsigned char* pixel = pixels.data() + (size_t{kWidth} * static_cast<size_t>(y) + static_cast<size_t>(x)) * 3;
      const float tints[3] = {region * 40.0F - 20.0F, 0.0F, 25.0F - region * 50.0F};
      for (int channel = 0; channel < 3; ++channel) {
        pixel[channel] = static_cast<unsigned char>(std::clamp(light + tints[channel], 0.0F, 255.0F));
      }
    }
  }
  void* const handle = tjInitCompress();
  unsigned char* written = nullptr;
  unsigned long size = 0;
  tjCompress2(handle, pixels.data(), kWidth, 0, kHeight, TJPF_RGB, &written, &size, subsampling, kQuality, flags);
  QByteArray bytes(reinterpret_cast<const char*>(written), static_cast<qsizetype>(size));
  tjFree(written);
  tjDestroy(handle);
  return bytes;
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
    photos.push_back({"made, colour halved", madePhoto(TJSAMP_420)});
    photos.push_back({"made, full colour", madePhoto(TJSAMP_444)});
    photos.push_back({"made, progressive", madePhoto(TJSAMP_420, TJFLAG_PROGRESSIVE)});
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

}  // namespace lumagrid
