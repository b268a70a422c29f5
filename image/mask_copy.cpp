// The mask copy: puts A's own pixels back into a mixed picture wherever the
// two sources agree, and restores the inner edge lines of letterbox bands.
//
// The walk goes down the picture in pairs of display lines. Every pair gets
// the pixel test. The band search (check colours and CheckChangeLine) runs
// from the second pair on until the top band is passed; then it pauses
// through the middle of the picture and takes up again as far from the bottom
// as the top edge was from the top, plus nine pairs, so that a bottom band of
// the same size is found.
#include <OrvImage.h>

#include <climits>
#include <cstdint>

#include "foundation/cpu_info.h"
#include "image/field_lines.h"
#include "image/mask_copy_rows.h"
#include "image/picture_limits.h"

namespace {

using orv::image::MaskPixelKind;

typedef void (*CheckColourFn)(unsigned char*, unsigned char*, unsigned long, unsigned char&,
                              unsigned char&);

struct MaskFamily {
  OrvImage::COLOR_FORMAT_TYPE genericFormat;
  MaskPixelKind kind;
  uint64_t bytesPerPixel;  // of a line copy
};

const MaskFamily kFamilies[] = {
    {OrvImage::CF_YUV420, orv::image::kMaskPlane, 1},
    {OrvImage::CF_CCIR601YUY2, orv::image::kMaskYuy2, 2},
    {OrvImage::CF_RGB24, orv::image::kMaskBgr, 3},
    {OrvImage::CF_RGB32, orv::image::kMaskBgrx, 4},
};

// Four line pointers: two lines of A and the matching lines of dst, the first
// of the top field, the second of the bottom field.
struct Seam {
  unsigned char* src1 = nullptr;
  unsigned char* src2 = nullptr;
  unsigned char* dst1 = nullptr;
  unsigned char* dst2 = nullptr;
};

}  // namespace

namespace orv {
namespace image {

// The walk of the mask copy, shared by the four families. `check` is the
// family's GetCheckColor; `changeLine` is CheckChangeLine.
template <typename CheckChange>
unsigned long MaskCopyWalk(const MaskFamily& family, CheckColourFn check, CheckChange changeLine,
                           unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                           unsigned long dstSize, unsigned long width, unsigned long height,
                           int step, OrvImage::FIELD_TYPE field) {
  if (srcA == nullptr || srcB == nullptr || dst == nullptr) return OrvImage::ORV_IMG_INVALID;
  if (field != OrvImage::FIELD_FRAME && field != OrvImage::FIELD_TOP &&
      field != OrvImage::FIELD_BOTTOM) {
    return OrvImage::ORV_IMG_INVALID;
  }
  if (!AreSidesValid(width, height)) return OrvImage::ORV_IMG_INVALID;
  if (step == 0) step = OrvImage::GetGenericStep(family.genericFormat, width, height);
  const uint64_t line = StepMagnitude(step);
  const uint64_t lineBytes = family.bytesPerPixel * width;
  if (step == INT32_MIN || line < lineBytes || line * height > kMaxBytes) {
    return OrvImage::ORV_IMG_INVALID;
  }
  if (height < 2 || width == 0) return OrvImage::ORV_IMG_OK;

  // Display line n of a picture is at origin + n x step.
  const int64_t originOffset = step > 0 ? 0 : static_cast<int64_t>((height - 1) * line);
  const MaskRowFn row = MaskRowsFor(DetectSimdLevel()).row[family.kind];
  const bool writeTop = field != OrvImage::FIELD_BOTTOM;
  const bool writeBottom = field != OrvImage::FIELD_TOP;
  const int w = static_cast<int>(width);

  auto Fits = [&](int64_t offset) {
    return static_cast<uint64_t>(offset) <= dstSize &&
           lineBytes <= dstSize - static_cast<uint64_t>(offset);
  };

  const int64_t pairs = static_cast<int64_t>(height / 2);
  int64_t skipLimit = 0;
  unsigned char prevColor = 0;
  bool inBand = true;
  bool pastTop = false;
  Seam top;
  Seam bottom;
  for (int64_t i = 0; i < pairs; ++i) {
    const int64_t offset0 = originOffset + 2 * i * step;
    const int64_t offset1 = offset0 + step;
    unsigned char* a0 = srcA + offset0;
    unsigned char* a1 = srcA + offset1;
    unsigned char* d0 = dst + offset0;
    unsigned char* d1 = dst + offset1;
    // A line that does not fit in dstSize is not written.
    uint8_t* out0 = writeTop && Fits(offset0) ? d0 : nullptr;
    uint8_t* out1 = writeBottom && Fits(offset1) ? d1 : nullptr;
    if (i <= skipLimit) {
      row(a0, a1, srcB + offset0, srcB + offset1, out0, out1, w, 0, 0, nullptr);
      continue;
    }
    unsigned char color1 = 0;
    unsigned char color2 = 0;
    check(a0, a1, width, color1, color2);
    uint32_t sums[2] = {0, 0};
    row(a0, a1, srcB + offset0, srcB + offset1, out0, out1, w, color1, color2, sums);
    const bool wasPastTop = pastTop;
    Seam& seam = wasPastTop ? bottom : top;
    changeLine(a0, d0, width, height, step, static_cast<unsigned long>(2 * i), sums[0], sums[1],
               color1, color2, prevColor, inBand, pastTop, &seam.src1, &seam.src2, &seam.dst1,
               &seam.dst2);
    if (!wasPastTop && pastTop) skipLimit = pairs - 10 - i;
    prevColor = color2;
  }

  // Whole edge lines from A, bounded by the room left in dst.
  const BoundedLines out(dst, dstSize);
  auto copyLine = [&](unsigned char* from, unsigned char* to) {
    if (from == nullptr || to == nullptr || to < dst) return;
    out.Move(static_cast<uint64_t>(to - dst), from, lineBytes);
  };
  for (const Seam* seam : {&top, &bottom}) {
    if (field != OrvImage::FIELD_BOTTOM) copyLine(seam->src1, seam->dst1);
    if (field != OrvImage::FIELD_TOP) copyLine(seam->src2, seam->dst2);
  }
  return OrvImage::ORV_IMG_OK;
}

}  // namespace image
}  // namespace orv

