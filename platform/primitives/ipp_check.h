// Argument checks shared by the primitives (see ipp_types.h for their order).
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_CHECK_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_CHECK_H_

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {
namespace check {

inline bool SizeOk(IppiSize s) {
  return s.width >= 1 && s.height >= 1 && s.width <= kIppMaxSide && s.height <= kIppMaxSide;
}

// A step must hold `bytesPerPixel` x width bytes (computed in 64 bits).
inline bool StepOk(int step, int width, int bytesPerPixel) {
  return step > 0 && static_cast<int64_t>(step) >= static_cast<int64_t>(width) * bytesPerPixel;
}

// Address of line y of a picture.
template <typename T>
inline T* Line(T* base, int step, int y) {
  using Byte = typename std::conditional<std::is_const<T>::value, const uint8_t, uint8_t>::type;
  return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) +
                              static_cast<ptrdiff_t>(step) * static_cast<ptrdiff_t>(y));
}

}  // namespace check
}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_CHECK_H_
