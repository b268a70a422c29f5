// AVX2 forms of the horizontal resize pass for 3- and 4-channel lines.
//
// Each 128-bit half of a register carries one destination pixel: the two
// source pixels of a tap pair are interleaved channel by channel and one
// multiply-add applies the pair's weights, so a half ends with the four
// channel sums of its pixel in 32-bit lanes. The sums are those of the plain
// pass term for term (every product and sum fits 32 bits), and the rounding,
// shift and saturation are the same, so the bytes are the plain bytes.
//
// Reads past the last tap stay inside the room the callers keep: the Q6 line
// has 16 spare samples after its last pixel and the plan 16 zero weights after
// its last group (see ipp_resize.cpp and ipp_resize_plan.h).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

inline __m128i Ld(const void* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline int32_t Ld32(const int16_t* p) {
  int32_t v;
  std::memcpy(&v, p, 4);
  return v;
}

// The weight pair (c[t], c[t + 1]) of pixel a in the low half and of pixel b
// in the high half; `last` keeps only c[t], for the odd tap at the end.
inline __m256i Weights(const int16_t* a, const int16_t* b, bool last) {
  __m256i w = _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_set1_epi32(Ld32(a))),
                                      _mm_set1_epi32(Ld32(b)), 1);
  if (last) w = _mm256_and_si256(w, _mm256_set1_epi32(0xFFFF));
  return w;
}

// Channel sums of destination pixels x (low half) and x + 1 (high half).
// `pairing` interleaves two source pixels of C channels channel by channel.
template <int C>
inline __m256i Sums2(const int16_t* src, const int32_t* start, const int16_t* coef, int taps, int x,
                     __m256i pairing) {
  const int16_t* s0 = src + static_cast<ptrdiff_t>(start[x]) * C;
  const int16_t* s1 = src + static_cast<ptrdiff_t>(start[x + 1]) * C;
  const int16_t* c0 = coef + static_cast<ptrdiff_t>(x) * taps;
  const int16_t* c1 = c0 + taps;
  __m256i acc = _mm256_set1_epi32(1 << 19);
  for (int t = 0; t < taps; t += 2) {
    const __m256i v = _mm256_shuffle_epi8(
        _mm256_inserti128_si256(_mm256_castsi128_si256(Ld(s0 + C * t)), Ld(s1 + C * t), 1),
        pairing);
    acc = _mm256_add_epi32(acc, _mm256_madd_epi16(v, Weights(c0 + t, c1 + t, t + 1 == taps)));
  }
  return _mm256_srai_epi32(acc, 20);
}

// The same for up to four taps, with fewer shuffles. With three or four, one
// window holds a pixel's four taps (0, 1 in the low half, 2, 3 in the high
// half; for three channels the high half is loaded from tap 2), so one pairing
// and one multiply-add take all of them, and two half exchanges add the
// halves of two pixels. With one or two, the low halves of the two pixels'
// windows make one register and one multiply-add gives both pixels' sums. A
// tap past `taps` weighs zero (its samples lie inside the line's spare room;
// its weight, read from the next group or the plan's zeroed room, is masked).
template <int C>
struct WindowSums2 {
  __m256i pairing, keep;
  int taps;
  WindowSums2(int n, __m256i pairingBytes) : pairing(pairingBytes), taps(n) {
    const int lo = n >= 2 ? -1 : 0xFFFF, hi = n >= 4 ? -1 : (n == 3 ? 0xFFFF : 0);
    keep = _mm256_setr_epi32(lo, lo, lo, lo, hi, hi, hi, hi);
  }
  // Weight dwords a (low half) and b (high half) spread over their halves.
  static __m256i Spread(__m128i ab) {
    return _mm256_permutevar8x32_epi32(_mm256_castsi128_si256(ab),
                                       _mm256_setr_epi32(0, 0, 0, 0, 1, 1, 1, 1));
  }
  // One or two taps: pixels x (low half) and x + 1 (high half).
  __m256i Narrow(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    const int16_t* c = coef + static_cast<ptrdiff_t>(x) * taps;
    const __m128i ab =
        taps == 2 ? _mm_loadl_epi64(reinterpret_cast<const __m128i*>(c))
                  : _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(c)));
    const __m256i v = _mm256_inserti128_si256(
        _mm256_castsi128_si256(Ld(src + static_cast<ptrdiff_t>(start[x]) * C)),
        Ld(src + static_cast<ptrdiff_t>(start[x + 1]) * C), 1);
    const __m256i sums = _mm256_madd_epi16(_mm256_shuffle_epi8(v, pairing), Spread(ab));
    return _mm256_srai_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(1 << 19)), 20);
  }
  __m256i One(const int16_t* src, int32_t start, const int16_t* c) const {
    const int16_t* s = src + static_cast<ptrdiff_t>(start) * C;
    const __m256i v = C == 4 ? _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s))
                             : _mm256_inserti128_si256(_mm256_castsi128_si256(Ld(s)), Ld(s + 6), 1);
    const __m256i w =
        _mm256_and_si256(Spread(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(c))), keep);
    return _mm256_madd_epi16(_mm256_shuffle_epi8(v, pairing), w);
  }
  // Channel sums of pixels x (low half) and x + 1 (high half).
  __m256i At(const int16_t* src, const int32_t* start, const int16_t* coef, int x) const {
    if (taps <= 2) return Narrow(src, start, coef, x);
    const int16_t* c = coef + static_cast<ptrdiff_t>(x) * taps;
    const __m256i a = One(src, start[x], c), b = One(src, start[x + 1], c + taps);
    const __m256i sums = _mm256_add_epi32(_mm256_permute2x128_si256(a, b, 0x20),
                                          _mm256_permute2x128_si256(a, b, 0x31));
    return _mm256_srai_epi32(_mm256_add_epi32(sums, _mm256_set1_epi32(1 << 19)), 20);
  }
};

