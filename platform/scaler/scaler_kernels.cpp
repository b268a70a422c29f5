#include "platform/scaler/scaler_kernels.h"

#include <algorithm>

#include "platform/scaler/scaler_filter.h"

namespace orv {
namespace vrscl {

void VerticalPlain(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                   int width) {
  for (int x = 0; x < width; ++x) {
    int32_t acc = 0;
    const uint8_t* p = src + x;
    for (int k = 0; k < taps; ++k) acc += coefs[k] * static_cast<int32_t>(p[k * step]);
    acc = (acc + (1 << (kVerticalShift - 1))) >> kVerticalShift;
    out[x] = static_cast<int16_t>(std::min(std::max(acc, -32768), 32767));
  }
}

void HorizontalPlain(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                     const int16_t* coefs, const int16_t* /*paired*/, int stride) {
  for (int i = 0; i < width; ++i) {
    const int16_t* p = in + start[i];
    const int16_t* c = coefs + static_cast<ptrdiff_t>(i) * stride;
    int32_t acc = 0;
    for (int k = 0; k < stride; ++k) acc += c[k] * static_cast<int32_t>(p[k]);
    acc = (acc + (1 << (kHorizontalShift - 1))) >> kHorizontalShift;
    out[i] = static_cast<uint8_t>(std::min(std::max(acc, 0), 255));
  }
}

void NarrowPlain(const int16_t* in, uint8_t* out, int width) {
  for (int x = 0; x < width; ++x) {
    const int32_t v = (in[x] + (1 << (kWorkBits - 1))) >> kWorkBits;
    out[x] = static_cast<uint8_t>(std::min(std::max(v, 0), 255));
  }
}

void HorizontalBytesPlain(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                          const int16_t* coefs, const int16_t* /*paired*/, int stride) {
  for (int i = 0; i < width; ++i) {
    const uint8_t* p = in + start[i];
    const int16_t* c = coefs + static_cast<ptrdiff_t>(i) * stride;
    int32_t acc = 0;
    for (int k = 0; k < stride; ++k) acc += c[k] * static_cast<int32_t>(p[k]);
    acc = (acc + (1 << (kVerticalShift - 1))) >> kVerticalShift;
    out[i] = static_cast<int16_t>(std::min(std::max(acc, -32768), 32767));
  }
}

void VerticalWordsPlain(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                        int width) {
  VerticalWordsPlainFrom(rows, taps, coefs, out, 0, width);
}

void VerticalWordsPlainFrom(const int16_t* const* rows, int taps, const int16_t* coefs,
                            uint8_t* out, int x0, int width) {
  for (int x = x0; x < width; ++x) {
    int32_t acc = 0;
    for (int k = 0; k < taps; ++k) acc += coefs[k] * static_cast<int32_t>(rows[k][x]);
    acc = (acc + (1 << (kHorizontalShift - 1))) >> kHorizontalShift;
    out[x] = static_cast<uint8_t>(std::min(std::max(acc, 0), 255));
  }
}

Kernels SelectKernels(SimdLevel level) {
  level = std::min(level, DetectSimdLevel());
#if ORV_X86_SIMD
  // The AVX-512 form widens the vertical passes; the horizontal passes gain
  // nothing from wider vectors (they are bound by their gathers) and stay AVX2.
  if (level >= SimdLevel::kAvx512)
    return {SimdLevel::kAvx512, VerticalAvx512,      HorizontalAvx2,
            NarrowAvx2,         HorizontalBytesAvx2, VerticalWordsAvx512};
  if (level >= SimdLevel::kAvx2)
    return {SimdLevel::kAvx2, VerticalAvx2,        HorizontalAvx2,
            NarrowAvx2,       HorizontalBytesAvx2, VerticalWordsAvx2};
  if (level >= SimdLevel::kSse2)
    return {SimdLevel::kSse2, VerticalSse2,        HorizontalSse2,
            NarrowSse2,       HorizontalBytesSse2, VerticalWordsSse2};
#endif
  return {SimdLevel::kPlain, VerticalPlain,        HorizontalPlain,
          NarrowPlain,       HorizontalBytesPlain, VerticalWordsPlain};
}

}  // namespace vrscl
}  // namespace orv
