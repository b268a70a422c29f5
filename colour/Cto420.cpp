// Line walks of Cto420. The row arithmetic lives in the row kernels
// (colour_rows.h); this file decides which source lines feed which
// destination lines.
#include "colour/Cto420.h"

#include <cstring>

namespace orv {

using colour::PlanarCoefs;
using colour::PlanarRows;

namespace {

// Picture line i of a source read from its last line up or from its first line down.
struct SourceLines {
  const uint8_t* base;
  int32_t pitch;
  int32_t height;
  bool up;
  const uint8_t* Line(int32_t i) const {
    const int32_t row = up ? height - 1 - i : i;
    return base + static_cast<intptr_t>(row) * pitch;
  }
};

struct PlanarDst {
  uint8_t* y;
  int32_t yPitch;
  uint8_t* u;
  int32_t uPitch;
  uint8_t* v;
  int32_t vPitch;
  uint8_t* Y(int32_t i) const { return y + static_cast<intptr_t>(i) * yPitch; }
  uint8_t* U(int32_t i) const { return u + static_cast<intptr_t>(i) * uPitch; }
  uint8_t* V(int32_t i) const { return v + static_cast<intptr_t>(i) * vPitch; }
};

enum class Packed { kRgb24, kRgb32, kYuy2 };

// Luma (or the Y bytes) of one source line into one destination line.
void LumaLine(Packed kind, const PlanarRows& rows, const PlanarCoefs& c, const uint8_t* src,
              int pairs, uint8_t* y) {
  switch (kind) {
    case Packed::kRgb24:
      rows.rgb24ToY(src, pairs, y, c);
      break;
    case Packed::kRgb32:
      rows.rgb32ToY(src, pairs, y, c);
      break;
    case Packed::kYuy2:
      rows.yuy2ToY(src, pairs, y);
      break;
  }
}

void ChromaLine(Packed kind, const PlanarRows& rows, const PlanarCoefs& c, const uint8_t* a,
                const uint8_t* b, int pairs, int field, uint8_t* u, uint8_t* v) {
  switch (kind) {
    case Packed::kRgb24:
      rows.rgb24ToUV(a, b, pairs, field, u, v, c);
      break;
    case Packed::kRgb32:
      rows.rgb32ToUV(a, b, pairs, field, u, v, c);
      break;
    case Packed::kYuy2:
      rows.yuy2ToUV(a, b, pairs, field, u, v);
      break;
  }
}

// Luma of lines a and b and their chroma; RGB rows do it in one pass.
void PairLines(Packed kind, const PlanarRows& rows, const PlanarCoefs& c, const uint8_t* a,
               const uint8_t* b, int pairs, int field, uint8_t* ya, uint8_t* yb, uint8_t* u,
               uint8_t* v) {
  if (kind == Packed::kRgb24) {
    rows.rgb24ToYUV(a, b, pairs, field, ya, yb, u, v, c);
  } else if (kind == Packed::kRgb32) {
    rows.rgb32ToYUV(a, b, pairs, field, ya, yb, u, v, c);
  } else {
    LumaLine(kind, rows, c, a, pairs, ya);
    LumaLine(kind, rows, c, b, pairs, yb);
    ChromaLine(kind, rows, c, a, b, pairs, field, u, v);
  }
}

// Frame walk: each line pair gives two luma lines and one chroma line.
bool WalkFrame(Packed kind, const PlanarRows& rows, const PlanarCoefs& c, const SourceLines& s,
               int32_t width, const PlanarDst& d) {
  const int pairs = width / 2;
  const int32_t linePairs = s.height / 2;
  if (pairs <= 0 || linePairs <= 0) return false;
  for (int32_t k = 0; k < linePairs; ++k) {
    const uint8_t* a = s.Line(2 * k);
    const uint8_t* b = s.Line(2 * k + 1);
    PairLines(kind, rows, c, a, b, pairs, 0, d.Y(2 * k), d.Y(2 * k + 1), d.U(k), d.V(k));
  }
  return true;
}

// Field walk, optionally moved down by one line. In group g the four
// destination lines 4g .. 4g+3 take the source lines m(4g) .. m(4g+3); with no
// shift m is the identity, with the shift m(l) = l - 1, and line -1 reads line 0.
// Chroma line 2g weights 4g (3/4) against 4g+2; chroma line 2g+1 weights 4g+3
// (3/4) against 4g+1.
bool WalkField(Packed kind, const PlanarRows& rows, const PlanarCoefs& c, const SourceLines& s,
               int32_t width, bool shift, const PlanarDst& d) {
  const int pairs = width / 2;
  const int32_t groups = s.height / 4;
  if (pairs <= 0 || groups <= 0) return false;
  for (int32_t g = 0; g < groups; ++g) {
    const uint8_t* L[4];
    for (int i = 0; i < 4; ++i) {
      int32_t src = 4 * g + i - (shift ? 1 : 0);
      L[i] = s.Line(src < 0 ? 0 : src);
    }
    PairLines(kind, rows, c, L[0], L[2], pairs, 1, d.Y(4 * g), d.Y(4 * g + 2), d.U(2 * g),
              d.V(2 * g));
    PairLines(kind, rows, c, L[3], L[1], pairs, 1, d.Y(4 * g + 3), d.Y(4 * g + 1), d.U(2 * g + 1),
              d.V(2 * g + 1));
  }
  return true;
}

inline uint8_t Clamp255(int32_t v) { return static_cast<uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// RGB to planar 4:2:2: luma of both pixels, chroma of the left pixel with
// D(x, c) = (x x 64 x c) >> 15.
template <int kBpp>
bool RgbTo422(const PlanarRows& rows, const PlanarCoefs& c, const SourceLines& s, int32_t width,
              const PlanarDst& d) {
  const int pairs = width / 2;
  if (pairs <= 0 || s.height <= 0) return false;
  for (int32_t i = 0; i < s.height; ++i) {
    const uint8_t* line = s.Line(i);
    if (kBpp == 3)
      rows.rgb24ToY(line, pairs, d.Y(i), c);
    else
      rows.rgb32ToY(line, pairs, d.Y(i), c);
    uint8_t* u = d.U(i);
    uint8_t* v = d.V(i);
    for (int j = 0; j < pairs; ++j) {
      const uint8_t* p = line + 2 * j * kBpp;
      const int32_t B = p[0], G = p[1], R = p[2];
      const auto D = [](int32_t x, int32_t k) { return (x * 64 * k) >> 15; };
      u[j] = Clamp255(128 + ((D(B, c.bToU) + D(G, c.gToU) + D(R, c.rToU) + 8) >> 4));
      v[j] = Clamp255(128 + ((D(B, c.bToV) + D(G, c.gToV) + D(R, c.rToV) + 8) >> 4));
    }
  }
  return true;
}

struct PlanarSrc {
  const uint8_t* y;
  int32_t yPitch;
  const uint8_t* u;
  int32_t uPitch;
  const uint8_t* v;
  int32_t vPitch;
  const uint8_t* Y(int32_t i) const { return y + static_cast<intptr_t>(i) * yPitch; }
  const uint8_t* U(int32_t i) const { return u + static_cast<intptr_t>(i) * uPitch; }
  const uint8_t* V(int32_t i) const { return v + static_cast<intptr_t>(i) * vPitch; }
};

// The vertical chroma filters of 4:2:0 to 4:2:2: for output line i, the two
// chroma lines, their weights, the rounding term and the shift.
struct ChromaTap {
  int32_t a, b, wa, wb, round, shift;
};

// Frame filter: line 0 c0; line 2k+1 (3ck + c(k+1) + r) >> 2; line 2k+2
// (ck + 3c(k+1) + r) >> 2; the last line c(N-1). Heights must be even.
template <typename Emit>
bool UpFrame(int32_t height, int round, Emit emit) {
  if (height < 2 || (height & 1)) return false;
  const int32_t n = height / 2;
  emit(0, ChromaTap{0, 0, 1, 0, 0, 0});
  const int32_t pairs = ((height - 3) >> 1) + 1;
  for (int32_t k = 0; k < pairs; ++k) {
    emit(2 * k + 1, ChromaTap{k, k + 1, 3, 1, round, 2});
    emit(2 * k + 2, ChromaTap{k, k + 1, 1, 3, round, 2});
  }
  emit(height - 1, ChromaTap{n - 1, n - 1, 1, 0, 0, 0});
  return true;
}

// Field filter: lines 0, 1 take c0, c1; the last two lines c(N-2), c(N-1);
// each group of four lines between weights the chroma lines of its own field
// by eighths. Heights must be multiples of 4.
template <typename Emit>
bool UpField(int32_t height, int round, Emit emit) {
  if (height < 4 || (height & 3)) return false;
  const int32_t n = height / 2;
  emit(0, ChromaTap{0, 0, 1, 0, 0, 0});
  emit(1, ChromaTap{1, 1, 1, 0, 0, 0});
  const int32_t groups = ((height - 5) >> 2) + 1;
  for (int32_t g = 0; g < groups; ++g) {
    const int32_t c0 = 2 * g, c1 = 2 * g + 1, c2 = 2 * g + 2, c3 = 2 * g + 3;
    emit(4 * g + 2, ChromaTap{c0, c2, 5, 3, round, 3});
    emit(4 * g + 3, ChromaTap{c1, c3, 7, 1, round, 3});
    emit(4 * g + 4, ChromaTap{c0, c2, 1, 7, round, 3});
    emit(4 * g + 5, ChromaTap{c1, c3, 3, 5, round, 3});
  }
  emit(height - 2, ChromaTap{n - 2, n - 2, 1, 0, 0, 0});
  emit(height - 1, ChromaTap{n - 1, n - 1, 1, 0, 0, 0});
  return true;
}

bool ToYuy2(const PlanarRows& rows, const PlanarSrc& s, int32_t width, int32_t height, bool field,
            int round, uint8_t* dst, int32_t dstPitch) {
  const int pairs = width / 2;
  if (pairs <= 0) return false;
  auto emit = [&](int32_t i, const ChromaTap& t) {
    rows.toYuy2(s.Y(i), s.U(t.a), s.U(t.b), s.V(t.a), s.V(t.b), pairs, t.wa, t.wb, t.round, t.shift,
                dst + static_cast<intptr_t>(i) * dstPitch);
  };
  return field ? UpField(height, round, emit) : UpFrame(height, round, emit);
}

bool To422(const PlanarSrc& s, int32_t width, int32_t height, bool field, int round,
           const PlanarDst& d) {
  const int pairs = width / 2;
  if (pairs <= 0) return false;
  auto emit = [&](int32_t i, const ChromaTap& t) {
    std::memcpy(d.Y(i), s.Y(i), static_cast<size_t>(pairs) * 2);
    const uint8_t *ua = s.U(t.a), *ub = s.U(t.b), *va = s.V(t.a), *vb = s.V(t.b);
    uint8_t* u = d.U(i);
    uint8_t* v = d.V(i);
    for (int j = 0; j < pairs; ++j) {
      u[j] = static_cast<uint8_t>((t.wa * ua[j] + t.wb * ub[j] + t.round) >> t.shift);
      v[j] = static_cast<uint8_t>((t.wa * va[j] + t.wb * vb[j] + t.round) >> t.shift);
    }
  };
  return field ? UpField(height, round, emit) : UpFrame(height, round, emit);
}

}  // namespace

PlanarCoefs Cto420::MakeCoefficients(int32_t mode, int32_t black) {
  if (mode == 1) return PlanarCoefs{black, 2449, 4808, 933, -1384, -2711, 4096, 4096, -3432, -663};
  return PlanarCoefs{16, 2097, 4128, 802, -1212, -2383, 3596, 3596, -3014, -581};
}

Cto420::Cto420(int32_t mode, int32_t black) : coefs_(), coefMode_(0) {
  coefs_ = MakeCoefficients(mode, black);
  coefMode_ = mode;
}

void Cto420::SetCoefficients(int32_t mode, int32_t black) {
  coefs_ = MakeCoefficients(mode, black);
  coefMode_ = mode;
}

Cto420::Form Cto420::GetForm() const { return Form{&coefs_, &colour::PlainPlanarRows(), 0, 0}; }

#define ORV_CTO420_PACKED_OP(Name, kind, walk, up, shift)                                         \
  bool Cto420::Name(const uint8_t* src, int32_t pitch, int32_t width, int32_t height, uint8_t* y, \
                    int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v, int32_t vPitch) {     \
    const Form f = GetForm();                                                                     \
    const SourceLines s{src, pitch, height, up};                                                  \
    const PlanarDst d{y, yPitch, u, uPitch, v, vPitch};                                           \
    return walk(kind, *f.rows, *f.coefs, s, width, shift, d);                                     \
  }

namespace {
inline bool WalkFrameShiftless(Packed kind, const PlanarRows& rows, const PlanarCoefs& c,
                               const SourceLines& s, int32_t width, bool, const PlanarDst& d) {
  return WalkFrame(kind, rows, c, s, width, d);
}
}  // namespace

ORV_CTO420_PACKED_OP(RGB32ToYUV420Frame, Packed::kRgb32, WalkFrameShiftless, false, false)
ORV_CTO420_PACKED_OP(RGB32ToYUV420FrameUp, Packed::kRgb32, WalkFrameShiftless, true, false)
ORV_CTO420_PACKED_OP(RGB32ToYUV420Field, Packed::kRgb32, WalkField, false, false)
ORV_CTO420_PACKED_OP(RGB32ToYUV420FieldUp, Packed::kRgb32, WalkField, true, false)
ORV_CTO420_PACKED_OP(RGB32ToYUV420Shift, Packed::kRgb32, WalkField, false, true)
ORV_CTO420_PACKED_OP(RGB32ToYUV420ShiftUp, Packed::kRgb32, WalkField, true, true)
ORV_CTO420_PACKED_OP(RGB24ToYUV420Frame, Packed::kRgb24, WalkFrameShiftless, false, false)
ORV_CTO420_PACKED_OP(RGB24ToYUV420FrameUp, Packed::kRgb24, WalkFrameShiftless, true, false)
ORV_CTO420_PACKED_OP(RGB24ToYUV420Field, Packed::kRgb24, WalkField, false, false)
ORV_CTO420_PACKED_OP(RGB24ToYUV420FieldUp, Packed::kRgb24, WalkField, true, false)
ORV_CTO420_PACKED_OP(RGB24ToYUV420Shift, Packed::kRgb24, WalkField, false, true)
ORV_CTO420_PACKED_OP(RGB24ToYUV420ShiftUp, Packed::kRgb24, WalkField, true, true)
ORV_CTO420_PACKED_OP(YUY2ToYUV420Frame, Packed::kYuy2, WalkFrameShiftless, false, false)
ORV_CTO420_PACKED_OP(YUY2ToYUV420Field, Packed::kYuy2, WalkField, false, false)
ORV_CTO420_PACKED_OP(YUY2ToYUV420Shift, Packed::kYuy2, WalkField, false, true)
#undef ORV_CTO420_PACKED_OP

bool Cto420::YUY2ToYUV422(const uint8_t* src, int32_t pitch, int32_t width, int32_t height,
                          uint8_t* y, int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v,
                          int32_t vPitch) {
  const int pairs = width / 2;
  if (pairs <= 0 || height <= 0) return false;
  const colour::PlanarRows& rows = *GetForm().rows;
  for (int32_t i = 0; i < height; ++i) {
    const uint8_t* line = src + static_cast<intptr_t>(i) * pitch;
    rows.yuy2ToY(line, pairs, y + static_cast<intptr_t>(i) * yPitch);
    uint8_t* ul = u + static_cast<intptr_t>(i) * uPitch;
    uint8_t* vl = v + static_cast<intptr_t>(i) * vPitch;
    for (int j = 0; j < pairs; ++j) {
      ul[j] = line[4 * j + 1];
      vl[j] = line[4 * j + 3];
    }
  }
  return true;
}

#define ORV_CTO420_RGB422_OP(Name, bpp, up)                                                       \
  bool Cto420::Name(const uint8_t* src, int32_t pitch, int32_t width, int32_t height, uint8_t* y, \
                    int32_t yPitch, uint8_t* u, int32_t uPitch, uint8_t* v, int32_t vPitch) {     \
    const Form f = GetForm();                                                                     \
    return RgbTo422<bpp>(*f.rows, *f.coefs, SourceLines{src, pitch, height, up}, width,           \
                         PlanarDst{y, yPitch, u, uPitch, v, vPitch});                             \
  }
ORV_CTO420_RGB422_OP(RGB24ToYUV422, 3, false)
ORV_CTO420_RGB422_OP(RGB24ToYUV422Up, 3, true)
ORV_CTO420_RGB422_OP(RGB32ToYUV422, 4, false)
ORV_CTO420_RGB422_OP(RGB32ToYUV422Up, 4, true)
#undef ORV_CTO420_RGB422_OP

bool Cto420::YUV420ToYUY2Frame(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                               const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                               uint8_t* dst, int32_t dstPitch) {
  const Form f = GetForm();
  return ToYuy2(*f.rows, PlanarSrc{y, yPitch, u, uPitch, v, vPitch}, width, height, false,
                f.yuy2FrameRound, dst, dstPitch);
}

bool Cto420::YUV420ToYUY2Field(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                               const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                               uint8_t* dst, int32_t dstPitch) {
  const Form f = GetForm();
  return ToYuy2(*f.rows, PlanarSrc{y, yPitch, u, uPitch, v, vPitch}, width, height, true,
                f.yuy2FieldRound, dst, dstPitch);
}

bool Cto420::YUV420ToYUV422Frame(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                 const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                 uint8_t* dy, int32_t dyPitch, uint8_t* du, int32_t duPitch,
                                 uint8_t* dv, int32_t dvPitch) {
  return To422(PlanarSrc{y, yPitch, u, uPitch, v, vPitch}, width, height, false, 2,
               PlanarDst{dy, dyPitch, du, duPitch, dv, dvPitch});
}

bool Cto420::YUV420ToYUV422Field(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                 const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                 uint8_t* dy, int32_t dyPitch, uint8_t* du, int32_t duPitch,
                                 uint8_t* dv, int32_t dvPitch) {
  return To422(PlanarSrc{y, yPitch, u, uPitch, v, vPitch}, width, height, true, 4,
               PlanarDst{dy, dyPitch, du, duPitch, dv, dvPitch});
}

namespace {
// UYVY with repeated chroma lines: line i takes chroma line chromaOf(i).
template <typename ChromaOf>
void ToUyvy(const PlanarSrc& s, int32_t width, int32_t height, uint8_t* dst, int32_t dstPitch,
            ChromaOf chromaOf) {
  const int pairs = width / 2;
  for (int32_t i = 0; i < height; ++i) {
    const uint8_t* yl = s.Y(i);
    const uint8_t* ul = s.U(chromaOf(i));
    const uint8_t* vl = s.V(chromaOf(i));
    uint8_t* d = dst + static_cast<intptr_t>(i) * dstPitch;
    for (int j = 0; j < pairs; ++j) {
      d[4 * j] = ul[j];
      d[4 * j + 1] = yl[2 * j];
      d[4 * j + 2] = vl[j];
      d[4 * j + 3] = yl[2 * j + 1];
    }
  }
}
}  // namespace

bool Cto420::YUV420ToUYVYFrame(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                               const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                               uint8_t* dst, int32_t dstPitch) {
  if (width < 2 || height < 2 || (height & 1)) return false;
  ToUyvy(PlanarSrc{y, yPitch, u, uPitch, v, vPitch}, width, height, dst, dstPitch,
         [](int32_t i) { return i / 2; });
  return true;
}

bool Cto420::YUV420ToUYVYField(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                               const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                               uint8_t* dst, int32_t dstPitch) {
  if (width < 2 || height < 4 || (height & 3)) return false;
  ToUyvy(PlanarSrc{y, yPitch, u, uPitch, v, vPitch}, width, height, dst, dstPitch,
         [](int32_t i) { return 2 * (i / 4) + (i % 2); });
  return true;
}

bool Cto420::YUV420ToNV12Planes(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                                const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                                uint8_t* dy, int32_t dstPitch, uint8_t* duv, int32_t, uint8_t*,
                                int32_t) {
  if (width <= 0 || height <= 0) return false;
  for (int32_t i = 0; i < height; ++i)
    std::memcpy(dy + static_cast<intptr_t>(i) * dstPitch, y + static_cast<intptr_t>(i) * yPitch,
                static_cast<size_t>(width));
  const int pairs = width / 2;
  for (int32_t i = 0; i < height / 2; ++i) {
    const uint8_t* ul = u + static_cast<intptr_t>(i) * uPitch;
    const uint8_t* vl = v + static_cast<intptr_t>(i) * vPitch;
    uint8_t* d = duv + static_cast<intptr_t>(i) * dstPitch;
    for (int j = 0; j < pairs; ++j) {
      d[2 * j] = ul[j];
      d[2 * j + 1] = vl[j];
    }
  }
  return true;
}

bool Cto420::YUV420ToNV12(const uint8_t* y, int32_t yPitch, const uint8_t* u, int32_t uPitch,
                          const uint8_t* v, int32_t vPitch, int32_t width, int32_t height,
                          uint8_t* dst, int32_t dstPitch) {
  return YUV420ToNV12Planes(y, yPitch, u, uPitch, v, vPitch, width, height, dst, dstPitch,
                            dst + static_cast<intptr_t>(height) * dstPitch, 0, nullptr, 0);
}

// ---------------------------------------------------------------------------

Cto420_MMX::Cto420_MMX(int32_t mode, int32_t black, SimdLevel level)
    : Cto420(1, 0), vectors_(), laneCoefs_(), level_(level) {
  SetCoefficients(mode, black);
}

void Cto420_MMX::SetCoefficients(int32_t mode, int32_t black) {
  // The base fields keep the straight set with black 0; this form reads its vectors.
  laneCoefs_ = MakeCoefficients(mode, black);
  coefMode_ = mode;
  for (int i = 0; i < 4; ++i) {
    vectors_.black[i] = static_cast<int16_t>(laneCoefs_.black);
    vectors_.rToY[i] = static_cast<int16_t>(laneCoefs_.rToY);
    vectors_.gToY[i] = static_cast<int16_t>(laneCoefs_.gToY);
    vectors_.bToY[i] = static_cast<int16_t>(laneCoefs_.bToY);
    vectors_.rToU[i] = static_cast<int16_t>(laneCoefs_.rToU);
    vectors_.gToU[i] = static_cast<int16_t>(laneCoefs_.gToU);
    vectors_.bToU[i] = static_cast<int16_t>(laneCoefs_.bToU);
    vectors_.rToV[i] = static_cast<int16_t>(laneCoefs_.rToV);
    vectors_.gToV[i] = static_cast<int16_t>(laneCoefs_.gToV);
    vectors_.bToV[i] = static_cast<int16_t>(laneCoefs_.bToV);
  }
}

Cto420::Form Cto420_MMX::GetForm() const {
  return Form{&laneCoefs_, &colour::GetPlanarRows(level_), 2, 4};
}

}  // namespace orv
