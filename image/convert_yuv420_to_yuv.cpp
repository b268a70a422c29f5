// Planar 4:2:0 into packed 4:2:2 (CF_CCIR601YUY2, CF_YUY2A) and into CF_YV12.
#include <OrvImage.h>
#include <OrvMemory.h>

#include <memory>

#include "image/convert_frame.h"
#include "image/convert_kernels.h"

namespace orv {
namespace image {
namespace {

// Joins Y lines and chroma lines into packed 4:2:2: `lines` lines of Y from
// `y` with step yStep, chroma from `cb`/`cr` with step cStep, into `dst` with
// step dstStep.
void Join422(const Ipp8u* y, int yStep, const Ipp8u* cb, const Ipp8u* cr, int cStep, Ipp8u* dst,
             int dstStep, int width, int lines) {
  if (lines <= 0) return;
  const Ipp8u* planes[3] = {y, cb, cr};
  int steps[3] = {yStep, cStep, cStep};
  CheckPrimitive(ipp::ippiYCbCr422_8u_P3C2R(planes, steps, dst, dstStep, {width, lines}));
}

// Progressive 4:2:0 to YUY2: each chroma line serves the two Y lines beneath
// it, the even Y lines in one run and the odd ones in another.
void Progressive420ToYuy2(const Frame& f, bool yv12) {
  const Planes420 p = Planar420(f.src, f.srcStep, f.height);
  const Ipp8u* cb = yv12 ? p.c2 : p.c1;
  const Ipp8u* cr = yv12 ? p.c1 : p.c2;
  for (int run = 0; run < 2; ++run) {
    Join422(p.y + static_cast<int64_t>(run) * p.yStep, 2 * p.yStep, cb, cr, p.cStep,
            f.dst + static_cast<int64_t>(run) * f.dstStep, 2 * f.dstStep, f.width, f.height / 2);
  }
}

// Interlaced 4:2:0 to YUY2 through the colour kernels: the whole frame, or one
// field, chosen in display terms (the top field is the even memory lines of a
// top-down source and the odd ones of a bottom-up source). A field is written
// on its own lines, turned with the picture when the steps' signs differ;
// the other field's lines keep what they held.
void Interlaced420ToYuy2(const Frame& f, OrvImage::FIELD_TYPE field, ColorSpaceConverter* given) {
  ConverterLease lease(given);
  if (!lease.ok()) Raise(OrvImage::ORV_IMG_NO_MEMORY);
  const Planes420 p = Planar420(f.src, f.srcStep, f.height);
  const bool whole = field == OrvImage::FIELD_FRAME;
  const int first = whole ? 0 : ((field == OrvImage::FIELD_TOP) == (f.srcSign > 0) ? 0 : 1);
  const int stride = whole ? 1 : 2;
  const int lines = whole ? f.height : f.height / 2;
  if (lines <= 0) return;
  const uint32_t scan = whole ? CSC_SCAN_INTERLACED : CSC_SCAN_PROGRESSIVE;
  // Where the kernels write: dst itself, or for a turned field a work picture
  // of its lines.
  std::unique_ptr<WorkPlanes> work;
  Ipp8u* out = f.dst + static_cast<int64_t>(first) * f.dstStep;
  int outPitch = stride * f.dstStep;
  if (!whole && f.flip) {
    work.reset(new WorkPlanes(1, 2 * f.width, lines));
    out = work->plane(0);
    outPitch = work->step();
  }
  // The kernels count a whole pitch for every line they write; with doubled
  // pitches that is at most R, and the bytes they write (the bottom field one
  // line in) end within R too.
  uint32_t capacity = static_cast<uint32_t>(static_cast<int64_t>(outPitch) * lines);
  const bool done = lease.get()->ConvertFromYUV420(
      p.y + first * static_cast<int64_t>(p.yStep), p.c1 + first * static_cast<int64_t>(p.cStep),
      p.c2 + first * static_cast<int64_t>(p.cStep), stride * p.yStep, stride * p.cStep, f.width,
      lines, CSC_I420, scan, 0, out, outPitch, CSC_YUY2, &capacity);
  if (!done) Raise(OrvImage::ORV_IMG_FAILED);
  if (work) {
    for (int k = 0; k < lines; ++k) {
      const int64_t target = f.height - 1 - (2 * k + first);
      OrvMemory::Copy(f.dst + target * f.dstStep, f.dstStep,
                      work->plane(0) + k * static_cast<int64_t>(work->step()), 2 * f.width);
    }
  }
}

void Yuv420ToYuy2Body(const Frame& f, bool progressive, OrvImage::FIELD_TYPE field,
                      ColorSpaceConverter* converter) {
  if (progressive) {
    Progressive420ToYuy2(f, false);
  } else {
    Interlaced420ToYuy2(f, field, converter);
    // A single field was placed turned already.
    if (field != OrvImage::FIELD_FRAME) return;
  }
  if (f.flip) MirrorInPlace(1, f.dst, f.dstStep, {2 * f.width, f.height});
}

bool IsField(OrvImage::FIELD_TYPE field) {
  return field == OrvImage::FIELD_FRAME || field == OrvImage::FIELD_TOP ||
         field == OrvImage::FIELD_BOTTOM;
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;

unsigned long OrvImage::YUV420ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                            unsigned long* dstSize, unsigned long width,
                                            unsigned long height, int srcStep, int dstStep,
                                            bool progressive) {
  return YUV420ToCCIR601YUY2(src, dst, dstSize, width, height, srcStep, dstStep, progressive,
                             FIELD_FRAME, nullptr);
}

unsigned long OrvImage::YUV420ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                            unsigned long* dstSize, unsigned long width,
                                            unsigned long height, int srcStep, int dstStep,
                                            bool progressive, FIELD_TYPE field,
                                            orv::ColorSpaceConverter* converter) {
  if (!IsField(field)) return ORV_IMG_INVALID;
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar,
                       Layout::kYuy2, Output::kPacked,
                       [&](const Frame& f) { Yuv420ToYuy2Body(f, progressive, field, converter); });
}

unsigned long OrvImage::YUV420ToYUY2A(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar,
                       Layout::kYuy2, Output::kYuy2A, [&](const Frame& f) {
                         Yuv420ToYuy2Body(f, progressive, FIELD_FRAME, nullptr);
                         AlphaSet(f);
                       });
}

