// Taking a field out, putting two fields together, and moving a picture by
// one line so that its fields change places.
#include <OrvImage.h>

#include "image/field_lines.h"
#include "image/picture_limits.h"

namespace {

using orv::image::BoundedLines;
using orv::image::StepMagnitude;

bool Admit(const unsigned char* a, const unsigned char* b, unsigned long width,
           unsigned long height, int step) {
  return a != nullptr && b != nullptr && orv::image::AreSidesValid(width, height) &&
         step != INT32_MIN;
}

// The first memory line of the field of the display's first line (`top`) or
// of the other one.
uint64_t FirstFieldLine(bool top, int step) { return (step >= 1) == top ? 0 : 1; }

unsigned long GetField(bool planar, unsigned char* src, unsigned char* dst, unsigned long dstSize,
                       unsigned long width, unsigned long height, int step, bool top) {
  if (!Admit(src, dst, width, height, step)) return OrvImage::ORV_IMG_INVALID;
  const uint64_t line = StepMagnitude(step);
  const BoundedLines out(dst, dstSize);
  const uint64_t first = FirstFieldLine(top, step);
  uint64_t written = 0;
  for (uint64_t y = first; y < height; y += 2, ++written) {
    out.Move(written * line, src + y * line, line);
  }
  if (planar) {
    // Both chroma planes as one block of lines half as long, every second one.
    const uint64_t chromaLine = line / 2;
    const unsigned char* chroma = src + line * height + (first * line) / 2;
    const uint64_t base = (height * line) / 2;
    for (uint64_t k = 0; k < written; ++k) {
      out.Move(base + k * chromaLine, chroma + 2 * k * chromaLine, chromaLine);
    }
  }
  return OrvImage::ORV_IMG_OK;
}

unsigned long MakeFrame(bool planar, unsigned char* top, unsigned char* bottom, unsigned char* dst,
                        unsigned long dstSize, unsigned long width, unsigned long height,
                        int step) {
  if (!Admit(top, dst, width, height, step) || bottom == nullptr) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const uint64_t line = StepMagnitude(step);
  const unsigned char* p = step >= 0 ? top : bottom;
  const unsigned char* q = step >= 0 ? bottom : top;
  const BoundedLines out(dst, dstSize);
  const uint64_t rounds = height == 0 ? 0 : (height - 1) / 2 + 1;
  // A last line of the second picture has no place in an odd height: it is left out.
  auto interleave = [&](uint64_t dstBase, uint64_t srcBase, uint64_t bytes, uint64_t lines) {
    for (uint64_t r = 0; r < rounds; ++r) {
      if (2 * r < lines) out.Move(dstBase + 2 * r * bytes, p + srcBase + r * bytes, bytes);
      if (2 * r + 1 < lines)
        out.Move(dstBase + (2 * r + 1) * bytes, q + srcBase + r * bytes, bytes);
    }
  };
  interleave(0, 0, line, height);
  if (planar) interleave(line * height, rounds * line, line / 2, height);
  return OrvImage::ORV_IMG_OK;
}

// Moves one plane a line down (`down`) or up. Line 0 (or the last line), which
// has no source line, gets the line two below (above) it in the result: a line
// of the same field.
void ShiftPlane(const BoundedLines& out, uint64_t outBase, const unsigned char* src, uint64_t line,
                uint64_t lines, bool down) {
  if (lines == 0) return;
  if (down) {
    for (uint64_t n = lines - 1; n >= 1; --n)
      out.Move(outBase + n * line, src + (n - 1) * line, line);
    if (lines >= 3) out.Move(outBase, out.at(outBase + 2 * line), line);
  } else {
    for (uint64_t n = 0; n + 1 < lines; ++n)
      out.Move(outBase + n * line, src + (n + 1) * line, line);
    if (lines >= 3)
      out.Move(outBase + (lines - 1) * line, out.at(outBase + (lines - 3) * line), line);
  }
}

unsigned long FieldSwap(bool planar, unsigned char* src, unsigned char* dst, unsigned long dstSize,
                        unsigned long width, unsigned long height, int step,
                        OrvImage::SCAN_TYPE scan) {
  if (!Admit(src, dst, width, height, step)) return OrvImage::ORV_IMG_INVALID;
  const uint64_t line = StepMagnitude(step);
  const BoundedLines out(dst, dstSize);
  if (scan == OrvImage::SCAN_PROGRESSIVE) {
    const uint64_t bytes = planar ? (line + line / 2) * height : line * height;
    if (src != dst) out.Move(0, src, bytes);
    return OrvImage::ORV_IMG_OK;
  }
  if (scan != OrvImage::SCAN_TOP_FIELD_FIRST && scan != OrvImage::SCAN_BOTTOM_FIELD_FIRST) {
    return OrvImage::ORV_IMG_INVALID;
  }
  const bool down = (scan == OrvImage::SCAN_TOP_FIELD_FIRST) == (step > 0);
  ShiftPlane(out, 0, src, line, height, down);
  if (planar) {
    const uint64_t chromaLine = line / 2;
    const uint64_t chromaLines = height / 2;
    const uint64_t cb = line * height;
    const uint64_t cr = cb + (chromaLine * height) / 2;
    ShiftPlane(out, cb, src + cb, chromaLine, chromaLines, down);
    ShiftPlane(out, cr, src + cr, chromaLine, chromaLines, down);
  }
  return OrvImage::ORV_IMG_OK;
}

}  // namespace

