// Row kernels of the 4:2:0 scaler. The plain forms define the bytes; every
// processor form gives the same bytes for every input. Walking planes, steps
// and tables is the caller's business (vrscl.cpp).
#ifndef ORV_PLATFORM_SCALER_SCALER_KERNELS_H_
#define ORV_PLATFORM_SCALER_SCALER_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace vrscl {

// out[x] = sat16((sum_k coefs[k] x src[k * step + x] + 128) >> 8), x < width.
using VerticalFn = void (*)(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs,
                            int16_t* out, int width);
// out[i] = sat8((sum_k coefs[i * stride + k] x in[start[i] + k] + 2^19) >> 20),
// k < stride, i < width. `in` is readable up to start[i] + stride - 1.
using HorizontalFn = void (*)(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                              const int16_t* coefs, int stride);
// out[x] = sat8((in[x] + 32) >> 6): the horizontal pass of an identity axis.
using NarrowFn = void (*)(const int16_t* in, uint8_t* out, int width);

struct Kernels {
  SimdLevel level;
  VerticalFn vertical;
  HorizontalFn horizontal;
  NarrowFn narrow;
};

// The forms for `level`, or for the highest level at or below it that this
// build and processor have.
Kernels SelectKernels(SimdLevel level);

void VerticalPlain(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                   int width);
void HorizontalPlain(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                     const int16_t* coefs, int stride);
void NarrowPlain(const int16_t* in, uint8_t* out, int width);

#if ORV_X86_SIMD
void VerticalSse2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width);
void HorizontalSse2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, int stride);
void NarrowSse2(const int16_t* in, uint8_t* out, int width);
void VerticalAvx2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width);
void HorizontalAvx2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, int stride);
void NarrowAvx2(const int16_t* in, uint8_t* out, int width);
void VerticalAvx512(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs,
                    int16_t* out, int width);
#endif

}  // namespace vrscl
}  // namespace orv

#endif  // ORV_PLATFORM_SCALER_SCALER_KERNELS_H_
