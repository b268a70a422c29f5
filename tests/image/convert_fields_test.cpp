// Interlaced pictures: field runs keep each field's chroma on its own lines,
// and conversions of one field leave the other field's lines as they were.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <vector>

#include "image/conversion_access.h"
#include "image/convert_test_support.h"

namespace orv_test {
namespace {

using orv::image::ConversionAccess;

// A 4:2:0 picture (step = width) whose chroma lines alternate between two
// colours: even chroma lines belong to the top field, odd ones to the bottom.
std::vector<uint8_t> StripedChroma(int w, int h, uint8_t cbEven, uint8_t cbOdd) {
  std::vector<uint8_t> p(w * h + 2 * (w / 2) * (h / 2), 128);
  std::fill(p.begin(), p.begin() + w * h, 120);
  uint8_t* cb = p.data() + w * h;
  for (int line = 0; line < h / 2; ++line) {
    std::fill(cb + line * (w / 2), cb + (line + 1) * (w / 2), (line & 1) ? cbOdd : cbEven);
  }
  return p;
}

TEST(ConvertFields, InterlacedChromaServesItsOwnFieldOnly) {
  const int w = 8, h = 8;
  auto src = StripedChroma(w, h, 200, 60);
  std::vector<uint8_t> interlaced(4 * w * h), progressive(4 * w * h);
  unsigned long size = interlaced.size();
  ASSERT_EQ(0u,
            OrvImage::YUV420ToRGB32(src.data(), interlaced.data(), &size, w, h, w, 4 * w, false));
  size = progressive.size();
  ASSERT_EQ(0u,
            OrvImage::YUV420ToRGB32(src.data(), progressive.data(), &size, w, h, w, 4 * w, true));
  auto blue = [&](const std::vector<uint8_t>& p, int line) { return p[4 * w * line]; };
  // Interlaced: every even line takes the top field's chroma (blue-ish), every
  // odd line the bottom field's (yellow-ish).
  for (int line = 0; line < h; ++line) {
    if (line & 1) {
      EXPECT_LT(blue(interlaced, line), 100) << line;
    } else {
      EXPECT_GT(blue(interlaced, line), 200) << line;
    }
  }
  // Progressive: each chroma line serves the two lines beneath it.
  for (int line = 0; line < h; ++line) {
    if ((line / 2) & 1) {
      EXPECT_LT(blue(progressive, line), 100) << line;
    } else {
      EXPECT_GT(blue(progressive, line), 200) << line;
    }
  }
}

TEST(ConvertFields, ShiftedStraightChromaStaysInItsField) {
  const int w = 8, h = 8;
  auto src = StripedChroma(w, h, 200, 60);
  std::vector<uint8_t> out(3 * w * h);
  unsigned long size = out.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToTavoShiftedStraightRGB24(src.data(), out.data(), &size, w, h, w,
                                                           3 * w, false));
  for (int line = 0; line < h; ++line) {
    const uint8_t blue = out[3 * w * line];
    if (line & 1) {
      EXPECT_LT(blue, 100) << line;
    } else {
      EXPECT_GT(blue, 200) << line;
    }
  }
}

TEST(ConvertFields, OneFieldOfRgb24LeavesTheOtherLines) {
  const int w = 8, h = 8;
  Picture src(PictureBytes(OrvImage::CF_YUV420, w, h, w));
  src.Randomize(9);
  std::vector<uint8_t> frame(3 * w * h);
  unsigned long size = frame.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToRGB24(src.data(), frame.data(), &size, w, h, w, 3 * w, false));
  struct Case {
    OrvImage::FIELD_TYPE field;
    int srcSign;
    int dstSign;
    int writtenParity;  // memory lines of dst that receive the field
  };
  // The field is chosen in display terms, so a bottom-up source swaps the
  // memory lines; a turned result lands on the other parity of an even height.
  for (const Case& c :
       {Case{OrvImage::FIELD_TOP, 1, 1, 0}, Case{OrvImage::FIELD_BOTTOM, 1, 1, 1},
        Case{OrvImage::FIELD_TOP, -1, -1, 1}, Case{OrvImage::FIELD_BOTTOM, -1, -1, 0},
        Case{OrvImage::FIELD_TOP, 1, -1, 1}}) {
    SCOPED_TRACE(::testing::Message() << c.field << " " << c.srcSign << " " << c.dstSign);
    std::vector<uint8_t> dst(3 * w * h, 0x3C);
    size = dst.size();
    ASSERT_EQ(0u,
              ConversionAccess::YUV420ToRGB24(src.data(), dst.data(), &size, w, h, c.srcSign * w,
                                              c.dstSign * 3 * w, false, c.field));
    const bool turned = c.srcSign != c.dstSign;
    for (int line = 0; line < h; ++line) {
      const auto got =
          std::vector<uint8_t>(dst.begin() + 3 * w * line, dst.begin() + 3 * w * (line + 1));
      if ((line & 1) == c.writtenParity) {
        const int from = turned ? h - 1 - line : line;
        EXPECT_EQ(
            std::vector<uint8_t>(frame.begin() + 3 * w * from, frame.begin() + 3 * w * (from + 1)),
            got)
            << line;
      } else {
        EXPECT_EQ(std::vector<uint8_t>(3 * w, 0x3C), got) << line;
      }
    }
  }
  // progressive beats field.
  std::vector<uint8_t> whole(3 * w * h, 0x3C), viaField(3 * w * h, 0x3C);
  size = whole.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToRGB24(src.data(), whole.data(), &size, w, h, w, 3 * w, true));
  size = viaField.size();
  ASSERT_EQ(0u, ConversionAccess::YUV420ToRGB24(src.data(), viaField.data(), &size, w, h, w, 3 * w,
                                                true, OrvImage::FIELD_TOP));
  EXPECT_EQ(whole, viaField);
}

