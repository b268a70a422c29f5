// SSE2 forms of the row kernels. Each gives the bytes of its plain twin. The
// 4:2:2 split and join and the 4-plane split are left to the plain forms, which
// the compiler vectorises as well as a hand-written form does.
#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

inline __m128i Ld(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void St(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }
inline __m128i Lo16(__m128i v) { return _mm_unpacklo_epi8(v, _mm_setzero_si128()); }
inline __m128i Hi16(__m128i v) { return _mm_unpackhi_epi8(v, _mm_setzero_si128()); }

// (x + 127) / 255 for 0 <= x <= 65025 in unsigned 16-bit lanes.
inline __m128i Div255u16(__m128i x) {
  const __m128i t = _mm_add_epi16(x, _mm_set1_epi16(128));
  return _mm_srli_epi16(_mm_add_epi16(t, _mm_srli_epi16(t, 8)), 8);
}

// (x + 127) / 255 in 32-bit lanes: exact up to 65662, and at least 255 above
// 65025, so after saturation to 255 it equals min(255, (x + 127) / 255).
inline __m128i Div255u32(__m128i x) {
  const __m128i t = _mm_add_epi32(x, _mm_set1_epi32(128));
  return _mm_srli_epi32(_mm_add_epi32(t, _mm_srli_epi32(t, 8)), 8);
}

void SampleDownH2V2(const uint8_t* r0, const uint8_t* r1, uint8_t* d, int width) {
  const __m128i one = _mm_set1_epi16(1), two = _mm_set1_epi32(2);
  int x = 0;
  for (; x + 8 <= width; x += 8) {
    const __m128i a = Ld(r0 + 2 * x), b = Ld(r1 + 2 * x);
    const __m128i lo = _mm_madd_epi16(_mm_add_epi16(Lo16(a), Lo16(b)), one);
    const __m128i hi = _mm_madd_epi16(_mm_add_epi16(Hi16(a), Hi16(b)), one);
    const __m128i s = _mm_packs_epi32(_mm_srli_epi32(_mm_add_epi32(lo, two), 2),
                                      _mm_srli_epi32(_mm_add_epi32(hi, two), 2));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d + x), _mm_packus_epi16(s, s));
  }
  if (x < width) PlainKernels().sampleDownH2V2(r0 + 2 * x, r1 + 2 * x, d + x, width - x);
}

void SampleDownH2V1(const uint8_t* r, uint8_t* d, int width) {
  const __m128i lo8 = _mm_set1_epi16(0x00FF);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m128i a = Ld(r + 2 * x), b = Ld(r + 2 * x + 16);
    const __m128i even = _mm_packus_epi16(_mm_and_si128(a, lo8), _mm_and_si128(b, lo8));
    const __m128i odd = _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8));
    St(d + x, _mm_avg_epu8(even, odd));  // (a + b + 1) >> 1
  }
  if (x < width) PlainKernels().sampleDownH2V1(r + 2 * x, d + x, width - x);
}

void ReverseC4(const uint8_t* s, uint8_t* d, int width) {
  int x = 0;
  for (; x + 4 <= width; x += 4)
    St(d + 4 * x, _mm_shuffle_epi32(Ld(s + 4 * (width - x - 4)), 0x1B));
  if (x < width) PlainKernels().reverseC4(s, d + 4 * x, width - x);
}

// Byte `shift / 8` of each 32-bit lane of four vectors, packed into 16 bytes.
inline __m128i Channel(__m128i a, __m128i b, __m128i c, __m128i e, int shift) {
  const __m128i m = _mm_set1_epi32(0xFF);
  const __m128i sh = _mm_cvtsi32_si128(shift);
  const __m128i ab = _mm_packs_epi32(_mm_and_si128(_mm_srl_epi32(a, sh), m),
                                     _mm_and_si128(_mm_srl_epi32(b, sh), m));
  const __m128i ce = _mm_packs_epi32(_mm_and_si128(_mm_srl_epi32(c, sh), m),
                                     _mm_and_si128(_mm_srl_epi32(e, sh), m));
  return _mm_packus_epi16(ab, ce);
}

