#pragma once

#include <cstdint>

#include "FileUrl.h"

struct stat;

namespace lumagrid {

// Which file stands at a path, with which content: to be taken when a question about it is asked, and compared when the
// answer is acted on. Another file under the same name is not equal to it, and neither is the same file once it was
// written to (a copy over it keeps all but its size and date). A value; any thread.
class FileIdentity {
 public:
  // Of no file: what is not a regular file itself (a folder, a symbolic link) has it too, and is never acted on.
  FileIdentity() = default;
  explicit FileIdentity(const struct stat& status);
  [[nodiscard]] static FileIdentity of(const FileUrl& file);

  [[nodiscard]] bool isOfAFile() const { return m_inode != 0; }

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;

 private:
  std::uint64_t m_device = 0;
  std::uint64_t m_inode = 0;
  std::int64_t m_size = 0;
  std::int64_t m_seconds = 0;  // of the last change of the content
  std::int64_t m_nanoseconds = 0;
};

}  // namespace lumagrid
