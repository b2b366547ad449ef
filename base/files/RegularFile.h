#pragma once

#include "FileDescriptor.h"
#include "FileUrl.h"

struct stat;

namespace lumagrid {

// Opens the regular file at `file` for reading, following links, and tells its status. Never waits for the other end of
// a FIFO. Not open, with the reason in errno, when it cannot be had; EINVAL stands for what is no regular file. Any
// thread.
[[nodiscard]] FileDescriptor openRegularFile(const FileUrl& file, struct stat& status);

}  // namespace lumagrid
