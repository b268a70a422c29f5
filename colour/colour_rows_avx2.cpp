// AVX2 bodies of the colour row kernels: the arithmetic of the plain rows on
// 16 lanes of 16 bits, the rest of each row handed to the SSE2 body (which in
// turn ends in the plain one), so the bytes are the plain bytes.
//
// 256-bit unpacks and packs work within 128-bit halves; each body keeps its
// data in "half order" (first half of the vector = first half of the pixels)
// and puts bytes back in memory order with one permute where needed.
#include <immintrin.h>

#include "colour/colour_rows.h"

namespace orv {
namespace colour {
namespace {

inline __m256i Set16(int v) { return _mm256_set1_epi16(static_cast<int16_t>(v)); }
inline __m256i LoadU(const void* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}
inline void StoreU(void* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
// 16 bytes widened to 16 words, in memory order.
inline __m256i Load16(const uint8_t* p) {
  return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

// Per 128-bit half: bytes E0..E7 O0..O7 to E0 O0 E1 O1 ...
inline __m256i InterleaveHalves(__m256i x) {
  const __m256i m = _mm256_setr_epi8(0, 8, 1, 9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15, 0, 8, 1,
                                     9, 2, 10, 3, 11, 4, 12, 5, 13, 6, 14, 7, 15);
  return _mm256_shuffle_epi8(x, m);
}

// ----- packed RGB to planar -----------------------------------------------

// Eight pixels at p as 32-bit lanes B G R x (x is masked away later). For
// 3-byte pixels each 16-byte load reads 4 bytes beyond its 4 pixels; the
// callers keep at least two pixels back.
template <int kBpp>
inline __m256i LoadPixels8(const uint8_t* p) {
  if (kBpp == 4) return LoadU(p);
  const __m256i m = _mm256_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1, 0, 1, 2,
                                     -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
  const __m256i v = _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 12)), 1);
  return _mm256_shuffle_epi8(v, m);
}

struct Bgr {
  __m256i b, g, r;
};
inline Bgr Split(__m256i v) {
  const __m256i m = _mm256_set1_epi32(0xFF);
  return Bgr{_mm256_and_si256(v, m), _mm256_and_si256(_mm256_srli_epi32(v, 8), m),
             _mm256_and_si256(_mm256_srli_epi32(v, 16), m)};
}

inline __m256i Luma16(__m256i b, __m256i g, __m256i r, const PlanarCoefs& c) {
  const __m256i tb = _mm256_mulhi_epi16(_mm256_slli_epi16(b, 6), Set16(c.bToY));
  const __m256i tg = _mm256_mulhi_epi16(_mm256_slli_epi16(g, 6), Set16(c.gToY));
  const __m256i tr = _mm256_mulhi_epi16(_mm256_slli_epi16(r, 6), Set16(c.rToY));
  const __m256i sum = _mm256_srai_epi16(
      _mm256_add_epi16(_mm256_add_epi16(tb, tg), _mm256_add_epi16(tr, Set16(4))), 3);
  return _mm256_adds_epi16(sum, Set16(c.black));
}

template <int kBpp>
void RgbToY(const uint8_t* src, int pairs, uint8_t* y, const PlanarCoefs& c) {
  const int total = pairs * 2;
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  int i = 0;
  for (; i + 32 + (kBpp == 3 ? 2 : 0) <= total; i += 32) {
    Bgr p[4];
    for (int k = 0; k < 4; ++k) p[k] = Split(LoadPixels8<kBpp>(src + (i + 8 * k) * kBpp));
    // Words of pixel groups [0-3, 8-11 | 4-7, 12-15] and [16-19, 24-27 | 20-23, 28-31].
    const __m256i y01 =
        Luma16(_mm256_packs_epi32(p[0].b, p[1].b), _mm256_packs_epi32(p[0].g, p[1].g),
               _mm256_packs_epi32(p[0].r, p[1].r), c);
    const __m256i y23 =
        Luma16(_mm256_packs_epi32(p[2].b, p[3].b), _mm256_packs_epi32(p[2].g, p[3].g),
               _mm256_packs_epi32(p[2].r, p[3].r), c);
    StoreU(y + i, _mm256_permutevar8x32_epi32(_mm256_packus_epi16(y01, y23), order));
  }
  if (i < total) {
    const PlanarRows& next = Sse2PlanarRows();
    (kBpp == 3 ? next.rgb24ToY : next.rgb32ToY)(src + i * kBpp, (total - i) / 2, y + i, c);
  }
}

inline __m256i Chroma16(__m256i sb, __m256i sg, __m256i sr, int cb, int cg, int cr) {
  const __m256i sum = _mm256_add_epi16(
      _mm256_add_epi16(_mm256_mulhi_epi16(sb, Set16(cb)), _mm256_mulhi_epi16(sg, Set16(cg))),
      _mm256_add_epi16(_mm256_mulhi_epi16(sr, Set16(cr)), Set16(8)));
  return _mm256_add_epi16(_mm256_srai_epi16(sum, 4), Set16(128));
}

// The left pixels of 16 pairs (32 pixels at p) as words B, G, R, in the pair
// order [0 1 4 5 8 9 12 13 | 2 3 6 7 10 11 14 15].
template <int kBpp>
inline void EvenPixels16(const uint8_t* p, __m256i* b, __m256i* g, __m256i* r) {
  const __m256i keep = _mm256_set1_epi64x(0xFFFFFFFF);
  Bgr s[4];
  for (int k = 0; k < 4; ++k)
    s[k] = Split(_mm256_and_si256(LoadPixels8<kBpp>(p + 8 * k * kBpp), keep));
  *b = _mm256_packs_epi32(_mm256_packs_epi32(s[0].b, s[1].b), _mm256_packs_epi32(s[2].b, s[3].b));
  *g = _mm256_packs_epi32(_mm256_packs_epi32(s[0].g, s[1].g), _mm256_packs_epi32(s[2].g, s[3].g));
  *r = _mm256_packs_epi32(_mm256_packs_epi32(s[0].r, s[1].r), _mm256_packs_epi32(s[2].r, s[3].r));
}

// 16 chroma words in the pair order above to 16 bytes in memory order.
inline __m128i PairOrderToBytes(__m256i words) {
  const __m256i bytes = _mm256_packus_epi16(words, words);
  const __m128i q = _mm256_castsi256_si128(_mm256_permute4x64_epi64(bytes, 0x08));
  const __m128i m = _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15);
  return _mm_shuffle_epi8(q, m);
}

template <int kBpp>
void RgbToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v,
             const PlanarCoefs& c) {
  int j = 0;
  for (; j + 16 + (kBpp == 3 ? 1 : 0) <= pairs; j += 16) {
    __m256i ab, ag, ar, bb, bg, br;
    EvenPixels16<kBpp>(a + 2 * j * kBpp, &ab, &ag, &ar);
    EvenPixels16<kBpp>(b + 2 * j * kBpp, &bb, &bg, &br);
    auto s = [field](__m256i x, __m256i y) {
      return field ? _mm256_slli_epi16(
                         _mm256_add_epi16(_mm256_add_epi16(x, _mm256_add_epi16(x, x)), y), 5)
                   : _mm256_slli_epi16(_mm256_add_epi16(x, y), 6);
    };
    const __m256i sb = s(ab, bb), sg = s(ag, bg), sr = s(ar, br);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(u + j),
                     PairOrderToBytes(Chroma16(sb, sg, sr, c.bToU, c.gToU, c.rToU)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(v + j),
                     PairOrderToBytes(Chroma16(sb, sg, sr, c.bToV, c.gToV, c.rToV)));
  }
  if (j < pairs) {
    const PlanarRows& next = Sse2PlanarRows();
    (kBpp == 3 ? next.rgb24ToUV : next.rgb32ToUV)(a + 2 * j * kBpp, b + 2 * j * kBpp, pairs - j,
                                                  field, u + j, v + j, c);
  }
}

