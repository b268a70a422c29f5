// AVX-512 forms of the vertical resize pass: 32 or 64 samples a step, a body
// per tap count up to eight, two and three taps summing to one in fewer
// multiplies, and three bodies by what the processor has (see
// Avx512ResizeBody). Each computes the plain sums term for term and rounds and
// shifts alike, so the samples are the plain samples.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_kernels_avx512.h"

namespace orv {
namespace ipp {
namespace avx512 {
namespace {

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

// Two to eight taps with the dot product and the byte permute: the 32-sample
// step of VerticalTaps, which measured faster with the permute than the
// 64-sample byte interleave below (and no slower with it picking its words).
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

}  // namespace

void FilterVerticalBase(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                        int count) {
  FilterVertical<Avx512ResizeBody::kBase>(rows, coef, taps, out, count);
}

void FilterVerticalDot(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                       int count) {
  FilterVertical<Avx512ResizeBody::kDot>(rows, coef, taps, out, count);
}

void FilterVerticalPicked(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                          int count) {
  FilterVertical<Avx512ResizeBody::kDotPermute>(rows, coef, taps, out, count);
}

}  // namespace avx512
}  // namespace ipp
}  // namespace orv
