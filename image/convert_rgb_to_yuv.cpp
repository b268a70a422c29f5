// The RGB-like formats (full range and shifted straight) into CF_YUV420,
// CF_YV12, CF_CCIR601YUY2 and CF_YUY2A.
#include <OrvImage.h>

#include "image/convert_frame.h"

namespace orv {
namespace image {
namespace {

const int kSwapOrder[3] = {2, 1, 0};
const Ipp8u kSixteen[3] = {16, 16, 16};

// R G B work pixels (already turned) into the planes of a CF_YV12
// destination: Cb into its second chroma plane, Cr into its first. A
// progressive picture is converted in one call on an even height (an odd last
// line is dropped); an interlaced one field by field.
void RgbToYv12Planes(const Frame& f, const IppPicture& rgb, bool progressive) {
  const Planes420 d = Planar420(f.dst, f.dstStep, f.height);
  const int runs = progressive ? 1 : 2;
  const int lines = progressive ? (f.height & ~1) : FieldRunLines420(f.height, 0);
  for (int run = 0; run < runs; ++run) {
    if (lines <= 0 || f.width <= 0) return;
    Ipp8u* planes[3] = {d.y + static_cast<int64_t>(run) * d.yStep,
                        d.c2 + static_cast<int64_t>(run) * d.cStep,
                        d.c1 + static_cast<int64_t>(run) * d.cStep};
    int steps[3] = {runs * d.yStep, runs * d.cStep, runs * d.cStep};
    CheckPrimitive(ipp::ippiRGBToYCbCr420_8u_C3P3R(rgb.line(run), runs * rgb.step(), planes, steps,
                                                   {f.width, lines}));
  }
}

// Shifted straight B G R (black 0, white 219) to studio YCbCr: 16 is added to
// every channel, then the full-swing matrix, which keeps the swing of Y.
// Fills planes 0..2 (Y, Cb, Cr at full resolution) of `planes`.
void ShiftedToFullPlanes(const Frame& f, bool fourBytes, const WorkPlanes& planes) {
  const IppiSize size = {f.width, f.height};
  IppPicture work;
  work.Allocate8u(3, f.width, f.height);
  if (fourBytes) {
    CheckPrimitive(ipp::ippiCopy_8u_AC4C3R(f.src, f.srcStep, work.data(), work.step(), size));
    if (f.flip) MirrorInPlace(3, work.data(), work.step(), size);
    CheckPrimitive(ipp::ippiAddC_8u_C3IRSfs(kSixteen, work.data(), work.step(), size, 0));
  } else {
    CheckPrimitive(
        ipp::ippiAddC_8u_C3RSfs(f.src, f.srcStep, kSixteen, work.data(), work.step(), size, 0));
    if (f.flip) MirrorInPlace(3, work.data(), work.step(), size);
  }
  Ipp8u* yuv[3] = {planes.plane(0), planes.plane(1), planes.plane(2)};
  CheckPrimitive(
      ipp::ippiBGRToYCbCr_JPEG_8u_C3P3R(work.data(), work.step(), yuv, planes.step(), size));
}

void SampleDown(bool vertical, const Ipp8u* src, int srcStep, IppiSize srcSize, Ipp8u* dst,
                int dstStep, IppiSize dstSize) {
  if (IsEmpty(srcSize) || IsEmpty(dstSize)) return;
  if (vertical) {
    CheckPrimitive(
        ipp::ippiSampleDownH2V2_JPEG_8u_C1R(src, srcStep, srcSize, dst, dstStep, dstSize));
  } else {
    CheckPrimitive(
        ipp::ippiSampleDownH2V1_JPEG_8u_C1R(src, srcStep, srcSize, dst, dstStep, dstSize));
  }
}

void ShiftedToYv12(const Frame& f, bool fourBytes, bool progressive) {
  const IppiSize size = {f.width, f.height};
  WorkPlanes planes(3, f.width, f.height);
  ShiftedToFullPlanes(f, fourBytes, planes);
  const Planes420 d = Planar420(f.dst, f.dstStep, f.height);
  CheckPrimitive(ipp::ippiCopy_8u_C1R(planes.plane(0), planes.step(), d.y, d.yStep, size));
  // Cb into the second chroma plane, Cr into the first.
  Ipp8u* targets[2] = {d.c2, d.c1};
  for (int c = 0; c < 2; ++c) {
    const Ipp8u* full = planes.plane(1 + c);
    if (progressive) {
      SampleDown(true, full, planes.step(), size, targets[c], d.cStep, {f.width / 2, f.height / 2});
    } else {
      for (int run = 0; run < 2; ++run) {
        SampleDown(true, full + static_cast<int64_t>(run) * planes.step(), 2 * planes.step(),
                   {f.width, f.height / 2}, targets[c] + static_cast<int64_t>(run) * d.cStep,
                   2 * d.cStep, {f.width / 2, f.height / 4});
      }
    }
  }
}

void ShiftedToYuy2(const Frame& f, bool fourBytes) {
  const IppiSize size = {f.width, f.height};
  WorkPlanes planes(3, f.width, f.height);
  ShiftedToFullPlanes(f, fourBytes, planes);
  const int half = f.width / 2;
  WorkPlanes chroma(2, half, f.height);
  for (int c = 0; c < 2; ++c) {
    SampleDown(false, planes.plane(1 + c), planes.step(), size, chroma.plane(c), chroma.step(),
               {half, f.height});
  }
  const Ipp8u* join[3] = {planes.plane(0), chroma.plane(0), chroma.plane(1)};
  int steps[3] = {planes.step(), chroma.step(), chroma.step()};
  CheckPrimitive(ipp::ippiYCbCr422_8u_P3C2R(join, steps, f.dst, f.dstStep, size));
}

// SPLIT, then studio 4:2:2. Returns nothing; with `alphaOut` the fourth plane
// of 32-bit input becomes the alpha plane of a CF_YUY2A destination.
void RgbToYuy2(const Frame& f, bool fourBytes, bool alphaOut) {
  const IppiSize size = {f.width, f.height};
  WorkPlanes planes(4, f.width, f.height);
  Ipp8u* split[4] = {planes.plane(0), planes.plane(1), planes.plane(2), planes.plane(3)};
  if (fourBytes) {
    CheckPrimitive(ipp::ippiCopy_8u_C4P4R(f.src, f.srcStep, split, planes.step(), size));
  } else {
    CheckPrimitive(ipp::ippiCopy_8u_C3P3R(f.src, f.srcStep, split, planes.step(), size));
  }
  if (f.flip) {
    for (int c = 0; c < 3; ++c) MirrorInPlace(1, split[c], planes.step(), size);
  }
  // Planes in memory order are B, G, R; the converter takes R, G, B.
  const Ipp8u* rgb[3] = {split[2], split[1], split[0]};
  CheckPrimitive(ipp::ippiRGBToYCbCr422_8u_P3C2R(rgb, planes.step(), f.dst, f.dstStep, size));
  if (alphaOut) {
    Ipp8u* alpha = AlphaPlane(f.dst, f.dstStep, f.height);
    const int alphaStep = AlphaStep(f.width);
    if (f.flip) {
      CheckPrimitive(ipp::ippiMirror_8u_C1R(split[3], planes.step(), alpha, alphaStep, size,
                                            ipp::ippAxsHorizontal));
    } else {
      CheckPrimitive(ipp::ippiCopy_8u_C1R(split[3], planes.step(), alpha, alphaStep, size));
    }
  }
}

}  // namespace
}  // namespace image
}  // namespace orv

