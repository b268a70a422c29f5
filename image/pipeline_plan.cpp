// How a conversion is planned: factors, trims and bars; the scan stage; the
// format pairs a plan serves; and the clean-up of a plan.
#include <OrvImage.h>

#include <cmath>
#include <cstring>

#include "image/picture_limits.h"
#include "platform/scaler/vrscl.h"

namespace {

using orv::image::AlignedLine;

// Source formats each destination format can be planned from (bit n for
// format n). Destinations CF_BT709YUY2 and CF_BT709YUV420 are served only from
// their own format.
uint32_t AcceptedSources(OrvImage::COLOR_FORMAT_TYPE dst) {
  auto bits = [](std::initializer_list<int> list) {
    uint32_t mask = 0;
    for (int f : list) mask |= 1u << f;
    return mask;
  };
  switch (dst) {
    case OrvImage::CF_CCIR601YUY2:
      return bits({2, 3, 4, 5, 6, 10, 11});
    case OrvImage::CF_YUV420:
      return bits({0, 2, 3, 4, 5, 10, 11});
    case OrvImage::CF_YV12:
      return bits({0, 2, 3, 4, 5, 6, 10, 11});
    case OrvImage::CF_RGB24:
      return bits({0, 1, 3, 4, 5, 6, 7, 10, 11});
    case OrvImage::CF_TavoShiftedStraightRGB24:
      return bits({0, 1, 2, 3, 5, 6, 7, 10, 11});
    case OrvImage::CF_RGB32:
      return bits({0, 1, 2, 4, 5, 6, 7, 10, 11});
    case OrvImage::CF_TavoShiftedStraightRGB32:
      return bits({0, 1, 2, 3, 4, 6, 7, 10, 11});
    case OrvImage::CF_VUYA:
      return bits({0, 6});
    case OrvImage::CF_RGBA:
      return bits({0, 1, 2, 3, 4, 5, 6, 7, 8, 11});
    case OrvImage::CF_YUY2A:
      return bits({0, 2, 3, 4, 5, 6, 8, 10});
    default:
      return 0;
  }
}

// Rounds towards 0 to a multiple of 4.
int32_t RoundTo4(int32_t v) { return v >= 0 ? (v & ~3) : -((-v) & ~3); }

}  // namespace

bool OrvImage::GetResizeFactorEx(PICTURE_INFO* src, PICTURE_INFO* dst, bool keepAspect,
                                 CONVERT_INFO* info) {
  const IppiSize srcSize = {static_cast<int>(src->width), static_cast<int>(src->height)};
  const IppiSize dstSize = {static_cast<int>(dst->width), static_cast<int>(dst->height)};
  int trim = 0, margin = 0;
  bool resize =
      GetResizeFactor(srcSize, dstSize, &info->xFactor, &info->yFactor, &trim, &margin, nullptr);
  info->srcTrimX = trim;
  info->dstMarginX = margin;
  info->dstMarginY = 0;

  // The aspect test compares the fields as given, so that a pair with no
  // aspect at all (all 0) never gets bars. The products are taken in 64 bits:
  // aspect fields may hold whole picture sizes.
  if (keepAspect && static_cast<uint64_t>(dst->aspectX) * src->aspectY !=
                        static_cast<uint64_t>(dst->aspectY) * src->aspectX) {
    resize = true;
    const uint64_t sax = src->aspectX ? src->aspectX : src->width;
    const uint64_t say = src->aspectY ? src->aspectY : src->height;
    // A destination aspect of 0 stands for its size as well; without this
    // the bars would be computed from a zero product.
    const uint64_t dax = dst->aspectX ? dst->aspectX : dst->width;
    const uint64_t day = dst->aspectY ? dst->aspectY : dst->height;
    const uint64_t a = dax * say;
    const uint64_t b = day * sax;
    const int64_t t = info->srcTrimX;
    const int64_t sw = static_cast<int64_t>(src->width) - t;
    int64_t dw, dh;
    if (a <= b) {
      // Letterbox: bars above and below.
      dw = static_cast<int64_t>(dst->width) - info->dstMarginX;
      dh = static_cast<int64_t>((dst->height - static_cast<uint64_t>(info->dstMarginY)) * dax *
                                say / b);
      if (dh < 1) dh = 1;
      info->dstMarginY = static_cast<int32_t>(dst->height - dh);
    } else {
      // Pillarbox: bars left and right.
      dw = static_cast<int64_t>((dst->width - static_cast<uint64_t>(info->dstMarginX)) * day * sax /
                                a);
      if (dw < 1) dw = 1;
      dh = static_cast<int64_t>(dst->height) - info->dstMarginY;
      info->dstMarginX = static_cast<int32_t>(dst->width - dw);
    }
    info->xFactor = (dw + 0.01) / static_cast<double>(sw > 0 ? sw : 1);
    info->yFactor = (dh + 0.01) / static_cast<double>(src->height ? src->height : 1);
    // A trim of the source and a margin of the destination cancel out.
    if (t != 0 && info->dstMarginX != 0) {
      const int64_t s = static_cast<int64_t>(t * info->xFactor);
      if (s >= info->dstMarginX) {
        info->srcTrimX =
            static_cast<int32_t>(t - static_cast<int64_t>(info->dstMarginX / info->xFactor));
        info->dstMarginX = 0;
      } else {
        info->srcTrimX = 0;
        info->dstMarginX = static_cast<int32_t>(info->dstMarginX - s);
      }
    }
  }
  info->srcTrimX = RoundTo4(info->srcTrimX);
  info->dstMarginX = RoundTo4(info->dstMarginX);
  return resize;
}

