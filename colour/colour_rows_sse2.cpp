// SSE2 bodies of the colour row kernels.
//
// Each body runs the 16-bit arithmetic of the plain rows on whole vectors
// (multiply-high for the truncated products, saturating add where a sum may
// pass 16 bits, which happens only where the clamp gives 255 anyway, and the
// unsigned pack for the clamp) and hands the rest of its row to the plain body,
// so the bytes are the plain bytes and every column is written.
#include <emmintrin.h>

#include <cstring>

#include "colour/colour_rows.h"

namespace orv {
namespace colour {
namespace {

inline __m128i Set16(int v) { return _mm_set1_epi16(static_cast<int16_t>(v)); }
inline __m128i Load8(const uint8_t* p) {
  return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p)),
                           _mm_setzero_si128());
}
inline __m128i LoadU(const void* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void StoreU(void* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

// ----- packed RGB to planar -----------------------------------------------

// Components of 4 pixels whose bytes B G R x lie in the 32-bit lanes of v.
struct Bgr32 {
  __m128i b, g, r;  // 32-bit lanes
};
inline Bgr32 Split(__m128i v) {
  const __m128i m = _mm_set1_epi32(0xFF);
  return Bgr32{_mm_and_si128(v, m), _mm_and_si128(_mm_srli_epi32(v, 8), m),
               _mm_and_si128(_mm_srli_epi32(v, 16), m)};
}

// Four pixels at p of `bpp` bytes each as 32-bit lanes. For 3-byte pixels the
// fourth byte of each lane belongs to the next pixel and is masked away later;
// the caller makes sure that byte exists.
template <int kBpp>
inline __m128i LoadPixels4(const uint8_t* p) {
  if (kBpp == 4) return LoadU(p);
  uint32_t w[4];
  for (int i = 0; i < 4; ++i) std::memcpy(&w[i], p + 3 * i, 4);
  return _mm_setr_epi32(static_cast<int>(w[0]), static_cast<int>(w[1]), static_cast<int>(w[2]),
                        static_cast<int>(w[3]));
}

inline __m128i Luma8(__m128i b, __m128i g, __m128i r, const PlanarCoefs& c) {
  const __m128i tb = _mm_mulhi_epi16(_mm_slli_epi16(b, 6), Set16(c.bToY));
  const __m128i tg = _mm_mulhi_epi16(_mm_slli_epi16(g, 6), Set16(c.gToY));
  const __m128i tr = _mm_mulhi_epi16(_mm_slli_epi16(r, 6), Set16(c.rToY));
  const __m128i sum =
      _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(tb, tg), _mm_add_epi16(tr, Set16(4))), 3);
  return _mm_adds_epi16(sum, Set16(c.black));
}

template <int kBpp>
void RgbToY(const uint8_t* src, int pairs, uint8_t* y, const PlanarCoefs& c) {
  const int total = pairs * 2;
  int i = 0;
  // 16 pixels a step; 3-byte pixels keep one pixel back for the fourth byte.
  for (; i + 16 + (kBpp == 3 ? 1 : 0) <= total; i += 16) {
    __m128i out[2];
    for (int h = 0; h < 2; ++h) {
      const Bgr32 p0 = Split(LoadPixels4<kBpp>(src + (i + 8 * h) * kBpp));
      const Bgr32 p1 = Split(LoadPixels4<kBpp>(src + (i + 8 * h + 4) * kBpp));
      out[h] = Luma8(_mm_packs_epi32(p0.b, p1.b), _mm_packs_epi32(p0.g, p1.g),
                     _mm_packs_epi32(p0.r, p1.r), c);
    }
    StoreU(y + i, _mm_packus_epi16(out[0], out[1]));
  }
  if (i < total) {
    const PlanarRows& plain = PlainPlanarRows();
    (kBpp == 3 ? plain.rgb24ToY : plain.rgb32ToY)(src + i * kBpp, (total - i) / 2, y + i, c);
  }
}

