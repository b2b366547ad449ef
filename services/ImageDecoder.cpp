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
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
      return ImageError::missing;
    default:  // no descriptors, no memory, a disk that fails, a server that is gone
      return ImageError::unavailable;
  }
}

}  // namespace lumagrid
