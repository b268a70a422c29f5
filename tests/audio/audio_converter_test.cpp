#include <OrvAudioConverter.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

// Opens the protected statics for testing.
class Probe : public OrvAudioConverter {
 public:
  using OrvAudioConverter::FloatToInt16LSB;
  using OrvAudioConverter::GetChannelOffset;
  using OrvAudioConverter::GetMaskCount;
  using OrvAudioConverter::GetMtSampleDataStreamType;
  using OrvAudioConverter::GetUseInputChannels;
  using OrvAudioConverter::MakeUseInputChannelOffset;
};

ORV_AUCONV_PARAM P(uint32_t channels, uint32_t mask, uint32_t rate = 48000, uint32_t bits = 16) {
  return ORV_AUCONV_PARAM{channels, mask, rate, bits};
}

const ORV_AUCONV_DOWNMIX_MODE kNone = ORV_AUCONV_DOWNMIX_NONE;
const ORV_AUCONV_DOWNMIX_MODE kStereo = ORV_AUCONV_DOWNMIX_STEREO_TO_MONO;
const ORV_AUCONV_DOWNMIX_MODE kFull = ORV_AUCONV_DOWNMIX_FULL;

long L(unsigned long code) { return static_cast<long>(code); }

// The 16-bit sample the converter writes for a float: floor of x * 32768.
int16_t Floor16(double x) {
  const double v = std::floor(static_cast<float>(static_cast<float>(x) * 32768.0));
  return static_cast<int16_t>(v < -32768 ? -32768 : (v > 32767 ? 32767 : v));
}
float F(int16_t s) { return static_cast<float>(s * 3.0517578125e-5); }

// Frames of `channels` samples; sample (f, c) = base[c] + 7 * f.
std::vector<int16_t> Frames(int frames, const std::vector<int16_t>& base) {
  std::vector<int16_t> v;
  for (int f = 0; f < frames; ++f) {
    for (int16_t b : base) v.push_back(static_cast<int16_t>(b + 7 * f));
  }
  return v;
}

std::vector<int16_t> RunS(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                          ORV_AUCONV_DOWNMIX_MODE mode, std::vector<int16_t> src, int frames,
                          long* code = nullptr) {
  std::vector<int16_t> dst(static_cast<size_t>(frames) * out.channels, int16_t{0x5A5A});
  const unsigned long r = OrvAudioConverter::ConvertS(
      in, out, mode, reinterpret_cast<unsigned char*>(src.data()), frames,
      reinterpret_cast<unsigned char*>(dst.data()), dst.size() * 2);
  if (code != nullptr) *code = L(r);
  EXPECT_TRUE(code != nullptr || r == 0) << L(r);
  return dst;
}

TEST(AudioChannelStage, MonoSourceFeedsFrontSlotsOnly) {
  const auto src = Frames(3, {1000});
  // The mask of a mono source plays no part.
  for (uint32_t mask : {0u, 0x4u, 0x100u}) {
    const auto out = RunS(P(1, mask), P(3, 0x7), kNone, src, 3);
    for (int f = 0; f < 3; ++f) {
      EXPECT_EQ(out[f * 3 + 0], src[f]);
      EXPECT_EQ(out[f * 3 + 1], src[f]);
      EXPECT_EQ(out[f * 3 + 2], 0);
    }
  }
  const auto back = RunS(P(1, 0), P(2, 0x30), kFull, src, 3);
  for (int16_t s : back) EXPECT_EQ(s, 0);
  EXPECT_EQ(RunS(P(1, 0), P(1, 0x4), kNone, src, 3), src);  // mono to mono copies
}

