// Copy of a picture to another step and vertical direction, between buffers or
// in place. Opposite step signs turn the picture upside down.
#include <OrvImage.h>

#include <algorithm>
#include <cstdint>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::AlignedLine;
using orv::image::CheckPrimitive;
using orv::image::StepMagnitude;
namespace ipp = orv::ipp;

// One plane of a copy: `lines` lines of `lineBytes` meaningful bytes.
struct Plane {
  unsigned char* src;
  unsigned char* dst;
  uint64_t srcStep;  // magnitudes
  uint64_t dstStep;
  uint64_t lines;
};

// Between two buffers: one block when the steps agree and nothing turns,
// otherwise line by line, the shorter step's bytes a line; the rest of a longer
// destination line stays as it was.
void CopyPlane(const Plane& p, bool flip) {
  if (p.lines == 0) return;
  if (!flip && p.srcStep == p.dstStep) {
    const uint64_t bytes = p.dstStep * p.lines;
    OrvMemory::Copy(p.dst, static_cast<unsigned int>(bytes), p.src,
                    static_cast<unsigned int>(bytes));
    return;
  }
  const uint64_t bytes = std::min(p.srcStep, p.dstStep);
  for (uint64_t i = 0; i < p.lines; ++i) {
    const uint64_t from = flip ? p.lines - 1 - i : i;
    OrvMemory::Copy(p.dst + i * p.dstStep, static_cast<unsigned int>(bytes),
                    p.src + from * p.srcStep, static_cast<unsigned int>(bytes));
  }
}

// In place: a growing picture moves its lines from the last to the first, each
// the source step's bytes; a shrinking one from the first to the last, each
// the destination step's bytes.
void MovePlaneInPlace(const Plane& p) {
  if (p.srcStep == p.dstStep && p.src == p.dst) return;
  if (p.srcStep < p.dstStep || (p.srcStep == p.dstStep && p.dst > p.src)) {
    for (uint64_t i = p.lines; i-- > 0;) {
      OrvMemory::Move(p.dst + i * p.dstStep, static_cast<unsigned int>(p.srcStep),
                      p.src + i * p.srcStep, static_cast<unsigned int>(p.srcStep));
    }
  } else {
    for (uint64_t i = 0; i < p.lines; ++i) {
      OrvMemory::Move(p.dst + i * p.dstStep, static_cast<unsigned int>(p.dstStep),
                      p.src + i * p.srcStep, static_cast<unsigned int>(p.dstStep));
    }
  }
}

enum class Mirror { kC1, kC3, kC4 };

// Turns `rows` lines of `pixels` pixels upside down in place; empty regions are
// left alone.
void MirrorInPlace(Mirror kind, unsigned char* picture, uint64_t step, uint64_t pixels,
                   uint64_t rows) {
  if (pixels == 0 || rows == 0) return;
  const ipp::IppiSize roi = {static_cast<int>(pixels), static_cast<int>(rows)};
  const int s = static_cast<int>(step);
  switch (kind) {
    case Mirror::kC1:
      CheckPrimitive(ipp::ippiMirror_8u_C1IR(picture, s, roi, ipp::ippAxsHorizontal));
      break;
    case Mirror::kC3:
      CheckPrimitive(ipp::ippiMirror_8u_C3IR(picture, s, roi, ipp::ippAxsHorizontal));
      break;
    case Mirror::kC4:
      CheckPrimitive(ipp::ippiMirror_8u_C4IR(picture, s, roi, ipp::ippAxsHorizontal));
      break;
  }
}

// The checks every copy starts with. Returns 0 to go on, or the code to answer.
unsigned long Admit(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                    unsigned long width, unsigned long height, int srcStep, int dstStep,
                    uint64_t required) {
  if (dstSize == nullptr) return OrvImage::ORV_IMG_INVALID;
  if (!orv::image::AreSidesValid(width, height) || required > orv::image::kMaxBytes ||
      srcStep == INT32_MIN || dstStep == INT32_MIN) {
    return OrvImage::ORV_IMG_INVALID;
  }
  if (src == nullptr || dst == nullptr) {
    *dstSize = static_cast<unsigned long>(required);
    return OrvImage::ORV_IMG_INVALID;
  }
  if (*dstSize < required) return OrvImage::ORV_IMG_DST_TOO_SMALL;
  return OrvImage::ORV_IMG_OK;
}

bool FlipDue(int srcStep, int dstStep) {
  return (srcStep < 0 && dstStep > 0) || (srcStep > 0 && dstStep < 0);
}

// The one-plane formats: YUY2 (2 x width bytes), RGB24, RGB32.
unsigned long CopyPacked(Mirror kind, uint64_t mirrorPixels, unsigned char* src, unsigned char* dst,
                         unsigned long* dstSize, unsigned long width, unsigned long height,
                         int srcStep, int dstStep) {
  const uint64_t srcMag = StepMagnitude(srcStep), dstMag = StepMagnitude(dstStep);
  const uint64_t required = dstMag * height;
  const unsigned long admit = Admit(src, dst, dstSize, width, height, srcStep, dstStep, required);
  if (admit != OrvImage::ORV_IMG_OK) return admit;
  return orv::image::Guarded([&]() -> unsigned long {
    const bool flip = FlipDue(srcStep, dstStep);
    const Plane plane = {src, dst, srcMag, dstMag, height};
    if (src != dst) {
      CopyPlane(plane, flip);
    } else {
      MovePlaneInPlace(plane);
      if (flip) MirrorInPlace(kind, dst, dstMag, mirrorPixels, height);
    }
    *dstSize = static_cast<unsigned long>(required);
    return OrvImage::ORV_IMG_OK;
  });
}

}  // namespace