// The left pixels of 8 pairs (16 pixels at p) as 16-bit B, G, R.
template <int kBpp>
inline void EvenPixels8(const uint8_t* p, __m128i* b, __m128i* g, __m128i* r) {
  const __m128i keep = _mm_set_epi32(0, -1, 0, -1);
  __m128i w[4];
  for (int k = 0; k < 4; ++k) w[k] = _mm_and_si128(LoadPixels4<kBpp>(p + 4 * k * kBpp), keep);
  const Bgr32 s0 = Split(w[0]), s1 = Split(w[1]), s2 = Split(w[2]), s3 = Split(w[3]);
  // Lanes 1 and 3 are zero: two packs leave the even pixels in order.
  *b = _mm_packs_epi32(_mm_packs_epi32(s0.b, s1.b), _mm_packs_epi32(s2.b, s3.b));
  *g = _mm_packs_epi32(_mm_packs_epi32(s0.g, s1.g), _mm_packs_epi32(s2.g, s3.g));
  *r = _mm_packs_epi32(_mm_packs_epi32(s0.r, s1.r), _mm_packs_epi32(s2.r, s3.r));
}

inline __m128i Chroma8(__m128i sb, __m128i sg, __m128i sr, int cb, int cg, int cr) {
  const __m128i sum =
      _mm_add_epi16(_mm_add_epi16(_mm_mulhi_epi16(sb, Set16(cb)), _mm_mulhi_epi16(sg, Set16(cg))),
                    _mm_add_epi16(_mm_mulhi_epi16(sr, Set16(cr)), Set16(8)));
  return _mm_add_epi16(_mm_srai_epi16(sum, 4), Set16(128));
}

template <int kBpp>
void RgbToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v,
             const PlanarCoefs& c) {
  int j = 0;
  for (; j + 8 + (kBpp == 3 ? 1 : 0) <= pairs; j += 8) {
    __m128i ab, ag, ar, bb, bg, br;
    EvenPixels8<kBpp>(a + 2 * j * kBpp, &ab, &ag, &ar);
    EvenPixels8<kBpp>(b + 2 * j * kBpp, &bb, &bg, &br);
    __m128i sb, sg, sr;
    if (field) {
      auto s = [](__m128i x, __m128i y) {
        return _mm_slli_epi16(_mm_add_epi16(_mm_add_epi16(x, _mm_add_epi16(x, x)), y), 5);
      };
      sb = s(ab, bb);
      sg = s(ag, bg);
      sr = s(ar, br);
    } else {
      sb = _mm_slli_epi16(_mm_add_epi16(ab, bb), 6);
      sg = _mm_slli_epi16(_mm_add_epi16(ag, bg), 6);
      sr = _mm_slli_epi16(_mm_add_epi16(ar, br), 6);
    }
    const __m128i uu = Chroma8(sb, sg, sr, c.bToU, c.gToU, c.rToU);
    const __m128i vv = Chroma8(sb, sg, sr, c.bToV, c.gToV, c.rToV);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(u + j), _mm_packus_epi16(uu, uu));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(v + j), _mm_packus_epi16(vv, vv));
  }
  if (j < pairs) {
    const PlanarRows& plain = PlainPlanarRows();
    (kBpp == 3 ? plain.rgb24ToUV : plain.rgb32ToUV)(a + 2 * j * kBpp, b + 2 * j * kBpp, pairs - j,
                                                    field, u + j, v + j, c);
  }
}

template <int kBpp>
void RgbToYUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* ya, uint8_t* yb,
              uint8_t* u, uint8_t* v, const PlanarCoefs& c) {
  RgbToY<kBpp>(a, pairs, ya, c);
  RgbToY<kBpp>(b, pairs, yb, c);
  RgbToUV<kBpp>(a, b, pairs, field, u, v, c);
}

// ----- YUY2 ------------------------------------------------------------------

void Yuy2ToY(const uint8_t* src, int pairs, uint8_t* y) {
  const __m128i low = _mm_set1_epi16(0xFF);
  int j = 0;
  for (; j + 8 <= pairs; j += 8) {
    const __m128i a = _mm_and_si128(LoadU(src + 4 * j), low);
    const __m128i b = _mm_and_si128(LoadU(src + 4 * j + 16), low);
    StoreU(y + 2 * j, _mm_packus_epi16(a, b));
  }
  if (j < pairs) PlainPlanarRows().yuy2ToY(src + 4 * j, pairs - j, y + 2 * j);
}

