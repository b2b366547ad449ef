#pragma once

#include <QFileInfo>
#include <QString>

namespace lumagrid {

// Asking for a bus where there is none would start one.
inline bool hasSessionBus() {
  return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
         QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus"));
}

}  // namespace lumagrid
