// AVX2 form of the one-channel horizontal resize pass for up to four taps:
// eight destination pixels a step, one in each dword lane, four in each
// 128-bit half. A half's taps are fetched by byte shuffles from the 16
// samples from its first pixel's first tap on (two 16-byte loads), which hold
// them whenever the source advances by at most about four samples per
// destination pixel (every enlargement, and reductions down to about a
// quarter). Steps whose taps reach further, more taps, and a line's last
// pixels short of a step take the SSSE3 form. The sums are the plain ones term
// for term and round, shift and saturate alike, so the bytes are the plain
// bytes.
//
// Reads stay inside the room the resizer keeps: a half's 16 samples start at
// a pixel's first tap, which lies inside the line, and the line has 16 spare
// samples after its last one.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

constexpr int kWindow = 16;  // samples a half reaches from its first pixel's first tap

inline __m128i Ld(const void* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m256i Halves(const void* lo, const void* hi) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(Ld(lo)), Ld(hi), 1);
}

// Byte shuffles that take the weight pairs of three-tap groups: words
// (3j, 3j+1) and (3j+2, zero) of pixel j of each half, from L (the half's
// first eight weights) or H (the next eight); see LaneWeights.
struct ThreeTapMasks {
  alignas(32) int8_t fromL[2][32];
  alignas(32) int8_t fromH[2][32];
  constexpr ThreeTapMasks() : fromL(), fromH() {
    for (int pair = 0; pair < 2; ++pair)
      for (int half = 0; half < 2; ++half)
        for (int j = 0; j < 4; ++j)
          for (int k = 0; k < 2; ++k) {
            // Word w of the eight pixels' 24 weights; L holds words 8h .. 8h+7
            // in half h and H the eight after them.
            const int w = 3 * (4 * half + j) + 2 * pair + k;
            const bool zero = pair == 1 && k == 1;
            for (int b = 0; b < 2; ++b) {
              const int at = 16 * half + 4 * j + 2 * k + b;
              const int inL = w - 8 * half, inH = w - 8 * half - 8;
              fromL[pair][at] =
                  static_cast<int8_t>(!zero && inL >= 0 && inL < 8 ? 2 * inL + b : -128);
              fromH[pair][at] =
                  static_cast<int8_t>(!zero && inH >= 0 && inH < 8 ? 2 * inH + b : -128);
            }
          }
  }
};
constexpr ThreeTapMasks kThreeTapMasks;

// Weight pairs (c[t], c[t+1]) of eight pixels whose T weights follow each
// other from c, pair p of pixel j in dword j of w[p]; zero past T. The plan
// keeps zeroed room after its last group, so whole loads are safe.
template <int T>
struct LaneWeights {
  static constexpr int kPairs = (T + 1) / 2;
  __m256i w[kPairs];
  explicit LaneWeights(const int16_t* c) {
    if (T == 1) {
      w[0] = _mm256_cvtepu16_epi32(Ld(c));
    } else if (T == 2) {
      w[0] = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c));
    } else if (T == 3) {
      const __m256i l = Halves(c, c + 8), h = Halves(c + 8, c + 16);
      for (int p = 0; p < 2; ++p)
        w[p] = _mm256_or_si256(
            _mm256_shuffle_epi8(
                l, _mm256_load_si256(reinterpret_cast<const __m256i*>(kThreeTapMasks.fromL[p]))),
            _mm256_shuffle_epi8(
                h, _mm256_load_si256(reinterpret_cast<const __m256i*>(kThreeTapMasks.fromH[p]))));
    } else {
      // Dword pairs [p0 01, p0 23, p1 01, ...]: evens then odds within each
      // group of four pixels, then the groups' halves joined.
      const __m256i order = _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7);
      const __m256i a = _mm256_permutevar8x32_epi32(
          _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c)), order);
      const __m256i b = _mm256_permutevar8x32_epi32(
          _mm256_loadu_si256(reinterpret_cast<const __m256i*>(c + 16)), order);
      w[0] = _mm256_permute2x128_si256(a, b, 0x20);
      w[kPairs - 1] = _mm256_permute2x128_si256(a, b, 0x31);
    }
  }
};

