#pragma once

#include <QStringList>
#include <QVariantMap>
#include <future>

#include "SingleInstance.h"

namespace lumagrid {

// The one that has the program's name on the session bus, and what the desktops' convention for applications
// (org.freedesktop.Application) lets others ask of it. Asks the bus for the name as soon as it is made, on a thread of
// its own, which does nothing but wait for the bus; without a bus nothing is asked.
class BusInstance final : public SingleInstance {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  // Once there is an application object.
  explicit BusInstance(QObject* parent = nullptr);
  ~BusInstance() override;

  [[nodiscard]] bool handOver(const std::vector<FileUrl>& files) override;

 public Q_SLOTS:
  // What others call, by the convention's names; each returns before anything is opened.
  // NOLINTBEGIN(readability-identifier-naming)
  Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
  Q_SCRIPTABLE void Open(const QStringList& uris, const QVariantMap& platformData);
  // NOLINTEND(readability-identifier-naming)

 private:
  // Whether another program has the name.
  [[nodiscard]] bool isTaken();

  std::future<bool> m_isTaken;
};

}  // namespace lumagrid
