// Resizes of planar, YUY2 and single planes through the image primitives,
// with the field handling that lets one field fill a frame or keep to its own
// lines of the destination.
#include <OrvImage.h>

#include <cstring>

#include "image/image_errors.h"
#include "image/resize_fields.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::CheckPrimitive;
using orv::image::FieldLayout;
using orv::image::PrepareField;
namespace ipp = orv::ipp;

// Runs a resize body; a raised code or any exception makes the result false.
template <typename Body>
bool Attempt(Body&& body) {
  try {
    body();
    return true;
  } catch (...) {
    return false;
  }
}

bool IsField(OrvImage::FIELD_TYPE field) {
  return field == OrvImage::FIELD_TOP || field == OrvImage::FIELD_BOTTOM;
}

}  // namespace

bool OrvImage::IppResizeYUV420(unsigned char* src, unsigned char* dst, int srcStep, int dstStep,
                               IppiSize srcSize, IppiSize dstSize, IppiRect srcRect, double xFactor,
                               double yFactor, INTERPOLATION_MODE mode, FIELD_TYPE field,
                               bool sameField) {
  if (src == nullptr || dst == nullptr) return false;
  return Attempt([&] {
    // Plane addresses from the full heights, on both sides, laid out as the
    // picture model lays them: V right behind U's (S/2) x H / 2 bytes. Every
    // stage uses this one layout, so odd heights agree too.
    unsigned char* srcU = src + static_cast<int64_t>(srcStep) * srcSize.height;
    unsigned char* srcV = srcU + (static_cast<int64_t>(srcStep / 2) * srcSize.height) / 2;
    unsigned char* dstU = dst + static_cast<int64_t>(dstStep) * dstSize.height;
    unsigned char* dstV = dstU + (static_cast<int64_t>(dstStep / 2) * dstSize.height) / 2;

    FieldLayout f = PrepareField(field, sameField, srcStep, dstStep, srcSize.height, srcRect.height,
                                 dstSize.height, yFactor);
    const int interpolation = GetInterpolation(mode, xFactor, f.yFactor);
    // A field of odd height written into its own lines: one line short, then
    // that line is copied from the one above it in the field.
    bool lineMissing = false;
    if (sameField && IsField(field) && (f.dstHeight & 1)) {
      --f.dstHeight;
      lineMissing = true;
    }

    const IppiSize ySrc = {srcSize.width, f.srcHeight};
    const IppiRect yRect = {srcRect.x, srcRect.y, srcRect.width, f.srcRectHeight};
    const IppiSize yDst = {dstSize.width, f.dstHeight};
    CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(
        src + f.srcOffset, ySrc, f.srcStep, yRect, dst + f.dstOffset, f.dstStep, yDst, xFactor,
        f.yFactor, (srcRect.width + 1) / 2, (f.srcRectHeight + 1) / 2, interpolation));

    const IppiSize cSrc = {srcSize.width / 2, f.srcHeight / 2};
    const IppiRect cRect = {0, 0, srcRect.width / 2, f.srcRectHeight / 2};
    const IppiSize cDst = {dstSize.width / 2, f.dstHeight / 2};
    const double cx = (srcRect.width / 2 + 1) / 2, cy = (f.srcRectHeight / 2 + 1) / 2;
    for (int plane = 0; plane < 2; ++plane) {
      const unsigned char* s = (plane == 0 ? srcU : srcV) + f.srcOffset / 2;
      unsigned char* d = (plane == 0 ? dstU : dstV) + f.dstOffset / 2;
      CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(s, cSrc, f.srcStep / 2, cRect, d, f.dstStep / 2,
                                                  cDst, xFactor, f.yFactor, cx, cy, interpolation));
    }

    if (lineMissing) {
      unsigned char* y = dst + f.dstOffset;
      std::memcpy(y + static_cast<int64_t>(f.dstHeight) * f.dstStep,
                  y + static_cast<int64_t>(f.dstHeight - 1) * f.dstStep, dstSize.width);
      if (field == FIELD_TOP && f.dstHeight >= 2) {
        const int chromaLines = f.dstHeight / 2;
        const int64_t chromaStep = f.dstStep / 2;
        for (unsigned char* c : {dstU, dstV}) {
          std::memcpy(c + chromaLines * chromaStep, c + (chromaLines - 1) * chromaStep,
                      dstSize.width / 2);
        }
      }
    }
  });
}

