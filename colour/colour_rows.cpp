// Plain row kernels: the arithmetic that defines the bytes of every form.
//
// Products and shifts are on signed 32-bit values and every right shift is
// arithmetic, so each sum here is the exact image of the 16-bit multiply-high,
// saturating add and unsigned pack that the processor bodies use.
#include "colour/colour_rows.h"

namespace orv {
namespace colour {
namespace {

inline uint8_t Clamp255(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// T(x, c) = (x x 64 x c) >> 16: the high half of (x << 6) times c.
inline int32_t LumaTerm(int32_t x, int32_t c) { return (x * 64 * c) >> 16; }

inline uint8_t Luma(int32_t b, int32_t g, int32_t r, const PlanarCoefs& c) {
  return Clamp255(c.black +
                  ((LumaTerm(b, c.bToY) + LumaTerm(g, c.gToY) + LumaTerm(r, c.rToY) + 4) >> 3));
}

// C(s, c) = (s x c) >> 16, with s the filtered component scaled to twice a pixel.
inline uint8_t Chroma(int32_t sb, int32_t sg, int32_t sr, int32_t cb, int32_t cg, int32_t cr) {
  return Clamp255(128 + ((((sb * cb) >> 16) + ((sg * cg) >> 16) + ((sr * cr) >> 16) + 8) >> 4));
}

template <int kBpp>
void RgbToY(const uint8_t* src, int pairs, uint8_t* y, const PlanarCoefs& c) {
  for (int i = 0; i < pairs * 2; ++i, src += kBpp) y[i] = Luma(src[0], src[1], src[2], c);
}

template <int kBpp>
void RgbToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v,
             const PlanarCoefs& c) {
  for (int j = 0; j < pairs; ++j, a += 2 * kBpp, b += 2 * kBpp) {
    int32_t s[3];
    for (int k = 0; k < 3; ++k) s[k] = field ? (3 * a[k] + b[k]) * 32 : (a[k] + b[k]) * 64;
    u[j] = Chroma(s[0], s[1], s[2], c.bToU, c.gToU, c.rToU);
    v[j] = Chroma(s[0], s[1], s[2], c.bToV, c.gToV, c.rToV);
  }
}

template <int kBpp>
void RgbToYUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* ya, uint8_t* yb,
              uint8_t* u, uint8_t* v, const PlanarCoefs& c) {
  RgbToY<kBpp>(a, pairs, ya, c);
  RgbToY<kBpp>(b, pairs, yb, c);
  RgbToUV<kBpp>(a, b, pairs, field, u, v, c);
}

void Yuy2ToY(const uint8_t* src, int pairs, uint8_t* y) {
  for (int j = 0; j < pairs; ++j) {
    y[2 * j] = src[4 * j];
    y[2 * j + 1] = src[4 * j + 2];
  }
}

void Yuy2ToUV(const uint8_t* a, const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v) {
  for (int j = 0; j < pairs; ++j) {
    const int ua = a[4 * j + 1], ub = b[4 * j + 1], va = a[4 * j + 3], vb = b[4 * j + 3];
    u[j] = static_cast<uint8_t>(field ? (3 * ua + ub + 2) >> 2 : (ua + ub + 1) >> 1);
    v[j] = static_cast<uint8_t>(field ? (3 * va + vb + 2) >> 2 : (va + vb + 1) >> 1);
  }
}

void ToYuy2(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
            const uint8_t* vb, int pairs, int wa, int wb, int round, int shift, uint8_t* dst) {
  for (int j = 0; j < pairs; ++j) {
    dst[4 * j] = y[2 * j];
    dst[4 * j + 1] = static_cast<uint8_t>((wa * ua[j] + wb * ub[j] + round) >> shift);
    dst[4 * j + 2] = y[2 * j + 1];
    dst[4 * j + 3] = static_cast<uint8_t>((wa * va[j] + wb * vb[j] + round) >> shift);
  }
}

void Terms(const uint8_t* u, const uint8_t* v, int n, const RgbMatrix& m, int16_t* r, int16_t* g,
           int16_t* b) {
  for (int i = 0; i < n; ++i) {
    const int32_t uu = (u[i] - 128) * 256, vv = (v[i] - 128) * 256;
    r[i] = static_cast<int16_t>((m.vToR * vv) >> 16);
    g[i] = static_cast<int16_t>((m.vToG * vv + m.uToG * uu + 32768) >> 16);
    b[i] = static_cast<int16_t>((m.uToB * uu) >> 16);
  }
  if (n > 0) {
    r[n] = r[n - 1];
    g[n] = g[n - 1];
    b[n] = b[n - 1];
  }
}

void Filter(const int16_t* pa, const int16_t* pb, int count, TermFilter kind, bool blue,
            int16_t* outA, int16_t* outB) {
  for (int i = 0; i < count; ++i) {
    const int32_t a = pa[i], b = pb[i];
    int32_t A, B;
    if (!blue) {
      if (kind == kFilterFrame) {
        A = (3 * a + b + 2) >> 2;
        B = (3 * b + a + 2) >> 2;
      } else if (kind == kFilterField1) {
        const int32_t d = (a - b) >> 1;
        A = (d + 2 * (a + b) + 2) >> 2;
        B = (d + 4 * b + 2) >> 2;
      } else {
        const int32_t d = (b - a) >> 1;
        A = (d + 4 * a + 2) >> 2;
        B = (d + 2 * (a + b) + 2) >> 2;
      }
    } else {
      if (kind == kFilterFrame) {
        const int32_t d = (a - b) >> 1;
        A = (d + a + b + 1) >> 1;
        B = (a + b - d + 1) >> 1;
      } else if (kind == kFilterField1) {
        const int32_t e = (a - b) >> 2;
        A = (e + a + b + 1) >> 1;
        B = (e + 2 * b + 1) >> 1;
      } else {
        const int32_t e = (b - a) >> 2;
        A = (e + 2 * a + 1) >> 1;
        B = (e + a + b + 1) >> 1;
      }
    }
    outA[i] = static_cast<int16_t>(A);
    outB[i] = static_cast<int16_t>(B);
  }
}

inline void PutPixel(uint8_t* dst, PixelKind kind, int32_t R, int32_t G, int32_t B) {
  const uint8_t r = Clamp255(R), g = Clamp255(G), b = Clamp255(B);
  switch (kind) {
    case kPixBgr0:
    case kPixBgra:
      dst[0] = b;
      dst[1] = g;
      dst[2] = r;
      dst[3] = kind == kPixBgra ? 255 : 0;
      break;
    case kPix0rgb:
      dst[0] = 0;
      dst[1] = r;
      dst[2] = g;
      dst[3] = b;
      break;
    case kPixBgr:
      dst[0] = b;
      dst[1] = g;
      dst[2] = r;
      break;
    case kPix555: {
      const uint16_t w = static_cast<uint16_t>(((r & 0xF8) << 7) | ((g & 0xF8) << 2) | (b >> 3));
      dst[0] = static_cast<uint8_t>(w);
      dst[1] = static_cast<uint8_t>(w >> 8);
      break;
    }
    case kPix565: {
      const uint16_t w = static_cast<uint16_t>(((r & 0xF8) << 8) | ((g & 0xFC) << 3) | (b >> 3));
      dst[0] = static_cast<uint8_t>(w);
      dst[1] = static_cast<uint8_t>(w >> 8);
      break;
    }
  }
}

void Pixels(const uint8_t* y, const int16_t* r, const int16_t* g, const int16_t* b, int width,
            const RgbMatrix& m, PixelKind kind, uint8_t* dst) {
  const int bpp = BytesPerPixel(kind);
  for (int i = 0; i < width / 2; ++i) {
    const int32_t t0 = 2 * ((y[2 * i] * 128 * m.yGain) >> 16) - m.yOffset;
    const int32_t t1 = 2 * ((y[2 * i + 1] * 128 * m.yGain) >> 16) - m.yOffset;
    PutPixel(dst + (2 * i) * bpp, kind, (t0 + 2 * r[i]) >> 6, (t0 + 2 * g[i]) >> 6,
             (t0 + 2 * b[i]) >> 6);
    PutPixel(dst + (2 * i + 1) * bpp, kind, (t1 + r[i] + r[i + 1]) >> 6,
             (t1 + g[i] + g[i + 1]) >> 6, (t1 + b[i] + b[i + 1]) >> 6);
  }
}

// The doubled horizontal chroma sample of pixel p of a line of n columns,
// centred on 128: e[2j] = 2x[j], e[2j+1] = x[j] + x[j+1], e[2n-1] = 2x[n-1].
inline int32_t Doubled(const uint8_t* c, int p, int n) {
  const int j = p >> 1;
  if ((p & 1) == 0 || j + 1 >= n) return 2 * (c[j] - 128);
  return (c[j] - 128) + (c[j + 1] - 128);
}

void Route24(const uint8_t* y, const uint8_t* ua, const uint8_t* ub, const uint8_t* va,
             const uint8_t* vb, int width, int wa, int wb, int mul, const RgbMatrix& m,
             uint8_t* dst) {
  const int n = width / 2;
  for (int p = 0; p < n * 2; ++p, dst += 3) {
    const int32_t eu =
        static_cast<int16_t>((wa * Doubled(ua, p, n) + wb * Doubled(ub, p, n)) * mul);
    const int32_t ev =
        static_cast<int16_t>((wa * Doubled(va, p, n) + wb * Doubled(vb, p, n)) * mul);
    const int32_t L = ((y[p] * 128 * m.yGain24) >> 16) - m.yOffset24;
    dst[0] = Clamp255((L + ((m.uToB * eu) >> 16)) >> 4);
    dst[1] = Clamp255((L + ((m.uToG * eu) >> 16) + ((m.vToG * ev) >> 16)) >> 4);
    dst[2] = Clamp255((L + ((m.vToR * ev) >> 16)) >> 4);
  }
}

void LineMean(const uint8_t* p, const uint8_t* q, int bytes, uint8_t* dst) {
  for (int i = 0; i < bytes; ++i) dst[i] = static_cast<uint8_t>((p[i] + q[i] + 1) >> 1);
}

const PlanarRows kPlainPlanar = {RgbToY<3>,   RgbToY<4>, RgbToUV<3>, RgbToUV<4>, RgbToYUV<3>,
                                 RgbToYUV<4>, Yuy2ToY,   Yuy2ToUV,   ToYuy2};
const RgbRows kPlainRgb = {Terms, Filter, Pixels, Route24, LineMean};

}  // namespace

const PlanarRows& PlainPlanarRows() { return kPlainPlanar; }
const RgbRows& PlainRgbRows() { return kPlainRgb; }

const PlanarRows& GetPlanarRows(SimdLevel level) {
#if ORV_X86_SIMD
  if (level >= SimdLevel::kAvx512) return Avx512PlanarRows();
  if (level >= SimdLevel::kAvx2) return Avx2PlanarRows();
  if (level >= SimdLevel::kSse2) return Sse2PlanarRows();
#else
  (void)level;
#endif
  return kPlainPlanar;
}

const RgbRows& GetRgbRows(SimdLevel level) {
#if ORV_X86_SIMD
  if (level >= SimdLevel::kAvx512) return Avx512RgbRows();
  if (level >= SimdLevel::kAvx2) return Avx2RgbRows();
  if (level >= SimdLevel::kSse2) return Sse2RgbRows();
#else
  (void)level;
#endif
  return kPlainRgb;
}

}  // namespace colour
}  // namespace orv
