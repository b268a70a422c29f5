// Every processor form of the primitives against the plain form: random
// pictures of odd and even sizes, several steps, canaries around every
// output. A form must give the plain form's bytes, everywhere.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "foundation/cpu_info.h"
#include "picture_helpers.h"
#include "platform/primitives/ipp.h"
#include "platform/primitives/ipp_kernels.h"

namespace {

using namespace orv::ipp;
using orv::SimdLevel;
using orv_test::Picture;

// One case: picture shapes (line bytes, height) and a call that runs the
// primitive with the given kernels over the pictures (inputs first).
struct Case {
  std::string name;
  std::vector<std::pair<int, int>> shapes;
  std::function<IppStatus(const Kernels&, std::vector<Picture>&)> run;
};

std::vector<Picture> Make(const Case& c, uint32_t seed, int pad) {
  std::mt19937 rng(seed);
  std::vector<Picture> pics;
  for (const auto& s : c.shapes) {
    pics.emplace_back(s.first, s.second, pad);
    pics.back().Harsh(rng);
  }
  return pics;
}

const int kWidths[] = {1, 2, 3, 5, 8, 15, 16, 17, 31, 32, 33, 47, 48, 49, 64, 65, 100, 129, 257};
const int kHeights[] = {1, 2, 3, 6};
const int kPads[] = {0, 3, 64};

std::vector<Case> CasesFor(int w, int h) {
  const int hw = w / 2, hh = h / 2 > 0 ? h / 2 : 1;
  std::vector<Case> cs;
  auto add = [&](std::string n, std::vector<std::pair<int, int>> s,
                 std::function<IppStatus(const Kernels&, std::vector<Picture>&)> f) {
    cs.push_back({std::move(n), std::move(s), std::move(f)});
  };
  const IppiSize r{w, h};
  add("YCbCr420ToBGR", {{w, h}, {hw > 0 ? hw : 1, hh}, {hw > 0 ? hw : 1, hh}, {3 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        const Ipp8u* s[3] = {p[0].p(), p[1].p(), p[2].p()};
        int st[3] = {p[0].step(), p[1].step(), p[2].step()};
        return forms::YCbCr420ToBGR(k, s, st, p[3].p(), p[3].step(), r);
      });
  add("YCbCr422ToRGB_C2C3R", {{2 * w, h}, {3 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        return forms::YCbCr422ToRGB_C2C3R(k, p[0].p(), p[0].step(), p[1].p(), p[1].step(), r);
      });
  add("YCbCr422ToRGB_C2P3R", {{2 * w, h}, {w, h}, {w, h}, {w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        Ipp8u* d[3] = {p[1].p(), p[2].p(), p[3].p()};
        return forms::YCbCr422ToRGB_C2P3R(k, p[0].p(), p[0].step(), d, p[1].step(), r);
      });
  add("RGBToYCbCr420", {{3 * w, h}, {w, h}, {hw > 0 ? hw : 1, hh}, {hw > 0 ? hw : 1, hh}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        Ipp8u* d[3] = {p[1].p(), p[2].p(), p[3].p()};
        int st[3] = {p[1].step(), p[2].step(), p[3].step()};
        return forms::RGBToYCbCr420(k, p[0].p(), p[0].step(), d, st, r);
      });
  add("RGBToYCbCr422", {{w, h}, {w, h}, {w, h}, {2 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        const Ipp8u* s[3] = {p[0].p(), p[1].p(), p[2].p()};
        return forms::RGBToYCbCr422(k, s, p[0].step(), p[3].p(), p[3].step(), r);
      });
  add("YCbCrToBGR_JPEG", {{w, h}, {w, h}, {w, h}, {3 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        const Ipp8u* s[3] = {p[0].p(), p[1].p(), p[2].p()};
        return forms::YCbCrToBGR_JPEG(k, s, p[0].step(), p[3].p(), p[3].step(), r);
      });
  add("YCbCrToRGB_JPEG_P3R", {{w, h}, {w, h}, {w, h}, {w, h}, {w, h}, {w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        const Ipp8u* s[3] = {p[0].p(), p[1].p(), p[2].p()};
        Ipp8u* d[3] = {p[3].p(), p[4].p(), p[5].p()};
        return forms::YCbCrToRGB_JPEG_P3R(k, s, p[0].step(), d, p[3].step(), r);
      });
  add("BGRToYCbCr_JPEG", {{3 * w, h}, {w, h}, {w, h}, {w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        Ipp8u* d[3] = {p[1].p(), p[2].p(), p[3].p()};
        return forms::BGRToYCbCr_JPEG(k, p[0].p(), p[0].step(), d, p[1].step(), r);
      });
  const IppiSize half{(w + 1) / 2, (h + 1) / 2};
  add("SampleDownH2V2", {{w, h}, {half.width, half.height}},
      [r, half](const Kernels& k, std::vector<Picture>& p) {
        return forms::SampleDown(k, true, p[0].p(), p[0].step(), r, p[1].p(), p[1].step(), half);
      });
  add("SampleDownH2V1", {{w, h}, {half.width, h}},
      [r, half](const Kernels& k, std::vector<Picture>& p) {
        return forms::SampleDown(k, false, p[0].p(), p[0].step(), r, p[1].p(), p[1].step(),
                                 {half.width, r.height});
      });
  add("YCbCr422Split", {{2 * w, h}, {w, h}, {hw > 0 ? hw : 1, h}, {hw > 0 ? hw : 1, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        Ipp8u* d[3] = {p[1].p(), p[2].p(), p[3].p()};
        int st[3] = {p[1].step(), p[2].step(), p[3].step()};
        return forms::YCbCr422Split(k, p[0].p(), p[0].step(), d, st, r);
      });
  add("YCbCr422Join", {{w, h}, {hw > 0 ? hw : 1, h}, {hw > 0 ? hw : 1, h}, {2 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        const Ipp8u* s[3] = {p[0].p(), p[1].p(), p[2].p()};
        int st[3] = {p[0].step(), p[1].step(), p[2].step()};
        return forms::YCbCr422Join(k, s, st, p[3].p(), p[3].step(), r);
      });
  for (int C : {1, 3, 4})
    for (int axis : {0, 1, 2}) {
      add("Mirror_C" + std::to_string(C) + "_axis" + std::to_string(axis), {{C * w, h}, {C * w, h}},
          [r, C, axis](const Kernels& k, std::vector<Picture>& p) {
            return forms::Mirror(k, C, p[0].p(), p[0].step(), p[1].p(), p[1].step(), r,
                                 static_cast<IppiAxis>(axis));
          });
      add("MirrorInPlace_C" + std::to_string(C) + "_axis" + std::to_string(axis), {{C * w, h}},
          [r, C, axis](const Kernels& k, std::vector<Picture>& p) {
            return forms::MirrorInPlace(k, C, p[0].p(), p[0].step(), r,
                                        static_cast<IppiAxis>(axis));
          });
    }
  add("Copy_C3AC4R", {{3 * w, h}, {4 * w, h}}, [r](const Kernels& k, std::vector<Picture>& p) {
    return forms::Copy_C3AC4R(k, p[0].p(), p[0].step(), p[1].p(), p[1].step(), r);
  });
  add("Copy_AC4C3R", {{4 * w, h}, {3 * w, h}}, [r](const Kernels& k, std::vector<Picture>& p) {
    return forms::Copy_AC4C3R(k, p[0].p(), p[0].step(), p[1].p(), p[1].step(), r);
  });
  add("Copy_C3P3R", {{3 * w, h}, {w, h}, {w, h}, {w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        Ipp8u* d[3] = {p[1].p(), p[2].p(), p[3].p()};
        return forms::Copy_C3P3R(k, p[0].p(), p[0].step(), d, p[1].step(), r);
      });
  add("Copy_C4P4R", {{4 * w, h}, {w, h}, {w, h}, {w, h}, {w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        Ipp8u* d[4] = {p[1].p(), p[2].p(), p[3].p(), p[4].p()};
        return forms::Copy_C4P4R(k, p[0].p(), p[0].step(), d, p[1].step(), r);
      });
  add("Copy_P4C4R", {{w, h}, {w, h}, {w, h}, {w, h}, {4 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        const Ipp8u* s[4] = {p[0].p(), p[1].p(), p[2].p(), p[3].p()};
        return forms::Copy_P4C4R(k, s, p[0].step(), p[4].p(), p[4].step(), r);
      });
  for (int c = 0; c < 4; ++c) {
    add("Copy_C4C1R_ch" + std::to_string(c), {{4 * w, h}, {w, h}},
        [r, c](const Kernels& k, std::vector<Picture>& p) {
          return forms::Copy_C4C1R(k, p[0].p() + c, p[0].step(), p[1].p(), p[1].step(), r);
        });
    add("Set_C4CR_ch" + std::to_string(c), {{4 * w, h}},
        [r, c](const Kernels& k, std::vector<Picture>& p) {
          return forms::Set_C4CR(k, 77, p[0].p() + c, p[0].step(), r);
        });
  }
  add("Set_C4R", {{4 * w, h}}, [r](const Kernels& k, std::vector<Picture>& p) {
    const Ipp8u v[4] = {1, 2, 3, 4};
    return forms::Set_C4R(k, v, p[0].p(), p[0].step(), r);
  });
  add("SwapChannels_C3R", {{3 * w, h}, {3 * w, h}}, [r](const Kernels& k, std::vector<Picture>& p) {
    const int order[3] = {2, 0, 1};
    return forms::SwapChannels_C3R(k, p[0].p(), p[0].step(), p[1].p(), p[1].step(), r, order);
  });
  add("SwapChannels_C3IR", {{3 * w, h}}, [r](const Kernels& k, std::vector<Picture>& p) {
    const int order[3] = {2, 1, 0};
    return forms::SwapChannels_C3R(k, p[0].p(), p[0].step(), p[0].p(), p[0].step(), r, order);
  });
  for (int C : {1, 3, 4})
    for (int t : {0, 3, 5}) {
      add("AlphaCompC_C" + std::to_string(C) + "_type" + std::to_string(t),
          {{C * w, h}, {C * w, h}, {C * w, h}},
          [r, C, t](const Kernels& k, std::vector<Picture>& p) {
            return forms::AlphaCompC(k, C, p[0].p(), p[0].step(), 200, p[1].p(), p[1].step(), 180,
                                     p[2].p(), p[2].step(), r, static_cast<IppiAlphaType>(t));
          });
    }
  add("AlphaComp_AC4R", {{4 * w, h}, {4 * w, h}, {4 * w, h}},
      [r](const Kernels& k, std::vector<Picture>& p) {
        return forms::AlphaComp_AC4R(k, p[0].p(), p[0].step(), p[1].p(), p[1].step(), p[2].p(),
                                     p[2].step(), r, ippAlphaOver);
      });
  for (int C : {1, 3, 4})
    for (int interp : {IPPI_INTER_NN, IPPI_INTER_LINEAR, IPPI_INTER_CUBIC, IPPI_INTER_SUPER})
      for (double f : {0.1, 0.37, 1.0, 2.0, 2.7}) {
        const int dw = std::max(1, static_cast<int>(w * f)),
                  dh = std::max(1, static_cast<int>(h * f));
        add("Resize_C" + std::to_string(C) + "_i" + std::to_string(interp) + "_f" +
                std::to_string(f),
            {{C * w, h}, {C * dw, dh}},
            [r, C, interp, f, dw, dh](const Kernels& k, std::vector<Picture>& p) {
              const double xf = (dw + 0.01) / r.width, yf = (dh + 0.01) / r.height;
              return forms::Resize(k, C, f == 2.0, p[0].p(), r, p[0].step(),
                                   {0, 0, r.width, r.height}, p[1].p(), p[1].step(), {dw, dh}, xf,
                                   yf, (r.width + 1) / 2, (r.height + 1) / 2, interp);
            });
      }
  return cs;
}

class PrimitiveForms : public ::testing::TestWithParam<SimdLevel> {};

TEST_P(PrimitiveForms, GiveThePlainBytes) {
  const SimdLevel level = GetParam();
  if (level > orv::DetectSimdLevel()) GTEST_SKIP() << "processor lacks this level";
  const Kernels& plain = PlainKernels();
  const Kernels& form = KernelsFor(level);
  uint32_t seed = 1000;
  for (int w : kWidths)
    for (int h : kHeights)
      for (const Case& c : CasesFor(w, h))
        for (int pad : kPads) {
          ++seed;
          std::vector<Picture> a = Make(c, seed, pad), b = Make(c, seed, pad);
          const IppStatus sa = c.run(plain, a), sb = c.run(form, b);
          ASSERT_EQ(sa, sb) << c.name << " " << w << "x" << h;
          for (size_t i = 0; i < a.size(); ++i) {
            ASSERT_TRUE(b[i].CanariesIntact()) << c.name << " " << w << "x" << h << " pad " << pad
                                               << " picture " << i << " seed " << seed;
            ASSERT_EQ(a[i].Raw(), b[i].Raw()) << c.name << " " << w << "x" << h << " pad " << pad
                                              << " picture " << i << " seed " << seed;
          }
        }
}

std::string LevelName(const ::testing::TestParamInfo<SimdLevel>& i) {
  static const char* kNames[] = {"Plain", "Sse2", "Ssse3", "Sse41", "Avx2", "Avx512"};
  return kNames[static_cast<int>(i.param)];
}

INSTANTIATE_TEST_SUITE_P(Levels, PrimitiveForms,
                         ::testing::Values(SimdLevel::kSse2, SimdLevel::kSsse3, SimdLevel::kSse41,
                                           SimdLevel::kAvx2, SimdLevel::kAvx512),
                         LevelName);

}  // namespace