bool OrvImage::IppResizePlane(unsigned char* src, unsigned char* dst, int srcStep, int dstStep,
                              IppiSize srcSize, IppiSize dstSize, IppiRect srcRect, double xFactor,
                              double yFactor, INTERPOLATION_MODE mode, FIELD_TYPE field,
                              bool sameField) {
  if (src == nullptr || dst == nullptr) return false;
  return Attempt([&] {
    FieldLayout f = PrepareField(field, sameField, srcStep, dstStep, srcSize.height, srcRect.height,
                                 dstSize.height, yFactor);
    const int interpolation = GetInterpolation(mode, xFactor, f.yFactor);
    bool lineMissing = false;
    if (sameField && IsField(field) && (f.dstHeight & 1)) {
      --f.dstHeight;
      lineMissing = true;
    }
    const IppiSize pSrc = {srcSize.width, f.srcHeight};
    const IppiRect pRect = {srcRect.x, srcRect.y, srcRect.width, f.srcRectHeight};
    const IppiSize pDst = {dstSize.width, f.dstHeight};
    CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(
        src + f.srcOffset, pSrc, f.srcStep, pRect, dst + f.dstOffset, f.dstStep, pDst, xFactor,
        f.yFactor, srcRect.width * 0.5, f.srcRectHeight * 0.5, interpolation));
    // The missing line of a top field is filled from two field lines above it.
    if (lineMissing && field == FIELD_TOP && f.dstHeight >= 2) {
      unsigned char* p = dst + f.dstOffset;
      std::memcpy(p + static_cast<int64_t>(f.dstHeight) * f.dstStep,
                  p + static_cast<int64_t>(f.dstHeight - 2) * f.dstStep, dstSize.width);
    }
  });
}

bool OrvImage::IppResizeYUY2(unsigned char* src, unsigned char* dst, int srcStep, int dstStep,
                             IppiSize srcSize, IppiSize dstSize, IppiRect srcRect, double xFactor,
                             double yFactor, INTERPOLATION_MODE mode, TEMP_PLANAR_FORMAT* temp,
                             FIELD_TYPE field, bool sameField) {
  if (src == nullptr || dst == nullptr || temp == nullptr) return false;
  return Attempt([&] {
    const FieldLayout f = PrepareField(field, sameField, srcStep, dstStep, srcSize.height,
                                       srcRect.height, dstSize.height, yFactor);
    const int interpolation = GetInterpolation(mode, xFactor, f.yFactor);
    ipp::Ipp8u* srcPlanes[3] = {temp->srcY, temp->srcU, temp->srcV};
    int srcSteps[3] = {temp->srcStepY, temp->srcStepU, temp->srcStepV};
    CheckPrimitive(ipp::ippiYCbCr422_8u_C2P3R(src + f.srcOffset, f.srcStep, srcPlanes, srcSteps,
                                              {srcSize.width, f.srcHeight}));
    CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(
        temp->srcY, {srcSize.width, f.srcHeight}, temp->srcStepY,
        {srcRect.x, srcRect.y, srcRect.width, f.srcRectHeight}, temp->dstY, temp->dstStepY,
        {dstSize.width, f.dstHeight}, xFactor, f.yFactor, (srcRect.width + 1) / 2,
        (f.srcRectHeight + 1) / 2, interpolation));
    // Chroma keeps its full height: the planes are 4:2:2.
    const IppiSize cSrc = {srcSize.width / 2, f.srcHeight};
    const IppiRect cRect = {0, 0, srcRect.width / 2, f.srcRectHeight};
    const IppiSize cDst = {dstSize.width / 2, f.dstHeight};
    const double cx = (srcRect.width / 2 + 1) / 2, cy = (f.srcRectHeight + 1) / 2;
    CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(temp->srcU, cSrc, temp->srcStepU, cRect, temp->dstU,
                                                temp->dstStepU, cDst, xFactor, f.yFactor, cx, cy,
                                                interpolation));
    CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(temp->srcV, cSrc, temp->srcStepV, cRect, temp->dstV,
                                                temp->dstStepV, cDst, xFactor, f.yFactor, cx, cy,
                                                interpolation));
    const ipp::Ipp8u* dstPlanes[3] = {temp->dstY, temp->dstU, temp->dstV};
    int dstSteps[3] = {temp->dstStepY, temp->dstStepU, temp->dstStepV};
    CheckPrimitive(ipp::ippiYCbCr422_8u_P3C2R(dstPlanes, dstSteps, dst + f.dstOffset, f.dstStep,
                                              {dstSize.width, f.dstHeight}));
  });
}

