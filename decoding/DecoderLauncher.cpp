#include "DecoderLauncher.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

namespace lumagrid {

DecoderLauncher::DecoderLauncher(QByteArray program) : m_program(std::move(program)) {
  const std::scoped_lock lock(m_mutex);
  (void)start();
}

DecoderLauncher::~DecoderLauncher() {
  end();
}

void DecoderLauncher::end() {
  m_socket.reset();  // which ends it, if it has not ended yet, and all its decoders
  if (m_process <= 0) return;
  while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) continue;
  m_process = -1;
}

bool DecoderLauncher::start() {
  end();
  SocketPair sockets = socketPair();
  if (!sockets.ours.isOpen()) return m_startError = EMFILE, false;
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_adddup2(&actions, sockets.theirs.number(), STDIN_FILENO);
  QByteArray program = m_program;
  char* const arguments[] = {program.data(), nullptr};
  m_startError = ::posix_spawn(&m_process, m_program.constData(), &actions, nullptr, arguments, environ);
  ::posix_spawn_file_actions_destroy(&actions);
  if (m_startError != 0) return m_process = -1, false;
  m_socket.emplace(std::move(sockets.ours));
  return true;
}

bool DecoderLauncher::send(const ForkRequest& request, int descriptor) {
  return m_socket && sendMessage(m_socket->number(), request, descriptor);
}

std::optional<FileDescriptor> DecoderLauncher::fork(const Limits& limits) {
  SocketPair sockets = socketPair();
  if (!sockets.ours.isOpen()) return std::nullopt;
  ForkRequest request;
  request.niceness = limits.niceness;
  request.freeMemory = limits.freeMemory;
  request.mostMemory = limits.mostMemory;
  const std::scoped_lock lock(m_mutex);
  if (!send(request, sockets.theirs.number()) && (!start() || !send(request, sockets.theirs.number()))) {
    return std::nullopt;
  }
  return std::move(sockets.ours);
}

std::optional<int> DecoderLauncher::reap(std::int32_t process) {
  ForkRequest request;
  request.kind = ForkRequest::Kind::reap;
  request.process = process;
  const std::scoped_lock lock(m_mutex);
  if (!send(request, -1)) return std::nullopt;
  const auto answer = receiveMessage<ForkAnswer>(m_socket->number());
  if (!answer) return m_socket.reset(), std::nullopt;
  return answer->message.status;
}

int DecoderLauncher::startError() const {
  const std::scoped_lock lock(m_mutex);
  return m_startError;
}

}  // namespace lumagrid
