// Row kernels of the own picture scaler.
//
// A kernel takes source rows, a destination row, a length and its
// coefficients; it knows nothing of steps, fields, margins or trims, which
// live in the plane walkers of tavo_resize.cpp. Every processor form gives
// the bytes of the plain form: the sums are exact integers, so only the order
// of additions differs, never the result.
//
// Samples are bytes. Luma and 4:2:0 chroma are unsigned. The chroma of the
// packed 4:2:2 engine is signed around 128: it enters the sums as c - 128 and
// leaves clamped to -128..127, plus 128.
#ifndef ORV_IMAGE_TAVO_KERNELS_H_
#define ORV_IMAGE_TAVO_KERNELS_H_

#include <cstddef>
#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {
namespace tavo {

// How the samples of a row are read.
enum class Sign : uint8_t {
  kUnsigned,     // every byte 0..255
  kSigned,       // every byte is a chroma sample around 128
  kInterleaved,  // packed Y0 U Y1 V: even bytes unsigned, odd bytes signed
};

// How a sum becomes a byte.
enum class Norm : uint8_t {
  // 16.16 weights: (sum + 0x8000) >> 16, clamped to the byte (or to -128..127
  // plus 128 for signed samples).
  kCubic,
  // Area weighting of a plane: (sum x R) >> 32 with R = floor(2^32 / Q), a
  // reciprocal rounded down, so a flat area may lose one level.
  kAreaPlane,
  // Area weighting of the packed engine: (sum x R) >> 20 with R = ceil(2^20 /
  // Q), rounded up, so a flat area keeps its level. Luma saturates at 255: for
  // Q above 4113 the rounded-up reciprocal could otherwise carry a full-scale
  // area past the byte, and a picture must not wrap from white to black.
  kAreaPacked,
};

struct Post {
  Norm norm;
  Sign sign;
  uint32_t reciprocal;  // R of the area norms
};

// The byte of one sum. `chroma` selects the signed rules.
inline uint8_t Finish(int32_t sum, const Post& post, bool chroma) {
  switch (post.norm) {
    case Norm::kCubic: {
      int32_t acc = sum + 0x8000;
      if (chroma) {
        if (acc < -0x800000) acc = -0x800000;
        if (acc > 0x7F0000) acc = 0x7F0000;
        return static_cast<uint8_t>((acc >> 16) + 128);
      }
      if (acc < 0) acc = 0;
      if (acc > 0xFF0000) acc = 0xFF0000;
      return static_cast<uint8_t>(acc >> 16);
    }
    case Norm::kAreaPlane:
      return static_cast<uint8_t>(
          (static_cast<uint64_t>(static_cast<uint32_t>(sum)) * post.reciprocal) >> 32);
    case Norm::kAreaPacked: {
      int64_t v = (static_cast<int64_t>(sum) * post.reciprocal) >> 20;
      if (chroma) {
        if (v < -128) v = -128;
        if (v > 127) v = 127;
        return static_cast<uint8_t>(v + 128);
      }
      return static_cast<uint8_t>(v > 255 ? 255 : v);
    }
  }
  return 0;
}

// Whether byte `x` of a row follows the signed rules.
inline bool IsChroma(Sign sign, int x) {
  return sign == Sign::kSigned || (sign == Sign::kInterleaved && (x & 1));
}

// A weight split for 16-bit multiply-add: w = lo + 128 x hi, lo in 0..127, so
// a sample pair (s, s << 7) times (lo, hi) gives s x w in one 32-bit lane for
// every weight between -2^22 and 2^22.
inline int32_t PackWeight(int32_t w) {
  return static_cast<int32_t>((static_cast<uint32_t>(w) & 127u) |
                              (static_cast<uint32_t>(w >> 7) << 16));
}
inline int32_t UnpackWeight(int32_t packed) {
  return static_cast<int32_t>(packed & 0xFFFF) + 128 * (packed >> 16);
}

// Outputs are grouped in blocks of this many for the processor forms.
constexpr int kTapBlock = 8;

// A horizontal tap table: output i reads `taps` samples from start[i] on, with
// the weights packed[((i / kTapBlock) x taps + k) x kTapBlock + i % kTapBlock].
// Every read stays inside the source line. Outputs [simdBegin, simdEnd) are
// plain tap sums; the others are left to the plain form of the pass.
//
// Short area spans (four taps, weights below 128) also have a byte-shuffle
// form: for each group of four outputs g < groups, 16 source bytes from
// groupBase[g] on, rearranged by groupShuffle[16g..] into four runs of four and
// weighed by the bytes groupWeight[16g..]. Every weight of an output sums to
// weightSum there, which turns an unsigned sum into the signed one.
struct TapTable {
  int taps;
  int simdBegin;
  int simdEnd;
  const int32_t* start;
  const int32_t* packed;
  int groups;
  int32_t weightSum;
  const int32_t* groupBase;
  const uint8_t* groupShuffle;
  const int8_t* groupWeight;
  // Four-tap area tables with weights below 2^15 also hold them as 16-bit
  // values, four per output in order (null otherwise).
  const int16_t* weight16;
  // Four-tap cubic tables also have a 16-bit shuffle form: groups of eight
  // outputs from wideFirst on, each reading 16 bytes from wideBase[g], widened
  // by wideShuffle[64g..] (eight bytes an output: offsets, each followed by a
  // zeroing index) and weighed by the split weights wideLo / wideHi (PackWeight's
  // two halves, four an output).
  int wideFirst;
  int wideGroups;
  const int32_t* wideBase;
  const uint8_t* wideShuffle;
  const int16_t* wideLo;
  const int16_t* wideHi;
};

// Sum of one output of a tap table, read back from the packed weights.
int32_t TapSum(const uint8_t* src, const TapTable& table, int i, bool chroma);

// Columns [begin, end) of a vertical tap sum: the plain form, and the tail of
// the processor forms.
void TapRowsRange(const uint8_t* const* rows, const int32_t* weight, int count, uint8_t* dst,
                  int begin, int end, const Post& post);

// ---- Plain row kernels ----------------------------------------------------

// out[i] = (s[2i] + s[2i+1]) >> 1 for i < n.
void HalveRow(const uint8_t* src, uint8_t* dst, int n);
// out[2i] = s[i], out[2i+1] = mean of s[i] and s[i+1]; the last two are s[L-1].
// The mean is (a + b) >> 1, or for signed samples 128 + (a + b - 256) / 2
// toward zero.
void DoubleRow(const uint8_t* src, uint8_t* dst, int srcLength, bool chroma);
// Area weighting by the carry walk over the common grid: P and Q are the
// lengths of a source and an output sample on the grid.
void AreaRow(const uint8_t* src, uint8_t* dst, int dstLength, uint32_t gridP, uint32_t gridQ,
             const Post& post);
// The two-point rows beside the edges: (1 - t) a + t b + 0.5 cut toward zero,
// in double; signed samples enter as c - 128 and get 128 back afterwards.
uint8_t LinearSample(int a, int b, double t, bool chroma);

// The table of a cubic pass, built once: for output i, index[i] is the integer
// part of i (L - 1) / (N - 1) and weight[4i..4i+3] the four 16.16 Lagrange
// weights of samples index - 1 .. index + 2.
struct CubicTable {
  int srcLength;
  int dstLength;
  const int32_t* index;
  const int32_t* weight;
};

// The position i (L - 1) / (N - 1) of output i on the source, in double.
double CubicPosition(int i, int srcLength, int dstLength);
// Outputs [begin, end) of a cubic row: linear beside the edges, the last
// sample copied, four taps in between.
void CubicRow(const uint8_t* src, uint8_t* dst, int begin, int end, const CubicTable& table,
              bool chroma);

// Mean of two rows, byte by byte, by the rules of DoubleRow.
void MeanRows(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, Sign sign);
// Linear blend of two rows by LinearSample.
void LinearRows(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, double t, Sign sign);

// ---- Forms chosen by processor --------------------------------------------

// The kernels that have processor forms.
struct Kernels {
  // dst[i] for i in [table.simdBegin, table.simdEnd): the sum of the tap table.
  void (*tapRow)(const uint8_t* src, uint8_t* dst, const TapTable& table, const Post& post);
  // dst[x] = Finish(sum over k of weight[k] x rows[k][x]) for x < width.
  void (*tapRows)(const uint8_t* const* rows, const int32_t* weight, int count, uint8_t* dst,
                  int width, const Post& post);
  // Mean of two rows.
  void (*meanRows)(const uint8_t* a, const uint8_t* b, uint8_t* dst, int width, Sign sign);
  // Halving of a row.
  void (*halveRow)(const uint8_t* src, uint8_t* dst, int n);
  // The number of outputs per processor block (1 for the plain form).
  int lanes;
  const char* name;
};

// The forms for a level: kSse2, kSsse3 and kSse41 share the SSE2 forms,
// kAvx512 uses the AVX2 forms. kPlain (and any level in a build without x86
// SIMD) gives the plain forms.
const Kernels& KernelsFor(SimdLevel level);

const Kernels& PlainKernels();
#if ORV_X86_SIMD
const Kernels& Sse2Kernels();
const Kernels& Avx2Kernels();
#endif

}  // namespace tavo
}  // namespace orv

#endif  // ORV_IMAGE_TAVO_KERNELS_H_
