// Resizing through the image primitives: the plan, the field layout and the
// public resizes.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "image/image_test_access.h"

namespace {

using A = OrvImageTestAccess;
using Size = OrvImage::IppiSize;

struct FactorCase {
  Size src, dst;
  bool result;
  double x;  // 0: (w + 0.01) / W
  int trim, margin;
  bool padded;
};

TEST(ResizePlan, FactorsTrimsAndMarginsOfTheVideoRasters) {
  const FactorCase cases[] = {
      {{720, 480}, {720, 480}, false, 1.0, 0, 0, false},
      {{720, 480}, {704, 480}, true, 1.0, 16, 0, false},
      {{352, 480}, {720, 480}, true, 2.0, 0, 16, true},
      {{352, 240}, {1440, 1080}, true, 4.0, 0, 32, true},
      {{720, 576}, {352, 288}, true, 0.5, 16, 0, false},
      {{704, 576}, {720, 576}, true, 1.0, 0, 16, true},
      {{704, 480}, {1440, 1080}, true, 2.0, 0, 32, true},
      {{1440, 1080}, {352, 240}, true, 0.25, 32, 0, false},
      {{1440, 1080}, {704, 576}, true, 0.5, 32, 0, false},
      {{720, 480}, {640, 480}, true, 0.0, 0, 0, false},
      {{720, 480}, {704, 400}, true, 0.0, 0, 0, false},  // 400 is no raster height
  };
  for (const FactorCase& c : cases) {
    double x = -1, y = -1;
    int trim = -1, margin = -1;
    bool padded = true;
    EXPECT_EQ(A::GetResizeFactor(c.src, c.dst, &x, &y, &trim, &margin, &padded), c.result);
    const double wantX = c.result ? (c.x != 0.0 ? c.x : (c.dst.width + 0.01) / c.src.width) : 1.0;
    const double wantY = c.result ? (c.dst.height + 0.01) / c.src.height : 1.0;
    EXPECT_DOUBLE_EQ(x, wantX) << c.src.width << "->" << c.dst.width;
    EXPECT_DOUBLE_EQ(y, wantY);
    EXPECT_EQ(trim, c.trim);
    EXPECT_EQ(margin, c.margin);
    EXPECT_EQ(padded, c.padded);
  }
  // The optional pointers may be null.
  double x, y;
  EXPECT_TRUE(A::GetResizeFactor({720, 480}, {704, 480}, &x, &y, nullptr, nullptr, nullptr));
}

TEST(ResizePlan, Interpolation) {
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_NEAREST, 2, 2), 1);
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_LINEAR, 2, 2), 2);
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_CUBIC, 0.5, 0.5), 4);
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_AUTO, 1.0, 1.0), 8);
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_AUTO, 1.0, 1.5), 4);
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_TAVO, 0.5, 2.0), 4);
  EXPECT_EQ(A::GetInterpolation(OrvImage::INTERPOLATION_VRSCL_FRAME, 0.5, 0.9), 8);
}

TEST(ResizePlan, TempBuffersAllocateOnceAndRelease) {
  OrvImage::TEMP_PLANAR_FORMAT t = {};
  ASSERT_TRUE(A::AllocateTempBuffer(&t, {64, 32}, {33, 17}));
  ASSERT_NE(t.srcY, nullptr);
  EXPECT_GE(t.srcStepY, 64);
  EXPECT_GE(t.srcStepU, 32);
  EXPECT_GE(t.dstStepV, 16);
  uint8_t* y = t.srcY;
  EXPECT_TRUE(A::AllocateTempBuffer(&t, {640, 320}, {33, 17}));  // already there: kept
  EXPECT_EQ(t.srcY, y);
  A::ReleaseTempBuffer(&t);
  EXPECT_EQ(t.srcY, nullptr);
  EXPECT_EQ(t.dstStepV, 0);
  A::ReleaseTempBuffer(nullptr);
  EXPECT_TRUE(A::AllocateTempBuffer(nullptr, {1, 1}, {1, 1}));
}

