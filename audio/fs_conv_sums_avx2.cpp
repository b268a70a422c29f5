// The kernel's inner sums with AVX2: the eight summation lanes in two
// registers of four doubles per channel (lanes 0-3 and 4-7), both filter
// halves in the same loop, all channels sharing each load of the taps.
#include <immintrin.h>

#include "audio/fs_conv.h"

namespace orv {
namespace {

inline double ReduceLanes(__m256d lo, __m256d hi) {
  const __m256d a = _mm256_add_pd(lo, hi);  // l0+l4, l1+l5, l2+l6, l3+l7
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
    __m256d lo[kChannels], hi[kChannels];
    for (int c = 0; c < kChannels; ++c) lo[c] = hi[c] = _mm256_setzero_pd();
    for (int i = 0; i < hp; i += 8) {
      const __m256d wl0 = _mm256_loadu_pd(tl + i);
      const __m256d wl1 = _mm256_loadu_pd(tl + i + 4);
      const __m256d wr0 = _mm256_loadu_pd(tr + i);
      const __m256d wr1 = _mm256_loadu_pd(tr + i + 4);
      for (int c = 0; c < kChannels; ++c) {
        const double* pl = x[c] + left + i;
        const double* pr = x[c] + right + i;
        lo[c] = _mm256_fmadd_pd(_mm256_loadu_pd(pl), wl0, lo[c]);
        hi[c] = _mm256_fmadd_pd(_mm256_loadu_pd(pl + 4), wl1, hi[c]);
        lo[c] = _mm256_fmadd_pd(_mm256_loadu_pd(pr), wr0, lo[c]);
        hi[c] = _mm256_fmadd_pd(_mm256_loadu_pd(pr + 4), wr1, hi[c]);
      }
    }
    for (int c = 0; c < kChannels; ++c) {
      const float centre = phase == 0 ? static_cast<float>(x[c][index - H] * job.centre) : 0.0f;
      out[c][made] = static_cast<float>(ReduceLanes(lo[c], hi[c]) + centre);
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

int FsConvRunSumsAvx2(const FsSumJob& job, int64_t* position) {
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
