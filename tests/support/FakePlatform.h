#pragma once

#include <QMap>
#include <QSet>
#include <functional>
#include <utility>

#include "Alert.h"
#include "FolderChooser.h"
#include "ImageDecoder.h"
#include "PhotoLibrary.h"
#include "PopupMenu.h"
#include "Preferences.h"
#include "ScopedAccess.h"
#include "Trash.h"

// Stand-ins for what the system gives. Each answers as the test says, and keeps what it was asked. Files are told by
// their names alone.
namespace lumagrid {

struct FakeImageDecoder : ImageDecoder {
  QImage picture = whitePicture();  // of every file
  QSet<QString> damaged;
  QStringList decoded;
  QStringList expected;        // what it was told to prepare last
  bool preparesInTime = true;  // else nothing is ready before the test calls `ready`
  Ready ready;

  DecodedImage decode(const FileUrl& file) override {
    decoded.append(file.displayName());
    if (damaged.contains(file.displayName())) return {{}, ImageError::damaged};
    QImage image = picture.copy();
    image.setText(QStringLiteral("name"), file.displayName());
    return {image, ImageError::none};
  }
  DecodedImage decodeBounded(const FileUrl& file, std::int64_t) override { return decode(file); }
  std::size_t prepare(const std::vector<FileUrl>& files, const Ready& whenReady) override {
    expected.clear();
    for (const FileUrl& file : files) expected.append(file.displayName());
    ready = whenReady;
    return preparesInTime ? 0 : files.size();
  }

  // The file of a picture that came from here; empty for none.
  [[nodiscard]] static QString nameOf(const QImage& image) { return image.text(QStringLiteral("name")); }

 private:
  static QImage whitePicture() {
    QImage image(3, 2, QImage::Format_RGBX8888);
    image.fill(Qt::white);
    return image;
  }
};

struct FakeTrash : Trash {
  QSet<QString> stuck;
  QStringList moved;

  std::optional<QString> trashItem(const FileUrl& file, const FileIdentity& meant) override {
    if (FileIdentity::of(file) != meant) return QStringLiteral("It is another");
    if (stuck.contains(file.displayName())) return QStringLiteral("It sticks");
    moved.append(file.displayName());
    return std::nullopt;
  }
};

struct FakeFolderChooser : FolderChooser {
  std::optional<FileUrl> answer;
  std::function<void()> whileOpen = [] {};
  QStringList asked;

  std::optional<FileUrl> chooseFolder(const QString& title, const QString& prompt) override {
    asked = {title, prompt};
    whileOpen();
    return answer;
  }
};

struct FakeAlert : Alert {
  AlertRole answer = AlertRole::accept;
  std::function<void()> whileOpen = [] {};
  QList<QStringList> asked;  // each: the message, the information, the buttons

  AlertRole runModal(const AlertRequest& request) override {
    QStringList texts{request.messageText, request.informativeText};
    for (const AlertButton& button : request.buttons) texts.append(button.title);
    asked.append(texts);
    whileOpen();
    return answer;
  }
};

struct FakeScopedAccess : ScopedAccess {
  int starts = 0;
  int stops = 0;

  bool start(const FileUrl&) override { return ++starts > 0; }
  void stop(const FileUrl&) override { ++stops; }
};

struct FakePreferences : Preferences {
  QMap<QString, QStringList> values;
  int writes = 0;

  std::optional<QStringList> stringArray(const QString& key) const override {
    return values.contains(key) ? std::optional(values.value(key)) : std::nullopt;
  }
  void set(const QString& key, const QStringList& value) override {
    ++writes;
    values[key] = value;
  }
  void removeObject(const QString& key) override {
    ++writes;
    values.remove(key);
  }
};

struct FakePopupMenu : PopupMenu {
  QPoint position;
  std::vector<MenuEntry> entries;  // of the menu opened last

  void open(QWindow*, QPoint at, std::vector<MenuEntry> menu) override {
    position = at;
    entries = std::move(menu);
  }
};

struct FakePlatform {
  FakeImageDecoder decoder;
  FakeTrash trash;
  FakeFolderChooser chooser;
  FakeAlert alert;
  FakeScopedAccess access;
  FakePreferences preferences;
  FakePopupMenu popupMenu;

  [[nodiscard]] PhotoLibrary::Services services() { return {decoder, trash, chooser, alert, access}; }
};

}  // namespace lumagrid
