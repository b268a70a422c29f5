// Packed 4:2:2 sources (CF_CCIR601YUY2 and the YUY2 part of CF_YUY2A) into
// every format they reach.
#include <OrvImage.h>
#include <OrvMemory.h>

#include <algorithm>
#include <memory>

#include "image/convert_frame.h"

namespace orv {
namespace image {
namespace {

// The 32-bit conversions make their planes in bands of this many lines, so
// that the work planes stay in cache; each line is converted on its own, so
// the bytes are those of one pass over the whole frame.
constexpr int kBandLines = 32;

// YUY2 (studio range) to 32-bit B G R with a fourth byte: `fourth` for every
// pixel, or with `alpha` the source's alpha plane (step `alphaStep`). Each
// band goes through planes R, G, B and the fourth, turned with the picture
// when the steps' signs differ, and is joined into its place in `dst`.
void Yuy2ToBgrx(const Frame& f, Ipp8u fourth, const Ipp8u* alpha, int alphaStep) {
  const int band = std::min(kBandLines, f.height);
  WorkPlanes planes(4, f.width, band);
  const int step = planes.step();
  Ipp8u* rgb[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
  Ipp8u* const bgrx[4] = {rgb[2], rgb[1], rgb[0], planes.plane(3)};
  if (alpha == nullptr) FillPlane(fourth, planes.plane(3), step, {f.width, band});
  for (int y0 = 0; y0 < f.height; y0 += band) {
    const int lines = std::min(band, f.height - y0);
    const IppiSize size = {f.width, lines};
    CheckPrimitive(ipp::ippiYCbCr422ToRGB_8u_C2P3R(f.src + static_cast<int64_t>(y0) * f.srcStep,
                                                   f.srcStep, rgb, step, size));
    if (f.flip) {
      for (Ipp8u* plane : rgb) MirrorInPlace(1, plane, step, size);
    }
    if (alpha != nullptr) {
      const Ipp8u* from = alpha + static_cast<int64_t>(y0) * alphaStep;
      if (f.flip) {
        CheckPrimitive(ipp::ippiMirror_8u_C1R(from, alphaStep, planes.plane(3), step, size,
                                              ipp::ippAxsHorizontal));
      } else {
        CheckPrimitive(ipp::ippiCopy_8u_C1R(from, alphaStep, planes.plane(3), step, size));
      }
    }
    const int64_t target = f.flip ? f.height - y0 - lines : y0;
    JoinPlanes4(bgrx, step, f.dst + target * f.dstStep, f.dstStep, size);
  }
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;
namespace ipp = orv::ipp;

unsigned long OrvImage::CCIR601YUY2ToRGB24(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2, Layout::kRgb24,
      Output::kPacked, [&](const Frame& f) {
        const IppiSize size = {f.width, f.height};
        CheckPrimitive(ipp::ippiYCbCr422ToRGB_8u_C2C3R(f.src, f.srcStep, f.dst, f.dstStep, size));
        if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, size);
        // R G B to the B G R of the format.
        static const int kOrder[3] = {2, 1, 0};
        CheckPrimitive(ipp::ippiSwapChannels_8u_C3IR(f.dst, f.dstStep, size, kOrder));
      });
}

unsigned long OrvImage::CCIR601YUY2ToRGB32(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2,
                       Layout::kRgb32, Output::kPacked,
                       [&](const Frame& f) { Yuy2ToBgrx(f, 0, nullptr, 0); });
}

unsigned long OrvImage::CCIR601YUY2ToRGBA(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2,
                       Layout::kRgb32, Output::kPacked,
                       [&](const Frame& f) { Yuy2ToBgrx(f, 255, nullptr, 0); });
}

unsigned long OrvImage::YUY2AToRGBA(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2,
                       Layout::kRgb32, Output::kPacked, [&](const Frame& f) {
                         // The alpha plane of the source becomes the fourth byte, turned with
                         // the colour when the picture turns.
                         Yuy2ToBgrx(f, 0, AlphaPlane(f.src, f.srcStep, f.height),
                                    AlphaStep(f.width));
                       });
}

unsigned long OrvImage::CCIR601YUY2ToTavoShiftedStraightRGB24(
    unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
    unsigned long height, int srcStep, int dstStep) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2, Layout::kRgb24,
      Output::kPacked, [&](const Frame& f) {
        const IppiSize size = {f.width, f.height};
        WorkPlanes planes(3, f.width, f.height);
        Ipp8u* const yuv[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
        ExpandHorizontal(f.src, f.srcStep, f.width, f.height, yuv, planes.step());
        const Ipp8u* in[3] = {yuv[0], yuv[1], yuv[2]};
        CheckPrimitive(
            ipp::ippiYCbCrToBGR_JPEG_8u_P3C3R(in, planes.step(), f.dst, f.dstStep, size));
        if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, size);
        const Ipp8u sixteen[3] = {16, 16, 16};
        CheckPrimitive(ipp::ippiSubC_8u_C3IRSfs(sixteen, f.dst, f.dstStep, size, 0));
      });
}

