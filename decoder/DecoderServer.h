#pragma once

#include <cstdint>

#include "Sandbox.h"

namespace lumagrid {

// The life of one decoder: locks itself in, then decodes what the window asks for over `socket`, one picture after the
// other, until nobody is there any more. For a process of its own with one thread, in which prepareCodecs() was called.
void serveWindow(int socket, const DecoderLimits& limits);

// The same once it is locked in, with `freeMemory` bytes that it may use unasked.
void answerRequests(int socket, std::int64_t freeMemory);

}  // namespace lumagrid
