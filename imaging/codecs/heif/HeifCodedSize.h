#pragma once

#include <QByteArrayView>
#include <optional>

namespace lumagrid {

// The largest picture that a coded item can make its decoder allocate, whatever the boxes around it say.
struct HeifCodedSize {
  std::int64_t width = 0;  // in pixels, as the sequence headers promise
  std::int64_t height = 0;
  std::int64_t widthInReach = 0;  // what single frames may ask for instead
  std::int64_t heightInReach = 0;
  int bits = 8;              // of a sample
  bool isSubsampled = true;  // the chroma planes have half of the samples each way
};

// From all sequence headers and frames of `data` and those of its `configuration` (the contents of av1C and hvcC).
// Nothing when there is no sequence header, or one that breaks off.
[[nodiscard]] std::optional<HeifCodedSize> av1CodedSize(QByteArrayView configuration, QByteArrayView data);
[[nodiscard]] std::optional<HeifCodedSize> hevcCodedSize(QByteArrayView configuration, QByteArrayView data);

}  // namespace lumagrid