TEST(AudioChannelStage, StereoToMonoByMode) {
  const auto src = Frames(4, {1001, -2000});
  const auto picked = RunS(P(2, 0x3), P(1, 0x1), kNone, src, 4);
  for (int f = 0; f < 4; ++f) EXPECT_EQ(picked[f], src[2 * f]);
  const auto right = RunS(P(2, 0x3), P(1, 0x2), kNone, src, 4);
  for (int f = 0; f < 4; ++f) EXPECT_EQ(right[f], src[2 * f + 1]);
  for (auto mode : {kStereo, kFull}) {
    const auto avg = RunS(P(2, 0x3), P(1, 0x1), mode, src, 4);
    for (int f = 0; f < 4; ++f) {
      EXPECT_EQ(avg[f], Floor16((F(src[2 * f]) + F(src[2 * f + 1])) / 2.0f)) << f;
    }
  }
  EXPECT_EQ(RunS(P(2, 0x3), P(1, 0x1), kStereo, {1001, -2000}, 1)[0], -500);  // floor(-499.5)
  // One front channel: half amplitude.
  const auto half = RunS(P(2, 0x5), P(1, 0x1), kStereo, {1001, 5000}, 1);
  EXPECT_EQ(half[0], 500);
  const auto halfRight = RunS(P(2, 0x6), P(1, 0x1), kStereo, {-1001, 5000}, 1);
  EXPECT_EQ(halfRight[0], -501);
  // No front channel: silence.
  EXPECT_EQ(RunS(P(2, 0x30), P(1, 0x1), kStereo, {100, 200}, 1)[0], 0);
}

TEST(AudioChannelStage, StereoToSeveralChannelsSelectsByPosition) {
  const auto src = Frames(2, {111, 222});
  for (auto mode : {kNone, kStereo, kFull}) {
    const auto out = RunS(P(2, 0x3), P(3, 0x106), mode, src, 2);
    for (int f = 0; f < 2; ++f) {
      EXPECT_EQ(out[f * 3 + 0], src[2 * f + 1]);  // front right
      EXPECT_EQ(out[f * 3 + 1], 0);               // centre missing
      EXPECT_EQ(out[f * 3 + 2], 0);               // back centre missing
    }
  }
}

// 5.1 frames: L R C LFE Ls Rs.
const std::vector<int16_t> k51 = {3000, -2000, 1500, 30000, 800, -900};

TEST(AudioChannelStage, MultichannelToMonoByMode) {
  const auto src = Frames(3, k51);
  const auto centre = RunS(P(6, 0x3F), P(1, 0x4), kNone, src, 3);
  for (int f = 0; f < 3; ++f) EXPECT_EQ(centre[f], src[6 * f + 2]);
  const auto avg = RunS(P(6, 0x3F), P(1, 0x4), kStereo, src, 3);
  for (int f = 0; f < 3; ++f) {
    EXPECT_EQ(avg[f], Floor16((F(src[6 * f]) + F(src[6 * f + 1])) / 2.0f));
  }
  const auto mono = RunS(P(6, 0x3F), P(1, 0x4), kFull, src, 3);
  const double K = 0.707f, H = 1.4f;
  for (int f = 0; f < 3; ++f) {
    const int16_t* s = &src[6 * f];
    const float front = static_cast<float>(K * H * F(s[2]) + K * F(s[0]) + K * F(s[1]));
    const float m = static_cast<float>(front + K * K * F(s[4]) + K * K * F(s[5]));
    EXPECT_EQ(mono[f], Floor16(m)) << f;
  }
}

TEST(AudioChannelStage, MultichannelToSeveralChannels) {
  const auto src = Frames(3, k51);
  const double K = 0.707f;
  for (auto mode : {kNone, kStereo}) {
    const auto sel = RunS(P(6, 0x3F), P(2, 0x30), mode, src, 3);
    for (int f = 0; f < 3; ++f) {
      EXPECT_EQ(sel[2 * f], src[6 * f + 4]);
      EXPECT_EQ(sel[2 * f + 1], src[6 * f + 5]);
    }
  }
  auto lo = [&](int f) {
    const int16_t* s = &src[6 * f];
    return Floor16(static_cast<float>(static_cast<float>(K * F(s[2]) + F(s[0])) + K * F(s[4])));
  };
  auto ro = [&](int f) {
    const int16_t* s = &src[6 * f];
    return Floor16(static_cast<float>(static_cast<float>(K * F(s[2]) + F(s[1])) + K * F(s[5])));
  };
  const auto stereo = RunS(P(6, 0x3F), P(2, 0x3), kFull, src, 3);
  for (int f = 0; f < 3; ++f) {
    EXPECT_EQ(stereo[2 * f], lo(f));
    EXPECT_EQ(stereo[2 * f + 1], ro(f));
  }
  // Front left, right and centre: the mix in the front slots, centre silent.
  const auto three = RunS(P(6, 0x3F), P(3, 0x7), kFull, src, 3);
  for (int f = 0; f < 3; ++f) {
    EXPECT_EQ(three[3 * f], lo(f));
    EXPECT_EQ(three[3 * f + 1], ro(f));
    EXPECT_EQ(three[3 * f + 2], 0);
  }
  // Equal layouts with the full mode still mix.
  const auto same = RunS(P(6, 0x3F), P(6, 0x3F), kFull, src, 3);
  for (int f = 0; f < 3; ++f) {
    EXPECT_EQ(same[6 * f], lo(f));
    EXPECT_EQ(same[6 * f + 1], ro(f));
    for (int s = 2; s < 6; ++s) EXPECT_EQ(same[6 * f + s], 0);
  }
  // A destination with no front channel is silence, not an error.
  const auto none = RunS(P(6, 0x3F), P(3, 0x38), kFull, src, 3);
  for (int16_t s : none) EXPECT_EQ(s, 0);
  // Equal layouts without mixing copy.
  EXPECT_EQ(RunS(P(6, 0x3F), P(6, 0x3F), kNone, src, 3), src);
}

