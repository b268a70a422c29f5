// SSE2 forms of the own scaler's row kernels. Sums are exact 32-bit integers,
// as in the plain form: a weight w is split into lo + 128 hi (PackWeight) and a
// sample s enters a 16-bit multiply-add as the pair (s, s << 7), which gives
// s x w in one 32-bit lane. Whatever a vector doesn't cover is left to the
// plain code (TapSum, TapRowsRange, MeanRows, HalveRow) in one place per kernel.
#include <emmintrin.h>

#include <cstring>

#include "image/tavo_kernels.h"

namespace orv {
namespace tavo {

namespace {

inline __m128i Load32(const uint8_t* p) {
  int32_t v;
  std::memcpy(&v, p, 4);
  return _mm_cvtsi32_si128(v);
}

// The pair (s, s << 7) of each 32-bit lane holding a sample between -128 and 255.
inline __m128i PairOf(__m128i s) {
  return _mm_or_si128(_mm_and_si128(s, _mm_set1_epi32(0xFFFF)), _mm_slli_epi32(s, 23));
}

// (a x r) >> 32 per unsigned lane.
inline __m128i MulHigh(__m128i a, __m128i r) {
  const __m128i even = _mm_srli_epi64(_mm_mul_epu32(a, r), 32);
  const __m128i odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), r);
  return _mm_or_si128(even, _mm_and_si128(odd, _mm_set_epi32(-1, 0, -1, 0)));
}

// The low 32 bits of a x r per lane (the same for signed and unsigned lanes).
inline __m128i MulLow(__m128i a, __m128i r) {
  const __m128i even = _mm_and_si128(_mm_mul_epu32(a, r), _mm_set_epi32(0, -1, 0, -1));
  const __m128i odd = _mm_slli_epi64(_mm_mul_epu32(_mm_srli_epi64(a, 32), r), 32);
  return _mm_or_si128(even, odd);
}

// The value of each sum before it is clamped: a signed 32-bit lane.
inline __m128i Normalise(__m128i sum, const Post& post) {
  switch (post.norm) {
    case Norm::kCubic:
      return _mm_srai_epi32(_mm_add_epi32(sum, _mm_set1_epi32(0x8000)), 16);
    case Norm::kAreaPlane:
      return MulHigh(sum, _mm_set1_epi32(static_cast<int32_t>(post.reciprocal)));
    case Norm::kAreaPacked:
      return _mm_srai_epi32(MulLow(sum, _mm_set1_epi32(static_cast<int32_t>(post.reciprocal))), 20);
  }
  return sum;
}

// 16-bit lanes: 128 where the byte is signed chroma, else 0.
inline __m128i ChromaBias16(Sign sign) {
  switch (sign) {
    case Sign::kUnsigned:
      return _mm_setzero_si128();
    case Sign::kSigned:
      return _mm_set1_epi16(128);
    case Sign::kInterleaved:
      return _mm_set1_epi32(128 << 16);
  }
  return _mm_setzero_si128();
}

void TapRow(const uint8_t* src, uint8_t* dst, const TapTable& table, const Post& post) {
  const bool chroma = post.sign == Sign::kSigned;
  int i = table.simdBegin;
  if (table.weight16) {
    // Four taps with 16-bit weights: the bytes of two outputs widened side by
    // side, multiplied and paired, then the pairs of each output added.
    const __m128i zero = _mm_setzero_si128();
    const __m128i correction = _mm_set1_epi32(chroma ? 128 * table.weightSum : 0);
    const __m128i bias = ChromaBias16(post.sign);
    const int32_t* st = table.start;
    for (; i + 4 <= table.simdEnd; i += 4) {
      const __m128i g01 = _mm_unpacklo_epi32(Load32(src + st[i]), Load32(src + st[i + 1]));
      const __m128i g23 = _mm_unpacklo_epi32(Load32(src + st[i + 2]), Load32(src + st[i + 3]));
      const __m128i* w =
          reinterpret_cast<const __m128i*>(table.weight16 + 4 * static_cast<size_t>(i));
      const __m128i m01 = _mm_madd_epi16(_mm_unpacklo_epi8(g01, zero), _mm_loadu_si128(w));
      const __m128i m23 = _mm_madd_epi16(_mm_unpacklo_epi8(g23, zero), _mm_loadu_si128(w + 1));
      const __m128 a = _mm_castsi128_ps(m01), b = _mm_castsi128_ps(m23);
      __m128i sum = _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(a, b, 0x88)),
                                  _mm_castps_si128(_mm_shuffle_ps(a, b, 0xDD)));
      sum = _mm_sub_epi32(sum, correction);
      __m128i v = Normalise(sum, post);
      v = _mm_packs_epi32(v, v);
      v = _mm_add_epi16(v, bias);
      v = _mm_packus_epi16(v, v);
      const int32_t out = _mm_cvtsi128_si32(v);
      std::memcpy(dst + i, &out, 4);
    }
    for (; i < table.simdEnd; ++i) dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
    return;
  }
  if (table.wideGroups > 0) {
    // Four-tap cubic spans: the bytes of two outputs widened side by side and
    // multiplied by both halves of the split weights, then the pairs of each
    // output added.
    for (; i < table.wideFirst; ++i) dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
    const __m128i zero = _mm_setzero_si128();
    const __m128i center = _mm_set1_epi16(chroma ? 128 : 0);
    const __m128i bias = ChromaBias16(post.sign);
    const int32_t* st = table.start;
    const int end = table.wideFirst + 8 * table.wideGroups;
    for (; i < end; i += 4) {
      const __m128i g01 = _mm_unpacklo_epi32(Load32(src + st[i]), Load32(src + st[i + 1]));
      const __m128i g23 = _mm_unpacklo_epi32(Load32(src + st[i + 2]), Load32(src + st[i + 3]));
      const __m128i b01 = _mm_sub_epi16(_mm_unpacklo_epi8(g01, zero), center);
      const __m128i b23 = _mm_sub_epi16(_mm_unpacklo_epi8(g23, zero), center);
      const size_t at =
          32 * static_cast<size_t>((i - table.wideFirst) / 8) + 4 * ((i - table.wideFirst) % 8);
      const __m128i* lo = reinterpret_cast<const __m128i*>(table.wideLo + at);
      const __m128i* hi = reinterpret_cast<const __m128i*>(table.wideHi + at);
      const __m128i m01 =
          _mm_add_epi32(_mm_madd_epi16(b01, _mm_loadu_si128(lo)),
                        _mm_slli_epi32(_mm_madd_epi16(b01, _mm_loadu_si128(hi)), 7));
      const __m128i m23 =
          _mm_add_epi32(_mm_madd_epi16(b23, _mm_loadu_si128(lo + 1)),
                        _mm_slli_epi32(_mm_madd_epi16(b23, _mm_loadu_si128(hi + 1)), 7));
      const __m128 a = _mm_castsi128_ps(m01), b = _mm_castsi128_ps(m23);
      const __m128i sum = _mm_add_epi32(_mm_castps_si128(_mm_shuffle_ps(a, b, 0x88)),
                                        _mm_castps_si128(_mm_shuffle_ps(a, b, 0xDD)));
      __m128i v = Normalise(sum, post);
      v = _mm_packs_epi32(v, v);
      v = _mm_add_epi16(v, bias);
      v = _mm_packus_epi16(v, v);
      const int32_t out = _mm_cvtsi128_si32(v);
      std::memcpy(dst + i, &out, 4);
    }
  }
  for (; i < table.simdEnd && (i & 3); ++i) {
    dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
  }
  const __m128i bias = ChromaBias16(post.sign);
  const __m128i flip = chroma ? _mm_set1_epi8(static_cast<char>(0x80)) : _mm_setzero_si128();
  const __m128i byteMask = _mm_set1_epi32(0xFF);
  for (; i + 4 <= table.simdEnd; i += 4) {
    const int32_t* w = table.packed +
                       (static_cast<size_t>(i / kTapBlock) * table.taps) * kTapBlock +
                       i % kTapBlock;
    const int32_t* st = table.start + i;
    __m128i acc = _mm_setzero_si128();
    for (int k = 0; k < table.taps; k += 4) {
      __m128i g =
          _mm_unpacklo_epi64(_mm_unpacklo_epi32(Load32(src + st[0] + k), Load32(src + st[1] + k)),
                             _mm_unpacklo_epi32(Load32(src + st[2] + k), Load32(src + st[3] + k)));
      g = _mm_xor_si128(g, flip);  // signed chroma: c - 128 as a signed byte
      for (int m = 0; m < 4; ++m) {
        __m128i s;
        if (chroma) {
          s = _mm_srai_epi32(_mm_sll_epi32(g, _mm_cvtsi32_si128(24 - 8 * m)), 24);
        } else {
          s = _mm_and_si128(_mm_srl_epi32(g, _mm_cvtsi32_si128(8 * m)), byteMask);
        }
        const __m128i wk = _mm_loadu_si128(
            reinterpret_cast<const __m128i*>(w + static_cast<size_t>(k + m) * kTapBlock));
        acc = _mm_add_epi32(acc, _mm_madd_epi16(PairOf(s), wk));
      }
    }
    __m128i v = Normalise(acc, post);
    v = _mm_packs_epi32(v, v);
    v = _mm_add_epi16(v, bias);
    v = _mm_packus_epi16(v, v);
    const int32_t out = _mm_cvtsi128_si32(v);
    std::memcpy(dst + i, &out, 4);
  }
  for (; i < table.simdEnd; ++i) dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
}

