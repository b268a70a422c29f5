// Blending two pictures of one format by one weight, over the whole picture
// or over one field. The mixing itself is the primitives' constant-alpha
// composition in its additive form: every byte becomes
// min(255, (a x A + b x B) / 255), rounded to nearest.
#include <OrvImage.h>

#include <climits>
#include <cstdint>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

namespace ipp = orv::ipp;
using orv::image::StepMagnitude;

// The 8-bit alpha of a weight: weight x 256 truncated, limited to 0..255. A
// weight that is not a number counts as 0.
ipp::Ipp8u WeightAlpha(double weight) {
  const double scaled = weight * 256.0;
  if (scaled >= 255.0) return 255;
  if (!(scaled > 0.0)) return 0;
  return static_cast<ipp::Ipp8u>(static_cast<int>(scaled));
}

// How one family hands its lines to the primitives.
struct BlendFamily {
  int channels;        // pixels of the primitive: 1, 3 or 4 bytes
  uint64_t lineBytes;  // bytes of a line per pixel of the picture
  bool planar;         // YUV420: Y, then both chroma planes as one block
};

const BlendFamily kYuv420 = {1, 1, true};
const BlendFamily kYuy2 = {1, 2, false};
const BlendFamily kRgb24 = {3, 3, false};
const BlendFamily kRgb32 = {4, 4, false};

// One region of lines: where it starts (from the lowest address), the
// distance between its lines, and its size in primitive pixels.
struct Region {
  uint64_t offset;
  int rowStep;
  ipp::IppiSize size;
};

// Mixes (or, with `copy`, copies from A) one region.
void MixRegion(int channels, const unsigned char* srcA, const unsigned char* srcB,
               unsigned char* dst, const Region& r, bool copy, ipp::Ipp8u a, ipp::Ipp8u b) {
  if (r.size.width <= 0 || r.size.height <= 0) return;
  const unsigned char* pa = srcA + r.offset;
  const unsigned char* pb = srcB + r.offset;
  unsigned char* pd = dst + r.offset;
  const int s = r.rowStep;
  ipp::IppStatus status;
  if (copy) {
    status = channels == 1   ? ipp::ippiCopy_8u_C1R(pa, s, pd, s, r.size)
             : channels == 3 ? ipp::ippiCopy_8u_C3R(pa, s, pd, s, r.size)
                             : ipp::ippiCopy_8u_C4R(pa, s, pd, s, r.size);
  } else {
    status = channels == 1
                 ? ipp::ippiAlphaCompC_8u_C1R(pa, s, a, pb, s, b, pd, s, r.size, ipp::ippAlphaPlus)
             : channels == 3
                 ? ipp::ippiAlphaCompC_8u_C3R(pa, s, a, pb, s, b, pd, s, r.size, ipp::ippAlphaPlus)
                 : ipp::ippiAlphaCompC_8u_C4R(pa, s, a, pb, s, b, pd, s, r.size, ipp::ippAlphaPlus);
  }
  orv::image::CheckPrimitive(status);
}

