// The kernel's inner sums with AVX-512: the eight summation lanes in one
// register of eight doubles per channel, both filter halves in the same loop,
// all channels sharing each load of the taps.
// GCC 12 warns about the undefined upper half inside its own conversion
// intrinsics; the warning is about the compiler's header, not this code.
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>

#include "audio/fs_conv.h"

namespace orv {
namespace {

inline double ReduceLanes(__m512d acc) {
  const __m256d a = _mm256_add_pd(_mm512_castpd512_pd256(acc), _mm512_extractf64x4_pd(acc, 1));
  const __m128d b = _mm_add_pd(_mm256_castpd256_pd128(a), _mm256_extractf128_pd(a, 1));
  return _mm_cvtsd_f64(_mm_add_sd(b, _mm_unpackhi_pd(b, b)));
}

template <int kChannels>
int Run(const FsSumJob& job, int64_t* position) {
  const int L = job.l, H = job.h, hp = job.hp;
  const int mQuot = job.m / L, mRem = job.m % L;
  int64_t index = *position / L;
  int phase = static_cast<int>(*position % L);
  const double* x[kChannels];
  float* out[kChannels];
  for (int c = 0; c < kChannels; ++c) {
    x[c] = job.channel[c];
    out[c] = job.out[c];
  }
  int made = 0;
  while (index < job.end) {
    const double* tl = job.pairs + static_cast<size_t>(phase) * 2 * hp;
    const double* tr = tl + hp;
    const int64_t left = phase != 0 ? index - 2 * H + 1 : index - 2 * H;
    const int64_t right = index - H + 1;
    __m512d acc[kChannels];
    for (int c = 0; c < kChannels; ++c) acc[c] = _mm512_setzero_pd();
    for (int i = 0; i < hp; i += 8) {
      const __m512d wl = _mm512_loadu_pd(tl + i);
      const __m512d wr = _mm512_loadu_pd(tr + i);
      for (int c = 0; c < kChannels; ++c) {
        acc[c] = _mm512_fmadd_pd(_mm512_loadu_pd(x[c] + left + i), wl, acc[c]);
        acc[c] = _mm512_fmadd_pd(_mm512_loadu_pd(x[c] + right + i), wr, acc[c]);
      }
    }
    for (int c = 0; c < kChannels; ++c) {
      const float centre = phase == 0 ? static_cast<float>(x[c][index - H] * job.centre) : 0.0f;
      out[c][made] = static_cast<float>(ReduceLanes(acc[c]) + centre);
    }
    ++made;
    index += mQuot;
    phase += mRem;
    if (phase >= L) {
      phase -= L;
      ++index;
    }
  }
  *position = index * L + phase;
  return made;
}

}  // namespace

int FsConvRunSumsAvx512(const FsSumJob& job, int64_t* position) {
  switch (job.channels) {
    case 1:
      return Run<1>(job, position);
    case 2:
      return Run<2>(job, position);
    case 3:
      return Run<3>(job, position);
    case 4:
      return Run<4>(job, position);
    case 5:
      return Run<5>(job, position);
    case 6:
      return Run<6>(job, position);
    case 7:
      return Run<7>(job, position);
    default:
      return Run<8>(job, position);
  }
}

}  // namespace orv
