#include "DecoderServer.h"

#include <malloc.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>

#include "FileImageDecoder.h"
#include "Messages.h"
#include "SharedMemory.h"

namespace lumagrid {

namespace {

// Where the window finds the picture; copies it into a buffer when it is not made in one.
DecoderAnswer placed(const QImage& pixels, SharedMemory& memory) {
  DecoderAnswer answer;
  answer.width = pixels.width();
  answer.height = pixels.height();
  answer.isOpaque = pixels.format() == QImage::Format_RGBX8888 ? 1 : 0;
  const qsizetype rowBytes = qsizetype{pixels.width()} * 4;
  const qsizetype bytes = rowBytes * pixels.height();
  if (const auto* buffer = memory.bufferAt(pixels.constBits());
      buffer != nullptr && pixels.bytesPerLine() == rowBytes) {
    answer.buffer = buffer->number;
    return answer;
  }
  SharedMemory::Buffer target = memory.small();
  if (bytes > target.bytes) {
    void* const allocated = memory.allocate(static_cast<std::size_t>(bytes));
    const auto* buffer = memory.bufferAt(allocated);
    if (buffer == nullptr) {
      memory.release(allocated);
      answer.error = static_cast<std::uint32_t>(ImageError::tooLarge);
      return answer;
    }
    target = *buffer;
  }
  for (int y = 0; y < pixels.height(); ++y) {
    std::copy_n(pixels.constScanLine(y), rowBytes, static_cast<uchar*>(target.memory) + y * rowBytes);
  }
  answer.buffer = target.number;
  return answer;
}

DecoderAnswer decode(const DecoderRequest& request, const FileDescriptor& file, SharedMemory& memory) {
  memory.beginPicture();
  const DecodedImage image = FileImageDecoder::decodeOpenFile(file.number(), request.bytes, request.bound);
  if (image.error == ImageError::none) return placed(image.pixels, memory);
  DecoderAnswer answer;
  answer.error = static_cast<std::uint32_t>(image.error);
  return answer;
}

// Waits for a message; meanwhile, what is not used for some seconds is given back to the system.
void waitForWork(int socket, SharedMemory& memory) {
  constexpr int kIdleMs = 3000;
  pollfd wanted{socket, POLLIN, 0};
  if (::poll(&wanted, 1, kIdleMs) != 0) return;
  ::malloc_trim(0);
  memory.rest();
  while (::poll(&wanted, 1, -1) < 0) continue;
}

}  // namespace

void serveWindow(int socket, const DecoderLimits& limits) {
  DecoderAnswer ready;
  ready.kind = DecoderAnswer::Kind::ready;
  ready.process = ::getpid();
  ready.bytes = usedAddressSpace();
  ready.missingProtections = lockIn(socket, limits);
  if (sendMessage(socket, ready)) answerRequests(socket, limits.freeMemory);
}

void answerRequests(int socket, std::int64_t freeMemory) {
  SharedMemory memory(socket, freeMemory);
  setPictureMemory(memory);
  while (true) {
    waitForWork(socket, memory);
    const auto received = receiveMessage<DecoderRequest>(socket);
    if (!received) return;
    const DecoderRequest& request = received->message;
    switch (request.kind) {
      case DecoderRequest::Kind::decode:
        if (!sendMessage(socket, decode(request, received->descriptor, memory))) return;
        if (memory.isLarge()) ::malloc_trim(0);  // its address space is limited
        break;
      case DecoderRequest::Kind::pixels:
        if (!memory.add(request, received->descriptor)) return;
        break;
      case DecoderRequest::Kind::forget:
        memory.remove(request.buffer);
        break;
      case DecoderRequest::Kind::memory:
      case DecoderRequest::Kind::refuse:
        return;  // nothing was asked
    }
  }
}

}  // namespace lumagrid
