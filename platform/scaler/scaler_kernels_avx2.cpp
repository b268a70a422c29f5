// AVX2 forms of the scaler's row kernels: the arithmetic of the SSE2 forms on
// twice the width. Columns left over go through the SSE2 and plain forms.
#include <immintrin.h>

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"

namespace orv {
namespace vrscl {

namespace {

inline __m256i Widen16(const uint8_t* p) {
  return _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
}

inline __m256i CoefPair(int16_t c0, int16_t c1) {
  return _mm256_set1_epi32(static_cast<int32_t>(
      (static_cast<uint32_t>(static_cast<uint16_t>(c1)) << 16) | static_cast<uint16_t>(c0)));
}

}  // namespace

void VerticalAvx2(const uint8_t* src, ptrdiff_t step, int taps, const int16_t* coefs, int16_t* out,
                  int width) {
  const __m256i round = _mm256_set1_epi32(1 << (kVerticalShift - 1));
  const __m256i zero = _mm256_setzero_si256();
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i lo0 = zero, hi0 = zero, lo1 = zero, hi1 = zero;
    int k = 0;
    for (; k < taps; k += 2) {
      const uint8_t* ra = src + k * step + x;
      const __m256i c = CoefPair(coefs[k], k + 1 < taps ? coefs[k + 1] : 0);
      const __m256i a0 = Widen16(ra);
      const __m256i a1 = Widen16(ra + 16);
      __m256i b0 = zero, b1 = zero;
      if (k + 1 < taps) {
        b0 = Widen16(ra + step);
        b1 = Widen16(ra + step + 16);
      }
      lo0 = _mm256_add_epi32(lo0, _mm256_madd_epi16(_mm256_unpacklo_epi16(a0, b0), c));
      hi0 = _mm256_add_epi32(hi0, _mm256_madd_epi16(_mm256_unpackhi_epi16(a0, b0), c));
      lo1 = _mm256_add_epi32(lo1, _mm256_madd_epi16(_mm256_unpacklo_epi16(a1, b1), c));
      hi1 = _mm256_add_epi32(hi1, _mm256_madd_epi16(_mm256_unpackhi_epi16(a1, b1), c));
    }
    lo0 = _mm256_srai_epi32(_mm256_add_epi32(lo0, round), kVerticalShift);
    hi0 = _mm256_srai_epi32(_mm256_add_epi32(hi0, round), kVerticalShift);
    lo1 = _mm256_srai_epi32(_mm256_add_epi32(lo1, round), kVerticalShift);
    hi1 = _mm256_srai_epi32(_mm256_add_epi32(hi1, round), kVerticalShift);
    // unpacklo/hi split each 128-bit lane, and packs joins them back in order.
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), _mm256_packs_epi32(lo0, hi0));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x + 16), _mm256_packs_epi32(lo1, hi1));
  }
  if (x < width) VerticalSse2(src + x, step, taps, coefs, out + x, width - x);
}

namespace {

// Taps 8k..8k+7 of two destination samples (low and high lane) times their
// paired coefficient row.
inline __m256i Madd2x8(const int16_t* lowLane, const int16_t* highLane, const int16_t* pair) {
  const __m256i v = _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(lowLane))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(highLane)), 1);
  return _mm256_madd_epi16(v, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pair)));
}

// The eight sums of the block of destination samples at `start`, whose paired
// coefficients begin at `pc`: low lane samples 0..3, high lane 4..7. The tap
// stride is 8 x kChunks (or `stride` when kChunks is 0).
template <int kChunks>
inline __m256i Horizontal8(const int16_t* in, const int32_t* start, const int16_t* pc, int stride) {
  const int n = kChunks > 0 ? 8 * kChunks : stride;
  const int16_t* p0 = in + start[0];
  const int16_t* p1 = in + start[1];
  const int16_t* p2 = in + start[2];
  const int16_t* p3 = in + start[3];
  const int16_t* p4 = in + start[4];
  const int16_t* p5 = in + start[5];
  const int16_t* p6 = in + start[6];
  const int16_t* p7 = in + start[7];
  __m256i a0 = _mm256_setzero_si256(), a1 = a0, a2 = a0, a3 = a0;
  for (int k = 0; k < n; k += 8, pc += 64) {
    a0 = _mm256_add_epi32(a0, Madd2x8(p0 + k, p4 + k, pc));
    a1 = _mm256_add_epi32(a1, Madd2x8(p1 + k, p5 + k, pc + 16));
    a2 = _mm256_add_epi32(a2, Madd2x8(p2 + k, p6 + k, pc + 32));
    a3 = _mm256_add_epi32(a3, Madd2x8(p3 + k, p7 + k, pc + 48));
  }
  return _mm256_hadd_epi32(_mm256_hadd_epi32(a0, a1), _mm256_hadd_epi32(a2, a3));
}

