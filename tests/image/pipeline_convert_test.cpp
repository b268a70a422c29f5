// Whole conversions, checked as a viewer would see them: pictures unchanged
// where nothing is asked, flat colours staying flat, fields kept apart, bars
// of the right colour, alpha carried, and a plan that runs frame after frame.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "image_test_access.h"
#include "pipeline_helpers.h"

namespace {

using namespace pipeline_test;
using A = OrvImageTestAccess;
using OI = OrvImage;

constexpr auto kP = OI::SCAN_PROGRESSIVE;
constexpr auto kT = OI::SCAN_TOP_FIELD_FIRST;
constexpr auto kB = OI::SCAN_BOTTOM_FIELD_FIRST;

// Runs a plan once through the instance and returns its code.
unsigned long RunPlan(Picture& s, Picture& d, OI::CONVERT_MODE m, OI* image = nullptr) {
  OI local;
  OI& img = image ? *image : local;
  OI::PICTURE_INFO di = d.info;
  const unsigned long init = img.InitializeConvert(&s.info, &di, &m);
  if (init != 0) return 100 + init;
  EXPECT_EQ(di.size, d.info.size);
  return img.Convert(s.data(), d.data());
}

unsigned long RunStatic(Picture& s, Picture& d, OI::CONVERT_MODE m) {
  OI::PICTURE_INFO si = s.info, di = d.info;
  return OI::Convert(s.data(), d.data(), &si, &di, &m);
}

// A colour in the family of the format: YUV values for YUV formats, memory
// bytes for the packed ones.
Pixel FlatColour(F f) {
  switch (f) {
    case OI::CF_RGB24:
    case OI::CF_RGB32:
    case OI::CF_TavoShiftedStraightRGB24:
    case OI::CF_TavoShiftedStraightRGB32:
      return {{40, 120, 200, 0}};
    case OI::CF_RGBA:
      return {{40, 120, 200, 255}};
    case OI::CF_VUYA:
      return {{160, 100, 120, 0}};
    default:
      return {{120, 100, 160, 255}};
  }
}

// Every pixel (and every chroma line) of the picture within `tol` of the
// first one; names the first that is not.
::testing::AssertionResult IsFlat(const Picture& p, int tol) {
  const Pixel ref = p.At(0, 0, 0);
  const int h = p.info.height, w = p.info.width;
  const int channels = IsPlanar(p.info.colorFormat) || IsYuy2(p.info.colorFormat)
                           ? 3
                           : BytesPerPixel(p.info.colorFormat);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const Pixel q = p.At(x, y, IsPlanar(p.info.colorFormat) ? y / 2 : -1);
      for (int k = 0; k < channels; ++k) {
        if (std::abs(q.c[k] - ref.c[k]) > tol) {
          return ::testing::AssertionFailure() << "channel " << k << " at (" << x << ", " << y
                                               << ") is " << q.c[k] << ", first pixel " << ref.c[k];
        }
      }
    }
  }
  return ::testing::AssertionSuccess();
}

TEST(PipelineConvert, SameFormatSizeAndScanLeavesThePictureUnchanged) {
  const F formats[] = {OI::CF_CCIR601YUY2, OI::CF_BT709YUY2,
                       OI::CF_RGB24,       OI::CF_RGB32,
                       OI::CF_YUV420,      OI::CF_YV12,
                       OI::CF_VUYA,        OI::CF_RGBA,
                       OI::CF_YUY2A,       OI::CF_TavoShiftedStraightRGB24};
  for (F f : formats) {
    for (auto scan : {kP, kT}) {
      for (auto size : {std::make_pair(34u, 18u), std::make_pair(64u, 48u)}) {
        SCOPED_TRACE(::testing::Message() << "format " << f << " scan " << scan << " " << size.first
                                          << "x" << size.second);
        Picture s(f, size.first, size.second, scan);
        s.FillRandom(f * 7 + scan);
        Picture d(f, size.first, size.second, scan), e(f, size.first, size.second, scan);
        EXPECT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_CUBIC)), 0u);
        EXPECT_EQ(d.Bytes(), s.Bytes());
        EXPECT_EQ(RunStatic(s, e, Mode(OI::INTERPOLATION_TAVO)), 0u);
        EXPECT_EQ(e.Bytes(), s.Bytes());
        EXPECT_TRUE(d.GuardIntact() && e.GuardIntact());
      }
    }
  }
  // The 4:2:0 scaler's frame mode resizes even at equal sizes, and copies.
  Picture s(OI::CF_YUV420, 64, 48), d(OI::CF_YUV420, 64, 48), e(OI::CF_YUV420, 64, 48);
  s.FillRandom(5);
  EXPECT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_VRSCL_FRAME)), 0u);
  EXPECT_EQ(d.Bytes(), s.Bytes());
  EXPECT_EQ(RunStatic(s, e, Mode(OI::INTERPOLATION_VRSCL_FRAME)), 0u);
  EXPECT_EQ(e.Bytes(), s.Bytes());
  // In place, nothing happens at all.
  OI image;
  OI::CONVERT_MODE m = Mode(OI::INTERPOLATION_LINEAR);
  OI::PICTURE_INFO di = s.info;
  ASSERT_EQ(image.InitializeConvert(&s.info, &di, &m), 0u);
  const auto before = s.Bytes();
  EXPECT_EQ(image.Convert(s.data(), s.data()), 0u);
  EXPECT_EQ(s.Bytes(), before);
}

