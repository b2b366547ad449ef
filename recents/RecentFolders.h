#pragma once

#include <QObject>
#include <QString>
#include <vector>

#include "FileUrl.h"

namespace lumagrid {

class Preferences;

// The folders opened most recently, newest first, kept across runs as plain paths in the user's preferences. Loaded
// once, at construction: folders that cannot be reached are left out, and nothing is written back until the list
// changes. Main thread. objectWillChange() comes before each assignment of urls(), urlsChanged() after it.
class RecentFolders : public QObject {
  Q_OBJECT

 public:
  // `preferences` outlives this.
  explicit RecentFolders(Preferences& preferences, QObject* parent = nullptr);

  [[nodiscard]] const std::vector<FileUrl>& urls() const { return m_urls; }

  // Puts the folder first, where it stands once, and keeps five.
  void add(const FileUrl& url);
  // Forgets all, in memory and in the preferences.
  void clear();

 Q_SIGNALS:
  void objectWillChange();
  void urlsChanged();

 private:
  void setUrls(std::vector<FileUrl> urls);
  void persist();

  Preferences& m_preferences;
  std::vector<FileUrl> m_urls;
};

}  // namespace lumagrid
