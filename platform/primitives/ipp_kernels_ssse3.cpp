// SSSE3 forms of the row kernels that move or convert 3-channel pixels (the
// byte shuffle makes 3-byte pixels cheap), and of the colour conversions.
// Each gives the bytes of its plain twin: the colour forms do the plain
// form's fixed point in 16-bit lanes, one multiply-high per product.
#include <tmmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/primitives/ipp_color_math.h"
#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

namespace cm = color;

// Shuffle masks between 16 pixels of 3 bytes (three vectors) and three planes.
struct Masks3 {
  alignas(16) int8_t split[3][3][16];  // [channel][input vector]
  alignas(16) int8_t join[3][3][16];   // [output vector][channel]
};

Masks3 MakeMasks3() {
  Masks3 m;
  for (int c = 0; c < 3; ++c)
    for (int k = 0; k < 3; ++k)
      for (int i = 0; i < 16; ++i) {
        const int src = 3 * i + c - 16 * k;  // byte of input vector k holding pixel i, channel c
        m.split[c][k][i] = static_cast<int8_t>(src >= 0 && src < 16 ? src : -128);
      }
  for (int k = 0; k < 3; ++k)
    for (int c = 0; c < 3; ++c)
      for (int j = 0; j < 16; ++j) {
        const int byte = 16 * k + j;
        m.join[k][c][j] = static_cast<int8_t>(byte % 3 == c ? byte / 3 : -128);
      }
  return m;
}

const Masks3& M3() {
  static const Masks3 m = MakeMasks3();
  return m;
}

inline __m128i Ld(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void St(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline __m128i Mk(const int8_t* m) { return _mm_load_si128(reinterpret_cast<const __m128i*>(m)); }

// 16 pixels of 3 bytes at p into three planes c0, c1, c2.
inline void Split3(const uint8_t* p, __m128i* c0, __m128i* c1, __m128i* c2) {
  const Masks3& m = M3();
  const __m128i a = Ld(p), b = Ld(p + 16), c = Ld(p + 32);
  __m128i* out[3] = {c0, c1, c2};
  for (int ch = 0; ch < 3; ++ch)
    *out[ch] = _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(a, Mk(m.split[ch][0])),
                                         _mm_shuffle_epi8(b, Mk(m.split[ch][1]))),
                            _mm_shuffle_epi8(c, Mk(m.split[ch][2])));
}

// Three planes into 16 pixels of 3 bytes at p.
inline void Join3(__m128i c0, __m128i c1, __m128i c2, uint8_t* p) {
  const Masks3& m = M3();
  for (int k = 0; k < 3; ++k)
    St(p + 16 * k, _mm_or_si128(_mm_or_si128(_mm_shuffle_epi8(c0, Mk(m.join[k][0])),
                                             _mm_shuffle_epi8(c1, Mk(m.join[k][1]))),
                                _mm_shuffle_epi8(c2, Mk(m.join[k][2]))));
}

inline __m128i Pair(int lo, int hi) {
  return _mm_set1_epi32(
      static_cast<int>((static_cast<uint32_t>(hi) << 16) | (static_cast<uint32_t>(lo) & 0xFFFF)));
}

// (a x ca + b x cb + c x cc + add) >> shift for 8 int16 lanes, as int16.
inline __m128i Dot3(__m128i a, __m128i b, __m128i c, int ca, int cb, int cc, int add, int shift) {
  const __m128i one = _mm_set1_epi16(1);
  const __m128i pab = Pair(ca, cb), pc = Pair(cc, add);
  const __m128i cl = _mm_unpacklo_epi16(c, one), ch = _mm_unpackhi_epi16(c, one);
  __m128i lo = _mm_add_epi32(_mm_madd_epi16(_mm_unpacklo_epi16(a, b), pab), _mm_madd_epi16(cl, pc));
  __m128i hi = _mm_add_epi32(_mm_madd_epi16(_mm_unpackhi_epi16(a, b), pab), _mm_madd_epi16(ch, pc));
  lo = _mm_srai_epi32(lo, shift);
  hi = _mm_srai_epi32(hi, shift);
  return _mm_packs_epi32(lo, hi);
}

