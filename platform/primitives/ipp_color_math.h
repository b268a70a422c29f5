// The colour arithmetic of the image primitives, one pixel at a time.
//
// Studio-range ITU-R BT.601 (names without _JPEG):
//   R = 1.164(Y-16) + 1.596(Cr-128)
//   G = 1.164(Y-16) - 0.392(Cb-128) - 0.813(Cr-128)
//   B = 1.164(Y-16) + 2.017(Cb-128)
//   Y  =  0.257R + 0.504G + 0.098B + 16
//   Cb = -0.148R - 0.291G + 0.439B + 128
//   Cr =  0.439R - 0.368G - 0.071B + 128
// Full-swing JFIF (names with _JPEG):
//   R = Y + 1.402(Cr-128)
//   G = Y - 0.34414(Cb-128) - 0.71414(Cr-128)
//   B = Y + 1.772(Cb-128)
//   Y  =  0.299R + 0.587G + 0.114B
//   Cb = -0.16874R - 0.33126G + 0.5B + 128
//   Cr =  0.5R - 0.41869G - 0.08131B + 128
//
// The fixed point is laid out for 16-bit vector lanes: every product is
// either exact in 16 bits (studio luma, a byte multiply-add) or one 16 x 16 ->
// high 16 multiply that keeps a few fractional bits (truncated or rounded, as
// stated below), and the result is rounded to nearest at the end by adding
// half and shifting. All shifts of signed values are arithmetic (they round
// toward minus infinity).
//
// Studio YCbCr to RGB: 6 fractional bits.
//   y = (Y x 19071) >> 8                 1.164 Y in Q6 (19071 = 1.164 in Q14),
//   with u = Cb - 128, v = Cr - 128 and P(d, k) = (d x k + 64) >> 7 (d x k/8192
//   in Q6, rounded to nearest):
//   R = (y + P(v, 13074) - 1160) >> 6
//   G = (y - P(u, 3211) - P(v, 6660) - 1160) >> 6
//   B = (y + P(u, 16523) - 1160) >> 6
//   then saturated to 0..255. -1160 is 32 (rounding) less 1192 (1.164 x 16 in
//   Q6). Neutral chroma adds nothing, so R = G = B for every Y.
// Studio RGB to YCbCr.
//   Y  = (66 R + 129 G + 25 B + 4224) >> 8
//   (the matrix row x 256, exact products; 4224 = 16 x 256 + 128.) Products
//   below are truncated, with Q(S, k) = (S x k) >> (8 + m).
//   Chroma, 7 fractional bits, may be made from the channel sums S of
//   n = 2^m pixels (n = 1, 2 or 4), which is the matrix applied to their mean:
//   Cb = (16448 + Q(B, 14385) - Q(R, 4850) - Q(G, 9535)) >> 7
//   Cr = (16448 + Q(R, 14385) - Q(G, 12059) - Q(B, 2326)) >> 7
//   (the magnitudes of the matrix rows x 32768; 16448 = 128 x 128 + 64).
//   The positive coefficient of each chroma row equals the sum of the other
//   two, so on grey (R = G = B) the row is 16448 + floor(a + b) - floor(a) -
//   floor(b), that is 16448 or 16449: chroma is exactly 128.
// JFIF RGB to YCbCr: chroma from the difference of blue (red) and luma, two
// products rather than six, with Q as above (m = 0):
//   l  = Q(R, 9798) + Q(G, 19235) + Q(B, 3735)    luma in Q7; the row sums to 32768
//   Y  = (l + 64) >> 7
//   Cb = (16448 + ((((B << 7) - l) x 18492 + 2^14) >> 15)) >> 7    0.5 / 0.886 in Q15
//   Cr = (16448 + ((((R << 7) - l) x 23372 + 2^14) >> 15)) >> 7    0.5 / 0.701 in Q15
//   Luma of grey is the grey level, and the differences of grey are 0, 1 or
//   2, which leave chroma at exactly 128.
//
// JFIF YCbCr to RGB: 13 fractional bits (Q13), each chroma term rounded by
// itself, (sum + 4096) >> 13, then Y added and the result saturated.
//
// Every result lies within one level of the same formula in double (the tests
// check every input triple).
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_COLOR_MATH_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_COLOR_MATH_H_

#include <cstdint>

