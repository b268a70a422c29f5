// AVX-512 bodies of the hottest colour rows: the general route's terms, filter
// and pixels of 32 and 24 bits, and the 24-bit route, 64 pixels a step; the
// one-pass RGB to 4:2:0 rows, the YUY2 to 4:2:0 rows and 4:2:0 to YUY2.
// Everything else, and the rest of each row, goes to the AVX2 bodies, so the
// bytes are the plain bytes. GCC 12 warns inside its own AVX-512 header
// (undefined pass-through operands).
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

// Channel bytes of 64 pixels in memory order, spread for Store32: dword 4q + d
// takes pixels 16d + 4q .. 16d + 4q + 3.
inline __m512i SpreadForStore32(__m512i c) {
  const __m512i spread = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  return _mm512_permutexvar_epi32(spread, c);
}

// 64 pixels of 4 bytes from spread channel bytes (a constant channel needs no
// spreading): the byte and word interleaves then give the pixels in memory
// order.
inline void Store32(uint8_t* d, __m512i c0, __m512i c1, __m512i c2, __m512i c3) {
  const __m512i lo01 = _mm512_unpacklo_epi8(c0, c1), hi01 = _mm512_unpackhi_epi8(c0, c1);
  const __m512i lo23 = _mm512_unpacklo_epi8(c2, c3), hi23 = _mm512_unpackhi_epi8(c2, c3);
  StoreU(d, _mm512_unpacklo_epi16(lo01, lo23));        // pixels 0-15
  StoreU(d + 64, _mm512_unpackhi_epi16(lo01, lo23));   // 16-31
  StoreU(d + 128, _mm512_unpacklo_epi16(hi01, hi23));  // 32-47
  StoreU(d + 192, _mm512_unpackhi_epi16(hi01, hi23));  // 48-63
}

// 64 pixels of 3 bytes B G R from byte vectors in quarter order.
inline void Store24(uint8_t* d, __m512i b, __m512i g, __m512i r) {
  const __m512i mb0 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5));
  const __m512i mg0 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(-1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1));
  const __m512i mr0 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1));
  const __m512i mb1 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(-1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1));
  const __m512i mg1 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10));
  const __m512i mr1 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1));
  const __m512i mb2 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(-1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1));
  const __m512i mg2 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(-1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1));
  const __m512i mr2 = _mm512_broadcast_i32x4(
      _mm_setr_epi8(10, -1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15));
  // Quarter k of o0, o1, o2 holds the 16-byte blocks 3k, 3k+1, 3k+2 of the output.
  const __m512i o0 =
      _mm512_or_si512(_mm512_or_si512(_mm512_shuffle_epi8(b, mb0), _mm512_shuffle_epi8(g, mg0)),
                      _mm512_shuffle_epi8(r, mr0));
  const __m512i o1 =
      _mm512_or_si512(_mm512_or_si512(_mm512_shuffle_epi8(b, mb1), _mm512_shuffle_epi8(g, mg1)),
                      _mm512_shuffle_epi8(r, mr1));
  const __m512i o2 =
      _mm512_or_si512(_mm512_or_si512(_mm512_shuffle_epi8(b, mb2), _mm512_shuffle_epi8(g, mg2)),
                      _mm512_shuffle_epi8(r, mr2));
  // Blocks 0-3: o0.q0 o1.q0 o2.q0 o0.q1; 4-7: o1.q1 o2.q1 o0.q2 o1.q2;
  // 8-11: o2.q2 o0.q3 o1.q3 o2.q3 (qword indices, 8 and up from the second source).
  const __m512i t0 = _mm512_permutex2var_epi64(o0, _mm512_setr_epi64(0, 1, 8, 9, 0, 0, 2, 3), o1);
  StoreU(d, _mm512_permutex2var_epi64(t0, _mm512_setr_epi64(0, 1, 2, 3, 8, 9, 6, 7), o2));
  const __m512i t1 = _mm512_permutex2var_epi64(o1, _mm512_setr_epi64(2, 3, 0, 0, 12, 13, 4, 5), o0);
  StoreU(d + 64, _mm512_permutex2var_epi64(t1, _mm512_setr_epi64(0, 1, 10, 11, 4, 5, 6, 7), o2));
  const __m512i t2 = _mm512_permutex2var_epi64(o2, _mm512_setr_epi64(4, 5, 14, 15, 0, 0, 6, 7), o0);
  StoreU(d + 128, _mm512_permutex2var_epi64(t2, _mm512_setr_epi64(0, 1, 2, 3, 14, 15, 6, 7), o1));
}