// The studio inverse in 16-bit lanes. Luma arrives as Y << 8 (unsigned), so
// the unsigned multiply-high gives (Y x 19071) >> 8; chroma arrives as
// (C - 128) << 8, so the rounding multiply-high (a x b + 2^14) >> 15 gives
// (d x k + 64) >> 7, the plain form's term. Blue may pass 32767 only when it
// is above 511 in Q6; the saturating add keeps it there, and the pack makes
// it 255 as the plain form does.
inline __m128i StudioLuma(__m128i y8) {
  return _mm_add_epi16(_mm_mulhi_epu16(y8, _mm_set1_epi16(cm::kStudioY)),
                       _mm_set1_epi16(cm::kStudioBias));
}

// Chroma terms of red, green (both products, summed) and blue.
struct StudioTerms {
  __m128i r, g, b;
};
inline StudioTerms StudioChromaTerms(__m128i u8, __m128i v8) {
  return {_mm_mulhrs_epi16(v8, _mm_set1_epi16(cm::kStudioRV)),
          _mm_add_epi16(_mm_mulhrs_epi16(u8, _mm_set1_epi16(cm::kStudioGU)),
                        _mm_mulhrs_epi16(v8, _mm_set1_epi16(cm::kStudioGV))),
          _mm_mulhrs_epi16(u8, _mm_set1_epi16(cm::kStudioBU))};
}

// R, G, B int16 lanes (before saturation) from luma and per-pixel terms.
inline void StudioRgb8(__m128i yy, const StudioTerms& t, __m128i* r, __m128i* g, __m128i* b) {
  *r = _mm_srai_epi16(_mm_adds_epi16(yy, t.r), 6);
  *g = _mm_srai_epi16(_mm_subs_epi16(yy, t.g), 6);
  *b = _mm_srai_epi16(_mm_adds_epi16(yy, t.b), 6);
}

// The 8 bytes at p as (C - 128) << 8 in 16-bit lanes.
inline __m128i Chroma8(const uint8_t* p) {
  const __m128i c = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return _mm_unpacklo_epi8(_mm_setzero_si128(), _mm_xor_si128(c, _mm_set1_epi8(-128)));
}

inline StudioTerms DupLo(const StudioTerms& t) {
  return {_mm_unpacklo_epi16(t.r, t.r), _mm_unpacklo_epi16(t.g, t.g), _mm_unpacklo_epi16(t.b, t.b)};
}
inline StudioTerms DupHi(const StudioTerms& t) {
  return {_mm_unpackhi_epi16(t.r, t.r), _mm_unpackhi_epi16(t.g, t.g), _mm_unpackhi_epi16(t.b, t.b)};
}

// JFIF YCbCr to R, G, B int16 lanes (before saturation).
inline void Jpeg8(__m128i y, __m128i u, __m128i v, __m128i* r, __m128i* g, __m128i* b) {
  u = _mm_sub_epi16(u, _mm_set1_epi16(128));
  v = _mm_sub_epi16(v, _mm_set1_epi16(128));
  const __m128i z = _mm_setzero_si128();
  *r = _mm_add_epi16(y, Dot3(v, u, z, cm::kJpegRV, 0, 0, cm::kRound, cm::kShift));
  *g = _mm_add_epi16(y, Dot3(u, v, z, -cm::kJpegGU, -cm::kJpegGV, 0, cm::kRound, cm::kShift));
  *b = _mm_add_epi16(y, Dot3(u, v, z, cm::kJpegBU, 0, 0, cm::kRound, cm::kShift));
}

