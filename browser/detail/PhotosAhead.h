#pragma once

#include <QtQml/qqmlregistration.h>
#include <QBasicTimer>
#include <QByteArray>
#include <QHash>
#include <QImage>
#include <QObject>
#include <QSet>
#include <optional>
#include <vector>

#include "FileUrl.h"
#include "PhotoViewGeometry.h"

namespace lumagrid {

class ImageDecoder;
class PhotoLibrary;

// Makes ready what steps from the photo on the stage would show, while it is looked at: the next photo in the direction
// of the last step, then the other one, then one more ahead; and while an arrow is held, those ahead only. Each is
// decoded and fitted to the stage, in the background, as far as memory allows. Main thread.
class PhotosAhead : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("part of a window's state")

 public:
  enum class Step { previous, next };

  // Both outlive this.
  PhotosAhead(const PhotoLibrary& library, ImageDecoder& decoder);

  // Whether the photo is on the stage. Nothing is made ready for the grid.
  void setOnStage(bool isOnStage);
  // What the photos are fitted to.
  void setStage(const PhotoStage& stage);
  // A frame shows the current photo: the processor is free for others.
  void photoShown();
  // The step that a held arrow makes, as long as one is held.
  void setHeld(std::optional<Step> step);

  // Whether this step need not be waited for, as far as anybody works on it.
  [[nodiscard]] bool isReady(Step step) const;

 Q_SIGNALS:
  void photoReady();

 protected:
  void timerEvent(QTimerEvent* event) override;

 private:
  void prepare();
  void follow();
  void awaitFrame();
  [[nodiscard]] std::vector<FileUrl> filesAhead() const;
  void finish(int round, const FileUrl& file, const QImage& fitted);

  const PhotoLibrary& m_library;
  ImageDecoder& m_decoder;
  bool m_isOnStage = false;
  std::optional<Step> m_held;
  PhotoStage m_stage;
  QBasicTimer m_stageSettles;
  qint64 m_index = -1;  // of the photo on the stage
  qint64 m_direction = 1;
  int m_round = 0;                     // counts what was told to the decoder
  QBasicTimer m_longestFrame;          // runs until the photo is shown
  QSet<QByteArray> m_awaited;          // paths that are being made ready
  QHash<QByteArray, QImage> m_fitted;  // by path; held so that they stay in the cache
};

}  // namespace lumagrid
