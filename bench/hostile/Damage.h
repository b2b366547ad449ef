#pragma once

#include <QByteArray>
#include <cstdint>

namespace lumagrid {

// The content of a picture file with one to three damages: bytes flipped, cut short, blocks swapped, a number that may
// be a length enlarged. The same for the same `seed`, on every machine. Any thread.
[[nodiscard]] QByteArray damaged(QByteArray content, std::uint64_t seed);

}  // namespace lumagrid
