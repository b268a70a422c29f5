// Plain form of the mask copy's pixel test, and the choice of forms.
#include "image/mask_copy_rows.h"

#include <cstdlib>

namespace orv {
namespace image {
namespace {

// Luma of a B G R pixel as the mask copy compares it.
inline int Luma(const uint8_t* p) { return (59 * p[1] + 30 * p[2] + 11 * p[0]) / 100; }

template <int kKind>
inline int Value(const uint8_t* line, int k) {
  switch (kKind) {
    case kMaskPlane:
      return line[k];
    case kMaskYuy2:
      return line[2 * k];
    case kMaskBgr:
      return Luma(line + 3 * k);
    default:
      return Luma(line + 4 * k);
  }
}

template <int kKind>
inline void Restore(uint8_t* dst, const uint8_t* src, int k) {
  switch (kKind) {
    case kMaskPlane:
      dst[k] = src[k];
      break;
    case kMaskYuy2:
      dst[2 * k] = src[2 * k];
      break;
    case kMaskBgr:
    case kMaskBgrx: {
      const int bytes = kKind == kMaskBgr ? 3 : 4;
      dst[bytes * k] = src[bytes * k];
      dst[bytes * k + 1] = src[bytes * k + 1];
      dst[bytes * k + 2] = src[bytes * k + 2];
      break;
    }
  }
}

template <int kKind>
void RowRange(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
              uint8_t* d0, uint8_t* d1, int begin, int width, int color1, int color2,
              uint32_t* sums) {
  uint32_t s1 = 0;
  uint32_t s2 = 0;
  for (int k = begin; k < width; ++k) {
    const int va0 = Value<kKind>(a0, k);
    const int va1 = Value<kKind>(a1, k);
    if (std::abs(va0 - Value<kKind>(b0, k)) < 5 && std::abs(va1 - Value<kKind>(b1, k)) < 5) {
      if (d0 != nullptr) Restore<kKind>(d0, a0, k);
      if (d1 != nullptr) Restore<kKind>(d1, a1, k);
    }
    s1 += static_cast<uint32_t>(std::abs(va0 - color1));
    s2 += static_cast<uint32_t>(std::abs(va1 - color2));
  }
  if (sums != nullptr) {
    sums[0] += s1;
    sums[1] += s2;
  }
}

template <int kKind>
void RowPlain(const uint8_t* a0, const uint8_t* a1, const uint8_t* b0, const uint8_t* b1,
              uint8_t* d0, uint8_t* d1, int width, int color1, int color2, uint32_t* sums) {
  if (sums != nullptr) sums[0] = sums[1] = 0;
  RowRange<kKind>(a0, a1, b0, b1, d0, d1, 0, width, color1, color2, sums);
}

const MaskRows kPlain = {
    {RowPlain<kMaskPlane>, RowPlain<kMaskYuy2>, RowPlain<kMaskBgr>, RowPlain<kMaskBgrx>}};
#if ORV_X86_SIMD
const MaskRows kSse2 = {{MaskRowPlaneSse2, MaskRowYuy2Sse2, RowPlain<kMaskBgr>, MaskRowBgrxSse2}};
const MaskRows kSsse3 = {{MaskRowPlaneSse2, MaskRowYuy2Sse2, MaskRowBgrSsse3, MaskRowBgrxSse2}};
const MaskRows kAvx2 = {{MaskRowPlaneAvx2, MaskRowYuy2Avx2, MaskRowBgrSsse3, MaskRowBgrxAvx2}};
#endif

}  // namespace

void MaskRowTail(MaskPixelKind kind, const uint8_t* a0, const uint8_t* a1, const uint8_t* b0,
                 const uint8_t* b1, uint8_t* d0, uint8_t* d1, int begin, int width, int color1,
                 int color2, uint32_t* sums) {
  switch (kind) {
    case kMaskPlane:
      RowRange<kMaskPlane>(a0, a1, b0, b1, d0, d1, begin, width, color1, color2, sums);
      break;
    case kMaskYuy2:
      RowRange<kMaskYuy2>(a0, a1, b0, b1, d0, d1, begin, width, color1, color2, sums);
      break;
    case kMaskBgr:
      RowRange<kMaskBgr>(a0, a1, b0, b1, d0, d1, begin, width, color1, color2, sums);
      break;
    case kMaskBgrx:
      RowRange<kMaskBgrx>(a0, a1, b0, b1, d0, d1, begin, width, color1, color2, sums);
      break;
  }
}

const MaskRows& MaskRowsFor(SimdLevel level) {
#if ORV_X86_SIMD
  if (level >= SimdLevel::kAvx2) return kAvx2;
  if (level >= SimdLevel::kSsse3) return kSsse3;
  if (level >= SimdLevel::kSse2) return kSse2;
#else
  (void)level;
#endif
  return kPlain;
}

}  // namespace image
}  // namespace orv
