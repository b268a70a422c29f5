// AVX-512 forms of the scaler's row kernels: the arithmetic of the SSE2 and
// AVX2 forms on 512-bit vectors. Columns left over go through the AVX2 forms.
#include <immintrin.h>

// GCC 12 reports its own placeholder vector inside the 512-bit widening
// intrinsic as possibly uninitialised; nothing here reads an unset value.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"

namespace orv {
namespace vrscl {

namespace {

inline __m512i Widen32(const uint8_t* p) {
  return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
}

}  // namespace

void VerticalAvx512(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs,
                    int16_t* out, int width) {
  const __m512i round = _mm512_set1_epi32(1 << (kVerticalShift - 1));
  const __m512i zero = _mm512_setzero_si512();
  int x = 0;
  for (; x + 64 <= width; x += 64) {
    __m512i lo0 = zero, hi0 = zero, lo1 = zero, hi1 = zero;
    for (int k = 0; k < taps; k += 2) {
      const uint8_t* ra = src + k * step + x;
      const bool pair = k + 1 < taps;
      const __m512i c = _mm512_set1_epi32(static_cast<int32_t>(
          (static_cast<uint32_t>(static_cast<uint16_t>(pair ? coefs[k + 1] : 0)) << 16) |
          static_cast<uint16_t>(coefs[k])));
      const __m512i a0 = Widen32(ra);
      const __m512i a1 = Widen32(ra + 32);
      __m512i b0 = zero, b1 = zero;
      if (pair) {
        b0 = Widen32(ra + step);
        b1 = Widen32(ra + step + 32);
      }
      lo0 = _mm512_add_epi32(lo0, _mm512_madd_epi16(_mm512_unpacklo_epi16(a0, b0), c));
      hi0 = _mm512_add_epi32(hi0, _mm512_madd_epi16(_mm512_unpackhi_epi16(a0, b0), c));
      lo1 = _mm512_add_epi32(lo1, _mm512_madd_epi16(_mm512_unpacklo_epi16(a1, b1), c));
      hi1 = _mm512_add_epi32(hi1, _mm512_madd_epi16(_mm512_unpackhi_epi16(a1, b1), c));
    }
    lo0 = _mm512_srai_epi32(_mm512_add_epi32(lo0, round), kVerticalShift);
    hi0 = _mm512_srai_epi32(_mm512_add_epi32(hi0, round), kVerticalShift);
    lo1 = _mm512_srai_epi32(_mm512_add_epi32(lo1, round), kVerticalShift);
    hi1 = _mm512_srai_epi32(_mm512_add_epi32(hi1, round), kVerticalShift);
    // unpacklo/hi split each 128-bit lane, and packs joins them back in order.
    _mm512_storeu_si512(out + x, _mm512_packs_epi32(lo0, hi0));
    _mm512_storeu_si512(out + x + 32, _mm512_packs_epi32(lo1, hi1));
  }
  if (x < width) VerticalAvx2(src + x, step, taps, coefs, out + x, width - x);
}

void VerticalWordsAvx512(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                         int width) {
  const __m512i round = _mm512_set1_epi32(1 << (kHorizontalShift - 1));
  const __m512i zero = _mm512_setzero_si512();
  constexpr int kMaxPairs = 32;
  if (taps > 2 * kMaxPairs) {
    VerticalWordsPlain(rows, taps, coefs, out, width);
    return;
  }
  // Rows and coefficients in pairs; an odd last row is paired with a zero
  // coefficient and read twice.
  const int pairs = (taps + 1) / 2;
  __m512i c[kMaxPairs];
  const int16_t* r[2 * kMaxPairs];
  for (int k = 0; k < pairs; ++k) {
    const bool two = 2 * k + 1 < taps;
    c[k] = _mm512_set1_epi32(static_cast<int32_t>(
        (static_cast<uint32_t>(static_cast<uint16_t>(two ? coefs[2 * k + 1] : 0)) << 16) |
        static_cast<uint16_t>(coefs[2 * k])));
    r[2 * k] = rows[2 * k];
    r[2 * k + 1] = rows[two ? 2 * k + 1 : 2 * k];
  }
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m512i lo = zero, hi = zero;
    for (int k = 0; k < pairs; ++k) {
      const __m512i a = _mm512_loadu_si512(r[2 * k] + x);
      const __m512i b = _mm512_loadu_si512(r[2 * k + 1] + x);
      lo = _mm512_add_epi32(lo, _mm512_madd_epi16(_mm512_unpacklo_epi16(a, b), c[k]));
      hi = _mm512_add_epi32(hi, _mm512_madd_epi16(_mm512_unpackhi_epi16(a, b), c[k]));
    }
    lo = _mm512_srai_epi32(_mm512_add_epi32(lo, round), kHorizontalShift);
    hi = _mm512_srai_epi32(_mm512_add_epi32(hi, round), kHorizontalShift);
    // Words in order per 128-bit lane (0-7 | 8-15 | 16-23 | 24-31), then
    // saturated to bytes lane by lane; the low 8 bytes of each lane are kept.
    const __m512i w = _mm512_packs_epi32(lo, hi);
    const __m512i b = _mm512_packus_epi16(w, w);
    const __m512i q = _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 0, 0, 0, 0), b);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), _mm512_castsi512_si256(q));
  }
  if (x < width) VerticalWordsPlainFrom(rows, taps, coefs, out, x, width);
}

}  // namespace vrscl
}  // namespace orv