template <int kChunks>
int HorizontalLoop(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                   const int16_t* paired, int stride) {
  const __m256i round = _mm256_set1_epi32(1 << (kHorizontalShift - 1));
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 0, 0, 0, 0);
  int i = 0;
  for (; i + 16 <= width; i += 16) {
    const int16_t* pc = paired + static_cast<ptrdiff_t>(i) * stride;
    __m256i s0 = Horizontal8<kChunks>(in, start + i, pc, stride);
    __m256i s1 = Horizontal8<kChunks>(in, start + i + 8, pc + 8 * stride, stride);
    s0 = _mm256_srai_epi32(_mm256_add_epi32(s0, round), kHorizontalShift);
    s1 = _mm256_srai_epi32(_mm256_add_epi32(s1, round), kHorizontalShift);
    // Words [0-3 8-11 | 4-7 12-15]; bytes per lane [0-3 8-11 ...] then reordered.
    __m256i b = _mm256_packus_epi16(_mm256_packs_epi32(s0, s1), _mm256_setzero_si256());
    b = _mm256_permutevar8x32_epi32(b, order);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm256_castsi256_si128(b));
  }
  return i;
}

}  // namespace

void HorizontalAvx2(const int16_t* in, uint8_t* out, int width, const int32_t* start,
                    const int16_t* coefs, const int16_t* paired, int stride) {
  int i = 0;
  switch (stride) {
    case 8:
      i = HorizontalLoop<1>(in, out, width, start, paired, stride);
      break;
    case 16:
      i = HorizontalLoop<2>(in, out, width, start, paired, stride);
      break;
    case 24:
      i = HorizontalLoop<3>(in, out, width, start, paired, stride);
      break;
    default:
      i = HorizontalLoop<0>(in, out, width, start, paired, stride);
      break;
  }
  if (i < width) {
    HorizontalSse2(in, out + i, width - i, start + i, coefs + static_cast<ptrdiff_t>(i) * stride,
                   nullptr, stride);
  }
}

namespace {

// Taps 8k..8k+7 of two destination samples read from bytes.
inline __m256i Madd2x8Bytes(const uint8_t* lowLane, const uint8_t* highLane, const int16_t* pair) {
  const __m128i bytes =
      _mm_unpacklo_epi64(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(lowLane)),
                         _mm_loadl_epi64(reinterpret_cast<const __m128i*>(highLane)));
  return _mm256_madd_epi16(_mm256_cvtepu8_epi16(bytes),
                           _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pair)));
}

template <int kChunks>
inline __m256i HorizontalBytes8(const uint8_t* in, const int32_t* start, const int16_t* pc,
                                int stride) {
  const int n = kChunks > 0 ? 8 * kChunks : stride;
  const uint8_t* p0 = in + start[0];
  const uint8_t* p1 = in + start[1];
  const uint8_t* p2 = in + start[2];
  const uint8_t* p3 = in + start[3];
  const uint8_t* p4 = in + start[4];
  const uint8_t* p5 = in + start[5];
  const uint8_t* p6 = in + start[6];
  const uint8_t* p7 = in + start[7];
  __m256i a0 = _mm256_setzero_si256(), a1 = a0, a2 = a0, a3 = a0;
  for (int k = 0; k < n; k += 8, pc += 64) {
    a0 = _mm256_add_epi32(a0, Madd2x8Bytes(p0 + k, p4 + k, pc));
    a1 = _mm256_add_epi32(a1, Madd2x8Bytes(p1 + k, p5 + k, pc + 16));
    a2 = _mm256_add_epi32(a2, Madd2x8Bytes(p2 + k, p6 + k, pc + 32));
    a3 = _mm256_add_epi32(a3, Madd2x8Bytes(p3 + k, p7 + k, pc + 48));
  }
  return _mm256_hadd_epi32(_mm256_hadd_epi32(a0, a1), _mm256_hadd_epi32(a2, a3));
}

