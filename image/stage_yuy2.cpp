// The resize and scan stage of the packed 4:2:2 destinations: the own scaler
// or the primitives through planar work planes, then a turn and a field swap
// or de-interlace.
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

}  // namespace

unsigned long OrvImage::ConvertYUY2(unsigned char* src, unsigned char* dst, PICTURE_INFO* srcInfo,
                                    PICTURE_INFO* dstInfo, CONVERT_MODE* mode, CONVERT_INFO* info) {
  if (src == nullptr || dst == nullptr || srcInfo == nullptr || dstInfo == nullptr ||
      mode == nullptr || info == nullptr) {
    return ORV_IMG_INVALID;
  }
  return orv::image::Guarded([&]() -> unsigned long {
    const bool flip = (srcInfo->step < 0) != (dstInfo->step < 0);
    const int S = static_cast<int>(info->srcStep);
    const int D = static_cast<int>(info->dstStep);
    const int W = static_cast<int>(dstInfo->width);
    const int H = static_cast<int>(dstInfo->height);
    const bool deinterlace = info->interlaceKind == 1 || info->interlaceKind == 2;
    // The own scaler serves YUY2 whatever the margins; the scaler modes of
    // 4:2:0 go to the primitives here.
    const INTERPOLATION_MODE I = mode->interpolation;
    const int lineBytes = 2 * W;

    unsigned char* scanSrc = src;
    if (info->resizeKind != 0) {
      // The destination is prepared only where the resize won't cover it.
      bool covered = false;
      if (info->resizeKind != 2 && info->dstMarginX == 0 && info->dstMarginY == 0 &&
          info->dstWidth == static_cast<int>(info->srcWidth * info->xFactor) &&
          info->dstHeight / 2 == static_cast<int>((info->srcHeight / 2) * info->yFactor)) {
        covered = true;
      }
      if (I != INTERPOLATION_TAVO && info->temp == nullptr) Raise(ORV_IMG_FAILED);
      if (!covered) {
        if (I == INTERPOLATION_TAVO) {
          ClearPicture(dst, CF_CCIR601YUY2, W, H, dstInfo->step, false);
        } else {
          // The primitives' route packs its result from the work planes, so
          // the bars are laid there: luma 0, chroma 127.
          TEMP_PLANAR_FORMAT* t = info->temp;
          const uint64_t lines = static_cast<uint64_t>(info->dstHeight);
          std::memset(t->dstY, 0, static_cast<size_t>(t->dstStepY) * lines);
          std::memset(t->dstU, 0x7F, static_cast<size_t>(t->dstStepU) * lines);
          std::memset(t->dstV, 0x7F, static_cast<size_t>(t->dstStepV) * lines);
        }
      }
      const IppiSize ss = {info->srcWidth, info->srcHeight};
      const IppiSize ds = {info->dstWidth, info->dstHeight};
      const IppiRect rect = {0, 0, info->srcWidth, info->srcHeight};
      auto resize = [&](FIELD_TYPE f, bool same) {
        if (I == INTERPOLATION_TAVO) {
          return TavoResizeYUY2(src, dst, S, D, ss, ds, info->srcTrimX, info->dstMarginX,
                                info->dstMarginY, f, same);
        }
        return IppResizeYUY2(src, dst, S, D, ss, ds, rect, info->xFactor, info->yFactor, I,
                             info->temp, f, same);
      };
      bool ok;
      if (info->resizeKind == 2) {
        ok = resize(FIELD_TOP, true) && resize(FIELD_BOTTOM, true);
      } else {
        const FIELD_TYPE field = info->resizeKind == 3   ? FIELD_TOP
                                 : info->resizeKind == 4 ? FIELD_BOTTOM
                                                         : FIELD_FRAME;
        ok = resize(field, deinterlace);
      }
      if (!ok) Raise(ORV_IMG_FAILED);
      // Fields of an odd height leave the last line: it repeats its field's
      // line above it, or for a frame the line above it.
      if ((H & 1) && H > 1) {
        const int from = (dstInfo->scanType != SCAN_PROGRESSIVE || deinterlace) ? H - 3 : H - 2;
        if (from >= 0) {
          std::memcpy(dst + static_cast<int64_t>(H - 1) * D, dst + static_cast<int64_t>(from) * D,
                      lineBytes);
        }
      }
      if (flip) {
        CheckPrimitive(
            orv::ipp::ippiMirror_8u_C1IR(dst, D, {lineBytes, H}, orv::ipp::ippAxsHorizontal));
      }
      scanSrc = dst;
    } else if (src != dst) {
      // With the same step and direction the scan stage reads the source
      // itself; a copy is made only when the lines must move.
      if (S != D || flip || info->interlaceKind == 0) {
        CopyLines(src, S, dst, D, H, std::min(S, D), flip);
        scanSrc = dst;
      }
    } else {
      if (S != D) RespaceLines(dst, D, src, S, H, std::min(S, D));
      if (flip) {
        CheckPrimitive(
            orv::ipp::ippiMirror_8u_C1IR(dst, D, {lineBytes, H}, orv::ipp::ippAxsHorizontal));
      }
      scanSrc = dst;
    }

    if (info->interlaceKind == 3) {
      return FieldSwapYUY2(scanSrc, dst, dstInfo->size, W, H, dstInfo->step, srcInfo->scanType);
    }
    if (deinterlace) {
      // Turning an odd number of lines moves each field to the other parity.
      SCAN_TYPE scan = srcInfo->scanType;
      if (flip && (H & 1)) {
        scan = scan == SCAN_TOP_FIELD_FIRST ? SCAN_BOTTOM_FIELD_FIRST : SCAN_TOP_FIELD_FIRST;
      }
      return DeInterlaceYUY2(scanSrc, dst, dstInfo->size, W, H, dstInfo->step, scan,
                             mode->deinterlace, I);
    }
    return ORV_IMG_OK;
  });
}