void CopyC4C1(const uint8_t* s, uint8_t* d, int width) {
  int x = 0;
  // The last load ends 3 bytes past the 16th pixel's byte: keep one more pixel.
  for (; x + 17 <= width; x += 16) {
    const uint8_t* p = s + 4 * x;
    St(d + x, Channel(Ld(p), Ld(p + 16), Ld(p + 32), Ld(p + 48), 0));
  }
  if (x < width) PlainKernels().copyC4C1(s + 4 * x, d + x, width - x);
}

void CopyP4C4(const uint8_t* s0, const uint8_t* s1, const uint8_t* s2, const uint8_t* s3,
              uint8_t* d, int width) {
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m128i b = Ld(s0 + x), g = Ld(s1 + x), r = Ld(s2 + x), a = Ld(s3 + x);
    const __m128i bgl = _mm_unpacklo_epi8(b, g), bgh = _mm_unpackhi_epi8(b, g);
    const __m128i ral = _mm_unpacklo_epi8(r, a), rah = _mm_unpackhi_epi8(r, a);
    uint8_t* o = d + 4 * x;
    St(o, _mm_unpacklo_epi16(bgl, ral));
    St(o + 16, _mm_unpackhi_epi16(bgl, ral));
    St(o + 32, _mm_unpacklo_epi16(bgh, rah));
    St(o + 48, _mm_unpackhi_epi16(bgh, rah));
  }
  if (x < width) PlainKernels().copyP4C4(s0 + x, s1 + x, s2 + x, s3 + x, d + 4 * x, width - x);
}

void SetC4(uint8_t* d, int width, const uint8_t v[4]) {
  const __m128i p = _mm_set1_epi32(
      static_cast<int>(v[0] | (v[1] << 8) | (v[2] << 16) | (static_cast<uint32_t>(v[3]) << 24)));
  int x = 0;
  for (; x + 4 <= width; x += 4) St(d + 4 * x, p);
  if (x < width) PlainKernels().setC4(d + 4 * x, width - x, v);
}

void SetC4C(uint8_t* d, int width, uint8_t v) {
  const __m128i keep = _mm_set1_epi32(static_cast<int>(0xFFFFFF00u));
  const __m128i val = _mm_set1_epi32(v);
  int x = 0;
  // The vector reaches 3 bytes past the 4th pixel's byte: keep one more pixel.
  for (; x + 5 <= width; x += 4)
    St(d + 4 * x, _mm_or_si128(_mm_and_si128(Ld(d + 4 * x), keep), val));
  if (x < width) PlainKernels().setC4C(d + 4 * x, width - x, v);
}

void AlphaMix(const uint8_t* a, const uint8_t* b, uint8_t* d, int count, int wa, int wb) {
  const __m128i w = _mm_set1_epi32((wb << 16) | wa);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i va = Ld(a + i), vb = Ld(b + i);
    __m128i r[2];
    for (int h = 0; h < 2; ++h) {
      const __m128i x = h ? Hi16(va) : Lo16(va), y = h ? Hi16(vb) : Lo16(vb);
      const __m128i lo = Div255u32(_mm_madd_epi16(_mm_unpacklo_epi16(x, y), w));
      const __m128i hi = Div255u32(_mm_madd_epi16(_mm_unpackhi_epi16(x, y), w));
      r[h] = _mm_packs_epi32(lo, hi);
    }
    St(d + i, _mm_packus_epi16(r[0], r[1]));
  }
  if (i < count) PlainKernels().alphaMix(a + i, b + i, d + i, count - i, wa, wb);
}

// "a over b" for two pixels held as 16-bit lanes.
inline __m128i Over2(__m128i a, __m128i b) {
  const __m128i c255 = _mm_set1_epi16(255);
  const __m128i wa = _mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0xFF), 0xFF);
  const __m128i ab = _mm_shufflehi_epi16(_mm_shufflelo_epi16(b, 0xFF), 0xFF);
  const __m128i wb = Div255u16(_mm_mullo_epi16(_mm_sub_epi16(c255, wa), ab));
  const __m128i col = Div255u16(_mm_add_epi16(_mm_mullo_epi16(wa, a), _mm_mullo_epi16(wb, b)));
  const __m128i alphaLane = _mm_setr_epi16(0, 0, 0, -1, 0, 0, 0, -1);
  return _mm_or_si128(_mm_andnot_si128(alphaLane, col),
                      _mm_and_si128(alphaLane, _mm_add_epi16(wa, wb)));
}

