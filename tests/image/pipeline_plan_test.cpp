// How a conversion is planned: resize and scan kinds, bars, format pairs.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include "image_test_access.h"

namespace {

using A = OrvImageTestAccess;
using PI = OrvImage::PICTURE_INFO;

PI Pic(OrvImage::COLOR_FORMAT_TYPE f, uint32_t w, uint32_t h,
       OrvImage::SCAN_TYPE scan = OrvImage::SCAN_PROGRESSIVE, int step = 0) {
  PI p = {};
  p.width = w;
  p.height = h;
  p.colorFormat = f;
  p.scanType = scan;
  p.step = step ? step : OrvImage::GetGenericStep(f, w, h);
  p.size = OrvImage::GetPictureSize(f, w, h, p.step);
  return p;
}

OrvImage::CONVERT_MODE Mode(OrvImage::INTERPOLATION_MODE i = OrvImage::INTERPOLATION_LINEAR,
                            OrvImage::DEINTERLACE_MODE d = OrvImage::DEINTERLACE_LINE_DOUBLE,
                            bool keep = false, bool interlace = true) {
  OrvImage::CONVERT_MODE m = {};
  m.keepAspect = keep;
  m.convertInterlace = interlace;
  m.interpolation = i;
  m.deinterlace = d;
  return m;
}

// The kinds a plan gets for a pair.
std::pair<uint32_t, uint32_t> Kinds(PI s, PI d, OrvImage::CONVERT_MODE m) {
  OrvImage image;
  EXPECT_EQ(image.InitializeConvert(&s, &d, &m), 0u);
  const auto& info = A::ConvertInfo(image);
  return {info.resizeKind, info.interlaceKind};
}

using K = std::pair<uint32_t, uint32_t>;

TEST(PipelinePlan, ScanAndResizeKindsOfInterlacedSources) {
  const auto Y = OrvImage::CF_CCIR601YUY2;
  const auto P = OrvImage::SCAN_PROGRESSIVE, T = OrvImage::SCAN_TOP_FIELD_FIRST,
             B = OrvImage::SCAN_BOTTOM_FIELD_FIRST;
  // Line doubling only: the earlier field is the even memory lines.
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 720, 480, P), Mode()), K(0, 1));
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, B), Pic(Y, 720, 480, P), Mode()), K(0, 2));
  // Half height or less: the earlier field alone goes through the resizer.
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 720, 240, P), Mode()), K(3, 0));
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, B), Pic(Y, 720, 240, P), Mode()), K(4, 0));
  // A resize with line doubling: the field into its own lines, then doubled.
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 640, 360, P), Mode()), K(3, 1));
  // A field stretched by the resizer, even at equal sizes.
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, B), Pic(Y, 720, 480, P),
                  Mode(OrvImage::INTERPOLATION_LINEAR, OrvImage::DEINTERLACE_FIELD_RESIZE)),
            K(4, 0));
  // A bottom-up picture with the later field first has its earlier field on
  // the even memory lines.
  const auto R = OrvImage::CF_RGB32;
  EXPECT_EQ(Kinds(Pic(R, 720, 480, B), Pic(R, 720, 480, P), Mode()), K(0, 1));
  // Interlaced to interlaced: fields apart when the height changes, a field
  // swap when the order changes.
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 720, 576, T), Mode()), K(2, 0));
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 640, 480, T), Mode()), K(1, 0));
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 720, 480, B), Mode()), K(0, 3));
  EXPECT_EQ(Kinds(Pic(Y, 720, 480, T), Pic(Y, 720, 576, B), Mode()), K(2, 3));
  // A bottom-up destination of odd height: its fields sit at the other parity.
  EXPECT_EQ(Kinds(Pic(R, 720, 481, T), Pic(R, 720, 481, T), Mode()), K(0, 3));
  EXPECT_EQ(Kinds(Pic(R, 720, 481, T), Pic(R, 720, 481, B), Mode()), K(0, 0));
  // Scan types ignored when asked.
  EXPECT_EQ(
      Kinds(Pic(Y, 720, 480, T), Pic(Y, 720, 480, P),
            Mode(OrvImage::INTERPOLATION_LINEAR, OrvImage::DEINTERLACE_LINE_DOUBLE, false, false)),
      K(0, 0));
}