void Yuy2ToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v) {
  int j = 0;
  for (; j + 8 <= pairs; j += 8) {
    __m128i uv[2];
    for (int h = 0; h < 2; ++h) {
      const __m128i x = _mm_srli_epi16(LoadU(a + 4 * j + 16 * h), 8);
      const __m128i y = _mm_srli_epi16(LoadU(b + 4 * j + 16 * h), 8);
      uv[h] = field ? _mm_srli_epi16(
                          _mm_add_epi16(_mm_add_epi16(_mm_add_epi16(x, x), _mm_add_epi16(x, y)),
                                        Set16(2)),
                          2)
                    : _mm_avg_epu16(x, y);
    }
    const __m128i bytes = _mm_packus_epi16(uv[0], uv[1]);  // U0 V0 U1 V1 ...
    const __m128i us = _mm_and_si128(bytes, _mm_set1_epi16(0xFF));
    const __m128i vs = _mm_srli_epi16(bytes, 8);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(u + j), _mm_packus_epi16(us, us));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(v + j), _mm_packus_epi16(vs, vs));
  }
  if (j < pairs) PlainPlanarRows().yuy2ToUV(a + 4 * j, b + 4 * j, pairs - j, field, u + j, v + j);
}

void ToYuy2(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
            const uint8_t* vb, int pairs, int wa, int wb, int round, int shift, uint8_t* dst) {
  const __m128i WA = Set16(wa), WB = Set16(wb), R = Set16(round);
  const __m128i S = _mm_cvtsi32_si128(shift);
  int j = 0;
  for (; j + 8 <= pairs; j += 8) {
    const __m128i cu = _mm_srl_epi16(
        _mm_add_epi16(
            _mm_add_epi16(_mm_mullo_epi16(Load8(ua + j), WA), _mm_mullo_epi16(Load8(ub + j), WB)),
            R),
        S);
    const __m128i cv = _mm_srl_epi16(
        _mm_add_epi16(
            _mm_add_epi16(_mm_mullo_epi16(Load8(va + j), WA), _mm_mullo_epi16(Load8(vb + j), WB)),
            R),
        S);
    const __m128i uv = _mm_or_si128(cu, _mm_slli_epi16(cv, 8));  // U V per word
    const __m128i yy = LoadU(y + 2 * j);
    StoreU(dst + 4 * j, _mm_unpacklo_epi8(yy, uv));
    StoreU(dst + 4 * j + 16, _mm_unpackhi_epi8(yy, uv));
  }
  if (j < pairs)
    PlainPlanarRows().toYuy2(y + 2 * j, ua + j, ub + j, va + j, vb + j, pairs - j, wa, wb, round,
                             shift, dst + 4 * j);
}

// ----- planar to RGB -----------------------------------------------------------

void Terms(const uint8_t* u, const uint8_t* v, int n, const RgbMatrix& m, int16_t* r, int16_t* g,
           int16_t* b) {
  const __m128i c128 = Set16(128);
  const __m128i green = _mm_set1_epi32(static_cast<int>((static_cast<uint32_t>(m.uToG) << 16) |
                                                        (static_cast<uint32_t>(m.vToG) & 0xFFFF)));
  const __m128i half = _mm_set1_epi32(32768);
  int i = 0;
  for (; i + 8 <= n; i += 8) {
    const __m128i uu = _mm_slli_epi16(_mm_sub_epi16(Load8(u + i), c128), 8);
    const __m128i vv = _mm_slli_epi16(_mm_sub_epi16(Load8(v + i), c128), 8);
    StoreU(r + i, _mm_mulhi_epi16(vv, Set16(m.vToR)));
    StoreU(b + i, _mm_mulhi_epi16(uu, Set16(m.uToB)));
    const __m128i lo =
        _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(vv, uu), green), half), 16);
    const __m128i hi =
        _mm_srai_epi32(_mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(vv, uu), green), half), 16);
    StoreU(g + i, _mm_packs_epi32(lo, hi));
  }
  if (i < n) PlainRgbRows().terms(u + i, v + i, n - i, m, r + i, g + i, b + i);
  if (n > 0) {
    r[n] = r[n - 1];
    g[n] = g[n - 1];
    b[n] = b[n - 1];
  }
}

