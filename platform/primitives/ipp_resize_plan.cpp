#include "platform/primitives/ipp_resize_plan.h"

#include <algorithm>
#include <cmath>

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
  // Weights per destination pixel, over absolute indices, in double.
  std::vector<std::vector<std::pair<int, double>>> weights(static_cast<size_t>(count));
  int taps = 1;
  for (int i = 0; i < count; ++i) {
    const int d = first + i;
    const double u = origin + (d + 0.5 - dstCentre) / factor;
    std::vector<std::pair<int, double>>& w = weights[static_cast<size_t>(i)];
    auto add = [&](int index, double weight) {
      index = std::min(std::max(index, regionLo), regionHi - 1);
      for (auto& e : w)
        if (e.first == index) {
          e.second += weight;
          return;
        }
      w.emplace_back(index, weight);
    };
    if (interpolation == IPPI_INTER_NN) {
      add(static_cast<int>(std::floor(u)), 1.0);
    } else if (interpolation == IPPI_INTER_LINEAR) {
      const double p = u - 0.5;
      const double f = std::floor(p);
      const double t = p - f;
      add(static_cast<int>(f), 1.0 - t);
      add(static_cast<int>(f) + 1, t);
    } else if (interpolation == IPPI_INTER_CUBIC) {
      const double p = u - 0.5;
      const double f = std::floor(p);
      double cw[4];
      CubicWeights(p - f, cw);
      for (int j = 0; j < 4; ++j) add(static_cast<int>(f) + j - 1, cw[j]);
    } else {  // super sampling
      const double half = 0.5 / factor;
      const double a = std::max(u - half, lo), b = std::min(u + half, hi);
      const double len = b - a;
      if (len <= 0.0) {
        add(static_cast<int>(std::floor(u)), 1.0);
      } else {
        const int i0 = static_cast<int>(std::floor(a));
        for (int j = i0; j < b; ++j) {
          const double overlap = std::min<double>(j + 1, b) - std::max<double>(j, a);
          if (overlap > 0.0) add(j, overlap / len);
        }
      }
    }
    // Drop weights that vanish (e.g. the far cubic taps at a whole position).
    w.erase(std::remove_if(w.begin(), w.end(),
                           [](const std::pair<int, double>& e) { return e.second == 0.0; }),
            w.end());
    if (w.empty())
      w.emplace_back(std::min(std::max(static_cast<int>(std::floor(u)), regionLo), regionHi - 1),
                     1.0);
    std::sort(w.begin(), w.end());
    taps = std::max(taps, w.back().first - w.front().first + 1);
  }
  plan->first = first;
  plan->count = count;
  plan->taps = taps;
  plan->start.resize(static_cast<size_t>(count));
  plan->coef.assign(static_cast<size_t>(count) * taps, 0);
  for (int i = 0; i < count; ++i) {
    const std::vector<std::pair<int, double>>& w = weights[static_cast<size_t>(i)];
    const int s = std::min(w.front().first, regionHi - taps);
    plan->start[static_cast<size_t>(i)] = s;
    int16_t* c = &plan->coef[static_cast<size_t>(i) * taps];
    int sum = 0, big = 0;
    for (const auto& e : w) {
      const int q = static_cast<int>(std::lround(e.second * kWeightOne));
      c[e.first - s] = static_cast<int16_t>(q);
      sum += q;
      if (std::abs(q) > std::abs(c[big])) big = e.first - s;
    }
    c[big] = static_cast<int16_t>(c[big] + (kWeightOne - sum));
  }
}

}  // namespace ipp
}  // namespace orv
