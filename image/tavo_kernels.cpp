// Plain row kernels of the own picture scaler. These define the bytes that
// every processor form must give.
#include "image/tavo_kernels.h"

#include <cstring>

namespace orv {
namespace tavo {

namespace {

inline int Sample(const uint8_t* p, bool chroma) { return chroma ? p[0] - 128 : p[0]; }

inline uint8_t Mean(int a, int b, bool chroma) {
  if (chroma) return static_cast<uint8_t>(128 + (a + b - 256) / 2);  // toward zero
  return static_cast<uint8_t>((a + b) >> 1);
}

void PlainTapRow(const uint8_t* src, uint8_t* dst, const TapTable& table, const Post& post) {
  const bool chroma = post.sign == Sign::kSigned;
  for (int i = table.simdBegin; i < table.simdEnd; ++i) {
    dst[i] = Finish(TapSum(src, table, i, chroma), post, chroma);
  }
}

void PlainTapRows(const uint8_t* const* rows, const int32_t* weight, int count, uint8_t* dst,
                  int width, const Post& post) {
  TapRowsRange(rows, weight, count, dst, 0, width, post);
}

}  // namespace

void TapRowsRange(const uint8_t* const* rows, const int32_t* weight, int count, uint8_t* dst,
                  int begin, int end, const Post& post) {
  for (int x = begin; x < end; ++x) {
    const bool chroma = IsChroma(post.sign, x);
    const int bias = chroma ? 128 : 0;
    int32_t sum = 0;
    for (int k = 0; k < count; ++k) sum += weight[k] * (rows[k][x] - bias);
    dst[x] = Finish(sum, post, chroma);
  }
}

int32_t TapSum(const uint8_t* src, const TapTable& table, int i, bool chroma) {
  const uint8_t* s = src + table.start[i];
  const int32_t* w =
      table.packed + (static_cast<size_t>(i / kTapBlock) * table.taps) * kTapBlock + i % kTapBlock;
  int32_t sum = 0;
  for (int k = 0; k < table.taps; ++k) {
    sum += UnpackWeight(w[static_cast<size_t>(k) * kTapBlock]) * Sample(s + k, chroma);
  }
  return sum;
}

void HalveRow(const uint8_t* src, uint8_t* dst, int n) {
  for (int i = 0; i < n; ++i) dst[i] = static_cast<uint8_t>((src[2 * i] + src[2 * i + 1]) >> 1);
}

void DoubleRow(const uint8_t* src, uint8_t* dst, int srcLength, bool chroma) {
  for (int i = 0; i + 1 < srcLength; ++i) {
    dst[2 * i] = src[i];
    dst[2 * i + 1] = Mean(src[i], src[i + 1], chroma);
  }
  dst[2 * srcLength - 2] = src[srcLength - 1];
  dst[2 * srcLength - 1] = src[srcLength - 1];
}

void AreaRow(const uint8_t* src, uint8_t* dst, int dstLength, uint32_t gridP, uint32_t gridQ,
             const Post& post) {
  const bool chroma = post.sign == Sign::kSigned;
  const int32_t p = static_cast<int32_t>(gridP);
  const int32_t q = static_cast<int32_t>(gridQ);
  int32_t carry = 0;  // what is left of s[j] for this output, then what this output has used
  const uint8_t* s = src;
  for (int i = 0; i < dstLength; ++i) {
    int32_t sum = 0;
    if (carry > 0) {
      sum = Sample(s, chroma) * carry;
      ++s;
    }
    while (carry + p <= q) {
      sum += Sample(s, chroma) * p;
      ++s;
      carry += p;
    }
    if (carry < q) {  // s[j] is shared with the next output
      sum += Sample(s, chroma) * (q - carry);
      carry += p;
    }
    carry -= q;
    dst[i] = Finish(sum, post, chroma);
  }
}

uint8_t LinearSample(int a, int b, double t, bool chroma) {
  const int bias = chroma ? 128 : 0;
  const double v = (1.0 - t) * (a - bias) + t * (b - bias) + 0.5;
  return static_cast<uint8_t>(static_cast<int>(v) + bias);  // the cast cuts toward zero
}

double CubicPosition(int i, int srcLength, int dstLength) {
  return static_cast<double>(i) * static_cast<double>(srcLength - 1) /
         static_cast<double>(dstLength - 1);
}

void CubicRow(const uint8_t* src, uint8_t* dst, int begin, int end, const CubicTable& table,
              bool chroma) {
  const int last = table.srcLength - 1;
  const Post post{Norm::kCubic, chroma ? Sign::kSigned : Sign::kUnsigned, 0};
  for (int i = begin; i < end; ++i) {
    const int idx = table.index[i];
    if (idx >= last) {
      dst[i] = src[last];
    } else if (idx < 1 || idx == last - 1) {
      const double t = CubicPosition(i, table.srcLength, table.dstLength) - idx;
      dst[i] = LinearSample(src[idx], src[idx + 1], t, chroma);
    } else {
      const int32_t* w = table.weight + 4 * static_cast<size_t>(i);
      const uint8_t* s = src + idx - 1;
      const int32_t sum = w[0] * Sample(s, chroma) + w[1] * Sample(s + 1, chroma) +
                          w[2] * Sample(s + 2, chroma) + w[3] * Sample(s + 3, chroma);
      dst[i] = Finish(sum, post, chroma);
    }
  }
}

void MeanRows(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, Sign sign) {
  for (int x = 0; x < width; ++x) dst[x] = Mean(a[x], b[x], IsChroma(sign, x));
}

void LinearRows(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, double t, Sign sign) {
  for (int x = 0; x < width; ++x) dst[x] = LinearSample(a[x], b[x], t, IsChroma(sign, x));
}

const Kernels& PlainKernels() {
  static const Kernels kernels{PlainTapRow, PlainTapRows, MeanRows, HalveRow, 1, "plain"};
  return kernels;
}

const Kernels& KernelsFor(SimdLevel level) {
#if ORV_X86_SIMD
  if (level >= SimdLevel::kAvx2) return Avx2Kernels();
  if (level >= SimdLevel::kSse2) return Sse2Kernels();
#endif
  (void)level;
  return PlainKernels();
}

}  // namespace tavo
}  // namespace orv
