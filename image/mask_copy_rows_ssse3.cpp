// SSSE3 form of the mask copy's pixel test for B G R pixels: sixteen pixels
// (three vectors) a step. Byte shuffles spread the pixels into 32-bit lanes
// for the luma and gather each pixel's verdict back into its three bytes.
#include <tmmintrin.h>

#include "image/mask_copy_rows.h"

namespace orv {
namespace image {
namespace {

inline __m128i Load(const uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void Store(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

inline void Merge(uint8_t* dst, __m128i src, __m128i mask) {
  const __m128i old = Load(dst);
  Store(dst, _mm_or_si128(_mm_and_si128(mask, src), _mm_andnot_si128(mask, old)));
}

// Luma (59 G + 30 R + 11 B) / 100 of the four B G R pixels in the low twelve
// bytes of `px`, in 32-bit lanes (division as a multiply by 5243 / 2^19).
inline __m128i Luma4(__m128i px) {
  const __m128i spread = _mm_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1);
  const __m128i b = _mm_shuffle_epi8(px, spread);
  const __m128i g = _mm_shuffle_epi8(
      px, _mm_add_epi8(spread, _mm_setr_epi8(1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0)));
  const __m128i r = _mm_shuffle_epi8(
      px, _mm_add_epi8(spread, _mm_setr_epi8(2, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0, 2, 0, 0, 0)));
  const __m128i sum = _mm_add_epi16(
      _mm_add_epi16(_mm_mullo_epi16(b, _mm_set1_epi32(11)), _mm_mullo_epi16(g, _mm_set1_epi32(59))),
      _mm_mullo_epi16(r, _mm_set1_epi32(30)));
  return _mm_srli_epi32(_mm_mulhi_epu16(sum, _mm_set1_epi32(5243)), 3);
}

// Lumas of sixteen pixels held in three vectors, as two vectors of eight
// 16-bit lanes (pixels 0..7 and 8..15).
inline void Luma16(const uint8_t* p, __m128i* lo, __m128i* hi) {
  const __m128i v0 = Load(p);
  const __m128i v1 = Load(p + 16);
  const __m128i v2 = Load(p + 32);
  *lo = _mm_packs_epi32(Luma4(v0), Luma4(_mm_alignr_epi8(v1, v0, 12)));
  *hi = _mm_packs_epi32(Luma4(_mm_alignr_epi8(v2, v1, 8)), Luma4(_mm_srli_si128(v2, 4)));
}

inline __m128i AbsDiff16(__m128i a, __m128i b) {
  return _mm_sub_epi16(_mm_max_epi16(a, b), _mm_min_epi16(a, b));
}

void MergeLine(uint8_t* dst, const uint8_t* src, const __m128i m[3]) {
  Merge(dst, Load(src), m[0]);
  Merge(dst + 16, Load(src + 16), m[1]);
  Merge(dst + 32, Load(src + 32), m[2]);
}

}  // namespace

void MaskRowBgrSsse3(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                     uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m128i limit = _mm_set1_epi16(5);
  const __m128i ones = _mm_set1_epi16(1);
  const __m128i c1 = _mm_set1_epi16(static_cast<short>(color1));
  const __m128i c2 = _mm_set1_epi16(static_cast<short>(color2));
  // Pixel verdicts (one byte each) to the bytes of the three vectors.
  const __m128i spread0 = _mm_setr_epi8(0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5);
  const __m128i spread1 = _mm_setr_epi8(5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10);
  const __m128i spread2 =
      _mm_setr_epi8(10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15);
  __m128i s1 = _mm_setzero_si128();
  __m128i s2 = _mm_setzero_si128();
  int k = 0;
  for (; k + 16 <= width; k += 16) {
    __m128i la0lo, la0hi, la1lo, la1hi, lb0lo, lb0hi, lb1lo, lb1hi;
    Luma16(a0 + 3 * k, &la0lo, &la0hi);
    Luma16(a1 + 3 * k, &la1lo, &la1hi);
    Luma16(b0 + 3 * k, &lb0lo, &lb0hi);
    Luma16(b1 + 3 * k, &lb1lo, &lb1hi);
    const __m128i stillLo = _mm_and_si128(_mm_cmplt_epi16(AbsDiff16(la0lo, lb0lo), limit),
                                          _mm_cmplt_epi16(AbsDiff16(la1lo, lb1lo), limit));
    const __m128i stillHi = _mm_and_si128(_mm_cmplt_epi16(AbsDiff16(la0hi, lb0hi), limit),
                                          _mm_cmplt_epi16(AbsDiff16(la1hi, lb1hi), limit));
    const __m128i verdict = _mm_packs_epi16(stillLo, stillHi);
    const __m128i masks[3] = {_mm_shuffle_epi8(verdict, spread0),
                              _mm_shuffle_epi8(verdict, spread1),
                              _mm_shuffle_epi8(verdict, spread2)};
    if (d0 != nullptr) MergeLine(d0 + 3 * k, a0 + 3 * k, masks);
    if (d1 != nullptr) MergeLine(d1 + 3 * k, a1 + 3 * k, masks);
    s1 = _mm_add_epi32(
        s1, _mm_madd_epi16(_mm_add_epi16(AbsDiff16(la0lo, c1), AbsDiff16(la0hi, c1)), ones));
    s2 = _mm_add_epi32(
        s2, _mm_madd_epi16(_mm_add_epi16(AbsDiff16(la1lo, c2), AbsDiff16(la1hi, c2)), ones));
  }
  if (sums != nullptr) {
    s1 = _mm_add_epi32(s1, _mm_srli_si128(s1, 8));
    s1 = _mm_add_epi32(s1, _mm_srli_si128(s1, 4));
    s2 = _mm_add_epi32(s2, _mm_srli_si128(s2, 8));
    s2 = _mm_add_epi32(s2, _mm_srli_si128(s2, 4));
    sums[0] = static_cast<uint32_t>(_mm_cvtsi128_si32(s1));
    sums[1] = static_cast<uint32_t>(_mm_cvtsi128_si32(s2));
  }
  MaskRowTail(kMaskBgr, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

}  // namespace image
}  // namespace orv
