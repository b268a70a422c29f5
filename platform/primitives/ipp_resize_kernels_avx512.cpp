// AVX-512 forms of the nearest-neighbour gathers of 1- and 4-byte pixels, and
// the table of AVX-512 resize passes (the filtered passes are in
// ipp_resize_vertical_avx512.cpp, ipp_resize_horizontal_avx512.cpp and
// ipp_resize_horizontal_c1_avx512.cpp).
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_resize_kernels_avx512.h"

namespace orv {
namespace ipp {
namespace {

using avx512::First16;
using avx512::First64;

// Nearest neighbour. A block's indices, taken relative to its first one, are
// checked to lie between 0 and the relative index of its last pixel (always
// so for the resizers' ascending indices); when that span is short enough the
// block's pixels are picked by permutes out of the few registers that hold
// the source from the first index on. Those registers are filled by masked
// loads that stop at the last index, so no byte past the block's last source
// pixel is read. Other blocks take the plain form. The last partial block runs
// the same way with its lanes masked.

// 1-byte pixels, 32 a block out of at most 128 source bytes: a word permute
// over two registers takes the word holding each wanted byte, a variable shift
// brings that byte down, and a narrowing store writes the 32 bytes.
void GatherC1(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  const __m512i one = _mm512_set1_epi16(1);
  for (int x = 0; x < width; x += 32) {
    const int n = width - x < 32 ? width - x : 32;
    const int32_t base = index[x];
    const __m512i b = _mm512_set1_epi32(base);
    // Lanes past the end repeat the first index.
    const __m512i r0 = _mm512_sub_epi32(_mm512_mask_loadu_epi32(b, First16(n), index + x), b);
    const __m512i r1 =
        _mm512_sub_epi32(_mm512_mask_loadu_epi32(b, First16(n - 16), index + x + 16), b);
    const int64_t span = static_cast<int64_t>(index[x + n - 1]) - base;
    const __m512i top = _mm512_set1_epi32(static_cast<int32_t>(span));
    if (span < 0 || span >= 128 ||
        (_mm512_cmpgt_epu32_mask(r0, top) | _mm512_cmpgt_epu32_mask(r1, top)) != 0) {
      PlainKernels().gatherC1(src, index + x, dst + x, n);
      continue;
    }
    const int bytes = static_cast<int>(span) + 1;
    const uint8_t* s = src + base;
    const __m512i lo = _mm512_maskz_loadu_epi8(First64(bytes), s);
    const __m512i hi = _mm512_maskz_loadu_epi8(First64(bytes - 64), s + 64);
    const __m512i r = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi32_epi16(r0)),
                                         _mm512_cvtepi32_epi16(r1), 1);
    const __m512i w = _mm512_permutex2var_epi16(lo, _mm512_srli_epi16(r, 1), hi);
    const __m512i v = _mm512_srlv_epi16(w, _mm512_slli_epi16(_mm512_and_si512(r, one), 3));
    _mm512_mask_cvtepi16_storeu_epi8(dst + x, static_cast<__mmask32>(First64(n)), v);
  }
}

// 4-byte pixels, 16 a block out of at most 64 source pixels: a dword permute
// over two registers for the first 32, over the next two for the rest. While
// the 64 pixels from a block's first index end at or before the line's last
// index (which the plain form reads too), whole registers are loaded.
inline bool SpanOk(__m512i rel, int64_t span, int64_t limit) {
  return span >= 0 && span < limit &&
         _mm512_cmpgt_epu32_mask(rel, _mm512_set1_epi32(static_cast<int32_t>(span))) == 0;
}

void GatherC4(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  if (width < 1) return;
  const __m512i k32 = _mm512_set1_epi32(32);
  const int64_t whole = static_cast<int64_t>(index[width - 1]) - 63;  // last base loaded whole
  int x = 0;
  for (; x + 16 <= width; x += 16) {
    const int32_t base = index[x];
    const __m512i b = _mm512_set1_epi32(base);
    const __m512i r = _mm512_sub_epi32(_mm512_loadu_si512(index + x), b);
    if (base < 0 || base > whole || !SpanOk(r, static_cast<int64_t>(index[x + 15]) - base, 64))
      break;
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(base);
    const __m512i nearPart =
        _mm512_permutex2var_epi32(_mm512_loadu_si512(s), r, _mm512_loadu_si512(s + 64));
    const __m512i farPart =
        _mm512_permutex2var_epi32(_mm512_loadu_si512(s + 128), r, _mm512_loadu_si512(s + 192));
    _mm512_storeu_si512(
        dst + 4 * x, _mm512_mask_blend_epi32(_mm512_cmpge_epi32_mask(r, k32), nearPart, farPart));
  }
  for (; x < width; x += 16) {
    const int n = width - x < 16 ? width - x : 16;
    const __mmask16 lanes = First16(n);
    const int32_t base = index[x];
    const __m512i b = _mm512_set1_epi32(base);
    // Lanes past the end repeat the first index.
    const __m512i r = _mm512_sub_epi32(_mm512_mask_loadu_epi32(b, lanes, index + x), b);
    const int64_t span = static_cast<int64_t>(index[x + n - 1]) - base;
    if (!SpanOk(r, span, 64)) {
      PlainKernels().gatherC4(src, index + x, dst + 4 * x, n);
      continue;
    }
    const int pixels = static_cast<int>(span) + 1;
    const uint8_t* s = src + 4 * static_cast<ptrdiff_t>(base);
    __m512i v = _mm512_permutex2var_epi32(_mm512_maskz_loadu_epi32(First16(pixels), s), r,
                                          _mm512_maskz_loadu_epi32(First16(pixels - 16), s + 64));
    if (pixels > 32) {
      const __m512i far =
          _mm512_permutex2var_epi32(_mm512_maskz_loadu_epi32(First16(pixels - 32), s + 128), r,
                                    _mm512_maskz_loadu_epi32(First16(pixels - 48), s + 192));
      v = _mm512_mask_blend_epi32(_mm512_cmpge_epi32_mask(r, k32), v, far);
    }
    _mm512_mask_storeu_epi32(dst + 4 * x, lanes, v);
  }
}

}  // namespace

