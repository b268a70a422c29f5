// The public static resizes: a whole picture to another size, in one call.
#include <OrvImage.h>

#include <cstring>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::StepMagnitude;
namespace ipp = orv::ipp;

enum class Layout { kYuv420, kYuy2, kRgb24, kRgb32 };

uint64_t LineBytes(Layout layout, uint64_t width) {
  switch (layout) {
    case Layout::kYuv420:
      return width;
    case Layout::kYuy2:
      return 2 * width;
    case Layout::kRgb24:
      return 3 * width;
    case Layout::kRgb32:
      return 4 * width;
  }
  return 0;
}

// The checks and the size answer shared by the four resizes. Returns 0 to go
// on (with the required size in *required), or the code to answer.
unsigned long Admit(Layout layout, unsigned char* src, unsigned char* dst, unsigned long* size,
                    unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                    unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                    OrvImage::INTERPOLATION_MODE mode, uint64_t* required) {
  if (size == nullptr || mode < OrvImage::INTERPOLATION_NEAREST ||
      mode > OrvImage::INTERPOLATION_VRSCL_FRAME || srcStep == INT32_MIN || dstStep == INT32_MIN ||
      !orv::image::AreSidesValid(srcWidth, srcHeight) ||
      !orv::image::AreSidesValid(dstWidth, dstHeight)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const uint64_t s = StepMagnitude(dstStep);
  *required = layout == Layout::kYuv420 ? (s / 2 + s) * dstHeight : s * dstHeight;
  if (*required > orv::image::kMaxBytes) return OrvImage::ORV_IMG_INVALID;
  if (src == nullptr || dst == nullptr) {
    *size = static_cast<unsigned long>(*required);
    return OrvImage::ORV_IMG_INVALID;
  }
  if (*size < *required) return OrvImage::ORV_IMG_DST_TOO_SMALL;
  // Lines shorter than the pictures' pixels, or empty pictures, cannot be resized.
  if (srcWidth == 0 || srcHeight == 0 || dstWidth == 0 || dstHeight == 0 ||
      StepMagnitude(srcStep) < LineBytes(layout, srcWidth) || s < LineBytes(layout, dstWidth)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  return OrvImage::ORV_IMG_OK;
}

bool FlipDue(int srcStep, int dstStep) { return (srcStep < 0) != (dstStep < 0); }

}  // namespace

unsigned long OrvImage::ResizeYUV420(unsigned char* src, unsigned char* dst, unsigned long* size,
                                     unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                     unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                     INTERPOLATION_MODE mode) {
  uint64_t required = 0;
  const unsigned long admit = Admit(Layout::kYuv420, src, dst, size, srcWidth, srcHeight, srcStep,
                                    dstWidth, dstHeight, dstStep, mode, &required);
  if (admit != ORV_IMG_OK) return admit;
  const int s = static_cast<int>(StepMagnitude(dstStep));
  const int srcMag = static_cast<int>(StepMagnitude(srcStep));
  ClearPicture(dst, CF_YUV420, dstWidth, dstHeight, s, false);
  *size = static_cast<unsigned long>(required);
  const IppiSize srcSize = {static_cast<int>(srcWidth), static_cast<int>(srcHeight)};
  const IppiSize dstSize = {static_cast<int>(dstWidth), static_cast<int>(dstHeight)};
  double xFactor, yFactor;
  int trim, margin;
  GetResizeFactor(srcSize, dstSize, &xFactor, &yFactor, &trim, &margin, nullptr);
  const bool ok = mode == INTERPOLATION_TAVO
                      ? TavoResizeYUV420(src, dst, srcMag, s, srcSize, dstSize, trim, margin, 0,
                                         FIELD_FRAME, true)
                      : IppResizeYUV420(src, dst, srcMag, s, srcSize, dstSize,
                                        {0, 0, srcSize.width, srcSize.height}, xFactor, yFactor,
                                        mode, FIELD_FRAME, true);
  if (!ok) {
    OrvMemory::Set(dst, 0, static_cast<unsigned int>(required));
    return ORV_IMG_FAILED;
  }
  if (FlipDue(srcStep, dstStep)) {
    // Chroma planes laid out as the picture model lays them: U at S x H, V right
    // behind U's (S/2) x H / 2 bytes.
    unsigned char* u = dst + static_cast<uint64_t>(s) * dstHeight;
    unsigned char* v = u + (static_cast<uint64_t>(s / 2) * dstHeight) / 2;
    const IppiSize ySize = dstSize;
    const IppiSize cSize = {dstSize.width / 2, dstSize.height / 2};
    bool mirrored = ipp::ippiMirror_8u_C1IR(dst, s, ySize, ipp::ippAxsHorizontal) == 0;
    if (mirrored && cSize.width > 0 && cSize.height > 0) {
      mirrored = ipp::ippiMirror_8u_C1IR(u, s / 2, cSize, ipp::ippAxsHorizontal) == 0 &&
                 ipp::ippiMirror_8u_C1IR(v, s / 2, cSize, ipp::ippAxsHorizontal) == 0;
    }
    if (!mirrored) {
      OrvMemory::ZeroClear(dst, static_cast<unsigned int>(required));
      return ORV_IMG_FAILED;
    }
  }
  return ORV_IMG_OK;
}

unsigned long OrvImage::ResizeYUY2(unsigned char* src, unsigned char* dst, unsigned long* size,
                                   unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                   unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                   INTERPOLATION_MODE mode) {
  uint64_t required = 0;
  const unsigned long admit = Admit(Layout::kYuy2, src, dst, size, srcWidth, srcHeight, srcStep,
                                    dstWidth, dstHeight, dstStep, mode, &required);
  if (admit != ORV_IMG_OK) return admit;
  const int s = static_cast<int>(StepMagnitude(dstStep));
  const int srcMag = static_cast<int>(StepMagnitude(srcStep));
  ClearPicture(dst, CF_CCIR601YUY2, dstWidth, dstHeight, s, false);
  *size = static_cast<unsigned long>(required);
  const IppiSize srcSize = {static_cast<int>(srcWidth), static_cast<int>(srcHeight)};
  const IppiSize dstSize = {static_cast<int>(dstWidth), static_cast<int>(dstHeight)};
  double xFactor, yFactor;
  int trim, margin;
  GetResizeFactor(srcSize, dstSize, &xFactor, &yFactor, &trim, &margin, nullptr);
  bool ok;
  if (mode == INTERPOLATION_TAVO) {
    ok = TavoResizeYUY2(src, dst, srcMag, s, srcSize, dstSize, trim, margin, 0, FIELD_FRAME, true);
  } else {
    TEMP_PLANAR_FORMAT temp = {};
    if (!AllocateTempBuffer(&temp, srcSize, dstSize)) {
      OrvMemory::ZeroClear(dst, static_cast<unsigned int>(required));
      ReleaseTempBuffer(&temp);
      return ORV_IMG_NO_MEMORY;
    }
    ok = IppResizeYUY2(src, dst, srcMag, s, srcSize, dstSize, {0, 0, srcSize.width, srcSize.height},
                       xFactor, yFactor, mode, &temp, FIELD_FRAME, true);
    ReleaseTempBuffer(&temp);
  }
  if (!ok) {
    OrvMemory::Set(dst, 0, static_cast<unsigned int>(required));
    return ORV_IMG_FAILED;
  }
  if (FlipDue(srcStep, dstStep) &&
      ipp::ippiMirror_8u_C1IR(dst, s, {dstSize.width * 2, dstSize.height}, ipp::ippAxsHorizontal) !=
          0) {
    OrvMemory::ZeroClear(dst, static_cast<unsigned int>(required));
    return ORV_IMG_FAILED;
  }
  return ORV_IMG_OK;
}

namespace {

unsigned long ResizeRgb(Layout layout, unsigned char* src, unsigned char* dst, unsigned long* size,
                        unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                        unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                        OrvImage::INTERPOLATION_MODE mode, int interpolation, double xFactor,
                        double yFactor) {
  const int s = static_cast<int>(StepMagnitude(dstStep));
  const int srcMag = static_cast<int>(StepMagnitude(srcStep));
  const uint64_t required = static_cast<uint64_t>(s) * dstHeight;
  const ipp::IppiSize srcSize = {static_cast<int>(srcWidth), static_cast<int>(srcHeight)};
  const ipp::IppiSize dstSize = {static_cast<int>(dstWidth), static_cast<int>(dstHeight)};
  const ipp::IppiRect srcRect = {0, 0, srcSize.width, srcSize.height};
  const bool rgb24 = layout == Layout::kRgb24;
  int status = rgb24 ? ipp::ippiResize_8u_C3R(src, srcSize, srcMag, srcRect, dst, s, dstSize,
                                              xFactor, yFactor, interpolation)
                     : ipp::ippiResize_8u_C4R(src, srcSize, srcMag, srcRect, dst, s, dstSize,
                                              xFactor, yFactor, interpolation);
  if (status == 0 && FlipDue(srcStep, dstStep)) {
    status = rgb24 ? ipp::ippiMirror_8u_C3IR(dst, s, dstSize, ipp::ippAxsHorizontal)
                   : ipp::ippiMirror_8u_C4IR(dst, s, dstSize, ipp::ippAxsHorizontal);
  }
  if (status != 0) {
    *size = 0;
    OrvMemory::ZeroClear(dst, static_cast<unsigned int>(required));
    return OrvImage::ORV_IMG_FAILED;
  }
  return OrvImage::ORV_IMG_OK;
}

}  // namespace

unsigned long OrvImage::ResizeRGB24(unsigned char* src, unsigned char* dst, unsigned long* size,
                                    unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                    unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                    INTERPOLATION_MODE mode) {
  uint64_t required = 0;
  const unsigned long admit = Admit(Layout::kRgb24, src, dst, size, srcWidth, srcHeight, srcStep,
                                    dstWidth, dstHeight, dstStep, mode, &required);
  if (admit != ORV_IMG_OK) return admit;
  OrvMemory::Set(dst, 0, static_cast<unsigned int>(required));
  *size = static_cast<unsigned long>(required);
  double xFactor, yFactor;
  GetResizeFactor({static_cast<int>(srcWidth), static_cast<int>(srcHeight)},
                  {static_cast<int>(dstWidth), static_cast<int>(dstHeight)}, &xFactor, &yFactor,
                  nullptr, nullptr, nullptr);
  return ResizeRgb(Layout::kRgb24, src, dst, size, srcWidth, srcHeight, srcStep, dstWidth,
                   dstHeight, dstStep, mode, GetInterpolation(mode, xFactor, yFactor), xFactor,
                   yFactor);
}

unsigned long OrvImage::ResizeRGB32(unsigned char* src, unsigned char* dst, unsigned long* size,
                                    unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                                    unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                                    INTERPOLATION_MODE mode) {
  uint64_t required = 0;
  const unsigned long admit = Admit(Layout::kRgb32, src, dst, size, srcWidth, srcHeight, srcStep,
                                    dstWidth, dstHeight, dstStep, mode, &required);
  if (admit != ORV_IMG_OK) return admit;
  OrvMemory::Set(dst, 0, static_cast<unsigned int>(required));
  *size = static_cast<unsigned long>(required);
  double xFactor, yFactor;
  GetResizeFactor({static_cast<int>(srcWidth), static_cast<int>(srcHeight)},
                  {static_cast<int>(dstWidth), static_cast<int>(dstHeight)}, &xFactor, &yFactor,
                  nullptr, nullptr, nullptr);
  return ResizeRgb(Layout::kRgb32, src, dst, size, srcWidth, srcHeight, srcStep, dstWidth,
                   dstHeight, dstStep, mode, GetInterpolation(mode, xFactor, yFactor), xFactor,
                   yFactor);
}
