// Composition of two YUY2A pictures, written out per pixel: A over B by A's
// alpha, with B's alpha telling how much of B is there to show through.
#include <OrvImage.h>

#include <cstdint>

#include "image/alpha_comp_rows.h"
#include "image/picture_limits.h"

namespace orv {
namespace image {
namespace {

inline int Through(int a, int c) { return a == 0 ? c : (255 - a) * c / 255; }

inline int Limit(int v) { return v < 1 ? 1 : (v > 254 ? 254 : v); }

inline uint8_t Luma(int ya, int yb, int a, int b) {
  if (a == 255) return static_cast<uint8_t>(ya);
  if (a == 0 && b == 255) return static_cast<uint8_t>(yb);
  if (a == 0 && b == 0) return 0;
  return static_cast<uint8_t>(Limit((yb * b + ya * a) / 255));
}

// Neutral chroma here is 128: the value of a pixel that nothing covers.
inline uint8_t Chroma(int ca, int cb, int a, int b) {
  if (a == 255 && b == 0) return static_cast<uint8_t>(ca);
  if (a == 0 && b == 255) return static_cast<uint8_t>(cb);
  if (a == 0 && b == 0) return 128;
  return static_cast<uint8_t>(Limit(((ca - 128) * a + (cb - 128) * b) / 255 + 128));
}

void RowPlain(const uint8_t* yuvA, const uint8_t* alphaA, const uint8_t* yuvB,
              const uint8_t* alphaB, uint8_t* yuvD, uint8_t* alphaD, int width) {
  Yuy2aRowTail(yuvA, alphaA, yuvB, alphaB, yuvD, alphaD, 0, width);
}

}  // namespace

void Yuy2aRowTail(const uint8_t* yuvA, const uint8_t* alphaA, const uint8_t* yuvB,
                  const uint8_t* alphaB, uint8_t* yuvD, uint8_t* alphaD, int begin, int width) {
  int x = begin;
  for (; x + 1 < width; x += 2) {
    const uint8_t* pa = yuvA + 2 * x;
    const uint8_t* pb = yuvB + 2 * x;
    const int a0 = alphaA[x];
    const int a1 = alphaA[x + 1];
    const int b0 = Through(a0, alphaB[x]);
    const int b1 = Through(a1, alphaB[x + 1]);
    const uint8_t out[4] = {Luma(pa[0], pb[0], a0, b0), Chroma(pa[1], pb[1], a0, b0),
                            Luma(pa[2], pb[2], a1, b1), Chroma(pa[3], pb[3], a0, b0)};
    uint8_t* pd = yuvD + 2 * x;
    pd[0] = out[0];
    pd[1] = out[1];
    pd[2] = out[2];
    pd[3] = out[3];
    alphaD[x] = static_cast<uint8_t>(a0 + b0);
    alphaD[x + 1] = static_cast<uint8_t>(a1 + b1);
  }
  if (x < width) {  // the lone last pixel of an odd width: Y and Cb
    const uint8_t* pa = yuvA + 2 * x;
    const uint8_t* pb = yuvB + 2 * x;
    const int a = alphaA[x];
    const int b = Through(a, alphaB[x]);
    const uint8_t y = Luma(pa[0], pb[0], a, b);
    const uint8_t c = Chroma(pa[1], pb[1], a, b);
    yuvD[2 * x] = y;
    yuvD[2 * x + 1] = c;
    alphaD[x] = static_cast<uint8_t>(a + b);
  }
}

Yuy2aRowFn Yuy2aRowFor(SimdLevel level) {
#if ORV_X86_SIMD
  if (level >= SimdLevel::kAvx2) return Yuy2aRowAvx2;
  if (level >= SimdLevel::kSse2) return Yuy2aRowSse2;
#else
  (void)level;
#endif
  return RowPlain;
}

}  // namespace image
}  // namespace orv

unsigned long OrvImage::AlphaCompYUY2A(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                       unsigned long width, unsigned long height,
                                       unsigned long firstLine, unsigned long lineCount) {
  if (srcA == nullptr || srcB == nullptr || dst == nullptr) return ORV_IMG_INVALID;
  if (!orv::image::AreSidesValid(width, height)) return ORV_IMG_INVALID;
  const uint64_t yuvLine = 2 * static_cast<uint64_t>(width);
  if (3 * static_cast<uint64_t>(width) * height > orv::image::kMaxBytes) return ORV_IMG_INVALID;
  if (firstLine > height || (firstLine == height && height != 0)) return ORV_IMG_INVALID;
  // Lines past the picture's last one are not run.
  uint64_t end = static_cast<uint64_t>(firstLine) + (lineCount == 0 ? height : lineCount);
  if (end > height) end = height;
  const orv::image::Yuy2aRowFn row = orv::image::Yuy2aRowFor(orv::DetectSimdLevel());
  const uint64_t alphaBase = yuvLine * height;
  const int w = static_cast<int>(width);
  for (uint64_t y = firstLine; y < end; ++y) {
    const uint64_t yuv = y * yuvLine;
    const uint64_t alpha = alphaBase + y * width;
    row(srcA + yuv, srcA + alpha, srcB + yuv, srcB + alpha, dst + yuv, dst + alpha, w);
  }
  return ORV_IMG_OK;
}
