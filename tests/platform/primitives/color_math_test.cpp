// The per-pixel colour arithmetic against the matrices in double, over every
// input: all 2^24 triples for each per-pixel conversion, and, for chroma made
// from the sums of 2 or 4 pixels, a bound on the error that holds for every
// combination of sums.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "platform/primitives/ipp_color_math.h"

namespace {

namespace cm = orv::ipp::color;

double Clamp(double v) { return v < 0 ? 0 : (v > 255 ? 255 : v); }

// Largest |got - clamp(want)| seen so far.
struct Worst {
  double err = 0;
  void Add(int got, double want) { err = std::max(err, std::fabs(got - Clamp(want))); }
};

// Calls f(a, b, c) for every triple of bytes.
template <typename F>
void ForEveryTriple(F f) {
  for (int a = 0; a < 256; ++a)
    for (int b = 0; b < 256; ++b)
      for (int c = 0; c < 256; ++c) f(a, b, c);
}

TEST(IppColorMath, StudioToRgbWithinOneLevelOfEveryTriple) {
  Worst worst;
  int greyMismatches = 0;
  ForEveryTriple([&](int y, int cb, int cr) {
    uint8_t r, g, b;
    cm::StudioToRgb(y, cb, cr, &r, &g, &b);
    const double l = 1.164 * (y - 16), u = cb - 128, v = cr - 128;
    worst.Add(r, l + 1.596 * v);
    worst.Add(g, l - 0.392 * u - 0.813 * v);
    worst.Add(b, l + 2.017 * u);
    if (cb == 128 && cr == 128 && (r != g || g != b)) ++greyMismatches;
  });
  EXPECT_LE(worst.err, 1.0);
  EXPECT_EQ(greyMismatches, 0);  // neutral chroma gives grey
}

TEST(IppColorMath, JpegToRgbWithinOneLevelOfEveryTriple) {
  Worst worst;
  ForEveryTriple([&](int y, int cb, int cr) {
    uint8_t r, g, b;
    cm::JpegToRgb(y, cb, cr, &r, &g, &b);
    const double u = cb - 128, v = cr - 128;
    worst.Add(r, y + 1.402 * v);
    worst.Add(g, y - 0.34414 * u - 0.71414 * v);
    worst.Add(b, y + 1.772 * u);
  });
  EXPECT_LE(worst.err, 1.0);
}

TEST(IppColorMath, ForwardMatricesWithinOneLevelOfEveryTriple) {
  Worst studioY, studioCb, studioCr, jpegY, jpegCb, jpegCr;
  ForEveryTriple([&](int r, int g, int b) {
    studioY.Add(cm::StudioY(r, g, b), 0.257 * r + 0.504 * g + 0.098 * b + 16);
    studioCb.Add(cm::StudioCbSum(r, g, b, 0), -0.148 * r - 0.291 * g + 0.439 * b + 128);
    studioCr.Add(cm::StudioCrSum(r, g, b, 0), 0.439 * r - 0.368 * g - 0.071 * b + 128);
    uint8_t y, cb, cr;
    cm::RgbToJpeg(r, g, b, &y, &cb, &cr);
    jpegY.Add(y, 0.299 * r + 0.587 * g + 0.114 * b);
    jpegCb.Add(cb, -0.16874 * r - 0.33126 * g + 0.5 * b + 128);
    jpegCr.Add(cr, 0.5 * r - 0.41869 * g - 0.08131 * b + 128);
  });
  EXPECT_LE(studioY.err, 1.0);
  EXPECT_LE(studioCb.err, 1.0);
  EXPECT_LE(studioCr.err, 1.0);
  EXPECT_LE(jpegY.err, 1.0);
  EXPECT_LE(jpegCb.err, 1.0);
  EXPECT_LE(jpegCr.err, 1.0);
}

TEST(IppColorMath, GreyKeepsNeutralChromaAndJpegLuma) {
  for (int x = 0; x < 256; ++x) {
    for (int m = 0; m <= 2; ++m) {
      const int s = x << m;
      EXPECT_EQ(cm::StudioCbSum(s, s, s, m), 128) << x;
      EXPECT_EQ(cm::StudioCrSum(s, s, s, m), 128) << x;
    }
    uint8_t y, cb, cr;
    cm::RgbToJpeg(x, x, x, &y, &cb, &cr);
    EXPECT_EQ(y, x);
    EXPECT_EQ(cb, 128);
    EXPECT_EQ(cr, 128);
  }
  EXPECT_EQ(cm::StudioY(0, 0, 0), 16);
  EXPECT_EQ(cm::StudioY(255, 255, 255), 235);
}

// A chroma row is 16448 + P(first) - P(second) - P(third) >> 7 with one
// product per channel, P(S) = (S x k) >> (8 + m). Its distance from 128 x
// (the formula + 1/2) is the sum of the per-channel distances of P(S) from
// 128 x coefficient x S / 2^m, so the worst case over all sums is the sum of
// per-channel extremes. Within [-64, 64] the result is within one level.
struct Row {
  int k[3];     // Q15 magnitudes
  double c[3];  // the matrix row (signed)
  int sign[3];  // +1 added, -1 subtracted
};

void ExpectRowWithinOneLevel(const Row& row, int m, const char* name) {
  const int n = 1 << m;
  double hi = 0, lo = 0;
  for (int ch = 0; ch < 3; ++ch) {
    double emax = -1e9, emin = 1e9;
    for (int s = 0; s <= 255 * n; ++s) {
      const double e = ((s * row.k[ch]) >> (8 + m)) - 128.0 * std::fabs(row.c[ch]) * s / n;
      emax = std::max(emax, e);
      emin = std::min(emin, e);
    }
    hi += row.sign[ch] > 0 ? emax : -emin;
    lo += row.sign[ch] > 0 ? emin : -emax;
  }
  EXPECT_LE(hi, 64.0) << name << " n=" << n;
  EXPECT_GE(lo, -64.0) << name << " n=" << n;
}

TEST(IppColorMath, ChromaOfPairsAndBlocksWithinOneLevelOfEverySum) {
  const Row cb{{cm::kStudioUR, cm::kStudioUG, cm::kStudioUB}, {-0.148, -0.291, 0.439}, {-1, -1, 1}};
  const Row cr{{cm::kStudioVR, cm::kStudioVG, cm::kStudioVB}, {0.439, -0.368, -0.071}, {1, -1, -1}};
  for (int m = 0; m <= 2; ++m) {
    ExpectRowWithinOneLevel(cb, m, "Cb");
    ExpectRowWithinOneLevel(cr, m, "Cr");
  }
  // The bound against direct evaluation on a few sums of four pixels.
  const int sums[][3] = {
      {0, 0, 1020}, {1020, 1020, 0}, {1020, 0, 1020}, {3, 517, 1001}, {999, 2, 5}};
  for (const auto& s : sums) {
    const double r = s[0] / 4.0, g = s[1] / 4.0, b = s[2] / 4.0;
    EXPECT_LE(std::fabs(cm::StudioCbSum(s[0], s[1], s[2], 2) -
                        Clamp(-0.148 * r - 0.291 * g + 0.439 * b + 128)),
              1.0);
    EXPECT_LE(std::fabs(cm::StudioCrSum(s[0], s[1], s[2], 2) -
                        Clamp(0.439 * r - 0.368 * g - 0.071 * b + 128)),
              1.0);
  }
}

// Worked values of the fixed point, one per row, so that a change of
// coefficient or rounding shows here first.
TEST(IppColorMath, WorkedValues) {
  uint8_t r, g, b;
  // y = 100 x 19071 >> 8 = 7449; u = -28, v = 72:
  // R = (7449 + 7354 - 1160) >> 6 = 213, G = (7449 + 702 - 3746 - 1160) >> 6 = 50,
  // B = (7449 - 3614 - 1160) >> 6 = 41.
  cm::StudioToRgb(100, 100, 200, &r, &g, &b);
  EXPECT_EQ(r, 213);
  EXPECT_EQ(g, 50);
  EXPECT_EQ(b, 41);
  // Y = (200 x 220 + 4224) >> 8 = 188 for (200, 200, 200)...
  EXPECT_EQ(cm::StudioY(200, 200, 200), 188);
  // ...and (4356 + 6321 + 500 + 4224) >> 8 = 60 for (66, 49, 20):
  EXPECT_EQ(cm::StudioY(66, 49, 20), 60);
  // (0 + 4257 + 5850 + 4224) >> 8 = 55 for (0, 33, 234), where the formula gives 55.56:
  // the 8-bit coefficients (25 for 0.098 x 256 = 25.09) leave it below 56, within a level.
  EXPECT_EQ(cm::StudioY(0, 33, 234), 55);
  // Cb = (16448 + 1123 - 1250 - 1825) >> 7 = 113, Cr = (16448 + 3708 - 2308 - 181) >> 7 = 138.
  EXPECT_EQ(cm::StudioCbSum(66, 49, 20, 0), 113);
  EXPECT_EQ(cm::StudioCrSum(66, 49, 20, 0), 138);
  // JFIF: l = 2526 + 3681 + 291 = 6498, Y = (6498 + 64) >> 7 = 51;
  // Cb = (16448 + ((2560 - 6498) x 18492 + 2^14 >> 15 = -2222)) >> 7 = 111;
  // Cr = (16448 + ((8448 - 6498) x 23372 + 2^14 >> 15 = 1391)) >> 7 = 139.
  uint8_t y, cb, cr;
  cm::RgbToJpeg(66, 49, 20, &y, &cb, &cr);
  EXPECT_EQ(y, 51);
  EXPECT_EQ(cb, 111);
  EXPECT_EQ(cr, 139);
}

}  // namespace