// Four pixels' channel sums (x, x+1 | x+2, x+3 in two registers) to 16 bytes
// of 4-byte pixels in order, saturated like the plain pass.
inline __m128i Bytes4(__m256i s01, __m256i s23) {
  // Words: [x, x+2 | x+1, x+3]; bytes: [x, x+2, x, x+2 | x+1, x+3, ...].
  const __m256i w = _mm256_packs_epi32(s01, s23);
  const __m256i b = _mm256_packus_epi16(w, w);
  return _mm256_castsi256_si128(
      _mm256_permutevar8x32_epi32(b, _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0)));
}

void FilterHorizontalC4(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  const __m256i pairing = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5, 12, 13, 6, 7, 14, 15));
  const WindowSums2<4> window(taps, pairing);
  const bool useWindow = taps <= 4;
  int x = 0;
  for (; x + 4 <= width; x += 4) {
    const __m256i s01 =
        useWindow ? window.At(src, start, coef, x) : Sums2<4>(src, start, coef, taps, x, pairing);
    const __m256i s23 = useWindow ? window.At(src, start, coef, x + 2)
                                  : Sums2<4>(src, start, coef, taps, x + 2, pairing);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + 4 * x), Bytes4(s01, s23));
  }
  if (x < width)
    PlainKernels().filterHorizontalC4(src, start + x, coef + static_cast<ptrdiff_t>(x) * taps, taps,
                                      dst + 4 * x, width - x);
}

void FilterHorizontalC3(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                        uint8_t* dst, int width) {
  // The fourth lane of each pixel gets zero samples and is dropped on store.
  const __m256i pairing = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0, 1, 6, 7, 2, 3, 8, 9, 4, 5, 10, 11, -128, -128, -128, -128));
  const __m128i compact = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
  const WindowSums2<3> window(taps, pairing);
  const bool useWindow = taps <= 4;
  int x = 0;
  for (; x + 4 <= width; x += 4) {
    const __m256i s01 =
        useWindow ? window.At(src, start, coef, x) : Sums2<3>(src, start, coef, taps, x, pairing);
    const __m256i s23 = useWindow ? window.At(src, start, coef, x + 2)
                                  : Sums2<3>(src, start, coef, taps, x + 2, pairing);
    const __m128i b = _mm_shuffle_epi8(Bytes4(s01, s23), compact);
    uint8_t* d = dst + 3 * x;
    _mm_storel_epi64(reinterpret_cast<__m128i*>(d), b);
    const int32_t tail = _mm_extract_epi32(b, 2);
    std::memcpy(d + 8, &tail, 4);
  }
  if (x < width)
    PlainKernels().filterHorizontalC3(src, start + x, coef + static_cast<ptrdiff_t>(x) * taps, taps,
                                      dst + 3 * x, width - x);
}

// Nearest neighbour of 1-byte pixels, sixteen a step with two dword gathers.
// Each gather reads the four bytes that end at the wanted one, so it never
// reads past the source pixel it takes; a block with an index below 3 (whose
// read would start before the line) is done by the plain form.
void GatherC1(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  const __m256i three = _mm256_set1_epi32(3);
  const __m256i top =
      _mm256_setr_epi8(3, 7, 11, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 3, 7, 11, 15,
                       -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 3, 6, 7);
  const int* base = reinterpret_cast<const int*>(src);
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const __m256i j0 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(index + x));
    const __m256i j1 = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(index + x + 8));
    const __m256i low =
        _mm256_or_si256(_mm256_cmpgt_epi32(three, j0), _mm256_cmpgt_epi32(three, j1));
    if (!_mm256_testz_si256(low, low)) {
      PlainKernels().gatherC1(src, index + x, dst + x, 16);
      continue;
    }
    // Bytes per half: [p0-3 . . . | p4-7 . . .] and [p8-11 | p12-15].
    const __m256i a =
        _mm256_shuffle_epi8(_mm256_i32gather_epi32(base, _mm256_sub_epi32(j0, three), 1), top);
    const __m256i b =
        _mm256_shuffle_epi8(_mm256_i32gather_epi32(base, _mm256_sub_epi32(j1, three), 1), top);
    // Dwords [a0 b0 . . | a1 b1 . .], then in order a0 a1 b0 b1.
    const __m256i v = _mm256_permutevar8x32_epi32(_mm256_unpacklo_epi32(a, b), order);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), _mm256_castsi256_si128(v));
  }
  if (x < width) PlainKernels().gatherC1(src, index + x, dst + x, width - x);
}

}  // namespace

void InstallAvx2ResizeKernels(Kernels* k) {
  k->gatherC1 = GatherC1;
  k->filterVertical = FilterVerticalAvx2;
  k->filterHorizontalC1 = FilterHorizontalC1Avx2;
  k->filterHorizontalC3 = FilterHorizontalC3;
  k->filterHorizontalC4 = FilterHorizontalC4;
}

}  // namespace ipp
}  // namespace orv
