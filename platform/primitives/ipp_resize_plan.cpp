#include "platform/primitives/ipp_resize_plan.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {
namespace {

// Catmull-Rom weights of the samples i0 - 1 .. i0 + 2 at fraction t.
void CubicWeights(double t, double w[4]) {
  const double t2 = t * t, t3 = t2 * t;
  w[0] = 0.5 * (-t3 + 2.0 * t2 - t);
  w[1] = 0.5 * (3.0 * t3 - 5.0 * t2 + 2.0);
  w[2] = 0.5 * (-3.0 * t3 + 4.0 * t2 + t);
  w[3] = 0.5 * (t3 - t2);
}

inline double lo_d(int v) { return static_cast<double>(v); }
inline double hi_d(int v) { return static_cast<double>(v); }

}  // namespace

void BuildAxisPlan(int dstLength, double factor, double origin, double dstCentre, int regionLo,
                   int regionHi, int interpolation, AxisPlan* plan) {
  plan->first = 0;
  plan->count = 0;
  plan->taps = 0;
  plan->start.clear();
  plan->coef.clear();
  const double lo = regionLo, hi = regionHi;
  // Which destination pixels are written.
  int first = -1, last = -1;
  for (int d = 0; d < dstLength; ++d) {
    const double u = origin + (d + 0.5 - dstCentre) / factor;
    if (u >= lo && u < hi) {
      if (first < 0) first = d;
      last = d;
    }
  }
  if (first < 0) return;
  const int count = last - first + 1;
  if (interpolation == IPPI_INTER_NN) {
    // One tap of full weight: the pixel that contains u, which lies in the region.
    plan->first = first;
    plan->count = count;
    plan->taps = 1;
    plan->start.resize(static_cast<size_t>(count));
    plan->startInRegion.clear();
    plan->coef.assign(static_cast<size_t>(count) + 16, 0);
    for (int i = 0; i < count; ++i) {
      const double u = origin + (first + i + 0.5 - dstCentre) / factor;
      const int s = static_cast<int>(std::floor(u));
      plan->start[static_cast<size_t>(i)] = std::min(std::max(s, regionLo), regionHi - 1);
      plan->coef[static_cast<size_t>(i)] = kWeightOne;
    }
    return;
  }
  // Weights per destination pixel over the contiguous clamped index range
  // [loIdx[i], loIdx[i] + n[i]), in double, kept in one flat array.
  std::vector<int> loIdx(static_cast<size_t>(count)), n(static_cast<size_t>(count));
  std::vector<double> flat;
  flat.reserve(static_cast<size_t>(count) * 4);
  std::vector<size_t> at(static_cast<size_t>(count));
  int taps = 1;
  double raw[4];
  // Scratch reused from pixel to pixel, so the loop allocates nothing once warm.
  std::vector<double> wide, folded;
  for (int i = 0; i < count; ++i) {
    const int d = first + i;
    const double u = origin + (d + 0.5 - dstCentre) / factor;
    int i0, m;  // first raw index and number of raw weights
    const double* w = raw;
    if (interpolation == IPPI_INTER_LINEAR) {
      const double p = u - 0.5, f = std::floor(p), t = p - f;
      i0 = static_cast<int>(f);
      m = 2;
      raw[0] = 1.0 - t;
      raw[1] = t;
    } else if (interpolation == IPPI_INTER_CUBIC) {
      const double p = u - 0.5, f = std::floor(p);
      i0 = static_cast<int>(f) - 1;
      m = 4;
      CubicWeights(p - f, raw);
    } else {  // super sampling: the footprint clipped to the region
      const double half = 0.5 / factor;
      const double a = std::max(u - half, lo_d(regionLo)), b = std::min(u + half, hi_d(regionHi));
      const double len = b - a;
      if (len <= 0.0) {
        i0 = static_cast<int>(std::floor(u));
        m = 1;
        raw[0] = 1.0;
      } else {
        i0 = static_cast<int>(std::floor(a));
        const int i1 = static_cast<int>(std::ceil(b));
        m = std::max(1, i1 - i0);
        wide.assign(static_cast<size_t>(m), 0.0);
        for (int j = 0; j < m; ++j) {
          const double overlap = std::min<double>(i0 + j + 1, b) - std::max<double>(i0 + j, a);
          wide[static_cast<size_t>(j)] = overlap > 0.0 ? overlap / len : 0.0;
        }
        w = wide.data();
      }
    }
    // Fold indices outside the region onto its edges and trim vanishing ends.
    int a = std::min(std::max(i0, regionLo), regionHi - 1);
    int b = std::min(std::max(i0 + m - 1, regionLo), regionHi - 1);
    folded.assign(static_cast<size_t>(b - a + 1), 0.0);
    for (int j = 0; j < m; ++j) {
      const int idx = std::min(std::max(i0 + j, regionLo), regionHi - 1);
      folded[static_cast<size_t>(idx - a)] += w[j];
    }
    int f0 = 0, f1 = b - a;
    while (f0 < f1 && folded[static_cast<size_t>(f0)] == 0.0) ++f0;
    while (f1 > f0 && folded[static_cast<size_t>(f1)] == 0.0) --f1;
    loIdx[static_cast<size_t>(i)] = a + f0;
    n[static_cast<size_t>(i)] = f1 - f0 + 1;
    at[static_cast<size_t>(i)] = flat.size();
    flat.insert(flat.end(), folded.begin() + f0, folded.begin() + f1 + 1);
    taps = std::max(taps, f1 - f0 + 1);
  }
  plan->first = first;
  plan->count = count;
  plan->taps = taps;
  plan->start.resize(static_cast<size_t>(count));
  plan->startInRegion.resize(static_cast<size_t>(count));
  // Extra zeroed room so that processor forms may read a whole vector of weights.
  plan->coef.assign(static_cast<size_t>(count) * taps + 16, 0);
  for (int i = 0; i < count; ++i) {
    const size_t ii = static_cast<size_t>(i);
    const int s = std::min(loIdx[ii], regionHi - taps);
    plan->start[ii] = s;
    plan->startInRegion[ii] = s - regionLo;
    int16_t* c = &plan->coef[ii * taps];
    int sum = 0, big = loIdx[ii] - s;
    for (int j = 0; j < n[ii]; ++j) {
      const int q = static_cast<int>(std::lround(flat[at[ii] + j] * kWeightOne));
      c[loIdx[ii] - s + j] = static_cast<int16_t>(q);
      sum += q;
      if (std::abs(q) > std::abs(c[big])) big = loIdx[ii] - s + j;
    }
    c[big] = static_cast<int16_t>(c[big] + (kWeightOne - sum));
  }
}