TEST(AudioConverterRefusals, InitCodes) {
  OrvAudioConverter c;
  EXPECT_EQ(L(c.Init(P(2, 0x1), P(2, 0x3), kNone)), ORV_AUCONV_ERR_MASK);
  EXPECT_EQ(L(c.Init(P(2, 0x3), P(2, 0x7), kNone)), ORV_AUCONV_ERR_MASK);
  EXPECT_EQ(L(c.Init(P(2, 0x3), P(1, 0x3), kNone)), ORV_AUCONV_ERR_MASK);
  EXPECT_EQ(L(c.Init(P(2, 0x3), P(1, 0x3), kStereo)), ORV_AUCONV_OK);  // mono: any mask
  EXPECT_EQ(L(c.Init(P(1, 0x3F), P(1, 0x3), kNone)), ORV_AUCONV_OK);
  EXPECT_EQ(L(c.Init(P(2, 0x3, 48000, 8), P(2, 0x3), kNone)), ORV_AUCONV_ERR_FORMAT);
  EXPECT_EQ(L(c.Init(P(2, 0x3), P(2, 0x3, 48000, 24), kNone)), ORV_AUCONV_ERR_FORMAT);
  EXPECT_EQ(L(c.Init(P(9, 0x1FF), P(2, 0x3, 44100), kFull)), ORV_AUCONV_ERR_CHANNELS);
  EXPECT_EQ(L(c.Init(P(9, 0x1FF), P(9, 0x1FF, 44100), kNone)), ORV_AUCONV_ERR_CHANNELS);
  EXPECT_EQ(L(c.Init(P(9, 0x1FF), P(2, 0x3, 44100), kNone)), ORV_AUCONV_OK);
  EXPECT_EQ(L(c.Init(P(9, 0x1FF), P(9, 0x1FF), kFull)), ORV_AUCONV_OK);  // equal rates
  EXPECT_EQ(L(c.Init(P(2, 0x3), P(2, 0x3), static_cast<ORV_AUCONV_DOWNMIX_MODE>(3))),
            ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(c.Init(P(0, 0), P(2, 0x3), kNone)), ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(c.Init(P(1, 0), P(0, 0), kNone)), ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(c.Init(P(2, 0x3, 0), P(2, 0x3, 44100), kNone)), ORV_AUCONV_ERR_MEMORY);
  EXPECT_EQ(L(c.Init(P(1, 0, 48000), P(2, 0x30, 0), kNone)), ORV_AUCONV_ERR_MEMORY);
  EXPECT_EQ(L(c.Init(P(2, 0x3, 0x80000000u), P(2, 0x3), kNone)), ORV_AUCONV_ERR_MEMORY);
  // A failed Init leaves the object uninitialised.
  unsigned long frames = 7;
  int16_t buf[4] = {};
  EXPECT_EQ(L(c.Convert(reinterpret_cast<unsigned char*>(buf), 1,
                        reinterpret_cast<unsigned char*>(buf), 8, &frames)),
            ORV_AUCONV_ERR_NOT_INIT);
  EXPECT_EQ(frames, 7u);
}

