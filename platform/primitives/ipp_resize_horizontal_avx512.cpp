// AVX-512 forms of the horizontal resize pass for 3- and 4-channel lines,
// four destination pixels a register, one in each 128-bit quarter. Each
// computes the plain sums term for term and rounds, shifts and saturates
// alike, so the bytes are the plain bytes. Reads past the last tap stay
// inside the room the callers keep (see ipp_resize_kernels_avx2.cpp).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_kernels_avx512.h"

namespace orv {
namespace ipp {
namespace avx512 {
namespace {

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

// Four pixels' channel sums into 16 bytes in order: words [x, x+4 | x+1, x+5
// | x+2, x+6 | x+3, x+7], bytes likewise twice, then one dword permute.
inline void Store8(uint8_t* dst, __m512i s0123, __m512i s4567) {
  const __m512i w = _mm512_packs_epi32(s0123, s4567);
  const __m512i b = _mm512_packus_epi16(w, w);
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 0, 0, 0, 0, 0, 0, 0, 0);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst),
                      _mm512_castsi512_si256(_mm512_permutexvar_epi32(order, b)));
}

// The same with the tap count known (at most four): the four pixels' weight
// groups (4T words) come in one whole load, which ends inside the plan's
// zeroed room even for the last four pixels, and the loops unroll.
template <int T>
struct QuarterSums {
  __m512i index[(T + 1) / 2];
  QuarterSums() {
    for (int p = 0; p < (T + 1) / 2; ++p) {
      alignas(64) int16_t idx[32];
      for (int q = 0; q < 4; ++q)
        for (int k = 0; k < 4; ++k) {
          idx[q * 8 + 2 * k] = static_cast<int16_t>(q * T + 2 * p);
          // An odd last tap pairs with a zero weight (word 31 is zeroed below).
          idx[q * 8 + 2 * k + 1] = static_cast<int16_t>(2 * p + 1 < T ? q * T + 2 * p + 1 : 31);
        }
      index[p] = _mm512_load_si512(idx);
    }
  }
  __m512i At(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const __m512i pairing =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    const int16_t* s[4];
    for (int q = 0; q < 4; ++q) s[q] = src + static_cast<ptrdiff_t>(start[x + q]) * 4;
    // Words 0 .. 15 of the groups; 16 .. 31 zero.
    const __m512i c = _mm512_zextsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(coef + static_cast<ptrdiff_t>(x) * T)));
    __m512i acc = _mm512_set1_epi32(1 << 19);
    for (int p = 0; p < (T + 1) / 2; ++p) {
      const int t = 2 * p;
      __m512i v =
          _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s[0] + 4 * t)));
      v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[1] + 4 * t)), 1);
      v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[2] + 4 * t)), 2);
      v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[3] + 4 * t)), 3);
      acc = _mm512_add_epi32(acc, _mm512_madd_epi16(_mm512_shuffle_epi8(v, pairing),
                                                    _mm512_permutexvar_epi16(index[p], c)));
    }
    return _mm512_srai_epi32(acc, 20);
  }
};

// Up to four taps of C = 3 or 4 channels: one 256-bit load holds a pixel's
// four taps, so a register carries two pixels, [x taps 0, 1 | x taps 2, 3 |
// x+1 taps 0, 1 | x+1 taps 2, 3] after the pairing (a byte shuffle within
// quarters for four channels; a word permute for three, whose taps 2 and 3
// straddle quarters, with the fourth lane zeroed); two such multiply-adds and
// two quarter shuffles sum the halves into four pixels, one per quarter.
// Fewer shuffles than four 128-bit inserts per tap pair. Taps past T are read
// (they lie inside the line's 16 spare samples) at weight zero.
template <int C, int T>
struct HalfSums {
  __m512i index[2];  // weights of pixels x, x+1 (index[0]) and x+2, x+3 (index[1])
  HalfSums() {
    for (int h = 0; h < 2; ++h) {
      alignas(64) int16_t idx[32];
      for (int q = 0; q < 4; ++q) {
        const int pixel = 2 * h + q / 2, pair = q % 2;
        for (int k = 0; k < 4; ++k) {
          // Word 31 is zero (the weights fill words 0 .. 15 only).
          idx[q * 8 + 2 * k] = static_cast<int16_t>(2 * pair < T ? pixel * T + 2 * pair : 31);
          idx[q * 8 + 2 * k + 1] =
              static_cast<int16_t>(2 * pair + 1 < T ? pixel * T + 2 * pair + 1 : 31);
        }
      }
      index[h] = _mm512_load_si512(idx);
    }
  }
  static __m512i Paired(__m512i v) {
    if (C == 4)
      return _mm512_shuffle_epi8(v, _mm512_broadcast_i32x4(_mm_setr_epi8(
                                        0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15)));
    // Words 0 .. 15 hold pixel x's taps, 16 .. 31 pixel x+1's, three words a tap.
    alignas(64) static constexpr int16_t kPairing[32] = {0,  3, 1,  4,  2,  5,  0,  0,  6,  9,  7,
                                                         10, 8, 11, 0,  0,  16, 19, 17, 20, 18, 21,
                                                         0,  0, 22, 25, 23, 26, 24, 27, 0,  0};
    const __m512i pairing = _mm512_load_si512(kPairing);
    return _mm512_maskz_permutexvar_epi16(0x3F3F3F3Fu, pairing, v);
  }
  static __m512i Two(const int16_t* src, const int32_t* start, int x, __m512i weights) {
    const __m256i a = _mm256_loadu_si256(
        reinterpret_cast<const __m256i*>(src + static_cast<ptrdiff_t>(start[x]) * C));
    const __m256i b = _mm256_loadu_si256(
        reinterpret_cast<const __m256i*>(src + static_cast<ptrdiff_t>(start[x + 1]) * C));
    // A masked broadcast from memory blends rather than shuffles.
    const __m512i v = _mm512_mask_broadcast_i64x4(_mm512_castsi256_si512(a), 0xF0, b);
    return _mm512_madd_epi16(Paired(v), weights);
  }
  __m512i At(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const __m512i c = _mm512_zextsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(coef + static_cast<ptrdiff_t>(x) * T)));
    const __m512i r01 = Two(src, start, x, _mm512_permutexvar_epi16(index[0], c));
    const __m512i r23 = Two(src, start, x + 2, _mm512_permutexvar_epi16(index[1], c));
    const __m512i sums = _mm512_add_epi32(_mm512_shuffle_i32x4(r01, r23, _MM_SHUFFLE(2, 0, 2, 0)),
                                          _mm512_shuffle_i32x4(r01, r23, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm512_srai_epi32(_mm512_add_epi32(sums, _mm512_set1_epi32(1 << 19)), 20);
  }
};

