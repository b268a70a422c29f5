// The instance resize: a plan made once by Initialize or InitializeEx, then
// run on pictures of the same sizes frame after frame. The YUY2 work planes of
// the plan are kept between frames.
#include <OrvImage.h>

#include <algorithm>
#include <cstring>

#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::AlignedLine;
namespace ipp = orv::ipp;

bool ValidMode(OrvImage::INTERPOLATION_MODE mode) {
  return mode >= OrvImage::INTERPOLATION_NEAREST && mode <= OrvImage::INTERPOLATION_VRSCL_FRAME;
}

bool ValidSides(unsigned long w, unsigned long h) {
  return w > 0 && h > 0 && orv::image::AreSidesValid(w, h);
}

void FreePlanes(std::initializer_list<uint8_t**> planes) {
  for (uint8_t** p : planes) {
    if (*p) ipp::ippiFree(*p);
    *p = nullptr;
  }
}

}  // namespace

// Makes the work planes of the plan fit new sizes. A side is allocated again
// when the plan was not valid, had no resize or used the own scaler, or when
// its size changed; otherwise it is kept. False when an allocation fails.
static bool FitTemp(OrvImage::TEMP_PLANAR_FORMAT* t, bool keepSrc, bool keepDst,
                    orv::ipp::IppiSize src, orv::ipp::IppiSize dst) {
  if (!keepSrc || !t->srcY) {
    FreePlanes({&t->srcY, &t->srcU, &t->srcV});
    t->srcY = ipp::ippiMalloc_8u_C1(src.width, src.height, &t->srcStepY);
    t->srcU = ipp::ippiMalloc_8u_C1(src.width / 2, src.height, &t->srcStepU);
    t->srcV = ipp::ippiMalloc_8u_C1(src.width / 2, src.height, &t->srcStepV);
  }
  if (!keepDst || !t->dstY) {
    FreePlanes({&t->dstY, &t->dstU, &t->dstV});
    const int chromaLines = dst.height + (dst.height & 1);  // see AllocateTempBuffer
    t->dstY = ipp::ippiMalloc_8u_C1(dst.width, dst.height, &t->dstStepY);
    t->dstU = ipp::ippiMalloc_8u_C1(dst.width / 2, chromaLines, &t->dstStepU);
    t->dstV = ipp::ippiMalloc_8u_C1(dst.width / 2, chromaLines, &t->dstStepV);
  }
  return t->srcY && t->srcU && t->srcV && t->dstY && t->dstU && t->dstV;
}

unsigned long OrvImage::Initialize(unsigned long srcWidth, unsigned long srcHeight,
                                   unsigned long dstWidth, unsigned long dstHeight,
                                   INTERPOLATION_MODE mode) {
  if (!ValidSides(srcWidth, srcHeight) || !ValidSides(dstWidth, dstHeight) || !ValidMode(mode)) {
    return ORV_IMG_INVALID;
  }
  RESIZE_INFO& r = m_resizeInfo;
  const IppiSize src = {static_cast<int>(srcWidth), static_cast<int>(srcHeight)};
  const IppiSize dst = {static_cast<int>(dstWidth), static_cast<int>(dstHeight)};
  double xFactor, yFactor;
  int trim, margin;
  const bool needResize = GetResizeFactor(src, dst, &xFactor, &yFactor, &trim, &margin, nullptr);
  if (!needResize || mode == INTERPOLATION_TAVO) {
    ReleaseTempBuffer(&r.temp);
  } else {
    const bool reusable = m_resizeValid && r.needResize && r.interpolation != INTERPOLATION_TAVO;
    const bool keepSrc = reusable && r.srcSize.width == src.width && r.srcSize.height == src.height;
    const bool keepDst = reusable && r.dstSize.width == dst.width && r.dstSize.height == dst.height;
    if (!FitTemp(&r.temp, keepSrc, keepDst, src, dst)) {
      m_resizeValid = false;
      ClearResizeInfo(&r);
      return ORV_IMG_NO_MEMORY;
    }
  }
  r.needResize = needResize;
  r.xFactor = xFactor;
  r.yFactor = yFactor;
  r.srcTrimX = trim;
  r.dstMarginX = margin;
  r.srcStep = static_cast<int32_t>(AlignedLine(16, srcWidth));
  r.dstStep = static_cast<int32_t>(AlignedLine(16, dstWidth));
  r.srcSize = src;
  r.dstSize = dst;
  r.srcRect = {trim / 2, 0, src.width - trim, src.height};
  // The vertical margin stays what an earlier InitializeEx made it (0 otherwise).
  r.dstRect = {margin / 2, r.dstMarginY / 2, dst.width - margin, dst.height - r.dstMarginY};
  r.interpolation = mode;
  m_resizeValid = true;
  return ORV_IMG_OK;
}