// A field resized into its own lines with an odd field height: the last field
// line is a copy of the one above it in the field, and the other field's lines
// stay untouched.
TEST(ResizeFields, SameFieldOddHeightCopiesLastLine) {
  const int w = 8, srcH = 12, dstH = 14;  // 7 lines a destination field
  std::vector<uint8_t> src(w * srcH * 3 / 2);
  std::mt19937 rng(3);
  for (auto& b : src) b = static_cast<uint8_t>(rng());
  std::vector<uint8_t> dst(w * dstH * 3 / 2 + 16, 0xEE);
  ASSERT_TRUE(A::IppResizeYUV420(src.data(), dst.data(), w, w, {w, srcH}, {w, dstH},
                                 {0, 0, w, srcH}, 1.0, 1.0, OrvImage::INTERPOLATION_NEAREST,
                                 OrvImage::FIELD_TOP, true));
  for (int y = 1; y < dstH; y += 2) {
    for (int x = 0; x < w; ++x) ASSERT_EQ(dst[y * w + x], 0xEE) << "bottom-field line " << y;
  }
  for (int x = 0; x < w; ++x) EXPECT_EQ(dst[12 * w + x], dst[10 * w + x]);
  for (size_t i = w * dstH * 3 / 2; i < dst.size(); ++i) ASSERT_EQ(dst[i], 0xEE);
}

TEST(ResizeFields, FieldFillsWholeDestination) {
  // Field resize with factors 1.0: the field is doubled vertically.
  const int w = 4, h = 8;
  std::vector<uint8_t> src(w * h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) src[y * w + x] = static_cast<uint8_t>(y * 10);
  }
  std::vector<uint8_t> dst(w * h, 0xEE);
  ASSERT_TRUE(A::IppResizePlane(src.data(), dst.data(), w, w, {w, h}, {w, h}, {0, 0, w, h}, 1.0,
                                1.0, OrvImage::INTERPOLATION_NEAREST, OrvImage::FIELD_BOTTOM,
                                false));
  // Every destination line comes from an odd source line.
  for (int y = 0; y < h; ++y) EXPECT_EQ(dst[y * w] % 20, 10) << y;
}

TEST(ResizePublic, SizeQueryRefusalsAndIdentity) {
  unsigned long size = 0;
  std::vector<uint8_t> src(16 * 8 * 3 / 2, 0), dst(16 * 8 * 3 / 2, 0xEE);
  EXPECT_EQ(OrvImage::ResizeYUV420(nullptr, dst.data(), &size, 16, 8, 16, 16, 8, 16,
                                   OrvImage::INTERPOLATION_LINEAR),
            3u);
  EXPECT_EQ(size, 192u);
  size = 191;
  EXPECT_EQ(OrvImage::ResizeYUV420(src.data(), dst.data(), &size, 16, 8, 16, 16, 8, 16,
                                   OrvImage::INTERPOLATION_LINEAR),
            2u);
  for (uint8_t b : dst) ASSERT_EQ(b, 0xEE);
  size = 192;
  EXPECT_EQ(OrvImage::ResizeYUV420(src.data(), dst.data(), &size, 16, 8, 16, 16, 8, 16,
                                   static_cast<OrvImage::INTERPOLATION_MODE>(9)),
            3u);
  // Equal sizes run through the primitive with factor 1.0: an exact copy.
  std::mt19937 rng(9);
  for (auto& b : src) b = static_cast<uint8_t>(rng());
  size = 192;
  ASSERT_EQ(OrvImage::ResizeYUV420(src.data(), dst.data(), &size, 16, 8, 16, 16, 8, 16,
                                   OrvImage::INTERPOLATION_CUBIC),
            0u);
  EXPECT_EQ(dst, src);
}

TEST(ResizePublic, RgbFlipOnlyForOppositeSigns) {
  const int w = 4, h = 3, step = 12;
  std::vector<uint8_t> src(step * h);
  for (int y = 0; y < h; ++y) {
    for (int i = 0; i < step; ++i) src[y * step + i] = static_cast<uint8_t>(y * 50 + 1);
  }
  std::vector<uint8_t> dst(step * h);
  unsigned long size = dst.size();
  ASSERT_EQ(OrvImage::ResizeRGB24(src.data(), dst.data(), &size, w, h, step, w, h, -step,
                                  OrvImage::INTERPOLATION_NEAREST),
            0u);
  EXPECT_EQ(dst[0], 101);
  EXPECT_EQ(dst[2 * step], 1);
  size = dst.size();
  ASSERT_EQ(OrvImage::ResizeRGB24(src.data(), dst.data(), &size, w, h, -step, w, h, -step,
                                  OrvImage::INTERPOLATION_NEAREST),
            0u);
  EXPECT_EQ(dst[0], 1);
}

