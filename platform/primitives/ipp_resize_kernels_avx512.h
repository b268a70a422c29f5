// Pieces shared by the AVX-512 resize passes. Included only by files built with
// the AVX-512 flags.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_KERNELS_AVX512_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_KERNELS_AVX512_H_

#include <immintrin.h>

#include <cstdint>

namespace orv {
namespace ipp {
namespace avx512 {

// The mask of the first n of 64, 32 or 16 lanes (n may be negative or above).
inline uint64_t First64(int n) {
  return n <= 0 ? 0 : (n >= 64 ? ~uint64_t{0} : (uint64_t{1} << n) - 1);
}
inline __mmask32 First32(int n) { return static_cast<__mmask32>(First64(n) & 0xFFFFFFFFu); }
inline __mmask16 First16(int n) { return static_cast<__mmask16>(First64(n) & 0xFFFF); }

// acc + madd(x, w), fused where the processor has the dot-product instruction.
struct MaddAdd {
  static __m512i MulAdd(__m512i acc, __m512i x, __m512i w) {
    return _mm512_add_epi32(acc, _mm512_madd_epi16(x, w));
  }
};
struct DotAdd {
  __attribute__((target("avx512vnni"))) static __m512i MulAdd(__m512i acc, __m512i x, __m512i w) {
    return _mm512_dpwssd_epi32(acc, x, w);
  }
};

// The vertical pass with each body of Avx512ResizeBody (the later ones need a
// processor that has their instructions; ipp_resize_vertical_avx512.cpp).
void FilterVerticalBase(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                        int count);
void FilterVerticalDot(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                       int count);
void FilterVerticalPicked(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                          int count);

// The 3- and 4-channel horizontal passes (ipp_resize_horizontal_avx512.cpp).
void FilterHorizontalC3(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width);
void FilterHorizontalC4(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width);

// The one-channel horizontal pass (ipp_resize_horizontal_c1_avx512.cpp), with
// the madd and with the dot product (which needs a processor that has it).
void FilterHorizontalC1(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width);
void FilterHorizontalC1Dot(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                           uint8_t* dst, int width);

}  // namespace avx512
}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_KERNELS_AVX512_H_
