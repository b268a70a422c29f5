// A cheap measure of how far two pictures differ: the sum of absolute luma
// differences at one pixel in eight along a line. The pictures are dense and
// top-down; samples run on to the end of the aligned line.
#include <OrvImage.h>

#include <cstdint>
#include <cstdlib>

#include "image/picture_limits.h"

namespace {

using orv::image::AlignedLine;

bool Admit(const unsigned char* a, const unsigned char* b, unsigned long width,
           unsigned long height) {
  return a != nullptr && b != nullptr && orv::image::AreSidesValid(width, height);
}

// Luma of a B G R sample, with the weights in buffer order.
inline int RgbLuma(const unsigned char* p) { return (3 * p[0] + 6 * p[1] + p[2]) / 10; }

// Every 8th line of `lineBytes`, samples every `sampleStep` bytes below it.
template <typename Value>
unsigned long SampledDelta(const unsigned char* a, const unsigned char* b, uint64_t lineBytes,
                           unsigned long height, uint64_t sampleStep, Value value) {
  uint64_t sum = 0;
  for (uint64_t y = 0; y < height; y += 8) {
    const unsigned char* la = a + y * lineBytes;
    const unsigned char* lb = b + y * lineBytes;
    for (uint64_t x = 0; x < lineBytes; x += sampleStep) {
      sum += static_cast<uint64_t>(std::abs(value(la + x) - value(lb + x)));
    }
  }
  return static_cast<unsigned long>(sum);
}

}  // namespace

unsigned long OrvImage::GetDeltaFromYUV420(unsigned char* pictureA, unsigned char* pictureB,
                                           unsigned long width, unsigned long height) {
  if (!Admit(pictureA, pictureB, width, height) || height == 0) return 0;
  // The first (height - 1) / 8 + 1 lines, one after the other: the top eighth.
  uint64_t sum = 0;
  const uint64_t lines = (height - 1) / 8 + 1;
  for (uint64_t y = 0; y < lines; ++y) {
    for (uint64_t x = 0; x < width; x += 8) {
      const uint64_t i = y * width + x;
      sum += static_cast<uint64_t>(std::abs(pictureA[i] - pictureB[i]));
    }
  }
  return static_cast<unsigned long>(sum);
}

unsigned long OrvImage::GetDeltaFromYUY2(unsigned char* pictureA, unsigned char* pictureB,
                                         unsigned long width, unsigned long height) {
  if (!Admit(pictureA, pictureB, width, height)) return 0;
  return SampledDelta(pictureA, pictureB, AlignedLine(16, width), height, 16,
                      [](const unsigned char* p) { return static_cast<int>(*p); });
}

unsigned long OrvImage::GetDeltaFromRGB24(unsigned char* pictureA, unsigned char* pictureB,
                                          unsigned long width, unsigned long height) {
  if (!Admit(pictureA, pictureB, width, height)) return 0;
  return SampledDelta(pictureA, pictureB, AlignedLine(24, width), height, 24, RgbLuma);
}

unsigned long OrvImage::GetDeltaFromRGB32(unsigned char* pictureA, unsigned char* pictureB,
                                          unsigned long width, unsigned long height) {
  if (!Admit(pictureA, pictureB, width, height)) return 0;
  return SampledDelta(pictureA, pictureB, 4ull * width, height, 32, RgbLuma);
}
