#include "RecentFolders.h"

#include <unistd.h>

#include <QFile>

#include "Preferences.h"

namespace lumagrid {

namespace {

constexpr std::size_t kMaxCount = 5;

QString key() {
  return QStringLiteral("recentFolderPaths");
}

bool isReachable(const FileUrl& url) {
  return ::access(url.path().constData(), F_OK) == 0;
}

}  // namespace

RecentFolders::RecentFolders(Preferences& preferences, QObject* parent) : QObject(parent), m_preferences(preferences) {
  for (const QString& path : m_preferences.stringArray(key()).value_or(QStringList())) {
    const FileUrl url = FileUrl::fromPath(path);
    if (!url.isEmpty() && isReachable(url)) m_urls.push_back(url);
  }
}

void RecentFolders::add(const FileUrl& url) {
  std::vector<FileUrl> urls = m_urls;
  std::erase(urls, url);
  urls.insert(urls.begin(), url);
  if (urls.size() > kMaxCount) urls.resize(kMaxCount);
  setUrls(std::move(urls));
  persist();
}

void RecentFolders::clear() {
  setUrls({});
  m_preferences.removeObject(key());
}

void RecentFolders::setUrls(std::vector<FileUrl> urls) {
  Q_EMIT objectWillChange();
  m_urls = std::move(urls);
  Q_EMIT urlsChanged();
}

void RecentFolders::persist() {
  QStringList paths;
  for (const FileUrl& url : m_urls) paths.append(QFile::decodeName(url.path()));
  m_preferences.set(key(), paths);
}

}  // namespace lumagrid
