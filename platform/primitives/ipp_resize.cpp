#include "platform/primitives/ipp_resize.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "platform/primitives/ipp_check.h"
#include "platform/primitives/ipp_resize_plan.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;

bool InterpolationOk(int i) {
  return i == IPPI_INTER_NN || i == IPPI_INTER_LINEAR || i == IPPI_INTER_CUBIC ||
         i == IPPI_INTER_SUPER;
}

bool FactorOk(double f) { return std::isfinite(f) && f > 0.0; }

}  // namespace

namespace forms {

IppStatus Resize(const Kernels& k, int channels, bool centered, const Ipp8u* src, IppiSize srcSize,
                 int srcStep, IppiRect roi, Ipp8u* dst, int dstStep, IppiSize dstSize,
                 double xFactor, double yFactor, double xCenter, double yCenter,
                 int interpolation) {
  if (src == nullptr || dst == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(srcSize) || !check::SizeOk(dstSize) || roi.width < 1 || roi.height < 1)
    return ippStsSizeErr;
  if (!check::StepOk(srcStep, srcSize.width, channels) ||
      !check::StepOk(dstStep, dstSize.width, channels))
    return ippStsStepErr;
  if (!FactorOk(xFactor) || !FactorOk(yFactor)) return ippStsResizeFactorErr;
  if (centered && (!std::isfinite(xCenter) || !std::isfinite(yCenter)))
    return ippStsResizeFactorErr;
  if (!InterpolationOk(interpolation)) return ippStsInterpolationErr;

  // The region clipped to the picture, in 64 bits so no corner can wrap.
  const int64_t x0 = std::max<int64_t>(roi.x, 0);
  const int64_t y0 = std::max<int64_t>(roi.y, 0);
  const int64_t x1 = std::min<int64_t>(static_cast<int64_t>(roi.x) + roi.width, srcSize.width);
  const int64_t y1 = std::min<int64_t>(static_cast<int64_t>(roi.y) + roi.height, srcSize.height);
  if (x0 >= x1 || y0 >= y1) return ippStsWrongIntersectROI;

  const AxisPlan* planX = nullptr;
  const AxisPlan* planY = nullptr;
  // The Q6 line and the row pointers of the vertical pass, kept by the thread
  // from call to call (at most 512 KB for the widest line), so that frame
  // after frame allocates nothing.
  thread_local std::vector<int16_t> line;
  thread_local std::vector<const Ipp8u*> rows;
  try {
    planX = &CachedAxisPlan(dstSize.width, xFactor, roi.x + (centered ? xCenter : 0.0),
                            centered ? dstSize.width / 2.0 : 0.0, static_cast<int>(x0),
                            static_cast<int>(x1), interpolation);
    planY = &CachedAxisPlan(dstSize.height, yFactor, roi.y + (centered ? yCenter : 0.0),
                            centered ? dstSize.height / 2.0 : 0.0, static_cast<int>(y0),
                            static_cast<int>(y1), interpolation);
    if (planX->count == 0 || planY->count == 0) return ippStsWrongIntersectROI;
    if (interpolation != IPPI_INTER_NN) {
      // Room past the last sample for processor forms that read whole vectors
      // (what it holds is read at weight zero only).
      const size_t samples = static_cast<size_t>(x1 - x0) * channels + 16;
      if (line.size() < samples) line.resize(samples);
      if (rows.size() < static_cast<size_t>(planY->taps))
        rows.resize(static_cast<size_t>(planY->taps));
    }
  } catch (const std::bad_alloc&) {
    return ippStsMemAllocErr;
  }
  const AxisPlan& px = *planX;
  const AxisPlan& py = *planY;

  const ptrdiff_t dstOffset = static_cast<ptrdiff_t>(px.first) * channels;
  if (interpolation == IPPI_INTER_NN) {
    auto gather = channels == 1 ? k.gatherC1 : (channels == 3 ? k.gatherC3 : k.gatherC4);
    const size_t rowBytes = static_cast<size_t>(px.count) * channels;
    const Ipp8u* previous = nullptr;
    for (int j = 0; j < py.count; ++j) {
      Ipp8u* d = Line(dst, dstStep, py.first + j) + dstOffset;
      // A destination row with the same source row as the one above is a copy of it.
      if (j > 0 && py.start[static_cast<size_t>(j)] == py.start[static_cast<size_t>(j) - 1])
        std::memcpy(d, previous, rowBytes);
      else
        gather(Line(src, srcStep, py.start[static_cast<size_t>(j)]), px.start.data(), d, px.count);
      previous = d;
    }
    return ippStsNoErr;
  }

  auto horizontal = channels == 1 ? k.filterHorizontalC1
                                  : (channels == 3 ? k.filterHorizontalC3 : k.filterHorizontalC4);
  const ptrdiff_t srcOffset = static_cast<ptrdiff_t>(x0) * channels;
  const int bytes = static_cast<int>(x1 - x0) * channels;
  for (int j = 0; j < py.count; ++j) {
    // Taps of zero weight at either end add nothing (a plan pads the rows
    // whose footprint is shorter than its widest), so the vertical pass gets
    // only the rows from the first weighted one to the last.
    const int16_t* coef = &py.coef[static_cast<size_t>(j) * py.taps];
    int lo = 0, hi = py.taps;
    while (hi - lo > 1 && coef[hi - 1] == 0) --hi;
    while (hi - lo > 1 && coef[lo] == 0) ++lo;
    const int s0 = py.start[static_cast<size_t>(j)] + lo;
    for (int t = 0; t < hi - lo; ++t)
      rows[static_cast<size_t>(t)] = Line(src, srcStep, s0 + t) + srcOffset;
    k.filterVertical(rows.data(), coef + lo, hi - lo, line.data(), bytes);
    // The line begins at the clipped region's first column (x0, the plan's regionLo).
    horizontal(line.data(), px.startInRegion.data(), px.coef.data(), px.taps,
               Line(dst, dstStep, py.first + j) + dstOffset, px.count);
  }
  return ippStsNoErr;
}

}  // namespace forms

#define ORV_RESIZE(C)                                                                             \
  IppStatus ippiResize_8u_C##C##R(const Ipp8u* s, IppiSize ss, int sStep, IppiRect roi, Ipp8u* d, \
                                  int dStep, IppiSize ds, double xf, double yf,                   \
                                  int interpolation) {                                            \
    return forms::Resize(ActiveKernels(), C, false, s, ss, sStep, roi, d, dStep, ds, xf, yf, 0.0, \
                         0.0, interpolation);                                                     \
  }

ORV_RESIZE(1)
ORV_RESIZE(3)
ORV_RESIZE(4)

#undef ORV_RESIZE

IppStatus ippiResizeCenter_8u_C1R(const Ipp8u* s, IppiSize ss, int sStep, IppiRect roi, Ipp8u* d,
                                  int dStep, IppiSize ds, double xf, double yf, double xc,
                                  double yc, int interpolation) {
  return forms::Resize(ActiveKernels(), 1, true, s, ss, sStep, roi, d, dStep, ds, xf, yf, xc, yc,
                       interpolation);
}

}  // namespace ipp
}  // namespace orv
