// Pictures with canaries for the primitive tests: a guard band of lines above
// and below, and padding bytes at the end of each line, all filled with a
// known pattern that no primitive may touch.
#ifndef ORV_TESTS_PLATFORM_PRIMITIVES_PICTURE_HELPERS_H_
#define ORV_TESTS_PLATFORM_PRIMITIVES_PICTURE_HELPERS_H_

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace orv_test {

constexpr uint8_t kCanary = 0xA5;

class Picture {
 public:
  // lineBytes: bytes of the region on a line; pad: extra bytes per step.
  Picture(int lineBytes, int height, int pad = 7, int guardLines = 2)
      : line_(lineBytes), height_(height), step_(lineBytes + pad), guard_(guardLines) {
    data_.assign(static_cast<size_t>(step_) * (height + 2 * guard_), kCanary);
  }
  uint8_t* p() { return data_.data() + static_cast<size_t>(step_) * guard_; }
  const uint8_t* p() const { return data_.data() + static_cast<size_t>(step_) * guard_; }
  uint8_t* row(int y) { return p() + static_cast<ptrdiff_t>(y) * step_; }
  const uint8_t* row(int y) const { return p() + static_cast<ptrdiff_t>(y) * step_; }
  uint8_t& at(int x, int y) { return row(y)[x]; }
  int step() const { return step_; }
  int line() const { return line_; }
  int height() const { return height_; }
  void Fill(uint8_t v) {
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < line_; ++x) row(y)[x] = v;
  }
  void Random(std::mt19937& rng) {
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < line_; ++x) row(y)[x] = static_cast<uint8_t>(rng());
  }
  // True if every byte outside the region still holds the canary.
  bool CanariesIntact() const {
    for (size_t i = 0; i < data_.size(); ++i) {
      const ptrdiff_t off = static_cast<ptrdiff_t>(i) - static_cast<ptrdiff_t>(step_) * guard_;
      const bool inRegion = off >= 0 && off / step_ < height_ && off % step_ < line_;
      if (!inRegion && data_[i] != kCanary) return false;
    }
    return true;
  }
  // Random bytes with the extremes that colour arithmetic must survive mixed in.
  void Harsh(std::mt19937& rng) {
    static const uint8_t kEdges[8] = {0, 255, 16, 235, 128, 127, 1, 254};
    for (int y = 0; y < height_; ++y)
      for (int x = 0; x < line_; ++x) {
        const uint32_t r = rng();
        row(y)[x] = (r & 3) == 0 ? kEdges[(r >> 2) & 7] : static_cast<uint8_t>(r >> 8);
      }
  }
  // Every byte of the buffer, canaries included.
  const std::vector<uint8_t>& Raw() const { return data_; }
  // Region bytes only, line after line.
  std::vector<uint8_t> Bytes() const {
    std::vector<uint8_t> out(static_cast<size_t>(height_) * line_);
    for (int y = 0; y < height_; ++y) {
      std::copy(row(y), row(y) + line_, out.begin() + static_cast<ptrdiff_t>(y) * line_);
    }
    return out;
  }

 private:
  int line_, height_, step_, guard_;
  std::vector<uint8_t> data_;
};

}  // namespace orv_test

#endif  // ORV_TESTS_PLATFORM_PRIMITIVES_PICTURE_HELPERS_H_
