#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "audio/fs_conv.h"

namespace {

using orv::FsConvEngine;
using orv::SimdLevel;

// Runs `input` (interleaved, `channels` wide) through `engine` in pieces of the
// given sizes (cycled), then flushes; returns the concatenated output.
std::vector<float> RunStream(FsConvEngine* engine, int channels, const std::vector<float>& input,
                             const std::vector<int>& pieces) {
  std::vector<float> out;
  std::vector<float> buffer(static_cast<size_t>(engine->GetMaxOutputFrames()) * channels);
  const int frames = static_cast<int>(input.size()) / channels;
  size_t next = 0;
  for (int at = 0; at < frames;) {
    int n = pieces[next++ % pieces.size()];
    if (n > frames - at) n = frames - at;
    const int made =
        engine->Process(n, input.data() + static_cast<size_t>(at) * channels, buffer.data());
    EXPECT_LE(made, engine->GetMaxOutputFrames());
    out.insert(out.end(), buffer.begin(), buffer.begin() + static_cast<size_t>(made) * channels);
    at += n;
  }
  const int tail = engine->Flush(buffer.data());
  out.insert(out.end(), buffer.begin(), buffer.begin() + static_cast<size_t>(tail) * channels);
  return out;
}

std::vector<float> Noise(size_t count, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<float> dist(-1.0f, 1.0f);
  std::vector<float> v(count);
  for (float& x : v) x = dist(rng);
  return v;
}

std::vector<float> Sine(int frames, int channels, double hz, int rate, double amplitude) {
  std::vector<float> v(static_cast<size_t>(frames) * channels);
  for (int f = 0; f < frames; ++f) {
    for (int c = 0; c < channels; ++c) {
      v[static_cast<size_t>(f) * channels + c] =
          static_cast<float>(amplitude * std::sin(2.0 * M_PI * hz * f / rate + c));
    }
  }
  return v;
}

uint64_t CeilDiv(uint64_t a, uint64_t b) { return (a + b - 1) / b; }

struct WorkedRow {
  int in, out, l, m, cutoff, h, taps, floats, capacity;
};

TEST(FsConvTables, WorkedValuesWithDefaults) {
  const WorkedRow rows[] = {
      {48000, 44100, 147, 160, 20948, 40, 81, 5880, 3765},
      {44100, 48000, 160, 147, 20948, 37, 75, 5920, 4460},
      {48000, 32000, 2, 3, 15200, 55, 111, 110, 2732},
      {32000, 48000, 3, 2, 15200, 37, 75, 111, 6145},
  };
  for (const WorkedRow& r : rows) {
    FsConvEngine engine;
    ASSERT_EQ(engine.Configure(r.in, r.out, 16, 2, 0, 4096), 4096);
    const orv::FsConvKernel* k = engine.Kernel();
    EXPECT_EQ(k->Phases(), r.l) << r.in << "->" << r.out;
    EXPECT_EQ(k->Step(), r.m);
    EXPECT_EQ(k->Cutoff(), r.cutoff);
    EXPECT_EQ(k->HalfLength(), r.h);
    EXPECT_EQ(engine.FilterInformation()[4], r.taps);
    EXPECT_EQ(k->Phases() * k->HalfLength(), r.floats);
    EXPECT_EQ(engine.GetMaxOutputFrames(), r.capacity);
    EXPECT_EQ(k->Attenuation(), 60.0f);
    EXPECT_EQ(k->Table(r.l), k->Table(0));  // entry L aliases the whole-sample phase
    EXPECT_EQ(k->PhasePosition(), 3 * r.l * r.h);
  }
}

TEST(FsConvTables, QualityTableAndDefaults) {
  FsConvEngine engine;
  ASSERT_EQ(engine.Configure(48000, 44100, 16, 1, 2, 0), 4096);
  EXPECT_EQ(engine.Kernel()->Attenuation(), 80.0f);
  EXPECT_EQ(engine.Kernel()->Cutoff(), static_cast<int>(0.97 * 22050));
  ASSERT_EQ(engine.Configure(48000, 44100, 24, 1, 4, 0), 4096);
  EXPECT_EQ(engine.Kernel()->Attenuation(), 144.0f);
  EXPECT_EQ(engine.Kernel()->Cutoff(), static_cast<int>(0.99 * 22050));
  ASSERT_EQ(engine.Configure(48000, 44100, 16, 1, 7, 0), 4096);  // outside 1-4: defaults
  EXPECT_EQ(engine.Kernel()->Attenuation(), 60.0f);
  EXPECT_EQ(engine.Kernel()->Cutoff(), 20948);
  // The centre coefficient is w * L, the value of the filter at distance 0.
  EXPECT_FLOAT_EQ(engine.Kernel()->CentreCoefficient(), 2.0f * 20948 / 48000);
}

TEST(FsConvTables, ConfigureRefusals) {
  FsConvEngine engine;
  EXPECT_EQ(engine.Configure(0, 44100, 16, 2, 0, 0), -1);
  EXPECT_EQ(engine.Configure(48000, 0, 16, 2, 0, 0), -1);
  EXPECT_EQ(engine.Configure(48000, 44100, 16, 0, 0, 0), -1);
  EXPECT_EQ(engine.Configure(48000, 44100, 16, 9, 0, 0), -1);
  EXPECT_EQ(engine.Configure(48000, 44100, 16, 2, 0, -5), -1);
  // Other sample sizes keep the cutoff at half the lower rate: no transition band.
  EXPECT_EQ(engine.Configure(48000, 44100, 8, 2, 0, 0), -1);
  // A reduced ratio whose tables would be absurdly large.
  EXPECT_EQ(engine.Configure(48000, 44111 * 11, 16, 2, 0, 0), -1);
  EXPECT_EQ(engine.GetMaxOutputFrames(), 0);
  float out[8];
  EXPECT_EQ(engine.Flush(out), 0);
  EXPECT_EQ(engine.Process(1, out, out), 0);
}

TEST(FsConvStream, ImpulseGivesCentreCoefficientAtFrameZero) {
  const int pairs[][2] = {{48000, 44100}, {44100, 48000}, {48000, 32000},
                          {32000, 48000}, {8000, 48000},  {48000, 8000}};
  for (const auto& p : pairs) {
    FsConvEngine engine;
    ASSERT_GT(engine.Configure(p[0], p[1], 16, 2, 0, 0), 0);
    std::vector<float> in(2 * 600, 0.0f);
    in[0] = 1.0f;
    in[1] = -0.5f;
    const std::vector<float> out = RunStream(&engine, 2, in, {600});
    ASSERT_GE(out.size(), 2u);
    const float c = engine.Kernel()->CentreCoefficient();
    EXPECT_EQ(out[0], c) << p[0] << "->" << p[1];
    EXPECT_EQ(out[1], -0.5f * c);
  }
}

TEST(FsConvStream, LengthIsCeilingWhateverTheSplit) {
  const int pairs[][2] = {{48000, 44100}, {44100, 48000}, {48000, 32000}, {32000, 48000}};
  const std::vector<std::vector<int>> splits = {{4096}, {1}, {7, 4096, 33}, {1000}, {4095, 2}};
  for (const auto& p : pairs) {
    const int n = 9001;
    const std::vector<float> in = Noise(2 * n, 7);
    std::vector<float> reference;
    for (const auto& split : splits) {
      FsConvEngine engine;
      ASSERT_EQ(engine.Configure(p[0], p[1], 16, 2, 0, 0), 4096);
      const std::vector<float> out = RunStream(&engine, 2, in, split);
      const int l = engine.Kernel()->Phases(), m = engine.Kernel()->Step();
      EXPECT_EQ(out.size() / 2, CeilDiv(static_cast<uint64_t>(n) * l, m)) << p[0] << "->" << p[1];
      if (reference.empty()) {
        reference = out;
      } else {
        EXPECT_EQ(0, std::memcmp(out.data(), reference.data(), out.size() * sizeof(float)));
      }
    }
  }
}

TEST(FsConvStream, ShortStreamsAndEmptyFlush) {
  FsConvEngine engine;
  ASSERT_EQ(engine.Configure(48000, 44100, 16, 1, 0, 0), 4096);
  std::vector<float> buffer(engine.GetMaxOutputFrames());
  EXPECT_EQ(engine.Flush(buffer.data()), 0);  // nothing fed, nothing delivered
  for (int n : {1, 2, 17, 39, 40, 41}) {
    const std::vector<float> in = Noise(n, n);
    const int made = engine.Process(n, in.data(), buffer.data());
    if (n < engine.Kernel()->HalfLength()) {
      EXPECT_EQ(made, 0);
    }
    const int tail = engine.Flush(buffer.data());
    EXPECT_EQ(static_cast<uint64_t>(made + tail), CeilDiv(static_cast<uint64_t>(n) * 147, 160))
        << n;
  }
}

TEST(FsConvStream, SecondStreamAfterFlushMatchesFreshEngine) {
  const std::vector<float> a = Noise(2 * 5000, 1), b = Noise(2 * 3001, 2);
  FsConvEngine shared;
  ASSERT_EQ(shared.Configure(44100, 48000, 16, 2, 0, 0), 4096);
  const std::vector<float> a1 = RunStream(&shared, 2, a, {1234});
  const std::vector<float> b1 = RunStream(&shared, 2, b, {777});
  FsConvEngine freshA, freshB;
  ASSERT_EQ(freshA.Configure(44100, 48000, 16, 2, 0, 0), 4096);
  ASSERT_EQ(freshB.Configure(44100, 48000, 16, 2, 0, 0), 4096);
  EXPECT_EQ(a1, RunStream(&freshA, 2, a, {4096}));
  EXPECT_EQ(b1, RunStream(&freshB, 2, b, {4096}));
}

TEST(FsConvStream, HalfLengthBeyondTheBlockFits) {
  // 8000 -> 192000 has H = 37; a block of 16 frames is shorter than H, and the
  // flush's H zero frames must still fit the buffers.
  FsConvEngine engine;
  ASSERT_EQ(engine.Configure(8000, 192000, 16, 2, 0, 16), 16);
  ASSERT_GT(engine.Kernel()->HalfLength(), 16);
  const std::vector<float> in = Noise(2 * 100, 3);
  const std::vector<float> out = RunStream(&engine, 2, in, {16, 5});
  EXPECT_EQ(out.size() / 2, CeilDiv(100u * engine.Kernel()->Phases(), engine.Kernel()->Step()));
}

// Root-mean-square difference between the output and the ideal sine at the
// output rate, skipping `skip` frames at each end.
double SineError(const std::vector<float>& out, int channels, double hz, int rate, double amp,
                 int skip) {
  double sum = 0.0;
  size_t count = 0;
  const int frames = static_cast<int>(out.size()) / channels;
  for (int f = skip; f < frames - skip; ++f) {
    for (int c = 0; c < channels; ++c) {
      const double ideal = amp * std::sin(2.0 * M_PI * hz * f / rate + c);
      const double d = out[static_cast<size_t>(f) * channels + c] - ideal;
      sum += d * d;
      ++count;
    }
  }
  return std::sqrt(sum / count);
}

TEST(FsConvResponse, SineStaysInPlaceAndDcPasses) {
  const int pairs[][2] = {{48000, 44100}, {44100, 48000}, {48000, 32000}, {32000, 48000}};
  for (const auto& p : pairs) {
    FsConvEngine engine;
    ASSERT_EQ(engine.Configure(p[0], p[1], 16, 2, 0, 0), 4096);
    const std::vector<float> in = Sine(p[0] / 2, 2, 1000.0, p[0], 0.5);
    const std::vector<float> out = RunStream(&engine, 2, in, {4096});
    // No time shift: the output follows sin(2 pi f k / outRate) within the
    // pass-band ripple of a 60 dB design.
    EXPECT_LT(SineError(out, 2, 1000.0, p[1], 0.5, 200), 1e-3) << p[0] << "->" << p[1];
    FsConvEngine dc;
    ASSERT_EQ(dc.Configure(p[0], p[1], 16, 1, 0, 0), 4096);
    const std::vector<float> flat(3000, 0.25f);
    const std::vector<float> level = RunStream(&dc, 1, flat, {3000});
    for (size_t k = 200; k + 200 < level.size(); ++k) ASSERT_NEAR(level[k], 0.25f, 5e-4) << k;
  }
}

TEST(FsConvResponse, StopBandIsAttenuated) {
  // 23 kHz at 48000 lies above the new Nyquist frequency of 22050 and would
  // fold to 21.1 kHz; the filter must remove it.
  FsConvEngine engine;
  ASSERT_EQ(engine.Configure(48000, 44100, 16, 1, 0, 0), 4096);
  const std::vector<float> in = Sine(24000, 1, 23000.0, 48000, 0.9);
  const std::vector<float> out = RunStream(&engine, 1, in, {4096});
  double sum = 0.0;
  for (size_t k = 200; k + 200 < out.size(); ++k) sum += out[k] * out[k];
  const double rms = std::sqrt(sum / (out.size() - 400));
  EXPECT_LT(20.0 * std::log10(rms / (0.9 / std::sqrt(2.0))), -50.0);
}

// Every processor form against the plain form, bit for bit, over channel
// counts 1 to 8, several rate pairs and odd and even half lengths.
TEST(FsConvForms, EveryLevelMatchesThePlainFormBitForBit) {
  const SimdLevel levels[] = {SimdLevel::kSse2, SimdLevel::kAvx2, SimdLevel::kAvx512};
  const int pairs[][2] = {{48000, 44100}, {44100, 48000}, {48000, 32000},
                          {32000, 48000}, {96000, 44100}, {22050, 48000}};
  int compared = 0;
  for (SimdLevel level : levels) {
    if (orv::DetectSimdLevel() < level) continue;
    for (const auto& p : pairs) {
      for (int channels = 1; channels <= 8; ++channels) {
        std::vector<float> in = Noise(static_cast<size_t>(channels) * 5000, 11 + channels);
        const std::vector<float> sine = Sine(5000, channels, 997.0, p[0], 0.8);
        in.insert(in.end(), sine.begin(), sine.end());
        FsConvEngine plain, simd;
        ASSERT_EQ(plain.Configure(p[0], p[1], 16, channels, 0, 0, SimdLevel::kPlain), 4096);
        ASSERT_EQ(simd.Configure(p[0], p[1], 16, channels, 0, 0, level), 4096);
        const std::vector<float> a = RunStream(&plain, channels, in, {4096, 999});
        const std::vector<float> b = RunStream(&simd, channels, in, {4096, 999});
        ASSERT_EQ(a.size(), b.size());
        ASSERT_EQ(0, std::memcmp(a.data(), b.data(), a.size() * sizeof(float)))
            << "level " << static_cast<int>(level) << " " << p[0] << "->" << p[1] << " x"
            << channels;
        ++compared;
      }
    }
  }
  if (compared == 0) GTEST_SKIP() << "no SIMD form on this build or processor";
}

}  // namespace
