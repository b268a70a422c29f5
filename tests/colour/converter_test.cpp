// ColorSpaceConverter and ColorKernelSet: choice of forms, translation of
// format codes, dispatch, sizes and refusals.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <typeinfo>
#include <vector>

#include "colour/ColorSpaceConverter.h"

namespace orv {
namespace {

std::vector<uint8_t> Random(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

TEST(ColorKernelSet, FormsFollowTheProcessorFlags) {
  struct Row {
    uint32_t flags;
    const std::type_info& planar;
    const std::type_info& rgb2;
    int32_t mmxState;
  };
  const Row rows[] = {
      {CPU_SSE2 | CPU_MMX, typeid(Cto420_MMX), typeid(C420toRGB2_KNI), 1},
      {CPU_KNI | CPU_MMX, typeid(Cto420_MMX), typeid(C420toRGB2_KNI), 1},
      {CPU_MMX, typeid(Cto420_MMX), typeid(C420toRGB2_MMX), 1},
      {0x1, typeid(Cto420), typeid(C420toRGB2_C), 0},
  };
  for (const Row& r : rows) {
    ColorKernelSet set;
    EXPECT_EQ(set.usesMmxState(), 1);
    ASSERT_EQ(set.Initialize(r.flags, SimdLevel::kPlain), 1);
    EXPECT_EQ(typeid(*set.toPlanar()), r.planar);
    EXPECT_EQ(typeid(*set.toRgb2()), r.rgb2);
    EXPECT_EQ(set.usesMmxState(), r.mmxState);
    EXPECT_EQ(set.blackLevel(), 0);
    EXPECT_EQ(set.rgbBlack(), 16);
    EXPECT_EQ(set.initialized(), 1);
    set.SetBlackLevel(16);
    EXPECT_EQ(set.rgbBlack(), 0);
    // A second Initialize replaces the forms and resets the black level.
    ASSERT_EQ(set.Initialize(r.flags, SimdLevel::kPlain), 1);
    EXPECT_EQ(set.blackLevel(), 0);
  }
}

TEST(ColorSpaceConverter, RgbConverterFollowsTheProcessorFlags) {
  struct Row {
    uint32_t flags;
    const std::type_info& type;
  };
  const Row rows[] = {{CPU_SSE2 | CPU_KNI | CPU_MMX, typeid(C420toRGB_SSE2)},
                      {CPU_KNI | CPU_MMX, typeid(C420toRGB_KNI)},
                      {CPU_MMX, typeid(C420toRGB_MMX)},
                      {0x1, typeid(C420toRGB_MMX)}};
  for (const Row& r : rows) {
    ColorSpaceConverter c;
    ASSERT_TRUE(c.Initialize(r.flags, SimdLevel::kPlain));
    EXPECT_EQ(typeid(*c.rgbConverter()), r.type);
  }
}

TEST(ColorSpaceConverter, DetectionSetsTheBitsThatAlwaysHold) {
  const uint32_t flags = DetectProcessorFlags();
  EXPECT_TRUE(flags & 0x1);
#if defined(__x86_64__)
  EXPECT_TRUE(flags & 0x2);
  EXPECT_TRUE(flags & CPU_SSE2);  // baseline of the architecture
  EXPECT_TRUE(flags & CPU_MMX);
#endif
}

struct Picture420 {
  uint32_t w, h, pitch;
  std::vector<uint8_t> buf;
  Picture420(uint32_t width, uint32_t height, uint32_t p, uint32_t seed)
      : w(width), h(height), pitch(p), buf(Random(p * height + (p / 2) * height, seed)) {}
  const uint8_t* Y() const { return buf.data(); }
  const uint8_t* U() const { return buf.data() + pitch * h; }
  const uint8_t* V() const { return buf.data() + pitch * h + (pitch / 2) * (h / 2); }
};

TEST(ColorSpaceConverter, EmptyConverterRefusesEverything) {
  ColorSpaceConverter c;
  Picture420 p(16, 16, 16, 1);
  std::vector<uint8_t> d(16 * 16 * 4);
  uint32_t size = static_cast<uint32_t>(d.size());
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 16, CSC_I420, 2, 0, d.data(), 64,
                                   CSC_RGB32, &size));
  size = static_cast<uint32_t>(d.size());
  EXPECT_FALSE(c.ConvertToYUV420(d.data(), 64, 16, 16, CSC_RGB32, 2, d.data(), d.data(), d.data(),
                                 16, CSC_I420, &size));
}

TEST(ColorSpaceConverter, ToYuv420SizesAndRefusals) {
  ColorSpaceConverter c;
  ASSERT_TRUE(c.Initialize());
  auto rgb = Random(32 * 16 * 4, 2);
  std::vector<uint8_t> out(32 * 16 * 3 / 2, 0xEE);
  uint8_t* y = out.data();
  uint8_t* u = y + 32 * 16;
  uint8_t* v = u + 16 * 8;
  const uint32_t required = (16 + 32) * 16;
  uint32_t size = required - 1;
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 128, 32, 16, CSC_RGB32, 2, y, u, v, 32, CSC_I420, &size));
  EXPECT_EQ(size, required - 1);
  size = required;
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 128, 32, 16, CSC_RGB32, 2, y, u, v, 32, CSC_YV12, &size));
  EXPECT_FALSE(c.ConvertToYUV420(nullptr, 128, 32, 16, CSC_RGB32, 2, y, u, v, 32, CSC_I420, &size));
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 128, 0, 16, CSC_RGB32, 2, y, u, v, 32, CSC_I420, &size));
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 128, 32, 16, CSC_RGB32, 2, y, u, v, 32, CSC_I420, nullptr));
  // A source line shorter than its pixels, or a destination pitch below the width.
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 100, 32, 16, CSC_RGB32, 2, y, u, v, 32, CSC_I420, &size));
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 128, 32, 16, CSC_RGB32, 2, y, u, v, 30, CSC_I420, &size));
  for (uint8_t b : out) EXPECT_EQ(b, 0xEE);
  // An unknown source format: the size is reported, nothing converted.
  EXPECT_FALSE(
      c.ConvertToYUV420(rgb.data(), 128, 32, 16, 0x12345, 2, y, u, v, 32, CSC_I420, &size));
  EXPECT_EQ(size, required);
  for (uint8_t b : out) EXPECT_EQ(b, 0xEE);
  size = required + 100;
  ASSERT_TRUE(
      c.ConvertToYUV420(rgb.data(), 128, 32, 16, CSC_RGB32, 2, y, u, v, 32, CSC_I420, &size));
  EXPECT_EQ(size, required);
}

