// The colour-conversion dispatch: every route reaches its conversion with the
// arguments it takes, every gap answers 3, and BT.709 sources go through the
// BT.709 matrix.
#include <OrvImage.h>
#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <vector>

#include "image/conversion_access.h"
#include "image/convert_test_support.h"

namespace orv_test {
namespace {

using orv::image::ConversionAccess;
using I = OrvImage;

constexpr int kW = 8;
constexpr int kH = 8;

// The arguments of one dispatch call.
struct Call {
  unsigned char* src;
  unsigned char* dst;
  unsigned long* size;
  unsigned long w, h;
  int srcStep, dstStep;
  bool progressive;
  I::FIELD_TYPE field;
  std::vector<OrvMemory*>* work;
};

struct Route {
  Format dst;
  Format src;
  std::function<unsigned long(const Call&)> direct;
};

#define ORV_ROUTE(d, s, expr) \
  routes.push_back({I::d, I::s, [](const Call& c) -> unsigned long { return expr; }});
#define ORV_A c.src, c.dst, c.size, c.w, c.h, c.srcStep, c.dstStep

std::vector<Route> Routes() {
  std::vector<Route> routes;
  ORV_ROUTE(CF_CCIR601YUY2, CF_CCIR601YUY2, I::CopyYUY2(ORV_A))
  ORV_ROUTE(CF_CCIR601YUY2, CF_RGB24, I::RGB24ToCCIR601YUY2(ORV_A))
  ORV_ROUTE(CF_CCIR601YUY2, CF_RGB32, I::RGB32ToCCIR601YUY2(ORV_A))
  ORV_ROUTE(CF_CCIR601YUY2, CF_RGBA, I::RGB32ToCCIR601YUY2(ORV_A))
  ORV_ROUTE(CF_CCIR601YUY2, CF_TavoShiftedStraightRGB24,
            I::TavoShiftedStraightRGB24ToCCIR601YUY2(ORV_A))
  ORV_ROUTE(CF_CCIR601YUY2, CF_TavoShiftedStraightRGB32,
            I::TavoShiftedStraightRGB32ToCCIR601YUY2(ORV_A))
  ORV_ROUTE(CF_CCIR601YUY2, CF_YUV420,
            ConversionAccess::YUV420ToCCIR601YUY2(ORV_A, c.progressive, c.field, nullptr))
  ORV_ROUTE(CF_CCIR601YUY2, CF_YUY2A, I::YUY2AToCCIR601YUY2(ORV_A))
  ORV_ROUTE(CF_YUV420, CF_CCIR601YUY2, I::CCIR601YUY2ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_YUY2A, I::CCIR601YUY2ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_RGB24, I::RGB24ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_RGB32, I::RGB32ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_RGBA, I::RGB32ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_TavoShiftedStraightRGB24,
            I::TavoShiftedStraightRGB24ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_TavoShiftedStraightRGB32,
            I::TavoShiftedStraightRGB32ToYUV420(ORV_A, c.progressive, nullptr))
  ORV_ROUTE(CF_YUV420, CF_YUV420, I::CopyYUV420(ORV_A))
  ORV_ROUTE(CF_YV12, CF_CCIR601YUY2,
            ConversionAccess::CCIR601YUY2ToYV12(ORV_A, c.progressive, c.field, nullptr))
  ORV_ROUTE(CF_YV12, CF_YUY2A,
            ConversionAccess::CCIR601YUY2ToYV12(ORV_A, c.progressive, c.field, nullptr))
  ORV_ROUTE(CF_YV12, CF_RGB24, I::RGB24ToYV12(ORV_A, c.progressive))
  ORV_ROUTE(CF_YV12, CF_RGB32, I::RGB32ToYV12(ORV_A, c.progressive))
  ORV_ROUTE(CF_YV12, CF_RGBA, I::RGB32ToYV12(ORV_A, c.progressive))
  ORV_ROUTE(CF_YV12, CF_TavoShiftedStraightRGB24,
            I::TavoShiftedStraightRGB24ToYV12(ORV_A, c.progressive))
  ORV_ROUTE(CF_YV12, CF_TavoShiftedStraightRGB32,
            I::TavoShiftedStraightRGB32ToYV12(ORV_A, c.progressive))
  ORV_ROUTE(CF_YV12, CF_YUV420, ConversionAccess::YUV420ToYV12(ORV_A, c.field))
  ORV_ROUTE(CF_YV12, CF_YV12, I::CopyYUV420(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_CCIR601YUY2, I::CCIR601YUY2ToRGB24(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_YUY2A, I::CCIR601YUY2ToRGB24(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_BT709YUY2, I::Bt709YUY2ToRGB(ORV_A, c.progressive, I::CF_RGB24))
  ORV_ROUTE(CF_RGB24, CF_BT709YUV420, I::Bt709YUV420ToRGB(ORV_A, c.progressive, I::CF_RGB24))
  ORV_ROUTE(CF_RGB24, CF_RGB24, I::CopyRGB24(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_RGB32, I::RGB32ToRGB24(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_TavoShiftedStraightRGB24, I::TavoShiftedStraightRGB24ToRGB24(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_TavoShiftedStraightRGB32, I::TavoShiftedStraightRGB32ToRGB24(ORV_A))
  ORV_ROUTE(CF_RGB24, CF_YUV420, ConversionAccess::YUV420ToRGB24(ORV_A, c.progressive, c.field))
  ORV_ROUTE(CF_RGB24, CF_RGBA, I::RGBAToRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_CCIR601YUY2,
            I::CCIR601YUY2ToTavoShiftedStraightRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_YUY2A, I::CCIR601YUY2ToTavoShiftedStraightRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_BT709YUY2,
            I::Bt709YUY2ToRGB(ORV_A, c.progressive, I::CF_TavoShiftedStraightRGB24))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_BT709YUV420,
            I::Bt709YUV420ToRGB(ORV_A, c.progressive, I::CF_TavoShiftedStraightRGB24))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_RGB24, I::RGB24ToTavoShiftedStraightRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_RGB32, I::RGB32ToTavoShiftedStraightRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_RGBA, I::RGB32ToTavoShiftedStraightRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_TavoShiftedStraightRGB24, I::CopyRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_TavoShiftedStraightRGB32,
            I::TavoShiftedStraightRGB32ToTavoShiftedStraightRGB24(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB24, CF_YUV420,
            I::YUV420ToTavoShiftedStraightRGB24(ORV_A, c.progressive))
  ORV_ROUTE(CF_RGB32, CF_CCIR601YUY2, I::CCIR601YUY2ToRGB32(ORV_A))
  ORV_ROUTE(CF_RGB32, CF_YUY2A, I::CCIR601YUY2ToRGB32(ORV_A))
  ORV_ROUTE(CF_RGB32, CF_BT709YUY2, I::Bt709YUY2ToRGB(ORV_A, c.progressive, I::CF_RGB32))
  ORV_ROUTE(CF_RGB32, CF_BT709YUV420, I::Bt709YUV420ToRGB(ORV_A, c.progressive, I::CF_RGB32))
  ORV_ROUTE(CF_RGB32, CF_RGB24, I::RGB24ToRGB32(ORV_A))
  ORV_ROUTE(CF_RGB32, CF_RGB32, I::CopyRGB32(ORV_A))
  ORV_ROUTE(CF_RGB32, CF_TavoShiftedStraightRGB24, I::TavoShiftedStraightRGB24ToRGB32(ORV_A))
  ORV_ROUTE(CF_RGB32, CF_TavoShiftedStraightRGB32, I::TavoShiftedStraightRGB32ToRGB32(ORV_A))
  ORV_ROUTE(CF_RGB32, CF_YUV420, I::YUV420ToRGB32(ORV_A, c.progressive))
  ORV_ROUTE(CF_RGB32, CF_RGBA, I::RGBAToRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_CCIR601YUY2,
            I::CCIR601YUY2ToTavoShiftedStraightRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_YUY2A, I::CCIR601YUY2ToTavoShiftedStraightRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_BT709YUY2,
            I::Bt709YUY2ToRGB(ORV_A, c.progressive, I::CF_TavoShiftedStraightRGB32))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_BT709YUV420,
            I::Bt709YUV420ToRGB(ORV_A, c.progressive, I::CF_TavoShiftedStraightRGB32))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_RGB24, I::RGB24ToTavoShiftedStraightRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_RGB32, I::RGB32ToTavoShiftedStraightRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_RGBA, I::RGB32ToTavoShiftedStraightRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_TavoShiftedStraightRGB24,
            I::TavoShiftedStraightRGB24ToTavoShiftedStraightRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_TavoShiftedStraightRGB32, I::CopyRGB32(ORV_A))
  ORV_ROUTE(CF_TavoShiftedStraightRGB32, CF_YUV420,
            I::YUV420ToTavoShiftedStraightRGB32(ORV_A, c.progressive))
  ORV_ROUTE(CF_RGBA, CF_CCIR601YUY2, I::CCIR601YUY2ToRGBA(ORV_A))
  ORV_ROUTE(CF_RGBA, CF_BT709YUY2, I::Bt709YUY2ToRGB(ORV_A, c.progressive, I::CF_RGBA))
  ORV_ROUTE(CF_RGBA, CF_BT709YUV420, I::Bt709YUV420ToRGB(ORV_A, c.progressive, I::CF_RGBA))
  ORV_ROUTE(CF_RGBA, CF_RGB24, I::RGB24ToRGBA(ORV_A))
  ORV_ROUTE(CF_RGBA, CF_RGB32, I::RGB32ToRGBA(ORV_A))
  ORV_ROUTE(CF_RGBA, CF_TavoShiftedStraightRGB24, I::TavoShiftedStraightRGB24ToRGBA(ORV_A))
  ORV_ROUTE(CF_RGBA, CF_TavoShiftedStraightRGB32, I::TavoShiftedStraightRGB32ToRGBA(ORV_A))
  ORV_ROUTE(CF_RGBA, CF_YUV420, I::YUV420ToRGBA(ORV_A, c.progressive))
  ORV_ROUTE(CF_RGBA, CF_YV12, I::YV12ToRGBA(ORV_A, c.progressive))
  ORV_ROUTE(CF_RGBA, CF_RGBA, I::CopyRGB32(ORV_A))
  ORV_ROUTE(CF_RGBA, CF_YUY2A, I::YUY2AToRGBA(ORV_A))
  ORV_ROUTE(CF_VUYA, CF_CCIR601YUY2, I::CCIR601YUY2ToVUYA(ORV_A))
  ORV_ROUTE(CF_VUYA, CF_YUV420, I::YUV420ToVUYA(ORV_A, c.progressive))
  ORV_ROUTE(CF_VUYA, CF_VUYA, I::CopyRGB32(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_CCIR601YUY2, I::CCIR601YUY2ToYUY2A(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_RGB24, I::RGB24ToYUY2A(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_RGB32, I::RGB32ToYUY2A(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_TavoShiftedStraightRGB24, I::TavoShiftedStraightRGB24ToYUY2A(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_TavoShiftedStraightRGB32, I::TavoShiftedStraightRGB32ToYUY2A(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_YUV420, I::YUV420ToYUY2A(ORV_A, c.progressive))
  ORV_ROUTE(CF_YUY2A, CF_YV12, I::YV12ToYUY2A(ORV_A, c.progressive))
  ORV_ROUTE(CF_YUY2A, CF_RGBA, I::RGBAToYUY2A(ORV_A))
  ORV_ROUTE(CF_YUY2A, CF_YUY2A, I::CopyYUY2A(ORV_A))
  return routes;
}

#undef ORV_ROUTE
#undef ORV_A

// Buffers large enough for any format at kW x kH with the steps below.
constexpr int kSrcPad = 4;
constexpr int kDstPad = 12;
int SrcStep(Format f) { return StepFor(f, kW, kSrcPad); }
int DstStep(Format f) { return StepFor(f, kW, kDstPad); }
constexpr size_t kBig = 8 * (kW + 16) * kH;

unsigned long Dispatch(const Call& c, Format src, Format dst) {
  return ConversionAccess::ColorConvert(c.src, c.dst, c.size, c.w, c.h, src, dst, c.srcStep,
                                        c.dstStep, c.progressive, c.field, c.work, nullptr);
}

TEST(Dispatch, EveryRouteRunsItsConversion) {
  for (bool progressive : {true, false}) {
    for (I::FIELD_TYPE field : {I::FIELD_FRAME, I::FIELD_BOTTOM}) {
      for (const Route& r : Routes()) {
        SCOPED_TRACE(::testing::Message() << "dst " << r.dst << " src " << r.src << " progressive "
                                          << progressive << " field " << field);
        Picture src(kBig);
        src.Randomize(r.dst * 16 + r.src);
        Picture viaDispatch(kBig, 0x44), direct(kBig, 0x44);
        unsigned long sizeA = kBig, sizeB = kBig;
        const int srcStep = SrcStep(r.src);
        const int dstStep = -DstStep(r.dst);
        Call a = {src.data(), viaDispatch.data(), &sizeA, kW,     kH, srcStep,
                  dstStep,    progressive,        field,  nullptr};
        Call b = a;
        b.dst = direct.data();
        b.size = &sizeB;
        const unsigned long got = Dispatch(a, r.src, r.dst);
        EXPECT_EQ(0u, got);
        EXPECT_EQ(r.direct(b), got);
        EXPECT_EQ(sizeB, sizeA);
        EXPECT_EQ(direct.Contents(), viaDispatch.Contents());
      }
    }
  }
}

TEST(Dispatch, EveryGapAnswersThreeAndTouchesNothing) {
  std::set<std::pair<int, int>> served;
  for (const Route& r : Routes()) served.insert({r.dst, r.src});
  // The routes of the table, plus the BT.709 4:2:0 source into the five
  // RGB-like formats.
  EXPECT_EQ(88u, served.size());
  int gaps = 0;
  for (int d = -1; d <= 12; ++d) {
    for (int s = -1; s <= 12; ++s) {
      if (served.count({d, s})) continue;
      ++gaps;
      SCOPED_TRACE(::testing::Message() << "dst " << d << " src " << s);
      Picture src(kBig), dst(kBig, 0x44);
      src.Randomize(3);
      unsigned long size = kBig;
      Call c = {src.data(),    dst.data(), &size,          kW,     kH, 4 * kW + 4,
                -(4 * kW + 4), true,       I::FIELD_FRAME, nullptr};
      EXPECT_EQ(3u, Dispatch(c, static_cast<Format>(s), static_cast<Format>(d)));
      EXPECT_EQ(kBig, size);
      EXPECT_EQ(std::vector<uint8_t>(kBig, 0x44), dst.Contents());
    }
  }
  EXPECT_EQ(14 * 14 - 88, gaps);
}

TEST(Dispatch, NamedGaps) {
  Picture src(kBig), dst(kBig, 0x44);
  unsigned long size = kBig;
  Call c = {src.data(), dst.data(), &size, kW, kH, 4 * kW, 4 * kW, true, I::FIELD_FRAME, nullptr};
  for (int s = 0; s <= 11; ++s) {
    EXPECT_EQ(3u, Dispatch(c, static_cast<Format>(s), I::CF_BT709YUY2));
    EXPECT_EQ(3u, Dispatch(c, static_cast<Format>(s), I::CF_BT709YUV420));
  }
  // A YV12 picture reaches YUY2 only by way of YUY2A.
  EXPECT_EQ(3u, Dispatch(c, I::CF_YV12, I::CF_CCIR601YUY2));
  c.srcStep = kW;
  c.dstStep = 2 * kW;
  EXPECT_EQ(0u, Dispatch(c, I::CF_YV12, I::CF_YUY2A));
}

TEST(Dispatch, SameFormatIsALineCopyAcrossSteps) {
  Picture src(3 * (kW + 1) * kH);
  src.Randomize(12);
  Picture dst(4 * (kW + 2) * kH, 0x44);
  unsigned long size = dst.size();
  const int srcStep = 3 * kW + 3, dstStep = 3 * kW + 6;
  Call c = {src.data(), dst.data(), &size, kW, kH, srcStep, dstStep, true, I::FIELD_FRAME, nullptr};
  ASSERT_EQ(0u, Dispatch(c, I::CF_RGB24, I::CF_RGB24));
  for (int y = 0; y < kH; ++y) {
    EXPECT_EQ(std::vector<uint8_t>(src.data() + srcStep * y, src.data() + srcStep * y + 3 * kW),
              std::vector<uint8_t>(dst.data() + dstStep * y, dst.data() + dstStep * y + 3 * kW));
  }
}

// ---- BT.709 sources ---------------------------------------------------------------

// A 4:2:0 picture (step = width): top line white, the rest a saturated red.
std::vector<uint8_t> RedWithWhiteTop(int w, int h) {
  std::vector<uint8_t> p(w * h * 3 / 2);
  std::fill(p.begin(), p.begin() + w * h, 81);
  std::fill(p.begin(), p.begin() + w, 235);
  std::fill(p.begin() + w * h, p.begin() + w * h + w * h / 4, 90);  // Cb
  std::fill(p.begin() + w * h + w * h / 4, p.end(), 240);           // Cr
  return p;
}

TEST(Bt709Routes, PlanarSourceConvertsWithTheBt709Matrix) {
  const int w = 16, h = 8;
  auto src = RedWithWhiteTop(w, h);
  std::vector<uint8_t> hd(3 * w * h), sd(3 * w * h);
  unsigned long size = hd.size();
  Call c = {src.data(), hd.data(), &size, w, h, w, -3 * w, true, I::FIELD_FRAME, nullptr};
  ASSERT_EQ(0u, Dispatch(c, I::CF_BT709YUV420, I::CF_RGB24));
  EXPECT_EQ(hd.size(), size);
  size = sd.size();
  ASSERT_EQ(0u, OrvImage::YUV420ToRGB24(src.data(), sd.data(), &size, w, h, w, -3 * w, true));
  // A bottom-up destination: the source's top line is the last memory line.
  // Far from the white line both matrices see the same red; BT.709 gives it
  // more green than BT.601 does.
  const int mid = 3 * w * 3 + 3 * 4;  // memory line 3, pixel 4
  EXPECT_GT(hd[mid + 1], sd[mid + 1] + 10);
  EXPECT_NEAR(sd[mid + 2], hd[mid + 2], 40);
  EXPECT_GT(hd[3 * w * (h - 1) + 3 * 4 + 1], hd[mid + 1] + 60);
}

TEST(Bt709Routes, PlanarAndPackedSourcesAgree) {
  const int w = 16, h = 8;
  Picture yuy2(2 * w * h);
  yuy2.Randomize(77);
  // The same picture laid out as 4:2:0 (values unchanged).
  std::vector<uint8_t> planar(w * h * 3 / 2);
  unsigned long size = planar.size();
  ASSERT_EQ(0u, OrvImage::CCIR601YUY2ToYUV420(yuy2.data(), planar.data(), &size, w, h, 2 * w, w,
                                              false, nullptr));
  for (Format dst : {I::CF_RGB24, I::CF_RGB32, I::CF_RGBA, I::CF_TavoShiftedStraightRGB24,
                     I::CF_TavoShiftedStraightRGB32}) {
    SCOPED_TRACE(dst);
    const int step = PixelBytes(dst, w);
    std::vector<uint8_t> a(step * h, 1), b(step * h, 2);
    size = a.size();
    ASSERT_EQ(
        0u, OrvImage::Bt709YUY2ToRGB(yuy2.data(), a.data(), &size, w, h, 2 * w, step, false, dst));
    size = b.size();
    ASSERT_EQ(
        0u, OrvImage::Bt709YUV420ToRGB(planar.data(), b.data(), &size, w, h, w, step, false, dst));
    EXPECT_EQ(a, b);
  }
}

TEST(Bt709Routes, RefusalsAnswerThree) {
  const int w = 16, h = 8;
  Picture src(2 * w * h);
  std::vector<uint8_t> dst(3 * w * h, 0x44);
  unsigned long size = dst.size() - 1;
  EXPECT_EQ(3u, OrvImage::Bt709YUY2ToRGB(src.data(), dst.data(), &size, w, h, 2 * w, 3 * w, true,
                                         I::CF_RGB24));
  EXPECT_EQ(std::vector<uint8_t>(dst.size(), 0x44), dst);
  size = 0;
  EXPECT_EQ(3u, OrvImage::Bt709YUV420ToRGB(src.data(), nullptr, &size, w, h, w, -3 * w, true,
                                           I::CF_RGB24));
  EXPECT_EQ(3u * w * h, size);
  size = dst.size();
  EXPECT_EQ(3u, OrvImage::Bt709YUY2ToRGB(src.data(), dst.data(), &size, w, h, 2 * w, 2 * w, true,
                                         I::CF_CCIR601YUY2));
}

}  // namespace
}  // namespace orv_test

namespace orv_test {
namespace {

TEST(ResizeDispatch, EachFormatReachesItsResizer) {
  const int sw = 16, sh = 8, dw = 8, dh = 4;
  using Resizer = unsigned long (*)(unsigned char*, unsigned char*, unsigned long*, unsigned long,
                                    unsigned long, int, unsigned long, unsigned long, int,
                                    I::INTERPOLATION_MODE);
  struct Case {
    Format format;
    Resizer direct;
  };
  const std::vector<Case> cases = {
      {I::CF_CCIR601YUY2, &I::ResizeYUY2},   {I::CF_BT709YUY2, &I::ResizeYUY2},
      {I::CF_RGB24, &I::ResizeRGB24},        {I::CF_TavoShiftedStraightRGB24, &I::ResizeRGB24},
      {I::CF_RGB32, &I::ResizeRGB32},        {I::CF_TavoShiftedStraightRGB32, &I::ResizeRGB32},
      {I::CF_VUYA, &I::ResizeRGB32},         {I::CF_YUV420, &I::ResizeYUV420},
      {I::CF_BT709YUV420, &I::ResizeYUV420}, {I::CF_YV12, &I::ResizeYUV420},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.format);
    const int srcStep = PixelBytes(c.format, sw);
    const int dstStep = PixelBytes(c.format, dw);
    Picture src(PictureBytes(c.format, sw, sh, srcStep));
    src.Randomize(c.format + 1);
    Picture a(PictureBytes(c.format, dw, dh, dstStep), 0x44), b(a.size(), 0x44);
    unsigned long sizeA = a.size(), sizeB = b.size();
    const unsigned long got = I::Resize(src.data(), a.data(), &sizeA, sw, sh, srcStep, dw, dh,
                                        dstStep, c.format, I::INTERPOLATION_LINEAR);
    EXPECT_EQ(0u, got);
    EXPECT_EQ(c.direct(src.data(), b.data(), &sizeB, sw, sh, srcStep, dw, dh, dstStep,
                       I::INTERPOLATION_LINEAR),
              got);
    EXPECT_EQ(sizeB, sizeA);
    EXPECT_EQ(b.Contents(), a.Contents());
  }
  for (int format : {static_cast<int>(I::CF_RGBA), static_cast<int>(I::CF_YUY2A), -1, 12}) {
    Picture src(4 * sw * sh), dst(4 * dw * dh, 0x44);
    unsigned long size = dst.size();
    EXPECT_EQ(3u, I::Resize(src.data(), dst.data(), &size, sw, sh, 4 * sw, dw, dh, 4 * dw,
                            static_cast<Format>(format), I::INTERPOLATION_LINEAR));
    EXPECT_EQ(std::vector<uint8_t>(dst.size(), 0x44), dst.Contents());
  }
}

}  // namespace
}  // namespace orv_test
