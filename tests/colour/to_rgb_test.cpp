// C420toRGB2 and C420toRGB: matrices, the two routes, filters and walks.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "colour/C420toRGB.h"
#include "colour/C420toRGB2.h"

namespace orv {
namespace {

struct Yuv420 {
  int w, h;
  std::vector<uint8_t> y, u, v;
  Yuv420(int width, int height, uint8_t yv, uint8_t uv, uint8_t vv)
      : w(width),
        h(height),
        y(width * height, yv),
        u((width / 2) * (height / 2), uv),
        v((width / 2) * (height / 2), vv) {}
  uint8_t& U(int x, int l) { return u[l * (w / 2) + x]; }
  uint8_t& V(int x, int l) { return v[l * (w / 2) + x]; }
};

struct Rgb {
  int r, g, b;
};

// Pixel x of picture line l of a bottom-up picture with positive pitch.
Rgb PixelAt(const std::vector<uint8_t>& d, int w, int h, int bpp, int x, int l) {
  const uint8_t* p = d.data() + (h - 1 - l) * w * bpp + x * bpp;
  return Rgb{p[2], p[1], p[0]};
}

void ExpectRgb(const Rgb& got, int r, int g, int b) {
  EXPECT_EQ(got.r, r);
  EXPECT_EQ(got.g, g);
  EXPECT_EQ(got.b, b);
}

// The four forms of C420toRGB and which route their 24-bit output takes.
std::unique_ptr<C420toRGB> MakeRgb(int form) {
  const SimdLevel level = DetectSimdLevel();
  switch (form) {
    case 0:
      return std::unique_ptr<C420toRGB>(new C420toRGB());
    case 1:
      return std::unique_ptr<C420toRGB>(new C420toRGB_MMX(level));
    case 2:
      return std::unique_ptr<C420toRGB>(new C420toRGB_KNI(level));
    default:
      return std::unique_ptr<C420toRGB>(new C420toRGB_SSE2(level));
  }
}

Rgb Flat32(C420toRGB& k, int matrix, uint8_t y, uint8_t u, uint8_t v) {
  Yuv420 s(4, 4, y, u, v);
  std::vector<uint8_t> d(4 * 4 * 4);
  k.SetMatrix(matrix, 0);
  EXPECT_EQ(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data(), 4, 4, 16, 4), 0u);
  return PixelAt(d, 4, 4, 4, 1, 2);
}

Rgb Flat24(C420toRGB& k, int matrix, uint8_t y, uint8_t u, uint8_t v) {
  Yuv420 s(4, 4, y, u, v);
  std::vector<uint8_t> d(4 * 4 * 3);
  k.SetMatrix(matrix, 0);
  EXPECT_EQ(k.ToRGB24(s.y.data(), s.u.data(), s.v.data(), d.data(), 4, 4, 12, 4), 0u);
  return PixelAt(d, 4, 4, 3, 1, 2);
}

TEST(C420toRGB, OffsetsOfTheFourMatrices) {
  C420toRGB k;
  EXPECT_EQ(k.yOffset(), -32);
  const int expect[4][2] = {{1160, 289}, {992, 248}, {1160, 289}, {992, 248}};
  for (int m = 0; m < 4; ++m) {
    k.SetMatrix(m, 0);
    EXPECT_EQ(k.yOffset(), expect[m][0]);
    EXPECT_EQ(k.yOffset24(), expect[m][1]);
  }
  k.SetMatrix(1, 16);
  EXPECT_EQ(k.yOffset(), -32);
  // The colour table: U and V factors per byte of B G R.
  k.SetMatrix(0, 0);
  EXPECT_EQ(k.colourTable()[0], 16531);
  EXPECT_EQ(k.colourTable()[1], 0);
  EXPECT_EQ(k.colourTable()[2], -3203);
  EXPECT_EQ(k.colourTable()[3], -6660);
  EXPECT_EQ(k.colourTable()[4], 0);
  EXPECT_EQ(k.colourTable()[5], 13074);
}

class RgbForms : public ::testing::TestWithParam<int> {};

TEST_P(RgbForms, WhiteBlackAndTheFlatColoursThroughBothRoutes) {
  auto k = MakeRgb(GetParam());
  for (int route = 0; route < 2; ++route) {
    auto flat = route ? Flat24 : Flat32;
    ExpectRgb(flat(*k, 0, 235, 128, 128), 255, 255, 255);
    ExpectRgb(flat(*k, 0, 16, 128, 128), 0, 0, 0);
    ExpectRgb(flat(*k, 1, 16, 128, 128), 0, 0, 0);
    ExpectRgb(flat(*k, 1, 235, 128, 128), 219, 219, 219);
    ExpectRgb(flat(*k, 0, 81, 90, 240), 254, 0, 0);
    ExpectRgb(flat(*k, 0, 41, 240, 110), 0, 0, 255);
    ExpectRgb(flat(*k, 0, 126, 128, 128), 128, 128, 128);
    ExpectRgb(flat(*k, 2, 81, 90, 240), 255, 24, 0);
    // The BT.709 matrix differs only where chroma is not neutral.
    ExpectRgb(flat(*k, 2, 126, 128, 128), 128, 128, 128);
    // Extreme blue clamps without wrapping.
    ExpectRgb(flat(*k, 0, 235, 255, 128), 255, 205, 255);
    ExpectRgb(flat(*k, 0, 16, 0, 255), 203, 0, 0);
  }
}

TEST_P(RgbForms, TheRoutesDifferByOneLevelInGreen) {
  auto k = MakeRgb(GetParam());
  EXPECT_EQ(Flat32(*k, 0, 84, 184, 156).g, 35);
  // Only the MMX form writes 24-bit output by the general route.
  EXPECT_EQ(Flat24(*k, 0, 84, 184, 156).g, GetParam() == 1 ? 35 : 34);
}

TEST_P(RgbForms, AlphaAndZeroBytes) {
  auto k = MakeRgb(GetParam());
  k->SetMatrix(0, 0);
  Yuv420 s(8, 8, 200, 30, 220);
  for (int i = 0; i < 64; ++i) s.y[i] = static_cast<uint8_t>(i * 5);
  std::vector<uint8_t> a(8 * 8 * 4), z(8 * 8 * 4), o(8 * 8 * 4);
  EXPECT_EQ(k->ToRGBA(s.y.data(), s.u.data(), s.v.data(), a.data(), 8, 8, 32, 8), 0u);
  EXPECT_EQ(k->ToRGB32(s.y.data(), s.u.data(), s.v.data(), z.data(), 8, 8, 32, 8), 0u);
  EXPECT_EQ(k->To0RGB(s.y.data(), s.u.data(), s.v.data(), o.data(), 8, 8, 32, 8), 0u);
  for (int i = 0; i < 64; ++i) {
    EXPECT_EQ(a[i * 4 + 3], 255);
    EXPECT_EQ(z[i * 4 + 3], 0);
    EXPECT_EQ(o[i * 4], 0);
    for (int c = 0; c < 3; ++c) {
      EXPECT_EQ(a[i * 4 + c], z[i * 4 + c]);
      EXPECT_EQ(o[i * 4 + 3 - c], z[i * 4 + c]);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Forms, RgbForms, ::testing::Values(0, 1, 2, 3));

TEST(C420toRGB, HorizontalInterpolationAndTheRightEdge) {
  C420toRGB k;
  k.SetMatrix(0, 0);
  // Chroma changes at column 4: pixel 7 moves half as far as pixel 8.
  Yuv420 s(16, 4, 126, 128, 128);
  for (int l = 0; l < 2; ++l)
    for (int x = 4; x < 8; ++x) s.V(x, l) = 200;
  std::vector<uint8_t> d(16 * 4 * 4);
  ASSERT_EQ(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data(), 16, 4, 64, 16), 0u);
  const int r6 = PixelAt(d, 16, 4, 4, 6, 0).r, r7 = PixelAt(d, 16, 4, 4, 7, 0).r;
  const int r8 = PixelAt(d, 16, 4, 4, 8, 0).r;
  EXPECT_EQ(r6, 128);
  EXPECT_NEAR(r7 - r6, (r8 - r6) / 2, 1);
  // Right edge: pixel 15 repeats the chroma of pixel 14 (same luma here).
  EXPECT_EQ(PixelAt(d, 16, 4, 4, 15, 0).r, PixelAt(d, 16, 4, 4, 14, 0).r);
}

TEST(C420toRGB, TheTwentyFourBitRightEdge) {
  C420toRGB k;
  k.SetMatrix(0, 0);
  for (int w : {16, 18}) {
    Yuv420 s(w, 2, 128, 128, 128);
    s.V(7, 0) = 60;
    if (w == 18) s.V(8, 0) = 220;
    std::vector<uint8_t> d(w * 2 * 3);
    ASSERT_EQ(k.ToRGB24(s.y.data(), s.u.data(), s.v.data(), d.data(), w, 2, w * 3, w), 0u);
    const int r14 = PixelAt(d, w, 2, 3, 14, 0).r, r15 = PixelAt(d, w, 2, 3, 15, 0).r;
    if (w == 16) {
      EXPECT_EQ(r15, r14);
    } else {
      // Mean of columns 7 and 8: (60 - 128) + (220 - 128) = 24 -> a small red lift.
      EXPECT_GT(r15, 128);
      EXPECT_LT(r15, PixelAt(d, w, 2, 3, 16, 0).r);
    }
  }
}

// Red term of chroma V, as the terms compute it: (vToR x (V - 128) x 256) >> 16.
int RedTerm(int vToR, int v) { return (vToR * (v - 128) * 256) >> 16; }

TEST(C420toRGB, ProgressiveFilterWeightsAChromaLine) {
  // One different chroma line on top reaches lines 0, 1, 2 with weights 1, 3/4, 1/4.
  C420toRGB2_C k;
  k.SetRange(0, 0);
  Yuv420 s(4, 8, 126, 128, 128);
  s.V(0, 0) = s.V(1, 0) = 228;
  std::vector<uint8_t> d(4 * 8 * 4);
  ASSERT_NE(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data(), 4, 8, 16, 4, 2), 0);
  const int t = RedTerm(13074, 228);  // 5 fractional bits
  const int base = 2 * ((126 * 128 * 19076) >> 16) - 1160;
  auto red = [&](int term) { return std::min(255, std::max(0, (base + 2 * term) >> 6)); };
  EXPECT_EQ(PixelAt(d, 4, 8, 4, 0, 0).r, red(t));
  EXPECT_EQ(PixelAt(d, 4, 8, 4, 0, 1).r, red((3 * t + 0 + 2) >> 2));
  EXPECT_EQ(PixelAt(d, 4, 8, 4, 0, 2).r, red((3 * 0 + t + 2) >> 2));
  EXPECT_EQ(PixelAt(d, 4, 8, 4, 0, 3).r, 128);
}

TEST(C420toRGB, TheSecondFieldIsMirroredOnlyInTheWiderFamily) {
  // Chroma line 1 carries a red term, line 3 none: output line 3 weighs them
  // 7/8 and 1/8 in C420toRGB, 5/8 and 3/8 in C420toRGB2.
  Yuv420 s(4, 8, 126, 128, 128);
  s.V(0, 1) = s.V(1, 1) = 228;
  std::vector<uint8_t> a(4 * 8 * 4), b(4 * 8 * 4);
  C420toRGB wide;
  wide.SetMatrix(0, 0);
  ASSERT_EQ(wide.ToRGB32Interlaced(s.y.data(), s.u.data(), s.v.data(), a.data(), 4, 8, 16, 4), 0u);
  C420toRGB2_C narrow;
  narrow.SetRange(0, 0);
  ASSERT_NE(narrow.ToRGB32Interlaced(s.y.data(), s.u.data(), s.v.data(), b.data(), 4, 8, 16, 4, 2),
            0);
  const int t = RedTerm(13074, 228);
  const int base = 2 * ((126 * 128 * 19076) >> 16) - 1160;
  auto red = [&](int term) { return std::min(255, std::max(0, (base + 2 * term) >> 6)); };
  // Mirrored: A = (d + 4a + 2) >> 2 with d = (b - a) >> 1.
  EXPECT_EQ(PixelAt(a, 4, 8, 4, 0, 3).r, red((((-t) >> 1) + 4 * t + 2) >> 2));
  // Not mirrored: A = (d + 2(a + b) + 2) >> 2 with d = (a - b) >> 1.
  EXPECT_EQ(PixelAt(b, 4, 8, 4, 0, 3).r, red(((t >> 1) + 2 * t + 2) >> 2));
  // Lines 1 of both take chroma line 1 alone; the first field never sees it.
  EXPECT_EQ(PixelAt(a, 4, 8, 4, 0, 1).r, red(t));
  EXPECT_EQ(PixelAt(a, 4, 8, 4, 0, 0).r, 128);
  EXPECT_EQ(PixelAt(a, 4, 8, 4, 0, 2).r, 128);
}

TEST(C420toRGB, FieldOperationsMakeTheSecondFieldFromTheFirst) {
  C420toRGB k;
  k.SetMatrix(0, 0);
  Yuv420 s(8, 8, 0, 128, 128);
  for (int l = 0; l < 8; ++l)
    for (int x = 0; x < 8; ++x) s.y[l * 8 + x] = static_cast<uint8_t>(30 + 25 * l + x);
  std::vector<uint8_t> d(8 * 8 * 4), e(8 * 8 * 3);
  ASSERT_EQ(k.ToRGB32Field(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 8, 32, 8), 0u);
  ASSERT_EQ(k.ToRGB24Field(s.y.data(), s.u.data(), s.v.data(), e.data(), 8, 8, 24, 8), 0u);
  auto line = [&](std::vector<uint8_t>& p, int bpp, int l) { return p.data() + (7 - l) * 8 * bpp; };
  for (int l = 1; l <= 5; l += 2)
    for (int i = 0; i < 32; ++i)
      EXPECT_EQ(line(d, 4, l)[i], (line(d, 4, l - 1)[i] + line(d, 4, l + 1)[i] + 1) >> 1);
  EXPECT_EQ(0, memcmp(line(d, 4, 7), line(d, 4, 6), 32));
  EXPECT_EQ(0, memcmp(line(e, 3, 7), line(e, 3, 6), 24));
  // The odd luma lines play no part.
  for (int l = 1; l < 8; l += 2)
    for (int x = 0; x < 8; ++x) s.y[l * 8 + x] = 255;
  std::vector<uint8_t> d2(d.size());
  k.ToRGB32Field(s.y.data(), s.u.data(), s.v.data(), d2.data(), 8, 8, 32, 8);
  EXPECT_EQ(d, d2);
}

TEST(C420toRGB, SixteenBitFieldMeanIsPerChannelWithoutRounding) {
  C420toRGB k;
  k.SetMatrix(0, 0);
  Yuv420 s(8, 8, 0, 128, 128);
  for (int l = 0; l < 8; ++l)
    for (int x = 0; x < 8; ++x) s.y[l * 8 + x] = static_cast<uint8_t>(40 + 23 * l + 3 * x);
  std::vector<uint8_t> d(8 * 8 * 2);
  ASSERT_EQ(k.ToRGB565Field(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 8, 16, 8), 0u);
  auto word = [&](int l, int x) {
    const uint8_t* p = d.data() + (7 - l) * 16 + 2 * x;
    return p[0] | (p[1] << 8);
  };
  for (int x = 0; x < 8; ++x) {
    const int a = word(0, x), b = word(2, x), m = word(1, x);
    EXPECT_EQ(m & 31, ((a & 31) + (b & 31)) >> 1);
    EXPECT_EQ((m >> 5) & 63, (((a >> 5) & 63) + ((b >> 5) & 63)) >> 1);
    EXPECT_EQ(m >> 11, ((a >> 11) + (b >> 11)) >> 1);
  }
}

TEST(C420toRGB, ShiftedWalksMoveThePictureByOneLine) {
  C420toRGB k;
  k.SetMatrix(0, 0);
  Yuv420 s(4, 8, 0, 128, 128);
  for (int l = 0; l < 8; ++l)
    for (int x = 0; x < 4; ++x) s.y[l * 4 + x] = static_cast<uint8_t>(20 + 25 * l);
  std::vector<uint8_t> ref(4 * 8 * 4), up(ref.size()), down(ref.size());
  ASSERT_EQ(k.ToRGB32Interlaced(s.y.data(), s.u.data(), s.v.data(), ref.data(), 4, 8, 16, 4), 0u);
  ASSERT_EQ(k.ToRGB32ShiftUp(s.y.data(), s.u.data(), s.v.data(), up.data(), 4, 8, 16, 4), 0u);
  ASSERT_EQ(k.ToRGB32ShiftDown(s.y.data(), s.u.data(), s.v.data(), down.data(), 4, 8, 16, 4), 0u);
  auto line = [](std::vector<uint8_t>& p, int l) { return p.data() + (7 - l) * 16; };
  for (int r = 0; r < 7; ++r) EXPECT_EQ(0, memcmp(line(up, r), line(ref, r + 1), 16)) << r;
  EXPECT_EQ(0, memcmp(line(up, 7), line(up, 5), 16));
  for (int r = 1; r < 8; ++r) EXPECT_EQ(0, memcmp(line(down, r), line(ref, r - 1), 16)) << r;
  EXPECT_EQ(0, memcmp(line(down, 0), line(down, 2), 16));
}

TEST(C420toRGB, RefusedGeometryWritesNothing) {
  C420toRGB k;
  k.SetMatrix(0, 0);
  Yuv420 s(8, 8, 100, 100, 100);
  std::vector<uint8_t> d(8 * 8 * 4, 0xEE);
  EXPECT_EQ(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data(), 7, 4, 32, 8),
            C420toRGB::kResultRefused);
  EXPECT_EQ(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 2, 32, 8),
            C420toRGB::kResultRefused);
  EXPECT_EQ(k.ToRGB32Interlaced(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 6, 32, 8),
            C420toRGB::kResultRefused);
  EXPECT_EQ(k.ToRGB32Field(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 4, 32, 8),
            C420toRGB::kResultRefused);
  EXPECT_EQ(k.ToRGB32(nullptr, s.u.data(), s.v.data(), d.data(), 8, 4, 32, 8),
            C420toRGB::kResultRefused);
  for (uint8_t b : d) EXPECT_EQ(b, 0xEE);
  // The 24-bit route accepts a height of 2, and 4 for its interlaced walk.
  EXPECT_EQ(k.ToRGB24(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 2, 24, 8), 0u);
  EXPECT_EQ(k.ToRGB24Interlaced(s.y.data(), s.u.data(), s.v.data(), d.data(), 8, 4, 24, 8), 0u);
  EXPECT_EQ(k.status(), 0u);
}

