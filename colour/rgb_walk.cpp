#include "colour/rgb_walk.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace orv {
namespace colour {

TermStore::~TermStore() { Release(); }

void TermStore::Release() {
  std::free(block_);
  block_ = nullptr;
  capacity_ = 0;
  std::memset(lines_, 0, sizeof(lines_));
}

bool TermStore::Reserve(int32_t width) {
  if (block_ && width <= capacity_) return true;
  Release();
  if (width <= 0) return false;
  // Entries per line: width / 2 columns, the right-edge entry, and room for a
  // whole vector past the end; each line starts on a 32-byte boundary.
  const size_t entries =
      ((static_cast<size_t>(width) / 2 + 1 + 32) + 15) & ~static_cast<size_t>(15);
  const size_t bytes = entries * sizeof(int16_t) * 12 + 64;
  block_ = std::malloc(bytes);
  if (!block_) return false;
  uintptr_t p = (reinterpret_cast<uintptr_t>(block_) + 31) & ~static_cast<uintptr_t>(31);
  for (int s = 0; s < 4; ++s)
    for (int c = 0; c < 3; ++c) {
      lines_[s][c] = reinterpret_cast<int16_t*>(p);
      p += entries * sizeof(int16_t);
    }
  capacity_ = width;
  return true;
}

bool RgbWalkAccepts(RgbWalk walk, bool route24, int32_t width, int32_t height) {
  if (width < 2 || (width & 1) || height <= 0) return false;
  switch (walk) {
    case RgbWalk::kFrame:
      return (height & 1) == 0 && height >= (route24 ? 2 : 4);
    case RgbWalk::kInterlaced:
      return (height & 3) == 0 && height >= (route24 ? 4 : 8);
    case RgbWalk::kField:
    case RgbWalk::kShiftUp:
    case RgbWalk::kShiftDown:
      return (height & 3) == 0 && height >= 8;
  }
  return false;
}

namespace {

// Per-channel mean (p + q) >> 1 of two lines of 16-bit pixels, no rounding.
void Mean16(const uint8_t* p, const uint8_t* q, int pixels, bool is565, uint8_t* dst) {
  const int gBits = is565 ? 6 : 5;
  const int rShift = is565 ? 11 : 10;
  const uint32_t gMask = (1u << gBits) - 1;
  for (int i = 0; i < pixels; ++i) {
    const uint32_t a = p[2 * i] | (p[2 * i + 1] << 8);
    const uint32_t b = q[2 * i] | (q[2 * i + 1] << 8);
    const uint32_t bl = ((a & 31) + (b & 31)) >> 1;
    const uint32_t gr = (((a >> 5) & gMask) + ((b >> 5) & gMask)) >> 1;
    const uint32_t rd = (((a >> rShift) & 31) + ((b >> rShift) & 31)) >> 1;
    const uint32_t w = bl | (gr << 5) | (rd << rShift);
    dst[2 * i] = static_cast<uint8_t>(w);
    dst[2 * i + 1] = static_cast<uint8_t>(w >> 8);
  }
}

// After the first field of a field walk: line 4k+1 is the mean of lines 4k and
// 4k+2, line 4k+3 of 4k+2 and 4k+4, and the last line repeats the one above it.
void FillSecondField(const RgbRows& rows, PixelKind kind, const RgbJob& job) {
  const int bpp = BytesPerPixel(kind);
  const int bytes = job.width * bpp;
  for (int32_t r = 1; r + 1 < job.height; r += 2) {
    if (kind == kPix555 || kind == kPix565)
      Mean16(job.Out(r - 1), job.Out(r + 1), job.width, kind == kPix565, job.Out(r));
    else
      rows.lineMean(job.Out(r - 1), job.Out(r + 1), bytes, job.Out(r));
  }
  std::memcpy(job.Out(job.height - 1), job.Out(job.height - 2), static_cast<size_t>(bytes));
}

// Where source line s goes, or -1 if it is not shown.
int32_t Destination(RgbWalk walk, int32_t s, int32_t height) {
  switch (walk) {
    case RgbWalk::kShiftUp:
      return s == 0 ? -1 : s - 1;
    case RgbWalk::kShiftDown:
      return s == height - 1 ? -1 : s + 1;
    default:
      return s;
  }
}

void Finish(const RgbRows& rows, RgbWalk walk, PixelKind kind, const RgbJob& job) {
  const size_t bytes = static_cast<size_t>(job.width) * BytesPerPixel(kind);
  if (walk == RgbWalk::kField) {
    FillSecondField(rows, kind, job);
  } else if (walk == RgbWalk::kShiftUp) {
    std::memcpy(job.Out(job.height - 1), job.Out(job.height - 3), bytes);
  } else if (walk == RgbWalk::kShiftDown) {
    std::memcpy(job.Out(0), job.Out(2), bytes);
  }
}

// The line series of a walk, told as calls of single(line, chroma) and
// pair(lineA, lineB, chromaA, chromaB, filter).
template <typename Single, typename Pair>
void Series(RgbWalk walk, bool mirrorSecond, int32_t height, Single single, Pair pair) {
  if (walk == RgbWalk::kFrame) {
    single(0, 0);
    for (int32_t k = 0; k < height / 2 - 1; ++k) pair(2 * k + 1, 2 * k + 2, k, k + 1, kFilterFrame);
    single(height - 1, height / 2 - 1);
    return;
  }
  const int fields = walk == RgbWalk::kField ? 1 : 2;
  for (int f = 0; f < fields; ++f) {
    const TermFilter filter = (f == 1 && mirrorSecond) ? kFilterField2 : kFilterField1;
    single(f, f);
    for (int32_t k = 0; k < height / 4 - 1; ++k)
      pair(4 * k + 2 + f, 4 * k + 4 + f, 2 * k + f, 2 * k + 2 + f, filter);
    single(height - 2 + f, height / 2 - 2 + f);
  }
}

}  // namespace

void WalkGeneral(const RgbRows& rows, const RgbMatrix& m, const TermStore& store, RgbWalk walk,
                 bool mirrorSecond, PixelKind kind, const RgbJob& job) {
  const int n = job.width / 2;
  int cur = 0, next = 1;
  int32_t curChroma = -1;
  auto terms = [&](int32_t c, int set) {
    rows.terms(job.U(c), job.V(c), n, m, store.Line(set, 0), store.Line(set, 1),
               store.Line(set, 2));
  };
  auto emit = [&](int32_t s, int set) {
    const int32_t d = Destination(walk, s, job.height);
    if (d < 0) return;
    rows.pixels(job.Y(s), store.Line(set, 0), store.Line(set, 1), store.Line(set, 2), job.width, m,
                kind, job.Out(d));
  };
  auto single = [&](int32_t line, int32_t c) {
    if (c != curChroma) {
      terms(c, cur);
      curChroma = c;
    }
    emit(line, cur);
  };
  auto pair = [&](int32_t la, int32_t lb, int32_t ca, int32_t cb, TermFilter filter) {
    if (ca != curChroma) terms(ca, cur);
    terms(cb, next);
    for (int c = 0; c < 3; ++c)
      rows.filter(store.Line(cur, c), store.Line(next, c), n + 1, filter, c == 2, store.Line(2, c),
                  store.Line(3, c));
    emit(la, 2);
    emit(lb, 3);
    const int t = cur;
    cur = next;
    next = t;
    curChroma = cb;
  };
  Series(walk, mirrorSecond, job.height, single, pair);
  Finish(rows, walk, kind, job);
}

void Walk24(const RgbRows& rows, const RgbMatrix& m, RgbWalk walk, const RgbJob& job) {
  auto single = [&](int32_t line, int32_t c) {
    rows.route24(job.Y(line), job.U(c), job.U(c), job.V(c), job.V(c), job.width, 1, 0, 64, m,
                 job.Out(line));
  };
  auto pair = [&](int32_t la, int32_t lb, int32_t ca, int32_t cb, TermFilter filter) {
    static const int kWeights[3][4] = {{3, 1, 1, 3}, {5, 3, 1, 7}, {7, 1, 3, 5}};
    const int mul = filter == kFilterFrame ? 16 : 8;
    const int* w = kWeights[filter];
    rows.route24(job.Y(la), job.U(ca), job.U(cb), job.V(ca), job.V(cb), job.width, w[0], w[1], mul,
                 m, job.Out(la));
    rows.route24(job.Y(lb), job.U(ca), job.U(cb), job.V(ca), job.V(cb), job.width, w[2], w[3], mul,
                 m, job.Out(lb));
  };
  Series(walk, true, job.height, single, pair);
  Finish(rows, walk, kPixBgr, job);
}

}  // namespace colour
}  // namespace orv
