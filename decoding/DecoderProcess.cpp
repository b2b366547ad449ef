#include "DecoderProcess.h"

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <ctime>
#include <limits>
#include <utility>

#include "DecoderLauncher.h"

namespace lumagrid {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds kLongestStart(20'000);
constexpr milliseconds kLastMoments(100);  // between a process's last word and its end
constexpr std::size_t kMostBuffers = 8;    // for one picture

// Whether something arrives (or the other side goes) before `time` is over.
bool arrives(int socket, milliseconds time) {
  pollfd wanted{socket, POLLIN, 0};
  return ::poll(&wanted, 1, static_cast<int>(std::max<std::int64_t>(time.count(), 0))) > 0;
}

}  // namespace

DecoderProcess::DecoderProcess(const Shared& shared, FileDescriptor socket)
    : m_shared(shared), m_socket(std::move(socket)), m_small(SharedBuffer::make(kSmallBufferBytes)) {}

DecoderProcess::~DecoderProcess() {
  if (m_process != 0) (void)end(milliseconds(0));
}

DecoderProcess::Outcome DecoderProcess::decode(const Task& task) {
  if (m_process == 0 && !becomeReady()) return failed(End::killed);
  forgetLostBuffers();
  DecoderRequest request;
  request.kind = DecoderRequest::Kind::decode;
  request.bytes = task.bytes;
  request.bound = task.bound;
  if (!sendMessage(m_socket.number(), request, task.descriptor)) return failed(End::killed);

  Progress progress{task, Clock::now() + task.time, processorTime() + task.processorTime, {}};
  Outcome outcome = follow(progress);
  if (m_claimed > 0) {
    m_shared.claims.giveBack(std::exchange(m_claimed, 0));
    if (outcome.end == End::answered) limitMemory();
  }
  return outcome;
}

DecoderProcess::Outcome DecoderProcess::follow(Progress& progress) {
  while (true) {
    const auto answer = nextAnswer(progress);
    if (!answer) return failed(end(kLastMoments));
    bool isGoingOn = false;
    switch (answer->kind) {
      case DecoderAnswer::Kind::memory:
        isGoingOn = grantMemory(progress, answer->bytes);
        break;
      case DecoderAnswer::Kind::pixels:
        isGoingOn = grantPixels(progress, answer->bytes);
        break;
      case DecoderAnswer::Kind::done:
        if (auto image = imageOf(*answer, progress)) return {End::answered, *std::move(image)};
        break;
      case DecoderAnswer::Kind::ready:
        break;
    }
    if (!isGoingOn) return failed(End::failed);
  }
}

DecoderProcess::Outcome DecoderProcess::failed(End end) {
  return {m_isStopped ? End::killed : end, {{}, ImageError::damaged}};
}

bool DecoderProcess::becomeReady() {
  if (!m_small || !arrives(m_socket.number(), kLongestStart)) return false;
  const auto answer = receiveMessage<DecoderAnswer>(m_socket.number());
  if (!answer || answer->message.kind != DecoderAnswer::Kind::ready) return false;
  // It has read no file yet, so that it can be believed. Without a handle it could not be ended: it then goes with its
  // socket.
  const std::int32_t process = answer->message.process;
  m_processHandle.emplace(
      FileDescriptor::from([process] { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0U)); }));
  if (!m_processHandle->isOpen()) return false;
  m_process = process;
  m_addressSpace = answer->message.bytes;
  m_missingProtections = answer->message.missingProtections;
  return share(m_small);
}

// Nothing when it is gone, says nothing that is understood, or does not end in time: that one is killed.
std::optional<DecoderAnswer> DecoderProcess::nextAnswer(const Progress& progress) const {
  constexpr milliseconds kLookAgain(200);
  auto worked = processorTime();
  auto idleSince = Clock::now();
  while (!m_isStopped) {
    const auto left = std::chrono::duration_cast<milliseconds>(progress.end - Clock::now());
    if (arrives(m_socket.number(), std::min(left, kLookAgain))) {
      const auto answer = receiveMessage<DecoderAnswer>(m_socket.number());
      return answer ? std::optional(answer->message) : std::nullopt;
    }
    const auto soFar = processorTime();
    if (left <= milliseconds(0) || soFar > progress.processorEnd) break;
    if (std::exchange(worked, soFar) != soFar) idleSince = Clock::now();
    if (Clock::now() - idleSince > progress.task.idleTime) break;
  }
  return std::nullopt;
}

bool DecoderProcess::refuse() const {
  return sendMessage(m_socket.number(), DecoderRequest());
}

bool DecoderProcess::grantMemory(Progress& progress, std::int64_t bytes) {
  const auto whenShort = m_claimed == 0 ? MemoryClaims::WhenShort::wait : MemoryClaims::WhenShort::refuse;
  const auto begin = Clock::now();
  const bool isGranted = bytes > 0 && m_shared.claims.claim(bytes, progress.task.urgency, whenShort);
  progress.end += Clock::now() - begin;
  if (!isGranted) return refuse();
  m_claimed += bytes;
  limitMemory();
  DecoderRequest granted;
  granted.kind = DecoderRequest::Kind::memory;
  return sendMessage(m_socket.number(), granted);
}