TEST(PipelinePlan, ScalerModesSetTheResizeKindOfPlanarOutput) {
  const auto U = OrvImage::CF_YUV420;
  EXPECT_EQ(Kinds(Pic(U, 64, 48), Pic(U, 64, 48), Mode(OrvImage::INTERPOLATION_VRSCL_FRAME)),
            K(2, 0));
  EXPECT_EQ(Kinds(Pic(U, 64, 48), Pic(U, 32, 24), Mode(OrvImage::INTERPOLATION_VRSCL_FIELD)),
            K(3, 0));
  // Other output uses the primitives and keeps its own kinds.
  const auto R = OrvImage::CF_RGB32;
  EXPECT_EQ(Kinds(Pic(U, 64, 48), Pic(R, 64, 48), Mode(OrvImage::INTERPOLATION_VRSCL_FRAME)),
            K(0, 0));
}

TEST(PipelinePlan, DeinterlaceModeWithoutUseIsRefused) {
  PI s = Pic(OrvImage::CF_CCIR601YUY2, 720, 480, OrvImage::SCAN_TOP_FIELD_FIRST);
  PI d = Pic(OrvImage::CF_CCIR601YUY2, 720, 480);
  OrvImage::CONVERT_INFO info = {};
  info.yFactor = 1.0;
  EXPECT_EQ(A::CheckInterlaceConv(&s, &d, static_cast<OrvImage::DEINTERLACE_MODE>(2), &info), 3u);
  // And through the public door as an invalid argument.
  OrvImage image;
  OrvImage::CONVERT_MODE m = Mode();
  m.deinterlace = static_cast<OrvImage::DEINTERLACE_MODE>(2);
  EXPECT_EQ(image.InitializeConvert(&s, &d, &m), 3u);
  std::vector<unsigned char> a(s.size), b(d.size);
  EXPECT_EQ(image.Convert(a.data(), b.data()), 4u);
}

TEST(PipelinePlan, KeepAspectPillarboxAndLetterbox) {
  OrvImage::CONVERT_INFO info = {};
  PI s = Pic(OrvImage::CF_RGB32, 720, 480), d = Pic(OrvImage::CF_RGB32, 720, 480);
  s.aspectX = 4, s.aspectY = 3, d.aspectX = 16, d.aspectY = 9;
  ASSERT_TRUE(A::GetResizeFactorEx(&s, &d, true, &info));
  EXPECT_EQ(info.dstMarginX, 180);  // 720 - 720 x 9 x 4 / 48
  EXPECT_EQ(info.dstMarginY, 0);
  EXPECT_DOUBLE_EQ(info.xFactor, 540.01 / 720);
  EXPECT_DOUBLE_EQ(info.yFactor, 480.01 / 480);

  info = {};
  s.aspectX = 16, s.aspectY = 9, d.aspectX = 4, d.aspectY = 3;
  ASSERT_TRUE(A::GetResizeFactorEx(&s, &d, true, &info));
  EXPECT_EQ(info.dstMarginX, 0);
  EXPECT_EQ(info.dstMarginY, 120);  // 480 - 480 x 4 x 9 / 48
  EXPECT_DOUBLE_EQ(info.yFactor, 360.01 / 480);

  // No aspect at all: the products are equal and nothing happens.
  info = {};
  s.aspectX = s.aspectY = d.aspectX = d.aspectY = 0;
  EXPECT_FALSE(A::GetResizeFactorEx(&s, &d, true, &info));
  // Without keepAspect the aspects play no part.
  s.aspectX = 4, s.aspectY = 3, d.aspectX = 16, d.aspectY = 9;
  EXPECT_FALSE(A::GetResizeFactorEx(&s, &d, false, &info));
}

