// Round trips between formats come back within what their arithmetic allows;
// the level conversions between the two matrices follow their integer rule.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "image/convert_test_support.h"

namespace orv_test {
namespace {

// A B G R picture whose colour is constant over 2 x 2 blocks, so that chroma
// subsampling loses nothing but rounding. Colours stay inside the range that
// studio YCbCr can carry.
std::vector<uint8_t> BlockyBgr(int w, int h, int bytes, uint32_t seed) {
  std::mt19937 gen(seed);
  std::vector<uint8_t> p(bytes * w * h, 0);
  for (int by = 0; by < h; by += 2) {
    for (int bx = 0; bx < w; bx += 2) {
      uint8_t colour[3];
      for (uint8_t& c : colour) c = static_cast<uint8_t>(20 + gen() % 216);
      for (int y = by; y < by + 2 && y < h; ++y) {
        for (int x = bx; x < bx + 2 && x < w; ++x) {
          for (int c = 0; c < 3; ++c) p[bytes * (w * y + x) + c] = colour[c];
        }
      }
    }
  }
  return p;
}

int MaxColourDifference(const std::vector<uint8_t>& a, int aBytes, const std::vector<uint8_t>& b,
                        int bBytes, int pixels) {
  int worst = 0;
  for (int i = 0; i < pixels; ++i) {
    for (int c = 0; c < 3; ++c) {
      worst = std::max(worst, std::abs(a[aBytes * i + c] - b[bBytes * i + c]));
    }
  }
  return worst;
}

constexpr int kW = 16;
constexpr int kH = 8;

TEST(ConvertRoundTrip, RgbThroughYuy2) {
  auto rgb = BlockyBgr(kW, kH, 3, 1);
  std::vector<uint8_t> yuy2(2 * kW * kH), back(3 * kW * kH), back32(4 * kW * kH);
  unsigned long size = yuy2.size();
  ASSERT_EQ(0u,
            OrvImage::RGB24ToCCIR601YUY2(rgb.data(), yuy2.data(), &size, kW, kH, -3 * kW, 2 * kW));
  size = back.size();
  ASSERT_EQ(0u,
            OrvImage::CCIR601YUY2ToRGB24(yuy2.data(), back.data(), &size, kW, kH, 2 * kW, -3 * kW));
  EXPECT_LE(MaxColourDifference(rgb, 3, back, 3, kW * kH), 3);
  size = back32.size();
  ASSERT_EQ(
      0u, OrvImage::CCIR601YUY2ToRGB32(yuy2.data(), back32.data(), &size, kW, kH, 2 * kW, -4 * kW));
  EXPECT_LE(MaxColourDifference(rgb, 3, back32, 4, kW * kH), 3);
}

TEST(ConvertRoundTrip, RgbThroughYv12AndYuv420) {
  auto rgb = BlockyBgr(kW, kH, 4, 2);
  const size_t planar = kW * kH * 3 / 2;
  std::vector<uint8_t> yv12(planar), back(4 * kW * kH);
  unsigned long size = yv12.size();
  ASSERT_EQ(0u, OrvImage::RGB32ToYV12(rgb.data(), yv12.data(), &size, kW, kH, -4 * kW, kW, true));
  size = back.size();
  ASSERT_EQ(0u, OrvImage::YV12ToRGBA(yv12.data(), back.data(), &size, kW, kH, kW, -4 * kW, true));
  EXPECT_LE(MaxColourDifference(rgb, 4, back, 4, kW * kH), 3);
  // Through the colour kernels into CF_YUV420, and back with the primitives.
  std::vector<uint8_t> yuv(planar), back24(3 * kW * kH);
  size = yuv.size();
  ASSERT_EQ(0u, OrvImage::RGB32ToYUV420(rgb.data(), yuv.data(), &size, kW, kH, -4 * kW, kW, true,
                                        nullptr));
  size = back24.size();
  ASSERT_EQ(0u,
            OrvImage::YUV420ToRGB24(yuv.data(), back24.data(), &size, kW, kH, kW, -3 * kW, true));
  EXPECT_LE(MaxColourDifference(rgb, 4, back24, 3, kW * kH), 4);
}

TEST(ConvertRoundTrip, ShiftedStraightThroughYuy2AndYv12) {
  auto shifted = BlockyBgr(kW, kH, 3, 3);
  for (uint8_t& v : shifted) v = static_cast<uint8_t>(v * 219 / 255);
  std::vector<uint8_t> yuy2(2 * kW * kH), back(3 * kW * kH);
  unsigned long size = yuy2.size();
  ASSERT_EQ(0u, OrvImage::TavoShiftedStraightRGB24ToCCIR601YUY2(shifted.data(), yuy2.data(), &size,
                                                                kW, kH, -3 * kW, 2 * kW));
  size = back.size();
  ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToTavoShiftedStraightRGB24(yuy2.data(), back.data(), &size, kW,
                                                                kH, 2 * kW, -3 * kW));
  EXPECT_LE(MaxColourDifference(shifted, 3, back, 3, kW * kH), 2);
  std::vector<uint8_t> yv12(kW * kH * 3 / 2), yuy2a(3 * kW * kH), back32(4 * kW * kH);
  size = yv12.size();
  ASSERT_EQ(0u, OrvImage::TavoShiftedStraightRGB24ToYV12(shifted.data(), yv12.data(), &size, kW, kH,
                                                         -3 * kW, kW, true));
  size = yuy2a.size();
  ASSERT_EQ(0u, OrvImage::YV12ToYUY2A(yv12.data(), yuy2a.data(), &size, kW, kH, kW, 2 * kW, true));
  size = back32.size();
  ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToTavoShiftedStraightRGB32(yuy2a.data(), back32.data(), &size,
                                                                kW, kH, 2 * kW, -4 * kW));
  EXPECT_LE(MaxColourDifference(shifted, 3, back32, 4, kW * kH), 2);
}