struct Route {
  F src;
  uint32_t sw, sh;
  OI::SCAN_TYPE ss;
  F dst;
  uint32_t dw, dh;
  OI::SCAN_TYPE ds;
  OI::INTERPOLATION_MODE interpolation;
  OI::DEINTERLACE_MODE deinterlace;
};

TEST(PipelineConvert, FlatColourStaysFlatThroughEveryRoute) {
  const auto L = OI::DEINTERLACE_LINE_DOUBLE, R = OI::DEINTERLACE_FIELD_RESIZE;
  std::vector<Route> routes = {
      {OI::CF_CCIR601YUY2, 192, 108, kT, OI::CF_YUV420, 72, 48, kP, OI::INTERPOLATION_AUTO, L},
      {OI::CF_YUV420, 72, 48, kP, OI::CF_RGB32, 192, 108, kP, OI::INTERPOLATION_CUBIC, L},
      {OI::CF_RGB24, 64, 48, kT, OI::CF_CCIR601YUY2, 64, 60, kT, OI::INTERPOLATION_AUTO, L},
      {OI::CF_CCIR601YUY2, 64, 48, kT, OI::CF_CCIR601YUY2, 48, 48, kB, OI::INTERPOLATION_TAVO, L},
      {OI::CF_RGB32, 64, 48, kB, OI::CF_RGB24, 64, 48, kP, OI::INTERPOLATION_LINEAR, L},
      {OI::CF_CCIR601YUY2, 64, 48, kT, OI::CF_RGBA, 80, 60, kP, OI::INTERPOLATION_LINEAR, L},
      {OI::CF_CCIR601YUY2, 64, 48, kT, OI::CF_RGB32, 80, 60, kP, OI::INTERPOLATION_LINEAR, R},
      {OI::CF_RGB32, 64, 48, kP, OI::CF_YV12, 32, 24, kP, OI::INTERPOLATION_NEAREST, L},
      {OI::CF_CCIR601YUY2, 64, 48, kP, OI::CF_YUY2A, 40, 30, kP, OI::INTERPOLATION_CUBIC, L},
      {OI::CF_CCIR601YUY2, 64, 48, kT, OI::CF_YUV420, 64, 48, kB, OI::INTERPOLATION_LINEAR, L},
      {OI::CF_YUV420, 64, 48, kT, OI::CF_VUYA, 64, 48, kP, OI::INTERPOLATION_LINEAR, L},
      {OI::CF_RGB24, 63, 47, kT, OI::CF_RGB24, 50, 37, kT, OI::INTERPOLATION_CUBIC, L},
      {OI::CF_YUV420, 64, 48, kT, OI::CF_YUV420, 64, 40, kP, OI::INTERPOLATION_TAVO, L},
  };
  // 4:2:0 to 4:2:0 through every interpolation mode.
  for (int i = 0; i <= OI::INTERPOLATION_VRSCL_FRAME; ++i) {
    routes.push_back({OI::CF_YUV420, 192, 108, kP, OI::CF_YUV420, 72, 48, kP,
                      static_cast<OI::INTERPOLATION_MODE>(i), L});
    routes.push_back({OI::CF_CCIR601YUY2, 96, 64, kT, OI::CF_CCIR601YUY2, 72, 48, kT,
                      static_cast<OI::INTERPOLATION_MODE>(i), L});
  }
  for (const Route& r : routes) {
    SCOPED_TRACE(::testing::Message()
                 << r.src << " " << r.sw << "x" << r.sh << " scan " << r.ss << " -> " << r.dst
                 << " " << r.dw << "x" << r.dh << " scan " << r.ds << " mode " << r.interpolation);
    Picture s(r.src, r.sw, r.sh, r.ss);
    const Pixel c = FlatColour(r.src);
    s.Fill([&](int, int) { return c; });
    // The colour as the colour stage alone makes it, at the source's size.
    Picture ref(r.dst, r.sw, r.sh, kP);
    Picture progressive = s;
    progressive.info.scanType = kP;
    ASSERT_EQ(RunStatic(progressive, ref, Mode(OI::INTERPOLATION_LINEAR)), 0u);
    const Pixel expected = ref.At(0, 0, 0);

    Picture d(r.dst, r.dw, r.dh, r.ds), e(r.dst, r.dw, r.dh, r.ds);
    ASSERT_EQ(RunPlan(s, d, Mode(r.interpolation, r.deinterlace)), 0u);
    ASSERT_EQ(RunStatic(s, e, Mode(r.interpolation, r.deinterlace)), 0u);
    // The own scaler's cubic weights are cut toward zero: one level of slack.
    const int tol = r.interpolation == OI::INTERPOLATION_TAVO ? 1 : 0;
    EXPECT_TRUE(IsFlat(d, tol));
    EXPECT_TRUE(IsFlat(e, tol));
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(d.At(0, 0, 0).c[k], expected.c[k], tol);
    EXPECT_EQ(d.Bytes(), e.Bytes());
    EXPECT_TRUE(d.GuardIntact() && e.GuardIntact());
    if (r.dst == OI::CF_YUY2A) {
      for (uint32_t y = 0; y < r.dh; ++y)
        for (uint32_t x = 0; x < r.dw; ++x) ASSERT_EQ(d.AlphaLine(y)[x], 255);
    }
  }
}

