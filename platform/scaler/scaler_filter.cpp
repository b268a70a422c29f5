#include "platform/scaler/scaler_filter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace orv {
namespace vrscl {

double CubicKernel(double x) {
  const double a = -0.5;
  x = std::fabs(x);
  if (x < 1.0) return ((a + 2.0) * x - (a + 3.0)) * x * x + 1.0;
  if (x < 2.0) return ((a * x - 5.0 * a) * x + 8.0 * a) * x - 4.0 * a;
  return 0.0;
}

namespace {

// The folded, normalised weights of one destination sample, at source samples
// first .. first + weights.size() - 1 (all inside the plane).
struct Phase {
  int first = 0;
  std::vector<double> weights;
};

void DesignPhase(double centre, double stretch, int srcSize, Phase* phase) {
  const double radius = 2.0 * stretch;
  const int lo = static_cast<int>(std::floor(centre - radius)) + 1;
  const int hi = static_cast<int>(std::ceil(centre + radius)) - 1;
  auto clampIndex = [srcSize](int j) { return std::min(std::max(j, 0), srcSize - 1); };
  // Weights over the clamped span, folded onto the edge samples; the span is
  // then trimmed to its outermost non-zero weights.
  const int spanFirst = clampIndex(lo);
  std::vector<double> w(static_cast<size_t>(clampIndex(hi) - spanFirst + 1), 0.0);
  int first = srcSize;
  int last = -1;
  double sum = 0.0;
  for (int j = lo; j <= hi; ++j) {
    const double k = CubicKernel((j - centre) / stretch);
    if (k == 0.0) continue;
    const int idx = clampIndex(j);
    w[static_cast<size_t>(idx - spanFirst)] += k;
    sum += k;
    first = std::min(first, idx);
    last = std::max(last, idx);
  }
  if (last < 0 || sum == 0.0) {  // cannot happen for a cubic, kept for safety
    const int idx = clampIndex(static_cast<int>(std::lround(centre)));
    phase->first = idx;
    phase->weights.assign(1, 1.0);
    return;
  }
  phase->first = first;
  phase->weights.assign(w.begin() + (first - spanFirst), w.begin() + (last - spanFirst) + 1);
  for (double& v : phase->weights) v /= sum;
}

}  // namespace

void BuildAxisTable(int srcSize, int dstSize, int lumaSrc, int lumaDst, int align,
                    AxisTable* table) {
  table->srcSize = srcSize;
  table->dstSize = dstSize;
  table->identity = srcSize == dstSize && lumaSrc == lumaDst;
  const double ratio = static_cast<double>(lumaSrc) / lumaDst;
  const double stretch = std::max(1.0, ratio);

  std::vector<Phase> phases(static_cast<size_t>(dstSize));
  int taps = 1;
  for (int i = 0; i < dstSize; ++i) {
    const double centre = table->identity ? i : (i + 0.5) * ratio - 0.5;
    DesignPhase(centre, stretch, srcSize, &phases[static_cast<size_t>(i)]);
    taps = std::max(taps, static_cast<int>(phases[static_cast<size_t>(i)].weights.size()));
  }
  const int stride = (taps + align - 1) / align * align;
  table->taps = taps;
  table->stride = stride;
  table->start.assign(static_cast<size_t>(dstSize), 0);
  table->coefs.assign(static_cast<size_t>(dstSize) * stride, 0);

  for (int i = 0; i < dstSize; ++i) {
    const Phase& p = phases[static_cast<size_t>(i)];
    const int n = static_cast<int>(p.weights.size());
    const int start = std::min(p.first, srcSize - taps);
    table->start[static_cast<size_t>(i)] = start;
    int16_t* c = &table->coefs[static_cast<size_t>(i) * stride + (p.first - start)];
    int total = 0;
    int largest = 0;
    for (int k = 0; k < n; ++k) {
      const long q = std::lround(p.weights[static_cast<size_t>(k)] * kCoefOne);
      c[k] = static_cast<int16_t>(q);
      total += static_cast<int>(q);
      if (p.weights[static_cast<size_t>(k)] > p.weights[static_cast<size_t>(largest)]) largest = k;
    }
    c[largest] = static_cast<int16_t>(c[largest] + (kCoefOne - total));
  }
  table->paired.clear();
  if (align == kTapAlign) table->paired = PairCoefs(table->coefs.data(), dstSize, stride);
}

std::vector<int16_t> PairCoefs(const int16_t* coefs, int width, int stride) {
  const int blocks = width / 8;
  const int chunks = stride / 8;
  std::vector<int16_t> out(static_cast<size_t>(blocks) * 8 * stride);
  int16_t* o = out.data();
  for (int b = 0; b < blocks; ++b)
    for (int k = 0; k < chunks; ++k)
      for (int j = 0; j < 4; ++j)
        for (int h = 0; h < 2; ++h) {
          const int16_t* c = coefs + static_cast<ptrdiff_t>(8 * b + j + 4 * h) * stride + 8 * k;
          for (int t = 0; t < 8; ++t) *o++ = c[t];
        }
  return out;
}

}  // namespace vrscl
}  // namespace orv
