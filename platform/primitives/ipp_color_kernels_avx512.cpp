// AVX-512 forms of the colour conversions that read or write 3-byte pixels.
// They do the 16-bit arithmetic of the AVX2 forms on 64 pixels a step: each
// 128-bit quarter of a register holds what one SSSE3 register holds, so the
// byte shuffles, unpacks and packs stay within their quarters, and whole
// 64-byte stores come from a few quarter permutes. Each gives the bytes of
// its plain twin.
#include <immintrin.h>

#include <cstdint>

#include "platform/primitives/ipp_color_math.h"
#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

namespace cm = color;

// Byte shuffles within each quarter, the same pattern in all four.
struct Masks {
  alignas(64) int8_t split[3][3][64];   // [channel][input register]
  alignas(64) int8_t packed[3][3][64];  // [output register][source], see Join3Packed
  // Within each pair of 16-bit lanes: the first lane twice, the second twice,
  // the two swapped.
  alignas(64) int8_t first[64], second[64], swap[64];
};

Masks MakeMasks() {
  Masks m;
  for (int c = 0; c < 3; ++c)
    for (int k = 0; k < 3; ++k)
      for (int i = 0; i < 64; ++i) {
        const int src = 3 * (i % 16) + c - 16 * k;
        m.split[c][k][i] = static_cast<int8_t>(src >= 0 && src < 16 ? src : -128);
      }
  for (int k = 0; k < 3; ++k)
    for (int j = 0; j < 64; ++j) {
      const int byte = 16 * k + j % 16, pixel = byte / 3, c = byte % 3;
      for (int src = 0; src < 3; ++src) m.packed[k][src][j] = -128;
      if (c == 2)
        m.packed[k][2][j] = static_cast<int8_t>(pixel);
      else
        m.packed[k][pixel / 8][j] = static_cast<int8_t>(8 * c + pixel % 8);
    }
  for (int i = 0; i < 64; ++i) {
    const int pair = i & ~3, byte = i & 1, lane = (i >> 1) & 1;
    m.first[i] = static_cast<int8_t>((pair + byte) % 16);
    m.second[i] = static_cast<int8_t>((pair + 2 + byte) % 16);
    m.swap[i] = static_cast<int8_t>((pair + 2 * (1 - lane) + byte) % 16);
  }
  return m;
}

const Masks& M() {
  static const Masks m = MakeMasks();
  return m;
}

