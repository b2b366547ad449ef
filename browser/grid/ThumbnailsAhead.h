#pragma once

#include <QBasicTimer>
#include <QByteArray>
#include <QImage>
#include <QObject>
#include <cstdint>
#include <vector>

#include "BackgroundQueue.h"
#include "GridMetrics.h"

namespace lumagrid {

class PhotoLibrary;

// Makes the thumbnails that the grid is likely to show next, behind all that is on screen: those of the next screen in
// the direction of the last scroll, then of the one behind; and while a photo is on the stage, those among which the
// grid comes back. What has not begun is dropped when the grid shows something else. Main thread.
class ThumbnailsAhead : public QObject {
 public:
  // `library` outlives this. `layout`: of a grid that has not been shown yet.
  ThumbnailsAhead(const PhotoLibrary& library, const GridLayout& layout) : m_library(library), m_layout(layout) {}

  // The grid shows these tiles, [first, last).
  void follow(const GridLayout& layout, std::int64_t first, std::int64_t last);
  // The photo is on the stage; the grid comes back with it in its center.
  void followStage(std::int64_t index);

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  struct Load {
    QByteArray path;
    std::shared_ptr<QImage> thumbnail;  // held so that it stays in the cache
    BackgroundQueue::Ticket ticket;
  };
  void make(const std::vector<std::int64_t>& indices);

  const PhotoLibrary& m_library;
  GridLayout m_layout;
  std::int64_t m_first = 0;
  bool m_scrollsUp = false;
  QByteArray m_shown;  // tells what was followed last
  std::int64_t m_stageIndex = -1;
  QBasicTimer m_stageSettles;
  BackgroundQueue m_queue{BackgroundQueue::Urgency::idle};
  std::vector<Load> m_loads;
};

}  // namespace lumagrid