unsigned long OrvImage::CheckInterlaceConv(PICTURE_INFO* src, PICTURE_INFO* dst,
                                           DEINTERLACE_MODE deinterlace, CONVERT_INFO* info) {
  info->interlaceKind = 0;
  if (src->scanType == SCAN_PROGRESSIVE) return ORV_IMG_OK;
  // F: the even memory lines hold the earlier field.
  const bool evenFirst = (src->scanType == SCAN_TOP_FIELD_FIRST && src->step > 0) ||
                         (src->scanType == SCAN_BOTTOM_FIELD_FIRST && src->step < 0);
  if (dst->scanType == SCAN_PROGRESSIVE) {
    if (src->height / 2 >= dst->height || deinterlace == DEINTERLACE_FIELD_RESIZE) {
      // The resizer makes the whole frame from the earlier field.
      info->resizeKind = evenFirst ? 3 : 4;
      return ORV_IMG_OK;
    }
    if (deinterlace != DEINTERLACE_LINE_DOUBLE) return ORV_IMG_INVALID;
    info->interlaceKind = evenFirst ? 1 : 2;
    if (info->resizeKind != 0) info->resizeKind = evenFirst ? 3 : 4;
    return ORV_IMG_OK;
  }
  if (src->scanType != dst->scanType) info->interlaceKind = 3;
  if ((dst->height & 1) && dst->step < 0) {
    // A bottom-up picture of an odd height has its fields at the other parity.
    info->interlaceKind = src->scanType == dst->scanType ? 3 : 0;
  }
  // Interlaced material is never scaled vertically as a frame.
  if (std::fabs(1.0 - info->yFactor) > 0.0001) info->resizeKind = 2;
  return ORV_IMG_OK;
}

bool OrvImage::CheckSupportColorConv(PICTURE_INFO* src, PICTURE_INFO* dst, unsigned long* step,
                                     unsigned long* size) {
  if (src->colorFormat == dst->colorFormat) {
    if (step) *step = orv::image::StepMagnitude(src->step);
    if (size) *size = src->size;
    return true;
  }
  const uint32_t accepted = AcceptedSources(dst->colorFormat);
  const int32_t s = static_cast<int32_t>(src->colorFormat);
  if (s < 0 || s > 31 || !(accepted & (1u << s))) return false;
  const uint64_t w = src->width, h = src->height;
  uint64_t lineStep = 0, bytes = 0;
  switch (dst->colorFormat) {
    case CF_CCIR601YUY2:
      lineStep = AlignedLine(16, w);
      bytes = lineStep * h;
      break;
    case CF_YUV420:
    case CF_YV12:
      lineStep = w;
      bytes = AlignedLine(12, w) * h;
      break;
    case CF_RGB24:
    case CF_TavoShiftedStraightRGB24:
      lineStep = AlignedLine(24, w);
      bytes = lineStep * h;
      break;
    case CF_YUY2A:
      lineStep = AlignedLine(16, w);
      bytes = (lineStep + AlignedLine(8, w)) * h;
      break;
    default:  // the 32-bit formats
      lineStep = AlignedLine(32, w);
      bytes = lineStep * h;
      break;
  }
  if (step) *step = static_cast<unsigned long>(lineStep);
  if (size) *size = static_cast<unsigned long>(bytes);
  return true;
}

bool OrvImage::CheckNeedPreFieldSwap(PICTURE_INFO* src, PICTURE_INFO* dst, CONVERT_INFO* info) {
  return info->interlaceKind == 3 && src->colorFormat != dst->colorFormat &&
         src->colorFormat != CF_YV12 && dst->colorFormat == CF_YUV420;
}

void OrvImage::ClearConvertInfo(CONVERT_INFO* info) {
  if (info == nullptr) return;
  delete info->intermediate;
  if (info->temp != nullptr) {
    ReleaseTempBuffer(info->temp);
    delete info->temp;
  }
  if (info->vrscl != nullptr) orv::VRSCLReleaseInstance(&info->vrscl);
  std::memset(info, 0, sizeof(*info));
}
