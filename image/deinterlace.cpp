// De-interlacing: a frame made of one field, by line doubling (the earlier
// field survives) or by stretching a field to the full height (the later field
// survives).
#include <OrvImage.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "image/field_lines.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

using orv::image::BoundedLines;
using orv::image::StepMagnitude;
namespace ipp = orv::ipp;

enum class Family { kYuv420, kYuy2, kRgb24, kRgb32 };

bool ValidScan(OrvImage::SCAN_TYPE scan) {
  return scan == OrvImage::SCAN_PROGRESSIVE || scan == OrvImage::SCAN_TOP_FIELD_FIRST ||
         scan == OrvImage::SCAN_BOTTOM_FIELD_FIRST;
}

// Line doubling keeps the earlier field: the even memory lines when the
// display's first line is first in memory and first in time, or both reversed.
bool EvenLinesEarlier(OrvImage::SCAN_TYPE scan, int step) {
  return (scan == OrvImage::SCAN_TOP_FIELD_FIRST) == (step >= 0);
}

// Doubles the surviving line of each pair 2i, 2i + 1 for `pairs` pairs.
void DoublePairs(const BoundedLines& out, uint64_t outBase, const unsigned char* src, bool inPlace,
                 uint64_t lineStep, uint64_t lineBytes, uint64_t firstPair, uint64_t pairs,
                 bool evenSurvives) {
  for (uint64_t i = firstPair; i < firstPair + pairs; ++i) {
    const uint64_t keep = 2 * i + (evenSurvives ? 0 : 1);
    const uint64_t other = 2 * i + (evenSurvives ? 1 : 0);
    const unsigned char* line = src + keep * lineStep;
    if (!inPlace) out.Move(outBase + keep * lineStep, line, lineBytes);
    out.Move(outBase + other * lineStep, line, lineBytes);
  }
}

unsigned long LineDouble(Family family, unsigned char* src, unsigned char* dst,
                         unsigned long dstSize, unsigned long width, unsigned long height, int step,
                         OrvImage::SCAN_TYPE scan) {
  const bool even = EvenLinesEarlier(scan, step);
  const bool inPlace = src == dst;
  const uint64_t line = StepMagnitude(step);
  if (family != Family::kYuv420) {
    const BoundedLines out(dst, dstSize);
    DoublePairs(out, 0, src, inPlace, line, line, 0, height / 2, even);
    if ((height & 1) && family == Family::kYuy2 && scan == OrvImage::SCAN_BOTTOM_FIELD_FIRST &&
        height >= 2) {
      out.Move((height - 1) * line, src + (height - 2) * line, line);
    }
    return OrvImage::ORV_IMG_OK;
  }
  // Planar: Y lines of `width` bytes, four at a time, and in each chroma plane
  // two lines of width / 2 at a time; the planes bound themselves.
  const uint64_t chromaLine = line / 2;
  const uint64_t chromaLines = height / 2;
  const uint64_t cb = line * height;
  const uint64_t cr = cb + (chromaLine * height) / 2;
  const uint64_t planeEnd = cr + (chromaLine * height) / 2;
  const BoundedLines out(dst, std::min<uint64_t>(dstSize, planeEnd));
  const uint64_t quads = height / 4;
  DoublePairs(out, 0, src, inPlace, line, width, 0, 2 * quads, even);
  if (height % 4 >= 2) DoublePairs(out, 0, src, inPlace, line, width, 2 * quads, 1, even);
  for (uint64_t plane : {cb, cr}) {
    const BoundedLines chroma(dst + plane, plane == cb ? cr - cb : planeEnd - cr);
    DoublePairs(chroma, 0, src + plane, inPlace, chromaLine, width / 2, 0, quads, even);
    // The line left over in a plane of odd line count has no partner: it is
    // copied as it stands when the even lines survive, and not written otherwise.
    if ((chromaLines & 1) && even && !inPlace) {
      const uint64_t last = chromaLines - 1;
      chroma.Move(last * chromaLine, src + plane + last * chromaLine, width / 2);
    }
  }
  return OrvImage::ORV_IMG_OK;
}

}  // namespace

// FIELD_RESIZE stretches the later field: the odd memory lines for a top-first
// picture stored top-down (or a bottom-first one stored bottom-up).
static bool OddLinesLater(OrvImage::SCAN_TYPE scan, int step) {
  return (scan == OrvImage::SCAN_TOP_FIELD_FIRST) == (step > 0);
}

