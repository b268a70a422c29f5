// The resize and scan stage of the planar 4:2:0 destinations (CF_YUV420,
// CF_BT709YUV420, CF_YV12): the primitives, the own scaler or the 4:2:0
// scaler, then a turn and a field swap or de-interlace.
#include <OrvImage.h>

#include <algorithm>

#include "image/image_errors.h"
#include "image/stage_lines.h"
#include "platform/primitives/ipp.h"
#include "platform/scaler/vrscl.h"

namespace {

using orv::image::CheckPrimitive;
using orv::image::CopyLines;
using orv::image::Raise;
using orv::image::RespaceLines;

// The three planes of a 4:2:0 picture with Y step `step` and `height` lines.
struct Planes {
  unsigned char* y;
  unsigned char* c1;
  unsigned char* c2;
};
Planes PlanesOf(unsigned char* p, uint64_t step, uint64_t height) {
  Planes r;
  r.y = p;
  r.c1 = p + step * height;
  r.c2 = r.c1 + (height / 2) * (step / 2);
  return r;
}

// Turns a 4:2:0 picture upside down in place.
void MirrorPlanar(unsigned char* p, int step, int width, int height) {
  namespace ipp = orv::ipp;
  const Planes pl = PlanesOf(p, step, height);
  CheckPrimitive(ipp::ippiMirror_8u_C1IR(pl.y, step, {width, height}, ipp::ippAxsHorizontal));
  if (width / 2 > 0 && height / 2 > 0) {
    const orv::ipp::IppiSize c = {width / 2, height / 2};
    CheckPrimitive(ipp::ippiMirror_8u_C1IR(pl.c1, step / 2, c, ipp::ippAxsHorizontal));
    CheckPrimitive(ipp::ippiMirror_8u_C1IR(pl.c2, step / 2, c, ipp::ippAxsHorizontal));
  }
}

}  // namespace

unsigned long OrvImage::ConvertYUV420(unsigned char* src, unsigned char* dst, PICTURE_INFO* srcInfo,
                                      PICTURE_INFO* dstInfo, CONVERT_MODE* mode,
                                      CONVERT_INFO* info) {
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

    // The own scaler leaves letterbox bars and a de-interlace into a height
    // that is not a multiple of 4 to the primitives.
    INTERPOLATION_MODE I = mode->interpolation;
    if (I == INTERPOLATION_TAVO && (info->dstMarginY != 0 || ((H % 4) != 0 && deinterlace))) {
      I = INTERPOLATION_CUBIC;
    }

    unsigned char* scanSrc = src;
    if (info->resizeKind != 0) {
      ClearPicture(dst, CF_YUV420, W, H, dstInfo->step, false);  // black bars
      const IppiSize ss = {info->srcWidth, info->srcHeight};
      const IppiSize ds = {info->dstWidth, info->dstHeight};
      const IppiRect rect = {0, 0, info->srcWidth, info->srcHeight};
      const FIELD_TYPE field = info->resizeKind == 3   ? FIELD_TOP
                               : info->resizeKind == 4 ? FIELD_BOTTOM
                                                       : FIELD_FRAME;
      auto tavo = [&](FIELD_TYPE f, bool same) {
        return TavoResizeYUV420(src, dst, S, D, ss, ds, info->srcTrimX, info->dstMarginX,
                                info->dstMarginY, f, same);
      };
      auto prim = [&](FIELD_TYPE f, bool same) {
        return IppResizeYUV420(src, dst, S, D, ss, ds, rect, info->xFactor, info->yFactor, I, f,
                               same);
      };
      // The 4:2:0 scaler reads every `lines`-th line of the source: 1 for the
      // whole frame, 2 for the first field.
      auto scaler = [&](int lines) {
        const Planes s = PlanesOf(src, S, info->srcHeight);
        const Planes d = PlanesOf(dst, D, info->dstHeight);
        return orv::VRSCLConvert(info->vrscl, d.y, d.c1, d.c2, D, D / 2, s.y, s.c1, s.c2, S * lines,
                                 (S / 2) * lines) == orv::kVrsclOk;
      };
      bool ok;
      if (info->resizeKind == 2) {
        if (I == INTERPOLATION_TAVO) {
          ok = tavo(FIELD_TOP, true) && tavo(FIELD_BOTTOM, true);
        } else if (I == INTERPOLATION_VRSCL_FRAME && info->vrscl != nullptr) {
          ok = scaler(1);
        } else {
          ok = prim(FIELD_TOP, true) && prim(FIELD_BOTTOM, true);
        }
      } else if (I == INTERPOLATION_TAVO) {
        ok = tavo(field, deinterlace);
      } else if (I == INTERPOLATION_VRSCL_FIELD && info->vrscl != nullptr) {
        ok = scaler(2);
      } else {
        ok = prim(field, deinterlace);
      }
      if (!ok) Raise(ORV_IMG_FAILED);
      if (flip) MirrorPlanar(dst, D, W, H);
      scanSrc = dst;
    } else if (src != dst) {
      // With the same step and direction the scan stage reads the source
      // itself; a copy is made only when the lines must move.
      if (S != D || flip || info->interlaceKind == 0) {
        // A copy to the destination's step, which also does the turn.
        const uint64_t bytes = std::min(S, D);
        const Planes s = PlanesOf(src, S, H);
        const Planes d = PlanesOf(dst, D, H);
        CopyLines(s.y, S, d.y, D, H, bytes, flip);
        CopyLines(s.c1, S / 2, d.c1, D / 2, H / 2, bytes / 2, flip);
        CopyLines(s.c2, S / 2, d.c2, D / 2, H / 2, bytes / 2, flip);
        scanSrc = dst;
      }
    } else {
      // In place: the lines are re-spaced without a work buffer, forwards
      // when the step shrinks and backwards (chroma first) when it grows.
      if (S != D) {
        const Planes s = PlanesOf(src, S, H);
        const Planes d = PlanesOf(dst, D, H);
        if (S >= D) {
          RespaceLines(d.y, D, s.y, S, H, D);
          RespaceLines(d.c1, D / 2, s.c1, S / 2, H / 2, D / 2);
          RespaceLines(d.c2, D / 2, s.c2, S / 2, H / 2, D / 2);
        } else {
          RespaceLines(d.c2, D / 2, s.c2, S / 2, H / 2, S / 2);
          RespaceLines(d.c1, D / 2, s.c1, S / 2, H / 2, S / 2);
          RespaceLines(d.y, D, s.y, S, H, S);
        }
      }
      if (flip) MirrorPlanar(dst, D, W, H);
      scanSrc = dst;
    }

    if (info->interlaceKind == 3) {
      // Already done on the source when the colour stage resamples chroma.
      if (CheckNeedPreFieldSwap(srcInfo, dstInfo, info)) {
        if (scanSrc == dst) return ORV_IMG_OK;
        return FieldSwapYUV420(scanSrc, dst, dstInfo->size, W, H, dstInfo->step,
                               SCAN_PROGRESSIVE);  // a plain copy
      }
      return FieldSwapYUV420(scanSrc, dst, dstInfo->size, W, H, dstInfo->step, srcInfo->scanType);
    }
    if (deinterlace) {
      return DeInterlaceYUV420(scanSrc, dst, dstInfo->size, W, H, dstInfo->step, srcInfo->scanType,
                               mode->deinterlace, I);
    }
    return ORV_IMG_OK;
  });
}
