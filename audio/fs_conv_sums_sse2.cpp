// The kernel's inner sums with SSE2: the eight summation lanes in four
// registers of two doubles per channel (lanes 0-1, 2-3, 4-5, 6-7), both filter
// halves in the same loop. Without a fused multiply-add the product is formed
// first; it is exact in double, so the sum is the same.
#include <emmintrin.h>

#include "audio/fs_conv.h"

namespace orv {
namespace {

template <int kChannels>
int Run(const FsSumJob& job, int64_t* position) {
  const int L = job.l, H = job.h, hp = job.hp;
  const int mQuot = job.m / L, mRem = job.m % L;
  int64_t index = *position / L;
  int phase = static_cast<int>(*position % L);
  int made = 0;
  while (index < job.end) {
    const double* tl = job.pairs + static_cast<size_t>(phase) * 2 * hp;
    const double* tr = tl + hp;
    const int64_t left = phase != 0 ? index - 2 * H + 1 : index - 2 * H;
    const int64_t right = index - H + 1;
    __m128d r[kChannels][4];
    for (int c = 0; c < kChannels; ++c) {
      for (int q = 0; q < 4; ++q) r[c][q] = _mm_setzero_pd();
    }
    for (int i = 0; i < hp; i += 8) {
      __m128d wl[4], wr[4];
      for (int q = 0; q < 4; ++q) {
        wl[q] = _mm_loadu_pd(tl + i + 2 * q);
        wr[q] = _mm_loadu_pd(tr + i + 2 * q);
      }
      for (int c = 0; c < kChannels; ++c) {
        const double* pl = job.channel[c] + left + i;
        const double* pr = job.channel[c] + right + i;
        for (int q = 0; q < 4; ++q) {
          r[c][q] = _mm_add_pd(r[c][q], _mm_mul_pd(_mm_loadu_pd(pl + 2 * q), wl[q]));
          r[c][q] = _mm_add_pd(r[c][q], _mm_mul_pd(_mm_loadu_pd(pr + 2 * q), wr[q]));
        }
      }
    }
    for (int c = 0; c < kChannels; ++c) {
      const __m128d a = _mm_add_pd(r[c][0], r[c][2]);  // l0+l4, l1+l5
      const __m128d b = _mm_add_pd(r[c][1], r[c][3]);  // l2+l6, l3+l7
      const __m128d s = _mm_add_pd(a, b);
      const double sum = _mm_cvtsd_f64(_mm_add_sd(s, _mm_unpackhi_pd(s, s)));
      const double* x = job.channel[c];
      const float centre = phase == 0 ? static_cast<float>(x[index - H] * job.centre) : 0.0f;
      job.out[c][made] = static_cast<float>(sum + centre);
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

int FsConvRunSumsSse2(const FsSumJob& job, int64_t* position) {
  switch (job.channels) {
    case 1:
      return Run<1>(job, position);
    case 2:
      return Run<2>(job, position);
    case 3:
      return Run<3>(job, position);
    case 4:
      return Run<4>(job, position);
    default: {
      // Wider layouts in groups of up to four channels; each channel's sum is
      // independent of the others, so the grouping changes no bit.
      int made = 0;
      const int64_t start = *position;
      for (int first = 0; first < job.channels; first += 4) {
        FsSumJob part = job;
        part.channel = job.channel + first;
        part.out = job.out + first;
        part.channels = job.channels - first < 4 ? job.channels - first : 4;
        int64_t pos = start;
        switch (part.channels) {
          case 1:
            made = Run<1>(part, &pos);
            break;
          case 2:
            made = Run<2>(part, &pos);
            break;
          case 3:
            made = Run<3>(part, &pos);
            break;
          default:
            made = Run<4>(part, &pos);
            break;
        }
        *position = pos;
      }
      return made;
    }
  }
}

}  // namespace orv