TEST(AudioConverterRefusals, ConvertAndConvertSCodesWriteNothing) {
  int16_t src[64] = {1, 2, 3, 4};
  std::vector<int16_t> dst(64, 0x5A5A);
  auto* s = reinterpret_cast<unsigned char*>(src);
  auto* d = reinterpret_cast<unsigned char*>(dst.data());
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(2, 3), P(2, 3, 44100), kNone, s, 2, d, 128)),
            ORV_AUCONV_ERR_RATE);
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(2, 3), P(2, 3), kNone, nullptr, 2, d, 128)),
            ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(2, 3), P(2, 3), kNone, s, 2, nullptr, 128)),
            ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(2, 3), P(2, 3), kNone, s, 2, d, 7)),
            ORV_AUCONV_ERR_BUFFER);
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(2, 3), P(2, 3), kNone, nullptr, 0, nullptr, 0)), 0);
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(3, 0x38), P(2, 3), kFull, s, 2, d, 128)),
            ORV_AUCONV_ERR_MASK);
  EXPECT_EQ(L(OrvAudioConverter::ConvertS(P(2, 3), P(2, 3), kNone, s, 0x100000000ul, d, ~0ul)),
            ORV_AUCONV_ERR_PARAM);
  for (int16_t v : dst) ASSERT_EQ(v, 0x5A5A);

  OrvAudioConverter c;
  unsigned long frames = 9;
  ASSERT_EQ(L(c.Init(P(2, 3), P(2, 3, 44100), kNone)), 0);
  EXPECT_EQ(L(c.Convert(s, 2, d, 128, nullptr)), ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(c.Convert(s, 2, nullptr, 128, &frames)), ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(frames, 0u);
  EXPECT_EQ(L(c.Convert(nullptr, 2, d, 128, &frames)), ORV_AUCONV_ERR_PARAM);
  EXPECT_EQ(L(c.Convert(s, ~0ul / 2, d, ~0ul, &frames)), ORV_AUCONV_ERR_PARAM);
  // 29 frames are due at 44100 for 32 input frames at 48000 (32 * 44100 / 48000 = 29.4).
  EXPECT_EQ(L(c.Convert(s, 32, d, 29 * 4 - 1, &frames)), ORV_AUCONV_ERR_BUFFER);
  for (int16_t v : dst) ASSERT_EQ(v, 0x5A5A);
}

std::vector<int16_t> Noise16(size_t count, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_int_distribution<int> dist(-20000, 20000);
  std::vector<int16_t> v(count);
  for (auto& x : v) x = static_cast<int16_t>(dist(rng));
  return v;
}

// Streams `src` through `c` in the given piece sizes (cycled) and flushes.
std::vector<int16_t> Stream(OrvAudioConverter* c, const ORV_AUCONV_PARAM& in,
                            const ORV_AUCONV_PARAM& out, std::vector<int16_t> src,
                            const std::vector<unsigned long>& pieces) {
  const unsigned long frames = src.size() / in.channels;
  std::vector<int16_t> all;
  std::vector<int16_t> dst;
  size_t next = 0;
  for (unsigned long at = 0; at < frames;) {
    unsigned long n = std::min(pieces[next++ % pieces.size()], frames - at);
    // Room for the frames due: this call's share plus what the filter's delay
    // held back from earlier calls.
    dst.assign((n * out.samplesPerSec / in.samplesPerSec + 200) * out.channels, 0);
    unsigned long made = 0;
    EXPECT_EQ(L(c->Convert(reinterpret_cast<unsigned char*>(src.data() + at * in.channels), n,
                           reinterpret_cast<unsigned char*>(dst.data()), dst.size() * 2, &made)),
              0);
    all.insert(all.end(), dst.begin(), dst.begin() + made * out.channels);
    at += n;
  }
  dst.assign(8192 * out.channels, 0);
  unsigned long tail = 0;
  EXPECT_EQ(L(c->Convert(nullptr, 0, reinterpret_cast<unsigned char*>(dst.data()), dst.size() * 2,
                         &tail)),
            0);
  all.insert(all.end(), dst.begin(), dst.begin() + tail * out.channels);
  return all;
}

