// BT.709 pictures into the RGB-like formats. The format-pair primitives know
// only the BT.601 matrix, so these go through the colour kernels with their
// BT.709 matrix.
#include <OrvImage.h>
#include <OrvMemory.h>

#include <algorithm>

#include "image/convert_frame.h"
#include "image/convert_kernels.h"

namespace orv {
namespace image {
namespace {

bool KernelCode(OrvImage::COLOR_FORMAT_TYPE format, uint32_t* code) {
  switch (format) {
    case OrvImage::CF_RGB24:
      *code = CSC_RGB24;
      return true;
    case OrvImage::CF_TavoShiftedStraightRGB24:
      *code = CSC_SHIFTED_RGB24;
      return true;
    case OrvImage::CF_RGB32:
      *code = CSC_RGB32;
      return true;
    case OrvImage::CF_TavoShiftedStraightRGB32:
      *code = CSC_SHIFTED_RGB32;
      return true;
    case OrvImage::CF_RGBA:
      *code = CSC_RGBA;
      return true;
    default:
      return false;
  }
}

// The checks both routes share. 0 to go on; otherwise the result to return.
// With a null picture the required size is stored.
unsigned long Admit(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                    unsigned long width, unsigned long height, int srcStep, int dstStep,
                    Layout srcLayout, OrvImage::COLOR_FORMAT_TYPE dstFormat, uint32_t* code,
                    Frame* frame) {
  if (dstSize == nullptr || !KernelCode(dstFormat, code)) return OrvImage::ORV_IMG_INVALID;
  const Layout dstLayout =
      (dstFormat == OrvImage::CF_RGB24 || dstFormat == OrvImage::CF_TavoShiftedStraightRGB24)
          ? Layout::kRgb24
          : Layout::kRgb32;
  if (CheckPictures(width, height, srcStep, dstStep, srcLayout, dstLayout, Output::kPacked) != 0) {
    return OrvImage::ORV_IMG_INVALID;
  }
  *frame = MakeFrame(src, dst, width, height, srcStep, dstStep, Output::kPacked);
  if (src == nullptr || dst == nullptr) {
    *dstSize = frame->required;
    return OrvImage::ORV_IMG_INVALID;
  }
  // Unlike the format-pair family, a short capacity is refused as invalid.
  if (*dstSize < frame->required) return OrvImage::ORV_IMG_INVALID;
  return OrvImage::ORV_IMG_OK;
}

// Planar BT.709 4:2:0 (memory order) to RGB with the kernels' BT.709 matrix.
// The kernels write RGB bottom-up, so the result is turned when the two
// pictures run the same way.
unsigned long PlanarToRgb(const Frame& f, const Planes420& p, uint32_t code, bool progressive,
                          OrvImage::COLOR_FORMAT_TYPE dstFormat, unsigned long* dstSize) {
  ConverterLease lease(nullptr);
  if (!lease.ok()) return OrvImage::ORV_IMG_INVALID;
  uint32_t size = static_cast<uint32_t>(std::min<unsigned long>(*dstSize, kMaxBytes));
  if (!lease.get()->ConvertFromYUV420(p.y, p.c1, p.c2, p.yStep, p.cStep, f.width, f.height,
                                      CSC_I420, ScanValue(progressive), 1, f.dst, f.dstStep, code,
                                      &size)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  *dstSize = size;
  if (f.srcSign != f.dstSign) return OrvImage::ORV_IMG_OK;
  const int channels =
      (dstFormat == OrvImage::CF_RGB24 || dstFormat == OrvImage::CF_TavoShiftedStraightRGB24) ? 3
                                                                                              : 4;
  return Guarded([&]() -> unsigned long {
    MirrorInPlace(channels, f.dst, f.dstStep, {f.width, f.height});
    return OrvImage::ORV_IMG_OK;
  });
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;

unsigned long OrvImage::Bt709YUY2ToRGB(unsigned char* const src, unsigned char* dst,
                                       unsigned long* dstSize, unsigned long width,
                                       unsigned long height, int srcStep, int dstStep,
                                       bool progressive, COLOR_FORMAT_TYPE dstFormat) {
  uint32_t code = 0;
  Frame f;
  unsigned long admitted = Admit(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2,
                                 dstFormat, &code, &f);
  if (admitted != ORV_IMG_OK) return admitted;
  // The YUY2 picture is first laid out as planar 4:2:0 (values unchanged) in
  // a work picture whose lines are the width rounded up to 64.
  const uint64_t workStep = (static_cast<uint64_t>(f.width) + 63) & ~static_cast<uint64_t>(63);
  const uint64_t workBytes = (workStep + workStep / 2) * f.height;
  if (workBytes > kMaxBytes) return ORV_IMG_NO_MEMORY;
  OrvMemory memory;
  void* block = nullptr;
  if (!memory.Initialize(&block, static_cast<unsigned int>(workBytes), 16) || block == nullptr) {
    return ORV_IMG_NO_MEMORY;
  }
  unsigned char* work = static_cast<unsigned char*>(block);
  unsigned long workSize = workBytes;
  const unsigned long laid = CCIR601YUY2ToYUV420(src, work, &workSize, width, height, f.srcStep,
                                                 static_cast<int>(workStep), progressive, nullptr);
  if (laid != ORV_IMG_OK) return laid;
  // The planes where the picture model puts them (for an odd height the
  // second chroma plane follows the first's H/2 lines).
  const Planes420 planes = Planar420(work, static_cast<int>(workStep), f.height);
  // The work picture keeps the source's memory order, so the source's
  // direction still decides the turn.
  return PlanarToRgb(f, planes, code, progressive, dstFormat, dstSize);
}

unsigned long OrvImage::Bt709YUV420ToRGB(unsigned char* const src, unsigned char* dst,
                                         unsigned long* dstSize, unsigned long width,
                                         unsigned long height, int srcStep, int dstStep,
                                         bool progressive, COLOR_FORMAT_TYPE dstFormat) {
  uint32_t code = 0;
  Frame f;
  unsigned long admitted = Admit(src, dst, dstSize, width, height, srcStep, dstStep,
                                 Layout::kPlanar, dstFormat, &code, &f);
  if (admitted != ORV_IMG_OK) return admitted;
  return PlanarToRgb(f, Planar420(f.src, f.srcStep, f.height), code, progressive, dstFormat,
                     dstSize);
}
