#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

using F = OrvImage::COLOR_FORMAT_TYPE;

TEST(PictureModel, BitsPerPixel) {
  const unsigned long expected[] = {16, 16, 24, 32, 24, 32, 12, 12, 12, 32, 32, 24};
  for (int f = 0; f < 12; ++f) EXPECT_EQ(OrvImage::GetBitPixel(static_cast<F>(f)), expected[f]);
  EXPECT_EQ(OrvImage::GetBitPixel(static_cast<F>(12)), 0u);
  EXPECT_EQ(OrvImage::GetBitPixel(static_cast<F>(-1)), 0u);
}

TEST(PictureModel, GenericStep) {
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_RGB32, 3, 7), -12);
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_RGB24, 3, 7), -12);  // 9 bytes go up to 12
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_YUY2A, 5, 2),
            OrvImage::GetGenericStep(OrvImage::CF_CCIR601YUY2, 5, 2));
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_YUY2A, 5, 2), 12);
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_YV12, 5, 2), 5);
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_VUYA, 1, 1), -4);
  EXPECT_EQ(OrvImage::GetGenericStep(static_cast<F>(42), 16, 16), 0);
  EXPECT_EQ(OrvImage::GetGenericStep(OrvImage::CF_RGB24, 65536, 1), 0);
}

TEST(PictureModel, GenericSizeTable) {
  struct Case {
    F format;
    unsigned long w, h, size;
    int step, bits;
  } cases[] = {
      {OrvImage::CF_YUV420, 5, 4, 28, 5, 12},  // the odd column is not rounded up
      {OrvImage::CF_YV12, 720, 480, 518400, 720, 12},
      {OrvImage::CF_CCIR601YUY2, 3, 2, 16, 8, 16},
      {OrvImage::CF_BT709YUY2, 720, 480, 691200, 1440, 16},
      {OrvImage::CF_RGB24, 3, 2, 24, -12, 24},
      {OrvImage::CF_TavoShiftedStraightRGB24, 1920, 1080, 6220800, -5760, 24},
      {OrvImage::CF_RGBA, 3, 2, 24, -12, 32},
      {OrvImage::CF_YUY2A, 3, 2, 16 + 8, 8, 24},
      {OrvImage::CF_YUY2A, 720, 480, 691200 + 345600, 1440, 24},
  };
  for (const Case& c : cases) {
    int step = 99, bits = 99;
    EXPECT_EQ(OrvImage::GetGenericSize(c.format, c.w, c.h, &step, &bits), c.size) << c.format;
    EXPECT_EQ(step, c.step) << c.format;
    EXPECT_EQ(bits, c.bits) << c.format;
  }
  EXPECT_EQ(OrvImage::GetGenericSize(OrvImage::CF_RGB32, 4, 4, nullptr, nullptr), 64u);
}

TEST(PictureModel, GenericSizeRefusals) {
  int step = 99, bits = 99;
  EXPECT_EQ(OrvImage::GetGenericSize(static_cast<F>(12), 8, 8, &step, &bits), 0u);
  EXPECT_EQ(step, 0);
  EXPECT_EQ(bits, 0);
  EXPECT_EQ(OrvImage::GetGenericSize(OrvImage::CF_RGB32, 65536, 2, nullptr, nullptr), 0u);
  EXPECT_EQ(OrvImage::GetGenericSize(OrvImage::CF_RGB32, 2, 65536, nullptr, nullptr), 0u);
  // 65535 x 65535 x 4 does not fit in 31 bits.
  EXPECT_EQ(OrvImage::GetGenericSize(OrvImage::CF_RGB32, 65535, 65535, &step, nullptr), 0u);
  EXPECT_EQ(step, 0);
}

TEST(PictureModel, PictureSizeWithStep) {
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_YUV420, 720, 480, -720),
            OrvImage::GetPictureSize(OrvImage::CF_YUV420, 720, 480, 720));
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_YUV420, 720, 480, 768), (384u + 768u) * 480u);
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_YUV420, 5, 4, 0), 28u);
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_YUV420, 5, 4, 7), (3u + 7u) * 4u);
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_RGB24, 3, 2, -100), 200u);  // the step counts
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_RGB24, 3, 2, 0), 24u);
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_YUY2A, 3, 2, 20), 40u + 8u);
  EXPECT_EQ(OrvImage::GetPictureSize(static_cast<F>(77), 3, 2, 20), 0u);
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_RGB24, 3, 70000, 12), 0u);
  EXPECT_EQ(OrvImage::GetPictureSize(OrvImage::CF_RGB32, 100, 60000, INT32_MIN), 0u);
}

