// SSE2 forms of the mask copy's pixel test. Same bytes and sums as the plain
// form; the rest of a line past the last whole vector goes to MaskRowTail.
#include <emmintrin.h>

#include "image/mask_copy_rows.h"

namespace orv {
namespace image {
namespace {

inline __m128i Load(const uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void Store(uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// 0xFF in each byte whose two inputs differ by less than 5.
inline __m128i StillBytes(__m128i a, __m128i b) {
  const __m128i diff = _mm_or_si128(_mm_subs_epu8(a, b), _mm_subs_epu8(b, a));
  return _mm_cmpeq_epi8(_mm_subs_epu8(diff, _mm_set1_epi8(4)), _mm_setzero_si128());
}

// dst = src where mask, else dst.
inline void Merge(uint8_t* dst, __m128i src, __m128i mask) {
  if (dst == nullptr) return;
  const __m128i old = Load(dst);
  Store(dst, _mm_or_si128(_mm_and_si128(mask, src), _mm_andnot_si128(mask, old)));
}

inline uint32_t Total(__m128i sad) {
  return static_cast<uint32_t>(_mm_cvtsi128_si32(sad)) +
         static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(sad, 8)));
}

// Luma (59 G + 30 R + 11 B) / 100 of four B G R X pixels, in 32-bit lanes.
// The division is a multiply by 5243 / 2^19, exact for sums up to 25500.
inline __m128i Luma4(__m128i px) {
  const __m128i byteMask = _mm_set1_epi32(0xFF);
  const __m128i b = _mm_and_si128(px, byteMask);
  const __m128i g = _mm_and_si128(_mm_srli_epi32(px, 8), byteMask);
  const __m128i r = _mm_and_si128(_mm_srli_epi32(px, 16), byteMask);
  const __m128i sum = _mm_add_epi16(
      _mm_add_epi16(_mm_mullo_epi16(b, _mm_set1_epi32(11)), _mm_mullo_epi16(g, _mm_set1_epi32(59))),
      _mm_mullo_epi16(r, _mm_set1_epi32(30)));
  return _mm_srli_epi32(_mm_mulhi_epu16(sum, _mm_set1_epi32(5243)), 3);
}

// Luma of eight B G R X pixels, in 16-bit lanes.
inline __m128i Luma8(const uint8_t* p) {
  return _mm_packs_epi32(Luma4(Load(p)), Luma4(Load(p + 16)));
}

inline __m128i AbsDiff16(__m128i a, __m128i b) {
  return _mm_sub_epi16(_mm_max_epi16(a, b), _mm_min_epi16(a, b));
}

}  // namespace

void MaskRowPlaneSse2(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                      uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m128i c1 = _mm_set1_epi8(static_cast<char>(color1));
  const __m128i c2 = _mm_set1_epi8(static_cast<char>(color2));
  __m128i s1 = _mm_setzero_si128();
  __m128i s2 = _mm_setzero_si128();
  int k = 0;
  for (; k + 16 <= width; k += 16) {
    const __m128i va0 = Load(a0 + k);
    const __m128i va1 = Load(a1 + k);
    const __m128i still =
        _mm_and_si128(StillBytes(va0, Load(b0 + k)), StillBytes(va1, Load(b1 + k)));
    Merge(d0 ? d0 + k : nullptr, va0, still);
    Merge(d1 ? d1 + k : nullptr, va1, still);
    s1 = _mm_add_epi64(s1, _mm_sad_epu8(va0, c1));
    s2 = _mm_add_epi64(s2, _mm_sad_epu8(va1, c2));
  }
  if (sums != nullptr) {
    sums[0] = Total(s1);
    sums[1] = Total(s2);
  }
  MaskRowTail(kMaskPlane, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

void MaskRowYuy2Sse2(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                     uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m128i lumaBytes = _mm_set1_epi16(0x00FF);
  const __m128i c1 = _mm_set1_epi16(static_cast<short>(color1 & 0xFF));
  const __m128i c2 = _mm_set1_epi16(static_cast<short>(color2 & 0xFF));
  __m128i s1 = _mm_setzero_si128();
  __m128i s2 = _mm_setzero_si128();
  int k = 0;
  for (; k + 8 <= width; k += 8) {
    const __m128i va0 = Load(a0 + 2 * k);
    const __m128i va1 = Load(a1 + 2 * k);
    const __m128i still = _mm_and_si128(
        lumaBytes,
        _mm_and_si128(StillBytes(va0, Load(b0 + 2 * k)), StillBytes(va1, Load(b1 + 2 * k))));
    Merge(d0 ? d0 + 2 * k : nullptr, va0, still);
    Merge(d1 ? d1 + 2 * k : nullptr, va1, still);
    s1 = _mm_add_epi64(s1, _mm_sad_epu8(_mm_and_si128(va0, lumaBytes), c1));
    s2 = _mm_add_epi64(s2, _mm_sad_epu8(_mm_and_si128(va1, lumaBytes), c2));
  }
  if (sums != nullptr) {
    sums[0] = Total(s1);
    sums[1] = Total(s2);
  }
  MaskRowTail(kMaskYuy2, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

void MaskRowBgrxSse2(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                     uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m128i colourBytes = _mm_set1_epi32(0x00FFFFFF);
  const __m128i limit = _mm_set1_epi16(5);
  const __m128i ones = _mm_set1_epi16(1);
  const __m128i c1 = _mm_set1_epi16(static_cast<short>(color1));
  const __m128i c2 = _mm_set1_epi16(static_cast<short>(color2));
  __m128i s1 = _mm_setzero_si128();
  __m128i s2 = _mm_setzero_si128();
  int k = 0;
  for (; k + 8 <= width; k += 8) {
    const __m128i la0 = Luma8(a0 + 4 * k);
    const __m128i la1 = Luma8(a1 + 4 * k);
    const __m128i still = _mm_and_si128(_mm_cmplt_epi16(AbsDiff16(la0, Luma8(b0 + 4 * k)), limit),
                                        _mm_cmplt_epi16(AbsDiff16(la1, Luma8(b1 + 4 * k)), limit));
    const __m128i maskLo = _mm_and_si128(_mm_unpacklo_epi16(still, still), colourBytes);
    const __m128i maskHi = _mm_and_si128(_mm_unpackhi_epi16(still, still), colourBytes);
    if (d0 != nullptr) {
      Merge(d0 + 4 * k, Load(a0 + 4 * k), maskLo);
      Merge(d0 + 4 * k + 16, Load(a0 + 4 * k + 16), maskHi);
    }
    if (d1 != nullptr) {
      Merge(d1 + 4 * k, Load(a1 + 4 * k), maskLo);
      Merge(d1 + 4 * k + 16, Load(a1 + 4 * k + 16), maskHi);
    }
    s1 = _mm_add_epi32(s1, _mm_madd_epi16(AbsDiff16(la0, c1), ones));
    s2 = _mm_add_epi32(s2, _mm_madd_epi16(AbsDiff16(la1, c2), ones));
  }
  if (sums != nullptr) {
    // Four 32-bit partial sums each; fold them.
    s1 = _mm_add_epi32(s1, _mm_srli_si128(s1, 8));
    s1 = _mm_add_epi32(s1, _mm_srli_si128(s1, 4));
    s2 = _mm_add_epi32(s2, _mm_srli_si128(s2, 8));
    s2 = _mm_add_epi32(s2, _mm_srli_si128(s2, 4));
    sums[0] = static_cast<uint32_t>(_mm_cvtsi128_si32(s1));
    sums[1] = static_cast<uint32_t>(_mm_cvtsi128_si32(s2));
  }
  MaskRowTail(kMaskBgrx, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

}  // namespace image
}  // namespace orv
