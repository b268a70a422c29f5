#include "platform/scaler/vrscl.h"

#include <cstring>
#include <new>
#include <vector>

#include "platform/scaler/scaler_filter.h"
#include "platform/scaler/scaler_kernels.h"

namespace orv {
namespace vrscl {
namespace {

// The tables of one plane.
struct PlaneTables {
  AxisTable horizontal;
  AxisTable vertical;
  bool Identity() const { return horizontal.identity && vertical.identity; }
};

struct Instance {
  Kernels kernels;
  bool ready = false;
  PlaneTables luma;
  PlaneTables chroma;
  std::vector<int16_t> work;  // one vertical-pass line at source width, padded
};

bool IsSideValid(int side) { return side >= kVrsclMinSide && side <= kVrsclMaxSide; }

void BuildPlane(int srcW, int srcH, int dstW, int dstH, int lumaSrcW, int lumaSrcH, int lumaDstW,
                int lumaDstH, PlaneTables* plane) {
  BuildAxisTable(srcW, dstW, lumaSrcW, lumaDstW, kTapAlign, &plane->horizontal);
  BuildAxisTable(srcH, dstH, lumaSrcH, lumaDstH, 1, &plane->vertical);
}

void ScalePlane(const Instance& in, const PlaneTables& t, uint8_t* dst, ptrdiff_t dstStep,
                const uint8_t* src, ptrdiff_t srcStep, int16_t* work) {
  const AxisTable& h = t.horizontal;
  const AxisTable& v = t.vertical;
  if (t.Identity()) {
    for (int y = 0; y < v.dstSize; ++y) {
      std::memcpy(dst + y * dstStep, src + y * srcStep, static_cast<size_t>(h.dstSize));
    }
    return;
  }
  for (int y = 0; y < v.dstSize; ++y) {
    const uint8_t* rows = src + v.start[static_cast<size_t>(y)] * srcStep;
    in.kernels.vertical(rows, srcStep, v.taps, &v.coefs[static_cast<size_t>(y) * v.stride], work,
                        h.srcSize);
    uint8_t* out = dst + y * dstStep;
    if (h.identity) {
      in.kernels.narrow(work, out, h.dstSize);
    } else {
      in.kernels.horizontal(work, out, h.dstSize, h.start.data(), h.coefs.data(), h.stride);
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
  } catch (const std::bad_alloc&) {
    in->luma = vrscl::PlaneTables();
    in->chroma = vrscl::PlaneTables();
    in->work.clear();
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
  const vrscl::Instance* in = static_cast<const vrscl::Instance*>(handle);
  if (!in->ready) return kVrsclNotSetUp;
  if (dstY == nullptr || dstCb == nullptr || dstCr == nullptr || srcY == nullptr ||
      srcCb == nullptr || srcCr == nullptr) {
    return kVrsclNullPointer;
  }
  if (srcYStep < in->luma.horizontal.srcSize || srcCStep < in->chroma.horizontal.srcSize ||
      dstYStep < in->luma.horizontal.dstSize || dstCStep < in->chroma.horizontal.dstSize) {
    return kVrsclBadStep;
  }
  // The work line is the instance's own scratch; an instance serves one thread at a time.
  int16_t* work = const_cast<int16_t*>(in->work.data());
  vrscl::ScalePlane(*in, in->luma, dstY, dstYStep, srcY, srcYStep, work);
  vrscl::ScalePlane(*in, in->chroma, dstCb, dstCStep, srcCb, srcCStep, work);
  vrscl::ScalePlane(*in, in->chroma, dstCr, dstCStep, srcCr, srcCStep, work);
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