// Fields of two colours: even memory lines `a`, odd memory lines `b`.
void FillFields(Picture& p, Pixel a, Pixel b) {
  p.Fill([&](int, int y) { return (y & 1) ? b : a; });
}

// Every even memory line is `even`, every odd one `odd` (Y or the packed
// bytes; for 4:2:0 also chroma by chroma line parity).
::testing::AssertionResult FieldsAre(const Picture& p, Pixel even, Pixel odd, int channels,
                                     int tol = 0) {
  for (uint32_t y = 0; y < p.info.height; ++y) {
    for (uint32_t x = 0; x < p.info.width; ++x) {
      const Pixel want = (y & 1) ? odd : even;
      const Pixel got = p.At(x, y);
      for (int k = 0; k < channels; ++k) {
        if (IsPlanar(p.info.colorFormat) && k > 0) continue;
        if (std::abs(got.c[k] - want.c[k]) > tol) {
          return ::testing::AssertionFailure() << "line " << y << " column " << x << " channel "
                                               << k << " is " << got.c[k] << ", want " << want.c[k];
        }
      }
    }
  }
  if (IsPlanar(p.info.colorFormat)) {
    for (uint32_t c = 0; c < p.info.height / 2; ++c) {
      const Pixel want = (c & 1) ? odd : even;
      for (uint32_t x = 0; x < p.info.width; x += 2) {
        const Pixel got = p.At(x, 0, c);
        if (std::abs(got.c[1] - want.c[1]) > tol || std::abs(got.c[2] - want.c[2]) > tol) {
          return ::testing::AssertionFailure() << "chroma line " << c << " column " << x;
        }
      }
    }
  }
  return ::testing::AssertionSuccess();
}