inline __m512i Mk(const int8_t* m) { return _mm512_load_si512(m); }
inline __m128i Ld128(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void St(void* p, __m512i v) { _mm512_storeu_si512(p, v); }

// Four 16-byte pieces at p + step x k as the quarters of one register.
inline __m512i Quarters(const uint8_t* p, int step) {
  __m512i v = _mm512_castsi128_si512(Ld128(p));
  v = _mm512_inserti32x4(v, Ld128(p + step), 1);
  v = _mm512_inserti32x4(v, Ld128(p + 2 * step), 2);
  return _mm512_inserti32x4(v, Ld128(p + 3 * step), 3);
}

inline __m512i Or3(__m512i a, __m512i b, __m512i c) {
  return _mm512_ternarylogic_epi64(a, b, c, 0xFE);
}

// 64 pixels of 3 bytes at p into three planes: quarter k holds pixels
// 16k..16k+15.
inline void Split3(const uint8_t* p, __m512i* c0, __m512i* c1, __m512i* c2) {
  const Masks& m = M();
  const __m512i a = Quarters(p, 48), b = Quarters(p + 16, 48), c = Quarters(p + 32, 48);
  __m512i* out[3] = {c0, c1, c2};
  for (int ch = 0; ch < 3; ++ch)
    *out[ch] =
        Or3(_mm512_shuffle_epi8(a, Mk(m.split[ch][0])), _mm512_shuffle_epi8(b, Mk(m.split[ch][1])),
            _mm512_shuffle_epi8(c, Mk(m.split[ch][2])));
}

// Three channels of 64 pixels as 16-bit lanes (a: pixels 0..7 of each
// quarter, b: pixels 8..15), saturated to bytes and stored as 192 bytes at p.
// Quarter q of output register k is 16 bytes of pixel group q; three pairs of
// permutes put the twelve pieces in memory order.
inline void Join3Packed(__m512i c0a, __m512i c1a, __m512i c0b, __m512i c1b, __m512i c2a,
                        __m512i c2b, uint8_t* p) {
  const Masks& m = M();
  const __m512i x = _mm512_packus_epi16(c0a, c1a), y = _mm512_packus_epi16(c0b, c1b);
  const __m512i z = _mm512_packus_epi16(c2a, c2b);
  const __m512i o0 = _mm512_or_si512(_mm512_shuffle_epi8(x, Mk(m.packed[0][0])),
                                     _mm512_shuffle_epi8(z, Mk(m.packed[0][2])));
  const __m512i o1 =
      Or3(_mm512_shuffle_epi8(x, Mk(m.packed[1][0])), _mm512_shuffle_epi8(y, Mk(m.packed[1][1])),
          _mm512_shuffle_epi8(z, Mk(m.packed[1][2])));
  const __m512i o2 = _mm512_or_si512(_mm512_shuffle_epi8(y, Mk(m.packed[2][1])),
                                     _mm512_shuffle_epi8(z, Mk(m.packed[2][2])));
  // Memory order of the pieces: o0.0 o1.0 o2.0 o0.1 | o1.1 o2.1 o0.2 o1.2 | o2.2 o0.3 o1.3 o2.3.
  const __m512i t0 = _mm512_permutex2var_epi64(o0, _mm512_setr_epi64(0, 1, 8, 9, 0, 0, 2, 3), o1);
  const __m512i t1 = _mm512_permutex2var_epi64(o1, _mm512_setr_epi64(2, 3, 10, 11, 0, 0, 4, 5), o2);
  const __m512i t2 = _mm512_permutex2var_epi64(o2, _mm512_setr_epi64(4, 5, 14, 15, 0, 0, 6, 7), o0);
  St(p, _mm512_mask_permutexvar_epi64(t0, 0x30, _mm512_setr_epi64(0, 0, 0, 0, 0, 1, 0, 0), o2));
  St(p + 64,
     _mm512_mask_permutexvar_epi64(t1, 0x30, _mm512_setr_epi64(0, 0, 0, 0, 4, 5, 0, 0), o0));
  St(p + 128,
     _mm512_mask_permutexvar_epi64(t2, 0x30, _mm512_setr_epi64(0, 0, 0, 0, 6, 7, 0, 0), o1));
}

inline __m512i Pair(int lo, int hi) {
  return _mm512_set1_epi32(
      static_cast<int>((static_cast<uint32_t>(hi) << 16) | (static_cast<uint32_t>(lo) & 0xFFFF)));
}
inline __m512i Shl8Lo(__m512i v) { return _mm512_unpacklo_epi8(_mm512_setzero_si512(), v); }
inline __m512i Shl8Hi(__m512i v) { return _mm512_unpackhi_epi8(_mm512_setzero_si512(), v); }
inline __m512i Mul(__m512i x8, int k) {
  return _mm512_mulhi_epu16(x8, _mm512_set1_epi16(static_cast<int16_t>(k)));
}

// Studio YCbCr to RGB of 16-bit lanes: luma as Y << 8, per-pixel chroma
// terms; see the SSSE3 forms.
inline void StudioRgb(__m512i y8, __m512i tr, __m512i tg, __m512i tb, __m512i* r, __m512i* g,
                      __m512i* b) {
  const __m512i yy = _mm512_add_epi16(_mm512_mulhi_epu16(y8, _mm512_set1_epi16(cm::kStudioY)),
                                      _mm512_set1_epi16(cm::kStudioBias));
  *r = _mm512_srai_epi16(_mm512_adds_epi16(yy, tr), 6);
  *g = _mm512_srai_epi16(_mm512_subs_epi16(yy, tg), 6);
  *b = _mm512_srai_epi16(_mm512_adds_epi16(yy, tb), 6);
}

// 4 pixel pairs of packed 4:2:2 in each quarter (16-bit lanes Y | C << 8)
// to R, G, B 16-bit lanes.
inline void Yuy2Rgb(__m512i s, __m512i* r, __m512i* g, __m512i* b) {
  const __m512i c =
      _mm512_xor_si512(_mm512_and_si512(s, _mm512_set1_epi16(static_cast<int16_t>(0xFF00))),
                       _mm512_set1_epi16(static_cast<int16_t>(0x8000)));
  const __m512i rb = _mm512_mulhrs_epi16(c, Pair(cm::kStudioBU, cm::kStudioRV));
  const __m512i gg = _mm512_mulhrs_epi16(c, Pair(cm::kStudioGU, cm::kStudioGV));
  const Masks& m = M();
  StudioRgb(_mm512_slli_epi16(s, 8), _mm512_shuffle_epi8(rb, Mk(m.second)),
            _mm512_add_epi16(gg, _mm512_shuffle_epi8(gg, Mk(m.swap))),
            _mm512_shuffle_epi8(rb, Mk(m.first)), r, g, b);
}

// 16 pixel pairs of packed 4:2:2 in each quarter: R, G, B 16-bit lanes, 0 for
// pixels 0..7 of each quarter, 1 for pixels 8..15 (quarter k: pixels 16k..16k+15).
inline void Yuy2Rgb64(const uint8_t* p, __m512i* r0, __m512i* g0, __m512i* b0, __m512i* r1,
                      __m512i* g1, __m512i* b1) {
  Yuy2Rgb(Quarters(p, 32), r0, g0, b0);
  Yuy2Rgb(Quarters(p + 16, 32), r1, g1, b1);
}

void Yuy2ToRgbPlanes(const uint8_t* s, uint8_t* r, uint8_t* g, uint8_t* b, int pairs) {
  int i = 0;
  for (; i + 32 <= pairs; i += 32) {
    __m512i r0, g0, b0, r1, g1, b1;
    Yuy2Rgb64(s + 4 * i, &r0, &g0, &b0, &r1, &g1, &b1);
    St(r + 2 * i, _mm512_packus_epi16(r0, r1));
    St(g + 2 * i, _mm512_packus_epi16(g0, g1));
    St(b + 2 * i, _mm512_packus_epi16(b0, b1));
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kAvx2)
        .yuy2ToRgbPlanes(s + 4 * i, r + 2 * i, g + 2 * i, b + 2 * i, pairs - i);
}

// Studio 4:2:0 to B G R: 32 chroma samples widened in order, so quarter k
// holds samples 8k..8k+7, which the in-quarter unpacks double for pixels
// 16k..16k+15.
void Yuv420ToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int pairs) {
  const __m256i flip = _mm256_set1_epi8(-128);
  int i = 0;
  for (; i + 32 <= pairs; i += 32) {
    const __m512i yy = _mm512_loadu_si512(y + 2 * i);
    const __m512i u =
        _mm512_slli_epi16(_mm512_cvtepi8_epi16(_mm256_xor_si256(
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cb + i)), flip)),
                          8);
    const __m512i v =
        _mm512_slli_epi16(_mm512_cvtepi8_epi16(_mm256_xor_si256(
                              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cr + i)), flip)),
                          8);
    const __m512i tr = _mm512_mulhrs_epi16(v, _mm512_set1_epi16(cm::kStudioRV));
    const __m512i tg = _mm512_add_epi16(_mm512_mulhrs_epi16(u, _mm512_set1_epi16(cm::kStudioGU)),
                                        _mm512_mulhrs_epi16(v, _mm512_set1_epi16(cm::kStudioGV)));
    const __m512i tb = _mm512_mulhrs_epi16(u, _mm512_set1_epi16(cm::kStudioBU));
    __m512i r0, g0, b0, r1, g1, b1;
    StudioRgb(Shl8Lo(yy), _mm512_unpacklo_epi16(tr, tr), _mm512_unpacklo_epi16(tg, tg),
              _mm512_unpacklo_epi16(tb, tb), &r0, &g0, &b0);
    StudioRgb(Shl8Hi(yy), _mm512_unpackhi_epi16(tr, tr), _mm512_unpackhi_epi16(tg, tg),
              _mm512_unpackhi_epi16(tb, tb), &r1, &g1, &b1);
    Join3Packed(b0, g0, b1, g1, r0, r1, bgr + 6 * i);
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kAvx2).yuv420ToBgr(y + 2 * i, cb + i, cr + i, bgr + 6 * i, pairs - i);
}

