// Conversions between the RGB-like formats: pixel size, fourth byte, and the
// two level families (full range 0..255, shifted straight 0..219).
//
// Full range and shifted straight are related by two rules of their own. The
// float rule (through float work pictures) serves the 24-bit pairs:
//   full to shifted:  floor(v x 219 / 255)                     0..219
//   shifted to full:  v x 255 / 219, rounded, saturated         0..255
// The integer rule serves every pair with a 32-bit side, a line at a time:
//   full to shifted:  (v x 220) >> 8, at least 1               1..219
//   shifted to full:  floor(v x 256 / 220), within 1..254      1..254
#include <OrvImage.h>
#include <OrvMemory.h>

#include "image/convert_frame.h"

namespace orv {
namespace image {
namespace {

// Copies between 3- and 4-byte pixels with an optional fixed fourth byte,
// then the turn.
void RepackPixels(const Frame& f, int srcBytes, int dstBytes, int fourth) {
  const IppiSize size = {f.width, f.height};
  if (srcBytes == 3 && dstBytes == 4) {
    CheckPrimitive(ipp::ippiCopy_8u_C3AC4R(f.src, f.srcStep, f.dst, f.dstStep, size));
  } else if (srcBytes == 4 && dstBytes == 3) {
    CheckPrimitive(ipp::ippiCopy_8u_AC4C3R(f.src, f.srcStep, f.dst, f.dstStep, size));
  } else {
    CheckPrimitive(ipp::ippiCopy_8u_C4R(f.src, f.srcStep, f.dst, f.dstStep, size));
  }
  if (fourth >= 0) {
    CheckPrimitive(ipp::ippiSet_8u_C4CR(static_cast<Ipp8u>(fourth), f.dst + 3, f.dstStep, size));
  }
  if (f.flip) MirrorInPlace(dstBytes, f.dst, f.dstStep, size);
}

// The float rule from a 24-bit picture `src` (step `srcStep`) into `dst`:
// `toShifted` maps 0..255 onto 0..219 and truncates, else 0..219 onto 0..255
// with saturation.
void FloatRule(const Frame& f, const Ipp8u* src, int srcStep, bool toShifted) {
  const IppiSize size = {f.width, f.height};
  IppPicture work;
  work.Allocate32fC3(f.width, f.height);
  if (toShifted) {
    CheckPrimitive(
        ipp::ippiScale_8u32f_C3R(src, srcStep, work.data32f(), work.step(), size, 0.0f, 219.0f));
    CheckPrimitive(ipp::ippiConvert_32f8u_C3R(work.data32f(), work.step(), f.dst, f.dstStep, size,
                                              ipp::ippRndZero));
  } else {
    CheckPrimitive(
        ipp::ippiScale_8u32f_C3R(src, srcStep, work.data32f(), work.step(), size, 0.0f, 255.0f));
    CheckPrimitive(ipp::ippiScale_32f8u_C3R(work.data32f(), work.step(), f.dst, f.dstStep, size,
                                            0.0f, 219.0f));
  }
}

inline Ipp8u FullToShifted(Ipp8u v) {
  const int s = (v * 220) >> 8;
  return static_cast<Ipp8u>(s < 1 ? 1 : s);
}

inline Ipp8u ShiftedToFull(Ipp8u v) {
  int s = v * 256 / 220;
  if (s >= 255) s = 254;
  if (s < 1) s = 1;
  return static_cast<Ipp8u>(s);
}

// Fourth byte of an RGB-LOOP destination.
enum Fourth { kNoFourth, kZero, kCopy, kOpaque };

// RGB-LOOP: a line at a time in display order on both sides (a bottom-up
// picture is walked from its last memory line), so the walk itself turns the
// picture and no mirror is needed. Each line is made in a zeroed line buffer
// of |dstStep| bytes and copied whole.
void RgbLoop(const Frame& f, int srcBytes, int dstBytes, bool toShifted, Fourth fourth) {
  OrvMemory lineMemory;
  void* block = nullptr;
  if (!lineMemory.Initialize(&block, static_cast<unsigned int>(f.dstStep), 16) ||
      block == nullptr) {
    Raise(OrvImage::ORV_IMG_NO_MEMORY);
  }
  Ipp8u* line = static_cast<Ipp8u*>(block);
  OrvMemory::ZeroClear(line, static_cast<unsigned int>(f.dstStep));
  const int64_t srcStep = f.srcSign * static_cast<int64_t>(f.srcStep);
  const int64_t dstStep = f.dstSign * static_cast<int64_t>(f.dstStep);
  const Ipp8u* from =
      f.src + (f.srcSign < 0 ? (f.height - 1) * static_cast<int64_t>(f.srcStep) : 0);
  Ipp8u* to = f.dst + (f.dstSign < 0 ? (f.height - 1) * static_cast<int64_t>(f.dstStep) : 0);
  for (int y = 0; y < f.height; ++y) {
    const Ipp8u* s = from;
    Ipp8u* d = line;
    for (int x = 0; x < f.width; ++x) {
      for (int c = 0; c < 3; ++c) d[c] = toShifted ? FullToShifted(s[c]) : ShiftedToFull(s[c]);
      switch (fourth) {
        case kZero:
          d[3] = 0;
          break;
        case kCopy:
          d[3] = s[3];
          break;
        case kOpaque:
          d[3] = 255;
          break;
        case kNoFourth:
          break;
      }
      s += srcBytes;
      d += dstBytes;
    }
    OrvMemory::Copy(to, static_cast<unsigned int>(f.dstStep), line,
                    static_cast<unsigned int>(f.dstStep));
    from += srcStep;
    to += dstStep;
  }
}

Layout LayoutOf(int bytes) { return bytes == 3 ? Layout::kRgb24 : Layout::kRgb32; }

template <typename Body>
unsigned long RunRgb(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                     unsigned long width, unsigned long height, int srcStep, int dstStep,
                     int srcBytes, int dstBytes, Body&& body) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, LayoutOf(srcBytes),
                       LayoutOf(dstBytes), Output::kPacked, body);
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;
namespace ipp = orv::ipp;

#define ORV_RGB_ARGS                                                                         \
  unsigned char *const src, unsigned char *dst, unsigned long *dstSize, unsigned long width, \
      unsigned long height, int srcStep, int dstStep
#define ORV_RGB_PASS src, dst, dstSize, width, height, srcStep, dstStep

// ---- Pixel size and fourth byte --------------------------------------------------

unsigned long OrvImage::RGB24ToRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 4, [](const Frame& f) { RepackPixels(f, 3, 4, 0); });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToTavoShiftedStraightRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 4, [](const Frame& f) { RepackPixels(f, 3, 4, 0); });
}

