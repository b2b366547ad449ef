#include "PhotosAhead.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTimerEvent>
#include <array>

#include "ImageDecoder.h"
#include "PhotoLibrary.h"
#include "PhotoPyramid.h"

namespace lumagrid {

PhotosAhead::PhotosAhead(const PhotoLibrary& library, ImageDecoder& decoder) : m_library(library), m_decoder(decoder) {
  connect(&library, &PhotoLibrary::currentImageChanged, this, &PhotosAhead::follow);
  // Once the photo has its new place.
  connect(&library, &PhotoLibrary::photosReordered, this, &PhotosAhead::follow, Qt::QueuedConnection);
}

void PhotosAhead::setOnStage(bool isOnStage) {
  if (isOnStage == m_isOnStage) return;
  m_isOnStage = isOnStage;
  m_held.reset();
  m_direction = 1;
  m_index = m_library.currentIndex();
  isOnStage ? awaitFrame() : prepare();
}

void PhotosAhead::awaitFrame() {
  constexpr int kLongestFrameMs = 300;
  m_longestFrame.start(kLongestFrameMs, this);
}

void PhotosAhead::photoShown() {
  if (m_longestFrame.isActive()) prepare();
}

void PhotosAhead::setStage(const PhotoStage& stage) {
  constexpr int kSettledMs = 200;  // while the window's edge is dragged, each frame has another
  if (stage == m_stage) return;
  m_stage = stage;
  if (!m_longestFrame.isActive()) m_stageSettles.start(kSettledMs, this);
}

void PhotosAhead::timerEvent(QTimerEvent* event) {
  if (event->timerId() != m_stageSettles.timerId() && event->timerId() != m_longestFrame.timerId()) return;
  prepare();
}

void PhotosAhead::setHeld(std::optional<Step> step) {
  if (step == m_held) return;
  m_held = step;
  if (step) m_direction = step == Step::next ? 1 : -1;
  prepare();
}

void PhotosAhead::follow() {
  const qint64 index = m_library.currentIndex();
  if (index != m_index) m_direction = index > m_index ? 1 : -1;
  m_index = index;
  if (!m_isOnStage) return;
  m_held ? prepare() : awaitFrame();  // while an arrow is held, the next photo is due at once
}

std::vector<FileUrl> PhotosAhead::filesAhead() const {
  std::vector<FileUrl> files;
  if (!m_isOnStage) return files;
  const std::array<qint64, 3> ahead = m_held ? std::array<qint64, 3>{1, 2, 3} : std::array<qint64, 3>{1, -1, 2};
  for (const qint64 steps : ahead) {
    const qint64 index = m_index + steps * m_direction;
    if (index >= 0 && index < m_library.photoCount()) {
      files.push_back(m_library.photos()[static_cast<std::size_t>(index)].url);
    }
  }
  return files;
}

void PhotosAhead::prepare() {
  m_stageSettles.stop();
  m_longestFrame.stop();
  const auto ready = [stage = m_stage, self = QPointer(this), round = ++m_round](const FileUrl& file,
                                                                                 const QImage& picture) {
    const bool isSizeKnown = !stage.size.isEmpty() && !picture.isNull();
    const QImage fitted = isSizeKnown ? keepFitted(picture, stage.fittedPixels(picture.size())) : QImage();
    const auto finish = [self, round, file, fitted] {
      if (self) self->finish(round, file, fitted);
    };
    QMetaObject::invokeMethod(QCoreApplication::instance(), finish, Qt::QueuedConnection);
  };
  const std::vector<FileUrl> files = filesAhead();
  const std::size_t count = m_decoder.prepare(files, ready);
  m_awaited.clear();
  for (std::size_t i = 0; i < count; ++i) m_awaited.insert(files[i].path());
  const PhotoItem* const current = m_library.currentPhoto();
  m_fitted.removeIf([&](const auto& held) {
    return !m_awaited.contains(held.key()) && !(m_isOnStage && current && current->id() == held.key());
  });
}

void PhotosAhead::finish(int round, const FileUrl& file, const QImage& fitted) {
  if (round != m_round) return;
  m_awaited.remove(file.path());
  m_fitted.insert(file.path(), fitted);
  Q_EMIT photoReady();
}

bool PhotosAhead::isReady(Step step) const {
  const qint64 index = m_index + (step == Step::next ? 1 : -1);
  return index < 0 || index >= m_library.photoCount() ||
         !m_awaited.contains(m_library.photos()[static_cast<std::size_t>(index)].url.path());
}

}  // namespace lumagrid