void Route24(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
             const uint8_t* vb, int width, int wa, int wb, int mul, const RgbMatrix& m,
             uint8_t* dst) {
  const int n = width / 2;
  int i = 0;
  Route24Weights rw;
  if (MakeRoute24Weights(wa, wb, mul, &rw)) {
    const __m512i W = _mm512_set1_epi16(static_cast<int16_t>((rw.b << 8) | rw.a)),
                  bias = Set16(rw.bias);
    const __m512i gain = Set16(m.yGain24), off = Set16(m.yOffset24), low = Set16(0xFF);
    const __m512i uToB = Set16(m.uToB), uToG = Set16(m.uToG), vToG = Set16(m.vToG),
                  vToR = Set16(m.vToR);
    const __m512i order =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15));
    // f = wa' x (a - 128) + wb' x (b - 128) of 32 columns from one byte multiply-add.
    auto column = [&](const uint8_t* a, const uint8_t* b) {
      const __m512i ab = _mm512_or_si512(Load32(a), _mm512_slli_epi16(Load32(b), 8));
      return _mm512_sub_epi16(_mm512_maddubs_epi16(ab, W), bias);
    };
    // Lanes 1..31 and the last lane again: the next column, with the right-edge rule.
    const __m512i next =
        _mm512_set_epi16(31, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16, 15, 14,
                         13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1);
    bool edge = false;  // the block ends at the right edge of the line
    auto chroma = [&](const uint8_t* a, const uint8_t* b, __m512i* even, __m512i* odd) {
      const __m512i f0 = column(a, b);
      const __m512i f1 = edge ? _mm512_permutexvar_epi16(next, f0) : column(a + 1, b + 1);
      *even = _mm512_add_epi16(f0, f0);
      *odd = _mm512_add_epi16(f0, f1);
    };
    auto pack = [&](__m512i even, __m512i odd) {
      return _mm512_shuffle_epi8(
          _mm512_packus_epi16(_mm512_srai_epi16(even, 4), _mm512_srai_epi16(odd, 4)), order);
    };
    // Column i + 32 must be a real column, but for the last block, which may
    // overlap the one before it and writes the same bytes again.
    auto block = [&](int i) {
      __m512i eue, euo, eve, evo;
      chroma(ua + i, ub + i, &eue, &euo);
      chroma(va + i, vb + i, &eve, &evo);
      const __m512i yy = LoadU(y + 2 * i);
      const __m512i le = _mm512_sub_epi16(
          _mm512_mulhi_epi16(_mm512_slli_epi16(_mm512_and_si512(yy, low), 7), gain), off);
      const __m512i lo = _mm512_sub_epi16(
          _mm512_mulhi_epi16(_mm512_slli_epi16(_mm512_srli_epi16(yy, 8), 7), gain), off);
      const __m512i B = pack(_mm512_add_epi16(le, _mm512_mulhi_epi16(eue, uToB)),
                             _mm512_add_epi16(lo, _mm512_mulhi_epi16(euo, uToB)));
      const __m512i G = pack(_mm512_add_epi16(_mm512_add_epi16(le, _mm512_mulhi_epi16(eue, uToG)),
                                              _mm512_mulhi_epi16(eve, vToG)),
                             _mm512_add_epi16(_mm512_add_epi16(lo, _mm512_mulhi_epi16(euo, uToG)),
                                              _mm512_mulhi_epi16(evo, vToG)));
      const __m512i R = pack(_mm512_add_epi16(le, _mm512_mulhi_epi16(eve, vToR)),
                             _mm512_add_epi16(lo, _mm512_mulhi_epi16(evo, vToR)));
      Store24(dst + 6 * i, B, G, R);
    };
    for (; i + 32 < n; i += 32) block(i);
    if (n >= 32) {
      edge = true;
      block(n - 32);
      i = n;
    }
  }
  if (i < n)
    Avx2RgbRows().route24(y + 2 * i, ua + i, ub + i, va + i, vb + i, width - 2 * i, wa, wb, mul, m,
                          dst + 6 * i);
}

