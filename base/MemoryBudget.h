#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace lumagrid {

// The memory of this machine, in bytes; nothing when the system does not tell.
[[nodiscard]] std::optional<std::int64_t> machineMemory();

// What the system could give now without taking it from others, in bytes; nothing when it does not tell.
[[nodiscard]] std::optional<std::int64_t> availableMemory();

// What the process keeps in memory so that it need not be made again, in bytes: an eighth of the machine's memory, and
// at most three pictures of 24 megapixels with the thumbnails of some screens.
[[nodiscard]] std::size_t keptBytes();

// What all decoders together may use while they work, in bytes: with what is kept, a quarter of the machine's memory,
// and 8 GiB at most. Each of `decoders` has `unaskedEach`; the rest is claimed for single pictures.
struct DecodingBudget {
  std::int64_t unaskedEach;
  std::int64_t claimed;
};
[[nodiscard]] DecodingBudget decodingBudget(int decoders);

}  // namespace lumagrid
