#include "PictureStore.h"

#include <sys/stat.h>

#include <algorithm>

#include "ImageCache.h"
#include "MemoryBudget.h"
#include "WorkerPool.h"

namespace lumagrid {
namespace {

// Before thumbnails, behind what the stage needs of the photo that it shows.
constexpr int kPreparation = kUrgentWork - 1;
// Then it is decoded once more, with more right to the processor.
constexpr std::chrono::milliseconds kLongestWaitForJob(400);

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

bool isMemoryShort(std::size_t bytes) {
  const auto available = availableMemory();
  return available && *available < machineMemory().value_or(0) / 16 + static_cast<std::int64_t>(bytes);
}

}  // namespace

struct PictureStore::Job {
  const FileUrl file;
  const bool isInBackground;
  const std::function<void(const QImage&)> ready;
  std::atomic_flag isTaken;  // by a thread of the pool, or by whoever did not wait for one

  Job(const FileUrl& itsFile, bool itIsInBackground, std::function<void(const QImage&)> itsEnd)
      : file(itsFile), isInBackground(itIsInBackground), ready(std::move(itsEnd)) {}
};

PictureStore::~PictureStore() {
  std::unique_lock lock(m_mutex);
  m_awaited.clear();
  std::erase_if(m_jobs, [](const auto& job) { return !job->isTaken.test_and_set(); });
  m_jobEnded.wait(lock, [this] { return m_jobs.empty(); });
}

std::shared_ptr<PictureStore::Job> PictureStore::jobOf(const FileUrl& file) const {
  const auto found = std::find_if(m_jobs.begin(), m_jobs.end(), [&](const auto& job) { return job->file == file; });
  return found == m_jobs.end() ? nullptr : *found;
}

void PictureStore::drop(const std::shared_ptr<Job>& job) {
  std::erase(m_jobs, job);
  m_jobEnded.notify_all();
}

DecodedImage PictureStore::decode(const FileUrl& file) {
  const auto wanted = identity(file);
  if (!wanted) return m_decoder.decode(file);
  {
    std::unique_lock lock(m_mutex);
    const auto job = jobOf(file);
    if (job && !job->isTaken.test_and_set()) {
      drop(job);
    } else if (job) {
      m_jobEnded.wait_for(lock, kLongestWaitForJob, [&] { return jobOf(file) != job; });
    }
  }
  auto picture = imageCache().object(*wanted);
  if (!picture) {
    {
      const std::scoped_lock lock(m_mutex);
      ++m_asked;
    }
    DecodedImage decoded = decodeAndKeep(file, *wanted, false);
    const std::scoped_lock lock(m_mutex);
    --m_asked;
    beginAwaited();
    if (decoded.pixels.isNull()) return decoded;
    picture = std::move(decoded.pixels);
  }
  m_lastBytes = static_cast<std::size_t>(picture->sizeInBytes());
  return {*std::move(picture), ImageError::none};
}

// The next picture is most often as large as the one before: it takes the memory of one that has to go anyway.
DecodedImage PictureStore::decodeAndKeep(const FileUrl& file, const QByteArray& wanted, bool isInBackground) {
  imageCache().makeRoom(m_lastBytes * ++m_underWay);
  DecodedImage decoded = isInBackground ? m_decoder.decodeInBackground(file) : m_decoder.decode(file);
  --m_underWay;
  // A file that changed meanwhile may have been read half old, half new.
  if (!decoded.pixels.isNull() && identity(file) == wanted) keepImage(wanted, decoded.pixels);
  return decoded;
}

DecodedImage PictureStore::decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) {
  return m_decoder.decodeBounded(file, maxPixelSize);
}

std::size_t PictureStore::prepare(const std::vector<FileUrl>& files, const Ready& ready) {
  const std::size_t each = m_lastBytes;
  std::size_t count = files.size();
  if (each > 0) count = std::min(count, std::max(imageCache().budget() / each, std::size_t{1}) - 1);
  if (count > 0 && isMemoryShort(count * each)) {
    count = 0;
    imageCache().makeRoom(imageCache().budget());
  }
  const std::vector<FileUrl> awaited(files.begin(), files.begin() + static_cast<std::ptrdiff_t>(count));
  // What is there already goes last when room is made for the others.
  for (auto file = awaited.rbegin(); file != awaited.rend(); ++file) {
    if (const auto kept = identity(*file)) (void)imageCache().object(*kept);
  }
  bool isIdle = false;
  {
    const std::scoped_lock lock(m_mutex);
    std::erase_if(m_jobs, [](const auto& job) { return job->isInBackground && !job->isTaken.test_and_set(); });
    m_awaited = awaited;
    m_ready = ready;
    beginAwaited();
    isIdle = m_jobs.empty();
  }
  if (isIdle) m_decoder.giveMemoryBack();
  return count;
}

void PictureStore::decodeAhead(const FileUrl& file, std::function<void(const QImage&)> ready) {
  const std::scoped_lock lock(m_mutex);
  begin(std::make_shared<Job>(file, false, std::move(ready)), kUrgentWork);
}

void PictureStore::begin(const std::shared_ptr<Job>& job, int priority) {
  m_jobs.push_back(job);
  const auto work = [this, job] {
    if (!job->isTaken.test_and_set()) run(job);  // otherwise the store may be gone
  };
  startWork(work, priority);
}

void PictureStore::beginAwaited() {
  for (const FileUrl& file : m_awaited) {
    if (m_asked > 0 || m_jobs.size() >= static_cast<std::size_t>(coreCount())) return;
    if (!jobOf(file)) begin(std::make_shared<Job>(file, true, nullptr), kPreparation);
  }
}

void PictureStore::run(const std::shared_ptr<Job>& job) {
  QImage picture;
  if (const auto wanted = identity(job->file)) {
    auto kept = imageCache().object(*wanted);
    picture = kept ? *std::move(kept) : decodeAndKeep(job->file, *wanted, job->isInBackground).pixels;
  }
  if (job->ready) job->ready(picture);
  Ready ready;
  bool isLast = false;
  {
    const std::scoped_lock lock(m_mutex);
    if (std::erase(m_awaited, job->file) > 0) ready = m_ready;
    isLast = m_jobs.size() == 1 && m_awaited.empty();
  }
  if (ready) ready(job->file, picture);
  picture = {};
  if (isLast) m_decoder.giveMemoryBack();
  const std::scoped_lock lock(m_mutex);
  drop(job);
  beginAwaited();
}

}  // namespace lumagrid
