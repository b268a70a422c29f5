// The 4:2:0 scaler, every processor form, beside the peers doing the same job
// in the same run: zimg's bicubic resize and swscale's bicubic and area
// scalers, 8-bit planar 4:2:0 in and out, single thread. Items are
// destination luma pixels, so the figures read as destination pixels per second.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <random>

#include "foundation/cpu_info.h"
#include "platform/scaler/vrscl.h"

#if ORV_HAVE_ZIMG
#include <zimg.h>
#endif
#if ORV_HAVE_SWSCALE
extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}
#endif

namespace {

struct Case {
  int sw, sh, dw, dh;
};
const Case kCases[] = {{1920, 1080, 720, 480}, {720, 480, 1920, 1080}, {1023, 767, 641, 359}};

// A 4:2:0 picture in three 64-byte aligned planes with 64-byte aligned steps.
struct Planes {
  Planes(int w, int h) {
    width[0] = w;
    height[0] = h;
    width[1] = width[2] = w / 2;
    height[1] = height[2] = h / 2;
    for (int p = 0; p < 3; ++p) {
      step[p] = (width[p] + 63) / 64 * 64;
      data[p] = static_cast<uint8_t*>(
          std::aligned_alloc(64, static_cast<size_t>(step[p]) * (height[p] + 1)));
      std::mt19937 rng(p + 1);
      for (int i = 0; i < step[p] * (height[p] + 1); ++i) data[p][i] = rng() & 0xFF;
    }
  }
  ~Planes() {
    for (auto* d : data) std::free(d);
  }
  int width[3], height[3], step[3];
  uint8_t* data[3];
};

void Finish(benchmark::State& state, const Case& c) {
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(c.dw) * c.dh);
  state.SetLabel(std::to_string(c.sw) + "x" + std::to_string(c.sh) + "->" + std::to_string(c.dw) +
                 "x" + std::to_string(c.dh));
}

void BM_Vrscl(benchmark::State& state) {
  const Case& c = kCases[state.range(0)];
  const auto level = static_cast<orv::SimdLevel>(state.range(1));
  if (level > orv::DetectSimdLevel()) {
    state.SkipWithError("processor lacks this level");
    return;
  }
  Planes src(c.sw, c.sh), dst(c.dw, c.dh);
  orv::VRSCLHandle h = nullptr;
  orv::VRSCLCreateInstance(&h, level);
  if (orv::VRSCLSetupConverter(h, c.sw, c.sh, c.sw, c.sh, c.dw, c.dh, c.dw, c.dh) != 0) {
    state.SkipWithError("set-up refused");
    orv::VRSCLReleaseInstance(&h);
    return;
  }
  for (auto _ : state) {
    orv::VRSCLConvert(h, dst.data[0], dst.data[1], dst.data[2], dst.step[0], dst.step[1],
                      src.data[0], src.data[1], src.data[2], src.step[0], src.step[1]);
    benchmark::ClobberMemory();
  }
  orv::VRSCLReleaseInstance(&h);
  Finish(state, c);
}
BENCHMARK(BM_Vrscl)
    ->ArgNames({"case", "level"})
    ->ArgsProduct(
        {{0, 1, 2},
         {static_cast<int>(orv::SimdLevel::kPlain), static_cast<int>(orv::SimdLevel::kSse2),
          static_cast<int>(orv::SimdLevel::kAvx2), static_cast<int>(orv::SimdLevel::kAvx512)}});

void BM_VrsclSetup(benchmark::State& state) {
  const Case& c = kCases[state.range(0)];
  orv::VRSCLHandle h = nullptr;
  orv::VRSCLCreateInstance(&h);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        orv::VRSCLSetupConverter(h, c.sw, c.sh, c.sw, c.sh, c.dw, c.dh, c.dw, c.dh));
  }
  orv::VRSCLReleaseInstance(&h);
  state.SetLabel("tables only");
}
BENCHMARK(BM_VrsclSetup)->ArgName("case")->DenseRange(0, 2);

