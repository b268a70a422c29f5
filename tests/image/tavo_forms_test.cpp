// Every processor form of the own scaler against the plain form: random
// pictures over the full byte range and hard edges, odd and even widths, every
// method on both axes, several steps, fields, trims and margins. Destination
// buffers carry canaries before, after and in the step padding of each line;
// a form must leave them, and every byte outside its area, as the plain form
// does.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "foundation/cpu_info.h"
#include "image/tavo_kernels.h"
#include "image/tavo_resize.h"

namespace {

using orv::SimdLevel;
using Bytes = std::vector<uint8_t>;

constexpr size_t kGuard = 64;
constexpr uint8_t kCanary = 0xA5;

struct Geometry {
  int sw, sh, dw, dh;
};

// Covers copy, halve, area (small and wide spans, odd lengths), repeat,
// double and cubic on each axis, and lines both shorter and longer than a
// vector.
const Geometry kGeometries[] = {
    {64, 48, 64, 48},  {130, 20, 66, 10},  {98, 32, 40, 12}, {1922, 9, 720, 4},
    {720, 12, 480, 8}, {40, 6, 1000, 4},   {2, 6, 34, 10},   {36, 8, 72, 16},
    {38, 14, 102, 30}, {250, 4, 4, 250},   {1000, 16, 8, 4}, {6, 4, 2, 2},
    {12, 2, 26, 33},   {480, 10, 720, 14}, {33, 7, 97, 19},  {97, 19, 33, 7},
};

void FillRandom(Bytes* b, std::mt19937* rng) {
  std::uniform_int_distribution<int> byte(0, 255), mode(0, 3);
  const int m = mode(*rng);
  for (size_t i = 0; i < b->size(); ++i) {
    switch (m) {
      case 0:
        (*b)[i] = static_cast<uint8_t>(byte(*rng));
        break;
      case 1:  // hard edges: the clamps and the extremes of every sum
        (*b)[i] = ((i / 3) & 1) ? 255 : 0;
        break;
      case 2:
        (*b)[i] = static_cast<uint8_t>(byte(*rng) < 128 ? 0 : 255);
        break;
      default:
        (*b)[i] = static_cast<uint8_t>(byte(*rng) & 1 ? 16 + byte(*rng) % 220 : 128);
        break;
    }
  }
}

struct Outcome {
  Bytes buffer;  // guard, picture, guard
  bool ok;
};

// One call into a destination of `bytes` bytes surrounded by canaries, with
// the step padding of each line (and the margins) filled with canaries too.
template <typename Call>
Outcome RunOnce(size_t bytes, Call call) {
  Outcome r{Bytes(bytes + 2 * kGuard, kCanary), false};
  r.ok = call(r.buffer.data() + kGuard);
  return r;
}

void ExpectGuards(const Outcome& r, const char* what) {
  for (size_t i = 0; i < kGuard; ++i) {
    ASSERT_EQ(r.buffer[i], kCanary) << what << ": written before the picture";
    ASSERT_EQ(r.buffer[r.buffer.size() - 1 - i], kCanary) << what << ": written after";
  }
}

std::vector<SimdLevel> FormsToCompare() { return {SimdLevel::kSse2, SimdLevel::kAvx2}; }

TEST(TavoForms, PlanarMatchesPlain) {
  std::mt19937 rng(20261123);
  int compared = 0;
  for (SimdLevel level : FormsToCompare()) {
    if (!ORV_X86_SIMD || orv::DetectSimdLevel() < level) continue;
    for (const Geometry& g : kGeometries) {
      for (int field = 0; field < 3; ++field) {
        for (bool same : {false, true}) {
          if (field == 0 && same) continue;
          for (int pad : {0, 3, 40}) {
            for (int edges : {0, 1}) {
              const int trim = edges && g.sw > 8 ? 4 : 0;
              const int mx = edges && g.dw > 8 ? 6 : 0;
              const int my = edges && g.dh > 8 ? 4 : 0;
              const int ss = g.sw + pad, ds = g.dw + pad;
              Bytes src(static_cast<size_t>(ss) * g.sh + 2 * (ss / 2) * (g.sh / 2));
              FillRandom(&src, &rng);
              const size_t dstBytes = static_cast<size_t>(ds) * g.dh + 2 * (ds / 2) * (g.dh / 2);
              auto call = [&](SimdLevel lv) {
                return [&, lv](uint8_t* d) {
                  return orv::tavo::ResizeYUV420(
                      src.data(), d, ss, ds, {g.sw, g.sh}, {g.dw, g.dh}, trim, mx, my,
                      static_cast<OrvImage::FIELD_TYPE>(field), same, lv);
                };
              };
              SCOPED_TRACE(testing::Message()
                           << orv::tavo::KernelsFor(level).name << " " << g.sw << "x" << g.sh
                           << " -> " << g.dw << "x" << g.dh << " field " << field << " same "
                           << same << " pad " << pad << " edges " << edges);
              const Outcome plain = RunOnce(dstBytes, call(SimdLevel::kPlain));
              const Outcome form = RunOnce(dstBytes, call(level));
              ASSERT_EQ(plain.ok, form.ok);
              ExpectGuards(plain, "plain");
              ExpectGuards(form, "form");
              // Step padding is never written.
              for (int y = 0; y < g.dh && pad; ++y) {
                ASSERT_EQ(form.buffer[kGuard + static_cast<size_t>(y) * ds + g.dw], kCanary);
              }
              ASSERT_EQ(plain.buffer, form.buffer);
              compared += plain.ok;
            }
          }
        }
      }
    }
  }
  if (compared == 0) GTEST_SKIP() << "no processor forms in this build or on this processor";
}

TEST(TavoForms, PackedMatchesPlain) {
  std::mt19937 rng(7);
  int compared = 0;
  for (SimdLevel level : FormsToCompare()) {
    if (!ORV_X86_SIMD || orv::DetectSimdLevel() < level) continue;
    for (const Geometry& g : kGeometries) {
      for (int field = 0; field < 3; ++field) {
        for (bool same : {false, true}) {
          if (field == 0 && same) continue;
          for (int pad : {0, 4, 70}) {
            for (int edges : {0, 1}) {
              const int trim = edges && g.sw > 8 ? 4 : 0;
              const int mx = edges && g.dw > 8 ? 4 : 0;
              const int my = edges && g.dh > 8 ? 3 : 0;
              const int ss = g.sw * 2 + pad, ds = g.dw * 2 + pad;
              Bytes src(static_cast<size_t>(ss) * g.sh);
              FillRandom(&src, &rng);
              const size_t dstBytes = static_cast<size_t>(ds) * g.dh;
              auto call = [&](SimdLevel lv) {
                return [&, lv](uint8_t* d) {
                  return orv::tavo::ResizeYUY2(src.data(), d, ss, ds, {g.sw, g.sh}, {g.dw, g.dh},
                                               trim, mx, my,
                                               static_cast<OrvImage::FIELD_TYPE>(field), same, lv);
                };
              };
              SCOPED_TRACE(testing::Message()
                           << orv::tavo::KernelsFor(level).name << " " << g.sw << "x" << g.sh
                           << " -> " << g.dw << "x" << g.dh << " field " << field << " same "
                           << same << " pad " << pad << " edges " << edges);
              const Outcome plain = RunOnce(dstBytes, call(SimdLevel::kPlain));
              const Outcome form = RunOnce(dstBytes, call(level));
              ASSERT_EQ(plain.ok, form.ok);
              ExpectGuards(plain, "plain");
              ExpectGuards(form, "form");
              ASSERT_EQ(plain.buffer, form.buffer);
              compared += plain.ok;
            }
          }
        }
      }
    }
  }
  if (compared == 0) GTEST_SKIP() << "no processor forms in this build or on this processor";
}

// The row kernels alone, at every offset of a line against the vector width,
// with signed and interleaved samples.
TEST(TavoForms, RowKernelsMatchPlain) {
  std::mt19937 rng(99);
  int compared = 0;
  for (SimdLevel level : FormsToCompare()) {
    if (!ORV_X86_SIMD || orv::DetectSimdLevel() < level) continue;
    const orv::tavo::Kernels& k = orv::tavo::KernelsFor(level);
    const orv::tavo::Kernels& p = orv::tavo::PlainKernels();
    for (int width = 1; width <= 97; ++width) {
      Bytes a(static_cast<size_t>(width) * 2), b(a.size()), c(a.size()), d(a.size());
      FillRandom(&a, &rng);
      FillRandom(&b, &rng);
      FillRandom(&c, &rng);
      FillRandom(&d, &rng);
      for (orv::tavo::Sign sign :
           {orv::tavo::Sign::kUnsigned, orv::tavo::Sign::kInterleaved, orv::tavo::Sign::kSigned}) {
        Bytes x(width + 1, kCanary), y(width + 1, kCanary);
        p.meanRows(a.data(), b.data(), x.data(), width, sign);
        k.meanRows(a.data(), b.data(), y.data(), width, sign);
        ASSERT_EQ(x, y) << k.name << " mean width " << width;
        const uint8_t* rows[4] = {a.data(), b.data(), c.data(), d.data()};
        const int32_t cubic[4] = {-4044, 48545, 24273, -3235};
        const int32_t area[3] = {3, 8, 5};
        const orv::tavo::Post posts[] = {
            {orv::tavo::Norm::kCubic, sign, 0},
            {orv::tavo::Norm::kAreaPacked, sign, (16 + 0xFFFFFu) / 16},
            {orv::tavo::Norm::kAreaPlane, orv::tavo::Sign::kUnsigned, 0xFFFFFFFFu / 16}};
        for (const auto& post : posts) {
          const bool isCubic = post.norm == orv::tavo::Norm::kCubic;
          p.tapRows(rows, isCubic ? cubic : area, isCubic ? 4 : 3, x.data(), width, post);
          k.tapRows(rows, isCubic ? cubic : area, isCubic ? 4 : 3, y.data(), width, post);
          ASSERT_EQ(x, y) << k.name << " taps width " << width;
        }
      }
      Bytes x(width + 1, kCanary), y(width + 1, kCanary);
      p.halveRow(a.data(), x.data(), width);
      k.halveRow(a.data(), y.data(), width);
      ASSERT_EQ(x, y) << k.name << " halve width " << width;
      ++compared;
    }
  }
  if (compared == 0) GTEST_SKIP() << "no processor forms in this build or on this processor";
}

}  // namespace
