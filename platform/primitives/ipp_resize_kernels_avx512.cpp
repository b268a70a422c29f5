// AVX-512 forms of the resize passes: the vertical pass on 32 samples at a
// time, the horizontal pass of 4-channel lines with one destination pixel
// in each 128-bit quarter of a register, and the nearest-neighbour gathers of
// 1- and 4-byte pixels. Both compute the plain sums term for
// term and round, shift and saturate alike, so the bytes are the plain bytes.
// Reads past the end stay inside the room the callers keep (see
// ipp_resize_kernels_avx2.cpp).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_kernels_avx512.h"

namespace orv {
namespace ipp {
namespace {

using avx512::DotAdd;
using avx512::First16;
using avx512::First32;
using avx512::First64;
using avx512::MaddAdd;

inline int32_t Pair(int16_t a, int16_t b) {
  return static_cast<int32_t>((static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16) |
                              static_cast<uint16_t>(a));
}

inline __m512i Samples(const uint8_t* row) {
  return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(row)));
}
inline __m512i Samples(const uint8_t* row, __mmask32 m) {
  return _mm512_cvtepu8_epi16(_mm256_maskz_loadu_epi8(m, row));
}

// The 32 words (sum >> 8) of a step whose dword sums are in unpack order:
// quarter k of lo holds samples 8k .. 8k+3, of hi samples 8k+4 .. 8k+7.
// PackWords shifts both and packs, saturating (the plain store wraps; they
// differ only for sums beyond 16 bits, which no plan makes). PickWords takes
// bits 8 .. 23 of each sum with one byte permute over the pair: the plain
// store's wrap exactly, in one instruction instead of three.
struct PackWords {
  static __m512i From(__m512i lo, __m512i hi) {
    // The in-quarter unpack and pack undo each other: lanes come back in order.
    return _mm512_packs_epi32(_mm512_srai_epi32(lo, 8), _mm512_srai_epi32(hi, 8));
  }
};

struct PickIndex {
  alignas(64) uint8_t byte[64];
  constexpr PickIndex() : byte() {
    for (int j = 0; j < 32; ++j) {
      const int quarter = j / 8, k = j % 8;
      const int dword = 4 * quarter + k % 4 + (k < 4 ? 0 : 16);  // hi's dwords follow lo's
      byte[2 * j] = static_cast<uint8_t>(4 * dword + 1);
      byte[2 * j + 1] = static_cast<uint8_t>(4 * dword + 2);
    }
  }
};
constexpr PickIndex kPickIndex;

struct PickWords {
  __attribute__((target("avx512vbmi"))) static __m512i From(__m512i lo, __m512i hi) {
    return _mm512_permutex2var_epi8(lo, _mm512_load_si512(kPickIndex.byte), hi);
  }
};

// Vertical pass with the tap count known: the row pointers and the weight
// pairs stay in registers across the line. 32 samples a step; the last step
// loads and stores only what is left (kTail).
template <int T, class Op = MaddAdd, class Words = PackWords>
struct VerticalTaps {
  static constexpr int kPairs = (T + 1) / 2;
  const uint8_t* r[T];
  __m512i w[kPairs];
  __attribute__((always_inline)) VerticalTaps(const uint8_t* const* rows, const int16_t* coef) {
    for (int t = 0; t < T; ++t) r[t] = rows[t];
    for (int p = 0; p < kPairs; ++p)
      w[p] = _mm512_set1_epi32(Pair(coef[2 * p], 2 * p + 1 < T ? coef[2 * p + 1] : 0));
  }
  template <bool kTail>
  __attribute__((always_inline)) void Step(int16_t* out, int i, __mmask32 m) const {
    __m512i lo = _mm512_set1_epi32(128), hi = lo;
    for (int p = 0; p < kPairs; ++p) {
      const uint8_t* ra = r[2 * p] + i;
      const __m512i a = kTail ? Samples(ra, m) : Samples(ra);
      __m512i b = _mm512_setzero_si512();
      if (2 * p + 1 < T) b = kTail ? Samples(r[2 * p + 1] + i, m) : Samples(r[2 * p + 1] + i);
      lo = Op::MulAdd(lo, _mm512_unpacklo_epi16(a, b), w[p]);
      hi = Op::MulAdd(hi, _mm512_unpackhi_epi16(a, b), w[p]);
    }
    const __m512i v = Words::From(lo, hi);
    if (kTail)
      _mm512_mask_storeu_epi16(out + i, m, v);
    else
      _mm512_storeu_si512(out + i, v);
  }
  // Samples `from` to `count` of the line.
  __attribute__((always_inline)) void Run(int16_t* out, int count, int from = 0) const {
    int i = from;
    for (; i + 32 <= count; i += 32) Step<false>(out, i, 0);
    if (i < count) Step<true>(out, i, First32(count - i));
  }
};

// Two to eight taps with the dot product and the byte permute. The widening
// loads cost no shuffle on the processors that have both, so the 32-sample
// step of VerticalTaps beats the 64-sample byte interleave below there.
template <int T>
__attribute__((target("avx512vnni,avx512vbmi"))) void VerticalPicked(const uint8_t* const* rows,
                                                                     const int16_t* coef,
                                                                     int16_t* out, int count) {
  VerticalTaps<T, DotAdd, PickWords>(rows, coef).Run(out, count);
}

// Up to eight taps, 64 samples a step without widening across quarters: the
// bytes of a row pair are interleaved (p, q) within quarters, then widened to
// word pairs by interleaving with zero, each quarter holding samples 16k ..
// 16k + 15 of the step in four dword groups. After the multiply-adds, one pack
// restores the order inside each quarter and a qword permute across the two
// packed registers restores it across quarters.

template <int T, class Op>
__attribute__((always_inline)) inline void VerticalPairsBody(const uint8_t* const* rows,
                                                             const int16_t* coef, int16_t* out,
                                                             int count) {
  // An odd last tap pairs its row with itself at weight zero.
  constexpr int kPairs = (T + 1) / 2;
  const uint8_t* r[2 * kPairs];
  __m512i w[kPairs];
  for (int t = 0; t < 2 * kPairs; ++t) r[t] = rows[t < T ? t : T - 1];
  for (int p = 0; p < kPairs; ++p)
    w[p] = _mm512_set1_epi32(Pair(coef[2 * p], 2 * p + 1 < T ? coef[2 * p + 1] : 0));
  const __m512i z = _mm512_setzero_si512(), rnd = _mm512_set1_epi32(128);
  const __m512i lowHalves = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
  const __m512i highHalves = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
  int i = 0;
  for (; i + 64 <= count; i += 64) {
    __m512i acc[4] = {rnd, rnd, rnd, rnd};
    for (int p = 0; p < kPairs; ++p) {
      const __m512i a = _mm512_loadu_si512(r[2 * p] + i), b = _mm512_loadu_si512(r[2 * p + 1] + i);
      const __m512i x0 = _mm512_unpacklo_epi8(a, b), x1 = _mm512_unpackhi_epi8(a, b);
      acc[0] = Op::MulAdd(acc[0], _mm512_unpacklo_epi8(x0, z), w[p]);
      acc[1] = Op::MulAdd(acc[1], _mm512_unpackhi_epi8(x0, z), w[p]);
      acc[2] = Op::MulAdd(acc[2], _mm512_unpacklo_epi8(x1, z), w[p]);
      acc[3] = Op::MulAdd(acc[3], _mm512_unpackhi_epi8(x1, z), w[p]);
    }
    const __m512i lo =
        _mm512_packs_epi32(_mm512_srai_epi32(acc[0], 8), _mm512_srai_epi32(acc[1], 8));
    const __m512i hi =
        _mm512_packs_epi32(_mm512_srai_epi32(acc[2], 8), _mm512_srai_epi32(acc[3], 8));
    _mm512_storeu_si512(out + i, _mm512_permutex2var_epi64(lo, lowHalves, hi));
    _mm512_storeu_si512(out + i + 32, _mm512_permutex2var_epi64(lo, highHalves, hi));
  }
  if (i < count) VerticalTaps<T>(rows, coef).Run(out, count, i);
}

template <int T>
void VerticalPairs(const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  VerticalPairsBody<T, MaddAdd>(rows, coef, out, count);
}

template <int T>
__attribute__((target("avx512vnni"))) void VerticalPairsDot(const uint8_t* const* rows,
                                                            const int16_t* coef, int16_t* out,
                                                            int count) {
  VerticalPairsBody<T, DotAdd>(rows, coef, out, count);
}

// Two taps whose weights sum to one (every plan's): with d = q - p,
//   (p w0 + q w1 + 128) >> 8 = 64 p + ((d w1 + 128) >> 8)
// because p w0 + q w1 = 16384 p + d w1 and 16384 p is a multiple of 256; and
// (d w1 + 128) >> 8 is exactly the rounding high multiply of (d << 7) by w1.
// Everything fits 16 bits (|d << 7| <= 32640) and the 16-bit sum wraps as the
// plain form's store does, so the bytes are the plain bytes.
inline __m512i TwoTaps(__m512i p, __m512i q, __m512i w1) {
  const __m512i d = _mm512_slli_epi16(_mm512_sub_epi16(q, p), 7);
  return _mm512_add_epi16(_mm512_slli_epi16(p, 6), _mm512_mulhrs_epi16(d, w1));
}

void VerticalTwoTaps(const uint8_t* const* rows, int16_t w1, int16_t* out, int count) {
  const uint8_t* r0 = rows[0];
  const uint8_t* r1 = rows[1];
  const __m512i w = _mm512_set1_epi16(w1);
  int i = 0;
  for (; i + 32 <= count; i += 32)
    _mm512_storeu_si512(out + i, TwoTaps(Samples(r0 + i), Samples(r1 + i), w));
  if (i < count) {
    const __mmask32 m = First32(count - i);
    _mm512_mask_storeu_epi16(out + i, m, TwoTaps(Samples(r0 + i, m), Samples(r1 + i, m), w));
  }
}

// Three taps whose weights sum to one, the middle one taken out: with
// d0 = p0 - p1 and d2 = p2 - p1,
//   (p0 w0 + p1 w1 + p2 w2 + 128) >> 8 = 64 p1 + ((d0 w0 + d2 w2 + 128) >> 8)
// (16384 p1 is a multiple of 256), one word pair per sample instead of two.
// With |w0| + |w2| below 32768 the second term fits 16 bits, and the 16-bit
// sum wraps as the plain form's store does.
template <class Op, class Words>
__attribute__((always_inline)) inline __m512i ThreeTaps(const uint8_t* r0, const uint8_t* r1,
                                                        const uint8_t* r2, __m512i w, __mmask32 m,
                                                        bool tail) {
  const __m512i p0 = tail ? Samples(r0, m) : Samples(r0), p1 = tail ? Samples(r1, m) : Samples(r1),
                p2 = tail ? Samples(r2, m) : Samples(r2);
  const __m512i d0 = _mm512_sub_epi16(p0, p1), d2 = _mm512_sub_epi16(p2, p1);
  const __m512i rnd = _mm512_set1_epi32(128);
  const __m512i lo = Op::MulAdd(rnd, _mm512_unpacklo_epi16(d0, d2), w);
  const __m512i hi = Op::MulAdd(rnd, _mm512_unpackhi_epi16(d0, d2), w);
  return _mm512_add_epi16(_mm512_slli_epi16(p1, 6), Words::From(lo, hi));
}

template <class Op, class Words>
__attribute__((always_inline)) inline void VerticalThreeTapsBody(const uint8_t* const* rows,
                                                                 const int16_t* coef, int16_t* out,
                                                                 int count) {
  const uint8_t* r0 = rows[0];
  const uint8_t* r1 = rows[1];
  const uint8_t* r2 = rows[2];
  const __m512i w = _mm512_set1_epi32(Pair(coef[0], coef[2]));
  int i = 0;
  for (; i + 32 <= count; i += 32)
    _mm512_storeu_si512(out + i, ThreeTaps<Op, Words>(r0 + i, r1 + i, r2 + i, w, 0, false));
  if (i < count) {
    const __mmask32 m = First32(count - i);
    _mm512_mask_storeu_epi16(out + i, m, ThreeTaps<Op, Words>(r0 + i, r1 + i, r2 + i, w, m, true));
  }
}

void VerticalThreeTaps(const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  VerticalThreeTapsBody<MaddAdd, PackWords>(rows, coef, out, count);
}

__attribute__((target("avx512vnni"))) void VerticalThreeTapsDot(const uint8_t* const* rows,
                                                                const int16_t* coef, int16_t* out,
                                                                int count) {
  VerticalThreeTapsBody<DotAdd, PackWords>(rows, coef, out, count);
}

__attribute__((target("avx512vnni,avx512vbmi"))) void VerticalThreeTapsPicked(
    const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  VerticalThreeTapsBody<DotAdd, PickWords>(rows, coef, out, count);
}

// T taps, any weights, with the body B.
template <Avx512ResizeBody B, int T>
inline void Taps(const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  if (B == Avx512ResizeBody::kDotPermute)
    VerticalPicked<T>(rows, coef, out, count);
  else if (B == Avx512ResizeBody::kDot)
    VerticalPairsDot<T>(rows, coef, out, count);
  else
    VerticalPairs<T>(rows, coef, out, count);
}

template <Avx512ResizeBody B>
void FilterVertical(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                    int count) {
  // Taps of zero weight at either end add nothing (a plan pads the pixels
  // whose footprint is shorter than its widest).
  while (taps > 1 && coef[taps - 1] == 0) --taps;
  while (taps > 1 && coef[0] == 0) {
    ++rows;
    ++coef;
    --taps;
  }
  switch (taps) {
    case 1:
      return VerticalTaps<1>(rows, coef).Run(out, count);
    case 2:
      if (coef[0] + coef[1] == 1 << 14) return VerticalTwoTaps(rows, coef[1], out, count);
      return Taps<B, 2>(rows, coef, out, count);
    case 3:
      if (coef[0] + coef[1] + coef[2] == 1 << 14 && std::abs(coef[0]) + std::abs(coef[2]) < 32768) {
        if (B == Avx512ResizeBody::kDotPermute)
          return VerticalThreeTapsPicked(rows, coef, out, count);
        if (B == Avx512ResizeBody::kDot) return VerticalThreeTapsDot(rows, coef, out, count);
        return VerticalThreeTaps(rows, coef, out, count);
      }
      return Taps<B, 3>(rows, coef, out, count);
    case 4:
      return Taps<B, 4>(rows, coef, out, count);
    case 5:
      return Taps<B, 5>(rows, coef, out, count);
    case 6:
      return Taps<B, 6>(rows, coef, out, count);
    case 7:
      return Taps<B, 7>(rows, coef, out, count);
    case 8:
      return Taps<B, 8>(rows, coef, out, count);
    default:
      break;
  }
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

template <int T>
void HorizontalC4Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                      int width) {
  using Sums = typename std::conditional<(T >= 3), HalfSums<4, T>, QuarterSums<T>>::type;
  const Sums sums;
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    // Sixteen pixels: both packs, then one dword permute for all 64 bytes.
    const __m512i w0 =
        _mm512_packs_epi32(sums.At(src, start, coef, x), sums.At(src, start, coef, x + 4));
    const __m512i w1 =
        _mm512_packs_epi32(sums.At(src, start, coef, x + 8), sums.At(src, start, coef, x + 12));
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    _mm512_storeu_si512(dst + 4 * x, _mm512_permutexvar_epi32(order, _mm512_packus_epi16(w0, w1)));
  }
  for (; x + 8 <= width; x += 8)
    Store8(dst + 4 * x, sums.At(src, start, coef, x), sums.At(src, start, coef, x + 4));
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + 4 * x,
                            width - x);
}