TEST(PipelinePlan, TrimOfTheRasterAndAMarginCancel) {
  // 720 to 704 trims 16 columns; a pillarbox then eats into that trim.
  OrvImage::CONVERT_INFO info = {};
  PI s = Pic(OrvImage::CF_RGB32, 720, 480), d = Pic(OrvImage::CF_RGB32, 704, 480);
  s.aspectX = 4, s.aspectY = 3, d.aspectX = 3, d.aspectY = 2;
  ASSERT_TRUE(A::GetResizeFactorEx(&s, &d, true, &info));
  // Bars of 704 - 704 x 2 x 4 / 9 = 79 columns, less the 14 that the trim
  // of 16 columns would have taken at this factor, rounded down to 64.
  EXPECT_EQ(info.srcTrimX, 0);
  EXPECT_EQ(info.dstMarginX, 64);
  // Without keepAspect the raster's own trim stands.
  info = {};
  EXPECT_TRUE(A::GetResizeFactorEx(&s, &d, false, &info));
  EXPECT_EQ(info.srcTrimX, 16);
  EXPECT_EQ(info.dstMarginX, 0);
}

TEST(PipelinePlan, FormatPairsAndIntermediateSizes) {
  unsigned long step = 0, size = 0;
  PI s = Pic(OrvImage::CF_RGB24, 10, 6);
  PI d = Pic(OrvImage::CF_CCIR601YUY2, 4, 4);
  ASSERT_TRUE(A::CheckSupportColorConv(&s, &d, &step, &size));
  EXPECT_EQ(step, 20u);  // A(16) of the source's width
  EXPECT_EQ(size, 120u);
  d.colorFormat = OrvImage::CF_YUY2A;
  ASSERT_TRUE(A::CheckSupportColorConv(&s, &d, &step, &size));
  EXPECT_EQ(size, (20u + 12u) * 6u);
  d.colorFormat = OrvImage::CF_YUV420;
  ASSERT_TRUE(A::CheckSupportColorConv(&s, &d, &step, &size));
  EXPECT_EQ(step, 10u);
  EXPECT_EQ(size, 16u * 6u);  // A(12) of 10
  // No plan into the BT.709 formats from another format, and VUYA only from
  // YUY2 and YUV420.
  d.colorFormat = OrvImage::CF_BT709YUY2;
  EXPECT_FALSE(A::CheckSupportColorConv(&s, &d, &step, &size));
  d.colorFormat = OrvImage::CF_VUYA;
  EXPECT_FALSE(A::CheckSupportColorConv(&s, &d, &step, &size));
  s.colorFormat = OrvImage::CF_YUV420;
  EXPECT_TRUE(A::CheckSupportColorConv(&s, &d, &step, &size));
  // Equal formats: the source's own step and size.
  d = s;
  s.step = -30;
  s.size = 999;
  ASSERT_TRUE(A::CheckSupportColorConv(&s, &d, &step, &size));
  EXPECT_EQ(step, 30u);
  EXPECT_EQ(size, 999u);
}

TEST(PipelinePlan, PreFieldSwapOnlyIntoYuv420) {
  OrvImage::CONVERT_INFO info = {};
  info.interlaceKind = 3;
  PI s = Pic(OrvImage::CF_CCIR601YUY2, 8, 8), d = Pic(OrvImage::CF_YUV420, 8, 8);
  EXPECT_TRUE(A::CheckNeedPreFieldSwap(&s, &d, &info));
  s.colorFormat = OrvImage::CF_YV12;
  EXPECT_FALSE(A::CheckNeedPreFieldSwap(&s, &d, &info));
  s.colorFormat = OrvImage::CF_YUV420;
  EXPECT_FALSE(A::CheckNeedPreFieldSwap(&s, &d, &info));
  s.colorFormat = OrvImage::CF_RGB32;
  d.colorFormat = OrvImage::CF_YV12;
  EXPECT_FALSE(A::CheckNeedPreFieldSwap(&s, &d, &info));
  d.colorFormat = OrvImage::CF_YUV420;
  info.interlaceKind = 1;
  EXPECT_FALSE(A::CheckNeedPreFieldSwap(&s, &d, &info));
}

