// SSE2 forms of the scaler's row kernels: 32-bit sums of 16-bit products
// (pmaddwd), the same integers as the plain forms, so the same bytes. Columns
// left over after the last whole vector go through the plain forms.
#include <emmintrin.h>

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"

namespace orv {
namespace vrscl {

void VerticalSse2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width) {
  const __m128i zero = _mm_setzero_si128();
  const __m128i round = _mm_set1_epi32(1 << (kVerticalShift - 1));
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    __m128i lo = _mm_setzero_si128();
    __m128i hi = _mm_setzero_si128();
    int k = 0;
    for (; k + 2 <= taps; k += 2) {
      const __m128i a = _mm_unpacklo_epi8(
          _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + k * step + x)), zero);
      const __m128i b = _mm_unpacklo_epi8(
          _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + (k + 1) * step + x)), zero);
      const __m128i c = _mm_set1_epi32(
          static_cast<int32_t>((static_cast<uint32_t>(static_cast<uint16_t>(coefs[k + 1])) << 16) |
                               static_cast<uint16_t>(coefs[k])));
      lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(a, b), c));
      hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(a, b), c));
    }
    if (k < taps) {
      const __m128i a = _mm_unpacklo_epi8(
          _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + k * step + x)), zero);
      const __m128i c = _mm_set1_epi32(static_cast<uint16_t>(coefs[k]));
      lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(a, zero), c));
      hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(a, zero), c));
    }
    lo = _mm_srai_epi32(_mm_add_epi32(lo, round), kVerticalShift);
    hi = _mm_srai_epi32(_mm_add_epi32(hi, round), kVerticalShift);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_packs_epi32(lo, hi));
  }
  if (x < width) VerticalPlain(src + x, step, taps, coefs, out + x, width - x);
}

namespace {

// The four 32-bit sums of four vectors of partial sums: {sum a, sum b, sum c, sum d}.
inline __m128i Sum4(__m128i a, __m128i b, __m128i c, __m128i d) {
  const __m128i ab = _mm_add_epi32(_mm_unpacklo_epi32(a, b), _mm_unpackhi_epi32(a, b));
  const __m128i cd = _mm_add_epi32(_mm_unpacklo_epi32(c, d), _mm_unpackhi_epi32(c, d));
  return _mm_add_epi32(_mm_unpacklo_epi64(ab, cd), _mm_unpackhi_epi64(ab, cd));
}

inline __m128i Madd8(const int16_t* in, const int16_t* c) {
  return _mm_madd_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(in)),
                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(c)));
}

}  // namespace

void HorizontalSse2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, const int16_t* /*paired*/, int stride) {
  const __m128i round = _mm_set1_epi32(1 << (kHorizontalShift - 1));
  int i = 0;
  for (; i + 4 <= width; i += 4) {
    const int16_t* p0 = in + start[i];
    const int16_t* p1 = in + start[i + 1];
    const int16_t* p2 = in + start[i + 2];
    const int16_t* p3 = in + start[i + 3];
    const int16_t* c0 = coefs + static_cast<ptrdiff_t>(i) * stride;
    const int16_t* c1 = c0 + stride;
    const int16_t* c2 = c1 + stride;
    const int16_t* c3 = c2 + stride;
    __m128i a0 = _mm_setzero_si128(), a1 = a0, a2 = a0, a3 = a0;
    for (int k = 0; k < stride; k += 8) {
      a0 = _mm_add_epi32(a0, Madd8(p0 + k, c0 + k));
      a1 = _mm_add_epi32(a1, Madd8(p1 + k, c1 + k));
      a2 = _mm_add_epi32(a2, Madd8(p2 + k, c2 + k));
      a3 = _mm_add_epi32(a3, Madd8(p3 + k, c3 + k));
    }
    __m128i s = _mm_srai_epi32(_mm_add_epi32(Sum4(a0, a1, a2, a3), round), kHorizontalShift);
    s = _mm_packs_epi32(s, s);
    s = _mm_packus_epi16(s, s);
    const int32_t v = _mm_cvtsi128_si32(s);
    __builtin_memcpy(out + i, &v, 4);
  }
  if (i < width) {
    HorizontalPlain(in, out + i, width - i, start + i, coefs + static_cast<ptrdiff_t>(i) * stride,
                    nullptr, stride);
  }
}

