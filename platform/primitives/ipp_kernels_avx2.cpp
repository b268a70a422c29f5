// AVX2 forms of the colour conversions, the two-to-one sampling, the alpha
// mixes, the vertical resize pass and the 4-byte gather. The colour forms
// do the work of the SSSE3 forms on 32 pixels at a time: every 128-bit half
// of a register holds what one SSSE3 register holds, so the byte shuffles and
// the unpack/pack pairs stay within their halves. Each gives the bytes of its
// plain twin.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "platform/primitives/ipp_color_math.h"
#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

namespace cm = color;

struct Masks3 {
  alignas(32) int8_t split[3][3][32];       // [channel][input vector], both halves alike
  alignas(32) int8_t join[3][3][32];        // [output vector][channel]
  alignas(32) int8_t joinPacked[3][3][32];  // [output vector][source], see Join3Packed
};

Masks3 MakeMasks3() {
  Masks3 m;
  for (int c = 0; c < 3; ++c)
    for (int k = 0; k < 3; ++k)
      for (int i = 0; i < 32; ++i) {
        const int src = 3 * (i % 16) + c - 16 * k;
        m.split[c][k][i] = static_cast<int8_t>(src >= 0 && src < 16 ? src : -128);
      }
  for (int k = 0; k < 3; ++k)
    for (int c = 0; c < 3; ++c)
      for (int j = 0; j < 32; ++j) {
        const int byte = 16 * k + j % 16;
        m.join[k][c][j] = static_cast<int8_t>(byte % 3 == c ? byte / 3 : -128);
      }
  // Sources: 0 holds channels 0 and 1 of pixels 0..7 (bytes 0..7 and 8..15),
  // 1 the same of pixels 8..15, 2 channel 2 of pixels 0..15.
  for (int k = 0; k < 3; ++k)
    for (int j = 0; j < 32; ++j) {
      const int byte = 16 * k + j % 16, pixel = byte / 3, c = byte % 3;
      for (int src = 0; src < 3; ++src) m.joinPacked[k][src][j] = -128;
      if (c == 2)
        m.joinPacked[k][2][j] = static_cast<int8_t>(pixel);
      else
        m.joinPacked[k][pixel / 8][j] = static_cast<int8_t>(8 * c + pixel % 8);
    }
  return m;
}

const Masks3& M3() {
  static const Masks3 m = MakeMasks3();
  return m;
}

inline __m256i Ld(const void* p) { return _mm256_loadu_si256(static_cast<const __m256i*>(p)); }
inline void St(void* p, __m256i v) { _mm256_storeu_si256(static_cast<__m256i*>(p), v); }
inline __m256i Mk(const int8_t* m) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(m));
}
inline __m128i Ld128(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }

// 32 pixels of 3 bytes at p: the low half of each result holds pixels 0..15,
// the high half pixels 16..31.
inline void Split3(const uint8_t* p, __m256i* c0, __m256i* c1, __m256i* c2) {
  const Masks3& m = M3();
  const __m256i a = _mm256_setr_m128i(Ld128(p), Ld128(p + 48));
  const __m256i b = _mm256_setr_m128i(Ld128(p + 16), Ld128(p + 64));
  const __m256i c = _mm256_setr_m128i(Ld128(p + 32), Ld128(p + 80));
  __m256i* out[3] = {c0, c1, c2};
  for (int ch = 0; ch < 3; ++ch)
    *out[ch] = _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(a, Mk(m.split[ch][0])),
                                               _mm256_shuffle_epi8(b, Mk(m.split[ch][1]))),
                               _mm256_shuffle_epi8(c, Mk(m.split[ch][2])));
}

inline void Join3(__m256i c0, __m256i c1, __m256i c2, uint8_t* p) {
  const Masks3& m = M3();
  __m256i o[3];
  for (int k = 0; k < 3; ++k)
    o[k] = _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(c0, Mk(m.join[k][0])),
                                           _mm256_shuffle_epi8(c1, Mk(m.join[k][1]))),
                           _mm256_shuffle_epi8(c2, Mk(m.join[k][2])));
  St(p, _mm256_permute2x128_si256(o[0], o[1], 0x20));
  St(p + 32, _mm256_permute2x128_si256(o[2], o[0], 0x30));
  St(p + 64, _mm256_permute2x128_si256(o[1], o[2], 0x31));
}

// Three channels of 32 pixels given as 16-bit lanes (a: pixels 0..7 of each
// half, b: pixels 8..15), saturated to bytes and stored as 96 bytes at p.
// Packing channels 0 and 1 together leaves seven byte shuffles (rather than
// nine) for the 48 bytes of each half; three lane permutes then make whole
// 32-byte stores, which measure faster than six 16-byte ones.
inline void Join3Packed(__m256i c0a, __m256i c1a, __m256i c0b, __m256i c1b, __m256i c2a,
                        __m256i c2b, uint8_t* p) {
  const Masks3& m = M3();
  const __m256i x = _mm256_packus_epi16(c0a, c1a), y = _mm256_packus_epi16(c0b, c1b);
  const __m256i z = _mm256_packus_epi16(c2a, c2b);
  const __m256i o0 = _mm256_or_si256(_mm256_shuffle_epi8(x, Mk(m.joinPacked[0][0])),
                                     _mm256_shuffle_epi8(z, Mk(m.joinPacked[0][2])));
  const __m256i o1 =
      _mm256_or_si256(_mm256_or_si256(_mm256_shuffle_epi8(x, Mk(m.joinPacked[1][0])),
                                      _mm256_shuffle_epi8(y, Mk(m.joinPacked[1][1]))),
                      _mm256_shuffle_epi8(z, Mk(m.joinPacked[1][2])));
  const __m256i o2 = _mm256_or_si256(_mm256_shuffle_epi8(y, Mk(m.joinPacked[2][1])),
                                     _mm256_shuffle_epi8(z, Mk(m.joinPacked[2][2])));
  St(p, _mm256_permute2x128_si256(o0, o1, 0x20));
  St(p + 32, _mm256_permute2x128_si256(o2, o0, 0x30));
  St(p + 64, _mm256_permute2x128_si256(o1, o2, 0x31));
}

