#include <map>

#include "ExifOrientation.h"
#include "JpegSegments.h"
#include "PictureMetadata.h"

namespace lumagrid {
namespace {

// The profile cut over several segments, each with its number and their count. Damaged numbering: no profile.
class ProfileChunks {
 public:
  void add(QByteArrayView segment) {
    constexpr QByteArrayView kName("ICC_PROFILE\0", 12);
    if (!segment.startsWith(kName) || segment.size() < kName.size() + 2) return;
    const auto number = static_cast<unsigned char>(segment[kName.size()]);
    const auto count = static_cast<unsigned char>(segment[kName.size() + 1]);
    m_isDamaged = m_isDamaged || number < 1 || number > count || (m_count != 0 && m_count != count);
    m_count = count;
    m_isDamaged = !m_chunks.emplace(number, segment.sliced(kName.size() + 2)).second || m_isDamaged;
  }

  [[nodiscard]] QByteArray profile() const {
    if (m_isDamaged || m_chunks.size() != m_count) return {};
    QByteArray joined;
    for (const auto& [number, chunk] : m_chunks) joined += chunk;
    return joined;
  }

 private:
  std::map<unsigned char, QByteArrayView> m_chunks;
  size_t m_count = 0;
  bool m_isDamaged = false;
};

}  // namespace

JpegMetadata jpegMetadata(QByteArrayView file) {
  JpegMetadata metadata;
  ProfileChunks profileChunks;
  bool hasExif = false;
  qsizetype at = 2;
  while (at + 4 <= file.size()) {
    if (byteAt(file, at) != 0xff) {  // stray bytes between segments
      ++at;
      continue;
    }
    const int marker = byteAt(file, at + 1);
    if (marker == 0xff) {  // padding
      ++at;
      continue;
    }
    if (marker == 0 || marker == 1 || (marker >= kRestart0 && marker < kEndOfImage)) {  // without a length
      at += 2;
      continue;
    }
    if (marker == kStartOfScan || marker == kEndOfImage) break;
    const qsizetype length = wordAt(file, at + 2);
    if (length < 2 || at + 2 + length > file.size()) break;
    const QByteArrayView segment = file.sliced(at + 4, length - 2);
    if (isJpegFrame(marker) && segment.size() >= 6 && metadata.size.isEmpty()) {
      metadata.size = QSize(wordAt(segment, 3), wordAt(segment, 1));
      metadata.componentCount = byteAt(segment, 5);
    } else if (marker == kApp0 && segment.size() >= 12 && segment.startsWith(QByteArrayView("JFIF\0", 5))) {
      metadata.pixelAspect = pixelAspectOf(wordAt(segment, 8), wordAt(segment, 10));
    } else if (marker == kApp1 && !hasExif && segment.startsWith(QByteArrayView("Exif\0", 5))) {
      hasExif = true;
      metadata.orientation = exifOrientationOfBlock(segment);
    } else if (marker == kApp2) {
      profileChunks.add(segment);
    } else if (marker == kApp14 && segment.startsWith("Adobe")) {
      metadata.hasAdobeMarker = true;
    }
    at += 2 + length;
  }
  metadata.iccProfile = profileChunks.profile();
  return metadata;
}

}  // namespace lumagrid
