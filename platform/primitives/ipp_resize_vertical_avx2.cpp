// AVX2 form of the vertical resize pass: 16 samples a step, a body per tap
// count up to eight with its weights held in registers (more taps take them
// pair by pair), and two and three taps summing to one done in fewer
// multiplies. Each computes the plain sums
// term for term and rounds and shifts alike, so the samples are the plain
// samples.
#include <immintrin.h>

#include <cstdint>
#include <cstdlib>

#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

inline __m256i Samples(const uint8_t* row) {
  return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(row)));
}
inline void Store(int16_t* out, __m256i v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), v);
}
inline __m256i PairOf(int16_t a, int16_t b) {
  return _mm256_set1_epi32(static_cast<int32_t>(
      (static_cast<uint32_t>(static_cast<uint16_t>(b)) << 16) | static_cast<uint16_t>(a)));
}
// The 16 words (sum >> 8) of dword sums in unpack order; the in-half unpack
// and pack undo each other, so lanes come back in order. The pack saturates
// where the plain store wraps; they differ only for sums beyond 16 bits,
// which no plan makes (the kernel tests keep within them too).
inline __m256i Words(__m256i lo, __m256i hi) {
  return _mm256_packs_epi32(_mm256_srai_epi32(lo, 8), _mm256_srai_epi32(hi, 8));
}

// The samples i .. count-1 in the plain form.
void PlainTail(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out, int i,
               int count) {
  for (; i < count; ++i) {
    int sum = 0;
    for (int t = 0; t < taps; ++t) sum += rows[t][i] * coef[t];
    out[i] = static_cast<int16_t>((sum + 128) >> 8);
  }
}

// T taps, any weights: the row pointers and weight pairs stay in registers
// across the line (an odd last tap pairs with weight zero).
template <int T>
void Taps(const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  constexpr int kPairs = (T + 1) / 2;
  const uint8_t* r[T];
  __m256i w[kPairs];
  for (int t = 0; t < T; ++t) r[t] = rows[t];
  for (int p = 0; p < kPairs; ++p) w[p] = PairOf(coef[2 * p], 2 * p + 1 < T ? coef[2 * p + 1] : 0);
  const __m256i rnd = _mm256_set1_epi32(128);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    __m256i lo = rnd, hi = rnd;
    for (int p = 0; p < kPairs; ++p) {
      const __m256i a = Samples(r[2 * p] + i);
      const __m256i b = 2 * p + 1 < T ? Samples(r[2 * p + 1] + i) : _mm256_setzero_si256();
      lo = _mm256_add_epi32(lo, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), w[p]));
      hi = _mm256_add_epi32(hi, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), w[p]));
    }
    Store(out + i, Words(lo, hi));
  }
  PlainTail(rows, coef, T, out, i, count);
}

// Two taps whose weights sum to one: with d = q - p,
//   (p w0 + q w1 + 128) >> 8 = 64 p + ((d w1 + 128) >> 8)
// because p w0 + q w1 = 16384 p + d w1 and 16384 p is a multiple of 256; and
// (d w1 + 128) >> 8 is exactly the rounding high multiply of (d << 7) by w1.
// Everything fits 16 bits (|d << 7| <= 32640) and the 16-bit sum wraps as the
// plain form's store does.
void TwoTaps(const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  const uint8_t* r0 = rows[0];
  const uint8_t* r1 = rows[1];
  const __m256i w = _mm256_set1_epi16(coef[1]);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m256i p = Samples(r0 + i), q = Samples(r1 + i);
    const __m256i d = _mm256_slli_epi16(_mm256_sub_epi16(q, p), 7);
    Store(out + i, _mm256_add_epi16(_mm256_slli_epi16(p, 6), _mm256_mulhrs_epi16(d, w)));
  }
  PlainTail(rows, coef, 2, out, i, count);
}

// Three taps whose weights sum to one, the middle one taken out: with
// d0 = p0 - p1 and d2 = p2 - p1,
//   (p0 w0 + p1 w1 + p2 w2 + 128) >> 8 = 64 p1 + ((d0 w0 + d2 w2 + 128) >> 8)
// (16384 p1 is a multiple of 256), one word pair per sample instead of two.
// With |w0| + |w2| below 32768 the second term fits 16 bits, and the 16-bit
// sum wraps as the plain form's store does.
void ThreeTaps(const uint8_t* const* rows, const int16_t* coef, int16_t* out, int count) {
  const uint8_t* r0 = rows[0];
  const uint8_t* r1 = rows[1];
  const uint8_t* r2 = rows[2];
  const __m256i w = PairOf(coef[0], coef[2]);
  const __m256i rnd = _mm256_set1_epi32(128);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m256i p1 = Samples(r1 + i);
    const __m256i d0 = _mm256_sub_epi16(Samples(r0 + i), p1);
    const __m256i d2 = _mm256_sub_epi16(Samples(r2 + i), p1);
    const __m256i lo = _mm256_add_epi32(rnd, _mm256_madd_epi16(_mm256_unpacklo_epi16(d0, d2), w));
    const __m256i hi = _mm256_add_epi32(rnd, _mm256_madd_epi16(_mm256_unpackhi_epi16(d0, d2), w));
    Store(out + i, _mm256_add_epi16(_mm256_slli_epi16(p1, 6), Words(lo, hi)));
  }
  PlainTail(rows, coef, 3, out, i, count);
}

// Any number of taps, the weights taken pair by pair.
void AnyTaps(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out, int count) {
  const __m256i rnd = _mm256_set1_epi32(128);
  int i = 0;
  for (; i + 16 <= count; i += 16) {
    __m256i lo = rnd, hi = rnd;
    for (int t = 0; t < taps; t += 2) {
      const bool pair = t + 1 < taps;
      const __m256i w = PairOf(coef[t], pair ? coef[t + 1] : 0);
      const __m256i a = Samples(rows[t] + i);
      const __m256i b = pair ? Samples(rows[t + 1] + i) : _mm256_setzero_si256();
      lo = _mm256_add_epi32(lo, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), w));
      hi = _mm256_add_epi32(hi, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), w));
    }
    Store(out + i, Words(lo, hi));
  }
  PlainTail(rows, coef, taps, out, i, count);
}

}  // namespace

void FilterVerticalAvx2(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                        int count) {
  switch (taps) {
    case 1:
      return Taps<1>(rows, coef, out, count);
    case 2:
      if (coef[0] + coef[1] == 1 << 14) return TwoTaps(rows, coef, out, count);
      return Taps<2>(rows, coef, out, count);
    case 3:
      if (coef[0] + coef[1] + coef[2] == 1 << 14 && std::abs(coef[0]) + std::abs(coef[2]) < 32768)
        return ThreeTaps(rows, coef, out, count);
      return Taps<3>(rows, coef, out, count);
    case 4:
      return Taps<4>(rows, coef, out, count);
    case 5:
      return Taps<5>(rows, coef, out, count);
    case 6:
      return Taps<6>(rows, coef, out, count);
    case 7:
      return Taps<7>(rows, coef, out, count);
    case 8:
      return Taps<8>(rows, coef, out, count);
    default:
      return AnyTaps(rows, coef, taps, out, count);
  }
}

}  // namespace ipp
}  // namespace orv