TEST(PipelineConvert, FieldsOfDifferentColoursNeverMix) {
  const Pixel yA = {{50, 90, 170, 255}}, yB = {{200, 160, 80, 255}};
  const Pixel rA = {{10, 20, 30, 0}}, rB = {{220, 200, 180, 0}};
  struct Case {
    F f;
    uint32_t sw, sh, dw, dh;
    OI::INTERPOLATION_MODE mode;
  };
  const Case cases[] = {
      {OI::CF_CCIR601YUY2, 64, 48, 64, 60, OI::INTERPOLATION_LINEAR},
      {OI::CF_CCIR601YUY2, 64, 48, 48, 36, OI::INTERPOLATION_CUBIC},
      {OI::CF_CCIR601YUY2, 64, 48, 80, 60, OI::INTERPOLATION_TAVO},
      {OI::CF_YUV420, 64, 48, 48, 36, OI::INTERPOLATION_CUBIC},
      {OI::CF_YUV420, 64, 48, 96, 72, OI::INTERPOLATION_TAVO},
      {OI::CF_YUV420, 64, 48, 96, 72, OI::INTERPOLATION_AUTO},
      {OI::CF_RGB32, 64, 48, 48, 36, OI::INTERPOLATION_CUBIC},
      {OI::CF_RGB24, 64, 48, 80, 64, OI::INTERPOLATION_LINEAR},
      {OI::CF_YUY2A, 64, 48, 48, 36, OI::INTERPOLATION_LINEAR},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message()
                 << "format " << c.f << " mode " << c.mode << " " << c.dw << "x" << c.dh);
    const bool packed = BytesPerPixel(c.f) != 0;
    const Pixel a = packed ? rA : yA, b = packed ? rB : yB;
    const int channels = packed ? BytesPerPixel(c.f) : 3;
    // The own scaler's enlargement moves a flat chroma of 90 by two levels
    // (see the faults note); a mix of the fields would move it by tens.
    const int tol = c.mode == OI::INTERPOLATION_TAVO ? 2 : 0;
    Picture s(c.f, c.sw, c.sh, kT);
    FillFields(s, a, b);
    // Interlaced to interlaced of another height: each field on its own.
    Picture d(c.f, c.dw, c.dh, kT);
    ASSERT_EQ(RunPlan(s, d, Mode(c.mode)), 0u);
    EXPECT_TRUE(FieldsAre(d, a, b, channels, tol));
    // A change of field order too: the fields change lines, whole.
    Picture e(c.f, c.dw, c.dh, kB);
    ASSERT_EQ(RunPlan(s, e, Mode(c.mode)), 0u);
    // Either way of moving by a line puts the other field on the even lines.
    EXPECT_TRUE(FieldsAre(e, b, a, channels, tol));
    if (c.f == OI::CF_YUY2A) {
      // Alpha follows the picture's lines.
      Picture s2(c.f, c.sw, c.sh, kT);
      s2.Fill([&](int, int y) { return (y & 1) ? Pixel{{200, 128, 128, 30}} : a; });
      Picture e2(c.f, c.dw, c.dh, kB);
      ASSERT_EQ(RunPlan(s2, e2, Mode(c.mode)), 0u);
      for (uint32_t y = 0; y < c.dh; ++y) {
        EXPECT_EQ(e2.AlphaLine(y)[5], e2.At(5, y).c[0] == 200 ? 30 : 255) << "line " << y;
      }
    }
    // To progressive: only the earlier field is seen. Top field first in a
    // top-down picture is its even memory lines; in a bottom-up one, of even
    // height, its odd memory lines.
    const Pixel early = s.info.step > 0 ? a : b, late = s.info.step > 0 ? b : a;
    Picture half(c.f, c.dw, c.sh / 2, kP), full(c.f, c.dw, c.dh, kP);
    ASSERT_EQ(RunPlan(s, half, Mode(c.mode)), 0u);
    EXPECT_TRUE(FieldsAre(half, early, early, channels, tol));
    ASSERT_EQ(RunPlan(s, full, Mode(c.mode)), 0u);
    EXPECT_TRUE(FieldsAre(full, early, early, channels, tol));
    ASSERT_EQ(RunPlan(s, full, Mode(c.mode, OI::DEINTERLACE_FIELD_RESIZE)), 0u);
    EXPECT_TRUE(FieldsAre(full, early, early, channels, tol));
    s.info.scanType = kB;
    ASSERT_EQ(RunPlan(s, full, Mode(c.mode)), 0u);
    EXPECT_TRUE(FieldsAre(full, late, late, channels, tol));
  }
  // The 4:2:0 scaler's field mode scales the first field alone.
  Picture s(OI::CF_YUV420, 64, 48, kT), d(OI::CF_YUV420, 40, 40, kP);
  FillFields(s, yA, yB);
  ASSERT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_VRSCL_FIELD)), 0u);
  EXPECT_TRUE(FieldsAre(d, yA, yA, 3));
  Picture e(OI::CF_YUV420, 40, 40, kP);
  ASSERT_EQ(RunStatic(s, e, Mode(OI::INTERPOLATION_VRSCL_FIELD)), 0u);
  EXPECT_EQ(e.Bytes(), d.Bytes());
}

