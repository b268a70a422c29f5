// Format-pair conversions on the per-frame paths, 1920 x 1080, in pixels per
// second. Each runs as the picture pipeline calls it (a bottom-up RGB side,
// a top-down YUV side, interlaced where the pipeline passes interlaced
// pictures), with the colour converter of an instance where the conversion
// takes one. With libyuv present, its nearest equivalent runs in the same
// program so that the ratio can be read from one run.
#include <OrvImage.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "colour/ColorSpaceConverter.h"

#if ORV_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

constexpr int kW = 1920;
constexpr int kH = 1080;

std::vector<uint8_t> RandomBytes(size_t n) {
  std::vector<uint8_t> v(n);
  std::mt19937 gen(1);
  for (auto& b : v) b = static_cast<uint8_t>(gen());
  return v;
}

struct Pictures {
  std::vector<uint8_t> yuv420 = RandomBytes(kW * kH * 3 / 2);
  std::vector<uint8_t> yuy2 = RandomBytes(2 * kW * kH);
  std::vector<uint8_t> rgb32 = RandomBytes(4 * kW * kH);
  std::vector<uint8_t> out = std::vector<uint8_t>(4 * kW * kH);
};

Pictures& Shared() {
  static Pictures p;
  return p;
}

void Finish(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kW * kH);
}

void BM_YUV420ToRGB32(benchmark::State& state) {
  Pictures& p = Shared();
  const bool progressive = state.range(0) != 0;
  for (auto _ : state) {
    unsigned long size = p.out.size();
    if (OrvImage::YUV420ToRGB32(p.yuv420.data(), p.out.data(), &size, kW, kH, kW, -4 * kW,
                                progressive) != 0) {
      state.SkipWithError("conversion failed");
      break;
    }
  }
  Finish(state);
}
BENCHMARK(BM_YUV420ToRGB32)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void BM_YUV420ToRGB24(benchmark::State& state) {
  Pictures& p = Shared();
  const bool progressive = state.range(0) != 0;
  for (auto _ : state) {
    unsigned long size = p.out.size();
    if (OrvImage::YUV420ToRGB24(p.yuv420.data(), p.out.data(), &size, kW, kH, kW, -3 * kW,
                                progressive) != 0) {
      state.SkipWithError("conversion failed");
      break;
    }
  }
  Finish(state);
}
BENCHMARK(BM_YUV420ToRGB24)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void BM_CCIR601YUY2ToYUV420(benchmark::State& state) {
  Pictures& p = Shared();
  const bool progressive = state.range(0) != 0;
  orv::ColorSpaceConverter converter;
  if (!converter.Initialize()) {
    state.SkipWithError("no converter");
    return;
  }
  for (auto _ : state) {
    unsigned long size = p.out.size();
    if (OrvImage::CCIR601YUY2ToYUV420(p.yuy2.data(), p.out.data(), &size, kW, kH, 2 * kW, kW,
                                      progressive, &converter) != 0) {
      state.SkipWithError("conversion failed");
      break;
    }
  }
  Finish(state);
}
BENCHMARK(BM_CCIR601YUY2ToYUV420)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void BM_RGB32ToYUV420(benchmark::State& state) {
  Pictures& p = Shared();
  const bool progressive = state.range(0) != 0;
  orv::ColorSpaceConverter converter;
  if (!converter.Initialize()) {
    state.SkipWithError("no converter");
    return;
  }
  for (auto _ : state) {
    unsigned long size = p.out.size();
    if (OrvImage::RGB32ToYUV420(p.rgb32.data(), p.out.data(), &size, kW, kH, -4 * kW, kW,
                                progressive, &converter) != 0) {
      state.SkipWithError("conversion failed");
      break;
    }
  }
  Finish(state);
}
BENCHMARK(BM_RGB32ToYUV420)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void BM_YUV420ToCCIR601YUY2(benchmark::State& state) {
  Pictures& p = Shared();
  const bool progressive = state.range(0) != 0;
  for (auto _ : state) {
    unsigned long size = p.out.size();
    if (OrvImage::YUV420ToCCIR601YUY2(p.yuv420.data(), p.out.data(), &size, kW, kH, kW, 2 * kW,
                                      progressive) != 0) {
      state.SkipWithError("conversion failed");
      break;
    }
  }
  Finish(state);
}
BENCHMARK(BM_YUV420ToCCIR601YUY2)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond);

