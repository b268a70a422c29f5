#include "platform/primitives/ipp_arith.h"

#include <cmath>

#include "platform/primitives/ipp_check.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;

// v x 2^-sf, ties to even, saturated.
Ipp8u ScaleInt(int v, int sf) {
  if (v <= 0) return 0;
  if (sf <= 0) {
    if (sf < -8) return 255;
    const int s = v << -sf;
    return static_cast<Ipp8u>(s > 255 ? 255 : s);
  }
  if (sf > 16) return 0;
  int q = v >> sf;
  const int rem = v - (q << sf), half = 1 << (sf - 1);
  if (rem > half || (rem == half && (q & 1))) ++q;
  return static_cast<Ipp8u>(q > 255 ? 255 : q);
}

IppStatus Check(const void* s, int sStep, int sBpp, const void* d, int dStep, int dBpp,
                IppiSize r) {
  if (s == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(r)) return ippStsSizeErr;
  if (!check::StepOk(sStep, r.width, sBpp) || !check::StepOk(dStep, r.width, dBpp))
    return ippStsStepErr;
  return ippStsNoErr;
}

IppStatus AddSub(const Ipp8u* s, int sStep, const Ipp8u* v, int channels, int sign, Ipp8u* d,
                 int dStep, IppiSize r, int sf) {
  if (v == nullptr) return ippStsNullPtrErr;
  const IppStatus st = Check(s, sStep, channels, d, dStep, channels, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* a = Line(s, sStep, y);
    Ipp8u* o = Line(d, dStep, y);
    for (int x = 0; x < r.width * channels; x += channels)
      for (int c = 0; c < channels; ++c) o[x + c] = ScaleInt(a[x + c] + sign * v[c], sf);
  }
  return ippStsNoErr;
}

Ipp8u RoundFloat(float f, IppRoundMode mode) {
  if (std::isnan(f) || f <= 0.0f) return 0;
  if (f >= 255.0f) return 255;
  double r;
  if (mode == ippRndZero)
    r = std::trunc(f);
  else if (mode == ippRndNear)
    r = std::nearbyint(f);  // the default environment rounds ties to even
  else
    r = std::round(f);
  return static_cast<Ipp8u>(r);
}

IppStatus Convert32f8u(const Ipp32f* s, int sStep, Ipp8u* d, int dStep, IppiSize r, int channels,
                       IppRoundMode mode) {
  const IppStatus st = Check(s, sStep, 4 * channels, d, dStep, channels, r);
  if (st != ippStsNoErr) return st;
  if (mode != ippRndZero && mode != ippRndNear && mode != ippRndFinancial)
    return ippStsRoundModeNotSupportedErr;
  const int n = r.width * channels;
  for (int y = 0; y < r.height; ++y) {
    const Ipp32f* a = Line(s, sStep, y);
    Ipp8u* o = Line(d, dStep, y);
    for (int x = 0; x < n; ++x) o[x] = RoundFloat(a[x], mode);
  }
  return ippStsNoErr;
}

}  // namespace

IppStatus ippiAddC_8u_C3RSfs(const Ipp8u* s, int sStep, const Ipp8u v[3], Ipp8u* d, int dStep,
                             IppiSize r, int sf) {
  return AddSub(s, sStep, v, 3, 1, d, dStep, r, sf);
}
IppStatus ippiAddC_8u_C3IRSfs(const Ipp8u v[3], Ipp8u* p, int step, IppiSize r, int sf) {
  return AddSub(p, step, v, 3, 1, p, step, r, sf);
}
IppStatus ippiSubC_8u_C3IRSfs(const Ipp8u v[3], Ipp8u* p, int step, IppiSize r, int sf) {
  return AddSub(p, step, v, 3, -1, p, step, r, sf);
}
IppStatus ippiSubC_8u_C1IRSfs(Ipp8u v, Ipp8u* p, int step, IppiSize r, int sf) {
  return AddSub(p, step, &v, 1, -1, p, step, r, sf);
}

IppStatus ippiScale_8u32f_C3R(const Ipp8u* s, int sStep, Ipp32f* d, int dStep, IppiSize r,
                              Ipp32f vMin, Ipp32f vMax) {
  const IppStatus st = Check(s, sStep, 3, d, dStep, 12, r);
  if (st != ippStsNoErr) return st;
  if (!(vMax > vMin)) return ippStsScaleRangeErr;
  const double range = static_cast<double>(vMax) - vMin;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* a = Line(s, sStep, y);
    Ipp32f* o = Line(d, dStep, y);
    for (int x = 0; x < 3 * r.width; ++x) o[x] = static_cast<float>(vMin + range * a[x] / 255.0);
  }
  return ippStsNoErr;
}

IppStatus ippiScale_32f8u_C3R(const Ipp32f* s, int sStep, Ipp8u* d, int dStep, IppiSize r,
                              Ipp32f vMin, Ipp32f vMax) {
  const IppStatus st = Check(s, sStep, 12, d, dStep, 3, r);
  if (st != ippStsNoErr) return st;
  if (!(vMax > vMin)) return ippStsScaleRangeErr;
  const double range = static_cast<double>(vMax) - vMin;
  for (int y = 0; y < r.height; ++y) {
    const Ipp32f* a = Line(s, sStep, y);
    Ipp8u* o = Line(d, dStep, y);
    for (int x = 0; x < 3 * r.width; ++x) {
      const double v = (a[x] - static_cast<double>(vMin)) * 255.0 / range;
      o[x] = std::isnan(v) || v <= 0.0 ? 0 : (v >= 255.0 ? 255 : static_cast<Ipp8u>(std::round(v)));
    }
  }
  return ippStsNoErr;
}

IppStatus ippiConvert_8u32f_C1R(const Ipp8u* s, int sStep, Ipp32f* d, int dStep, IppiSize r) {
  const IppStatus st = Check(s, sStep, 1, d, dStep, 4, r);
  if (st != ippStsNoErr) return st;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* a = Line(s, sStep, y);
    Ipp32f* o = Line(d, dStep, y);
    for (int x = 0; x < r.width; ++x) o[x] = a[x];
  }
  return ippStsNoErr;
}

IppStatus ippiConvert_32f8u_C1R(const Ipp32f* s, int sStep, Ipp8u* d, int dStep, IppiSize r,
                                IppRoundMode mode) {
  return Convert32f8u(s, sStep, d, dStep, r, 1, mode);
}
IppStatus ippiConvert_32f8u_C3R(const Ipp32f* s, int sStep, Ipp8u* d, int dStep, IppiSize r,
                                IppRoundMode mode) {
  return Convert32f8u(s, sStep, d, dStep, r, 3, mode);
}

IppStatus ippiAddWeighted_8u32f_C1IR(const Ipp8u* s, int sStep, Ipp32f* acc, int accStep,
                                     IppiSize r, Ipp32f alpha) {
  const IppStatus st = Check(s, sStep, 1, acc, accStep, 4, r);
  if (st != ippStsNoErr) return st;
  const float keep = 1.0f - alpha;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* a = Line(s, sStep, y);
    Ipp32f* o = Line(acc, accStep, y);
    for (int x = 0; x < r.width; ++x) {
      const float kept = o[x] * keep;
      const float added = static_cast<float>(a[x]) * alpha;
      o[x] = kept + added;
    }
  }
  return ippStsNoErr;
}

}  // namespace ipp
}  // namespace orv
