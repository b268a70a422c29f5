// Cto420: the sums, the walks and the differences between its two forms.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "colour/Cto420.h"

namespace orv {
namespace {

struct Planes {
  int w, h;
  std::vector<uint8_t> y, u, v;
  Planes(int width, int height, uint8_t fill = 0xEE)
      : w(width),
        h(height),
        y(width * height, fill),
        u((width / 2) * (height / 2), fill),
        v((width / 2) * (height / 2), fill) {}
  uint8_t Y(int x, int l) const { return y[l * w + x]; }
  uint8_t U(int x, int l) const { return u[l * (w / 2) + x]; }
  uint8_t V(int x, int l) const { return v[l * (w / 2) + x]; }
};

std::vector<uint8_t> FlatRgb(int w, int h, int bpp, uint8_t r, uint8_t g, uint8_t b,
                             uint8_t x = 0) {
  std::vector<uint8_t> p(w * h * bpp);
  for (int i = 0; i < w * h; ++i) {
    p[i * bpp] = b;
    p[i * bpp + 1] = g;
    p[i * bpp + 2] = r;
    if (bpp == 4) p[i * bpp + 3] = x;
  }
  return p;
}

struct Yuv {
  int y, u, v;
};

Yuv ConvertFlat(Cto420& k, uint8_t r, uint8_t g, uint8_t b, int bpp) {
  auto rgb = FlatRgb(8, 2, bpp, r, g, b);
  Planes p(8, 2);
  if (bpp == 4)
    k.RGB32ToYUV420Frame(rgb.data(), 8 * 4, 8, 2, p.y.data(), 8, p.u.data(), 4, p.v.data(), 4);
  else
    k.RGB24ToYUV420Frame(rgb.data(), 8 * 3, 8, 2, p.y.data(), 8, p.u.data(), 4, p.v.data(), 4);
  for (int x = 0; x < 8; ++x) EXPECT_EQ(p.Y(x, 0), p.Y(0, 0));
  return Yuv{p.Y(0, 0), p.U(0, 0), p.V(0, 0)};
}

void ExpectYuv(const Yuv& got, int y, int u, int v) {
  EXPECT_EQ(got.y, y);
  EXPECT_EQ(got.u, u);
  EXPECT_EQ(got.v, v);
}

class BothForms : public ::testing::TestWithParam<int> {
 protected:
  std::unique_ptr<Cto420> Make(int mode, int black) {
    if (GetParam() == 0) return std::make_unique<Cto420>(mode, black);
    return std::make_unique<Cto420_MMX>(mode, black, DetectSimdLevel());
  }
};

TEST_P(BothForms, StudioSetGivesTheKnownFlatColours) {
  auto k = Make(2, 0);
  for (int bpp : {3, 4}) {
    ExpectYuv(ConvertFlat(*k, 255, 255, 255, bpp), 235, 128, 128);
    ExpectYuv(ConvertFlat(*k, 0, 0, 0, bpp), 16, 128, 128);
    ExpectYuv(ConvertFlat(*k, 255, 0, 0, bpp), 81, 90, 240);
    ExpectYuv(ConvertFlat(*k, 0, 255, 0, bpp), 144, 54, 34);
    ExpectYuv(ConvertFlat(*k, 0, 0, 255, bpp), 41, 240, 110);
    ExpectYuv(ConvertFlat(*k, 128, 128, 128, bpp), 126, 128, 128);
  }
}

TEST_P(BothForms, StraightSetClampsLastAndAddsTheBlackLevel) {
  auto k = Make(1, 16);
  for (int bpp : {3, 4}) {
    EXPECT_EQ(ConvertFlat(*k, 255, 255, 255, bpp).y, 255);  // 271 before the clamp
    EXPECT_EQ(ConvertFlat(*k, 219, 219, 219, bpp).y, 235);
    ExpectYuv(ConvertFlat(*k, 255, 0, 0, bpp), 92, 85, 255);
    ExpectYuv(ConvertFlat(*k, 0, 255, 0, bpp), 166, 44, 21);
    ExpectYuv(ConvertFlat(*k, 0, 0, 255, bpp), 45, 255, 107);
    EXPECT_EQ(ConvertFlat(*k, 128, 128, 128, bpp).y, 144);
  }
  // Reloading the studio set forgets the black level.
  k->SetCoefficients(2, 16);
  EXPECT_EQ(k->coefMode(), 2);
  ExpectYuv(ConvertFlat(*k, 0, 0, 0, 4), 16, 128, 128);
}

TEST_P(BothForms, ChromaTakesTheLeftPixelOnlyAndIgnoresTheFourthByte) {
  auto k = Make(2, 0);
  // Only the right pixel of each pair is coloured; the fourth byte is random.
  std::vector<uint8_t> rgb(16 * 4 * 4);
  for (int i = 0; i < 16 * 4; ++i) {
    const bool right = (i % 16) & 1;
    rgb[i * 4] = right ? 20 : 0;
    rgb[i * 4 + 1] = right ? 200 : 0;
    rgb[i * 4 + 2] = right ? 90 : 0;
    rgb[i * 4 + 3] = static_cast<uint8_t>(i * 37);
  }
  Planes p(16, 4);
  ASSERT_TRUE(
      k->RGB32ToYUV420Frame(rgb.data(), 64, 16, 4, p.y.data(), 16, p.u.data(), 8, p.v.data(), 8));
  for (int l = 0; l < 2; ++l)
    for (int x = 0; x < 8; ++x) {
      EXPECT_EQ(p.U(x, l), 128);
      EXPECT_EQ(p.V(x, l), 128);
    }
  EXPECT_NE(p.Y(1, 0), p.Y(0, 0));
  for (int i = 0; i < 16 * 4; ++i) rgb[i * 4 + 3] = 0;
  Planes q(16, 4);
  k->RGB32ToYUV420Frame(rgb.data(), 64, 16, 4, q.y.data(), 16, q.u.data(), 8, q.v.data(), 8);
  EXPECT_EQ(p.y, q.y);
}

INSTANTIATE_TEST_SUITE_P(Forms, BothForms, ::testing::Values(0, 1));

// A picture whose lines are flat grey levels, one level per line.
std::vector<uint8_t> LinedGrey(int w, int h, const std::vector<uint8_t>& levels) {
  std::vector<uint8_t> p(w * h * 4);
  for (int l = 0; l < h; ++l)
    for (int x = 0; x < w; ++x)
      for (int c = 0; c < 3; ++c) p[(l * w + x) * 4 + c] = levels[l];
  return p;
}

TEST(Cto420Walks, FrameUpReadsTheLastBufferLineFirst) {
  Cto420 k(2, 0);
  auto rgb = LinedGrey(4, 2, {255, 0});
  Planes down(4, 2), up(4, 2);
  k.RGB32ToYUV420Frame(rgb.data(), 16, 4, 2, down.y.data(), 4, down.u.data(), 2, down.v.data(), 2);
  k.RGB32ToYUV420FrameUp(rgb.data(), 16, 4, 2, up.y.data(), 4, up.u.data(), 2, up.v.data(), 2);
  EXPECT_EQ(down.Y(0, 0), 235);
  EXPECT_EQ(down.Y(0, 1), 16);
  EXPECT_EQ(up.Y(0, 0), 16);
  EXPECT_EQ(up.Y(0, 1), 235);
}

TEST(Cto420Walks, FieldWalkConvertsWholeGroupsOnly) {
  Cto420 k(2, 0);
  auto rgb = LinedGrey(4, 6, {10, 20, 30, 40, 50, 60});
  Planes p(4, 6);
  EXPECT_TRUE(
      k.RGB32ToYUV420Field(rgb.data(), 16, 4, 6, p.y.data(), 4, p.u.data(), 2, p.v.data(), 2));
  for (int l = 0; l < 4; ++l) EXPECT_NE(p.Y(0, l), 0xEE) << l;
  EXPECT_EQ(p.Y(0, 4), 0xEE);
  EXPECT_EQ(p.Y(0, 5), 0xEE);
  EXPECT_EQ(p.U(0, 2), 0xEE);
  // Too short for one group: refused, nothing written.
  Planes q(4, 2);
  EXPECT_FALSE(
      k.RGB32ToYUV420Field(rgb.data(), 16, 4, 2, q.y.data(), 4, q.u.data(), 2, q.v.data(), 2));
  EXPECT_EQ(q.Y(0, 0), 0xEE);
}

TEST(Cto420Walks, Yuy2ChromaFiltersPerWalk) {
  // YUY2 lines with U = 10 x line and V = 200 - 10 x line, Y = line.
  const int w = 4, h = 8;
  std::vector<uint8_t> src(w * 2 * h);
  for (int l = 0; l < h; ++l)
    for (int j = 0; j < w / 2; ++j) {
      src[l * w * 2 + 4 * j] = static_cast<uint8_t>(l);
      src[l * w * 2 + 4 * j + 1] = static_cast<uint8_t>(10 * l + 1);
      src[l * w * 2 + 4 * j + 2] = static_cast<uint8_t>(l + 100);
      src[l * w * 2 + 4 * j + 3] = static_cast<uint8_t>(200 - 10 * l);
    }
  for (int form = 0; form < 2; ++form) {
    std::unique_ptr<Cto420> k = form ? std::make_unique<Cto420_MMX>(2, 0, DetectSimdLevel())
                                     : std::make_unique<Cto420>(2, 0);
    Planes fr(w, h), fi(w, h), sh(w, h);
    k->YUY2ToYUV420Frame(src.data(), 8, w, h, fr.y.data(), w, fr.u.data(), 2, fr.v.data(), 2);
    k->YUY2ToYUV420Field(src.data(), 8, w, h, fi.y.data(), w, fi.u.data(), 2, fi.v.data(), 2);
    k->YUY2ToYUV420Shift(src.data(), 8, w, h, sh.y.data(), w, sh.u.data(), 2, sh.v.data(), 2);
    for (int l = 0; l < h; ++l) {
      EXPECT_EQ(fr.Y(0, l), l);
      EXPECT_EQ(fr.Y(1, l), l + 100);
      EXPECT_EQ(fi.Y(0, l), l);
    }
    // Frame: (u(2k) + u(2k+1) + 1) >> 1.
    EXPECT_EQ(fr.U(0, 0), (1 + 11 + 1) >> 1);
    EXPECT_EQ(fr.V(1, 2), (160 + 150 + 1) >> 1);
    // Field: line 2g = (3 u(4g) + u(4g+2) + 2) >> 2; line 2g+1 = (3 u(4g+3) + u(4g+1) + 2) >> 2.
    EXPECT_EQ(fi.U(0, 0), (3 * 1 + 21 + 2) >> 2);
    EXPECT_EQ(fi.U(0, 1), (3 * 31 + 11 + 2) >> 2);
    EXPECT_EQ(fi.U(0, 3), (3 * 71 + 51 + 2) >> 2);
    // Shift: destination lines 0, 1, 2, 3 from source 0, 0, 1, 2; later groups from 4g - 1.
    const int expectY[8] = {0, 0, 1, 2, 3, 4, 5, 6};
    for (int l = 0; l < h; ++l) EXPECT_EQ(sh.Y(0, l), expectY[l]) << l;
    EXPECT_EQ(sh.U(0, 0), (3 * 1 + 11 + 2) >> 2);   // a source 0, b source 1
    EXPECT_EQ(sh.U(0, 1), (3 * 21 + 1 + 2) >> 2);   // a source 2, b source 0
    EXPECT_EQ(sh.U(0, 2), (3 * 31 + 51 + 2) >> 2);  // a source 3, b source 5
    EXPECT_EQ(sh.U(0, 3), (3 * 61 + 41 + 2) >> 2);  // a source 6, b source 4
  }
}

TEST(Cto420Walks, RgbShiftUsesSourceLineZeroTwice) {
  Cto420 k(2, 0);
  auto rgb = LinedGrey(2, 8, {0, 32, 64, 96, 128, 160, 192, 224});
  Planes p(2, 8);
  k.RGB32ToYUV420Shift(rgb.data(), 8, 2, 8, p.y.data(), 2, p.u.data(), 1, p.v.data(), 1);
  Planes ref(2, 8);
  auto one = LinedGrey(2, 2, {0, 0});
  k.RGB32ToYUV420Frame(one.data(), 8, 2, 2, ref.y.data(), 2, ref.u.data(), 1, ref.v.data(), 1);
  EXPECT_EQ(p.Y(0, 0), ref.Y(0, 0));
  EXPECT_EQ(p.Y(0, 1), ref.Y(0, 0));
  EXPECT_NE(p.Y(0, 2), p.Y(0, 1));
  EXPECT_LT(p.Y(0, 6), p.Y(0, 7));
  // The last source line is not used: line 7 shows source 6 (192).
  auto last = LinedGrey(2, 2, {192, 192});
  k.RGB32ToYUV420Frame(last.data(), 8, 2, 2, ref.y.data(), 2, ref.u.data(), 1, ref.v.data(), 1);
  EXPECT_EQ(p.Y(0, 7), ref.Y(0, 0));
}

TEST(Cto420Walks, PlainFormWritesEveryPairOfAnEvenWidth) {
  for (int form = 0; form < 2; ++form) {
    std::unique_ptr<Cto420> k = form ? std::make_unique<Cto420_MMX>(2, 0, DetectSimdLevel())
                                     : std::make_unique<Cto420>(2, 0);
    auto rgb = FlatRgb(7, 2, 3, 255, 0, 0);
    Planes p(7, 2);
    k->RGB24ToYUV420Frame(rgb.data(), 21, 6, 2, p.y.data(), 7, p.u.data(), 3, p.v.data(), 3);
    for (int x = 0; x < 3; ++x) EXPECT_EQ(p.U(x, 0), 90);
    for (int x = 0; x < 6; ++x) EXPECT_EQ(p.Y(x, 0), 81);
    EXPECT_EQ(p.Y(6, 0), 0xEE);  // the odd last column is not converted
  }
}

TEST(Cto420Planar, RgbTo422UsesTheDoubleGainOfOnePixel) {
  Cto420 k(2, 0);
  auto rgb = FlatRgb(4, 2, 4, 0, 0, 255);
  std::vector<uint8_t> y(8), u(4), v(4);
  ASSERT_TRUE(k.RGB32ToYUV422(rgb.data(), 16, 4, 2, y.data(), 4, u.data(), 2, v.data(), 2));
  EXPECT_EQ(y[0], 41);
  EXPECT_EQ(u[0], 240);
  EXPECT_EQ(v[3], 110);
}

// 4:2:0 chroma planes whose lines are flat levels.
struct Source420 {
  int w, h;
  std::vector<uint8_t> y, u, v;
  Source420(int width, int height, const std::vector<int>& uLines)
      : w(width),
        h(height),
        y(width * height),
        u((width / 2) * (height / 2)),
        v((width / 2) * (height / 2)) {
    for (int i = 0; i < width * height; ++i) y[i] = static_cast<uint8_t>(i * 7);
    for (int l = 0; l < height / 2; ++l)
      for (int x = 0; x < width / 2; ++x) {
        u[l * (width / 2) + x] = static_cast<uint8_t>(uLines[l]);
        v[l * (width / 2) + x] = static_cast<uint8_t>(255 - uLines[l]);
      }
  }
};

TEST(Cto420Planar, Yuy2FromPlanarRoundsOnlyInTheProcessorForm) {
  Source420 s(4, 8, {10, 21, 40, 71});
  Cto420 plain(1, 0);
  Cto420_MMX mmx(1, 0, DetectSimdLevel());
  std::vector<uint8_t> a(8 * 8), b(8 * 8);
  ASSERT_TRUE(
      plain.YUV420ToYUY2Frame(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 8, a.data(), 8));
  ASSERT_TRUE(
      mmx.YUV420ToYUY2Frame(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 8, b.data(), 8));
  auto U = [](const std::vector<uint8_t>& p, int line) { return p[line * 8 + 1]; };
  EXPECT_EQ(U(a, 0), 10);
  EXPECT_EQ(U(a, 1), (3 * 10 + 21) >> 2);
  EXPECT_EQ(U(b, 1), (3 * 10 + 21 + 2) >> 2);
  EXPECT_EQ(U(a, 2), (10 + 3 * 21) >> 2);
  EXPECT_EQ(U(b, 2), (10 + 3 * 21 + 2) >> 2);
  EXPECT_EQ(U(a, 7), 71);
  EXPECT_EQ(a[3 * 8], s.y[3 * 4]);  // luma carried over
  ASSERT_TRUE(
      plain.YUV420ToYUY2Field(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 8, a.data(), 8));
  ASSERT_TRUE(
      mmx.YUV420ToYUY2Field(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 8, b.data(), 8));
  EXPECT_EQ(U(a, 0), 10);
  EXPECT_EQ(U(a, 1), 21);
  EXPECT_EQ(U(a, 2), (5 * 10 + 3 * 40) >> 3);
  EXPECT_EQ(U(b, 2), (5 * 10 + 3 * 40 + 4) >> 3);
  EXPECT_EQ(U(a, 3), (7 * 21 + 71) >> 3);
  EXPECT_EQ(U(a, 4), (10 + 7 * 40) >> 3);
  EXPECT_EQ(U(b, 5), (3 * 21 + 5 * 71 + 4) >> 3);
  EXPECT_EQ(U(a, 6), 40);
  EXPECT_EQ(U(a, 7), 71);
}

TEST(Cto420Planar, FieldFilterOfHeightFourRepeatsTheFirstLines) {
  Source420 s(2, 4, {30, 90});
  Cto420 k(1, 0);
  std::vector<uint8_t> d(4 * 4);
  ASSERT_TRUE(k.YUV420ToYUY2Field(s.y.data(), 2, s.u.data(), 1, s.v.data(), 1, 2, 4, d.data(), 4));
  const int expect[4] = {30, 90, 30, 90};
  for (int l = 0; l < 4; ++l) EXPECT_EQ(d[l * 4 + 1], expect[l]);
}

TEST(Cto420Planar, HeightsThatWouldReadBehindThePlaneAreRefused) {
  Source420 s(4, 6, {1, 2, 3});
  Cto420 k(1, 0);
  std::vector<uint8_t> d(8 * 6, 0xEE);
  EXPECT_FALSE(k.YUV420ToYUY2Field(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 6, d.data(), 8));
  EXPECT_FALSE(k.YUV420ToYUY2Frame(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 5, d.data(), 8));
  EXPECT_FALSE(k.YUV420ToUYVYField(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 6, d.data(), 8));
  for (uint8_t b : d) EXPECT_EQ(b, 0xEE);
}

TEST(Cto420Planar, YuvTo422RoundsInBothForms) {
  Source420 s(4, 8, {10, 21, 40, 71});
  for (int form = 0; form < 2; ++form) {
    std::unique_ptr<Cto420> k = form ? std::make_unique<Cto420_MMX>(1, 0, DetectSimdLevel())
                                     : std::make_unique<Cto420>(1, 0);
    Planes d(4, 8);
    std::vector<uint8_t> u(2 * 8), v(2 * 8), y(4 * 8);
    ASSERT_TRUE(k->YUV420ToYUV422Frame(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 8, y.data(),
                                       4, u.data(), 2, v.data(), 2));
    EXPECT_EQ(u[1 * 2], (3 * 10 + 21 + 2) >> 2);
    EXPECT_EQ(v[2 * 2], (245 + 3 * 234 + 2) >> 2);
    EXPECT_EQ(y, s.y);
    ASSERT_TRUE(k->YUV420ToYUV422Field(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 8, y.data(),
                                       4, u.data(), 2, v.data(), 2));
    EXPECT_EQ(u[2 * 2], (5 * 10 + 3 * 40 + 4) >> 3);
  }
}

TEST(Cto420Planar, UyvyRepeatsTheChromaLinesOfEachField) {
  Source420 s(2, 8, {10, 20, 30, 40});
  Cto420 k(1, 0);
  std::vector<uint8_t> d(4 * 8);
  ASSERT_TRUE(k.YUV420ToUYVYField(s.y.data(), 2, s.u.data(), 1, s.v.data(), 1, 2, 8, d.data(), 4));
  const int field[8] = {10, 20, 10, 20, 30, 40, 30, 40};
  for (int l = 0; l < 8; ++l) {
    EXPECT_EQ(d[l * 4], field[l]);
    EXPECT_EQ(d[l * 4 + 1], s.y[l * 2]);
    EXPECT_EQ(d[l * 4 + 2], 255 - field[l]);
    EXPECT_EQ(d[l * 4 + 3], s.y[l * 2 + 1]);
  }
  ASSERT_TRUE(k.YUV420ToUYVYFrame(s.y.data(), 2, s.u.data(), 1, s.v.data(), 1, 2, 8, d.data(), 4));
  for (int l = 0; l < 8; ++l) EXPECT_EQ(d[l * 4], 10 * (l / 2 + 1));
}

TEST(Cto420Planar, Nv12InterleavesChromaBehindTheLumaPlane) {
  Source420 s(4, 4, {50, 60});
  Cto420 k(1, 0);
  std::vector<uint8_t> d(6 * 6, 0xEE);
  ASSERT_TRUE(k.YUV420ToNV12(s.y.data(), 4, s.u.data(), 2, s.v.data(), 2, 4, 4, d.data(), 6));
  EXPECT_EQ(d[6 + 3], s.y[4 + 3]);
  EXPECT_EQ(d[4], 0xEE);  // beyond the width of a Y line
  const uint8_t* uv = d.data() + 4 * 6;
  const int expect[8] = {50, 205, 50, 205};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(uv[i], expect[i]);
  EXPECT_EQ(uv[6], 60);
  EXPECT_EQ(uv[7], 195);
}

}  // namespace
}  // namespace orv
