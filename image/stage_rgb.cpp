// The resize and scan stage of the packed RGB-like destinations, in 3 and 4
// bytes a pixel: the primitives (with a nearest-neighbour loop in their
// place should one fail), then a turn and a field swap or de-interlace.
#include <OrvImage.h>

#include <algorithm>
#include <cstring>

#include "image/image_errors.h"
#include "image/stage_lines.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::CheckPrimitive;
using orv::image::CopyLines;
using orv::image::Raise;
using orv::image::RespaceLines;
namespace ipp = orv::ipp;

}  // namespace

bool OrvImage::NearestResize(int bitsPerPixel, const unsigned char* src, int srcWidth,
                             int srcHeight, int srcStep, unsigned char* dst, int dstWidth,
                             int dstHeight, int dstStep) {
  if (src == nullptr || dst == nullptr || bitsPerPixel <= 0 || bitsPerPixel % 8 != 0 ||
      srcWidth <= 0 || srcHeight <= 0 || dstWidth <= 0 || dstHeight <= 0) {
    return false;
  }
  const int64_t bytes = bitsPerPixel / 8;
  const int64_t ss = srcStep < 0 ? -static_cast<int64_t>(srcStep) : srcStep;
  const int64_t ds = dstStep < 0 ? -static_cast<int64_t>(dstStep) : dstStep;
  if (ss < bytes * srcWidth || ds < bytes * dstWidth) return false;
  // The ratios are rounded to float, so a product may land on the source's
  // size itself: it is held at the last line and the last pixel.
  const float f = static_cast<float>(static_cast<double>(srcHeight) / dstHeight);
  const float g = static_cast<float>(static_cast<double>(srcWidth) / dstWidth);
  for (int y = 0; y < dstHeight; ++y) {
    const int sy = std::min(static_cast<int>(static_cast<double>(y) * f), srcHeight - 1);
    const unsigned char* line = src + sy * ss;
    unsigned char* out = dst + y * ds;
    for (int x = 0; x < dstWidth; ++x) {
      const int sx = std::min(static_cast<int>(static_cast<double>(x) * g), srcWidth - 1);
      std::memcpy(out + x * bytes, line + sx * bytes, static_cast<size_t>(bytes));
    }
  }
  return true;
}

// The shared body of ConvertRGB24 and ConvertRGB32.
static unsigned long ConvertPacked(
    int B, unsigned char* src, unsigned char* dst, OrvImage::PICTURE_INFO* srcInfo,
    OrvImage::PICTURE_INFO* dstInfo, OrvImage::CONVERT_MODE* mode, OrvImage::CONVERT_INFO* info,
    int (*interpolationOf)(OrvImage::INTERPOLATION_MODE, double, double),
    bool (*nearest)(int, const unsigned char*, int, int, int, unsigned char*, int, int, int));

unsigned long OrvImage::ConvertRGB24(unsigned char* src, unsigned char* dst, PICTURE_INFO* srcInfo,
                                     PICTURE_INFO* dstInfo, CONVERT_MODE* mode,
                                     CONVERT_INFO* info) {
  return ConvertPacked(3, src, dst, srcInfo, dstInfo, mode, info, &GetInterpolation,
                       &NearestResize);
}

unsigned long OrvImage::ConvertRGB32(unsigned char* src, unsigned char* dst, PICTURE_INFO* srcInfo,
                                     PICTURE_INFO* dstInfo, CONVERT_MODE* mode,
                                     CONVERT_INFO* info) {
  return ConvertPacked(4, src, dst, srcInfo, dstInfo, mode, info, &GetInterpolation,
                       &NearestResize);
}