using namespace orv::image;
namespace ipp = orv::ipp;

// ---- Into CF_YUV420: the colour kernels -------------------------------------

unsigned long OrvImage::RGB24ToYUV420(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive, orv::ColorSpaceConverter* converter) {
  return ColorConvertToYUV420(CF_RGB24, src, dst, dstSize, width, height, srcStep, dstStep,
                              progressive, converter);
}

unsigned long OrvImage::RGB32ToYUV420(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive, orv::ColorSpaceConverter* converter) {
  return ColorConvertToYUV420(CF_RGB32, src, dst, dstSize, width, height, srcStep, dstStep,
                              progressive, converter);
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToYUV420(unsigned char* const src,
                                                         unsigned char* dst, unsigned long* dstSize,
                                                         unsigned long width, unsigned long height,
                                                         int srcStep, int dstStep, bool progressive,
                                                         orv::ColorSpaceConverter* converter) {
  return ColorConvertToYUV420(CF_TavoShiftedStraightRGB24, src, dst, dstSize, width, height,
                              srcStep, dstStep, progressive, converter);
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToYUV420(unsigned char* const src,
                                                         unsigned char* dst, unsigned long* dstSize,
                                                         unsigned long width, unsigned long height,
                                                         int srcStep, int dstStep, bool progressive,
                                                         orv::ColorSpaceConverter* converter) {
  return ColorConvertToYUV420(CF_TavoShiftedStraightRGB32, src, dst, dstSize, width, height,
                              srcStep, dstStep, progressive, converter);
}

// The exported forms, with a converter made for the call.

unsigned long OrvImage::RGB24ToYUV420(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive) {
  return RGB24ToYUV420(src, dst, dstSize, width, height, srcStep, dstStep, progressive, nullptr);
}

unsigned long OrvImage::RGB32ToYUV420(unsigned char* const src, unsigned char* dst,
                                      unsigned long* dstSize, unsigned long width,
                                      unsigned long height, int srcStep, int dstStep,
                                      bool progressive) {
  return RGB32ToYUV420(src, dst, dstSize, width, height, srcStep, dstStep, progressive, nullptr);
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToYUV420(unsigned char* const src,
                                                         unsigned char* dst, unsigned long* dstSize,
                                                         unsigned long width, unsigned long height,
                                                         int srcStep, int dstStep,
                                                         bool progressive) {
  return TavoShiftedStraightRGB24ToYUV420(src, dst, dstSize, width, height, srcStep, dstStep,
                                          progressive, nullptr);
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToYUV420(unsigned char* const src,
                                                         unsigned char* dst, unsigned long* dstSize,
                                                         unsigned long width, unsigned long height,
                                                         int srcStep, int dstStep,
                                                         bool progressive) {
  return TavoShiftedStraightRGB32ToYUV420(src, dst, dstSize, width, height, srcStep, dstStep,
                                          progressive, nullptr);
}

// ---- Into CF_YV12 --------------------------------------------------------------

unsigned long OrvImage::RGB24ToYV12(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep,
                                    bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb24,
                       Layout::kPlanar, Output::kPlanar, [&](const Frame& f) {
                         const IppiSize size = {f.width, f.height};
                         IppPicture rgb;
                         rgb.Allocate8u(3, f.width, f.height);
                         CheckPrimitive(ipp::ippiSwapChannels_8u_C3R(f.src, f.srcStep, rgb.data(),
                                                                     rgb.step(), size, kSwapOrder));
                         if (f.flip) MirrorInPlace(3, rgb.data(), rgb.step(), size);
                         RgbToYv12Planes(f, rgb, progressive);
                       });
}

unsigned long OrvImage::RGB32ToYV12(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep,
                                    bool progressive) {
  return RunConversion(
      src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32, Layout::kPlanar,
      Output::kPlanar, [&](const Frame& f) {
        const IppiSize size = {f.width, f.height};
        IppPicture rgb;
        rgb.Allocate8u(3, f.width, f.height);
        CheckPrimitive(ipp::ippiCopy_8u_AC4C3R(f.src, f.srcStep, rgb.data(), rgb.step(), size));
        if (f.flip) MirrorInPlace(3, rgb.data(), rgb.step(), size);
        CheckPrimitive(ipp::ippiSwapChannels_8u_C3IR(rgb.data(), rgb.step(), size, kSwapOrder));
        RgbToYv12Planes(f, rgb, progressive);
      });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToYV12(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep, bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb24,
                       Layout::kPlanar, Output::kPlanar,
                       [&](const Frame& f) { ShiftedToYv12(f, false, progressive); });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToYV12(unsigned char* const src, unsigned char* dst,
                                                       unsigned long* dstSize, unsigned long width,
                                                       unsigned long height, int srcStep,
                                                       int dstStep, bool progressive) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32,
                       Layout::kPlanar, Output::kPlanar,
                       [&](const Frame& f) { ShiftedToYv12(f, true, progressive); });
}

// ---- Into CF_CCIR601YUY2 and CF_YUY2A ------------------------------------------

unsigned long OrvImage::RGB24ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb24,
                       Layout::kYuy2, Output::kPacked,
                       [&](const Frame& f) { RgbToYuy2(f, false, false); });
}

