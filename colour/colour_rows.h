// Row kernels of the colour converters.
//
// A row kernel turns source rows into one destination row; it knows nothing of
// pitches, walking direction, fields or picture height. The kernel classes
// (Cto420, C420toRGB2, C420toRGB) walk their pictures and call these rows
// through a table chosen once for a SimdLevel. Every table gives the bytes of
// the plain table: the processor bodies run whole vectors and hand the rest of
// a row to the plain body (see RunWithTail), so any even width is written
// whole at every level.
#ifndef ORV_COLOUR_COLOUR_ROWS_H_
#define ORV_COLOUR_COLOUR_ROWS_H_

#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace colour {

// Weights of the packed-RGB to YUV sums (BT.601), 13 fractional bits, with the
// black level added to luma. Every value fits 16 bits.
struct PlanarCoefs {
  int32_t black;
  int32_t rToY, gToY, bToY;
  int32_t rToU, gToU, bToU;
  int32_t rToV, gToV, bToV;
};

// The planar-to-RGB matrix of one conversion. yOffset/yGain/terms serve the
// general route (6 fractional bits); yOffset24/yGain24 the 24-bit route
// (4 fractional bits).
struct RgbMatrix {
  int32_t yOffset;
  int32_t uToB, uToG, vToG, vToR;
  int32_t yGain;
  int32_t yOffset24;
  int32_t yGain24;
};

// Byte layouts of the general route's output pixels.
enum PixelKind : int {
  kPixBgr0 = 0,  // B G R 0
  kPixBgra = 1,  // B G R 255
  kPix0rgb = 2,  // 0 R G B
  kPixBgr = 3,   // B G R
  kPix555 = 4,   // 16-bit x R5 G5 B5
  kPix565 = 5,   // 16-bit R5 G6 B5
};

inline int BytesPerPixel(PixelKind kind) {
  return kind == kPixBgr ? 3 : (kind == kPix555 || kind == kPix565) ? 2 : 4;
}

// Vertical filters of the colour terms (first field, and the mirrored second field).
enum TermFilter : int { kFilterFrame = 0, kFilterField1 = 1, kFilterField2 = 2 };

struct PlanarRows {
  // Luma of `pairs` pixel pairs of one RGB24 / RGB32 line.
  void (*rgb24ToY)(const uint8_t* src, int pairs, uint8_t* y, const PlanarCoefs& c);
  void (*rgb32ToY)(const uint8_t* src, int pairs, uint8_t* y, const PlanarCoefs& c);
  // Chroma of `pairs` left pixels of lines a and b: frame filter (a + b) x 64
  // when `field` is 0, field filter (3a + b) x 32 otherwise.
  void (*rgb24ToUV)(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u,
                    uint8_t* v, const PlanarCoefs& c);
  void (*rgb32ToUV)(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u,
                    uint8_t* v, const PlanarCoefs& c);
  // Both at once: luma of lines a and b into ya and yb, chroma of the pair
  // into u and v, reading each pixel once.
  void (*rgb24ToYUV)(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* ya,
                     uint8_t* yb, uint8_t* u, uint8_t* v, const PlanarCoefs& c);
  void (*rgb32ToYUV)(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* ya,
                     uint8_t* yb, uint8_t* u, uint8_t* v, const PlanarCoefs& c);
  // The Y bytes of `pairs` YUY2 pixel pairs.
  void (*yuy2ToY)(const uint8_t* src, int pairs, uint8_t* y);
  // Chroma of two YUY2 lines: (a + b + 1) >> 1 when `field` is 0, else (3a + b + 2) >> 2.
  void (*yuy2ToUV)(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u,
                   uint8_t* v);
  // One YUY2 line from a Y line and the chroma (wa x ca + wb x cb + round) >> shift.
  void (*toYuy2)(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
                 const uint8_t* vb, int pairs, int wa, int wb, int round, int shift, uint8_t* dst);
};