inline __m128i Lo16(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i Hi16(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// The forward matrices in 16-bit lanes. A channel arrives as X << 8
// (unsigned), so the unsigned multiply-high by k gives (X x k) >> 8; a sum S
// of 2^m pixels arrives as S << (7 - m) and is multiplied by 2k, which gives
// (S x k) >> (8 + m). Chroma rows lie in 0..32768 before the last shift, so
// they are shifted as unsigned.
inline __m128i Mul(__m128i x8, int k) {
  return _mm_mulhi_epu16(x8, _mm_set1_epi16(static_cast<int16_t>(k)));
}
// kChromaBias + plus x kp - minus1 x k1 - minus2 x k2, shifted by 7.
inline __m128i Chroma(__m128i plus, int kp, __m128i minus1, int k1, __m128i minus2, int k2) {
  const __m128i s = _mm_add_epi16(Mul(plus, kp), _mm_set1_epi16(cm::kChromaBias));
  return _mm_srli_epi16(_mm_sub_epi16(_mm_sub_epi16(s, Mul(minus1, k1)), Mul(minus2, k2)), 7);
}
// Bytes 0..7 (8..15) of v as X << 8 in 16-bit lanes.
inline __m128i Shl8Lo(__m128i v) { return _mm_unpacklo_epi8(_mm_setzero_si128(), v); }
inline __m128i Shl8Hi(__m128i v) { return _mm_unpackhi_epi8(_mm_setzero_si128(), v); }

// JFIF Y, Cb, Cr int16 lanes (before saturation) of 8 pixels given as X << 8.
// Luma l is in Q7 (at most 32638); a channel less luma, (X << 7) - l, fits
// 16 bits, and the chroma sum passes 32767 only when it is above 255 in Q7,
// where the saturating add keeps it.
inline void JpegYcc8(__m128i r8, __m128i g8, __m128i b8, __m128i* y, __m128i* cb, __m128i* cr) {
  const __m128i l = _mm_add_epi16(_mm_add_epi16(Mul(r8, cm::kJpegYR), Mul(g8, cm::kJpegYG)),
                                  Mul(b8, cm::kJpegYB));
  const __m128i bias = _mm_set1_epi16(cm::kChromaBias);
  *y = _mm_srli_epi16(_mm_add_epi16(l, _mm_set1_epi16(64)), 7);
  const __m128i db = _mm_sub_epi16(_mm_srli_epi16(b8, 1), l);
  const __m128i dr = _mm_sub_epi16(_mm_srli_epi16(r8, 1), l);
  *cb = _mm_srai_epi16(_mm_adds_epi16(_mm_mulhrs_epi16(db, _mm_set1_epi16(cm::kJpegU)), bias), 7);
  *cr = _mm_srai_epi16(_mm_adds_epi16(_mm_mulhrs_epi16(dr, _mm_set1_epi16(cm::kJpegV)), bias), 7);
}

// Studio Y from planes: (R, G) x (66, 62) + (B, G) x (25, 67), two byte
// multiply-adds a lane, whose sum (at most 56100) is shifted as unsigned.
inline __m128i StudioYHalf(__m128i rg, __m128i bg) {
  const __m128i c1 = _mm_set1_epi16(static_cast<int16_t>((cm::kStudioYG1 << 8) | cm::kStudioYR));
  const __m128i c2 =
      _mm_set1_epi16(static_cast<int16_t>(((cm::kStudioYG - cm::kStudioYG1) << 8) | cm::kStudioYB));
  const __m128i s = _mm_add_epi16(_mm_maddubs_epi16(rg, c1), _mm_maddubs_epi16(bg, c2));
  return _mm_srli_epi16(_mm_add_epi16(s, _mm_set1_epi16(cm::kStudioYBias)), 8);
}
inline __m128i StudioY16(__m128i r, __m128i g, __m128i b) {
  return _mm_packus_epi16(StudioYHalf(_mm_unpacklo_epi8(r, g), _mm_unpacklo_epi8(b, g)),
                          StudioYHalf(_mm_unpackhi_epi8(r, g), _mm_unpackhi_epi8(b, g)));
}

// Studio Cb, Cr of 8 samples from channel sums scaled to S << (7 - m); the
// bytes land in the low 8 lanes.
inline void StudioChroma8(__m128i rs, __m128i gs, __m128i bs, __m128i* cb, __m128i* cr) {
  const __m128i u = Chroma(bs, 2 * cm::kStudioUB, rs, 2 * cm::kStudioUR, gs, 2 * cm::kStudioUG);
  const __m128i v = Chroma(rs, 2 * cm::kStudioVR, gs, 2 * cm::kStudioVG, bs, 2 * cm::kStudioVB);
  *cb = _mm_packus_epi16(u, u);
  *cr = _mm_packus_epi16(v, v);
}

void Yuv420ToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int pairs) {
  int i = 0;
  for (; i + 8 <= pairs; i += 8) {
    const __m128i yy = Ld(y + 2 * i);
    const StudioTerms t = StudioChromaTerms(Chroma8(cb + i), Chroma8(cr + i));
    __m128i r0, g0, b0, r1, g1, b1;
    StudioRgb8(StudioLuma(Shl8Lo(yy)), DupLo(t), &r0, &g0, &b0);
    StudioRgb8(StudioLuma(Shl8Hi(yy)), DupHi(t), &r1, &g1, &b1);
    Join3(_mm_packus_epi16(b0, b1), _mm_packus_epi16(g0, g1), _mm_packus_epi16(r0, r1),
          bgr + 6 * i);
  }
  if (i < pairs) PlainKernels().yuv420ToBgr(y + 2 * i, cb + i, cr + i, bgr + 6 * i, pairs - i);
}

// 4 pixel pairs of packed 4:2:2 (Y0 Cb Y1 Cr in 16-bit lanes Y | C << 8) to
// 8 R, G, B int16 lanes. The chroma lanes alternate Cb, Cr: one multiply gives
// blue's term in the Cb lane and red's in the Cr lane, another green's two
// products, which a swap within each pair adds up.
inline void Yuy2Rgb8(__m128i s, __m128i* r, __m128i* g, __m128i* b) {
  const __m128i c = _mm_xor_si128(_mm_and_si128(s, _mm_set1_epi16(static_cast<int16_t>(0xFF00))),
                                  _mm_set1_epi16(static_cast<int16_t>(0x8000)));
  const __m128i rb = _mm_mulhrs_epi16(c, Pair(cm::kStudioBU, cm::kStudioRV));
  const __m128i gg = _mm_mulhrs_epi16(c, Pair(cm::kStudioGU, cm::kStudioGV));
  const __m128i even = _mm_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13);
  const __m128i odd = _mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15);
  const __m128i swap = _mm_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
  const StudioTerms t{_mm_shuffle_epi8(rb, odd), _mm_add_epi16(gg, _mm_shuffle_epi8(gg, swap)),
                      _mm_shuffle_epi8(rb, even)};
  StudioRgb8(StudioLuma(_mm_slli_epi16(s, 8)), t, r, g, b);
}