TEST(PipelinePlan, DestinationSizeHoldsTheWholeAlignedAlphaPlane) {
  // A width that is not a multiple of 4: alpha lines are 8 bytes, not 6.
  PI s = Pic(OrvImage::CF_CCIR601YUY2, 6, 5), d = Pic(OrvImage::CF_YUY2A, 6, 5);
  OrvImage::CONVERT_MODE m = Mode();
  OrvImage image;
  d.size = 0;
  ASSERT_EQ(image.InitializeConvert(&s, &d, &m), 0u);
  EXPECT_EQ(d.size, 12u * 5 + 8u * 5);
  EXPECT_EQ(d.size, OrvImage::GetPictureSize(OrvImage::CF_YUY2A, 6, 5, 12));
  // Planar: chroma is half the step per line.
  PI p = Pic(OrvImage::CF_YUV420, 10, 6);
  ASSERT_EQ(image.InitializeConvert(&s, &p, &m), 0u);
  EXPECT_EQ(p.size, 15u * 6);
}

TEST(PipelinePlan, RefusedPlans) {
  OrvImage image;
  PI s = Pic(OrvImage::CF_RGB24, 16, 16), d = Pic(OrvImage::CF_BT709YUV420, 16, 16);
  OrvImage::CONVERT_MODE m = Mode();
  std::vector<unsigned char> a(4096), b(4096);
  EXPECT_EQ(image.Convert(a.data(), b.data()), 4u);  // no plan yet
  EXPECT_EQ(image.InitializeConvert(nullptr, &d, &m), 3u);
  EXPECT_EQ(image.InitializeConvert(&s, nullptr, &m), 3u);
  EXPECT_EQ(image.InitializeConvert(&s, &d, nullptr), 3u);
  // A pair no plan serves: accepted, but the plan is not valid.
  EXPECT_EQ(image.InitializeConvert(&s, &d, &m), 0u);
  EXPECT_EQ(image.Convert(a.data(), b.data()), 4u);
  // Bad pictures and modes.
  PI bad = s;
  bad.width = 0;
  EXPECT_EQ(image.InitializeConvert(&bad, &s, &m), 3u);
  bad = s;
  bad.width = 70000;
  EXPECT_EQ(image.InitializeConvert(&bad, &s, &m), 3u);
  bad = s;
  bad.colorFormat = static_cast<OrvImage::COLOR_FORMAT_TYPE>(12);
  EXPECT_EQ(image.InitializeConvert(&bad, &s, &m), 3u);
  bad = s;
  bad.step = 20;  // shorter than a line of 16 RGB pixels
  EXPECT_EQ(image.InitializeConvert(&bad, &s, &m), 3u);
  bad = s;
  bad.scanType = static_cast<OrvImage::SCAN_TYPE>(3);
  EXPECT_EQ(image.InitializeConvert(&bad, &s, &m), 3u);
  OrvImage::CONVERT_MODE badMode = m;
  badMode.interpolation = static_cast<OrvImage::INTERPOLATION_MODE>(7);
  EXPECT_EQ(image.InitializeConvert(&s, &s, &badMode), 3u);
  EXPECT_EQ(image.Convert(a.data(), b.data()), 4u);
  // A good plan after all that.
  d = Pic(OrvImage::CF_RGB32, 16, 16);
  EXPECT_EQ(image.InitializeConvert(&s, &d, &m), 0u);
  EXPECT_EQ(image.Convert(a.data(), nullptr), 3u);
  EXPECT_EQ(image.Convert(a.data(), b.data()), 0u);
}

TEST(PipelinePlan, ClearConvertInfoAcceptsNullAndFreesEverything) {
  A::ClearConvertInfo(nullptr);
  OrvImage::CONVERT_INFO info = {};
  info.intermediate = new OrvMemory;
  info.temp = new OrvImage::TEMP_PLANAR_FORMAT();
  ASSERT_TRUE(A::AllocateTempBuffer(info.temp, {8, 8}, {4, 4}));
  info.resizeKind = 2;
  A::ClearConvertInfo(&info);
  EXPECT_EQ(info.intermediate, nullptr);
  EXPECT_EQ(info.temp, nullptr);
  EXPECT_EQ(info.resizeKind, 0u);
}

}  // namespace