TEST(ConvertFields, OneFieldOfYuy2LeavesTheOtherLines) {
  const int w = 8, h = 8;
  Picture src(PictureBytes(OrvImage::CF_YUV420, w, h, w));
  src.Randomize(10);
  struct Case {
    OrvImage::FIELD_TYPE field;
    int srcSign;
    int dstSign;
    int srcParity;  // memory lines of the source that are converted
  };
  for (const Case& c : {Case{OrvImage::FIELD_TOP, 1, 1, 0}, Case{OrvImage::FIELD_BOTTOM, 1, 1, 1},
                        Case{OrvImage::FIELD_TOP, -1, -1, 1}, Case{OrvImage::FIELD_TOP, 1, -1, 0},
                        Case{OrvImage::FIELD_BOTTOM, -1, 1, 0}}) {
    SCOPED_TRACE(::testing::Message() << c.field << " " << c.srcSign << " " << c.dstSign);
    std::vector<uint8_t> dst(2 * w * h, 0x3C);
    unsigned long size = dst.size();
    ASSERT_EQ(0u, ConversionAccess::YUV420ToCCIR601YUY2(src.data(), dst.data(), &size, w, h,
                                                        c.srcSign * w, c.dstSign * 2 * w, false,
                                                        c.field, nullptr));
    const bool turned = c.srcSign != c.dstSign;
    for (int line = 0; line < h; ++line) {
      const int from = turned ? h - 1 - line : line;
      for (int x = 0; x < w; ++x) {
        const uint8_t luma = dst[2 * w * line + 2 * x];
        if ((from & 1) == c.srcParity) {
          // YUY2 carries the luma of its source line unchanged.
          EXPECT_EQ(src[w * from + x], luma) << line;
        } else {
          EXPECT_EQ(0x3C, luma) << line;
          EXPECT_EQ(0x3C, dst[2 * w * line + 2 * x + 1]) << line;
        }
      }
    }
  }
}

// A YUY2 picture whose chroma bytes name their line: Cb = 10 x line + 1,
// Cr = 10 x line + 2.
std::vector<uint8_t> NumberedYuy2(int w, int h) {
  std::vector<uint8_t> p(2 * w * h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w / 2; ++x) {
      uint8_t* q = p.data() + 2 * w * y + 4 * x;
      q[0] = static_cast<uint8_t>(16 + y);
      q[1] = static_cast<uint8_t>(10 * y + 1);
      q[2] = static_cast<uint8_t>(17 + y);
      q[3] = static_cast<uint8_t>(10 * y + 2);
    }
  }
  return p;
}

TEST(ConvertFields, Yuy2ToYv12TakesWholeChromaLines) {
  const int w = 4, h = 8;
  auto src = NumberedYuy2(w, h);
  struct Case {
    bool progressive;
    OrvImage::FIELD_TYPE field;
    std::vector<int> lines;  // work line per output chroma line; -1 untouched
  };
  const std::vector<Case> cases = {
      {true, OrvImage::FIELD_FRAME, {1, 3, 5, 7}},
      {false, OrvImage::FIELD_FRAME, {2, 3, 6, 7}},
      {false, OrvImage::FIELD_TOP, {2, -1, 6, -1}},
      {false, OrvImage::FIELD_BOTTOM, {-1, 3, -1, 7}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.progressive << " " << c.field);
    std::vector<uint8_t> dst(w * h + 2 * (w / 2) * (h / 2), 0xEE);
    unsigned long size = dst.size();
    std::vector<OrvMemory*> work;
    ASSERT_EQ(0u, ConversionAccess::CCIR601YUY2ToYV12(src.data(), dst.data(), &size, w, h, 2 * w, w,
                                                      c.progressive, c.field, &work));
    EXPECT_EQ(2u, work.size());
    for (int y = 0; y < h; ++y) EXPECT_EQ(16 + y, dst[w * y]);
    const uint8_t* cr = dst.data() + w * h;      // first chroma plane
    const uint8_t* cb = cr + (w / 2) * (h / 2);  // second chroma plane
    for (int k = 0; k < h / 2; ++k) {
      const int line = c.lines[k];
      EXPECT_EQ(line < 0 ? 0xEE : 10 * line + 1, cb[(w / 2) * k]) << k;
      EXPECT_EQ(line < 0 ? 0xEE : 10 * line + 2, cr[(w / 2) * k]) << k;
    }
    // The work planes are kept for the next frame.
    size = dst.size();
    ASSERT_EQ(0u, ConversionAccess::CCIR601YUY2ToYV12(src.data(), dst.data(), &size, w, h, 2 * w, w,
                                                      c.progressive, c.field, &work));
    for (OrvMemory* m : work) delete m;
  }
}

