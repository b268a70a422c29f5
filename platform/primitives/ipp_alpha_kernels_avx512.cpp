// AVX-512 form of the 4-channel "a over b" composition: the 16-bit arithmetic
// of the AVX2 form on sixteen pixels a step (four per 128-bit quarter), so the
// bytes are the plain bytes.
#include <immintrin.h>

#include <cstdint>

#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

// (x + 127) / 255 for 0 <= x <= 65025 in unsigned 16-bit lanes.
// ((x + 127) x 0x8081) >> 23 is that quotient for every such x (0x8081 / 2^23 is
// 1/255 less 1/2^31 or so, too little to cross an integer below 65152 / 255).
inline __m512i Div255u16(__m512i x) {
  const __m512i t = _mm512_add_epi16(x, _mm512_set1_epi16(127));
  return _mm512_srli_epi16(_mm512_mulhi_epu16(t, _mm512_set1_epi16(static_cast<int16_t>(0x8081))),
                           7);
}

// "a over b" for eight pixels held as 16-bit lanes (two per quarter).
inline __m512i Over8(__m512i a, __m512i b) {
  const __m512i c255 = _mm512_set1_epi16(255);
  const __m512i alpha =
      _mm512_broadcast_i32x4(_mm_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15));
  const __m512i wa = _mm512_shuffle_epi8(a, alpha);
  const __m512i ab = _mm512_shuffle_epi8(b, alpha);
  const __m512i wb = Div255u16(_mm512_mullo_epi16(_mm512_sub_epi16(c255, wa), ab));
  const __m512i col =
      Div255u16(_mm512_add_epi16(_mm512_mullo_epi16(wa, a), _mm512_mullo_epi16(wb, b)));
  // Every fourth lane is alpha: wa + wb there.
  return _mm512_mask_blend_epi16(0x88888888u, col, _mm512_add_epi16(wa, wb));
}

void AlphaOverAC4(const uint8_t* a, const uint8_t* b, uint8_t* d, int width) {
  const __m512i z = _mm512_setzero_si512();
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m512i va = _mm512_loadu_si512(a + 4 * x), vb = _mm512_loadu_si512(b + 4 * x);
    const __m512i lo = Over8(_mm512_unpacklo_epi8(va, z), _mm512_unpacklo_epi8(vb, z));
    const __m512i hi = Over8(_mm512_unpackhi_epi8(va, z), _mm512_unpackhi_epi8(vb, z));
    _mm512_storeu_si512(d + 4 * x, _mm512_packus_epi16(lo, hi));
  }
  if (x < width)
    KernelsFor(SimdLevel::kAvx2).alphaOverAC4(a + 4 * x, b + 4 * x, d + 4 * x, width - x);
}

}  // namespace

void InstallAvx512AlphaKernels(Kernels* k) { k->alphaOverAC4 = AlphaOverAC4; }

}  // namespace ipp
}  // namespace orv
