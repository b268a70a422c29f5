// Worked values of the own picture scaler, at the plain level: the six
// methods, the packed engine's signed chroma, fields, trims, margins and
// refusals. The processor forms are held to these bytes by tavo_forms_test.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "foundation/cpu_info.h"
#include "image/tavo_resize.h"

namespace {

using orv::SimdLevel;
using orv::tavo::Method;
using Bytes = std::vector<uint8_t>;
constexpr OrvImage::FIELD_TYPE kFrame = OrvImage::FIELD_FRAME;
constexpr OrvImage::FIELD_TYPE kTop = OrvImage::FIELD_TOP;
constexpr OrvImage::FIELD_TYPE kBottom = OrvImage::FIELD_BOTTOM;

// One line of a plane through the plain engine.
Bytes ScaleLine(const Bytes& src, int n) {
  Bytes dst(static_cast<size_t>(n), 0xEE);
  EXPECT_TRUE(orv::tavo::ScalePlane(src.data(), static_cast<ptrdiff_t>(src.size()),
                                    static_cast<int>(src.size()), 1, dst.data(), n, n, 1,
                                    SimdLevel::kPlain));
  return dst;
}

// One column: the vertical pass alone.
Bytes ScaleColumn(const Bytes& src, int n) {
  Bytes dst(static_cast<size_t>(n), 0xEE);
  EXPECT_TRUE(orv::tavo::ScalePlane(src.data(), 1, 1, static_cast<int>(src.size()), dst.data(), 1,
                                    1, n, SimdLevel::kPlain));
  return dst;
}

// A packed line from its luma and chroma samples (U and V the same).
Bytes PackedLine(const Bytes& y, const Bytes& c) {
  Bytes line(y.size() * 2);
  for (size_t i = 0; i < y.size() / 2; ++i) {
    line[4 * i] = y[2 * i];
    line[4 * i + 1] = c[i];
    line[4 * i + 2] = y[2 * i + 1];
    line[4 * i + 3] = c[i];
  }
  return line;
}

bool PackedResize(const Bytes& src, int srcW, int srcH, Bytes* dst, int dstW, int dstH) {
  dst->assign(static_cast<size_t>(dstW) * 2 * dstH, 0xEE);
  return orv::tavo::ResizeYUY2(src.data(), dst->data(), srcW * 2, dstW * 2, {srcW, srcH},
                               {dstW, dstH}, 0, 0, 0, kFrame, true, SimdLevel::kPlain);
}

TEST(TavoMethods, ChosenInOrder) {
  EXPECT_EQ(orv::tavo::ChooseMethod(720, 720), Method::kCopy);
  EXPECT_EQ(orv::tavo::ChooseMethod(720, 360), Method::kHalve);
  EXPECT_EQ(orv::tavo::ChooseMethod(2, 1), Method::kHalve);  // halving comes before area
  EXPECT_EQ(orv::tavo::ChooseMethod(720, 480), Method::kArea);
  EXPECT_EQ(orv::tavo::ChooseMethod(3, 1), Method::kArea);
  EXPECT_EQ(orv::tavo::ChooseMethod(1, 2), Method::kRepeat);  // repeat comes before double
  EXPECT_EQ(orv::tavo::ChooseMethod(1, 9), Method::kRepeat);
  EXPECT_EQ(orv::tavo::ChooseMethod(360, 720), Method::kDouble);
  EXPECT_EQ(orv::tavo::ChooseMethod(480, 720), Method::kCubic);
}

TEST(TavoMethods, CommonGridAndWeights) {
  const auto g = orv::tavo::MakeAreaGrid(720, 480);
  EXPECT_EQ(g.grid, 1440u);
  EXPECT_EQ(g.p, 2u);
  EXPECT_EQ(g.q, 3u);
  const auto big = orv::tavo::MakeAreaGrid(65535, 65534);  // lcm past 32 bits
  EXPECT_EQ(big.grid, 65535ull * 65534ull);
  EXPECT_EQ(big.p, 65534u);
  EXPECT_EQ(big.q, 65535u);

  int32_t w[4];
  orv::tavo::CubicWeights(0.0, w);
  EXPECT_EQ(w[0], 0);
  EXPECT_EQ(w[1], 65536);
  EXPECT_EQ(w[2], 0);
  EXPECT_EQ(w[3], 0);
  orv::tavo::CubicWeights(0.5, w);  // -4095.5, 36864.5, 36864.5, -4095.5 cut toward zero
  EXPECT_EQ(w[0], -4095);
  EXPECT_EQ(w[1], 36864);
  EXPECT_EQ(w[2], 36864);
  EXPECT_EQ(w[3], -4095);
  orv::tavo::CubicWeights(1.0 / 3.0, w);
  EXPECT_EQ(w[0], -4044);
  EXPECT_EQ(w[1], 48545);
  EXPECT_EQ(w[2], 24273);
  EXPECT_EQ(w[3], -3235);
}

TEST(TavoPlane, CopyAndHalve) {
  Bytes src(720);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 7 + 3);
  EXPECT_EQ(ScaleLine(src, 720), src);
  src[0] = 255;
  src[1] = 254;
  src[2] = 1;
  src[3] = 0;
  const Bytes half = ScaleLine(src, 360);
  EXPECT_EQ(half[0], 254);  // mean of 255 and 254, cut
  EXPECT_EQ(half[1], 0);
  for (int i = 2; i < 360; ++i) EXPECT_EQ(half[i], (src[2 * i] + src[2 * i + 1]) >> 1);
}

