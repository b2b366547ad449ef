#pragma once

#include <libheif/heif.h>

#include <memory>

namespace lumagrid {

template <auto release>
struct HeifRelease {
  template <typename Object>
  void operator()(Object* object) const {
    release(object);
  }
};

// What the library gives, owned.
using HeifContext = std::unique_ptr<heif_context, HeifRelease<heif_context_free>>;
using HeifHandle = std::unique_ptr<const heif_image_handle, HeifRelease<heif_image_handle_release>>;
using HeifImage = std::unique_ptr<const heif_image, HeifRelease<heif_image_release>>;
using HeifOptions = std::unique_ptr<heif_decoding_options, HeifRelease<heif_decoding_options_free>>;
using HeifNclx = std::unique_ptr<heif_color_profile_nclx, HeifRelease<heif_nclx_color_profile_free>>;

[[nodiscard]] inline bool succeeded(const heif_error& error) {
  return error.code == heif_error_Ok;
}

}  // namespace lumagrid
