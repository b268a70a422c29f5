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
// `paired` is PairCoefs(coefs, width, stride); the plain and SSE2 forms
// ignore it.
using HorizontalFn = void (*)(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                              const int16_t* coefs, const int16_t* paired, int stride);
// out[x] = sat8((in[x] + 32) >> 6): the horizontal pass of an identity axis.
using NarrowFn = void (*)(const int16_t* in, uint8_t* out, int width);

// The two passes of the horizontal-first order (enlargements), with the same
// shifts: the first pass rounds to six fraction bits, the second to 8 bits.
// out[i] = sat16((sum_k coefs[i * stride + k] x in[start[i] + k] + 128) >> 8).
using HorizontalBytesFn = void (*)(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                                   const int16_t* coefs, const int16_t* paired, int stride);
// out[x] = sat8((sum_k coefs[k] x rows[k][x] + 2^19) >> 20), x < width.
using VerticalWordsFn = void (*)(const int16_t* const* rows, int taps, const int16_t* coefs,
                                 uint8_t* out, int width);

struct Kernels {
  SimdLevel level;
  VerticalFn vertical;
  HorizontalFn horizontal;
  NarrowFn narrow;
  HorizontalBytesFn horizontalBytes;
  VerticalWordsFn verticalWords;
};

// The forms for `level`, or for the highest level at or below it that this
// build and processor have.
Kernels SelectKernels(SimdLevel level);

void VerticalPlain(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                   int width);
void HorizontalPlain(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                     const int16_t* coefs, const int16_t* paired, int stride);
void NarrowPlain(const int16_t* in, uint8_t* out, int width);
void HorizontalBytesPlain(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                          const int16_t* coefs, const int16_t* paired, int stride);
void VerticalWordsPlain(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                        int width);
// The plain form on columns x0 .. width - 1 only: the tails of the other forms.
void VerticalWordsPlainFrom(const int16_t* const* rows, int taps, const int16_t* coefs,
                            uint8_t* out, int x0, int width);

#if ORV_X86_SIMD
void VerticalSse2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width);
void HorizontalSse2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, const int16_t* paired, int stride);
void NarrowSse2(const int16_t* in, uint8_t* out, int width);
void HorizontalBytesSse2(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                         const int16_t* coefs, const int16_t* paired, int stride);
void VerticalWordsSse2(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                       int width);
void VerticalAvx2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width);
void HorizontalAvx2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, const int16_t* paired, int stride);
void NarrowAvx2(const int16_t* in, uint8_t* out, int width);
void HorizontalBytesAvx2(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                         const int16_t* coefs, const int16_t* paired, int stride);
void VerticalWordsAvx2(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                       int width);
void VerticalAvx512(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs,
                    int16_t* out, int width);
void VerticalWordsAvx512(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                         int width);
#endif

}  // namespace vrscl
}  // namespace orv

#endif  // ORV_PLATFORM_SCALER_SCALER_KERNELS_H_