TEST(TavoPlane, AreaThroughTheRoundedDownReciprocal) {
  // 6 -> 4: P = 2, Q = 3; output 0 = (2 s0 + s1) / 3, output 1 = (s1 + 2 s2) / 3.
  EXPECT_EQ(ScaleLine({30, 60, 0, 90, 0, 255}, 4), (Bytes{39, 19, 59, 169}));
  // 9 -> 3: the mean of three; 3 3 3 gives 2, and 0 0 255 gives 84.
  EXPECT_EQ(ScaleLine({1, 2, 3, 0, 0, 255, 3, 3, 3}, 3), (Bytes{1, 84, 2}));
  // Flat areas lose a level unless Q is a power of two.
  EXPECT_EQ(ScaleLine(Bytes(720, 100), 480), Bytes(480, 99));
  EXPECT_EQ(ScaleLine(Bytes(720, 128), 480), Bytes(480, 127));
  EXPECT_EQ(ScaleLine(Bytes(720, 100), 180), Bytes(180, 100));
  EXPECT_EQ(ScaleLine(Bytes(720, 255), 240), Bytes(240, 254));
  EXPECT_EQ(ScaleColumn({30, 60, 0, 90, 0, 255}, 4), (Bytes{39, 19, 59, 169}));
}

TEST(TavoPlane, RepeatAndDouble) {
  EXPECT_EQ(ScaleLine({77}, 5), Bytes(5, 77));
  EXPECT_EQ(ScaleColumn({77}, 7), Bytes(7, 77));
  EXPECT_EQ(ScaleLine({10, 21, 200}, 6), (Bytes{10, 15, 21, 110, 200, 200}));
  EXPECT_EQ(ScaleColumn({10, 21, 200}, 6), (Bytes{10, 15, 21, 110, 200, 200}));
  Bytes src(360);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 13);
  const Bytes out = ScaleLine(src, 720);
  for (int i = 0; i < 360; ++i) EXPECT_EQ(out[2 * i], src[i]);
  EXPECT_EQ(out[718], src[359]);
  EXPECT_EQ(out[719], src[359]);
}