unsigned long OrvImage::InitializeEx(unsigned long srcWidth, unsigned long srcHeight, RECT srcRect,
                                     unsigned long dstWidth, unsigned long dstHeight, RECT dstRect,
                                     INTERPOLATION_MODE mode, bool /*reserved*/,
                                     bool explicitDstRect) {
  if (!ValidSides(srcWidth, srcHeight) || !ValidSides(dstWidth, dstHeight) || !ValidMode(mode)) {
    return ORV_IMG_INVALID;
  }
  const int64_t rw = static_cast<int64_t>(srcRect.right) - srcRect.left;
  const int64_t rh = static_cast<int64_t>(srcRect.bottom) - srcRect.top;
  const int64_t dw = static_cast<int64_t>(dstRect.right) - dstRect.left;
  const int64_t dh = static_cast<int64_t>(dstRect.bottom) - dstRect.top;
  // The rectangles must have an area and fit in their pictures.
  if (rw <= 0 || rh <= 0 || dw <= 0 || dh <= 0 || rw > static_cast<int64_t>(srcWidth) ||
      rh > static_cast<int64_t>(srcHeight) || dw > static_cast<int64_t>(dstWidth) ||
      dh > static_cast<int64_t>(dstHeight) ||
      (explicitDstRect &&
       (dstRect.left < 0 || dstRect.top < 0 || dstRect.right > static_cast<int64_t>(dstWidth) ||
        dstRect.bottom > static_cast<int64_t>(dstHeight)))) {
    return ORV_IMG_INVALID;
  }
  RESIZE_INFO& r = m_resizeInfo;
  const IppiSize src = {static_cast<int>(srcWidth), static_cast<int>(srcHeight)};
  const IppiSize dst = {static_cast<int>(dstWidth), static_cast<int>(dstHeight)};
  const bool same = srcWidth == dstWidth && srcHeight == dstHeight &&
                    srcRect.left == dstRect.left && srcRect.top == dstRect.top &&
                    srcRect.right == dstRect.right && srcRect.bottom == dstRect.bottom;
  // INTERPOLATION_TAVO is served through the primitives here, so the plan holds
  // the work planes that route needs.
  if (same) {
    ReleaseTempBuffer(&r.temp);
  } else {
    const bool reusable = m_resizeValid && r.needResize && r.interpolation != INTERPOLATION_TAVO;
    const bool keepSrc = reusable && r.srcSize.width == src.width && r.srcSize.height == src.height;
    const bool keepDst = reusable && r.dstSize.width == dst.width && r.dstSize.height == dst.height;
    if (!FitTemp(&r.temp, keepSrc, keepDst, src, dst)) {
      m_resizeValid = false;
      ClearResizeInfo(&r);
      return ORV_IMG_NO_MEMORY;
    }
  }
  r.needResize = !same;
  const int trim = static_cast<int>(srcWidth - rw);
  r.srcRect = {trim >> 1, static_cast<int>((srcHeight - rh) >> 1), static_cast<int>(rw),
               static_cast<int>(rh)};
  int marginX = 0;
  if (!explicitDstRect) {
    r.dstRect = {static_cast<int>((dstWidth - dw) >> 1), static_cast<int>((dstHeight - dh) >> 1),
                 static_cast<int>(dw), static_cast<int>(dh)};
    marginX = static_cast<int>(dstWidth - dw);
    r.dstMarginY = static_cast<int>(dstHeight - dh);
  } else {
    r.dstRect = {dstRect.left, dstRect.top, static_cast<int>(dw), static_cast<int>(dh)};
    r.dstMarginY = 0;
  }
  // Trim and margin go toward zero to a multiple of 4; the rectangles keep theirs.
  r.srcTrimX = trim / 4 * 4;
  r.dstMarginX = marginX / 4 * 4;
  r.srcStep = static_cast<int32_t>(AlignedLine(16, srcWidth));
  r.dstStep = static_cast<int32_t>(AlignedLine(16, dstWidth));
  r.srcSize = src;
  r.dstSize = dst;
  r.interpolation = mode == INTERPOLATION_TAVO ? INTERPOLATION_AUTO : mode;
  r.xFactor = static_cast<double>(dw) / static_cast<double>(rw);
  r.yFactor = static_cast<double>(dh) / static_cast<double>(rh);
  m_resizeValid = true;
  return ORV_IMG_OK;
}

