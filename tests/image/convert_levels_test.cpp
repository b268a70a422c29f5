// Level rules between the level families, alpha and filler bytes, and the
// byte orders of the outputs.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <vector>

#include "image/convert_members.h"
#include "image/convert_test_support.h"

namespace orv_test {
namespace {

// Converts one line of `values` (each value on B, G and R of its own pixel)
// with a 24- or 32-bit source and returns the destination bytes.
std::vector<uint8_t> ConvertLine(const Conversion& run, int srcBytes, int dstBytes,
                                 const std::vector<uint8_t>& values, uint8_t fourth = 77) {
  const int w = static_cast<int>(values.size());
  std::vector<uint8_t> src(srcBytes * w);
  for (int x = 0; x < w; ++x) {
    for (int c = 0; c < 3; ++c) src[srcBytes * x + c] = values[x];
    if (srcBytes == 4) src[4 * x + 3] = fourth;
  }
  std::vector<uint8_t> dst(dstBytes * w, 0xEE);
  unsigned long size = dst.size();
  EXPECT_EQ(0u, run(src.data(), dst.data(), &size, w, 1, srcBytes * w, dstBytes * w));
  return dst;
}

// Channel c of pixel x in a result line.
uint8_t At(const std::vector<uint8_t>& line, int bytes, int x, int c) {
  return line[bytes * x + c];
}

void ExpectGreys(const std::vector<uint8_t>& line, int bytes, const std::vector<int>& expected) {
  for (size_t x = 0; x < expected.size(); ++x) {
    for (int c = 0; c < 3; ++c) {
      EXPECT_EQ(expected[x], At(line, bytes, static_cast<int>(x), c)) << "pixel " << x;
    }
  }
}

TEST(ConvertLevels, FullToShiftedFloatRuleTruncates) {
  const auto line =
      ConvertLine(OrvImage::RGB24ToTavoShiftedStraightRGB24, 3, 3, {0, 1, 2, 128, 254, 255});
  ExpectGreys(line, 3, {0, 0, 1, 109, 218, 219});
}

TEST(ConvertLevels, ShiftedToFullFloatRuleRoundsAndSaturates) {
  const auto line =
      ConvertLine(OrvImage::TavoShiftedStraightRGB24ToRGB24, 3, 3, {0, 1, 100, 110, 219, 220, 255});
  ExpectGreys(line, 3, {0, 1, 116, 128, 255, 255, 255});
  const auto from32 =
      ConvertLine(OrvImage::TavoShiftedStraightRGB32ToRGB24, 4, 3, {0, 100, 219, 239});
  ExpectGreys(from32, 3, {0, 116, 255, 255});
}

TEST(ConvertLevels, FullToShiftedIntegerRuleKeepsOneAboveBlack) {
  const std::vector<uint8_t> in = {0, 1, 2, 128, 254, 255};
  const std::vector<int> out = {1, 1, 1, 110, 218, 219};
  ExpectGreys(ConvertLine(OrvImage::RGB24ToTavoShiftedStraightRGB32, 3, 4, in), 4, out);
  ExpectGreys(ConvertLine(OrvImage::RGB32ToTavoShiftedStraightRGB24, 4, 3, in), 3, out);
  ExpectGreys(ConvertLine(OrvImage::RGB32ToTavoShiftedStraightRGB32, 4, 4, in), 4, out);
}

TEST(ConvertLevels, ShiftedToFullIntegerRuleStaysWithinOneAndTwoFiftyFour) {
  const std::vector<uint8_t> in = {0, 1, 100, 218, 219, 220, 255};
  const std::vector<int> out = {1, 1, 116, 253, 254, 254, 254};
  ExpectGreys(ConvertLine(OrvImage::TavoShiftedStraightRGB24ToRGB32, 3, 4, in), 4, out);
  ExpectGreys(ConvertLine(OrvImage::TavoShiftedStraightRGB32ToRGB32, 4, 4, in), 4, out);
  ExpectGreys(ConvertLine(OrvImage::TavoShiftedStraightRGB24ToRGBA, 3, 4, in), 4, out);
  ExpectGreys(ConvertLine(OrvImage::TavoShiftedStraightRGB32ToRGBA, 4, 4, in), 4, out);
}

// A flat 4:2:0 picture of one Y value and neutral chroma.
std::vector<uint8_t> FlatYuv420(int w, int h, uint8_t y, uint8_t cb, uint8_t cr) {
  std::vector<uint8_t> p(w * h + 2 * (w / 2) * (h / 2));
  std::fill(p.begin(), p.begin() + w * h, y);
  std::fill(p.begin() + w * h, p.begin() + w * h + (w / 2) * (h / 2), cb);
  std::fill(p.begin() + w * h + (w / 2) * (h / 2), p.end(), cr);
  return p;
}

TEST(ConvertLevels, StudioLumaBecomesShiftedStraightRgb) {
  const int w = 8, h = 4;
  for (auto [y, expected] :
       std::vector<std::pair<int, int>>{{235, 219}, {16, 0}, {10, 0}, {255, 239}, {126, 110}}) {
    SCOPED_TRACE(y);
    auto src = FlatYuv420(w, h, y, 128, 128);
    std::vector<uint8_t> dst24(3 * w * h), dst32(4 * w * h);
    unsigned long size = dst24.size();
    ASSERT_EQ(0u, OrvImage::YUV420ToTavoShiftedStraightRGB24(src.data(), dst24.data(), &size, w, h,
                                                             w, 3 * w, true));
    size = dst32.size();
    ASSERT_EQ(0u, OrvImage::YUV420ToTavoShiftedStraightRGB32(src.data(), dst32.data(), &size, w, h,
                                                             w, 4 * w, false));
    for (int i = 0; i < w * h; ++i) {
      for (int c = 0; c < 3; ++c) {
        ASSERT_EQ(expected, dst24[3 * i + c]);
        ASSERT_EQ(expected, dst32[4 * i + c]);
      }
      ASSERT_EQ(0, dst32[4 * i + 3]);
    }
  }
}

TEST(ConvertLevels, StudioLumaBecomesFullRangeRgb) {
  const int w = 8, h = 4;
  for (auto [y, expected] : std::vector<std::pair<int, int>>{{16, 0}, {235, 255}, {126, 128}}) {
    SCOPED_TRACE(y);
    auto src = FlatYuv420(w, h, y, 128, 128);
    std::vector<uint8_t> dst(3 * w * h);
    unsigned long size = dst.size();
    ASSERT_EQ(0u, OrvImage::YUV420ToRGB24(src.data(), dst.data(), &size, w, h, w, 3 * w, true));
    for (uint8_t v : dst) ASSERT_NEAR(expected, v, 1);
  }
}

TEST(ConvertLevels, FullRangeRgbBecomesStudioYuy2) {
  const auto line = ConvertLine(OrvImage::RGB24ToCCIR601YUY2, 3, 2, {0, 0, 255, 255});
  EXPECT_NEAR(16, line[0], 1);
  EXPECT_NEAR(235, line[4], 1);
  for (int i : {1, 3, 5, 7}) EXPECT_NEAR(128, line[i], 1);
  // Shifted straight black and white are studio black and white.
  const auto shifted =
      ConvertLine(OrvImage::TavoShiftedStraightRGB24ToCCIR601YUY2, 3, 2, {0, 0, 219, 219});
  EXPECT_EQ(16, shifted[0]);
  EXPECT_EQ(16, shifted[2]);
  EXPECT_EQ(235, shifted[4]);
  EXPECT_EQ(235, shifted[6]);
  for (int i : {1, 3, 5, 7}) EXPECT_EQ(128, shifted[i]);
}

// What a member writes into the fourth byte of each 32-bit pixel.
struct FourthRule {
  const char* name;
  int value;  // -1: the source's own (fourth byte or alpha plane)
};

TEST(ConvertAlpha, FourthByteOfThirtyTwoBitOutput) {
  const std::vector<FourthRule> rules = {
      {"YUV420ToRGB32", 0},
      {"YUV420ToRGBA", 255},
      {"YV12ToRGBA", 255},
      {"YUV420ToTavoShiftedStraightRGB32", 0},
      {"YUV420ToVUYA", 0},
      {"CCIR601YUY2ToRGB32", 0},
      {"CCIR601YUY2ToRGBA", 255},
      {"CCIR601YUY2ToTavoShiftedStraightRGB32", 0},
      {"CCIR601YUY2ToVUYA", 0},
      {"YUY2AToRGBA", -1},
      {"RGB24ToRGB32", 0},
      {"TavoShiftedStraightRGB24ToTavoShiftedStraightRGB32", 0},
      {"RGB24ToRGBA", 255},
      {"RGB32ToRGBA", 255},
      {"RGBAToRGB32", 0},
      {"RGB24ToTavoShiftedStraightRGB32", 0},
      {"RGB32ToTavoShiftedStraightRGB32", -1},
      {"TavoShiftedStraightRGB24ToRGB32", 0},
      {"TavoShiftedStraightRGB32ToRGB32", -1},
      {"TavoShiftedStraightRGB24ToRGBA", 255},
      {"TavoShiftedStraightRGB32ToRGBA", 255},
  };
  const int w = 6, h = 4;
  const auto members = AllMembers();
  for (const FourthRule& rule : rules) {
    SCOPED_TRACE(rule.name);
    auto it = std::find_if(members.begin(), members.end(),
                           [&](const Member& m) { return m.name == rule.name; });
    ASSERT_NE(members.end(), it);
    const int srcStep = StepFor(it->src, w, 0);
    Picture src(PictureBytes(it->src, w, h, srcStep));
    src.Randomize(42);
    Picture dst(4 * w * h);
    unsigned long size = dst.size();
    ASSERT_EQ(0u, it->run(src.data(), dst.data(), &size, w, h, srcStep, 4 * w));
    for (int i = 0; i < w * h; ++i) {
      int expected = rule.value;
      if (expected < 0) {
        // A 32-bit source carries its fourth byte; CF_YUY2A its alpha plane.
        expected = it->src == OrvImage::CF_YUY2A ? src[srcStep * h + AlphaLine(w) * (i / w) + i % w]
                                                 : src[4 * i + 3];
      }
      ASSERT_EQ(expected, dst[4 * i + 3]) << "pixel " << i;
    }
  }
}

TEST(ConvertAlpha, AlphaPlaneOfYuy2AOutput) {
  const int w = 6, h = 4;
  for (const Member& m : AllMembers()) {
    if (m.dst != OrvImage::CF_YUY2A) continue;
    SCOPED_TRACE(m.name);
    const int srcStep = StepFor(m.src, w, 0);
    const int dstStep = 2 * w + 4;
    Picture src(PictureBytes(m.src, w, h, srcStep));
    src.Randomize(5);
    Picture dst(PictureBytes(OrvImage::CF_YUY2A, w, h, dstStep));
    unsigned long size = dst.size();
    // Opposite steps: an alpha that is carried turns with the picture.
    ASSERT_EQ(0u, m.run(src.data(), dst.data(), &size, w, h, srcStep, -dstStep));
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const uint8_t alpha = dst[dstStep * h + AlphaLine(w) * y + x];
        const int expected =
            m.src == OrvImage::CF_RGBA ? src[srcStep * (h - 1 - y) + 4 * x + 3] : 255;
        ASSERT_EQ(expected, alpha) << x << "," << y;
      }
    }
  }
}