template <int kChunks>
int HorizontalBytesLoop(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                        const int16_t* paired, int stride) {
  const __m256i round = _mm256_set1_epi32(1 << (kVerticalShift - 1));
  int i = 0;
  for (; i + 16 <= width; i += 16) {
    const int16_t* pc = paired + static_cast<ptrdiff_t>(i) * stride;
    __m256i s0 = HorizontalBytes8<kChunks>(in, start + i, pc, stride);
    __m256i s1 = HorizontalBytes8<kChunks>(in, start + i + 8, pc + 8 * stride, stride);
    s0 = _mm256_srai_epi32(_mm256_add_epi32(s0, round), kVerticalShift);
    s1 = _mm256_srai_epi32(_mm256_add_epi32(s1, round), kVerticalShift);
    // Words [0-3 8-11 | 4-7 12-15] -> [0-3 4-7 | 8-11 12-15].
    const __m256i w = _mm256_permute4x64_epi64(_mm256_packs_epi32(s0, s1), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), w);
  }
  return i;
}

}  // namespace

void HorizontalBytesAvx2(const uint8_t* in, int16_t* out, int width, const int32_t* start,
                         const int16_t* coefs, const int16_t* paired, int stride) {
  int i = 0;
  switch (stride) {
    case 8:
      i = HorizontalBytesLoop<1>(in, out, width, start, paired, stride);
      break;
    case 16:
      i = HorizontalBytesLoop<2>(in, out, width, start, paired, stride);
      break;
    default:
      i = HorizontalBytesLoop<0>(in, out, width, start, paired, stride);
      break;
  }
  if (i < width) {
    HorizontalBytesSse2(in, out + i, width - i, start + i,
                        coefs + static_cast<ptrdiff_t>(i) * stride, nullptr, stride);
  }
}

void VerticalWordsAvx2(const int16_t* const* rows, int taps, const int16_t* coefs, uint8_t* out,
                       int width) {
  const __m256i round = _mm256_set1_epi32(1 << (kHorizontalShift - 1));
  const __m256i zero = _mm256_setzero_si256();
  // Rows and coefficients in pairs; an odd last row is paired with a zero
  // coefficient and read twice.
  constexpr int kMaxPairs = 32;
  if (taps > 2 * kMaxPairs) {
    VerticalWordsPlain(rows, taps, coefs, out, width);
    return;
  }
  const int pairs = (taps + 1) / 2;
  __m256i c[kMaxPairs];
  const int16_t* r[2 * kMaxPairs];
  for (int k = 0; k < pairs; ++k) {
    const bool two = 2 * k + 1 < taps;
    c[k] = CoefPair(coefs[2 * k], two ? coefs[2 * k + 1] : 0);
    r[2 * k] = rows[2 * k];
    r[2 * k + 1] = rows[two ? 2 * k + 1 : 2 * k];
  }
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    __m256i lo = zero, hi = zero;
    for (int k = 0; k < pairs; ++k) {
      const __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r[2 * k] + x));
      const __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(r[2 * k + 1] + x));
      lo = _mm256_add_epi32(lo, _mm256_madd_epi16(_mm256_unpacklo_epi16(a, b), c[k]));
      hi = _mm256_add_epi32(hi, _mm256_madd_epi16(_mm256_unpackhi_epi16(a, b), c[k]));
    }
    lo = _mm256_srai_epi32(_mm256_add_epi32(lo, round), kHorizontalShift);
    hi = _mm256_srai_epi32(_mm256_add_epi32(hi, round), kHorizontalShift);
    const __m256i w = _mm256_packs_epi32(lo, hi);  // words 0-7 | 8-15
    const __m256i b = _mm256_packus_epi16(w, w);   // bytes 0-7 0-7 | 8-15 8-15
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + x),
                     _mm256_castsi256_si128(_mm256_permute4x64_epi64(b, 0x08)));
  }
  if (x < width) VerticalWordsPlainFrom(rows, taps, coefs, out, x, width);
}

void NarrowAvx2(const int16_t* in, uint8_t* out, int width) {
  const __m256i round = _mm256_set1_epi16(1 << (kWorkBits - 1));
  int x = 0;
  for (; x + 32 <= width; x += 32) {
    __m256i a = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + x));
    __m256i b = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(in + x + 16));
    a = _mm256_srai_epi16(_mm256_adds_epi16(a, round), kWorkBits);
    b = _mm256_srai_epi16(_mm256_adds_epi16(b, round), kWorkBits);
    // packus works per 128-bit lane; restore the order of the four quarters.
    const __m256i packed = _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + x), packed);
  }
  if (x < width) NarrowSse2(in + x, out + x, width - x);
}

}  // namespace vrscl
}  // namespace orv