namespace {

struct PlanKey {
  int dstLength, regionLo, regionHi, interpolation;
  double factor, origin, dstCentre;
  bool operator==(const PlanKey& o) const {
    // The doubles compare bit for bit: equal bits give equal plans.
    return dstLength == o.dstLength && regionLo == o.regionLo && regionHi == o.regionHi &&
           interpolation == o.interpolation &&
           std::memcmp(&factor, &o.factor, sizeof factor) == 0 &&
           std::memcmp(&origin, &o.origin, sizeof origin) == 0 &&
           std::memcmp(&dstCentre, &o.dstCentre, sizeof dstCentre) == 0;
  }
};

struct CachedPlan {
  bool used = false;
  uint64_t lastUse = 0;
  PlanKey key{};
  AxisPlan plan;
};

constexpr int kCachedPlans = 4;

}  // namespace

const AxisPlan& CachedAxisPlan(int dstLength, double factor, double origin, double dstCentre,
                               int regionLo, int regionHi, int interpolation) {
  thread_local CachedPlan cache[kCachedPlans];
  thread_local uint64_t clock = 0;
  const PlanKey key{dstLength, regionLo, regionHi, interpolation, factor, origin, dstCentre};
  ++clock;
  CachedPlan* oldest = &cache[0];
  for (CachedPlan& c : cache) {
    if (c.used && c.key == key) {
      c.lastUse = clock;
      return c.plan;
    }
    if (!c.used || (oldest->used && c.lastUse < oldest->lastUse)) oldest = &c;
  }
  // Built aside first, so that a failed allocation leaves the cache as it was.
  // The slot replaced is the least recently used, never the one returned by
  // the call before.
  AxisPlan fresh;
  BuildAxisPlan(dstLength, factor, origin, dstCentre, regionLo, regionHi, interpolation, &fresh);
  oldest->plan = std::move(fresh);
  oldest->key = key;
  oldest->used = true;
  oldest->lastUse = clock;
  return oldest->plan;
}

}  // namespace ipp
}  // namespace orv