// B and G of four pixels per 128-bit half as words [B0-3 | G0-3], and R as
// words [R0-3 | 0], straight from the raw bytes of 8 pixels (3 or 4 bytes each).
template <int kBpp>
inline void SplitWords(const uint8_t* p, __m256i* bg, __m256i* r) {
  __m256i v;
  if (kBpp == 4) {
    v = LoadU(p);
  } else {
    v = _mm256_inserti128_si256(
        _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))),
        _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 12)), 1);
  }
  const int s = kBpp;
  const __m256i mbg = _mm256_setr_epi8(0, -1, s, -1, 2 * s, -1, 3 * s, -1, 1, -1, s + 1, -1,
                                       2 * s + 1, -1, 3 * s + 1, -1, 0, -1, s, -1, 2 * s, -1, 3 * s,
                                       -1, 1, -1, s + 1, -1, 2 * s + 1, -1, 3 * s + 1, -1);
  const __m256i mr = _mm256_setr_epi8(2, -1, s + 2, -1, 2 * s + 2, -1, 3 * s + 2, -1, -1, -1, -1,
                                      -1, -1, -1, -1, -1, 2, -1, s + 2, -1, 2 * s + 2, -1,
                                      3 * s + 2, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  *bg = _mm256_shuffle_epi8(v, mbg);
  *r = _mm256_shuffle_epi8(v, mr);
}