void Pixels(const uint8_t* y, const int16_t* r, const int16_t* g, const int16_t* b, int width,
            const RgbMatrix& m, PixelKind kind, uint8_t* dst) {
  const int n = width / 2;
  int i = 0;
  if (kind == kPixBgr0 || kind == kPixBgra || kind == kPix0rgb || kind == kPixBgr) {
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
      if (kind == kPixBgr) {
        Store24(dst + 6 * i, B, G, R);
      } else {
        const __m512i sb = SpreadForStore32(B), sg = SpreadForStore32(G), sr = SpreadForStore32(R);
        if (kind == kPix0rgb)
          Store32(dst + 8 * i, _mm512_setzero_si512(), sr, sg, sb);
        else
          Store32(dst + 8 * i, sb, sg, sr, alpha);
      }
    }
  }
  if (i < n) {
    const int bpp = BytesPerPixel(kind);
    Avx2RgbRows().pixels(y + 2 * i, r + i, g + i, b + i, width - 2 * i, m, kind, dst + 2 * i * bpp);
  }
}

// ----- packed RGB to planar: one pass over two lines -------------------------

// B and G of 16 pixels as words, per quarter [B0-3 | G0-3], and R as [R0-3 | 0].
template <int kBpp>
inline void SplitWords(const uint8_t* p, __m512i* bg, __m512i* r) {
  __m512i v = LoadU(p);
  if (kBpp == 3)  // quarter k takes the 12 bytes of pixels 4k .. 4k+3
    v = _mm512_permutexvar_epi32(
        _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12), v);
  const int s = kBpp;
  const __m512i mbg = _mm512_broadcast_i32x4(_mm_setr_epi8(
      0, -1, s, -1, 2 * s, -1, 3 * s, -1, 1, -1, s + 1, -1, 2 * s + 1, -1, 3 * s + 1, -1));
  const __m512i mr = _mm512_broadcast_i32x4(_mm_setr_epi8(
      2, -1, s + 2, -1, 2 * s + 2, -1, 3 * s + 2, -1, -1, -1, -1, -1, -1, -1, -1, -1));
  *bg = _mm512_shuffle_epi8(v, mbg);
  *r = _mm512_shuffle_epi8(v, mr);
}

inline __m512i Luma32(__m512i b, __m512i g, __m512i r, const PlanarCoefs& c) {
  const __m512i tb = _mm512_mulhi_epi16(_mm512_slli_epi16(b, 6), Set16(c.bToY));
  const __m512i tg = _mm512_mulhi_epi16(_mm512_slli_epi16(g, 6), Set16(c.gToY));
  const __m512i tr = _mm512_mulhi_epi16(_mm512_slli_epi16(r, 6), Set16(c.rToY));
  const __m512i sum = _mm512_srai_epi16(
      _mm512_add_epi16(_mm512_add_epi16(tb, tg), _mm512_add_epi16(tr, Set16(4))), 3);
  return _mm512_adds_epi16(sum, Set16(c.black));
}