TEST(ConvertRoundTrip, FullAndShiftedRgb) {
  std::vector<uint8_t> rgb(3 * 256);
  for (int v = 0; v < 256; ++v) rgb[3 * v] = rgb[3 * v + 1] = rgb[3 * v + 2] = v;
  std::vector<uint8_t> shifted(rgb.size()), back(rgb.size());
  unsigned long size = shifted.size();
  ASSERT_EQ(0u, OrvImage::RGB24ToTavoShiftedStraightRGB24(rgb.data(), shifted.data(), &size, 256, 1,
                                                          768, 768));
  size = back.size();
  ASSERT_EQ(0u, OrvImage::TavoShiftedStraightRGB24ToRGB24(shifted.data(), back.data(), &size, 256,
                                                          1, 768, 768));
  // Truncation onto 220 levels and back: within 255/219 plus rounding.
  EXPECT_LE(MaxColourDifference(rgb, 3, back, 3, 256), 2);
}

TEST(ConvertRoundTrip, LosslessRepackings) {
  Picture yuy2(2 * kW * kH);
  yuy2.Randomize(4);
  std::vector<uint8_t> yuy2a(2 * kW * kH + kW * kH), again(2 * kW * kH);
  unsigned long size = yuy2a.size();
  ASSERT_EQ(0u,
            OrvImage::CCIR601YUY2ToYUY2A(yuy2.data(), yuy2a.data(), &size, kW, kH, 2 * kW, 2 * kW));
  size = again.size();
  ASSERT_EQ(
      0u, OrvImage::YUY2AToCCIR601YUY2(yuy2a.data(), again.data(), &size, kW, kH, 2 * kW, 2 * kW));
  EXPECT_EQ(yuy2.Contents(), again);
  // The same picture in place, into wider lines.
  std::vector<uint8_t> inPlace(3 * kW * kH + kW * kH);
  std::copy(yuy2.data(), yuy2.data() + yuy2.size(), inPlace.begin());
  size = inPlace.size();
  ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToYUY2A(inPlace.data(), inPlace.data(), &size, kW, kH, 2 * kW,
                                             3 * kW));
  for (int y = 0; y < kH; ++y) {
    EXPECT_EQ(
        std::vector<uint8_t>(yuy2.data() + 2 * kW * y, yuy2.data() + 2 * kW * (y + 1)),
        std::vector<uint8_t>(inPlace.begin() + 3 * kW * y, inPlace.begin() + 3 * kW * y + 2 * kW));
  }
  // YUV420 to YV12 and back exchanges the chroma planes twice.
  Picture yuv(kW * kH * 3 / 2);
  yuv.Randomize(6);
  std::vector<uint8_t> yv12(yuv.size()), yuvAgain(yuv.size());
  size = yv12.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToYV12(yuv.data(), yv12.data(), &size, kW, kH, kW, kW));
  size = yuvAgain.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToYV12(yv12.data(), yuvAgain.data(), &size, kW, kH, kW, kW));
  EXPECT_EQ(yuv.Contents(), yuvAgain);
  EXPECT_EQ(std::vector<uint8_t>(yuv.data() + kW * kH, yuv.data() + kW * kH + kW * kH / 4),
            std::vector<uint8_t>(yv12.begin() + kW * kH + kW * kH / 4, yv12.end()));
  // RGB32 to RGBA and back keeps the colour.
  Picture rgb32(4 * kW * kH);
  rgb32.Randomize(8);
  std::vector<uint8_t> rgba(rgb32.size()), rgb24(3 * kW * kH);
  size = rgba.size();
  ASSERT_EQ(0u, OrvImage::RGB32ToRGBA(rgb32.data(), rgba.data(), &size, kW, kH, 4 * kW, 4 * kW));
  size = rgb24.size();
  ASSERT_EQ(0u, OrvImage::RGBAToRGB24(rgba.data(), rgb24.data(), &size, kW, kH, 4 * kW, 3 * kW));
  EXPECT_EQ(0, MaxColourDifference(rgb32.Contents(), 4, rgb24, 3, kW * kH));
}

