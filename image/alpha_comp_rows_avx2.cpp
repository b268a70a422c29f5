// AVX2 form of the YUY2A composition row: sixteen pixels a step, in 16-bit
// lanes, with the arithmetic of the SSE2 form.
#include <immintrin.h>

#include "image/alpha_comp_rows.h"

namespace orv {
namespace image {
namespace {

inline __m256i Div255(__m256i x) {
  return _mm256_srli_epi16(_mm256_mulhi_epu16(x, _mm256_set1_epi16(-32639)), 7);
}

inline __m256i Select(__m256i mask, __m256i yes, __m256i no) {
  return _mm256_blendv_epi8(no, yes, mask);
}

inline __m256i Limit(__m256i v) {
  return _mm256_min_epi16(_mm256_max_epi16(v, _mm256_set1_epi16(1)), _mm256_set1_epi16(254));
}

// Each odd lane takes the value of the even lane before it.
inline __m256i PairFirst(__m256i v) {
  return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v, 0xA0), 0xA0);
}

}  // namespace

void Yuy2aRowAvx2(const uint8_t* yuvA, const uint8_t* alphaA, const uint8_t* yuvB,
                  const uint8_t* alphaB, uint8_t* yuvD, uint8_t* alphaD, int width) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i lowBytes = _mm256_set1_epi16(0x00FF);
  const __m256i full = _mm256_set1_epi16(255);
  const __m256i bias = _mm256_set1_epi16(128);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m256i pa = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(yuvA + 2 * x));
    const __m256i pb = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(yuvB + 2 * x));
    const __m256i a =
        _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(alphaA + x)));
    const __m256i c =
        _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(alphaB + x)));
    const __m256i aZero = _mm256_cmpeq_epi16(a, zero);
    const __m256i b = Select(aZero, c, Div255(_mm256_mullo_epi16(_mm256_sub_epi16(full, a), c)));
    const __m256i aFull = _mm256_cmpeq_epi16(a, full);
    const __m256i onlyB = _mm256_and_si256(aZero, _mm256_cmpeq_epi16(b, full));
    const __m256i nothing = _mm256_and_si256(aZero, _mm256_cmpeq_epi16(b, zero));

    const __m256i ya = _mm256_and_si256(pa, lowBytes);
    const __m256i yb = _mm256_and_si256(pb, lowBytes);
    __m256i y =
        Limit(Div255(_mm256_add_epi16(_mm256_mullo_epi16(yb, b), _mm256_mullo_epi16(ya, a))));
    y = _mm256_andnot_si256(nothing, y);
    y = Select(onlyB, yb, y);
    y = Select(aFull, ya, y);

    const __m256i ca = _mm256_srli_epi16(pa, 8);
    const __m256i cb = _mm256_srli_epi16(pb, 8);
    const __m256i t =
        _mm256_add_epi16(_mm256_mullo_epi16(_mm256_sub_epi16(ca, bias), PairFirst(a)),
                         _mm256_mullo_epi16(_mm256_sub_epi16(cb, bias), PairFirst(b)));
    const __m256i sign = _mm256_srai_epi16(t, 15);
    const __m256i magnitude = _mm256_sub_epi16(_mm256_xor_si256(t, sign), sign);
    const __m256i q = _mm256_sub_epi16(_mm256_xor_si256(Div255(magnitude), sign), sign);
    __m256i ch = Limit(_mm256_add_epi16(q, bias));
    ch = Select(PairFirst(nothing), bias, ch);
    ch = Select(PairFirst(onlyB), cb, ch);
    ch = Select(PairFirst(aFull), ca, ch);

    _mm256_storeu_si256(reinterpret_cast<__m256i*>(yuvD + 2 * x),
                        _mm256_or_si256(y, _mm256_slli_epi16(ch, 8)));
    const __m256i alphaOut = _mm256_add_epi16(a, b);
    const __m128i packed =
        _mm_packus_epi16(_mm256_castsi256_si128(alphaOut), _mm256_extracti128_si256(alphaOut, 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(alphaD + x), packed);
  }
  Yuy2aRowTail(yuvA, alphaA, yuvB, alphaB, yuvD, alphaD, x, width);
}

}  // namespace image
}  // namespace orv