// Luma of 64 pixels into y; the words of their 32 left pixels into eb, eg, er.
// Word 8q + t of the even words holds pair 8 (t / 2) + 2q + t % 2.
template <int kBpp>
inline void LumaAndEven(const uint8_t* p, uint8_t* y, const PlanarCoefs& c, __m512i* eb,
                        __m512i* eg, __m512i* er) {
  const __m512i evenWords = _mm512_set1_epi32(0xFFFF);
  __m512i bg[4], r[4];
  for (int k = 0; k < 4; ++k) SplitWords<kBpp>(p + 16 * k * kBpp, &bg[k], &r[k]);
  __m512i lumas[2], B[2], G[2], R[2];
  for (int h = 0; h < 2; ++h) {
    B[h] = _mm512_unpacklo_epi64(bg[2 * h], bg[2 * h + 1]);
    G[h] = _mm512_unpackhi_epi64(bg[2 * h], bg[2 * h + 1]);
    R[h] = _mm512_unpacklo_epi64(r[2 * h], r[2 * h + 1]);
    lumas[h] = Luma32(B[h], G[h], R[h], c);
  }
  // Dword 4q + j of the pack holds pixels 4 (4j + q) .. +3.
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  StoreU(y, _mm512_permutexvar_epi32(order, _mm512_packus_epi16(lumas[0], lumas[1])));
  *eb = _mm512_packs_epi32(_mm512_and_si512(B[0], evenWords), _mm512_and_si512(B[1], evenWords));
  *eg = _mm512_packs_epi32(_mm512_and_si512(G[0], evenWords), _mm512_and_si512(G[1], evenWords));
  *er = _mm512_packs_epi32(_mm512_and_si512(R[0], evenWords), _mm512_and_si512(R[1], evenWords));
}

inline __m512i Chroma32(__m512i sb, __m512i sg, __m512i sr, int cb, int cg, int cr) {
  const __m512i sum = _mm512_add_epi16(
      _mm512_add_epi16(_mm512_mulhi_epi16(sb, Set16(cb)), _mm512_mulhi_epi16(sg, Set16(cg))),
      _mm512_add_epi16(_mm512_mulhi_epi16(sr, Set16(cr)), Set16(8)));
  return _mm512_add_epi16(_mm512_srai_epi16(sum, 4), Set16(128));
}

// 32 chroma words in the even-word order above to 32 clamped bytes in pair order.
inline __m256i PairsToBytes(__m512i words) {
  alignas(64) static const int16_t kOrder[32] = {0,  1,  8,  9,  16, 17, 24, 25, 2,  3,  10,
                                                 11, 18, 19, 26, 27, 4,  5,  12, 13, 20, 21,
                                                 28, 29, 6,  7,  14, 15, 22, 23, 30, 31};
  const __m512i order = _mm512_load_si512(kOrder);
  const __m512i clamped =
      _mm512_max_epi16(_mm512_min_epi16(words, Set16(255)), _mm512_setzero_si512());
  return _mm512_cvtepi16_epi8(_mm512_permutexvar_epi16(order, clamped));
}