TEST(ColorSpaceConverter, ToYuv420ReadsRgbBottomUpAndYuy2TopDown) {
  ColorSpaceConverter c;
  ASSERT_TRUE(c.Initialize());
  // RGB32: buffer line 0 black, the others white -> the last picture line is black.
  std::vector<uint8_t> rgb(8 * 4 * 4, 255);
  for (int i = 0; i < 32; ++i) rgb[i] = 0;
  std::vector<uint8_t> out(8 * 4 * 3 / 2);
  uint32_t size = static_cast<uint32_t>(out.size());
  ASSERT_TRUE(c.ConvertToYUV420(rgb.data(), 32, 8, 4, CSC_RGB32, 2, out.data(), out.data() + 32,
                                out.data() + 40, 8, CSC_I420, &size));
  EXPECT_EQ(out[0], 235);
  EXPECT_EQ(out[3 * 8], 16);
  // Shifted RGB: white 219 is Y 235 with black level 16.
  std::vector<uint8_t> shifted(8 * 4 * 3, 219);
  ASSERT_TRUE(c.ConvertToYUV420(shifted.data(), 24, 8, 4, CSC_SHIFTED_RGB24, 2, out.data(),
                                out.data() + 32, out.data() + 40, 8, CSC_I420, &size));
  EXPECT_EQ(out[0], 235);
  EXPECT_EQ(out[32], 128);
  // YUY2 lines copied top-down.
  std::vector<uint8_t> yuy2(16 * 4);
  for (int l = 0; l < 4; ++l)
    for (int j = 0; j < 16; ++j) yuy2[l * 16 + j] = static_cast<uint8_t>(l * 40 + j);
  ASSERT_TRUE(c.ConvertToYUV420(yuy2.data(), 16, 8, 4, CSC_YUY2, 2, out.data(), out.data() + 32,
                                out.data() + 40, 8, CSC_I420, &size));
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[3 * 8 + 1], 120 + 2);
}

