#include "audio/fs_conv.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace orv {
namespace {

constexpr double kPi = 3.14159265359;
// Largest phase table set the kernel builds: L * Hp floats. Rate pairs whose
// reduced ratio needs more (rates with large common primes above 7) are refused.
constexpr int64_t kMaxTableFloats = int64_t{1} << 23;
// Largest half length (and so history) the kernel accepts.
constexpr int64_t kMaxHalfLength = int64_t{1} << 20;
// Floats past the end of each channel buffer: the padded taps read up to 7
// frames beyond the newest input, always against a zero coefficient.
constexpr int kGuardFloats = 16;

// Modified Bessel function of the first kind, order 0: 1 + sum of t(k)^2 for
// k = 1..29, t(k) = t(k-1) * (x / 2) / k. The argument is single precision.
double BesselI0(float xf) {
  const double half = static_cast<double>(xf) / 2.0;
  double t = 1.0;
  double sum = 1.0;
  for (int k = 1; k <= 29; ++k) {
    t = t * half / k;
    sum += t * t;
  }
  return sum;
}

}  // namespace

int FsConvRunSumsPlain(const FsSumJob& job, int64_t* position) {
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
    for (int c = 0; c < job.channels; ++c) {
      const double* x = job.channel[c];
      double lane[kFsSumLanes] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
      for (int i = 0; i < hp; ++i) {
        double& acc = lane[i & (kFsSumLanes - 1)];
        acc += x[left + i] * tl[i];
        acc += x[right + i] * tr[i];
      }
      const double sum =
          ((lane[0] + lane[4]) + (lane[2] + lane[6])) + ((lane[1] + lane[5]) + (lane[3] + lane[7]));
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

int FsConvRunSums(const FsSumJob& job, int64_t* position, SimdLevel level) {
#if ORV_X86_SIMD
  const SimdLevel best = DetectSimdLevel();
  if (level > best) level = best;
  if (level >= SimdLevel::kAvx512) return FsConvRunSumsAvx512(job, position);
  if (level >= SimdLevel::kAvx2) return FsConvRunSumsAvx2(job, position);
  if (level >= SimdLevel::kSse2) return FsConvRunSumsSse2(job, position);
#else
  (void)level;
#endif
  return FsConvRunSumsPlain(job, position);
}

// ---------------------------------------------------------------------------

FsConvKernel* FsConvKernel::Create(int inRate, int outRate, int channels, int block,
                                   float attenuation, int cutoff, SimdLevel level) {
  FsConvKernel* kernel = new (std::nothrow) FsConvKernel();
  if (kernel == nullptr) return nullptr;
  kernel->level_ = level;
  if (!kernel->Build(inRate, outRate, channels, block, attenuation, cutoff)) {
    delete kernel;
    return nullptr;
  }
  return kernel;
}

FsConvKernel::~FsConvKernel() {
  std::free(tableStore_);
  std::free(tables_);
  std::free(pairs_);
  std::free(bufferStore_);
}

bool FsConvKernel::Build(int inRate, int outRate, int channels, int block, float attenuation,
                         int cutoff) {
  if (inRate <= 0 || outRate <= 0 || channels < 1 || channels > kFsConvMaxChannels || block < 1) {
    return false;
  }
  // 1. Common factor over the primes 2, 3, 5, 7 only.
  int factor = 1;
  int a = inRate, b = outRate;
  for (int prime : {2, 3, 5, 7}) {
    while (a % prime == 0 && b % prime == 0) {
      a /= prime;
      b /= prime;
      factor *= prime;
    }
  }
  inRate_ = inRate;
  outRate_ = outRate;
  channels_ = channels;
  l_ = outRate / factor;
  m_ = inRate / factor;
  // 3. Cutoff below the lower Nyquist frequency.
  const int nyquist = std::min(inRate, outRate) / 2;
  if (cutoff < 1) cutoff = static_cast<int>(std::floor(nyquist * 0.95 + 0.5));
  cutoff_ = cutoff;
  if (nyquist - cutoff <= 0) return false;  // no transition band: no filter length exists
  // 4, 5. Attenuation and filter length.
  if (attenuation <= 0.0f) attenuation = 60.0f;
  attenuation_ = attenuation;
  const double A = attenuation;
  const double D = A <= 21.0 ? 0.9222 : (A - 7.95) * 0.06963788300835655;
  const double estimate =
      std::ceil(D * inRate / (2.0 * static_cast<double>(nyquist - cutoff))) + 1.0;
  if (!(estimate < static_cast<double>(kMaxHalfLength) * 2.0)) return false;
  h_ = static_cast<int>(estimate) / 2;
  if (h_ < 1) return false;
  hp_ = (h_ + kFsSumLanes - 1) / kFsSumLanes * kFsSumLanes;
  if (static_cast<int64_t>(l_) * hp_ > kMaxTableFloats) return false;

  // 6. Tables: entry L aliases entry 0, so table 0 holds the whole-sample taps.
  const int L = l_, H = h_;
  tableStore_ = static_cast<float*>(std::calloc(static_cast<size_t>(L) * H, sizeof(float)));
  tables_ = static_cast<float**>(std::calloc(static_cast<size_t>(L) + 1, sizeof(float*)));
  // 64-byte aligned: each phase's taps start on a cache line (2 * Hp doubles is
  // a multiple of 64 bytes), so no vector load of taps splits across lines.
  const size_t pairBytes = static_cast<size_t>(L) * 2 * hp_ * sizeof(double);
  pairs_ = static_cast<double*>(std::aligned_alloc(64, (pairBytes + 63) / 64 * 64));
  if (pairs_ != nullptr) std::memset(pairs_, 0, pairBytes);
  if (tableStore_ == nullptr || tables_ == nullptr || pairs_ == nullptr) return false;
  for (int p = 0; p < L; ++p) tables_[p] = tableStore_ + static_cast<size_t>(p) * H;
  tables_[L] = tables_[0];

  double beta;
  if (A >= 50.0) {
    beta = 0.1102 * (A - 8.7);
  } else if (A > 21.0) {
    beta = 0.5842 * std::pow(A - 21.0, 0.4) + 0.07886 * (A - 21.0);
  } else {
    beta = 0.0;
  }
  const double i0Beta = BesselI0(static_cast<float>(beta));
  const double span = static_cast<double>(L) * H;
  const double w = 2.0 * cutoff / (static_cast<double>(inRate) * L);
  for (int k = 0; k < H; ++k) {
    for (int p = 1; p <= L; ++p) {
      const int64_t n = static_cast<int64_t>(L) * k + p;
      const double r = static_cast<double>(n) / span;
      const double window = BesselI0(static_cast<float>(beta * std::sqrt(1.0 - r * r))) / i0Beta;
      const double h = std::sin(n * kPi * w) / (n * kPi) * window * L * gain_;
      tables_[p][H - 1 - k] = static_cast<float>(h);
    }
  }
  centre_ = static_cast<float>(w * L * gain_);
  // The summation layout: per phase p, table p, then table L - p reversed, each
  // padded with zeros to Hp, so both halves walk the history forward.
  for (int p = 0; p < L; ++p) {
    double* left = pairs_ + static_cast<size_t>(p) * 2 * hp_;
    double* right = left + hp_;
    const float* tl = tables_[p];
    const float* tr = tables_[L - p];
    for (int i = 0; i < H; ++i) {
      left[i] = tl[i];
      right[i] = tr[H - 1 - i];
    }
  }

  // 7. History and block buffers, sized for the larger of the block and H so
  // that the flush's H zero frames fit whatever the rate pair.
  historyLength_ = 2 * H;
  block_ = block;
  bufferLength_ = historyLength_ + std::max(block, H);
  const size_t perChannel = static_cast<size_t>(bufferLength_) + kGuardFloats;
  bufferStore_ = static_cast<double*>(std::calloc(perChannel * channels, sizeof(double)));
  if (bufferStore_ == nullptr) return false;
  for (int c = 0; c < channels; ++c) {
    channel_[c] = bufferStore_ + perChannel * c;
    input_[c] = channel_[c] + historyLength_;
  }
  position_ = static_cast<int64_t>(3) * L * H;
  return true;
}

int FsConvKernel::Process(int frames, float* const* out) {
  if (frames <= 0 || frames > bufferLength_ - historyLength_) return 0;
  FsSumJob job;
  job.channel = channel_;
  job.out = out;
  job.channels = channels_;
  job.pairs = pairs_;
  job.hp = hp_;
  job.h = h_;
  job.l = l_;
  job.m = m_;
  job.centre = centre_;
  job.end = static_cast<int64_t>(historyLength_) + frames;
  int64_t position = position_;
  const int made = FsConvRunSums(job, &position, level_);
  // Keep the last 2H frames (those ending at the block's end) as history.
  for (int c = 0; c < channels_; ++c) {
    std::memmove(channel_[c], channel_[c] + frames, sizeof(double) * historyLength_);
  }
  position_ = position - static_cast<int64_t>(l_) * frames;
  return made;
}

int FsConvKernel::Flush(float* const* out) {
  for (int c = 0; c < channels_; ++c) std::memset(input_[c], 0, sizeof(double) * h_);
  const int made = Process(h_, out);
  for (int c = 0; c < channels_; ++c) std::memset(channel_[c], 0, sizeof(double) * historyLength_);
  position_ = static_cast<int64_t>(3) * l_ * h_;
  return made;
}

// ---------------------------------------------------------------------------

FsConvEngine::FsConvEngine() = default;

FsConvEngine::~FsConvEngine() { Free(); }

void FsConvEngine::Free() {
  for (float*& p : output_) {
    std::free(p);
    p = nullptr;
  }
  delete kernel_;
  kernel_ = nullptr;
  configured_ = 0;
  configuredChannels_ = 0;
  outputCapacity_ = 0;
}

int FsConvEngine::Configure(int inRate, int outRate, unsigned bits, int channels, unsigned quality,
                            int block, SimdLevel level) {
  Free();
  if (block == 0) block = kFsConvDefaultBlock;
  if (block < 0 || channels < 1 || channels > kFsConvMaxChannels || bits == 0 || bits > 64) {
    return -1;
  }
  inRate_ = inRate;
  outRate_ = outRate;
  bits_ = static_cast<int>(bits);
  channels_ = channels;
  quality_ = static_cast<int>(quality);
  block_ = block;
  cutoff_ = std::min(inRate, outRate) / 2;
  if (bits == 16 || bits == 24) {
    static const float kAtt16[4] = {70.0f, 80.0f, 90.0f, 96.0f};
    static const float kAtt24[4] = {70.0f, 100.0f, 120.0f, 144.0f};
    static const double kCut[4] = {0.96, 0.97, 0.98, 0.99};
    if (quality >= 1 && quality <= 4) {
      attenuation_ = bits == 16 ? kAtt16[quality - 1] : kAtt24[quality - 1];
      cutoff_ = static_cast<int>(kCut[quality - 1] * cutoff_);
    } else {
      cutoff_ = 0;
      attenuation_ = 0.0f;
    }
  }
  sampleBytes_ = static_cast<int>(bits / 8 + (bits % 8 != 0 ? 1 : 0));
  kernel_ = FsConvKernel::Create(inRate, outRate, channels, block, attenuation_, cutoff_, level);
  if (kernel_ == nullptr) return -1;
  const int64_t span = std::max<int64_t>(block, kernel_->HalfLength());
  const int64_t num = static_cast<int64_t>(outRate) * span;
  const int64_t capacity = (num + inRate - 1) / inRate + 1;
  if (capacity > INT_MAX / 4) {
    Free();
    return -1;
  }
  outputCapacity_ = static_cast<int>(capacity);
  configuredChannels_ = channels;
  for (int c = 0; c < channels; ++c) {
    output_[c] = static_cast<float*>(std::malloc(sizeof(float) * outputCapacity_));
    if (output_[c] == nullptr) {
      Free();
      return -1;
    }
  }
  filterInfo_[0] = inRate;
  filterInfo_[1] = outRate;
  filterInfo_[2] = channels;
  filterInfo_[3] = kernel_->Cutoff();
  filterInfo_[4] = 2 * kernel_->HalfLength() + 1;
  float att = kernel_->Attenuation();
  std::memcpy(&filterInfo_[5], &att, sizeof(att));
  configured_ = 1;
  return block;
}

int FsConvEngine::Interleave(int frames, float* out) {
  if (frames <= 0) return frames;
  for (int c = 0; c < channels_; ++c) {
    const float* src = output_[c];
    float* dst = out + c;
    for (int f = 0; f < frames; ++f) dst[static_cast<size_t>(f) * channels_] = src[f];
  }
  return frames;
}

int FsConvEngine::Process(int frames, const float* in, float* out) {
  if (!configured_ || frames <= 0 || frames > block_ || in == nullptr || out == nullptr) return 0;
  for (int c = 0; c < channels_; ++c) {
    double* dst = kernel_->InputPointer(c);
    const float* src = in + c;
    for (int f = 0; f < frames; ++f) dst[f] = src[static_cast<size_t>(f) * channels_];
  }
  const int made = kernel_->Process(frames, output_);
  return Interleave(made, out);
}

int FsConvEngine::Flush(float* out) {
  if (!configured_ || out == nullptr) return 0;
  return Interleave(kernel_->Flush(output_), out);
}

}  // namespace orv