// The shared body of both forms. `sameTest` is false for the in-place form,
// which always mixes.
unsigned long Blend(const BlendFamily& family, unsigned char* srcA, unsigned char* srcB,
                    unsigned char* dst, unsigned long width, unsigned long height, int step,
                    OrvImage::FIELD_TYPE field, float ratio, bool sameTest) {
  if (srcA == nullptr || srcB == nullptr || dst == nullptr) return OrvImage::ORV_IMG_INVALID;
  if (field != OrvImage::FIELD_FRAME && field != OrvImage::FIELD_TOP &&
      field != OrvImage::FIELD_BOTTOM) {
    return OrvImage::ORV_IMG_INVALID;
  }
  if (!orv::image::AreSidesValid(width, height) || step == INT32_MIN) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const uint64_t line = StepMagnitude(step);
  const uint64_t pictureBytes = family.planar ? (line + line / 2) * height : line * height;
  if (width != 0 && height != 0 &&
      (line < family.lineBytes * width || 2 * line > static_cast<uint64_t>(INT_MAX) ||
       pictureBytes > orv::image::kMaxBytes)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const ipp::Ipp8u a = WeightAlpha(ratio);
  const ipp::Ipp8u b = WeightAlpha(1.0 - static_cast<double>(ratio));
  const bool copy = sameTest && srcA == srcB;

  // Lines of the field, counted from the display's top: with a negative step
  // the display's first line is the last in memory, so the top field of an
  // even height lies on the odd memory lines.
  uint64_t offset = 0;
  uint64_t rowStep = line;
  uint64_t rows = height;
  if (field == OrvImage::FIELD_TOP) {
    offset = step < 0 ? line : 0;
    rowStep = 2 * line;
    rows = height / 2;
  } else if (field == OrvImage::FIELD_BOTTOM) {
    offset = step > 0 ? line : 0;
    rowStep = 2 * line;
    rows = height / 2;
  }
  const uint64_t bytesWide = family.lineBytes * width / static_cast<uint64_t>(family.channels);
  return orv::image::Guarded([&]() -> unsigned long {
    const Region luma = {
        offset, static_cast<int>(rowStep), {static_cast<int>(bytesWide), static_cast<int>(rows)}};
    MixRegion(family.channels, srcA, srcB, dst, luma, copy, a, b);
    if (family.planar) {
      // Both chroma planes as one block of lines |step| / 2 long: with the
      // whole frame all of them, with a field every second one, starting at
      // the second line when the field starts at the second Y line. The
      // block starts behind the Y plane for odd heights too, where the Y rows
      // of a field end one line before it.
      const Region chroma = {line * height + offset / 2,
                             static_cast<int>(rowStep / 2),
                             {static_cast<int>(width / 2), static_cast<int>(rows)}};
      MixRegion(1, srcA, srcB, dst, chroma, copy, a, b);
    }
    return OrvImage::ORV_IMG_OK;
  });
}

}  // namespace

unsigned long OrvImage::BlendYUV420(unsigned char* src, unsigned char* dst, unsigned long width,
                                    unsigned long height, int step, float ratio) {
  return Blend(kYuv420, src, dst, dst, width, height, step, FIELD_FRAME, ratio, false);
}

unsigned long OrvImage::BlendYUY2(unsigned char* src, unsigned char* dst, unsigned long width,
                                  unsigned long height, int step, float ratio) {
  return Blend(kYuy2, src, dst, dst, width, height, step, FIELD_FRAME, ratio, false);
}

unsigned long OrvImage::BlendRGB24(unsigned char* src, unsigned char* dst, unsigned long width,
                                   unsigned long height, int step, float ratio) {
  return Blend(kRgb24, src, dst, dst, width, height, step, FIELD_FRAME, ratio, false);
}

unsigned long OrvImage::BlendRGB32(unsigned char* src, unsigned char* dst, unsigned long width,
                                   unsigned long height, int step, float ratio) {
  return Blend(kRgb32, src, dst, dst, width, height, step, FIELD_FRAME, ratio, false);
}

unsigned long OrvImage::BlendYUV420(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                    unsigned long* /*size*/, unsigned long width,
                                    unsigned long height, int step, FIELD_TYPE field, float ratio) {
  return Blend(kYuv420, srcA, srcB, dst, width, height, step, field, ratio, true);
}

unsigned long OrvImage::BlendYUY2(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                  unsigned long* /*size*/, unsigned long width,
                                  unsigned long height, int step, FIELD_TYPE field, float ratio) {
  return Blend(kYuy2, srcA, srcB, dst, width, height, step, field, ratio, true);
}

unsigned long OrvImage::BlendRGB24(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                   unsigned long* /*size*/, unsigned long width,
                                   unsigned long height, int step, FIELD_TYPE field, float ratio) {
  return Blend(kRgb24, srcA, srcB, dst, width, height, step, field, ratio, true);
}

unsigned long OrvImage::BlendRGB32(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                   unsigned long* /*size*/, unsigned long width,
                                   unsigned long height, int step, FIELD_TYPE field, float ratio) {
  return Blend(kRgb32, srcA, srcB, dst, width, height, step, field, ratio, true);
}
