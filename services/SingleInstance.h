#pragma once

#include <QObject>
#include <vector>

#include "FileUrl.h"

namespace lumagrid {

// This program among the user's: what a later start is to open goes to the one that runs already. Main thread.
class SingleInstance : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  // Hands the files (or none, for a window alone) to the program that runs already: true when it has taken them, and
  // nothing is left to do here. Otherwise this one goes on by itself, and where the desktop has a way, later starts
  // find it. Waits for answers, but not for long.
  [[nodiscard]] virtual bool handOver(const std::vector<FileUrl>& files) = 0;

 Q_SIGNALS:
  // A later start asks for this, from the event loop.
  void openRequested(const std::vector<lumagrid::FileUrl>& files);
};

}  // namespace lumagrid
