// AVX2 forms of the own scaler's row kernels: the arithmetic of the SSE2
// forms (weights split for 16-bit multiply-add, exact 32-bit sums) at twice
// the width, with gathered loads across a line. Whatever a vector doesn't
// cover is left to the plain code in one place per kernel.
#include <immintrin.h>

#include <cstring>

#include "image/tavo_kernels.h"

namespace orv {
namespace tavo {

namespace {

inline __m256i PairOf(__m256i s) {
  return _mm256_or_si256(_mm256_and_si256(s, _mm256_set1_epi32(0xFFFF)), _mm256_slli_epi32(s, 23));
}

inline __m256i MulHigh(__m256i a, __m256i r) {
  const __m256i even = _mm256_srli_epi64(_mm256_mul_epu32(a, r), 32);
  const __m256i odd = _mm256_mul_epu32(_mm256_srli_epi64(a, 32), r);
  return _mm256_blend_epi32(even, odd, 0xAA);
}

inline __m256i Normalise(__m256i sum, const Post& post) {
  switch (post.norm) {
    case Norm::kCubic:
      return _mm256_srai_epi32(_mm256_add_epi32(sum, _mm256_set1_epi32(0x8000)), 16);
    case Norm::kAreaPlane:
      return MulHigh(sum, _mm256_set1_epi32(static_cast<int32_t>(post.reciprocal)));
    case Norm::kAreaPacked:
      return _mm256_srai_epi32(
          _mm256_mullo_epi32(sum, _mm256_set1_epi32(static_cast<int32_t>(post.reciprocal))), 20);
  }
  return sum;
}

inline __m256i ChromaBias16(Sign sign) {
  switch (sign) {
    case Sign::kUnsigned:
      return _mm256_setzero_si256();
    case Sign::kSigned:
      return _mm256_set1_epi16(128);
    case Sign::kInterleaved:
      return _mm256_set1_epi32(128 << 16);
  }
  return _mm256_setzero_si256();
}

void TapRow(const uint8_t* src, uint8_t* dst, const TapTable& table, const Post& post) {
  const bool chroma = post.sign == Sign::kSigned;
  int i = table.simdBegin;
  if (i == 0 && table.groups >= 2) {
    // Short area spans: two groups of four outputs from two 16-byte windows,
    // bytes multiplied and paired, then the pairs added.
    const __m256i ones = _mm256_set1_epi16(1);
    const __m256i correction = _mm256_set1_epi32(chroma ? 128 * table.weightSum : 0);
    const __m256i bias = ChromaBias16(post.sign);
    int g = 0;
    for (; g + 2 <= table.groups; g += 2) {
      const __m128i lo =
          _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + table.groupBase[g]));
      const __m128i hi =
          _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + table.groupBase[g + 1]));
      const __m256i data = _mm256_inserti128_si256(_mm256_castsi128_si256(lo), hi, 1);
      const __m256i order = _mm256_loadu_si256(
          reinterpret_cast<const __m256i*>(table.groupShuffle + 16 * static_cast<size_t>(g)));
      const __m256i weight = _mm256_loadu_si256(
          reinterpret_cast<const __m256i*>(table.groupWeight + 16 * static_cast<size_t>(g)));
      const __m256i taps = _mm256_shuffle_epi8(data, order);
      __m256i sum = _mm256_madd_epi16(_mm256_maddubs_epi16(taps, weight), ones);
      sum = _mm256_sub_epi32(sum, correction);
      __m256i v = Normalise(sum, post);
      v = _mm256_packs_epi32(v, v);
      v = _mm256_add_epi16(v, bias);
      v = _mm256_packus_epi16(v, v);
      const int32_t first = _mm_cvtsi128_si32(_mm256_castsi256_si128(v));
      const int32_t second = _mm_cvtsi128_si32(_mm256_extracti128_si256(v, 1));
      std::memcpy(dst + 4 * g, &first, 4);
      std::memcpy(dst + 4 * g + 4, &second, 4);
    }
    i = 4 * g;
  } else if (table.wideGroups > 0) {
    // Four-tap cubic spans of eight outputs from one 16-byte window: bytes
    // widened by a shuffle, multiplied by both halves of the split weights,
    // pairs added across the two registers and put back in order.
    for (; i < table.wideFirst; ++i) dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
    const __m256i bias = ChromaBias16(post.sign);
    const __m256i center = _mm256_set1_epi16(chroma ? 128 : 0);
    const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
    for (int g = 0; g < table.wideGroups; ++g, i += 8) {
      const __m256i window = _mm256_broadcastsi128_si256(
          _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + table.wideBase[g])));
      const __m256i* control =
          reinterpret_cast<const __m256i*>(table.wideShuffle + 64 * static_cast<size_t>(g));
      const __m256i* lo =
          reinterpret_cast<const __m256i*>(table.wideLo + 32 * static_cast<size_t>(g));
      const __m256i* hi =
          reinterpret_cast<const __m256i*>(table.wideHi + 32 * static_cast<size_t>(g));
      const __m256i a =
          _mm256_sub_epi16(_mm256_shuffle_epi8(window, _mm256_loadu_si256(control)), center);
      const __m256i b =
          _mm256_sub_epi16(_mm256_shuffle_epi8(window, _mm256_loadu_si256(control + 1)), center);
      const __m256i ma =
          _mm256_add_epi32(_mm256_madd_epi16(a, _mm256_loadu_si256(lo)),
                           _mm256_slli_epi32(_mm256_madd_epi16(a, _mm256_loadu_si256(hi)), 7));
      const __m256i mb =
          _mm256_add_epi32(_mm256_madd_epi16(b, _mm256_loadu_si256(lo + 1)),
                           _mm256_slli_epi32(_mm256_madd_epi16(b, _mm256_loadu_si256(hi + 1)), 7));
      const __m256i sum = _mm256_permutevar8x32_epi32(_mm256_hadd_epi32(ma, mb), order);
      __m256i v = Normalise(sum, post);
      v = _mm256_packs_epi32(v, v);
      v = _mm256_add_epi16(v, bias);
      v = _mm256_packus_epi16(v, v);
      const int32_t first = _mm_cvtsi128_si32(_mm256_castsi256_si128(v));
      const int32_t second = _mm_cvtsi128_si32(_mm256_extracti128_si256(v, 1));
      std::memcpy(dst + i, &first, 4);
      std::memcpy(dst + i + 4, &second, 4);
    }
  }
  for (; i < table.simdEnd && (i & 7); ++i) {
    dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
  }
  const __m256i bias = ChromaBias16(post.sign);
  const __m256i flip = chroma ? _mm256_set1_epi8(static_cast<char>(0x80)) : _mm256_setzero_si256();
  const __m256i byteMask = _mm256_set1_epi32(0xFF);
  const int* base = reinterpret_cast<const int*>(src);
  for (; i + 8 <= table.simdEnd; i += 8) {
    const int32_t* w = table.packed + (static_cast<size_t>(i / kTapBlock) * table.taps) * kTapBlock;
    const __m256i st = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(table.start + i));
    __m256i acc = _mm256_setzero_si256();
    for (int k = 0; k < table.taps; k += 4) {
      __m256i g = _mm256_i32gather_epi32(base, _mm256_add_epi32(st, _mm256_set1_epi32(k)), 1);
      g = _mm256_xor_si256(g, flip);
      for (int m = 0; m < 4; ++m) {
        __m256i s;
        if (chroma) {
          s = _mm256_srai_epi32(_mm256_sll_epi32(g, _mm_cvtsi32_si128(24 - 8 * m)), 24);
        } else {
          s = _mm256_and_si256(_mm256_srl_epi32(g, _mm_cvtsi32_si128(8 * m)), byteMask);
        }
        const __m256i wk = _mm256_loadu_si256(
            reinterpret_cast<const __m256i*>(w + static_cast<size_t>(k + m) * kTapBlock));
        acc = _mm256_add_epi32(acc, _mm256_madd_epi16(PairOf(s), wk));
      }
    }
    __m256i v = Normalise(acc, post);
    v = _mm256_packs_epi32(v, v);  // lanes: v0..3 v0..3 | v4..7 v4..7
    v = _mm256_add_epi16(v, bias);
    v = _mm256_packus_epi16(v, v);
    const int32_t lo = _mm_cvtsi128_si32(_mm256_castsi256_si128(v));
    const int32_t hi = _mm_cvtsi128_si32(_mm256_extracti128_si256(v, 1));
    std::memcpy(dst + i, &lo, 4);
    std::memcpy(dst + i + 4, &hi, 4);
  }
  for (; i < table.simdEnd; ++i) dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
}

