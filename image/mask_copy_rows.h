// Row kernels of the mask copy: the pixel test of one pair of lines.
//
// For each pixel k of a pair of lines (A0, A1 from picture A, B0, B1 from
// picture B) the pixel is still when the compared value of A0 and B0 differs
// by less than 5 and that of A1 and B1 too. A still pixel is restored: D0[k]
// from A0[k] and D1[k] from A1[k] (a null D line is not written). With a
// non-null `sums`, sums[0] becomes the sum over the line of |A0[k] - color1|
// and sums[1] that of |A1[k] - color2|, in the compared value.
//
// Pixel kinds: one plane byte (compared and restored), a YUY2 pixel (the Y
// byte compared and restored, the chroma byte stays), a B G R pixel and a
// B G R X pixel (luma (59 G + 30 R + 11 B) / 100 compared, the three colour
// bytes restored, the fourth stays).
//
// Every processor form gives the bytes and sums of the plain form. The
// processor forms do whole vectors and hand the rest of a line to MaskRowTail.
#ifndef ORV_IMAGE_MASK_COPY_ROWS_H_
#define ORV_IMAGE_MASK_COPY_ROWS_H_

#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace image {

enum MaskPixelKind : int { kMaskPlane = 0, kMaskYuy2 = 1, kMaskBgr = 2, kMaskBgrx = 3 };
constexpr int kMaskPixelKinds = 4;

typedef void (*MaskRowFn)(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0,
                          const uint8_t* b1, uint8_t* d0, uint8_t* d1, int width, int color1,
                          int color2, uint32_t* sums);

struct MaskRows {
  MaskRowFn row[kMaskPixelKinds];
};

// The forms of the highest level at or below `level` that this build has.
const MaskRows& MaskRowsFor(SimdLevel level);

// The plain form for pixels begin .. width - 1 of a line; when `sums` is not
// null the two sums are added to sums[0] and sums[1].
void MaskRowTail(MaskPixelKind kind, const uint8_t* a0, const uint8_t* a1, const uint8_t* b0,
                 const uint8_t* b1, uint8_t* d0, uint8_t* d1, int begin, int width, int color1,
                 int color2, uint32_t* sums);

#if ORV_X86_SIMD
void MaskRowPlaneSse2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                      uint8_t*, int, int, int, uint32_t*);
void MaskRowYuy2Sse2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                     uint8_t*, int, int, int, uint32_t*);
void MaskRowBgrxSse2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                     uint8_t*, int, int, int, uint32_t*);
void MaskRowBgrSsse3(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                     uint8_t*, int, int, int, uint32_t*);
void MaskRowPlaneAvx2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                      uint8_t*, int, int, int, uint32_t*);
void MaskRowYuy2Avx2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                     uint8_t*, int, int, int, uint32_t*);
void MaskRowBgrxAvx2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                     uint8_t*, int, int, int, uint32_t*);
#endif

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_MASK_COPY_ROWS_H_