// What the byte multiply-add bodies of toYuy2 make of a chroma filter
// (wa x a + wb x b + round) >> shift: the sum of one multiply-add of the
// interleaved samples, then the scaling.
enum class Yuy2Chroma {
  kUnsuited,   // weights beyond a signed byte or sums beyond 16 bits: the word body
  kRoundHalf,  // round 2^(shift-1): (x * 2^(15-shift) + 2^14) >> 15, one rounding multiply
  kFloor,      // round 0: a shift alone
  kAddShift,   // any other rounding: an add and a shift
};

inline Yuy2Chroma ClassifyYuy2Chroma(int wa, int wb, int round, int shift) {
  if (wa < 0 || wb < 0 || wa > 127 || wb > 127 || round < 0 || shift < 0 || shift > 15 ||
      (wa + wb) * 255 + round > 32767)
    return Yuy2Chroma::kUnsuited;
  if (shift >= 1 && round == 1 << (shift - 1)) return Yuy2Chroma::kRoundHalf;
  return round == 0 ? Yuy2Chroma::kFloor : Yuy2Chroma::kAddShift;
}

// The 24-bit route's vertical weighting (wa x xa + wb x xb) x mul of the
// chroma differences x = c - 128, taken by the byte multiply-add bodies as
// a x ca + b x cb - bias with a = wa x mul, b = wb x mul, bias = 128 (a + b):
// the same 16-bit value, since everything is linear and nothing saturates.
struct Route24Weights {
  int a, b, bias;
};

// False when the weights don't suit the byte multiply-add (the caller then
// takes the word body).
inline bool MakeRoute24Weights(int wa, int wb, int mul, Route24Weights* w) {
  const long a = static_cast<long>(wa) * mul, b = static_cast<long>(wb) * mul;
  if (a < 0 || b < 0 || a > 127 || b > 127 || (a + b) * 255 > 32767) return false;
  *w = Route24Weights{static_cast<int>(a), static_cast<int>(b), static_cast<int>(128 * (a + b))};
  return true;
}

struct RgbRows {
  // Colour terms of `n` chroma columns, plus the right-edge entry [n] = [n-1].
  void (*terms)(const uint8_t* u, const uint8_t* v, int n, const RgbMatrix& m, int16_t* r,
                int16_t* g, int16_t* b);
  // Vertical filter of `count` entries of one component; `blue` picks the
  // form that stays inside 16 bits for blue's wider values.
  void (*filter)(const int16_t* a, const int16_t* b, int count, TermFilter kind, bool blue,
                 int16_t* outA, int16_t* outB);
  // `width` pixels (even) of the general route from a luma row and terms.
  void (*pixels)(const uint8_t* y, const int16_t* r, const int16_t* g, const int16_t* b, int width,
                 const RgbMatrix& m, PixelKind kind, uint8_t* dst);
  // `width` pixels (even) of the 24-bit route: chroma lines a and b, each
  // weighted (wa, wb) and scaled by `mul`.
  void (*route24)(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
                  const uint8_t* vb, int width, int wa, int wb, int mul, const RgbMatrix& m,
                  uint8_t* dst);
  // Per-byte mean (p + q + 1) >> 1 of two lines.
  void (*lineMean)(const uint8_t* p, const uint8_t* q, int bytes, uint8_t* dst);
};

// The tables of a level. A level without bodies of its own gives the table of
// the highest level below it that has them.
const PlanarRows& GetPlanarRows(SimdLevel level);
const RgbRows& GetRgbRows(SimdLevel level);

// The plain tables, and the plain bodies the processor bodies finish with.
const PlanarRows& PlainPlanarRows();
const RgbRows& PlainRgbRows();

#if ORV_X86_SIMD
const PlanarRows& Sse2PlanarRows();
const RgbRows& Sse2RgbRows();
const PlanarRows& Avx2PlanarRows();
const RgbRows& Avx2RgbRows();
// The general route's terms, filter and 32-bit pixels; the rest as AVX2.
const RgbRows& Avx512RgbRows();
// The one-pass RGB to 4:2:0 rows; the rest as AVX2.
const PlanarRows& Avx512PlanarRows();
#endif

}  // namespace colour
}  // namespace orv

#endif  // ORV_COLOUR_COLOUR_ROWS_H_
