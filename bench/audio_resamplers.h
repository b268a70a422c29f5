// Whole-stream sample-rate converters for the audio benchmark and the quality
// program: ours (the float engine at each processor level, and the 16-bit
// converter front) and, where found at build time, peer libraries. Each Run
// converts one complete stream, draining the filter at its end, and leaves the
// converter ready for the next stream.
#ifndef ORV_BENCH_AUDIO_RESAMPLERS_H_
#define ORV_BENCH_AUDIO_RESAMPLERS_H_

#include <OrvAudioConverter.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "audio/fs_conv.h"

#if defined(ORV_HAVE_SOXR)
#include <soxr.h>
#endif
#if defined(ORV_HAVE_SAMPLERATE)
#include <samplerate.h>
#endif
#if defined(ORV_HAVE_SPEEXDSP)
#include <speex/speex_resampler.h>
#endif

namespace bench_audio {

class Resampler {
 public:
  virtual ~Resampler() = default;
  virtual std::string Name() const = 0;
  virtual bool Setup(int inRate, int outRate, int channels) = 0;
  // Interleaved float in, interleaved float out (replaces `out`).
  virtual void Run(const float* in, size_t frames, std::vector<float>* out) = 0;

 protected:
  int inRate_ = 0, outRate_ = 0, channels_ = 0;
  void Keep(int inRate, int outRate, int channels) {
    inRate_ = inRate;
    outRate_ = outRate;
    channels_ = channels;
  }
  size_t Expected(size_t frames) const {
    return static_cast<size_t>((static_cast<uint64_t>(frames) * outRate_ + inRate_ - 1) / inRate_);
  }
};

// The float rate engine at one processor level.
class OursEngine : public Resampler {
 public:
  explicit OursEngine(orv::SimdLevel level) : level_(level) {}
  std::string Name() const override {
    static const char* names[] = {"plain", "sse2", "ssse3", "sse41", "avx2", "avx512"};
    return std::string("ours float ") + names[static_cast<int>(level_)];
  }
  bool Setup(int inRate, int outRate, int channels) override {
    Keep(inRate, outRate, channels);
    if (engine_.Configure(inRate, outRate, 16, channels, 0, 4096, level_) < 0) return false;
    buffer_.resize(static_cast<size_t>(engine_.GetMaxOutputFrames()) * channels);
    return true;
  }
  void Run(const float* in, size_t frames, std::vector<float>* out) override {
    out->resize(Expected(frames) * channels_ + 16);
    float* dst = out->data();
    size_t made = 0;
    for (size_t at = 0; at < frames; at += 4096) {
      const int n = static_cast<int>(frames - at < 4096 ? frames - at : 4096);
      made += engine_.Process(n, in + at * channels_, dst + made * channels_);
    }
    made += engine_.Flush(dst + made * channels_);
    out->resize(made * channels_);
  }

