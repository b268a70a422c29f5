// Sample-rate conversion: a polyphase Kaiser-windowed sinc filter.
//
// FsConvKernel holds the phase tables and the per-channel history and
// computes; FsConvEngine de-interleaves blocks of at most `block` frames into
// the kernel and interleaves its output.
//
// Geometry. With the rates reduced by their common factor (primes 2, 3, 5, 7),
// L = output rate and M = input rate; an output frame sits at a position
// counted in 1/L input frames. Each phase p of the L phases has H taps for the
// left half of the symmetric filter (table p) and H for the right half (table
// L - p); a whole-sample phase adds the centre tap by itself. The first output
// frame sits on the first input frame; the output runs H input frames behind
// the input, and the flush delivers those H frames, so N input frames give
// ceil(N * L / M) output frames in total.
//
// Summation order. The inner sum of one output sample is defined in double
// (history and taps are held widened to double, which is exact),
// in eight lanes: tap i (0 <= i < Hp, Hp = H rounded up to a multiple of 8,
// the taps beyond H being zero) goes to lane i mod 8, which adds the left
// term of tap i and then its right term. The lanes are then combined as
// ((l0 + l4) + (l2 + l6)) + ((l1 + l5) + (l3 + l7)), and the centre term
// (a float) is added last. Every processor form adds in exactly this order:
// AVX-512 keeps the eight lanes in one register, AVX2 in two, SSE2 in four,
// and the plain form in an array. A product of two floats is exact in double,
// so a fused multiply-add gives the same bits as a multiply and an add; the
// forms therefore agree to the last bit.
#ifndef ORV_AUDIO_FS_CONV_H_
#define ORV_AUDIO_FS_CONV_H_

#include <cstdint>

#include "foundation/cpu_info.h"

namespace orv {

constexpr int kFsConvMaxChannels = 8;
constexpr int kFsConvDefaultBlock = 4096;
constexpr int kFsSumLanes = 8;

// One run of the kernel's inner loop: the output frames of positions below
// `end * L`, starting at `position`.
struct FsSumJob {
  const double* const* channel;  // per channel: its history buffer (index 0 = oldest)
  float* const* out;             // per channel: where output frames go
  int channels;
  const double* pairs;  // per phase p: Hp left taps (table p), then Hp right taps reversed
  int hp;               // padded half length, a multiple of 8
  int h;                // half length H
  int l;                // phases
  int m;                // decimation step
  float centre;         // centre coefficient
  int64_t end;          // 2H + new frames
};

// Runs the loop from `*position` and leaves the position of the first frame it
// did not make; returns the frames made. `level` picks the processor form
// (a level this build or processor lacks falls back to the best one below).
int FsConvRunSums(const FsSumJob& job, int64_t* position, SimdLevel level);
int FsConvRunSumsPlain(const FsSumJob& job, int64_t* position);
#if ORV_X86_SIMD
int FsConvRunSumsSse2(const FsSumJob& job, int64_t* position);
int FsConvRunSumsAvx2(const FsSumJob& job, int64_t* position);
int FsConvRunSumsAvx512(const FsSumJob& job, int64_t* position);
#endif

class FsConvKernel {
 public:
  // Null when the rates (0, or a table above the size limit) or memory refuse it.
  static FsConvKernel* Create(int inRate, int outRate, int channels, int block, float attenuation,
                              int cutoff, SimdLevel level);
  ~FsConvKernel();
  FsConvKernel(const FsConvKernel&) = delete;
  FsConvKernel& operator=(const FsConvKernel&) = delete;

  // Converts `frames` new input frames already written at InputPointer(c).
  int Process(int frames, float* const* out);
  // Feeds H zero frames, delivers the delayed tail and resets for a new stream.
  int Flush(float* const* out);

  // Where channel `channel`'s new frames go. The history is kept in double:
  // each float sample widened once as it enters, so that the inner sums load
  // ready operands (the widening is exact, the sums are the same).
  double* InputPointer(int channel) const { return input_[channel]; }
  int HalfLength() const { return h_; }
  int Phases() const { return l_; }
  int Step() const { return m_; }
  int Cutoff() const { return cutoff_; }
  float Attenuation() const { return attenuation_; }
  float CentreCoefficient() const { return centre_; }
  // Table p (0 <= p <= L; entry L is table 0), H floats.
  const float* Table(int phase) const { return tables_[phase]; }
  int64_t PhasePosition() const { return position_; }
  int BlockSize() const { return block_; }

 private:
  FsConvKernel() = default;
  bool Build(int inRate, int outRate, int channels, int block, float attenuation, int cutoff);

  int inRate_ = 0, outRate_ = 0, channels_ = 0, cutoff_ = 0;
  int h_ = 0, hp_ = 0, l_ = 0, m_ = 0;
  int64_t position_ = 0;
  int historyLength_ = 0, block_ = 0, bufferLength_ = 0;
  float centre_ = 0.0f, gain_ = 1.0f, secondGain_ = 1.0f, attenuation_ = 0.0f;
  SimdLevel level_ = SimdLevel::kPlain;
  float* tableStore_ = nullptr;  // L * H floats
  float** tables_ = nullptr;     // L + 1 pointers
  double* pairs_ = nullptr;      // L * 2 * Hp taps widened to double, the summation layout
  double* bufferStore_ = nullptr;
  double* channel_[kFsConvMaxChannels] = {};
  double* input_[kFsConvMaxChannels] = {};
};

class FsConvEngine {
 public:
  FsConvEngine();
  virtual ~FsConvEngine();
  FsConvEngine(const FsConvEngine&) = delete;
  FsConvEngine& operator=(const FsConvEngine&) = delete;

  // The most frames of one Process (the block, 4096 for 0), or -1. Buffers are
  // sized for the larger of the block and the filter's half length, so that
  // the flush's H zero frames always fit. Sample sizes other than 16 and 24
  // bits leave the cutoff at half the lower rate, where no transition band is
  // left: such a set-up is refused (-1), as are rates of 0, channel counts
  // outside 1 to 8 and rate pairs whose tables would pass 2^23 taps.
  int Configure(int inRate, int outRate, unsigned bits, int channels, unsigned quality, int block,
                SimdLevel level = DetectSimdLevel());
  int GetMaxOutputFrames() const { return outputCapacity_; }
  // `in` holds `frames` interleaved frames (at most the block), `out` room for
  // GetMaxOutputFrames() frames. Returns the frames written.
  int Process(int frames, const float* in, float* out);
  int Flush(float* out);

  const FsConvKernel* Kernel() const { return kernel_; }
  // Input rate, output rate, channels, cutoff, taps (2H + 1), and the
  // attenuation in dB as the bits of a 32-bit float.
  const int32_t* FilterInformation() const { return filterInfo_; }

 private:
  void Free();
  int Interleave(int frames, float* out);

  int inRate_ = 48000, outRate_ = 44100, bits_ = 16, channels_ = 0, quality_ = 0;
  int sampleBytes_ = 2, cutoff_ = 21000;
  float attenuation_ = 0.0f;
  FsConvKernel* kernel_ = nullptr;
  float* output_[kFsConvMaxChannels] = {};
  int outputCapacity_ = 0;
  int configured_ = 0;
  int configuredChannels_ = 0;
  int block_ = 0;
  int32_t filterInfo_[6] = {};
};

}  // namespace orv

#endif  // ORV_AUDIO_FS_CONV_H_