TEST(PipelineConvert, FieldSwapMovesThePictureByOneLine) {
  Picture s(OI::CF_CCIR601YUY2, 16, 8, kT);
  s.Fill([](int, int y) { return Pixel{{20 + 10 * y, 128, 128, 0}}; });
  Picture d(OI::CF_CCIR601YUY2, 16, 8, kB);
  ASSERT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_LINEAR)), 0u);
  // Top field first, top-down: down by one line; line 0 repeats line 2.
  EXPECT_EQ(d.At(3, 0).c[0], 30);
  for (int y = 1; y < 8; ++y) EXPECT_EQ(d.At(3, y).c[0], 20 + 10 * (y - 1)) << y;
  // In place, with a step that shrinks on the way.
  Picture wide(OI::CF_CCIR601YUY2, 16, 8, kT, 48);
  wide.Fill([](int, int y) { return Pixel{{20 + 10 * y, 128, 128, 0}}; });
  OI image;
  OI::PICTURE_INFO di = d.info;
  OI::CONVERT_MODE m = Mode(OI::INTERPOLATION_LINEAR);
  ASSERT_EQ(image.InitializeConvert(&wide.info, &di, &m), 0u);
  ASSERT_EQ(image.Convert(wide.data(), wide.data()), 0u);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 16; ++x) ASSERT_EQ(wide.buf[y * 32 + 2 * x], d.At(x, y).c[0]) << y;
}

struct Bars {
  F f;
  OI::INTERPOLATION_MODE mode;
  Pixel bar;  // YUV or memory bytes
  int channels;
};

TEST(PipelineConvert, PillarboxAndLetterboxBarsPerFormat) {
  const Bars cases[] = {
      {OI::CF_RGB32, OI::INTERPOLATION_LINEAR, {{0, 0, 0, 0}}, 4},
      {OI::CF_RGBA, OI::INTERPOLATION_LINEAR, {{0, 0, 0, 0}}, 4},
      {OI::CF_VUYA, OI::INTERPOLATION_LINEAR, {{127, 127, 16, 255}}, 4},
      {OI::CF_RGB24, OI::INTERPOLATION_CUBIC, {{0, 0, 0, 0}}, 3},
      {OI::CF_YUV420, OI::INTERPOLATION_LINEAR, {{16, 127, 127, 0}}, 3},
      {OI::CF_YUV420, OI::INTERPOLATION_TAVO, {{16, 127, 127, 0}}, 3},
      {OI::CF_CCIR601YUY2, OI::INTERPOLATION_LINEAR, {{0, 127, 127, 0}}, 3},
      {OI::CF_CCIR601YUY2, OI::INTERPOLATION_TAVO, {{16, 127, 127, 0}}, 3},
      {OI::CF_YUY2A, OI::INTERPOLATION_LINEAR, {{0, 127, 127, 0}}, 3},
  };
  for (const Bars& c : cases) {
    SCOPED_TRACE(::testing::Message() << "format " << c.f << " mode " << c.mode);
    const F srcFormat = c.f == OI::CF_VUYA ? OI::CF_CCIR601YUY2 : OI::CF_RGB32;
    // 4:3 into 16:9 at 64 x 48: the picture is 48 columns wide.
    Picture s(srcFormat, 64, 48);
    s.Fill([](int, int) { return Pixel{{120, 160, 200, 0}}; });
    s.info.aspectX = 4, s.info.aspectY = 3;
    Picture d(c.f, 64, 48);
    d.info.aspectX = 16, d.info.aspectY = 9;
    ASSERT_EQ(RunPlan(s, d, Mode(c.mode, OI::DEINTERLACE_LINE_DOUBLE, true)), 0u);
    for (int y = 0; y < 48; y += 5) {
      for (int x : {0, 3, 7, 56, 60, 63}) {
        const Pixel p = d.At(x, y);
        for (int k = 0; k < c.channels; ++k) ASSERT_EQ(p.c[k], c.bar.c[k]) << x << "," << y;
      }
      EXPECT_NE(d.At(32, y).c[0], c.bar.c[0]);
    }
    if (c.f == OI::CF_RGBA) {
      EXPECT_EQ(d.At(32, 10).c[3], 255);
    }
    if (c.f == OI::CF_YUY2A) {
      EXPECT_EQ(d.AlphaLine(10)[3], 0);
      EXPECT_EQ(d.AlphaLine(10)[60], 0);
      EXPECT_EQ(d.AlphaLine(10)[32], 255);
    }
    // 16:9 into 4:3: 36 lines of picture, 6 lines of bar above and below.
    s.info.aspectX = 16, s.info.aspectY = 9;
    d.info.aspectX = 4, d.info.aspectY = 3;
    ASSERT_EQ(RunPlan(s, d, Mode(c.mode, OI::DEINTERLACE_LINE_DOUBLE, true)), 0u);
    for (int y : {0, 4, 43, 47}) {
      const Pixel p = d.At(20, y);
      for (int k = 0; k < c.channels; ++k) ASSERT_EQ(p.c[k], c.bar.c[k]) << "line " << y;
    }
    EXPECT_NE(d.At(20, 24).c[0], c.bar.c[0]);
    if (c.f == OI::CF_YUY2A) {
      EXPECT_EQ(d.AlphaLine(1)[20], 0);
      EXPECT_EQ(d.AlphaLine(24)[20], 255);
      EXPECT_EQ(d.AlphaLine(46)[20], 0);
    }
    EXPECT_TRUE(d.GuardIntact());
  }
}

