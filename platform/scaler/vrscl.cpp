#include "platform/scaler/vrscl.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"

namespace orv {
namespace vrscl {
namespace {

// The tables of one plane, and the order of its two passes.
struct PlaneTables {
  AxisTable horizontal;
  AxisTable vertical;
  // Horizontal pass first, on each source line once, into a ring of filtered
  // lines that the vertical pass reads; chosen where it does less work
  // (mostly enlargements). Otherwise the vertical pass runs first, once per
  // destination line, into the work line.
  bool horizontalFirst = false;
  bool Identity() const { return horizontal.identity && vertical.identity; }
};

// The ring of the horizontal-first order may take at most this many bytes;
// above it the vertical-first order is used whatever the cost.
constexpr double kMaxRingBytes = 16.0 * 1024 * 1024;

struct Instance {
  Kernels kernels;
  bool ready = false;
  PlaneTables luma;
  PlaneTables chroma;
  std::vector<int16_t> work;         // vertical-first: one line at source width, padded
  std::vector<uint8_t> line;         // horizontal-first: a source line, padded with zeros
  std::vector<int16_t> ring;         // horizontal-first: filtered lines, one per vertical tap
  std::vector<int> ringRow;          // the source line each ring slot holds, -1 for none
  std::vector<const int16_t*> rows;  // the ring lines of one destination line
};

bool IsSideValid(int side) { return side >= kVrsclMinSide && side <= kVrsclMaxSide; }

void BuildPlane(int srcW, int srcH, int dstW, int dstH, int lumaSrcW, int lumaSrcH, int lumaDstW,
                int lumaDstH, PlaneTables* plane) {
  BuildAxisTable(srcW, dstW, lumaSrcW, lumaDstW, kTapAlign, &plane->horizontal);
  BuildAxisTable(srcH, dstH, lumaSrcH, lumaDstH, 1, &plane->vertical);
  // Work estimates in vector operations: a vertical tap on one column costs
  // about 1, a horizontal group of 8 taps for one sample about 20.
  const AxisTable& h = plane->horizontal;
  const AxisTable& v = plane->vertical;
  const double groups = h.stride / 8.0;
  const double verticalFirst =
      static_cast<double>(srcW) * dstH * v.taps + 20.0 * dstW * dstH * groups;
  const double horizontalFirst =
      20.0 * dstW * srcH * groups + static_cast<double>(dstW) * dstH * v.taps;
  plane->horizontalFirst =
      !h.identity && horizontalFirst < verticalFirst && 2.0 * v.taps * dstW <= kMaxRingBytes;
}

void ScaleHorizontalFirst(Instance* in, const PlaneTables& t, uint8_t* dst, ptrdiff_t dstStep,
                          const uint8_t* src, ptrdiff_t srcStep) {
  const AxisTable& h = t.horizontal;
  const AxisTable& v = t.vertical;
  const int taps = v.taps;
  std::fill(in->ringRow.begin(), in->ringRow.begin() + taps, -1);
  for (int y = 0; y < v.dstSize; ++y) {
    const int first = v.start[static_cast<size_t>(y)];
    for (int k = 0; k < taps; ++k) {
      const int row = first + k;
      const int slot = row % taps;
      int16_t* filtered = in->ring.data() + static_cast<ptrdiff_t>(slot) * h.dstSize;
      if (in->ringRow[static_cast<size_t>(slot)] != row) {
        std::memcpy(in->line.data(), src + row * srcStep, static_cast<size_t>(h.srcSize));
        in->kernels.horizontalBytes(in->line.data(), filtered, h.dstSize, h.start.data(),
                                    h.coefs.data(), h.paired.data(), h.stride);
        in->ringRow[static_cast<size_t>(slot)] = row;
      }
      in->rows[static_cast<size_t>(k)] = filtered;
    }
    in->kernels.verticalWords(in->rows.data(), taps, &v.coefs[static_cast<size_t>(y) * v.stride],
                              dst + y * dstStep, h.dstSize);
  }
}

void ScalePlane(Instance* instance, const PlaneTables& t, uint8_t* dst, ptrdiff_t dstStep,
                const uint8_t* src, ptrdiff_t srcStep) {
  const AxisTable& h = t.horizontal;
  const AxisTable& v = t.vertical;
  if (t.Identity()) {
    for (int y = 0; y < v.dstSize; ++y) {
      std::memcpy(dst + y * dstStep, src + y * srcStep, static_cast<size_t>(h.dstSize));
    }
    return;
  }
  if (t.horizontalFirst) {
    ScaleHorizontalFirst(instance, t, dst, dstStep, src, srcStep);
    return;
  }
  const Instance& in = *instance;
  int16_t* work = instance->work.data();
  for (int y = 0; y < v.dstSize; ++y) {
    const uint8_t* rows = src + v.start[static_cast<size_t>(y)] * srcStep;
    in.kernels.vertical(rows, srcStep, v.taps, &v.coefs[static_cast<size_t>(y) * v.stride], work,
                        h.srcSize);
    uint8_t* out = dst + y * dstStep;
    if (h.identity) {
      in.kernels.narrow(work, out, h.dstSize);
    } else {
      in.kernels.horizontal(work, out, h.dstSize, h.start.data(), h.coefs.data(), h.paired.data(),
                            h.stride);
    }
  }
}

}  // namespace
}  // namespace vrscl

int VRSCLCreateInstance(VRSCLHandle* handle, SimdLevel level) {
  if (handle == nullptr) return kVrsclNullPointer;
  *handle = nullptr;
  vrscl::Instance* in = new (std::nothrow) vrscl::Instance;
  if (in == nullptr) return kVrsclNoMemory;
  in->kernels = vrscl::SelectKernels(level);
  *handle = in;
  return kVrsclOk;
}

int VRSCLCreateInstance(VRSCLHandle* handle) {
  return VRSCLCreateInstance(handle, DetectSimdLevel());
}

int VRSCLSetupConverter(VRSCLHandle handle, int srcWidth, int srcHeight, int srcWidth2,
                        int srcHeight2, int dstWidth, int dstHeight, int dstWidth2,
                        int dstHeight2) {
  if (handle == nullptr) return kVrsclNullHandle;
  vrscl::Instance* in = static_cast<vrscl::Instance*>(handle);
  in->ready = false;
  if (!vrscl::IsSideValid(srcWidth) || !vrscl::IsSideValid(srcHeight) ||
      !vrscl::IsSideValid(dstWidth) || !vrscl::IsSideValid(dstHeight)) {
    return kVrsclBadSize;
  }
  if (srcWidth2 != srcWidth || srcHeight2 != srcHeight || dstWidth2 != dstWidth ||
      dstHeight2 != dstHeight) {
    return kVrsclBadSize;
  }
  try {
    vrscl::BuildPlane(srcWidth, srcHeight, dstWidth, dstHeight, srcWidth, srcHeight, dstWidth,
                      dstHeight, &in->luma);
    vrscl::BuildPlane(srcWidth / 2, srcHeight / 2, dstWidth / 2, dstHeight / 2, srcWidth, srcHeight,
                      dstWidth, dstHeight, &in->chroma);
    in->work.assign(static_cast<size_t>(srcWidth) + vrscl::kWorkPad, 0);
    in->line.assign(static_cast<size_t>(srcWidth) + vrscl::kWorkPad, 0);
    size_t ring = 0, taps = 0;
    for (const vrscl::PlaneTables* p : {&in->luma, &in->chroma}) {
      if (!p->horizontalFirst) continue;
      ring = std::max(ring, static_cast<size_t>(p->vertical.taps) * p->horizontal.dstSize);
      taps = std::max(taps, static_cast<size_t>(p->vertical.taps));
    }
    in->ring.assign(ring, 0);
    in->ringRow.assign(taps, -1);
    in->rows.assign(taps, nullptr);
  } catch (const std::bad_alloc&) {
    in->luma = vrscl::PlaneTables();
    in->chroma = vrscl::PlaneTables();
    in->work.clear();
    in->line.clear();
    in->ring.clear();
    return kVrsclNoMemory;
  }
  in->ready = true;
  return kVrsclOk;
}

int VRSCLConvert(VRSCLHandle handle, unsigned char* dstY, unsigned char* dstCb,
                 unsigned char* dstCr, int dstYStep, int dstCStep, const unsigned char* srcY,
                 const unsigned char* srcCb, const unsigned char* srcCr, int srcYStep,
                 int srcCStep) {
  if (handle == nullptr) return kVrsclNullHandle;
  vrscl::Instance* in = static_cast<vrscl::Instance*>(handle);
  if (!in->ready) return kVrsclNotSetUp;
  if (dstY == nullptr || dstCb == nullptr || dstCr == nullptr || srcY == nullptr ||
      srcCb == nullptr || srcCr == nullptr) {
    return kVrsclNullPointer;
  }
  if (srcYStep < in->luma.horizontal.srcSize || srcCStep < in->chroma.horizontal.srcSize ||
      dstYStep < in->luma.horizontal.dstSize || dstCStep < in->chroma.horizontal.dstSize) {
    return kVrsclBadStep;
  }
  // The scratch lines are the instance's own; an instance serves one thread at a time.
  vrscl::ScalePlane(in, in->luma, dstY, dstYStep, srcY, srcYStep);
  vrscl::ScalePlane(in, in->chroma, dstCb, dstCStep, srcCb, srcCStep);
  vrscl::ScalePlane(in, in->chroma, dstCr, dstCStep, srcCr, srcCStep);
  return kVrsclOk;
}

void VRSCLReleaseInstance(VRSCLHandle* handle) {
  if (handle == nullptr || *handle == nullptr) return;
  delete static_cast<vrscl::Instance*>(*handle);
  *handle = nullptr;
}

SimdLevel VRSCLInstanceLevel(VRSCLHandle handle) {
  if (handle == nullptr) return SimdLevel::kPlain;
  return static_cast<const vrscl::Instance*>(handle)->kernels.level;
}

}  // namespace orv
