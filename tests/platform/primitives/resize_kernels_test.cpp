// The resize kernels of every processor level against the plain kernels, fed
// directly: index patterns and weights the resizers make and some they do not,
// with the source placed against a page that cannot be read, so that a form
// reading one byte past its last source sample (or before its first) faults.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "foundation/cpu_info.h"
#include "platform/primitives/ipp_kernels.h"

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

std::vector<SimdLevel> LevelsToCompare() {
  std::vector<SimdLevel> levels;
  for (SimdLevel l : {SimdLevel::kSse2, SimdLevel::kSsse3, SimdLevel::kSse41, SimdLevel::kAvx2,
                      SimdLevel::kAvx512})
    if (l <= orv::DetectSimdLevel()) levels.push_back(l);
  return levels;
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
          for (SimdLevel level : LevelsToCompare()) {
            std::vector<uint8_t> got(want.size(), 0x5A);
            gather(KernelsFor(level))(src.data(), index.data(), got.data(), width);
            ASSERT_EQ(got, want) << "C" << C << " level " << static_cast<int>(level) << " width "
                                 << width << " first index " << index[0];
          }
        }
      }
    }
}

}  // namespace
