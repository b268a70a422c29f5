// Copy, rotate, delta and bitmap expansion.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

namespace {

std::vector<uint8_t> Pattern(size_t n, uint32_t seed) {
  std::vector<uint8_t> v(n);
  std::mt19937 rng(seed);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

// A line-by-line reference of the copy: `lineBytes` meaningful bytes a line,
// flipped when the steps' signs differ.
void ExpectLinesCopied(const std::vector<uint8_t>& src, size_t srcMag, const uint8_t* dst,
                       size_t dstMag, size_t lines, size_t lineBytes, bool flip) {
  for (size_t y = 0; y < lines; ++y) {
    const size_t from = flip ? lines - 1 - y : y;
    ASSERT_EQ(0, std::memcmp(dst + y * dstMag, src.data() + from * srcMag, lineBytes))
        << "line " << y;
  }
}

TEST(CopyPicture, SizeQueryAndShortCapacity) {
  unsigned long size = 0;
  std::vector<uint8_t> src(1000), dst(1000, 0xEE);
  EXPECT_EQ(OrvImage::CopyYUV420(nullptr, dst.data(), &size, 8, 6, 8, 10), 3u);
  EXPECT_EQ(size, (10u + 5u) * 6u);
  size = 89;
  EXPECT_EQ(OrvImage::CopyYUV420(src.data(), dst.data(), &size, 8, 6, 8, 10), 2u);
  EXPECT_EQ(size, 89u);
  for (uint8_t b : dst) ASSERT_EQ(b, 0xEE);
  size = 90;
  EXPECT_EQ(OrvImage::CopyYUV420(src.data(), dst.data(), &size, 8, 6, 8, 10), 0u);
  EXPECT_EQ(size, 90u);
  EXPECT_EQ(OrvImage::CopyRGB24(src.data(), dst.data(), nullptr, 2, 2, 8, 8), 3u);
  size = 1000;
  EXPECT_EQ(OrvImage::CopyRGB24(src.data(), dst.data(), &size, 70000, 1, 8, 8), 3u);
}

TEST(CopyPicture, Yuy2FlipWritesLastSourceLineFirst) {
  const size_t w = 5, h = 4, step = 12;
  auto src = Pattern(step * h, 1);
  std::vector<uint8_t> dst(step * h, 0);
  unsigned long size = dst.size();
  ASSERT_EQ(OrvImage::CopyYUY2(src.data(), dst.data(), &size, w, h, step, -int(step)), 0u);
  ExpectLinesCopied(src, step, dst.data(), step, h, step, true);
}

TEST(CopyPicture, DifferentStepsCopyShorterLineAndKeepTheRest) {
  const size_t w = 3, h = 3;
  auto src = Pattern(16 * h, 2);
  std::vector<uint8_t> dst(20 * h, 0xEE);
  unsigned long size = dst.size();
  ASSERT_EQ(OrvImage::CopyRGB32(src.data(), dst.data(), &size, w, h, 16, 20), 0u);
  ExpectLinesCopied(src, 16, dst.data(), 20, h, 16, false);
  for (size_t y = 0; y < h; ++y) {
    for (size_t i = 16; i < 20; ++i) EXPECT_EQ(dst[y * 20 + i], 0xEE);
  }
}

TEST(CopyPicture, InPlaceGrowingAndShrinking) {
  const size_t w = 3, h = 4;
  // Growing: 12-byte lines to 16-byte lines, the gap of each line kept.
  auto original = Pattern(12 * h, 3);
  std::vector<uint8_t> buffer(16 * h, 0xEE);
  std::memcpy(buffer.data(), original.data(), original.size());
  const std::vector<uint8_t> before = buffer;
  unsigned long size = buffer.size();
  ASSERT_EQ(OrvImage::CopyRGB32(buffer.data(), buffer.data(), &size, w, h, 12, 16), 0u);
  ExpectLinesCopied(original, 12, buffer.data(), 16, h, 12, false);
  for (size_t y = 0; y + 1 < h; ++y) {
    // Bytes 12..15 of each line stay as they were before the move.
    for (size_t i = 12; i < 16; ++i) EXPECT_EQ(buffer[y * 16 + i], before[y * 16 + i]);
  }
  // Shrinking back, flipped: the lines return and turn.
  const std::vector<uint8_t> grown = buffer;
  size = buffer.size();
  ASSERT_EQ(OrvImage::CopyRGB32(buffer.data(), buffer.data(), &size, w, h, 16, -12), 0u);
  ExpectLinesCopied(grown, 16, buffer.data(), 12, h, 12, true);
}

TEST(CopyPicture, InPlaceSameMagnitudeOppositeSignMirrorsOnly) {
  const size_t w = 3, h = 5, step = 12;
  auto original = Pattern(step * h, 4);
  std::vector<uint8_t> buffer = original;
  unsigned long size = buffer.size();
  ASSERT_EQ(OrvImage::CopyRGB24(buffer.data(), buffer.data(), &size, w, h, -int(step), step), 0u);
  ExpectLinesCopied(original, step, buffer.data(), step, h, 9, true);
}

TEST(CopyPicture, Yuv420PlanesWithOddHeightStayInside) {
  const size_t w = 6, h = 5, srcStep = 6, dstStep = 8;
  const size_t srcBytes = (srcStep + srcStep / 2) * h;
  auto src = Pattern(srcBytes, 5);
  const size_t required = (dstStep + dstStep / 2) * h;
  std::vector<uint8_t> dst(required + 16, 0xEE);
  for (bool flip : {false, true}) {
    std::fill(dst.begin(), dst.end(), 0xEE);
    unsigned long size = required;
    ASSERT_EQ(OrvImage::CopyYUV420(src.data(), dst.data(), &size, w, h, srcStep,
                                   flip ? -int(dstStep) : int(dstStep)),
              0u);
    ExpectLinesCopied(src, srcStep, dst.data(), dstStep, h, srcStep, flip);
    std::vector<uint8_t> cb(src.begin() + srcStep * h, src.end());
    ExpectLinesCopied(cb, srcStep / 2, dst.data() + dstStep * h, dstStep / 2, h / 2, 3, flip);
    std::vector<uint8_t> cr(cb.begin() + 3 * (h / 2), cb.end());
    ExpectLinesCopied(cr, 3, dst.data() + dstStep * h + 4 * (h / 2), 4, h / 2, 3, flip);
    for (size_t i = required; i < dst.size(); ++i) ASSERT_EQ(dst[i], 0xEE);
  }
}

TEST(CopyPicture, Yuy2aAlphaPlaneFollowsPicture) {
  const size_t w = 3, h = 3, step = 8, alphaLine = 4;
  auto src = Pattern((step + alphaLine) * h, 6);
  std::vector<uint8_t> dst((12 + alphaLine) * h, 0);
  unsigned long size = dst.size();
  ASSERT_EQ(OrvImage::CopyYUY2A(src.data(), dst.data(), &size, w, h, step, -12), 0u);
  EXPECT_EQ(size, (12u + 4u) * 3u);
  ExpectLinesCopied(src, step, dst.data(), 12, h, step, true);
  std::vector<uint8_t> alpha(src.begin() + step * h, src.end());
  ExpectLinesCopied(alpha, alphaLine, dst.data() + 12 * h, alphaLine, h, w, true);
}

// ---- Rotate -----------------------------------------------------------

// Pixel (x, y) of a top-down RGB picture with generic lines.
const uint8_t* Px(const std::vector<uint8_t>& p, size_t bytes, size_t width, size_t x, size_t y) {
  const size_t line = (bytes * width + 3) & ~size_t(3);
  return p.data() + y * line + x * bytes;
}

void ExpectRotation(size_t bytes, size_t w, size_t h, OrvImage::ROTATE_MODE mode, bool flip) {
  const OrvImage::COLOR_FORMAT_TYPE f = bytes == 3 ? OrvImage::CF_RGB24 : OrvImage::CF_RGB32;
  const size_t srcLine = (bytes * w + 3) & ~size_t(3);
  auto src = Pattern(srcLine * h, static_cast<uint32_t>(w * 100 + h));
  const bool quarter = mode == OrvImage::ROTATE_90 || mode == OrvImage::ROTATE_270;
  const size_t W = quarter ? h : w, H = quarter ? w : h;
  const unsigned long required = OrvImage::GetGenericSize(f, W, H, nullptr, nullptr);
  std::vector<uint8_t> dst(required, 0xEE);
  unsigned long size = required;
  const unsigned long rc =
      bytes == 3 ? OrvImage::RotateRGB24(src.data(), dst.data(), &size, w, h, mode, flip)
                 : OrvImage::RotateRGB32(src.data(), dst.data(), &size, w, h, mode, flip);
  ASSERT_EQ(rc, 0u);
  for (size_t y = 0; y < H; ++y) {
    for (size_t x = 0; x < W; ++x) {
      size_t sx, sy;  // the source pixel that lands at (x, y)
      switch (mode) {
        case OrvImage::ROTATE_NONE:
          sx = x;
          sy = y;
          break;
        case OrvImage::ROTATE_180:
          sx = w - 1 - x;
          sy = h - 1 - y;
          break;
        case OrvImage::ROTATE_90:
          sx = w - 1 - y;
          sy = x;
          break;
        default:
          sx = y;
          sy = h - 1 - x;
          break;
      }
      if (flip && !(quarter && H == 1)) {
        // A flip mirrors the result left to right (for 180: it leaves the
        // left-to-right order and turns top to bottom only). A column turned
        // into a single line is written out as it is, without the flip.
        if (mode == OrvImage::ROTATE_NONE) sx = w - 1 - x;
        if (mode == OrvImage::ROTATE_180) sx = x;
        if (mode == OrvImage::ROTATE_90) sy = W - 1 - x;
        if (mode == OrvImage::ROTATE_270) sy = x;
      }
      ASSERT_EQ(0, std::memcmp(Px(dst, bytes, W, x, y), Px(src, bytes, w, sx, sy), bytes))
          << "mode " << mode << " flip " << flip << " at " << x << "," << y << " size " << w << "x"
          << h;
    }
  }
}

TEST(RotatePicture, EveryModeAndFlipMovesPixelsExactly) {
  for (size_t bytes : {3u, 4u}) {
    for (auto wh : {std::pair<size_t, size_t>{4, 3}, {5, 2}, {3, 7}, {1, 4}, {6, 1}}) {
      for (int mode = 0; mode < 4; ++mode) {
        for (bool flip : {false, true}) {
          ExpectRotation(bytes, wh.first, wh.second, static_cast<OrvImage::ROTATE_MODE>(mode),
                         flip);
        }
      }
    }
  }
}

TEST(RotatePicture, ColumnAndSinglePixelSpecialCases) {
  // A 1 x 4 column turned by 270: the output line holds the source in reverse.
  std::vector<uint8_t> src = Pattern(4 * 4, 7);
  std::vector<uint8_t> dst(12, 0);
  unsigned long size = 5000;
  ASSERT_EQ(OrvImage::RotateRGB24(src.data(), dst.data(), &size, 1, 4, OrvImage::ROTATE_270, true),
            0u);
  EXPECT_EQ(size, 5000u);  // not changed on this path
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(0, std::memcmp(&dst[3 * i], &src[4 * (3 - i)], 3));
  // 1 x 1 in any mode: a plain copy, size untouched.
  size = 4;
  std::vector<uint8_t> one = {1, 2, 3, 0}, out(4, 0);
  ASSERT_EQ(OrvImage::RotateRGB24(one.data(), out.data(), &size, 1, 1, OrvImage::ROTATE_270, false),
            0u);
  EXPECT_EQ(out, one);
}

TEST(RotatePicture, Refusals) {
  unsigned long size = 0;
  std::vector<uint8_t> buf(64);
  EXPECT_EQ(OrvImage::RotateRGB32(nullptr, buf.data(), &size, 2, 3, OrvImage::ROTATE_90, false),
            3u);
  EXPECT_EQ(size, 24u);
  size = 23;
  EXPECT_EQ(
      OrvImage::RotateRGB32(buf.data(), buf.data() + 32, &size, 2, 3, OrvImage::ROTATE_90, false),
      2u);
  size = 64;
  EXPECT_EQ(OrvImage::RotateRGB32(buf.data(), buf.data(), &size, 2, 3,
                                  static_cast<OrvImage::ROTATE_MODE>(4), false),
            3u);
}

// ---- Delta ------------------------------------------------------------

TEST(PictureDelta, SamplesAndLines) {
  // YUV420, height 9: lines 0 and 1 (the top eighth), bytes 0 and 8.
  std::vector<uint8_t> a(16 * 9, 10), b(16 * 9, 10);
  b[0] = 13;       // line 0, sample 0
  b[16 + 8] = 5;   // line 1, sample 8
  b[16 * 8] = 99;  // line 8: not sampled
  b[3] = 99;       // not a sample column
  EXPECT_EQ(OrvImage::GetDeltaFromYUV420(a.data(), b.data(), 16, 9), 3u + 5u);
  EXPECT_EQ(OrvImage::GetDeltaFromYUV420(a.data(), b.data(), 16, 8), 3u);

  // YUY2, height 9: lines 0 and 8; samples every 16 bytes of the aligned line.
  std::vector<uint8_t> ya(12 * 9, 0), yb(12 * 9, 0);  // width 5 -> line 12
  yb[0] = 7;
  yb[12 * 8] = 9;
  yb[12] = 50;  // line 1
  EXPECT_EQ(OrvImage::GetDeltaFromYUY2(ya.data(), yb.data(), 5, 9), 16u);

  // RGB24 luma (3 B + 6 G + R) / 10.
  std::vector<uint8_t> ra(4, 0), rb = {10, 20, 30, 0};
  EXPECT_EQ(OrvImage::GetDeltaFromRGB24(ra.data(), rb.data(), 1, 1), (30u + 120u + 30u) / 10u);
  EXPECT_EQ(OrvImage::GetDeltaFromRGB32(ra.data(), rb.data(), 1, 1), 18u);
  EXPECT_EQ(OrvImage::GetDeltaFromRGB32(nullptr, rb.data(), 1, 1), 0u);
  EXPECT_EQ(OrvImage::GetDeltaFromYUV420(a.data(), b.data(), 16, 0), 0u);
}

// ---- Bitmaps ----------------------------------------------------------

struct Bitmap {
  BITMAPINFOHEADER header{};
  RGBQUAD colors[256]{};
  BITMAPINFO* info() { return reinterpret_cast<BITMAPINFO*>(this); }
};

TEST(BitmapExpand, OneBitLineOfTenUsesTwoHighBitsOfSecondByte) {
  Bitmap bmp;
  bmp.header.biWidth = 10;
  bmp.header.biHeight = 1;
  bmp.header.biBitCount = 1;
  bmp.colors[0] = {1, 2, 3, 0};
  bmp.colors[1] = {200, 201, 202, 0};
  uint8_t src[4] = {0xA5, 0x80, 0x7F, 0};  // 1010 0101, then 10
  std::vector<uint8_t> dst(32, 0xEE);
  unsigned long size = dst.size();
  ASSERT_EQ(OrvImage::PaletteToRGB24(src, dst.data(), &size, bmp.info(), 4, 32), 0u);
  EXPECT_EQ(size, 32u);
  const int bits[10] = {1, 0, 1, 0, 0, 1, 0, 1, 1, 0};
  for (int x = 0; x < 10; ++x) EXPECT_EQ(dst[3 * x], bits[x] ? 200 : 1) << x;
  EXPECT_EQ(dst[30], 0xEE);
}

TEST(BitmapExpand, FourAndEightBitWithStepSignsTurning) {
  Bitmap bmp;
  bmp.header.biWidth = 3;
  bmp.header.biHeight = 2;
  bmp.header.biBitCount = 4;
  for (int i = 0; i < 16; ++i) bmp.colors[i] = {uint8_t(i), uint8_t(i + 16), uint8_t(i + 32), 0};
  uint8_t src[8] = {0x12, 0x30, 0, 0, 0x45, 0x60, 0, 0};  // odd width: high nibble of byte 2
  std::vector<uint8_t> dst(24, 0);
  unsigned long size = dst.size();
  ASSERT_EQ(OrvImage::PaletteToRGB24(src, dst.data(), &size, bmp.info(), 4, -12), 0u);
  // Source line 0 lands on memory line 1 of the destination.
  EXPECT_EQ(dst[12 + 0], 1);
  EXPECT_EQ(dst[12 + 3], 2);
  EXPECT_EQ(dst[12 + 6], 3);
  EXPECT_EQ(dst[0], 4);
  EXPECT_EQ(dst[4], 5 + 16);
  EXPECT_EQ(dst[8], 6 + 32);

  bmp.header.biBitCount = 8;
  bmp.header.biClrUsed = 4;  // index 200 lies past the table: black
  uint8_t src8[4] = {3, 200, 0, 0};
  bmp.header.biHeight = 1;
  std::vector<uint8_t> out(12, 0xEE);
  size = out.size();
  ASSERT_EQ(OrvImage::PaletteToRGB24(src8, out.data(), &size, bmp.info(), 4, 12), 0u);
  EXPECT_EQ(out[0], 3);
  EXPECT_EQ(out[3], 0);
  EXPECT_EQ(out[5], 0);
}

TEST(BitmapExpand, UnservedBitCountStoresSizeWritesNothing) {
  Bitmap bmp;
  bmp.header.biWidth = 2;
  bmp.header.biHeight = -3;
  bmp.header.biBitCount = 24;
  std::vector<uint8_t> src(24), dst(30, 0xEE);
  unsigned long size = 100;
  EXPECT_EQ(OrvImage::PaletteToRGB24(src.data(), dst.data(), &size, bmp.info(), 8, 10), 0u);
  EXPECT_EQ(size, 30u);
  for (uint8_t b : dst) ASSERT_EQ(b, 0xEE);
}

TEST(BitmapExpand, InconsistentInfoIsRefused) {
  Bitmap bmp;
  bmp.header.biWidth = 8;
  bmp.header.biHeight = 2;
  bmp.header.biBitCount = 8;
  std::vector<uint8_t> src(64), dst(64, 0xEE);
  unsigned long size = 64;
  EXPECT_EQ(OrvImage::PaletteToRGB24(src.data(), dst.data(), &size, bmp.info(), 4, 24), 3u)
      << "source step shorter than a line";
  size = 64;
  EXPECT_EQ(OrvImage::PaletteToRGB24(src.data(), dst.data(), &size, bmp.info(), 8, 20), 3u)
      << "destination step shorter than a line";
  bmp.header.biWidth = 0;
  EXPECT_EQ(OrvImage::PaletteToRGB24(src.data(), dst.data(), &size, bmp.info(), 8, 24), 3u);
  EXPECT_EQ(OrvImage::PaletteToRGB24(src.data(), dst.data(), &size, nullptr, 8, 24), 3u);
  for (uint8_t b : dst) ASSERT_EQ(b, 0xEE);
}

TEST(BitmapExpand, BitFieldsDefaultAndCustomMasks) {
  Bitmap bmp;
  bmp.header.biWidth = 3;
  bmp.header.biHeight = 1;
  bmp.header.biBitCount = 16;
  bmp.header.biCompression = BI_RGB;
  // 5-5-5: blue 31 -> 256 -> 254; 0 -> 1; green 16 -> 132.
  const uint16_t pixels[3] = {0x001F, 0x0000, uint16_t(16 << 5)};
  std::vector<uint8_t> dst(12, 0);
  unsigned long size = dst.size();
  ASSERT_EQ(
      OrvImage::BitFieldsToRGB24(reinterpret_cast<unsigned char*>(const_cast<uint16_t*>(pixels)),
                                 dst.data(), &size, bmp.info(), 8, 12),
      0u);
  EXPECT_EQ(dst[0], 254);
  EXPECT_EQ(dst[1], 1);
  EXPECT_EQ(dst[2], 1);
  EXPECT_EQ(dst[3], 1);
  EXPECT_EQ(dst[7], (16 * 256) / 31);

  // 32-bit 8-8-8 masks through BI_BITFIELDS.
  bmp.header.biBitCount = 32;
  bmp.header.biCompression = BI_BITFIELDS;
  const uint32_t masks[3] = {0xFF0000, 0xFF00, 0xFF};
  std::memcpy(bmp.colors, masks, sizeof(masks));
  const uint32_t px[3] = {0x00804020, 0x00FFFFFF, 0};
  size = dst.size();
  ASSERT_EQ(OrvImage::BitFieldsToRGB24(reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(px)),
                                       dst.data(), &size, bmp.info(), 12, 12),
            0u);
  EXPECT_EQ(dst[0], (0x20 * 256) / 255);
  EXPECT_EQ(dst[1], (0x40 * 256) / 255);
  EXPECT_EQ(dst[2], (0x80 * 256) / 255);
  EXPECT_EQ(dst[3], 254);

  const uint32_t zero[3] = {0xFF0000, 0, 0xFF};
  std::memcpy(bmp.colors, zero, sizeof(zero));
  EXPECT_EQ(OrvImage::BitFieldsToRGB24(reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(px)),
                                       dst.data(), &size, bmp.info(), 12, 12),
            3u);
  bmp.header.biCompression = 7;  // unserved: size stored, nothing written, 0
  std::fill(dst.begin(), dst.end(), 0xEE);
  EXPECT_EQ(OrvImage::BitFieldsToRGB24(reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(px)),
                                       dst.data(), &size, bmp.info(), 12, 12),
            0u);
  for (uint8_t b : dst) ASSERT_EQ(b, 0xEE);
}

}  // namespace