TEST(C420toRGB, ObjectsSitOnSixteenByteBoundaries) {
  for (int i = 0; i < 8; ++i) {
    std::unique_ptr<C420toRGB> k = MakeRgb(i % 4);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(k.get()) % 16, 0u);
    const uint8_t distance = reinterpret_cast<const uint8_t*>(k.get())[-1];
    EXPECT_GE(distance, 1);
    EXPECT_LE(distance, 16);
  }
}

TEST(C420toRGB2, RangesAndTheirOffsets) {
  C420toRGB2_C k;
  EXPECT_EQ(k.yOffset(), 16);
  k.SetRange(0, 0);
  EXPECT_EQ(k.yOffset(), 1160);
  k.SetRange(1, 0);
  EXPECT_EQ(k.yOffset(), 992);
  k.SetRange(1, 16);
  EXPECT_EQ(k.yOffset(), -32);
  std::vector<uint8_t> d(4 * 4 * 4);
  for (int straight = 0; straight < 2; ++straight) {
    k.SetRange(straight, 0);
    for (int yv : {16, 235}) {
      Yuv420 s(4, 4, static_cast<uint8_t>(yv), 128, 128);
      ASSERT_NE(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data(), 4, 4, 16, 4, 2), 0);
      const int expect = yv == 16 ? 0 : (straight ? 219 : 255);
      ExpectRgb(PixelAt(d, 4, 4, 4, 3, 3), expect, expect, expect);
    }
  }
  EXPECT_EQ(k.lineCapacity(), 4);
}

