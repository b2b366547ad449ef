#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace lumagrid {

// A file or folder that the system has opened for this process; closed with its owner.
class FileDescriptor {
 public:
  // Owns what `open` returns, which is called again when a signal came between. One that is not open leaves the reason
  // in errno.
  template <typename Open>
  [[nodiscard]] static FileDescriptor from(const Open& open) {
    FileDescriptor descriptor;
    do {
      descriptor.m_number = open();
    } while (descriptor.m_number < 0 && errno == EINTR);
    return descriptor;
  }
  FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
  FileDescriptor& operator=(FileDescriptor&&) = delete;
  ~FileDescriptor() { static_cast<void>(close()); }

  [[nodiscard]] bool isOpen() const { return m_number >= 0; }
  [[nodiscard]] int number() const { return m_number; }

  // False, with errno, when what was written could not be kept.
  [[nodiscard]] bool close() { return !isOpen() || ::close(std::exchange(m_number, -1)) == 0; }

 private:
  FileDescriptor() = default;

  int m_number = -1;
};

}  // namespace lumagrid