static unsigned long ConvertPacked(
    int B, unsigned char* src, unsigned char* dst, OrvImage::PICTURE_INFO* srcInfo,
    OrvImage::PICTURE_INFO* dstInfo, OrvImage::CONVERT_MODE* mode, OrvImage::CONVERT_INFO* info,
    int (*interpolationOf)(OrvImage::INTERPOLATION_MODE, double, double),
    bool (*nearest)(int, const unsigned char*, int, int, int, unsigned char*, int, int, int)) {
  using I = OrvImage;
  if (src == nullptr || dst == nullptr || srcInfo == nullptr || dstInfo == nullptr ||
      mode == nullptr || info == nullptr) {
    return I::ORV_IMG_INVALID;
  }
  return orv::image::Guarded([&]() -> unsigned long {
    const bool flip = (srcInfo->step < 0) != (dstInfo->step < 0);
    const int S = static_cast<int>(info->srcStep);
    const int D = static_cast<int>(info->dstStep);
    const int W = static_cast<int>(dstInfo->width);
    const int H = static_cast<int>(dstInfo->height);
    const bool deinterlace = info->interlaceKind == 1 || info->interlaceKind == 2;
    const int lineBytes = B * W;
    auto mirror = [&] {
      const ipp::IppiSize roi = {W, H};
      CheckPrimitive(B == 3 ? ipp::ippiMirror_8u_C3IR(dst, D, roi, ipp::ippAxsHorizontal)
                            : ipp::ippiMirror_8u_C4IR(dst, D, roi, ipp::ippAxsHorizontal));
    };

    unsigned char* scanSrc = src;
    if (info->resizeKind != 0) {
      const bool bars = info->dstMarginX != 0 || info->dstMarginY != 0;
      if (B == 3) {
        OrvMemory::Set(dst, 0, dstInfo->size);
      } else {
        // Bars of CF_RGBA and CF_VUYA are transparent.
        I::ClearPicture(dst, dstInfo->colorFormat, W, H, dstInfo->step, bars);
      }
      // The picture's place: source columns trimmed on both sides, and an
      // even number of bar lines above it, so that the fields stay in place.
      const int64_t os = static_cast<int64_t>(info->srcTrimX / 2) * B;
      const int64_t od = static_cast<int64_t>(info->dstMarginX / 2) * B +
                         static_cast<int64_t>((info->dstMarginY / 2) & ~1) * D;
      // Only the columns and lines the picture takes are handed to the
      // resizer, so that it reads no trimmed column and writes no bar.
      const int srcW = std::max(1, info->srcWidth - info->srcTrimX);
      const int picW = std::max(1, info->dstWidth - info->dstMarginX);
      const int picH = std::max(1, info->dstHeight - info->dstMarginY);

      auto resize = [&](const unsigned char* s, int sh, int sStep, unsigned char* d, int dh,
                        int dStep, double yFactor) {
        if (sh < 1 || dh < 1) return;
        const int interpolation = interpolationOf(mode->interpolation, info->xFactor, yFactor);
        const ipp::IppiSize srcSize = {srcW, sh};
        const ipp::IppiRect rect = {0, 0, srcW, sh};
        const ipp::IppiSize dstRoi = {picW, dh};
        const int status = B == 3
                               ? ipp::ippiResize_8u_C3R(s, srcSize, sStep, rect, d, dStep, dstRoi,
                                                        info->xFactor, yFactor, interpolation)
                               : ipp::ippiResize_8u_C4R(s, srcSize, sStep, rect, d, dStep, dstRoi,
                                                        info->xFactor, yFactor, interpolation);
        // A refused resize is no failure of the stage: the plain loop does it.
        if (status != 0 && !nearest(B * 8, s, srcW, sh, sStep, d, picW, dh, dStep)) {
          Raise(I::ORV_IMG_FAILED);
        }
      };

      unsigned char* s0 = src + os;
      unsigned char* d0 = dst + od;
      switch (info->resizeKind) {
        case 2:
          // Each field into the same field of the destination.
          resize(s0, info->srcHeight / 2, 2 * S, d0, picH / 2, 2 * D, info->yFactor);
          resize(s0 + S, info->srcHeight / 2, 2 * S, d0 + D, picH / 2, 2 * D, info->yFactor);
          if ((H & 1) && H > 1 && info->dstMarginY == 0) {
            std::memcpy(dst + static_cast<int64_t>(H - 1) * D,
                        dst + static_cast<int64_t>(H - 3) * D, lineBytes);
          }
          break;
        case 1:
          resize(s0, info->srcHeight, S, d0, picH, D, info->yFactor);
          break;
        default:  // 3 and 4: one field of the source
          if (info->interlaceKind == 1) {
            resize(s0, info->srcHeight / 2, 2 * S, d0, picH / 2, 2 * D, info->yFactor);
          } else if (info->interlaceKind == 2) {
            resize(s0 + S, info->srcHeight / 2, 2 * S, d0 + D, picH / 2, 2 * D, info->yFactor);
          } else {
            // The field fills the whole destination.
            resize(info->resizeKind == 4 ? s0 + S : s0, info->srcHeight / 2, 2 * S, d0, picH, D,
                   info->yFactor * 2.0);
          }
          break;
      }
      if (flip) mirror();
      scanSrc = dst;
    } else if (src != dst) {
      if (S != D || flip || info->interlaceKind == 0) {
        CopyLines(src, S, dst, D, H, std::min(S, D), flip);
        scanSrc = dst;
      }
    } else {
      if (S != D) RespaceLines(dst, D, src, S, H, std::min(S, D));
      if (flip) mirror();
      scanSrc = dst;
    }

    if (info->interlaceKind == 3) {
      return B == 3 ? I::FieldSwapRGB24(scanSrc, dst, dstInfo->size, W, H, dstInfo->step,
                                        srcInfo->scanType)
                    : I::FieldSwapRGB32(scanSrc, dst, dstInfo->size, W, H, dstInfo->step,
                                        srcInfo->scanType);
    }
    if (deinterlace) {
      I::SCAN_TYPE scan = srcInfo->scanType;
      if (flip && (H & 1)) {
        scan =
            scan == I::SCAN_TOP_FIELD_FIRST ? I::SCAN_BOTTOM_FIELD_FIRST : I::SCAN_TOP_FIELD_FIRST;
      }
      return B == 3 ? I::DeInterlaceRGB24(scanSrc, dst, dstInfo->size, W, H, dstInfo->step, scan,
                                          mode->deinterlace, mode->interpolation)
                    : I::DeInterlaceRGB32(scanSrc, dst, dstInfo->size, W, H, dstInfo->step, scan,
                                          mode->deinterlace, mode->interpolation);
    }
    return I::ORV_IMG_OK;
  });
}