TEST(ResizePublic, Yuy2DoublesAndKeepsFlatColour) {
  const int w = 8, h = 4;
  std::vector<uint8_t> src(2 * w * h);
  for (size_t i = 0; i < src.size(); i += 4) {
    src[i] = 100;
    src[i + 1] = 60;
    src[i + 2] = 100;
    src[i + 3] = 200;
  }
  std::vector<uint8_t> dst(4 * w * 2 * h);
  unsigned long size = dst.size();
  for (auto mode : {OrvImage::INTERPOLATION_NEAREST, OrvImage::INTERPOLATION_LINEAR,
                    OrvImage::INTERPOLATION_CUBIC, OrvImage::INTERPOLATION_AUTO}) {
    size = dst.size();
    ASSERT_EQ(
        OrvImage::ResizeYUY2(src.data(), dst.data(), &size, w, h, 2 * w, 2 * w, 2 * h, 4 * w, mode),
        0u);
    for (size_t i = 0; i < dst.size(); i += 4) {
      ASSERT_EQ(dst[i], 100) << mode << " at " << i;
      ASSERT_EQ(dst[i + 1], 60);
      ASSERT_EQ(dst[i + 3], 200);
    }
  }
}

TEST(ResizeInstance, PlanKeepsPlanesAndServesRgb) {
  OrvImage image;
  ASSERT_EQ(image.Initialize(720, 480, 704, 480, OrvImage::INTERPOLATION_LINEAR), 0u);
  const auto& r = A::ResizeInfo(image);
  EXPECT_TRUE(r.needResize);
  EXPECT_EQ(r.srcTrimX, 16);
  EXPECT_EQ(r.srcRect.x, 8);
  EXPECT_EQ(r.srcRect.width, 704);
  EXPECT_EQ(r.srcStep, 1440);
  ASSERT_NE(r.temp.srcY, nullptr);
  uint8_t* planes = r.temp.srcY;
  ASSERT_EQ(image.Initialize(720, 480, 704, 480, OrvImage::INTERPOLATION_CUBIC), 0u);
  EXPECT_EQ(r.temp.srcY, planes) << "same sizes: nothing allocated again";
  ASSERT_EQ(image.Initialize(720, 480, 720, 480, OrvImage::INTERPOLATION_TAVO), 0u);
  EXPECT_EQ(r.temp.srcY, nullptr);
  EXPECT_EQ(r.interpolation, OrvImage::INTERPOLATION_TAVO);

  // InitializeEx with the own scaler serves through the primitives, with planes.
  RECT srcRect = {0, 0, 64, 32}, dstRect = {0, 0, 32, 16};
  ASSERT_EQ(image.InitializeEx(64, 32, srcRect, 64, 32, dstRect, OrvImage::INTERPOLATION_TAVO,
                               false, false),
            0u);
  EXPECT_EQ(r.interpolation, OrvImage::INTERPOLATION_AUTO);
  EXPECT_EQ(r.dstRect.x, 16);
  EXPECT_EQ(r.dstRect.y, 8);
  EXPECT_EQ(r.dstMarginX, 32);
  EXPECT_EQ(r.dstMarginY, 16);
  EXPECT_NE(r.temp.srcY, nullptr);
  std::vector<uint8_t> src(128 * 32);
  for (size_t i = 0; i < src.size(); i += 4) {
    src[i] = 80;
    src[i + 1] = 100;
    src[i + 2] = 80;
    src[i + 3] = 150;
  }
  std::vector<uint8_t> dst(128 * 32);
  unsigned long size = dst.size();
  ASSERT_EQ(image.ResizeYUY2(src.data(), dst.data(), &size), 0u);
  // Inside the centred region the colour is kept; outside it is 0, 127, 0, 127.
  const size_t mid = 16 * 128 + 32 * 2;
  EXPECT_EQ(dst[mid], 80);
  EXPECT_EQ(dst[mid + 1], 100);
  EXPECT_EQ(dst[mid + 3], 150);
  EXPECT_EQ(dst[0], 0);
  EXPECT_EQ(dst[1], 127);

  RECT bad = {10, 10, 5, 20};
  EXPECT_EQ(
      image.InitializeEx(64, 32, bad, 64, 32, dstRect, OrvImage::INTERPOLATION_AUTO, false, false),
      3u);
  EXPECT_EQ(image.Initialize(0, 32, 64, 32, OrvImage::INTERPOLATION_AUTO), 3u);
}

}  // namespace