TEST(PipelineConvert, AlphaOfYuy2A) {
  // YUY2 to YUY2A of the same size: opaque, picture copied (with a field swap).
  Picture s(OI::CF_CCIR601YUY2, 16, 8, kT);
  s.FillRandom(3);
  Picture d(OI::CF_YUY2A, 16, 8, kT);
  ASSERT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_LINEAR)), 0u);
  for (int y = 0; y < 8; ++y) {
    EXPECT_EQ(0, std::memcmp(d.data() + y * 32, s.data() + y * 32, 32));
    for (int x = 0; x < 16; ++x) ASSERT_EQ(d.AlphaLine(y)[x], 255);
  }
  Picture swapped(OI::CF_YUY2A, 16, 8, kB);
  ASSERT_EQ(RunPlan(s, swapped, Mode(OI::INTERPOLATION_LINEAR)), 0u);
  EXPECT_EQ(0, std::memcmp(swapped.data() + 32, s.data(), 32));
  EXPECT_EQ(swapped.AlphaLine(4)[7], 255);

  // YUY2A to YUY2: the YUY2 part, as it is.
  Picture back(OI::CF_CCIR601YUY2, 16, 8, kT);
  ASSERT_EQ(RunPlan(d, back, Mode(OI::INTERPOLATION_LINEAR)), 0u);
  EXPECT_EQ(0, std::memcmp(back.data(), s.data(), 32 * 8));

  // RGBA carries its alpha, turned with the picture (RGBA is bottom-up) and
  // doubled by the nearest-neighbour resize.
  Picture rgba(OI::CF_RGBA, 8, 6);
  rgba.Fill([](int x, int y) { return Pixel{{100, 100, 100, 5 * x + 40 * y}}; });
  Picture big(OI::CF_YUY2A, 16, 12);
  ASSERT_EQ(RunPlan(rgba, big, Mode(OI::INTERPOLATION_NEAREST)), 0u);
  for (int y = 0; y < 12; ++y)
    for (int x = 0; x < 16; ++x)
      ASSERT_EQ(big.AlphaLine(y)[x], 5 * (x / 2) + 40 * (5 - y / 2)) << x << "," << y;

  // A width that is not a multiple of 4 and a resize: the reported size holds
  // every byte written.
  Picture narrow(OI::CF_CCIR601YUY2, 10, 9, kT);
  narrow.FillRandom(9);
  Picture odd(OI::CF_YUY2A, 6, 5, kT);
  ASSERT_EQ(RunPlan(narrow, odd, Mode(OI::INTERPOLATION_LINEAR)), 0u);
  EXPECT_TRUE(odd.GuardIntact());
  EXPECT_EQ(odd.AlphaLine(4)[5], 255);
}