#if ORV_HAVE_ZIMG
void BM_ZimgBicubic(benchmark::State& state) {
  const Case& c = kCases[state.range(0)];
  Planes src(c.sw, c.sh), dst(c.dw, c.dh);
  zimg_image_format sf, df;
  zimg_image_format_default(&sf, ZIMG_API_VERSION);
  zimg_image_format_default(&df, ZIMG_API_VERSION);
  for (zimg_image_format* f : {&sf, &df}) {
    f->subsample_w = 1;
    f->subsample_h = 1;
    f->color_family = ZIMG_COLOR_YUV;
    f->matrix_coefficients = ZIMG_MATRIX_BT470_BG;
    f->transfer_characteristics = ZIMG_TRANSFER_BT709;
    f->color_primaries = ZIMG_PRIMARIES_BT709;
    f->pixel_type = ZIMG_PIXEL_BYTE;
    f->depth = 8;
    f->pixel_range = ZIMG_RANGE_LIMITED;
    f->chroma_location = ZIMG_CHROMA_CENTER;
  }
  sf.width = c.sw;
  sf.height = c.sh;
  df.width = c.dw;
  df.height = c.dh;
  zimg_graph_builder_params params;
  zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
  params.resample_filter = ZIMG_RESIZE_BICUBIC;
  params.resample_filter_uv = ZIMG_RESIZE_BICUBIC;
  params.cpu_type = state.range(1) == 0 ? ZIMG_CPU_AUTO : ZIMG_CPU_AUTO_64B;
  zimg_filter_graph* graph = zimg_filter_graph_build(&sf, &df, &params);
  if (graph == nullptr) {
    state.SkipWithError("zimg refuses this size (4:2:0 needs even sizes)");
    return;
  }
  size_t tmpSize = 0;
  zimg_filter_graph_get_tmp_size(graph, &tmpSize);
  void* tmp = std::aligned_alloc(64, (tmpSize + 63) / 64 * 64);
  zimg_image_buffer_const sb;
  zimg_image_buffer db;
  std::memset(&sb, 0, sizeof(sb));
  std::memset(&db, 0, sizeof(db));
  sb.version = db.version = ZIMG_API_VERSION;
  for (int p = 0; p < 3; ++p) {
    sb.plane[p].data = src.data[p];
    sb.plane[p].stride = src.step[p];
    sb.plane[p].mask = ZIMG_BUFFER_MAX;
    db.plane[p].data = dst.data[p];
    db.plane[p].stride = dst.step[p];
    db.plane[p].mask = ZIMG_BUFFER_MAX;
  }
  for (auto _ : state) {
    zimg_filter_graph_process(graph, &sb, &db, tmp, nullptr, nullptr, nullptr, nullptr);
    benchmark::ClobberMemory();
  }
  zimg_filter_graph_free(graph);
  std::free(tmp);
  Finish(state, c);
}
// cpu 0: zimg's own choice up to 256-bit vectors; 1: 512-bit vectors allowed.
BENCHMARK(BM_ZimgBicubic)->ArgNames({"case", "cpu"})->ArgsProduct({{0, 1, 2}, {0, 1}});
#endif

#if ORV_HAVE_SWSCALE
void BM_Swscale(benchmark::State& state) {
  const Case& c = kCases[state.range(0)];
  const int flags = state.range(1) == 0 ? SWS_BICUBIC : SWS_AREA;
  Planes src(c.sw, c.sh), dst(c.dw, c.dh);
  SwsContext* ctx = sws_getContext(c.sw, c.sh, AV_PIX_FMT_YUV420P, c.dw, c.dh, AV_PIX_FMT_YUV420P,
                                   flags, nullptr, nullptr, nullptr);
  if (ctx == nullptr) {
    state.SkipWithError("swscale context refused");
    return;
  }
  const uint8_t* sp[4] = {src.data[0], src.data[1], src.data[2], nullptr};
  int ss[4] = {src.step[0], src.step[1], src.step[2], 0};
  uint8_t* dp[4] = {dst.data[0], dst.data[1], dst.data[2], nullptr};
  int ds[4] = {dst.step[0], dst.step[1], dst.step[2], 0};
  for (auto _ : state) {
    sws_scale(ctx, sp, ss, 0, c.sh, dp, ds);
    benchmark::ClobberMemory();
  }
  sws_freeContext(ctx);
  Finish(state, c);
}
// filter 0: bicubic, 1: area.
BENCHMARK(BM_Swscale)->ArgNames({"case", "filter"})->ArgsProduct({{0, 1, 2}, {0, 1}});
#endif

}  // namespace

BENCHMARK_MAIN();