void TapRows(const uint8_t* const* rows, const int32_t* weight, int count, uint8_t* dst, int width,
             const Post& post) {
  const __m128i bias = ChromaBias16(post.sign);
  const __m128i zero = _mm_setzero_si128();
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m128i acc0 = zero, acc1 = zero, acc2 = zero, acc3 = zero;
    for (int k = 0; k < count; ++k) {
      const __m128i wk = _mm_set1_epi32(PackWeight(weight[k]));
      const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k] + x));
      const __m128i lo = _mm_sub_epi16(_mm_unpacklo_epi8(b, zero), bias);
      const __m128i hi = _mm_sub_epi16(_mm_unpackhi_epi8(b, zero), bias);
      const __m128i los = _mm_slli_epi16(lo, 7), his = _mm_slli_epi16(hi, 7);
      acc0 = _mm_add_epi32(acc0, _mm_madd_epi16(_mm_unpacklo_epi16(lo, los), wk));
      acc1 = _mm_add_epi32(acc1, _mm_madd_epi16(_mm_unpackhi_epi16(lo, los), wk));
      acc2 = _mm_add_epi32(acc2, _mm_madd_epi16(_mm_unpacklo_epi16(hi, his), wk));
      acc3 = _mm_add_epi32(acc3, _mm_madd_epi16(_mm_unpackhi_epi16(hi, his), wk));
    }
    const __m128i a =
        _mm_add_epi16(_mm_packs_epi32(Normalise(acc0, post), Normalise(acc1, post)), bias);
    const __m128i c =
        _mm_add_epi16(_mm_packs_epi32(Normalise(acc2, post), Normalise(acc3, post)), bias);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), _mm_packus_epi16(a, c));
  }
  TapRowsRange(rows, weight, count, dst, x, width, post);
}