// Luma of 32 pixels of one line into y; the words of their left pixels (pair
// order of EvenPixels16) into eb, eg, er.
template <int kBpp>
inline void LumaAndEven(const uint8_t* p, uint8_t* y, const PlanarCoefs& c, __m256i* eb,
                        __m256i* eg, __m256i* er) {
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  const __m256i evenWords = _mm256_set1_epi32(0xFFFF);
  __m256i bg[4], r[4];
  for (int k = 0; k < 4; ++k) SplitWords<kBpp>(p + 8 * k * kBpp, &bg[k], &r[k]);
  __m256i lumas[2], B[2], G[2], R[2];
  for (int h = 0; h < 2; ++h) {
    // Words of pixels [0-3, 8-11 | 4-7, 12-15] (plus 16 h), as the packs order.
    B[h] = _mm256_unpacklo_epi64(bg[2 * h], bg[2 * h + 1]);
    G[h] = _mm256_unpackhi_epi64(bg[2 * h], bg[2 * h + 1]);
    R[h] = _mm256_unpacklo_epi64(r[2 * h], r[2 * h + 1]);
    lumas[h] = Luma16(B[h], G[h], R[h], c);
  }
  StoreU(y, _mm256_permutevar8x32_epi32(_mm256_packus_epi16(lumas[0], lumas[1]), order));
  *eb = _mm256_packs_epi32(_mm256_and_si256(B[0], evenWords), _mm256_and_si256(B[1], evenWords));
  *eg = _mm256_packs_epi32(_mm256_and_si256(G[0], evenWords), _mm256_and_si256(G[1], evenWords));
  *er = _mm256_packs_epi32(_mm256_and_si256(R[0], evenWords), _mm256_and_si256(R[1], evenWords));
}

template <int kBpp>
void RgbToYUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* ya, uint8_t* yb,
              uint8_t* u, uint8_t* v, const PlanarCoefs& c) {
  int j = 0;
  // 3-byte pixels: the last 16-byte load reads 4 bytes past its pixels.
  for (; j + 16 + (kBpp == 3 ? 1 : 0) <= pairs; j += 16) {
    __m256i ab, ag, ar, bb, bg, br;
    LumaAndEven<kBpp>(a + 2 * j * kBpp, ya + 2 * j, c, &ab, &ag, &ar);
    LumaAndEven<kBpp>(b + 2 * j * kBpp, yb + 2 * j, c, &bb, &bg, &br);
    auto s = [field](__m256i x, __m256i y) {
      return field ? _mm256_slli_epi16(
                         _mm256_add_epi16(_mm256_add_epi16(x, _mm256_add_epi16(x, x)), y), 5)
                   : _mm256_slli_epi16(_mm256_add_epi16(x, y), 6);
    };
    const __m256i sb = s(ab, bb), sg = s(ag, bg), sr = s(ar, br);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(u + j),
                     PairOrderToBytes(Chroma16(sb, sg, sr, c.bToU, c.gToU, c.rToU)));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(v + j),
                     PairOrderToBytes(Chroma16(sb, sg, sr, c.bToV, c.gToV, c.rToV)));
  }
  if (j < pairs) {
    const PlanarRows& next = Sse2PlanarRows();
    (kBpp == 3 ? next.rgb24ToYUV : next.rgb32ToYUV)(a + 2 * j * kBpp, b + 2 * j * kBpp, pairs - j,
                                                    field, ya + 2 * j, yb + 2 * j, u + j, v + j, c);
  }
}