void Filter(const int16_t* pa, const int16_t* pb, int count, TermFilter kind, bool blue,
            int16_t* outA, int16_t* outB) {
  const __m128i one = Set16(1), two = Set16(2);
  int i = 0;
  for (; i + 8 <= count; i += 8) {
    const __m128i a = LoadU(pa + i), b = LoadU(pb + i);
    const __m128i ab = _mm_add_epi16(a, b);
    __m128i A, B;
    if (!blue) {
      if (kind == kFilterFrame) {
        A = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(_mm_add_epi16(a, a), ab), two), 2);
        B = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(_mm_add_epi16(b, b), ab), two), 2);
      } else if (kind == kFilterField1) {
        const __m128i d = _mm_srai_epi16(_mm_sub_epi16(a, b), 1);
        A = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(d, _mm_add_epi16(ab, ab)), two), 2);
        B = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(d, _mm_slli_epi16(b, 2)), two), 2);
      } else {
        const __m128i d = _mm_srai_epi16(_mm_sub_epi16(b, a), 1);
        A = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(d, _mm_slli_epi16(a, 2)), two), 2);
        B = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(d, _mm_add_epi16(ab, ab)), two), 2);
      }
    } else {
      if (kind == kFilterFrame) {
        const __m128i d = _mm_srai_epi16(_mm_sub_epi16(a, b), 1);
        A = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(d, ab), one), 1);
        B = _mm_srai_epi16(_mm_add_epi16(_mm_sub_epi16(ab, d), one), 1);
      } else if (kind == kFilterField1) {
        const __m128i e = _mm_srai_epi16(_mm_sub_epi16(a, b), 2);
        A = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(e, ab), one), 1);
        B = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(e, _mm_add_epi16(b, b)), one), 1);
      } else {
        const __m128i e = _mm_srai_epi16(_mm_sub_epi16(b, a), 2);
        A = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(e, _mm_add_epi16(a, a)), one), 1);
        B = _mm_srai_epi16(_mm_add_epi16(_mm_add_epi16(e, ab), one), 1);
      }
    }
    StoreU(outA + i, A);
    StoreU(outB + i, B);
  }
  if (i < count) PlainRgbRows().filter(pa + i, pb + i, count - i, kind, blue, outA + i, outB + i);
}

// One colour of 16 pixels: even pixels t + 2T[i], odd pixels t + T[i] + T[i+1].
inline __m128i Colour16(__m128i te, __m128i to, const int16_t* t) {
  const __m128i t0 = LoadU(t), t1 = LoadU(t + 1);
  const __m128i even = _mm_srai_epi16(_mm_adds_epi16(te, _mm_add_epi16(t0, t0)), 6);
  const __m128i odd = _mm_srai_epi16(_mm_adds_epi16(to, _mm_add_epi16(t0, t1)), 6);
  return _mm_unpacklo_epi8(_mm_packus_epi16(even, even), _mm_packus_epi16(odd, odd));
}

// Four 32-bit pixels from byte vectors c0..c3, each holding one byte of 16 pixels.
inline void Store32(uint8_t* d, __m128i c0, __m128i c1, __m128i c2, __m128i c3) {
  const __m128i lo01 = _mm_unpacklo_epi8(c0, c1), hi01 = _mm_unpackhi_epi8(c0, c1);
  const __m128i lo23 = _mm_unpacklo_epi8(c2, c3), hi23 = _mm_unpackhi_epi8(c2, c3);
  StoreU(d, _mm_unpacklo_epi16(lo01, lo23));
  StoreU(d + 16, _mm_unpackhi_epi16(lo01, lo23));
  StoreU(d + 32, _mm_unpacklo_epi16(hi01, hi23));
  StoreU(d + 48, _mm_unpackhi_epi16(hi01, hi23));
}

