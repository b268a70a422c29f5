// Plain forms of the row kernels: they define the bytes of every form.
#include <cstddef>
#include <cstring>

#include "platform/primitives/ipp_color_math.h"
#include "platform/primitives/ipp_kernels.h"

namespace orv {
namespace ipp {
namespace {

using color::Sat;

void Yuv420ToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int pairs) {
  for (int i = 0; i < pairs; ++i) {
    color::StudioToRgb(y[2 * i], cb[i], cr[i], &bgr[6 * i + 2], &bgr[6 * i + 1], &bgr[6 * i]);
    color::StudioToRgb(y[2 * i + 1], cb[i], cr[i], &bgr[6 * i + 5], &bgr[6 * i + 4],
                       &bgr[6 * i + 3]);
  }
}

void Yuy2ToRgb(const uint8_t* s, uint8_t* rgb, int pairs) {
  for (int i = 0; i < pairs; ++i, s += 4, rgb += 6) {
    color::StudioToRgb(s[0], s[1], s[3], &rgb[0], &rgb[1], &rgb[2]);
    color::StudioToRgb(s[2], s[1], s[3], &rgb[3], &rgb[4], &rgb[5]);
  }
}

void Yuy2ToRgbPlanes(const uint8_t* s, uint8_t* r, uint8_t* g, uint8_t* b, int pairs) {
  for (int i = 0; i < pairs; ++i, s += 4) {
    color::StudioToRgb(s[0], s[1], s[3], &r[2 * i], &g[2 * i], &b[2 * i]);
    color::StudioToRgb(s[2], s[1], s[3], &r[2 * i + 1], &g[2 * i + 1], &b[2 * i + 1]);
  }
}

void RgbToYcc420(const uint8_t* p0, const uint8_t* p1, uint8_t* y0, uint8_t* y1, uint8_t* cb,
                 uint8_t* cr, int pairs) {
  for (int i = 0; i < pairs; ++i, p0 += 6, p1 += 6) {
    y0[2 * i] = color::StudioY(p0[0], p0[1], p0[2]);
    y0[2 * i + 1] = color::StudioY(p0[3], p0[4], p0[5]);
    y1[2 * i] = color::StudioY(p1[0], p1[1], p1[2]);
    y1[2 * i + 1] = color::StudioY(p1[3], p1[4], p1[5]);
    const int r = p0[0] + p0[3] + p1[0] + p1[3];
    const int g = p0[1] + p0[4] + p1[1] + p1[4];
    const int b = p0[2] + p0[5] + p1[2] + p1[5];
    cb[i] = color::StudioCbSum(r, g, b, 2);
    cr[i] = color::StudioCrSum(r, g, b, 2);
  }
}

void RgbPlanesToYuy2(const uint8_t* r, const uint8_t* g, const uint8_t* b, uint8_t* d, int pairs) {
  for (int i = 0; i < pairs; ++i, d += 4) {
    const int j = 2 * i;
    d[0] = color::StudioY(r[j], g[j], b[j]);
    d[2] = color::StudioY(r[j + 1], g[j + 1], b[j + 1]);
    const int rs = r[j] + r[j + 1], gs = g[j] + g[j + 1], bs = b[j] + b[j + 1];
    d[1] = color::StudioCbSum(rs, gs, bs, 1);
    d[3] = color::StudioCrSum(rs, gs, bs, 1);
  }
}

void JpegYccToBgr(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* bgr, int width) {
  for (int x = 0; x < width; ++x, bgr += 3)
    color::JpegToRgb(y[x], cb[x], cr[x], &bgr[2], &bgr[1], &bgr[0]);
}

void JpegYccToRgbPlanes(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* r,
                        uint8_t* g, uint8_t* b, int width) {
  for (int x = 0; x < width; ++x) color::JpegToRgb(y[x], cb[x], cr[x], &r[x], &g[x], &b[x]);
}

void JpegBgrToYcc(const uint8_t* bgr, uint8_t* y, uint8_t* cb, uint8_t* cr, int width) {
  for (int x = 0; x < width; ++x, bgr += 3)
    color::RgbToJpeg(bgr[2], bgr[1], bgr[0], &y[x], &cb[x], &cr[x]);
}

void SampleDownH2V2(const uint8_t* r0, const uint8_t* r1, uint8_t* d, int width) {
  for (int x = 0; x < width; ++x)
    d[x] = static_cast<uint8_t>((r0[2 * x] + r0[2 * x + 1] + r1[2 * x] + r1[2 * x + 1] + 2) >> 2);
}

void SampleDownH2V1(const uint8_t* r, uint8_t* d, int width) {
  for (int x = 0; x < width; ++x) d[x] = static_cast<uint8_t>((r[2 * x] + r[2 * x + 1] + 1) >> 1);
}

void Yuy2Split(const uint8_t* s, uint8_t* y, uint8_t* cb, uint8_t* cr, int pairs) {
  for (int i = 0; i < pairs; ++i, s += 4) {
    y[2 * i] = s[0];
    cb[i] = s[1];
    y[2 * i + 1] = s[2];
    cr[i] = s[3];
  }
}

void Yuy2Join(const uint8_t* y, const uint8_t* cb, const uint8_t* cr, uint8_t* d, int pairs) {
  for (int i = 0; i < pairs; ++i, d += 4) {
    d[0] = y[2 * i];
    d[1] = cb[i];
    d[2] = y[2 * i + 1];
    d[3] = cr[i];
  }
}

template <int C>
void Reverse(const uint8_t* src, uint8_t* dst, int width) {
  const uint8_t* s = src + static_cast<ptrdiff_t>(width - 1) * C;
  for (int x = 0; x < width; ++x, s -= C, dst += C)
    for (int c = 0; c < C; ++c) dst[c] = s[c];
}

void CopyC3AC4(const uint8_t* s, uint8_t* d, int width) {
  for (int x = 0; x < width; ++x, s += 3, d += 4) {
    d[0] = s[0];
    d[1] = s[1];
    d[2] = s[2];
  }
}

void CopyAC4C3(const uint8_t* s, uint8_t* d, int width) {
  for (int x = 0; x < width; ++x, s += 4, d += 3) {
    d[0] = s[0];
    d[1] = s[1];
    d[2] = s[2];
  }
}

void CopyC3P3(const uint8_t* s, uint8_t* d0, uint8_t* d1, uint8_t* d2, int width) {
  for (int x = 0; x < width; ++x, s += 3) {
    d0[x] = s[0];
    d1[x] = s[1];
    d2[x] = s[2];
  }
}

void CopyC4P4(const uint8_t* s, uint8_t* d0, uint8_t* d1, uint8_t* d2, uint8_t* d3, int width) {
  for (int x = 0; x < width; ++x, s += 4) {
    d0[x] = s[0];
    d1[x] = s[1];
    d2[x] = s[2];
    d3[x] = s[3];
  }
}

void CopyP4C4(const uint8_t* s0, const uint8_t* s1, const uint8_t* s2, const uint8_t* s3,
              uint8_t* d, int width) {
  for (int x = 0; x < width; ++x, d += 4) {
    d[0] = s0[x];
    d[1] = s1[x];
    d[2] = s2[x];
    d[3] = s3[x];
  }
}

void CopyC4C1(const uint8_t* s, uint8_t* d, int width) {
  for (int x = 0; x < width; ++x) d[x] = s[4 * x];
}

void SwapC3(const uint8_t* s, uint8_t* d, int width, const int order[3]) {
  for (int x = 0; x < width; ++x, s += 3, d += 3) {
    const uint8_t p[3] = {s[0], s[1], s[2]};
    d[0] = p[order[0]];
    d[1] = p[order[1]];
    d[2] = p[order[2]];
  }
}

void SetC4(uint8_t* d, int width, const uint8_t v[4]) {
  for (int x = 0; x < width; ++x, d += 4) std::memcpy(d, v, 4);
}

void SetC4C(uint8_t* d, int width, uint8_t v) {
  for (int x = 0; x < width; ++x) d[4 * x] = v;
}

inline int Div255(int v) { return (v + 127) / 255; }

void AlphaMix(const uint8_t* a, const uint8_t* b, uint8_t* d, int count, int wa, int wb) {
  for (int i = 0; i < count; ++i) {
    const int v = Div255(wa * a[i] + wb * b[i]);
    d[i] = static_cast<uint8_t>(v > 255 ? 255 : v);
  }
}

void AlphaOverAC4(const uint8_t* a, const uint8_t* b, uint8_t* d, int width) {
  for (int x = 0; x < width; ++x, a += 4, b += 4, d += 4) {
    const int wa = a[3];
    const int wb = Div255((255 - wa) * b[3]);
    d[0] = static_cast<uint8_t>(Div255(wa * a[0] + wb * b[0]));
    d[1] = static_cast<uint8_t>(Div255(wa * a[1] + wb * b[1]));
    d[2] = static_cast<uint8_t>(Div255(wa * a[2] + wb * b[2]));
    d[3] = static_cast<uint8_t>(wa + wb);
  }
}

void FilterVertical(const uint8_t* const* rows, const int16_t* coef, int taps, int16_t* out,
                    int count) {
  for (int i = 0; i < count; ++i) {
    int sum = 0;
    for (int t = 0; t < taps; ++t) sum += rows[t][i] * coef[t];
    out[i] = static_cast<int16_t>((sum + 128) >> 8);
  }
}

template <int C>
void FilterHorizontal(const int16_t* src, const int32_t* start, const int16_t* coef, int taps,
                      uint8_t* dst, int width) {
  for (int x = 0; x < width; ++x, coef += taps, dst += C) {
    const int16_t* s = src + static_cast<ptrdiff_t>(start[x]) * C;
    for (int c = 0; c < C; ++c) {
      int sum = 0;
      for (int t = 0; t < taps; ++t) sum += s[t * C + c] * coef[t];
      dst[c] = Sat((sum + (1 << 19)) >> 20);
    }
  }
}

template <int C>
void Gather(const uint8_t* src, const int32_t* index, uint8_t* dst, int width) {
  for (int x = 0; x < width; ++x, dst += C) {
    const uint8_t* s = src + static_cast<ptrdiff_t>(index[x]) * C;
    for (int c = 0; c < C; ++c) dst[c] = s[c];
  }
}

Kernels MakePlain() {
  Kernels k;
  k.yuv420ToBgr = Yuv420ToBgr;
  k.yuy2ToRgb = Yuy2ToRgb;
  k.yuy2ToRgbPlanes = Yuy2ToRgbPlanes;
  k.rgbToYcc420 = RgbToYcc420;
  k.rgbPlanesToYuy2 = RgbPlanesToYuy2;
  k.jpegYccToBgr = JpegYccToBgr;
  k.jpegYccToRgbPlanes = JpegYccToRgbPlanes;
  k.jpegBgrToYcc = JpegBgrToYcc;
  k.sampleDownH2V2 = SampleDownH2V2;
  k.sampleDownH2V1 = SampleDownH2V1;
  k.yuy2Split = Yuy2Split;
  k.yuy2Join = Yuy2Join;
  k.reverseC1 = Reverse<1>;
  k.reverseC3 = Reverse<3>;
  k.reverseC4 = Reverse<4>;
  k.copyC3AC4 = CopyC3AC4;
  k.copyAC4C3 = CopyAC4C3;
  k.copyC3P3 = CopyC3P3;
  k.copyC4P4 = CopyC4P4;
  k.copyP4C4 = CopyP4C4;
  k.copyC4C1 = CopyC4C1;
  k.swapC3 = SwapC3;
  k.setC4 = SetC4;
  k.setC4C = SetC4C;
  k.alphaMix = AlphaMix;
  k.alphaOverAC4 = AlphaOverAC4;
  k.filterVertical = FilterVertical;
  k.filterHorizontalC1 = FilterHorizontal<1>;
  k.filterHorizontalC3 = FilterHorizontal<3>;
  k.filterHorizontalC4 = FilterHorizontal<4>;
  k.gatherC1 = Gather<1>;
  k.gatherC3 = Gather<3>;
  k.gatherC4 = Gather<4>;
  return k;
}

Kernels MakeForLevel(SimdLevel level) {
  Kernels k = MakePlain();
#if ORV_X86_SIMD
  if (level >= SimdLevel::kSse2) InstallSse2Kernels(&k);
  if (level >= SimdLevel::kSsse3) InstallSsse3Kernels(&k);
  if (level >= SimdLevel::kAvx2) {
    InstallAvx2Kernels(&k);
    InstallAvx2ResizeKernels(&k);
  }
  if (level >= SimdLevel::kAvx512) {
    InstallAvx512ResizeKernels(&k);
    InstallAvx512AlphaKernels(&k);
    InstallAvx512ColorKernels(&k);
  }
#else
  (void)level;
#endif
  return k;
}

}  // namespace

const Kernels& PlainKernels() {
  static const Kernels k = MakePlain();
  return k;
}

const Kernels& KernelsFor(SimdLevel level) {
  static const Kernels tables[] = {
      MakeForLevel(SimdLevel::kPlain), MakeForLevel(SimdLevel::kSse2),
      MakeForLevel(SimdLevel::kSsse3), MakeForLevel(SimdLevel::kSse41),
      MakeForLevel(SimdLevel::kAvx2),  MakeForLevel(SimdLevel::kAvx512)};
  int i = static_cast<int>(level);
  if (i < 0) i = 0;
  if (i > 5) i = 5;
  return tables[i];
}

const Kernels& ActiveKernels() {
  static const Kernels& k = KernelsFor(DetectSimdLevel());
  return k;
}

}  // namespace ipp
}  // namespace orv
