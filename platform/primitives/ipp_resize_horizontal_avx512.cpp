// AVX-512 forms of the horizontal resize pass for 3- and 4-channel lines,
// four destination pixels a register. Each computes the plain sums term for
// term and rounds, shifts and saturates alike, so the bytes are the plain
// bytes. Reads past the last tap stay inside the room the callers keep (see
// ipp_resize_kernels_avx2.cpp).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_kernels_avx512.h"

namespace orv {
namespace ipp {
namespace avx512 {
namespace {

inline int32_t Ld32(const int16_t* p) {
  int32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

// Weight pairs (c[t], c[t + 1]) of four pixels whose groups of `taps` weights
// follow each other from c, pair of pixel q repeated over quarter q. Up to 10
// taps one masked load reaches all four groups and one word permute places
// them; wider groups take one broadcast per pixel.
struct QuarterWeights {
  int taps;
  __mmask32 mask;
  __m512i index;
  explicit QuarterWeights(int n) : taps(n), mask(0), index(_mm512_setzero_si512()) {
    if (n > 10) return;
    alignas(64) int16_t idx[32];
    for (int q = 0; q < 4; ++q)
      for (int k = 0; k < 4; ++k) {
        idx[q * 8 + 2 * k] = static_cast<int16_t>(q * n);
        idx[q * 8 + 2 * k + 1] = static_cast<int16_t>(q * n + 1);
      }
    index = _mm512_load_si512(idx);
    mask = static_cast<__mmask32>((uint64_t{1} << (3 * n + 2)) - 1);
  }
  __m512i At(const int16_t* c) const {
    if (taps <= 10) return _mm512_permutexvar_epi16(index, _mm512_maskz_loadu_epi16(mask, c));
    __m512i w = _mm512_castsi128_si512(_mm_set1_epi32(Ld32(c)));
    w = _mm512_inserti32x4(w, _mm_set1_epi32(Ld32(c + taps)), 1);
    w = _mm512_inserti32x4(w, _mm_set1_epi32(Ld32(c + 2 * taps)), 2);
    return _mm512_inserti32x4(w, _mm_set1_epi32(Ld32(c + 3 * taps)), 3);
  }
};

// Channel sums of destination pixels x .. x+3, pixel x + q in quarter q.
inline __m512i Sums4(const int16_t* src, const int32_t* start, const int16_t* coef,
                     const QuarterWeights& weights, int x) {
  const int taps = weights.taps;
  const __m512i pairing =
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
  const int16_t* s[4];
  for (int q = 0; q < 4; ++q) s[q] = src + static_cast<ptrdiff_t>(start[x + q]) * 4;
  const int16_t* c = coef + static_cast<ptrdiff_t>(x) * taps;
  __m512i acc = _mm512_set1_epi32(1 << 19);
  for (int t = 0; t < taps; t += 2) {
    __m512i v =
        _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s[0] + 4 * t)));
    v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[1] + 4 * t)), 1);
    v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[2] + 4 * t)), 2);
    v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[3] + 4 * t)), 3);
    __m512i w = weights.At(c + t);
    // The odd tap at the end weighs only its first pixel.
    if (t + 1 == taps) w = _mm512_and_si512(w, _mm512_set1_epi32(0xFFFF));
    acc = _mm512_add_epi32(acc, _mm512_madd_epi16(_mm512_shuffle_epi8(v, pairing), w));
  }
  return _mm512_srai_epi32(acc, 20);
}

// Four pixels' channel sums into 16 bytes in order: words [x, x+4 | x+1, x+5
// | x+2, x+6 | x+3, x+7], bytes likewise twice, then one dword permute.
inline void Store8(uint8_t* dst, __m512i s0123, __m512i s4567) {
  const __m512i w = _mm512_packs_epi32(s0123, s4567);
  const __m512i b = _mm512_packus_epi16(w, w);
  const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 0, 0, 0, 0, 0, 0, 0, 0);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst),
                      _mm512_castsi512_si256(_mm512_permutexvar_epi32(order, b)));
}