void Yuy2ToRgb(const uint8_t* s, uint8_t* rgb, int pairs) {
  int i = 0;
  for (; i + 32 <= pairs; i += 32) {
    const uint8_t* p = s + 4 * i;
    __m512i r0, g0, b0, r1, g1, b1;
    Yuy2Rgb64(p, &r0, &g0, &b0, &r1, &g1, &b1);
    Join3Packed(r0, g0, r1, g1, b0, b1, rgb + 6 * i);
  }
  if (i < pairs) KernelsFor(SimdLevel::kAvx2).yuy2ToRgb(s + 4 * i, rgb + 6 * i, pairs - i);
}

// JFIF Y, Cb, Cr of 16-bit lanes given as X << 8; see the SSSE3 form.
inline void JpegYcc(__m512i r8, __m512i g8, __m512i b8, __m512i* y, __m512i* cb, __m512i* cr) {
  const __m512i l = _mm512_add_epi16(_mm512_add_epi16(Mul(r8, cm::kJpegYR), Mul(g8, cm::kJpegYG)),
                                     Mul(b8, cm::kJpegYB));
  const __m512i bias = _mm512_set1_epi16(cm::kChromaBias);
  *y = _mm512_srli_epi16(_mm512_add_epi16(l, _mm512_set1_epi16(64)), 7);
  const __m512i db = _mm512_sub_epi16(_mm512_srli_epi16(b8, 1), l);
  const __m512i dr = _mm512_sub_epi16(_mm512_srli_epi16(r8, 1), l);
  *cb = _mm512_srai_epi16(
      _mm512_adds_epi16(_mm512_mulhrs_epi16(db, _mm512_set1_epi16(cm::kJpegU)), bias), 7);
  *cr = _mm512_srai_epi16(
      _mm512_adds_epi16(_mm512_mulhrs_epi16(dr, _mm512_set1_epi16(cm::kJpegV)), bias), 7);
}