// Clears inside a guarded buffer and checks every byte, including the guard.
class ClearPictureTest : public ::testing::Test {
 protected:
  static constexpr size_t kGuard = 32;
  void Clear(F format, unsigned long w, unsigned long h, int step, bool transparent, size_t bytes) {
    buffer_.assign(bytes + 2 * kGuard, 0xEE);
    OrvImage::ClearPicture(buffer_.data() + kGuard, format, w, h, step, transparent);
    for (size_t i = 0; i < kGuard; ++i) {
      ASSERT_EQ(buffer_[i], 0xEE);
      ASSERT_EQ(buffer_[kGuard + bytes + i], 0xEE);
    }
  }
  uint8_t at(size_t i) const { return buffer_[kGuard + i]; }
  std::vector<uint8_t> buffer_;
};

TEST_F(ClearPictureTest, PlanarFillsLumaThenBothChromaPlanes) {
  Clear(OrvImage::CF_YUV420, 6, 4, 8, false, (8 + 4) * 4);
  for (size_t i = 0; i < 32; ++i) ASSERT_EQ(at(i), 16) << i;
  for (size_t i = 32; i < 48; ++i) ASSERT_EQ(at(i), 127) << i;
}

TEST_F(ClearPictureTest, Yuy2FillsAlignedLinesOnly) {
  // Width 3: aligned line 8 bytes; step 12 leaves 4 bytes per line untouched.
  Clear(OrvImage::CF_CCIR601YUY2, 3, 2, -12, false, 24);
  const uint8_t pattern[4] = {16, 127, 16, 127};
  for (size_t line = 0; line < 2; ++line) {
    for (size_t i = 0; i < 8; ++i) ASSERT_EQ(at(line * 12 + i), pattern[i % 4]);
    for (size_t i = 8; i < 12; ++i) ASSERT_EQ(at(line * 12 + i), 0xEE);
  }
}

TEST_F(ClearPictureTest, Yuy2aAlphaPlane) {
  Clear(OrvImage::CF_YUY2A, 4, 2, 0, true, 16 + 8);
  for (size_t i = 16; i < 24; ++i) ASSERT_EQ(at(i), 0) << "transparent clear gives alpha 0";
  Clear(OrvImage::CF_YUY2A, 4, 2, 0, false, 16 + 8);
  for (size_t i = 16; i < 24; ++i) ASSERT_EQ(at(i), 255);
  EXPECT_EQ(at(0), 16);
  EXPECT_EQ(at(1), 127);
}

TEST_F(ClearPictureTest, VuyaAndRgbaAlpha) {
  Clear(OrvImage::CF_VUYA, 2, 2, 0, true, 16);
  for (size_t p = 0; p < 4; ++p) {
    EXPECT_EQ(at(4 * p + 0), 127);
    EXPECT_EQ(at(4 * p + 1), 127);
    EXPECT_EQ(at(4 * p + 2), 16);
    EXPECT_EQ(at(4 * p + 3), 255) << "transparent VUYA is alpha 255";
  }
  Clear(OrvImage::CF_VUYA, 2, 2, 0, false, 16);
  EXPECT_EQ(at(3), 0);
  Clear(OrvImage::CF_RGBA, 2, 2, 0, false, 16);
  for (size_t p = 0; p < 4; ++p) EXPECT_EQ(at(4 * p + 3), 255);
  EXPECT_EQ(at(0), 0);
  Clear(OrvImage::CF_RGBA, 2, 2, 0, true, 16);
  for (size_t i = 0; i < 16; ++i) EXPECT_EQ(at(i), 0);
}

TEST_F(ClearPictureTest, RgbWithStepZeroClearsWholeBitmap) {
  // The generic step is negative; the clear still covers |step| x height.
  Clear(OrvImage::CF_RGB24, 3, 5, 0, false, 60);
  for (size_t i = 0; i < 60; ++i) ASSERT_EQ(at(i), 0);
}

TEST_F(ClearPictureTest, RefusalsWriteNothing) {
  OrvImage::ClearPicture(nullptr, OrvImage::CF_RGB24, 3, 5, 0, false);
  Clear(OrvImage::CF_RGB24, 70000, 1, 4, false, 16);
  for (size_t i = 0; i < 16; ++i) ASSERT_EQ(at(i), 0xEE);
}

TEST(PictureModel, NearWideAspect) {
  EXPECT_TRUE(OrvImage::IsNearWideAspect(1920, 1080));
  EXPECT_FALSE(OrvImage::IsNearWideAspect(720, 480));
  EXPECT_FALSE(OrvImage::IsNearWideAspect(640, 480));
  EXPECT_TRUE(OrvImage::IsNearWideAspect(0, 480));
  EXPECT_TRUE(OrvImage::IsNearWideAspect(480, 0));
  EXPECT_TRUE(OrvImage::IsNearWideAspect(1280, 720));
  EXPECT_TRUE(OrvImage::IsNearWideAspect(1440, 1080 / 2 * 1));  // 8:3 is wider still
  EXPECT_FALSE(OrvImage::IsNearWideAspect(480, 720));           // portrait: 3:4 side
}

TEST(PictureModel, InstanceConstructsAndDestroys) {
  OrvImage* image = new OrvImage();
  delete image;
}

}  // namespace
