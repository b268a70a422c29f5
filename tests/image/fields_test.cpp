// Field operations: take a field, make a frame, swap, de-interlace, and the
// flat-band search of the mask copy.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "image/image_test_access.h"

namespace {

// A picture whose every line is filled with its own number (plus 1), so a line
// can be recognised wherever it lands.
std::vector<uint8_t> NumberedLines(size_t lineBytes, size_t lines) {
  std::vector<uint8_t> p(lineBytes * lines);
  for (size_t y = 0; y < lines; ++y) {
    for (size_t i = 0; i < lineBytes; ++i) p[y * lineBytes + i] = static_cast<uint8_t>(y + 1);
  }
  return p;
}

uint8_t LineTag(const std::vector<uint8_t>& p, size_t lineBytes, size_t y) {
  return p[y * lineBytes];
}

TEST(GetField, TopMeansTheDisplaysFirstLineInEitherDirection) {
  const size_t step = 8, h = 6;
  auto src = NumberedLines(step, h);
  std::vector<uint8_t> dst(step * 3, 0);
  ASSERT_EQ(OrvImage::GetFieldYUY2(src.data(), dst.data(), dst.size(), 4, h, step, true), 0u);
  EXPECT_EQ(LineTag(dst, step, 0), 1);
  EXPECT_EQ(LineTag(dst, step, 2), 5);
  // Bottom-up, even height: the display's first line is memory line 1.
  ASSERT_EQ(OrvImage::GetFieldRGB24(src.data(), dst.data(), dst.size(), 2, h, -int(step), true),
            0u);
  EXPECT_EQ(LineTag(dst, step, 0), 2);
  EXPECT_EQ(LineTag(dst, step, 2), 6);
  EXPECT_EQ(OrvImage::GetFieldRGB32(nullptr, dst.data(), dst.size(), 2, h, 8, true), 3u);
}

TEST(GetField, SplitAndMakeFrameRestorePicture) {
  for (int sign : {1, -1}) {
    for (bool planar : {false, true}) {
      const size_t step = 12, h = 8;
      const size_t bytes = planar ? (step + step / 2) * h : step * h;
      std::vector<uint8_t> src(bytes);
      std::mt19937 rng(planar * 2 + (sign > 0));
      for (auto& b : src) b = static_cast<uint8_t>(rng());
      std::vector<uint8_t> top(bytes / 2), bottom(bytes / 2), frame(bytes, 0);
      const int s = sign * int(step);
      if (planar) {
        ASSERT_EQ(OrvImage::GetFieldYUV420(src.data(), top.data(), top.size(), 12, h, s, true), 0u);
        ASSERT_EQ(
            OrvImage::GetFieldYUV420(src.data(), bottom.data(), bottom.size(), 12, h, s, false),
            0u);
        ASSERT_EQ(OrvImage::MakeFrameYUV420(top.data(), bottom.data(), frame.data(), frame.size(),
                                            12, h, s),
                  0u);
      } else {
        ASSERT_EQ(OrvImage::GetFieldRGB32(src.data(), top.data(), top.size(), 3, h, s, true), 0u);
        ASSERT_EQ(OrvImage::GetFieldRGB32(src.data(), bottom.data(), bottom.size(), 3, h, s, false),
                  0u);
        ASSERT_EQ(OrvImage::MakeFrameRGB32(top.data(), bottom.data(), frame.data(), frame.size(), 3,
                                           h, s),
                  0u);
      }
      EXPECT_EQ(frame, src) << "planar " << planar << " sign " << sign;
    }
  }
}

TEST(FieldSwap, InPlaceDownwardShift) {
  const size_t step = 4, h = 6;
  auto p = NumberedLines(step, h);
  ASSERT_EQ(OrvImage::FieldSwapRGB32(p.data(), p.data(), p.size(), 1, h, step,
                                     OrvImage::SCAN_TOP_FIELD_FIRST),
            0u);
  // Line 0 holds what line 1 held, line 1 what line 0 held, then n holds n - 1.
  const uint8_t want[6] = {2, 1, 2, 3, 4, 5};
  for (size_t y = 0; y < h; ++y) EXPECT_EQ(LineTag(p, step, y), want[y]) << y;
}

TEST(FieldSwap, UpwardShiftAndPlanarPlanesAndRefusal) {
  const size_t step = 8, h = 8;
  auto src = NumberedLines(step, h + h / 2);  // Y lines 1..8, chroma tags 9..12 (4-byte lines)
  std::vector<uint8_t> dst(src.size(), 0);
  ASSERT_EQ(OrvImage::FieldSwapYUV420(src.data(), dst.data(), dst.size(), 8, h, -int(step),
                                      OrvImage::SCAN_TOP_FIELD_FIRST),
            0u);
  // Upward for top-first bottom-up: n gets n + 1; the last gets line h - 3 of dst.
  for (size_t y = 0; y + 1 < h; ++y) EXPECT_EQ(LineTag(dst, step, y), y + 2);
  EXPECT_EQ(LineTag(dst, step, h - 1), LineTag(dst, step, h - 3));
  // Chroma planes (lines of 4 bytes, 4 lines each) shift on their own.
  const uint8_t* cb = dst.data() + step * h;
  EXPECT_EQ(cb[0], src[step * h + 4]);
  EXPECT_EQ(cb[3 * 4], cb[1 * 4]);
  EXPECT_EQ(OrvImage::FieldSwapYUY2(src.data(), dst.data(), dst.size(), 4, h, 8,
                                    static_cast<OrvImage::SCAN_TYPE>(3)),
            3u);
}

TEST(FieldSwap, WritesStayInsideDstSize) {
  const size_t step = 8, h = 6;
  auto src = NumberedLines(step, h);
  std::vector<uint8_t> dst(step * h + 8, 0xEE);
  ASSERT_EQ(OrvImage::FieldSwapYUY2(src.data(), dst.data(), step * 3, 4, h, step,
                                    OrvImage::SCAN_BOTTOM_FIELD_FIRST),
            0u);
  for (size_t i = step * 3; i < dst.size(); ++i) ASSERT_EQ(dst[i], 0xEE);
}

TEST(DeInterlace, LineDoubleKeepsEarlierFieldResizeKeepsLater) {
  const size_t step = 8, h = 6;
  auto src = NumberedLines(step, h);
  std::vector<uint8_t> dst(src.size(), 0);
  ASSERT_EQ(OrvImage::DeInterlaceRGB24(
                src.data(), dst.data(), dst.size(), 2, h, step, OrvImage::SCAN_TOP_FIELD_FIRST,
                OrvImage::DEINTERLACE_LINE_DOUBLE, OrvImage::INTERPOLATION_LINEAR),
            0u);
  for (size_t y = 0; y < h; ++y) EXPECT_EQ(LineTag(dst, step, y), (y & ~size_t(1)) + 1) << y;

  ASSERT_EQ(OrvImage::DeInterlaceRGB24(
                src.data(), dst.data(), dst.size(), 2, h, step, OrvImage::SCAN_TOP_FIELD_FIRST,
                OrvImage::DEINTERLACE_FIELD_RESIZE, OrvImage::INTERPOLATION_NEAREST),
            0u);
  for (size_t y = 0; y < h; ++y) EXPECT_EQ(LineTag(dst, step, y) % 2, 0) << "odd memory lines";

  // In place, bottom-first top-down: the odd lines are the earlier field.
  auto p = NumberedLines(step, h);
  ASSERT_EQ(OrvImage::DeInterlaceYUY2(
                p.data(), p.data(), p.size(), 4, h, step, OrvImage::SCAN_BOTTOM_FIELD_FIRST,
                OrvImage::DEINTERLACE_LINE_DOUBLE, OrvImage::INTERPOLATION_LINEAR),
            0u);
  for (size_t y = 0; y < h; ++y) EXPECT_EQ(LineTag(p, step, y), (y | 1) + 1) << y;
}

TEST(DeInterlace, PlanarOddPairChromaLeftOver) {
  // Height 6: one Y quad, one extra pair; chroma planes of 3 lines, one left over.
  const size_t w = 8, h = 6;
  auto src = NumberedLines(w, h + h / 2);
  for (bool even : {true, false}) {
    std::vector<uint8_t> dst(src.size(), 0);
    ASSERT_EQ(OrvImage::DeInterlaceYUV420(
                  src.data(), dst.data(), dst.size(), w, h, int(w),
                  even ? OrvImage::SCAN_TOP_FIELD_FIRST : OrvImage::SCAN_BOTTOM_FIELD_FIRST,
                  OrvImage::DEINTERLACE_LINE_DOUBLE, OrvImage::INTERPOLATION_LINEAR),
              0u);
    for (size_t y = 0; y < h; ++y) {
      EXPECT_EQ(LineTag(dst, w, y), (even ? (y & ~size_t(1)) : (y | 1)) + 1);
    }
    const uint8_t* cb = dst.data() + w * h;  // 3 lines of 4 bytes
    const uint8_t* srcCb = src.data() + w * h;
    EXPECT_EQ(cb[2 * 4], even ? srcCb[2 * 4] : 0) << "left-over chroma line";
  }
}

TEST(DeInterlace, ProgressiveCopiesAndBadValues) {
  const size_t step = 8, h = 4;
  auto src = NumberedLines(step, h);
  std::vector<uint8_t> dst(src.size(), 0);
  ASSERT_EQ(OrvImage::DeInterlaceRGB32(
                src.data(), dst.data(), dst.size(), 2, h, step, OrvImage::SCAN_PROGRESSIVE,
                OrvImage::DEINTERLACE_LINE_DOUBLE, OrvImage::INTERPOLATION_LINEAR),
            0u);
  EXPECT_EQ(dst, src);
  std::vector<uint8_t> untouched(src.size(), 7);
  EXPECT_EQ(OrvImage::DeInterlaceRGB32(src.data(), untouched.data(), untouched.size(), 2, h, step,
                                       OrvImage::SCAN_TOP_FIELD_FIRST,
                                       static_cast<OrvImage::DEINTERLACE_MODE>(5),
                                       OrvImage::INTERPOLATION_LINEAR),
            0u);
  for (uint8_t b : untouched) ASSERT_EQ(b, 7);
  EXPECT_EQ(OrvImage::DeInterlaceRGB32(
                nullptr, dst.data(), dst.size(), 2, h, step, OrvImage::SCAN_TOP_FIELD_FIRST,
                OrvImage::DEINTERLACE_LINE_DOUBLE, OrvImage::INTERPOLATION_LINEAR),
            3u);
}

TEST(BandSearch, CheckColourRefusesJumps) {
  // 100 pixels, samples at 10, 20, ..., 100 (the last clamped to 99).
  std::vector<uint8_t> line(100, 50), other(100, 200);
  line[30] = 250;  // the spot and the sample after it differ by 30 or more
  unsigned char c1 = 0, c2 = 0;
  OrvImageTestAccess::CheckColours(0, line.data(), other.data(), 100, c1, c2);
  EXPECT_EQ(c1, 50);
  EXPECT_EQ(c2, 200);
  // A difference of exactly 30 is refused: 50, 80 alternate -> only s1 counts
  // until a pair within 30 appears.
  std::vector<uint8_t> alt(100);
  for (int k = 1; k <= 10; ++k) alt[k == 10 ? 99 : k * 10] = (k % 2) ? 50 : 80;
  OrvImageTestAccess::CheckColours(0, alt.data(), other.data(), 100, c1, c2);
  EXPECT_EQ(c1, 50);
  // RGB luma (59 G + 30 R + 11 B) / 100.
  std::vector<uint8_t> rgb(3 * 40);
  for (size_t i = 0; i < rgb.size(); i += 3) {
    rgb[i] = 100;
    rgb[i + 1] = 200;
    rgb[i + 2] = 50;
  }
  OrvImageTestAccess::CheckColours(2, rgb.data(), rgb.data(), 40, c1, c2);
  EXPECT_EQ(c1, (59 * 200 + 30 * 50 + 11 * 100) / 100);
}

TEST(BandSearch, ChangeLineWalk) {
  unsigned char lines[64] = {};
  unsigned char out[64] = {};
  unsigned char *s1 = nullptr, *s2 = nullptr, *d1 = nullptr, *d2 = nullptr;
  bool inBand = true, pastTop = false;
  const unsigned long width = 720;  // flat limit 6120
  // Line 0 not flat: no top band, nothing taken.
  OrvImageTestAccess::CheckChangeLine(lines, out, width, 8, 0, 6121, 0, 16, 16, 16, inBand, pastTop,
                                      &s1, &s2, &d1, &d2);
  EXPECT_TRUE(pastTop);
  EXPECT_FALSE(inBand);
  EXPECT_EQ(s1, nullptr);
  // A sum of exactly 6120 is flat; a flat pair of one colour in the middle
  // changes nothing; a second line that is not flat drops what was found.
  OrvImageTestAccess::CheckChangeLine(lines + 16, out + 16, width, 8, 2, 6120, 6120, 16, 50, 16,
                                      inBand, pastTop, &s1, &s2, &d1, &d2);
  EXPECT_TRUE(inBand);
  EXPECT_EQ(s1, lines + 16);
  EXPECT_EQ(s2, lines + 24);
  EXPECT_EQ(d2, out + 24);
  OrvImageTestAccess::CheckChangeLine(lines + 32, out + 32, width, 8, 4, 0, 7000, 16, 16, 16,
                                      inBand, pastTop, &s1, &s2, &d1, &d2);
  EXPECT_FALSE(inBand);
  EXPECT_EQ(s1, nullptr);
  EXPECT_EQ(d2, nullptr);
  // Top band ending by colour: the seam above is taken.
  inBand = true;
  pastTop = false;
  OrvImageTestAccess::CheckChangeLine(lines + 16, out + 16, width, 8, 2, 0, 0, 100, 100, 16, inBand,
                                      pastTop, &s1, &s2, &d1, &d2);
  EXPECT_TRUE(pastTop);
  EXPECT_EQ(s2, lines + 8);
  EXPECT_EQ(d2, out + 8);
  // Colours differing by exactly 30 are alike: the band goes on.
  inBand = true;
  pastTop = false;
  s1 = nullptr;
  OrvImageTestAccess::CheckChangeLine(lines + 16, out + 16, width, 8, 2, 0, 0, 46, 16, 16, inBand,
                                      pastTop, &s1, &s2, &d1, &d2);
  EXPECT_FALSE(pastTop);
  EXPECT_EQ(s1, nullptr);
}

}  // namespace
