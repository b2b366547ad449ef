#pragma once

#include <QtQml/qqmlregistration.h>
#include <QImage>
#include <QObject>
#include <QString>
#include <cstdint>

#include "ChangeObserver.h"
#include "PhotoLibrary.h"

namespace lumagrid {

// What the views show of a window's library. The counts are told once per turn of the event loop, however often they
// changed in it; the rest at once. Main thread.
class ShownLibrary : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("part of a window's state")
  Q_PROPERTY(int photoCount READ photoCount NOTIFY photoCountChanged)
  Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectedCountChanged)
  // The last number of selected photos that was not 0: what a bar that leaves goes on to show.
  Q_PROPERTY(int lastSelectedCount READ lastSelectedCount NOTIFY selectedCountChanged)
  Q_PROPERTY(QImage currentImage READ currentImage NOTIFY currentImageChanged)
  Q_PROPERTY(bool hasImage READ hasImage NOTIFY currentImageChanged)
  Q_PROPERTY(QString currentName READ currentName NOTIFY currentPhotoChanged)
  Q_PROPERTY(bool hasCurrentPhoto READ hasCurrentPhoto NOTIFY currentPhotoChanged)
  Q_PROPERTY(bool hasPreviousPhoto READ hasPreviousPhoto NOTIFY currentPhotoChanged)
  Q_PROPERTY(bool canGoNext READ canGoNext NOTIFY currentPhotoChanged)
  Q_PROPERTY(QString counterText READ counterText NOTIFY currentPhotoChanged)
  Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY statusChanged)
  Q_PROPERTY(bool statusIsError READ statusIsError NOTIFY statusChanged)
  // A status that nobody has seen yet; empty when there is none.
  Q_PROPERTY(QString newStatus READ newStatus NOTIFY newStatusChanged)

 public:
  // `library` outlives this.
  explicit ShownLibrary(const PhotoLibrary& library, QObject* parent = nullptr);

  [[nodiscard]] qint64 photoCount() const { return m_library.photoCount(); }
  [[nodiscard]] qint64 selectedCount() const { return static_cast<qint64>(m_library.selectedIndices().size()); }
  [[nodiscard]] qint64 lastSelectedCount() const { return m_lastSelectedCount; }
  [[nodiscard]] const QImage& currentImage() const { return m_library.currentImage(); }
  [[nodiscard]] bool hasImage() const { return !m_library.currentImage().isNull(); }
  [[nodiscard]] QString currentName() const;
  [[nodiscard]] bool hasCurrentPhoto() const { return m_library.currentPhoto() != nullptr; }
  [[nodiscard]] bool hasPreviousPhoto() const { return m_library.currentIndex() > 0; }
  [[nodiscard]] bool canGoNext() const { return m_library.canGoNext(); }
  [[nodiscard]] QString counterText() const { return m_library.counterText(); }
  [[nodiscard]] const QString& statusMessage() const { return m_library.statusMessage(); }
  [[nodiscard]] bool statusIsError() const { return m_library.statusIsError(); }
  [[nodiscard]] const QString& newStatus() const { return m_newStatus; }

  // The new status was seen, or its time is up.
  Q_INVOKABLE void dismissNewStatus();

 Q_SIGNALS:
  void photoCountChanged();
  void selectedCountChanged();
  void currentImageChanged();
  void currentPhotoChanged();
  void statusChanged();
  void newStatusChanged();

 private:
  const PhotoLibrary& m_library;
  std::int64_t m_lastSelectedCount = 0;
  QString m_newStatus;
  ChangeObserver<std::int64_t> m_photoCountObserver;
  ChangeObserver<std::int64_t> m_selectedCountObserver;
};

}  // namespace lumagrid
