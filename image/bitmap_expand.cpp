// Expansion of palette and bit-field bitmaps to 24-bit B G R pictures.
//
// The BITMAPINFO is checked against itself and against the steps before
// anything is read or written: a width or height of 0 or past 65535, a source
// step shorter than the bitmap's line or a destination step shorter than three
// bytes a pixel answer 3.
#include <OrvImage.h>

#include <cstdint>
#include <cstring>

#include "image/picture_limits.h"

namespace {

using orv::image::StepMagnitude;

// The walk shared by both expansions: the line order given by the step signs,
// the required size, and the size checks.
struct BitmapWalk {
  uint64_t width = 0;
  uint64_t height = 0;
  const unsigned char* srcLine0 = nullptr;  // memory line the reading starts on
  unsigned char* dstLine0 = nullptr;
  int64_t srcStep = 0;
  int64_t dstStep = 0;
};

// Stores the required size and checks the request. Returns 0 to go on.
unsigned long Admit(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                    const BITMAPINFO* info, int srcStep, int dstStep, uint64_t srcBitsPerPixel,
                    bool bitCountServed, BitmapWalk* walk) {
  if (dstSize == nullptr || info == nullptr) return OrvImage::ORV_IMG_INVALID;
  const int64_t biWidth = info->bmiHeader.biWidth;
  const int64_t biHeight = info->bmiHeader.biHeight;
  const uint64_t height = StepMagnitude(biHeight);
  const uint64_t dstMag = StepMagnitude(dstStep);
  const uint64_t required = height * dstMag;
  if (biWidth <= 0 || !orv::image::AreSidesValid(biWidth, height) ||
      required > orv::image::kMaxBytes || srcStep == INT32_MIN || dstStep == INT32_MIN) {
    return OrvImage::ORV_IMG_INVALID;
  }
  if (src == nullptr || dst == nullptr) {
    *dstSize = static_cast<unsigned long>(required);
    return OrvImage::ORV_IMG_INVALID;
  }
  if (*dstSize < required) return OrvImage::ORV_IMG_DST_TOO_SMALL;
  *dstSize = static_cast<unsigned long>(required);
  if (!bitCountServed) return OrvImage::ORV_IMG_OK;  // nothing to write
  const uint64_t width = static_cast<uint64_t>(biWidth);
  if (StepMagnitude(srcStep) < (width * srcBitsPerPixel + 7) / 8 || dstMag < 3 * width) {
    return OrvImage::ORV_IMG_INVALID;
  }
  walk->width = width;
  walk->height = height;
  walk->srcStep = srcStep;
  walk->dstStep = dstStep;
  walk->srcLine0 = src + (srcStep < 0 ? (height - 1) * StepMagnitude(srcStep) : 0);
  walk->dstLine0 = dst + (dstStep < 0 ? (height - 1) * dstMag : 0);
  return OrvImage::ORV_IMG_OK;
}

inline void PutBgr(unsigned char* p, uint8_t b, uint8_t g, uint8_t r) {
  p[0] = b;
  p[1] = g;
  p[2] = r;
}

// Limits a colour to 1..254.
inline uint8_t Limit(uint64_t v) { return v >= 255 ? 254 : (v < 1 ? 1 : static_cast<uint8_t>(v)); }

int LowestSetBit(uint32_t mask) {
  int bit = 0;
  while (bit < 32 && !(mask & (1u << bit))) ++bit;
  return bit;
}

}  // namespace

