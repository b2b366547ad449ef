#pragma once

#include <QString>

namespace lumagrid {

// The system's own words for an error number of its, for people.
[[nodiscard]] QString systemErrorText(int error);

}  // namespace lumagrid
