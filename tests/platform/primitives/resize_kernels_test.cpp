// The resize kernels of every processor level against the plain kernels, fed
// directly: index patterns and weights the resizers make and some they do not,
// with the gathers' source placed against a page that cannot be read, so that a
// form reading one byte past its last source pixel (or before its first)
// faults. And the per-thread plan cache against plans built afresh.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "foundation/cpu_info.h"
#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_plan.h"
#include "platform/primitives/ipp_types.h"

namespace {

using namespace orv::ipp;
using orv::SimdLevel;

// `bytes` readable bytes with an unreadable page right after them (atEnd) or
// right before them.
class GuardedBytes {
 public:
  GuardedBytes(size_t bytes, bool atEnd) {
    page_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t room = (bytes + page_ - 1) / page_ * page_;
    size_ = room + 2 * page_;
    void* m = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    base_ = m == MAP_FAILED ? nullptr : static_cast<uint8_t*>(m);
    if (base_ == nullptr) return;
    mprotect(base_, page_, PROT_NONE);
    mprotect(base_ + page_ + room, page_, PROT_NONE);
    data_ = atEnd ? base_ + page_ + room - bytes : base_ + page_;
  }
  ~GuardedBytes() {
    if (base_ != nullptr) munmap(base_, size_);
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  uint8_t* data() { return data_; }
  bool ok() const { return base_ != nullptr; }

 private:
  size_t page_ = 0, size_ = 0;
  uint8_t* base_ = nullptr;
  uint8_t* data_ = nullptr;
};

// Index patterns of `width` destination pixels over a line of `pixels`.
std::vector<std::vector<int32_t>> IndexPatterns(int width, int pixels, std::mt19937& rng) {
  std::vector<std::vector<int32_t>> all;
  for (double stepSize : {0.0, 0.25, 0.5, 1.0, 2.0, 2.67, 3.9, 4.2, 8.0, 9.5}) {
    std::vector<int32_t> v(static_cast<size_t>(width));
    for (int x = 0; x < width; ++x)
      v[static_cast<size_t>(x)] =
          std::min(pixels - 1, static_cast<int>(std::floor((x + 0.5) * stepSize)));
    all.push_back(v);
    // The same, ending on the line's last pixel.
    const int shift = pixels - 1 - v.back();
    for (auto& i : v) i += shift;
    all.push_back(v);
  }
  std::vector<int32_t> down(static_cast<size_t>(width)), random(static_cast<size_t>(width));
  for (int x = 0; x < width; ++x) {
    down[static_cast<size_t>(x)] = std::max(0, pixels - 1 - 3 * x);
    random[static_cast<size_t>(x)] = static_cast<int32_t>(rng() % static_cast<uint32_t>(pixels));
  }
  all.push_back(down);
  all.push_back(random);
  return all;
}

// Every level's table this processor can run; and, where it runs the AVX-512
// level, that level with each resize body the processor has (it installs one).
std::vector<std::pair<std::string, Kernels>> FormsToCompare() {
  std::vector<std::pair<std::string, Kernels>> forms;
  for (SimdLevel l : {SimdLevel::kSse2, SimdLevel::kSsse3, SimdLevel::kSse41, SimdLevel::kAvx2,
                      SimdLevel::kAvx512})
    if (l <= orv::DetectSimdLevel())
      forms.emplace_back("level " + std::to_string(static_cast<int>(l)), KernelsFor(l));
#if ORV_X86_SIMD
  if (orv::DetectSimdLevel() >= SimdLevel::kAvx512) {
    const Avx512ResizeBody here = Avx512ResizeBodyHere();
    forms.emplace_back("AVX-512 base", Avx512ResizeForms(Avx512ResizeBody::kBase));
    if (here >= Avx512ResizeBody::kDot)
      forms.emplace_back("AVX-512 with dot product", Avx512ResizeForms(Avx512ResizeBody::kDot));
    if (here >= Avx512ResizeBody::kDotPermute)
      forms.emplace_back("AVX-512 with dot product and byte permutes",
                         Avx512ResizeForms(Avx512ResizeBody::kDotPermute));
  }
#endif
  return forms;
}

TEST(ResizeKernels, GathersGiveThePlainBytesAndReadOnlyTheirPixels) {
  std::mt19937 rng(77);
  const int kPixels = 700;
  for (int C : {1, 3, 4})
    for (bool atEnd : {true, false}) {
      GuardedBytes src(static_cast<size_t>(kPixels) * C, atEnd);
      ASSERT_TRUE(src.ok());
      for (int i = 0; i < kPixels * C; ++i) src.data()[i] = static_cast<uint8_t>(rng());
      for (int width : {1, 2, 7, 15, 16, 17, 31, 32, 33, 63, 64, 65, 100, 150}) {
        for (const auto& index : IndexPatterns(width, kPixels, rng)) {
          std::vector<uint8_t> want(static_cast<size_t>(width) * C + 64, 0x5A);
          auto gather = [C](const Kernels& k) {
            return C == 1 ? k.gatherC1 : (C == 3 ? k.gatherC3 : k.gatherC4);
          };
          gather(PlainKernels())(src.data(), index.data(), want.data(), width);
          for (const auto& form : FormsToCompare()) {
            std::vector<uint8_t> got(want.size(), 0x5A);
            gather(form.second)(src.data(), index.data(), got.data(), width);
            ASSERT_EQ(got, want) << "C" << C << " " << form.first << " width " << width
                                 << " first index " << index[0];
          }
        }
      }
    }
}

// Weights of `taps` taps: a plan's (non-negative, summing to one) or any whose
// absolute values sum to at most two, so that the plain sums fit 16 bits.
std::vector<int16_t> Weights(int taps, bool plan, std::mt19937& rng) {
  std::vector<int16_t> w(static_cast<size_t>(taps));
  int left = plan ? 16384 : 32767;
  for (int t = 0; t < taps; ++t) {
    const int v = t + 1 == taps ? left : static_cast<int>(rng() % static_cast<uint32_t>(left + 1));
    w[static_cast<size_t>(t)] = static_cast<int16_t>(plan || (rng() & 1) ? v : -v);
    left -= v;
  }
  return w;
}

TEST(ResizeKernels, VerticalPassGivesThePlainSamples) {
  std::mt19937 rng(78);
  const int kMaxTaps = 9, kCount = 200;
  std::vector<std::vector<uint8_t>> lines(kMaxTaps, std::vector<uint8_t>(kCount));
  for (auto& l : lines)
    for (auto& b : l) b = static_cast<uint8_t>((rng() & 3) == 0 ? 255 * (rng() & 1) : rng());
  std::vector<const uint8_t*> rows;
  for (auto& l : lines) rows.push_back(l.data());
  std::vector<std::vector<int16_t>> weights;
  for (int taps = 1; taps <= kMaxTaps; ++taps)
    for (int k = 0; k < 6; ++k) weights.push_back(Weights(taps, k < 3, rng));
  // Two taps at the ends of linear: all weight on one sample.
  weights.push_back({16384, 0});
  weights.push_back({0, 16384});
  weights.push_back({17000, -616});
  // Zero weights at the ends, as a plan pads short footprints; three taps
  // summing to one, one with the outer weights as large as 16 bits allow.
  weights.push_back({3000, 7000, 6384, 0});
  weights.push_back({0, 5000, 11384, 0});
  weights.push_back({0, 0, 16384, 0});
  weights.push_back({0, 9000, 7384});
  weights.push_back({20000, -16383, 12767});
  for (const auto& w : weights)
    for (int count : {1, 31, 32, 33, 64, 100, kCount}) {
      const int taps = static_cast<int>(w.size());
      std::vector<int16_t> want(static_cast<size_t>(count) + 40, 0x5A5A);
      PlainKernels().filterVertical(rows.data(), w.data(), taps, want.data(), count);
      for (const auto& form : FormsToCompare()) {
        std::vector<int16_t> got(want.size(), 0x5A5A);
        form.second.filterVertical(rows.data(), w.data(), taps, got.data(), count);
        ASSERT_EQ(got, want) << form.first << " taps " << taps << " count " << count << " w0 "
                             << w[0];
      }
    }
}

TEST(ResizeKernels, HorizontalPassesGiveThePlainBytes) {
  std::mt19937 rng(79);
  const int kPixels = 300;
  for (int C : {1, 3, 4}) {
    // A Q6 line (values up to 255 x 64, and some negative as cubic makes),
    // with the 16 spare samples the resizer keeps after it.
    std::vector<int16_t> line(static_cast<size_t>(kPixels) * C + 16);
    for (auto& v : line) v = static_cast<int16_t>(static_cast<int>(rng() % 18000) - 1000);
    for (int taps = 1; taps <= 9; ++taps)
      for (bool plan : {true, false})
        for (int width : {1, 3, 4, 7, 8, 9, 16, 17, 31, 100, 120, 250}) {
          // Ascending starts that end on the last pixel the taps allow, and
          // weights with the plan's 16 zeroed words after the last group.
          // For 120 pixels the starts advance by 0 to 6 at random and begin
          // again near 0 at the line's end, so that steps whose taps just fit
          // a processor form's window, steps that just do not, and a step
          // that goes backwards meet in one line.
          std::vector<int32_t> start;
          for (int x = 0, s = 0; x < width; ++x) {
            if (width != 120)
              s = (kPixels - taps) * x / std::max(1, width - 1);
            else if (x > 0 && (s += static_cast<int>(rng() % 7)) > kPixels - taps)
              s = static_cast<int>(rng() % 8);
            start.push_back(s);
          }
          std::vector<int16_t> coef;
          for (int x = 0; x < width; ++x) {
            const std::vector<int16_t> w = Weights(taps, plan, rng);
            coef.insert(coef.end(), w.begin(), w.end());
          }
          coef.resize(coef.size() + 16, 0);
          auto pass = [C](const Kernels& k) {
            return C == 1 ? k.filterHorizontalC1
                          : (C == 3 ? k.filterHorizontalC3 : k.filterHorizontalC4);
          };
          std::vector<uint8_t> want(static_cast<size_t>(width) * C + 32, 0x5A);
          pass(PlainKernels())(line.data(), start.data(), coef.data(), taps, want.data(), width);
          for (const auto& form : FormsToCompare()) {
            std::vector<uint8_t> got(want.size(), 0x5A);
            pass(form.second)(line.data(), start.data(), coef.data(), taps, got.data(), width);
            ASSERT_EQ(got, want) << "C" << C << " " << form.first << " taps " << taps << " width "
                                 << width << (plan ? " plan" : " signed");
          }
        }
  }
}

void ExpectSamePlan(const AxisPlan& a, const AxisPlan& b) {
  EXPECT_EQ(a.first, b.first);
  EXPECT_EQ(a.count, b.count);
  EXPECT_EQ(a.taps, b.taps);
  EXPECT_EQ(a.start, b.start);
  EXPECT_EQ(a.coef, b.coef);
}

TEST(ResizePlans, CachedPlansAreTheBuiltOnesForEveryKey) {
  struct Key {
    int dstLength;
    double factor, origin, centre;
    int lo, hi, interpolation;
  };
  const double tiny = std::nextafter(0.0, 1.0);
  const Key base{50, 0.37, 0.0, 0.0, 0, 137, IPPI_INTER_LINEAR};
  std::vector<Key> keys = {base};
  // Keys that differ from the first in one field only.
  keys.push_back({51, 0.37, 0.0, 0.0, 0, 137, IPPI_INTER_LINEAR});
  keys.push_back({50, std::nextafter(0.37, 1.0), 0.0, 0.0, 0, 137, IPPI_INTER_LINEAR});
  keys.push_back({50, 0.37, 0.25, 0.0, 0, 137, IPPI_INTER_LINEAR});
  keys.push_back({50, 0.37, tiny, 0.0, 0, 137, IPPI_INTER_LINEAR});
  keys.push_back({50, 0.37, 0.0, 25.0, 0, 137, IPPI_INTER_LINEAR});
  keys.push_back({50, 0.37, 0.0, 0.0, 3, 137, IPPI_INTER_LINEAR});
  keys.push_back({50, 0.37, 0.0, 0.0, 0, 136, IPPI_INTER_LINEAR});
  for (int interp : {IPPI_INTER_NN, IPPI_INTER_CUBIC, IPPI_INTER_SUPER})
    keys.push_back({50, 0.37, 0.0, 0.0, 0, 137, interp});
  // Every key after every other, more keys than the cache holds, and each
  // reference still right after the next lookup.
  for (size_t a = 0; a < keys.size(); ++a)
    for (size_t b = 0; b < keys.size(); ++b) {
      const Key& p = keys[a];
      const Key& q = keys[b];
      const AxisPlan& first =
          CachedAxisPlan(p.dstLength, p.factor, p.origin, p.centre, p.lo, p.hi, p.interpolation);
      const AxisPlan& second =
          CachedAxisPlan(q.dstLength, q.factor, q.origin, q.centre, q.lo, q.hi, q.interpolation);
      AxisPlan wantFirst, wantSecond;
      BuildAxisPlan(p.dstLength, p.factor, p.origin, p.centre, p.lo, p.hi, p.interpolation,
                    &wantFirst);
      BuildAxisPlan(q.dstLength, q.factor, q.origin, q.centre, q.lo, q.hi, q.interpolation,
                    &wantSecond);
      ExpectSamePlan(first, wantFirst);
      ExpectSamePlan(second, wantSecond);
      ASSERT_FALSE(testing::Test::HasFailure()) << "keys " << a << " then " << b;
    }
}

}  // namespace
