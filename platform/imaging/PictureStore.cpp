#include "PictureStore.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "PixelBuffer.h"

namespace lumagrid {
namespace {

// The picture on the stage and the one before it, at 24 megapixels each.
constexpr std::size_t kBudgetBytes = 200U << 20;

// Tells apart the contents that a path has had; nothing when there is no such file.
std::optional<QByteArray> identity(const FileUrl& file) {
  struct stat status {};
  if (::stat(file.path().constData(), &status) != 0) return std::nullopt;
  QByteArray text = file.path();
  for (const auto part : {std::int64_t(status.st_dev), std::int64_t(status.st_ino), std::int64_t(status.st_size),
                          std::int64_t(status.st_mtim.tv_sec), std::int64_t(status.st_mtim.tv_nsec)}) {
    text += '\0' + QByteArray::number(qint64(part));
  }
  return text;
}

}  // namespace

PictureStore::PictureStore(ImageDecoder& decoder) : m_decoder(decoder), m_pictures(kBudgetBytes) {
  m_thread.setMaxThreadCount(1);
}

PictureStore::~PictureStore() = default;

DecodedImage PictureStore::decode(const FileUrl& file) {
  const auto before = identity(file);
  if (before) {
    std::unique_lock lock(m_mutex);
    m_aheadEnded.wait(lock, [&] { return m_ahead != before; });
    lock.unlock();
    if (auto picture = m_pictures.object(*before)) return {*std::move(picture), ImageError::none};
  }
  // The next picture is most often as large as the one before: it takes the memory of one that has to go anyway.
  const PixelReuse reuse;
  m_pictures.makeRoom(m_lastBytes);
  DecodedImage decoded = m_decoder.decode(file);
  m_lastBytes = static_cast<std::size_t>(decoded.pixels.sizeInBytes());
  // A file that changed meanwhile may have been read half old, half new.
  if (before && !decoded.pixels.isNull() && identity(file) == before) {
    m_pictures.setObject(*before, decoded.pixels, m_lastBytes);
  }
  return decoded;
}

DecodedImage PictureStore::decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) {
  return m_decoder.decodeBounded(file, maxPixelSize);
}

void PictureStore::decodeAhead(const FileUrl& file) {
  const auto wanted = identity(file);
  if (!wanted) return;
  {
    const std::scoped_lock lock(m_mutex);
    if (m_ahead) return;
    m_ahead = wanted;
  }
  m_thread.start([this, file, wanted] {
    const DecodedImage decoded = m_decoder.decode(file);
    if (!decoded.pixels.isNull() && identity(file) == wanted) {
      m_pictures.setObject(*wanted, decoded.pixels, static_cast<std::size_t>(decoded.pixels.sizeInBytes()));
    }
    {
      const std::scoped_lock lock(m_mutex);
      m_ahead.reset();
    }
    m_aheadEnded.notify_all();
  });
}

void PictureStore::willNeed(const FileUrl& file) {
  m_thread.start([file] {
    const int descriptor = ::open(file.path().constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return;
    ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_WILLNEED);
    ::close(descriptor);
  });
}

}  // namespace lumagrid
