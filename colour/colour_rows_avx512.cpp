// AVX-512 bodies of the hottest colour rows: the general route's terms, filter
// and 32-bit pixels, 64 pixels a step. Everything else, and the rest of each
// row, goes to the AVX2 bodies, so the bytes are the plain bytes.
// GCC 12 warns inside its own AVX-512 header (undefined pass-through operands).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include "colour/colour_rows.h"

namespace orv {
namespace colour {
namespace {

inline __m512i Set16(int v) { return _mm512_set1_epi16(static_cast<int16_t>(v)); }
inline __m512i LoadU(const void* p) { return _mm512_loadu_si512(p); }
inline void StoreU(void* p, __m512i v) { _mm512_storeu_si512(p, v); }
inline __m512i Load32(const uint8_t* p) {
  return _mm512_cvtepu8_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)));
}

void Terms(const uint8_t* u, const uint8_t* v, int n, const RgbMatrix& m, int16_t* r, int16_t* g,
           int16_t* b) {
  const __m512i c128 = Set16(128);
  const __m512i green = _mm512_set1_epi32(static_cast<int>(
      (static_cast<uint32_t>(m.uToG) << 16) | (static_cast<uint32_t>(m.vToG) & 0xFFFF)));
  const __m512i half = _mm512_set1_epi32(32768);
  int i = 0;
  for (; i + 32 <= n; i += 32) {
    const __m512i uu = _mm512_slli_epi16(_mm512_sub_epi16(Load32(u + i), c128), 8);
    const __m512i vv = _mm512_slli_epi16(_mm512_sub_epi16(Load32(v + i), c128), 8);
    StoreU(r + i, _mm512_mulhi_epi16(vv, Set16(m.vToR)));
    StoreU(b + i, _mm512_mulhi_epi16(uu, Set16(m.uToB)));
    const __m512i lo = _mm512_srai_epi32(
        _mm512_add_epi32(_mm512_madd_epi16(_mm512_unpacklo_epi16(vv, uu), green), half), 16);
    const __m512i hi = _mm512_srai_epi32(
        _mm512_add_epi32(_mm512_madd_epi16(_mm512_unpackhi_epi16(vv, uu), green), half), 16);
    StoreU(g + i, _mm512_packs_epi32(lo, hi));
  }
  if (i < n)
    Avx2RgbRows().terms(u + i, v + i, n - i, m, r + i, g + i, b + i);
  else if (n > 0) {
    r[n] = r[n - 1];
    g[n] = g[n - 1];
    b[n] = b[n - 1];
  }
}

void Filter(const int16_t* pa, const int16_t* pb, int count, TermFilter kind, bool blue,
            int16_t* outA, int16_t* outB) {
  const __m512i one = Set16(1), two = Set16(2);
  int i = 0;
  for (; i + 32 <= count; i += 32) {
    const __m512i a = LoadU(pa + i), b = LoadU(pb + i);
    const __m512i ab = _mm512_add_epi16(a, b);
    __m512i A, B;
    if (!blue) {
      if (kind == kFilterFrame) {
        A = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(_mm512_add_epi16(a, a), ab), two),
                              2);
        B = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(_mm512_add_epi16(b, b), ab), two),
                              2);
      } else if (kind == kFilterField1) {
        const __m512i d = _mm512_srai_epi16(_mm512_sub_epi16(a, b), 1);
        A = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(d, _mm512_add_epi16(ab, ab)), two),
                              2);
        B = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(d, _mm512_slli_epi16(b, 2)), two),
                              2);
      } else {
        const __m512i d = _mm512_srai_epi16(_mm512_sub_epi16(b, a), 1);
        A = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(d, _mm512_slli_epi16(a, 2)), two),
                              2);
        B = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(d, _mm512_add_epi16(ab, ab)), two),
                              2);
      }
    } else {
      if (kind == kFilterFrame) {
        const __m512i d = _mm512_srai_epi16(_mm512_sub_epi16(a, b), 1);
        A = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(d, ab), one), 1);
        B = _mm512_srai_epi16(_mm512_add_epi16(_mm512_sub_epi16(ab, d), one), 1);
      } else if (kind == kFilterField1) {
        const __m512i e = _mm512_srai_epi16(_mm512_sub_epi16(a, b), 2);
        A = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(e, ab), one), 1);
        B = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(e, _mm512_add_epi16(b, b)), one),
                              1);
      } else {
        const __m512i e = _mm512_srai_epi16(_mm512_sub_epi16(b, a), 2);
        A = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(e, _mm512_add_epi16(a, a)), one),
                              1);
        B = _mm512_srai_epi16(_mm512_add_epi16(_mm512_add_epi16(e, ab), one), 1);
      }
    }
    StoreU(outA + i, A);
    StoreU(outB + i, B);
  }
  if (i < count) Avx2RgbRows().filter(pa + i, pb + i, count - i, kind, blue, outA + i, outB + i);
}