inline __m256i Pair(int lo, int hi) {
  return _mm256_set1_epi32(
      static_cast<int>((static_cast<uint32_t>(hi) << 16) | (static_cast<uint32_t>(lo) & 0xFFFF)));
}

// Two 16-bit lanes interleaved for a multiply-add, low and high halves.
struct Interleaved {
  __m256i lo, hi;
};
inline Interleaved Interleave(__m256i a, __m256i b) {
  return {_mm256_unpacklo_epi16(a, b), _mm256_unpackhi_epi16(a, b)};
}

// (ca x a + cb x b + add) >> shift from interleaved (a, b), summed in 32 bits.
inline __m256i Sum2(const Interleaved& ab, __m256i pab, __m256i add, int shift) {
  return _mm256_packs_epi32(
      _mm256_srai_epi32(_mm256_add_epi32(_mm256_madd_epi16(ab.lo, pab), add), shift),
      _mm256_srai_epi32(_mm256_add_epi32(_mm256_madd_epi16(ab.hi, pab), add), shift));
}

// The JFIF matrix. A single product rounded by itself, (c x d + 2^12) >> 13,
// equals the rounding multiply-high of 4d and c, (4cd + 2^14) >> 15, exactly
// (4d fits 16 bits for any chroma difference); green's two products are
// summed in 32 bits first, as the plain form does.
inline void Jpeg16(__m256i y, __m256i u, __m256i v, __m256i* r, __m256i* g, __m256i* b) {
  static_assert(cm::kShift == 13, "the multiply-high form assumes 13 fractional bits");
  u = _mm256_sub_epi16(u, _mm256_set1_epi16(128));
  v = _mm256_sub_epi16(v, _mm256_set1_epi16(128));
  const __m256i u4 = _mm256_slli_epi16(u, 2), v4 = _mm256_slli_epi16(v, 2);
  *r = _mm256_add_epi16(y, _mm256_mulhrs_epi16(v4, _mm256_set1_epi16(cm::kJpegRV)));
  *g = _mm256_add_epi16(y, Sum2(Interleave(u, v), Pair(-cm::kJpegGU, -cm::kJpegGV),
                                _mm256_set1_epi32(cm::kRound), cm::kShift));
  *b = _mm256_add_epi16(y, _mm256_mulhrs_epi16(u4, _mm256_set1_epi16(cm::kJpegBU)));
}

inline __m256i Lo16(__m256i v) { return _mm256_unpacklo_epi8(v, _mm256_setzero_si256()); }
inline __m256i Hi16(__m256i v) { return _mm256_unpackhi_epi8(v, _mm256_setzero_si256()); }

inline __m256i Shl8Lo(__m256i v) { return _mm256_unpacklo_epi8(_mm256_setzero_si256(), v); }
inline __m256i Shl8Hi(__m256i v) { return _mm256_unpackhi_epi8(_mm256_setzero_si256(), v); }

// The studio inverse in 16-bit lanes, as in the SSSE3 forms: luma as Y << 8
// through the unsigned multiply-high, chroma as (C - 128) << 8 through the
// rounding multiply-high, saturating adds, arithmetic shift by 6.
inline __m256i StudioLuma(__m256i y8) {
  return _mm256_add_epi16(_mm256_mulhi_epu16(y8, _mm256_set1_epi16(cm::kStudioY)),
                          _mm256_set1_epi16(cm::kStudioBias));
}

struct StudioTerms {
  __m256i r, g, b;
};
inline StudioTerms StudioChromaTerms(__m256i u8, __m256i v8) {
  return {_mm256_mulhrs_epi16(v8, _mm256_set1_epi16(cm::kStudioRV)),
          _mm256_add_epi16(_mm256_mulhrs_epi16(u8, _mm256_set1_epi16(cm::kStudioGU)),
                           _mm256_mulhrs_epi16(v8, _mm256_set1_epi16(cm::kStudioGV))),
          _mm256_mulhrs_epi16(u8, _mm256_set1_epi16(cm::kStudioBU))};
}

inline void StudioRgb16(__m256i yy, const StudioTerms& t, __m256i* r, __m256i* g, __m256i* b) {
  *r = _mm256_srai_epi16(_mm256_adds_epi16(yy, t.r), 6);
  *g = _mm256_srai_epi16(_mm256_subs_epi16(yy, t.g), 6);
  *b = _mm256_srai_epi16(_mm256_adds_epi16(yy, t.b), 6);
}