TEST(ConvertFields, Yuv420ToYv12OneFieldMovesOnlyItsLines) {
  const int w = 4, h = 8;
  Picture src(PictureBytes(OrvImage::CF_YUV420, w, h, w));
  src.Randomize(21);
  std::vector<uint8_t> dst(src.size(), 0xEE);
  unsigned long size = dst.size();
  ASSERT_EQ(0u, ConversionAccess::YUV420ToYV12(src.data(), dst.data(), &size, w, h, w, w,
                                               OrvImage::FIELD_BOTTOM));
  const int c = w / 2, planeBytes = c * (h / 2);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      EXPECT_EQ((y & 1) ? src[w * y + x] : 0xEE, dst[w * y + x]) << x << "," << y;
    }
  }
  for (int k = 0; k < h / 2; ++k) {
    for (int x = 0; x < c; ++x) {
      // Source Cb (first plane) goes to the second plane, Cr to the first.
      EXPECT_EQ((k & 1) ? src[w * h + c * k + x] : 0xEE, dst[w * h + planeBytes + c * k + x]);
      EXPECT_EQ((k & 1) ? src[w * h + planeBytes + c * k + x] : 0xEE, dst[w * h + c * k + x]);
    }
  }
}

TEST(ConvertFields, Yuv420ToYuy2RepeatsChromaLines) {
  const int w = 4, h = 4;
  // Y bytes 0..15, Cb 100.., Cr 200..
  std::vector<uint8_t> src(w * h + 2 * (w / 2) * (h / 2));
  for (size_t i = 0; i < static_cast<size_t>(w * h); ++i) src[i] = static_cast<uint8_t>(i);
  for (int i = 0; i < 4; ++i) {
    src[w * h + i] = static_cast<uint8_t>(100 + i);
    src[w * h + 4 + i] = static_cast<uint8_t>(200 + i);
  }
  std::vector<uint8_t> dst(2 * w * h);
  unsigned long size = dst.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToCCIR601YUY2(src.data(), dst.data(), &size, w, h, w, 2 * w, true));
  const std::vector<uint8_t> expected = {0,  100, 1,  200, 2,  101, 3,  201,  // line 0
                                         4,  100, 5,  200, 6,  101, 7,  201,  // line 1
                                         8,  102, 9,  202, 10, 103, 11, 203,  // line 2
                                         12, 102, 13, 202, 14, 103, 15, 203};
  EXPECT_EQ(expected, dst);
  // YV12 into YUY2A, interlaced: chroma line 0 serves Y lines 0 and 2, chroma
  // line 1 Y lines 1 and 3 (the YV12 planes are Cr first).
  std::vector<uint8_t> yv12(src);
  std::copy(src.begin() + w * h, src.begin() + w * h + 4, yv12.begin() + w * h + 4);
  std::copy(src.begin() + w * h + 4, src.end(), yv12.begin() + w * h);
  std::vector<uint8_t> yuy2a(2 * w * h + 4 * h);
  size = yuy2a.size();
  ASSERT_EQ(0u, OrvImage::YV12ToYUY2A(yv12.data(), yuy2a.data(), &size, w, h, w, 2 * w, false));
  const std::vector<uint8_t> fields = {0,  100, 1,  200, 2,  101, 3,  201,  // Y line 0, chroma 0
                                       4,  102, 5,  202, 6,  103, 7,  203,  // Y line 1, chroma 1
                                       8,  100, 9,  200, 10, 101, 11, 201,  // Y line 2, chroma 0
                                       12, 102, 13, 202, 14, 103, 15, 203};
  EXPECT_EQ(fields, std::vector<uint8_t>(yuy2a.begin(), yuy2a.begin() + 2 * w * h));
  EXPECT_EQ(std::vector<uint8_t>(4 * h, 255),
            std::vector<uint8_t>(yuy2a.begin() + 2 * w * h, yuy2a.end()));
}

TEST(ConvertFields, RgbToYv12DropsTheOddLastLine) {
  const int w = 4, h = 5;
  std::vector<uint8_t> src(3 * w * h, 0);
  // The last line is white, the others black.
  std::fill(src.begin() + 3 * w * (h - 1), src.end(), 255);
  std::vector<uint8_t> dst(w * h + 2 * (w / 2) * h / 2 + 8, 0xEE);
  unsigned long size = dst.size();
  ASSERT_EQ(0u, OrvImage::RGB24ToYV12(src.data(), dst.data(), &size, w, h, 3 * w, w, true));
  for (int y = 0; y < h - 1; ++y) EXPECT_NEAR(16, dst[w * y], 1) << y;
  EXPECT_EQ(0xEE, dst[w * (h - 1)]);  // four lines converted, the fifth left
}

}  // namespace
}  // namespace orv_test