TEST(ColorSpaceConverter, AConverterUsedWithShiftedRgbConvertsPlainRgbAsAFreshOne) {
  ColorSpaceConverter used, fresh;
  ASSERT_TRUE(used.Initialize());
  ASSERT_TRUE(fresh.Initialize());
  auto rgb = Random(16 * 8 * 4, 3);
  std::vector<uint8_t> a(16 * 8 * 3 / 2), b(a.size());
  uint32_t size = static_cast<uint32_t>(a.size());
  ASSERT_TRUE(used.ConvertToYUV420(rgb.data(), 64, 16, 8, CSC_SHIFTED_RGB32, 2, a.data(),
                                   a.data() + 128, a.data() + 160, 16, CSC_I420, &size));
  ASSERT_TRUE(used.ConvertToYUV420(rgb.data(), 64, 16, 8, CSC_RGBA, 1, a.data(), a.data() + 128,
                                   a.data() + 160, 16, CSC_I420, &size));
  ASSERT_TRUE(fresh.ConvertToYUV420(rgb.data(), 64, 16, 8, CSC_RGB32, 1, b.data(), b.data() + 128,
                                    b.data() + 160, 16, CSC_I420, &size));
  EXPECT_EQ(a, b);
}

TEST(ColorSpaceConverter, FromYuv420ToPlanarCopiesBitsInEitherPlaneOrder) {
  ColorSpaceConverter c;
  ASSERT_TRUE(c.Initialize());
  Picture420 p(16, 8, 16, 4);
  const uint32_t pitch = 20, h = 8;
  const uint32_t required = h * pitch + (pitch / 2) * h;
  for (uint32_t format : {CSC_I420, CSC_YV12}) {
    std::vector<uint8_t> d(required, 0xEE);
    uint32_t size = required;
    ASSERT_TRUE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 8, CSC_I420, 2, 0, d.data(),
                                    pitch, format, &size));
    EXPECT_EQ(size, required);
    const uint8_t* first = d.data() + h * pitch;
    const uint8_t* second = d.data() + (h * pitch * 5) / 4;
    const uint8_t* uPlane = format == CSC_I420 ? first : second;
    const uint8_t* vPlane = format == CSC_I420 ? second : first;
    for (uint32_t l = 0; l < h; ++l) EXPECT_EQ(0, memcmp(d.data() + l * pitch, p.Y() + l * 16, 16));
    for (uint32_t l = 0; l < h / 2; ++l) {
      EXPECT_EQ(0, memcmp(uPlane + l * (pitch / 2), p.U() + l * 8, 8));
      EXPECT_EQ(0, memcmp(vPlane + l * (pitch / 2), p.V() + l * 8, 8));
    }
  }
}

