// Size arithmetic and limits shared by every picture operation.
//
// Pictures are at most 65535 pixels a side; steps and byte sizes fit in 31
// bits, as the image primitives' int sizes demand. Arithmetic is done in 64
// bits, so no product can wrap before it is checked.
#ifndef ORV_IMAGE_PICTURE_LIMITS_H_
#define ORV_IMAGE_PICTURE_LIMITS_H_

#include <OrvImage.h>

#include <cstdint>
#include <cstdlib>

namespace orv {
namespace image {

constexpr uint64_t kMaxSide = 65535;
constexpr uint64_t kMaxBytes = 0x7FFFFFFF;

inline bool IsSideValid(uint64_t side) { return side <= kMaxSide; }
inline bool AreSidesValid(uint64_t width, uint64_t height) {
  return IsSideValid(width) && IsSideValid(height);
}

// The line length in bytes rounded up to a multiple of 4: ((bits x width + 31) / 8) & ~3.
inline uint64_t AlignedLine(uint64_t bitsPerPixel, uint64_t width) {
  return ((bitsPerPixel * width + 31) / 8) & ~static_cast<uint64_t>(3);
}

// The magnitude of a step, without overflow for INT32_MIN.
inline uint64_t StepMagnitude(int64_t step) {
  return step < 0 ? static_cast<uint64_t>(-step) : static_cast<uint64_t>(step);
}

inline bool IsPlanar420(OrvImage::COLOR_FORMAT_TYPE f) {
  return f == OrvImage::CF_YUV420 || f == OrvImage::CF_BT709YUV420 || f == OrvImage::CF_YV12;
}
inline bool IsYuy2(OrvImage::COLOR_FORMAT_TYPE f) {
  return f == OrvImage::CF_CCIR601YUY2 || f == OrvImage::CF_BT709YUY2;
}
inline bool IsKnownFormat(OrvImage::COLOR_FORMAT_TYPE f) {
  return static_cast<int32_t>(f) >= OrvImage::CF_CCIR601YUY2 &&
         static_cast<int32_t>(f) <= OrvImage::CF_YUY2A;
}

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_PICTURE_LIMITS_H_