// ---- Level conversions between BT.601 and BT.709 --------------------------------

TEST(LevelConversion, NeutralGreyKeepsLumaAndCr) {
  // Pairs: (Y0 16, grey), (Y0 100, grey).
  std::vector<uint8_t> p = {16, 128, 40, 128, 100, 128, 60, 128};
  OrvImage::CCIR601YUY2toBT709YUY2(p.data(), nullptr, nullptr, 4, 1, 8);
  EXPECT_EQ((std::vector<uint8_t>{16, 128, 40, 128, 100, 127, 60, 128}), p);
}

TEST(LevelConversion, ToBt709AndBackFollowTheIntegerRule) {
  // Y 100, Cb 178 (U +50), Cr 128.
  std::vector<uint8_t> p = {100, 178, 100, 128};
  OrvImage::CCIR601YUY2toBT709YUY2(p.data(), nullptr, nullptr, 2, 1, 4);
  // Y: (84 x 8192 - 50 x 950) >> 13 = 78; Cb: (50 x 8348 - 84 x 8) >> 13 = 50;
  // Cr: (50 x 606) >> 13 = 3.
  EXPECT_EQ((std::vector<uint8_t>{94, 178, 94, 131}), p);
  OrvImage::BT709YUY2toCCIR601YUY2(p.data(), nullptr, nullptr, 2, 1, 4);
  // Y: (78 x 8192 + 50 x 819 + 3 x 1573) >> 13 = 83; Cb: (50 x 8110 - 3 x 909) >> 13 = 49;
  // Cr: (3 x 8061 - 50 x 590) >> 13 = -1.
  EXPECT_EQ((std::vector<uint8_t>{99, 177, 99, 127}), p);
}

TEST(LevelConversion, ResultsStayWithinOneAndTwoFiftyFour) {
  // Y0 255 and Y1 0 with Cb = Cr = 0: Y0 goes to 296 and both chroma
  // results below 0.
  std::vector<uint8_t> p = {255, 0, 0, 0};
  OrvImage::CCIR601YUY2toBT709YUY2(p.data(), nullptr, nullptr, 2, 1, 4);
  EXPECT_EQ((std::vector<uint8_t>{254, 1, 41, 1}), p);
}

TEST(LevelConversion, Planar420BlocksShareTheirChroma) {
  const int w = 4, h = 2;
  std::vector<uint8_t> y = {100, 110, 120, 130, 140, 150, 160, 170};
  std::vector<uint8_t> cb = {178, 128}, cr = {128, 128};
  OrvImage::YUV420toBT709YUV420(y.data(), cb.data(), cr.data(), w, h, w);
  // Block 0 (U +50): each luma minus 50 x 950 >> 13 (about 5.8); block 1 grey.
  EXPECT_EQ((std::vector<uint8_t>{94, 104, 120, 130, 134, 144, 160, 170}), y);
  EXPECT_EQ(178, cb[0]);
  EXPECT_EQ(131, cr[0]);
  EXPECT_EQ(127, cb[1]);  // D = 120 - 16 > 0
  EXPECT_EQ(128, cr[1]);
  // Back again, into the other matrix and within a level or two.
  OrvImage::BT709YUV420toYUV420(y.data(), cb.data(), cr.data(), w, h, w);
  EXPECT_NEAR(100, y[0], 2);
  EXPECT_NEAR(178, cb[0], 2);
  EXPECT_NEAR(128, cr[0], 2);
}

TEST(LevelConversion, BadArgumentsTouchNothing) {
  std::vector<uint8_t> p = {100, 178, 100, 128};
  const auto before = p;
  OrvImage::CCIR601YUY2toBT709YUY2(p.data(), nullptr, nullptr, 2, 1, -4);
  OrvImage::CCIR601YUY2toBT709YUY2(p.data(), nullptr, nullptr, 2, 1, 3);
  OrvImage::CCIR601YUY2toBT709YUY2(nullptr, nullptr, nullptr, 2, 1, 4);
  OrvImage::YUV420toBT709YUV420(p.data(), nullptr, p.data(), 2, 2, 2);
  OrvImage::YUV420toBT709YUV420(p.data(), p.data(), p.data(), 70000, 2, 2);
  EXPECT_EQ(before, p);
}

}  // namespace
}  // namespace orv_test