unsigned long OrvImage::CopyYUY2(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                 unsigned long width, unsigned long height, int srcStep,
                                 int dstStep) {
  return CopyPacked(Mirror::kC1, 2ull * width, src, dst, dstSize, width, height, srcStep, dstStep);
}

unsigned long OrvImage::CopyRGB24(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                  unsigned long width, unsigned long height, int srcStep,
                                  int dstStep) {
  return CopyPacked(Mirror::kC3, width, src, dst, dstSize, width, height, srcStep, dstStep);
}

unsigned long OrvImage::CopyRGB32(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                  unsigned long width, unsigned long height, int srcStep,
                                  int dstStep) {
  return CopyPacked(Mirror::kC4, width, src, dst, dstSize, width, height, srcStep, dstStep);
}

unsigned long OrvImage::CopyYUV420(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                   unsigned long width, unsigned long height, int srcStep,
                                   int dstStep) {
  const uint64_t srcMag = StepMagnitude(srcStep), dstMag = StepMagnitude(dstStep);
  const uint64_t required = (dstMag + dstMag / 2) * height;
  const unsigned long admit = Admit(src, dst, dstSize, width, height, srcStep, dstStep, required);
  if (admit != ORV_IMG_OK) return admit;
  return orv::image::Guarded([&]() -> unsigned long {
    const bool flip = FlipDue(srcStep, dstStep);
    // Y, then Cb and Cr with half the step and half the lines. Every write
    // stays inside the destination's planes, also for an odd height.
    const uint64_t chromaLines = height / 2;
    const uint64_t srcChroma = srcMag / 2, dstChroma = dstMag / 2;
    unsigned char* srcCb = src + srcMag * height;
    unsigned char* dstCb = dst + dstMag * height;
    const Plane planes[3] = {
        {src, dst, srcMag, dstMag, height},
        {srcCb, dstCb, srcChroma, dstChroma, chromaLines},
        {srcCb + srcChroma * chromaLines, dstCb + dstChroma * chromaLines, srcChroma, dstChroma,
         chromaLines},
    };
    if (src != dst) {
      for (const Plane& p : planes) CopyPlane(p, flip);
    } else {
      // Growing: the last plane first, so no plane overwrites one not yet moved.
      if (srcMag < dstMag) {
        for (int i = 2; i >= 0; --i) MovePlaneInPlace(planes[i]);
      } else {
        for (int i = 0; i < 3; ++i) MovePlaneInPlace(planes[i]);
      }
      if (flip) {
        MirrorInPlace(Mirror::kC1, dst, dstMag, width, height);
        MirrorInPlace(Mirror::kC1, planes[1].dst, dstChroma, width / 2, chromaLines);
        MirrorInPlace(Mirror::kC1, planes[2].dst, dstChroma, width / 2, chromaLines);
      }
    }
    *dstSize = static_cast<unsigned long>(required);
    return ORV_IMG_OK;
  });
}

unsigned long OrvImage::CopyYUY2A(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                                  unsigned long width, unsigned long height, int srcStep,
                                  int dstStep) {
  const uint64_t srcMag = StepMagnitude(srcStep), dstMag = StepMagnitude(dstStep);
  const uint64_t alphaLine = AlignedLine(8, width);
  const uint64_t required = (dstMag + alphaLine) * height;
  const unsigned long admit = Admit(src, dst, dstSize, width, height, srcStep, dstStep, required);
  if (admit != ORV_IMG_OK) return admit;
  return orv::image::Guarded([&]() -> unsigned long {
    const bool flip = FlipDue(srcStep, dstStep);
    const Plane colour = {src, dst, srcMag, dstMag, height};
    unsigned char* srcAlpha = src + srcMag * height;
    unsigned char* dstAlpha = dst + dstMag * height;
    const unsigned int alphaBytes = static_cast<unsigned int>(alphaLine * height);
    if (src != dst) {
      CopyPlane(colour, flip);
      if (!flip) {
        OrvMemory::Copy(dstAlpha, alphaBytes, srcAlpha, alphaBytes);
      } else if (width != 0 && height != 0) {
        const ipp::IppiSize roi = {static_cast<int>(width), static_cast<int>(height)};
        CheckPrimitive(ipp::ippiMirror_8u_C1R(srcAlpha, static_cast<int>(alphaLine), dstAlpha,
                                              static_cast<int>(alphaLine), roi,
                                              ipp::ippAxsHorizontal));
      }
    } else {
      // The alpha plane moves first when the picture grows, last when it shrinks.
      const bool growing = srcMag < dstMag;
      if (growing) OrvMemory::Move(dstAlpha, alphaBytes, srcAlpha, alphaBytes);
      MovePlaneInPlace(colour);
      if (!growing) OrvMemory::Move(dstAlpha, alphaBytes, srcAlpha, alphaBytes);
      if (flip) {
        MirrorInPlace(Mirror::kC1, dst, dstMag, 2ull * width, height);
        MirrorInPlace(Mirror::kC1, dstAlpha, alphaLine, width, height);
      }
    }
    *dstSize = static_cast<unsigned long>(required);
    return ORV_IMG_OK;
  });
}