// Pixels x .. x+7; false, writing nothing, when a half's taps do not lie
// within the 16 samples from its first pixel's first tap.
template <int T>
inline bool Step(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                 int x) {
  constexpr int kPairs = LaneWeights<T>::kPairs;
  const __m256i starts = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(start + x));
  // Each pixel's first tap counted from its half's first pixel's.
  const __m256i rel = _mm256_sub_epi32(starts, _mm256_shuffle_epi32(starts, 0));
  // Every rel in 0 .. kWindow - 2 kPairs (negative ones are large unsigned).
  const __m256i limit = _mm256_set1_epi32(kWindow - 2 * kPairs);
  if (_mm256_movemask_epi8(_mm256_cmpeq_epi32(_mm256_max_epu32(rel, limit), limit)) != -1)
    return false;
  const int16_t* s0 = src + start[x];
  const int16_t* s1 = src + start[x + 4];
  const __m256i lo = Halves(s0, s1), hi = Halves(s0 + 8, s1 + 8);
  // Bytes 2 rel .. 2 rel + 3 of the half's 32: the lane's first tap pair.
  const __m256i rel2 = _mm256_add_epi32(rel, rel);
  const __m256i spread = _mm256_setr_epi8(0, 0, 0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12, 0, 0,
                                          0, 0, 4, 4, 4, 4, 8, 8, 8, 8, 12, 12, 12, 12);
  const __m256i first =
      _mm256_add_epi8(_mm256_shuffle_epi8(rel2, spread), _mm256_set1_epi32(0x03020100));
  const LaneWeights<T> weights(coef + static_cast<ptrdiff_t>(x) * T);
  __m256i acc = _mm256_set1_epi32(1 << 19);
  for (int p = 0; p < kPairs; ++p) {
    const __m256i index = _mm256_add_epi8(first, _mm256_set1_epi8(static_cast<char>(4 * p)));
    // Byte indices 0 .. 15 pick from lo: 0x70 added with saturation keeps
    // their low four bits and a clear top bit, and sets the top bit (a zero
    // byte) of 16 .. 31. Those pick from hi less 16, where 0 .. 15 turn
    // negative and give zero.
    const __m256i v =
        _mm256_or_si256(_mm256_shuffle_epi8(lo, _mm256_adds_epu8(index, _mm256_set1_epi8(0x70))),
                        _mm256_shuffle_epi8(hi, _mm256_sub_epi8(index, _mm256_set1_epi8(16))));
    acc = _mm256_add_epi32(acc, _mm256_madd_epi16(v, weights.w[p]));
  }
  const __m256i r = _mm256_srai_epi32(acc, 20);
  // Saturated to words, then to bytes: pixels 0 .. 3 in the low half's first
  // dword, 4 .. 7 in the high half's.
  const __m256i w = _mm256_packs_epi32(r, r);
  const __m256i b = _mm256_packus_epi16(w, w);
  const __m128i v = _mm_unpacklo_epi32(_mm256_castsi256_si128(b), _mm256_extracti128_si256(b, 1));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(dst + x), v);
  return true;
}

template <int T>
void Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst, int width) {
  const Kernels& below = KernelsFor(SimdLevel::kSse41);
  int x = 0;
  for (; x + 8 <= width; x += 8)
    if (!Step<T>(src, start, coef, dst, x))
      below.filterHorizontalC1(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + x, 8);
  if (x < width)
    below.filterHorizontalC1(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + x,
                             width - x);
}

}  // namespace

void FilterHorizontalC1Avx2(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                            uint8_t* dst, int width) {
  switch (taps) {
    case 1:
      return Taps<1>(src, start, coef, dst, width);
    case 2:
      return Taps<2>(src, start, coef, dst, width);
    case 3:
      return Taps<3>(src, start, coef, dst, width);
    case 4:
      return Taps<4>(src, start, coef, dst, width);
    default:
      return KernelsFor(SimdLevel::kSse41).filterHorizontalC1(src, start, coef, taps, dst, width);
  }
}

}  // namespace ipp
}  // namespace orv
