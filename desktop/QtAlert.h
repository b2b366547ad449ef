#pragma once

#include "Alert.h"

namespace lumagrid {

class WidgetPalette;

// The alert as a message box above the active window, which it blocks.
class QtAlert final : public Alert {
 public:
  // `palette` outlives the alert.
  explicit QtAlert(WidgetPalette& palette) : m_palette(palette) {}

  [[nodiscard]] AlertRole runModal(const AlertRequest& request) override;

 private:
  WidgetPalette& m_palette;
};

}  // namespace lumagrid