 private:
  orv::SimdLevel level_;
  orv::FsConvEngine engine_;
  std::vector<float> buffer_;
};

// The public 16-bit front: float in is quantised to 16 bits before the clock
// starts (PrepareInput), so Run measures the converter alone.
class OursConverter : public Resampler {
 public:
  std::string Name() const override { return "ours OrvAudioConverter int16"; }
  bool Setup(int inRate, int outRate, int channels) override {
    Keep(inRate, outRate, channels);
    const uint32_t mask = channels == 1 ? 0x4u : 0x3u;
    ORV_AUCONV_PARAM in{static_cast<uint32_t>(channels), mask, static_cast<uint32_t>(inRate), 16};
    ORV_AUCONV_PARAM out{static_cast<uint32_t>(channels), mask, static_cast<uint32_t>(outRate), 16};
    return converter_.Init(in, out, ORV_AUCONV_DOWNMIX_NONE) == 0;
  }
  void Run(const float* in, size_t frames, std::vector<float>* out) override {
    if (pcm_.size() != frames * channels_) PrepareInput(in, frames);
    RunPcm(frames);
    out->resize(made_ * channels_);
    for (size_t i = 0; i < out->size(); ++i) (*out)[i] = result_[i] / 32768.0f;
  }
  void PrepareInput(const float* in, size_t frames) {
    pcm_.resize(frames * channels_);
    for (size_t i = 0; i < pcm_.size(); ++i) {
      const double v = std::floor(in[i] * 32768.0 + 0.5);
      pcm_[i] = static_cast<int16_t>(v > 32767 ? 32767 : (v < -32768 ? -32768 : v));
    }
  }
  void RunPcm(size_t frames) {
    result_.resize((Expected(frames) + 8192) * channels_);
    unsigned char* dst = reinterpret_cast<unsigned char*>(result_.data());
    const unsigned long bytes = result_.size() * 2;
    size_t made = 0;
    for (size_t at = 0; at < frames; at += 4096) {
      const unsigned long n = frames - at < 4096 ? frames - at : 4096;
      unsigned long got = 0;
      converter_.Convert(reinterpret_cast<unsigned char*>(pcm_.data() + at * channels_), n,
                         dst + made * channels_ * 2, bytes - made * channels_ * 2, &got);
      made += got;
    }
    unsigned long got = 0;
    converter_.Convert(nullptr, 0, dst + made * channels_ * 2, bytes - made * channels_ * 2, &got);
    made_ = made + got;
  }

 private:
  OrvAudioConverter converter_;
  std::vector<int16_t> pcm_, result_;
  size_t made_ = 0;
};

#if defined(ORV_HAVE_SOXR)
class Soxr : public Resampler {
 public:
  ~Soxr() override {
    if (soxr_ != nullptr) soxr_delete(soxr_);
  }
  std::string Name() const override { return "soxr HQ"; }
  bool Setup(int inRate, int outRate, int channels) override {
    Keep(inRate, outRate, channels);
    soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    soxr_quality_spec_t q = soxr_quality_spec(SOXR_HQ, 0);
    soxr_error_t err = nullptr;
    soxr_ = soxr_create(inRate, outRate, channels, &err, &io, &q, nullptr);
    return err == nullptr && soxr_ != nullptr;
  }
  void Run(const float* in, size_t frames, std::vector<float>* out) override {
    soxr_clear(soxr_);
    out->resize((Expected(frames) + 8192) * channels_);
    size_t made = 0;
    for (size_t at = 0; at < frames;) {
      const size_t n = frames - at < 4096 ? frames - at : 4096;
      size_t used = 0, got = 0;
      soxr_process(soxr_, in + at * channels_, n, &used, out->data() + made * channels_,
                   out->size() / channels_ - made, &got);
      at += used;
      made += got;
    }
    for (;;) {
      size_t got = 0;
      soxr_process(soxr_, nullptr, 0, nullptr, out->data() + made * channels_,
                   out->size() / channels_ - made, &got);
      if (got == 0) break;
      made += got;
    }
    out->resize(made * channels_);
  }

 private:
  soxr_t soxr_ = nullptr;
};
#endif

#if defined(ORV_HAVE_SAMPLERATE)
class Samplerate : public Resampler {
 public:
  Samplerate(int type, const char* name) : type_(type), name_(name) {}
  ~Samplerate() override {
    if (state_ != nullptr) src_delete(state_);
  }
  std::string Name() const override { return name_; }
  bool Setup(int inRate, int outRate, int channels) override {
    Keep(inRate, outRate, channels);
    int err = 0;
    state_ = src_new(type_, channels, &err);
    return state_ != nullptr && err == 0;
  }
  void Run(const float* in, size_t frames, std::vector<float>* out) override {
    src_reset(state_);
    out->resize((Expected(frames) + 8192) * channels_);
    size_t made = 0;
    SRC_DATA d{};
    d.src_ratio = static_cast<double>(outRate_) / inRate_;
    for (size_t at = 0;;) {
      const size_t n = frames - at < 4096 ? frames - at : 4096;
      d.data_in = in + at * channels_;
      d.input_frames = static_cast<long>(n);
      d.data_out = out->data() + made * channels_;
      d.output_frames = static_cast<long>(out->size() / channels_ - made);
      d.end_of_input = at + n >= frames ? 1 : 0;
      if (src_process(state_, &d) != 0) break;
      at += static_cast<size_t>(d.input_frames_used);
      made += static_cast<size_t>(d.output_frames_gen);
      if (d.end_of_input && d.output_frames_gen == 0 && at >= frames) break;
    }
    out->resize(made * channels_);
  }