// ----- YUY2 ------------------------------------------------------------------

void Yuy2ToY(const uint8_t* src, int pairs, uint8_t* y) {
  const __m256i low = Set16(0xFF);
  int j = 0;
  for (; j + 16 <= pairs; j += 16) {
    const __m256i a = _mm256_and_si256(LoadU(src + 4 * j), low);
    const __m256i b = _mm256_and_si256(LoadU(src + 4 * j + 32), low);
    StoreU(y + 2 * j, _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
  }
  if (j < pairs) Sse2PlanarRows().yuy2ToY(src + 4 * j, pairs - j, y + 2 * j);
}

void Yuy2ToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v) {
  int j = 0;
  for (; j + 16 <= pairs; j += 16) {
    __m256i uv[2];
    for (int h = 0; h < 2; ++h) {
      const __m256i x = _mm256_srli_epi16(LoadU(a + 4 * j + 32 * h), 8);
      const __m256i y = _mm256_srli_epi16(LoadU(b + 4 * j + 32 * h), 8);
      uv[h] = field ? _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(_mm256_add_epi16(x, x),
                                                                          _mm256_add_epi16(x, y)),
                                                         Set16(2)),
                                        2)
                    : _mm256_avg_epu16(x, y);
    }
    // U V byte pairs of pairs 0..15, in memory order.
    const __m256i bytes = _mm256_permute4x64_epi64(_mm256_packus_epi16(uv[0], uv[1]), 0xD8);
    const __m256i us = _mm256_and_si256(bytes, Set16(0xFF));
    const __m256i vs = _mm256_srli_epi16(bytes, 8);
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(us, vs), 0xD8);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(u + j), _mm256_castsi256_si128(packed));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(v + j), _mm256_extracti128_si256(packed, 1));
  }
  if (j < pairs) Sse2PlanarRows().yuy2ToUV(a + 4 * j, b + 4 * j, pairs - j, field, u + j, v + j);
}

// ----- 4:2:0 to YUY2 ------------------------------------------------------------
//
// The chroma sums come from one byte multiply-add of the interleaved samples of
// both lines (unpacklo / unpackhi keep 128-bit halves: [0-7 | 16-23] and
// [8-15 | 24-31] of 32 columns), U in the low and V in the high byte of a word,
// then put in order with Y by lane and qword permutes before the interleave.

struct ChromaConsts {
  __m256i weights, mul, round;
  __m128i shift;
  ChromaConsts(int wa, int wb, int rnd, int sh)
      : weights(_mm256_set1_epi16(static_cast<int16_t>((wb << 8) | wa))),
        mul(Set16(sh >= 1 ? 1 << (15 - sh) : 0)),
        round(Set16(rnd)),
        shift(_mm_cvtsi32_si128(sh)) {}
};

// Filtered chroma as words, from sample bytes interleaved a, b.
template <Yuy2Chroma kKind>
inline __m256i ScaleChroma(__m256i ab, const ChromaConsts& k) {
  const __m256i sum = _mm256_maddubs_epi16(ab, k.weights);
  if (kKind == Yuy2Chroma::kRoundHalf) return _mm256_mulhrs_epi16(sum, k.mul);
  if (kKind == Yuy2Chroma::kFloor) return _mm256_srl_epi16(sum, k.shift);
  return _mm256_srl_epi16(_mm256_add_epi16(sum, k.round), k.shift);
}