// Three channels, two to four taps, sixteen pixels a step: the 4-channel
// sums (fourth lane zero) packed to bytes in pixel order, each pixel's fourth
// byte dropped within quarters and the quarters' 12 bytes closed up, 48 bytes
// stored whole (with 16 more that the next step overwrites) while the row
// leaves room for it.
template <int T>
void HorizontalC3Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                      int width) {
  const HalfSums<3, T> sums;
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  const __m512i drop =
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  const __m512i close = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m512i w0 =
        _mm512_packs_epi32(sums.At(src, start, coef, x), sums.At(src, start, coef, x + 4));
    const __m512i w1 =
        _mm512_packs_epi32(sums.At(src, start, coef, x + 8), sums.At(src, start, coef, x + 12));
    const __m512i b = _mm512_permutexvar_epi32(order, _mm512_packus_epi16(w0, w1));
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

// Nearest neighbour. A block's indices, taken relative to its first one, are
// checked to lie between 0 and the relative index of its last pixel (always
// so for the resizers' ascending indices); when that span is short enough the
// block's pixels are picked by permutes out of the few registers that hold
// the source from the first index on. Those registers are filled by masked
// loads that stop at the last index, so no byte past the block's last source
// pixel is read. Other blocks take the plain form. The last partial block runs
// the same way with its lanes masked.

// 1-byte pixels, 32 a block out of at most 128 source bytes: a word permute
// over two registers takes the word holding each wanted byte, a variable shift
// brings that byte down, and a narrowing store writes the 32 bytes.
void GatherC1(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  const __m512i one = _mm512_set1_epi16(1);
  for (int x = 0; x < width; x += 32) {
    const int n = width - x < 32 ? width - x : 32;
    const int32_t base = index[x];
    const __m512i b = _mm512_set1_epi32(base);
    // Lanes past the end repeat the first index.
    const __m512i r0 = _mm512_sub_epi32(_mm512_mask_loadu_epi32(b, First16(n), index + x), b);
    const __m512i r1 =
        _mm512_sub_epi32(_mm512_mask_loadu_epi32(b, First16(n - 16), index + x + 16), b);
    const int64_t span = static_cast<int64_t>(index[x + n - 1]) - base;
    const __m512i top = _mm512_set1_epi32(static_cast<int32_t>(span));
    if (span < 0 || span >= 128 ||
        (_mm512_cmpgt_epu32_mask(r0, top) | _mm512_cmpgt_epu32_mask(r1, top)) != 0) {
      PlainKernels().gatherC1(src, index + x, dst + x, n);
      continue;
    }
    const int bytes = static_cast<int>(span) + 1;
    const uint8_t* s = src + base;
    const __m512i lo = _mm512_maskz_loadu_epi8(First64(bytes), s);
    const __m512i hi = _mm512_maskz_loadu_epi8(First64(bytes - 64), s + 64);
    const __m512i r = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi32_epi16(r0)),
                                         _mm512_cvtepi32_epi16(r1), 1);
    const __m512i w = _mm512_permutex2var_epi16(lo, _mm512_srli_epi16(r, 1), hi);
    const __m512i v = _mm512_srlv_epi16(w, _mm512_slli_epi16(_mm512_and_si512(r, one), 3));
    _mm512_mask_cvtepi16_storeu_epi8(dst + x, static_cast<__mmask32>(First64(n)), v);
  }
}

