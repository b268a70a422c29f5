#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "picture_helpers.h"
#include "platform/primitives/ipp.h"
#include "platform/primitives/ipp_kernels.h"

namespace {

using namespace orv::ipp;
using orv_test::Picture;

TEST(IppArith, AddAndSubtractSaturateAndScale) {
  Picture p(6, 1);
  const uint8_t v[6] = {10, 16, 235, 250, 0, 255};
  std::copy(v, v + 6, p.p());
  const Ipp8u sixteen[3] = {16, 16, 16};
  ASSERT_EQ(ippiSubC_8u_C3IRSfs(sixteen, p.p(), p.step(), {2, 1}, 0), ippStsNoErr);
  EXPECT_EQ(p.Bytes(), (std::vector<uint8_t>{0, 0, 219, 234, 0, 239}));
  Picture q(6, 1);
  ASSERT_EQ(ippiAddC_8u_C3RSfs(p.p(), p.step(), sixteen, q.p(), q.step(), {2, 1}, 0), ippStsNoErr);
  EXPECT_EQ(q.Bytes(), (std::vector<uint8_t>{16, 16, 235, 250, 16, 255}));
  const Ipp8u three[3] = {1, 2, 3};
  ASSERT_EQ(ippiAddC_8u_C3IRSfs(three, q.p(), q.step(), {2, 1}, 1), ippStsNoErr);
  // (16+1)/2 = 8.5 -> 8 (ties to even), (16+2)/2 = 9, (235+3)/2 = 119, (250+1)/2 = 125.5 -> 126
  EXPECT_EQ(q.Bytes(), (std::vector<uint8_t>{8, 9, 119, 126, 9, 129}));
  Picture r(3, 1);
  r.Fill(200);
  ASSERT_EQ(ippiSubC_8u_C1IRSfs(100, r.p(), r.step(), {3, 1}, -1), ippStsNoErr);
  EXPECT_EQ(r.Bytes(), (std::vector<uint8_t>{200, 200, 200}));
  EXPECT_TRUE(q.CanariesIntact());
}

TEST(IppArith, ShiftedStraightFloatRules) {
  // 0..255 to 0..219 truncated: floor(v x 219 / 255), exactly, for every v.
  const int w = 256;
  std::vector<Ipp8u> src(3 * w);
  for (int i = 0; i < 3 * w; ++i) src[i] = static_cast<Ipp8u>(i / 3);
  std::vector<Ipp32f> f(3 * w);
  std::vector<Ipp8u> out(3 * w);
  ASSERT_EQ(ippiScale_8u32f_C3R(src.data(), 3 * w, f.data(), 12 * w, {w, 1}, 0.0f, 219.0f),
            ippStsNoErr);
  ASSERT_EQ(ippiConvert_32f8u_C3R(f.data(), 12 * w, out.data(), 3 * w, {w, 1}, ippRndZero),
            ippStsNoErr);
  for (int v = 0; v < w; ++v) ASSERT_EQ(out[3 * v], v * 219 / 255) << v;
  EXPECT_EQ(out[3], 0);  // 1 maps to 0
  // Back: 0..219 to 0..255, saturating above 219.
  ASSERT_EQ(ippiScale_8u32f_C3R(src.data(), 3 * w, f.data(), 12 * w, {w, 1}, 0.0f, 255.0f),
            ippStsNoErr);
  ASSERT_EQ(ippiScale_32f8u_C3R(f.data(), 12 * w, out.data(), 3 * w, {w, 1}, 0.0f, 219.0f),
            ippStsNoErr);
  for (int v = 0; v < w; ++v)
    ASSERT_EQ(out[3 * v], std::min(255, static_cast<int>(std::lround(v * 255.0 / 219.0)))) << v;
  EXPECT_EQ(out[3 * 220], 255);
  EXPECT_EQ(ippiScale_32f8u_C3R(f.data(), 12 * w, out.data(), 3 * w, {w, 1}, 5.0f, 5.0f),
            ippStsScaleRangeErr);
}

TEST(IppArith, ConvertRoundingModesAndAccumulation) {
  const Ipp32f f[6] = {2.5f, 3.5f, -1.0f, 300.0f, 7.49f, NAN};
  Ipp8u o[6];
  ASSERT_EQ(ippiConvert_32f8u_C1R(f, 24, o, 6, {6, 1}, ippRndNear), ippStsNoErr);
  EXPECT_EQ(std::vector<Ipp8u>(o, o + 6), (std::vector<Ipp8u>{2, 4, 0, 255, 7, 0}));
  ASSERT_EQ(ippiConvert_32f8u_C1R(f, 24, o, 6, {6, 1}, ippRndFinancial), ippStsNoErr);
  EXPECT_EQ(o[0], 3);
  ASSERT_EQ(ippiConvert_32f8u_C1R(f, 24, o, 6, {6, 1}, ippRndZero), ippStsNoErr);
  EXPECT_EQ(o[1], 3);
  EXPECT_EQ(ippiConvert_32f8u_C1R(f, 24, o, 6, {6, 1}, static_cast<IppRoundMode>(7)),
            ippStsRoundModeNotSupportedErr);
  const Ipp8u a[4] = {0, 100, 200, 255}, b[4] = {255, 0, 100, 1};
  Ipp32f acc[4];
  ASSERT_EQ(ippiConvert_8u32f_C1R(a, 4, acc, 16, {4, 1}), ippStsNoErr);
  ASSERT_EQ(ippiAddWeighted_8u32f_C1IR(b, 4, acc, 16, {4, 1}, 0.25f), ippStsNoErr);
  EXPECT_FLOAT_EQ(acc[0], 63.75f);
  EXPECT_FLOAT_EQ(acc[1], 75.0f);
  EXPECT_FLOAT_EQ(acc[2], 175.0f);
  EXPECT_FLOAT_EQ(acc[3], 191.5f);
}

TEST(IppAlpha, ConstantPlusMixesByFractionsOf255) {
  for (int C : {1, 3, 4}) {
    const int w = 3;
    Picture a(C * w, 2), b(C * w, 2), d(C * w, 2);
    a.Fill(200);
    b.Fill(100);
    auto comp =
        C == 1 ? ippiAlphaCompC_8u_C1R : (C == 3 ? ippiAlphaCompC_8u_C3R : ippiAlphaCompC_8u_C4R);
    ASSERT_EQ(
        comp(a.p(), a.step(), 128, b.p(), b.step(), 128, d.p(), d.step(), {w, 2}, ippAlphaPlus),
        ippStsNoErr);
    EXPECT_EQ(d.Bytes(), std::vector<uint8_t>(C * w * 2, 151));  // 128 x 300 / 255 = 150.6
    ASSERT_EQ(
        comp(a.p(), a.step(), 255, b.p(), b.step(), 255, d.p(), d.step(), {w, 2}, ippAlphaPlus),
        ippStsNoErr);
    EXPECT_EQ(d.Bytes(), std::vector<uint8_t>(C * w * 2, 255));  // saturated
    ASSERT_EQ(comp(a.p(), a.step(), 255, b.p(), b.step(), 0, d.p(), d.step(), {w, 2}, ippAlphaPlus),
              ippStsNoErr);
    EXPECT_EQ(d.Bytes(), a.Bytes());
    ASSERT_EQ(
        comp(a.p(), a.step(), 64, b.p(), b.step(), 255, d.p(), d.step(), {w, 2}, ippAlphaOver),
        ippStsNoErr);
    // 64 x 200 + D(255 x 191) x 100 = 12800 + 19100 -> 125.1
    EXPECT_EQ(d.row(1)[C * w - 1], 125);
    EXPECT_EQ(
        comp(a.p(), a.step(), 1, b.p(), b.step(), 1, d.p(), d.step(), {w, 2}, ippAlphaOverPremul),
        ippStsAlphaTypeErr);
    EXPECT_TRUE(d.CanariesIntact());
  }
}

TEST(IppAlpha, PerPixelOverUsesTheFourthByte) {
  Picture a(16, 1), b(16, 1), d(16, 1);
  const uint8_t pa[16] = {10, 20, 30, 255, 10, 20, 30, 0, 200, 100, 0, 128, 50, 50, 50, 64};
  const uint8_t pb[16] = {1, 2, 3, 255, 90, 80, 70, 255, 0, 100, 200, 255, 250, 250, 250, 128};
  std::copy(pa, pa + 16, a.p());
  std::copy(pb, pb + 16, b.p());
  ASSERT_EQ(ippiAlphaComp_8u_AC4R(a.p(), a.step(), b.p(), b.step(), d.p(), d.step(), {4, 1},
                                  ippAlphaOver),
            ippStsNoErr);
  const std::vector<uint8_t> got = d.Bytes();
  EXPECT_EQ(std::vector<uint8_t>(got.begin(), got.begin() + 4),
            (std::vector<uint8_t>{10, 20, 30, 255}));
  EXPECT_EQ(std::vector<uint8_t>(got.begin() + 4, got.begin() + 8),
            (std::vector<uint8_t>{90, 80, 70, 255}));
  // a = 128 over opaque: 128 x 200 + 127 x 0 -> 100; 128 x 100 + 127 x 100 -> 100; 0 + 127 x 200 ->
  // 100.
  EXPECT_EQ(std::vector<uint8_t>(got.begin() + 8, got.begin() + 12),
            (std::vector<uint8_t>{100, 100, 100, 255}));
  // a = 64 over b = 128: wb = D(191 x 128) = 96; 64 x 50 + 96 x 250 = 27200 -> 107; alpha 160.
  EXPECT_EQ(std::vector<uint8_t>(got.begin() + 12, got.end()),
            (std::vector<uint8_t>{107, 107, 107, 160}));
  EXPECT_TRUE(d.CanariesIntact());
}

// The constant-alpha mix of every processor form against the plain one, for
// every pair of samples and weights that reach both ends of the sum (the
// forms keep the sum in 16 bits and clamp it, so the top is where they could
// go wrong).
TEST(IppAlphaKernels, ConstantMixMatchesPlainForEveryPairOfSamples) {
  std::vector<uint8_t> a(65536), b(65536), want(65536), got(65536);
  for (int i = 0; i < 65536; ++i) {
    a[i] = static_cast<uint8_t>(i & 255);
    b[i] = static_cast<uint8_t>(i >> 8);
  }
  const int weights[] = {0, 1, 2, 64, 127, 128, 129, 200, 254, 255};
  for (int lv = 1; lv <= static_cast<int>(orv::DetectSimdLevel()); ++lv) {
    const Kernels& form = KernelsFor(static_cast<orv::SimdLevel>(lv));
    for (int wa : weights)
      for (int wb : weights) {
        PlainKernels().alphaMix(a.data(), b.data(), want.data(), 65536, wa, wb);
        form.alphaMix(a.data(), b.data(), got.data(), 65536, wa, wb);
        ASSERT_EQ(got, want) << "level " << lv << " weights " << wa << ", " << wb;
      }
  }
}

}  // namespace
