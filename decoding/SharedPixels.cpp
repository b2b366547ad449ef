#include "SharedPixels.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "WorkerPool.h"

namespace lumagrid {

namespace {

std::int32_t nextNumber() {
  static std::atomic<std::int32_t> last = 0;
  return ++last;
}

}  // namespace

std::shared_ptr<SharedBuffer> SharedBuffer::make(std::int64_t bytes) {
  constexpr int kSeals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL;
  FileDescriptor memory =
      FileDescriptor::from([] { return ::memfd_create("lumagrid-pixels", MFD_CLOEXEC | MFD_ALLOW_SEALING); });
  if (!memory.isOpen() || ::ftruncate(memory.number(), bytes) != 0 ||
      ::fcntl(memory.number(), F_ADD_SEALS, kSeals) != 0) {
    return nullptr;
  }
  void* const address = ::mmap(nullptr, static_cast<std::size_t>(bytes), PROT_READ, MAP_SHARED, memory.number(), 0);
  if (address == MAP_FAILED) return nullptr;
  return std::shared_ptr<SharedBuffer>(new SharedBuffer(std::move(memory), bytes, static_cast<const uchar*>(address)));
}

SharedBuffer::SharedBuffer(FileDescriptor memory, std::int64_t bytes, const uchar* pixels)
    : m_memory(std::move(memory)), m_bytes(bytes), m_pixels(pixels), m_number(nextNumber()) {}

SharedBuffer::~SharedBuffer() {
  ::munmap(const_cast<uchar*>(m_pixels), static_cast<std::size_t>(m_bytes));
  ::fallocate(m_memory.number(), FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, 0, m_bytes);
}

void SharedBuffer::makePages(const std::function<bool()>& isWanted) const {
  constexpr std::int64_t kAtOnce = std::int64_t{2} << 20;
  for (std::int64_t end = m_bytes; end > 0 && isWanted(); end -= kAtOnce) {
    const std::int64_t begin = std::max<std::int64_t>(0, end - kAtOnce);
    if (::fallocate(m_memory.number(), 0, begin, end - begin) != 0) return;
  }
}

std::shared_ptr<SharedBuffer> SharedPixels::take(std::int64_t bytes) {
  std::vector<std::shared_ptr<SharedBuffer>> useless;
  {
    const std::scoped_lock lock(m_mutex);
    const auto fits = [bytes](const auto& spare) {
      return spare->bytes() >= bytes && spare->bytes() - bytes <= bytes / 8;
    };
    if (const auto found = std::find_if(m_spare.begin(), m_spare.end(), fits); found != m_spare.end()) {
      std::shared_ptr<SharedBuffer> spare = std::move(*found);
      m_spare.erase(found);
      return spare;
    }
    useless.swap(m_spare);
  }
  useless.clear();
  auto made = SharedBuffer::make(bytes);
  constexpr std::int64_t kLarge = std::int64_t{16} << 20;
  if (made && bytes >= kLarge) {
    const auto work = [buffer = std::weak_ptr(made)] {
      const auto held = buffer.lock();
      if (held) held->makePages([&held] { return held.use_count() > 1; });
    };
    startWork(work, kUrgentWork);
  }
  return made;
}

void SharedPixels::giveBack(std::shared_ptr<SharedBuffer> buffer) {
  constexpr std::size_t kMostSpare = 2;
  const std::scoped_lock lock(m_mutex);
  m_spare.push_back(std::move(buffer));
  if (m_spare.size() > kMostSpare) {
    buffer = std::move(m_spare.front());  // goes once the lock is open
    m_spare.erase(m_spare.begin());
  }
}

void SharedPixels::clear() {
  std::vector<std::shared_ptr<SharedBuffer>> spare;
  const std::scoped_lock lock(m_mutex);
  spare.swap(m_spare);
}

QImage SharedPixels::picture(std::shared_ptr<SharedBuffer> buffer, QSize size, QImage::Format format) {
  struct Loan {
    std::shared_ptr<SharedPixels> pool;
    std::shared_ptr<SharedBuffer> buffer;

    static void end(void* info) {
      const std::unique_ptr<Loan> loan(static_cast<Loan*>(info));
      loan->pool->giveBack(std::move(loan->buffer));
    }
  };
  const uchar* const pixels = buffer->pixels();
  auto loan = std::make_unique<Loan>(Loan{shared_from_this(), std::move(buffer)});
  return QImage(pixels, size.width(), size.height(), qsizetype{size.width()} * 4, format, &Loan::end, loan.release());
}

}  // namespace lumagrid