TEST(TavoPlane, CubicWithLinearEdges) {
  // 5 -> 7: outputs 0, 1 linear, 2..4 cubic, 5 linear, 6 the last sample.
  EXPECT_EQ(ScaleLine({10, 20, 40, 80, 160}, 7), (Bytes{10, 17, 25, 40, 63, 107, 160}));
  EXPECT_EQ(ScaleColumn({10, 20, 40, 80, 160}, 7), (Bytes{10, 17, 25, 40, 63, 107, 160}));
  // 480 -> 720: first exact, second linear (t = 479/719), last the last sample.
  Bytes src(480);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>((i * 37) ^ (i >> 2));
  const Bytes out = ScaleLine(src, 720);
  EXPECT_EQ(out[0], src[0]);
  const double t = 479.0 / 719.0;
  EXPECT_EQ(out[1], static_cast<int>((1 - t) * src[0] + t * src[1] + 0.5));
  EXPECT_EQ(out[719], src[479]);
  // Flat stays flat.
  EXPECT_EQ(ScaleLine(Bytes(480, 100), 720), Bytes(720, 100));
  EXPECT_EQ(ScaleColumn(Bytes(11, 235), 17), Bytes(17, 235));
}

TEST(TavoPlane, CubicOvershootIsClamped) {
  Bytes edge(12, 0);
  for (int i = 6; i < 12; ++i) edge[i] = 255;
  // Outputs 10 and 11 undershoot below 0, 15 and 16 overshoot past 0xFF0000.
  const Bytes expected{0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   17, 128,
                       238, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255, 255};
  EXPECT_EQ(ScaleLine(edge, 27), expected);
}

TEST(TavoPacked, FlatLumaAndNeutralChromaStay) {
  struct Case {
    int sw, sh, dw, dh;
  } cases[] = {{720, 4, 480, 4}, {720, 6, 360, 3}, {360, 2, 720, 4}, {480, 3, 720, 8},
               {720, 9, 240, 3}, {8, 1, 8, 5},     {6, 5, 16, 7},    {10, 3, 4, 2}};
  for (const Case& c : cases) {
    Bytes src;
    for (int y = 0; y < c.sh; ++y) {
      const Bytes line = PackedLine(Bytes(c.sw, 100), Bytes(c.sw / 2, 128));
      src.insert(src.end(), line.begin(), line.end());
    }
    Bytes dst;
    ASSERT_TRUE(PackedResize(src, c.sw, c.sh, &dst, c.dw, c.dh));
    for (size_t i = 0; i < dst.size(); ++i) {
      ASSERT_EQ(dst[i], (i & 1) ? 128 : 100)
          << c.sw << "x" << c.sh << " -> " << c.dw << "x" << c.dh << " byte " << i;
    }
  }
}

TEST(TavoPacked, SignedChroma) {
  Bytes dst;
  // Double: chroma mean 128 + (101 + 50 - 256) / 2 toward zero = 76; luma (a + b) >> 1.
  ASSERT_TRUE(PackedResize(PackedLine({101, 50, 7, 8}, {101, 50}), 4, 1, &dst, 8, 1));
  EXPECT_EQ(dst, (Bytes{101, 101, 75, 101, 50, 76, 28, 76, 7, 50, 7, 50, 8, 50, 8, 50}));
  // Halving across treats chroma as unsigned: (101 + 50) >> 1 = 75.
  ASSERT_TRUE(PackedResize(PackedLine({10, 20, 30, 40}, {101, 50}), 4, 1, &dst, 2, 1));
  EXPECT_EQ(dst, (Bytes{15, 75, 35, 75}));
  // Halving down treats it as signed: 76.
  Bytes two = PackedLine({10, 20}, {101});
  const Bytes second = PackedLine({11, 30}, {50});
  two.insert(two.end(), second.begin(), second.end());
  ASSERT_TRUE(PackedResize(two, 2, 2, &dst, 2, 1));
  EXPECT_EQ(dst, (Bytes{10, 76, 25, 76}));
  // Area with the rounded-up reciprocal: chroma 5 -> 3 signed, luma 10 -> 6.
  ASSERT_TRUE(PackedResize(PackedLine(Bytes(10, 100), {200, 10, 77, 5, 250}), 10, 1, &dst, 6, 1));
  EXPECT_EQ(dst, (Bytes{100, 123, 100, 123, 100, 49, 100, 49, 100, 152, 100, 152}));
  // Cubic chroma: 8 -> 13 samples, clamped to -128..127 before 128 comes back.
  ASSERT_TRUE(PackedResize(PackedLine(Bytes(16, 60), {178, 178, 178, 38, 38, 38, 38, 38}), 16, 1,
                           &dst, 26, 1));
  const Bytes chroma{178, 178, 182, 186, 133, 48, 29, 38, 38, 38, 38, 39, 38};
  for (int i = 0; i < 13; ++i) {
    EXPECT_EQ(dst[4 * i + 1], chroma[i]) << i;
    EXPECT_EQ(dst[4 * i + 3], chroma[i]) << i;
    EXPECT_EQ(dst[4 * i], 60);
  }
}