inline StudioTerms DupLo(const StudioTerms& t) {
  return {_mm256_unpacklo_epi16(t.r, t.r), _mm256_unpacklo_epi16(t.g, t.g),
          _mm256_unpacklo_epi16(t.b, t.b)};
}
inline StudioTerms DupHi(const StudioTerms& t) {
  return {_mm256_unpackhi_epi16(t.r, t.r), _mm256_unpackhi_epi16(t.g, t.g),
          _mm256_unpackhi_epi16(t.b, t.b)};
}

// The forward matrices in 16-bit lanes, as in the SSSE3 forms: X << 8 (or a
// pair or block sum S << (7 - m) with doubled coefficients) through the
// unsigned multiply-high, chroma rows shifted as unsigned.
inline __m256i Mul(__m256i x8, int k) {
  return _mm256_mulhi_epu16(x8, _mm256_set1_epi16(static_cast<int16_t>(k)));
}
inline __m256i Chroma(__m256i plus, int kp, __m256i minus1, int k1, __m256i minus2, int k2) {
  const __m256i s = _mm256_add_epi16(Mul(plus, kp), _mm256_set1_epi16(cm::kChromaBias));
  return _mm256_srli_epi16(_mm256_sub_epi16(_mm256_sub_epi16(s, Mul(minus1, k1)), Mul(minus2, k2)),
                           7);
}

// JFIF Y, Cb, Cr of 16 pixels given as X << 8, as in the SSSE3 form.
inline void JpegYcc16(__m256i r8, __m256i g8, __m256i b8, __m256i* y, __m256i* cb, __m256i* cr) {
  const __m256i l = _mm256_add_epi16(_mm256_add_epi16(Mul(r8, cm::kJpegYR), Mul(g8, cm::kJpegYG)),
                                     Mul(b8, cm::kJpegYB));
  const __m256i bias = _mm256_set1_epi16(cm::kChromaBias);
  *y = _mm256_srli_epi16(_mm256_add_epi16(l, _mm256_set1_epi16(64)), 7);
  const __m256i db = _mm256_sub_epi16(_mm256_srli_epi16(b8, 1), l);
  const __m256i dr = _mm256_sub_epi16(_mm256_srli_epi16(r8, 1), l);
  *cb = _mm256_srai_epi16(
      _mm256_adds_epi16(_mm256_mulhrs_epi16(db, _mm256_set1_epi16(cm::kJpegU)), bias), 7);
  *cr = _mm256_srai_epi16(
      _mm256_adds_epi16(_mm256_mulhrs_epi16(dr, _mm256_set1_epi16(cm::kJpegV)), bias), 7);
}

// Studio Y from planes: (R, G) x (66, 62) + (B, G) x (25, 67), two byte
// multiply-adds a lane, whose sum (at most 56100) is shifted as unsigned.
inline __m256i StudioYHalf(__m256i rg, __m256i bg) {
  const __m256i c1 = _mm256_set1_epi16(static_cast<int16_t>((cm::kStudioYG1 << 8) | cm::kStudioYR));
  const __m256i c2 = _mm256_set1_epi16(
      static_cast<int16_t>(((cm::kStudioYG - cm::kStudioYG1) << 8) | cm::kStudioYB));
  const __m256i s = _mm256_add_epi16(_mm256_maddubs_epi16(rg, c1), _mm256_maddubs_epi16(bg, c2));
  return _mm256_srli_epi16(_mm256_add_epi16(s, _mm256_set1_epi16(cm::kStudioYBias)), 8);
}
inline __m256i StudioY32(__m256i r, __m256i g, __m256i b) {
  return _mm256_packus_epi16(StudioYHalf(_mm256_unpacklo_epi8(r, g), _mm256_unpacklo_epi8(b, g)),
                             StudioYHalf(_mm256_unpackhi_epi8(r, g), _mm256_unpackhi_epi8(b, g)));
}

// 16 chroma samples (8 per half) from channel sums scaled to S << (7 - m);
// the bytes land in the low 8 bytes of each half.
inline void StudioChroma(__m256i rs, __m256i gs, __m256i bs, __m256i* cb, __m256i* cr) {
  const __m256i u = Chroma(bs, 2 * cm::kStudioUB, rs, 2 * cm::kStudioUR, gs, 2 * cm::kStudioUG);
  const __m256i v = Chroma(rs, 2 * cm::kStudioVR, gs, 2 * cm::kStudioVG, bs, 2 * cm::kStudioVB);
  *cb = _mm256_packus_epi16(u, u);
  *cr = _mm256_packus_epi16(v, v);
}

// Pair sums of 32 bytes times w, in 16 lanes.
inline __m256i PairSum(__m256i v, int w) {
  return _mm256_maddubs_epi16(v, _mm256_set1_epi8(static_cast<char>(w)));
}

// The low 8 bytes of each half, stored as 16 consecutive bytes.
inline void StoreHalves8(uint8_t* p, __m256i v) {
  const __m256i q = _mm256_permute4x64_epi64(v, 0x08);  // qwords 0 and 2 to the bottom
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(q));
}

