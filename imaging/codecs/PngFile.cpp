#include "PngFile.h"

#include <zlib.h>

#include <QtEndian>
#include <limits>

#include "ExifOrientation.h"
#include "IccProfile.h"

namespace lumagrid {
namespace {

constexpr qsizetype kSignatureBytes = 8;
constexpr qsizetype kLengthAndName = 8;
constexpr qsizetype kChecksum = 4;

std::uint32_t numberAt(QByteArrayView bytes, qsizetype at) {
  return qFromBigEndian<std::uint32_t>(bytes.data() + at);
}

// Unpacks a zlib stream; empty when it is damaged or gives more than a profile may have.
QByteArray inflated(QByteArrayView packed) {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) return {};
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  QByteArray unpacked;
  int status = Z_OK;
  while (status == Z_OK && unpacked.size() < kLargestProfileBytes) {
    char part[16384];
    stream.next_out = reinterpret_cast<Bytef*>(part);
    stream.avail_out = sizeof(part);
    status = inflate(&stream, Z_NO_FLUSH);
    unpacked.append(part, static_cast<qsizetype>(sizeof(part) - stream.avail_out));
  }
  inflateEnd(&stream);
  return status == Z_STREAM_END ? unpacked : QByteArray();
}

// "name", a zero byte, the method (0: zlib), the packed profile.
QByteArray profileOfChunk(QByteArrayView chunk) {
  const qsizetype nameEnd = chunk.indexOf('\0');
  if (nameEnd < 0 || nameEnd + 2 >= chunk.size() || chunk[nameEnd + 1] != 0) return {};
  return inflated(chunk.sliced(nameEnd + 2));
}

GammaColors gammaColors(QByteArrayView gama, QByteArrayView chrm) {
  constexpr double kUnit = 100000;
  GammaColors colors;
  if (const std::uint32_t inverse = numberAt(gama, 0); inverse > 0) colors.gamma = kUnit / inverse;
  if (chrm.size() < 32) return colors;
  for (size_t index = 0; index < colors.chromaticities.size(); ++index) {
    colors.chromaticities[index] = numberAt(chrm, static_cast<qsizetype>(index) * 4) / kUnit;
  }
  return colors;
}

// The chunks beside the pixels, each as it comes first. Empty where the file has none.
struct Chunks {
  QByteArrayView ihdr, plte, trns, cicp, iccp, srgb, gama, chrm, phys, exif;

  QByteArrayView* named(QByteArrayView name) {
    const std::pair<QByteArrayView, QByteArrayView*> all[] = {
        {"IHDR", &ihdr}, {"PLTE", &plte}, {"tRNS", &trns}, {"cICP", &cicp}, {"iCCP", &iccp},
        {"sRGB", &srgb}, {"gAMA", &gama}, {"cHRM", &chrm}, {"pHYs", &phys}, {"eXIf", &exif}};
    for (const auto& [known, chunk] : all) {
      if (name == known) return chunk;
    }
    return nullptr;
  }
};

// The chunk that says it best counts alone: code points, a profile, sRGB, a gamma.
QByteArray profileOf(const Chunks& chunks) {
  constexpr char kFullRangeRgb[] = {0, 1};
  if (chunks.cicp.size() == 4 && chunks.cicp.sliced(2) == QByteArrayView(kFullRangeRgb, 2)) {
    return iccProfileOf(CicpColors{static_cast<uchar>(chunks.cicp[0]), static_cast<uchar>(chunks.cicp[1])});
  }
  if (QByteArray profile = profileOfChunk(chunks.iccp); !profile.isEmpty()) return profile;
  if (!chunks.srgb.isEmpty() || chunks.gama.size() < 4) return {};
  return iccProfileOf(gammaColors(chunks.gama, chunks.chrm));
}

PictureMetadata metadataOf(const Chunks& chunks) {
  PictureMetadata metadata;
  metadata.iccProfile = profileOf(chunks);
  if (chunks.phys.size() >= 8) metadata.pixelAspect = pixelAspectOf(numberAt(chunks.phys, 0), numberAt(chunks.phys, 4));
  metadata.orientation = exifOrientationOfBlock(chunks.exif);
  return metadata;
}

void appendChunkHeader(QByteArray& head, const char* name, qsizetype length) {
  char bytes[4];
  qToBigEndian(static_cast<std::uint32_t>(length), bytes);
  head.append(bytes, 4).append(name, 4);
}

void appendChunk(QByteArray& head, const char* name, QByteArrayView content) {
  if (content.isEmpty()) return;
  appendChunkHeader(head, name, content.size());
  head.append(content.data(), content.size()).append(kChecksum, '\0');
}

// A wrong checksum here makes noise of all that follows.
bool isHeaderSound(QByteArrayView bytes, QByteArrayView ihdr) {
  if (ihdr.size() != 13) return false;
  const char* const name = ihdr.data() - 4;
  if (ihdr.data() + ihdr.size() + kChecksum > bytes.data() + bytes.size()) return false;
  return crc32(0, reinterpret_cast<const Bytef*>(name), 4 + 13) == numberAt(ihdr, 0 + 13);
}

}  // namespace

std::optional<PngFile> pngFile(QByteArrayView bytes) {
  constexpr qsizetype kLongestChunk = std::numeric_limits<std::int32_t>::max();
  PngFile file;
  Chunks chunks;
  for (qsizetype at = kSignatureBytes; at + kLengthAndName <= bytes.size();) {
    const qsizetype length = numberAt(bytes, at);
    const QByteArrayView name = bytes.sliced(at + 4, 4);
    at += kLengthAndName;
    const QByteArrayView content = bytes.sliced(at, std::min(length, bytes.size() - at));
    if (name == QByteArrayView("IDAT")) {
      if (content.size() > kLongestChunk - file.dataBytes) break;
      file.pieces.push_back(content);
      file.dataBytes += content.size();
    } else if (name == QByteArrayView("IEND") || content.size() < length) {
      break;
    } else if (QByteArrayView* chunk = chunks.named(name); chunk != nullptr && chunk->isEmpty()) {
      *chunk = content;
    }
    at += length + kChecksum;
  }
  if (!isHeaderSound(bytes, chunks.ihdr) || file.dataBytes == 0) return std::nullopt;
  file.metadata = metadataOf(chunks);

  static constexpr char kTail[] = "\0\0\0\0\0\0\0\0IEND\0\0\0\0";  // after the last chunk's checksum
  constexpr qsizetype kColorTypeAt = 9;
  constexpr char kPalette = 3;  // other pictures may have one as a proposal, which leads decoders astray
  file.head = bytes.first(kSignatureBytes).toByteArray();
  appendChunk(file.head, "IHDR", chunks.ihdr);
  if (chunks.ihdr[kColorTypeAt] == kPalette) appendChunk(file.head, "PLTE", chunks.plte);
  appendChunk(file.head, "tRNS", chunks.trns);
  appendChunkHeader(file.head, "IDAT", file.dataBytes);
  file.pieces.emplace_back(kTail, sizeof(kTail) - 1);
  return file;
}

}  // namespace lumagrid