// 4-byte pixels, 16 a block out of at most 64 source pixels: a dword permute
// over two registers for the first 32, over the next two for the rest. While
// the 64 pixels from a block's first index end at or before the line's last
// index (which the plain form reads too), whole registers are loaded.
inline bool SpanOk(__m512i rel, int64_t span, int64_t limit) {
  return span >= 0 && span < limit &&
         _mm512_cmpgt_epu32_mask(rel, _mm512_set1_epi32(static_cast<int32_t>(span))) == 0;
}

void GatherC4(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  if (width < 1) return;
  const __m512i k32 = _mm512_set1_epi32(32);
  const int64_t whole = static_cast<int64_t>(index[width - 1]) - 63;  // last base loaded whole
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const int32_t base = index[x];
    const __m512i b = _mm512_set1_epi32(base);
    const __m512i r = _mm512_sub_epi32(_mm512_loadu_si512(index + x), b);
    if (base < 0 || base > whole || !SpanOk(r, static_cast<int64_t>(index[x + 15]) - base, 64))
      break;
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(base);
    const __m512i nearPart =
        _mm512_permutex2var_epi32(_mm512_loadu_si512(s), r, _mm512_loadu_si512(s + 64));
    const __m512i farPart =
        _mm512_permutex2var_epi32(_mm512_loadu_si512(s + 128), r, _mm512_loadu_si512(s + 192));
    _mm512_storeu_si512(
        dst + 4 * x, _mm512_mask_blend_epi32(_mm512_cmpge_epi32_mask(r, k32), nearPart, farPart));
  }
  for (; x < width; x += 16) {
    const int n = width - x < 16 ? width - x : 16;
    const __mmask16 lanes = First16(n);
    const int32_t base = index[x];
    const __m512i b = _mm512_set1_epi32(base);
    // Lanes past the end repeat the first index.
    const __m512i r = _mm512_sub_epi32(_mm512_mask_loadu_epi32(b, lanes, index + x), b);
    const int64_t span = static_cast<int64_t>(index[x + n - 1]) - base;
    if (!SpanOk(r, span, 64)) {
      PlainKernels().gatherC4(src, index + x, dst + 4 * x, n);
      continue;
    }
    const int pixels = static_cast<int>(span) + 1;
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(base);
    __m512i v = _mm512_permutex2var_epi32(_mm512_maskz_loadu_epi32(First16(pixels), s), r,
                                          _mm512_maskz_loadu_epi32(First16(pixels - 16), s + 64));
    if (pixels > 32) {
      const __m512i far =
          _mm512_permutex2var_epi32(_mm512_maskz_loadu_epi32(First16(pixels - 32), s + 128), r,
                                    _mm512_maskz_loadu_epi32(First16(pixels - 48), s + 192));
      v = _mm512_mask_blend_epi32(_mm512_cmpge_epi32_mask(r, k32), v, far);
    }
    _mm512_mask_storeu_epi32(dst + 4 * x, lanes, v);
  }
}

}  // namespace