// 8 pixel pairs of packed 4:2:2 to 16 R, G, B bytes.
inline void Yuy2Rgb16(const uint8_t* s, __m128i* r, __m128i* g, __m128i* b) {
  __m128i r0, g0, b0, r1, g1, b1;
  Yuy2Rgb8(Ld(s), &r0, &g0, &b0);
  Yuy2Rgb8(Ld(s + 16), &r1, &g1, &b1);
  *r = _mm_packus_epi16(r0, r1);
  *g = _mm_packus_epi16(g0, g1);
  *b = _mm_packus_epi16(b0, b1);
}

void Yuy2ToRgb(const uint8_t* s, uint8_t* rgb, int pairs) {
  int i = 0;
  for (; i + 8 <= pairs; i += 8) {
    __m128i r, g, b;
    Yuy2Rgb16(s + 4 * i, &r, &g, &b);
    Join3(r, g, b, rgb + 6 * i);
  }
  if (i < pairs) PlainKernels().yuy2ToRgb(s + 4 * i, rgb + 6 * i, pairs - i);
}

void Yuy2ToRgbPlanes(const uint8_t* s, uint8_t* r, uint8_t* g, uint8_t* b, int pairs) {
  int i = 0;
  for (; i + 8 <= pairs; i += 8) {
    __m128i vr, vg, vb;
    Yuy2Rgb16(s + 4 * i, &vr, &vg, &vb);
    St(r + 2 * i, vr);
    St(g + 2 * i, vg);
    St(b + 2 * i, vb);
  }
  if (i < pairs)
    PlainKernels().yuy2ToRgbPlanes(s + 4 * i, r + 2 * i, g + 2 * i, b + 2 * i, pairs - i);
}