template <Yuy2Chroma kKind>
int ToYuy2Body(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
               const uint8_t* vb, int pairs, int wa, int wb, int round, int shift, uint8_t* dst) {
  // Built here, as locals: stores through dst can't alias them.
  const ChromaConsts k(wa, wb, round, shift);
  int j = 0;
  for (; j + 32 <= pairs; j += 32) {
    // Words (U, V) of pairs [0-7 | 16-23] and [8-15 | 24-31].
    const __m256i a = LoadU(ua + j), b = LoadU(ub + j), c = LoadU(va + j), d = LoadU(vb + j);
    const __m256i uvlo =
        _mm256_or_si256(ScaleChroma<kKind>(_mm256_unpacklo_epi8(a, b), k),
                        _mm256_slli_epi16(ScaleChroma<kKind>(_mm256_unpacklo_epi8(c, d), k), 8));
    const __m256i uvhi =
        _mm256_or_si256(ScaleChroma<kKind>(_mm256_unpackhi_epi8(a, b), k),
                        _mm256_slli_epi16(ScaleChroma<kKind>(_mm256_unpackhi_epi8(c, d), k), 8));
    // Qwords spread so that the byte interleave writes memory order: uvA and
    // y0 take pairs 0-15 as [0-3, 8-11 | 4-7, 12-15], uvB and y1 pairs 16-31.
    const __m256i uvA = _mm256_permute4x64_epi64(_mm256_permute2x128_si256(uvlo, uvhi, 0x20), 0xD8);
    const __m256i uvB = _mm256_permute4x64_epi64(_mm256_permute2x128_si256(uvlo, uvhi, 0x31), 0xD8);
    const __m256i y0 = _mm256_permute4x64_epi64(LoadU(y + 2 * j), 0xD8);
    const __m256i y1 = _mm256_permute4x64_epi64(LoadU(y + 2 * j + 32), 0xD8);
    uint8_t* out = dst + 4 * j;
    StoreU(out, _mm256_unpacklo_epi8(y0, uvA));
    StoreU(out + 32, _mm256_unpackhi_epi8(y0, uvA));
    StoreU(out + 64, _mm256_unpacklo_epi8(y1, uvB));
    StoreU(out + 96, _mm256_unpackhi_epi8(y1, uvB));
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
    Sse2PlanarRows().toYuy2(y + 2 * j, ua + j, ub + j, va + j, vb + j, pairs - j, wa, wb, round,
                            shift, dst + 4 * j);
}

// ----- planar to RGB -----------------------------------------------------------

void Terms(const uint8_t* u, const uint8_t* v, int n, const RgbMatrix& m, int16_t* r, int16_t* g,
           int16_t* b) {
  const __m256i c128 = Set16(128);
  const __m256i green = _mm256_set1_epi32(static_cast<int>(
      (static_cast<uint32_t>(m.uToG) << 16) | (static_cast<uint32_t>(m.vToG) & 0xFFFF)));
  const __m256i half = _mm256_set1_epi32(32768);
  int i = 0;
  for (; i + 16 <= n; i += 16) {
    const __m256i uu = _mm256_slli_epi16(_mm256_sub_epi16(Load16(u + i), c128), 8);
    const __m256i vv = _mm256_slli_epi16(_mm256_sub_epi16(Load16(v + i), c128), 8);
    StoreU(r + i, _mm256_mulhi_epi16(vv, Set16(m.vToR)));
    StoreU(b + i, _mm256_mulhi_epi16(uu, Set16(m.uToB)));
    const __m256i lo = _mm256_srai_epi32(
        _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpacklo_epi16(vv, uu), green), half), 16);
    const __m256i hi = _mm256_srai_epi32(
        _mm256_add_epi32(_mm256_madd_epi16(_mm256_unpackhi_epi16(vv, uu), green), half), 16);
    StoreU(g + i, _mm256_packs_epi32(lo, hi));
  }
  // The SSE2 body finishes the columns and sets the right-edge entry.
  if (i < n)
    Sse2RgbRows().terms(u + i, v + i, n - i, m, r + i, g + i, b + i);
  else if (n > 0) {
    r[n] = r[n - 1];
    g[n] = g[n - 1];
    b[n] = b[n - 1];
  }
}

