// Rate conversion speed: 10 s of stereo 48000 -> 44100 and 44100 -> 48000, ours
// and the peer libraries found at build time, in one run. "x_realtime" is
// seconds of audio converted per second of processor time (real-time factor);
// items per second are input frames. Rates are taken over the process's
// processor time, so that other work on a shared machine weighs less.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "audio_resamplers.h"

namespace {

constexpr int kSeconds = 10;
constexpr int kChannels = 2;

std::vector<float> Programme(int rate) {
  // Two tones and a little noise, well inside full scale.
  std::vector<float> v(static_cast<size_t>(rate) * kSeconds * kChannels);
  uint32_t seed = 12345;
  for (size_t f = 0; f < v.size() / kChannels; ++f) {
    for (int c = 0; c < kChannels; ++c) {
      seed = seed * 1664525u + 1013904223u;
      const double noise = (static_cast<int32_t>(seed) / 2147483648.0) * 0.01;
      v[f * kChannels + c] =
          static_cast<float>(0.4 * std::sin(2 * M_PI * 440.0 * f / rate + c) +
                             0.3 * std::sin(2 * M_PI * 5170.0 * f / rate) + noise);
    }
  }
  return v;
}

void Register(int inRate, int outRate) {
  auto input = std::make_shared<std::vector<float>>(Programme(inRate));
  for (auto& r : bench_audio::AllResamplers()) {
    std::shared_ptr<bench_audio::Resampler> shared(r.release());
    if (!shared->Setup(inRate, outRate, kChannels)) continue;
    const std::string name =
        std::to_string(inRate) + "->" + std::to_string(outRate) + " " + shared->Name();
    benchmark::RegisterBenchmark(
        name.c_str(),
        [shared, input](benchmark::State& state) {
          std::vector<float> out;
          const size_t frames = input->size() / kChannels;
          shared->Run(input->data(), frames, &out);  // warm-up and set-up of buffers
          for (auto _ : state) {
            shared->Run(input->data(), frames, &out);
            benchmark::DoNotOptimize(out.data());
          }
          state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * frames);
          state.counters["x_realtime"] =
              benchmark::Counter(kSeconds, benchmark::Counter::kIsIterationInvariantRate);
        })
        ->Unit(benchmark::kMillisecond)
        ->MeasureProcessCPUTime();
  }
}

}  // namespace

int main(int argc, char** argv) {
  Register(48000, 44100);
  Register(44100, 48000);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
