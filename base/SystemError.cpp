#include "SystemError.h"

#include <system_error>

namespace lumagrid {

QString systemErrorText(int error) {
  return QString::fromLocal8Bit(std::generic_category().message(error).c_str());
}

}  // namespace lumagrid