void Filter(const int16_t* pa, const int16_t* pb, int count, TermFilter kind, bool blue,
            int16_t* outA, int16_t* outB) {
  const __m256i one = Set16(1), two = Set16(2);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m256i a = LoadU(pa + i), b = LoadU(pb + i);
    const __m256i ab = _mm256_add_epi16(a, b);
    __m256i A, B;
    if (!blue) {
      if (kind == kFilterFrame) {
        A = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(_mm256_add_epi16(a, a), ab), two),
                              2);
        B = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(_mm256_add_epi16(b, b), ab), two),
                              2);
      } else if (kind == kFilterField1) {
        const __m256i d = _mm256_srai_epi16(_mm256_sub_epi16(a, b), 1);
        A = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(d, _mm256_add_epi16(ab, ab)), two),
                              2);
        B = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(d, _mm256_slli_epi16(b, 2)), two),
                              2);
      } else {
        const __m256i d = _mm256_srai_epi16(_mm256_sub_epi16(b, a), 1);
        A = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(d, _mm256_slli_epi16(a, 2)), two),
                              2);
        B = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(d, _mm256_add_epi16(ab, ab)), two),
                              2);
      }
    } else {
      if (kind == kFilterFrame) {
        const __m256i d = _mm256_srai_epi16(_mm256_sub_epi16(a, b), 1);
        A = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(d, ab), one), 1);
        B = _mm256_srai_epi16(_mm256_add_epi16(_mm256_sub_epi16(ab, d), one), 1);
      } else if (kind == kFilterField1) {
        const __m256i e = _mm256_srai_epi16(_mm256_sub_epi16(a, b), 2);
        A = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(e, ab), one), 1);
        B = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(e, _mm256_add_epi16(b, b)), one),
                              1);
      } else {
        const __m256i e = _mm256_srai_epi16(_mm256_sub_epi16(b, a), 2);
        A = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(e, _mm256_add_epi16(a, a)), one),
                              1);
        B = _mm256_srai_epi16(_mm256_add_epi16(_mm256_add_epi16(e, ab), one), 1);
      }
    }
    StoreU(outA + i, A);
    StoreU(outB + i, B);
  }
  if (i < count) Sse2RgbRows().filter(pa + i, pb + i, count - i, kind, blue, outA + i, outB + i);
}

// One colour of 32 pixels, bytes in half order (pixels 0-15 | 16-31).
inline __m256i Colour32(__m256i te, __m256i to, const int16_t* t) {
  const __m256i t0 = LoadU(t), t1 = LoadU(t + 1);
  const __m256i even = _mm256_srai_epi16(_mm256_adds_epi16(te, _mm256_add_epi16(t0, t0)), 6);
  const __m256i odd = _mm256_srai_epi16(_mm256_adds_epi16(to, _mm256_add_epi16(t0, t1)), 6);
  return InterleaveHalves(_mm256_packus_epi16(even, odd));
}

// 32 pixels of 4 bytes from byte vectors in half order.
inline void Store32(uint8_t* d, __m256i c0, __m256i c1, __m256i c2, __m256i c3) {
  const __m256i lo01 = _mm256_unpacklo_epi8(c0, c1), hi01 = _mm256_unpackhi_epi8(c0, c1);
  const __m256i lo23 = _mm256_unpacklo_epi8(c2, c3), hi23 = _mm256_unpackhi_epi8(c2, c3);
  const __m256i p0 = _mm256_unpacklo_epi16(lo01, lo23);  // pixels [0-3 | 16-19]
  const __m256i p1 = _mm256_unpackhi_epi16(lo01, lo23);  // [4-7 | 20-23]
  const __m256i p2 = _mm256_unpacklo_epi16(hi01, hi23);  // [8-11 | 24-27]
  const __m256i p3 = _mm256_unpackhi_epi16(hi01, hi23);  // [12-15 | 28-31]
  StoreU(d, _mm256_permute2x128_si256(p0, p1, 0x20));
  StoreU(d + 32, _mm256_permute2x128_si256(p2, p3, 0x20));
  StoreU(d + 64, _mm256_permute2x128_si256(p0, p1, 0x31));
  StoreU(d + 96, _mm256_permute2x128_si256(p2, p3, 0x31));
}