TEST(PipelineConvert, APlanRunsFrameAfterFrame) {
  OI image;
  Picture s(OI::CF_CCIR601YUY2, 64, 48, kT);
  Picture d(OI::CF_RGB32, 48, 36, kP), ref(OI::CF_RGB32, 48, 36, kP);
  OI::CONVERT_MODE m = Mode(OI::INTERPOLATION_CUBIC);
  OI::PICTURE_INFO di = d.info;
  ASSERT_EQ(image.InitializeConvert(&s.info, &di, &m), 0u);
  const OI::CONVERT_INFO& info = A::ConvertInfo(image);
  ASSERT_NE(info.intermediate, nullptr);
  EXPECT_EQ(info.intermediate->GetAllocSize(), 0u);  // memory comes at first use
  for (uint32_t frame = 0; frame < 4; ++frame) {
    SCOPED_TRACE(frame);
    s.FillRandom(100 + frame);
    ASSERT_EQ(image.Convert(s.data(), d.data()), 0u);
    EXPECT_GT(info.intermediate->GetAllocSize(), 0u);
    ASSERT_EQ(RunStatic(s, ref, m), 0u);
    EXPECT_EQ(d.Bytes(), ref.Bytes());
    if (frame == 1) {
      // A failed frame: a resize can't run in place. The plan stays.
      EXPECT_EQ(image.Convert(s.data(), s.data()), 3u);
      EXPECT_EQ(image.Convert(nullptr, d.data()), 3u);
    }
    if (frame == 2) {
      image.ReleaseConvertBuffer();
      EXPECT_EQ(info.intermediate->GetAllocSize(), 0u);
    }
  }
  // The planes of a YUY2 resize through the primitives come and go too.
  Picture y2(OI::CF_CCIR601YUY2, 40, 30, kT), yref(OI::CF_CCIR601YUY2, 40, 30, kT);
  OI::PICTURE_INFO yi = y2.info;
  ASSERT_EQ(image.InitializeConvert(&s.info, &yi, &m), 0u);
  ASSERT_NE(info.temp, nullptr);
  EXPECT_EQ(info.intermediate, nullptr);  // same format: no colour stage
  for (int frame = 0; frame < 2; ++frame) {
    s.FillRandom(200 + frame);
    ASSERT_EQ(image.Convert(s.data(), y2.data()), 0u);
    EXPECT_NE(info.temp->srcY, nullptr);
    ASSERT_EQ(RunStatic(s, yref, m), 0u);
    EXPECT_EQ(y2.Bytes(), yref.Bytes());
    image.ReleaseConvertBuffer();
    EXPECT_EQ(info.temp->srcY, nullptr);
  }
}

TEST(PipelineConvert, StaticFormAsksForTheSizeAndRefusesSmallDestinations) {
  Picture s(OI::CF_CCIR601YUY2, 32, 24), d(OI::CF_YUY2A, 30, 20);
  OI::CONVERT_MODE m = Mode(OI::INTERPOLATION_LINEAR);
  OI::PICTURE_INFO si = s.info, di = d.info;
  di.size = 0;
  EXPECT_EQ(OI::Convert(s.data(), nullptr, &si, &di, &m), 0u);
  EXPECT_EQ(di.size, OI::GetPictureSize(OI::CF_YUY2A, 30, 20, 60));
  di.size -= 1;
  std::fill(d.buf.begin(), d.buf.end(), 0x33);
  EXPECT_EQ(OI::Convert(s.data(), d.data(), &si, &di, &m), 2u);
  for (uint8_t v : d.buf) ASSERT_EQ(v, 0x33);
  EXPECT_EQ(OI::Convert(nullptr, d.data(), &si, &di, &m), 3u);
  EXPECT_EQ(OI::Convert(s.data(), d.data(), nullptr, &di, &m), 3u);
  EXPECT_EQ(OI::Convert(s.data(), d.data(), &si, &di, nullptr), 3u);
  // A pair with no route answers 3 from the colour stage.
  Picture v(OI::CF_VUYA, 32, 24), r(OI::CF_RGB24, 32, 24);
  di = r.info;
  si = v.info;
  EXPECT_EQ(OI::Convert(v.data(), r.data(), &si, &di, &m), 3u);
  // In place with a resize: 3.
  si = s.info;
  di = Picture(OI::CF_CCIR601YUY2, 16, 12).info;
  EXPECT_EQ(OI::Convert(s.data(), s.data(), &si, &di, &m), 3u);
}

