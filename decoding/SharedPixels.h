#pragma once

#include <QImage>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "FileDescriptor.h"

namespace lumagrid {

// Memory that a decoder writes and the window reads. The window makes it, and its size is sealed: nobody can cut it
// short under a reader.
class SharedBuffer {
 public:
  // Null when memory is short.
  [[nodiscard]] static std::shared_ptr<SharedBuffer> make(std::int64_t bytes);
  SharedBuffer(const SharedBuffer&) = delete;
  SharedBuffer& operator=(const SharedBuffer&) = delete;
  // Gives the pages back, whoever still maps them.
  ~SharedBuffer();

  // Gives it its pages, the last ones first, and ends when `isWanted` says so: somebody writes into the first ones
  // meanwhile, and takes half as long over those that are there. Any thread.
  void makePages(const std::function<bool()>& isWanted) const;

  // No other buffer of the process has it.
  [[nodiscard]] std::int32_t number() const { return m_number; }
  [[nodiscard]] std::int64_t bytes() const { return m_bytes; }
  [[nodiscard]] int descriptor() const { return m_memory.number(); }
  [[nodiscard]] const uchar* pixels() const { return m_pixels; }

 private:
  SharedBuffer(FileDescriptor memory, std::int64_t bytes, const uchar* pixels);

  FileDescriptor m_memory;
  const std::int64_t m_bytes;
  const uchar* const m_pixels;
  const std::int32_t m_number;
};

// Hands out buffers, and keeps the last that came back for others of their size: the pages of a new one cost as much as
// decoding into them. Thread-safe.
class SharedPixels : public std::enable_shared_from_this<SharedPixels> {
 public:
  // Of at least `bytes`. Null when memory is short.
  [[nodiscard]] std::shared_ptr<SharedBuffer> take(std::int64_t bytes);
  void giveBack(std::shared_ptr<SharedBuffer> buffer);
  // Lets go of what came back.
  void clear();

  // The picture at the begin of the buffer, without padding between its rows, which is given back with it. `size` and
  // `format` (4 bytes a pixel) fit the buffer.
  [[nodiscard]] QImage picture(std::shared_ptr<SharedBuffer> buffer, QSize size, QImage::Format format);

 private:
  std::mutex m_mutex;                                  // guards m_spare
  std::vector<std::shared_ptr<SharedBuffer>> m_spare;  // of one size, nearly
};

}  // namespace lumagrid