TEST(C420toRGB2, PackingOfSixteenBitPixelsAnd0Rgb) {
  C420toRGB2_C k;
  k.SetRange(0, 0);
  Yuv420 s(4, 4, 81, 90, 240);  // red 254, 0, 0
  std::vector<uint8_t> a(4 * 4 * 2), b(4 * 4 * 2), c(4 * 4 * 4);
  ASSERT_NE(k.ToRGB555(s.y.data(), s.u.data(), s.v.data(), a.data(), 4, 4, 8, 4, 2), 0);
  ASSERT_NE(k.ToRGB565(s.y.data(), s.u.data(), s.v.data(), b.data(), 4, 4, 8, 4, 2), 0);
  ASSERT_NE(k.To0RGB(s.y.data(), s.u.data(), s.v.data(), c.data(), 4, 4, 16, 4, 2), 0);
  EXPECT_EQ(a[0] | (a[1] << 8), (254 & 0xF8) << 7);
  EXPECT_EQ(b[0] | (b[1] << 8), (254 & 0xF8) << 8);
  EXPECT_EQ(c[0], 0);
  EXPECT_EQ(c[1], 254);
  EXPECT_EQ(c[2], 0);
  EXPECT_EQ(c[3], 0);
}

TEST(C420toRGB2, ANegativePitchWritesTopDown) {
  C420toRGB2_C k;
  k.SetRange(0, 0);
  Yuv420 s(4, 4, 16, 128, 128);
  for (int x = 0; x < 4; ++x) s.y[x] = 235;  // picture line 0 white
  std::vector<uint8_t> d(4 * 4 * 4);
  ASSERT_NE(k.ToRGB32(s.y.data(), s.u.data(), s.v.data(), d.data() + 3 * 16, 4, 4, -16, 4, 2), 0);
  EXPECT_EQ(d[0], 255);
  EXPECT_EQ(d[3 * 16], 0);
}

}  // namespace
}  // namespace orv
