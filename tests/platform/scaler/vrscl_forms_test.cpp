// Every processor form of the scaler against the plain form, byte for byte:
// whole pictures through the four entries and the row kernels on their own.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"
#include "platform/scaler/vrscl.h"
#include "tests/platform/scaler/scaler_test_util.h"

namespace {

using scaler_test::Picture;

class VrsclForms : public ::testing::TestWithParam<orv::SimdLevel> {
 protected:
  void SetUp() override {
    if (GetParam() > orv::DetectSimdLevel()) GTEST_SKIP() << "processor lacks this level";
  }
};

int Convert(orv::VRSCLHandle h, Picture* dst, const Picture& src) {
  return orv::VRSCLConvert(h, dst->y.data(), dst->cb.data(), dst->cr.data(), dst->y.step,
                           dst->cb.step, src.y.data(), src.cb.data(), src.cr.data(), src.y.step,
                           src.cb.step);
}

TEST_P(VrsclForms, PicturesEqualThePlainForm) {
  const std::pair<int, int> sizes[] = {{2, 2},   {3, 3},    {17, 9},    {31, 33},  {64, 48},
                                       {97, 71}, {130, 66}, {720, 480}, {1921, 7}, {5, 1081}};
  const std::pair<int, int> pads[] = {{0, 0}, {13, 7}, {64, 32}};
  uint32_t seed = 1234;
  for (auto from : sizes) {
    for (auto to : sizes) {
      // Keep the run short: the largest pairs only against a few partners.
      if (static_cast<long>(from.first) * from.second * to.first * to.second > 4e11) continue;
      for (auto pad : pads) {
        std::mt19937 rng(++seed);
        Picture src(from.first, from.second, pad.first, pad.second);
        src.Fill(&rng);
        Picture want(to.first, to.second, pad.second, pad.first);
        Picture got(to.first, to.second, pad.second, pad.first);
        orv::VRSCLHandle plain = nullptr, form = nullptr;
        ASSERT_EQ(orv::VRSCLCreateInstance(&plain, orv::SimdLevel::kPlain), orv::kVrsclOk);
        ASSERT_EQ(orv::VRSCLCreateInstance(&form, GetParam()), orv::kVrsclOk);
        ASSERT_EQ(orv::VRSCLInstanceLevel(form), GetParam());
        for (orv::VRSCLHandle h : {plain, form}) {
          ASSERT_EQ(orv::VRSCLSetupConverter(h, from.first, from.second, from.first, from.second,
                                             to.first, to.second, to.first, to.second),
                    orv::kVrsclOk);
        }
        ASSERT_EQ(Convert(plain, &want, src), orv::kVrsclOk);
        ASSERT_EQ(Convert(form, &got, src), orv::kVrsclOk);
        EXPECT_TRUE(got.SamePixels(want))
            << from.first << "x" << from.second << "->" << to.first << "x" << to.second << " pad "
            << pad.first << " seed " << seed;
        EXPECT_TRUE(got.CanariesIntact());
        orv::VRSCLReleaseInstance(&plain);
        orv::VRSCLReleaseInstance(&form);
      }
    }
  }
}

// The row kernels over the whole input range, with extreme coefficients that
// tables never hold (negative, large) and work-line values near the 16-bit
// limits, so that saturation is exercised too.
TEST_P(VrsclForms, RowKernelsEqualThePlainForm) {
  const orv::vrscl::Kernels k = orv::vrscl::SelectKernels(GetParam());
  const orv::vrscl::Kernels p = orv::vrscl::SelectKernels(orv::SimdLevel::kPlain);
  std::mt19937 rng(77);
  for (int width : {1, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 65, 100, 1921}) {
    for (int taps : {1, 2, 3, 4, 7, 8, 11, 16, 23, 31, 40}) {
      const int step = width + 5;
      std::vector<uint8_t> src(static_cast<size_t>(step) * taps);
      for (auto& v : src) v = static_cast<uint8_t>(rng() & 1 ? 255 : rng());
      std::vector<int16_t> coefs(taps);
      for (auto& c : coefs) c = static_cast<int16_t>(static_cast<int>(rng() % 8193) - 4096);
      coefs[0] = 16384;
      std::vector<int16_t> a(width + 8, 0x5A5A), b(width + 8, 0x5A5A);
      k.vertical(src.data(), step, taps, coefs.data(), a.data(), width);
      p.vertical(src.data(), step, taps, coefs.data(), b.data(), width);
      ASSERT_EQ(a, b) << "vertical " << width << " taps " << taps;

      const int stride = (taps + 7) / 8 * 8;
      const int inWidth = width * 2 + stride + orv::vrscl::kWorkPad;
      std::vector<int16_t> in(inWidth);
      for (auto& v : in) v = static_cast<int16_t>(rng() & 1 ? 32767 - (rng() & 7) : rng());
      std::vector<int32_t> start(width);
      std::vector<int16_t> hc(static_cast<size_t>(width) * stride, 0);
      for (int i = 0; i < width; ++i) {
        start[i] = static_cast<int32_t>(rng() % (2 * width));
        for (int t = 0; t < taps; ++t)
          // |sum| stays below 2^31 even for 23 taps at the 16-bit limits.
          hc[static_cast<size_t>(i) * stride + t] =
              static_cast<int16_t>(static_cast<int>(rng() % 4097) - 2048);
      }
      const std::vector<int16_t> paired = orv::vrscl::PairCoefs(hc.data(), width, stride);
      std::vector<uint8_t> oa(width + 8, 0xA5), ob(width + 8, 0xA5);
      k.horizontal(in.data(), oa.data(), width, start.data(), hc.data(), paired.data(), stride);
      p.horizontal(in.data(), ob.data(), width, start.data(), hc.data(), nullptr, stride);
      ASSERT_EQ(oa, ob) << "horizontal " << width << " taps " << taps;
      EXPECT_EQ(oa[width], 0xA5);

      // The passes of the horizontal-first order.
      std::vector<uint8_t> bytesIn(inWidth);
      for (auto& v : bytesIn) v = static_cast<uint8_t>(rng() & 1 ? 255 : rng());
      std::vector<int16_t> wa(width + 8, 0x5A5A), wb(width + 8, 0x5A5A);
      k.horizontalBytes(bytesIn.data(), wa.data(), width, start.data(), hc.data(), paired.data(),
                        stride);
      p.horizontalBytes(bytesIn.data(), wb.data(), width, start.data(), hc.data(), nullptr, stride);
      ASSERT_EQ(wa, wb) << "horizontal bytes " << width << " taps " << taps;
      std::vector<std::vector<int16_t>> lines(taps, std::vector<int16_t>(width));
      std::vector<const int16_t*> rows(taps);
      for (int t = 0; t < taps; ++t) {
        for (auto& v : lines[t]) v = static_cast<int16_t>(rng() & 1 ? 32767 - (rng() & 7) : rng());
        rows[t] = lines[t].data();
      }
      std::vector<int16_t> vc(taps);
      for (auto& c : vc) c = static_cast<int16_t>(static_cast<int>(rng() % 4097) - 2048);
      std::vector<uint8_t> va(width + 8, 0xA5), vb(width + 8, 0xA5);
      k.verticalWords(rows.data(), taps, vc.data(), va.data(), width);
      p.verticalWords(rows.data(), taps, vc.data(), vb.data(), width);
      ASSERT_EQ(va, vb) << "vertical words " << width << " taps " << taps;
    }
    std::vector<int16_t> in(width);
    for (auto& v : in) v = static_cast<int16_t>(rng());
    in[0] = 32767;
    in[width - 1] = -32768;
    std::vector<uint8_t> oa(width + 8, 0xA5), ob(width + 8, 0xA5);
    k.narrow(in.data(), oa.data(), width);
    p.narrow(in.data(), ob.data(), width);
    ASSERT_EQ(oa, ob) << "narrow " << width;
  }
}

INSTANTIATE_TEST_SUITE_P(AllLevels, VrsclForms,
                         ::testing::Values(orv::SimdLevel::kSse2, orv::SimdLevel::kAvx2,
                                           orv::SimdLevel::kAvx512),
                         [](const ::testing::TestParamInfo<orv::SimdLevel>& info) {
                           switch (info.param) {
                             case orv::SimdLevel::kSse2:
                               return std::string("Sse2");
                             case orv::SimdLevel::kAvx2:
                               return std::string("Avx2");
                             default:
                               return std::string("Avx512");
                           }
                         });

}  // namespace
