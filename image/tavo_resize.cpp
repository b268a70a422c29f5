// The plane walkers of the own picture scaler: preparation of fields, trims
// and margins, the two passes through one intermediate picture, and the
// tables built once per pass. The arithmetic per sample is in the row kernels
// of tavo_kernels.h.
//
// Every source line is read by the horizontal pass before the vertical pass
// writes the first destination line, so a picture may be scaled onto itself
// (the de-interlacer stretches a field of a picture into that picture).
#include "image/tavo_resize.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "image/tavo_kernels.h"

namespace orv {
namespace tavo {

namespace {

// Work memory of one pass. The scaler keeps nothing between calls.
class WorkBuffer {
 public:
  WorkBuffer() = default;
  WorkBuffer(const WorkBuffer&) = delete;
  WorkBuffer& operator=(const WorkBuffer&) = delete;
  ~WorkBuffer() { std::free(data_); }
  bool Allocate(size_t bytes) {
    std::free(data_);
    data_ = std::malloc(bytes ? bytes : 1);
    return data_ != nullptr;
  }
  template <typename T>
  T* As(size_t byteOffset = 0) const {
    return reinterpret_cast<T*>(static_cast<uint8_t*>(data_) + byteOffset);
  }

 private:
  void* data_ = nullptr;
};

uint64_t Gcd(uint64_t a, uint64_t b) {
  while (b) {
    const uint64_t r = a % b;
    a = b;
    b = r;
  }
  return a;
}

// One axis of one pass, with its tables.
struct AxisPass {
  Method method = Method::kCopy;
  int srcLength = 0;
  int dstLength = 0;
  AreaGrid grid{};
  Post post{};
  CubicTable cubic{};
  TapTable taps{};
  bool useTaps = false;
  WorkBuffer cubicStorage;
  WorkBuffer tapStorage;
  WorkBuffer groupStorage;
};

// The 16-bit shuffle groups of a cubic table: eight outputs whose taps lie in
// 16 bytes that stay inside the line, from the first multiple of eight in the
// four-tap range on.
bool BuildWideGroups(AxisPass* pass) {
  TapTable& t = pass->taps;
  const int first = (t.simdBegin + 7) & ~7;
  const int total = first < t.simdEnd ? (t.simdEnd - first) / 8 : 0;
  if (total == 0) return true;
  const size_t g = static_cast<size_t>(total);
  if (!pass->groupStorage.Allocate(g * (4 + 64 + 64 + 64))) return false;
  int32_t* base = pass->groupStorage.As<int32_t>();
  uint8_t* shuffle = reinterpret_cast<uint8_t*>(base + g);
  int16_t* lo = reinterpret_cast<int16_t*>(shuffle + 64 * g);
  int16_t* hi = lo + 32 * g;
  int groups = 0;
  for (; groups < total; ++groups) {
    const int i0 = first + 8 * groups;
    const int32_t b = t.start[i0];
    if (b + 16 > pass->srcLength || t.start[i0 + 7] + 3 - b > 15) break;
    for (int m = 0; m < 8; ++m) {
      const int i = i0 + m;
      const int32_t* w =
          t.packed + (static_cast<size_t>(i / kTapBlock) * 4) * kTapBlock + i % kTapBlock;
      for (int k = 0; k < 4; ++k) {
        const size_t at = 32 * static_cast<size_t>(groups) + 4 * m + k;
        shuffle[2 * at] = static_cast<uint8_t>(t.start[i] + k - b);
        shuffle[2 * at + 1] = 0x80;
        const int32_t packed = w[static_cast<size_t>(k) * kTapBlock];
        lo[at] = static_cast<int16_t>(packed & 0xFFFF);
        hi[at] = static_cast<int16_t>(packed >> 16);
      }
    }
    base[groups] = b;
  }
  t.wideFirst = first;
  t.wideGroups = groups;
  t.wideBase = base;
  t.wideShuffle = shuffle;
  t.wideLo = lo;
  t.wideHi = hi;
  return true;
}

// The short forms of a four-tap area table: 16-bit weights when they fit, and
// when they fit a signed byte the byte-shuffle groups, the leading groups of
// four outputs whose taps lie in 16 bytes that stay inside the line.
bool BuildShortTaps(AxisPass* pass) {
  TapTable& t = pass->taps;
  const int n = pass->dstLength;
  if (t.taps != 4 || pass->grid.q > 32767) return true;
  const int total = n / 4;
  const size_t bytes16 = sizeof(int16_t) * 4 * static_cast<size_t>(n);
  if (!pass->groupStorage.Allocate(bytes16 + static_cast<size_t>(total) * (4 + 16 + 16))) {
    return false;
  }
  int16_t* weight16 = pass->groupStorage.As<int16_t>();
  for (int i = 0; i < n; ++i) {
    const int32_t* w =
        t.packed + (static_cast<size_t>(i / kTapBlock) * 4) * kTapBlock + i % kTapBlock;
    for (int k = 0; k < 4; ++k) {
      weight16[4 * i + k] =
          static_cast<int16_t>(UnpackWeight(w[static_cast<size_t>(k) * kTapBlock]));
    }
  }
  t.weight16 = weight16;
  t.weightSum = static_cast<int32_t>(pass->grid.q);
  if (pass->grid.q > 127) return true;
  int32_t* base = pass->groupStorage.As<int32_t>(bytes16);
  uint8_t* shuffle = reinterpret_cast<uint8_t*>(base + total);
  int8_t* weight = reinterpret_cast<int8_t*>(shuffle + 16 * static_cast<size_t>(total));
  int groups = 0;
  for (; groups < total; ++groups) {
    const int first = 4 * groups;
    const int32_t b = t.start[first];
    if (b + 16 > pass->srcLength) break;
    bool fits = true;
    for (int m = 0; m < 4 && fits; ++m) {
      const int i = first + m;
      const int32_t* w =
          t.packed + (static_cast<size_t>(i / kTapBlock) * 4) * kTapBlock + i % kTapBlock;
      for (int k = 0; k < 4; ++k) {
        const int32_t offset = t.start[i] + k - b;
        if (offset < 0 || offset > 15) {
          fits = false;
          break;
        }
        shuffle[16 * groups + 4 * m + k] = static_cast<uint8_t>(offset);
        weight[16 * groups + 4 * m + k] =
            static_cast<int8_t>(UnpackWeight(w[static_cast<size_t>(k) * kTapBlock]));
      }
    }
    if (!fits) break;
    base[groups] = b;
  }
  t.groups = groups;
  t.groupBase = base;
  t.groupShuffle = shuffle;
  t.groupWeight = weight;
  return true;
}

// The tap table of the processor forms for an area row: the spans of the
// carry walk, padded to a multiple of 4 taps, with starts moved back where a
// padded span would run past the line (the moved span has zero weights in
// front). Lines shorter than the padded span keep the plain walk.
bool BuildAreaTaps(AxisPass* pass) {
  const uint32_t p = pass->grid.p, q = pass->grid.q;
  const int n = pass->dstLength;
  const int longest = static_cast<int>((q + p - 1) / p) + 1;
  const int taps = (longest + 3) & ~3;
  if (pass->srcLength < taps) return true;
  const size_t blocks = (static_cast<size_t>(n) + kTapBlock - 1) / kTapBlock;
  const size_t packedCount = blocks * kTapBlock * static_cast<size_t>(taps);
  if (!pass->tapStorage.Allocate(sizeof(int32_t) * (packedCount + static_cast<size_t>(n)))) {
    return false;
  }
  int32_t* packed = pass->tapStorage.As<int32_t>();
  int32_t* start = packed + packedCount;
  std::memset(packed, 0, sizeof(int32_t) * packedCount);
  WorkBuffer spanWeights;
  if (!spanWeights.Allocate(sizeof(int32_t) * static_cast<size_t>(longest))) return false;
  int32_t* weights = spanWeights.As<int32_t>();
  uint32_t carry = 0;
  int j = 0;
  for (int i = 0; i < n; ++i) {
    // The same walk as AreaRow, recording the weights of the span from s[j] on.
    const int first = j;
    int count = 0;
    if (carry > 0) {
      weights[count++] = static_cast<int32_t>(carry);
      ++j;
    }
    while (carry + p <= q) {
      weights[count++] = static_cast<int32_t>(p);
      ++j;
      carry += p;
    }
    if (carry < q) {
      weights[count++] = static_cast<int32_t>(q - carry);
      carry += p;
    }
    carry -= q;
    int s = first;
    if (s + taps > pass->srcLength) s = pass->srcLength - taps;
    const int shift = first - s;
    start[i] = s;
    int32_t* column = packed + ((static_cast<size_t>(i) / kTapBlock) * taps) * kTapBlock +
                      static_cast<size_t>(i) % kTapBlock;
    for (int k = 0; k < count; ++k) {
      column[static_cast<size_t>(k + shift) * kTapBlock] = PackWeight(weights[k]);
    }
  }
  pass->taps = TapTable{taps,    0,       n, start, packed,  0,       0,       nullptr, nullptr,
                        nullptr, nullptr, 0, 0,     nullptr, nullptr, nullptr, nullptr};
  pass->useTaps = true;
  return BuildShortTaps(pass);
}

// The cubic tables: index and weights for every output (one entry more, as a
// guard), and for the processor forms the four-tap table of the middle range.
bool BuildCubic(AxisPass* pass, bool wantTaps) {
  const int n = pass->dstLength, l = pass->srcLength;
  const size_t entries = static_cast<size_t>(n) + 1;
  if (!pass->cubicStorage.Allocate(sizeof(int32_t) * entries * 5)) return false;
  int32_t* index = pass->cubicStorage.As<int32_t>();
  int32_t* weight = index + entries;
  std::memset(index, 0, sizeof(int32_t) * entries * 5);
  int begin = n, end = n;
  for (int i = 0; i < n; ++i) {
    const double pos = CubicPosition(i, l, n);
    const int idx = static_cast<int>(pos);
    index[i] = idx;
    CubicWeights(pos - idx, weight + 4 * static_cast<size_t>(i));
    if (idx >= 1 && idx <= l - 3) {
      if (begin == n) begin = i;
      end = i + 1;
    }
  }
  if (begin == n) end = n;
  pass->cubic = CubicTable{l, n, index, weight};
  if (!wantTaps || begin >= end) return true;
  const size_t blocks = (static_cast<size_t>(n) + kTapBlock - 1) / kTapBlock;
  const size_t packedCount = blocks * kTapBlock * 4;
  if (!pass->tapStorage.Allocate(sizeof(int32_t) * (packedCount + static_cast<size_t>(n)))) {
    return false;
  }
  int32_t* packed = pass->tapStorage.As<int32_t>();
  int32_t* start = packed + packedCount;
  std::memset(packed, 0, sizeof(int32_t) * (packedCount + static_cast<size_t>(n)));
  for (int i = begin; i < end; ++i) {
    start[i] = index[i] - 1;
    int32_t* column = packed + ((static_cast<size_t>(i) / kTapBlock) * 4) * kTapBlock +
                      static_cast<size_t>(i) % kTapBlock;
    for (int k = 0; k < 4; ++k) {
      column[static_cast<size_t>(k) * kTapBlock] =
          PackWeight(weight[4 * static_cast<size_t>(i) + k]);
    }
  }
  pass->taps = TapTable{4,       begin,   end, start, packed,  0,       0,       nullptr, nullptr,
                        nullptr, nullptr, 0,   0,     nullptr, nullptr, nullptr, nullptr};
  pass->useTaps = true;
  return BuildWideGroups(pass);
}

// Chooses the method of an axis and builds what it needs, once per pass.
// `packed` selects the norms of the packed engine, `sign` how samples are read,
// `wantTaps` the tap tables of the processor forms (horizontal passes only).
bool BuildAxis(AxisPass* pass, int l, int n, bool packed, Sign sign, bool wantTaps) {
  pass->method = ChooseMethod(l, n);
  pass->srcLength = l;
  pass->dstLength = n;
  if (pass->method == Method::kArea) {
    pass->grid = MakeAreaGrid(l, n);
    const uint32_t q = pass->grid.q;
    if (packed) {
      pass->post = Post{Norm::kAreaPacked, sign, (q + 0xFFFFFu) / q};
    } else {
      pass->post = Post{Norm::kAreaPlane, sign, static_cast<uint32_t>((uint64_t{1} << 32) / q)};
    }
    return wantTaps ? BuildAreaTaps(pass) : true;
  }
  pass->post = Post{Norm::kCubic, sign, 0};
  if (pass->method == Method::kCubic) return BuildCubic(pass, wantTaps);
  return true;
}

// One line through a horizontal pass.
void HorizontalRow(const AxisPass& pass, const Kernels& k, const uint8_t* src, uint8_t* dst) {
  const int n = pass.dstLength;
  const bool chroma = pass.post.sign == Sign::kSigned;
  switch (pass.method) {
    case Method::kCopy:
      std::memcpy(dst, src, static_cast<size_t>(n));
      break;
    case Method::kHalve:
      k.halveRow(src, dst, n);
      break;
    case Method::kArea:
      if (pass.useTaps) {
        k.tapRow(src, dst, pass.taps, pass.post);
      } else {
        AreaRow(src, dst, n, pass.grid.p, pass.grid.q, pass.post);
      }
      break;
    case Method::kRepeat:
      std::memset(dst, src[0], static_cast<size_t>(n));
      break;
    case Method::kDouble:
      DoubleRow(src, dst, pass.srcLength, chroma);
      break;
    case Method::kCubic:
      if (pass.useTaps) {
        CubicRow(src, dst, 0, pass.taps.simdBegin, pass.cubic, chroma);
        k.tapRow(src, dst, pass.taps, pass.post);
        CubicRow(src, dst, pass.taps.simdEnd, n, pass.cubic, chroma);
      } else {
        CubicRow(src, dst, 0, n, pass.cubic, chroma);
      }
      break;
  }
}

// The vertical pass: `rows` lines of `width` bytes at `src` (stride `width`)
// into pass.dstLength lines at `dst`.
bool VerticalPass(const AxisPass& pass, const Kernels& k, const uint8_t* src, int width,
                  uint8_t* dst, ptrdiff_t dstStep) {
  const int n = pass.dstLength, l = pass.srcLength;
  const size_t line = static_cast<size_t>(width);
  auto in = [&](int y) { return src + static_cast<size_t>(y) * line; };
  auto out = [&](int y) { return dst + static_cast<ptrdiff_t>(y) * dstStep; };
  switch (pass.method) {
    case Method::kCopy:
      for (int y = 0; y < n; ++y) std::memcpy(out(y), in(y), line);
      return true;
    case Method::kHalve:
      for (int y = 0; y < n; ++y)
        k.meanRows(in(2 * y), in(2 * y + 1), out(y), width, pass.post.sign);
      return true;
    case Method::kRepeat:
      for (int y = 0; y < n; ++y) std::memcpy(out(y), in(0), line);
      return true;
    case Method::kDouble:
      for (int y = 0; y + 1 < l; ++y) {
        std::memcpy(out(2 * y), in(y), line);
        k.meanRows(in(y), in(y + 1), out(2 * y + 1), width, pass.post.sign);
      }
      std::memcpy(out(2 * l - 2), in(l - 1), line);
      std::memcpy(out(2 * l - 1), in(l - 1), line);
      return true;
    case Method::kCubic:
      for (int y = 0; y < n; ++y) {
        const int idx = pass.cubic.index[y];
        if (idx >= l - 1) {
          std::memcpy(out(y), in(l - 1), line);
        } else if (idx < 1 || idx == l - 2) {
          const double t = CubicPosition(y, l, n) - idx;
          LinearRows(in(idx), in(idx + 1), out(y), width, t, pass.post.sign);
        } else {
          const uint8_t* rows[4] = {in(idx - 1), in(idx), in(idx + 1), in(idx + 2)};
          k.tapRows(rows, pass.cubic.weight + 4 * static_cast<size_t>(y), 4, out(y), width,
                    pass.post);
        }
      }
      return true;
    case Method::kArea: {
      // The carry walk of AreaRow, once for all columns of an output line.
      const uint32_t p = pass.grid.p, q = pass.grid.q;
      const size_t longest = (q + p - 1) / p + 1;
      WorkBuffer spans;
      if (!spans.Allocate(longest * (sizeof(const uint8_t*) + sizeof(int32_t)))) return false;
      const uint8_t** rows = spans.As<const uint8_t*>();
      int32_t* weights = spans.As<int32_t>(longest * sizeof(const uint8_t*));
      uint32_t carry = 0;
      int j = 0;
      for (int y = 0; y < n; ++y) {
        int count = 0;
        if (carry > 0) {
          rows[count] = in(j++);
          weights[count++] = static_cast<int32_t>(carry);
        }
        while (carry + p <= q) {
          rows[count] = in(j++);
          weights[count++] = static_cast<int32_t>(p);
          carry += p;
        }
        if (carry < q) {
          rows[count] = in(j);
          weights[count++] = static_cast<int32_t>(q - carry);
          carry += p;
        }
        carry -= q;
        k.tapRows(rows, weights, count, out(y), width, pass.post);
      }
      return true;
    }
  }
  return true;
}

// A prepared picture: what the field, the trim and the margins leave.
struct Prepared {
  ptrdiff_t srcOffset;  // field line only; trims are added per engine
  ptrdiff_t dstOffset;
  ptrdiff_t srcStep;
  ptrdiff_t dstStep;
  int srcHeight;
  int dstHeight;
  int marginY;
};

bool ValidCommon(const uint8_t* src, const uint8_t* dst, int srcStep, int dstStep,
                 OrvImage::IppiSize srcSize, OrvImage::IppiSize dstSize, int srcTrimX,
                 int dstMarginX, int dstMarginY, OrvImage::FIELD_TYPE field, int bytesPerPixel) {
  if (!src || !dst) return false;
  if (srcSize.width < 1 || srcSize.height < 1 || dstSize.width < 1 || dstSize.height < 1) {
    return false;
  }
  if (srcSize.width > 65535 || srcSize.height > 65535 || dstSize.width > 65535 ||
      dstSize.height > 65535) {
    return false;
  }
  if (field != OrvImage::FIELD_FRAME && field != OrvImage::FIELD_TOP &&
      field != OrvImage::FIELD_BOTTOM) {
    return false;
  }
  if (srcTrimX < 0 || srcTrimX >= srcSize.width) return false;
  if (dstMarginX < 0 || dstMarginX >= dstSize.width) return false;
  if (dstMarginY < 0 || dstMarginY >= dstSize.height) return false;
  if (srcStep < 1 || dstStep < 1) return false;
  if (static_cast<int64_t>(srcStep) < int64_t{bytesPerPixel} * srcSize.width) return false;
  if (static_cast<int64_t>(dstStep) < int64_t{bytesPerPixel} * dstSize.width) return false;
  return true;
}

bool PrepareFields(int srcStep, int dstStep, OrvImage::IppiSize srcSize, OrvImage::IppiSize dstSize,
                   int dstMarginY, OrvImage::FIELD_TYPE field, bool sameField, Prepared* p) {
  *p = Prepared{0, 0, srcStep, dstStep, srcSize.height, dstSize.height, dstMarginY};
  if (field != OrvImage::FIELD_FRAME) {
    const bool bottom = field == OrvImage::FIELD_BOTTOM;
    if (bottom) p->srcOffset = srcStep;
    p->srcStep = 2 * static_cast<ptrdiff_t>(srcStep);
    p->srcHeight = srcSize.height / 2;
    if (sameField) {
      if (bottom) p->dstOffset = dstStep;
      p->dstStep = 2 * static_cast<ptrdiff_t>(dstStep);
      p->dstHeight = dstSize.height / 2;
      p->marginY = dstMarginY / 2;
    }
  }
  return p->srcHeight >= 1 && p->dstHeight - p->marginY >= 1;
}

// Splits a packed line into its Y, U and V samples, and joins them again.
void SplitPacked(const uint8_t* src, int pixels, uint8_t* y, uint8_t* u, uint8_t* v) {
  for (int i = 0; i < pixels / 2; ++i) {
    y[2 * i] = src[4 * i];
    u[i] = src[4 * i + 1];
    y[2 * i + 1] = src[4 * i + 2];
    v[i] = src[4 * i + 3];
  }
}
void JoinPacked(const uint8_t* y, const uint8_t* u, const uint8_t* v, int pixels, uint8_t* dst) {
  for (int i = 0; i < pixels / 2; ++i) {
    dst[4 * i] = y[2 * i];
    dst[4 * i + 1] = u[i];
    dst[4 * i + 2] = y[2 * i + 1];
    dst[4 * i + 3] = v[i];
  }
}

// The packed engine on a prepared picture: w x H pixels into dw x h pixels,
// both widths even.
bool ScalePacked(const uint8_t* src, ptrdiff_t srcStep, int w, int H, uint8_t* dst,
                 ptrdiff_t dstStep, int dw, int h, SimdLevel level) {
  const Kernels& k = KernelsFor(level);
  const bool wantTaps = k.lanes > 1;
  const size_t line = 2 * static_cast<size_t>(dw);
  WorkBuffer intermediate;
  if (!intermediate.Allocate(line * static_cast<size_t>(H))) return false;
  uint8_t* mid = intermediate.As<uint8_t>();

  AxisPass luma, chroma;
  if (!BuildAxis(&luma, w, dw, true, Sign::kUnsigned, wantTaps)) return false;
  if (luma.method == Method::kCopy) {
    for (int y = 0; y < H; ++y) std::memcpy(mid + y * line, src + y * srcStep, line);
  } else {
    if (!BuildAxis(&chroma, w / 2, dw / 2, true, Sign::kSigned, wantTaps)) return false;
    // The line's three planes: source Y, U, V, then destination Y, U, V.
    WorkBuffer planes;
    const size_t sw = static_cast<size_t>(w), dwz = static_cast<size_t>(dw);
    if (!planes.Allocate(2 * sw + 2 * dwz)) return false;
    uint8_t* sy = planes.As<uint8_t>();
    uint8_t* su = sy + sw;
    uint8_t* sv = su + sw / 2;
    uint8_t* dy = sv + sw / 2;
    uint8_t* du = dy + dwz;
    uint8_t* dv = du + dwz / 2;
    for (int y = 0; y < H; ++y) {
      SplitPacked(src + y * srcStep, w, sy, su, sv);
      HorizontalRow(luma, k, sy, dy);
      HorizontalRow(chroma, k, su, du);  // a halving treats chroma as unsigned
      HorizontalRow(chroma, k, sv, dv);
      JoinPacked(dy, du, dv, dw, mid + y * line);
    }
  }

  AxisPass down;
  if (!BuildAxis(&down, H, h, true, Sign::kInterleaved, false)) return false;
  return VerticalPass(down, k, mid, static_cast<int>(line), dst, dstStep);
}

}  // namespace

Method ChooseMethod(int srcLength, int dstLength) {
  if (srcLength == dstLength) return Method::kCopy;
  if (srcLength == 2 * dstLength) return Method::kHalve;
  if (srcLength > dstLength) return Method::kArea;
  if (srcLength == 1) return Method::kRepeat;
  if (2 * srcLength == dstLength) return Method::kDouble;
  return Method::kCubic;
}

AreaGrid MakeAreaGrid(int srcLength, int dstLength) {
  const uint64_t l = static_cast<uint64_t>(srcLength), n = static_cast<uint64_t>(dstLength);
  const uint64_t g = Gcd(l, n);
  const uint64_t grid = l * n / g;  // exact in 64 bits for lengths up to 2^31
  return AreaGrid{grid, static_cast<uint32_t>(grid / l), static_cast<uint32_t>(grid / n)};
}

void CubicWeights(double t, int32_t weight[4]) {
  const double x = t + 1.0;
  weight[0] = static_cast<int32_t>(0.5 - (x - 1.0) * (x - 2.0) * (x - 3.0) * 65536.0 / 6.0);
  weight[1] = static_cast<int32_t>(x * (x - 2.0) * (x - 3.0) * 65536.0 * 0.5 + 0.5);
  weight[2] = static_cast<int32_t>(0.5 - x * (x - 1.0) * (x - 3.0) * 65536.0 * 0.5);
  weight[3] = static_cast<int32_t>(x * (x - 1.0) * (x - 2.0) * 65536.0 / 6.0 + 0.5);
}

bool ScalePlane(const uint8_t* src, ptrdiff_t srcStep, int w, int H, uint8_t* dst,
                ptrdiff_t dstStep, int dw, int h, SimdLevel level) {
  const Kernels& k = KernelsFor(level);
  const size_t line = static_cast<size_t>(dw);
  WorkBuffer intermediate;
  if (!intermediate.Allocate(line * static_cast<size_t>(H))) return false;
  uint8_t* mid = intermediate.As<uint8_t>();
  {
    AxisPass across;
    if (!BuildAxis(&across, w, dw, false, Sign::kUnsigned, k.lanes > 1)) return false;
    for (int y = 0; y < H; ++y) HorizontalRow(across, k, src + y * srcStep, mid + y * line);
  }
  AxisPass down;
  if (!BuildAxis(&down, H, h, false, Sign::kUnsigned, false)) return false;
  return VerticalPass(down, k, mid, dw, dst, dstStep);
}

bool ResizeYUV420(const uint8_t* src, uint8_t* dst, int srcStep, int dstStep,
                  OrvImage::IppiSize srcSize, OrvImage::IppiSize dstSize, int srcTrimX,
                  int dstMarginX, int dstMarginY, OrvImage::FIELD_TYPE field, bool sameField,
                  SimdLevel level) {
  if (!ValidCommon(src, dst, srcStep, dstStep, srcSize, dstSize, srcTrimX, dstMarginX, dstMarginY,
                   field, 1)) {
    return false;
  }
  // Whole pictures, Y and both chroma planes, must stay below 2^31 bytes.
  const uint64_t srcBytes = uint64_t(srcStep) * uint64_t(srcSize.height) +
                            2 * uint64_t(srcStep / 2) * uint64_t(srcSize.height / 2);
  const uint64_t dstBytes = uint64_t(dstStep) * uint64_t(dstSize.height) +
                            2 * uint64_t(dstStep / 2) * uint64_t(dstSize.height / 2);
  if (srcBytes > 0x7FFFFFFF || dstBytes > 0x7FFFFFFF) return false;
  Prepared p;
  if (!PrepareFields(srcStep, dstStep, srcSize, dstSize, dstMarginY, field, sameField, &p)) {
    return false;
  }
  const int w = srcSize.width - srcTrimX;
  const int H = p.srcHeight;
  const int dw = dstSize.width - dstMarginX;
  const int h = p.dstHeight - p.marginY;
  // Chroma planes: half the lengths. A source chroma plane with nothing in it
  // can't fill a destination chroma plane that has something.
  const bool dstChroma = dw / 2 > 0 && h / 2 > 0;
  const bool srcChroma = w / 2 > 0 && H / 2 > 0;
  if (dstChroma && !srcChroma) return false;

  // The planes lie where the picture model puts them, from the full heights:
  // U at step x height, V behind U. Margins are split half on each side, also
  // down (half a chroma line is lost when half the margin is odd).
  const int marginTop = p.marginY / 2;
  const uint8_t* srcY = src + p.srcOffset + srcTrimX / 2;
  uint8_t* dstY = dst + p.dstOffset + marginTop * p.dstStep + dstMarginX / 2;
  if (!ScalePlane(srcY, p.srcStep, w, H, dstY, p.dstStep, dw, h, level)) return false;
  if (!dstChroma) return true;

  const ptrdiff_t srcC = srcStep / 2, dstC = dstStep / 2;
  const uint8_t* srcU = src + ptrdiff_t(srcStep) * srcSize.height;
  const uint8_t* srcV = srcU + srcC * (srcSize.height / 2);
  uint8_t* dstU = dst + ptrdiff_t(dstStep) * dstSize.height;
  uint8_t* dstV = dstU + dstC * (dstSize.height / 2);
  // Chroma steps: half the plane's, doubled again for a field (not half the
  // doubled luma step, which differs by one for an odd step).
  const ptrdiff_t srcStepC = p.srcStep == srcStep ? srcC : 2 * srcC;
  const ptrdiff_t dstStepC = p.dstStep == dstStep ? dstC : 2 * dstC;
  const ptrdiff_t srcOffC = (p.srcOffset ? srcC : 0) + (srcTrimX / 2) / 2;
  const ptrdiff_t dstOffC =
      (p.dstOffset ? dstC : 0) + (marginTop / 2) * dstStepC + (dstMarginX / 2) / 2;
  if (!ScalePlane(srcU + srcOffC, srcStepC, w / 2, H / 2, dstU + dstOffC, dstStepC, dw / 2, h / 2,
                  level)) {
    return false;
  }
  return ScalePlane(srcV + srcOffC, srcStepC, w / 2, H / 2, dstV + dstOffC, dstStepC, dw / 2, h / 2,
                    level);
}

bool ResizeYUY2(const uint8_t* src, uint8_t* dst, int srcStep, int dstStep,
                OrvImage::IppiSize srcSize, OrvImage::IppiSize dstSize, int srcTrimX,
                int dstMarginX, int dstMarginY, OrvImage::FIELD_TYPE field, bool sameField,
                SimdLevel level) {
  if (!ValidCommon(src, dst, srcStep, dstStep, srcSize, dstSize, srcTrimX, dstMarginX, dstMarginY,
                   field, 2)) {
    return false;
  }
  if ((srcTrimX & 3) || (dstMarginX & 3)) return false;
  if (uint64_t(srcStep) * uint64_t(srcSize.height) > 0x7FFFFFFF ||
      uint64_t(dstStep) * uint64_t(dstSize.height) > 0x7FFFFFFF) {
    return false;
  }
  Prepared p;
  if (!PrepareFields(srcStep, dstStep, srcSize, dstSize, dstMarginY, field, sameField, &p)) {
    return false;
  }
  const int w = srcSize.width - srcTrimX;
  const int dw = dstSize.width - dstMarginX;
  if ((w & 1) || (dw & 1)) return false;
  const int h = p.dstHeight - p.marginY;
  // Trim and margin count pixels, half on each side, two bytes a pixel.
  const uint8_t* from = src + p.srcOffset + srcTrimX;
  uint8_t* to = dst + p.dstOffset + (p.marginY / 2) * p.dstStep + dstMarginX;
  return ScalePacked(from, p.srcStep, w, p.srcHeight, to, p.dstStep, dw, h, level);
}

}  // namespace tavo
}  // namespace orv

// ---- The private entries of OrvImage ---------------------------------------

bool OrvImage::TavoResizeYUV420(const unsigned char* src, unsigned char* dst, int srcStep,
                                int dstStep, IppiSize srcSize, IppiSize dstSize, int srcTrimX,
                                int dstMarginX, int dstMarginY, FIELD_TYPE field, bool sameField) {
  try {
    return orv::tavo::ResizeYUV420(src, dst, srcStep, dstStep, srcSize, dstSize, srcTrimX,
                                   dstMarginX, dstMarginY, field, sameField,
                                   orv::DetectSimdLevel());
  } catch (...) {
    return false;
  }
}

bool OrvImage::TavoResizeYUY2(const unsigned char* src, unsigned char* dst, int srcStep,
                              int dstStep, IppiSize srcSize, IppiSize dstSize, int srcTrimX,
                              int dstMarginX, int dstMarginY, FIELD_TYPE field, bool sameField) {
  try {
    return orv::tavo::ResizeYUY2(src, dst, srcStep, dstStep, srcSize, dstSize, srcTrimX, dstMarginX,
                                 dstMarginY, field, sameField, orv::DetectSimdLevel());
  } catch (...) {
    return false;
  }
}
