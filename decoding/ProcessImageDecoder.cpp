#include "ProcessImageDecoder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "MemoryBudget.h"
#include "RegularFile.h"
#include "SystemError.h"
#include "WorkerPool.h"

namespace lumagrid {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int kBelowTheWindow = 10;
constexpr auto kUnlimited = 24h;
constexpr auto kUntilTriedAgain = 30s;
constexpr std::size_t kMostRefused = 256;
// Of a file whose decoders are ended by others, for want of memory say.
constexpr int kMostTries = 16;

const DecodingBudget kBudget = decodingBudget(coreCount() + 1);

}  // namespace

ProcessImageDecoder::ProcessImageDecoder(QByteArray program, const Patience& patience)
    : m_launcher(std::move(program)),
      m_claims(kBudget.claimed),
      m_shared{m_launcher, *m_pixels, m_claims, kBudget.unaskedEach, 4 * kBudget.claimed},
      m_thumbnailLimits{patience.thumbnailProcessorTime, patience.thumbnailIdleTime, patience.thumbnailTime},
      m_pictureLimits{kUnlimited, kUnlimited, patience.pictureTime},
      m_thumbnails{kBelowTheWindow, MemoryClaims::Urgency::ordinary, {}},
      m_pictures{0, MemoryClaims::Urgency::urgent, {}} {
  m_pictures.places.resize(1);
  m_thumbnails.places.resize(static_cast<std::size_t>(coreCount()));
  for (Lane* lane : {&m_pictures, &m_thumbnails}) {
    for (Place& place : lane->places) place.decoder = start(*lane);
  }
}

ProcessImageDecoder::~ProcessImageDecoder() {
  stop();
}

DecodedImage ProcessImageDecoder::decode(const FileUrl& file) {
  return decode(file, 0, m_pictures, IfDamaged::refuseForAWhile);
}

// What takes too long here may not, once somebody waits for it.
DecodedImage ProcessImageDecoder::decodeInBackground(const FileUrl& file) {
  return decode(file, 0, m_thumbnails, IfDamaged::forget);
}

DecodedImage ProcessImageDecoder::decodeBounded(const FileUrl& file, std::int64_t maxPixelSize) {
  return decode(file, std::max<std::int64_t>(maxPixelSize, 1), m_thumbnails, IfDamaged::refuseForAWhile);
}

DecodedImage ProcessImageDecoder::decode(const FileUrl& file, std::int64_t bound, Lane& lane, IfDamaged ifDamaged) {
  const Limits& limits = bound > 0 ? m_thumbnailLimits : m_pictureLimits;
  for (int tries = 0; tries < kMostTries; ++tries) {
    struct stat status = {};
    const FileDescriptor opened = openRegularFile(file, status);
    if (!opened.isOpen()) return {{}, errorOfOpening(errno)};
    const FileIdentity identity(status);
    if (isRefused(identity)) return {{}, ImageError::damaged};
    std::optional<DecoderProcess::Outcome> outcome = decodeOnce(
        {opened.number(), status.st_size, bound, lane.urgency, limits.processorTime, limits.idleTime, limits.time},
        lane);
    if (!outcome) break;
    if (outcome->end == DecoderProcess::End::answered) return std::move(outcome->image);
    const std::scoped_lock lock(m_mutex);
    if (m_isStopped) break;
    if (outcome->end == DecoderProcess::End::killed) continue;
    if (ifDamaged == IfDamaged::forget) return {{}, ImageError::damaged};
    m_refused.push_back({identity, Clock::now() + kUntilTriedAgain});
    if (m_refused.size() > kMostRefused) m_refused.pop_front();
    return {{}, ImageError::damaged};
  }
  return {{}, ImageError::unavailable};
}