TEST(TavoPacked, OddLengthsAreRefused) {
  Bytes src(720 * 2 * 2, 16), dst(720 * 2 * 2, 0xEE);
  const Bytes before = dst;
  EXPECT_FALSE(orv::tavo::ResizeYUY2(src.data(), dst.data(), 1440, 1440, {719, 2}, {720, 2}, 0, 0,
                                     0, kFrame, true, SimdLevel::kPlain));
  EXPECT_FALSE(orv::tavo::ResizeYUY2(src.data(), dst.data(), 1440, 1440, {720, 2}, {719, 2}, 0, 0,
                                     0, kFrame, true, SimdLevel::kPlain));
  // A trim or margin that splits a pixel pair.
  EXPECT_FALSE(orv::tavo::ResizeYUY2(src.data(), dst.data(), 1440, 1440, {720, 2}, {720, 2}, 2, 0,
                                     0, kFrame, true, SimdLevel::kPlain));
  EXPECT_EQ(dst, before);
}

// A 4:2:0 picture of w x h with step s: Y, then U, then V.
struct Planar {
  int w, h, s;
  Bytes data;
  Planar(int width, int height, int step, uint8_t fill)
      : w(width),
        h(height),
        s(step),
        data(static_cast<size_t>(step) * height + 2 * (step / 2) * (height / 2), fill) {}
  uint8_t* Y(int y) { return data.data() + static_cast<size_t>(y) * s; }
  uint8_t* U(int y) { return data.data() + static_cast<size_t>(s) * h + (s / 2) * y; }
  uint8_t* V(int y) { return U(0) + (s / 2) * (h / 2) + (s / 2) * y; }
};

TEST(TavoFields, BottomIntoTheSameFieldWritesOnlyOddLines) {
  Planar src(16, 8, 16, 0), dst(16, 8, 16, 0xEE);
  for (int y = 0; y < 8; ++y) std::fill(src.Y(y), src.Y(y) + 16, static_cast<uint8_t>(10 * y));
  for (int y = 0; y < 4; ++y) {
    std::fill(src.U(y), src.U(y) + 8, static_cast<uint8_t>(100 + y));
    std::fill(src.V(y), src.V(y) + 8, static_cast<uint8_t>(200 + y));
  }
  ASSERT_TRUE(orv::tavo::ResizeYUV420(src.data.data(), dst.data.data(), 16, 16, {16, 8}, {16, 8}, 0,
                                      0, 0, kBottom, true, SimdLevel::kPlain));
  for (int y = 0; y < 8; ++y) {
    EXPECT_EQ(dst.Y(y)[3], (y & 1) ? 10 * y : 0xEE) << y;
  }
  for (int y = 0; y < 4; ++y) {
    EXPECT_EQ(dst.U(y)[5], (y & 1) ? 100 + y : 0xEE) << y;
    EXPECT_EQ(dst.V(y)[5], (y & 1) ? 200 + y : 0xEE) << y;
  }
}

