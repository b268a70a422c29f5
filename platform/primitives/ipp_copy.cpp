#include "platform/primitives/ipp_copy.h"

#include <cstdint>
#include <cstring>

#include "platform/primitives/ipp_check.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;

IppStatus CheckPair(const void* s, int sStep, int sBpp, const void* d, int dStep, int dBpp,
                    IppiSize r) {
  if (s == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(sStep, r.width, sBpp) || !check::StepOk(dStep, r.width, dBpp))
    return ippStsStepErr;
  return ippStsNoErr;
}

IppStatus CopyBytes(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r, int bpp) {
  const IppStatus st = CheckPair(s, sStep, bpp, d, dStep, bpp, r);
  if (st != ippStsNoErr) return st;
  const size_t n = static_cast<size_t>(r.width) * bpp;
  for (int y = 0; y < r.height; ++y) std::memmove(Line(d, dStep, y), Line(s, sStep, y), n);
  return ippStsNoErr;
}

}  // namespace

namespace forms {

IppStatus Copy_C3AC4R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* d, int dStep,
                      IppiSize r) {
  const IppStatus st = CheckPair(s, sStep, 3, d, dStep, 4, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y) k.copyC3AC4(Line(s, sStep, y), Line(d, dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus Copy_AC4C3R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* d, int dStep,
                      IppiSize r) {
  const IppStatus st = CheckPair(s, sStep, 4, d, dStep, 3, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y) k.copyAC4C3(Line(s, sStep, y), Line(d, dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus Copy_C3P3R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep,
                     IppiSize r) {
  if (d == nullptr || d[0] == nullptr || d[1] == nullptr || d[2] == nullptr)
    return ippStsNullPtrErr;
  const IppStatus st = CheckPair(s, sStep, 3, d[0], dStep, 1, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y)
    k.copyC3P3(Line(s, sStep, y), Line(d[0], dStep, y), Line(d[1], dStep, y), Line(d[2], dStep, y),
               r.width);
  return ippStsNoErr;
}

IppStatus Copy_C4P4R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* const d[4], int dStep,
                     IppiSize r) {
  if (d == nullptr || d[0] == nullptr || d[1] == nullptr || d[2] == nullptr || d[3] == nullptr)
    return ippStsNullPtrErr;
  const IppStatus st = CheckPair(s, sStep, 4, d[0], dStep, 1, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y)
    k.copyC4P4(Line(s, sStep, y), Line(d[0], dStep, y), Line(d[1], dStep, y), Line(d[2], dStep, y),
               Line(d[3], dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus Copy_P4C4R(const Kernels& k, const Ipp8u* const s[4], int sStep, Ipp8u* d, int dStep,
                     IppiSize r) {
  if (s == nullptr || s[0] == nullptr || s[1] == nullptr || s[2] == nullptr || s[3] == nullptr)
    return ippStsNullPtrErr;
  const IppStatus st = CheckPair(s[0], sStep, 1, d, dStep, 4, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y)
    k.copyP4C4(Line(s[0], sStep, y), Line(s[1], sStep, y), Line(s[2], sStep, y),
               Line(s[3], sStep, y), Line(d, dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus Copy_C4C1R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  const IppStatus st = CheckPair(s, sStep, 4, d, dStep, 1, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y) k.copyC4C1(Line(s, sStep, y), Line(d, dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus Set_C4R(const Kernels& k, const Ipp8u value[4], Ipp8u* d, int dStep, IppiSize r) {
  if (value == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(dStep, r.width, 4)) return ippStsStepErr;
  // Lines that follow each other without a gap are filled as one.
  if (int64_t{dStep} == 4 * int64_t{r.width} && int64_t{r.width} * r.height <= INT32_MAX / 4) {
    k.setC4(d, r.width * r.height, value);
    return ippStsNoErr;
  }
  for (int y = 0; y < r.height; ++y) k.setC4(Line(d, dStep, y), r.width, value);
  return ippStsNoErr;
}

IppStatus Set_C4CR(const Kernels& k, Ipp8u value, Ipp8u* d, int dStep, IppiSize r) {
  if (d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(dStep, r.width, 4)) return ippStsStepErr;
  for (int y = 0; y < r.height; ++y) k.setC4C(Line(d, dStep, y), r.width, value);
  return ippStsNoErr;
}

IppStatus SwapChannels_C3R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* d, int dStep,
                           IppiSize r, const int order[3]) {
  if (order == nullptr) return ippStsNullPtrErr;
  const IppStatus st = CheckPair(s, sStep, 3, d, dStep, 3, r);
  if (st != ippStsNoErr) return st;
  for (int c = 0; c < 3; ++c)
    if (order[c] < 0 || order[c] > 2) return ippStsChannelOrderErr;
  for (int y = 0; y < r.height; ++y) k.swapC3(Line(s, sStep, y), Line(d, dStep, y), r.width, order);
  return ippStsNoErr;
}

}  // namespace forms

IppStatus ippiCopy_8u_C1R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return CopyBytes(s, sStep, d, dStep, r, 1);
}
IppStatus ippiCopy_8u_C3R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return CopyBytes(s, sStep, d, dStep, r, 3);
}
IppStatus ippiCopy_8u_C4R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return CopyBytes(s, sStep, d, dStep, r, 4);
}
IppStatus ippiCopy_8u_C3AC4R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return forms::Copy_C3AC4R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiCopy_8u_AC4C3R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return forms::Copy_AC4C3R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiCopy_8u_C3P3R(const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep, IppiSize r) {
  return forms::Copy_C3P3R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiCopy_8u_C4P4R(const Ipp8u* s, int sStep, Ipp8u* const d[4], int dStep, IppiSize r) {
  return forms::Copy_C4P4R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiCopy_8u_P4C4R(const Ipp8u* const s[4], int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return forms::Copy_P4C4R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiCopy_8u_C4C1R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return forms::Copy_C4C1R(ActiveKernels(), s, sStep, d, dStep, r);
}

IppStatus ippiSet_8u_C1R(Ipp8u value, Ipp8u* d, int dStep, IppiSize r) {
  if (d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(dStep, r.width, 1)) return ippStsStepErr;
  for (int y = 0; y < r.height; ++y) std::memset(Line(d, dStep, y), value, r.width);
  return ippStsNoErr;
}
IppStatus ippiSet_8u_C4R(const Ipp8u value[4], Ipp8u* d, int dStep, IppiSize r) {
  return forms::Set_C4R(ActiveKernels(), value, d, dStep, r);
}
IppStatus ippiSet_8u_C4CR(Ipp8u value, Ipp8u* d, int dStep, IppiSize r) {
  return forms::Set_C4CR(ActiveKernels(), value, d, dStep, r);
}

IppStatus ippiSwapChannels_8u_C3R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r,
                                  const int order[3]) {
  return forms::SwapChannels_C3R(ActiveKernels(), s, sStep, d, dStep, r, order);
}
IppStatus ippiSwapChannels_8u_C3IR(Ipp8u* p, int step, IppiSize r, const int order[3]) {
  return forms::SwapChannels_C3R(ActiveKernels(), p, step, p, step, r, order);
}

}  // namespace ipp
}  // namespace orv
