// Planar 4:2:0 (CF_YUV420, and CF_YV12 where a member says so) into the
// RGB-like formats and CF_VUYA.
#include <OrvImage.h>
#include <OrvMemory.h>

#include <algorithm>

#include "image/convert_frame.h"

namespace orv {
namespace image {
namespace {

// The source planes in the order Y, Cb, Cr.
struct Source420 {
  const Ipp8u* y;
  const Ipp8u* cb;
  const Ipp8u* cr;
  int yStep;
  int cStep;
};

Source420 SourcePlanes(const Frame& f, bool yv12) {
  Planes420 p = Planar420(f.src, f.srcStep, f.height);
  Source420 s = {p.y, yv12 ? p.c2 : p.c1, yv12 ? p.c1 : p.c2, p.yStep, p.cStep};
  return s;
}

// One run of the studio-range converter to B G R over `lines` lines, starting
// at source line `first` (0 or 1) with the line steps multiplied by `stride`.
void BgrRun(const Source420& s, int first, int stride, int lines, Ipp8u* dst, int dstStep,
            int width) {
  if (lines <= 0) return;
  const Ipp8u* planes[3] = {s.y + static_cast<int64_t>(first) * s.yStep,
                            s.cb + static_cast<int64_t>(first) * s.cStep,
                            s.cr + static_cast<int64_t>(first) * s.cStep};
  int steps[3] = {stride * s.yStep, stride * s.cStep, stride * s.cStep};
  CheckPrimitive(
      ipp::ippiYCbCr420ToBGR_8u_P3C3R(planes, steps, dst, stride * dstStep, {width, lines}));
}

// FIELDS around the converter: one run for a progressive picture, else one
// per field, each field's chroma serving its own lines only. Returns the number
// of lines written (an odd height leaves the last line out of the field runs).
int BgrFields(const Source420& s, Ipp8u* dst, int dstStep, int width, int height,
              bool progressive) {
  if (progressive) {
    BgrRun(s, 0, 1, height, dst, dstStep, width);
    return height;
  }
  const int run0 = FieldRunLines420(height, 0);
  const int run1 = FieldRunLines420(height, 1);
  BgrRun(s, 0, 2, run0, dst, dstStep, width);
  BgrRun(s, 1, 2, run1, dst + dstStep, dstStep, width);
  return run0 + run1;
}

// Lines of the work picture of the 32-bit conversions: the picture is made
// in bands of this many lines, so that the work picture stays in cache. A
// multiple of 4, so that every band starts on a chroma line of both fields
// and the bytes are those of one pass over the whole frame.
constexpr int kBandLines = 32;

// One band of B G R lines: frame lines y0 .. y0 + lines - 1 into `work`.
// Lines that the field runs leave out (the last line of an odd height) are
// black.
void BgrBand(const Source420& s, int y0, int lines, int height, bool progressive, Ipp8u* work,
             int workStep, int width) {
  const Source420 band = {s.y + static_cast<int64_t>(y0) * s.yStep,
                          s.cb + static_cast<int64_t>(y0 / 2) * s.cStep,
                          s.cr + static_cast<int64_t>(y0 / 2) * s.cStep, s.yStep, s.cStep};
  if (progressive) {
    BgrRun(band, 0, 1, lines, work, workStep, width);
    return;
  }
  // Field lines of this band: those of each run below H/2.
  const int fieldLines =
      std::max(0, std::min(lines / 2 + (lines & 1), FieldRunLines420(height, 0) - y0 / 2));
  if (2 * fieldLines < lines) {
    OrvMemory::ZeroClear(work, static_cast<unsigned int>(workStep) * lines);
  }
  BgrRun(band, 0, 2, fieldLines, work, workStep, width);
  BgrRun(band, 1, 2, std::min(fieldLines, lines / 2), work + workStep, workStep, width);
}

// YUV420ToRGB32 and its alpha kin: B G R in a work picture, turned when the
// picture turns, then into 32-bit pixels with a fixed fourth byte.
void ToBgrx(const Frame& f, bool yv12, bool progressive, Ipp8u fourth) {
  const Source420 s = SourcePlanes(f, yv12);
  IppPicture work;
  work.Allocate8u(3, f.width, std::min(kBandLines, f.height));
  for (int y0 = 0; y0 < f.height; y0 += kBandLines) {
    const int lines = std::min(kBandLines, f.height - y0);
    const IppiSize size = {f.width, lines};
    BgrBand(s, y0, lines, f.height, progressive, work.data(), work.step(), f.width);
    int64_t target = y0;
    if (f.flip) {
      MirrorInPlace(3, work.data(), work.step(), size);
      target = f.height - y0 - lines;
    }
    Ipp8u* out = f.dst + target * f.dstStep;
    CheckPrimitive(ipp::ippiCopy_8u_C3AC4R(work.data(), work.step(), out, f.dstStep, size));
    CheckPrimitive(ipp::ippiSet_8u_C4CR(fourth, out + 3, f.dstStep, size));
  }
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;
namespace ipp = orv::ipp;

unsigned long OrvImage::YUV420ToRGB24(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive) {
  return YUV420ToRGB24(src, dst, dstSize, width, height, srcStep, dstStep, progressive,
                       FIELD_FRAME);
}

unsigned long OrvImage::YUV420ToRGB24(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive, FIELD_TYPE field) {
  if (field != FIELD_FRAME && field != FIELD_TOP && field != FIELD_BOTTOM) return ORV_IMG_INVALID;
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar, Layout::kRgb24,
      Output::kPacked, [&](const Frame& f) {
        const Source420 s = SourcePlanes(f, false);
        if (progressive || field == FIELD_FRAME) {
          BgrFields(s, f.dst, f.dstStep, f.width, f.height, progressive);
          if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, {f.width, f.height});
          return;
        }
        // One field only, chosen in display terms: the even memory lines are
        // the top field of a top-down source and the bottom field of a
        // bottom-up one.
        const bool even = (field == FIELD_TOP) == (f.srcSign > 0);
        const int parity = even ? 0 : 1;
        const int lines = FieldRunLines420(f.height, parity);
        if (!f.flip) {
          BgrRun(s, parity, 2, lines, f.dst + parity * static_cast<int64_t>(f.dstStep), f.dstStep,
                 f.width);
          return;
        }
        // Turned upside down, memory line y lands on line H - 1 - y; the
        // lines of the other field keep what they held.
        if (lines <= 0) return;
        IppPicture work;
        work.Allocate8u(3, f.width, lines);
        BgrRun(s, parity, 2, lines, work.data(), work.step() / 2, f.width);
        for (int k = 0; k < lines; ++k) {
          const int64_t target = f.height - 1 - (2 * k + parity);
          OrvMemory::Copy(f.dst + target * f.dstStep, f.dstStep, work.line(k), 3 * f.width);
        }
      });
}

unsigned long OrvImage::YUV420ToRGB32(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar,
                       Layout::kRgb32, Output::kPacked,
                       [&](const Frame& f) { ToBgrx(f, false, progressive, 0); });
}

unsigned long OrvImage::YUV420ToRGBA(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar,
                       Layout::kRgb32, Output::kPacked,
                       [&](const Frame& f) { ToBgrx(f, false, progressive, 255); });
}