unsigned long OrvImage::RGB24ToRGBA(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 4, [](const Frame& f) { RepackPixels(f, 3, 4, 255); });
}

unsigned long OrvImage::RGB32ToRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 3, [](const Frame& f) { RepackPixels(f, 4, 3, -1); });
}

unsigned long OrvImage::RGBAToRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 3, [](const Frame& f) { RepackPixels(f, 4, 3, -1); });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToTavoShiftedStraightRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 3, [](const Frame& f) { RepackPixels(f, 4, 3, -1); });
}

unsigned long OrvImage::RGB32ToRGBA(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 4, [](const Frame& f) { RepackPixels(f, 4, 4, 255); });
}

unsigned long OrvImage::RGBAToRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 4, [](const Frame& f) { RepackPixels(f, 4, 4, 0); });
}

// ---- Levels: the float rule --------------------------------------------------------

unsigned long OrvImage::RGB24ToTavoShiftedStraightRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 3, [](const Frame& f) {
    FloatRule(f, f.src, f.srcStep, true);
    if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, {f.width, f.height});
  });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 3, [](const Frame& f) {
    FloatRule(f, f.src, f.srcStep, false);
    if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, {f.width, f.height});
  });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 3, [](const Frame& f) {
    const IppiSize size = {f.width, f.height};
    CheckPrimitive(ipp::ippiCopy_8u_AC4C3R(f.src, f.srcStep, f.dst, f.dstStep, size));
    FloatRule(f, f.dst, f.dstStep, false);
    if (f.flip) MirrorInPlace(3, f.dst, f.dstStep, size);
  });
}

// ---- Levels: the integer rule, a line at a time -----------------------------------

unsigned long OrvImage::RGB24ToTavoShiftedStraightRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 4, [](const Frame& f) { RgbLoop(f, 3, 4, true, kZero); });
}

unsigned long OrvImage::RGB32ToTavoShiftedStraightRGB24(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 3, [](const Frame& f) { RgbLoop(f, 4, 3, true, kNoFourth); });
}

unsigned long OrvImage::RGB32ToTavoShiftedStraightRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 4, [](const Frame& f) { RgbLoop(f, 4, 4, true, kCopy); });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 4, [](const Frame& f) { RgbLoop(f, 3, 4, false, kZero); });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToRGB32(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 4, [](const Frame& f) { RgbLoop(f, 4, 4, false, kCopy); });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToRGBA(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 3, 4, [](const Frame& f) { RgbLoop(f, 3, 4, false, kOpaque); });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToRGBA(ORV_RGB_ARGS) {
  return RunRgb(ORV_RGB_PASS, 4, 4, [](const Frame& f) { RgbLoop(f, 4, 4, false, kOpaque); });
}
