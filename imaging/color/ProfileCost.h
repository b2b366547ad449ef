#pragma once

#include <QByteArrayView>

namespace lumagrid {

// Whether the tables of an ICC profile lie within it and are few enough for a transform to be made of them in a moment:
// a kilobyte can name a chain of tens of thousands of steps. Profiles of devices have a handful. Any thread.
[[nodiscard]] bool isProfileAffordable(QByteArrayView profile);

}  // namespace lumagrid
