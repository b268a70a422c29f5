// Image primitives side by side with the peer libraries doing the nearest
// job, at 1920x1080 and 720x480, in pixels per second. Our primitives run
// twice: with the plain kernels (level 0) and with the kernels this processor
// gets (level 9), so the speed-up of each processor form shows beside the peer;
// the resizes also with the AVX2 kernels (level 4).
//
//   ./build/bench/orv_primitives_bench --benchmark_min_time=0.2
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "foundation/cpu_info.h"
#include "platform/primitives/ipp.h"
#include "platform/primitives/ipp_kernels.h"

#if defined(ORV_HAVE_LIBYUV)
#include <libyuv.h>
#endif
#if defined(ORV_HAVE_SWSCALE)
extern "C" {
#include <libswscale/swscale.h>
}
#endif

namespace {

using namespace orv::ipp;

struct Plane {
  std::vector<uint8_t> bytes;
  int step;
  Plane(int lineBytes, int height) : step((lineBytes + 63) / 64 * 64) {
    bytes.resize(static_cast<size_t>(step) * height + 64);
    std::mt19937 rng(static_cast<uint32_t>(lineBytes * 31 + height));
    for (auto& b : bytes) b = static_cast<uint8_t>(rng());
  }
  uint8_t* p() { return bytes.data(); }
};

// Level 0 is the plain table, 9 the processor's own; the resizes also run at
// level 4, the AVX2 table, which is what processors without AVX-512 get.
const Kernels& Level(const benchmark::State& s) {
  if (s.range(2) == 0) return PlainKernels();
  if (s.range(2) == 4) return KernelsFor(orv::SimdLevel::kAvx2);
  return ActiveKernels();
}

void Done(benchmark::State& s, int64_t pixels) { s.SetItemsProcessed(s.iterations() * pixels); }

#define ORV_SIZES(name)       \
  BENCHMARK(name)             \
      ->Args({1920, 1080, 0}) \
      ->Args({1920, 1080, 9}) \
      ->Args({720, 480, 0})   \
      ->Args({720, 480, 9})
#define ORV_RESIZE_SIZES(name) ORV_SIZES(name)->Args({1920, 1080, 4})->Args({720, 480, 4})
#define ORV_PEER_SIZES(name) BENCHMARK(name)->Args({1920, 1080, 9})->Args({720, 480, 9})

// ---------------------------------------------------------------- colour
void BM_YCbCr420ToBGR(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane y(w, h), u(w / 2, h / 2), v(w / 2, h / 2), d(3 * w, h);
  const Ipp8u* src[3] = {y.p(), u.p(), v.p()};
  int st[3] = {y.step, u.step, v.step};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCr420ToBGR(k, src, st, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCr420ToBGR);

void BM_YCbCr422ToRGB_C2C3R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(2 * w, h), d(3 * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCr422ToRGB_C2C3R(k, a.p(), a.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCr422ToRGB_C2C3R);

void BM_YCbCr422ToRGB_C2P3R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(2 * w, h), r(w, h), g(w, h), b(w, h);
  Ipp8u* d[3] = {r.p(), g.p(), b.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCr422ToRGB_C2P3R(k, a.p(), a.step, d, r.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCr422ToRGB_C2P3R);

void BM_RGBToYCbCr420(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(3 * w, h), y(w, h), u(w / 2, h / 2), v(w / 2, h / 2);
  Ipp8u* d[3] = {y.p(), u.p(), v.p()};
  int st[3] = {y.step, u.step, v.step};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::RGBToYCbCr420(k, a.p(), a.step, d, st, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_RGBToYCbCr420);

void BM_RGBToYCbCr422_P3C2R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane r(w, h), g(w, h), b(w, h), d(2 * w, h);
  const Ipp8u* src[3] = {r.p(), g.p(), b.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::RGBToYCbCr422(k, src, r.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_RGBToYCbCr422_P3C2R);

void BM_YCbCrToBGR_JPEG(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane y(w, h), u(w, h), v(w, h), d(3 * w, h);
  const Ipp8u* src[3] = {y.p(), u.p(), v.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCrToBGR_JPEG(k, src, y.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCrToBGR_JPEG);

void BM_YCbCrToRGB_JPEG_P3R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane y(w, h), u(w, h), v(w, h), r(w, h), g(w, h), b(w, h);
  const Ipp8u* src[3] = {y.p(), u.p(), v.p()};
  Ipp8u* d[3] = {r.p(), g.p(), b.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCrToRGB_JPEG_P3R(k, src, y.step, d, r.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCrToRGB_JPEG_P3R);

void BM_BGRToYCbCr_JPEG(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(3 * w, h), y(w, h), u(w, h), v(w, h);
  Ipp8u* d[3] = {y.p(), u.p(), v.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::BGRToYCbCr_JPEG(k, a.p(), a.step, d, y.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_BGRToYCbCr_JPEG);

void BM_SampleDownH2V2(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(w, h), d(w / 2, h / 2);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::SampleDown(k, true, a.p(), a.step, {w, h}, d.p(), d.step, {w / 2, h / 2});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_SampleDownH2V2);

void BM_SampleDownH2V1(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(w, h), d(w / 2, h);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::SampleDown(k, false, a.p(), a.step, {w, h}, d.p(), d.step, {w / 2, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_SampleDownH2V1);

void BM_YCbCr422Split(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(2 * w, h), y(w, h), u(w / 2, h), v(w / 2, h);
  Ipp8u* d[3] = {y.p(), u.p(), v.p()};
  int st[3] = {y.step, u.step, v.step};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCr422Split(k, a.p(), a.step, d, st, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCr422Split);

void BM_YCbCr422Join(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane y(w, h), u(w / 2, h), v(w / 2, h), d(2 * w, h);
  const Ipp8u* src[3] = {y.p(), u.p(), v.p()};
  int st[3] = {y.step, u.step, v.step};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::YCbCr422Join(k, src, st, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_YCbCr422Join);

// ---------------------------------------------------------------- mirror, copies, fills
template <int C, int Axis, bool InPlace>
void BM_Mirror(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(C * w, h), d(C * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s) {
    if (InPlace)
      forms::MirrorInPlace(k, C, a.p(), a.step, {w, h}, static_cast<IppiAxis>(Axis));
    else
      forms::Mirror(k, C, a.p(), a.step, d.p(), d.step, {w, h}, static_cast<IppiAxis>(Axis));
  }
  Done(s, int64_t{w} * h);
}
ORV_SIZES((BM_Mirror<1, 0, true>));
ORV_SIZES((BM_Mirror<1, 1, false>));
ORV_SIZES((BM_Mirror<3, 0, true>));
ORV_SIZES((BM_Mirror<3, 1, false>));
ORV_SIZES((BM_Mirror<4, 0, true>));
ORV_SIZES((BM_Mirror<4, 1, false>));

void BM_Copy_C3AC4R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(3 * w, h), d(4 * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Copy_C3AC4R(k, a.p(), a.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Copy_C3AC4R);

void BM_Copy_AC4C3R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(4 * w, h), d(3 * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Copy_AC4C3R(k, a.p(), a.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Copy_AC4C3R);

void BM_Copy_C3P3R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(3 * w, h), p0(w, h), p1(w, h), p2(w, h);
  Ipp8u* d[3] = {p0.p(), p1.p(), p2.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Copy_C3P3R(k, a.p(), a.step, d, p0.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Copy_C3P3R);

void BM_Copy_C4P4R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(4 * w, h), p0(w, h), p1(w, h), p2(w, h), p3(w, h);
  Ipp8u* d[4] = {p0.p(), p1.p(), p2.p(), p3.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Copy_C4P4R(k, a.p(), a.step, d, p0.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Copy_C4P4R);

void BM_Copy_P4C4R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane p0(w, h), p1(w, h), p2(w, h), p3(w, h), d(4 * w, h);
  const Ipp8u* src[4] = {p0.p(), p1.p(), p2.p(), p3.p()};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Copy_P4C4R(k, src, p0.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Copy_P4C4R);

void BM_Copy_C4C1R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(4 * w, h), d(w, h);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Copy_C4C1R(k, a.p() + 3, a.step, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Copy_C4C1R);

void BM_Set_C4R(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane d(4 * w, h);
  const Ipp8u v[4] = {127, 127, 16, 255};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Set_C4R(k, v, d.p(), d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Set_C4R);

void BM_Set_C4CR(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane d(4 * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s) forms::Set_C4CR(k, 255, d.p() + 3, d.step, {w, h});
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_Set_C4CR);

void BM_SwapChannels_C3IR(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane d(3 * w, h);
  const int order[3] = {2, 1, 0};
  const Kernels& k = Level(s);
  for (auto _ : s) forms::SwapChannels_C3R(k, d.p(), d.step, d.p(), d.step, {w, h}, order);
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_SwapChannels_C3IR);

template <int C>
void BM_AlphaCompC_Plus(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(C * w, h), b(C * w, h), d(C * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s)
    forms::AlphaCompC(k, C, a.p(), a.step, 128, b.p(), b.step, 128, d.p(), d.step, {w, h},
                      ippAlphaPlus);
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_AlphaCompC_Plus<1>);
ORV_SIZES(BM_AlphaCompC_Plus<3>);
ORV_SIZES(BM_AlphaCompC_Plus<4>);

void BM_AlphaComp_AC4R_Over(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(4 * w, h), b(4 * w, h), d(4 * w, h);
  const Kernels& k = Level(s);
  for (auto _ : s)
    forms::AlphaComp_AC4R(k, a.p(), a.step, b.p(), b.step, d.p(), d.step, {w, h}, ippAlphaOver);
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_AlphaComp_AC4R_Over);

// ---------------------------------------------------------------- resize
// range(0), range(1): source size; the destination is the other standard size.
template <int C, int Interp>
void BM_Resize(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  const int dw = w == 1920 ? 720 : 1920, dh = w == 1920 ? 480 : 1080;
  Plane a(C * w, h), d(C * dw, dh);
  const Kernels& k = Level(s);
  for (auto _ : s)
    forms::Resize(k, C, false, a.p(), {w, h}, a.step, {0, 0, w, h}, d.p(), d.step, {dw, dh},
                  (dw + 0.01) / w, (dh + 0.01) / h, 0, 0, Interp);
  Done(s, int64_t{dw} * dh);
}
ORV_RESIZE_SIZES((BM_Resize<1, IPPI_INTER_NN>));
ORV_RESIZE_SIZES((BM_Resize<1, IPPI_INTER_LINEAR>));
ORV_RESIZE_SIZES((BM_Resize<1, IPPI_INTER_CUBIC>));
ORV_RESIZE_SIZES((BM_Resize<1, IPPI_INTER_SUPER>));
ORV_RESIZE_SIZES((BM_Resize<3, IPPI_INTER_NN>));
ORV_RESIZE_SIZES((BM_Resize<3, IPPI_INTER_LINEAR>));
ORV_RESIZE_SIZES((BM_Resize<3, IPPI_INTER_CUBIC>));
ORV_RESIZE_SIZES((BM_Resize<3, IPPI_INTER_SUPER>));
ORV_RESIZE_SIZES((BM_Resize<4, IPPI_INTER_NN>));
ORV_RESIZE_SIZES((BM_Resize<4, IPPI_INTER_LINEAR>));
ORV_RESIZE_SIZES((BM_Resize<4, IPPI_INTER_CUBIC>));
ORV_RESIZE_SIZES((BM_Resize<4, IPPI_INTER_SUPER>));

// The picture engine's chroma expansion: nearest neighbour doubling about the centre.
void BM_ResizeCenter_ChromaDoubling(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane a(w / 2, h / 2), d(w, h);
  const Kernels& k = Level(s);
  for (auto _ : s)
    forms::Resize(k, 1, true, a.p(), {w / 2, h / 2}, a.step, {0, 0, w / 2, h / 2}, d.p(), d.step,
                  {w, h}, 2.0, 2.0, (w / 2 + 1) / 2, (h / 2 + 1) / 2, IPPI_INTER_NN);
  Done(s, int64_t{w} * h);
}
ORV_SIZES(BM_ResizeCenter_ChromaDoubling);

// ---------------------------------------------------------------- peers
#if defined(ORV_HAVE_LIBYUV)
#define ORV_PEER(name, setup, call)                                               \
  void name(benchmark::State& s) {                                                \
    const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1)); \
    setup;                                                                        \
    for (auto _ : s) call;                                                        \
    Done(s, int64_t{w} * h);                                                      \
  }                                                                               \
  ORV_PEER_SIZES(name);

ORV_PEER(BM_Peer_libyuv_I420ToRGB24, Plane y(w, h); Plane u(w / 2, h / 2); Plane v(w / 2, h / 2);
         Plane d(3 * w, h),
         libyuv::I420ToRGB24(y.p(), y.step, u.p(), u.step, v.p(), v.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_I420ToARGB, Plane y(w, h); Plane u(w / 2, h / 2); Plane v(w / 2, h / 2);
         Plane d(4 * w, h),
         libyuv::I420ToARGB(y.p(), y.step, u.p(), u.step, v.p(), v.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_YUY2ToARGB, Plane a(2 * w, h);
         Plane d(4 * w, h), libyuv::YUY2ToARGB(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_RGB24ToI420, Plane a(3 * w, h); Plane y(w, h); Plane u(w / 2, h / 2);
         Plane v(w / 2, h / 2),
         libyuv::RGB24ToI420(a.p(), a.step, y.p(), y.step, u.p(), u.step, v.p(), v.step, w, h))
ORV_PEER(BM_Peer_libyuv_RGB24ToJ420, Plane a(3 * w, h); Plane y(w, h); Plane u(w / 2, h / 2);
         Plane v(w / 2, h / 2),
         libyuv::RGB24ToJ420(a.p(), a.step, y.p(), y.step, u.p(), u.step, v.p(), v.step, w, h))
ORV_PEER(BM_Peer_libyuv_ARGBToYUY2, Plane a(4 * w, h);
         Plane d(2 * w, h), libyuv::ARGBToYUY2(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_I444ToRGB24, Plane y(w, h); Plane u(w, h); Plane v(w, h);
         Plane d(3 * w, h),
         libyuv::I444ToRGB24(y.p(), y.step, u.p(), u.step, v.p(), v.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_YUY2ToI420, Plane a(2 * w, h); Plane y(w, h); Plane u(w / 2, h / 2);
         Plane v(w / 2, h / 2),
         libyuv::YUY2ToI420(a.p(), a.step, y.p(), y.step, u.p(), u.step, v.p(), v.step, w, h))
ORV_PEER(BM_Peer_libyuv_YUY2ToI422, Plane a(2 * w, h); Plane y(w, h); Plane u(w / 2, h);
         Plane v(w / 2, h),
         libyuv::YUY2ToI422(a.p(), a.step, y.p(), y.step, u.p(), u.step, v.p(), v.step, w, h))
ORV_PEER(BM_Peer_libyuv_I422ToYUY2, Plane y(w, h); Plane u(w / 2, h); Plane v(w / 2, h);
         Plane d(2 * w, h),
         libyuv::I422ToYUY2(y.p(), y.step, u.p(), u.step, v.p(), v.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_ScalePlaneBox2x2, Plane a(w, h);
         Plane d(w / 2, h / 2),
         libyuv::ScalePlane(a.p(), a.step, w, h, d.p(), d.step, w / 2, h / 2, libyuv::kFilterBox))
ORV_PEER(BM_Peer_libyuv_I420Mirror, Plane y(w, h); Plane u(w / 2, h / 2); Plane v(w / 2, h / 2);
         Plane y2(w, h); Plane u2(w / 2, h / 2);
         Plane v2(w / 2, h / 2),
         libyuv::I420Mirror(y.p(), y.step, u.p(), u.step, v.p(), v.step, y2.p(), y2.step, u2.p(),
                            u2.step, v2.p(), v2.step, w, h))
ORV_PEER(BM_Peer_libyuv_MirrorPlane, Plane a(w, h);
         Plane d(w, h), libyuv::MirrorPlane(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_RGB24Mirror, Plane a(3 * w, h);
         Plane d(3 * w, h), libyuv::RGB24Mirror(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_ARGBMirror, Plane a(4 * w, h);
         Plane d(4 * w, h), libyuv::ARGBMirror(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_RGB24ToARGB, Plane a(3 * w, h);
         Plane d(4 * w, h), libyuv::RGB24ToARGB(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_RGB24ToRAW, Plane a(3 * w, h);
         Plane d(3 * w, h), libyuv::RGB24ToRAW(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_ARGBToRGB24, Plane a(4 * w, h);
         Plane d(3 * w, h), libyuv::ARGBToRGB24(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_SplitRGBPlane, Plane a(3 * w, h); Plane r(w, h); Plane g(w, h);
         Plane b(w, h),
         libyuv::SplitRGBPlane(a.p(), a.step, r.p(), r.step, g.p(), g.step, b.p(), b.step, w, h))
ORV_PEER(BM_Peer_libyuv_SplitARGBPlane, Plane a(4 * w, h); Plane r(w, h); Plane g(w, h);
         Plane b(w, h);
         Plane x(w, h), libyuv::SplitARGBPlane(a.p(), a.step, r.p(), r.step, g.p(), g.step, b.p(),
                                               b.step, x.p(), x.step, w, h))
ORV_PEER(BM_Peer_libyuv_MergeARGBPlane, Plane r(w, h); Plane g(w, h); Plane b(w, h); Plane x(w, h);
         Plane d(4 * w, h), libyuv::MergeARGBPlane(r.p(), r.step, g.p(), g.step, b.p(), b.step,
                                                   x.p(), x.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_ARGBExtractAlpha, Plane a(4 * w, h);
         Plane d(w, h), libyuv::ARGBExtractAlpha(a.p(), a.step, d.p(), d.step, w, h))
ORV_PEER(BM_Peer_libyuv_ARGBRect, Plane d(4 * w, h),
         libyuv::ARGBRect(d.p(), d.step, 0, 0, w, h, 0xFF107F7Fu))
ORV_PEER(BM_Peer_libyuv_InterpolatePlane, Plane a(w, h); Plane b(w, h);
         Plane d(w, h),
         libyuv::InterpolatePlane(a.p(), a.step, b.p(), b.step, d.p(), d.step, w, h, 128))
ORV_PEER(BM_Peer_libyuv_ARGBInterpolate, Plane a(4 * w, h); Plane b(4 * w, h);
         Plane d(4 * w, h),
         libyuv::ARGBInterpolate(a.p(), a.step, b.p(), b.step, d.p(), d.step, w, h, 128))
ORV_PEER(BM_Peer_libyuv_ARGBBlend, Plane a(4 * w, h); Plane b(4 * w, h);
         Plane d(4 * w, h), libyuv::ARGBBlend(a.p(), a.step, b.p(), b.step, d.p(), d.step, w, h))

template <int C, libyuv::FilterMode F>
void BM_Peer_libyuv_Scale(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  const int dw = w == 1920 ? 720 : 1920, dh = w == 1920 ? 480 : 1080;
  Plane a(C * w, h), d(C * dw, dh);
  for (auto _ : s) {
    if (C == 1)
      libyuv::ScalePlane(a.p(), a.step, w, h, d.p(), d.step, dw, dh, F);
    else
      libyuv::ARGBScale(a.p(), a.step, w, h, d.p(), d.step, dw, dh, F);
  }
  Done(s, int64_t{dw} * dh);
}
ORV_PEER_SIZES((BM_Peer_libyuv_Scale<1, libyuv::kFilterNone>));
ORV_PEER_SIZES((BM_Peer_libyuv_Scale<1, libyuv::kFilterBilinear>));
ORV_PEER_SIZES((BM_Peer_libyuv_Scale<1, libyuv::kFilterBox>));
ORV_PEER_SIZES((BM_Peer_libyuv_Scale<4, libyuv::kFilterNone>));
ORV_PEER_SIZES((BM_Peer_libyuv_Scale<4, libyuv::kFilterBilinear>));
ORV_PEER_SIZES((BM_Peer_libyuv_Scale<4, libyuv::kFilterBox>));

void BM_Peer_libyuv_I420Scale(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  const int dw = w == 1920 ? 720 : 1920, dh = w == 1920 ? 480 : 1080;
  Plane y(w, h), u(w / 2, h / 2), v(w / 2, h / 2), y2(dw, dh), u2(dw / 2, dh / 2),
      v2(dw / 2, dh / 2);
  for (auto _ : s)
    libyuv::I420Scale(y.p(), y.step, u.p(), u.step, v.p(), v.step, w, h, y2.p(), y2.step, u2.p(),
                      u2.step, v2.p(), v2.step, dw, dh, libyuv::kFilterBox);
  Done(s, int64_t{dw} * dh);
}
ORV_PEER_SIZES(BM_Peer_libyuv_I420Scale);
#endif  // ORV_HAVE_LIBYUV

#if defined(ORV_HAVE_SWSCALE)
// swscale: yuv420p to bgr24, and gray8 / BGR24 / BGRA scaling with its point,
// bilinear, bicubic and area filters (single thread).
void BM_Peer_swscale_Yuv420pToBgr24(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  Plane y(w, h), u(w / 2, h / 2), v(w / 2, h / 2), d(3 * w, h);
  SwsContext* c = sws_getContext(w, h, AV_PIX_FMT_YUV420P, w, h, AV_PIX_FMT_BGR24, SWS_POINT,
                                 nullptr, nullptr, nullptr);
  const uint8_t* src[3] = {y.p(), u.p(), v.p()};
  const int st[3] = {y.step, u.step, v.step};
  uint8_t* dst[1] = {d.p()};
  const int dst_st[1] = {d.step};
  for (auto _ : s) sws_scale(c, src, st, 0, h, dst, dst_st);
  sws_freeContext(c);
  Done(s, int64_t{w} * h);
}
ORV_PEER_SIZES(BM_Peer_swscale_Yuv420pToBgr24);

// One-plane scaling in format f with C bytes a pixel: gray8 (C 1) for the
// C1 resizes, BGR24 and BGRA for the C3 and C4 resizes.
template <int C, int Flags>
void BM_Peer_swscale_Scale(benchmark::State& s) {
  const int w = static_cast<int>(s.range(0)), h = static_cast<int>(s.range(1));
  const int dw = w == 1920 ? 720 : 1920, dh = w == 1920 ? 480 : 1080;
  const AVPixelFormat f = C == 1 ? AV_PIX_FMT_GRAY8 : (C == 3 ? AV_PIX_FMT_BGR24 : AV_PIX_FMT_BGRA);
  Plane a(C * w, h), d(C * dw, dh);
  SwsContext* c = sws_getContext(w, h, f, dw, dh, f, Flags, nullptr, nullptr, nullptr);
  const uint8_t* src[1] = {a.p()};
  const int st[1] = {a.step};
  uint8_t* dst[1] = {d.p()};
  const int dst_st[1] = {d.step};
  for (auto _ : s) sws_scale(c, src, st, 0, h, dst, dst_st);
  sws_freeContext(c);
  Done(s, int64_t{dw} * dh);
}
ORV_PEER_SIZES((BM_Peer_swscale_Scale<1, SWS_POINT>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<1, SWS_BILINEAR>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<1, SWS_BICUBIC>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<1, SWS_AREA>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<3, SWS_POINT>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<3, SWS_BILINEAR>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<3, SWS_BICUBIC>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<3, SWS_AREA>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<4, SWS_POINT>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<4, SWS_BILINEAR>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<4, SWS_BICUBIC>));
ORV_PEER_SIZES((BM_Peer_swscale_Scale<4, SWS_AREA>));
#endif  // ORV_HAVE_SWSCALE

}  // namespace

BENCHMARK_MAIN();