bool OrvImage::IppResizeYUY2Ex(unsigned char* src, unsigned char* dst, int srcStep, int dstStep,
                               IppiSize srcSize, IppiSize dstSize, IppiRect srcRect, double xFactor,
                               double yFactor, INTERPOLATION_MODE mode, TEMP_PLANAR_FORMAT* temp) {
  if (src == nullptr || dst == nullptr || temp == nullptr || temp->srcY == nullptr ||
      temp->dstY == nullptr) {
    return false;
  }
  return Attempt([&] {
    // The chroma region's height is rounded up to even; the destination chroma
    // planes are allocated with an even line count, so it stays inside them.
    const int chromaHeight = dstSize.height + (dstSize.height & 1);
    std::memset(temp->dstY, 0, static_cast<size_t>(temp->dstStepY) * dstSize.height);
    std::memset(temp->dstU, 0x7F, static_cast<size_t>(temp->dstStepU) * chromaHeight);
    std::memset(temp->dstV, 0x7F, static_cast<size_t>(temp->dstStepV) * chromaHeight);
    const int interpolation = GetInterpolation(mode, xFactor, yFactor);
    ipp::Ipp8u* srcPlanes[3] = {temp->srcY, temp->srcU, temp->srcV};
    int srcSteps[3] = {temp->srcStepY, temp->srcStepU, temp->srcStepV};
    CheckPrimitive(ipp::ippiYCbCr422_8u_C2P3R(src, srcStep, srcPlanes, srcSteps, srcSize));
    CheckPrimitive(ipp::ippiResize_8u_C1R(temp->srcY, srcSize, temp->srcStepY, srcRect, temp->dstY,
                                          temp->dstStepY, dstSize, xFactor, yFactor,
                                          interpolation));
    const IppiSize cSrc = {srcSize.width / 2, srcSize.height};
    const IppiRect cRect = {srcRect.x / 2, srcRect.y / 2, srcRect.width / 2, srcRect.height};
    const IppiSize cDst = {dstSize.width / 2, chromaHeight};
    CheckPrimitive(ipp::ippiResize_8u_C1R(temp->srcU, cSrc, temp->srcStepU, cRect, temp->dstU,
                                          temp->dstStepU, cDst, xFactor, yFactor, interpolation));
    CheckPrimitive(ipp::ippiResize_8u_C1R(temp->srcV, cSrc, temp->srcStepV, cRect, temp->dstV,
                                          temp->dstStepV, cDst, xFactor, yFactor, interpolation));
    const ipp::Ipp8u* dstPlanes[3] = {temp->dstY, temp->dstU, temp->dstV};
    int dstSteps[3] = {temp->dstStepY, temp->dstStepU, temp->dstStepV};
    CheckPrimitive(ipp::ippiYCbCr422_8u_P3C2R(dstPlanes, dstSteps, dst, dstStep, dstSize));
  });
}