unsigned long OrvImage::CCIR601YUY2ToTavoShiftedStraightRGB32(
    unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
    unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2,
                       Layout::kRgb32, Output::kPacked, [&](const Frame& f) {
                         const IppiSize size = {f.width, f.height};
                         // Planes: 0 Y, 1 Cb, 2 Cr, 3 R, 4 G, 5 B, 6 the fourth byte.
                         WorkPlanes planes(7, f.width, f.height);
                         const int step = planes.step();
                         Ipp8u* const yuv[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
                         ExpandHorizontal(f.src, f.srcStep, f.width, f.height, yuv, step);
                         const Ipp8u* in[3] = {yuv[0], yuv[1], yuv[2]};
                         Ipp8u* rgb[3] = {planes.plane(3), planes.plane(4), planes.plane(5)};
                         CheckPrimitive(ipp::ippiYCbCrToRGB_JPEG_8u_P3R(in, step, rgb, step, size));
                         for (Ipp8u* plane : rgb) {
                           if (f.flip) MirrorInPlace(1, plane, step, size);
                           ShiftDownPlane(plane, step, size);
                         }
                         FillPlane(0, planes.plane(6), step, size);
                         Ipp8u* const bgrx[4] = {rgb[2], rgb[1], rgb[0], planes.plane(6)};
                         JoinPlanes4(bgrx, step, f.dst, f.dstStep, size);
                       });
}

unsigned long OrvImage::CCIR601YUY2ToVUYA(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2, Layout::kRgb32,
      Output::kPacked, [&](const Frame& f) {
        const IppiSize size = {f.width, f.height};
        // Planes: 0 Y, 1 Cb, 2 Cr at full width, 3 alpha (0: opaque).
        WorkPlanes planes(4, f.width, f.height);
        const int step = planes.step();
        Ipp8u* const yuv[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
        const int half = f.width / 2;
        WorkPlanes chroma(2, half, f.height);
        Ipp8u* split[3] = {yuv[0], chroma.plane(0), chroma.plane(1)};
        int steps[3] = {step, chroma.step(), chroma.step()};
        CheckPrimitive(ipp::ippiYCbCr422_8u_C2P3R(f.src, f.srcStep, split, steps, size));
        if (f.flip) {
          MirrorInPlace(1, yuv[0], step, size);
          MirrorInPlace(1, chroma.plane(0), chroma.step(), {half, f.height});
          MirrorInPlace(1, chroma.plane(1), chroma.step(), {half, f.height});
        }
        WidenChroma422(chroma.plane(0), chroma.step(), f.width, f.height, yuv[1], step);
        WidenChroma422(chroma.plane(1), chroma.step(), f.width, f.height, yuv[2], step);
        FillPlane(0, planes.plane(3), step, size);
        Ipp8u* const vuya[4] = {yuv[2], yuv[1], yuv[0], planes.plane(3)};
        JoinPlanes4(vuya, step, f.dst, f.dstStep, size);
      });
}

unsigned long OrvImage::CCIR601YUY2ToYUY2A(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2, Layout::kYuy2,
      Output::kYuy2A, [&](const Frame& f) {
        const IppiSize size = {2 * f.width, f.height};
        if (f.src != f.dst) {
          CheckPrimitive(ipp::ippiCopy_8u_C1R(f.src, f.srcStep, f.dst, f.dstStep, size));
        } else if (f.srcStep != f.dstStep) {
          // In place: lines move apart from the last one up, or together from
          // the first one down, so that no line is overwritten before it moves.
          const unsigned int bytes = static_cast<unsigned int>(std::min(f.srcStep, f.dstStep));
          if (f.srcStep < f.dstStep) {
            for (int64_t y = f.height - 1; y >= 0; --y) {
              OrvMemory::Move(f.dst + y * f.dstStep, bytes, f.src + y * f.srcStep, bytes);
            }
          } else {
            for (int64_t y = 0; y < f.height; ++y) {
              OrvMemory::Move(f.dst + y * f.dstStep, bytes, f.src + y * f.srcStep, bytes);
            }
          }
        }
        if (f.flip) MirrorInPlace(1, f.dst, f.dstStep, size);
        AlphaSet(f);
      });
}

unsigned long OrvImage::YUY2AToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2, Layout::kYuy2,
      Output::kPacked, [&](const Frame& f) {
        const IppiSize size = {2 * f.width, f.height};
        CheckPrimitive(ipp::ippiCopy_8u_C1R(f.src, f.srcStep, f.dst, f.dstStep, size));
        if (f.flip) MirrorInPlace(1, f.dst, f.dstStep, size);
      });
}

unsigned long OrvImage::CCIR601YUY2ToYUV420(unsigned char* const src, unsigned char* dst,
                                            unsigned long* dstSize, unsigned long width,
                                            unsigned long height, int srcStep, int dstStep,
                                            bool progressive) {
  return CCIR601YUY2ToYUV420(src, dst, dstSize, width, height, srcStep, dstStep, progressive,
                             FIELD_FRAME, nullptr, nullptr);
}

