// Failures inside a picture operation are raised as an unsigned long holding a
// result code and caught at the operation's edge, so that no exception leaves
// the library.
#ifndef ORV_IMAGE_IMAGE_ERRORS_H_
#define ORV_IMAGE_IMAGE_ERRORS_H_

#include <OrvImage.h>

#include <new>

namespace orv {
namespace image {

[[noreturn]] inline void Raise(unsigned long code) { throw code; }

// Raises 4 when an image primitive answers a non-zero status.
inline void CheckPrimitive(int status) {
  if (status != 0) Raise(OrvImage::ORV_IMG_FAILED);
}

// Runs `body` and turns what it raises into a result code: a raised code as it
// is, a failed allocation as 1, anything else as `otherCode`.
template <typename Body>
unsigned long Guarded(Body&& body, unsigned long otherCode = OrvImage::ORV_IMG_FAILED) {
  try {
    return body();
  } catch (unsigned long code) {
    return code;
  } catch (const std::bad_alloc&) {
    return OrvImage::ORV_IMG_NO_MEMORY;
  } catch (...) {
    return otherCode;
  }
}

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_IMAGE_ERRORS_H_
