// AVX-512 forms of the resize passes: the vertical pass on 32 samples at a
// time, and the horizontal pass of 4-channel lines with one destination pixel
// in each 128-bit quarter of a register. Both compute the plain sums term for
// term and round, shift and saturate alike, so the bytes are the plain bytes.
// Reads past the end stay inside the room the callers keep (see
// ipp_resize_kernels_avx2.cpp).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

inline int32_t Pair(int16_t a, int16_t b) {
  return static_cast<int32_t>((static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16) |
                              static_cast<uint16_t>(a));
}

void FilterVertical(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                    int count) {
  const __m512i rnd = _mm512_set1_epi32(128);
  int i = 0;
  for (; i + 32 <= count; i += 32) {
    __m512i lo = rnd, hi = rnd;
    int t = 0;
    for (; t + 2 <= taps; t += 2) {
      const __m512i w = _mm512_set1_epi32(Pair(coef[t], coef[t + 1]));
      const __m512i p =
          _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[t] + i)));
      const __m512i q = _mm512_cvtepu8_epi16(
          _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[t + 1] + i)));
      lo = _mm512_add_epi32(lo, _mm512_madd_epi16(_mm512_unpacklo_epi16(p, q), w));
      hi = _mm512_add_epi32(hi, _mm512_madd_epi16(_mm512_unpackhi_epi16(p, q), w));
    }
    if (t < taps) {
      const __m512i w = _mm512_set1_epi32(Pair(coef[t], 0));
      const __m512i p =
          _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[t] + i)));
      const __m512i z = _mm512_setzero_si512();
      lo = _mm512_add_epi32(lo, _mm512_madd_epi16(_mm512_unpacklo_epi16(p, z), w));
      hi = _mm512_add_epi32(hi, _mm512_madd_epi16(_mm512_unpackhi_epi16(p, z), w));
    }
    // The in-quarter unpack and pack undo each other: lanes come back in order.
    _mm512_storeu_si512(out + i,
                        _mm512_packs_epi32(_mm512_srai_epi32(lo, 8), _mm512_srai_epi32(hi, 8)));
  }
  for (; i < count; ++i) {
    int sum = 0;
    for (int t = 0; t < taps; ++t) sum += rows[t][i] * coef[t];
    out[i] = static_cast<int16_t>((sum + 128) >> 8);
  }
}

inline int32_t Ld32(const int16_t* p) {
  int32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

// Weight pairs (c[t], c[t + 1]) of four pixels whose groups of `taps` weights
// follow each other from c, pair of pixel q repeated over quarter q. Up to 10
// taps one masked load reaches all four groups and one word permute places
// them; wider groups take one broadcast per pixel.
struct QuarterWeights {
  int taps;
  __mmask32 mask;
  __m512i index;
  explicit QuarterWeights(int n) : taps(n), mask(0), index(_mm512_setzero_si512()) {
    if (n > 10) return;
    alignas(64) int16_t idx[32];
    for (int q = 0; q < 4; ++q)
      for (int k = 0; k < 4; ++k) {
        idx[q * 8 + 2 * k] = static_cast<int16_t>(q * n);
        idx[q * 8 + 2 * k + 1] = static_cast<int16_t>(q * n + 1);
      }
    index = _mm512_load_si512(idx);
    mask = static_cast<__mmask32>((uint64_t{1} << (3 * n + 2)) - 1);
  }
  __m512i At(const int16_t* c) const {
    if (taps <= 10) return _mm512_permutexvar_epi16(index, _mm512_maskz_loadu_epi16(mask, c));
    __m512i w = _mm512_castsi128_si512(_mm_set1_epi32(Ld32(c)));
    w = _mm512_inserti32x4(w, _mm_set1_epi32(Ld32(c + taps)), 1);
    w = _mm512_inserti32x4(w, _mm_set1_epi32(Ld32(c + 2 * taps)), 2);
    return _mm512_inserti32x4(w, _mm_set1_epi32(Ld32(c + 3 * taps)), 3);
  }
};

// Channel sums of destination pixels x .. x+3, pixel x + q in quarter q.
inline __m512i Sums4(const int16_t* src, const int32_t* start, const int16_t* coef,
                     const QuarterWeights& weights, int x) {
  const int taps = weights.taps;
  const __m512i pairing =
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
  const int16_t* s[4];
  for (int q = 0; q < 4; ++q) s[q] = src + static_cast<ptrdiff_t>(start[x + q]) * 4;
  const int16_t* c = coef + static_cast<ptrdiff_t>(x) * taps;
  __m512i acc = _mm512_set1_epi32(1 << 19);
  for (int t = 0; t < taps; t += 2) {
    __m512i v =
        _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s[0] + 4 * t)));
    v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[1] + 4 * t)), 1);
    v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[2] + 4 * t)), 2);
    v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[3] + 4 * t)), 3);
    __m512i w = weights.At(c + t);
    // The odd tap at the end weighs only its first pixel.
    if (t + 1 == taps) w = _mm512_and_si512(w, _mm512_set1_epi32(0xFFFF));
    acc = _mm512_add_epi32(acc, _mm512_madd_epi16(_mm512_shuffle_epi8(v, pairing), w));
  }
  return _mm512_srai_epi32(acc, 20);
}

void FilterHorizontalC4(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  const QuarterWeights weights(taps);
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    // Words [x, x+4 | x+1, x+5 | x+2, x+6 | x+3, x+7]; bytes likewise, twice.
    const __m512i w = _mm512_packs_epi32(Sums4(src, start, coef, weights, x),
                                         Sums4(src, start, coef, weights, x + 4));
    const __m512i b = _mm512_packus_epi16(w, w);
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 0, 0, 0, 0, 0, 0, 0, 0);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + 4 * x),
                        _mm512_castsi512_si256(_mm512_permutexvar_epi32(order, b)));
  }
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * taps, taps,
                            dst + 4 * x, width - x);
}

}  // namespace

void InstallAvx512ResizeKernels(Kernels* k) {
  k->filterVertical = FilterVertical;
  k->filterHorizontalC4 = FilterHorizontalC4;
}

}  // namespace ipp
}  // namespace orv
