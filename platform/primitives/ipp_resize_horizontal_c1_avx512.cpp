// AVX-512 form of the one-channel horizontal resize pass for up to four taps:
// sixteen destination pixels a step, one in each dword lane, each lane's tap
// pair (t, t+1) fetched by a word permute from the samples of the step.
//
// A step's taps lie within 64 samples of its first pixel's first tap whenever
// the source advances by less than about four samples per destination pixel
// (every enlargement, and reductions down to a quarter): those samples come
// in two loads (masked near the line's end, to stop at the last sample the
// step reads), and a two-register word permute serves every lane. Wider
// steps, and more taps, take the AVX2 table's form. The sums are the plain ones term for term and
// round, shift and saturate alike, so the bytes are the plain bytes.
//
// Like the other forms, a pixel's last tap pair may read one sample past its
// taps, at weight zero; the resizer keeps spare samples after the line.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_kernels_avx512.h"

namespace orv {
namespace ipp {
namespace avx512 {
namespace {

constexpr int kWindow = 64;  // samples two registers hold

// Loads of n <= 16 elements: whole registers for full steps (masked loads
// and stores cost several times more on some processors), masked otherwise.
template <bool kFull>
inline __m512i Words(const int16_t* p, int n) {
  return kFull ? _mm512_loadu_si512(p) : _mm512_maskz_loadu_epi16(First32(n), p);
}
template <bool kFull>
inline __m512i Dwords(const void* p, int n) {
  return kFull ? _mm512_loadu_si512(p) : _mm512_maskz_loadu_epi32(First16(n), p);
}

// Word permutes taking pairs (3j, 3j+1) and (3j+2, -) of 32 words to dword j.
struct ThreeTapIndex {
  alignas(64) int16_t first[32];
  alignas(64) int16_t third[32];
  constexpr ThreeTapIndex() : first(), third() {
    for (int j = 0; j < 16; ++j) {
      first[2 * j] = static_cast<int16_t>(3 * j);
      first[2 * j + 1] = static_cast<int16_t>(3 * j + 1);
      third[2 * j] = static_cast<int16_t>(3 * j + 2);
      third[2 * j + 1] = 0;  // zeroed by the permute's mask
    }
  }
};
constexpr ThreeTapIndex kThreeTaps;

// Pairs (c[t], c[t+1]) of the n pixels whose T weights follow each other
// from c, pair p of pixel j in dword j of w[p]; zero past T (and past n when
// the step is not full).
template <int T, bool kFull>
struct LaneWeights {
  static constexpr int kPairs = (T + 1) / 2;
  __m512i w[kPairs];
  LaneWeights(const int16_t* c, int n) {
    if (T == 1) {
      w[0] = _mm512_cvtepu16_epi32(kFull ? _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c))
                                         : _mm256_maskz_loadu_epi16(First16(n), c));
    } else if (T == 2) {
      w[0] = Dwords<kFull>(c, n);
    } else if (T == 3) {
      const __m512i a = Words<kFull>(c, 3 * n), b = Words<kFull>(c + 32, 3 * n - 32);
      w[0] = _mm512_permutex2var_epi16(a, _mm512_load_si512(kThreeTaps.first), b);
      w[kPairs - 1] =
          _mm512_maskz_permutex2var_epi16(0x55555555u, a, _mm512_load_si512(kThreeTaps.third), b);
    } else {
      const __m512i a = Dwords<kFull>(c, 2 * n), b = Dwords<kFull>(c + 32, 2 * n - 16);
      const __m512i evens =
          _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
      w[0] = _mm512_permutex2var_epi32(a, evens, b);
      w[kPairs - 1] =
          _mm512_permutex2var_epi32(a, _mm512_add_epi32(evens, _mm512_set1_epi32(1)), b);
    }
  }
};

// Pixels x .. x+n-1 (n <= 16, n == 16 when kFull); false, writing nothing,
// when their taps do not fit one window. Samples before `whole` may be read
// by whole loads.
template <int T, class Op, bool kFull>
__attribute__((always_inline)) inline bool Step(const int16_t* src, const int32_t* start,
                                                const int16_t* coef, uint8_t* dst, int x, int n,
                                                int64_t whole) {
  constexpr int kPairs = LaneWeights<T, kFull>::kPairs;
  const int32_t base = start[x];
  const __m512i b = _mm512_set1_epi32(base);
  // Lanes past n repeat the first pixel's start.
  const __m512i starts =
      kFull ? _mm512_loadu_si512(start + x) : _mm512_mask_loadu_epi32(b, First16(n), start + x);
  const __m512i rel = _mm512_sub_epi32(starts, b);
  const int64_t last = static_cast<int64_t>(start[x + n - 1]) - base;
  const int64_t span = last + 2 * kPairs;  // samples read, from base
  if (last < 0 || span > kWindow ||
      _mm512_cmpgt_epu32_mask(rel, _mm512_set1_epi32(static_cast<int32_t>(last))) != 0)
    return false;
  const int16_t* s = src + base;
  const int reach = static_cast<int>(span);
  const bool wholeLoads = base + kWindow <= whole;
  const __m512i lo =
      wholeLoads ? _mm512_loadu_si512(s) : _mm512_maskz_loadu_epi16(First32(reach), s);
  const __m512i hi = wholeLoads ? _mm512_loadu_si512(s + 32)
                                : _mm512_maskz_loadu_epi16(First32(reach - 32), s + 32);
  const LaneWeights<T, kFull> weights(coef + static_cast<ptrdiff_t>(x) * T, n);
  // Words (rel, rel + 1) in each dword: the lane's first tap pair.
  const __m512i first = _mm512_add_epi32(_mm512_add_epi32(rel, _mm512_slli_epi32(rel, 16)),
                                         _mm512_set1_epi32(0x10000));
  __m512i acc = _mm512_set1_epi32(1 << 19);
  for (int p = 0; p < kPairs; ++p) {
    const __m512i index = _mm512_add_epi32(first, _mm512_set1_epi32(0x20002 * p));
    acc = Op::MulAdd(acc, _mm512_permutex2var_epi16(lo, index, hi), weights.w[p]);
  }
  const __m512i v = _mm512_max_epi32(_mm512_srai_epi32(acc, 20), _mm512_setzero_si512());
  if (kFull)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), _mm512_cvtusepi32_epi8(v));
  else
    _mm_mask_storeu_epi8(dst + x, First16(n), _mm512_cvtusepi32_epi8(v));
  return true;
}