TEST(PipelineConvert, OppositeStepSignsTurnThePicture) {
  Picture s(OI::CF_RGB32, 64, 48);  // bottom-up
  s.Fill([](int, int y) { return Pixel{{y * 5, 0, 0, 0}}; });
  Picture d(OI::CF_RGB32, 32, 48, kP, 128);  // top-down
  ASSERT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_NEAREST)), 0u);
  for (int y = 0; y < 48; ++y) EXPECT_EQ(d.At(7, y).c[0], (47 - y) * 5) << y;
  // The same without a resize, 4:2:0 to 4:2:0 of another step.
  Picture p(OI::CF_YUV420, 16, 8, kT);
  p.Fill([](int, int y) { return Pixel{{y * 9, 100, 100, 0}}; });
  Picture q(OI::CF_YUV420, 16, 8, kB, -32);
  ASSERT_EQ(RunPlan(p, q, Mode(OI::INTERPOLATION_NEAREST)), 0u);
  // Turned (memory line m holds source line 7 - m), then moved a line
  // towards the buffer's start for the field swap; the last line repeats
  // the line two above it.
  for (int m = 0; m < 7; ++m) EXPECT_EQ(q.At(3, m).c[0], (6 - m) * 9) << m;
  EXPECT_EQ(q.At(3, 7).c[0], q.At(3, 5).c[0]);
  EXPECT_EQ(q.At(3, 2).c[1], 100);
  EXPECT_TRUE(q.GuardIntact());
}

TEST(PipelineConvert, NearestResizePicksAndStaysInside) {
  const unsigned char line[4] = {1, 2, 3, 4};
  unsigned char out[8] = {};
  ASSERT_TRUE(A::NearestResize(8, line, 4, 1, 4, out, 2, 1, 2));
  EXPECT_EQ(out[0], 1);
  EXPECT_EQ(out[1], 3);
  ASSERT_TRUE(A::NearestResize(8, line, 2, 1, 2, out, 5, 1, 5));
  const unsigned char up[5] = {1, 1, 1, 2, 2};
  EXPECT_EQ(0, std::memcmp(out, up, 5));
  // Every size pair up to 40: each read is inside an exactly sized source
  // (the sanitizer build sees any read past it), each pixel is its source's.
  for (int sw = 1; sw <= 40; ++sw) {
    for (int dw = 1; dw <= 40; ++dw) {
      std::vector<unsigned char> src(sw * 3 * sw), dst(dw * 3 * dw);
      for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i / 3 % 251);
      ASSERT_TRUE(A::NearestResize(24, src.data(), sw, sw, -sw * 3, dst.data(), dw, dw, dw * 3));
      const int x = dw - 1, y = dw - 1;
      const int sx = std::min(sw - 1, static_cast<int>(x * static_cast<float>(double(sw) / dw)));
      const int sy = std::min(sw - 1, static_cast<int>(y * static_cast<float>(double(sw) / dw)));
      ASSERT_EQ(dst[(y * dw + x) * 3], src[(sy * sw + sx) * 3]) << sw << " " << dw;
    }
  }
  EXPECT_FALSE(A::NearestResize(24, nullptr, 4, 4, 12, out, 1, 1, 3));
  EXPECT_FALSE(A::NearestResize(24, line, 4, 4, 2, out, 1, 1, 3));  // step below the line
}

}  // namespace

namespace {

TEST(PipelineConvert, ReductionFrom420IntoRgbResizesFirst) {
  // A progressive 4:2:0 reduction into RGB is the 4:2:0 resize followed by
  // the colour conversion at the destination's size, byte for byte.
  for (auto f : {OI::CF_RGB32, OI::CF_RGB24, OI::CF_RGBA}) {
    SCOPED_TRACE(f);
    Picture s(OI::CF_YUV420, 96, 72);
    s.FillRandom(77);
    Picture d(f, 40, 30);
    ASSERT_EQ(RunPlan(s, d, Mode(OI::INTERPOLATION_CUBIC)), 0u);
    Picture small(OI::CF_YUV420, 40, 30, kP, 48);  // the step the pipeline uses
    ASSERT_EQ(RunStatic(s, small, Mode(OI::INTERPOLATION_CUBIC)), 0u);
    Picture byHand(f, 40, 30);
    ASSERT_EQ(RunStatic(small, byHand, Mode(OI::INTERPOLATION_CUBIC)), 0u);
    EXPECT_EQ(d.Bytes(), byHand.Bytes());
  }
}

}  // namespace