static unsigned long DeInterlaceRgb(Family family, unsigned char* src, unsigned char* dst,
                                    unsigned long dstSize, unsigned long width,
                                    unsigned long height, int step, OrvImage::SCAN_TYPE scan,
                                    OrvImage::INTERPOLATION_MODE interpolation) {
  const bool rgb24 = family == Family::kRgb24;
  const uint64_t line = StepMagnitude(step);
  const unsigned char* field = src + (OddLinesLater(scan, step) ? line : 0);
  unsigned long size = dstSize;
  auto resize =
      rgb24 ? static_cast<unsigned long (*)(unsigned char*, unsigned char*, unsigned long*,
                                            unsigned long, unsigned long, int, unsigned long,
                                            unsigned long, int, OrvImage::INTERPOLATION_MODE)>(
                  &OrvImage::ResizeRGB24)
            : static_cast<unsigned long (*)(unsigned char*, unsigned char*, unsigned long*,
                                            unsigned long, unsigned long, int, unsigned long,
                                            unsigned long, int, OrvImage::INTERPOLATION_MODE)>(
                  &OrvImage::ResizeRGB32);
  if (src != dst) {
    const unsigned long rc = resize(const_cast<unsigned char*>(field), dst, &size, width,
                                    height / 2, 2 * step, width, height, step, interpolation);
    return rc == OrvImage::ORV_IMG_OK ? rc : static_cast<unsigned long>(OrvImage::ORV_IMG_FAILED);
  }
  // In place: the field is copied out first, so the resize never reads what it writes.
  int workStep = 0;
  const ipp::IppiSize fieldSize = {static_cast<int>(width), static_cast<int>(height / 2)};
  ipp::Ipp8u* work = rgb24 ? ipp::ippiMalloc_8u_C3(fieldSize.width, fieldSize.height, &workStep)
                           : ipp::ippiMalloc_8u_AC4(fieldSize.width, fieldSize.height, &workStep);
  if (work == nullptr) return OrvImage::ORV_IMG_FAILED;
  const int copied =
      rgb24 ? ipp::ippiCopy_8u_C3R(field, static_cast<int>(2 * line), work, workStep, fieldSize)
            : ipp::ippiCopy_8u_C4R(field, static_cast<int>(2 * line), work, workStep, fieldSize);
  unsigned long rc = OrvImage::ORV_IMG_FAILED;
  if (copied == 0) {
    rc = resize(work, dst, &size, width, height / 2, step < 0 ? -workStep : workStep, width, height,
                step, interpolation);
  }
  ipp::ippiFree(work);
  return rc == OrvImage::ORV_IMG_OK ? rc : static_cast<unsigned long>(OrvImage::ORV_IMG_FAILED);
}