unsigned long OrvImage::CCIR601YUY2ToYUV420(unsigned char* const src, unsigned char* dst,
                                            unsigned long* dstSize, unsigned long width,
                                            unsigned long height, int srcStep, int dstStep,
                                            bool progressive, orv::ColorSpaceConverter* converter) {
  return CCIR601YUY2ToYUV420(src, dst, dstSize, width, height, srcStep, dstStep, progressive,
                             FIELD_FRAME, nullptr, converter);
}

unsigned long OrvImage::CCIR601YUY2ToYUV420(unsigned char* const src, unsigned char* dst,
                                            unsigned long* dstSize, unsigned long width,
                                            unsigned long height, int srcStep, int dstStep,
                                            bool progressive, FIELD_TYPE field,
                                            std::vector<OrvMemory*>* work,
                                            orv::ColorSpaceConverter* converter) {
  // The whole frame always goes through the 4:2:0 converter; `field` and
  // `work` have no effect on this conversion.
  (void)field;
  (void)work;
  return ColorConvertToYUV420(CF_CCIR601YUY2, src, dst, dstSize, width, height, srcStep, dstStep,
                              progressive, converter);
}

unsigned long OrvImage::CCIR601YUY2ToYV12(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep,
                                          bool progressive) {
  return CCIR601YUY2ToYV12(src, dst, dstSize, width, height, srcStep, dstStep, progressive,
                           FIELD_FRAME, nullptr);
}

unsigned long OrvImage::CCIR601YUY2ToYV12(unsigned char* const src, unsigned char* dst,
                                          unsigned long* dstSize, unsigned long width,
                                          unsigned long height, int srcStep, int dstStep,
                                          bool progressive, FIELD_TYPE field,
                                          std::vector<OrvMemory*>* work) {
  if (field != FIELD_FRAME && field != FIELD_TOP && field != FIELD_BOTTOM) return ORV_IMG_INVALID;
  unsigned long result = RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kYuy2, Layout::kPlanar,
      Output::kPlanar, [&](const Frame& f) {
        // Two full-height chroma work planes of |dstStep| x H bytes, kept in
        // `work` from frame to frame when the caller gives a vector.
        const unsigned int planeBytes = static_cast<unsigned int>(f.dstStep) * f.height;
        Ipp8u* workPlane[2] = {nullptr, nullptr};
        OrvMemory local[2];
        for (int i = 0; i < 2; ++i) {
          OrvMemory* memory = &local[i];
          if (work != nullptr) {
            if (work->size() < 2) {
              for (OrvMemory* m : *work) delete m;
              work->clear();
              for (int k = 0; k < 2; ++k) work->push_back(new OrvMemory());
            }
            memory = (*work)[i];
          }
          void* block = memory->GetBuffer();
          if (block == nullptr || memory->GetSize() < planeBytes) {
            // A vector holding planes of another size is brought to this one,
            // so no write goes past a plane.
            if (!memory->Initialize(&block, planeBytes, 16) || block == nullptr) {
              Raise(ORV_IMG_NO_MEMORY);
            }
          }
          workPlane[i] = static_cast<Ipp8u*>(block);
        }
        const Planes420 d = Planar420(f.dst, f.dstStep, f.height);
        Ipp8u* split[3] = {d.y, workPlane[0], workPlane[1]};
        int steps[3] = {f.dstStep, f.dstStep, f.dstStep};
        CheckPrimitive(
            ipp::ippiYCbCr422_8u_C2P3R(f.src, f.srcStep, split, steps, {f.width, f.height}));
        if (f.flip) MirrorInPlace(1, d.y, f.dstStep, {f.width, f.height});
        // Chroma lines are taken without filtering, both pictures walked in
        // display order.
        const int outLines = f.height / 2;
        const unsigned int halfWidth = static_cast<unsigned int>(f.width / 2);
        for (int k = 0; k < outLines; ++k) {
          int64_t line;
          if (progressive) {
            line = 2 * k + 1;
          } else if (field == FIELD_TOP) {
            if ((k & 1) != 0) continue;
            line = 2 * k + 2;
          } else if (field == FIELD_BOTTOM) {
            if ((k & 1) == 0) continue;
            line = 2 * k + 1;
          } else {
            line = (k & 1) == 0 ? 2 * k + 2 : 2 * k + 1;
          }
          // Lines the picture does not have (a height that is not a multiple
          // of 4) are left as they are.
          if (line >= f.height) continue;
          const int64_t workLine = f.srcSign < 0 ? f.height - 1 - line : line;
          const int64_t outLine = f.dstSign < 0 ? outLines - 1 - k : k;
          const int64_t from = workLine * f.dstStep;
          const int64_t to = outLine * d.cStep;
          OrvMemory::Copy(d.c2 + to, halfWidth, workPlane[0] + from, halfWidth);  // Cb
          OrvMemory::Copy(d.c1 + to, halfWidth, workPlane[1] + from, halfWidth);  // Cr
        }
      });
  if (result != ORV_IMG_OK && result != ORV_IMG_INVALID && result != ORV_IMG_DST_TOO_SMALL &&
      work != nullptr) {
    for (OrvMemory* m : *work) delete m;
    work->clear();
  }
  return result;
}