TEST(AudioConverterRate, LengthAndBytesIndependentOfTheSplit) {
  const struct {
    uint32_t in, out;
  } pairs[] = {{48000, 44100}, {44100, 48000}, {48000, 32000}, {32000, 48000}};
  const std::vector<std::vector<unsigned long>> splits = {{10000},         {1},   {4096}, {4097, 3},
                                                          {333, 5000, 17}, {8192}};
  const unsigned long n = 10007;
  const auto src = Noise16(n * 2, 5);
  for (const auto& p : pairs) {
    std::vector<int16_t> reference;
    for (const auto& split : splits) {
      OrvAudioConverter c;
      ASSERT_EQ(L(c.Init(P(2, 3, p.in), P(2, 3, p.out), kNone)), 0);
      const auto out = Stream(&c, P(2, 3, p.in), P(2, 3, p.out), src, split);
      EXPECT_EQ(out.size() / 2, (static_cast<uint64_t>(n) * p.out + p.in - 1) / p.in);
      if (reference.empty()) {
        reference = out;
      } else {
        EXPECT_EQ(out, reference) << p.in << "->" << p.out;
      }
    }
  }
}

TEST(AudioConverterRate, FlushesAndSecondStream) {
  OrvAudioConverter c;
  ASSERT_EQ(L(c.Init(P(2, 3, 44100), P(2, 3, 48000), kNone)), 0);
  int16_t dst[64];
  unsigned long frames = 5;
  EXPECT_EQ(L(c.Convert(nullptr, 0, reinterpret_cast<unsigned char*>(dst), 128, &frames)), 0);
  EXPECT_EQ(frames, 0u);
  EXPECT_EQ(L(c.Convert(nullptr, 0, reinterpret_cast<unsigned char*>(dst), 128, &frames)), 0);
  EXPECT_EQ(frames, 0u);
  const auto src = Noise16(2 * 7000, 9);
  const auto first = Stream(&c, P(2, 3, 44100), P(2, 3, 48000), src, {2000});
  const auto second = Stream(&c, P(2, 3, 44100), P(2, 3, 48000), src, {3000});
  EXPECT_EQ(first, second);
  // A flush into a buffer smaller than the frames due is refused before the
  // engine is drained: nothing written, and a flush with room still delivers
  // the whole tail.
  std::vector<int16_t> out(2 * 8000, 0);
  unsigned long made = 0;
  ASSERT_EQ(
      L(c.Convert(const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(src.data())),
                  7000, reinterpret_cast<unsigned char*>(out.data()), out.size() * 2, &made)),
      0);
  const unsigned long body = made;
  int16_t small[4] = {0x11, 0x11, 0x11, 0x11};
  EXPECT_EQ(L(c.Convert(nullptr, 0, reinterpret_cast<unsigned char*>(small), 8, &made)),
            ORV_AUCONV_ERR_BUFFER);
  EXPECT_EQ(made, 0u);
  EXPECT_EQ(small[0], 0x11);
  EXPECT_EQ(
      L(c.Convert(nullptr, 0, reinterpret_cast<unsigned char*>(out.data()), out.size() * 2, &made)),
      0);
  EXPECT_EQ(body + made, (7000u * 48000 + 44099) / 44100);
  EXPECT_EQ(L(c.Convert(nullptr, 0, reinterpret_cast<unsigned char*>(small), 8, &made)), 0);
  EXPECT_EQ(made, 0u);
}

TEST(AudioConverterRate, SilentStreamFollowsTheArithmetic) {
  OrvAudioConverter c;
  ASSERT_EQ(L(c.Init(P(1, 0, 48000), P(2, 0x30, 44100), kNone)), 0);
  std::vector<int16_t> src(1000, 1234), dst(2000, 77);
  unsigned long made = 0;
  ASSERT_EQ(L(c.Convert(reinterpret_cast<unsigned char*>(src.data()), 1000,
                        reinterpret_cast<unsigned char*>(dst.data()), dst.size() * 2, &made)),
            0);
  EXPECT_EQ(made, 918u);  // 1000 * 44100 / 48000 = 918.75
  for (unsigned long i = 0; i < made * 2; ++i) ASSERT_EQ(dst[i], 0);
  EXPECT_EQ(dst[made * 2], 77);
}

