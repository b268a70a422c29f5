// Mask copy, blend and alpha composition at 1920x1080, in pixels per second,
// with the peer library's ARGB blend and plane interpolation in the same run.
// The row kernels of the mask copy and of the YUY2A composition run at the
// plain level (0) and at this processor's level (9), so the speed-up of the
// processor forms shows beside the public operations.
//
//   ./build/bench/orv_blend_bench --benchmark_min_time=0.2
#include <OrvImage.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "foundation/cpu_info.h"
#include "image/alpha_comp_rows.h"
#include "image/mask_copy_rows.h"

#if defined(ORV_HAVE_LIBYUV)
#include <libyuv.h>
#endif

namespace {

constexpr int kW = 1920;
constexpr int kH = 1080;

std::vector<uint8_t> Noise(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> v(n);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

// B is A with small changes in half of the picture, so that about half of the
// pixels are still: both branches of the pixel test are taken.
std::vector<uint8_t> Near(const std::vector<uint8_t>& a, uint32_t seed) {
  std::mt19937 rng(seed);
  std::vector<uint8_t> b = a;
  for (size_t i = 0; i < b.size(); ++i) {
    if (rng() & 1) b[i] = static_cast<uint8_t>(b[i] + 9);
  }
  return b;
}

void Done(benchmark::State& s) { s.SetItemsProcessed(s.iterations() * int64_t{kW} * kH); }

orv::SimdLevel Level(const benchmark::State& s) {
  return s.range(0) == 0 ? orv::SimdLevel::kPlain : orv::DetectSimdLevel();
}

// ---------------------------------------------------------------- mask copy
typedef unsigned long (*MaskFn)(unsigned char* const, unsigned char* const, unsigned char*,
                                unsigned long, unsigned long, unsigned long, int,
                                OrvImage::FIELD_TYPE);

template <int kBytes>
void MaskCopy(benchmark::State& s, MaskFn fn) {
  const size_t line = static_cast<size_t>(kBytes) * kW;
  const size_t size = line * kH + (kBytes == 1 ? line / 2 * kH : 0);
  auto a = Noise(size, 1);
  auto b = Near(a, 2);
  auto d = Noise(size, 3);
  for (auto _ : s) {
    fn(a.data(), b.data(), d.data(), d.size(), kW, kH, static_cast<int>(line),
       OrvImage::FIELD_FRAME);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
void BM_MaskCopyYUV420(benchmark::State& s) { MaskCopy<1>(s, OrvImage::MaskCopyYUV420); }
void BM_MaskCopyYUY2(benchmark::State& s) { MaskCopy<2>(s, OrvImage::MaskCopyYUY2); }
void BM_MaskCopyRGB24(benchmark::State& s) { MaskCopy<3>(s, OrvImage::MaskCopyRGB24); }
void BM_MaskCopyRGB32(benchmark::State& s) { MaskCopy<4>(s, OrvImage::MaskCopyRGB32); }
BENCHMARK(BM_MaskCopyYUV420);
BENCHMARK(BM_MaskCopyYUY2);
BENCHMARK(BM_MaskCopyRGB24);
BENCHMARK(BM_MaskCopyRGB32);

// The pixel test alone over every pair of a frame, with sums, per level.
void BM_MaskRows(benchmark::State& s) {
  const int kind = static_cast<int>(s.range(1));
  const int bytes = kind == 0 ? 1 : kind == 1 ? 2 : kind == 2 ? 3 : 4;
  const size_t line = static_cast<size_t>(bytes) * kW;
  auto a = Noise(line * kH, 4);
  auto b = Near(a, 5);
  auto d = Noise(line * kH, 6);
  const orv::image::MaskRowFn row = orv::image::MaskRowsFor(Level(s)).row[kind];
  uint32_t sums[2];
  for (auto _ : s) {
    for (int y = 0; y + 1 < kH; y += 2) {
      row(&a[y * line], &a[(y + 1) * line], &b[y * line], &b[(y + 1) * line], &d[y * line],
          &d[(y + 1) * line], kW, 100, 120, sums);
    }
    benchmark::DoNotOptimize(sums);
  }
  Done(s);
}
BENCHMARK(BM_MaskRows)->ArgsProduct({{0, 9}, {0, 1, 2, 3}});

// ---------------------------------------------------------------- blend
void BM_BlendYUV420(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 3 / 2;
  auto a = Noise(size, 7), b = Noise(size, 8), d = Noise(size, 9);
  for (auto _ : s) {
    OrvImage::BlendYUV420(a.data(), b.data(), d.data(), nullptr, kW, kH, kW, OrvImage::FIELD_FRAME,
                          0.5f);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_BlendYUV420);

void BM_BlendYUY2(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 2;
  auto a = Noise(size, 7), b = Noise(size, 8), d = Noise(size, 9);
  for (auto _ : s) {
    OrvImage::BlendYUY2(a.data(), b.data(), d.data(), nullptr, kW, kH, 2 * kW,
                        OrvImage::FIELD_FRAME, 0.5f);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_BlendYUY2);

void BM_BlendRGB32(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 4;
  auto a = Noise(size, 7), b = Noise(size, 8), d = Noise(size, 9);
  for (auto _ : s) {
    OrvImage::BlendRGB32(a.data(), b.data(), d.data(), nullptr, kW, kH, 4 * kW,
                         OrvImage::FIELD_FRAME, 0.5f);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_BlendRGB32);

void BM_BlendYUY2Field(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 2;
  auto a = Noise(size, 7), b = Noise(size, 8), d = Noise(size, 9);
  for (auto _ : s) {
    OrvImage::BlendYUY2(a.data(), b.data(), d.data(), nullptr, kW, kH, 2 * kW, OrvImage::FIELD_TOP,
                        0.5f);
    benchmark::DoNotOptimize(d.data());
  }
  s.SetItemsProcessed(s.iterations() * int64_t{kW} * kH / 2);
}
BENCHMARK(BM_BlendYUY2Field);

// ---------------------------------------------------------------- composition
void BM_AlphaCompRGB32(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 4;
  auto a = Noise(size, 10), b = Noise(size, 11), d = Noise(size, 12);
  for (auto _ : s) {
    OrvImage::AlphaCompRGB32(a.data(), b.data(), d.data(), kW, kH);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_AlphaCompRGB32);

void BM_AlphaCompRGB32Flipped(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 4;
  auto a = Noise(size, 10), b = Noise(size, 11), d = Noise(size, 12);
  for (auto _ : s) {
    OrvImage::AlphaCompRGB32(a.data(), 4 * kW, b.data(), -4 * kW, d.data(), -4 * kW, kW, kH);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_AlphaCompRGB32Flipped);

void BM_AlphaCompRGB24(benchmark::State& s) {
  auto a = Noise(size_t{kW} * kH * 4, 10), b = Noise(size_t{kW} * kH * 3, 11);
  auto d = Noise(size_t{kW} * kH * 3, 12);
  for (auto _ : s) {
    OrvImage::AlphaCompRGB24(a.data(), b.data(), d.data(), kW, kH);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_AlphaCompRGB24);

void BM_AlphaCompYUY2A(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 3;
  auto a = Noise(size, 13), b = Noise(size, 14), d = Noise(size, 15);
  for (auto _ : s) {
    OrvImage::AlphaCompYUY2A(a.data(), b.data(), d.data(), kW, kH, 0, 0);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_AlphaCompYUY2A);

void BM_Yuy2aRows(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 3;
  auto a = Noise(size, 13), b = Noise(size, 14), d = Noise(size, 15);
  const orv::image::Yuy2aRowFn row = orv::image::Yuy2aRowFor(Level(s));
  const size_t alpha = size_t{kW} * kH * 2;
  for (auto _ : s) {
    for (size_t y = 0; y < kH; ++y) {
      row(&a[2 * kW * y], &a[alpha + kW * y], &b[2 * kW * y], &b[alpha + kW * y], &d[2 * kW * y],
          &d[alpha + kW * y], kW);
    }
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_Yuy2aRows)->Arg(0)->Arg(9);

// ---------------------------------------------------------------- peer
#if defined(ORV_HAVE_LIBYUV)
void BM_PeerARGBBlend(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 4;
  auto a = Noise(size, 10), b = Noise(size, 11), d = Noise(size, 12);
  for (auto _ : s) {
    libyuv::ARGBBlend(a.data(), 4 * kW, b.data(), 4 * kW, d.data(), 4 * kW, kW, kH);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_PeerARGBBlend);

// Half-and-half mix of two 4:2:0 frames: Y plane and both chroma planes.
void BM_PeerInterpolateI420(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 3 / 2;
  auto a = Noise(size, 7), b = Noise(size, 8), d = Noise(size, 9);
  for (auto _ : s) {
    libyuv::InterpolatePlane(a.data(), kW, b.data(), kW, d.data(), kW, kW, kH, 128);
    const size_t c = size_t{kW} * kH;
    libyuv::InterpolatePlane(a.data() + c, kW / 2, b.data() + c, kW / 2, d.data() + c, kW / 2,
                             kW / 2, kH, 128);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_PeerInterpolateI420);

void BM_PeerInterpolateARGB(benchmark::State& s) {
  const size_t size = size_t{kW} * kH * 4;
  auto a = Noise(size, 7), b = Noise(size, 8), d = Noise(size, 9);
  for (auto _ : s) {
    libyuv::InterpolatePlane(a.data(), 4 * kW, b.data(), 4 * kW, d.data(), 4 * kW, 4 * kW, kH, 128);
    benchmark::DoNotOptimize(d.data());
  }
  Done(s);
}
BENCHMARK(BM_PeerInterpolateARGB);
#endif

}  // namespace

BENCHMARK_MAIN();