void Yuv420ToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int pairs) {
  const __m128i flip = _mm_set1_epi8(-128);
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const __m256i yy = Ld(y + 2 * i);
    // 16 chroma samples as (C - 128) << 8, in order across the halves.
    const __m256i u =
        _mm256_slli_epi16(_mm256_cvtepi8_epi16(_mm_xor_si128(Ld128(cb + i), flip)), 8);
    const __m256i v =
        _mm256_slli_epi16(_mm256_cvtepi8_epi16(_mm_xor_si128(Ld128(cr + i), flip)), 8);
    const StudioTerms t = StudioChromaTerms(u, v);
    __m256i r0, g0, b0, r1, g1, b1;
    StudioRgb16(StudioLuma(Shl8Lo(yy)), DupLo(t), &r0, &g0, &b0);
    StudioRgb16(StudioLuma(Shl8Hi(yy)), DupHi(t), &r1, &g1, &b1);
    Join3Packed(b0, g0, b1, g1, r0, r1, bgr + 6 * i);
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kSsse3).yuv420ToBgr(y + 2 * i, cb + i, cr + i, bgr + 6 * i, pairs - i);
}

// 8 pixel pairs of packed 4:2:2 (4 per half) to R, G, B int16 lanes; see the
// SSSE3 form: one multiply for blue and red, one for green's two products.
inline void Yuy2Rgb16(__m256i s, __m256i* r, __m256i* g, __m256i* b) {
  const __m256i c =
      _mm256_xor_si256(_mm256_and_si256(s, _mm256_set1_epi16(static_cast<int16_t>(0xFF00))),
                       _mm256_set1_epi16(static_cast<int16_t>(0x8000)));
  const __m256i rb = _mm256_mulhrs_epi16(c, Pair(cm::kStudioBU, cm::kStudioRV));
  const __m256i gg = _mm256_mulhrs_epi16(c, Pair(cm::kStudioGU, cm::kStudioGV));
  const __m256i even = _mm256_setr_epi8(0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13, 0, 1, 0,
                                        1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13);
  const __m256i odd = _mm256_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15, 2, 3,
                                       2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15);
  const __m256i swap = _mm256_setr_epi8(2, 3, 0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13, 2, 3,
                                        0, 1, 6, 7, 4, 5, 10, 11, 8, 9, 14, 15, 12, 13);
  const StudioTerms t{_mm256_shuffle_epi8(rb, odd),
                      _mm256_add_epi16(gg, _mm256_shuffle_epi8(gg, swap)),
                      _mm256_shuffle_epi8(rb, even)};
  StudioRgb16(StudioLuma(_mm256_slli_epi16(s, 8)), t, r, g, b);
}

// 16 pixel pairs of packed 4:2:2: R, G, B of 32 pixels as 16-bit lanes, 0 for
// pixels 0..7 of each half, 1 for pixels 8..15 (halves: pixels 0..15, 16..31).
inline void Yuy2Rgb32x16(const uint8_t* s, __m256i* r0, __m256i* g0, __m256i* b0, __m256i* r1,
                         __m256i* g1, __m256i* b1) {
  Yuy2Rgb16(_mm256_setr_m128i(Ld128(s), Ld128(s + 32)), r0, g0, b0);
  Yuy2Rgb16(_mm256_setr_m128i(Ld128(s + 16), Ld128(s + 48)), r1, g1, b1);
}

// The same as bytes.
inline void Yuy2Rgb32(const uint8_t* s, __m256i* r, __m256i* g, __m256i* b) {
  __m256i r0, g0, b0, r1, g1, b1;
  Yuy2Rgb32x16(s, &r0, &g0, &b0, &r1, &g1, &b1);
  *r = _mm256_packus_epi16(r0, r1);
  *g = _mm256_packus_epi16(g0, g1);
  *b = _mm256_packus_epi16(b0, b1);
}

// Planes written from 32-pixel registers whose halves are pixels 0..15, 16..31.
inline void StPlane(uint8_t* p, __m256i v) { St(p, v); }

void Yuy2ToRgb(const uint8_t* s, uint8_t* rgb, int pairs) {
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    __m256i r0, g0, b0, r1, g1, b1;
    Yuy2Rgb32x16(s + 4 * i, &r0, &g0, &b0, &r1, &g1, &b1);
    Join3Packed(r0, g0, r1, g1, b0, b1, rgb + 6 * i);
  }
  if (i < pairs) KernelsFor(SimdLevel::kSsse3).yuy2ToRgb(s + 4 * i, rgb + 6 * i, pairs - i);
}

void Yuy2ToRgbPlanes(const uint8_t* s, uint8_t* r, uint8_t* g, uint8_t* b, int pairs) {
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    __m256i vr, vg, vb;
    Yuy2Rgb32(s + 4 * i, &vr, &vg, &vb);
    StPlane(r + 2 * i, vr);
    StPlane(g + 2 * i, vg);
    StPlane(b + 2 * i, vb);
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kSsse3)
        .yuy2ToRgbPlanes(s + 4 * i, r + 2 * i, g + 2 * i, b + 2 * i, pairs - i);
}