// Pair sums of 16 bytes times w, in 8 lanes: at most 510 w.
inline __m128i PairSum(__m128i v, int w) { return _mm_maddubs_epi16(v, _mm_set1_epi8(w)); }

void RgbToYcc420(const uint8_t* p0, const uint8_t* p1, uint8_t* y0, uint8_t* y1, uint8_t* cb,
                 uint8_t* cr, int pairs) {
  int i = 0;
  for (; i + 8 <= pairs; i += 8) {
    __m128i r0, g0, b0, r1, g1, b1;
    Split3(p0 + 6 * i, &r0, &g0, &b0);
    Split3(p1 + 6 * i, &r1, &g1, &b1);
    St(y0 + 2 * i, StudioY16(r0, g0, b0));
    St(y1 + 2 * i, StudioY16(r1, g1, b1));
    // Block sums S of 4 pixels as S << 5.
    const __m128i rs = _mm_add_epi16(PairSum(r0, 32), PairSum(r1, 32));
    const __m128i gs = _mm_add_epi16(PairSum(g0, 32), PairSum(g1, 32));
    const __m128i bs = _mm_add_epi16(PairSum(b0, 32), PairSum(b1, 32));
    __m128i u, v;
    StudioChroma8(rs, gs, bs, &u, &v);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cb + i), u);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(cr + i), v);
  }
  if (i < pairs)
    PlainKernels().rgbToYcc420(p0 + 6 * i, p1 + 6 * i, y0 + 2 * i, y1 + 2 * i, cb + i, cr + i,
                               pairs - i);
}

void RgbPlanesToYuy2(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* d, int pairs) {
  int i = 0;
  for (; i + 8 <= pairs; i += 8) {
    const __m128i vr = Ld(r + 2 * i), vg = Ld(g + 2 * i), vb = Ld(b + 2 * i);
    const __m128i y = StudioY16(vr, vg, vb);
    // Pair sums S as S << 6.
    __m128i u, v;
    StudioChroma8(PairSum(vr, 64), PairSum(vg, 64), PairSum(vb, 64), &u, &v);
    const __m128i uv = _mm_unpacklo_epi8(u, v);
    St(d + 4 * i, _mm_unpacklo_epi8(y, uv));
    St(d + 4 * i + 16, _mm_unpackhi_epi8(y, uv));
  }
  if (i < pairs)
    PlainKernels().rgbPlanesToYuy2(r + 2 * i, g + 2 * i, b + 2 * i, d + 4 * i, pairs - i);
}

inline void Jpeg16(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, __m128i* r, __m128i* g,
                   __m128i* b) {
  const __m128i vy = Ld(y), vu = Ld(cb), vv = Ld(cr);
  __m128i r0, g0, b0, r1, g1, b1;
  Jpeg8(Lo16(vy), Lo16(vu), Lo16(vv), &r0, &g0, &b0);
  Jpeg8(Hi16(vy), Hi16(vu), Hi16(vv), &r1, &g1, &b1);
  *r = _mm_packus_epi16(r0, r1);
  *g = _mm_packus_epi16(g0, g1);
  *b = _mm_packus_epi16(b0, b1);
}

void JpegYccToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int width) {
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m128i r, g, b;
    Jpeg16(y + x, cb + x, cr + x, &r, &g, &b);
    Join3(b, g, r, bgr + 3 * x);
  }
  if (x < width) PlainKernels().jpegYccToBgr(y + x, cb + x, cr + x, bgr + 3 * x, width - x);
}

void JpegYccToRgbPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* r,
                        uint8_t* g, uint8_t* b, int width) {
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m128i vr, vg, vb;
    Jpeg16(y + x, cb + x, cr + x, &vr, &vg, &vb);
    St(r + x, vr);
    St(g + x, vg);
    St(b + x, vb);
  }
  if (x < width)
    PlainKernels().jpegYccToRgbPlanes(y + x, cb + x, cr + x, r + x, g + x, b + x, width - x);
}

void JpegBgrToYcc(const uint8_t* bgr, uint8_t* y, uint8_t* cb, uint8_t* cr, int width) {
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m128i b, g, r;
    Split3(bgr + 3 * x, &b, &g, &r);
    __m128i out[3][2];
    for (int h = 0; h < 2; ++h) {
      const __m128i R = h ? Shl8Hi(r) : Shl8Lo(r), G = h ? Shl8Hi(g) : Shl8Lo(g),
                    B = h ? Shl8Hi(b) : Shl8Lo(b);
      JpegYcc8(R, G, B, &out[0][h], &out[1][h], &out[2][h]);
    }
    St(y + x, _mm_packus_epi16(out[0][0], out[0][1]));
    St(cb + x, _mm_packus_epi16(out[1][0], out[1][1]));
    St(cr + x, _mm_packus_epi16(out[2][0], out[2][1]));
  }
  if (x < width) PlainKernels().jpegBgrToYcc(bgr + 3 * x, y + x, cb + x, cr + x, width - x);
}

void CopyC3AC4(const uint8_t* s, uint8_t* d, int width) {
  // 4 pixels a step: 12 source bytes spread to 16, the fourth bytes kept.
  const __m128i spread =
      _mm_setr_epi8(0, 1, 2, -128, 3, 4, 5, -128, 6, 7, 8, -128, 9, 10, 11, -128);
  const __m128i keep = _mm_set1_epi32(static_cast<int>(0xFF000000u));
  int x = 0;
  // A 16-byte load reads 4 bytes past the 12 it uses: keep one more pixel.
  for (; x + 6 <= width; x += 4) {
    const __m128i v = _mm_shuffle_epi8(Ld(s + 3 * x), spread);
    St(d + 4 * x, _mm_or_si128(_mm_and_si128(Ld(d + 4 * x), keep), v));
  }
  if (x < width) PlainKernels().copyC3AC4(s + 3 * x, d + 4 * x, width - x);
}

void CopyAC4C3(const uint8_t* s, uint8_t* d, int width) {
  const __m128i pack =
      _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -128, -128, -128, -128);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m128i a = _mm_shuffle_epi8(Ld(s + 4 * x), pack);
    const __m128i b = _mm_shuffle_epi8(Ld(s + 4 * x + 16), pack);
    const __m128i c = _mm_shuffle_epi8(Ld(s + 4 * x + 32), pack);
    const __m128i e = _mm_shuffle_epi8(Ld(s + 4 * x + 48), pack);
    St(d + 3 * x, _mm_or_si128(a, _mm_slli_si128(b, 12)));
    St(d + 3 * x + 16, _mm_or_si128(_mm_srli_si128(b, 4), _mm_slli_si128(c, 8)));
    St(d + 3 * x + 32, _mm_or_si128(_mm_srli_si128(c, 8), _mm_slli_si128(e, 4)));
  }
  if (x < width) PlainKernels().copyAC4C3(s + 4 * x, d + 3 * x, width - x);
}

void CopyC3P3(const uint8_t* s, uint8_t* d0, uint8_t* d1, uint8_t* d2, int width) {
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m128i a, b, c;
    Split3(s + 3 * x, &a, &b, &c);
    St(d0 + x, a);
    St(d1 + x, b);
    St(d2 + x, c);
  }
  if (x < width) PlainKernels().copyC3P3(s + 3 * x, d0 + x, d1 + x, d2 + x, width - x);
}

void ReverseC1(const uint8_t* s, uint8_t* d, int width) {
  const __m128i rev = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
  int x = 0;
  for (; x + 16 <= width; x += 16) St(d + x, _mm_shuffle_epi8(Ld(s + width - x - 16), rev));
  if (x < width) PlainKernels().reverseC1(s, d + x, width - x);
}

