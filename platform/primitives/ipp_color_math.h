// The colour arithmetic of the image primitives, one pixel at a time.
//
// All matrices are fixed point with 13 fractional bits (Q13). A result is
// (sum + 4096) >> 13 with an arithmetic shift, i.e. rounded to nearest with
// ties upward, then the offset is added and the value saturated to 0..255.
// Each result lies within one level of the same formula in double.
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
// The Q13 rows of the forward matrices each sum to exactly 8192 (Y of JFIF)
// or 0 (Cb, Cr), so grey stays grey and neutral chroma stays 128 exactly.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_COLOR_MATH_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_COLOR_MATH_H_

#include <cstdint>

namespace orv {
namespace ipp {
namespace color {

constexpr int kShift = 13;
constexpr int kRound = 1 << (kShift - 1);

// Studio BT.601, YCbCr to RGB.
constexpr int kStudioY = 9535;    // 1.164
constexpr int kStudioRV = 13074;  // 1.596
constexpr int kStudioGU = 3211;   // 0.392
constexpr int kStudioGV = 6660;   // 0.813
constexpr int kStudioBU = 16523;  // 2.017
// Studio BT.601, RGB to YCbCr.
constexpr int kStudioYR = 2105, kStudioYG = 4129, kStudioYB = 803;
constexpr int kStudioUR = -1212, kStudioUG = -2384, kStudioUB = 3596;
constexpr int kStudioVR = 3596, kStudioVG = -3015, kStudioVB = -581;
// JFIF, YCbCr to RGB.
constexpr int kJpegRV = 11485;  // 1.402
constexpr int kJpegGU = 2819;   // 0.34414
constexpr int kJpegGV = 5850;   // 0.71414
constexpr int kJpegBU = 14516;  // 1.772
// JFIF, RGB to YCbCr.
constexpr int kJpegYR = 2449, kJpegYG = 4809, kJpegYB = 934;
constexpr int kJpegUR = -1382, kJpegUG = -2714, kJpegUB = 4096;
constexpr int kJpegVR = 4096, kJpegVG = -3430, kJpegVB = -666;

inline uint8_t Sat(int v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// Studio YCbCr to R, G, B.
inline void StudioToRgb(int y, int cb, int cr, uint8_t* r, uint8_t* g, uint8_t* b) {
  const int yy = kStudioY * (y - 16) + kRound;
  const int u = cb - 128, v = cr - 128;
  *r = Sat((yy + kStudioRV * v) >> kShift);
  *g = Sat((yy - kStudioGU * u - kStudioGV * v) >> kShift);
  *b = Sat((yy + kStudioBU * u) >> kShift);
}

inline uint8_t StudioY(int r, int g, int b) {
  return Sat(((kStudioYR * r + kStudioYG * g + kStudioYB * b + kRound) >> kShift) + 16);
}

// Chroma from channel sums of n pixels, n = 1, 2 or 4 (shift = log2 n): the
// matrix applied to the mean, rounded once.
inline uint8_t StudioCbSum(int r, int g, int b, int shift) {
  const int s = kShift + shift;
  return Sat(((kStudioUR * r + kStudioUG * g + kStudioUB * b + (1 << (s - 1))) >> s) + 128);
}
inline uint8_t StudioCrSum(int r, int g, int b, int shift) {
  const int s = kShift + shift;
  return Sat(((kStudioVR * r + kStudioVG * g + kStudioVB * b + (1 << (s - 1))) >> s) + 128);
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
  *y = Sat((kJpegYR * r + kJpegYG * g + kJpegYB * b + kRound) >> kShift);
  *cb = Sat(((kJpegUR * r + kJpegUG * g + kJpegUB * b + kRound) >> kShift) + 128);
  *cr = Sat(((kJpegVR * r + kJpegVG * g + kJpegVB * b + kRound) >> kShift) + 128);
}

}  // namespace color
}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_COLOR_MATH_H_