// 32 pixels of 3 bytes B G R from byte vectors in half order.
inline void Store24(uint8_t* d, __m256i b, __m256i g, __m256i r) {
  // For output block k (16 bytes) of a half: which pixel each byte takes from
  // each colour (-1 elsewhere).
  const __m256i mb0 = _mm256_setr_epi8(0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5, 0,
                                       -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1, 5);
  const __m256i mg0 = _mm256_setr_epi8(-1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1,
                                       -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1, -1);
  const __m256i mr0 = _mm256_setr_epi8(-1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1,
                                       -1, -1, 0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, 4, -1);
  const __m256i mb1 = _mm256_setr_epi8(-1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1,
                                       -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, -1);
  const __m256i mg1 = _mm256_setr_epi8(5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10, 5,
                                       -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1, 10);
  const __m256i mr1 = _mm256_setr_epi8(-1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1,
                                       -1, 5, -1, -1, 6, -1, -1, 7, -1, -1, 8, -1, -1, 9, -1, -1);
  const __m256i mb2 =
      _mm256_setr_epi8(-1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1, -1, 11, -1,
                       -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1);
  const __m256i mg2 =
      _mm256_setr_epi8(-1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1, -1, -1, 11,
                       -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, -1);
  const __m256i mr2 =
      _mm256_setr_epi8(10, -1, -1, 11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15, 10, -1, -1,
                       11, -1, -1, 12, -1, -1, 13, -1, -1, 14, -1, -1, 15);
  const __m256i o0 =
      _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(b, mb0), _mm256_shuffle_epi8(g, mg0)),
                      _mm256_shuffle_epi8(r, mr0));
  const __m256i o1 =
      _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(b, mb1), _mm256_shuffle_epi8(g, mg1)),
                      _mm256_shuffle_epi8(r, mr1));
  const __m256i o2 =
      _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(b, mb2), _mm256_shuffle_epi8(g, mg2)),
                      _mm256_shuffle_epi8(r, mr2));
  // o0 = [bytes 0-15 | 48-63], o1 = [16-31 | 64-79], o2 = [32-47 | 80-95].
  StoreU(d, _mm256_permute2x128_si256(o0, o1, 0x20));
  StoreU(d + 32, _mm256_permute2x128_si256(o2, o0, 0x30));
  StoreU(d + 64, _mm256_permute2x128_si256(o1, o2, 0x31));
}

void Pixels(const uint8_t* y, const int16_t* r, const int16_t* g, const int16_t* b, int width,
            const RgbMatrix& m, PixelKind kind, uint8_t* dst) {
  const int n = width / 2;
  int i = 0;
  if (kind == kPixBgr0 || kind == kPixBgra || kind == kPix0rgb || kind == kPixBgr) {
    const __m256i gain = Set16(m.yGain), off = Set16(m.yOffset), low = Set16(0xFF);
    const __m256i alpha = kind == kPixBgra ? _mm256_set1_epi8(-1) : _mm256_setzero_si256();
    const int bpp = BytesPerPixel(kind);
    for (; i + 16 <= n; i += 16) {
      const __m256i yy = LoadU(y + 2 * i);
      const __m256i me = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_and_si256(yy, low), 7), gain);
      const __m256i mo = _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_srli_epi16(yy, 8), 7), gain);
      const __m256i te = _mm256_sub_epi16(_mm256_add_epi16(me, me), off);
      const __m256i to = _mm256_sub_epi16(_mm256_add_epi16(mo, mo), off);
      const __m256i R = Colour32(te, to, r + i);
      const __m256i G = Colour32(te, to, g + i);
      const __m256i B = Colour32(te, to, b + i);
      uint8_t* d = dst + 2 * i * bpp;
      if (kind == kPixBgr)
        Store24(d, B, G, R);
      else if (kind == kPix0rgb)
        Store32(d, _mm256_setzero_si256(), R, G, B);
      else
        Store32(d, B, G, R, alpha);
    }
  }
  if (i < n) {
    const int bpp = BytesPerPixel(kind);
    Sse2RgbRows().pixels(y + 2 * i, r + i, g + i, b + i, width - 2 * i, m, kind, dst + 2 * i * bpp);
  }
}