TEST(ConvertAlpha, VuyaOrderAndTransparency) {
  // One pixel pair Y0 Cb Y1 Cr, two lines.
  std::vector<uint8_t> yuy2 = {50, 100, 60, 200, 70, 90, 80, 210};
  std::vector<uint8_t> vuya(16, 0xEE);
  unsigned long size = vuya.size();
  ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToVUYA(yuy2.data(), vuya.data(), &size, 2, 2, 4, 8));
  EXPECT_EQ(
      (std::vector<uint8_t>{200, 100, 50, 0, 200, 100, 60, 0, 210, 90, 70, 0, 210, 90, 80, 0}),
      vuya);
  // Flat chroma stays flat through the cubic doubling of the 4:2:0 route.
  const int w = 8, h = 8;
  auto src = FlatYuv420(w, h, 99, 90, 170);
  std::vector<uint8_t> out(4 * w * h);
  size = out.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToVUYA(src.data(), out.data(), &size, w, h, w, 4 * w, false));
  for (int i = 0; i < w * h; ++i) {
    ASSERT_EQ((std::vector<uint8_t>{170, 90, 99, 0}),
              std::vector<uint8_t>(out.begin() + 4 * i, out.begin() + 4 * i + 4));
  }
}

}  // namespace
}  // namespace orv_test