 private:
  int type_;
  std::string name_;
  SRC_STATE* state_ = nullptr;
};
#endif

#if defined(ORV_HAVE_SPEEXDSP)
class Speex : public Resampler {
 public:
  explicit Speex(int quality) : quality_(quality) {}
  ~Speex() override {
    if (state_ != nullptr) speex_resampler_destroy(state_);
  }
  std::string Name() const override { return "speexdsp q" + std::to_string(quality_); }
  bool Setup(int inRate, int outRate, int channels) override {
    Keep(inRate, outRate, channels);
    int err = 0;
    state_ = speex_resampler_init(channels, inRate, outRate, quality_, &err);
    return state_ != nullptr && err == 0;
  }
  void Run(const float* in, size_t frames, std::vector<float>* out) override {
    speex_resampler_reset_mem(state_);
    speex_resampler_skip_zeros(state_);  // align the output with the input
    const size_t latency = static_cast<size_t>(speex_resampler_get_input_latency(state_));
    out->resize((Expected(frames) + 8192) * channels_);
    std::vector<float> zeros(latency * channels_, 0.0f);
    size_t made = 0;
    auto feed = [&](const float* src, size_t count) {
      for (size_t at = 0; at < count;) {
        spx_uint32_t n = static_cast<spx_uint32_t>(count - at < 4096 ? count - at : 4096);
        spx_uint32_t room = static_cast<spx_uint32_t>(out->size() / channels_ - made);
        speex_resampler_process_interleaved_float(state_, src + at * channels_, &n,
                                                  out->data() + made * channels_, &room);
        at += n;
        made += room;
      }
    };
    feed(in, frames);
    feed(zeros.data(), latency);  // drain
    const size_t expected = Expected(frames);
    out->resize((made < expected ? made : expected) * channels_);
  }

 private:
  int quality_;
  SpeexResamplerState* state_ = nullptr;
};
#endif

// Every converter this build can measure, ours first.
inline std::vector<std::unique_ptr<Resampler>> AllResamplers() {
  std::vector<std::unique_ptr<Resampler>> list;
  for (orv::SimdLevel level : {orv::SimdLevel::kPlain, orv::SimdLevel::kSse2, orv::SimdLevel::kAvx2,
                               orv::SimdLevel::kAvx512}) {
    if (orv::DetectSimdLevel() >= level) list.emplace_back(new OursEngine(level));
  }
  list.emplace_back(new OursConverter());
#if defined(ORV_HAVE_SOXR)
  list.emplace_back(new Soxr());
#endif
#if defined(ORV_HAVE_SAMPLERATE)
  list.emplace_back(new Samplerate(SRC_SINC_MEDIUM_QUALITY, "libsamplerate SINC_MEDIUM"));
  list.emplace_back(new Samplerate(SRC_SINC_BEST_QUALITY, "libsamplerate SINC_BEST"));
#endif
#if defined(ORV_HAVE_SPEEXDSP)
  list.emplace_back(new Speex(5));
  list.emplace_back(new Speex(10));
#endif
  return list;
}

}  // namespace bench_audio

#endif  // ORV_BENCH_AUDIO_RESAMPLERS_H_
