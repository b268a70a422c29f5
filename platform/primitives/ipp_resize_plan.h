// Filter design of the resizers, one axis at a time: which destination
// pixels are written, and for each of them the first source sample and the
// Q14 weights of its taps (see ipp_resize.h for the geometry and arithmetic).
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_PLAN_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_PLAN_H_

#include <cstdint>
#include <vector>

namespace orv {
namespace ipp {

constexpr int kWeightBits = 14;
constexpr int kWeightOne = 1 << kWeightBits;

struct AxisPlan {
  int first = 0;               // first destination pixel written
  int count = 0;               // destination pixels written, consecutive
  int taps = 0;                // weights per destination pixel
  std::vector<int32_t> start;  // per written pixel: absolute index of its first tap
  // The same counted from regionLo, for passes over a line that begins at the
  // region (filtered plans only; empty for nearest neighbour).
  std::vector<int32_t> startInRegion;
  std::vector<int16_t> coef;  // count x taps weights, Q14, each group summing to 16384
};

// Destination pixel d (0 <= d < dstLength) maps to the continuous source
// position u = origin + (d + 0.5 - dstCentre) / factor. Source samples exist
// for indices [regionLo, regionHi). interpolation is IPPI_INTER_*.
// Throws std::bad_alloc when memory fails.
void BuildAxisPlan(int dstLength, double factor, double origin, double dstCentre, int regionLo,
                   int regionHi, int interpolation, AxisPlan* plan);

// The plan BuildAxisPlan makes for these arguments, kept in a small cache of
// the calling thread's most recent plans, so that a caller resizing frame
// after frame with one geometry builds its plans once. The reference stays
// valid across the next call on this thread (so an x and a y plan can be held
// together) and no longer. Throws std::bad_alloc when memory fails.
const AxisPlan& CachedAxisPlan(int dstLength, double factor, double origin, double dstCentre,
                               int regionLo, int regionHi, int interpolation);

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_PLAN_H_