void TapRows(const uint8_t* const* rows, const int32_t* weight, int count, uint8_t* dst, int width,
             const Post& post) {
  const __m256i bias = ChromaBias16(post.sign);
  const __m256i zero = _mm256_setzero_si256();
  int x = 0;
  // The unpacks and packs below work within 128-bit halves and undo each
  // other, so bytes come back in their places.
  for (; x + 32 <= width; x += 32) {
    __m256i acc0 = zero, acc1 = zero, acc2 = zero, acc3 = zero;
    for (int k = 0; k < count; ++k) {
      const __m256i wk = _mm256_set1_epi32(PackWeight(weight[k]));
      const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(rows[k] + x));
      const __m256i lo = _mm256_sub_epi16(_mm256_unpacklo_epi8(b, zero), bias);
      const __m256i hi = _mm256_sub_epi16(_mm256_unpackhi_epi8(b, zero), bias);
      const __m256i los = _mm256_slli_epi16(lo, 7), his = _mm256_slli_epi16(hi, 7);
      acc0 = _mm256_add_epi32(acc0, _mm256_madd_epi16(_mm256_unpacklo_epi16(lo, los), wk));
      acc1 = _mm256_add_epi32(acc1, _mm256_madd_epi16(_mm256_unpackhi_epi16(lo, los), wk));
      acc2 = _mm256_add_epi32(acc2, _mm256_madd_epi16(_mm256_unpacklo_epi16(hi, his), wk));
      acc3 = _mm256_add_epi32(acc3, _mm256_madd_epi16(_mm256_unpackhi_epi16(hi, his), wk));
    }
    const __m256i a =
        _mm256_add_epi16(_mm256_packs_epi32(Normalise(acc0, post), Normalise(acc1, post)), bias);
    const __m256i c =
        _mm256_add_epi16(_mm256_packs_epi32(Normalise(acc2, post), Normalise(acc3, post)), bias);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + x), _mm256_packus_epi16(a, c));
  }
  TapRowsRange(rows, weight, count, dst, x, width, post);
}