template <int T, class Op>
__attribute__((always_inline)) inline void Taps(const int16_t* src, const int32_t* start,
                                                const int16_t* coef, uint8_t* dst, int width) {
  if (width < 1) return;
  // Every form reads the last pixel's tap pairs, so the line reaches that far.
  const int64_t whole = static_cast<int64_t>(start[width - 1]) + T + (T & 1);
  for (int x = 0; x < width; x += 16) {
    const int n = width - x < 16 ? width - x : 16;
    const bool done = n == 16 ? Step<T, Op, true>(src, start, coef, dst, x, n, whole)
                              : Step<T, Op, false>(src, start, coef, dst, x, n, whole);
    if (!done)
      KernelsFor(SimdLevel::kAvx2)
          .filterHorizontalC1(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + x, n);
  }
}

template <class Op>
__attribute__((always_inline)) inline void Dispatch(const int16_t* src, const int32_t* start,
                                                    const int16_t* coef, int taps, uint8_t* dst,
                                                    int width) {
  switch (taps) {
    case 1:
      return Taps<1, Op>(src, start, coef, dst, width);
    case 2:
      return Taps<2, Op>(src, start, coef, dst, width);
    case 3:
      return Taps<3, Op>(src, start, coef, dst, width);
    case 4:
      return Taps<4, Op>(src, start, coef, dst, width);
    default:
      return KernelsFor(SimdLevel::kAvx2).filterHorizontalC1(src, start, coef, taps, dst, width);
  }
}

}  // namespace

void FilterHorizontalC1(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  Dispatch<MaddAdd>(src, start, coef, taps, dst, width);
}

__attribute__((target("avx512vnni"))) void FilterHorizontalC1Dot(const int16_t* src,
                                                                 const int32_t* start,
                                                                 const int16_t* coef, int taps,
                                                                 uint8_t* dst, int width) {
  Dispatch<DotAdd>(src, start, coef, taps, dst, width);
}

}  // namespace avx512
}  // namespace ipp
}  // namespace orv
