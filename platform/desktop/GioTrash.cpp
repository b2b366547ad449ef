#include "GioTrash.h"

#include <gio/gio.h>

#include <memory>

namespace lumagrid {

namespace {

template <auto function>
struct Release {
  template <typename T>
  void operator()(T* pointer) const {
    function(pointer);
  }
};

}  // namespace

std::optional<QString> GioTrash::trashItem(const FileUrl& file) {
  // The local file system's own: the default one may hand the call to a service, and wait for it.
  const std::unique_ptr<GFile, Release<g_object_unref>> item(
      g_vfs_get_file_for_path(g_vfs_get_local(), file.path().constData()));
  GError* reason = nullptr;
  if (g_file_trash(item.get(), nullptr, &reason)) return std::nullopt;
  const std::unique_ptr<GError, Release<g_error_free>> error(reason);
  return QString::fromUtf8(error->message);
}

}  // namespace lumagrid