void NarrowSse2(const int16_t* in, uint8_t* out, int width) {
  const __m128i round = _mm_set1_epi16(1 << (kWorkBits - 1));
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x));
    __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x + 8));
    a = _mm_srai_epi16(_mm_adds_epi16(a, round), kWorkBits);
    b = _mm_srai_epi16(_mm_adds_epi16(b, round), kWorkBits);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x), _mm_packus_epi16(a, b));
  }
  if (x < width) NarrowPlain(in + x, out + x, width - x);
}

namespace {

inline __m128i Madd8Bytes(const uint8_t* in, const int16_t* c) {
  const __m128i v =
      _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(in)), _mm_setzero_si128());
  return _mm_madd_epi16(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(c)));
}

}  // namespace

void HorizontalBytesSse2(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                         const int16_t* coefs, const int16_t* /*paired*/, int stride) {
  const __m128i round = _mm_set1_epi32(1 << (kVerticalShift - 1));
  int i = 0;
  for (; i + 4 <= width; i += 4) {
    const uint8_t* p0 = in + start[i];
    const uint8_t* p1 = in + start[i + 1];
    const uint8_t* p2 = in + start[i + 2];
    const uint8_t* p3 = in + start[i + 3];
    const int16_t* c0 = coefs + static_cast<ptrdiff_t>(i) * stride;
    __m128i a0 = _mm_setzero_si128(), a1 = a0, a2 = a0, a3 = a0;
    for (int k = 0; k < stride; k += 8) {
      a0 = _mm_add_epi32(a0, Madd8Bytes(p0 + k, c0 + k));
      a1 = _mm_add_epi32(a1, Madd8Bytes(p1 + k, c0 + stride + k));
      a2 = _mm_add_epi32(a2, Madd8Bytes(p2 + k, c0 + 2 * stride + k));
      a3 = _mm_add_epi32(a3, Madd8Bytes(p3 + k, c0 + 3 * stride + k));
    }
    __m128i s = _mm_srai_epi32(_mm_add_epi32(Sum4(a0, a1, a2, a3), round), kVerticalShift);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + i), _mm_packs_epi32(s, s));
  }
  if (i < width) {
    HorizontalBytesPlain(in, out + i, width - i, start + i,
                         coefs + static_cast<ptrdiff_t>(i) * stride, nullptr, stride);
  }
}

void VerticalWordsSse2(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                       int width) {
  const __m128i round = _mm_set1_epi32(1 << (kHorizontalShift - 1));
  const __m128i zero = _mm_setzero_si128();
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    __m128i lo = zero, hi = zero;
    for (int k = 0; k < taps; k += 2) {
      const bool pair = k + 1 < taps;
      const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k] + x));
      const __m128i b =
          pair ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(rows[k + 1] + x)) : zero;
      const __m128i c = _mm_set1_epi32(static_cast<int32_t>(
          (static_cast<uint32_t>(static_cast<uint16_t>(pair ? coefs[k + 1] : 0)) << 16) |
          static_cast<uint16_t>(coefs[k])));
      lo = _mm_add_epi32(lo, _mm_madd_epi16(_mm_unpacklo_epi16(a, b), c));
      hi = _mm_add_epi32(hi, _mm_madd_epi16(_mm_unpackhi_epi16(a, b), c));
    }
    lo = _mm_srai_epi32(_mm_add_epi32(lo, round), kHorizontalShift);
    hi = _mm_srai_epi32(_mm_add_epi32(hi, round), kHorizontalShift);
    const __m128i w = _mm_packs_epi32(lo, hi);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(out + x), _mm_packus_epi16(w, w));
  }
  if (x < width) VerticalWordsPlainFrom(rows, taps, coefs, out, x, width);
}

}  // namespace vrscl
}  // namespace orv
