// Alpha composition of RGB pictures through the primitives: a B G R A picture
// over another by its per-pixel alpha ("over": the first shows by its alpha,
// the second through what is left).
#include <OrvImage.h>

#include <climits>
#include <cstdint>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

namespace ipp = orv::ipp;
using orv::image::StepMagnitude;

// A 4-channel work picture from the primitives' allocator, freed with it.
struct WorkPicture {
  ipp::Ipp8u* data = nullptr;
  int step = 0;
  WorkPicture() = default;
  WorkPicture(int width, int height) { data = ipp::ippiMalloc_8u_AC4(width, height, &step); }
  ~WorkPicture() { ipp::ippiFree(data); }
  WorkPicture(const WorkPicture&) = delete;
  WorkPicture& operator=(const WorkPicture&) = delete;
};

void Clear(unsigned char* dst, uint64_t bytes) {
  OrvMemory::ZeroClear(dst, static_cast<unsigned int>(bytes));
}

bool SizeFits(unsigned long width, unsigned long height, uint64_t lineBytes) {
  return orv::image::AreSidesValid(width, height) && lineBytes * height <= orv::image::kMaxBytes;
}

}  // namespace

unsigned long OrvImage::AlphaCompRGB24(unsigned char* srcRGBA, unsigned char* srcRGB,
                                       unsigned char* dst, unsigned long width,
                                       unsigned long height) {
  if (srcRGBA == nullptr || srcRGB == nullptr || dst == nullptr) return ORV_IMG_INVALID;
  const uint64_t line = orv::image::AlignedLine(24, width);
  if (!SizeFits(width, height, 4 * static_cast<uint64_t>(width)) ||
      !SizeFits(width, height, line)) {
    return ORV_IMG_INVALID;
  }
  if (width == 0 || height == 0) return ORV_IMG_OK;
  const ipp::IppiSize size = {static_cast<int>(width), static_cast<int>(height)};
  WorkPicture under(size.width, size.height);
  WorkPicture result(size.width, size.height);
  if (under.data == nullptr || result.data == nullptr) {
    Clear(dst, line * height);
    return ORV_IMG_NO_MEMORY;
  }
  const unsigned long code = orv::image::Guarded([&]() -> unsigned long {
    using orv::image::CheckPrimitive;
    CheckPrimitive(
        ipp::ippiCopy_8u_C3AC4R(srcRGB, static_cast<int>(line), under.data, under.step, size));
    CheckPrimitive(ipp::ippiSet_8u_C4CR(255, under.data + 3, under.step, size));
    CheckPrimitive(ipp::ippiAlphaComp_8u_AC4R(srcRGBA, 4 * size.width, under.data, under.step,
                                              result.data, result.step, size, ipp::ippAlphaOver));
    CheckPrimitive(
        ipp::ippiCopy_8u_AC4C3R(result.data, result.step, dst, static_cast<int>(line), size));
    return ORV_IMG_OK;
  });
  if (code != ORV_IMG_OK) Clear(dst, line * height);
  return code;
}

unsigned long OrvImage::AlphaCompRGB32(unsigned char* srcA, unsigned char* srcB, unsigned char* dst,
                                       unsigned long width, unsigned long height) {
  if (srcA == nullptr || srcB == nullptr || dst == nullptr) return ORV_IMG_INVALID;
  const uint64_t line = 4 * static_cast<uint64_t>(width);
  if (!SizeFits(width, height, line)) return ORV_IMG_INVALID;
  if (width == 0 || height == 0) return ORV_IMG_OK;
  const ipp::IppiSize size = {static_cast<int>(width), static_cast<int>(height)};
  const int s = static_cast<int>(line);
  if (ipp::ippiAlphaComp_8u_AC4R(srcA, s, srcB, s, dst, s, size, ipp::ippAlphaOver) != 0) {
    Clear(dst, line * height);
    return ORV_IMG_FAILED;
  }
  return ORV_IMG_OK;
}

unsigned long OrvImage::AlphaCompRGB32(unsigned char* srcA, int stepA, unsigned char* srcB,
                                       int stepB, unsigned char* dst, int dstStep,
                                       unsigned long width, unsigned long height) {
  if (srcA == nullptr || srcB == nullptr || dst == nullptr) return ORV_IMG_INVALID;
  const uint64_t minLine = 4 * static_cast<uint64_t>(width);
  if (!orv::image::AreSidesValid(width, height)) return ORV_IMG_INVALID;
  // A step of 0 is the generic bottom-up B G R A line.
  const int generic = -static_cast<int>(minLine);
  if (stepA == 0) stepA = generic;
  if (stepB == 0) stepB = generic;
  if (dstStep == 0) dstStep = generic;
  if (srcB == dst && stepB != dstStep) return ORV_IMG_INVALID;
  for (const int s : {stepA, stepB, dstStep}) {
    if (s == INT_MIN || StepMagnitude(s) < minLine ||
        StepMagnitude(s) * height > orv::image::kMaxBytes) {
      return ORV_IMG_INVALID;
    }
  }
  if (width == 0 || height == 0) return ORV_IMG_OK;
  const ipp::IppiSize size = {static_cast<int>(width), static_cast<int>(height)};
  const uint64_t dstBytes = StepMagnitude(dstStep) * height;

  // Sources of opposite directions: the one that goes against dst is turned
  // into a work picture, which then takes its place in dst's direction.
  const unsigned char* first = srcA;
  const unsigned char* second = srcB;
  int firstStep = static_cast<int>(StepMagnitude(stepA));
  int secondStep = static_cast<int>(StepMagnitude(stepB));
  bool flipResult = false;
  WorkPicture work;
  if ((stepA < 0) != (stepB < 0)) {
    const bool flipA = (stepA < 0) != (dstStep < 0);
    const unsigned char* turned = flipA ? srcA : srcB;
    const int turnedStep = flipA ? firstStep : secondStep;
    work.data = ipp::ippiMalloc_8u_AC4(size.width, size.height, &work.step);
    if (work.data == nullptr) return ORV_IMG_NO_MEMORY;
    if (ipp::ippiMirror_8u_C4R(turned, turnedStep, work.data, work.step, size,
                               ipp::ippAxsHorizontal) != 0) {
      return ORV_IMG_FAILED;
    }
    if (flipA) {
      first = work.data;
      firstStep = work.step;
    } else {
      second = work.data;
      secondStep = work.step;
    }
  } else if ((stepA < 0) != (dstStep < 0)) {
    flipResult = true;
  }
  const int outStep = static_cast<int>(StepMagnitude(dstStep));
  if (ipp::ippiAlphaComp_8u_AC4R(first, firstStep, second, secondStep, dst, outStep, size,
                                 ipp::ippAlphaOver) != 0 ||
      (flipResult && ipp::ippiMirror_8u_C4IR(dst, outStep, size, ipp::ippAxsHorizontal) != 0)) {
    Clear(dst, dstBytes);
    return ORV_IMG_FAILED;
  }
  return ORV_IMG_OK;
}