unsigned long OrvImage::YV12ToRGBA(unsigned char* const src, unsigned char* dst,
                                   unsigned long* dstSize, unsigned long width,
                                   unsigned long height, int srcStep, int dstStep,
                                   bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar,
                       Layout::kRgb32, Output::kPacked,
                       [&](const Frame& f) { ToBgrx(f, true, progressive, 255); });
}

unsigned long OrvImage::YUV420ToTavoShiftedStraightRGB24(unsigned char* const src,
                                                         unsigned char* dst, unsigned long* dstSize,
                                                         unsigned long width, unsigned long height,
                                                         int srcStep, int dstStep,
                                                         bool progressive) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar, Layout::kRgb24,
      Output::kPacked, [&](const Frame& f) {
        const Source420 s = SourcePlanes(f, false);
        const IppiSize size = {f.width, f.height};
        // The full-swing converter takes one step for its three planes: Y is
        // copied beside the doubled chroma. Planes: 0 Y, 1 Cb, 2 Cr.
        WorkPlanes planes(3, f.srcStep, f.height);
        const int step = planes.step();
        CheckPrimitive(ipp::ippiCopy_8u_C1R(s.y, s.yStep, planes.plane(0), step, size));
        ExpandChroma420(s.cb, s.cStep, planes.plane(1), step, f.width, f.height, progressive);
        ExpandChroma420(s.cr, s.cStep, planes.plane(2), step, f.width, f.height, progressive);
        // Full-swing matrix, so Y keeps its swing; then black moves to 0.
        const Ipp8u* yuv[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
        CheckPrimitive(ipp::ippiYCbCrToBGR_JPEG_8u_P3C3R(yuv, step, f.dst, f.dstStep, size));
        const Ipp8u sixteen[3] = {16, 16, 16};
        CheckPrimitive(ipp::ippiSubC_8u_C3IRSfs(sixteen, f.dst, f.dstStep, size, 0));
        if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, size);
      });
}

