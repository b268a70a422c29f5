// The size arithmetic of pictures and the black fill.
#include <OrvImage.h>

#include <cstring>

#include "image/picture_limits.h"

using orv::image::AlignedLine;
using orv::image::AreSidesValid;
using orv::image::kMaxBytes;
using orv::image::StepMagnitude;

unsigned long OrvImage::GetBitPixel(COLOR_FORMAT_TYPE format) {
  switch (format) {
    case CF_CCIR601YUY2:
    case CF_BT709YUY2:
      return 16;
    case CF_RGB24:
    case CF_TavoShiftedStraightRGB24:
    case CF_YUY2A:
      return 24;
    case CF_RGB32:
    case CF_TavoShiftedStraightRGB32:
    case CF_VUYA:
    case CF_RGBA:
      return 32;
    case CF_YUV420:
    case CF_BT709YUV420:
    case CF_YV12:
      return 12;
  }
  return 0;
}

int OrvImage::GetGenericStep(COLOR_FORMAT_TYPE format, unsigned long width, unsigned long height) {
  if (!AreSidesValid(width, height)) return 0;
  switch (format) {
    case CF_YUV420:
    case CF_BT709YUV420:
    case CF_YV12:
      return static_cast<int>(width);
    case CF_CCIR601YUY2:
    case CF_BT709YUY2:
    case CF_YUY2A:
      return static_cast<int>(AlignedLine(16, width));
    default: {
      const unsigned long bits = GetBitPixel(format);
      return bits ? -static_cast<int>(AlignedLine(bits, width)) : 0;
    }
  }
}

unsigned long OrvImage::GetGenericSize(COLOR_FORMAT_TYPE format, unsigned long width,
                                       unsigned long height, int* step, int* bitsPerPixel) {
  uint64_t size = 0;
  int64_t genericStep = 0;
  int bits = 0;
  if (AreSidesValid(width, height)) {
    switch (format) {
      case CF_YUV420:
      case CF_BT709YUV420:
      case CF_YV12:
        size = (width / 2 + width) * height;
        genericStep = width;
        bits = 12;
        break;
      case CF_CCIR601YUY2:
      case CF_BT709YUY2:
        size = AlignedLine(16, width) * height;
        genericStep = AlignedLine(16, width);
        bits = 16;
        break;
      case CF_RGB24:
      case CF_TavoShiftedStraightRGB24:
        size = AlignedLine(24, width) * height;
        genericStep = -static_cast<int64_t>(AlignedLine(24, width));
        bits = 24;
        break;
      case CF_RGB32:
      case CF_TavoShiftedStraightRGB32:
      case CF_VUYA:
      case CF_RGBA:
        size = AlignedLine(32, width) * height;
        genericStep = -static_cast<int64_t>(AlignedLine(32, width));
        bits = 32;
        break;
      case CF_YUY2A:
        size = AlignedLine(16, width) * height + AlignedLine(8, width) * height;
        genericStep = AlignedLine(16, width);
        bits = 24;
        break;
    }
  }
  if (size > kMaxBytes) {
    size = 0;
    genericStep = 0;
    bits = 0;
  }
  if (step) *step = static_cast<int>(genericStep);
  if (bitsPerPixel) *bitsPerPixel = bits;
  return static_cast<unsigned long>(size);
}

unsigned long OrvImage::GetPictureSize(COLOR_FORMAT_TYPE format, unsigned long width,
                                       unsigned long height, int step) {
  if (!AreSidesValid(width, height) || !orv::image::IsKnownFormat(format)) return 0;
  const uint64_t magnitude = StepMagnitude(step);
  uint64_t size;
  if (orv::image::IsPlanar420(format)) {
    size =
        step == 0 ? (width / 2 + width) * height : (StepMagnitude(step / 2) + magnitude) * height;
  } else if (format == CF_YUY2A) {
    size = GetPictureSize(CF_CCIR601YUY2, width, height, step);
    if (size == 0 && width != 0 && height != 0) return 0;
    size += AlignedLine(8, width) * height;
  } else {
    size = step == 0 ? AlignedLine(GetBitPixel(format), width) * height : magnitude * height;
  }
  return size > kMaxBytes ? 0 : static_cast<unsigned long>(size);
}

namespace {

void FillPixels4(unsigned char* picture, uint64_t width, uint64_t height, uint64_t stepMagnitude,
                 const uint8_t pixel[4]) {
  for (uint64_t y = 0; y < height; ++y) {
    unsigned char* line = picture + y * stepMagnitude;
    for (uint64_t x = 0; x < width; ++x) std::memcpy(line + 4 * x, pixel, 4);
  }
}

void FillYuy2Black(unsigned char* picture, uint64_t width, uint64_t height,
                   uint64_t stepMagnitude) {
  static const uint8_t kPair[4] = {16, 127, 16, 127};
  const uint64_t line = AlignedLine(16, width);
  for (uint64_t y = 0; y < height; ++y) {
    unsigned char* p = picture + y * stepMagnitude;
    for (uint64_t x = 0; x < line; x += 4) std::memcpy(p + x, kPair, 4);
  }
}

}  // namespace

void OrvImage::ClearPicture(unsigned char* picture, COLOR_FORMAT_TYPE format, unsigned long width,
                            unsigned long height, int step, bool transparent) {
  if (picture == nullptr || !AreSidesValid(width, height)) return;
  if (step == 0) step = GetGenericStep(format, width, height);
  const uint64_t stride = StepMagnitude(step);
  if (stride * height > kMaxBytes) return;
  switch (format) {
    case CF_YUV420:
    case CF_BT709YUV420:
    case CF_YV12:
      std::memset(picture, 16, stride * height);
      std::memset(picture + stride * height, 127, (stride / 2) * height);
      return;
    case CF_CCIR601YUY2:
    case CF_BT709YUY2:
      FillYuy2Black(picture, width, height, stride);
      return;
    case CF_YUY2A:
      FillYuy2Black(picture, width, height, stride);
      std::memset(picture + height * stride, transparent ? 0 : 255, AlignedLine(8, width) * height);
      return;
    case CF_VUYA: {
      const uint8_t pixel[4] = {127, 127, 16, static_cast<uint8_t>(transparent ? 255 : 0)};
      FillPixels4(picture, width, height, stride, pixel);
      return;
    }
    case CF_RGBA:
      if (!transparent) {
        static const uint8_t kOpaqueBlack[4] = {0, 0, 0, 255};
        FillPixels4(picture, width, height, stride, kOpaqueBlack);
        return;
      }
      break;
    default:
      break;
  }
  OrvMemory::ZeroClear(picture, static_cast<unsigned int>(stride * height));
}

bool OrvImage::IsNearWideAspect(unsigned long width, unsigned long height) {
  if (width == 0 || height == 0) return true;
  // Squares and products wrap at 32 bits, as the original arithmetic does.
  const uint32_t w = static_cast<uint32_t>(width);
  const uint32_t h = static_cast<uint32_t>(height);
  double wide, narrow;
  if (h * 16u <= w * 9u) {
    wide = (h - static_cast<double>(h * h * 16u) / static_cast<double>(w * 9u)) * w;
  } else {
    wide = (w - static_cast<double>(w * w * 9u) / static_cast<double>(h * 16u)) * h;
  }
  if (h * 4u <= w * 3u) {
    narrow = (h - static_cast<double>(h * h * 4u) / static_cast<double>(w * 3u)) * w;
  } else {
    narrow = (w - static_cast<double>(w * w * 3u) / static_cast<double>(h * 4u)) * h;
  }
  return narrow > wide;
}