TEST(AudioConverterRate, SurvivingChannelCountsAsMono) {
  // Front left, right and centre to centre and low frequency, mode 0: silence
  // when the rates differ, the centre channel when they are equal.
  const auto src = Noise16(3 * 3000, 4);
  OrvAudioConverter c;
  ASSERT_EQ(L(c.Init(P(3, 7, 48000), P(2, 0xC, 32000), kNone)), 0);
  const auto resampled = Stream(&c, P(3, 7, 48000), P(2, 0xC, 32000), src, {1000});
  ASSERT_EQ(resampled.size(), 2u * 2000);
  for (int16_t s : resampled) ASSERT_EQ(s, 0);
  const auto same = RunS(P(3, 7), P(2, 0xC), kNone, src, 3000);
  for (int f = 0; f < 3000; ++f) {
    ASSERT_EQ(same[2 * f], src[3 * f + 2]);
    ASSERT_EQ(same[2 * f + 1], 0);
  }
}

TEST(AudioConverterRate, OneFrontChannelToMonoMatchesAverageWithSilentPartner) {
  // Stereo of front left and centre to mono, mode 1, rates differ: half the
  // left channel, exactly as a front pair whose right channel is silent.
  auto src = Noise16(2 * 5000, 8);
  auto paired = src;
  for (size_t f = 0; f < 5000; ++f) paired[2 * f + 1] = 0;
  OrvAudioConverter a, b;
  ASSERT_EQ(L(a.Init(P(2, 0x5, 48000), P(1, 0x4, 44100), kStereo)), 0);
  ASSERT_EQ(L(b.Init(P(2, 0x3, 48000), P(1, 0x4, 44100), kStereo)), 0);
  const auto outA = Stream(&a, P(2, 0x5, 48000), P(1, 0x4, 44100), src, {1500});
  const auto outB = Stream(&b, P(2, 0x3, 48000), P(1, 0x4, 44100), paired, {1500});
  EXPECT_EQ(outA.size(), (5000u * 44100 + 47999) / 48000);
  EXPECT_EQ(outA, outB);
}

TEST(AudioConverterRate, DownMixThenResampleAndReleaseBuffer) {
  const auto src = Frames(6000, k51);
  OrvAudioConverter c;
  ASSERT_EQ(L(c.Init(P(6, 0x3F, 48000), P(3, 0x7, 44100), kFull)), 0);
  const auto out = Stream(&c, P(6, 0x3F, 48000), P(3, 0x7, 44100), src, {2500});
  ASSERT_EQ(out.size(), 3u * 5513);
  for (size_t f = 0; f < 5513; ++f) ASSERT_EQ(out[3 * f + 2], 0);  // centre slot silent
  // Working memory goes and comes back; a pending tail is dropped with 1.
  std::vector<int16_t> dst(3 * 2000);
  unsigned long made = 0;
  auto* s = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(src.data()));
  ASSERT_EQ(
      L(c.Convert(s, 1000, reinterpret_cast<unsigned char*>(dst.data()), dst.size() * 2, &made)),
      0);
  EXPECT_EQ(c.ReleaseBuffer(), 1u);
  EXPECT_EQ(c.ReleaseBuffer(), 0u);
  ASSERT_EQ(
      L(c.Convert(s, 1000, reinterpret_cast<unsigned char*>(dst.data()), dst.size() * 2, &made)),
      0);
  EXPECT_GT(made, 0u);
}

TEST(AudioConverterEqualRate, ConvertReportsFrames) {
  OrvAudioConverter c;
  ASSERT_EQ(L(c.Init(P(2, 3), P(1, 1), kStereo)), 0);
  unsigned long made = 9;
  EXPECT_EQ(L(c.Convert(nullptr, 0, nullptr, 0, &made)), 0);
  EXPECT_EQ(made, 0u);
  int16_t src[6] = {100, 300, -5, -7, 1, 1};
  int16_t dst[3];
  ASSERT_EQ(L(c.Convert(reinterpret_cast<unsigned char*>(src), 3,
                        reinterpret_cast<unsigned char*>(dst), 6, &made)),
            0);
  EXPECT_EQ(made, 3u);
  EXPECT_EQ(dst[0], 200);
  EXPECT_EQ(dst[1], -6);
  EXPECT_EQ(dst[2], 1);
}