void Mean(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, Sign sign) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i chromaOne = _mm256_srli_epi16(ChromaBias16(sign), 7);
  const __m256i limit = _mm256_set1_epi16(256);
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    const __m256i va = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + x));
    const __m256i vb = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + x));
    __m256i lo = _mm256_add_epi16(_mm256_unpacklo_epi8(va, zero), _mm256_unpacklo_epi8(vb, zero));
    __m256i hi = _mm256_add_epi16(_mm256_unpackhi_epi8(va, zero), _mm256_unpackhi_epi8(vb, zero));
    lo = _mm256_add_epi16(lo, _mm256_and_si256(_mm256_cmpgt_epi16(limit, lo), chromaOne));
    hi = _mm256_add_epi16(hi, _mm256_and_si256(_mm256_cmpgt_epi16(limit, hi), chromaOne));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + x),
                        _mm256_packus_epi16(_mm256_srli_epi16(lo, 1), _mm256_srli_epi16(hi, 1)));
  }
  MeanRows(a + x, b + x, dst + x, width - x, sign);
}

void Halve(const uint8_t* src, uint8_t* dst, int n) {
  const __m256i low = _mm256_set1_epi16(0xFF);
  int i = 0;
  for (; i + 32 <= n; i += 32) {
    const __m256i p = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 2 * i));
    const __m256i q = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + 2 * i + 32));
    const __m256i sp = _mm256_add_epi16(_mm256_and_si256(p, low), _mm256_srli_epi16(p, 8));
    const __m256i sq = _mm256_add_epi16(_mm256_and_si256(q, low), _mm256_srli_epi16(q, 8));
    // packus interleaves the halves: p0 q0 | p1 q1; put them back in order.
    const __m256i packed = _mm256_packus_epi16(_mm256_srli_epi16(sp, 1), _mm256_srli_epi16(sq, 1));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + i),
                        _mm256_permute4x64_epi64(packed, 0xD8));
  }
  HalveRow(src + 2 * i, dst + i, n - i);
}

}  // namespace

const Kernels& Avx2Kernels() {
  static const Kernels kernels{TapRow, TapRows, Mean, Halve, 8, "avx2"};
  return kernels;
}

}  // namespace tavo
}  // namespace orv