TEST(TavoFields, TopFieldFillsTheWholePicture) {
  // 480 source lines, top field of 240 lines, doubled into all 480 lines.
  Planar src(8, 480, 8, 0), dst(8, 480, 8, 0xEE);
  for (int y = 0; y < 480; ++y) std::fill(src.Y(y), src.Y(y) + 8, static_cast<uint8_t>(y));
  for (int y = 0; y < 240; ++y) std::fill(src.U(y), src.U(y) + 4, static_cast<uint8_t>(y));
  ASSERT_TRUE(orv::tavo::ResizeYUV420(src.data.data(), dst.data.data(), 8, 8, {8, 480}, {8, 480}, 0,
                                      0, 0, kTop, false, SimdLevel::kPlain));
  for (int i = 0; i < 239; ++i) {
    EXPECT_EQ(dst.Y(2 * i)[0], static_cast<uint8_t>(2 * i));
    const int here = (2 * i) & 255, next = (2 * i + 2) & 255;
    EXPECT_EQ(dst.Y(2 * i + 1)[0], (here + next) >> 1);
  }
  EXPECT_EQ(dst.Y(478)[0], static_cast<uint8_t>(478));
  EXPECT_EQ(dst.Y(479)[0], static_cast<uint8_t>(478));
  // Chroma: the top field of the chroma plane is its even lines, 120 of them.
  for (int i = 0; i < 119; ++i) EXPECT_EQ(dst.U(2 * i)[1], static_cast<uint8_t>(2 * i));
  EXPECT_EQ(dst.U(238)[1], 238);
  EXPECT_EQ(dst.U(239)[1], 238);
}

TEST(TavoFields, PackedFieldsAndHalvedVerticalMargin) {
  // FIELD_TOP, sameField true: 8 lines -> 4 field lines into the even lines of
  // an 8-line destination with a margin of 4 lines, halved to 2 in the field:
  // field lines 1 and 2 of the destination are written, i.e. lines 2 and 4.
  const int w = 4;
  Bytes src, dst(static_cast<size_t>(w) * 2 * 8, 0xEE);
  for (int y = 0; y < 8; ++y) {
    const Bytes line = PackedLine(Bytes(w, static_cast<uint8_t>(10 * y)), Bytes(w / 2, 128));
    src.insert(src.end(), line.begin(), line.end());
  }
  ASSERT_TRUE(orv::tavo::ResizeYUY2(src.data(), dst.data(), w * 2, w * 2, {w, 8}, {w, 8}, 0, 0, 4,
                                    kTop, true, SimdLevel::kPlain));
  // Source field lines 0, 2, 4, 6 (values 0, 20, 40, 60) halved to 2 lines: 10, 50.
  const int expected[8] = {0xEE, 0xEE, 10, 0xEE, 50, 0xEE, 0xEE, 0xEE};
  for (int y = 0; y < 8; ++y) EXPECT_EQ(dst[static_cast<size_t>(y) * w * 2], expected[y]) << y;
}

TEST(TavoMargins, TrimCropsAndMarginIsLeftAlone) {
  // 720 -> 704 by a trim of 16: a crop of columns 8..711.
  Planar src(720, 4, 720, 0), dst(704, 4, 704, 0xEE);
  for (size_t i = 0; i < src.data.size(); ++i) src.data[i] = static_cast<uint8_t>(i * 31 + 7);
  ASSERT_TRUE(orv::tavo::ResizeYUV420(src.data.data(), dst.data.data(), 720, 704, {720, 4},
                                      {704, 4}, 16, 0, 0, kFrame, true, SimdLevel::kPlain));
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 704; ++x) ASSERT_EQ(dst.Y(y)[x], src.Y(y)[x + 8]);
  }
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 352; ++x) {
      ASSERT_EQ(dst.U(y)[x], src.U(y)[x + 4]);
      ASSERT_EQ(dst.V(y)[x], src.V(y)[x + 4]);
    }
  }
  // 352 -> 720 with a margin of 16: 704 columns doubled, 8 on each side untouched.
  Planar small(352, 2, 352, 50), wide(720, 2, 720, 0xEE);
  ASSERT_TRUE(orv::tavo::ResizeYUV420(small.data.data(), wide.data.data(), 352, 720, {352, 2},
                                      {720, 2}, 0, 16, 0, kFrame, true, SimdLevel::kPlain));
  for (int x = 0; x < 720; ++x) EXPECT_EQ(wide.Y(1)[x], (x < 8 || x >= 712) ? 0xEE : 50) << x;
  for (int x = 0; x < 360; ++x) EXPECT_EQ(wide.U(0)[x], (x < 4 || x >= 356) ? 0xEE : 50) << x;
  // Packed: margins of 8 columns and 2 lines, one pixel pair and one line a side.
  Bytes src2(4 * 2 * 2, 90), dst2(12 * 2 * 4, 0xEE);
  ASSERT_TRUE(orv::tavo::ResizeYUY2(src2.data(), dst2.data(), 8, 24, {4, 2}, {12, 4}, 0, 4, 2,
                                    kFrame, true, SimdLevel::kPlain));
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 24; ++x) {
      const bool inside = y >= 1 && y <= 2 && x >= 4 && x < 20;
      EXPECT_EQ(dst2[static_cast<size_t>(y) * 24 + x], inside ? 90 : 0xEE) << y << "," << x;
    }
  }
}

