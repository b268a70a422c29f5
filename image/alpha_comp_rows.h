// Row kernels of the YUY2A composition: picture A over picture B, one line.
//
// `yuvX` are lines of packed Y0 Cb Y1 Cr (2 x width bytes), `alphaX` lines of
// one alpha byte a pixel (255 opaque). For each pixel, with a the alpha of A
// and c that of B, b = c if a is 0, else (255 - a) x c / 255 (what shows
// through), and:
//   - Y: a 255 takes A's; a 0 and b 255 takes B's; a 0 and b 0 gives 0;
//     otherwise (Yb x b + Ya x a) / 255 limited to 1..254.
//   - Cb and Cr, once a pair, by the first pixel's a and b: a 255 takes A's;
//     a 0 and b 255 takes B's; a 0 and b 0 gives 128; otherwise
//     ((Ca - 128) x a + (Cb - 128) x b) / 255 truncated toward zero, plus
//     128, limited to 1..254.
//   - alpha: a + b.
// An odd width's lone last pixel has Y and one chroma byte (Cb): it is
// composed by its own a and b, and nothing past the line is read or written.
// Output lines may be input lines: each pixel pair is read whole before it is
// written.
#ifndef ORV_IMAGE_ALPHA_COMP_ROWS_H_
#define ORV_IMAGE_ALPHA_COMP_ROWS_H_

#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace image {

typedef void (*Yuy2aRowFn)(const uint8_t* yuvA, const uint8_t* alphaA, const uint8_t* yuvB,
                           const uint8_t* alphaB, uint8_t* yuvD, uint8_t* alphaD, int width);

// The form of the highest level at or below `level` that this build has.
Yuy2aRowFn Yuy2aRowFor(SimdLevel level);

// The plain form for pixels begin .. width - 1 (begin even).
void Yuy2aRowTail(const uint8_t* yuvA, const uint8_t* alphaA, const uint8_t* yuvB,
                  const uint8_t* alphaB, uint8_t* yuvD, uint8_t* alphaD, int begin, int width);

#if ORV_X86_SIMD
void Yuy2aRowSse2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                  uint8_t*, int);
void Yuy2aRowAvx2(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*,
                  uint8_t*, int);
#endif

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_ALPHA_COMP_ROWS_H_