unsigned long OrvImage::GetFieldYUV420(unsigned char* src, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step, bool top) {
  return GetField(true, src, dst, dstSize, width, height, step, top);
}
unsigned long OrvImage::GetFieldYUY2(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                     unsigned long width, unsigned long height, int step,
                                     bool top) {
  return GetField(false, src, dst, dstSize, width, height, step, top);
}
unsigned long OrvImage::GetFieldRGB24(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      bool top) {
  return GetField(false, src, dst, dstSize, width, height, step, top);
}
unsigned long OrvImage::GetFieldRGB32(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      bool top) {
  return GetField(false, src, dst, dstSize, width, height, step, top);
}

unsigned long OrvImage::MakeFrameYUV420(unsigned char* topFieldPicture,
                                        unsigned char* bottomFieldPicture, unsigned char* dst,
                                        unsigned long dstSize, unsigned long width,
                                        unsigned long height, int step) {
  return MakeFrame(true, topFieldPicture, bottomFieldPicture, dst, dstSize, width, height, step);
}
unsigned long OrvImage::MakeFrameYUY2(unsigned char* topFieldPicture,
                                      unsigned char* bottomFieldPicture, unsigned char* dst,
                                      unsigned long dstSize, unsigned long width,
                                      unsigned long height, int step) {
  return MakeFrame(false, topFieldPicture, bottomFieldPicture, dst, dstSize, width, height, step);
}
unsigned long OrvImage::MakeFrameRGB24(unsigned char* topFieldPicture,
                                       unsigned char* bottomFieldPicture, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step) {
  return MakeFrame(false, topFieldPicture, bottomFieldPicture, dst, dstSize, width, height, step);
}
unsigned long OrvImage::MakeFrameRGB32(unsigned char* topFieldPicture,
                                       unsigned char* bottomFieldPicture, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step) {
  return MakeFrame(false, topFieldPicture, bottomFieldPicture, dst, dstSize, width, height, step);
}

unsigned long OrvImage::FieldSwapYUV420(unsigned char* src, unsigned char* dst,
                                        unsigned long dstSize, unsigned long width,
                                        unsigned long height, int step, SCAN_TYPE scan) {
  return FieldSwap(true, src, dst, dstSize, width, height, step, scan);
}
unsigned long OrvImage::FieldSwapYUY2(unsigned char* src, unsigned char* dst, unsigned long dstSize,
                                      unsigned long width, unsigned long height, int step,
                                      SCAN_TYPE scan) {
  return FieldSwap(false, src, dst, dstSize, width, height, step, scan);
}
unsigned long OrvImage::FieldSwapRGB24(unsigned char* src, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step, SCAN_TYPE scan) {
  return FieldSwap(false, src, dst, dstSize, width, height, step, scan);
}
unsigned long OrvImage::FieldSwapRGB32(unsigned char* src, unsigned char* dst,
                                       unsigned long dstSize, unsigned long width,
                                       unsigned long height, int step, SCAN_TYPE scan) {
  return FieldSwap(false, src, dst, dstSize, width, height, step, scan);
}
