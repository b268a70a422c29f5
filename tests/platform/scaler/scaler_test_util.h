// Shared helpers of the scaler tests: 4:2:0 pictures whose planes are framed
// by canary bytes, so that a write outside a plane's width x height is seen.
#ifndef ORV_TESTS_PLATFORM_SCALER_SCALER_TEST_UTIL_H_
#define ORV_TESTS_PLATFORM_SCALER_SCALER_TEST_UTIL_H_

#include <cstdint>
#include <random>
#include <vector>

namespace scaler_test {

constexpr uint8_t kCanary = 0xA5;
constexpr int kGuardLines = 2;

// One plane inside a buffer with kGuardLines canary lines above and below and
// canary bytes between the end of each line and the next step.
struct Plane {
  Plane(int width, int height, int step) : width(width), height(height), step(step) {
    bytes.assign(static_cast<size_t>(step) * (height + 2 * kGuardLines), kCanary);
  }
  uint8_t* data() { return bytes.data() + static_cast<size_t>(step) * kGuardLines; }
  const uint8_t* data() const { return bytes.data() + static_cast<size_t>(step) * kGuardLines; }
  uint8_t& at(int x, int y) { return data()[static_cast<size_t>(y) * step + x]; }
  uint8_t at(int x, int y) const { return data()[static_cast<size_t>(y) * step + x]; }
  // True if every byte outside width x height still holds the canary.
  bool CanariesIntact() const {
    for (size_t i = 0; i < bytes.size(); ++i) {
      const long line = static_cast<long>(i / step) - kGuardLines;
      const long col = static_cast<long>(i % step);
      const bool inside = line >= 0 && line < height && col < width;
      if (!inside && bytes[i] != kCanary) return false;
    }
    return true;
  }
  bool SamePixels(const Plane& o) const {
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        if (at(x, y) != o.at(x, y)) return false;
    return true;
  }
  int width, height, step;
  std::vector<uint8_t> bytes;
};

// A 4:2:0 picture: Y of width x height, chroma of width/2 x height/2.
struct Picture {
  Picture(int width, int height, int yPad = 0, int cPad = 0)
      : y(width, height, width + yPad),
        cb(width / 2, height / 2, width / 2 + cPad),
        cr(width / 2, height / 2, width / 2 + cPad) {}
  void Fill(std::mt19937* rng) {
    for (Plane* p : {&y, &cb, &cr})
      for (int j = 0; j < p->height; ++j)
        for (int i = 0; i < p->width; ++i) p->at(i, j) = static_cast<uint8_t>((*rng)() & 0xFF);
  }
  bool CanariesIntact() const {
    return y.CanariesIntact() && cb.CanariesIntact() && cr.CanariesIntact();
  }
  bool SamePixels(const Picture& o) const {
    return y.SamePixels(o.y) && cb.SamePixels(o.cb) && cr.SamePixels(o.cr);
  }
  Plane y, cb, cr;
};

}  // namespace scaler_test

#endif  // ORV_TESTS_PLATFORM_SCALER_SCALER_TEST_UTIL_H_