void RgbToYcc420(const uint8_t* p0, const uint8_t* p1, uint8_t* y0, uint8_t* y1, uint8_t* cb,
                 uint8_t* cr, int pairs) {
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    __m256i r0, g0, b0, r1, g1, b1;
    Split3(p0 + 6 * i, &r0, &g0, &b0);
    Split3(p1 + 6 * i, &r1, &g1, &b1);
    St(y0 + 2 * i, StudioY32(r0, g0, b0));
    St(y1 + 2 * i, StudioY32(r1, g1, b1));
    // Block sums S of 4 pixels as S << 5.
    const __m256i rs = _mm256_add_epi16(PairSum(r0, 32), PairSum(r1, 32));
    const __m256i gs = _mm256_add_epi16(PairSum(g0, 32), PairSum(g1, 32));
    const __m256i bs = _mm256_add_epi16(PairSum(b0, 32), PairSum(b1, 32));
    __m256i u, v;
    StudioChroma(rs, gs, bs, &u, &v);
    StoreHalves8(cb + i, u);
    StoreHalves8(cr + i, v);
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kSsse3)
        .rgbToYcc420(p0 + 6 * i, p1 + 6 * i, y0 + 2 * i, y1 + 2 * i, cb + i, cr + i, pairs - i);
}

// Each half makes 8 pairs: after the in-half unpacks the low halves hold
// output bytes 0..15 and 16..31, the high halves 32..47 and 48..63.
void RgbPlanesToYuy2(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* d, int pairs) {
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const __m256i vr = Ld(r + 2 * i), vg = Ld(g + 2 * i), vb = Ld(b + 2 * i);
    const __m256i y = StudioY32(vr, vg, vb);
    // Pair sums S as S << 6.
    __m256i u, v;
    StudioChroma(PairSum(vr, 64), PairSum(vg, 64), PairSum(vb, 64), &u, &v);
    const __m256i uv = _mm256_unpacklo_epi8(u, v);
    const __m256i lo = _mm256_unpacklo_epi8(y, uv), hi = _mm256_unpackhi_epi8(y, uv);
    St(d + 4 * i, _mm256_permute2x128_si256(lo, hi, 0x20));
    St(d + 4 * i + 32, _mm256_permute2x128_si256(lo, hi, 0x31));
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kSsse3)
        .rgbPlanesToYuy2(r + 2 * i, g + 2 * i, b + 2 * i, d + 4 * i, pairs - i);
}

inline void JpegRgb32(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, __m256i* r,
                      __m256i* g, __m256i* b) {
  const __m256i vy = Ld(y), vu = Ld(cb), vv = Ld(cr);
  __m256i r0, g0, b0, r1, g1, b1;
  Jpeg16(Lo16(vy), Lo16(vu), Lo16(vv), &r0, &g0, &b0);
  Jpeg16(Hi16(vy), Hi16(vu), Hi16(vv), &r1, &g1, &b1);
  *r = _mm256_packus_epi16(r0, r1);
  *g = _mm256_packus_epi16(g0, g1);
  *b = _mm256_packus_epi16(b0, b1);
}

void JpegYccToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int width) {
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i r, g, b;
    JpegRgb32(y + x, cb + x, cr + x, &r, &g, &b);
    Join3(b, g, r, bgr + 3 * x);
  }
  if (x < width)
    KernelsFor(SimdLevel::kSsse3).jpegYccToBgr(y + x, cb + x, cr + x, bgr + 3 * x, width - x);
}

void JpegYccToRgbPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* r,
                        uint8_t* g, uint8_t* b, int width) {
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i vr, vg, vb;
    JpegRgb32(y + x, cb + x, cr + x, &vr, &vg, &vb);
    St(r + x, vr);
    St(g + x, vg);
    St(b + x, vb);
  }
  if (x < width)
    KernelsFor(SimdLevel::kSsse3)
        .jpegYccToRgbPlanes(y + x, cb + x, cr + x, r + x, g + x, b + x, width - x);
}

void JpegBgrToYcc(const uint8_t* bgr, uint8_t* y, uint8_t* cb, uint8_t* cr, int width) {
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i b, g, r;
    Split3(bgr + 3 * x, &b, &g, &r);
    __m256i out[3][2];
    for (int h = 0; h < 2; ++h) {
      const __m256i R = h ? Shl8Hi(r) : Shl8Lo(r), G = h ? Shl8Hi(g) : Shl8Lo(g),
                    B = h ? Shl8Hi(b) : Shl8Lo(b);
      JpegYcc16(R, G, B, &out[0][h], &out[1][h], &out[2][h]);
    }
    St(y + x, _mm256_packus_epi16(out[0][0], out[0][1]));
    St(cb + x, _mm256_packus_epi16(out[1][0], out[1][1]));
    St(cr + x, _mm256_packus_epi16(out[2][0], out[2][1]));
  }
  if (x < width)
    KernelsFor(SimdLevel::kSsse3).jpegBgrToYcc(bgr + 3 * x, y + x, cb + x, cr + x, width - x);
}

// (x + 127) / 255 for 0 <= x <= 65025 in unsigned 16-bit lanes.
// ((x + 127) x 0x8081) >> 23 is that quotient for every such x (0x8081 / 2^23 is
// 1/255 less 1/2^31 or so, too little to cross an integer below 65152 / 255).
inline __m256i Div255u16(__m256i x) {
  const __m256i t = _mm256_add_epi16(x, _mm256_set1_epi16(127));
  return _mm256_srli_epi16(_mm256_mulhi_epu16(t, _mm256_set1_epi16(static_cast<int16_t>(0x8081))),
                           7);
}