// Bytes of sixteen pixels x .. x+15 in order, four per pixel, saturated like
// the plain pass: both packs, then one dword permute for all 64 bytes.
template <class Sums>
inline __m512i Bytes16(const Sums& sums, const int16_t* src, const int32_t* start,
                       const int16_t* coef, int x) {
  const __m512i w0 =
      _mm512_packs_epi32(sums.At(src, start, coef, x), sums.At(src, start, coef, x + 4));
  const __m512i w1 =
      _mm512_packs_epi32(sums.At(src, start, coef, x + 8), sums.At(src, start, coef, x + 12));
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  return _mm512_permutexvar_epi32(order, _mm512_packus_epi16(w0, w1));
}

template <int T>
void HorizontalC4Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                      int width) {
  using Sums = typename std::conditional<(T >= 3), HalfSums<4, T>, QuarterSums<T>>::type;
  const Sums sums;
  int x = 0;
  for (; x + 16 <= width; x += 16)
    _mm512_storeu_si512(dst + 4 * x, Bytes16(sums, src, start, coef, x));
  for (; x + 8 <= width; x += 8)
    Store8(dst + 4 * x, sums.At(src, start, coef, x), sums.At(src, start, coef, x + 4));
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + 4 * x,
                            width - x);
}

// Three channels, two to four taps, sixteen pixels a step: the 4-channel
// bytes of Bytes16 (fourth lane zero), each pixel's fourth byte dropped
// within quarters and the quarters' 12 bytes closed up, 48 bytes stored whole
// (with 16 more that the next step overwrites) while the row leaves room.
template <int T>
void HorizontalC3Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                      int width) {
  const HalfSums<3, T> sums;
  const __m512i drop =
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  const __m512i close = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m512i b = Bytes16(sums, src, start, coef, x);
    const __m512i v = _mm512_permutexvar_epi32(close, _mm512_shuffle_epi8(b, drop));
    uint8_t* d = dst + 3 * x;
    if (3 * x + 64 <= 3 * width) {
      _mm512_storeu_si512(d, v);
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm512_castsi512_si256(v));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 32), _mm512_extracti32x4_epi32(v, 2));
    }
  }
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC3(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + 3 * x,
                            width - x);
}

}  // namespace

void FilterHorizontalC3(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  switch (taps) {
    case 2:
      return HorizontalC3Taps<2>(src, start, coef, dst, width);
    case 3:
      return HorizontalC3Taps<3>(src, start, coef, dst, width);
    case 4:
      return HorizontalC3Taps<4>(src, start, coef, dst, width);
    default:
      return KernelsFor(SimdLevel::kAvx2).filterHorizontalC3(src, start, coef, taps, dst, width);
  }
}

void FilterHorizontalC4(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  switch (taps) {
    case 2:
      return HorizontalC4Taps<2>(src, start, coef, dst, width);
    case 3:
      return HorizontalC4Taps<3>(src, start, coef, dst, width);
    case 4:
      return HorizontalC4Taps<4>(src, start, coef, dst, width);
    default:
      break;
  }
  const QuarterWeights weights(taps);
  int x = 0;
  for (; x + 8 <= width; x += 8)
    Store8(dst + 4 * x, Sums4(src, start, coef, weights, x),
           Sums4(src, start, coef, weights, x + 4));
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * taps, taps,
                            dst + 4 * x, width - x);
}

}  // namespace avx512
}  // namespace ipp
}  // namespace orv