// Studio luma from planes: (R, G) x (66, 62) + (B, G) x (25, 67); see the
// SSSE3 form.
inline __m512i StudioYHalf(__m512i rg, __m512i bg) {
  const __m512i c1 = _mm512_set1_epi16(static_cast<int16_t>((cm::kStudioYG1 << 8) | cm::kStudioYR));
  const __m512i c2 = _mm512_set1_epi16(
      static_cast<int16_t>(((cm::kStudioYG - cm::kStudioYG1) << 8) | cm::kStudioYB));
  const __m512i s = _mm512_add_epi16(_mm512_maddubs_epi16(rg, c1), _mm512_maddubs_epi16(bg, c2));
  return _mm512_srli_epi16(_mm512_add_epi16(s, _mm512_set1_epi16(cm::kStudioYBias)), 8);
}
inline __m512i StudioY64(__m512i r, __m512i g, __m512i b) {
  return _mm512_packus_epi16(StudioYHalf(_mm512_unpacklo_epi8(r, g), _mm512_unpacklo_epi8(b, g)),
                             StudioYHalf(_mm512_unpackhi_epi8(r, g), _mm512_unpackhi_epi8(b, g)));
}

// kChromaBias + plus x kp - minus1 x k1 - minus2 x k2, shifted by 7 as unsigned.
inline __m512i Chroma(__m512i plus, int kp, __m512i minus1, int k1, __m512i minus2, int k2) {
  const __m512i s = _mm512_add_epi16(Mul(plus, kp), _mm512_set1_epi16(cm::kChromaBias));
  return _mm512_srli_epi16(_mm512_sub_epi16(_mm512_sub_epi16(s, Mul(minus1, k1)), Mul(minus2, k2)),
                           7);
}

// Studio Cb and Cr of 32 samples (in order, 16-bit lanes) from channel sums
// scaled to S << (7 - m).
inline void StudioChroma(__m512i rs, __m512i gs, __m512i bs, __m512i* u, __m512i* v) {
  *u = Chroma(bs, 2 * cm::kStudioUB, rs, 2 * cm::kStudioUR, gs, 2 * cm::kStudioUG);
  *v = Chroma(rs, 2 * cm::kStudioVR, gs, 2 * cm::kStudioVG, bs, 2 * cm::kStudioVB);
}

// Pair sums of 64 bytes times w, in 32 lanes.
inline __m512i PairSum(__m512i v, int w) {
  return _mm512_maddubs_epi16(v, _mm512_set1_epi8(static_cast<char>(w)));
}