template <int kBpp>
void RgbToYUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* ya, uint8_t* yb,
              uint8_t* u, uint8_t* v, const PlanarCoefs& c) {
  int j = 0;
  // 3-byte pixels: the last 64-byte load reads 16 bytes past its pixels.
  for (; j + 32 + (kBpp == 3 ? 3 : 0) <= pairs; j += 32) {
    __m512i ab, ag, ar, bb, bg, br;
    LumaAndEven<kBpp>(a + 2 * j * kBpp, ya + 2 * j, c, &ab, &ag, &ar);
    LumaAndEven<kBpp>(b + 2 * j * kBpp, yb + 2 * j, c, &bb, &bg, &br);
    auto s = [field](__m512i x, __m512i y) {
      return field ? _mm512_slli_epi16(
                         _mm512_add_epi16(_mm512_add_epi16(x, _mm512_add_epi16(x, x)), y), 5)
                   : _mm512_slli_epi16(_mm512_add_epi16(x, y), 6);
    };
    const __m512i sb = s(ab, bb), sg = s(ag, bg), sr = s(ar, br);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(u + j),
                        PairsToBytes(Chroma32(sb, sg, sr, c.bToU, c.gToU, c.rToU)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(v + j),
                        PairsToBytes(Chroma32(sb, sg, sr, c.bToV, c.gToV, c.rToV)));
  }
  if (j < pairs) {
    const PlanarRows& next = Avx2PlanarRows();
    (kBpp == 3 ? next.rgb24ToYUV : next.rgb32ToYUV)(a + 2 * j * kBpp, b + 2 * j * kBpp, pairs - j,
                                                    field, ya + 2 * j, yb + 2 * j, u + j, v + j, c);
  }
}

// ----- YUY2 to 4:2:0 ------------------------------------------------------------
//
// Packs work within 128-bit quarters; one qword permute puts their results in
// memory order.

inline __m512i QuarterPacksInOrder(__m512i packed) {
  return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), packed);
}

void Yuy2ToY(const uint8_t* src, int pairs, uint8_t* y) {
  const __m512i low = Set16(0xFF);
  int j = 0;
  for (; j + 32 <= pairs; j += 32) {
    const __m512i a = _mm512_and_si512(LoadU(src + 4 * j), low);
    const __m512i b = _mm512_and_si512(LoadU(src + 4 * j + 64), low);
    StoreU(y + 2 * j, QuarterPacksInOrder(_mm512_packus_epi16(a, b)));
  }
  if (j < pairs) Avx2PlanarRows().yuy2ToY(src + 4 * j, pairs - j, y + 2 * j);
}

void Yuy2ToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v) {
  const __m512i two = Set16(2), low = Set16(0xFF);
  int j = 0;
  for (; j + 32 <= pairs; j += 32) {
    __m512i uv[2];  // chroma words (U or V) of pairs 0-15 and 16-31
    for (int h = 0; h < 2; ++h) {
      const __m512i x = _mm512_srli_epi16(LoadU(a + 4 * j + 64 * h), 8);
      const __m512i y = _mm512_srli_epi16(LoadU(b + 4 * j + 64 * h), 8);
      uv[h] = field
                  ? _mm512_srli_epi16(
                        _mm512_add_epi16(
                            _mm512_add_epi16(_mm512_add_epi16(x, x), _mm512_add_epi16(x, y)), two),
                        2)
                  : _mm512_avg_epu16(x, y);
    }
    // U V byte pairs of pairs 0..31, in memory order.
    const __m512i bytes = QuarterPacksInOrder(_mm512_packus_epi16(uv[0], uv[1]));
    const __m512i packed = QuarterPacksInOrder(
        _mm512_packus_epi16(_mm512_and_si512(bytes, low), _mm512_srli_epi16(bytes, 8)));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(u + j), _mm512_castsi512_si256(packed));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(v + j), _mm512_extracti64x4_epi64(packed, 1));
  }
  if (j < pairs) Avx2PlanarRows().yuy2ToUV(a + 4 * j, b + 4 * j, pairs - j, field, u + j, v + j);
}

// ----- 4:2:0 to YUY2 ------------------------------------------------------------
//
// The AVX2 body's arithmetic (one byte multiply-add, then the scaling) on 32
// pairs a step. The samples are widened in memory order (a | b << 8 per word),
// and one qword permute of the chroma words and of Y lets the byte interleave
// write the output in memory order.

struct ChromaConsts {
  __m512i weights, mul, round;
  __m128i shift;
  ChromaConsts(int wa, int wb, int rnd, int sh)
      : weights(_mm512_set1_epi16(static_cast<int16_t>((wb << 8) | wa))),
        mul(Set16(sh >= 1 ? 1 << (15 - sh) : 0)),
        round(Set16(rnd)),
        shift(_mm_cvtsi32_si128(sh)) {}
};

