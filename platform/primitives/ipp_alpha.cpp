#include "platform/primitives/ipp_alpha.h"

#include "platform/primitives/ipp_check.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;

inline int D(int x) { return (x + 127) / 255; }

bool AlphaTypeOk(IppiAlphaType t) { return t >= ippAlphaOver && t <= ippAlphaPlus; }

void Weights(IppiAlphaType t, int a, int b, int* wa, int* wb) {
  switch (t) {
    case ippAlphaOver:
      *wa = a;
      *wb = D(b * (255 - a));
      break;
    case ippAlphaIn:
      *wa = D(a * b);
      *wb = 0;
      break;
    case ippAlphaOut:
      *wa = D(a * (255 - b));
      *wb = 0;
      break;
    case ippAlphaATop:
      *wa = D(a * b);
      *wb = D(b * (255 - a));
      break;
    case ippAlphaXor:
      *wa = D(a * (255 - b));
      *wb = D(b * (255 - a));
      break;
    default:
      *wa = a;
      *wb = b;
      break;
  }
}

IppStatus Check(const Ipp8u* a, int aStep, const Ipp8u* b, int bStep, const Ipp8u* d, int dStep,
                IppiSize r, int channels, IppiAlphaType t) {
  if (a == nullptr || b == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(aStep, r.width, channels) || !check::StepOk(bStep, r.width, channels) ||
      !check::StepOk(dStep, r.width, channels))
    return ippStsStepErr;
  if (!AlphaTypeOk(t)) return ippStsAlphaTypeErr;
  return ippStsNoErr;
}

}  // namespace

namespace forms {

IppStatus AlphaCompC(const Kernels& k, int channels, const Ipp8u* a, int aStep, Ipp8u alphaA,
                     const Ipp8u* b, int bStep, Ipp8u alphaB, Ipp8u* d, int dStep, IppiSize r,
                     IppiAlphaType t) {
  const IppStatus st = Check(a, aStep, b, bStep, d, dStep, r, channels, t);
  if (st != ippStsNoErr) return st;
  int wa, wb;
  Weights(t, alphaA, alphaB, &wa, &wb);
  for (int y = 0; y < r.height; ++y)
    k.alphaMix(Line(a, aStep, y), Line(b, bStep, y), Line(d, dStep, y), r.width * channels, wa, wb);
  return ippStsNoErr;
}

IppStatus AlphaComp_AC4R(const Kernels& k, const Ipp8u* a, int aStep, const Ipp8u* b, int bStep,
                         Ipp8u* d, int dStep, IppiSize r, IppiAlphaType t) {
  const IppStatus st = Check(a, aStep, b, bStep, d, dStep, r, 4, t);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* pa = Line(a, aStep, y);
    const Ipp8u* pb = Line(b, bStep, y);
    Ipp8u* pd = Line(d, dStep, y);
    if (t == ippAlphaOver) {
      k.alphaOverAC4(pa, pb, pd, r.width);
      continue;
    }
    for (int x = 0; x < r.width; ++x, pa += 4, pb += 4, pd += 4) {
      int wa, wb;
      Weights(t, pa[3], pb[3], &wa, &wb);
      for (int c = 0; c < 3; ++c) {
        const int v = D(wa * pa[c] + wb * pb[c]);
        pd[c] = static_cast<Ipp8u>(v > 255 ? 255 : v);
      }
      const int al = wa + wb;
      pd[3] = static_cast<Ipp8u>(al > 255 ? 255 : al);
    }
  }
  return ippStsNoErr;
}

}  // namespace forms

#define ORV_ALPHA_C(C)                                                                            \
  IppStatus ippiAlphaCompC_8u_C##C##R(const Ipp8u* a, int aStep, Ipp8u alphaA, const Ipp8u* b,    \
                                      int bStep, Ipp8u alphaB, Ipp8u* d, int dStep, IppiSize r,   \
                                      IppiAlphaType t) {                                          \
    return forms::AlphaCompC(ActiveKernels(), C, a, aStep, alphaA, b, bStep, alphaB, d, dStep, r, \
                             t);                                                                  \
  }

ORV_ALPHA_C(1)
ORV_ALPHA_C(3)
ORV_ALPHA_C(4)

#undef ORV_ALPHA_C

IppStatus ippiAlphaComp_8u_AC4R(const Ipp8u* a, int aStep, const Ipp8u* b, int bStep, Ipp8u* d,
                                int dStep, IppiSize r, IppiAlphaType t) {
  return forms::AlphaComp_AC4R(ActiveKernels(), a, aStep, b, bStep, d, dStep, r, t);
}

}  // namespace ipp
}  // namespace orv