// Five pixels a step: one load of the 15 bytes they take (plus the byte
// before, so the load never passes the line's end), one shuffle, one store
// whose 16th byte the next step rewrites.
void ReverseC3(const uint8_t* s, uint8_t* d, int width) {
  alignas(16) int8_t mask[16];
  for (int k = 0; k < 5; ++k)
    for (int c = 0; c < 3; ++c) mask[3 * k + c] = static_cast<int8_t>(1 + 3 * (4 - k) + c);
  mask[15] = 0;
  const __m128i m = Mk(mask);
  int x = 0;
  for (; x + 6 <= width; x += 5)
    St(d + 3 * x, _mm_shuffle_epi8(Ld(s + 3 * (width - x - 5) - 1), m));
  if (x < width) PlainKernels().reverseC3(s, d + 3 * x, width - x);
}

// Sixteen pixels (three vectors) a step. Output byte i takes input byte
// 3 (i / 3) + order[i % 3], which lies in the same vector or a neighbour, so
// each output vector is the or of at most three shuffles. All three loads of a
// step come before its stores, and steps never overlap, so the form works in
// place (an overlapping store would also stall the next load).
void SwapC3(const uint8_t* s, uint8_t* d, int width, const int order[3]) {
  alignas(16) int8_t mask[3][3][16];  // [output vector][input vector - output vector + 1]
  for (int k = 0; k < 3; ++k)
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 16; ++i) {
        const int out = 16 * k + i;
        const int in = 3 * (out / 3) + order[out % 3];
        mask[k][j][i] = static_cast<int8_t>(in / 16 == k + j - 1 ? in % 16 : -128);
      }
  __m128i m[3][3];
  for (int k = 0; k < 3; ++k)
    for (int j = 0; j < 3; ++j) m[k][j] = Mk(mask[k][j]);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const uint8_t* p = s + 3 * x;
    const __m128i in[3] = {Ld(p), Ld(p + 16), Ld(p + 32)};
    __m128i out[3];
    for (int k = 0; k < 3; ++k) {
      out[k] = _mm_shuffle_epi8(in[k], m[k][1]);
      if (k > 0) out[k] = _mm_or_si128(out[k], _mm_shuffle_epi8(in[k - 1], m[k][0]));
      if (k < 2) out[k] = _mm_or_si128(out[k], _mm_shuffle_epi8(in[k + 1], m[k][2]));
    }
    for (int k = 0; k < 3; ++k) St(d + 3 * x + 16 * k, out[k]);
  }
  if (x < width) PlainKernels().swapC3(s + 3 * x, d + 3 * x, width - x, order);
}

// Horizontal resize pass. Weight groups of `taps` (at most 8 for the one-channel
// form) are read as whole vectors and masked; the plan keeps zeroed room past
// its last group and the line keeps room past its last sample.
inline __m128i Round20(__m128i acc) {
  return _mm_srai_epi32(_mm_add_epi32(acc, _mm_set1_epi32(1 << 19)), 20);
}

void FilterHorizontalC1(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  if (taps > 8) {
    PlainKernels().filterHorizontalC1(src, start, coef, taps, dst, width);
    return;
  }
  alignas(16) int16_t m[8];
  for (int i = 0; i < 8; ++i) m[i] = static_cast<int16_t>(i < taps ? -1 : 0);
  const __m128i mask = _mm_load_si128(reinterpret_cast<const __m128i*>(m));
  int x = 0;
  for (; x + 4 <= width; x += 4) {
    __m128i p[4];
    for (int j = 0; j < 4; ++j)
      p[j] = _mm_madd_epi16(_mm_and_si128(Ld(coef + static_cast<ptrdiff_t>(x + j) * taps), mask),
                            Ld(src + start[x + j]));
    const __m128i h = _mm_hadd_epi32(_mm_hadd_epi32(p[0], p[1]), _mm_hadd_epi32(p[2], p[3]));
    const __m128i r = Round20(h);
    const __m128i b = _mm_packus_epi16(_mm_packs_epi32(r, r), _mm_setzero_si128());
    const int v = _mm_cvtsi128_si32(b);
    std::memcpy(dst + x, &v, 4);
  }
  if (x < width)
    PlainKernels().filterHorizontalC1(src, start + x, coef + static_cast<ptrdiff_t>(x) * taps, taps,
                                      dst + x, width - x);
}