// Four pixels B G R 0 (one per dword) to 12 bytes B G R at the bottom of the
// register, zeros above: each qword closes its gap with a shift, then the high
// qword's 6 bytes move down next to the low one's.
inline __m128i Pack4x3(__m128i x) {
  const __m128i first = _mm_set1_epi64x(0xFFFFFF);
  const __m128i second = _mm_set1_epi64x(0xFFFFFF000000);
  const __m128i six =
      _mm_or_si128(_mm_and_si128(x, first), _mm_and_si128(_mm_srli_epi64(x, 8), second));
  const __m128i lowQword = _mm_set_epi64x(0, -1);
  return _mm_or_si128(_mm_and_si128(six, lowQword),
                      _mm_srli_si128(_mm_andnot_si128(lowQword, six), 2));
}

// 16 pixels of 3 bytes B G R from byte vectors in pixel order.
inline void Store24(uint8_t* d, __m128i b, __m128i g, __m128i r) {
  const __m128i z = _mm_setzero_si128();
  const __m128i lo01 = _mm_unpacklo_epi8(b, g), hi01 = _mm_unpackhi_epi8(b, g);
  const __m128i lo23 = _mm_unpacklo_epi8(r, z), hi23 = _mm_unpackhi_epi8(r, z);
  const __m128i p0 = Pack4x3(_mm_unpacklo_epi16(lo01, lo23));
  const __m128i p1 = Pack4x3(_mm_unpackhi_epi16(lo01, lo23));
  const __m128i p2 = Pack4x3(_mm_unpacklo_epi16(hi01, hi23));
  const __m128i p3 = Pack4x3(_mm_unpackhi_epi16(hi01, hi23));
  StoreU(d, _mm_or_si128(p0, _mm_slli_si128(p1, 12)));
  StoreU(d + 16, _mm_or_si128(_mm_srli_si128(p1, 4), _mm_slli_si128(p2, 8)));
  StoreU(d + 32, _mm_or_si128(_mm_srli_si128(p2, 8), _mm_slli_si128(p3, 4)));
}

void Pixels(const uint8_t* y, const int16_t* r, const int16_t* g, const int16_t* b, int width,
            const RgbMatrix& m, PixelKind kind, uint8_t* dst) {
  const int n = width / 2;
  int i = 0;
  if (kind == kPixBgr0 || kind == kPixBgra || kind == kPix0rgb || kind == kPixBgr) {
    const __m128i gain = Set16(m.yGain), off = Set16(m.yOffset), low = _mm_set1_epi16(0xFF);
    const __m128i alpha = kind == kPixBgra ? _mm_set1_epi8(-1) : _mm_setzero_si128();
    for (; i + 8 <= n; i += 8) {
      const __m128i yy = LoadU(y + 2 * i);
      const __m128i me = _mm_mulhi_epi16(_mm_slli_epi16(_mm_and_si128(yy, low), 7), gain);
      const __m128i mo = _mm_mulhi_epi16(_mm_slli_epi16(_mm_srli_epi16(yy, 8), 7), gain);
      const __m128i te = _mm_sub_epi16(_mm_add_epi16(me, me), off);
      const __m128i to = _mm_sub_epi16(_mm_add_epi16(mo, mo), off);
      const __m128i R = Colour16(te, to, r + i);
      const __m128i G = Colour16(te, to, g + i);
      const __m128i B = Colour16(te, to, b + i);
      if (kind == kPixBgr)
        Store24(dst + 6 * i, B, G, R);
      else if (kind == kPix0rgb)
        Store32(dst + 8 * i, _mm_setzero_si128(), R, G, B);
      else
        Store32(dst + 8 * i, B, G, R, alpha);
    }
  }
  if (i < n) {
    const int bpp = BytesPerPixel(kind);
    PlainRgbRows().pixels(y + 2 * i, r + i, g + i, b + i, width - 2 * i, m, kind,
                          dst + 2 * i * bpp);
  }
}

