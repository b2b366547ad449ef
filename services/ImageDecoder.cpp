#include "ImageDecoder.h"

#include <cerrno>

namespace lumagrid {

ImageError errorOfOpening(int systemError) {
  switch (systemError) {
    case EACCES:
    case EPERM:
      return ImageError::denied;
    case EINVAL:
    case ENXIO:  // a socket, or a device that is not there
    case ELOOP:
      return ImageError::unsupported;
    default:
      return ImageError::missing;
  }
}

}  // namespace lumagrid