namespace {

void InstallResize(Kernels* k, Avx512ResizeBody body) {
  switch (body) {
    case Avx512ResizeBody::kDotPermute:
      k->filterVertical = avx512::FilterVerticalPicked;
      break;
    case Avx512ResizeBody::kDot:
      k->filterVertical = avx512::FilterVerticalDot;
      break;
    default:
      k->filterVertical = avx512::FilterVerticalBase;
      break;
  }
  k->filterHorizontalC1 =
      body == Avx512ResizeBody::kBase ? avx512::FilterHorizontalC1 : avx512::FilterHorizontalC1Dot;
  k->filterHorizontalC3 = avx512::FilterHorizontalC3;
  k->filterHorizontalC4 = avx512::FilterHorizontalC4;
  k->gatherC1 = GatherC1;
  k->gatherC4 = GatherC4;
}

}  // namespace

Kernels Avx512ResizeForms(Avx512ResizeBody body) {
  Kernels k = KernelsFor(SimdLevel::kAvx512);
  InstallResize(&k, body);
  return k;
}

Avx512ResizeBody Avx512ResizeBodyHere() {
  // The tables may be built during static initialisation, before the
  // processor model would otherwise be read.
  __builtin_cpu_init();
  if (__builtin_cpu_supports("avx512vnni") == 0) return Avx512ResizeBody::kBase;
  if (__builtin_cpu_supports("avx512vbmi") == 0) return Avx512ResizeBody::kDot;
  return Avx512ResizeBody::kDotPermute;
}

void InstallAvx512ResizeKernels(Kernels* k) { InstallResize(k, Avx512ResizeBodyHere()); }

}  // namespace ipp
}  // namespace orv