void Route24(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
             const uint8_t* vb, int width, int wa, int wb, int mul, const RgbMatrix& m,
             uint8_t* dst) {
  const int n = width / 2;
  int i = 0;
  Route24Weights rw;
  if (MakeRoute24Weights(wa, wb, mul, &rw)) {
    const __m256i W = _mm256_set1_epi16(static_cast<int16_t>((rw.b << 8) | rw.a)),
                  bias = Set16(rw.bias);
    const __m256i gain = Set16(m.yGain24), off = Set16(m.yOffset24), low = Set16(0xFF);
    const __m256i uToB = Set16(m.uToB), uToG = Set16(m.uToG), vToG = Set16(m.vToG),
                  vToR = Set16(m.vToR);
    // f = wa' x (a - 128) + wb' x (b - 128) of 16 columns from one byte multiply-add.
    auto column = [&](const uint8_t* a, const uint8_t* b) {
      const __m256i ab = _mm256_or_si256(Load16(a), _mm256_slli_epi16(Load16(b), 8));
      return _mm256_sub_epi16(_mm256_maddubs_epi16(ab, W), bias);
    };
    // Lanes 1..15 and the last lane again: the next column, with the right-edge rule.
    const __m256i lastWord = _mm256_setr_epi16(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1);
    auto nextColumn = [&](__m256i f) {
      const __m256i high = _mm256_permute2x128_si256(f, f, 0x11);
      return _mm256_blendv_epi8(_mm256_alignr_epi8(high, f, 2), f, lastWord);
    };
    bool edge = false;  // the block ends at the right edge of the line
    auto chroma = [&](const uint8_t* a, const uint8_t* b, __m256i* even, __m256i* odd) {
      const __m256i f0 = column(a, b);
      const __m256i f1 = edge ? nextColumn(f0) : column(a + 1, b + 1);
      *even = _mm256_add_epi16(f0, f0);
      *odd = _mm256_add_epi16(f0, f1);
    };
    auto pack = [](__m256i even, __m256i odd) {
      return InterleaveHalves(
          _mm256_packus_epi16(_mm256_srai_epi16(even, 4), _mm256_srai_epi16(odd, 4)));
    };
    // Column i + 16 must be a real column, but for the last block, which may
    // overlap the one before it and writes the same bytes again.
    auto block = [&](int i) {
      __m256i eue, euo, eve, evo;
      chroma(ua + i, ub + i, &eue, &euo);
      chroma(va + i, vb + i, &eve, &evo);
      const __m256i yy = LoadU(y + 2 * i);
      const __m256i le = _mm256_sub_epi16(
          _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_and_si256(yy, low), 7), gain), off);
      const __m256i lo = _mm256_sub_epi16(
          _mm256_mulhi_epi16(_mm256_slli_epi16(_mm256_srli_epi16(yy, 8), 7), gain), off);
      const __m256i B = pack(_mm256_add_epi16(le, _mm256_mulhi_epi16(eue, uToB)),
                             _mm256_add_epi16(lo, _mm256_mulhi_epi16(euo, uToB)));
      const __m256i G = pack(_mm256_add_epi16(_mm256_add_epi16(le, _mm256_mulhi_epi16(eue, uToG)),
                                              _mm256_mulhi_epi16(eve, vToG)),
                             _mm256_add_epi16(_mm256_add_epi16(lo, _mm256_mulhi_epi16(euo, uToG)),
                                              _mm256_mulhi_epi16(evo, vToG)));
      const __m256i R = pack(_mm256_add_epi16(le, _mm256_mulhi_epi16(eve, vToR)),
                             _mm256_add_epi16(lo, _mm256_mulhi_epi16(evo, vToR)));
      Store24(dst + 6 * i, B, G, R);
    };
    for (; i + 16 < n; i += 16) block(i);
    if (n >= 16) {
      edge = true;
      block(n - 16);
      i = n;
    }
  }
  if (i < n)
    Sse2RgbRows().route24(y + 2 * i, ua + i, ub + i, va + i, vb + i, width - 2 * i, wa, wb, mul, m,
                          dst + 6 * i);
}

void LineMean(const uint8_t* p, const uint8_t* q, int bytes, uint8_t* dst) {
  int i = 0;
  for (; i + 32 <= bytes; i += 32) StoreU(dst + i, _mm256_avg_epu8(LoadU(p + i), LoadU(q + i)));
  if (i < bytes) Sse2RgbRows().lineMean(p + i, q + i, bytes - i, dst + i);
}

}  // namespace

const PlanarRows& Avx2PlanarRows() {
  static const PlanarRows rows = {RgbToY<3>,   RgbToY<4>, RgbToUV<3>, RgbToUV<4>, RgbToYUV<3>,
                                  RgbToYUV<4>, Yuy2ToY,   Yuy2ToUV,   ToYuy2};
  return rows;
}

const RgbRows& Avx2RgbRows() {
  static const RgbRows rows = {Terms, Filter, Pixels, Route24, LineMean};
  return rows;
}

}  // namespace colour
}  // namespace orv