namespace orv_test {
namespace {

// The 32-bit conversions work through a B G R picture a band of lines at a
// time; on pictures taller than a band they must give exactly the colour of
// the 24-bit conversion, in every direction and for both scan types.
TEST(ConvertBands, ThirtyTwoBitOutputMatchesTwentyFourBitOverManyBands) {
  const int w = 18;
  for (int h : {37, 64, 100}) {
    for (bool progressive : {true, false}) {
      for (int dstSign : {1, -1}) {
        SCOPED_TRACE(::testing::Message() << h << " " << progressive << " " << dstSign);
        const int step = w + 2;
        Picture yuv(PictureBytes(OrvImage::CF_YUV420, w, h, step));
        yuv.Randomize(h);
        // The same picture with its chroma planes exchanged, as CF_YV12.
        std::vector<uint8_t> yv12 = yuv.Contents();
        const size_t chroma = static_cast<size_t>(step / 2) * (h / 2);
        std::copy(yuv.data() + step * h, yuv.data() + step * h + chroma,
                  yv12.begin() + step * h + chroma);
        std::copy(yuv.data() + step * h + chroma, yuv.data() + step * h + 2 * chroma,
                  yv12.begin() + step * h);
        std::vector<uint8_t> rgb24(3 * w * h, 0), rgb32(4 * w * h), rgba(4 * w * h);
        unsigned long size = rgb24.size();
        ASSERT_EQ(0u, OrvImage::YUV420ToRGB24(yuv.data(), rgb24.data(), &size, w, h, step,
                                              dstSign * 3 * w, progressive));
        size = rgb32.size();
        ASSERT_EQ(0u, OrvImage::YUV420ToRGB32(yuv.data(), rgb32.data(), &size, w, h, step,
                                              dstSign * 4 * w, progressive));
        size = rgba.size();
        ASSERT_EQ(0u, OrvImage::YV12ToRGBA(yv12.data(), rgba.data(), &size, w, h, step,
                                           dstSign * 4 * w, progressive));
        for (int i = 0; i < w * h; ++i) {
          for (int c = 0; c < 3; ++c) {
            ASSERT_EQ(rgb24[3 * i + c], rgb32[4 * i + c]) << i;
            ASSERT_EQ(rgb24[3 * i + c], rgba[4 * i + c]) << i;
          }
          ASSERT_EQ(0, rgb32[4 * i + 3]);
          ASSERT_EQ(255, rgba[4 * i + 3]);
        }
      }
    }
  }
}

TEST(ConvertBands, Yuy2ToThirtyTwoBitMatchesTwentyFourBitOverManyBands) {
  const int w = 18, h = 77;
  Picture yuy2a(PictureBytes(OrvImage::CF_YUY2A, w, h, 2 * w));
  yuy2a.Randomize(5);
  for (int dstSign : {1, -1}) {
    SCOPED_TRACE(dstSign);
    std::vector<uint8_t> rgb24(3 * w * h), rgb32(4 * w * h), rgba(4 * w * h);
    unsigned long size = rgb24.size();
    ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToRGB24(yuy2a.data(), rgb24.data(), &size, w, h, 2 * w,
                                               dstSign * 3 * w));
    size = rgb32.size();
    ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToRGB32(yuy2a.data(), rgb32.data(), &size, w, h, 2 * w,
                                               dstSign * 4 * w));
    size = rgba.size();
    ASSERT_EQ(
        0u, OrvImage::YUY2AToRGBA(yuy2a.data(), rgba.data(), &size, w, h, 2 * w, dstSign * 4 * w));
    const uint8_t* alpha = yuy2a.data() + 2 * w * h;
    for (int y = 0; y < h; ++y) {
      const int from = dstSign > 0 ? y : h - 1 - y;
      for (int x = 0; x < w; ++x) {
        const int i = w * y + x;
        for (int c = 0; c < 3; ++c) {
          ASSERT_EQ(rgb24[3 * i + c], rgb32[4 * i + c]) << x << "," << y;
          ASSERT_EQ(rgb24[3 * i + c], rgba[4 * i + c]) << x << "," << y;
        }
        ASSERT_EQ(0, rgb32[4 * i + 3]);
        ASSERT_EQ(alpha[AlphaLine(w) * from + x], rgba[4 * i + 3]) << x << "," << y;
      }
    }
  }
}

}  // namespace
}  // namespace orv_test