// wa x a + wb x b in unsigned 16-bit lanes: each product fits (at most 65025),
// the sum saturates at 65535, and clamping to 65025 keeps Div255u16 exact;
// every sum from 65025 up gives 255 either way, as the plain min(255, ...).
inline __m256i Mix16(__m256i a, __m256i b, __m256i wa, __m256i wb) {
  const __m256i x = _mm256_adds_epu16(_mm256_mullo_epi16(a, wa), _mm256_mullo_epi16(b, wb));
  return Div255u16(_mm256_min_epu16(x, _mm256_set1_epi16(static_cast<int16_t>(65025))));
}

void AlphaMix(const uint8_t* a, const uint8_t* b, uint8_t* d, int count, int wa, int wb) {
  const __m256i va16 = _mm256_set1_epi16(static_cast<int16_t>(wa));
  const __m256i vb16 = _mm256_set1_epi16(static_cast<int16_t>(wb));
  int i = 0;
  for (; i + 32 <= count; i += 32) {
    const __m256i va = Ld(a + i), vb = Ld(b + i);
    St(d + i, _mm256_packus_epi16(Mix16(Lo16(va), Lo16(vb), va16, vb16),
                                  Mix16(Hi16(va), Hi16(vb), va16, vb16)));
  }
  if (i < count) KernelsFor(SimdLevel::kSse2).alphaMix(a + i, b + i, d + i, count - i, wa, wb);
}

// "a over b" for four pixels held as 16-bit lanes (two per half).
inline __m256i Over4(__m256i a, __m256i b) {
  const __m256i c255 = _mm256_set1_epi16(255);
  const __m256i alpha = _mm256_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15, 6,
                                         7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15);
  const __m256i wa = _mm256_shuffle_epi8(a, alpha);
  const __m256i ab = _mm256_shuffle_epi8(b, alpha);
  const __m256i wb = Div255u16(_mm256_mullo_epi16(_mm256_sub_epi16(c255, wa), ab));
  const __m256i col =
      Div255u16(_mm256_add_epi16(_mm256_mullo_epi16(wa, a), _mm256_mullo_epi16(wb, b)));
  const __m256i alphaLane = _mm256_setr_epi16(0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, -1);
  return _mm256_blendv_epi8(col, _mm256_add_epi16(wa, wb), alphaLane);
}

void AlphaOverAC4(const uint8_t* a, const uint8_t* b, uint8_t* d, int width) {
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    const __m256i va = Ld(a + 4 * x), vb = Ld(b + 4 * x);
    St(d + 4 * x, _mm256_packus_epi16(Over4(Lo16(va), Lo16(vb)), Over4(Hi16(va), Hi16(vb))));
  }
  if (x < width)
    KernelsFor(SimdLevel::kSse2).alphaOverAC4(a + 4 * x, b + 4 * x, d + 4 * x, width - x);
}

// Two-to-one sampling. The pair sums come from an unsigned-by-signed byte
// multiply-add with weights 1 (at most 510, exact in 16 bits); the packs work
// within halves, so one qword permute puts the 32 results in order.
void SampleDownH2V2(const uint8_t* r0, const uint8_t* r1, uint8_t* d, int width) {
  const __m256i ones = _mm256_set1_epi8(1), two = _mm256_set1_epi16(2);
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i q[2];
    for (int h = 0; h < 2; ++h) {
      const __m256i a = _mm256_maddubs_epi16(Ld(r0 + 2 * x + 32 * h), ones);
      const __m256i b = _mm256_maddubs_epi16(Ld(r1 + 2 * x + 32 * h), ones);
      q[h] = _mm256_srli_epi16(_mm256_add_epi16(_mm256_add_epi16(a, b), two), 2);
    }
    St(d + x, _mm256_permute4x64_epi64(_mm256_packus_epi16(q[0], q[1]), 0xD8));
  }
  if (x < width)
    KernelsFor(SimdLevel::kSse2).sampleDownH2V2(r0 + 2 * x, r1 + 2 * x, d + x, width - x);
}

void SampleDownH2V1(const uint8_t* r, uint8_t* d, int width) {
  const __m256i ones = _mm256_set1_epi8(1), one = _mm256_set1_epi16(1);
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    const __m256i a = _mm256_maddubs_epi16(Ld(r + 2 * x), ones);
    const __m256i b = _mm256_maddubs_epi16(Ld(r + 2 * x + 32), ones);
    const __m256i qa = _mm256_srli_epi16(_mm256_add_epi16(a, one), 1);
    const __m256i qb = _mm256_srli_epi16(_mm256_add_epi16(b, one), 1);
    St(d + x, _mm256_permute4x64_epi64(_mm256_packus_epi16(qa, qb), 0xD8));
  }
  if (x < width) KernelsFor(SimdLevel::kSse2).sampleDownH2V1(r + 2 * x, d + x, width - x);
}

// ----- channel moves -----------------------------------------------------------