TEST(ColorSpaceConverter, FromYuv420Refusals) {
  ColorSpaceConverter c;
  ASSERT_TRUE(c.Initialize());
  Picture420 p(16, 8, 16, 5);
  std::vector<uint8_t> d(16 * 8 * 4, 0xEE);
  const uint32_t required = 8 * 64;
  uint32_t size = required - 1;
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 8, CSC_I420, 2, 0, d.data(), 64,
                                   CSC_RGB32, &size));
  EXPECT_EQ(size, required - 1);
  size = required;
  // A YV12 source: false, after the size was reported.
  size = required + 7;
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 8, CSC_YV12, 2, 0, d.data(), 64,
                                   CSC_RGB32, &size));
  EXPECT_EQ(size, required);
  // Unknown destination code, zero pitch, short destination pitch, odd width.
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 8, CSC_I420, 2, 0, d.data(), 64,
                                   0x777, &size));
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 0, 8, 16, 8, CSC_I420, 2, 0, d.data(), 64,
                                   CSC_RGB32, &size));
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 8, CSC_I420, 2, 0, d.data(), 60,
                                   CSC_RGB32, &size));
  size = required;
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 15, 8, CSC_I420, 2, 0, d.data(), 64,
                                   CSC_RGB32, &size));
  // Interlaced RGB needs a height that is a multiple of 4 and at least 8.
  size = 6 * 64;
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 6, CSC_I420, 1, 0, d.data(), 64,
                                   CSC_RGB32, &size));
  // YUY2 interlaced needs a multiple of 4 as well.
  size = 6 * 64;
  EXPECT_FALSE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 16, 8, 16, 6, CSC_I420, 1, 0, d.data(), 64,
                                   CSC_YUY2, &size));
  for (uint8_t b : d) EXPECT_EQ(b, 0xEE);
}

TEST(ColorSpaceConverter, MatrixFollowsHeightAndTheBt709Flag) {
  ColorSpaceConverter c;
  ASSERT_TRUE(c.Initialize());
  const uint32_t w = 4;
  auto convert = [&](uint32_t h, uint32_t bt709, uint32_t format) {
    std::vector<uint8_t> src(w * h + (w / 2) * h);
    std::fill(src.begin(), src.begin() + w * h, 81);
    std::fill(src.begin() + w * h, src.begin() + w * h + (w / 2) * (h / 2), 90);
    std::fill(src.begin() + w * h + (w / 2) * (h / 2), src.end(), 240);
    std::vector<uint8_t> d(w * 4 * h);
    uint32_t size = static_cast<uint32_t>(d.size());
    EXPECT_TRUE(c.ConvertFromYUV420(src.data(), src.data() + w * h,
                                    src.data() + w * h + (w / 2) * (h / 2), w, w / 2, w, h,
                                    CSC_I420, 2, bt709, d.data(), w * 4, format, &size));
    return std::vector<int>{d[2], d[1], d[0], d[3]};
  };
  EXPECT_EQ(convert(720, 0, CSC_RGB32), (std::vector<int>{254, 0, 0, 0}));
  EXPECT_EQ(convert(721 + 1, 0, CSC_RGB32), (std::vector<int>{255, 24, 0, 0}));
  EXPECT_EQ(convert(480, 1, CSC_RGBA), (std::vector<int>{255, 24, 0, 255}));
  EXPECT_EQ(convert(480, 0, CSC_RGB24)[1], 0);
  // Shifted output takes the unit-gain matrix: white at 219.
  std::vector<uint8_t> src(4 * 4 + 8, 235);
  std::fill(src.begin() + 16, src.end(), 128);
  std::vector<uint8_t> d(4 * 4 * 4);
  uint32_t size = static_cast<uint32_t>(d.size());
  ASSERT_TRUE(c.ConvertFromYUV420(src.data(), src.data() + 16, src.data() + 20, 4, 2, 4, 4,
                                  CSC_I420, 2, 0, d.data(), 16, CSC_SHIFTED_RGBA, &size));
  EXPECT_EQ(d[0], 219);
  EXPECT_EQ(d[3], 255);
}

