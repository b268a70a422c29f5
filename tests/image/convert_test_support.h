// Shared helpers of the conversion tests: pictures with guard bytes, picture
// sizes per format, and the upside-down copy of a picture in any layout.
#ifndef ORV_TESTS_IMAGE_CONVERT_TEST_SUPPORT_H_
#define ORV_TESTS_IMAGE_CONVERT_TEST_SUPPORT_H_

#include <OrvImage.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

namespace orv_test {

using Format = OrvImage::COLOR_FORMAT_TYPE;

// The common signature of the format-pair conversions, extras bound.
using Conversion = std::function<unsigned long(unsigned char* src, unsigned char* dst,
                                               unsigned long* size, unsigned long width,
                                               unsigned long height, int srcStep, int dstStep)>;

inline bool IsPlanar(Format f) {
  return f == OrvImage::CF_YUV420 || f == OrvImage::CF_YV12 || f == OrvImage::CF_BT709YUV420;
}
inline bool IsYuy2Family(Format f) {
  return f == OrvImage::CF_CCIR601YUY2 || f == OrvImage::CF_BT709YUY2 || f == OrvImage::CF_YUY2A;
}

inline int AlphaLine(int width) { return ((8 * width + 31) / 8) & ~3; }

// Bytes of one line of pixels.
inline int PixelBytes(Format f, int width) {
  if (IsPlanar(f)) return width;
  if (IsYuy2Family(f)) return 2 * width;
  if (f == OrvImage::CF_RGB24 || f == OrvImage::CF_TavoShiftedStraightRGB24) return 3 * width;
  return 4 * width;
}

// A step of the format for `width`, `pad` bytes longer than the line
// (kept even for planar pictures so both chroma planes get half of it).
inline int StepFor(Format f, int width, int pad) {
  int step = PixelBytes(f, width) + pad;
  if (IsPlanar(f) && (step & 1)) ++step;
  return step;
}

// Bytes of a picture with step magnitude `step`.
inline size_t PictureBytes(Format f, int width, int height, int step) {
  const size_t s = static_cast<size_t>(std::abs(step));
  if (IsPlanar(f)) return (s + s / 2) * height;
  if (f == OrvImage::CF_YUY2A) return s * height + static_cast<size_t>(AlphaLine(width)) * height;
  return s * height;
}

// A picture buffer followed by guard bytes that no conversion may touch.
class Picture {
 public:
  static constexpr size_t kGuard = 64;
  static constexpr uint8_t kGuardByte = 0xA5;

  explicit Picture(size_t size, uint8_t fill = 0x5A) : size_(size), bytes_(size + kGuard, fill) {
    for (size_t i = size; i < bytes_.size(); ++i) bytes_[i] = kGuardByte;
  }
  uint8_t* data() { return bytes_.data(); }
  const uint8_t* data() const { return bytes_.data(); }
  size_t size() const { return size_; }
  uint8_t& operator[](size_t i) { return bytes_[i]; }
  uint8_t operator[](size_t i) const { return bytes_[i]; }
  bool GuardIntact() const {
    for (size_t i = size_; i < bytes_.size(); ++i) {
      if (bytes_[i] != kGuardByte) return false;
    }
    return true;
  }
  std::vector<uint8_t> Contents() const {
    return std::vector<uint8_t>(bytes_.begin(), bytes_.begin() + size_);
  }
  void Randomize(uint32_t seed) {
    std::mt19937 gen(seed);
    for (size_t i = 0; i < size_; ++i) bytes_[i] = static_cast<uint8_t>(gen() & 0xFF);
  }

 private:
  size_t size_;
  std::vector<uint8_t> bytes_;
};

// The picture turned upside down, plane by plane, in the layout of `f`.
inline std::vector<uint8_t> Flipped(const std::vector<uint8_t>& in, Format f, int width, int height,
                                    int step) {
  std::vector<uint8_t> out(in);
  const size_t s = static_cast<size_t>(std::abs(step));
  auto flipPlane = [&](size_t offset, size_t lineBytes, int lines) {
    for (int y = 0; y < lines; ++y) {
      for (size_t x = 0; x < lineBytes; ++x) {
        out[offset + y * lineBytes + x] = in[offset + (lines - 1 - y) * lineBytes + x];
      }
    }
  };
  flipPlane(0, s, height);
  if (IsPlanar(f)) {
    const size_t c = s / 2;
    flipPlane(s * height, c, height / 2);
    flipPlane(s * height + c * (height / 2), c, height / 2);
  } else if (f == OrvImage::CF_YUY2A) {
    flipPlane(s * height, AlphaLine(width), height);
  }
  return out;
}

}  // namespace orv_test

#endif  // ORV_TESTS_IMAGE_CONVERT_TEST_SUPPORT_H_