unsigned long OrvImage::YV12ToYUY2A(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep,
                                    bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar,
                       Layout::kYuy2, Output::kYuy2A, [&](const Frame& f) {
                         if (progressive) {
                           Progressive420ToYuy2(f, true);
                         } else {
                           // Each field's chroma lines serve that field's lines only: Y lines
                           // 0, 4, 8... and 2, 6, 10... take chroma lines 0, 2, 4...; Y lines
                           // 1, 5, 9... and 3, 7, 11... take chroma lines 1, 3, 5...
                           const Planes420 p = Planar420(f.src, f.srcStep, f.height);
                           const Ipp8u* cb = p.c2;
                           const Ipp8u* cr = p.c1;
                           static const int kYLine[4] = {0, 2, 1, 3};
                           static const int kChromaLine[4] = {0, 0, 1, 1};
                           for (int run = 0; run < 4; ++run) {
                             const int64_t y = kYLine[run];
                             const int64_t c = kChromaLine[run];
                             Join422(p.y + y * p.yStep, 4 * p.yStep, cb + c * p.cStep,
                                     cr + c * p.cStep, 2 * p.cStep, f.dst + y * f.dstStep,
                                     4 * f.dstStep, f.width, f.height / 4);
                           }
                         }
                         if (f.flip) MirrorInPlace(1, f.dst, f.dstStep, {2 * f.width, f.height});
                         AlphaSet(f);
                       });
}

unsigned long OrvImage::YUV420ToYV12(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep) {
  return YUV420ToYV12(src, dst, dstSize, width, height, srcStep, dstStep, FIELD_FRAME);
}

