// Quarter turns of packed RGB pictures with generic, positive lines.
#include <OrvImage.h>

#include <cstdint>
#include <cstring>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::AlignedLine;
using orv::image::CheckPrimitive;
namespace ipp = orv::ipp;

struct Channels {
  int bytes;  // 3 or 4
  OrvImage::COLOR_FORMAT_TYPE format;
};

ipp::IppStatus MirrorTo(const Channels& c, const uint8_t* src, int srcStep, uint8_t* dst,
                        int dstStep, ipp::IppiSize roi, ipp::IppiAxis axis) {
  return c.bytes == 3 ? ipp::ippiMirror_8u_C3R(src, srcStep, dst, dstStep, roi, axis)
                      : ipp::ippiMirror_8u_C4R(src, srcStep, dst, dstStep, roi, axis);
}

ipp::IppStatus MirrorInPlace(const Channels& c, uint8_t* picture, int step, ipp::IppiSize roi,
                             ipp::IppiAxis axis) {
  return c.bytes == 3 ? ipp::ippiMirror_8u_C3IR(picture, step, roi, axis)
                      : ipp::ippiMirror_8u_C4IR(picture, step, roi, axis);
}

// The quarter turn: destination (x', y') = (y, width - 1 - x) of the source.
// When the destination height is odd the first line is written by hand as well,
// so it never depends on how the primitive treats that edge.
void QuarterTurn(const Channels& c, const uint8_t* src, int srcStep, uint64_t width,
                 uint64_t height, uint8_t* dst, int dstStep) {
  const ipp::IppiSize srcSize = {static_cast<int>(width), static_cast<int>(height)};
  const ipp::IppiRect srcRoi = {0, 0, static_cast<int>(width), static_cast<int>(height)};
  const ipp::IppiRect dstRoi = {0, 0, static_cast<int>(height), static_cast<int>(width)};
  const double yShift = static_cast<double>(width) - 1.0;
  const ipp::IppStatus status =
      c.bytes == 3 ? ipp::ippiRotate_8u_C3R(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi,
                                            90.0, 0.0, yShift, ipp::IPPI_INTER_CUBIC)
                   : ipp::ippiRotate_8u_C4R(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi,
                                            90.0, 0.0, yShift, ipp::IPPI_INTER_CUBIC);
  CheckPrimitive(status);
  const uint64_t dstHeight = width;
  if (dstHeight > 1 && (dstHeight & 1)) {
    for (uint64_t i = 0; i < height; ++i) {
      std::memcpy(dst + i * c.bytes, src + i * srcStep + (width - 1) * c.bytes, c.bytes);
    }
  }
}

unsigned long Rotate(const Channels& c, unsigned char* src, unsigned char* dst,
                     unsigned long* dstSize, unsigned long width, unsigned long height,
                     OrvImage::ROTATE_MODE mode, bool flip) {
  if (dstSize == nullptr || mode < OrvImage::ROTATE_NONE || mode > OrvImage::ROTATE_270 ||
      !orv::image::AreSidesValid(width, height)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const bool quarter = mode == OrvImage::ROTATE_90 || mode == OrvImage::ROTATE_270;
  const unsigned long w = quarter ? height : width;
  const unsigned long h = quarter ? width : height;
  const unsigned long required = OrvImage::GetGenericSize(c.format, w, h, nullptr, nullptr);
  if (required == 0 && w != 0 && h != 0) return OrvImage::ORV_IMG_INVALID;
  if (src == nullptr || dst == nullptr) {
    *dstSize = required;
    return OrvImage::ORV_IMG_INVALID;
  }
  if (*dstSize < required) return OrvImage::ORV_IMG_DST_TOO_SMALL;
  if (w == 0 || h == 0) {
    *dstSize = required;
    return OrvImage::ORV_IMG_OK;
  }
  const int srcStep = static_cast<int>(AlignedLine(8 * c.bytes, width));
  const int dstStep = static_cast<int>(AlignedLine(8 * c.bytes, w));
  if (w == 1 && h == 1) {
    OrvMemory::Copy(dst, static_cast<unsigned int>(required), src,
                    static_cast<unsigned int>(required));
    return OrvImage::ORV_IMG_OK;
  }
  if (h == 1 && quarter) {
    // The source is a column: written out pixel by pixel.
    for (unsigned long i = 0; i < w; ++i) {
      const unsigned long line = mode == OrvImage::ROTATE_90 ? i : w - 1 - i;
      std::memcpy(dst + i * c.bytes, src + line * srcStep, c.bytes);
    }
    return OrvImage::ORV_IMG_OK;
  }
  *dstSize = required;
  const unsigned long result = orv::image::Guarded([&]() -> unsigned long {
    const ipp::IppiSize srcRoi = {static_cast<int>(width), static_cast<int>(height)};
    const ipp::IppiSize dstRoi = {static_cast<int>(w), static_cast<int>(h)};
    switch (mode) {
      case OrvImage::ROTATE_NONE:
        if (!flip) {
          OrvMemory::Copy(dst, static_cast<unsigned int>(required), src,
                          static_cast<unsigned int>(required));
        } else {
          CheckPrimitive(MirrorTo(c, src, srcStep, dst, dstStep, srcRoi, ipp::ippAxsVertical));
        }
        break;
      case OrvImage::ROTATE_180:
        CheckPrimitive(MirrorTo(c, src, srcStep, dst, dstStep, srcRoi,
                                flip ? ipp::ippAxsHorizontal : ipp::ippAxsBoth));
        break;
      case OrvImage::ROTATE_90:
        QuarterTurn(c, src, srcStep, width, height, dst, dstStep);
        if (flip) CheckPrimitive(MirrorInPlace(c, dst, dstStep, dstRoi, ipp::ippAxsVertical));
        break;
      case OrvImage::ROTATE_270:
        // The same quarter turn, plus a half turn.
        QuarterTurn(c, src, srcStep, width, height, dst, dstStep);
        CheckPrimitive(
            MirrorInPlace(c, dst, dstStep, dstRoi, flip ? ipp::ippAxsHorizontal : ipp::ippAxsBoth));
        break;
    }
    return OrvImage::ORV_IMG_OK;
  });
  if (result != OrvImage::ORV_IMG_OK)
    OrvMemory::ZeroClear(dst, static_cast<unsigned int>(required));
  return result;
}

}  // namespace

unsigned long OrvImage::RotateRGB24(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                    unsigned long width, unsigned long height, ROTATE_MODE mode,
                                    bool flip) {
  return Rotate({3, CF_RGB24}, src, dst, dstSize, width, height, mode, flip);
}

unsigned long OrvImage::RotateRGB32(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                    unsigned long width, unsigned long height, ROTATE_MODE mode,
                                    bool flip) {
  return Rotate({4, CF_RGB32}, src, dst, dstSize, width, height, mode, flip);
}