// 3-byte pixels to 4-byte ones whose fourth byte is kept: 8 pixels a vector,
// each half spreading the 12 bytes of its 4 pixels.
void CopyC3AC4(const uint8_t* s, uint8_t* d, int width) {
  const __m256i spread =
      _mm256_setr_epi8(0, 1, 2, -128, 3, 4, 5, -128, 6, 7, 8, -128, 9, 10, 11, -128, 0, 1, 2, -128,
                       3, 4, 5, -128, 6, 7, 8, -128, 9, 10, 11, -128);
  const __m256i keep = _mm256_set1_epi32(static_cast<int>(0xFF000000u));
  int x = 0;
  // The second half's 16-byte load reads 4 bytes past its 12: keep two more pixels.
  for (; x + 10 <= width; x += 8) {
    const __m256i v =
        _mm256_inserti128_si256(_mm256_castsi128_si256(Ld128(s + 3 * x)), Ld128(s + 3 * x + 12), 1);
    St(d + 4 * x, _mm256_blendv_epi8(_mm256_shuffle_epi8(v, spread), Ld(d + 4 * x), keep));
  }
  if (x < width) KernelsFor(SimdLevel::kSse2).copyC3AC4(s + 3 * x, d + 4 * x, width - x);
}

// 4-byte pixels to 3-byte ones: each vector of 8 pixels packs to 24 bytes at
// its start; the four stores of a step overlap by 8 bytes, each later one
// writing the right bytes over the previous one's surplus.
void CopyAC4C3(const uint8_t* s, uint8_t* d, int width) {
  const __m256i pack =
      _mm256_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -128, -128, -128, -128, 0, 1, 2, 4,
                       5, 6, 8, 9, 10, 12, 13, 14, -128, -128, -128, -128);
  const __m256i join = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7);
  int x = 0;
  // The last store of a step writes 8 bytes past the step's 96: keep 3 more pixels.
  for (; x + 35 <= width; x += 32)
    for (int k = 0; k < 4; ++k)
      St(d + 3 * x + 24 * k,
         _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(Ld(s + 4 * x + 32 * k), pack), join));
  if (x < width) KernelsFor(SimdLevel::kSse2).copyAC4C3(s + 4 * x, d + 3 * x, width - x);
}

// 4-byte pixels to four planes: each vector's halves group their 4 pixels by
// channel, two interleaves collect a channel of 32 pixels, and one dword
// permute puts them in order.
void CopyC4P4(const uint8_t* s, uint8_t* d0, uint8_t* d1, uint8_t* d2, uint8_t* d3, int width) {
  const __m256i group = _mm256_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15, 0, 4,
                                         8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i v[4];
    for (int k = 0; k < 4; ++k) v[k] = _mm256_shuffle_epi8(Ld(s + 4 * x + 32 * k), group);
    const __m256i lo01 = _mm256_unpacklo_epi32(v[0], v[1]),
                  hi01 = _mm256_unpackhi_epi32(v[0], v[1]);
    const __m256i lo23 = _mm256_unpacklo_epi32(v[2], v[3]),
                  hi23 = _mm256_unpackhi_epi32(v[2], v[3]);
    St(d0 + x, _mm256_permutevar8x32_epi32(_mm256_unpacklo_epi64(lo01, lo23), order));
    St(d1 + x, _mm256_permutevar8x32_epi32(_mm256_unpackhi_epi64(lo01, lo23), order));
    St(d2 + x, _mm256_permutevar8x32_epi32(_mm256_unpacklo_epi64(hi01, hi23), order));
    St(d3 + x, _mm256_permutevar8x32_epi32(_mm256_unpackhi_epi64(hi01, hi23), order));
  }
  if (x < width)
    KernelsFor(SimdLevel::kSse2).copyC4P4(s + 4 * x, d0 + x, d1 + x, d2 + x, d3 + x, width - x);
}

// The byte at s of every 4-byte pixel (s points at the chosen channel): the
// dwords are masked to it and packed twice; the packs work within halves, so
// one dword permute puts the 32 bytes in order.
void CopyC4C1(const uint8_t* s, uint8_t* d, int width) {
  const __m256i low = _mm256_set1_epi32(0xFF);
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  int x = 0;
  // The last load ends 3 bytes past the 32nd pixel's byte: keep one more pixel.
  for (; x + 33 <= width; x += 32) {
    const uint8_t* p = s + 4 * x;
    const __m256i ab =
        _mm256_packus_epi32(_mm256_and_si256(Ld(p), low), _mm256_and_si256(Ld(p + 32), low));
    const __m256i cd =
        _mm256_packus_epi32(_mm256_and_si256(Ld(p + 64), low), _mm256_and_si256(Ld(p + 96), low));
    St(d + x, _mm256_permutevar8x32_epi32(_mm256_packus_epi16(ab, cd), order));
  }
  if (x < width) KernelsFor(SimdLevel::kSse2).copyC4C1(s + 4 * x, d + x, width - x);
}

// ----- packed 4:2:2 split and join -----------------------------------------------