TEST(AudioConverterStatics, MasksSlotsAndTables) {
  EXPECT_EQ(Probe::GetMaskCount(0x3FF), 9u);
  EXPECT_EQ(Probe::GetMaskCount(0x200), 0u);
  EXPECT_EQ(Probe::GetChannelOffset(0x3F, 0x4), 2);
  EXPECT_EQ(Probe::GetChannelOffset(0x3B, 0x4), -1);
  EXPECT_EQ(Probe::GetChannelOffset(0x3F, 0x6), -1);
  EXPECT_EQ(Probe::GetChannelOffset(0x3FF, 0x200), -1);
  EXPECT_TRUE(OrvAudioConverter::CheckChannelMask(6, 0x63F));
  EXPECT_FALSE(OrvAudioConverter::CheckChannelMask(7, 0x23F));
  EXPECT_EQ(Probe::GetMtSampleDataStreamType(8), 101);
  EXPECT_EQ(Probe::GetMtSampleDataStreamType(24), 17);
  EXPECT_EQ(Probe::GetMtSampleDataStreamType(32), 18);
  EXPECT_EQ(Probe::GetMtSampleDataStreamType(12), 16);
  unsigned char b[2];
  const float v = -1.5f / 32768.0f;
  Probe::FloatToInt16LSB(&v, b);
  EXPECT_EQ(static_cast<int16_t>(b[0] | (b[1] << 8)), -2);

  unsigned long used = 0;
  EXPECT_EQ(Probe::GetUseInputChannels(P(6, 0x3F), P(2, 0x30), kNone, &used), 2u);
  EXPECT_EQ(used, 0x30u);  // slots 4 and 5
  EXPECT_EQ(Probe::GetUseInputChannels(P(6, 0x3F), P(2, 0x30), kFull, &used), 0u);
  EXPECT_EQ(Probe::GetUseInputChannels(P(6, 0x3F), P(1, 0x30), kFull, &used), 6u);
  EXPECT_EQ(used, 0x3Fu);
  EXPECT_EQ(Probe::GetUseInputChannels(P(3, 0x106), P(1, 0), kStereo, &used), 1u);
  EXPECT_EQ(used, 1u);
  EXPECT_EQ(Probe::GetUseInputChannels(P(1, 0), P(2, 0x30), kNone, &used), 0u);

  int offsets[9];
  Probe::MakeUseInputChannelOffset(offsets, P(6, 0x3F), P(3, 0x134));
  EXPECT_EQ(offsets[0], 2);
  EXPECT_EQ(offsets[1], 4);
  EXPECT_EQ(offsets[2], 5);
  EXPECT_EQ(offsets[3], -1);
  Probe::MakeUseInputChannelOffset(offsets, P(6, 0x3F), P(1, 0));
  EXPECT_EQ(offsets[0], 0);
  EXPECT_EQ(offsets[1], -1);
  Probe::MakeUseInputChannelOffset(offsets, P(1, 0x4), P(3, 0x7));
  EXPECT_EQ(offsets[0], 0);
  EXPECT_EQ(offsets[1], 0);
  EXPECT_EQ(offsets[2], -1);
}

TEST(ChannelHelpers, ExtractionByPosition) {
  const auto src = Frames(2, {10, 20, 30, 40, 50, 60});
  std::vector<int16_t> dst(2, -1);
  auto* s = const_cast<unsigned char*>(reinterpret_cast<const unsigned char*>(src.data()));
  EXPECT_TRUE(
      ExtractsAudioChannel(2, 6, 0x3F, s, 1, 0x04, reinterpret_cast<unsigned char*>(dst.data())));
  EXPECT_EQ(dst[0], 30);
  EXPECT_EQ(dst[1], 37);
  // Fixed position order: right cannot come before left; a missing position keeps dst.
  std::vector<int16_t> three(6, -1);
  EXPECT_TRUE(ExtractsAudioChannel(2, 6, 0x3F, s, 3, 0x103,
                                   reinterpret_cast<unsigned char*>(three.data())));
  EXPECT_EQ(three[0], 10);
  EXPECT_EQ(three[1], 20);
  EXPECT_EQ(three[2], -1);  // 0x100 is not among the six positions
  EXPECT_EQ(three[3], 17);
  EXPECT_TRUE(ExtractsAudioChannel(0, 6, 0x3F, nullptr, 1, 0x4, nullptr));
  EXPECT_FALSE(ExtractsAudioChannel(1, 6, 0x3F, nullptr, 1, 0x4, nullptr));
  EXPECT_TRUE(IsChannelExtractsPossible(6, 0x3F));
  EXPECT_FALSE(IsChannelExtractsPossible(3, 0x43));
  EXPECT_TRUE(IsChannelExtractsPossible(2, 0x43));
}

