#include "SharedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "Messages.h"

namespace lumagrid {

SharedMemory::~SharedMemory() {
  if (m_small.memory != nullptr) ::munmap(m_small.memory, static_cast<std::size_t>(m_small.bytes));
  while (!m_buffers.empty()) remove(m_buffers.begin()->first);
}

bool SharedMemory::add(const DecoderRequest& request, const FileDescriptor& memory) {
  if (const auto known = m_buffers.find(request.buffer); known != m_buffers.end()) {
    known->second.isGranted = true;
    return true;
  }
  if (!memory.isOpen() || ::lseek(memory.number(), 0, SEEK_END) < request.bytes) return false;
  void* const address =
      ::mmap(nullptr, static_cast<std::size_t>(request.bytes), PROT_READ | PROT_WRITE, MAP_SHARED, memory.number(), 0);
  if (address == MAP_FAILED) return false;
  const Buffer added{request.buffer, address, request.bytes};
  if (m_small.memory == nullptr) {
    m_small = added;
  } else {
    m_buffers[added.number] = {added, true, false};
  }
  return true;
}

void SharedMemory::remove(std::int32_t number) {
  const auto found = m_buffers.find(number);
  if (found == m_buffers.end()) return;
  ::munmap(found->second.memory, static_cast<std::size_t>(found->second.bytes));
  m_buffers.erase(found);
}

void SharedMemory::beginPicture() {
  m_unasked = 0;
  m_isLarge = false;
  for (auto& [number, buffer] : m_buffers) buffer.isGranted = buffer.isUsed = false;
}

void SharedMemory::rest() {
  for (const auto& [number, buffer] : m_buffers) {
    ::madvise(buffer.memory, static_cast<std::size_t>(buffer.bytes), MADV_DONTNEED);
  }
}

const SharedMemory::Buffer* SharedMemory::bufferAt(const void* memory) const {
  for (const auto& [number, buffer] : m_buffers) {
    if (buffer.memory == memory && buffer.isGranted) return &buffer;
  }
  return nullptr;
}

bool SharedMemory::claim(std::int64_t bytes) {
  const std::scoped_lock lock(m_mutex);
  if (bytes < 0) return false;
  if (bytes <= m_freeMemory - m_unasked) {
    m_unasked += bytes;
    return true;
  }
  m_isLarge = true;
  DecoderAnswer question;
  question.kind = DecoderAnswer::Kind::memory;
  question.bytes = bytes;
  if (!sendMessage(m_socket, question)) return false;
  const auto answer = receiveMessage<DecoderRequest>(m_socket);
  return answer && answer->message.kind == DecoderRequest::Kind::memory;
}

void* SharedMemory::allocate(std::size_t bytes) {
  const std::scoped_lock lock(m_mutex);
  const auto wanted = static_cast<std::int64_t>(bytes);
  for (auto& [number, buffer] : m_buffers) {
    if (!buffer.isGranted || buffer.isUsed || buffer.bytes < wanted) continue;
    buffer.isUsed = true;
    return buffer.memory;
  }
  DecoderAnswer question;
  question.kind = DecoderAnswer::Kind::pixels;
  question.bytes = wanted;
  if (!sendMessage(m_socket, question)) return nullptr;
  const auto answer = receiveMessage<DecoderRequest>(m_socket);
  if (!answer || answer->message.kind != DecoderRequest::Kind::pixels || !add(answer->message, answer->descriptor)) {
    return std::malloc(bytes);
  }
  Mapped& buffer = m_buffers[answer->message.buffer];
  if (buffer.isUsed || buffer.bytes < wanted) return std::malloc(bytes);
  buffer.isUsed = true;
  return buffer.memory;
}

void SharedMemory::release(void* memory) {
  const std::scoped_lock lock(m_mutex);
  const auto found = std::find_if(m_buffers.begin(), m_buffers.end(),
                                  [memory](const auto& each) { return each.second.memory == memory; });
  if (found == m_buffers.end()) return std::free(memory);
  found->second.isUsed = false;
}

}  // namespace lumagrid
