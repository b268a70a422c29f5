// The public resize without colour conversion: one resizer per format family.
#include <OrvImage.h>

unsigned long OrvImage::Resize(unsigned char* const src, unsigned char* dst, unsigned long* dstSize,
                               unsigned long srcWidth, unsigned long srcHeight, int srcStep,
                               unsigned long dstWidth, unsigned long dstHeight, int dstStep,
                               COLOR_FORMAT_TYPE format, INTERPOLATION_MODE interpolation) {
#define ORV_RESIZE_ARGS \
  src, dst, dstSize, srcWidth, srcHeight, srcStep, dstWidth, dstHeight, dstStep, interpolation
  switch (format) {
    case CF_CCIR601YUY2:
    case CF_BT709YUY2:
      return ResizeYUY2(ORV_RESIZE_ARGS);
    case CF_RGB24:
    case CF_TavoShiftedStraightRGB24:
      return ResizeRGB24(ORV_RESIZE_ARGS);
    case CF_RGB32:
    case CF_TavoShiftedStraightRGB32:
    case CF_VUYA:
      return ResizeRGB32(ORV_RESIZE_ARGS);
    case CF_YUV420:
    case CF_BT709YUV420:
    case CF_YV12:
      return ResizeYUV420(ORV_RESIZE_ARGS);
    default:
      // CF_RGBA and CF_YUY2A have no resize of their own here; an unknown
      // value is refused too.
      return ORV_IMG_INVALID;
  }
#undef ORV_RESIZE_ARGS
}
