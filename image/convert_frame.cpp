// The common frame of the format-pair conversions and their shared blocks.
#include "image/convert_frame.h"

#include <algorithm>
#include <cstring>

namespace orv {
namespace image {

uint64_t RequiredSize(Output output, uint64_t width, uint64_t height, int64_t dstStep) {
  const uint64_t d = StepMagnitude(dstStep);
  switch (output) {
    case Output::kPacked:
      return d * height;
    case Output::kPlanar:
      return (d + d / 2) * height;
    case Output::kYuy2A:
      return (d + AlignedLine(8, width)) * height;
  }
  return 0;
}

unsigned long CheckPictures(unsigned long width, unsigned long height, int srcStep, int dstStep,
                            Layout srcLayout, Layout dstLayout, Output output) {
  if (width == 0 || height == 0 || !AreSidesValid(width, height)) return OrvImage::ORV_IMG_INVALID;
  const uint64_t s = StepMagnitude(srcStep);
  const uint64_t d = StepMagnitude(dstStep);
  if (s > kMaxBytes || d > kMaxBytes) return OrvImage::ORV_IMG_INVALID;
  if (s < LineBytes(srcLayout, width) || d < LineBytes(dstLayout, width)) {
    return OrvImage::ORV_IMG_INVALID;
  }
  // The source, read whole, must be addressable with the primitives' ints too.
  const uint64_t srcBytes = srcLayout == Layout::kPlanar ? (s + s / 2) * height : s * height;
  if (srcBytes > kMaxBytes) return OrvImage::ORV_IMG_INVALID;
  if (RequiredSize(output, width, height, dstStep) > kMaxBytes) return OrvImage::ORV_IMG_INVALID;
  return OrvImage::ORV_IMG_OK;
}

Frame MakeFrame(unsigned char* src, unsigned char* dst, unsigned long width, unsigned long height,
                int srcStep, int dstStep, Output output) {
  Frame f;
  f.src = src;
  f.dst = dst;
  f.width = static_cast<int>(width);
  f.height = static_cast<int>(height);
  f.srcStep = static_cast<int>(StepMagnitude(srcStep));
  f.dstStep = static_cast<int>(StepMagnitude(dstStep));
  f.srcSign = srcStep < 0 ? -1 : 1;
  f.dstSign = dstStep < 0 ? -1 : 1;
  f.flip = f.srcSign != f.dstSign;
  f.required = static_cast<uint32_t>(RequiredSize(output, width, height, dstStep));
  return f;
}

// ---- Work memory ------------------------------------------------------------

IppPicture::~IppPicture() { ipp::ippiFree(data_); }

void IppPicture::Allocate8u(int channels, int width, int height) {
  ipp::ippiFree(data_);
  data_ = nullptr;
  switch (channels) {
    case 1:
      data_ = ipp::ippiMalloc_8u_C1(width, height, &step_);
      break;
    case 3:
      data_ = ipp::ippiMalloc_8u_C3(width, height, &step_);
      break;
    default:
      data_ = ipp::ippiMalloc_8u_C4(width, height, &step_);
      break;
  }
  if (data_ == nullptr) Raise(OrvImage::ORV_IMG_NO_MEMORY);
}

void IppPicture::Allocate32fC3(int width, int height) {
  ipp::ippiFree(data_);
  data_ = ipp::ippiMalloc_32f_C3(width, height, &step_);
  if (data_ == nullptr) Raise(OrvImage::ORV_IMG_NO_MEMORY);
}

WorkPlanes::WorkPlanes(int count, int lineBytes, int height) {
  // Lines padded to 16 bytes, so every line of every plane stays aligned.
  const int64_t step = (std::max(lineBytes, 1) + 15) & ~static_cast<int64_t>(15);
  const int64_t planeBytes = step * std::max(height, 1);
  const int64_t total = planeBytes * count;
  if (total > static_cast<int64_t>(kMaxBytes)) Raise(OrvImage::ORV_IMG_NO_MEMORY);
  void* block = nullptr;
  if (!memory_.Initialize(&block, static_cast<unsigned int>(total), 16) || block == nullptr) {
    Raise(OrvImage::ORV_IMG_NO_MEMORY);
  }
  base_ = static_cast<Ipp8u*>(block);
  step_ = static_cast<int>(step);
  planeBytes_ = planeBytes;
}

// ---- Primitive calls ---------------------------------------------------------

void MirrorInPlace(int channels, Ipp8u* picture, int step, IppiSize size) {
  if (IsEmpty(size)) return;
  switch (channels) {
    case 1:
      CheckPrimitive(ipp::ippiMirror_8u_C1IR(picture, step, size, ipp::ippAxsHorizontal));
      break;
    case 3:
      CheckPrimitive(ipp::ippiMirror_8u_C3IR(picture, step, size, ipp::ippAxsHorizontal));
      break;
    default:
      CheckPrimitive(ipp::ippiMirror_8u_C4IR(picture, step, size, ipp::ippAxsHorizontal));
      break;
  }
}

void FillPlane(Ipp8u value, Ipp8u* plane, int step, IppiSize size) {
  if (IsEmpty(size)) return;
  CheckPrimitive(ipp::ippiSet_8u_C1R(value, plane, step, size));
}

// ---- Shared blocks -----------------------------------------------------------

Planes420 Planar420(Ipp8u* base, int yStep, int height) {
  Planes420 p;
  p.yStep = yStep;
  p.cStep = yStep / 2;
  p.y = base;
  p.c1 = base + static_cast<int64_t>(yStep) * height;
  p.c2 = p.c1 + static_cast<int64_t>(p.cStep) * (height / 2);
  return p;
}

int FieldRunLines420(int height, int run) {
  // The primitives never reach chroma beyond (W/2) x (lines/2) of a run, so
  // both runs cover H/2 lines; an odd height leaves its last line out.
  (void)run;
  return height / 2;
}

void AlphaSet(const Frame& frame) {
  FillPlane(255, AlphaPlane(frame.dst, frame.dstStep, frame.height), AlphaStep(frame.width),
            {frame.width, frame.height});
}

void JoinPlanes4(Ipp8u* const planes[4], int planeStep, Ipp8u* dst, int dstStep, IppiSize size) {
  if (IsEmpty(size)) return;
  const Ipp8u* const source[4] = {planes[0], planes[1], planes[2], planes[3]};
  CheckPrimitive(ipp::ippiCopy_8u_P4C4R(source, planeStep, dst, dstStep, size));
}

void FillEdges(Ipp8u* plane, int step, int coveredWidth, int coveredHeight, int width, int height) {
  for (int y = 0; y < std::min(coveredHeight, height); ++y) {
    Ipp8u* line = plane + static_cast<int64_t>(y) * step;
    const Ipp8u value = coveredWidth > 0 ? line[coveredWidth - 1] : 128;
    for (int x = std::max(coveredWidth, 0); x < width; ++x) line[x] = value;
  }
  for (int y = std::max(coveredHeight, 0); y < height; ++y) {
    Ipp8u* line = plane + static_cast<int64_t>(y) * step;
    if (coveredHeight > 0) {
      std::memcpy(line, plane + static_cast<int64_t>(coveredHeight - 1) * step, width);
    } else {
      std::memset(line, 128, width);
    }
  }
}

namespace {

// Nearest-neighbour doubling of a chroma plane: each sample fills the two (or
// 2 x 2) pixels it belongs to. The centre of the source region is mapped onto
// the centre of a destination region of exactly factor x source samples, so
// no sample is shifted by half a pixel whatever the parity of the sizes. The
// pixels beyond that region (an odd width or height) repeat the last ones.
void DoubleChroma(const Ipp8u* src, IppiSize srcSize, int srcStep, Ipp8u* dst, int dstStep,
                  IppiSize dstSize, int xFactor, int yFactor) {
  const IppiSize covered = {srcSize.width * xFactor, srcSize.height * yFactor};
  if (!IsEmpty(srcSize)) {
    const IppiRect roi = {0, 0, srcSize.width, srcSize.height};
    CheckPrimitive(ipp::ippiResizeCenter_8u_C1R(src, srcSize, srcStep, roi, dst, dstStep, covered,
                                                xFactor, yFactor, srcSize.width / 2.0,
                                                srcSize.height / 2.0, ipp::IPPI_INTER_NN));
    FillEdges(dst, dstStep, covered.width, covered.height, dstSize.width, dstSize.height);
  } else {
    FillEdges(dst, dstStep, 0, 0, dstSize.width, dstSize.height);
  }
}

}  // namespace

void WidenChroma422(const Ipp8u* half, int halfStep, int width, int height, Ipp8u* out,
                    int outStep) {
  DoubleChroma(half, {width / 2, height}, halfStep, out, outStep, {width, height}, 2, 1);
}

void ExpandHorizontal(const Ipp8u* yuy2, int yuy2Step, int width, int height,
                      Ipp8u* const planes[3], int step) {
  const int half = width / 2;
  const IppiSize size = {width, height};
  WorkPlanes chroma(2, half, height);
  Ipp8u* split[3] = {planes[0], chroma.plane(0), chroma.plane(1)};
  int steps[3] = {step, chroma.step(), chroma.step()};
  CheckPrimitive(ipp::ippiYCbCr422_8u_C2P3R(yuy2, yuy2Step, split, steps, size));
  for (int c = 0; c < 2; ++c) {
    WidenChroma422(chroma.plane(c), chroma.step(), width, height, planes[1 + c], step);
  }
}

void ExpandChroma420(const Ipp8u* chroma, int chromaStep, Ipp8u* out, int outStep, int width,
                     int height, bool progressive) {
  const int half = width / 2;
  if (progressive) {
    DoubleChroma(chroma, {half, height / 2}, chromaStep, out, outStep, {width, height}, 2, 2);
    return;
  }
  // One call per field, so that chroma of one field never reaches the lines
  // of the other. An odd height leaves its last line to the first field.
  for (int run = 0; run < 2; ++run) {
    const int lines = (height - run + 1) / 2;
    DoubleChroma(chroma + run * chromaStep, {half, height / 4}, 2 * chromaStep,
                 out + static_cast<int64_t>(run) * outStep, 2 * outStep, {width, lines}, 2, 2);
  }
}

void ShiftDownPlane(Ipp8u* plane, int step, IppiSize size) {
  if (IsEmpty(size)) return;
  CheckPrimitive(ipp::ippiSubC_8u_C1IRSfs(16, plane, step, size, 0));
}

}  // namespace image
}  // namespace orv
