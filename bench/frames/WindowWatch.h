#pragma once

#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QQuickWindow>
#include <QSet>
#include <vector>

#include "PhotoThumbnailTile.h"

namespace lumagrid {

// What the process and its decoders take, memory that others use too counted in parts; in megabytes.
inline long proportionalMemory() {
  const auto lineOf = [](const QString& path, const char* key) -> long {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
      if (line.startsWith(key)) return line.mid(qstrlen(key)).simplified().split(' ').front().toLong();
    }
    return 0;
  };
  QSet<long> family{::getpid()};
  long kilobytes = lineOf(QStringLiteral("/proc/self/smaps_rollup"), "Pss:");
  QStringList processes = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
  for (bool isComplete = false; !isComplete;) {
    isComplete = true;
    for (const QString& process : std::as_const(processes)) {
      const QString folder = QStringLiteral("/proc/") + process;
      if (process.toLong() == 0 || family.contains(process.toLong())) continue;
      if (!family.contains(lineOf(folder + QStringLiteral("/status"), "PPid:"))) continue;
      family.insert(process.toLong());
      kilobytes += lineOf(folder + QStringLiteral("/smaps_rollup"), "Pss:");
      isComplete = false;
    }
  }
  return kilobytes / 1024;
}

// Those that show.
inline std::vector<const PhotoThumbnailTile*> tilesIn(const QQuickWindow& window) {
  std::vector<const PhotoThumbnailTile*> tiles;
  std::vector<const QQuickItem*> items{window.contentItem()};
  while (!items.empty()) {
    const QQuickItem* const item = items.back();
    items.pop_back();
    if (!item->isVisible()) continue;
    for (const QQuickItem* child : item->childItems()) items.push_back(child);
    const auto* tile = qobject_cast<const PhotoThumbnailTile*>(item);
    const QRectF all(QPointF(), QSizeF(window.size()));
    if (tile && tile->mapRectToScene(tile->boundingRect()).intersects(all)) tiles.push_back(tile);
  }
  return tiles;
}

// The photos of tiles that show and are empty.
inline QSet<QByteArray> spinnersIn(const QQuickWindow& window) {
  QSet<QByteArray> paths;
  for (const PhotoThumbnailTile* tile : tilesIn(window)) {
    if (tile->thumbnail().isNull()) paths.insert(tile->photo().id());
  }
  return paths;
}

}  // namespace lumagrid