// 16 pairs a step: each half gathers its 4 pairs as Y(8) Cb(4) Cr(4), the
// qword interleaves of the two vectors collect Y and chroma, and one permute
// each puts them in order.
void Yuy2Split(const uint8_t* s, uint8_t* y, uint8_t* cb, uint8_t* cr, int pairs) {
  const __m256i group = _mm256_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 5, 9, 13, 3, 7, 11, 15, 0, 2,
                                         4, 6, 8, 10, 12, 14, 1, 5, 9, 13, 3, 7, 11, 15);
  // Halves [Cb 0-3, Cr 0-3, Cb 8-11, Cr 8-11 | Cb 4-7, Cr 4-7, Cb 12-15, Cr 12-15]
  // to [Cb 0-15 | Cr 0-15].
  const __m256i chroma = _mm256_setr_epi32(0, 4, 2, 6, 1, 5, 3, 7);
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const __m256i a = _mm256_shuffle_epi8(Ld(s + 4 * i), group);
    const __m256i b = _mm256_shuffle_epi8(Ld(s + 4 * i + 32), group);
    St(y + 2 * i, _mm256_permute4x64_epi64(_mm256_unpacklo_epi64(a, b), 0xD8));
    const __m256i c = _mm256_permutevar8x32_epi32(_mm256_unpackhi_epi64(a, b), chroma);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cb + i), _mm256_castsi256_si128(c));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(cr + i), _mm256_extracti128_si256(c, 1));
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kSse2).yuy2Split(s + 4 * i, y + 2 * i, cb + i, cr + i, pairs - i);
}

// 16 pairs a step: the chroma words (Cb, Cr) and the Y bytes are spread by
// qwords, so that the byte interleave writes the pairs in memory order.
void Yuy2Join(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* d, int pairs) {
  int i = 0;
  for (; i + 16 <= pairs; i += 16) {
    const __m256i u = _mm256_cvtepu8_epi16(Ld128(cb + i)), v = _mm256_cvtepu8_epi16(Ld128(cr + i));
    const __m256i uv = _mm256_permute4x64_epi64(_mm256_or_si256(u, _mm256_slli_epi16(v, 8)), 0xD8);
    const __m256i yy = _mm256_permute4x64_epi64(Ld(y + 2 * i), 0xD8);
    St(d + 4 * i, _mm256_unpacklo_epi8(yy, uv));
    St(d + 4 * i + 32, _mm256_unpackhi_epi8(yy, uv));
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kSse2).yuy2Join(y + 2 * i, cb + i, cr + i, d + 4 * i, pairs - i);
}

// ----- fills -------------------------------------------------------------------

void SetC4(uint8_t* d, int width, const uint8_t v[4]) {
  const __m256i p = _mm256_set1_epi32(
      static_cast<int>(v[0] | (v[1] << 8) | (v[2] << 16) | (static_cast<uint32_t>(v[3]) << 24)));
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    St(d + 4 * x, p);
    St(d + 4 * x + 32, p);
    St(d + 4 * x + 64, p);
    St(d + 4 * x + 96, p);
  }
  for (; x + 8 <= width; x += 8) St(d + 4 * x, p);
  if (x < width) KernelsFor(SimdLevel::kSse2).setC4(d + 4 * x, width - x, v);
}

// The chosen channel of every pixel (d points at it): the first byte of each
// dword from d is replaced, the other three are written back as read.
void SetC4C(uint8_t* d, int width, uint8_t v) {
  const __m256i val = _mm256_set1_epi32(v);
  const __m256i first = _mm256_set1_epi32(0xFF);
  int x = 0;
  // The vector reaches 3 bytes past the 8th pixel's byte: keep one more pixel.
  for (; x + 9 <= width; x += 8) St(d + 4 * x, _mm256_blendv_epi8(Ld(d + 4 * x), val, first));
  if (x < width) KernelsFor(SimdLevel::kSse2).setC4C(d + 4 * x, width - x, v);
}

// Nearest neighbour of 4-byte pixels: one gather of eight pixels, each read whole.
void GatherC4(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  int x = 0;
  for (; x + 8 <= width; x += 8)
    St(dst + 4 * x,
       _mm256_i32gather_epi32(reinterpret_cast<const int*>(src),
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(index + x)), 4));
  if (x < width) PlainKernels().gatherC4(src, index + x, dst + 4 * x, width - x);
}

}  // namespace

void InstallAvx2Kernels(Kernels* k) {
  k->sampleDownH2V2 = SampleDownH2V2;
  k->sampleDownH2V1 = SampleDownH2V1;
  k->yuv420ToBgr = Yuv420ToBgr;
  k->yuy2ToRgb = Yuy2ToRgb;
  k->yuy2ToRgbPlanes = Yuy2ToRgbPlanes;
  k->rgbToYcc420 = RgbToYcc420;
  k->rgbPlanesToYuy2 = RgbPlanesToYuy2;
  k->jpegYccToBgr = JpegYccToBgr;
  k->jpegYccToRgbPlanes = JpegYccToRgbPlanes;
  k->jpegBgrToYcc = JpegBgrToYcc;
  k->alphaMix = AlphaMix;
  k->alphaOverAC4 = AlphaOverAC4;
  k->gatherC4 = GatherC4;
  k->setC4 = SetC4;
  k->setC4C = SetC4C;
  k->copyC3AC4 = CopyC3AC4;
  k->copyAC4C3 = CopyAC4C3;
  k->copyC4P4 = CopyC4P4;
  k->copyC4C1 = CopyC4C1;
  k->yuy2Split = Yuy2Split;
  k->yuy2Join = Yuy2Join;
}

}  // namespace ipp
}  // namespace orv
