// The colour-conversion dispatch: one conversion for each pair of formats the
// library serves, and the common body of the conversions into CF_YUV420.
#include <OrvImage.h>

#include <algorithm>

#include "image/convert_frame.h"
#include "image/convert_kernels.h"

using namespace orv::image;

unsigned long OrvImage::ColorConvert(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, COLOR_FORMAT_TYPE srcFormat,
                                     COLOR_FORMAT_TYPE dstFormat, int srcStep, int dstStep,
                                     bool progressive, FIELD_TYPE field,
                                     std::vector<OrvMemory*>* work,
                                     orv::ColorSpaceConverter* converter) {
  // Arguments of every conversion below, without the extras.
#define ORV_PAIR_ARGS src, dst, dstSize, width, height, srcStep, dstStep
  switch (dstFormat) {
    case CF_CCIR601YUY2:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
          return CopyYUY2(ORV_PAIR_ARGS);
        case CF_RGB24:
          return RGB24ToCCIR601YUY2(ORV_PAIR_ARGS);
        case CF_RGB32:
        case CF_RGBA:
          return RGB32ToCCIR601YUY2(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToCCIR601YUY2(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToCCIR601YUY2(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToCCIR601YUY2(ORV_PAIR_ARGS, progressive, field, converter);
        case CF_YUY2A:
          return YUY2AToCCIR601YUY2(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_YUV420:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
        case CF_YUY2A:
          return CCIR601YUY2ToYUV420(ORV_PAIR_ARGS, progressive, field, work, converter);
        case CF_RGB24:
          return RGB24ToYUV420(ORV_PAIR_ARGS, progressive, converter);
        case CF_RGB32:
        case CF_RGBA:
          return RGB32ToYUV420(ORV_PAIR_ARGS, progressive, converter);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToYUV420(ORV_PAIR_ARGS, progressive, converter);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToYUV420(ORV_PAIR_ARGS, progressive, converter);
        case CF_YUV420:
          return CopyYUV420(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_YV12:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
        case CF_YUY2A:
          return CCIR601YUY2ToYV12(ORV_PAIR_ARGS, progressive, field, work);
        case CF_RGB24:
          return RGB24ToYV12(ORV_PAIR_ARGS, progressive);
        case CF_RGB32:
        case CF_RGBA:
          return RGB32ToYV12(ORV_PAIR_ARGS, progressive);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToYV12(ORV_PAIR_ARGS, progressive);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToYV12(ORV_PAIR_ARGS, progressive);
        case CF_YUV420:
          return YUV420ToYV12(ORV_PAIR_ARGS, field);
        case CF_YV12:
          return CopyYUV420(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_RGB24:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
        case CF_YUY2A:
          return CCIR601YUY2ToRGB24(ORV_PAIR_ARGS);
        case CF_BT709YUY2:
          return Bt709YUY2ToRGB(ORV_PAIR_ARGS, progressive, CF_RGB24);
        case CF_BT709YUV420:
          return Bt709YUV420ToRGB(ORV_PAIR_ARGS, progressive, CF_RGB24);
        case CF_RGB24:
          return CopyRGB24(ORV_PAIR_ARGS);
        case CF_RGB32:
          return RGB32ToRGB24(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToRGB24(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToRGB24(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToRGB24(ORV_PAIR_ARGS, progressive, field);
        case CF_RGBA:
          return RGBAToRGB24(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_TavoShiftedStraightRGB24:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
        case CF_YUY2A:
          return CCIR601YUY2ToTavoShiftedStraightRGB24(ORV_PAIR_ARGS);
        case CF_BT709YUY2:
          return Bt709YUY2ToRGB(ORV_PAIR_ARGS, progressive, CF_TavoShiftedStraightRGB24);
        case CF_BT709YUV420:
          return Bt709YUV420ToRGB(ORV_PAIR_ARGS, progressive, CF_TavoShiftedStraightRGB24);
        case CF_RGB24:
          return RGB24ToTavoShiftedStraightRGB24(ORV_PAIR_ARGS);
        case CF_RGB32:
        case CF_RGBA:
          return RGB32ToTavoShiftedStraightRGB24(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return CopyRGB24(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToTavoShiftedStraightRGB24(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToTavoShiftedStraightRGB24(ORV_PAIR_ARGS, progressive);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_RGB32:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
        case CF_YUY2A:
          return CCIR601YUY2ToRGB32(ORV_PAIR_ARGS);
        case CF_BT709YUY2:
          return Bt709YUY2ToRGB(ORV_PAIR_ARGS, progressive, CF_RGB32);
        case CF_BT709YUV420:
          return Bt709YUV420ToRGB(ORV_PAIR_ARGS, progressive, CF_RGB32);
        case CF_RGB24:
          return RGB24ToRGB32(ORV_PAIR_ARGS);
        case CF_RGB32:
          return CopyRGB32(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToRGB32(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToRGB32(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToRGB32(ORV_PAIR_ARGS, progressive);
        case CF_RGBA:
          return RGBAToRGB32(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_TavoShiftedStraightRGB32:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
        case CF_YUY2A:
          return CCIR601YUY2ToTavoShiftedStraightRGB32(ORV_PAIR_ARGS);
        case CF_BT709YUY2:
          return Bt709YUY2ToRGB(ORV_PAIR_ARGS, progressive, CF_TavoShiftedStraightRGB32);
        case CF_BT709YUV420:
          return Bt709YUV420ToRGB(ORV_PAIR_ARGS, progressive, CF_TavoShiftedStraightRGB32);
        case CF_RGB24:
          return RGB24ToTavoShiftedStraightRGB32(ORV_PAIR_ARGS);
        case CF_RGB32:
        case CF_RGBA:
          return RGB32ToTavoShiftedStraightRGB32(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToTavoShiftedStraightRGB32(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return CopyRGB32(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToTavoShiftedStraightRGB32(ORV_PAIR_ARGS, progressive);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_RGBA:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
          return CCIR601YUY2ToRGBA(ORV_PAIR_ARGS);
        case CF_BT709YUY2:
          return Bt709YUY2ToRGB(ORV_PAIR_ARGS, progressive, CF_RGBA);
        case CF_BT709YUV420:
          return Bt709YUV420ToRGB(ORV_PAIR_ARGS, progressive, CF_RGBA);
        case CF_RGB24:
          return RGB24ToRGBA(ORV_PAIR_ARGS);
        case CF_RGB32:
          return RGB32ToRGBA(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToRGBA(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToRGBA(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToRGBA(ORV_PAIR_ARGS, progressive);
        case CF_YV12:
          return YV12ToRGBA(ORV_PAIR_ARGS, progressive);
        case CF_RGBA:
          return CopyRGB32(ORV_PAIR_ARGS);
        case CF_YUY2A:
          return YUY2AToRGBA(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_VUYA:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
          return CCIR601YUY2ToVUYA(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToVUYA(ORV_PAIR_ARGS, progressive);
        case CF_VUYA:
          return CopyRGB32(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    case CF_YUY2A:
      switch (srcFormat) {
        case CF_CCIR601YUY2:
          return CCIR601YUY2ToYUY2A(ORV_PAIR_ARGS);
        case CF_RGB24:
          return RGB24ToYUY2A(ORV_PAIR_ARGS);
        case CF_RGB32:
          return RGB32ToYUY2A(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB24:
          return TavoShiftedStraightRGB24ToYUY2A(ORV_PAIR_ARGS);
        case CF_TavoShiftedStraightRGB32:
          return TavoShiftedStraightRGB32ToYUY2A(ORV_PAIR_ARGS);
        case CF_YUV420:
          return YUV420ToYUY2A(ORV_PAIR_ARGS, progressive);
        case CF_YV12:
          return YV12ToYUY2A(ORV_PAIR_ARGS, progressive);
        case CF_RGBA:
          return RGBAToYUY2A(ORV_PAIR_ARGS);
        case CF_YUY2A:
          return CopyYUY2A(ORV_PAIR_ARGS);
        default:
          return ORV_IMG_INVALID;
      }
    default:
      // CF_BT709YUY2 and CF_BT709YUV420 are no destination of any route;
      // unknown values are refused here too.
      return ORV_IMG_INVALID;
  }
#undef ORV_PAIR_ARGS
}

unsigned long OrvImage::ColorConvertToYUV420(COLOR_FORMAT_TYPE srcFormat, unsigned char* const src,
                                             unsigned char* dst, unsigned long* dstSize,
                                             unsigned long width, unsigned long height, int srcStep,
                                             int dstStep, bool progressive,
                                             orv::ColorSpaceConverter* converter) {
  // The converter's source code, and when the result has to be turned: the
  // kernels read RGB from its last buffer line up, YUY2 from its first.
  uint32_t code;
  Layout layout;
  bool rgb = true;
  switch (srcFormat) {
    case CF_CCIR601YUY2:
      code = orv::CSC_YUY2;
      layout = Layout::kYuy2;
      rgb = false;
      break;
    case CF_RGB24:
      code = orv::CSC_RGB24;
      layout = Layout::kRgb24;
      break;
    case CF_RGB32:
      code = orv::CSC_RGB32;
      layout = Layout::kRgb32;
      break;
    case CF_TavoShiftedStraightRGB24:
      code = orv::CSC_SHIFTED_RGB24;
      layout = Layout::kRgb24;
      break;
    case CF_TavoShiftedStraightRGB32:
      code = orv::CSC_SHIFTED_RGB32;
      layout = Layout::kRgb32;
      break;
    default:
      return ORV_IMG_INVALID;
  }
  if (dstSize == nullptr) return ORV_IMG_INVALID;
  if (CheckPictures(width, height, srcStep, dstStep, layout, Layout::kPlanar, Output::kPlanar) !=
      0) {
    return ORV_IMG_INVALID;
  }
  // The one conversion that does not report the required size for a null
  // picture.
  if (src == nullptr || dst == nullptr) return ORV_IMG_INVALID;
  const Frame f = MakeFrame(src, dst, width, height, srcStep, dstStep, Output::kPlanar);
  if (*dstSize < f.required) return ORV_IMG_DST_TOO_SMALL;
  const bool sameSign = f.srcSign == f.dstSign;
  const bool flip = rgb ? sameSign : !sameSign;

  ConverterLease lease(converter);
  if (!lease.ok()) return ORV_IMG_NO_MEMORY;
  const Planes420 d = Planar420(f.dst, f.dstStep, f.height);
  uint32_t size = static_cast<uint32_t>(std::min<unsigned long>(*dstSize, kMaxBytes));
  if (!lease.get()->ConvertToYUV420(f.src, f.srcStep, f.width, f.height, code,
                                    ScanValue(progressive), d.y, d.c1, d.c2, f.dstStep,
                                    orv::CSC_I420, &size)) {
    return ORV_IMG_FAILED;
  }
  *dstSize = size;
  if (flip) {
    return Guarded([&]() -> unsigned long {
      MirrorInPlace(1, d.y, d.yStep, {f.width, f.height});
      MirrorInPlace(1, d.c1, d.cStep, {f.width / 2, f.height / 2});
      MirrorInPlace(1, d.c2, d.cStep, {f.width / 2, f.height / 2});
      return ORV_IMG_OK;
    });
  }
  return ORV_IMG_OK;
}
