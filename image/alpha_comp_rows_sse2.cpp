// SSE2 form of the YUY2A composition row: eight pixels a step, in 16-bit
// lanes. Every product fits in 16 bits (a + b is at most 255), and division
// by 255 is a multiply by 32897 / 2^23, exact for every 16-bit value.
#include <emmintrin.h>

#include "image/alpha_comp_rows.h"

namespace orv {
namespace image {
namespace {

inline __m128i Div255(__m128i x) {
  return _mm_srli_epi16(_mm_mulhi_epu16(x, _mm_set1_epi16(-32639)), 7);
}

inline __m128i Select(__m128i mask, __m128i yes, __m128i no) {
  return _mm_or_si128(_mm_and_si128(mask, yes), _mm_andnot_si128(mask, no));
}

inline __m128i Limit(__m128i v) {
  return _mm_min_epi16(_mm_max_epi16(v, _mm_set1_epi16(1)), _mm_set1_epi16(254));
}

}  // namespace

void Yuy2aRowSse2(const uint8_t* yuvA, const uint8_t* alphaA, const uint8_t* yuvB,
                  const uint8_t* alphaB, uint8_t* yuvD, uint8_t* alphaD, int width) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i lowBytes = _mm_set1_epi16(0x00FF);
  const __m128i full = _mm_set1_epi16(255);
  const __m128i bias = _mm_set1_epi16(128);
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    const __m128i pa = _mm_loadu_si128(reinterpret_cast<const __m128i*>(yuvA + 2 * x));
    const __m128i pb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(yuvB + 2 * x));
    const __m128i a =
        _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(alphaA + x)), zero);
    const __m128i c =
        _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(alphaB + x)), zero);
    const __m128i aZero = _mm_cmpeq_epi16(a, zero);
    const __m128i b = Select(aZero, c, Div255(_mm_mullo_epi16(_mm_sub_epi16(full, a), c)));
    const __m128i aFull = _mm_cmpeq_epi16(a, full);
    const __m128i onlyB = _mm_and_si128(aZero, _mm_cmpeq_epi16(b, full));
    const __m128i nothing = _mm_and_si128(aZero, _mm_cmpeq_epi16(b, zero));

    // Luma, each pixel by its own weights.
    const __m128i ya = _mm_and_si128(pa, lowBytes);
    const __m128i yb = _mm_and_si128(pb, lowBytes);
    __m128i y = Limit(Div255(_mm_add_epi16(_mm_mullo_epi16(yb, b), _mm_mullo_epi16(ya, a))));
    y = _mm_andnot_si128(nothing, y);
    y = Select(onlyB, yb, y);
    y = Select(aFull, ya, y);

    // Chroma, by the weights of the first pixel of each pair.
    const __m128i pairA = _mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0xA0), 0xA0);
    const __m128i pairB = _mm_shufflehi_epi16(_mm_shufflelo_epi16(b, 0xA0), 0xA0);
    const __m128i pairFull = _mm_shufflehi_epi16(_mm_shufflelo_epi16(aFull, 0xA0), 0xA0);
    const __m128i pairOnlyB = _mm_shufflehi_epi16(_mm_shufflelo_epi16(onlyB, 0xA0), 0xA0);
    const __m128i pairNothing = _mm_shufflehi_epi16(_mm_shufflelo_epi16(nothing, 0xA0), 0xA0);
    const __m128i ca = _mm_srli_epi16(pa, 8);
    const __m128i cb = _mm_srli_epi16(pb, 8);
    const __m128i t = _mm_add_epi16(_mm_mullo_epi16(_mm_sub_epi16(ca, bias), pairA),
                                    _mm_mullo_epi16(_mm_sub_epi16(cb, bias), pairB));
    const __m128i sign = _mm_srai_epi16(t, 15);
    const __m128i magnitude = _mm_sub_epi16(_mm_xor_si128(t, sign), sign);
    const __m128i q = _mm_sub_epi16(_mm_xor_si128(Div255(magnitude), sign), sign);
    __m128i ch = Limit(_mm_add_epi16(q, bias));
    ch = Select(pairNothing, bias, ch);
    ch = Select(pairOnlyB, cb, ch);
    ch = Select(pairFull, ca, ch);

    _mm_storeu_si128(reinterpret_cast<__m128i*>(yuvD + 2 * x),
                     _mm_or_si128(y, _mm_slli_epi16(ch, 8)));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(alphaD + x),
                     _mm_packus_epi16(_mm_add_epi16(a, b), zero));
  }
  Yuy2aRowTail(yuvA, alphaA, yuvB, alphaB, yuvD, alphaD, x, width);
}

}  // namespace image
}  // namespace orv
