// Blend and alpha composition: weights, field lines, the same-pointer copy,
// the chroma block of the planar blend, the float blend, RGB composition in
// both directions, and the per-pixel YUY2A composition with its forms.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "foundation/cpu_info.h"
#include "image/alpha_comp_rows.h"
#include "image/image_test_access.h"

namespace {

using Field = OrvImage::FIELD_TYPE;
constexpr Field kFrame = OrvImage::FIELD_FRAME;
constexpr Field kTop = OrvImage::FIELD_TOP;
constexpr Field kBottom = OrvImage::FIELD_BOTTOM;

// The additive mix of the primitives: min(255, (a x A + b x B + 127) / 255).
uint8_t Mix(int a, int b, int va, int vb) {
  const int v = (a * va + b * vb + 127) / 255;
  return static_cast<uint8_t>(v > 255 ? 255 : v);
}

std::vector<uint8_t> Random(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

typedef unsigned long (*TwoSource)(unsigned char*, unsigned char*, unsigned char*, unsigned long*,
                                   unsigned long, unsigned long, int, Field, float);

struct Family {
  const char* name;
  int bytes;  // a pixel's bytes on a line
  TwoSource blend;
};

const Family kPacked[] = {
    {"YUY2", 2, OrvImage::BlendYUY2},
    {"RGB24", 3, OrvImage::BlendRGB24},
    {"RGB32", 4, OrvImage::BlendRGB32},
};

TEST(Blend, WeightsOfRatios) {
  // ratio -> (a, b): 1.0 -> (255, 0), 0.0 -> (0, 255), 0.5 -> (128, 128),
  // 0.25 -> (64, 192); out of range is limited, never an error.
  const struct {
    float ratio;
    int a, b;
  } cases[] = {{1.0f, 255, 0},  {0.0f, 0, 255}, {0.5f, 128, 128}, {0.25f, 64, 192},
               {-0.5f, 0, 255}, {2.0f, 255, 0}, {0.999f, 255, 0}, {0.3f, 76, 179}};
  const auto srcA = Random(4 * 8 * 3, 1);
  const auto srcB = Random(4 * 8 * 3, 2);
  for (const auto& c : cases) {
    for (const Family& f : kPacked) {
      std::vector<uint8_t> a = srcA, b = srcB, d(srcA.size(), 0);
      const int step = 4 * 8;
      ASSERT_EQ(f.blend(a.data(), b.data(), d.data(), nullptr, 8, 3, step, kFrame, c.ratio), 0u);
      for (int y = 0; y < 3; ++y) {
        for (int i = 0; i < f.bytes * 8; ++i) {
          const size_t k = y * step + i;
          ASSERT_EQ(d[k], Mix(c.a, c.b, a[k], b[k])) << f.name << " ratio " << c.ratio << " " << k;
        }
        for (int i = f.bytes * 8; i < step; ++i) EXPECT_EQ(d[y * step + i], 0) << "padding";
      }
    }
  }
}

TEST(Blend, HalfAndHalfCanSaturate) {
  std::vector<uint8_t> a(8, 255), b(8, 255), d(8, 0);
  ASSERT_EQ(OrvImage::BlendRGB32(a.data(), b.data(), d.data(), nullptr, 2, 1, 8, kFrame, 0.5f), 0u);
  EXPECT_EQ(d, std::vector<uint8_t>(8, 255));  // 128 x 510 / 255 is above 255
  a.assign(8, 200);
  b.assign(8, 200);
  ASSERT_EQ(OrvImage::BlendRGB32(a.data(), b.data(), d.data(), nullptr, 2, 1, 8, kFrame, 0.5f), 0u);
  EXPECT_EQ(d, std::vector<uint8_t>(8, 201));
}

TEST(Blend, SameSourceCopiesWithoutWeight) {
  const auto a = Random(12 * 4, 3);
  std::vector<uint8_t> src = a, d(a.size(), 0);
  ASSERT_EQ(OrvImage::BlendRGB24(src.data(), src.data(), d.data(), nullptr, 4, 4, 12, kFrame, 0.3f),
            0u);
  EXPECT_EQ(d, a);
}

TEST(Blend, FieldLinesFollowTheStepSign) {
  // FIELD_TOP with a positive step writes the even memory lines, with a
  // negative step the odd ones; FIELD_BOTTOM the others. The rest stays.
  const int width = 5, height = 6;
  for (const Family& f : kPacked) {
    const int line = f.bytes * width + 3;
    const auto a = Random(line * height, 4);
    const auto b = Random(line * height, 5);
    for (int sign : {1, -1}) {
      for (Field field : {kTop, kBottom}) {
        std::vector<uint8_t> pa = a, pb = b, d(a.size(), 0xEE);
        ASSERT_EQ(f.blend(pa.data(), pb.data(), d.data(), nullptr, width, height, sign * line,
                          field, 1.0f),
                  0u);
        const int firstWritten = (field == kTop) == (sign > 0) ? 0 : 1;
        for (int y = 0; y < height; ++y) {
          for (int i = 0; i < line; ++i) {
            const size_t k = y * line + i;
            const bool written = y % 2 == firstWritten && i < f.bytes * width;
            ASSERT_EQ(d[k], written ? a[k] : 0xEE)
                << f.name << " sign " << sign << " field " << field << " line " << y;
          }
        }
      }
    }
  }
}

TEST(Blend, PlanarChromaFollowsTheField) {
  // YUV420 8 x 4, step 8: Y 32 bytes, then both chroma planes as four lines
  // of 4 bytes (Cb lines 0, 1, Cr lines 0, 1). FIELD_BOTTOM with a positive
  // step mixes Y lines 1, 3 and chroma lines 1 and 3 of the block: the second
  // line of each plane.
  const int w = 8, h = 4, step = 8;
  const size_t bytes = step * h + step / 2 * h;
  const auto a = Random(bytes, 6);
  const auto b = Random(bytes, 7);
  for (Field field : {kFrame, kTop, kBottom}) {
    std::vector<uint8_t> pa = a, pb = b, d(bytes, 0xEE);
    ASSERT_EQ(
        OrvImage::BlendYUV420(pa.data(), pb.data(), d.data(), nullptr, w, h, step, field, 0.0f),
        0u);
    for (int y = 0; y < h; ++y) {
      const bool written = field == kFrame || y % 2 == (field == kBottom ? 1 : 0);
      for (int x = 0; x < w; ++x) {
        ASSERT_EQ(d[y * step + x], written ? b[y * step + x] : 0xEE) << field << " Y " << y;
      }
    }
    for (int c = 0; c < h; ++c) {  // chroma block lines
      const bool written = field == kFrame || c % 2 == (field == kBottom ? 1 : 0);
      for (int x = 0; x < w / 2; ++x) {
        const size_t k = step * h + c * (step / 2) + x;
        ASSERT_EQ(d[k], written ? b[k] : 0xEE) << field << " chroma line " << c;
      }
    }
  }
}

TEST(Blend, PlanarNegativeStepTopFieldStartsAtSecondChromaLine) {
  const int w = 4, h = 4, step = 4;
  const size_t bytes = step * h + step / 2 * h;
  const auto a = Random(bytes, 8);
  std::vector<uint8_t> pa = a, pb(bytes, 0), d(bytes, 0xEE);
  ASSERT_EQ(OrvImage::BlendYUV420(pa.data(), pb.data(), d.data(), nullptr, w, h, -step, kTop, 1.0f),
            0u);
  for (int c = 0; c < h; ++c) {
    const size_t k = step * h + c * 2;
    EXPECT_EQ(d[k], c % 2 ? a[k] : 0xEE) << c;
    EXPECT_EQ(d[k + 1], c % 2 ? a[k + 1] : 0xEE) << c;
  }
}

TEST(Blend, InPlaceMixesIntoTheSecondPicture) {
  const auto s = Random(16 * 3, 9);
  const auto d0 = Random(16 * 3, 10);
  std::vector<uint8_t> src = s, dst = d0;
  ASSERT_EQ(OrvImage::BlendYUY2(src.data(), dst.data(), 8, 3, 16, 0.25f), 0u);
  for (size_t k = 0; k < dst.size(); ++k) ASSERT_EQ(dst[k], Mix(64, 192, s[k], d0[k])) << k;
  // Even the same picture is mixed with itself, not copied.
  std::vector<uint8_t> same(12, 200);
  ASSERT_EQ(OrvImage::BlendRGB24(same.data(), same.data(), 4, 1, 12, 0.5f), 0u);
  EXPECT_EQ(same, std::vector<uint8_t>(12, 201));
  std::vector<uint8_t> planar = Random(4 * 2 + 2 * 2, 11), under = Random(12, 12);
  const auto p0 = planar, u0 = under;
  ASSERT_EQ(OrvImage::BlendYUV420(planar.data(), under.data(), 4, 2, 4, 1.0f), 0u);
  EXPECT_EQ(under, p0);
  EXPECT_EQ(OrvImage::BlendRGB32(nullptr, under.data(), 1, 1, 4, 0.5f), 3u);
  EXPECT_EQ(OrvImage::BlendRGB32(under.data(), nullptr, 1, 1, 4, 0.5f), 3u);
}

TEST(Blend, BadInputAnswersThreeWithNothingWritten) {
  std::vector<uint8_t> a(64, 1), b(64, 2), d(64, 0xEE);
  const auto before = d;
  for (const Family& f : kPacked) {
    EXPECT_EQ(f.blend(nullptr, b.data(), d.data(), nullptr, 4, 4, 16, kFrame, 0.5f), 3u);
    EXPECT_EQ(f.blend(a.data(), nullptr, d.data(), nullptr, 4, 4, 16, kFrame, 0.5f), 3u);
    EXPECT_EQ(f.blend(a.data(), b.data(), nullptr, nullptr, 4, 4, 16, kFrame, 0.5f), 3u);
    EXPECT_EQ(f.blend(a.data(), b.data(), d.data(), nullptr, 4, 4, 16, static_cast<Field>(3), 0.5f),
              3u);
    EXPECT_EQ(f.blend(a.data(), b.data(), d.data(), nullptr, 70000, 4, 16, kFrame, 0.5f), 3u);
    EXPECT_EQ(f.blend(a.data(), b.data(), d.data(), nullptr, 4, 4, f.bytes * 4 - 1, kFrame, 0.5f),
              3u);
    EXPECT_EQ(f.blend(a.data(), b.data(), d.data(), nullptr, 4, 4, INT32_MIN, kFrame, 0.5f), 3u);
  }
  EXPECT_EQ(OrvImage::BlendYUV420(a.data(), b.data(), d.data(), nullptr, 4, 4, 3, kTop, 0.5f), 3u);
  EXPECT_EQ(d, before);
}

TEST(Blend, FloatFormMixesPlanesAndRoundsToNearest) {
  // 4 x 2 YUY2, aligned line 8: dst = dst x 0.75 + src x 0.25.
  std::vector<uint8_t> src(16), dst(16);
  for (int i = 0; i < 16; ++i) {
    src[i] = static_cast<uint8_t>(200 - i);
    dst[i] = static_cast<uint8_t>(100 + 3 * i);
  }
  const auto d0 = dst;
  ASSERT_TRUE(OrvImageTestAccess::BlendYUY2Float(src.data(), dst.data(), {4, 2}, 0.25f));
  for (int i = 0; i < 16; ++i) {
    const double want = d0[i] * 0.75 + src[i] * 0.25;
    EXPECT_NEAR(dst[i], want, 0.5) << i;
  }
  EXPECT_EQ(dst[0], 125);  // 100 x 0.75 + 200 x 0.25
  EXPECT_FALSE(OrvImageTestAccess::BlendYUY2Float(nullptr, dst.data(), {4, 2}, 0.25f));
  EXPECT_FALSE(OrvImageTestAccess::BlendYUY2Float(src.data(), dst.data(), {0, 2}, 0.25f));
}

// ---- RGB composition --------------------------------------------------------

TEST(AlphaCompRgb, OpaqueAndClearPixels) {
  // Pixel 0 opaque, pixel 1 transparent over a 24-bit picture.
  uint8_t over[8] = {10, 20, 30, 255, 40, 50, 60, 0};
  uint8_t under[8] = {1, 2, 3, 4, 5, 6, 0xEE, 0xEE};  // aligned 24-bit line of 2 pixels
  uint8_t dst[8];
  std::memset(dst, 0xCC, sizeof dst);
  ASSERT_EQ(OrvImage::AlphaCompRGB24(over, under, dst, 2, 1), 0u);
  const uint8_t want[8] = {10, 20, 30, 4, 5, 6, 0xCC, 0xCC};
  EXPECT_EQ(0, std::memcmp(dst, want, 8));

  uint8_t a32[8] = {10, 20, 30, 255, 40, 50, 60, 0};
  uint8_t b32[8] = {1, 2, 3, 255, 4, 5, 6, 255};
  uint8_t d32[8];
  ASSERT_EQ(OrvImage::AlphaCompRGB32(a32, b32, d32, 2, 1), 0u);
  const uint8_t want32[8] = {10, 20, 30, 255, 4, 5, 6, 255};
  EXPECT_EQ(0, std::memcmp(d32, want32, 8));
  EXPECT_EQ(OrvImage::AlphaCompRGB32(nullptr, b32, d32, 2, 1), 3u);
  EXPECT_EQ(OrvImage::AlphaCompRGB24(over, nullptr, dst, 2, 1), 3u);
}

// A B G R A picture of w x h in display order, stored with the given step
// sign; `Display` reads it back in display order.
std::vector<uint8_t> Store(const std::vector<uint8_t>& display, int w, int h, int sign) {
  std::vector<uint8_t> s(display.size());
  for (int y = 0; y < h; ++y) {
    std::memcpy(&s[(sign > 0 ? y : h - 1 - y) * 4 * w], &display[y * 4 * w], 4 * w);
  }
  return s;
}

TEST(AlphaCompRgb, SteppedFormReconcilesDirections) {
  const int w = 5, h = 4;
  auto a = Random(4 * w * h, 13);
  auto b = Random(4 * w * h, 14);
  a[3] = 255;  // one opaque and one clear pixel among the random ones
  a[7] = 0;
  std::vector<uint8_t> want(a.size());
  {
    auto ta = a, tb = b;
    ASSERT_EQ(OrvImage::AlphaCompRGB32(ta.data(), tb.data(), want.data(), w, h), 0u);
  }
  const int signs[][3] = {{1, 1, 1},  {-1, -1, -1}, {1, -1, -1}, {-1, 1, -1},
                          {1, -1, 1}, {-1, 1, 1},   {1, 1, -1},  {-1, -1, 1}};
  for (const auto& s : signs) {
    auto sa = Store(a, w, h, s[0]);
    auto sb = Store(b, w, h, s[1]);
    std::vector<uint8_t> d(a.size(), 0);
    ASSERT_EQ(OrvImage::AlphaCompRGB32(sa.data(), s[0] * 4 * w, sb.data(), s[1] * 4 * w, d.data(),
                                       s[2] * 4 * w, w, h),
              0u);
    EXPECT_EQ(Store(d, w, h, s[2]), want) << s[0] << " " << s[1] << " " << s[2];
  }
  // Steps of 0 are all bottom-up.
  auto sa = Store(a, w, h, -1), sb = Store(b, w, h, -1);
  std::vector<uint8_t> d(a.size(), 0);
  ASSERT_EQ(OrvImage::AlphaCompRGB32(sa.data(), 0, sb.data(), 0, d.data(), 0, w, h), 0u);
  EXPECT_EQ(Store(d, w, h, -1), want);
  // B as the destination needs B's step.
  EXPECT_EQ(OrvImage::AlphaCompRGB32(sa.data(), 20, sb.data(), 20, sb.data(), -20, w, h), 3u);
  EXPECT_EQ(OrvImage::AlphaCompRGB32(sa.data(), 20, sb.data(), 19, d.data(), 20, w, h), 3u);
}

// ---- YUY2A composition ------------------------------------------------------

// One-line YUY2A pictures of two pixels.
struct Yuy2a {
  uint8_t bytes[6];  // Y0 Cb Y1 Cr, alpha0, alpha1
};

Yuy2a Compose(Yuy2a a, Yuy2a b) {
  Yuy2a d;
  std::memset(&d, 0xEE, sizeof d);
  EXPECT_EQ(OrvImage::AlphaCompYUY2A(a.bytes, b.bytes, d.bytes, 2, 1, 0, 0), 0u);
  return d;
}

TEST(AlphaCompYuy2a, HalfOverHalf) {
  // b = 127 x 128 / 255 = 63; alpha 191; Y (100 x 63 + 200 x 128) / 255 = 125;
  // Cb ((200 - 128) x 128 + (50 - 128) x 63) / 255 + 128 = 16 + 128;
  // Cr ((50 - 128) x 128 + (200 - 128) x 63) / 255 = -21 (toward zero) + 128.
  const Yuy2a d = Compose({{200, 200, 200, 50, 128, 128}}, {{100, 50, 100, 200, 128, 128}});
  EXPECT_EQ(d.bytes[0], 125);
  EXPECT_EQ(d.bytes[1], 144);
  EXPECT_EQ(d.bytes[2], 125);
  EXPECT_EQ(d.bytes[3], 107);
  EXPECT_EQ(d.bytes[4], 191);
  EXPECT_EQ(d.bytes[5], 191);
}

TEST(AlphaCompYuy2a, OpaqueClearAndEmpty) {
  // A opaque: A's samples, alpha 255, whatever B is.
  Yuy2a d = Compose({{10, 20, 30, 40, 255, 255}}, {{90, 91, 92, 93, 77, 0}});
  EXPECT_EQ(0, std::memcmp(d.bytes, "\x0a\x14\x1e\x28\xff\xff", 6));
  // A clear over opaque B: B's samples.
  d = Compose({{10, 20, 30, 40, 0, 0}}, {{90, 91, 92, 93, 255, 255}});
  EXPECT_EQ(0, std::memcmp(d.bytes, "\x5a\x5b\x5c\x5d\xff\xff", 6));
  // Nothing anywhere: Y 0, neutral chroma 128, alpha 0.
  d = Compose({{10, 20, 30, 40, 0, 0}}, {{90, 91, 92, 93, 0, 0}});
  EXPECT_EQ(0, std::memcmp(d.bytes, "\x00\x80\x00\x80\x00\x00", 6));
  // A clear over half-clear B: b = c, Y (Yb x c) / 255, chroma by the first pixel.
  d = Compose({{10, 20, 30, 40, 0, 0}}, {{200, 228, 100, 28, 51, 255}});
  EXPECT_EQ(d.bytes[0], 40);   // 200 x 51 / 255
  EXPECT_EQ(d.bytes[1], 148);  // 100 x 51 / 255 = 20, + 128
  EXPECT_EQ(d.bytes[2], 100);  // B's own: a 0, b 255
  EXPECT_EQ(d.bytes[3], 108);  // -100 x 51 / 255 = -20, + 128
  EXPECT_EQ(d.bytes[4], 51);
  EXPECT_EQ(d.bytes[5], 255);
}

TEST(AlphaCompYuy2a, MixedValuesAreLimited) {
  // White over white at half: 255 becomes 254. Black over black: 0 becomes 1.
  Yuy2a d = Compose({{255, 255, 255, 0, 128, 128}}, {{255, 255, 255, 0, 255, 255}});
  EXPECT_EQ(d.bytes[0], 254);
  EXPECT_EQ(d.bytes[1], 254);  // (127 x 128 + 127 x 127) / 255 + 128 = 255, limited
  EXPECT_EQ(d.bytes[3], 1);    // (-128 x 255) / 255 + 128 = 0, limited to 1
  d = Compose({{0, 128, 0, 128, 128, 128}}, {{0, 128, 0, 128, 255, 255}});
  EXPECT_EQ(d.bytes[0], 1);
  EXPECT_EQ(d.bytes[1], 128);
}

TEST(AlphaCompYuy2a, LinesAndTheirRange) {
  // 2 x 4 pictures: YUY2 16 bytes then alpha 8 bytes. Lines 1..2 only.
  const int w = 2, h = 4;
  std::vector<uint8_t> a(3 * w * h, 200), b(3 * w * h, 100), d(3 * w * h, 0xEE);
  for (int i = 0; i < w * h; ++i) a[2 * w * h + i] = 255;  // A opaque
  ASSERT_EQ(OrvImage::AlphaCompYUY2A(a.data(), b.data(), d.data(), w, h, 1, 2), 0u);
  for (int y = 0; y < h; ++y) {
    const bool run = y == 1 || y == 2;
    for (int i = 0; i < 2 * w; ++i) EXPECT_EQ(d[y * 2 * w + i], run ? 200 : 0xEE) << y;
    for (int i = 0; i < w; ++i) EXPECT_EQ(d[2 * w * h + y * w + i], run ? 255 : 0xEE) << y;
  }
  // lineCount 0 runs from firstLine on, and stops at the picture's last line.
  std::fill(d.begin(), d.end(), 0xEE);
  ASSERT_EQ(OrvImage::AlphaCompYUY2A(a.data(), b.data(), d.data(), w, h, 3, 0), 0u);
  EXPECT_EQ(d[2 * 2 * w], 0xEE);
  EXPECT_EQ(d[3 * 2 * w], 200);
  EXPECT_EQ(d[2 * w * h + 3 * w], 255);
  EXPECT_EQ(OrvImage::AlphaCompYUY2A(a.data(), b.data(), d.data(), w, h, 4, 1), 3u);
  EXPECT_EQ(OrvImage::AlphaCompYUY2A(nullptr, b.data(), d.data(), w, h, 0, 0), 3u);
  EXPECT_EQ(OrvImage::AlphaCompYUY2A(a.data(), b.data(), d.data(), 70000, h, 0, 0), 3u);
}

TEST(AlphaCompYuy2a, OddWidthStaysInsideTheLine) {
  // Width 3, one line, buffers of exactly 3 x 3 bytes: the lone third pixel
  // is composed by its own alpha with its Y and its one chroma byte.
  std::vector<uint8_t> a = {10, 20, 30, 40, 200, 60, /*alpha*/ 255, 255, 128};
  std::vector<uint8_t> b = {1, 2, 3, 4, 100, 50, /*alpha*/ 9, 9, 128};
  std::vector<uint8_t> d(9, 0xEE);
  ASSERT_EQ(OrvImage::AlphaCompYUY2A(a.data(), b.data(), d.data(), 3, 1, 0, 0), 0u);
  EXPECT_EQ(d[0], 10);
  EXPECT_EQ(d[3], 40);
  EXPECT_EQ(d[4], 125);  // (100 x 63 + 200 x 128) / 255
  EXPECT_EQ(d[5], 75);   // ((60 - 128) x 128 + (50 - 128) x 63) / 255 = -53, + 128
  EXPECT_EQ(d[8], 191);
}

TEST(AlphaCompYuy2aRows, EveryFormMatchesPlain) {
  using namespace orv::image;
  const orv::SimdLevel top = orv::DetectSimdLevel();
  const Yuy2aRowFn plain = Yuy2aRowFor(orv::SimdLevel::kPlain);
  std::mt19937 rng(99);
  const uint8_t special[] = {0, 1, 127, 128, 254, 255};
  int levelsRun = 0;
  for (orv::SimdLevel level : {orv::SimdLevel::kSse2, orv::SimdLevel::kAvx2}) {
    if (level > top) continue;
    ++levelsRun;
    const Yuy2aRowFn form = Yuy2aRowFor(level);
    for (int width : {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 64, 65, 1921}) {
      for (int round = 0; round < 4; ++round) {
        std::vector<uint8_t> ya(2 * width), yb(2 * width), aa(width), ab(width);
        for (auto* v : {&ya, &yb, &aa, &ab}) {
          for (auto& x : *v) x = rng() % 3 == 0 ? special[rng() % 6] : static_cast<uint8_t>(rng());
        }
        std::vector<uint8_t> yp(2 * width + 8, 0x5A), ap(width + 8, 0xA5);
        std::vector<uint8_t> yf = yp, af = ap;
        plain(ya.data(), aa.data(), yb.data(), ab.data(), yp.data(), ap.data(), width);
        form(ya.data(), aa.data(), yb.data(), ab.data(), yf.data(), af.data(), width);
        ASSERT_EQ(yp, yf) << "level " << int(level) << " width " << width;
        ASSERT_EQ(ap, af) << "level " << int(level) << " width " << width;
        // In place over A gives the same bytes.
        std::vector<uint8_t> yi = ya, ai = aa;
        form(yi.data(), ai.data(), yb.data(), ab.data(), yi.data(), ai.data(), width);
        ASSERT_EQ(0, std::memcmp(yi.data(), yp.data(), 2 * width));
        ASSERT_EQ(0, std::memcmp(ai.data(), ap.data(), width));
      }
    }
  }
  if (levelsRun == 0) GTEST_SKIP() << "no processor form in this build or on this processor";
}

TEST(AlphaCompYuy2aRows, EveryAlphaPairInEveryForm) {
  // One pixel for each pair of alphas (A's, B's), with samples at the
  // extremes and in between, so that every weight and every limit is met.
  using namespace orv::image;
  const int width = 256 * 256;
  std::vector<uint8_t> ya(2 * width), yb(2 * width), aa(width), ab(width);
  const uint8_t samples[] = {0, 1, 16, 127, 128, 129, 235, 254, 255};
  for (int i = 0; i < width; ++i) {
    aa[i] = static_cast<uint8_t>(i >> 8);
    ab[i] = static_cast<uint8_t>(i & 255);
    ya[2 * i] = samples[i % 9];
    ya[2 * i + 1] = samples[(i / 9) % 9];
    yb[2 * i] = samples[(i / 81) % 9];
    yb[2 * i + 1] = samples[(i / 3) % 9];
  }
  std::vector<uint8_t> yp(2 * width), ap(width);
  Yuy2aRowFor(orv::SimdLevel::kPlain)(ya.data(), aa.data(), yb.data(), ab.data(), yp.data(),
                                      ap.data(), width);
  for (int i = 0; i < width; ++i) {  // alpha is a + b, b the share of B that shows
    const int a = aa[i], c = ab[i];
    ASSERT_EQ(ap[i], a + (a == 0 ? c : (255 - a) * c / 255)) << a << " " << c;
  }
  // Then every processor form of this build and processor gives those bytes.
  for (orv::SimdLevel level : {orv::SimdLevel::kSse2, orv::SimdLevel::kAvx2}) {
    if (level > orv::DetectSimdLevel()) continue;
    std::vector<uint8_t> yf(2 * width), af(width);
    Yuy2aRowFor(level)(ya.data(), aa.data(), yb.data(), ab.data(), yf.data(), af.data(), width);
    ASSERT_EQ(yp, yf) << "level " << int(level);
    ASSERT_EQ(ap, af) << "level " << int(level);
  }
}

}  // namespace
