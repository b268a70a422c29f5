// Colour kernels at 1920x1080 and 720x480, every row-kernel level, with the
// peer library doing the nearest job in the same run. Items are pixels.
//
//   build/bench/orv_colour_bench --benchmark_filter=1920
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "colour/ColorSpaceConverter.h"
#include "foundation/cpu_info.h"

#if ORV_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace {

using orv::SimdLevel;

struct Frame {
  int w, h;
  std::vector<uint8_t> i420, rgb32, rgb24, yuy2, out;
  Frame(int width, int height)
      : w(width),
        h(height),
        i420(width * height * 3 / 2),
        rgb32(width * height * 4),
        rgb24(width * height * 3),
        yuy2(width * height * 2),
        out(width * height * 4 + 64) {
    std::mt19937 rng(7);
    for (auto* v : {&i420, &rgb32, &rgb24, &yuy2})
      for (auto& b : *v) b = static_cast<uint8_t>(rng());
  }
  const uint8_t* Y() const { return i420.data(); }
  const uint8_t* U() const { return i420.data() + w * h; }
  const uint8_t* V() const { return i420.data() + w * h + (w / 2) * (h / 2); }
};

Frame& GetFrame(int w, int h) {
  static Frame hd(1920, 1080), sd(720, 480);
  return w == 1920 ? hd : sd;
}

const char* LevelName(SimdLevel l) {
  switch (l) {
    case SimdLevel::kPlain:
      return "plain";
    case SimdLevel::kSse2:
      return "sse2";
    case SimdLevel::kAvx512:
      return "avx512";
    default:
      return "avx2";
  }
}