void AlphaOverAC4(const uint8_t* a, const uint8_t* b, uint8_t* d, int width) {
  int x = 0;
  for (; x + 4 <= width; x += 4) {
    const __m128i va = Ld(a + 4 * x), vb = Ld(b + 4 * x);
    St(d + 4 * x, _mm_packus_epi16(Over2(Lo16(va), Lo16(vb)), Over2(Hi16(va), Hi16(vb))));
  }
  if (x < width) PlainKernels().alphaOverAC4(a + 4 * x, b + 4 * x, d + 4 * x, width - x);
}

void FilterVertical(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                    int count) {
  const __m128i rnd = _mm_set1_epi32(128);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    __m128i acc[4] = {rnd, rnd, rnd, rnd};
    int t = 0;
    for (; t + 2 <= taps; t += 2) {
      const __m128i w = _mm_set1_epi32(
          static_cast<int>((static_cast<uint32_t>(static_cast<uint16_t>(coef[t + 1])) << 16) |
                           static_cast<uint16_t>(coef[t])));
      const __m128i p = Ld(rows[t] + i), q = Ld(rows[t + 1] + i);
      const __m128i pl = Lo16(p), ph = Hi16(p), ql = Lo16(q), qh = Hi16(q);
      acc[0] = _mm_add_epi32(acc[0], _mm_madd_epi16(_mm_unpacklo_epi16(pl, ql), w));
      acc[1] = _mm_add_epi32(acc[1], _mm_madd_epi16(_mm_unpackhi_epi16(pl, ql), w));
      acc[2] = _mm_add_epi32(acc[2], _mm_madd_epi16(_mm_unpacklo_epi16(ph, qh), w));
      acc[3] = _mm_add_epi32(acc[3], _mm_madd_epi16(_mm_unpackhi_epi16(ph, qh), w));
    }
    if (t < taps) {
      const __m128i w = _mm_set1_epi32(static_cast<uint16_t>(coef[t]));
      const __m128i p = Ld(rows[t] + i), z = _mm_setzero_si128();
      const __m128i pl = Lo16(p), ph = Hi16(p);
      acc[0] = _mm_add_epi32(acc[0], _mm_madd_epi16(_mm_unpacklo_epi16(pl, z), w));
      acc[1] = _mm_add_epi32(acc[1], _mm_madd_epi16(_mm_unpackhi_epi16(pl, z), w));
      acc[2] = _mm_add_epi32(acc[2], _mm_madd_epi16(_mm_unpacklo_epi16(ph, z), w));
      acc[3] = _mm_add_epi32(acc[3], _mm_madd_epi16(_mm_unpackhi_epi16(ph, z), w));
    }
    St(out + i, _mm_packs_epi32(_mm_srai_epi32(acc[0], 8), _mm_srai_epi32(acc[1], 8)));
    St(out + i + 8, _mm_packs_epi32(_mm_srai_epi32(acc[2], 8), _mm_srai_epi32(acc[3], 8)));
  }
  for (; i < count; ++i) {
    int sum = 0;
    for (int t = 0; t < taps; ++t) sum += rows[t][i] * coef[t];
    out[i] = static_cast<int16_t>((sum + 128) >> 8);
  }
}

}  // namespace

void InstallSse2Kernels(Kernels* k) {
  k->sampleDownH2V2 = SampleDownH2V2;
  k->sampleDownH2V1 = SampleDownH2V1;
  k->reverseC4 = ReverseC4;
  k->copyC4C1 = CopyC4C1;
  k->copyP4C4 = CopyP4C4;
  k->setC4 = SetC4;
  k->setC4C = SetC4C;
  k->alphaMix = AlphaMix;
  k->alphaOverAC4 = AlphaOverAC4;
  k->filterVertical = FilterVertical;
}

}  // namespace ipp
}  // namespace orv
