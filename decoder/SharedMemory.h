#pragma once

#include <map>
#include <mutex>

#include "PictureMemory.h"

namespace lumagrid {

struct DecoderRequest;
class FileDescriptor;

// The buffers that the window shares with this decoder, kept mapped from one picture to the next, and its leave to use
// more memory. Asks over the socket, while the window waits for the answer to its own request. The public calls that do
// not come from PictureMemory are for the thread that answers the window, between two pictures.
class SharedMemory : public PictureMemory {
 public:
  SharedMemory(int socket, std::int64_t freeMemory) : m_socket(socket), m_freeMemory(freeMemory) {}

  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  ~SharedMemory() override;

  // A buffer that comes along with a request. False when it cannot be mapped, or is smaller than it says.
  [[nodiscard]] bool add(const DecoderRequest& request, const FileDescriptor& memory);
  void remove(std::int32_t number);

  // Forgets what the last picture was granted.
  void beginPicture();

  // Whether the last picture took more than what needs no leave.
  [[nodiscard]] bool isLarge() const { return m_isLarge; }

  struct Buffer {
    std::int32_t number = -1;
    void* memory = nullptr;
    std::int64_t bytes = 0;
  };
  // Lets go of what the mappings cost this process. The next picture pays for it.
  void rest();

  // The buffer, granted for this picture, that begins at `memory`; null when there is none.
  [[nodiscard]] const Buffer* bufferAt(const void* memory) const;
  // The first that was added.
  [[nodiscard]] const Buffer& small() const { return m_small; }

  [[nodiscard]] bool claim(std::int64_t bytes) override;
  // From the heap, which is not shared, when the window has no buffer to give.
  [[nodiscard]] void* allocate(std::size_t bytes) override;
  void release(void* memory) override;

 private:
  struct Mapped : Buffer {
    bool isGranted = false;  // for this picture
    bool isUsed = false;
  };

  const int m_socket;
  const std::int64_t m_freeMemory;
  std::mutex m_mutex;  // guards all below while a picture is decoded
  std::map<std::int32_t, Mapped> m_buffers;
  Buffer m_small;
  bool m_isLarge = false;
  std::int64_t m_unasked = 0;  // claimed for this picture without asking, in bytes
};

}  // namespace lumagrid