void RgbToYcc420(const uint8_t* p0, const uint8_t* p1, uint8_t* y0, uint8_t* y1, uint8_t* cb,
                 uint8_t* cr, int pairs) {
  int i = 0;
  for (; i + 32 <= pairs; i += 32) {
    __m512i r0, g0, b0, r1, g1, b1;
    Split3(p0 + 6 * i, &r0, &g0, &b0);
    Split3(p1 + 6 * i, &r1, &g1, &b1);
    St(y0 + 2 * i, StudioY64(r0, g0, b0));
    St(y1 + 2 * i, StudioY64(r1, g1, b1));
    // Block sums S of 4 pixels as S << 5.
    const __m512i rs = _mm512_add_epi16(PairSum(r0, 32), PairSum(r1, 32));
    const __m512i gs = _mm512_add_epi16(PairSum(g0, 32), PairSum(g1, 32));
    const __m512i bs = _mm512_add_epi16(PairSum(b0, 32), PairSum(b1, 32));
    __m512i u, v;
    StudioChroma(rs, gs, bs, &u, &v);
    // One pack puts 8 Cb then 8 Cr bytes in each quarter; one permute sorts
    // the Cb halves below the Cr halves.
    const __m512i uv = _mm512_maskz_permutexvar_epi64(
        0xFF, _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), _mm512_packus_epi16(u, v));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(cb + i),
                        _mm512_maskz_extracti64x4_epi64(0xF, uv, 0));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(cr + i),
                        _mm512_maskz_extracti64x4_epi64(0xF, uv, 1));
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kAvx2)
        .rgbToYcc420(p0 + 6 * i, p1 + 6 * i, y0 + 2 * i, y1 + 2 * i, cb + i, cr + i, pairs - i);
}

// Each quarter makes 8 pairs: the in-quarter unpacks give output bytes
// 64k..64k+15 (low) and 64k+16..64k+31 (high) of quarter k.
void RgbPlanesToYuy2(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* d, int pairs) {
  int i = 0;
  for (; i + 32 <= pairs; i += 32) {
    const __m512i vr = _mm512_loadu_si512(r + 2 * i), vg = _mm512_loadu_si512(g + 2 * i);
    const __m512i vb = _mm512_loadu_si512(b + 2 * i);
    const __m512i y = StudioY64(vr, vg, vb);
    // Pair sums S as S << 6.
    __m512i u, v;
    StudioChroma(PairSum(vr, 64), PairSum(vg, 64), PairSum(vb, 64), &u, &v);
    const __m512i uv = _mm512_unpacklo_epi8(_mm512_packus_epi16(u, u), _mm512_packus_epi16(v, v));
    const __m512i lo = _mm512_unpacklo_epi8(y, uv), hi = _mm512_unpackhi_epi8(y, uv);
    St(d + 4 * i, _mm512_permutex2var_epi64(lo, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), hi));
    St(d + 4 * i + 64,
       _mm512_permutex2var_epi64(lo, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), hi));
  }
  if (i < pairs)
    KernelsFor(SimdLevel::kAvx2)
        .rgbPlanesToYuy2(r + 2 * i, g + 2 * i, b + 2 * i, d + 4 * i, pairs - i);
}

void JpegBgrToYcc(const uint8_t* bgr, uint8_t* y, uint8_t* cb, uint8_t* cr, int width) {
  int x = 0;
  for (; x + 64 <= width; x += 64) {
    __m512i b, g, r;
    Split3(bgr + 3 * x, &b, &g, &r);
    __m512i out[3][2];
    JpegYcc(Shl8Lo(r), Shl8Lo(g), Shl8Lo(b), &out[0][0], &out[1][0], &out[2][0]);
    JpegYcc(Shl8Hi(r), Shl8Hi(g), Shl8Hi(b), &out[0][1], &out[1][1], &out[2][1]);
    St(y + x, _mm512_packus_epi16(out[0][0], out[0][1]));
    St(cb + x, _mm512_packus_epi16(out[1][0], out[1][1]));
    St(cr + x, _mm512_packus_epi16(out[2][0], out[2][1]));
  }
  if (x < width)
    KernelsFor(SimdLevel::kAvx2).jpegBgrToYcc(bgr + 3 * x, y + x, cb + x, cr + x, width - x);
}

}  // namespace

void InstallAvx512ColorKernels(Kernels* k) {
  k->yuv420ToBgr = Yuv420ToBgr;
  k->yuy2ToRgb = Yuy2ToRgb;
  k->yuy2ToRgbPlanes = Yuy2ToRgbPlanes;
  k->rgbToYcc420 = RgbToYcc420;
  k->rgbPlanesToYuy2 = RgbPlanesToYuy2;
  k->jpegBgrToYcc = JpegBgrToYcc;
}

}  // namespace ipp
}  // namespace orv