// Planar 4:2:0 to a packed format through the converter.
void FromI420(benchmark::State& state, SimdLevel level, uint32_t format, uint32_t bt709,
              uint32_t scan) {
  Frame& f = GetFrame(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  orv::ColorSpaceConverter c;
  if (!c.Initialize(orv::DetectProcessorFlags(), level)) {
    state.SkipWithError("initialize");
    return;
  }
  const uint32_t bytes = format == orv::CSC_RGB24 ? 3 : format == orv::CSC_YUY2 ? 2 : 4;
  for (auto _ : state) {
    uint32_t size = static_cast<uint32_t>(f.out.size());
    if (!c.ConvertFromYUV420(f.Y(), f.U(), f.V(), f.w, f.w / 2, f.w, f.h, orv::CSC_I420, scan,
                             bt709, f.out.data(), f.w * bytes, format, &size)) {
      state.SkipWithError("convert");
      return;
    }
    benchmark::DoNotOptimize(f.out.data());
  }
  state.SetItemsProcessed(state.iterations() * f.w * f.h);
}

// A packed picture to planar 4:2:0 through the converter.
void ToI420(benchmark::State& state, SimdLevel level, uint32_t format, uint32_t scan) {
  Frame& f = GetFrame(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  orv::ColorSpaceConverter c;
  if (!c.Initialize(orv::DetectProcessorFlags(), level)) {
    state.SkipWithError("initialize");
    return;
  }
  const uint8_t* src = format == orv::CSC_RGB24  ? f.rgb24.data()
                       : format == orv::CSC_YUY2 ? f.yuy2.data()
                                                 : f.rgb32.data();
  const uint32_t bytes = format == orv::CSC_RGB24 ? 3 : format == orv::CSC_YUY2 ? 2 : 4;
  uint8_t* y = f.out.data();
  for (auto _ : state) {
    uint32_t size = static_cast<uint32_t>(f.out.size());
    if (!c.ConvertToYUV420(src, f.w * bytes, f.w, f.h, format, scan, y, y + f.w * f.h,
                           y + f.w * f.h + (f.w / 2) * (f.h / 2), f.w, orv::CSC_I420, &size)) {
      state.SkipWithError("convert");
      return;
    }
    benchmark::DoNotOptimize(f.out.data());
  }
  state.SetItemsProcessed(state.iterations() * f.w * f.h);
}

#if ORV_HAVE_LIBYUV
enum class Peer { kToArgb, kToRgb24, kH420ToArgb, kArgbToI420, kRgb24ToI420, kYuy2ToI420, kToYuy2 };

void Libyuv(benchmark::State& state, Peer peer) {
  Frame& f = GetFrame(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
  const int w = f.w, h = f.h;
  uint8_t* o = f.out.data();
  uint8_t* oy = o;
  uint8_t* ou = o + w * h;
  uint8_t* ov = ou + (w / 2) * (h / 2);
  for (auto _ : state) {
    switch (peer) {
      case Peer::kToArgb:
        libyuv::I420ToARGB(f.Y(), w, f.U(), w / 2, f.V(), w / 2, o, w * 4, w, h);
        break;
      case Peer::kToRgb24:
        libyuv::I420ToRGB24(f.Y(), w, f.U(), w / 2, f.V(), w / 2, o, w * 3, w, h);
        break;
      case Peer::kH420ToArgb:
        libyuv::H420ToARGB(f.Y(), w, f.U(), w / 2, f.V(), w / 2, o, w * 4, w, h);
        break;
      case Peer::kArgbToI420:
        libyuv::ARGBToI420(f.rgb32.data(), w * 4, oy, w, ou, w / 2, ov, w / 2, w, h);
        break;
      case Peer::kRgb24ToI420:
        libyuv::RGB24ToI420(f.rgb24.data(), w * 3, oy, w, ou, w / 2, ov, w / 2, w, h);
        break;
      case Peer::kYuy2ToI420:
        libyuv::YUY2ToI420(f.yuy2.data(), w * 2, oy, w, ou, w / 2, ov, w / 2, w, h);
        break;
      case Peer::kToYuy2:
        libyuv::I420ToYUY2(f.Y(), w, f.U(), w / 2, f.V(), w / 2, o, w * 2, w, h);
        break;
    }
    benchmark::DoNotOptimize(o);
  }
  state.SetItemsProcessed(state.iterations() * w * h);
}
#endif

void Sizes(benchmark::internal::Benchmark* b) {
  b->Args({1920, 1080})->Args({720, 480})->Unit(benchmark::kMicrosecond);
}

int Register() {
  std::vector<SimdLevel> levels = {SimdLevel::kPlain};
#if ORV_X86_SIMD
  if (orv::DetectSimdLevel() >= SimdLevel::kSse2) levels.push_back(SimdLevel::kSse2);
  if (orv::DetectSimdLevel() >= SimdLevel::kAvx2) levels.push_back(SimdLevel::kAvx2);
  if (orv::DetectSimdLevel() >= SimdLevel::kAvx512) levels.push_back(SimdLevel::kAvx512);
#endif
  struct From {
    const char* name;
    uint32_t format;
    uint32_t bt709;
  };
  const From froms[] = {{"I420ToRGB32", orv::CSC_RGB32, 0},
                        {"I420ToRGBA", orv::CSC_RGBA, 0},
                        {"I420ToRGB24", orv::CSC_RGB24, 0},
                        {"BT709I420ToRGB32", orv::CSC_RGB32, 1},
                        {"I420ToYUY2", orv::CSC_YUY2, 0}};
  const From tos[] = {{"RGB32ToI420", orv::CSC_RGB32, 0},
                      {"RGB24ToI420", orv::CSC_RGB24, 0},
                      {"YUY2ToI420", orv::CSC_YUY2, 0}};
  // Progressive pictures, and interlaced ones (each field filtered on its own).
  const std::pair<const char*, uint32_t> scans[] = {{"", orv::CSC_SCAN_PROGRESSIVE},
                                                    {"Interlaced", orv::CSC_SCAN_INTERLACED}};
  for (SimdLevel l : levels)
    for (const auto& scan : scans) {
      for (const From& f : froms)
        benchmark::RegisterBenchmark(
            (std::string("orv/") + f.name + scan.first + "/" + LevelName(l)).c_str(), FromI420, l,
            f.format, f.bt709, scan.second)
            ->Apply(Sizes);
      for (const From& f : tos)
        benchmark::RegisterBenchmark(
            (std::string("orv/") + f.name + scan.first + "/" + LevelName(l)).c_str(), ToI420, l,
            f.format, scan.second)
            ->Apply(Sizes);
    }
#if ORV_HAVE_LIBYUV
  const std::pair<const char*, Peer> peers[] = {
      {"I420ToARGB", Peer::kToArgb},       {"I420ToRGB24", Peer::kToRgb24},
      {"H420ToARGB", Peer::kH420ToArgb},   {"ARGBToI420", Peer::kArgbToI420},
      {"RGB24ToI420", Peer::kRgb24ToI420}, {"YUY2ToI420", Peer::kYuy2ToI420},
      {"I420ToYUY2", Peer::kToYuy2}};
  for (const auto& p : peers)
    benchmark::RegisterBenchmark((std::string("libyuv/") + p.first).c_str(), Libyuv, p.second)
        ->Apply(Sizes);
#endif
  return 0;
}

const int kRegistered = Register();

}  // namespace

BENCHMARK_MAIN();
