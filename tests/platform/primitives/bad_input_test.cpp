// Every primitive answers a null pointer, a bad size and a short step with
// its status, before it writes anything.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/primitives/ipp.h"

namespace {

using namespace orv::ipp;

// One call of a primitive over 8 x 4 pictures; `variant` picks what is wrong.
enum Variant { kGood, kNull, kZeroSize, kHugeSize, kShortStep, kNegativeStep };

struct Buffers {
  std::vector<Ipp8u> a = std::vector<Ipp8u>(4096, 50);
  std::vector<Ipp8u> b = std::vector<Ipp8u>(4096, 60);
  std::vector<Ipp8u> c = std::vector<Ipp8u>(4096, 70);
  std::vector<Ipp8u> d = std::vector<Ipp8u>(4096, 80);
  std::vector<Ipp32f> f = std::vector<Ipp32f>(1024, 1.0f);
  std::vector<Ipp32f> g = std::vector<Ipp32f>(1024, 2.0f);
};

struct Case {
  const char* name;
  std::function<IppStatus(Buffers&, Variant)> call;
};

IppiSize Size(Variant v) {
  return v == kZeroSize ? IppiSize{0, 4} : (v == kHugeSize ? IppiSize{65536, 4} : IppiSize{8, 4});
}
// A step that holds `bytes` per line unless the variant makes it short.
int Step(Variant v, int bytes) {
  return v == kShortStep ? bytes - 1 : (v == kNegativeStep ? -bytes : bytes);
}
template <typename T>
T* P(Variant v, std::vector<T>& buf) {
  return v == kNull ? nullptr : buf.data();
}

std::vector<Case> Cases() {
  const int order[3] = {2, 1, 0};
  static const int kOrder[3] = {2, 1, 0};
  (void)order;
  return {
      {"Copy_C1R",
       [](Buffers& B, Variant v) {
         return ippiCopy_8u_C1R(B.a.data(), 64, P(v, B.d), Step(v, 8), Size(v));
       }},
      {"Copy_C3R",
       [](Buffers& B, Variant v) {
         return ippiCopy_8u_C3R(B.a.data(), 64, P(v, B.d), Step(v, 24), Size(v));
       }},
      {"Copy_C4R",
       [](Buffers& B, Variant v) {
         return ippiCopy_8u_C4R(B.a.data(), 64, P(v, B.d), Step(v, 32), Size(v));
       }},
      {"Copy_C3AC4R",
       [](Buffers& B, Variant v) {
         return ippiCopy_8u_C3AC4R(B.a.data(), 64, P(v, B.d), Step(v, 32), Size(v));
       }},
      {"Copy_AC4C3R",
       [](Buffers& B, Variant v) {
         return ippiCopy_8u_AC4C3R(B.a.data(), 64, P(v, B.d), Step(v, 24), Size(v));
       }},
      {"Copy_C3P3R",
       [](Buffers& B, Variant v) {
         Ipp8u* d[3] = {P(v, B.d), B.b.data(), B.c.data()};
         return ippiCopy_8u_C3P3R(B.a.data(), 64, d, Step(v, 8), Size(v));
       }},
      {"Copy_C4P4R",
       [](Buffers& B, Variant v) {
         Ipp8u* d[4] = {B.b.data(), B.c.data(), P(v, B.d), B.d.data() + 1024};
         return ippiCopy_8u_C4P4R(B.a.data(), 64, d, Step(v, 8), Size(v));
       }},
      {"Copy_P4C4R",
       [](Buffers& B, Variant v) {
         const Ipp8u* s[4] = {B.a.data(), B.b.data(), B.c.data(), B.c.data()};
         return ippiCopy_8u_P4C4R(s, 64, P(v, B.d), Step(v, 32), Size(v));
       }},
      {"Copy_C4C1R",
       [](Buffers& B, Variant v) {
         return ippiCopy_8u_C4C1R(B.a.data() + 3, 64, P(v, B.d), Step(v, 8), Size(v));
       }},
      {"Set_C1R",
       [](Buffers& B, Variant v) { return ippiSet_8u_C1R(1, P(v, B.d), Step(v, 8), Size(v)); }},
      {"Set_C4R",
       [](Buffers& B, Variant v) {
         const Ipp8u x[4] = {1, 2, 3, 4};
         return ippiSet_8u_C4R(x, P(v, B.d), Step(v, 32), Size(v));
       }},
      {"Set_C4CR",
       [](Buffers& B, Variant v) { return ippiSet_8u_C4CR(1, P(v, B.d), Step(v, 32), Size(v)); }},
      {"SwapChannels_C3R",
       [](Buffers& B, Variant v) {
         return ippiSwapChannels_8u_C3R(B.a.data(), 64, P(v, B.d), Step(v, 24), Size(v), kOrder);
       }},
      {"SwapChannels_C3IR",
       [](Buffers& B, Variant v) {
         return ippiSwapChannels_8u_C3IR(P(v, B.d), Step(v, 24), Size(v), kOrder);
       }},
      {"Mirror_C1R",
       [](Buffers& B, Variant v) {
         return ippiMirror_8u_C1R(B.a.data(), 64, P(v, B.d), Step(v, 8), Size(v), ippAxsBoth);
       }},
      {"Mirror_C3R",
       [](Buffers& B, Variant v) {
         return ippiMirror_8u_C3R(B.a.data(), 64, P(v, B.d), Step(v, 24), Size(v), ippAxsBoth);
       }},
      {"Mirror_C4R",
       [](Buffers& B, Variant v) {
         return ippiMirror_8u_C4R(B.a.data(), 64, P(v, B.d), Step(v, 32), Size(v), ippAxsBoth);
       }},
      {"Mirror_C1IR",
       [](Buffers& B, Variant v) {
         return ippiMirror_8u_C1IR(P(v, B.d), Step(v, 8), Size(v), ippAxsHorizontal);
       }},
      {"Mirror_C3IR",
       [](Buffers& B, Variant v) {
         return ippiMirror_8u_C3IR(P(v, B.d), Step(v, 24), Size(v), ippAxsVertical);
       }},
      {"Mirror_C4IR",
       [](Buffers& B, Variant v) {
         return ippiMirror_8u_C4IR(P(v, B.d), Step(v, 32), Size(v), ippAxsBoth);
       }},
      {"AddC_C3RSfs",
       [](Buffers& B, Variant v) {
         const Ipp8u x[3] = {1, 2, 3};
         return ippiAddC_8u_C3RSfs(B.a.data(), 64, x, P(v, B.d), Step(v, 24), Size(v), 0);
       }},
      {"AddC_C3IRSfs",
       [](Buffers& B, Variant v) {
         const Ipp8u x[3] = {1, 2, 3};
         return ippiAddC_8u_C3IRSfs(x, P(v, B.d), Step(v, 24), Size(v), 0);
       }},
      {"SubC_C3IRSfs",
       [](Buffers& B, Variant v) {
         const Ipp8u x[3] = {1, 2, 3};
         return ippiSubC_8u_C3IRSfs(x, P(v, B.d), Step(v, 24), Size(v), 0);
       }},
      {"SubC_C1IRSfs",
       [](Buffers& B, Variant v) {
         return ippiSubC_8u_C1IRSfs(1, P(v, B.d), Step(v, 8), Size(v), 0);
       }},
      {"Scale_32f8u_C3R",
       [](Buffers& B, Variant v) {
         return ippiScale_32f8u_C3R(B.f.data(), 128, P(v, B.d), Step(v, 24), Size(v), 0.f, 1.f);
       }},
      {"Convert_32f8u_C1R",
       [](Buffers& B, Variant v) {
         return ippiConvert_32f8u_C1R(B.f.data(), 128, P(v, B.d), Step(v, 8), Size(v), ippRndNear);
       }},
      {"Convert_32f8u_C3R",
       [](Buffers& B, Variant v) {
         return ippiConvert_32f8u_C3R(B.f.data(), 128, P(v, B.d), Step(v, 24), Size(v), ippRndZero);
       }},
      {"AlphaCompC_C1R",
       [](Buffers& B, Variant v) {
         return ippiAlphaCompC_8u_C1R(B.a.data(), 64, 1, B.b.data(), 64, 2, P(v, B.d), Step(v, 8),
                                      Size(v), ippAlphaPlus);
       }},
      {"AlphaCompC_C3R",
       [](Buffers& B, Variant v) {
         return ippiAlphaCompC_8u_C3R(B.a.data(), 64, 1, B.b.data(), 64, 2, P(v, B.d), Step(v, 24),
                                      Size(v), ippAlphaPlus);
       }},
      {"AlphaCompC_C4R",
       [](Buffers& B, Variant v) {
         return ippiAlphaCompC_8u_C4R(B.a.data(), 64, 1, B.b.data(), 64, 2, P(v, B.d), Step(v, 32),
                                      Size(v), ippAlphaPlus);
       }},
      {"AlphaComp_AC4R",
       [](Buffers& B, Variant v) {
         return ippiAlphaComp_8u_AC4R(B.a.data(), 64, B.b.data(), 64, P(v, B.d), Step(v, 32),
                                      Size(v), ippAlphaOver);
       }},
      {"YCbCr420ToBGR",
       [](Buffers& B, Variant v) {
         const Ipp8u* s[3] = {B.a.data(), B.b.data(), B.c.data()};
         int st[3] = {64, 64, 64};
         return ippiYCbCr420ToBGR_8u_P3C3R(s, st, P(v, B.d), Step(v, 24), Size(v));
       }},
      {"YCbCr422ToRGB_C2C3R",
       [](Buffers& B, Variant v) {
         return ippiYCbCr422ToRGB_8u_C2C3R(B.a.data(), 64, P(v, B.d), Step(v, 24), Size(v));
       }},
      {"YCbCr422ToRGB_C2P3R",
       [](Buffers& B, Variant v) {
         Ipp8u* d[3] = {B.b.data(), P(v, B.d), B.c.data()};
         return ippiYCbCr422ToRGB_8u_C2P3R(B.a.data(), 64, d, Step(v, 8), Size(v));
       }},
      {"RGBToYCbCr420",
       [](Buffers& B, Variant v) {
         Ipp8u* d[3] = {P(v, B.d), B.b.data(), B.c.data()};
         int st[3] = {Step(v, 8), 64, 64};
         return ippiRGBToYCbCr420_8u_C3P3R(B.a.data(), 64, d, st, Size(v));
       }},
      {"RGBToYCbCr422",
       [](Buffers& B, Variant v) {
         const Ipp8u* s[3] = {B.a.data(), B.b.data(), B.c.data()};
         return ippiRGBToYCbCr422_8u_P3C2R(s, 64, P(v, B.d), Step(v, 16), Size(v));
       }},
      {"YCbCrToBGR_JPEG",
       [](Buffers& B, Variant v) {
         const Ipp8u* s[3] = {B.a.data(), B.b.data(), B.c.data()};
         return ippiYCbCrToBGR_JPEG_8u_P3C3R(s, 64, P(v, B.d), Step(v, 24), Size(v));
       }},
      {"YCbCrToRGB_JPEG_P3R",
       [](Buffers& B, Variant v) {
         const Ipp8u* s[3] = {B.a.data(), B.b.data(), B.c.data()};
         Ipp8u* d[3] = {P(v, B.d), B.d.data() + 1024, B.d.data() + 2048};
         return ippiYCbCrToRGB_JPEG_8u_P3R(s, 64, d, Step(v, 8), Size(v));
       }},
      {"BGRToYCbCr_JPEG",
       [](Buffers& B, Variant v) {
         Ipp8u* d[3] = {P(v, B.d), B.d.data() + 1024, B.d.data() + 2048};
         return ippiBGRToYCbCr_JPEG_8u_C3P3R(B.a.data(), 64, d, Step(v, 8), Size(v));
       }},
      {"SampleDownH2V2",
       [](Buffers& B, Variant v) {
         const IppiSize s = Size(v);
         return ippiSampleDownH2V2_JPEG_8u_C1R(B.a.data(), 64, {16, 8}, P(v, B.d), Step(v, 8), s);
       }},
      {"SampleDownH2V1",
       [](Buffers& B, Variant v) {
         return ippiSampleDownH2V1_JPEG_8u_C1R(B.a.data(), 64, {16, 4}, P(v, B.d), Step(v, 8),
                                               Size(v));
       }},
      {"YCbCr422_C2P3R",
       [](Buffers& B, Variant v) {
         Ipp8u* d[3] = {P(v, B.d), B.b.data(), B.c.data()};
         int st[3] = {Step(v, 8), 64, 64};
         return ippiYCbCr422_8u_C2P3R(B.a.data(), 64, d, st, Size(v));
       }},
      {"YCbCr422_P3C2R",
       [](Buffers& B, Variant v) {
         const Ipp8u* s[3] = {B.a.data(), B.b.data(), B.c.data()};
         int st[3] = {64, 64, 64};
         return ippiYCbCr422_8u_P3C2R(s, st, P(v, B.d), Step(v, 16), Size(v));
       }},
      {"Resize_C1R",
       [](Buffers& B, Variant v) {
         return ippiResize_8u_C1R(B.a.data(), {8, 4}, 64, {0, 0, 8, 4}, P(v, B.d), Step(v, 8),
                                  Size(v), 1.0, 1.0, IPPI_INTER_CUBIC);
       }},
      {"Resize_C3R",
       [](Buffers& B, Variant v) {
         return ippiResize_8u_C3R(B.a.data(), {8, 4}, 64, {0, 0, 8, 4}, P(v, B.d), Step(v, 24),
                                  Size(v), 1.0, 1.0, IPPI_INTER_LINEAR);
       }},
      {"Resize_C4R",
       [](Buffers& B, Variant v) {
         return ippiResize_8u_C4R(B.a.data(), {8, 4}, 64, {0, 0, 8, 4}, P(v, B.d), Step(v, 32),
                                  Size(v), 1.0, 1.0, IPPI_INTER_SUPER);
       }},
      {"ResizeCenter_C1R",
       [](Buffers& B, Variant v) {
         return ippiResizeCenter_8u_C1R(B.a.data(), {8, 4}, 64, {0, 0, 8, 4}, P(v, B.d), Step(v, 8),
                                        Size(v), 1.0, 1.0, 4.0, 2.0, IPPI_INTER_NN);
       }},
      {"Rotate_C3R",
       [](Buffers& B, Variant v) {
         const IppiSize s = Size(v);
         return ippiRotate_8u_C3R(B.a.data(), {8, 4}, 64, {0, 0, 8, 4}, P(v, B.d), Step(v, 24),
                                  {0, 0, s.width, s.height}, 0.0, 0.0, 0.0, IPPI_INTER_NN);
       }},
      {"Rotate_C4R",
       [](Buffers& B, Variant v) {
         const IppiSize s = Size(v);
         return ippiRotate_8u_C4R(B.a.data(), {8, 4}, 64, {0, 0, 8, 4}, P(v, B.d), Step(v, 32),
                                  {0, 0, s.width, s.height}, 0.0, 0.0, 0.0, IPPI_INTER_NN);
       }},
  };
}

TEST(IppBadInput, NullSizeAndStepAreAnsweredBeforeWriting) {
  for (const Case& c : Cases()) {
    {
      Buffers b;
      EXPECT_EQ(c.call(b, kGood), ippStsNoErr) << c.name;
    }
    const std::pair<Variant, IppStatus> bad[] = {{kNull, ippStsNullPtrErr},
                                                 {kZeroSize, ippStsSizeErr},
                                                 {kHugeSize, ippStsSizeErr},
                                                 {kShortStep, ippStsStepErr},
                                                 {kNegativeStep, ippStsStepErr}};
    for (const auto& e : bad) {
      Buffers b;
      EXPECT_EQ(c.call(b, e.first), e.second) << c.name << " variant " << e.first;
      EXPECT_EQ(b.d, std::vector<Ipp8u>(4096, 80)) << c.name << " wrote on variant " << e.first;
    }
  }
}

TEST(IppBadInput, FloatDestinationsToo) {
  Ipp8u src[64] = {};
  Ipp32f dst[64];
  for (Ipp32f& x : dst) x = 7.0f;
  EXPECT_EQ(ippiScale_8u32f_C3R(nullptr, 24, dst, 96, {8, 2}, 0.f, 1.f), ippStsNullPtrErr);
  EXPECT_EQ(ippiScale_8u32f_C3R(src, 24, dst, 95, {8, 2}, 0.f, 1.f), ippStsStepErr);
  EXPECT_EQ(ippiScale_8u32f_C3R(src, 24, dst, 96, {8, 2}, 1.f, 0.f), ippStsScaleRangeErr);
  EXPECT_EQ(ippiConvert_8u32f_C1R(src, 8, dst, 31, {8, 2}), ippStsStepErr);
  EXPECT_EQ(ippiConvert_8u32f_C1R(src, 8, dst, 32, {8, -2}), ippStsSizeErr);
  EXPECT_EQ(ippiAddWeighted_8u32f_C1IR(src, 8, nullptr, 32, {8, 2}, 0.5f), ippStsNullPtrErr);
  EXPECT_EQ(ippiAddWeighted_8u32f_C1IR(src, 7, dst, 32, {8, 2}, 0.5f), ippStsStepErr);
  for (Ipp32f x : dst) EXPECT_EQ(x, 7.0f);
}

}  // namespace