unsigned long OrvImage::YUV420ToTavoShiftedStraightRGB32(unsigned char* const src,
                                                         unsigned char* dst, unsigned long* dstSize,
                                                         unsigned long width, unsigned long height,
                                                         int srcStep, int dstStep,
                                                         bool progressive) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar, Layout::kRgb32,
      Output::kPacked, [&](const Frame& f) {
        const Source420 s = SourcePlanes(f, false);
        const IppiSize size = {f.width, f.height};
        // Planes: 0 Y, 1 Cb, 2 Cr, then 3 R, 4 G, 5 B, 6 the fourth byte.
        WorkPlanes planes(7, f.srcStep, f.height);
        const int step = planes.step();
        CheckPrimitive(ipp::ippiCopy_8u_C1R(s.y, s.yStep, planes.plane(0), step, size));
        ExpandChroma420(s.cb, s.cStep, planes.plane(1), step, f.width, f.height, progressive);
        ExpandChroma420(s.cr, s.cStep, planes.plane(2), step, f.width, f.height, progressive);
        const Ipp8u* yuv[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
        Ipp8u* rgb[3] = {planes.plane(3), planes.plane(4), planes.plane(5)};
        CheckPrimitive(ipp::ippiYCbCrToRGB_JPEG_8u_P3R(yuv, step, rgb, step, size));
        for (int c = 0; c < 3; ++c) {
          if (f.flip) MirrorInPlace(1, rgb[c], step, size);
          ShiftDownPlane(rgb[c], step, size);
        }
        FillPlane(0, planes.plane(6), step, size);
        Ipp8u* const bgrx[4] = {rgb[2], rgb[1], rgb[0], planes.plane(6)};
        JoinPlanes4(bgrx, step, f.dst, f.dstStep, size);
      });
}

unsigned long OrvImage::YUV420ToVUYA(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     bool progressive) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar, Layout::kRgb32,
      Output::kPacked, [&](const Frame& f) {
        const Source420 s = SourcePlanes(f, false);
        const IppiSize size = {f.width, f.height};
        // Planes: 0 Y, 1 Cb, 2 Cr, 3 alpha (0: opaque).
        WorkPlanes planes(4, f.srcStep, f.height);
        const int step = planes.step();
        CheckPrimitive(ipp::ippiCopy_8u_C1R(s.y, s.yStep, planes.plane(0), step, size));
        // Chroma doubled with the cubic filter, each field on its own lines.
        const int half = f.width / 2;
        const Ipp8u* chroma[2] = {s.cb, s.cr};
        for (int c = 0; c < 2; ++c) {
          Ipp8u* out = planes.plane(1 + c);
          const int runs = progressive ? 1 : 2;
          const int srcLines = progressive ? f.height / 2 : f.height / 4;
          for (int run = 0; run < runs; ++run) {
            const int lines = progressive ? f.height : (f.height - run + 1) / 2;
            Ipp8u* target = out + static_cast<int64_t>(run) * step;
            const IppiSize from = {half, srcLines};
            const IppiSize to = {2 * half, 2 * srcLines};
            if (!IsEmpty(from)) {
              const IppiRect roi = {0, 0, half, srcLines};
              CheckPrimitive(ipp::ippiResize_8u_C1R(chroma[c] + run * s.cStep, from, runs * s.cStep,
                                                    roi, target, runs * step, to, 2.0, 2.0,
                                                    ipp::IPPI_INTER_CUBIC));
            }
            FillEdges(target, runs * step, IsEmpty(from) ? 0 : to.width,
                      IsEmpty(from) ? 0 : to.height, f.width, lines);
          }
        }
        FillPlane(0, planes.plane(3), step, size);
        Ipp8u* const vuya[4] = {planes.plane(2), planes.plane(1), planes.plane(0), planes.plane(3)};
        JoinPlanes4(vuya, step, f.dst, f.dstStep, size);
        if (f.flip) MirrorInPlace(4, f.dst, f.dstStep, size);
      });
}
