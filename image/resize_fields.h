// How a resize of one field is laid out: which lines it reads and writes, and
// the factor that makes a field fill a frame.
#ifndef ORV_IMAGE_RESIZE_FIELDS_H_
#define ORV_IMAGE_RESIZE_FIELDS_H_

#include <OrvImage.h>

#include <cstdint>

namespace orv {
namespace image {

struct FieldLayout {
  int64_t srcOffset = 0;  // bytes from the picture's start to the first line read
  int64_t dstOffset = 0;  // bytes from the picture's start to the first line written
  int srcStep = 0;
  int dstStep = 0;
  int srcHeight = 0;
  int srcRectHeight = 0;
  int dstHeight = 0;
  double yFactor = 1.0;
};

// With FIELD_FRAME nothing changes. A field read into the whole destination
// (sameField false) reads every second line from its own first line and
// doubles the vertical factor; a field read into the same field of the
// destination (sameField true) also writes every second line, from the field's
// first destination line, at the same factor. Heights halve by integer division.
inline FieldLayout PrepareField(OrvImage::FIELD_TYPE field, bool sameField, int srcStep,
                                int dstStep, int srcHeight, int srcRectHeight, int dstHeight,
                                double yFactor) {
  FieldLayout f;
  f.srcStep = srcStep;
  f.dstStep = dstStep;
  f.srcHeight = srcHeight;
  f.srcRectHeight = srcRectHeight;
  f.dstHeight = dstHeight;
  f.yFactor = yFactor;
  if (field != OrvImage::FIELD_TOP && field != OrvImage::FIELD_BOTTOM) return f;
  const bool bottom = field == OrvImage::FIELD_BOTTOM;
  f.srcOffset = bottom ? srcStep : 0;
  f.srcStep = srcStep * 2;
  f.srcHeight = srcHeight / 2;
  f.srcRectHeight = srcRectHeight / 2;
  if (sameField) {
    f.dstOffset = bottom ? dstStep : 0;
    f.dstStep = dstStep * 2;
    f.dstHeight = dstHeight / 2;
  } else {
    f.yFactor = yFactor * 2.0;
  }
  return f;
}

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_RESIZE_FIELDS_H_
