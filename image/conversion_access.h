// A door to the private conversions of OrvImage for the library's own code
// and its tests: the full forms that take a field, a work vector or a colour
// converter, and the dispatch.
#ifndef ORV_IMAGE_CONVERSION_ACCESS_H_
#define ORV_IMAGE_CONVERSION_ACCESS_H_

#include <OrvImage.h>

#include <utility>

namespace orv {
namespace image {

struct ConversionAccess {
  template <typename... Args>
  static unsigned long ColorConvert(Args&&... args) {
    return OrvImage::ColorConvert(std::forward<Args>(args)...);
  }
  template <typename... Args>
  static unsigned long ColorConvertToYUV420(Args&&... args) {
    return OrvImage::ColorConvertToYUV420(std::forward<Args>(args)...);
  }
  template <typename... Args>
  static unsigned long YUV420ToRGB24(Args&&... args) {
    return OrvImage::YUV420ToRGB24(std::forward<Args>(args)...);
  }
  template <typename... Args>
  static unsigned long YUV420ToCCIR601YUY2(Args&&... args) {
    return OrvImage::YUV420ToCCIR601YUY2(std::forward<Args>(args)...);
  }
  template <typename... Args>
  static unsigned long YUV420ToYV12(Args&&... args) {
    return OrvImage::YUV420ToYV12(std::forward<Args>(args)...);
  }
  template <typename... Args>
  static unsigned long CCIR601YUY2ToYUV420(Args&&... args) {
    return OrvImage::CCIR601YUY2ToYUV420(std::forward<Args>(args)...);
  }
  template <typename... Args>
  static unsigned long CCIR601YUY2ToYV12(Args&&... args) {
    return OrvImage::CCIR601YUY2ToYV12(std::forward<Args>(args)...);
  }
};

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_CONVERSION_ACCESS_H_
