// Mask copy: still pixels restored into the chosen field, letterbox seams,
// bad input, and every processor form of the pixel test against the plain one.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "foundation/cpu_info.h"
#include "image/mask_copy_rows.h"

namespace {

using Field = OrvImage::FIELD_TYPE;
constexpr Field kFrame = OrvImage::FIELD_FRAME;
constexpr Field kTop = OrvImage::FIELD_TOP;
constexpr Field kBottom = OrvImage::FIELD_BOTTOM;

// One family of the mask copy: bytes of a pixel, how a grey value is written
// into a pixel, and which bytes of a pixel the copy may replace.
struct Family {
  const char* name;
  int bytes;
  unsigned long (*copy)(unsigned char* const, unsigned char* const, unsigned char*, unsigned long,
                        unsigned long, unsigned long, int, Field);
  bool (*replaced)(int byteInPixel);
};

bool All(int) { return true; }
bool FirstOnly(int b) { return b == 0; }
bool Colour(int b) { return b < 3; }

const Family kFamilies[] = {
    {"YUV420", 1, OrvImage::MaskCopyYUV420, All},
    {"YUY2", 2, OrvImage::MaskCopyYUY2, FirstOnly},
    {"RGB24", 3, OrvImage::MaskCopyRGB24, All},
    {"RGB32", 4, OrvImage::MaskCopyRGB32, Colour},
};

// A picture of `lines` display lines of `width` pixels with a positive or
// negative step; YUV420 carries a chroma block behind its Y plane.
struct Picture {
  const Family& f;
  unsigned long width;
  unsigned long height;
  int step;
  std::vector<uint8_t> bytes;
  Picture(const Family& family, unsigned long w, unsigned long h, int sign, uint8_t fill)
      : f(family), width(w), height(h) {
    const size_t line = static_cast<size_t>(f.bytes) * w + 4;  // padded lines
    step = sign * static_cast<int>(line);
    const size_t size = line * h + (f.bytes == 1 ? line / 2 * h : 0);
    bytes.assign(size, fill);
  }
  size_t line() const { return static_cast<size_t>(std::abs(step)); }
  // Memory offset of display line y.
  size_t Offset(unsigned long y) const { return (step > 0 ? y : height - 1 - y) * line(); }
  uint8_t* Line(unsigned long y) { return bytes.data() + Offset(y); }
  // Writes grey value v into display pixel (x, y); the other bytes of a YUY2
  // or RGB32 pixel get `other`.
  void Set(unsigned long x, unsigned long y, int v, uint8_t other) {
    uint8_t* p = Line(y) + static_cast<size_t>(f.bytes) * x;
    switch (f.bytes) {
      case 1:
        p[0] = static_cast<uint8_t>(v);
        break;
      case 2:
        p[0] = static_cast<uint8_t>(v);
        p[1] = other;
        break;
      default:
        p[0] = p[1] = p[2] = static_cast<uint8_t>(v);  // luma of a grey is the grey
        if (f.bytes == 4) p[3] = other;
    }
  }
  void FillLine(unsigned long y, int (*value)(unsigned long x), uint8_t other) {
    for (unsigned long x = 0; x < width; ++x) Set(x, y, value(x), other);
  }
  unsigned long Run(Picture& a, Picture& b, Field field, unsigned long dstSize = ~0ul) {
    return f.copy(a.bytes.data(), b.bytes.data(), bytes.data(),
                  dstSize == ~0ul ? bytes.size() : dstSize, width, height, step, field);
  }
};

// Line content that is not flat and whose check colour is 150, and another
// that differs from it by 100 at every pixel.
int ContentA(unsigned long x) { return x % 2 ? 250 : 150; }
int ContentB(unsigned long x) { return x % 2 ? 150 : 250; }
int Black(unsigned long) { return 16; }
int Grey40(unsigned long) { return 40; }

// True when display line y of `d` equals that line of `a` in every replaced
// byte and equals `before` everywhere else.
bool LineRestored(Picture& d, Picture& a, const std::vector<uint8_t>& before, unsigned long y) {
  const uint8_t* pd = d.Line(y);
  const uint8_t* pa = a.Line(y);
  const uint8_t* pb = before.data() + d.Offset(y);
  for (unsigned long i = 0; i < d.width * d.f.bytes; ++i) {
    const uint8_t want = d.f.replaced(static_cast<int>(i % d.f.bytes)) ? pa[i] : pb[i];
    if (pd[i] != want) return false;
  }
  return true;
}

// True when display line y of `d` is A's whole line (an edge-line copy moves
// every byte of the line, chroma and fourth bytes too).
bool LineCopied(Picture& d, Picture& a, unsigned long y) {
  return std::memcmp(d.Line(y), a.Line(y), d.width * d.f.bytes) == 0;
}

bool LineUntouched(Picture& d, const std::vector<uint8_t>& before, unsigned long y) {
  return std::memcmp(d.Line(y), before.data() + d.Offset(y), d.line()) == 0;
}

// A letterboxed pair: flat black bands over lines [0, topEnd) and
// [bottomStart, bottomEnd), content elsewhere; B differs from A at every pixel
// by 24 (bands) or 100 (content), so no pixel is still.
void Letterbox(Picture& a, Picture& b, unsigned long topEnd, unsigned long bottomStart,
               unsigned long bottomEnd) {
  for (unsigned long y = 0; y < a.height; ++y) {
    const bool band = y < topEnd || (y >= bottomStart && y < bottomEnd);
    a.FillLine(y, band ? Black : ContentA, 128);
    b.FillLine(y, band ? Grey40 : ContentB, 90);
  }
}

// Expects exactly the display lines `restored` to be A's, the rest untouched.
void ExpectOnlyLines(Picture& d, Picture& a, const std::vector<uint8_t>& before,
                     std::vector<unsigned long> restored) {
  for (unsigned long y = 0; y < d.height; ++y) {
    bool want = false;
    for (unsigned long r : restored) want |= r == y;
    if (want) {
      EXPECT_TRUE(LineCopied(d, a, y)) << d.f.name << " line " << y;
    } else {
      EXPECT_TRUE(LineUntouched(d, before, y)) << d.f.name << " line " << y;
    }
  }
}

TEST(MaskCopy, IdenticalSourcesRestoreTheChosenFieldCompletely) {
  std::mt19937 rng(7);
  for (const Family& f : kFamilies) {
    for (int sign : {1, -1}) {
      for (Field field : {kFrame, kTop, kBottom}) {
        Picture a(f, 37, 26, sign, 0), d(f, 37, 26, sign, 0x33);
        for (auto& v : a.bytes) v = static_cast<uint8_t>(rng());
        Picture b = a;
        const std::vector<uint8_t> before = d.bytes;
        ASSERT_EQ(d.Run(a, b, field), 0u);
        for (unsigned long y = 0; y < d.height; ++y) {
          const bool chosen = field == kFrame || (field == kTop) == (y % 2 == 0);
          // Noise is never flat: lines 2 and 1 are the seam above pair 1 and
          // are copied whole.
          if (chosen && (y == 1 || y == 2)) {
            EXPECT_TRUE(LineCopied(d, a, y)) << f.name << " " << sign << " " << y;
          } else if (chosen) {
            EXPECT_TRUE(LineRestored(d, a, before, y)) << f.name << " " << sign << " " << y;
          } else {
            EXPECT_TRUE(LineUntouched(d, before, y)) << f.name << " " << sign << " " << y;
          }
        }
        if (f.bytes == 1) {  // the chroma planes of YUV420 are not touched
          const size_t chroma = d.line() * d.height;
          EXPECT_EQ(0, std::memcmp(d.bytes.data() + chroma, before.data() + chroma,
                                   d.bytes.size() - chroma));
        }
      }
    }
  }
}

TEST(MaskCopy, ADifferenceOfFiveIsNotStill) {
  // Content lines (never flat) where B differs from A by 4, 5, -4, -5 in turn
  // on the first line of each pair, and by 0 on the second. Only lines 1 and 2
  // are restored whole (the seam above pair 1).
  const int delta[4] = {4, 5, -4, -5};
  for (const Family& f : kFamilies) {
    Picture a(f, 40, 24, 1, 0), b(f, 40, 24, 1, 0), d(f, 40, 24, 1, 0x33);
    for (unsigned long y = 0; y < a.height; ++y) {
      for (unsigned long x = 0; x < a.width; ++x) {
        const int v = x % 2 ? 200 : 100;
        a.Set(x, y, v, 128);
        b.Set(x, y, y % 2 ? v : v + delta[x % 4], 7);
      }
    }
    const std::vector<uint8_t> before = d.bytes;
    ASSERT_EQ(d.Run(a, b, kFrame), 0u);
    for (unsigned long y = 3; y < d.height; ++y) {
      for (unsigned long x = 0; x < d.width; ++x) {
        const bool still = delta[x % 4] == 4 || delta[x % 4] == -4;
        const uint8_t* pd = d.Line(y) + f.bytes * x;
        const uint8_t want = still ? a.Line(y)[f.bytes * x] : 0x33;
        EXPECT_EQ(pd[0], want) << f.name << " line " << y << " pixel " << x;
      }
    }
  }
}

TEST(MaskCopy, NoBandNotesTheSeamAboveThePairOne) {
  // Content over the whole frame: the search runs at pair 1, whose first line
  // is not flat, and notes lines 2 and 1. Nothing else is found.
  for (const Family& f : kFamilies) {
    for (Field field : {kFrame, kTop, kBottom}) {
      Picture a(f, 40, 60, 1, 0), b(f, 40, 60, 1, 0), d(f, 40, 60, 1, 0x33);
      Letterbox(a, b, 0, 60, 60);
      const std::vector<uint8_t> before = d.bytes;
      ASSERT_EQ(d.Run(a, b, field), 0u);
      if (field == kFrame) ExpectOnlyLines(d, a, before, {1, 2});
      if (field == kTop) ExpectOnlyLines(d, a, before, {2});
      if (field == kBottom) ExpectOnlyLines(d, a, before, {1});
    }
  }
}

TEST(MaskCopy, LetterboxGetsItsSeamsAtTheBandEdges) {
  // 60 pairs: a top band of 10 pairs, content, a bottom band of 10 pairs. The
  // top edge is found at pair 10 (seam lines 20 and 19), the search pauses up
  // to pair 40 and finds the bottom edge at pair 50 (lines 100 and 99).
  for (const Family& f : kFamilies) {
    for (int sign : {1, -1}) {
      for (Field field : {kFrame, kTop, kBottom}) {
        Picture a(f, 40, 120, sign, 0), b(f, 40, 120, sign, 0), d(f, 40, 120, sign, 0x33);
        Letterbox(a, b, 20, 100, 120);
        const std::vector<uint8_t> before = d.bytes;
        ASSERT_EQ(d.Run(a, b, field), 0u);
        if (field == kFrame) ExpectOnlyLines(d, a, before, {19, 20, 99, 100});
        if (field == kTop) ExpectOnlyLines(d, a, before, {20, 100});
        if (field == kBottom) ExpectOnlyLines(d, a, before, {19, 99});
      }
    }
  }
}

TEST(MaskCopy, SearchTakesUpNinePairsAboveTheMirroredEdge) {
  // The bottom band starts at line 80 (pair 40), inside the pause that lasts
  // to pair 40. The search takes up at pair 41, where the band is already
  // under way: its colour is unlike the one carried from pair 10, so the seam
  // is noted at lines 82 and 81 instead of the band's true edge.
  for (const Family& f : kFamilies) {
    Picture a(f, 40, 120, 1, 0), b(f, 40, 120, 1, 0), d(f, 40, 120, 1, 0x33);
    Letterbox(a, b, 20, 80, 120);
    const std::vector<uint8_t> before = d.bytes;
    ASSERT_EQ(d.Run(a, b, kFrame), 0u);
    ExpectOnlyLines(d, a, before, {19, 20, 81, 82});
  }
}

TEST(MaskCopy, BottomBandThatEndsEarlyIsDropped) {
  for (const Family& f : kFamilies) {
    Picture a(f, 40, 120, 1, 0), b(f, 40, 120, 1, 0), d(f, 40, 120, 1, 0x33);
    Letterbox(a, b, 20, 100, 110);  // content again over lines 110..119
    const std::vector<uint8_t> before = d.bytes;
    ASSERT_EQ(d.Run(a, b, kFrame), 0u);
    ExpectOnlyLines(d, a, before, {19, 20});
  }
}

TEST(MaskCopy, BrightFlatTopIsNotABandButBlackIs) {
  // A white top band is unlike the black that the walk starts from: the seam
  // above pair 1 is noted at once.
  for (const Family& f : kFamilies) {
    Picture a(f, 40, 60, 1, 0), b(f, 40, 60, 1, 0), d(f, 40, 60, 1, 0x33);
    Letterbox(a, b, 20, 60, 60);
    for (unsigned long y = 0; y < 20; ++y)
      a.FillLine(
          y, [](unsigned long) { return 235; }, 128);
    const std::vector<uint8_t> before = d.bytes;
    ASSERT_EQ(d.Run(a, b, kFrame), 0u);
    ExpectOnlyLines(d, a, before, {1, 2});
  }
}

TEST(MaskCopy, ShortPictureNeverPauses) {
  // Height 16: the pause would end before it starts, so the bottom edge at
  // pair 6 (lines 12 and 11) is found right after the top edge at pair 2.
  for (const Family& f : kFamilies) {
    Picture a(f, 40, 16, 1, 0), b(f, 40, 16, 1, 0), d(f, 40, 16, 1, 0x33);
    Letterbox(a, b, 4, 12, 16);
    const std::vector<uint8_t> before = d.bytes;
    ASSERT_EQ(d.Run(a, b, kFrame), 0u);
    ExpectOnlyLines(d, a, before, {3, 4, 11, 12});
  }
}

TEST(MaskCopy, OddLastLineIsNotVisited) {
  for (const Family& f : kFamilies) {
    Picture a(f, 9, 7, 1, 0), d(f, 9, 7, 1, 0x33);
    std::mt19937 rng(3);
    for (auto& v : a.bytes) v = static_cast<uint8_t>(rng());
    Picture b = a;
    const std::vector<uint8_t> before = d.bytes;
    ASSERT_EQ(d.Run(a, b, kFrame), 0u);
    for (unsigned long y = 0; y < 6; ++y) {
      EXPECT_TRUE(y == 1 || y == 2 ? LineCopied(d, a, y) : LineRestored(d, a, before, y));
    }
    EXPECT_TRUE(LineUntouched(d, before, 6)) << f.name;
  }
}

TEST(MaskCopy, StepZeroIsTheGenericStepBottomUpForRgb) {
  // RGB24 of width 10: generic step -32, so display line 0 is memory line 119.
  const Family& f = kFamilies[2];
  const unsigned long w = 10, h = 120;
  const size_t line = 32;
  std::vector<uint8_t> a(line * h), b(line * h), d(line * h, 0x33);
  auto memLine = [&](unsigned long y) { return (h - 1 - y) * line; };
  for (unsigned long y = 0; y < h; ++y) {
    const bool band = y < 20 || y >= 100;
    for (unsigned long x = 0; x < w; ++x) {
      std::memset(&a[memLine(y) + 3 * x], band ? 16 : ContentA(x), 3);
      std::memset(&b[memLine(y) + 3 * x], band ? 40 : ContentB(x), 3);
    }
  }
  const std::vector<uint8_t> before = d;
  ASSERT_EQ(f.copy(a.data(), b.data(), d.data(), d.size(), w, h, 0, kFrame), 0u);
  for (unsigned long y = 0; y < h; ++y) {
    const bool seam = y == 19 || y == 20 || y == 99 || y == 100;
    EXPECT_EQ(0, std::memcmp(&d[memLine(y)], seam ? &a[memLine(y)] : &before[memLine(y)], 30))
        << "line " << y;
  }
}

TEST(MaskCopy, SeamCopiesRespectDstSize) {
  for (const Family& f : kFamilies) {
    Picture a(f, 40, 120, 1, 0), b(f, 40, 120, 1, 0), d(f, 40, 120, 1, 0x33);
    Letterbox(a, b, 20, 100, 120);
    const std::vector<uint8_t> before = d.bytes;
    // Room for lines 0..20 only: the bottom seam does not fit and is not copied.
    ASSERT_EQ(d.Run(a, b, kFrame, d.line() * 21), 0u);
    ExpectOnlyLines(d, a, before, {19, 20});
    d.bytes = before;
    ASSERT_EQ(d.Run(a, b, kFrame, 0), 0u);
    ExpectOnlyLines(d, a, before, {});
  }
}

TEST(MaskCopy, PixelTestLeavesLinesPastDstSizeAlone) {
  // Identical sources, room for memory lines 0..9 and half of line 10: with a
  // positive step display lines 0..9 are restored, with a negative step the
  // last ten display lines; nothing is written past the room.
  for (const Family& f : kFamilies) {
    for (int sign : {1, -1}) {
      Picture a(f, 24, 30, sign, 0), d(f, 24, 30, sign, 0x33);
      std::mt19937 rng(11);
      for (auto& v : a.bytes) v = static_cast<uint8_t>(rng());
      Picture b = a;
      const std::vector<uint8_t> before = d.bytes;
      const size_t room = d.line() * 10 + d.line() / 2;
      ASSERT_EQ(d.Run(a, b, kFrame, room), 0u);
      EXPECT_EQ(0, std::memcmp(d.bytes.data() + room, before.data() + room, d.bytes.size() - room))
          << f.name;
      for (unsigned long y = 0; y < 30; ++y) {
        const bool fits = d.Offset(y) + d.line() <= room;
        if (!fits) {
          EXPECT_TRUE(LineUntouched(d, before, y)) << f.name << " " << sign << " " << y;
        } else if (y != 1 && y != 2) {
          EXPECT_TRUE(LineRestored(d, a, before, y)) << f.name << " " << sign << " " << y;
        }
      }
    }
  }
}

TEST(MaskCopy, BadInputAnswersThreeWithNothingWritten) {
  for (const Family& f : kFamilies) {
    Picture a(f, 16, 8, 1, 1), b(f, 16, 8, 1, 2), d(f, 16, 8, 1, 0x33);
    const std::vector<uint8_t> before = d.bytes;
    unsigned char* pa = a.bytes.data();
    unsigned char* pb = b.bytes.data();
    unsigned char* pd = d.bytes.data();
    const unsigned long n = d.bytes.size();
    EXPECT_EQ(f.copy(nullptr, pb, pd, n, 16, 8, d.step, kFrame), 3u);
    EXPECT_EQ(f.copy(pa, nullptr, pd, n, 16, 8, d.step, kFrame), 3u);
    EXPECT_EQ(f.copy(pa, pb, nullptr, n, 16, 8, d.step, kFrame), 3u);
    EXPECT_EQ(f.copy(pa, pb, pd, n, 16, 8, d.step, static_cast<Field>(3)), 3u);
    EXPECT_EQ(f.copy(pa, pb, pd, n, 16, 8, d.step, static_cast<Field>(-1)), 3u);
    EXPECT_EQ(f.copy(pa, pb, pd, n, 65536, 8, d.step, kFrame), 3u);
    EXPECT_EQ(f.copy(pa, pb, pd, n, 16, 70000, d.step, kFrame), 3u);
    EXPECT_EQ(f.copy(pa, pb, pd, n, 16, 8, f.bytes * 16 - 1, kFrame), 3u);  // short step
    EXPECT_EQ(f.copy(pa, pb, pd, n, 16, 8, INT32_MIN, kFrame), 3u);
    EXPECT_EQ(d.bytes, before) << f.name;
  }
}

// Every processor form of the pixel test against the plain form, with canary
// bytes behind each output line.
TEST(MaskCopyRows, EveryFormMatchesPlain) {
  using namespace orv::image;
  const orv::SimdLevel top = orv::DetectSimdLevel();
  const MaskRows& plain = MaskRowsFor(orv::SimdLevel::kPlain);
  std::mt19937 rng(2024);
  const int widths[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 1921};
  int levelsRun = 0;
  for (orv::SimdLevel level :
       {orv::SimdLevel::kSse2, orv::SimdLevel::kSsse3, orv::SimdLevel::kAvx2}) {
    if (level > top) continue;
    ++levelsRun;
    const MaskRows& form = MaskRowsFor(level);
    for (int kind = 0; kind < kMaskPixelKinds; ++kind) {
      const int bytes = kind == kMaskPlane ? 1 : kind == kMaskYuy2 ? 2 : kind == kMaskBgr ? 3 : 4;
      for (int width : widths) {
        const size_t n = static_cast<size_t>(bytes) * width;
        std::vector<uint8_t> a0(n), a1(n), b0(n), b1(n);
        for (size_t i = 0; i < n; ++i) {
          a0[i] = static_cast<uint8_t>(rng());
          a1[i] = static_cast<uint8_t>(rng());
          // B near A: differences of -6..6, so both sides of the limit occur.
          b0[i] =
              static_cast<uint8_t>(std::min(255, std::max(0, int(a0[i]) + int(rng() % 13) - 6)));
          b1[i] =
              static_cast<uint8_t>(std::min(255, std::max(0, int(a1[i]) + int(rng() % 13) - 6)));
        }
        const int c1 = static_cast<int>(rng() % 256), c2 = static_cast<int>(rng() % 256);
        for (int outputs = 0; outputs < 4; ++outputs) {
          std::vector<uint8_t> dp0(n + 16, 0x5A), dp1(n + 16, 0xA5);
          std::vector<uint8_t> df0 = dp0, df1 = dp1;
          uint32_t sp[2] = {7, 7}, sf[2] = {9, 9};
          const bool w0 = outputs & 1, w1 = outputs & 2;
          plain.row[kind](a0.data(), a1.data(), b0.data(), b1.data(), w0 ? dp0.data() : nullptr,
                          w1 ? dp1.data() : nullptr, width, c1, c2, sp);
          form.row[kind](a0.data(), a1.data(), b0.data(), b1.data(), w0 ? df0.data() : nullptr,
                         w1 ? df1.data() : nullptr, width, c1, c2, sf);
          ASSERT_EQ(dp0, df0) << "level " << int(level) << " kind " << kind << " width " << width;
          ASSERT_EQ(dp1, df1) << "level " << int(level) << " kind " << kind << " width " << width;
          ASSERT_EQ(sp[0], sf[0]) << "level " << int(level) << " kind " << kind << " width "
                                  << width;
          ASSERT_EQ(sp[1], sf[1]) << "level " << int(level) << " kind " << kind << " width "
                                  << width;
          for (size_t i = n; i < n + 16; ++i) ASSERT_EQ(df0[i], 0x5A);
        }
      }
    }
  }
  if (levelsRun == 0) GTEST_SKIP() << "no processor form in this build or on this processor";
}

TEST(MaskCopyRows, LumaOfEveryGreyAndExtremes) {
  // The plain form compares (59 G + 30 R + 11 B) / 100: a pixel whose luma
  // differs by 4 is still even when its bytes differ by more.
  const auto& plain = orv::image::MaskRowsFor(orv::SimdLevel::kPlain);
  uint8_t a[4] = {0, 100, 0, 9};     // B G R X: luma 59
  uint8_t b[4] = {40, 90, 10, 200};  // luma (5310 + 300 + 440) / 100 = 60
  uint8_t d[4] = {1, 2, 3, 4};
  uint32_t sums[2];
  plain.row[orv::image::kMaskBgrx](a, a, b, b, d, nullptr, 1, 50, 70, sums);
  EXPECT_EQ(d[0], 0);
  EXPECT_EQ(d[1], 100);
  EXPECT_EQ(d[2], 0);
  EXPECT_EQ(d[3], 4);  // the fourth byte stays
  EXPECT_EQ(sums[0], 9u);
  EXPECT_EQ(sums[1], 11u);
}

}  // namespace
