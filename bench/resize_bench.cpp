// The public resizes of OrvImage, 4:2:0 and YUY2, through the own scaler and
// through the primitives with each interpolation, beside libyuv's I420Scale
// and swscale doing the same job in the same run. Items are destination
// pixels, so figures read as pixels per second.
#include <OrvImage.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#if defined(ORV_HAVE_LIBYUV)
#include <libyuv.h>
#endif
#if defined(ORV_HAVE_SWSCALE)
extern "C" {
#include <libswscale/swscale.h>
}
#endif

namespace {

struct Case {
  int sw, sh, dw, dh;
};

const Case kCases[] = {{1920, 1080, 720, 480}, {720, 480, 1920, 1080}, {720, 480, 360, 240}};

std::vector<uint8_t> RandomBytes(size_t n) {
  std::vector<uint8_t> v(n);
  std::mt19937 rng(7);
  for (auto& b : v) b = static_cast<uint8_t>(rng());
  return v;
}

void OrvYuv420(benchmark::State& state, Case c, OrvImage::INTERPOLATION_MODE mode) {
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 3 / 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 3 / 2);
  for (auto _ : state) {
    unsigned long size = dst.size();
    const unsigned long rc =
        OrvImage::ResizeYUV420(const_cast<uint8_t*>(src.data()), dst.data(), &size, c.sw, c.sh,
                               c.sw, c.dw, c.dh, c.dw, mode);
    if (rc != 0) state.SkipWithError("resize failed");
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}

void OrvYuy2(benchmark::State& state, Case c, OrvImage::INTERPOLATION_MODE mode) {
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 2);
  for (auto _ : state) {
    unsigned long size = dst.size();
    const unsigned long rc =
        OrvImage::ResizeYUY2(const_cast<uint8_t*>(src.data()), dst.data(), &size, c.sw, c.sh,
                             2 * c.sw, c.dw, c.dh, 2 * c.dw, mode);
    if (rc != 0) state.SkipWithError("resize failed");
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}

#if defined(ORV_HAVE_LIBYUV)
void LibyuvI420Scale(benchmark::State& state, Case c, libyuv::FilterMode filter) {
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 3 / 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 3 / 2);
  const uint8_t* su = src.data() + c.sw * c.sh;
  const uint8_t* sv = su + (c.sw / 2) * (c.sh / 2);
  uint8_t* du = dst.data() + c.dw * c.dh;
  uint8_t* dv = du + (c.dw / 2) * (c.dh / 2);
  for (auto _ : state) {
    libyuv::I420Scale(src.data(), c.sw, su, c.sw / 2, sv, c.sw / 2, c.sw, c.sh, dst.data(), c.dw,
                      du, c.dw / 2, dv, c.dw / 2, c.dw, c.dh, filter);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}
#endif

#if defined(ORV_HAVE_SWSCALE)
void SwscaleYuv420(benchmark::State& state, Case c, int flags) {
  SwsContext* ctx = sws_getContext(c.sw, c.sh, AV_PIX_FMT_YUV420P, c.dw, c.dh, AV_PIX_FMT_YUV420P,
                                   flags, nullptr, nullptr, nullptr);
  if (!ctx) {
    state.SkipWithError("no swscale context");
    return;
  }
  const auto src = RandomBytes(static_cast<size_t>(c.sw) * c.sh * 3 / 2);
  std::vector<uint8_t> dst(static_cast<size_t>(c.dw) * c.dh * 3 / 2);
  const uint8_t* srcPlanes[3] = {src.data(), src.data() + c.sw * c.sh,
                                 src.data() + c.sw * c.sh + (c.sw / 2) * (c.sh / 2)};
  const int srcStrides[3] = {c.sw, c.sw / 2, c.sw / 2};
  uint8_t* dstPlanes[3] = {dst.data(), dst.data() + c.dw * c.dh,
                           dst.data() + c.dw * c.dh + (c.dw / 2) * (c.dh / 2)};
  const int dstStrides[3] = {c.dw, c.dw / 2, c.dw / 2};
  for (auto _ : state) {
    sws_scale(ctx, srcPlanes, srcStrides, 0, c.sh, dstPlanes, dstStrides);
    benchmark::ClobberMemory();
  }
  sws_freeContext(ctx);
  state.SetItemsProcessed(state.iterations() * c.dw * c.dh);
}
#endif

void Register() {
  const struct {
    const char* name;
    OrvImage::INTERPOLATION_MODE mode;
  } modes[] = {{"tavo", OrvImage::INTERPOLATION_TAVO},
               {"nearest", OrvImage::INTERPOLATION_NEAREST},
               {"linear", OrvImage::INTERPOLATION_LINEAR},
               {"cubic", OrvImage::INTERPOLATION_CUBIC},
               {"auto", OrvImage::INTERPOLATION_AUTO}};
  for (const Case& c : kCases) {
    const std::string size = std::to_string(c.sw) + "x" + std::to_string(c.sh) + "_to_" +
                             std::to_string(c.dw) + "x" + std::to_string(c.dh);
    for (const auto& m : modes) {
      benchmark::RegisterBenchmark(("OrvResizeYUV420/" + size + "/" + m.name).c_str(), OrvYuv420, c,
                                   m.mode);
      benchmark::RegisterBenchmark(("OrvResizeYUY2/" + size + "/" + m.name).c_str(), OrvYuy2, c,
                                   m.mode);
    }
#if defined(ORV_HAVE_LIBYUV)
    benchmark::RegisterBenchmark(("LibyuvI420Scale/" + size + "/box").c_str(), LibyuvI420Scale, c,
                                 libyuv::kFilterBox);
    benchmark::RegisterBenchmark(("LibyuvI420Scale/" + size + "/bilinear").c_str(), LibyuvI420Scale,
                                 c, libyuv::kFilterBilinear);
#endif
#if defined(ORV_HAVE_SWSCALE)
    benchmark::RegisterBenchmark(("SwscaleYUV420/" + size + "/bicubic").c_str(), SwscaleYuv420, c,
                                 SWS_BICUBIC);
    benchmark::RegisterBenchmark(("SwscaleYUV420/" + size + "/area").c_str(), SwscaleYuv420, c,
                                 SWS_AREA);
#endif
  }
}

}  // namespace

int main(int argc, char** argv) {
  Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
