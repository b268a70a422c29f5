#include "platform/primitives/ipp_mirror.h"

#include <cstring>
#include <new>
#include <vector>

#include "platform/primitives/ipp_check.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;

typedef void (*ReverseFn)(const uint8_t*, uint8_t*, int);

ReverseFn ReverseFor(const Kernels& k, int channels) {
  return channels == 1 ? k.reverseC1 : (channels == 3 ? k.reverseC3 : k.reverseC4);
}

bool AxisOk(IppiAxis a) { return a == ippAxsHorizontal || a == ippAxsVertical || a == ippAxsBoth; }

}  // namespace

namespace forms {

IppStatus Mirror(const Kernels& k, int channels, const Ipp8u* s, int sStep, Ipp8u* d, int dStep,
                 IppiSize r, IppiAxis flip) {
  if (s == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(sStep, r.width, channels) || !check::StepOk(dStep, r.width, channels))
    return ippStsStepErr;
  if (!AxisOk(flip)) return ippStsMirrorFlipErr;
  const ReverseFn reverse = ReverseFor(k, channels);
  const size_t n = static_cast<size_t>(r.width) * channels;
  for (int y = 0; y < r.height; ++y) {
    const int sy = flip == ippAxsVertical ? y : r.height - 1 - y;
    if (flip == ippAxsHorizontal)
      std::memcpy(Line(d, dStep, y), Line(s, sStep, sy), n);
    else
      reverse(Line(s, sStep, sy), Line(d, dStep, y), r.width);
  }
  return ippStsNoErr;
}

IppStatus MirrorInPlace(const Kernels& k, int channels, Ipp8u* p, int step, IppiSize r,
                        IppiAxis flip) {
  if (p == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(step, r.width, channels)) return ippStsStepErr;
  if (!AxisOk(flip)) return ippStsMirrorFlipErr;
  const ReverseFn reverse = ReverseFor(k, channels);
  const size_t n = static_cast<size_t>(r.width) * channels;
  std::vector<Ipp8u> tmp;
  try {
    tmp.resize(n);
  } catch (const std::bad_alloc&) {
    return ippStsMemAllocErr;
  }
  Ipp8u* t = tmp.data();
  if (flip == ippAxsVertical) {
    for (int y = 0; y < r.height; ++y) {
      std::memcpy(t, Line(p, step, y), n);
      reverse(t, Line(p, step, y), r.width);
    }
    return ippStsNoErr;
  }
  for (int y = 0, z = r.height - 1; y <= z; ++y, --z) {
    Ipp8u* a = Line(p, step, y);
    Ipp8u* b = Line(p, step, z);
    if (flip == ippAxsHorizontal) {
      if (y == z) break;
      std::memcpy(t, a, n);
      std::memcpy(a, b, n);
      std::memcpy(b, t, n);
    } else if (y == z) {
      std::memcpy(t, a, n);
      reverse(t, a, r.width);
    } else {
      std::memcpy(t, a, n);
      reverse(b, a, r.width);
      reverse(t, b, r.width);
    }
  }
  return ippStsNoErr;
}

}  // namespace forms

#define ORV_MIRROR_PAIR(C)                                                                    \
  IppStatus ippiMirror_8u_C##C##R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r, \
                                  IppiAxis flip) {                                            \
    return forms::Mirror(ActiveKernels(), C, s, sStep, d, dStep, r, flip);                    \
  }                                                                                           \
  IppStatus ippiMirror_8u_C##C##IR(Ipp8u* p, int step, IppiSize r, IppiAxis flip) {           \
    return forms::MirrorInPlace(ActiveKernels(), C, p, step, r, flip);                        \
  }

ORV_MIRROR_PAIR(1)
ORV_MIRROR_PAIR(3)
ORV_MIRROR_PAIR(4)

#undef ORV_MIRROR_PAIR

}  // namespace ipp
}  // namespace orv
