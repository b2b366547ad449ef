#include "PictureStore.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "MemoryBudget.h"
#include "RegularFile.h"
#include "WorkerPool.h"

namespace lumagrid {
namespace {

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

struct PictureStore::Ahead {
  QByteArray identity;
  std::atomic_flag isTaken;  // by a thread of the pool, or by whoever did not wait for one
  std::atomic_flag isOver;
};

PictureStore::PictureStore(ImageDecoder& decoder) : m_decoder(decoder), m_pictures(keptPictureBytes()) {}

PictureStore::~PictureStore() {
  if (const auto ahead = takeAhead()) ahead->isOver.wait(false);
}

// What is decoded ahead, if a thread is at it; otherwise nobody will be.
std::shared_ptr<PictureStore::Ahead> PictureStore::takeAhead() {
  const std::scoped_lock lock(m_mutex);
  if (m_ahead && !m_ahead->isTaken.test_and_set()) m_ahead.reset();
  return m_ahead;
}

DecodedImage PictureStore::decode(const FileUrl& file) {
  const auto wanted = identity(file);
  if (!wanted) return m_decoder.decode(file);
  if (const auto ahead = takeAhead(); ahead && ahead->identity == wanted) ahead->isOver.wait(false);
  if (auto picture = m_pictures.object(*wanted)) return {*std::move(picture), ImageError::none};
  // The next picture is most often as large as the one before: it takes the memory of one that has to go anyway.
  m_pictures.makeRoom(m_lastBytes);
  DecodedImage decoded = decodeAndKeep(file, *wanted);
  m_lastBytes = static_cast<std::size_t>(decoded.pixels.sizeInBytes());
  return decoded;
}

DecodedImage PictureStore::decodeAndKeep(const FileUrl& file, const QByteArray& wanted) {
  DecodedImage decoded = m_decoder.decode(file);
  // A file that changed meanwhile may have been read half old, half new.
  if (!decoded.pixels.isNull() && identity(file) == wanted) {
    m_pictures.setObject(wanted, decoded.pixels, static_cast<std::size_t>(decoded.pixels.sizeInBytes()));
  }
  return decoded;
}

DecodedImage PictureStore::decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) {
  return m_decoder.decodeBounded(file, maxPixelSize);
}

void PictureStore::decodeAhead(const FileUrl& file) {
  auto wanted = identity(file);
  if (!wanted) return;
  const auto ahead = std::make_shared<Ahead>();
  ahead->identity = *std::move(wanted);
  {
    const std::scoped_lock lock(m_mutex);
    if (m_ahead) return;
    m_ahead = ahead;
  }
  const auto work = [this, file, ahead] {
    if (ahead->isTaken.test_and_set()) return;  // the store may be gone
    (void)decodeAndKeep(file, ahead->identity);
    {
      const std::scoped_lock lock(m_mutex);
      m_ahead.reset();
    }
    ahead->isOver.test_and_set();
    ahead->isOver.notify_all();
  };
  startWork(work, kUrgentWork);
}

void PictureStore::willNeed(const FileUrl& file) {
  const auto work = [file] {
    struct stat status = {};
    const FileDescriptor opened = openRegularFile(file, status);
    if (opened.isOpen()) ::posix_fadvise(opened.number(), 0, 0, POSIX_FADV_WILLNEED);
  };
  startWork(work, kUrgentWork);
}

}  // namespace lumagrid
