// The alpha plane of a CF_YUY2A destination. Alpha does not pass through the
// colour stage, so this runs the whole pipeline for a plane of one byte a
// pixel: take the source's alpha (or make it opaque), resize it like the
// picture, and give it the same scan stage.
#include <OrvImage.h>

#include <cstring>
#include <vector>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::AlignedLine;
using orv::image::CheckPrimitive;
using orv::image::Raise;
using orv::image::StepMagnitude;
namespace ipp = orv::ipp;

}  // namespace

unsigned long OrvImage::SetAlphaYUY2A(unsigned char* src, unsigned char* dst, PICTURE_INFO* srcInfo,
                                      PICTURE_INFO* dstInfo, CONVERT_MODE* mode,
                                      CONVERT_INFO* info) {
  if (src == nullptr || dst == nullptr || srcInfo == nullptr || dstInfo == nullptr ||
      mode == nullptr || info == nullptr) {
    return ORV_IMG_INVALID;
  }
  return orv::image::Guarded([&]() -> unsigned long {
    const int W = static_cast<int>(dstInfo->width);
    const int H = static_cast<int>(dstInfo->height);
    const uint64_t dA = AlignedLine(8, W);
    unsigned char* P = dst + StepMagnitude(dstInfo->step) * H;
    const uint64_t planeBytes = dA * H;
    const bool flip = (srcInfo->step < 0) != (dstInfo->step < 0);
    const bool deinterlace = info->interlaceKind == 1 || info->interlaceKind == 2;

    // The margin of the fixed video rasters: such columns count as picture.
    int localMarginX = 0;
    bool padded = false;
    GetResizeFactor({info->srcWidth, info->srcHeight}, {info->dstWidth, info->dstHeight}, nullptr,
                    nullptr, nullptr, &localMarginX, &padded);
    const bool rasterPadding = padded && info->dstMarginX == localMarginX;

    const COLOR_FORMAT_TYPE format = srcInfo->colorFormat;
    if (format != CF_YUY2A && format != CF_RGBA) {
      // No alpha of its own: opaque picture, transparent bars.
      if ((info->dstMarginX == 0 && info->dstMarginY == 0) || rasterPadding) {
        std::memset(P, 255, planeBytes);
        return ORV_IMG_OK;
      }
      std::memset(P, 0, planeBytes);
      int firstLine = 0, lines = H;
      if (info->dstMarginY != 0) {
        const int e = ((info->dstMarginY & 1) && flip) ? 1 : 0;
        firstLine = (info->dstMarginY + e) / 2;
        lines = H - info->dstMarginY;
      }
      int firstColumn = 0, columns = W;
      if (info->dstMarginX != 0) {
        firstColumn = info->dstMarginX / 2;
        columns = W - info->dstMarginX;
      }
      for (int y = 0; y < lines; ++y) {
        if (firstLine + y < 0 || firstLine + y >= H || columns <= 0) continue;
        std::memset(P + static_cast<uint64_t>(firstLine + y) * dA + firstColumn, 255, columns);
      }
      return ORV_IMG_OK;
    }

    // A source with alpha: its plane Q, in the destination's line order.
    const int sw = static_cast<int>(srcInfo->width);
    const int sh = static_cast<int>(srcInfo->height);
    const uint64_t dAs = AlignedLine(8, sw);
    std::vector<unsigned char> local;
    unsigned char* Q;
    if (format == CF_YUY2A) {
      Q = src + StepMagnitude(srcInfo->step) * sh;
      if (flip) {
        // Turned in a copy: the caller's source stays as it was.
        local.assign(Q, Q + dAs * sh);
        Q = local.data();
      }
    } else {
      local.resize(dAs * sh);
      Q = local.data();
      CheckPrimitive(ipp::ippiCopy_8u_C4C1R(src + 3, static_cast<int>(StepMagnitude(srcInfo->step)),
                                            Q, static_cast<int>(dAs), {sw, sh}));
    }
    if (flip) {
      CheckPrimitive(
          ipp::ippiMirror_8u_C1IR(Q, static_cast<int>(dAs), {sw, sh}, ipp::ippAxsHorizontal));
    }
    if (Q != P) std::memset(P, rasterPadding ? 255 : 0, planeBytes);

    const unsigned char* read = Q;
    uint64_t readStep = dAs;
    if (info->resizeKind != 0) {
      const IppiSize ss = {info->srcWidth, info->srcHeight};
      const IppiSize ds = {info->dstWidth, info->dstHeight};
      const IppiRect rect = {0, 0, info->srcWidth, info->srcHeight};
      auto resize = [&](FIELD_TYPE f, bool same) {
        return IppResizePlane(Q, P, static_cast<int>(dAs), static_cast<int>(dA), ss, ds, rect,
                              info->xFactor, info->yFactor, mode->interpolation, f, same);
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
      if ((H & 1) && H > 1) {
        const int from = (dstInfo->scanType != SCAN_PROGRESSIVE || deinterlace) ? H - 3 : H - 2;
        if (from >= 0) std::memcpy(P + (H - 1) * dA, P + from * dA, W);
      }
      read = P;
      readStep = dA;
    }

    // The scan stage, by hand.
    auto line = [&](int y) { return P + static_cast<uint64_t>(y) * dA; };
    if (deinterlace) {
      const bool second = (dstInfo->step > 0 && info->interlaceKind == 2) ||
                          (dstInfo->step < 0 && info->interlaceKind == 1);
      const int first = second ? 1 : 0;
      for (int k = 0; k < H / 2; ++k) {
        const unsigned char* from = read + static_cast<uint64_t>(2 * k + first) * readStep;
        for (int j = 0; j < 2; ++j) {
          if (read == P && j == first) continue;
          std::memmove(line(2 * k + j), from, W);
        }
      }
      if ((H & 1) && H > 1) std::memmove(line(H - 1), line(H - 2), W);
    } else {
      if (read != P) {
        for (int y = 0; y < H; ++y) std::memmove(line(y), read + y * readStep, W);
      }
      if (info->interlaceKind == 3) {
        // The same move as the field swap of the YUY2 part, so that alpha
        // stays registered with the picture.
        const bool down = (srcInfo->scanType == SCAN_TOP_FIELD_FIRST) == (dstInfo->step > 0);
        if (down) {
          for (int y = H - 1; y >= 1; --y) std::memmove(line(y), line(y - 1), W);
          if (H >= 3) std::memmove(line(0), line(2), W);
        } else {
          for (int y = 0; y + 1 < H; ++y) std::memmove(line(y), line(y + 1), W);
          if (H >= 3) std::memmove(line(H - 1), line(H - 3), W);
        }
      }
    }
    return ORV_IMG_OK;
  });
}