// Mean of two rows: (a + b) >> 1, and for signed chroma 128 + (a + b - 256) / 2
// toward zero, which is (a + b + 1) >> 1 below 256 and (a + b) >> 1 from there.
void Mean(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, Sign sign) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i chromaOne = _mm_srli_epi16(ChromaBias16(sign), 7);
  const __m128i limit = _mm_set1_epi16(256);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m128i va = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + x));
    const __m128i vb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + x));
    __m128i lo = _mm_add_epi16(_mm_unpacklo_epi8(va, zero), _mm_unpacklo_epi8(vb, zero));
    __m128i hi = _mm_add_epi16(_mm_unpackhi_epi8(va, zero), _mm_unpackhi_epi8(vb, zero));
    lo = _mm_add_epi16(lo, _mm_and_si128(_mm_cmplt_epi16(lo, limit), chromaOne));
    hi = _mm_add_epi16(hi, _mm_and_si128(_mm_cmplt_epi16(hi, limit), chromaOne));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x),
                     _mm_packus_epi16(_mm_srli_epi16(lo, 1), _mm_srli_epi16(hi, 1)));
  }
  MeanRows(a + x, b + x, dst + x, width - x, sign);
}

void Halve(const uint8_t* src, uint8_t* dst, int n) {
  const __m128i low = _mm_set1_epi16(0xFF);
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m128i p = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * i));
    const __m128i q = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + 2 * i + 16));
    const __m128i sp = _mm_add_epi16(_mm_and_si128(p, low), _mm_srli_epi16(p, 8));
    const __m128i sq = _mm_add_epi16(_mm_and_si128(q, low), _mm_srli_epi16(q, 8));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + i),
                     _mm_packus_epi16(_mm_srli_epi16(sp, 1), _mm_srli_epi16(sq, 1)));
  }
  HalveRow(src + 2 * i, dst + i, n - i);
}

}  // namespace

const Kernels& Sse2Kernels() {
  static const Kernels kernels{TapRow, TapRows, Mean, Halve, 4, "sse2"};
  return kernels;
}

}  // namespace tavo
}  // namespace orv