namespace {

void InstallResize(Kernels* k, Avx512ResizeBody body) {
  switch (body) {
    case Avx512ResizeBody::kDotPermute:
      k->filterVertical = FilterVertical<Avx512ResizeBody::kDotPermute>;
      break;
    case Avx512ResizeBody::kDot:
      k->filterVertical = FilterVertical<Avx512ResizeBody::kDot>;
      break;
    default:
      k->filterVertical = FilterVertical<Avx512ResizeBody::kBase>;
      break;
  }
  k->filterHorizontalC1 =
      body == Avx512ResizeBody::kBase ? avx512::FilterHorizontalC1 : avx512::FilterHorizontalC1Dot;
  k->filterHorizontalC3 = FilterHorizontalC3;
  k->filterHorizontalC4 = FilterHorizontalC4;
  k->gatherC1 = GatherC1;
  k->gatherC4 = GatherC4;
}

}  // namespace

Kernels Avx512ResizeForms(Avx512ResizeBody body) {
  Kernels k = KernelsFor(SimdLevel::kAvx512);
  InstallResize(&k, body);
  return k;
}

Avx512ResizeBody Avx512ResizeBodyHere() {
  // The tables may be built during static initialisation, before the
  // processor model would otherwise be read.
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512vnni") == 0) return Avx512ResizeBody::kBase;
  if (__builtin_cpu_supports("avx512vbmi") == 0) return Avx512ResizeBody::kDot;
  return Avx512ResizeBody::kDotPermute;
}

void InstallAvx512ResizeKernels(Kernels* k) { InstallResize(k, Avx512ResizeBodyHere()); }

}  // namespace ipp
}  // namespace orv