unsigned long OrvImage::RGB32ToCCIR601YUY2(unsigned char* const src, unsigned char* dst,
                                           unsigned long* dstSize, unsigned long width,
                                           unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32,
                       Layout::kYuy2, Output::kPacked,
                       [&](const Frame& f) { RgbToYuy2(f, true, false); });
}

unsigned long OrvImage::RGB24ToYUY2A(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb24,
                       Layout::kYuy2, Output::kYuy2A, [&](const Frame& f) {
                         RgbToYuy2(f, false, false);
                         AlphaSet(f);
                       });
}

unsigned long OrvImage::RGB32ToYUY2A(unsigned char* const src, unsigned char* dst,
                                     unsigned long* dstSize, unsigned long width,
                                     unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32,
                       Layout::kYuy2, Output::kYuy2A, [&](const Frame& f) {
                         RgbToYuy2(f, true, false);
                         AlphaSet(f);
                       });
}

unsigned long OrvImage::RGBAToYUY2A(unsigned char* const src, unsigned char* dst,
                                    unsigned long* dstSize, unsigned long width,
                                    unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32,
                       Layout::kYuy2, Output::kYuy2A,
                       [&](const Frame& f) { RgbToYuy2(f, true, true); });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToCCIR601YUY2(
    unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
    unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb24,
                       Layout::kYuy2, Output::kPacked,
                       [&](const Frame& f) { ShiftedToYuy2(f, false); });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToCCIR601YUY2(
    unsigned char* const src, unsigned char* dst, unsigned long* dstSize, unsigned long width,
    unsigned long height, int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32,
                       Layout::kYuy2, Output::kPacked,
                       [&](const Frame& f) { ShiftedToYuy2(f, true); });
}

unsigned long OrvImage::TavoShiftedStraightRGB24ToYUY2A(unsigned char* const src,
                                                        unsigned char* dst, unsigned long* dstSize,
                                                        unsigned long width, unsigned long height,
                                                        int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb24,
                       Layout::kYuy2, Output::kYuy2A, [&](const Frame& f) {
                         ShiftedToYuy2(f, false);
                         AlphaSet(f);
                       });
}

unsigned long OrvImage::TavoShiftedStraightRGB32ToYUY2A(unsigned char* const src,
                                                        unsigned char* dst, unsigned long* dstSize,
                                                        unsigned long width, unsigned long height,
                                                        int srcStep, int dstStep) {
  return RunConversion(src, dst, dstSize, width, height, srcStep, dstStep, Layout::kRgb32,
                       Layout::kYuy2, Output::kYuy2A, [&](const Frame& f) {
                         ShiftedToYuy2(f, true);
                         AlphaSet(f);
                       });
}
