#pragma once

#include <cstdint>

namespace lumagrid {

// What a decoder may use, in bytes.
struct DecoderLimits {
  std::int64_t freeMemory;  // on top of what the process has when it is locked in
  std::int64_t mostMemory;  // that its limit can be raised to from outside
};

// Leaves this process nothing but its memory, its threads, what it has open to read, and the socket `socket`: no file,
// no folder, no network, no other process, no program, no code that was not loaded before. What is not allowed fails
// with EPERM. For a process with one thread; there is no way back. Returns a set of Protection that this system does
// not give; whatever else it gives is in force then. `unwanted` is a set of those to leave out, for tests.
[[nodiscard]] std::uint32_t lockIn(int socket, const DecoderLimits& limits, std::uint32_t unwanted = 0);

// The address space of this process, with room for threads and for what the C library does not give
// back, in bytes; 0 when the system does not tell.
[[nodiscard]] std::int64_t usedAddressSpace();

}  // namespace lumagrid