static unsigned long DeInterlace(Family family, unsigned char* src, unsigned char* dst,
                                 unsigned long dstSize, unsigned long width, unsigned long height,
                                 int step, OrvImage::SCAN_TYPE scan,
                                 OrvImage::DEINTERLACE_MODE mode,
                                 OrvImage::INTERPOLATION_MODE interpolation) {
  if (src == nullptr || dst == nullptr || !orv::image::AreSidesValid(width, height) ||
      step == INT32_MIN || !ValidScan(scan)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const uint64_t line = StepMagnitude(step);
  if (scan == OrvImage::SCAN_PROGRESSIVE) {
    const uint64_t bytes = family == Family::kYuv420 ? (line + line / 2) * height : line * height;
    if (src != dst) BoundedLines(dst, dstSize).Move(0, src, bytes);
    return OrvImage::ORV_IMG_OK;
  }
  if (mode == OrvImage::DEINTERLACE_LINE_DOUBLE) {
    return LineDouble(family, src, dst, dstSize, width, height, step, scan);
  }
  if (mode != OrvImage::DEINTERLACE_FIELD_RESIZE) return OrvImage::ORV_IMG_OK;
  if (family == Family::kRgb24 || family == Family::kRgb32) {
    return DeInterlaceRgb(family, src, dst, dstSize, width, height, step, scan, interpolation);
  }
  return OrvImage::ORV_IMG_FAILED;  // the planar and YUY2 forms are members: see below
}

unsigned long OrvImage::DeInterlaceRGB24(unsigned char* src, unsigned char* dst,
                                         unsigned long dstSize, unsigned long width,
                                         unsigned long height, int step, SCAN_TYPE scan,
                                         DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation) {
  return DeInterlace(Family::kRgb24, src, dst, dstSize, width, height, step, scan, mode,
                     interpolation);
}

unsigned long OrvImage::DeInterlaceRGB32(unsigned char* src, unsigned char* dst,
                                         unsigned long dstSize, unsigned long width,
                                         unsigned long height, int step, SCAN_TYPE scan,
                                         DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation) {
  return DeInterlace(Family::kRgb32, src, dst, dstSize, width, height, step, scan, mode,
                     interpolation);
}

unsigned long OrvImage::DeInterlaceYUV420(unsigned char* src, unsigned char* dst,
                                          unsigned long dstSize, unsigned long width,
                                          unsigned long height, int step, SCAN_TYPE scan,
                                          DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation) {
  if (mode != DEINTERLACE_FIELD_RESIZE || scan == SCAN_PROGRESSIVE || src == nullptr ||
      dst == nullptr || !ValidScan(scan)) {
    return DeInterlace(Family::kYuv420, src, dst, dstSize, width, height, step, scan, mode,
                       interpolation);
  }
  if (!orv::image::AreSidesValid(width, height) || width == 0 || height < 2) return ORV_IMG_INVALID;
  // The picture is handled with `width` as its step, as the pipeline lays it out.
  const uint64_t bytes = (static_cast<uint64_t>(width) + width / 2) * height;
  if (bytes > dstSize) return ORV_IMG_DST_TOO_SMALL;
  const FIELD_TYPE field = OddLinesLater(scan, step) ? FIELD_BOTTOM : FIELD_TOP;
  const IppiSize size = {static_cast<int>(width), static_cast<int>(height)};
  // In place, the resize reads a copy of the picture, never what it writes.
  std::vector<unsigned char> copy;
  unsigned char* from = src;
  if (src == dst) {
    copy.assign(src, src + bytes);
    from = copy.data();
  }
  const int w = static_cast<int>(width);
  const bool ok =
      interpolation == INTERPOLATION_TAVO
          ? TavoResizeYUV420(from, dst, w, w, size, size, 0, 0, 0, field, false)
          : IppResizeYUV420(from, dst, w, w, size, size, {0, 0, size.width, size.height}, 1.0, 1.0,
                            interpolation, field, false);
  return ok ? ORV_IMG_OK : ORV_IMG_FAILED;
}

unsigned long OrvImage::DeInterlaceYUY2(unsigned char* src, unsigned char* dst,
                                        unsigned long dstSize, unsigned long width,
                                        unsigned long height, int step, SCAN_TYPE scan,
                                        DEINTERLACE_MODE mode, INTERPOLATION_MODE interpolation) {
  if (mode != DEINTERLACE_FIELD_RESIZE || scan == SCAN_PROGRESSIVE || src == nullptr ||
      dst == nullptr || !ValidScan(scan)) {
    return DeInterlace(Family::kYuy2, src, dst, dstSize, width, height, step, scan, mode,
                       interpolation);
  }
  if (!orv::image::AreSidesValid(width, height) || width < 2 || height < 2 || step == INT32_MIN) {
    return ORV_IMG_INVALID;
  }
  const uint64_t line = StepMagnitude(step);
  const uint64_t bytes = line * height;
  if (bytes > dstSize || line < 2ull * width) return ORV_IMG_INVALID;
  const FIELD_TYPE field = OddLinesLater(scan, step) ? FIELD_BOTTOM : FIELD_TOP;
  const IppiSize size = {static_cast<int>(width), static_cast<int>(height)};
  const int s = static_cast<int>(line);
  if (interpolation == INTERPOLATION_TAVO) {
    std::vector<unsigned char> copy;
    unsigned char* from = src;
    if (src == dst) {
      copy.assign(src, src + bytes);
      from = copy.data();
    }
    return TavoResizeYUY2(from, dst, s, s, size, size, 0, 0, 0, field, false) ? ORV_IMG_OK
                                                                              : ORV_IMG_FAILED;
  }
  // The primitives' route splits the source into work planes first, so it may
  // write over its own source.
  TEMP_PLANAR_FORMAT temp = {};
  if (!AllocateTempBuffer(&temp, {2 * size.width, size.height / 2}, size)) {
    OrvMemory::ZeroClear(dst, static_cast<unsigned int>(bytes));
    ReleaseTempBuffer(&temp);
    return ORV_IMG_NO_MEMORY;
  }
  const bool ok = IppResizeYUY2(src, dst, s, s, size, size, {0, 0, size.width, size.height}, 1.0,
                                1.0, interpolation, &temp, field, false);
  ReleaseTempBuffer(&temp);
  return ok ? ORV_IMG_OK : ORV_IMG_FAILED;
}