template <Yuy2Chroma kKind>
inline __m512i ChromaWords32(const uint8_t* a, const uint8_t* b, const ChromaConsts& k) {
  const __m512i ab = _mm512_or_si512(Load32(a), _mm512_slli_epi16(Load32(b), 8));
  const __m512i sum = _mm512_maddubs_epi16(ab, k.weights);
  if (kKind == Yuy2Chroma::kRoundHalf) return _mm512_mulhrs_epi16(sum, k.mul);
  if (kKind == Yuy2Chroma::kFloor) return _mm512_srl_epi16(sum, k.shift);
  return _mm512_srl_epi16(_mm512_add_epi16(sum, k.round), k.shift);
}

template <Yuy2Chroma kKind>
int ToYuy2Body(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
               const uint8_t* vb, int pairs, int wa, int wb, int round, int shift, uint8_t* dst) {
  // Built here, as locals: stores through dst can't alias them.
  const ChromaConsts k(wa, wb, round, shift);
  // Quarter q of Y and of the chroma words takes the pairs 4q .. 4q+3 into its
  // low half and 16+4q .. 16+4q+3 into its high half, so that the byte
  // interleave gives pairs 0-15 and 16-31 in memory order.
  const __m512i spread = _mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7);
  int j = 0;
  for (; j + 32 <= pairs; j += 32) {
    const __m512i uv = _mm512_permutexvar_epi64(
        spread, _mm512_or_si512(ChromaWords32<kKind>(ua + j, ub + j, k),
                                _mm512_slli_epi16(ChromaWords32<kKind>(va + j, vb + j, k), 8)));
    const __m512i yy = _mm512_permutexvar_epi64(spread, LoadU(y + 2 * j));
    StoreU(dst + 4 * j, _mm512_unpacklo_epi8(yy, uv));
    StoreU(dst + 4 * j + 64, _mm512_unpackhi_epi8(yy, uv));
  }
  return j;
}

void ToYuy2(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
            const uint8_t* vb, int pairs, int wa, int wb, int round, int shift, uint8_t* dst) {
  int j = 0;
  const Yuy2Chroma kind = ClassifyYuy2Chroma(wa, wb, round, shift);
  if (kind == Yuy2Chroma::kRoundHalf)
    j = ToYuy2Body<Yuy2Chroma::kRoundHalf>(y, ua, ub, va, vb, pairs, wa, wb, round, shift, dst);
  else if (kind == Yuy2Chroma::kFloor)
    j = ToYuy2Body<Yuy2Chroma::kFloor>(y, ua, ub, va, vb, pairs, wa, wb, round, shift, dst);
  else if (kind == Yuy2Chroma::kAddShift)
    j = ToYuy2Body<Yuy2Chroma::kAddShift>(y, ua, ub, va, vb, pairs, wa, wb, round, shift, dst);
  if (j < pairs)
    Avx2PlanarRows().toYuy2(y + 2 * j, ua + j, ub + j, va + j, vb + j, pairs - j, wa, wb, round,
                            shift, dst + 4 * j);
}

}  // namespace

const PlanarRows& Avx512PlanarRows() {
  static const PlanarRows rows = [] {
    PlanarRows r = Avx2PlanarRows();
    r.rgb24ToYUV = RgbToYUV<3>;
    r.rgb32ToYUV = RgbToYUV<4>;
    r.toYuy2 = ToYuy2;
    r.yuy2ToY = Yuy2ToY;
    r.yuy2ToUV = Yuy2ToUV;
    return r;
  }();
  return rows;
}

const RgbRows& Avx512RgbRows() {
  static const RgbRows rows = {Terms, Filter, Pixels, Route24, Avx2RgbRows().lineMean};
  return rows;
}

}  // namespace colour
}  // namespace orv
