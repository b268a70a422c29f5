// Whole planned conversions (OrvImage::InitializeConvert once, Convert per
// frame), in frames per second, beside swscale doing the nearest equivalent
// job (one scale plus format change) in the same run.
//
//   build/bench/orv_pipeline_bench --benchmark_min_time=1
#include <OrvImage.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#if ORV_HAVE_SWSCALE
extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}
#endif

namespace {

struct Pic {
  OrvImage::PICTURE_INFO info = {};
  std::vector<uint8_t> data;
};

// A picture of random content with the format's default step.
Pic Make(OrvImage::COLOR_FORMAT_TYPE f, uint32_t w, uint32_t h, OrvImage::SCAN_TYPE scan) {
  Pic p;
  p.info.width = w;
  p.info.height = h;
  p.info.colorFormat = f;
  p.info.scanType = scan;
  p.info.step = OrvImage::GetGenericStep(f, w, h);
  p.info.size = OrvImage::GetPictureSize(f, w, h, p.info.step);
  p.data.resize(p.info.size);
  std::mt19937 rng(w * 31 + h);
  for (auto& b : p.data) b = static_cast<uint8_t>(rng());
  return p;
}

void RunPlan(benchmark::State& state, OrvImage::COLOR_FORMAT_TYPE sf, uint32_t sw, uint32_t sh,
             OrvImage::SCAN_TYPE ss, OrvImage::COLOR_FORMAT_TYPE df, uint32_t dw, uint32_t dh,
             OrvImage::INTERPOLATION_MODE mode) {
  Pic src = Make(sf, sw, sh, ss);
  Pic dst = Make(df, dw, dh, OrvImage::SCAN_PROGRESSIVE);
  OrvImage image;
  OrvImage::CONVERT_MODE m = {};
  m.convertInterlace = true;
  m.interpolation = mode;
  m.deinterlace = OrvImage::DEINTERLACE_LINE_DOUBLE;
  if (image.InitializeConvert(&src.info, &dst.info, &m) != 0 ||
      image.Convert(src.data.data(), dst.data.data()) != 0) {
    state.SkipWithError("the plan was refused");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(image.Convert(src.data.data(), dst.data.data()));
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations());  // frames
  state.counters["fps"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

const auto kYuy2 = OrvImage::CF_CCIR601YUY2;
const auto kYuv420 = OrvImage::CF_YUV420;
const auto kRgb32 = OrvImage::CF_RGB32;
const auto kTff = OrvImage::SCAN_TOP_FIELD_FIRST;
const auto kProg = OrvImage::SCAN_PROGRESSIVE;

// 1920x1080 interlaced YUY2 to 720x480 progressive 4:2:0: the earlier field
// alone, scaled to the whole frame.
void BM_Plan_Yuy2i1080_To_Yuv420p480(benchmark::State& state) {
  RunPlan(state, kYuy2, 1920, 1080, kTff, kYuv420, 720, 480, OrvImage::INTERPOLATION_AUTO);
}
BENCHMARK(BM_Plan_Yuy2i1080_To_Yuv420p480)->Unit(benchmark::kMillisecond);

// 720x480 4:2:0 to 1920x1080 RGB32, cubic.
void BM_Plan_Yuv420_480_To_Rgb32_1080(benchmark::State& state) {
  RunPlan(state, kYuv420, 720, 480, kProg, kRgb32, 1920, 1080, OrvImage::INTERPOLATION_AUTO);
}
BENCHMARK(BM_Plan_Yuv420_480_To_Rgb32_1080)->Unit(benchmark::kMillisecond);

// 1920x1080 4:2:0 to 720x480 4:2:0 through every interpolation mode.
void BM_Plan_Yuv420_1080_To_Yuv420_480(benchmark::State& state) {
  RunPlan(state, kYuv420, 1920, 1080, kProg, kYuv420, 720, 480,
          static_cast<OrvImage::INTERPOLATION_MODE>(state.range(0)));
}
BENCHMARK(BM_Plan_Yuv420_1080_To_Yuv420_480)
    ->ArgName("mode")
    ->DenseRange(0, 6)
    ->Unit(benchmark::kMillisecond);

// The speed target: 1920x1080 4:2:0 to 720x480 RGB32, cubic and area modes.
void BM_Plan_Yuv420_1080_To_Rgb32_480(benchmark::State& state) {
  RunPlan(state, kYuv420, 1920, 1080, kProg, kRgb32, 720, 480,
          static_cast<OrvImage::INTERPOLATION_MODE>(state.range(0)));
}
BENCHMARK(BM_Plan_Yuv420_1080_To_Rgb32_480)
    ->ArgName("mode")
    ->Arg(OrvImage::INTERPOLATION_CUBIC)
    ->Arg(OrvImage::INTERPOLATION_AUTO)
    ->Unit(benchmark::kMillisecond);

// Its two stages apart: the colour stage at the source's size, and the resize.
void BM_Stage_Yuv420_1080_To_Rgb32_1080(benchmark::State& state) {
  RunPlan(state, kYuv420, 1920, 1080, kProg, kRgb32, 1920, 1080, OrvImage::INTERPOLATION_CUBIC);
}
BENCHMARK(BM_Stage_Yuv420_1080_To_Rgb32_1080)->Unit(benchmark::kMillisecond);
void BM_Stage_Rgb32_1080_To_Rgb32_480(benchmark::State& state) {
  RunPlan(state, kRgb32, 1920, 1080, kProg, kRgb32, 720, 480, OrvImage::INTERPOLATION_CUBIC);
}
BENCHMARK(BM_Stage_Rgb32_1080_To_Rgb32_480)->Unit(benchmark::kMillisecond);

#if ORV_HAVE_SWSCALE
// swscale: one context, one sws_scale per frame.
void RunSws(benchmark::State& state, AVPixelFormat sf, int sw, int sh, AVPixelFormat df, int dw,
            int dh, int flags) {
  SwsContext* ctx = sws_getContext(sw, sh, sf, dw, dh, df, flags, nullptr, nullptr, nullptr);
  if (ctx == nullptr) {
    state.SkipWithError("swscale refused the job");
    return;
  }
  std::vector<uint8_t> planes[3], out[3];
  const uint8_t* srcp[4] = {nullptr, nullptr, nullptr, nullptr};
  uint8_t* dstp[4] = {nullptr, nullptr, nullptr, nullptr};
  int srcs[4] = {0, 0, 0, 0}, dsts[4] = {0, 0, 0, 0};
  std::mt19937 rng(7);
  auto fill = [&](std::vector<uint8_t>& v, size_t n) {
    v.resize(n);
    for (auto& b : v) b = static_cast<uint8_t>(rng());
  };
  if (sf == AV_PIX_FMT_YUYV422) {
    fill(planes[0], size_t(sw) * 2 * sh);
    srcp[0] = planes[0].data();
    srcs[0] = sw * 2;
  } else {
    fill(planes[0], size_t(sw) * sh);
    fill(planes[1], size_t(sw / 2) * (sh / 2));
    fill(planes[2], size_t(sw / 2) * (sh / 2));
    for (int i = 0; i < 3; ++i) srcp[i] = planes[i].data();
    srcs[0] = sw, srcs[1] = srcs[2] = sw / 2;
  }
  if (df == AV_PIX_FMT_BGRA) {
    out[0].resize(size_t(dw) * 4 * dh);
    dstp[0] = out[0].data();
    dsts[0] = dw * 4;
  } else {
    out[0].resize(size_t(dw) * dh);
    out[1].resize(size_t(dw / 2) * (dh / 2));
    out[2].resize(size_t(dw / 2) * (dh / 2));
    for (int i = 0; i < 3; ++i) dstp[i] = out[i].data();
    dsts[0] = dw, dsts[1] = dsts[2] = dw / 2;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(sws_scale(ctx, srcp, srcs, 0, sh, dstp, dsts));
    benchmark::ClobberMemory();
  }
  sws_freeContext(ctx);
  state.SetItemsProcessed(state.iterations());
  state.counters["fps"] =
      benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_Sws_Yuyv1080_To_Yuv420p480_Bicubic(benchmark::State& state) {
  RunSws(state, AV_PIX_FMT_YUYV422, 1920, 1080, AV_PIX_FMT_YUV420P, 720, 480, SWS_BICUBIC);
}
BENCHMARK(BM_Sws_Yuyv1080_To_Yuv420p480_Bicubic)->Unit(benchmark::kMillisecond);

void BM_Sws_Yuv420_480_To_Bgra1080_Bicubic(benchmark::State& state) {
  RunSws(state, AV_PIX_FMT_YUV420P, 720, 480, AV_PIX_FMT_BGRA, 1920, 1080, SWS_BICUBIC);
}
BENCHMARK(BM_Sws_Yuv420_480_To_Bgra1080_Bicubic)->Unit(benchmark::kMillisecond);

void BM_Sws_Yuv420_1080_To_Yuv420_480(benchmark::State& state) {
  static const int flags[] = {SWS_POINT, SWS_BILINEAR, SWS_BICUBIC, SWS_AREA, SWS_LANCZOS};
  RunSws(state, AV_PIX_FMT_YUV420P, 1920, 1080, AV_PIX_FMT_YUV420P, 720, 480,
         flags[state.range(0)]);
}
// 0 point, 1 bilinear, 2 bicubic, 3 area, 4 lanczos.
BENCHMARK(BM_Sws_Yuv420_1080_To_Yuv420_480)
    ->ArgName("filter")
    ->DenseRange(0, 4)
    ->Unit(benchmark::kMillisecond);

void BM_Sws_Yuv420_1080_To_Bgra480_Bicubic(benchmark::State& state) {
  RunSws(state, AV_PIX_FMT_YUV420P, 1920, 1080, AV_PIX_FMT_BGRA, 720, 480, SWS_BICUBIC);
}
BENCHMARK(BM_Sws_Yuv420_1080_To_Bgra480_Bicubic)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

BENCHMARK_MAIN();