inline __m128i PairW(const int16_t* c, int t, int taps) {
  return Pair(c[t], t + 1 < taps ? c[t + 1] : 0);
}

void FilterHorizontalC4(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  const __m128i z = _mm_setzero_si128();
  for (int x = 0; x < width; ++x, coef += taps) {
    const int16_t* s = src + static_cast<ptrdiff_t>(start[x]) * 4;
    __m128i acc = z;
    int t = 0;
    for (; t + 2 <= taps; t += 2) {
      const __m128i v = Ld(s + 4 * t);
      acc = _mm_add_epi32(
          acc, _mm_madd_epi16(_mm_unpacklo_epi16(v, _mm_srli_si128(v, 8)), PairW(coef, t, taps)));
    }
    if (t < taps) {
      const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + 4 * t));
      acc = _mm_add_epi32(acc, _mm_madd_epi16(_mm_unpacklo_epi16(v, z), PairW(coef, t, taps)));
    }
    const __m128i r = Round20(acc);
    const int v = _mm_cvtsi128_si32(_mm_packus_epi16(_mm_packs_epi32(r, r), z));
    std::memcpy(dst + 4 * x, &v, 4);
  }
}

void FilterHorizontalC3(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  const __m128i z = _mm_setzero_si128();
  const __m128i two = _mm_setr_epi8(0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, -128, -128, -128, -128);
  const __m128i one =
      _mm_setr_epi8(0, 1, -128, -128, 2, 3, -128, -128, 4, 5, -128, -128, -128, -128, -128, -128);
  for (int x = 0; x < width; ++x, coef += taps) {
    const int16_t* s = src + static_cast<ptrdiff_t>(start[x]) * 3;
    __m128i acc = z;
    int t = 0;
    for (; t + 2 <= taps; t += 2)
      acc = _mm_add_epi32(
          acc, _mm_madd_epi16(_mm_shuffle_epi8(Ld(s + 3 * t), two), PairW(coef, t, taps)));
    if (t < taps)
      acc = _mm_add_epi32(
          acc,
          _mm_madd_epi16(
              _mm_shuffle_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + 3 * t)), one),
              PairW(coef, t, taps)));
    const __m128i r = Round20(acc);
    const int v = _mm_cvtsi128_si32(_mm_packus_epi16(_mm_packs_epi32(r, r), z));
    std::memcpy(dst + 3 * x, &v, 3);
  }
}

}  // namespace

void InstallSsse3Kernels(Kernels* k) {
  k->yuv420ToBgr = Yuv420ToBgr;
  k->yuy2ToRgb = Yuy2ToRgb;
  k->yuy2ToRgbPlanes = Yuy2ToRgbPlanes;
  k->rgbToYcc420 = RgbToYcc420;
  k->rgbPlanesToYuy2 = RgbPlanesToYuy2;
  k->jpegYccToBgr = JpegYccToBgr;
  k->jpegYccToRgbPlanes = JpegYccToRgbPlanes;
  k->jpegBgrToYcc = JpegBgrToYcc;
  k->copyC3AC4 = CopyC3AC4;
  k->copyAC4C3 = CopyAC4C3;
  k->copyC3P3 = CopyC3P3;
  k->reverseC1 = ReverseC1;
  k->reverseC3 = ReverseC3;
  k->swapC3 = SwapC3;
  k->filterHorizontalC1 = FilterHorizontalC1;
  k->filterHorizontalC3 = FilterHorizontalC3;
  k->filterHorizontalC4 = FilterHorizontalC4;
}

}  // namespace ipp
}  // namespace orv
