#pragma once

#include <cstdint>
#include <optional>

#include "FileDescriptor.h"

// What the window's process and a decoder's say to each other, over a socket that keeps messages apart
// (SOCK_SEQPACKET). Each message has one fixed size; any other size, and any value that is not listed, is an answer of
// nobody's.
namespace lumagrid {

// To a decoder.
struct DecoderRequest {
  enum class Kind : std::uint32_t {
    decode,  // the file that comes along as a descriptor
    pixels,  // the buffer that was asked for: number, size, and when the decoder has not mapped it yet, its descriptor
    memory,  // the memory that was asked for may be used
    refuse,  // what was asked for is not to be had
    forget,  // the buffer is not used any more
  };
  Kind kind = Kind::refuse;
  std::int32_t buffer = -1;
  std::int64_t bytes = 0;  // of the file, of the buffer
  std::int64_t bound = 0;  // of the longer side, in pixels; 0: the whole picture
};

// From a decoder.
struct DecoderAnswer {
  enum class Kind : std::uint32_t {
    ready,   // first of all: the sandbox stands. `bytes` of address space are in use
    memory,  // may `bytes` be used until the answer?
    pixels,  // a buffer of `bytes` is needed
    done,    // the picture is in the buffer, or there is an error
  };
  Kind kind = Kind::done;
  std::uint32_t error = 0;  // an ImageError
  std::int64_t bytes = 0;
  std::int32_t buffer = -1;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::uint32_t isOpaque = 0;            // 1: RGBX8888, 0: RGBA8888_Premultiplied
  std::int32_t process = 0;              // ready: its number
  std::uint32_t missingProtections = 0;  // ready: a set of Protection
};

// What keeps a decoder away from everything but the file that it was given.
enum class Protection : std::uint32_t { landlock = 1, seccomp = 2, limits = 4 };

// To the process that forks decoders, and back.
struct ForkRequest {
  enum class Kind : std::uint32_t {
    fork,  // a decoder on the socket that comes along
    reap,  // the decoder `process`, which has ended or is about to
  };
  Kind kind = Kind::fork;
  std::int32_t process = 0;
  std::int32_t niceness = 0;    // fork
  std::int64_t freeMemory = 0;  // fork: bytes that a decoder may use unasked
  std::int64_t mostMemory = 0;  // fork: and with whatever it is granted
};
struct ForkAnswer {
  std::int32_t status = 0;  // reap: as from waitpid()
};

// The first buffer that a decoder gets, unasked, is for small pictures, which are copied out of it.
inline constexpr std::int64_t kSmallBufferBytes = 4 << 20;

// One message, with a descriptor if one is given. Never blocks: false when nobody is there any more, or the other side
// does not read.
template <typename Message>
[[nodiscard]] bool sendMessage(int socket, const Message& message, int descriptor = -1);

template <typename Message>
struct ReceivedMessage {
  Message message;
  FileDescriptor descriptor;  // not open when none came along
};

// Waits for one message; nothing when the other side is gone, or what came is no such message.
template <typename Message>
[[nodiscard]] std::optional<ReceivedMessage<Message>> receiveMessage(int socket);

// Two connected sockets, closed in programs that are started.
struct SocketPair {
  FileDescriptor ours;
  FileDescriptor theirs;
};
[[nodiscard]] SocketPair socketPair();

}  // namespace lumagrid