void Route24(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
             const uint8_t* vb, int width, int wa, int wb, int mul, const RgbMatrix& m,
             uint8_t* dst) {
  const int n = width / 2;
  const __m128i c128 = Set16(128), WA = Set16(wa), WB = Set16(wb), MUL = Set16(mul);
  const __m128i gain = Set16(m.yGain24), off = Set16(m.yOffset24), low = _mm_set1_epi16(0xFF);
  const __m128i uToB = Set16(m.uToB), uToG = Set16(m.uToG), vToG = Set16(m.vToG),
                vToR = Set16(m.vToR);
  // Doubled, weighted and scaled chroma of 8 columns: even and odd pixels.
  auto chroma = [&](const uint8_t* a, const uint8_t* b, __m128i* even, __m128i* odd) {
    const __m128i a0 = _mm_sub_epi16(Load8(a), c128), a1 = _mm_sub_epi16(Load8(a + 1), c128);
    const __m128i b0 = _mm_sub_epi16(Load8(b), c128), b1 = _mm_sub_epi16(Load8(b + 1), c128);
    const __m128i ea = _mm_add_epi16(a0, a0), oa = _mm_add_epi16(a0, a1);
    const __m128i eb = _mm_add_epi16(b0, b0), ob = _mm_add_epi16(b0, b1);
    *even = _mm_mullo_epi16(_mm_add_epi16(_mm_mullo_epi16(ea, WA), _mm_mullo_epi16(eb, WB)), MUL);
    *odd = _mm_mullo_epi16(_mm_add_epi16(_mm_mullo_epi16(oa, WA), _mm_mullo_epi16(ob, WB)), MUL);
  };
  auto pack = [](__m128i even, __m128i odd) {
    return _mm_unpacklo_epi8(_mm_packus_epi16(_mm_srai_epi16(even, 4), _mm_srai_epi16(even, 4)),
                             _mm_packus_epi16(_mm_srai_epi16(odd, 4), _mm_srai_epi16(odd, 4)));
  };
  int i = 0;
  // Column i + 8 must be a real column: the edge pixel is left to the plain body.
  for (; i + 8 < n; i += 8) {
    __m128i eue, euo, eve, evo;
    chroma(ua + i, ub + i, &eue, &euo);
    chroma(va + i, vb + i, &eve, &evo);
    const __m128i yy = LoadU(y + 2 * i);
    const __m128i le =
        _mm_sub_epi16(_mm_mulhi_epi16(_mm_slli_epi16(_mm_and_si128(yy, low), 7), gain), off);
    const __m128i lo =
        _mm_sub_epi16(_mm_mulhi_epi16(_mm_slli_epi16(_mm_srli_epi16(yy, 8), 7), gain), off);
    const __m128i B = pack(_mm_add_epi16(le, _mm_mulhi_epi16(eue, uToB)),
                           _mm_add_epi16(lo, _mm_mulhi_epi16(euo, uToB)));
    const __m128i G = pack(
        _mm_add_epi16(_mm_add_epi16(le, _mm_mulhi_epi16(eue, uToG)), _mm_mulhi_epi16(eve, vToG)),
        _mm_add_epi16(_mm_add_epi16(lo, _mm_mulhi_epi16(euo, uToG)), _mm_mulhi_epi16(evo, vToG)));
    const __m128i R = pack(_mm_add_epi16(le, _mm_mulhi_epi16(eve, vToR)),
                           _mm_add_epi16(lo, _mm_mulhi_epi16(evo, vToR)));
    Store24(dst + 6 * i, B, G, R);
  }
  if (i < n)
    PlainRgbRows().route24(y + 2 * i, ua + i, ub + i, va + i, vb + i, width - 2 * i, wa, wb, mul, m,
                           dst + 6 * i);
}

void LineMean(const uint8_t* p, const uint8_t* q, int bytes, uint8_t* dst) {
  int i = 0;
  for (; i + 16 <= bytes; i += 16) StoreU(dst + i, _mm_avg_epu8(LoadU(p + i), LoadU(q + i)));
  if (i < bytes) PlainRgbRows().lineMean(p + i, q + i, bytes - i, dst + i);
}

}  // namespace

const PlanarRows& Sse2PlanarRows() {
  static const PlanarRows rows = {RgbToY<3>,   RgbToY<4>, RgbToUV<3>, RgbToUV<4>, RgbToYUV<3>,
                                  RgbToYUV<4>, Yuy2ToY,   Yuy2ToUV,   ToYuy2};
  return rows;
}

const RgbRows& Sse2RgbRows() {
  static const RgbRows rows = {Terms, Filter, Pixels, Route24, LineMean};
  return rows;
}

}  // namespace colour
}  // namespace orv
