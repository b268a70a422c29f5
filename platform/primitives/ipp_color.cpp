#include "platform/primitives/ipp_color.h"

#include "platform/primitives/ipp_check.h"
#include "platform/primitives/ipp_color_math.h"

namespace orv {
namespace ipp {
namespace {

using check::Line;
using check::SizeOk;
using check::StepOk;

template <typename P>
bool AnyNull3(P p) {
  return p == nullptr || p[0] == nullptr || p[1] == nullptr || p[2] == nullptr;
}

// Chroma of the lone last pixel of an odd line: that of the pair before it.
struct LoneChroma {
  int cb, cr;
};
inline LoneChroma PairChroma(const Ipp8u* cb, const Ipp8u* cr, int pairs) {
  if (pairs == 0) return {128, 128};
  return {cb[pairs - 1], cr[pairs - 1]};
}

}  // namespace

namespace forms {

IppStatus YCbCr420ToBGR(const Kernels& k, const Ipp8u* const s[3], int sStep[3], Ipp8u* d,
                        int dStep, IppiSize r) {
  if (AnyNull3(s) || sStep == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  const int cw = r.width / 2, ch = r.height / 2;
  if (!StepOk(sStep[0], r.width, 1) || !StepOk(sStep[1], cw, 1) || !StepOk(sStep[2], cw, 1) ||
      !StepOk(dStep, r.width, 3))
    return ippStsStepErr;
  static const Ipp8u kNeutral[1] = {128};
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* py = Line(s[0], sStep[0], y);
    Ipp8u* pd = Line(d, dStep, y);
    const Ipp8u* pu = kNeutral;
    const Ipp8u* pv = kNeutral;
    int pairs = cw;
    if (ch > 0) {
      const int cy = y / 2 < ch ? y / 2 : ch - 1;
      pu = Line(s[1], sStep[1], cy);
      pv = Line(s[2], sStep[2], cy);
      k.yuv420ToBgr(py, pu, pv, pd, pairs);
    } else {
      for (int i = 0; i < pairs; ++i) {
        color::StudioToRgb(py[2 * i], 128, 128, &pd[6 * i + 2], &pd[6 * i + 1], &pd[6 * i]);
        color::StudioToRgb(py[2 * i + 1], 128, 128, &pd[6 * i + 5], &pd[6 * i + 4], &pd[6 * i + 3]);
      }
      pairs = 0;
    }
    if (r.width & 1) {
      const LoneChroma c = PairChroma(pu, pv, pairs);
      const int x = r.width - 1;
      color::StudioToRgb(py[x], c.cb, c.cr, &pd[3 * x + 2], &pd[3 * x + 1], &pd[3 * x]);
    }
  }
  return ippStsNoErr;
}

IppStatus YCbCr422ToRGB_C2C3R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* d, int dStep,
                              IppiSize r) {
  if (s == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  if (!StepOk(sStep, r.width, 2) || !StepOk(dStep, r.width, 3)) return ippStsStepErr;
  const int pairs = r.width / 2;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* ps = Line(s, sStep, y);
    Ipp8u* pd = Line(d, dStep, y);
    k.yuy2ToRgb(ps, pd, pairs);
    if (r.width & 1) {
      const int x = r.width - 1;
      const int cb = pairs ? ps[4 * pairs - 3] : 128, cr = pairs ? ps[4 * pairs - 1] : 128;
      color::StudioToRgb(ps[2 * x], cb, cr, &pd[3 * x], &pd[3 * x + 1], &pd[3 * x + 2]);
    }
  }
  return ippStsNoErr;
}

IppStatus YCbCr422ToRGB_C2P3R(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* const d[3],
                              int dStep, IppiSize r) {
  if (s == nullptr || AnyNull3(d)) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  if (!StepOk(sStep, r.width, 2) || !StepOk(dStep, r.width, 1)) return ippStsStepErr;
  const int pairs = r.width / 2;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* ps = Line(s, sStep, y);
    Ipp8u* pr = Line(d[0], dStep, y);
    Ipp8u* pg = Line(d[1], dStep, y);
    Ipp8u* pb = Line(d[2], dStep, y);
    k.yuy2ToRgbPlanes(ps, pr, pg, pb, pairs);
    if (r.width & 1) {
      const int x = r.width - 1;
      const int cb = pairs ? ps[4 * pairs - 3] : 128, cr = pairs ? ps[4 * pairs - 1] : 128;
      color::StudioToRgb(ps[2 * x], cb, cr, &pr[x], &pg[x], &pb[x]);
    }
  }
  return ippStsNoErr;
}

IppStatus RGBToYCbCr420(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* const d[3],
                        int dStep[3], IppiSize r) {
  if (s == nullptr || AnyNull3(d) || dStep == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  const int cw = r.width / 2, ch = r.height / 2;
  if (!StepOk(sStep, r.width, 3) || !StepOk(dStep[0], r.width, 1) || !StepOk(dStep[1], cw, 1) ||
      !StepOk(dStep[2], cw, 1))
    return ippStsStepErr;
  for (int j = 0; j < ch; ++j) {
    const Ipp8u* p0 = Line(s, sStep, 2 * j);
    const Ipp8u* p1 = Line(s, sStep, 2 * j + 1);
    Ipp8u* y0 = Line(d[0], dStep[0], 2 * j);
    Ipp8u* y1 = Line(d[0], dStep[0], 2 * j + 1);
    k.rgbToYcc420(p0, p1, y0, y1, Line(d[1], dStep[1], j), Line(d[2], dStep[2], j), cw);
    if (r.width & 1) {
      const int x = r.width - 1;
      y0[x] = color::StudioY(p0[3 * x], p0[3 * x + 1], p0[3 * x + 2]);
      y1[x] = color::StudioY(p1[3 * x], p1[3 * x + 1], p1[3 * x + 2]);
    }
  }
  if (r.height & 1) {
    const int y = r.height - 1;
    const Ipp8u* p = Line(s, sStep, y);
    Ipp8u* py = Line(d[0], dStep[0], y);
    for (int x = 0; x < r.width; ++x) py[x] = color::StudioY(p[3 * x], p[3 * x + 1], p[3 * x + 2]);
  }
  return ippStsNoErr;
}

IppStatus RGBToYCbCr422(const Kernels& k, const Ipp8u* const s[3], int sStep, Ipp8u* d, int dStep,
                        IppiSize r) {
  if (AnyNull3(s) || d == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  if (!StepOk(sStep, r.width, 1) || !StepOk(dStep, r.width, 2)) return ippStsStepErr;
  const int pairs = r.width / 2;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* pr = Line(s[0], sStep, y);
    const Ipp8u* pg = Line(s[1], sStep, y);
    const Ipp8u* pb = Line(s[2], sStep, y);
    Ipp8u* pd = Line(d, dStep, y);
    k.rgbPlanesToYuy2(pr, pg, pb, pd, pairs);
    if (r.width & 1) {
      const int x = r.width - 1;
      pd[2 * x] = color::StudioY(pr[x], pg[x], pb[x]);
      pd[2 * x + 1] = color::StudioCbSum(pr[x], pg[x], pb[x], 0);
    }
  }
  return ippStsNoErr;
}

IppStatus YCbCrToBGR_JPEG(const Kernels& k, const Ipp8u* const s[3], int sStep, Ipp8u* d, int dStep,
                          IppiSize r) {
  if (AnyNull3(s) || d == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  if (!StepOk(sStep, r.width, 1) || !StepOk(dStep, r.width, 3)) return ippStsStepErr;
  for (int y = 0; y < r.height; ++y)
    k.jpegYccToBgr(Line(s[0], sStep, y), Line(s[1], sStep, y), Line(s[2], sStep, y),
                   Line(d, dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus YCbCrToRGB_JPEG_P3R(const Kernels& k, const Ipp8u* const s[3], int sStep,
                              Ipp8u* const d[3], int dStep, IppiSize r) {
  if (AnyNull3(s) || AnyNull3(d)) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  if (!StepOk(sStep, r.width, 1) || !StepOk(dStep, r.width, 1)) return ippStsStepErr;
  for (int y = 0; y < r.height; ++y)
    k.jpegYccToRgbPlanes(Line(s[0], sStep, y), Line(s[1], sStep, y), Line(s[2], sStep, y),
                         Line(d[0], dStep, y), Line(d[1], dStep, y), Line(d[2], dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus BGRToYCbCr_JPEG(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep,
                          IppiSize r) {
  if (s == nullptr || AnyNull3(d)) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  if (!StepOk(sStep, r.width, 3) || !StepOk(dStep, r.width, 1)) return ippStsStepErr;
  for (int y = 0; y < r.height; ++y)
    k.jpegBgrToYcc(Line(s, sStep, y), Line(d[0], dStep, y), Line(d[1], dStep, y),
                   Line(d[2], dStep, y), r.width);
  return ippStsNoErr;
}

IppStatus SampleDown(const Kernels& k, bool vertical, const Ipp8u* s, int sStep, IppiSize ss,
                     Ipp8u* d, int dStep, IppiSize ds) {
  if (s == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(ss) || !SizeOk(ds)) return ippStsSizeErr;
  const int maxH = vertical ? (ss.height + 1) / 2 : ss.height;
  if (ds.width > (ss.width + 1) / 2 || ds.height > maxH) return ippStsSizeErr;
  if (!StepOk(sStep, ss.width, 1) || !StepOk(dStep, ds.width, 1)) return ippStsStepErr;
  // Whole source pairs go through the kernel; a destination column whose
  // second source column is missing repeats the first.
  const int whole = ds.width * 2 <= ss.width ? ds.width : ds.width - 1;
  for (int y = 0; y < ds.height; ++y) {
    Ipp8u* pd = Line(d, dStep, y);
    if (vertical) {
      const int y0 = 2 * y, y1 = 2 * y + 1 < ss.height ? 2 * y + 1 : 2 * y;
      const Ipp8u* r0 = Line(s, sStep, y0);
      const Ipp8u* r1 = Line(s, sStep, y1);
      k.sampleDownH2V2(r0, r1, pd, whole);
      if (whole < ds.width) {
        const int x = ss.width - 1;
        pd[whole] = static_cast<Ipp8u>((2 * r0[x] + 2 * r1[x] + 2) >> 2);
      }
    } else {
      const Ipp8u* r0 = Line(s, sStep, y);
      k.sampleDownH2V1(r0, pd, whole);
      if (whole < ds.width) pd[whole] = r0[ss.width - 1];
    }
  }
  return ippStsNoErr;
}

IppStatus YCbCr422Split(const Kernels& k, const Ipp8u* s, int sStep, Ipp8u* const d[3],
                        int dStep[3], IppiSize r) {
  if (s == nullptr || AnyNull3(d) || dStep == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  const int pairs = r.width / 2;
  if (!StepOk(sStep, r.width, 2) || !StepOk(dStep[0], r.width, 1) || !StepOk(dStep[1], pairs, 1) ||
      !StepOk(dStep[2], pairs, 1))
    return ippStsStepErr;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* ps = Line(s, sStep, y);
    Ipp8u* py = Line(d[0], dStep[0], y);
    k.yuy2Split(ps, py, Line(d[1], dStep[1], y), Line(d[2], dStep[2], y), pairs);
    if (r.width & 1) py[r.width - 1] = ps[2 * (r.width - 1)];
  }
  return ippStsNoErr;
}

IppStatus YCbCr422Join(const Kernels& k, const Ipp8u* const s[3], int sStep[3], Ipp8u* d, int dStep,
                       IppiSize r) {
  if (AnyNull3(s) || sStep == nullptr || d == nullptr) return ippStsNullPtrErr;
  if (!SizeOk(r)) return ippStsSizeErr;
  const int pairs = r.width / 2;
  if (!StepOk(sStep[0], r.width, 1) || !StepOk(sStep[1], pairs, 1) || !StepOk(sStep[2], pairs, 1) ||
      !StepOk(dStep, r.width, 2))
    return ippStsStepErr;
  for (int y = 0; y < r.height; ++y) {
    const Ipp8u* py = Line(s[0], sStep[0], y);
    const Ipp8u* pu = Line(s[1], sStep[1], y);
    Ipp8u* pd = Line(d, dStep, y);
    k.yuy2Join(py, pu, Line(s[2], sStep[2], y), pd, pairs);
    if (r.width & 1) {
      const int x = r.width - 1;
      pd[2 * x] = py[x];
      pd[2 * x + 1] = pairs ? pu[pairs - 1] : 128;
    }
  }
  return ippStsNoErr;
}

}  // namespace forms

IppStatus ippiYCbCr420ToBGR_8u_P3C3R(const Ipp8u* const s[3], int sStep[3], Ipp8u* d, int dStep,
                                     IppiSize r) {
  return forms::YCbCr420ToBGR(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiYCbCr422ToRGB_8u_C2C3R(const Ipp8u* s, int sStep, Ipp8u* d, int dStep, IppiSize r) {
  return forms::YCbCr422ToRGB_C2C3R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiYCbCr422ToRGB_8u_C2P3R(const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep,
                                     IppiSize r) {
  return forms::YCbCr422ToRGB_C2P3R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiRGBToYCbCr420_8u_C3P3R(const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep[3],
                                     IppiSize r) {
  return forms::RGBToYCbCr420(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiRGBToYCbCr422_8u_P3C2R(const Ipp8u* const s[3], int sStep, Ipp8u* d, int dStep,
                                     IppiSize r) {
  return forms::RGBToYCbCr422(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiYCbCrToBGR_JPEG_8u_P3C3R(const Ipp8u* const s[3], int sStep, Ipp8u* d, int dStep,
                                       IppiSize r) {
  return forms::YCbCrToBGR_JPEG(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiYCbCrToRGB_JPEG_8u_P3R(const Ipp8u* const s[3], int sStep, Ipp8u* const d[3],
                                     int dStep, IppiSize r) {
  return forms::YCbCrToRGB_JPEG_P3R(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiBGRToYCbCr_JPEG_8u_C3P3R(const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep,
                                       IppiSize r) {
  return forms::BGRToYCbCr_JPEG(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiSampleDownH2V2_JPEG_8u_C1R(const Ipp8u* s, int sStep, IppiSize ss, Ipp8u* d,
                                         int dStep, IppiSize ds) {
  return forms::SampleDown(ActiveKernels(), true, s, sStep, ss, d, dStep, ds);
}
IppStatus ippiSampleDownH2V1_JPEG_8u_C1R(const Ipp8u* s, int sStep, IppiSize ss, Ipp8u* d,
                                         int dStep, IppiSize ds) {
  return forms::SampleDown(ActiveKernels(), false, s, sStep, ss, d, dStep, ds);
}
IppStatus ippiYCbCr422_8u_C2P3R(const Ipp8u* s, int sStep, Ipp8u* const d[3], int dStep[3],
                                IppiSize r) {
  return forms::YCbCr422Split(ActiveKernels(), s, sStep, d, dStep, r);
}
IppStatus ippiYCbCr422_8u_P3C2R(const Ipp8u* const s[3], int sStep[3], Ipp8u* d, int dStep,
                                IppiSize r) {
  return forms::YCbCr422Join(ActiveKernels(), s, sStep, d, dStep, r);
}

}  // namespace ipp
}  // namespace orv