// Four channels, one or two taps (a 128-bit window a pixel, so four pixels a
// register by quarters; measured faster here than pairing 256-bit windows,
// half of whose taps would weigh zero): the four pixels' weight groups (4T
// words) come in one whole load, which ends inside the plan's zeroed room
// even for the last four pixels.
template <int T>
struct QuarterSums {
  __m512i index[(T + 1) / 2];
  QuarterSums() {
    for (int p = 0; p < (T + 1) / 2; ++p) {
      alignas(64) int16_t idx[32];
      for (int q = 0; q < 4; ++q)
        for (int k = 0; k < 4; ++k) {
          idx[q * 8 + 2 * k] = static_cast<int16_t>(q * T + 2 * p);
          // An odd last tap pairs with a zero weight (word 31 is zeroed below).
          idx[q * 8 + 2 * k + 1] = static_cast<int16_t>(2 * p + 1 < T ? q * T + 2 * p + 1 : 31);
        }
      index[p] = _mm512_load_si512(idx);
    }
  }
  __m512i At(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const __m512i pairing =
        _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
    const int16_t* s[4];
    for (int q = 0; q < 4; ++q) s[q] = src + static_cast<ptrdiff_t>(start[x + q]) * 4;
    // Words 0 .. 15 of the groups; 16 .. 31 zero.
    const __m512i c = _mm512_zextsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(coef + static_cast<ptrdiff_t>(x) * T)));
    __m512i acc = _mm512_set1_epi32(1 << 19);
    for (int p = 0; p < (T + 1) / 2; ++p) {
      const int t = 2 * p;
      __m512i v =
          _mm512_castsi128_si512(_mm_loadu_si128(reinterpret_cast<const __m128i*>(s[0] + 4 * t)));
      v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[1] + 4 * t)), 1);
      v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[2] + 4 * t)), 2);
      v = _mm512_inserti32x4(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(s[3] + 4 * t)), 3);
      acc = _mm512_add_epi32(acc, _mm512_madd_epi16(_mm512_shuffle_epi8(v, pairing),
                                                    _mm512_permutexvar_epi16(index[p], c)));
    }
    return _mm512_srai_epi32(acc, 20);
  }
  // The bytes of pixels x .. x+15 in order: both packs, then one dword permute.
  __m512i Bytes16(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const __m512i w0 = _mm512_packs_epi32(At(src, start, coef, x), At(src, start, coef, x + 4));
    const __m512i w1 =
        _mm512_packs_epi32(At(src, start, coef, x + 8), At(src, start, coef, x + 12));
    const __m512i order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return _mm512_permutexvar_epi32(order, _mm512_packus_epi16(w0, w1));
  }
};

// Up to four taps of C = 3 or 4 channels, sixteen pixels a step, with few
// shuffles (this processor runs two shuffles a cycle against four adds or
// unpacks). The 256-bit windows of pixels x and x+1 (taps 0 .. 3) are paired
// by one two-register word permute: taps of channels 0 and 1 in quarter 0
// (x) and 2 (x+1), of channels 2 and 3 in quarters 1 and 3 (zero for a
// missing fourth channel). The multiply-add leaves [c0 t01, c1 t01, c0 t23,
// c1 t23] in each quarter, and one 64-bit unpack pair sums the tap halves of
// two such registers within quarters. Taps past T are read (inside the
// line's 16 spare samples) at weight zero.
template <int C, int T>
struct WindowIndex {
  alignas(64) int16_t pairing[32];
  alignas(64) int16_t weights[2][32];  // pixels x, x+1 and x+2, x+3
  alignas(64) int16_t order[32];
  constexpr WindowIndex() : pairing(), weights(), order() {
    for (int q = 0; q < 4; ++q) {
      const int from = q < 2 ? 0 : 32, first = 2 * (q % 2);  // source register, channel
      for (int k = 0; k < 8; ++k) {
        const int tap = 2 * (k / 4) + k % 2, channel = first + (k / 2) % 2;
        // Word 31 of either zero-extended register is zero.
        pairing[8 * q + k] = static_cast<int16_t>(channel < C ? from + C * tap + channel : 31);
        for (int h = 0; h < 2; ++h)
          weights[h][8 * q + k] = static_cast<int16_t>(tap < T ? (2 * h + q / 2) * T + tap : 31);
      }
    }
    // After both packs quarter q holds byte pairs of pixels 0, 2, .. 14
    // (q 0: channels 0, 1; q 1: 2, 3) or of 1, 3, .. 15 (q 2, 3).
    for (int p = 0; p < 16; ++p) {
      order[2 * p] = static_cast<int16_t>(16 * (p % 2) + p / 2);
      order[2 * p + 1] = static_cast<int16_t>(16 * (p % 2) + 8 + p / 2);
    }
  }
};
template <int C, int T>
constexpr WindowIndex<C, T> kWindowIndex;

