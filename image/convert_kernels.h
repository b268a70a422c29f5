// The colour kernels as the format-pair conversions use them: a converter
// borrowed from the caller or made for one call.
#ifndef ORV_IMAGE_CONVERT_KERNELS_H_
#define ORV_IMAGE_CONVERT_KERNELS_H_

#include <memory>
#include <new>

#include "colour/ColorSpaceConverter.h"

namespace orv {
namespace image {

// The caller's converter, or a temporary one made and initialised here and
// deleted with the lease. ok() is false when a temporary one could not be had
// or did not initialise.
class ConverterLease {
 public:
  explicit ConverterLease(ColorSpaceConverter* given) : converter_(given) {
    if (converter_ != nullptr) return;
    owned_.reset(new (std::nothrow) ColorSpaceConverter());
    if (owned_ && owned_->Initialize()) converter_ = owned_.get();
  }
  bool ok() const { return converter_ != nullptr; }
  ColorSpaceConverter* get() const { return converter_; }

 private:
  ColorSpaceConverter* converter_;
  std::unique_ptr<ColorSpaceConverter> owned_;
};

inline uint32_t ScanValue(bool progressive) {
  return progressive ? CSC_SCAN_PROGRESSIVE : CSC_SCAN_INTERLACED;
}

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_CONVERT_KERNELS_H_
