// AVX2 forms of the scaler's row kernels: the arithmetic of the SSE2 forms on
// twice the width. Columns left over go through the SSE2 and plain forms.
#include <immintrin.h>

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"

namespace orv {
namespace vrscl {

namespace {

inline __m256i Widen16(const uint8_t* p) {
  return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

inline __m256i CoefPair(int16_t c0, int16_t c1) {
  return _mm256_set1_epi32(static_cast<int32_t>(
      (static_cast<uint32_t>(static_cast<uint16_t>(c1)) << 16) | static_cast<uint16_t>(c0)));
}

}  // namespace

void VerticalAvx2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width) {
  const __m256i round = _mm256_set1_epi32(1 << (kVerticalShift - 1));
  const __m256i zero = _mm256_setzero_si256();
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i lo0 = zero, hi0 = zero, lo1 = zero, hi1 = zero;
    int k = 0;
    for (; k < taps; k += 2) {
      const uint8_t* ra = src + k * step + x;
      const __m256i c = CoefPair(coefs[k], k + 1 < taps ? coefs[k + 1] : 0);
      const __m256i a0 = Widen16(ra);
      const __m256i a1 = Widen16(ra + 16);
      __m256i b0 = zero, b1 = zero;
      if (k + 1 < taps) {
        b0 = Widen16(ra + step);
        b1 = Widen16(ra + step + 16);
      }
      lo0 = _mm256_add_epi32(lo0, _mm256_madd_epi16(_mm256_unpacklo_epi16(a0, b0), c));
      hi0 = _mm256_add_epi32(hi0, _mm256_madd_epi16(_mm256_unpackhi_epi16(a0, b0), c));
      lo1 = _mm256_add_epi32(lo1, _mm256_madd_epi16(_mm256_unpacklo_epi16(a1, b1), c));
      hi1 = _mm256_add_epi32(hi1, _mm256_madd_epi16(_mm256_unpackhi_epi16(a1, b1), c));
    }
    lo0 = _mm256_srai_epi32(_mm256_add_epi32(lo0, round), kVerticalShift);
    hi0 = _mm256_srai_epi32(_mm256_add_epi32(hi0, round), kVerticalShift);
    lo1 = _mm256_srai_epi32(_mm256_add_epi32(lo1, round), kVerticalShift);
    hi1 = _mm256_srai_epi32(_mm256_add_epi32(hi1, round), kVerticalShift);
    // unpacklo/hi split each 128-bit lane, and packs joins them back in order.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), _mm256_packs_epi32(lo0, hi0));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x + 16), _mm256_packs_epi32(lo1, hi1));
  }
  if (x < width) VerticalSse2(src + x, step, taps, coefs, out + x, width - x);
}

namespace {

inline __m256i Madd2x8(const int16_t* p0, const int16_t* p1, const int16_t* c0, const int16_t* c1) {
  const __m256i v = _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p0))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(p1)), 1);
  const __m256i c = _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(c0))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(c1)), 1);
  return _mm256_madd_epi16(v, c);
}

}  // namespace

void HorizontalAvx2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, int stride) {
  const __m256i round = _mm256_set1_epi32(1 << (kHorizontalShift - 1));
  int i = 0;
  for (; i + 8 <= width; i += 8) {
    // Accumulator j holds destination sample i + j in its low lane and
    // i + j + 4 in its high lane.
    const int16_t* p[8];
    const int16_t* c[8];
    for (int j = 0; j < 8; ++j) {
      p[j] = in + start[i + j];
      c[j] = coefs + static_cast<ptrdiff_t>(i + j) * stride;
    }
    __m256i a0 = _mm256_setzero_si256(), a1 = a0, a2 = a0, a3 = a0;
    for (int k = 0; k < stride; k += 8) {
      a0 = _mm256_add_epi32(a0, Madd2x8(p[0] + k, p[4] + k, c[0] + k, c[4] + k));
      a1 = _mm256_add_epi32(a1, Madd2x8(p[1] + k, p[5] + k, c[1] + k, c[5] + k));
      a2 = _mm256_add_epi32(a2, Madd2x8(p[2] + k, p[6] + k, c[2] + k, c[6] + k));
      a3 = _mm256_add_epi32(a3, Madd2x8(p[3] + k, p[7] + k, c[3] + k, c[7] + k));
    }
    // Low lane: sums of i .. i + 3; high lane: i + 4 .. i + 7.
    __m256i s = _mm256_hadd_epi32(_mm256_hadd_epi32(a0, a1), _mm256_hadd_epi32(a2, a3));
    s = _mm256_srai_epi32(_mm256_add_epi32(s, round), kHorizontalShift);
    s = _mm256_packs_epi32(s, s);
    s = _mm256_packus_epi16(s, s);
    const __m128i bytes =
        _mm_unpacklo_epi32(_mm256_castsi256_si128(s), _mm256_extracti128_si256(s, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), bytes);
  }
  if (i < width) {
    HorizontalSse2(in, out + i, width - i, start + i, coefs + static_cast<ptrdiff_t>(i) * stride,
                   stride);
  }
}

void NarrowAvx2(const int16_t* in, uint8_t* out, int width) {
  const __m256i round = _mm256_set1_epi16(1 << (kWorkBits - 1));
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + x));
    __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + x + 16));
    a = _mm256_srai_epi16(_mm256_adds_epi16(a, round), kWorkBits);
    b = _mm256_srai_epi16(_mm256_adds_epi16(b, round), kWorkBits);
    // packus works per 128-bit lane; restore the order of the four quarters.
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), packed);
  }
  if (x < width) NarrowSse2(in + x, out + x, width - x);
}

}  // namespace vrscl
}  // namespace orv