unsigned long OrvImage::ResizeYUY2(unsigned char* src, unsigned char* dst, unsigned long* size) {
  if (src == nullptr || dst == nullptr || size == nullptr) return ORV_IMG_INVALID;
  if (!m_resizeValid) return ORV_IMG_FAILED;
  const RESIZE_INFO& r = m_resizeInfo;
  const uint64_t required = static_cast<uint64_t>(r.dstSize.height) * r.dstStep;
  if (*size < required) return ORV_IMG_DST_TOO_SMALL;
  *size = static_cast<unsigned long>(required);
  if (!r.needResize) {
    OrvMemory::Copy(dst, static_cast<unsigned int>(required), src,
                    static_cast<unsigned int>(required));
    return ORV_IMG_OK;
  }
  // Black with neutral chroma: bytes 0, 127, 0, 127.
  for (uint64_t i = 0; i + 4 <= required; i += 4) {
    dst[i] = 0;
    dst[i + 1] = 127;
    dst[i + 2] = 0;
    dst[i + 3] = 127;
  }
  bool ok;
  if (r.interpolation == INTERPOLATION_TAVO) {
    ok = TavoResizeYUY2(src, dst, r.srcStep, r.dstStep, r.srcSize, r.dstSize, r.srcTrimX,
                        r.dstMarginX, r.dstMarginY, FIELD_FRAME, true);
  } else {
    // The target region starts on a whole pixel pair, so Y and chroma bytes
    // keep their places in the packed line.
    const int64_t x = r.dstRect.x & ~1;
    unsigned char* target = dst + static_cast<int64_t>(r.dstRect.y) * r.dstStep + x * 2;
    const IppiSize region = {std::min(r.dstSize.width, r.dstRect.width),
                             std::min(r.dstSize.height, r.dstRect.height)};
    ok = IppResizeYUY2Ex(src, target, r.srcStep, r.dstStep, r.srcSize, region, r.srcRect, r.xFactor,
                         r.yFactor, r.interpolation, const_cast<TEMP_PLANAR_FORMAT*>(&r.temp));
  }
  return ok ? ORV_IMG_OK : ORV_IMG_FAILED;
}

namespace {

unsigned long ResizeRgbPlan(const OrvImage::RESIZE_INFO& r, bool valid, int bytesPerPixel,
                            int interpolation, unsigned char* src, unsigned char* dst,
                            unsigned long* size) {
  if (src == nullptr || dst == nullptr || size == nullptr) return OrvImage::ORV_IMG_INVALID;
  if (!valid) return OrvImage::ORV_IMG_FAILED;
  const int srcStep = static_cast<int>(AlignedLine(8 * bytesPerPixel, r.srcSize.width));
  const int dstStep = static_cast<int>(AlignedLine(8 * bytesPerPixel, r.dstSize.width));
  const uint64_t required = static_cast<uint64_t>(r.dstSize.height) * dstStep;
  if (*size < required) return OrvImage::ORV_IMG_DST_TOO_SMALL;
  *size = static_cast<unsigned long>(required);
  if (!r.needResize) {
    OrvMemory::Copy(dst, static_cast<unsigned int>(required), src,
                    static_cast<unsigned int>(required));
    return OrvImage::ORV_IMG_OK;
  }
  OrvMemory::ZeroClear(dst, static_cast<unsigned int>(required));
  const ipp::IppiSize region = {std::min(r.dstSize.width, r.dstRect.width),
                                std::min(r.dstSize.height, r.dstRect.height)};
  // These pictures are bottom-up: the region's line offset counts from the bottom.
  unsigned char* target =
      dst + static_cast<int64_t>(r.dstRect.x) * bytesPerPixel +
      static_cast<int64_t>(r.dstSize.height - r.dstRect.y - region.height) * dstStep;
  const int status =
      bytesPerPixel == 3
          ? ipp::ippiResize_8u_C3R(src, r.srcSize, srcStep, r.srcRect, target, dstStep, region,
                                   r.xFactor, r.yFactor, interpolation)
          : ipp::ippiResize_8u_C4R(src, r.srcSize, srcStep, r.srcRect, target, dstStep, region,
                                   r.xFactor, r.yFactor, interpolation);
  return status == 0 ? OrvImage::ORV_IMG_OK : OrvImage::ORV_IMG_FAILED;
}

}  // namespace

unsigned long OrvImage::ResizeRGB24(unsigned char* src, unsigned char* dst, unsigned long* size) {
  const RESIZE_INFO& r = m_resizeInfo;
  return ResizeRgbPlan(r, m_resizeValid, 3, GetInterpolation(r.interpolation, r.xFactor, r.yFactor),
                       src, dst, size);
}

unsigned long OrvImage::ResizeRGB32(unsigned char* src, unsigned char* dst, unsigned long* size) {
  const RESIZE_INFO& r = m_resizeInfo;
  return ResizeRgbPlan(r, m_resizeValid, 4, GetInterpolation(r.interpolation, r.xFactor, r.yFactor),
                       src, dst, size);
}