unsigned long OrvImage::YUV420ToYV12(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep,
                                     FIELD_TYPE field) {
  if (!IsField(field)) return ORV_IMG_INVALID;
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kPlanar, Layout::kPlanar,
      Output::kPlanar, [&](const Frame& f) {
        const Planes420 s = Planar420(f.src, f.srcStep, f.height);
        const Planes420 d = Planar420(f.dst, f.dstStep, f.height);
        const int chromaLines = f.height / 2;
        if (srcStep == dstStep && static_cast<unsigned long>(srcStep) == width &&
            field == FIELD_FRAME) {
          // Dense pictures of one layout: three block copies, the chroma
          // planes exchanged.
          const unsigned int yBytes = static_cast<unsigned int>(f.srcStep) * f.height;
          const unsigned int cBytes = static_cast<unsigned int>(s.cStep) * chromaLines;
          OrvMemory::Copy(d.y, yBytes, s.y, yBytes);
          OrvMemory::Copy(d.c1, cBytes, s.c2, cBytes);
          OrvMemory::Copy(d.c2, cBytes, s.c1, cBytes);
          return;
        }
        // Walk both pictures in display order: a bottom-up picture starts at
        // its last line and steps backwards, which also turns the picture
        // when the directions differ.
        struct Walk {
          const Ipp8u* y;
          const Ipp8u* cb;
          const Ipp8u* cr;
          int64_t yStep;
          int64_t cStep;
        };
        auto start = [&](const Planes420& p, int sign, bool yv12) {
          Walk w;
          const Ipp8u* cb = yv12 ? p.c2 : p.c1;
          const Ipp8u* cr = yv12 ? p.c1 : p.c2;
          if (sign < 0) {
            w.y = p.y + static_cast<int64_t>(f.height - 1) * p.yStep;
            w.cb = cb + static_cast<int64_t>(chromaLines - 1) * p.cStep;
            w.cr = cr + static_cast<int64_t>(chromaLines - 1) * p.cStep;
          } else {
            w.y = p.y;
            w.cb = cb;
            w.cr = cr;
          }
          w.yStep = sign * static_cast<int64_t>(p.yStep);
          w.cStep = sign * static_cast<int64_t>(p.cStep);
          return w;
        };
        Walk from = start(s, f.srcSign, false);
        Walk to = start(d, f.dstSign, true);
        int lines = f.height;
        if (field != FIELD_FRAME) {
          if (field == FIELD_BOTTOM) {
            for (Walk* w : {&from, &to}) {
              w->y += w->yStep;
              w->cb += w->cStep;
              w->cr += w->cStep;
            }
          }
          lines = f.height / 2;
          for (Walk* w : {&from, &to}) {
            w->yStep *= 2;
            w->cStep *= 2;
          }
        }
        // A field of H/2 lines has H/4 whole pairs; with FIELD_BOTTOM and
        // H % 4 == 2 a last lone line would need a chroma line the picture
        // does not have, so only whole pairs are copied.
        const int pairs = lines / 2;
        const unsigned int halfWidth = static_cast<unsigned int>(f.width / 2);
        for (int k = 0; k < pairs; ++k) {
          Ipp8u* toY = const_cast<Ipp8u*>(to.y);
          OrvMemory::Copy(toY, f.width, from.y, f.width);
          OrvMemory::Copy(toY + to.yStep, f.width, from.y + from.yStep, f.width);
          OrvMemory::Copy(const_cast<Ipp8u*>(to.cr), halfWidth, from.cr, halfWidth);
          OrvMemory::Copy(const_cast<Ipp8u*>(to.cb), halfWidth, from.cb, halfWidth);
          from.y += 2 * from.yStep;
          to.y += 2 * to.yStep;
          from.cb += from.cStep;
          from.cr += from.cStep;
          to.cb += to.cStep;
          to.cr += to.cStep;
        }
      });
}
