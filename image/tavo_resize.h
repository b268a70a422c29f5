// The own picture scaler: 4:2:0 planes and packed 4:2:2 (YUY2), in two
// separable passes, horizontal first, each pass with one of six methods chosen
// by the ratio of its lengths.
//
// OrvImage::TavoResizeYUV420 and OrvImage::TavoResizeYUY2 forward here with
// the processor level detected for this process; tests call these functions
// directly with any level.
#ifndef ORV_IMAGE_TAVO_RESIZE_H_
#define ORV_IMAGE_TAVO_RESIZE_H_

#include <OrvImage.h>

#include <cstddef>
#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace tavo {

// The method of one pass, tested in this order with L the source length and N
// the destination length: L = N copy; L = 2N halve; L > N area; L = 1 repeat;
// 2L = N double; otherwise cubic.
enum class Method { kCopy, kHalve, kArea, kRepeat, kDouble, kCubic };
Method ChooseMethod(int srcLength, int dstLength);

// The common grid of an area pass: G = lcm(L, N), P = G / L the length of a
// source sample on it, Q = G / N the length of an output sample.
struct AreaGrid {
  uint64_t grid;
  uint32_t p;
  uint32_t q;
};
AreaGrid MakeAreaGrid(int srcLength, int dstLength);

// The four 16.16 Lagrange weights of a cubic output whose position has the
// fractional part t (the curve through the samples at 0, 1, 2, 3 taken at
// x = t + 1). Each value is cut toward zero after its rounding term.
void CubicWeights(double t, int32_t weight[4]);

// The scaler. Arguments as OrvImage::TavoResizeYUV420 / TavoResizeYUY2 (see
// OrvImage.h), plus the processor level whose forms to use.
//
// Refused with false before anything is written: a null picture; a size of 0
// or above 65535 on a side; a step that is not positive, shorter than the
// line, or that makes the picture pass 2^31 - 1 bytes; a trim or a margin that
// is negative or leaves no picture; an unknown field value; a field of a
// picture too short to have one. The packed engine also refuses odd lengths
// across and trims or margins that are not a multiple of 4 (they would split a
// pixel pair). A failed work allocation answers false as well, so the callers
// report it instead of passing on a black picture as a success.
bool ResizeYUV420(const uint8_t* src, uint8_t* dst, int srcStep, int dstStep,
                  OrvImage::IppiSize srcSize, OrvImage::IppiSize dstSize, int srcTrimX,
                  int dstMarginX, int dstMarginY, OrvImage::FIELD_TYPE field, bool sameField,
                  SimdLevel level);
bool ResizeYUY2(const uint8_t* src, uint8_t* dst, int srcStep, int dstStep,
                OrvImage::IppiSize srcSize, OrvImage::IppiSize dstSize, int srcTrimX,
                int dstMarginX, int dstMarginY, OrvImage::FIELD_TYPE field, bool sameField,
                SimdLevel level);

// One plane, already prepared: w x H samples at `src` with `srcStep` between
// lines, into dw x h samples at `dst`. False if the work memory can't be had.
bool ScalePlane(const uint8_t* src, ptrdiff_t srcStep, int w, int H, uint8_t* dst,
                ptrdiff_t dstStep, int dw, int h, SimdLevel level);

}  // namespace tavo
}  // namespace orv

#endif  // ORV_IMAGE_TAVO_RESIZE_H_