void BM_CCIR601YUY2ToRGB32(benchmark::State& state) {
  Pictures& p = Shared();
  for (auto _ : state) {
    unsigned long size = p.out.size();
    if (OrvImage::CCIR601YUY2ToRGB32(p.yuy2.data(), p.out.data(), &size, kW, kH, 2 * kW, -4 * kW) !=
        0) {
      state.SkipWithError("conversion failed");
      break;
    }
  }
  Finish(state);
}
BENCHMARK(BM_CCIR601YUY2ToRGB32)->Unit(benchmark::kMillisecond);

#if ORV_HAVE_LIBYUV
// The nearest equivalent jobs of a widely used library, same sizes, same
// directions (a negative height writes or reads bottom-up).
void BM_Peer_I420ToARGB(benchmark::State& state) {
  Pictures& p = Shared();
  const uint8_t* y = p.yuv420.data();
  const uint8_t* u = y + kW * kH;
  const uint8_t* v = u + kW * kH / 4;
  for (auto _ : state) {
    libyuv::I420ToARGB(y, kW, u, kW / 2, v, kW / 2, p.out.data(), 4 * kW, kW, -kH);
  }
  Finish(state);
}
BENCHMARK(BM_Peer_I420ToARGB)->Unit(benchmark::kMillisecond);

void BM_Peer_I420ToRGB24(benchmark::State& state) {
  Pictures& p = Shared();
  const uint8_t* y = p.yuv420.data();
  const uint8_t* u = y + kW * kH;
  const uint8_t* v = u + kW * kH / 4;
  for (auto _ : state) {
    libyuv::I420ToRGB24(y, kW, u, kW / 2, v, kW / 2, p.out.data(), 3 * kW, kW, -kH);
  }
  Finish(state);
}
BENCHMARK(BM_Peer_I420ToRGB24)->Unit(benchmark::kMillisecond);

void BM_Peer_YUY2ToI420(benchmark::State& state) {
  Pictures& p = Shared();
  uint8_t* y = p.out.data();
  uint8_t* u = y + kW * kH;
  uint8_t* v = u + kW * kH / 4;
  for (auto _ : state)
    libyuv::YUY2ToI420(p.yuy2.data(), 2 * kW, y, kW, u, kW / 2, v, kW / 2, kW, kH);
  Finish(state);
}
BENCHMARK(BM_Peer_YUY2ToI420)->Unit(benchmark::kMillisecond);

void BM_Peer_ARGBToI420(benchmark::State& state) {
  Pictures& p = Shared();
  uint8_t* y = p.out.data();
  uint8_t* u = y + kW * kH;
  uint8_t* v = u + kW * kH / 4;
  for (auto _ : state) {
    libyuv::ARGBToI420(p.rgb32.data(), 4 * kW, y, kW, u, kW / 2, v, kW / 2, kW, -kH);
  }
  Finish(state);
}
BENCHMARK(BM_Peer_ARGBToI420)->Unit(benchmark::kMillisecond);

void BM_Peer_I420ToYUY2(benchmark::State& state) {
  Pictures& p = Shared();
  const uint8_t* y = p.yuv420.data();
  const uint8_t* u = y + kW * kH;
  const uint8_t* v = u + kW * kH / 4;
  for (auto _ : state)
    libyuv::I420ToYUY2(y, kW, u, kW / 2, v, kW / 2, p.out.data(), 2 * kW, kW, kH);
  Finish(state);
}
BENCHMARK(BM_Peer_I420ToYUY2)->Unit(benchmark::kMillisecond);

void BM_Peer_YUY2ToARGB(benchmark::State& state) {
  Pictures& p = Shared();
  for (auto _ : state) {
    libyuv::YUY2ToARGB(p.yuy2.data(), 2 * kW, p.out.data(), 4 * kW, kW, -kH);
  }
  Finish(state);
}
BENCHMARK(BM_Peer_YUY2ToARGB)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
