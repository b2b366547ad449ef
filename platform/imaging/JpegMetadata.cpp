#include <QtEndian>
#include <map>

#include "ExifOrientation.h"
#include "PictureMetadata.h"

namespace lumagrid {
namespace {

enum Marker : unsigned char {
  kStartOfFrame0 = 0xc0,
  kDefineHuffman = 0xc4,
  kReservedFrame = 0xc8,
  kDefineArithmetic = 0xcc,
  kStartOfFrame15 = 0xcf,
  kRestart0 = 0xd0,
  kEndOfImage = 0xd9,
  kStartOfScan = 0xda,
  kApp0 = 0xe0,
  kApp1 = 0xe1,
  kApp2 = 0xe2,
  kApp14 = 0xee,
};

bool isFrameHeader(unsigned char marker) {
  return marker >= kStartOfFrame0 && marker <= kStartOfFrame15 && marker != kDefineHuffman &&
         marker != kReservedFrame && marker != kDefineArithmetic;
}

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
    if (static_cast<unsigned char>(file[at]) != 0xff) {  // stray bytes between segments
      ++at;
      continue;
    }
    const auto marker = static_cast<unsigned char>(file[at + 1]);
    if (marker == 0xff) {  // padding
      ++at;
      continue;
    }
    if (marker == 0 || marker == 1 || (marker >= kRestart0 && marker < kEndOfImage)) {  // without a length
      at += 2;
      continue;
    }
    if (marker == kStartOfScan || marker == kEndOfImage) break;
    const qsizetype length = qFromBigEndian<quint16>(file.data() + at + 2);
    if (length < 2 || at + 2 + length > file.size()) break;
    const QByteArrayView segment = file.sliced(at + 4, length - 2);
    if (isFrameHeader(marker) && segment.size() >= 6 && metadata.size.isEmpty()) {
      metadata.size = QSize(qFromBigEndian<quint16>(segment.data() + 3), qFromBigEndian<quint16>(segment.data() + 1));
      metadata.componentCount = static_cast<unsigned char>(segment[5]);
    } else if (marker == kApp0 && segment.size() >= 12 && segment.startsWith(QByteArrayView("JFIF\0", 5))) {
      metadata.pixelAspect =
          pixelAspectOf(qFromBigEndian<quint16>(segment.data() + 8), qFromBigEndian<quint16>(segment.data() + 10));
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