namespace orv {
namespace ipp {
namespace color {

inline uint8_t Sat(int v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Studio BT.601, YCbCr to RGB.
constexpr int kStudioY = 19071;   // 1.164 in Q14
constexpr int kStudioRV = 13074;  // 1.596 in Q13
constexpr int kStudioGU = 3211;   // 0.392
constexpr int kStudioGV = 6660;   // 0.813
constexpr int kStudioBU = 16523;  // 2.017
constexpr int kStudioBias = 32 - 1192;
// Studio BT.601, RGB to YCbCr.
// Studio luma as two byte multiply-adds, (R, G) x (66, 62) and (B, G) x (25, 67):
// each pair sum stays below 2^15.
constexpr int kStudioYR = 66, kStudioYG = 129, kStudioYB = 25, kStudioYG1 = 62;  // Q8
constexpr int kStudioYBias = 16 * 256 + 128;
constexpr int kStudioUR = 4850, kStudioUG = 9535, kStudioUB = 14385;   // Q15, magnitudes
constexpr int kStudioVR = 14385, kStudioVG = 12059, kStudioVB = 2326;  // Q15, magnitudes
// JFIF, YCbCr to RGB (Q13).
constexpr int kShift = 13;
constexpr int kRound = 1 << (kShift - 1);
constexpr int kJpegRV = 11485;  // 1.402
constexpr int kJpegGU = 2819;   // 0.34414
constexpr int kJpegGV = 5850;   // 0.71414
constexpr int kJpegBU = 14516;  // 1.772
// JFIF, RGB to YCbCr.
constexpr int kJpegYR = 9798, kJpegYG = 19235, kJpegYB = 3735;  // Q15
constexpr int kJpegU = 18492, kJpegV = 23372;                   // Q15
constexpr int kChromaBias = 128 * 128 + 64;

static_assert(kStudioUR + kStudioUG == kStudioUB && kStudioVG + kStudioVB == kStudioVR,
              "chroma rows must vanish on grey");
static_assert(kJpegYR + kJpegYG + kJpegYB == 32768, "JFIF luma must keep grey");

// A chroma difference times a Q13 coefficient, in Q6 rounded to nearest.
inline int StudioTerm(int d, int k) { return (d * k + 64) >> 7; }

// Studio YCbCr to R, G, B.
inline void StudioToRgb(int y, int cb, int cr, uint8_t* r, uint8_t* g, uint8_t* b) {
  const int yy = ((y * kStudioY) >> 8) + kStudioBias;
  const int u = cb - 128, v = cr - 128;
  *r = Sat((yy + StudioTerm(v, kStudioRV)) >> 6);
  *g = Sat((yy - StudioTerm(u, kStudioGU) - StudioTerm(v, kStudioGV)) >> 6);
  *b = Sat((yy + StudioTerm(u, kStudioBU)) >> 6);
}

// A channel value (or a sum of 2^m values when m > 0) times a coefficient,
// shifted by 8 + m: the luma and chroma products above.
inline int Product(int s, int k, int m) { return (s * k) >> (8 + m); }

inline uint8_t StudioY(int r, int g, int b) {
  return Sat((kStudioYR * r + kStudioYG * g + kStudioYB * b + kStudioYBias) >> 8);
}

// Chroma from channel sums of n pixels, n = 1, 2 or 4 (shift = log2 n).
inline uint8_t StudioCbSum(int r, int g, int b, int shift) {
  return Sat((kChromaBias + Product(b, kStudioUB, shift) - Product(r, kStudioUR, shift) -
              Product(g, kStudioUG, shift)) >>
             7);
}
inline uint8_t StudioCrSum(int r, int g, int b, int shift) {
  return Sat((kChromaBias + Product(r, kStudioVR, shift) - Product(g, kStudioVG, shift) -
              Product(b, kStudioVB, shift)) >>
             7);
}

// JFIF YCbCr to R, G, B.
inline void JpegToRgb(int y, int cb, int cr, uint8_t* r, uint8_t* g, uint8_t* b) {
  const int u = cb - 128, v = cr - 128;
  *r = Sat(y + ((kJpegRV * v + kRound) >> kShift));
  *g = Sat(y + ((-kJpegGU * u - kJpegGV * v + kRound) >> kShift));
  *b = Sat(y + ((kJpegBU * u + kRound) >> kShift));
}

// JFIF R, G, B to YCbCr.
inline void RgbToJpeg(int r, int g, int b, uint8_t* y, uint8_t* cb, uint8_t* cr) {
  const int l = Product(r, kJpegYR, 0) + Product(g, kJpegYG, 0) + Product(b, kJpegYB, 0);
  *y = Sat((l + 64) >> 7);
  *cb = Sat((kChromaBias + ((((b << 7) - l) * kJpegU + (1 << 14)) >> 15)) >> 7);
  *cr = Sat((kChromaBias + ((((r << 7) - l) * kJpegV + (1 << 14)) >> 15)) >> 7);
}

}  // namespace color
}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_COLOR_MATH_H_
