// Level conversions between the BT.601 and BT.709 colour matrices, in place,
// for pictures that are already in memory. Integer arithmetic with 13
// fractional bits; every result is kept within 1..254.
#include <OrvImage.h>

#include <algorithm>
#include <cstdint>

#include "image/picture_limits.h"

namespace orv {
namespace image {
namespace {

// Coefficients of one direction, Q13. Each luma sample:
//   Y' = (((Y - 16) x 8192 + U x yU + V x yV) >> 13) + 16
// and the chroma of its pair or block, with D = Y0 - 16 of its first sample:
//   Cb' = ((U x uU + V x uV + D x uD) >> 13) + 128
//   Cr' = ((V x vV + U x vU) >> 13) + 128
struct LevelMatrix {
  int32_t yU, yV;
  int32_t uU, uV, uD;
  int32_t vV, vU;
};

constexpr LevelMatrix kTo709 = {-950, -1704, 8348, 934, -8, 8397, 606};
constexpr LevelMatrix kTo601 = {819, 1573, 8110, -909, 0, 8061, -590};

inline uint8_t Clamp(int32_t v) {
  if (v >= 255) return 254;
  if (v <= 0) return 1;
  return static_cast<uint8_t>(v);
}

inline uint8_t Luma(const LevelMatrix& m, int32_t y, int32_t u, int32_t v) {
  return Clamp((((y - 16) * 8192 + u * m.yU + v * m.yV) >> 13) + 16);
}

// New Cb and Cr from the old ones and the first luma sample of the group.
inline void Chroma(const LevelMatrix& m, int32_t y0, uint8_t* cb, uint8_t* cr) {
  const int32_t u = *cb - 128;
  const int32_t v = *cr - 128;
  const int32_t d = y0 - 16;
  *cb = Clamp(((u * m.uU + v * m.uV + d * m.uD) >> 13) + 128);
  *cr = Clamp(((v * m.vV + u * m.vU) >> 13) + 128);
}

bool Usable(const void* p, unsigned long width, unsigned long height, int step) {
  return p != nullptr && width != 0 && height != 0 && AreSidesValid(width, height) && step > 0;
}

// Packed Y0 Cb Y1 Cr. An odd width walks one pair more, as far as the step
// holds it: the byte beside the last pixel is part of that pair.
void LevelYuy2(const LevelMatrix& m, uint8_t* picture, unsigned long width, unsigned long height,
               int step) {
  if (!Usable(picture, width, height, step)) return;
  const uint64_t pairs = (width - 1) / 2 + 1;
  if (static_cast<uint64_t>(step) < 4 * pairs) return;
  for (uint64_t y = 0; y < height; ++y) {
    uint8_t* line = picture + y * static_cast<uint64_t>(step);
    for (uint64_t i = 0; i < pairs; ++i) {
      uint8_t* px = line + 4 * i;
      const int32_t y0 = px[0];
      const int32_t y1 = px[2];
      const int32_t u = px[1] - 128;
      const int32_t v = px[3] - 128;
      px[0] = Luma(m, y0, u, v);
      px[2] = Luma(m, y1, u, v);
      Chroma(m, y0, &px[1], &px[3]);
    }
  }
}

// Planar 4:2:0: each chroma sample and the 2 x 2 luma block it serves. Only
// samples inside the picture are touched; the lone last line of an odd height
// has no chroma line of its own and is left as it is.
void Level420(const LevelMatrix& m, uint8_t* py, uint8_t* pu, uint8_t* pv, unsigned long width,
              unsigned long height, int step) {
  if (!Usable(py, width, height, step) || pu == nullptr || pv == nullptr) return;
  if (static_cast<uint64_t>(step) < width) return;
  const uint64_t yStep = static_cast<uint64_t>(step);
  const uint64_t cStep = yStep / 2;
  const uint64_t pairs = std::min<uint64_t>((width - 1) / 2 + 1, cStep);
  for (uint64_t y = 0; y + 1 < height; y += 2) {
    uint8_t* top = py + y * yStep;
    uint8_t* bottom = top + yStep;
    uint8_t* cb = pu + (y / 2) * cStep;
    uint8_t* cr = pv + (y / 2) * cStep;
    for (uint64_t i = 0; i < pairs; ++i) {
      const int32_t u = cb[i] - 128;
      const int32_t v = cr[i] - 128;
      const int32_t y0 = top[2 * i];
      for (uint8_t* line : {top, bottom}) {
        line[2 * i] = Luma(m, line[2 * i], u, v);
        if (2 * i + 1 < width) line[2 * i + 1] = Luma(m, line[2 * i + 1], u, v);
      }
      Chroma(m, y0, &cb[i], &cr[i]);
    }
  }
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;

void OrvImage::CCIR601YUY2toBT709YUY2(unsigned char* p0, unsigned char*, unsigned char*,
                                      unsigned long width, unsigned long height, int step) {
  LevelYuy2(kTo709, p0, width, height, step);
}

void OrvImage::BT709YUY2toCCIR601YUY2(unsigned char* p0, unsigned char*, unsigned char*,
                                      unsigned long width, unsigned long height, int step) {
  LevelYuy2(kTo601, p0, width, height, step);
}

void OrvImage::YUV420toBT709YUV420(unsigned char* p0, unsigned char* p1, unsigned char* p2,
                                   unsigned long width, unsigned long height, int step) {
  Level420(kTo709, p0, p1, p2, width, height, step);
}

void OrvImage::BT709YUV420toYUV420(unsigned char* p0, unsigned char* p1, unsigned char* p2,
                                   unsigned long width, unsigned long height, int step) {
  Level420(kTo601, p0, p1, p2, width, height, step);
}
