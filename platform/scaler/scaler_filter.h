// Filter design of the 4:2:0 scaler: one table per axis and plane, designed in
// double and quantised once at set-up, shared by every processor form.
#ifndef ORV_PLATFORM_SCALER_SCALER_FILTER_H_
#define ORV_PLATFORM_SCALER_SCALER_FILTER_H_

#include <cstdint>
#include <vector>

namespace orv {
namespace vrscl {

constexpr int kCoefBits = 14;
constexpr int kCoefOne = 1 << kCoefBits;  // the taps of one phase sum to this
// The 16-bit work line carries six fraction bits.
constexpr int kWorkBits = 6;
constexpr int kVerticalShift = kCoefBits - kWorkBits;    // 8
constexpr int kHorizontalShift = kCoefBits + kWorkBits;  // 20
// Horizontal tap counts are padded to this multiple with zero taps, and the
// work line carries this many readable elements after its end.
constexpr int kTapAlign = 8;
constexpr int kWorkPad = 16;

// The interpolating cubic (a = -0.5) at x.
double CubicKernel(double x);

// The taps of one axis of one plane: destination sample i reads source samples
// start[i] .. start[i] + taps - 1 with the coefficients
// coefs[i * stride .. i * stride + taps - 1]; coefs beyond `taps` up to
// `stride` are zero. Every window lies inside 0 .. srcSize - 1.
struct AxisTable {
  int srcSize = 0;
  int dstSize = 0;
  int taps = 0;
  int stride = 0;
  bool identity = false;  // srcSize == dstSize: one tap of kCoefOne at i
  std::vector<int32_t> start;
  std::vector<int16_t> coefs;
  // The same coefficients regrouped for the wide horizontal forms (see
  // PairCoefs); empty for vertical tables.
  std::vector<int16_t> paired;
};

// Regroups horizontal coefficients (stride a multiple of 8) for the wide
// forms: for each whole block of 8 destination samples b and each group of 8
// taps k, four 16-coefficient rows j = 0..3 hold taps 8k..8k+7 of sample
// 8b + j followed by those of sample 8b + j + 4, so that one 256-bit load
// feeds two samples. Samples past the last whole block are not included.
std::vector<int16_t> PairCoefs(const int16_t* coefs, int width, int stride);

// Designs the table for a plane axis of srcSize -> dstSize samples whose luma
// axis goes lumaSrc -> lumaDst (equal to srcSize, dstSize for luma). `align`
// is the multiple the stride is rounded up to (1 for vertical tables).
// Throws std::bad_alloc.
void BuildAxisTable(int srcSize, int dstSize, int lumaSrc, int lumaDst, int align,
                    AxisTable* table);

}  // namespace vrscl
}  // namespace orv

#endif  // ORV_PLATFORM_SCALER_SCALER_FILTER_H_