TEST(ColorKernelSet, DispatchRefusesPairsWithNoOperation) {
  ColorKernelSet set;
  ASSERT_EQ(set.Initialize(), 1);
  std::vector<uint8_t> a(64 * 8, 0xEE), b(64 * 8);
  EXPECT_EQ(set.ConvertToPlanar(b.data(), 64, 8, 8, LAYOUT_UYVY, 0, a.data(), 8, a.data(), 4,
                                a.data(), 4, LAYOUT_PLANAR_420),
            0);
  EXPECT_EQ(set.ConvertFromPlanar(b.data(), 8, b.data(), 4, b.data(), 4, 8, 8, LAYOUT_YUY2, 0,
                                  a.data(), 16, LAYOUT_RGB32),
            0);
  EXPECT_EQ(set.ConvertPlanarToPlanar(b.data(), 8, b.data(), 4, b.data(), 4, 8, 8, LAYOUT_YUY2, 0,
                                      a.data(), 8, a.data(), 4, a.data(), 4, LAYOUT_PLANAR_420),
            0);
  for (uint8_t x : a) EXPECT_EQ(x, 0xEE);
}

TEST(ColorKernelSet, PlaneViewShowsOnePlaneAsGrey) {
  ColorKernelSet set;
  ASSERT_EQ(set.Initialize(), 1);
  Picture420 p(4, 4, 4, 6);
  std::vector<uint8_t> d(4 * 4 * 4);
  ASSERT_EQ(set.ConvertFromPlanar(p.Y(), 4, p.U(), 2, p.V(), 2, 4, 4, LAYOUT_PLANAR_420,
                                  MODE_VIEW_U | MODE_OUT_TOPDOWN, d.data(), 16, LAYOUT_RGB32),
            1);
  for (int l = 0; l < 4; ++l)
    for (int x = 0; x < 4; ++x) {
      const uint8_t s = p.U()[(l / 2) * 2 + x / 2];
      EXPECT_EQ(d[l * 16 + x * 4], s);
      EXPECT_EQ(d[l * 16 + x * 4 + 2], s);
      EXPECT_EQ(d[l * 16 + x * 4 + 3], 0);
    }
  std::vector<uint8_t> w(4 * 4 * 2);
  ASSERT_EQ(set.ConvertFromPlanar(p.Y(), 4, p.U(), 2, p.V(), 2, 4, 4, LAYOUT_PLANAR_420,
                                  MODE_VIEW_Y, w.data(), 8, LAYOUT_RGB565),
            1);
  const uint8_t s = p.Y()[0];  // picture line 0 is the last buffer line
  EXPECT_EQ(w[3 * 8] | (w[3 * 8 + 1] << 8), (s >> 3) | ((s & 0xFC) << 3) | ((s & 0xF8) << 8));
  EXPECT_EQ(set.ConvertFromPlanar(p.Y(), 4, p.U(), 2, p.V(), 2, 4, 4, LAYOUT_PLANAR_420,
                                  MODE_VIEW_Y, w.data(), 8, LAYOUT_RGB24),
            0);
}

TEST(ColorKernelSet, Planar422ToPlanar420FiltersWithoutRounding) {
  ColorKernelSet set;
  ASSERT_EQ(set.Initialize(), 1);
  // 4:2:2 chroma lines 10, 21, 40, 71 in both planes.
  std::vector<uint8_t> y(4 * 4), c(2 * 4);
  const int lines[4] = {10, 21, 40, 71};
  for (int l = 0; l < 4; ++l) c[l * 2] = c[l * 2 + 1] = static_cast<uint8_t>(lines[l]);
  std::vector<uint8_t> dy(16), du(4), dv(4);
  ASSERT_EQ(set.ConvertPlanarToPlanar(y.data(), 4, c.data(), 2, c.data(), 2, 4, 4,
                                      LAYOUT_PLANAR_422 | LAYOUT_INTERLACED, 0, dy.data(), 4,
                                      du.data(), 2, dv.data(), 2, LAYOUT_PLANAR_420),
            1);
  EXPECT_EQ(du[0], (3 * 10 + 40) >> 2);
  EXPECT_EQ(du[2], (3 * 71 + 21) >> 2);
  ASSERT_EQ(set.ConvertPlanarToPlanar(y.data(), 4, c.data(), 2, c.data(), 2, 4, 4,
                                      LAYOUT_PLANAR_422 | LAYOUT_PROGRESSIVE, 0, dy.data(), 4,
                                      du.data(), 2, dv.data(), 2, LAYOUT_PLANAR_420),
            1);
  EXPECT_EQ(du[0], (10 + 21) >> 1);
  EXPECT_EQ(dv[2], (40 + 71) >> 1);
}