namespace {

template <typename CheckChange>
unsigned long Walk(int familyIndex, CheckColourFn check, CheckChange changeLine,
                   unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                   unsigned long dstSize, unsigned long width, unsigned long height, int step,
                   OrvImage::FIELD_TYPE field) {
  return orv::image::MaskCopyWalk(kFamilies[familyIndex], check, changeLine, srcA, srcB, dst,
                                  dstSize, width, height, step, field);
}

}  // namespace

unsigned long OrvImage::MaskCopyYUV420(unsigned char* const srcA, unsigned char* const srcB,
                                       unsigned char* dst, unsigned long dstSize,
                                       unsigned long width, unsigned long height, int step,
                                       FIELD_TYPE field) {
  return Walk(0, GetCheckColorYUV420, CheckChangeLine, srcA, srcB, dst, dstSize, width, height,
              step, field);
}

unsigned long OrvImage::MaskCopyYUY2(unsigned char* const srcA, unsigned char* const srcB,
                                     unsigned char* dst, unsigned long dstSize, unsigned long width,
                                     unsigned long height, int step, FIELD_TYPE field) {
  return Walk(1, GetCheckColorYUY2, CheckChangeLine, srcA, srcB, dst, dstSize, width, height, step,
              field);
}

unsigned long OrvImage::MaskCopyRGB24(unsigned char* const srcA, unsigned char* const srcB,
                                      unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      FIELD_TYPE field) {
  return Walk(2, GetCheckColorRGB24, CheckChangeLine, srcA, srcB, dst, dstSize, width, height, step,
              field);
}

unsigned long OrvImage::MaskCopyRGB32(unsigned char* const srcA, unsigned char* const srcB,
                                      unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      FIELD_TYPE field) {
  return Walk(3, GetCheckColorRGB32, CheckChangeLine, srcA, srcB, dst, dstSize, width, height, step,
              field);
}
