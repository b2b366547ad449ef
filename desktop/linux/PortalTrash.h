#pragma once

#include "Trash.h"

namespace lumagrid {

// The Trash of a program in a sandbox, which sees no Trash itself: a portal takes the file
// (org.freedesktop.portal.Trash). The portal is handed the open file, so that it moves the one that was meant, wherever
// its name leads by now.
class PortalTrash final : public Trash {
 public:
  // Whether this program runs in a sandbox.
  [[nodiscard]] static bool isNeeded();

  [[nodiscard]] std::optional<QString> trashItem(const FileUrl& file, const FileIdentity& meant) override;
};

}  // namespace lumagrid
