// The own picture scaler, every processor form side by side, with libyuv's
// I420Scale (box and bilinear filters) as a peer on the 4:2:0 cases when it is
// installed. Items are destination pixels, so figures read as pixels per
// second and compare across forms and with the peer.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "foundation/cpu_info.h"
#include "image/tavo_kernels.h"
#include "image/tavo_resize.h"

#if defined(ORV_HAVE_LIBYUV)
#include <libyuv.h>
#endif

namespace {

struct Case {
  int sw, sh, dw, dh;
};

const Case kCases[] = {
    {1920, 1080, 720, 480},
    {720, 480, 1920, 1080},
    {1440, 1080, 1920, 1080},
    {720, 480, 360, 240},
};

std::vector<uint8_t> RandomBytes(size_t n) {
  std::vector<uint8_t> v(n);
  std::mt19937 rng(1);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

void Yuv420(benchmark::State& state, Case c, orv::SimdLevel level) {
  if (orv::DetectSimdLevel() < level) {
    state.SkipWithError("processor lacks this level");
    return;
  }
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 3 / 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 3 / 2);
  for (auto _ : state) {
    const bool ok =
        orv::tavo::ResizeYUV420(src.data(), dst.data(), c.sw, c.dw, {c.sw, c.sh}, {c.dw, c.dh}, 0,
                                0, 0, OrvImage::FIELD_FRAME, true, level);
    benchmark::DoNotOptimize(ok);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}

void Yuy2(benchmark::State& state, Case c, orv::SimdLevel level) {
  if (orv::DetectSimdLevel() < level) {
    state.SkipWithError("processor lacks this level");
    return;
  }
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 2);
  for (auto _ : state) {
    const bool ok =
        orv::tavo::ResizeYUY2(src.data(), dst.data(), c.sw * 2, c.dw * 2, {c.sw, c.sh},
                              {c.dw, c.dh}, 0, 0, 0, OrvImage::FIELD_FRAME, true, level);
    benchmark::DoNotOptimize(ok);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}

#if defined(ORV_HAVE_LIBYUV)
void PeerI420Scale(benchmark::State& state, Case c, libyuv::FilterMode filter) {
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 3 / 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 3 / 2);
  const uint8_t* sy = src.data();
  const uint8_t* su = sy + c.sw * c.sh;
  const uint8_t* sv = su + (c.sw / 2) * (c.sh / 2);
  uint8_t* dy = dst.data();
  uint8_t* du = dy + c.dw * c.dh;
  uint8_t* dv = du + (c.dw / 2) * (c.dh / 2);
  for (auto _ : state) {
    const int r = libyuv::I420Scale(sy, c.sw, su, c.sw / 2, sv, c.sw / 2, c.sw, c.sh, dy, c.dw, du,
                                    c.dw / 2, dv, c.dw / 2, c.dw, c.dh, filter);
    benchmark::DoNotOptimize(r);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}
#endif

const struct {
  orv::SimdLevel level;
  const char* name;
} kForms[] = {
    {orv::SimdLevel::kPlain, "plain"},
    {orv::SimdLevel::kSse2, "sse2"},
    {orv::SimdLevel::kAvx2, "avx2"},
};

int Register() {
  for (const Case& c : kCases) {
    const std::string size = std::to_string(c.sw) + "x" + std::to_string(c.sh) + "_to_" +
                             std::to_string(c.dw) + "x" + std::to_string(c.dh);
    for (const auto& f : kForms) {
      if (!ORV_X86_SIMD && f.level != orv::SimdLevel::kPlain) continue;
      benchmark::RegisterBenchmark(("Tavo420/" + size + "/" + f.name).c_str(), Yuv420, c, f.level);
    }
#if defined(ORV_HAVE_LIBYUV)
    benchmark::RegisterBenchmark(("I420Scale/" + size + "/box").c_str(), PeerI420Scale, c,
                                 libyuv::kFilterBox);
    benchmark::RegisterBenchmark(("I420Scale/" + size + "/bilinear").c_str(), PeerI420Scale, c,
                                 libyuv::kFilterBilinear);
#endif
    for (const auto& f : kForms) {
      if (!ORV_X86_SIMD && f.level != orv::SimdLevel::kPlain) continue;
      benchmark::RegisterBenchmark(("TavoYUY2/" + size + "/" + f.name).c_str(), Yuy2, c, f.level);
    }
  }
  return 0;
}

const int kRegistered = Register();

}  // namespace

BENCHMARK_MAIN();
