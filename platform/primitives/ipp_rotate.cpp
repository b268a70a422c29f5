#include "platform/primitives/ipp_rotate.h"

#include <algorithm>
#include <cmath>

#include "platform/primitives/ipp_check.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;

void SinCos(double angle, double* s, double* c) {
  const double turns = angle / 90.0;
  if (std::isfinite(turns) && turns == std::floor(turns)) {
    static const double kSin[4] = {0.0, 1.0, 0.0, -1.0};
    static const double kCos[4] = {1.0, 0.0, -1.0, 0.0};
    const int q = static_cast<int>(std::fmod(turns, 4.0) + 4.0) % 4;
    *s = kSin[q];
    *c = kCos[q];
    return;
  }
  const double r = angle * 3.14159265358979323846 / 180.0;
  *s = std::sin(r);
  *c = std::cos(r);
}

void Cubic(double t, double w[4]) {
  const double t2 = t * t, t3 = t2 * t;
  w[0] = 0.5 * (-t3 + 2.0 * t2 - t);
  w[1] = 0.5 * (3.0 * t3 - 5.0 * t2 + 2.0);
  w[2] = 0.5 * (-3.0 * t3 + 4.0 * t2 + t);
  w[3] = 0.5 * (t3 - t2);
}

IppStatus Rotate(int C, const Ipp8u* src, IppiSize ss, int sStep, IppiRect sr, Ipp8u* dst,
                 int dStep, IppiRect dr, double angle, double xs, double ys, int interp) {
  if (src == nullptr || dst == nullptr) return ippStsNullPtrErr;
  if (!check::SizeOk(ss) || sr.width < 1 || sr.height < 1 ||
      !check::SizeOk(IppiSize{dr.width, dr.height}))
    return ippStsSizeErr;
  if (dr.x < 0 || dr.y < 0) return ippStsRectErr;
  if (!check::StepOk(sStep, ss.width, C) ||
      !check::StepOk(dStep,
                     static_cast<int>(
                         std::min<int64_t>(static_cast<int64_t>(dr.x) + dr.width, 0x7FFFFFFF / 4)),
                     C))
    return ippStsStepErr;
  if (!std::isfinite(angle) || !std::isfinite(xs) || !std::isfinite(ys)) return ippStsBadArgErr;
  if (interp != IPPI_INTER_NN && interp != IPPI_INTER_LINEAR && interp != IPPI_INTER_CUBIC)
    return ippStsInterpolationErr;
  const int x0 = std::max(sr.x, 0), y0 = std::max(sr.y, 0);
  const int x1 =
      static_cast<int>(std::min<int64_t>(static_cast<int64_t>(sr.x) + sr.width, ss.width));
  const int y1 =
      static_cast<int>(std::min<int64_t>(static_cast<int64_t>(sr.y) + sr.height, ss.height));
  if (x0 >= x1 || y0 >= y1) return ippStsWrongIntersectROI;
  double sn, cs;
  SinCos(angle, &sn, &cs);
  auto clampX = [&](int v) { return std::min(std::max(v, x0), x1 - 1); };
  auto clampY = [&](int v) { return std::min(std::max(v, y0), y1 - 1); };
  auto sample = [&](int x, int y, int c) {
    return static_cast<double>(
        Line(src, sStep, clampY(y))[static_cast<ptrdiff_t>(clampX(x)) * C + c]);
  };
  bool any = false;
  for (int j = 0; j < dr.height; ++j) {
    const int yd = dr.y + j;
    Ipp8u* out = Line(dst, dStep, yd);
    for (int i = 0; i < dr.width; ++i) {
      const int xd = dr.x + i;
      const double dx = xd - xs, dy = yd - ys;
      const double x = dx * cs - dy * sn;
      const double y = dx * sn + dy * cs;
      if (!(x >= x0 - 0.5 && x < x1 - 0.5 && y >= y0 - 0.5 && y < y1 - 0.5)) continue;
      any = true;
      Ipp8u* p = out + static_cast<ptrdiff_t>(xd) * C;
      if (interp == IPPI_INTER_NN) {
        const int xi = clampX(static_cast<int>(std::floor(x + 0.5)));
        const int yi = clampY(static_cast<int>(std::floor(y + 0.5)));
        const Ipp8u* s = Line(src, sStep, yi) + static_cast<ptrdiff_t>(xi) * C;
        for (int c = 0; c < C; ++c) p[c] = s[c];
        continue;
      }
      const double fx = std::floor(x), fy = std::floor(y);
      const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
      double wx[4] = {0, 0, 0, 0}, wy[4] = {0, 0, 0, 0};
      if (interp == IPPI_INTER_LINEAR) {
        wx[1] = 1.0 - (x - fx);
        wx[2] = x - fx;
        wy[1] = 1.0 - (y - fy);
        wy[2] = y - fy;
      } else {
        Cubic(x - fx, wx);
        Cubic(y - fy, wy);
      }
      for (int c = 0; c < C; ++c) {
        double v = 0.0;
        for (int b = 0; b < 4; ++b) {
          if (wy[b] == 0.0) continue;
          double h = 0.0;
          for (int a = 0; a < 4; ++a)
            if (wx[a] != 0.0) h += wx[a] * sample(ix + a - 1, iy + b - 1, c);
          v += wy[b] * h;
        }
        const double r = std::floor(v + 0.5);
        p[c] = static_cast<Ipp8u>(r < 0.0 ? 0.0 : (r > 255.0 ? 255.0 : r));
      }
    }
  }
  return any ? ippStsNoErr : ippStsWrongIntersectROI;
}

}  // namespace

IppStatus ippiRotate_8u_C3R(const Ipp8u* s, IppiSize ss, int sStep, IppiRect sr, Ipp8u* d,
                            int dStep, IppiRect dr, double angle, double xs, double ys,
                            int interp) {
  return Rotate(3, s, ss, sStep, sr, d, dStep, dr, angle, xs, ys, interp);
}
IppStatus ippiRotate_8u_C4R(const Ipp8u* s, IppiSize ss, int sStep, IppiRect sr, Ipp8u* d,
                            int dStep, IppiRect dr, double angle, double xs, double ys,
                            int interp) {
  return Rotate(4, s, ss, sStep, sr, d, dStep, dr, angle, xs, ys, interp);
}

}  // namespace ipp
}  // namespace orv