bool DecoderProcess::grantPixels(Progress& progress, std::int64_t bytes) {
  const std::int64_t most = std::max(m_claimed, m_shared.freeMemory);
  std::int64_t granted = 0;
  for (const auto& buffer : progress.buffers) granted += buffer->bytes();
  if (bytes <= 0 || bytes > most - granted || progress.buffers.size() == kMostBuffers) return refuse();
  const auto buffer = m_shared.pixels.take(bytes);
  if (!buffer) return refuse();
  progress.buffers.push_back(buffer);
  return share(buffer);
}

bool DecoderProcess::share(const std::shared_ptr<SharedBuffer>& buffer) {
  const bool isNew = m_mapped.insert_or_assign(buffer->number(), Mapping{buffer, buffer->bytes()}).second;
  DecoderRequest request;
  request.kind = DecoderRequest::Kind::pixels;
  request.buffer = buffer->number();
  request.bytes = buffer->bytes();
  if (isNew) limitMemory();
  return sendMessage(m_socket.number(), request, isNew ? buffer->descriptor() : -1);
}

// Room for what it has mapped, and for what it may use.
void DecoderProcess::limitMemory() const {
  std::int64_t bytes = m_addressSpace + m_shared.freeMemory + m_claimed;
  for (const auto& [number, mapping] : m_mapped) bytes += mapping.bytes;
  const auto most = static_cast<rlim_t>(m_addressSpace + m_shared.mostMemory);
  const rlimit limit{std::min(static_cast<rlim_t>(bytes), most), most};
  ::prlimit(m_process, RLIMIT_AS, &limit, nullptr);
}

void DecoderProcess::forgetLostBuffers() {
  for (auto at = m_mapped.begin(); at != m_mapped.end();) {
    if (!at->second.buffer.expired()) {
      ++at;
      continue;
    }
    DecoderRequest request;
    request.kind = DecoderRequest::Kind::forget;
    request.buffer = at->first;
    (void)sendMessage(m_socket.number(), request);  // who does not take it fails at the next message
    at = m_mapped.erase(at);
  }
}

// Nothing when the answer does not fit what the decoder was given.
std::optional<DecodedImage> DecoderProcess::imageOf(const DecoderAnswer& answer, Progress& progress) {
  if (answer.error != 0) {
    if (answer.error > static_cast<std::uint32_t>(kLastImageError)) return std::nullopt;
    return DecodedImage{{}, static_cast<ImageError>(answer.error)};
  }
  const std::int64_t bound = progress.task.bound;
  const std::int64_t longest = bound > 0 ? bound : std::numeric_limits<std::int32_t>::max() / 4;
  if (answer.width < 1 || answer.height < 1 || std::max(answer.width, answer.height) > longest) return std::nullopt;
  const QSize size(answer.width, answer.height);
  const std::int64_t bytes = std::int64_t{answer.width} * answer.height * 4;
  const auto format = answer.isOpaque != 0 ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888_Premultiplied;
  const auto isMeant = [&](const auto& buffer) {
    return buffer->number() == answer.buffer && bytes <= buffer->bytes();
  };
  DecodedImage image;
  if (isMeant(m_small)) {
    image.pixels = QImage(m_small->pixels(), size.width(), size.height(), qsizetype{size.width()} * 4, format).copy();
    if (image.pixels.isNull()) image.error = ImageError::tooLarge;
    return image;
  }
  const auto found = std::find_if(progress.buffers.begin(), progress.buffers.end(), isMeant);
  if (found == progress.buffers.end()) return std::nullopt;
  image.pixels = m_shared.pixels.picture(std::exchange(*found, nullptr), size, format);
  for (auto& unused : progress.buffers) {
    if (unused) m_shared.pixels.giveBack(std::move(unused));
  }
  return image;
}

void DecoderProcess::stop() {
  m_isStopped = true;
  ::shutdown(m_socket.number(), SHUT_RDWR);
}

std::chrono::nanoseconds DecoderProcess::processorTime() const {
  clockid_t clock{};
  timespec time{};
  if (::clock_getcpuclockid(m_process, &clock) != 0 || ::clock_gettime(clock, &time) != 0) return {};
  return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

bool DecoderProcess::isWorn() const {
  return processorTime() > std::chrono::minutes(20);
}

// Ends it where it does not end by itself within `grace`, and tells why it did.
DecoderProcess::End DecoderProcess::end(milliseconds grace) {
  const bool isAlive = !arrives(m_processHandle->number(), grace);
  if (isAlive) ::syscall(SYS_pidfd_send_signal, m_processHandle->number(), SIGKILL, nullptr, 0U);
  const std::optional<int> status = m_shared.launcher.reap(std::exchange(m_process, 0));
  const bool isKilled = status && WIFSIGNALED(*status) && WTERMSIG(*status) == SIGKILL;
  return !isAlive && (isKilled || !status) ? End::killed : End::failed;
}

}  // namespace lumagrid