// One colour of 64 pixels; 128-bit quarter k holds pixels 16k .. 16k+15.
inline __m512i Colour64(__m512i te, __m512i to, const int16_t* t) {
  const __m512i order =
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
  const __m512i t0 = LoadU(t), t1 = LoadU(t + 1);
  const __m512i even = _mm512_srai_epi16(_mm512_adds_epi16(te, _mm512_add_epi16(t0, t0)), 6);
  const __m512i odd = _mm512_srai_epi16(_mm512_adds_epi16(to, _mm512_add_epi16(t0, t1)), 6);
  return _mm512_shuffle_epi8(_mm512_packus_epi16(even, odd), order);
}

// 64 pixels of 4 bytes from byte vectors in quarter order.
inline void Store32(uint8_t* d, __m512i c0, __m512i c1, __m512i c2, __m512i c3) {
  const __m512i lo01 = _mm512_unpacklo_epi8(c0, c1), hi01 = _mm512_unpackhi_epi8(c0, c1);
  const __m512i lo23 = _mm512_unpacklo_epi8(c2, c3), hi23 = _mm512_unpackhi_epi8(c2, c3);
  const __m512i p0 = _mm512_unpacklo_epi16(lo01, lo23);  // pixels 0-3 of each quarter
  const __m512i p1 = _mm512_unpackhi_epi16(lo01, lo23);  // 4-7
  const __m512i p2 = _mm512_unpacklo_epi16(hi01, hi23);  // 8-11
  const __m512i p3 = _mm512_unpackhi_epi16(hi01, hi23);  // 12-15
  const __m512i t0 = _mm512_shuffle_i64x2(p0, p1, 0x44);
  const __m512i t1 = _mm512_shuffle_i64x2(p2, p3, 0x44);
  const __m512i t2 = _mm512_shuffle_i64x2(p0, p1, 0xEE);
  const __m512i t3 = _mm512_shuffle_i64x2(p2, p3, 0xEE);
  StoreU(d, _mm512_shuffle_i64x2(t0, t1, 0x88));
  StoreU(d + 64, _mm512_shuffle_i64x2(t0, t1, 0xDD));
  StoreU(d + 128, _mm512_shuffle_i64x2(t2, t3, 0x88));
  StoreU(d + 192, _mm512_shuffle_i64x2(t2, t3, 0xDD));
}

void Pixels(const uint8_t* y, const int16_t* r, const int16_t* g, const int16_t* b, int width,
            const RgbMatrix& m, PixelKind kind, uint8_t* dst) {
  const int n = width / 2;
  int i = 0;
  if (kind == kPixBgr0 || kind == kPixBgra || kind == kPix0rgb) {
    const __m512i gain = Set16(m.yGain), off = Set16(m.yOffset), low = Set16(0xFF);
    const __m512i alpha = kind == kPixBgra ? _mm512_set1_epi8(-1) : _mm512_setzero_si512();
    for (; i + 32 <= n; i += 32) {
      const __m512i yy = LoadU(y + 2 * i);
      const __m512i me = _mm512_mulhi_epi16(_mm512_slli_epi16(_mm512_and_si512(yy, low), 7), gain);
      const __m512i mo = _mm512_mulhi_epi16(_mm512_slli_epi16(_mm512_srli_epi16(yy, 8), 7), gain);
      const __m512i te = _mm512_sub_epi16(_mm512_add_epi16(me, me), off);
      const __m512i to = _mm512_sub_epi16(_mm512_add_epi16(mo, mo), off);
      const __m512i R = Colour64(te, to, r + i);
      const __m512i G = Colour64(te, to, g + i);
      const __m512i B = Colour64(te, to, b + i);
      if (kind == kPix0rgb)
        Store32(dst + 8 * i, _mm512_setzero_si512(), R, G, B);
      else
        Store32(dst + 8 * i, B, G, R, alpha);
    }
  }
  if (i < n) {
    const int bpp = BytesPerPixel(kind);
    Avx2RgbRows().pixels(y + 2 * i, r + i, g + i, b + i, width - 2 * i, m, kind, dst + 2 * i * bpp);
  }
}

}  // namespace

const RgbRows& Avx512RgbRows() {
  static const RgbRows rows = {Terms, Filter, Pixels, Avx2RgbRows().route24,
                               Avx2RgbRows().lineMean};
  return rows;
}

}  // namespace colour
}  // namespace orv