TEST(ColorKernelSet, TopDownFlagMirrorsRgbOutput) {
  ColorKernelSet set;
  ASSERT_EQ(set.Initialize(), 1);
  Picture420 p(8, 4, 8, 7);
  std::vector<uint8_t> up(8 * 4 * 4), down(8 * 4 * 4);
  ASSERT_EQ(set.ConvertFromPlanar(p.Y(), 8, p.U(), 4, p.V(), 4, 8, 4, LAYOUT_PLANAR_420, 0x202,
                                  up.data(), 32, LAYOUT_RGB32),
            1);
  ASSERT_EQ(set.ConvertFromPlanar(p.Y(), 8, p.U(), 4, p.V(), 4, 8, 4, LAYOUT_PLANAR_420,
                                  0x202 | MODE_OUT_TOPDOWN, down.data(), 32, LAYOUT_RGB32),
            1);
  for (int l = 0; l < 4; ++l)
    EXPECT_EQ(0, memcmp(up.data() + l * 32, down.data() + (3 - l) * 32, 32));
}

}  // namespace
}  // namespace orv

namespace orv {
namespace {

// YUY2 output comes from the Cto420 form that the flags chose: the processor
// form rounds its chroma filter, the plain form truncates.
TEST(ColorSpaceConverter, Yuy2OutputFollowsTheChosenForm) {
  Picture420 p(32, 8, 32, 9);
  for (uint32_t flags : {uint32_t{CPU_SSE2 | CPU_MMX}, uint32_t{0x1}}) {
    for (uint32_t scan : {CSC_SCAN_PROGRESSIVE, CSC_SCAN_INTERLACED}) {
      ColorSpaceConverter c;
      ASSERT_TRUE(c.Initialize(flags, DetectSimdLevel()));
      std::vector<uint8_t> d(64 * 8), ref(64 * 8);
      uint32_t size = static_cast<uint32_t>(d.size());
      ASSERT_TRUE(c.ConvertFromYUV420(p.Y(), p.U(), p.V(), 32, 16, 32, 8, CSC_I420, scan, 0,
                                      d.data(), 64, CSC_YUY2, &size));
      std::unique_ptr<Cto420> k;
      if (flags & CPU_SSE2)
        k = std::make_unique<Cto420_MMX>(1, 0, SimdLevel::kPlain);
      else
        k = std::make_unique<Cto420>(1, 0);
      if (scan == CSC_SCAN_PROGRESSIVE)
        k->YUV420ToYUY2Frame(p.Y(), 32, p.U(), 16, p.V(), 16, 32, 8, ref.data(), 64);
      else
        k->YUV420ToYUY2Field(p.Y(), 32, p.U(), 16, p.V(), 16, 32, 8, ref.data(), 64);
      EXPECT_EQ(d, ref) << flags << " " << scan;
      // The two forms really differ on this picture.
      Cto420 plain(1, 0);
      std::vector<uint8_t> other(d.size());
      if (scan == CSC_SCAN_PROGRESSIVE)
        plain.YUV420ToYUY2Frame(p.Y(), 32, p.U(), 16, p.V(), 16, 32, 8, other.data(), 64);
      else
        plain.YUV420ToYUY2Field(p.Y(), 32, p.U(), 16, p.V(), 16, 32, 8, other.data(), 64);
      EXPECT_EQ(d == other, (flags & CPU_SSE2) == 0);
    }
  }
}

}  // namespace
}  // namespace orv