TEST(TavoRefusals, NothingIsWritten) {
  Bytes src(64 * 64 * 2, 100), dst(64 * 64 * 2, 0xEE);
  const Bytes before = dst;
  auto both = [&](const uint8_t* s, uint8_t* d, int ss, int ds, OrvImage::IppiSize a,
                  OrvImage::IppiSize b, int trim, int mx, int my, OrvImage::FIELD_TYPE f) {
    EXPECT_FALSE(
        orv::tavo::ResizeYUV420(s, d, ss, ds, a, b, trim, mx, my, f, true, SimdLevel::kPlain));
    EXPECT_FALSE(
        orv::tavo::ResizeYUY2(s, d, ss, ds, a, b, trim, mx, my, f, true, SimdLevel::kPlain));
  };
  both(nullptr, dst.data(), 64, 64, {16, 16}, {8, 8}, 0, 0, 0, kFrame);
  both(src.data(), nullptr, 64, 64, {16, 16}, {8, 8}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {0, 16}, {8, 8}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 0}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {65536, 1}, {8, 8}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 65536}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), -64, 64, {16, 16}, {8, 8}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 0, {16, 16}, {8, 8}, 0, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 4, {16, 16}, {8, 8}, 0, 0, 0, kFrame);  // step < line
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 8}, 16, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 8}, -4, 0, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 8}, 0, 8, 0, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 8}, 0, 0, 8, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 8}, 0, 0, -2, kFrame);
  both(src.data(), dst.data(), 64, 64, {16, 16}, {8, 8}, 0, 0, 0,
       static_cast<OrvImage::FIELD_TYPE>(3));
  both(src.data(), dst.data(), 64, 64, {16, 1}, {8, 8}, 0, 0, 0, kTop);  // no field to take
  both(src.data(), dst.data(), 0x10000, 0x10000, {16, 0x8000}, {8, 8}, 0, 0, 0, kFrame);
  EXPECT_EQ(dst, before);
}

TEST(TavoInPlace, AFieldStretchedOntoItsOwnPicture) {
  for (OrvImage::FIELD_TYPE f : {kTop, kBottom}) {
    Planar pic(24, 12, 24, 0);
    for (size_t i = 0; i < pic.data.size(); ++i) pic.data[i] = static_cast<uint8_t>(i * 29 + 5);
    Planar apart(24, 12, 24, 0);
    ASSERT_TRUE(orv::tavo::ResizeYUV420(pic.data.data(), apart.data.data(), 24, 24, {24, 12},
                                        {24, 12}, 0, 0, 0, f, false, SimdLevel::kPlain));
    ASSERT_TRUE(orv::tavo::ResizeYUV420(pic.data.data(), pic.data.data(), 24, 24, {24, 12},
                                        {24, 12}, 0, 0, 0, f, false, SimdLevel::kPlain));
    EXPECT_EQ(pic.data, apart.data);
  }
}

}  // namespace