TEST(ChannelHelpers, MonoStereoConversions) {
  int16_t mono[3] = {5, -6, 32767};
  int16_t stereo[6];
  ConvertMono2Stereo(3, reinterpret_cast<unsigned char*>(mono),
                     reinterpret_cast<unsigned char*>(stereo));
  EXPECT_EQ(stereo[0], 5);
  EXPECT_EQ(stereo[1], 5);
  EXPECT_EQ(stereo[5], 32767);
  int16_t pairs[10] = {1, 1, -1, -1, 3, 3, 32767, 32767, -32768, -32768};
  int16_t out[5];
  ConvertStereo2Mono(5, reinterpret_cast<unsigned char*>(pairs),
                     reinterpret_cast<unsigned char*>(out));
  EXPECT_EQ(out[0], 0);
  EXPECT_EQ(out[1], 0);
  EXPECT_EQ(out[2], 2);
  EXPECT_EQ(out[3], 32766);
  EXPECT_EQ(out[4], -32768);
}

}  // namespace

namespace {

// Random layouts, modes, rates and piece sizes: whatever the converter answers,
// it never writes past the byte count it was given, and a successful call
// reports no more frames than fit.
TEST(AudioConverterRobustness, NeverWritesPastTheStatedCapacity) {
  std::mt19937 rng(2024);
  const uint32_t masks[] = {0x0, 0x1, 0x3, 0x4, 0x7, 0x30, 0x33, 0x3F, 0x107, 0x1FF, 0xFF, 0x5};
  const uint32_t rates[] = {8000, 32000, 44100, 48000, 96000};
  const uint16_t kGuard = 0xBEEF;
  for (int round = 0; round < 300; ++round) {
    const uint32_t inMask = masks[rng() % 12], outMask = masks[rng() % 12];
    auto count = [](uint32_t m) { return static_cast<uint32_t>(__builtin_popcount(m & 0x1FF)); };
    const uint32_t inCh = rng() % 4 == 0 ? 1 : std::max(1u, count(inMask));
    const uint32_t outCh = rng() % 4 == 0 ? 1 : std::max(1u, count(outMask));
    const ORV_AUCONV_PARAM in = P(inCh, inMask, rates[rng() % 5]);
    const ORV_AUCONV_PARAM out = P(outCh, outMask, rates[rng() % 5]);
    const auto mode = static_cast<ORV_AUCONV_DOWNMIX_MODE>(rng() % 3);
    OrvAudioConverter c;
    if (c.Init(in, out, mode) != 0) continue;
    for (int call = 0; call < 4; ++call) {
      const unsigned long frames = call == 3 ? 0 : rng() % 5000;
      auto src = Noise16(std::max<size_t>(1, frames * inCh), round);
      const unsigned long room = (rng() % 6000) * outCh * 2 + (rng() % 3);
      std::vector<uint16_t> dst(room / 2 + 64, kGuard);
      unsigned long made = 0;
      const long r =
          L(c.Convert(call == 3 ? nullptr : reinterpret_cast<unsigned char*>(src.data()), frames,
                      reinterpret_cast<unsigned char*>(dst.data()), room, &made));
      for (size_t i = room / 2; i < dst.size(); ++i) ASSERT_EQ(dst[i], kGuard) << round;
      if (r == 0) {
        ASSERT_LE(made * outCh * 2, room) << round;
      }
    }
  }
}

}  // namespace
