// Pictures for the conversion pipeline tests: a buffer of the reported size
// with guard bytes behind it, and reading and filling by memory line.
#ifndef ORV_TESTS_IMAGE_PIPELINE_HELPERS_H_
#define ORV_TESTS_IMAGE_PIPELINE_HELPERS_H_

#include <OrvImage.h>

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace pipeline_test {

using F = OrvImage::COLOR_FORMAT_TYPE;

constexpr size_t kGuard = 64;
constexpr uint8_t kGuardByte = 0xA5;

struct Pixel {
  int c[4];  // YUY2/4:2:0: Y, Cb, Cr; packed: the bytes in memory order
  bool operator==(const Pixel& o) const {
    return c[0] == o.c[0] && c[1] == o.c[1] && c[2] == o.c[2] && c[3] == o.c[3];
  }
};

inline int BytesPerPixel(F f) {
  switch (f) {
    case OrvImage::CF_RGB24:
    case OrvImage::CF_TavoShiftedStraightRGB24:
      return 3;
    case OrvImage::CF_RGB32:
    case OrvImage::CF_TavoShiftedStraightRGB32:
    case OrvImage::CF_VUYA:
    case OrvImage::CF_RGBA:
      return 4;
    default:
      return 0;
  }
}
inline bool IsPlanar(F f) {
  return f == OrvImage::CF_YUV420 || f == OrvImage::CF_YV12 || f == OrvImage::CF_BT709YUV420;
}
inline bool IsYuy2(F f) {
  return f == OrvImage::CF_CCIR601YUY2 || f == OrvImage::CF_BT709YUY2 || f == OrvImage::CF_YUY2A;
}

struct Picture {
  OrvImage::PICTURE_INFO info = {};
  std::vector<uint8_t> buf;

  Picture(F f, uint32_t w, uint32_t h, OrvImage::SCAN_TYPE scan = OrvImage::SCAN_PROGRESSIVE,
          int step = 0) {
    info.width = w;
    info.height = h;
    info.colorFormat = f;
    info.scanType = scan;
    info.step = step ? step : OrvImage::GetGenericStep(f, w, h);
    info.size = OrvImage::GetPictureSize(f, w, h, info.step);
    buf.assign(info.size + kGuard, 0);
    for (size_t i = info.size; i < buf.size(); ++i) buf[i] = kGuardByte;
  }
  uint8_t* data() { return buf.data(); }
  uint32_t stepBytes() const { return info.step < 0 ? -info.step : info.step; }
  bool GuardIntact() const {
    for (size_t i = info.size; i < buf.size(); ++i) {
      if (buf[i] != kGuardByte) return false;
    }
    return true;
  }
  // Bytes of the picture proper (no guard).
  std::vector<uint8_t> Bytes() const { return {buf.begin(), buf.begin() + info.size}; }

  // The pixel at column x of memory line y. For 4:2:0, chroma from the
  // chroma line `chromaLine` (default: y / 2).
  Pixel At(int x, int y, int chromaLine = -1) const {
    const F f = info.colorFormat;
    const uint32_t s = stepBytes();
    Pixel p = {{0, 0, 0, 0}};
    if (IsPlanar(f)) {
      const int c = chromaLine >= 0 ? chromaLine : y / 2;
      const size_t cb = size_t(s) * info.height, cr = cb + size_t(info.height / 2) * (s / 2);
      const bool yv12 = f == OrvImage::CF_YV12;
      p.c[0] = buf[size_t(y) * s + x];
      p.c[1] = buf[(yv12 ? cr : cb) + size_t(c) * (s / 2) + x / 2];
      p.c[2] = buf[(yv12 ? cb : cr) + size_t(c) * (s / 2) + x / 2];
    } else if (IsYuy2(f)) {
      const uint8_t* l = buf.data() + size_t(y) * s;
      p.c[0] = l[2 * x];
      p.c[1] = l[4 * (x / 2) + 1];
      p.c[2] = l[4 * (x / 2) + 3];
    } else {
      const int b = BytesPerPixel(f);
      for (int k = 0; k < b; ++k) p.c[k] = buf[size_t(y) * s + size_t(x) * b + k];
    }
    return p;
  }
  uint8_t* AlphaLine(int y) {
    return buf.data() + size_t(stepBytes()) * info.height +
           size_t(y) * ((info.width * 8 + 31) / 8 & ~3u);
  }

  // Fills every pixel from a function of (x, memory line). For 4:2:0 the
  // chroma line c takes the colour of luma line (c / 2) * 4 + (c % 2): in an
  // interlaced picture, chroma line parity is field parity.
  void Fill(const std::function<Pixel(int, int)>& colour) {
    const F f = info.colorFormat;
    const uint32_t s = stepBytes();
    const int w = info.width, h = info.height;
    if (IsPlanar(f)) {
      const size_t cb = size_t(s) * h, cr = cb + size_t(h / 2) * (s / 2);
      const bool yv12 = f == OrvImage::CF_YV12;
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) buf[size_t(y) * s + x] = colour(x, y).c[0];
      for (int c = 0; c < h / 2; ++c) {
        const int from = (c / 2) * 4 + (c % 2);
        for (int x = 0; x < w / 2; ++x) {
          const Pixel p = colour(2 * x, from < h ? from : h - 1);
          buf[(yv12 ? cr : cb) + size_t(c) * (s / 2) + x] = p.c[1];
          buf[(yv12 ? cb : cr) + size_t(c) * (s / 2) + x] = p.c[2];
        }
      }
    } else if (IsYuy2(f)) {
      for (int y = 0; y < h; ++y) {
        uint8_t* l = buf.data() + size_t(y) * s;
        for (int x = 0; x < w; ++x) {
          const Pixel p = colour(x, y);
          l[2 * x] = p.c[0];
          l[4 * (x / 2) + 1] = p.c[1];
          l[4 * (x / 2) + 3] = p.c[2];
        }
      }
      if (f == OrvImage::CF_YUY2A) {
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) AlphaLine(y)[x] = colour(x, y).c[3];
      }
    } else {
      const int b = BytesPerPixel(f);
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
          const Pixel p = colour(x, y);
          for (int k = 0; k < b; ++k) buf[size_t(y) * s + size_t(x) * b + k] = p.c[k];
        }
    }
  }
  void FillRandom(uint32_t seed) {
    std::mt19937 rng(seed);
    for (size_t i = 0; i < info.size; ++i) buf[i] = static_cast<uint8_t>(rng());
  }
};

inline OrvImage::CONVERT_MODE Mode(OrvImage::INTERPOLATION_MODE i,
                                   OrvImage::DEINTERLACE_MODE d = OrvImage::DEINTERLACE_LINE_DOUBLE,
                                   bool keep = false, bool interlace = true) {
  OrvImage::CONVERT_MODE m = {};
  m.keepAspect = keep;
  m.convertInterlace = interlace;
  m.interpolation = i;
  m.deinterlace = d;
  return m;
}

}  // namespace pipeline_test

#endif  // ORV_TESTS_IMAGE_PIPELINE_HELPERS_H_