// On the first decoder of the lane that is free. Nothing when there is none to be had.
std::optional<DecoderProcess::Outcome> ProcessImageDecoder::decodeOnce(const DecoderProcess::Task& task, Lane& lane) {
  std::unique_lock lock(m_mutex);
  const int whole = task.bound == 0 ? 1 : 0;
  m_wholeUnderWay += whole;
  // Whole pictures go while thumbnails are made: their memory would wait for nobody.
  if (m_wholeUnderWay == 0) m_pixels->clear();
  Place* place = nullptr;
  m_isFree.wait(lock, [&] {
    const auto found =
        std::find_if(lane.places.begin(), lane.places.end(), [](const Place& each) { return !each.isBusy; });
    if (found != lane.places.end()) place = &*found;
    return place != nullptr || m_isStopped;
  });
  if (m_isStopped) return std::nullopt;
  place->isBusy = true;
  if (!place->decoder) place->decoder = start(lane);
  DecoderProcess* const decoder = place->decoder.get();
  std::optional<DecoderProcess::Outcome> outcome;
  // Another starts when it is needed, not while this one's end is waited for.
  std::unique_ptr<DecoderProcess> ended;
  if (decoder) {
    lock.unlock();
    outcome = decoder->decode(task);
    lock.lock();
    report(*decoder);
    const bool isAnswered = outcome->end == DecoderProcess::End::answered;
    if (!isAnswered) ++m_deaths;
    if (!isAnswered || decoder->isWorn()) ended = std::move(place->decoder);
  }
  place->isBusy = false;
  m_wholeUnderWay -= whole;
  lock.unlock();
  m_isFree.notify_all();
  return outcome;
}

std::unique_ptr<DecoderProcess> ProcessImageDecoder::start(const Lane& lane) {
  auto socket = m_launcher.fork({lane.niceness, m_shared.freeMemory, m_shared.mostMemory});
  if (socket) return std::make_unique<DecoderProcess>(m_shared, *std::move(socket));
  if (const int error = m_launcher.startError(); error != 0 && m_missing.isEmpty()) {
    m_missing = QStringLiteral("no picture can be decoded: %1").arg(systemErrorText(error));
    std::fprintf(stderr, "lumagrid: %s\n", qPrintable(m_missing));
  }
  return nullptr;
}

void ProcessImageDecoder::report(const DecoderProcess& decoder) {
  const std::uint32_t missing = decoder.missingProtections().value_or(0);
  if (missing == 0 || !m_missing.isEmpty()) return;
  QStringList parts;
  for (const auto& [protection, name] : {std::pair(Protection::seccomp, "seccomp"),
                                         {Protection::landlock, "Landlock"},
                                         {Protection::limits, "limits"}}) {
    if ((missing & static_cast<std::uint32_t>(protection)) != 0) parts.append(QLatin1String(name));
  }
  m_missing = QStringLiteral("this system does not protect decoders by %1").arg(parts.join(QStringLiteral(", ")));
  std::fprintf(stderr, "lumagrid: %s\n", qPrintable(m_missing));
}

bool ProcessImageDecoder::isRefused(const FileIdentity& file) {
  const std::scoped_lock lock(m_mutex);
  const auto now = Clock::now();
  while (!m_refused.empty() && m_refused.front().until <= now) m_refused.pop_front();
  return std::any_of(m_refused.begin(), m_refused.end(), [&](const Refused& each) { return each.file == file; });
}

QString ProcessImageDecoder::missingProtection() const {
  const std::scoped_lock lock(m_mutex);
  return m_missing;
}

std::uint64_t ProcessImageDecoder::decoderDeaths() const {
  const std::scoped_lock lock(m_mutex);
  return m_deaths;
}

void ProcessImageDecoder::stop() {
  m_claims.close();
  {
    const std::scoped_lock lock(m_mutex);
    m_isStopped = true;
    for (Lane* lane : {&m_pictures, &m_thumbnails}) {
      for (const Place& place : lane->places) {
        if (place.decoder) place.decoder->stop();
      }
    }
  }
  m_isFree.notify_all();
}

}  // namespace lumagrid