unsigned long OrvImage::PaletteToRGB24(unsigned char* src, unsigned char* dst,
                                       unsigned long* dstSize, BITMAPINFO* info, int srcStep,
                                       int dstStep) {
  const int bits = info ? info->bmiHeader.biBitCount : 0;
  const bool served = bits == 1 || bits == 4 || bits == 8;
  BitmapWalk walk;
  const unsigned long admit =
      Admit(src, dst, dstSize, info, srcStep, dstStep, served ? bits : 0, served, &walk);
  if (admit != ORV_IMG_OK || !served) return admit;

  // The colour table holds biClrUsed entries, or all 2^bits when that is 0 or
  // more; an index past the table gives black rather than a read past it.
  const uint32_t fullTable = 1u << bits;
  const uint32_t entries = info->bmiHeader.biClrUsed == 0 || info->bmiHeader.biClrUsed > fullTable
                               ? fullTable
                               : info->bmiHeader.biClrUsed;
  const RGBQUAD* table = info->bmiColors;
  for (uint64_t y = 0; y < walk.height; ++y) {
    const unsigned char* s = walk.srcLine0 + static_cast<int64_t>(y) * walk.srcStep;
    unsigned char* d = walk.dstLine0 + static_cast<int64_t>(y) * walk.dstStep;
    for (uint64_t x = 0; x < walk.width; ++x) {
      uint32_t index;
      if (bits == 8) {
        index = s[x];
      } else if (bits == 4) {
        index = (x & 1) ? (s[x / 2] & 0x0F) : (s[x / 2] >> 4);
      } else {
        index = (s[x / 8] >> (7 - (x & 7))) & 1;
      }
      if (index < entries) {
        PutBgr(d + 3 * x, table[index].rgbBlue, table[index].rgbGreen, table[index].rgbRed);
      } else {
        PutBgr(d + 3 * x, 0, 0, 0);
      }
    }
  }
  return ORV_IMG_OK;
}

unsigned long OrvImage::BitFieldsToRGB24(unsigned char* src, unsigned char* dst,
                                         unsigned long* dstSize, BITMAPINFO* info, int srcStep,
                                         int dstStep) {
  const uint32_t compression = info ? info->bmiHeader.biCompression : 0;
  const bool served = compression == BI_RGB || compression == BI_BITFIELDS;
  const int pixelBytes = info && info->bmiHeader.biBitCount == 16 ? 2 : 4;
  uint32_t masks[3] = {0x7C00, 0x3E0, 0x1F};  // red, green, blue
  if (info && compression == BI_BITFIELDS) {
    std::memcpy(masks, info->bmiColors, sizeof(masks));
    // A colour with no bits cannot be scaled: such a bitmap is refused.
    if (masks[0] == 0 || masks[1] == 0 || masks[2] == 0) return ORV_IMG_INVALID;
  }
  BitmapWalk walk;
  const unsigned long admit =
      Admit(src, dst, dstSize, info, srcStep, dstStep, 8u * pixelBytes, served, &walk);
  if (admit != ORV_IMG_OK || !served) return admit;

  // Red and green are shifted down to their lowest bit; blue is taken to
  // start at bit 0. The scaling is done in 64 bits, so wide masks cannot wrap.
  const int redShift = LowestSetBit(masks[0]);
  const int greenShift = LowestSetBit(masks[1]);
  const uint64_t red = masks[0] >> redShift;
  const uint64_t green = masks[1] >> greenShift;
  const uint64_t blue = masks[2];
  for (uint64_t y = 0; y < walk.height; ++y) {
    const unsigned char* s = walk.srcLine0 + static_cast<int64_t>(y) * walk.srcStep;
    unsigned char* d = walk.dstLine0 + static_cast<int64_t>(y) * walk.dstStep;
    for (uint64_t x = 0; x < walk.width; ++x) {
      uint32_t pixel;
      if (pixelBytes == 2) {
        uint16_t v;
        std::memcpy(&v, s + 2 * x, 2);
        pixel = v;
      } else {
        std::memcpy(&pixel, s + 4 * x, 4);
      }
      const uint8_t b = Limit(((pixel & blue) * 256) / blue);
      const uint8_t g = Limit((((pixel >> greenShift) & green) * 256) / green);
      const uint8_t r = Limit((((pixel >> redShift) & red) * 256) / red);
      PutBgr(d + 3 * x, b, g, r);
    }
  }
  return ORV_IMG_OK;
}
