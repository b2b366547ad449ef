#include "Messages.h"

#include <sys/socket.h>

#include <cstring>
#include <type_traits>

namespace lumagrid {

namespace {

// Room for one descriptor beside a message.
union Ancillary {
  cmsghdr header;
  char bytes[CMSG_SPACE(sizeof(int))];
};

template <typename Call>
ssize_t uninterrupted(const Call& call) {
  ssize_t result = 0;
  do {
    result = call();
  } while (result < 0 && errno == EINTR);
  return result;
}

FileDescriptor descriptorIn(const msghdr& message) {
  const cmsghdr* const header = CMSG_FIRSTHDR(&message);
  int number = -1;
  if (header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS &&
      header->cmsg_len == CMSG_LEN(sizeof number)) {
    std::memcpy(&number, CMSG_DATA(header), sizeof number);
  }
  return FileDescriptor::from([number] { return errno = EBADF, number; });
}

}  // namespace

template <typename Message>
bool sendMessage(int socket, const Message& message, int descriptor) {
  // Whoever lets a hundred messages pile up does not deserve to be waited for.
  constexpr int kFlags = MSG_NOSIGNAL | MSG_DONTWAIT;
  Message copy = message;  // the system's interface takes what it could write to
  iovec part{&copy, sizeof copy};
  Ancillary ancillary{};
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  if (descriptor >= 0) {
    head.msg_control = ancillary.bytes;
    head.msg_controllen = sizeof ancillary.bytes;
    cmsghdr* const header = CMSG_FIRSTHDR(&head);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof descriptor);
    std::memcpy(CMSG_DATA(header), &descriptor, sizeof descriptor);
  }
  return uninterrupted([&] { return ::sendmsg(socket, &head, kFlags); }) == ssize_t{sizeof copy};
}

template <typename Message>
std::optional<ReceivedMessage<Message>> receiveMessage(int socket) {
  Message message;
  iovec part{&message, sizeof message};
  Ancillary ancillary{};
  msghdr head{};
  head.msg_iov = &part;
  head.msg_iovlen = 1;
  // A decoder has none to give: what it sends is dropped by the system, and told by MSG_CTRUNC.
  if constexpr (!std::is_same_v<Message, DecoderAnswer>) {
    head.msg_control = ancillary.bytes;
    head.msg_controllen = sizeof ancillary.bytes;
  }
  const ssize_t count = uninterrupted([&] { return ::recvmsg(socket, &head, MSG_CMSG_CLOEXEC); });
  if (count < 0) return std::nullopt;
  FileDescriptor descriptor = descriptorIn(head);
  if (count != ssize_t{sizeof message} || (head.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0) return std::nullopt;
  return ReceivedMessage<Message>{message, std::move(descriptor)};
}

SocketPair socketPair() {
  int numbers[2] = {-1, -1};
  if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, numbers) != 0) numbers[0] = numbers[1] = -1;
  const auto owned = [](int number) { return FileDescriptor::from([number] { return errno = EMFILE, number; }); };
  return {owned(numbers[0]), owned(numbers[1])};
}

template bool sendMessage(int, const DecoderRequest&, int);
template bool sendMessage(int, const DecoderAnswer&, int);
template bool sendMessage(int, const ForkRequest&, int);
template bool sendMessage(int, const ForkAnswer&, int);
template std::optional<ReceivedMessage<DecoderRequest>> receiveMessage(int);
template std::optional<ReceivedMessage<DecoderAnswer>> receiveMessage(int);
template std::optional<ReceivedMessage<ForkRequest>> receiveMessage(int);
template std::optional<ReceivedMessage<ForkAnswer>> receiveMessage(int);

}  // namespace lumagrid
