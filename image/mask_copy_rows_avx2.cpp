// AVX2 forms of the mask copy's pixel test. Same bytes and sums as the plain
// form; the rest of a line past the last whole vector goes to MaskRowTail.
#include <immintrin.h>

#include "image/mask_copy_rows.h"

namespace orv {
namespace image {
namespace {

inline __m256i Load(const uint8_t* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
inline void Store(uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

inline __m256i StillBytes(__m256i a, __m256i b) {
  const __m256i diff = _mm256_or_si256(_mm256_subs_epu8(a, b), _mm256_subs_epu8(b, a));
  return _mm256_cmpeq_epi8(_mm256_subs_epu8(diff, _mm256_set1_epi8(4)), _mm256_setzero_si256());
}

inline void Merge(uint8_t* dst, __m256i src, __m256i mask) {
  if (dst == nullptr) return;
  Store(dst, _mm256_blendv_epi8(Load(dst), src, mask));
}

inline uint32_t Total64(__m256i sad) {
  const __m128i s = _mm_add_epi64(_mm256_castsi256_si128(sad), _mm256_extracti128_si256(sad, 1));
  return static_cast<uint32_t>(_mm_cvtsi128_si32(s)) +
         static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(s, 8)));
}

inline uint32_t Total32(__m256i v) {
  __m128i s = _mm_add_epi32(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
  s = _mm_add_epi32(s, _mm_srli_si128(s, 8));
  s = _mm_add_epi32(s, _mm_srli_si128(s, 4));
  return static_cast<uint32_t>(_mm_cvtsi128_si32(s));
}

// Luma (59 G + 30 R + 11 B) / 100 of eight B G R X pixels in 32-bit lanes.
inline __m256i Luma8(__m256i px) {
  const __m256i byteMask = _mm256_set1_epi32(0xFF);
  const __m256i b = _mm256_and_si256(px, byteMask);
  const __m256i g = _mm256_and_si256(_mm256_srli_epi32(px, 8), byteMask);
  const __m256i r = _mm256_and_si256(_mm256_srli_epi32(px, 16), byteMask);
  const __m256i sum =
      _mm256_add_epi16(_mm256_add_epi16(_mm256_mullo_epi16(b, _mm256_set1_epi32(11)),
                                        _mm256_mullo_epi16(g, _mm256_set1_epi32(59))),
                       _mm256_mullo_epi16(r, _mm256_set1_epi32(30)));
  return _mm256_srli_epi32(_mm256_mulhi_epu16(sum, _mm256_set1_epi32(5243)), 3);
}

// Luma of sixteen pixels in 16-bit lanes, in the lane order of packs: the
// unpacks in MaskRowBgrxAvx2 undo it.
inline __m256i Luma16(const uint8_t* p) {
  return _mm256_packs_epi32(Luma8(Load(p)), Luma8(Load(p + 32)));
}

inline __m256i AbsDiff16(__m256i a, __m256i b) {
  return _mm256_sub_epi16(_mm256_max_epi16(a, b), _mm256_min_epi16(a, b));
}

}  // namespace

void MaskRowPlaneAvx2(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                      uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m256i c1 = _mm256_set1_epi8(static_cast<char>(color1));
  const __m256i c2 = _mm256_set1_epi8(static_cast<char>(color2));
  __m256i s1 = _mm256_setzero_si256();
  __m256i s2 = _mm256_setzero_si256();
  int k = 0;
  for (; k + 32 <= width; k += 32) {
    const __m256i va0 = Load(a0 + k);
    const __m256i va1 = Load(a1 + k);
    const __m256i still =
        _mm256_and_si256(StillBytes(va0, Load(b0 + k)), StillBytes(va1, Load(b1 + k)));
    Merge(d0 ? d0 + k : nullptr, va0, still);
    Merge(d1 ? d1 + k : nullptr, va1, still);
    s1 = _mm256_add_epi64(s1, _mm256_sad_epu8(va0, c1));
    s2 = _mm256_add_epi64(s2, _mm256_sad_epu8(va1, c2));
  }
  if (sums != nullptr) {
    sums[0] = Total64(s1);
    sums[1] = Total64(s2);
  }
  MaskRowTail(kMaskPlane, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

void MaskRowYuy2Avx2(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                     uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m256i lumaBytes = _mm256_set1_epi16(0x00FF);
  const __m256i c1 = _mm256_set1_epi16(static_cast<short>(color1 & 0xFF));
  const __m256i c2 = _mm256_set1_epi16(static_cast<short>(color2 & 0xFF));
  __m256i s1 = _mm256_setzero_si256();
  __m256i s2 = _mm256_setzero_si256();
  int k = 0;
  for (; k + 16 <= width; k += 16) {
    const __m256i va0 = Load(a0 + 2 * k);
    const __m256i va1 = Load(a1 + 2 * k);
    const __m256i still = _mm256_and_si256(
        lumaBytes,
        _mm256_and_si256(StillBytes(va0, Load(b0 + 2 * k)), StillBytes(va1, Load(b1 + 2 * k))));
    Merge(d0 ? d0 + 2 * k : nullptr, va0, still);
    Merge(d1 ? d1 + 2 * k : nullptr, va1, still);
    s1 = _mm256_add_epi64(s1, _mm256_sad_epu8(_mm256_and_si256(va0, lumaBytes), c1));
    s2 = _mm256_add_epi64(s2, _mm256_sad_epu8(_mm256_and_si256(va1, lumaBytes), c2));
  }
  if (sums != nullptr) {
    sums[0] = Total64(s1);
    sums[1] = Total64(s2);
  }
  MaskRowTail(kMaskYuy2, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

void MaskRowBgrxAvx2(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
                     uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  const __m256i colourBytes = _mm256_set1_epi32(0x00FFFFFF);
  const __m256i limit = _mm256_set1_epi16(5);
  const __m256i ones = _mm256_set1_epi16(1);
  const __m256i c1 = _mm256_set1_epi16(static_cast<short>(color1));
  const __m256i c2 = _mm256_set1_epi16(static_cast<short>(color2));
  __m256i s1 = _mm256_setzero_si256();
  __m256i s2 = _mm256_setzero_si256();
  int k = 0;
  for (; k + 16 <= width; k += 16) {
    const __m256i la0 = Luma16(a0 + 4 * k);
    const __m256i la1 = Luma16(a1 + 4 * k);
    const __m256i still =
        _mm256_and_si256(_mm256_cmpgt_epi16(limit, AbsDiff16(la0, Luma16(b0 + 4 * k))),
                         _mm256_cmpgt_epi16(limit, AbsDiff16(la1, Luma16(b1 + 4 * k))));
    const __m256i maskLo = _mm256_and_si256(_mm256_unpacklo_epi16(still, still), colourBytes);
    const __m256i maskHi = _mm256_and_si256(_mm256_unpackhi_epi16(still, still), colourBytes);
    if (d0 != nullptr) {
      Merge(d0 + 4 * k, Load(a0 + 4 * k), maskLo);
      Merge(d0 + 4 * k + 32, Load(a0 + 4 * k + 32), maskHi);
    }
    if (d1 != nullptr) {
      Merge(d1 + 4 * k, Load(a1 + 4 * k), maskLo);
      Merge(d1 + 4 * k + 32, Load(a1 + 4 * k + 32), maskHi);
    }
    s1 = _mm256_add_epi32(s1, _mm256_madd_epi16(AbsDiff16(la0, c1), ones));
    s2 = _mm256_add_epi32(s2, _mm256_madd_epi16(AbsDiff16(la1, c2), ones));
  }
  if (sums != nullptr) {
    sums[0] = Total32(s1);
    sums[1] = Total32(s2);
  }
  MaskRowTail(kMaskBgrx, a0, a1, b0, b1, d0, d1, k, width, color1, color2, sums);
}

}  // namespace image
}  // namespace orv