template <int C, int T>
struct WindowSums {
  __m512i pairing = _mm512_load_si512(kWindowIndex<C, T>.pairing);
  __m512i weightIndex[2] = {_mm512_load_si512(kWindowIndex<C, T>.weights[0]),
                            _mm512_load_si512(kWindowIndex<C, T>.weights[1])};
  __m512i order = _mm512_load_si512(kWindowIndex<C, T>.order);
  static __m512i Window(const int16_t* src, int32_t start) {
    return _mm512_zextsi256_si512(_mm256_loadu_si256(
        reinterpret_cast<const __m256i*>(src + static_cast<ptrdiff_t>(start) * C)));
  }
  __m512i Two(const int16_t* src, const int32_t* start, int x, __m512i weights) const {
    const __m512i v =
        _mm512_permutex2var_epi16(Window(src, start[x]), pairing, Window(src, start[x + 1]));
    return _mm512_madd_epi16(v, weights);
  }
  // Sums of pixels x .. x+3: quarter 0 [x c0, x c1, x+2 c0, x+2 c1], quarter
  // 1 the same for c2, c3, quarters 2 and 3 for x+1 and x+3.
  __m512i Four(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const __m512i c = _mm512_zextsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i*>(coef + static_cast<ptrdiff_t>(x) * T)));
    const __m512i r01 = Two(src, start, x, _mm512_permutexvar_epi16(weightIndex[0], c));
    const __m512i r23 = Two(src, start, x + 2, _mm512_permutexvar_epi16(weightIndex[1], c));
    const __m512i sums =
        _mm512_add_epi32(_mm512_unpacklo_epi64(r01, r23), _mm512_unpackhi_epi64(r01, r23));
    return _mm512_srai_epi32(_mm512_add_epi32(sums, _mm512_set1_epi32(1 << 19)), 20);
  }
  // The bytes of pixels x .. x+15 in order, four per pixel (the fourth zero
  // for three channels), saturated like the plain pass.
  __m512i Bytes16(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const __m512i w0 = _mm512_packs_epi32(Four(src, start, coef, x), Four(src, start, coef, x + 4));
    const __m512i w1 =
        _mm512_packs_epi32(Four(src, start, coef, x + 8), Four(src, start, coef, x + 12));
    return _mm512_permutexvar_epi16(order, _mm512_packus_epi16(w0, w1));
  }
};

template <int T>
void HorizontalC4Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                      int width) {
  using Sums = typename std::conditional<(T >= 3), WindowSums<4, T>, QuarterSums<T>>::type;
  const Sums sums;
  int x = 0;
  for (; x + 16 <= width; x += 16)
    _mm512_storeu_si512(dst + 4 * x, sums.Bytes16(src, start, coef, x));
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + 4 * x,
                            width - x);
}

// Three channels, two to four taps, sixteen pixels a step: the 4-channel
// bytes of Bytes16 (fourth lane zero), each pixel's fourth byte dropped
// within quarters and the quarters' 12 bytes closed up, 48 bytes stored whole
// (with 16 more that the next step overwrites) while the row leaves room.
template <int T>
void HorizontalC3Taps(const int16_t* src, const int32_t* start, const int16_t* coef, uint8_t* dst,
                      int width) {
  const WindowSums<3, T> sums;
  const __m512i drop =
      _mm512_broadcast_i32x4(_mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
  const __m512i close = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m512i b = sums.Bytes16(src, start, coef, x);
    const __m512i v = _mm512_permutexvar_epi32(close, _mm512_shuffle_epi8(b, drop));
    uint8_t* d = dst + 3 * x;
    if (3 * x + 64 <= 3 * width) {
      _mm512_storeu_si512(d, v);
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm512_castsi512_si256(v));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(d + 32), _mm512_extracti32x4_epi32(v, 2));
    }
  }
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC3(src, start + x, coef + static_cast<ptrdiff_t>(x) * T, T, dst + 3 * x,
                            width - x);
}

}  // namespace

void FilterHorizontalC3(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  switch (taps) {
    case 2:
      return HorizontalC3Taps<2>(src, start, coef, dst, width);
    case 3:
      return HorizontalC3Taps<3>(src, start, coef, dst, width);
    case 4:
      return HorizontalC3Taps<4>(src, start, coef, dst, width);
    default:
      return KernelsFor(SimdLevel::kAvx2).filterHorizontalC3(src, start, coef, taps, dst, width);
  }
}

void FilterHorizontalC4(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  switch (taps) {
    case 2:
      return HorizontalC4Taps<2>(src, start, coef, dst, width);
    case 3:
      return HorizontalC4Taps<3>(src, start, coef, dst, width);
    case 4:
      return HorizontalC4Taps<4>(src, start, coef, dst, width);
    default:
      break;
  }
  const QuarterWeights weights(taps);
  int x = 0;
  for (; x + 8 <= width; x += 8)
    Store8(dst + 4 * x, Sums4(src, start, coef, weights, x),
           Sums4(src, start, coef, weights, x + 4));
  if (x < width)
    KernelsFor(SimdLevel::kAvx2)
        .filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * taps, taps,
                            dst + 4 * x, width - x);
}

}  // namespace avx512
}  // namespace ipp
}  // namespace orv
