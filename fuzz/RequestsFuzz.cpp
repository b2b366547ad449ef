// What the window asks of a decoder: it answers, or ends. Each message that wants a descriptor gets one: a buffer, or
// the file of a picture that takes one.
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "DecoderServer.h"
#include "Messages.h"

using namespace lumagrid;

namespace {

FileDescriptor memory(std::int64_t bytes) {
  FileDescriptor made = FileDescriptor::from([] { return ::memfd_create("fuzz", MFD_CLOEXEC); });
  (void)::ftruncate(made.number(), std::clamp<std::int64_t>(bytes, 0, 16 << 20));
  return made;
}

// A BMP of 1500 x 1000 that sets not one pixel.
FileDescriptor picture() {
  constexpr char kFile[] =
      "BM\0\0\0\0\0\0\0\0\x3a\0\0\0\x28\0\0\0\xdc\5\0\0\xe8\3\0\0\1\0\x08\0\1\0\0\0\0\0\0\0"
      "\0\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\x28\x3c\xc8\0\0\1";
  FileDescriptor file = memory(0);
  (void)::pwrite(file.number(), kFile, sizeof kFile, 0);
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  SocketPair sockets = socketPair();
  DecoderRequest request;
  for (; size >= sizeof request; data += sizeof request, size -= sizeof request) {
    std::memcpy(&request, data, sizeof request);
    const bool isDecode = request.kind == DecoderRequest::Kind::decode;
    const FileDescriptor descriptor = isDecode ? picture() : memory(request.bytes);
    if (!sendMessage(sockets.ours.number(), request, descriptor.number())) break;
  }
  (void)::send(sockets.ours.number(), data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
  ::shutdown(sockets.ours.number(), SHUT_WR);
  answerRequests(sockets.theirs.number(), 1 << 20);
  return 0;
}
