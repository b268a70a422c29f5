#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "audio/mt_sample_data.h"

namespace {

using orv::CMtSampleData;

// A store of `channels` channels holding `values` per channel (all the same length).
void Fill(CMtSampleData* store, const std::vector<std::vector<float>>& values) {
  ASSERT_EQ(store->Allocate(static_cast<uint32_t>(values.size()),
                            static_cast<uint32_t>(values[0].size())),
            S_OK);
  for (size_t c = 0; c < values.size(); ++c) {
    for (size_t f = 0; f < values[c].size(); ++f) {
      *store->GetSamplePointer(static_cast<uint32_t>(c), static_cast<uint32_t>(f)) = values[c][f];
    }
  }
}

float At(CMtSampleData& store, uint32_t channel, uint32_t frame) {
  return *store.GetSamplePointer(channel, frame);
}

TEST(SampleDataStreams, ReadScalesEachType) {
  CMtSampleData store;
  ASSERT_EQ(store.Allocate(1, 2), S_OK);
  const unsigned char le16[] = {0x00, 0x80, 0xFF, 0x7F};  // -32768, 32767
  ASSERT_EQ(store.ReadInterleaved(orv::StreamInt16LSB, 0, 2, le16, 4), S_OK);
  EXPECT_EQ(At(store, 0, 0), -1.0f);
  EXPECT_EQ(At(store, 0, 1), static_cast<float>(32767 * 3.0517578125e-5));
  const unsigned char be16[] = {0x40, 0x00, 0xC0, 0x00};  // 16384, -16384
  ASSERT_EQ(store.ReadInterleaved(orv::StreamInt16MSB, 0, 2, be16, 4), S_OK);
  EXPECT_EQ(At(store, 0, 0), 0.5f);
  EXPECT_EQ(At(store, 0, 1), -0.5f);
  const unsigned char le24[] = {0x00, 0x00, 0x80, 0x01, 0x00, 0x00};  // -2^23, 1
  ASSERT_EQ(store.ReadInterleaved(orv::StreamInt24LSB, 0, 2, le24, 6), S_OK);
  EXPECT_EQ(At(store, 0, 0), -1.0f);
  EXPECT_EQ(At(store, 0, 1), 1.1920928955078125e-7f);
  const unsigned char be24[] = {0x40, 0x00, 0x00, 0xFF, 0xFF, 0xFF};  // 2^22, -1
  ASSERT_EQ(store.ReadInterleaved(orv::StreamInt24MSB, 0, 2, be24, 6), S_OK);
  EXPECT_EQ(At(store, 0, 0), 0.5f);
  EXPECT_EQ(At(store, 0, 1), -1.1920928955078125e-7f);
  const unsigned char le32[] = {0x00, 0x00, 0x00, 0xC0, 0xFF, 0xFF, 0xFF, 0x7F};
  ASSERT_EQ(store.ReadInterleaved(orv::StreamInt32LSB, 0, 2, le32, 8), S_OK);
  EXPECT_EQ(At(store, 0, 0), -0.5f);
  EXPECT_EQ(At(store, 0, 1), 1.0f);  // 2147483647 * 2^-31 rounds to 1.0 in float
  const unsigned char u8[] = {0x80, 0xFF};
  ASSERT_EQ(store.ReadInterleaved(orv::StreamUInt8, 0, 2, u8, 2), S_OK);
  EXPECT_EQ(At(store, 0, 0), 0.0f);
  EXPECT_EQ(At(store, 0, 1), 0.9921875f);
  const unsigned char u8low[] = {0x00, 0x01};
  ASSERT_EQ(store.ReadInterleaved(orv::StreamUInt8, 0, 2, u8low, 2), S_OK);
  EXPECT_EQ(At(store, 0, 0), -1.0f);
  EXPECT_EQ(At(store, 0, 1), -0.9921875f);
  float floats[2] = {0.25f, -3.0f};
  ASSERT_EQ(store.ReadInterleaved(orv::StreamFloat32LSB, 0, 2, floats, 8), S_OK);
  EXPECT_EQ(At(store, 0, 1), -3.0f);
  EXPECT_EQ(store.ReadInterleaved(orv::StreamFloat32MSB, 0, 2, floats, 8), E_INVALIDARG);
  EXPECT_EQ(store.ReadInterleaved(2, 0, 2, floats, 8), E_INVALIDARG);
}

TEST(SampleDataStreams, WriteFloorsAndClipsEachType) {
  CMtSampleData store;
  Fill(&store, {{1.0f, -1.0f, 0.5f, -0.00001f, 2.0f, -0.99999f}});
  unsigned char out[6 * 4];
  ASSERT_EQ(store.WriteInterleaved(orv::StreamInt16LSB, 0, 6, out, sizeof(out)), S_OK);
  const int16_t* s16 = reinterpret_cast<const int16_t*>(out);
  EXPECT_EQ(s16[0], 32767);  // 32768 clipped
  EXPECT_EQ(s16[1], -32768);
  EXPECT_EQ(s16[2], 16384);
  EXPECT_EQ(s16[3], -1);  // floor, not round to nearest
  EXPECT_EQ(s16[4], 32767);
  EXPECT_EQ(s16[5], -32768);  // floor(-32767.67)
  ASSERT_EQ(store.WriteInterleaved(orv::StreamInt16MSB, 2, 1, out, 2), S_OK);
  EXPECT_EQ(out[0], 0x40);
  EXPECT_EQ(out[1], 0x00);
  ASSERT_EQ(store.WriteInterleaved(orv::StreamInt24LSB, 0, 4, out, 12), S_OK);
  EXPECT_EQ(out[0], 0xFF);  // 8388607
  EXPECT_EQ(out[1], 0xFF);
  EXPECT_EQ(out[2], 0x7F);
  EXPECT_EQ(out[3], 0x00);  // -8388608
  EXPECT_EQ(out[5], 0x80);
  EXPECT_EQ(out[9], 0xAC);  // floor(-83.88608) = -84 = 0xFFFFAC
  EXPECT_EQ(out[10], 0xFF);
  ASSERT_EQ(store.WriteInterleaved(orv::StreamInt24MSB, 2, 1, out, 3), S_OK);
  EXPECT_EQ(out[0], 0x40);
  EXPECT_EQ(out[1], 0x00);
  EXPECT_EQ(out[2], 0x00);
  ASSERT_EQ(store.WriteInterleaved(orv::StreamInt32LSB, 0, 3, out, 12), S_OK);
  int32_t s32[3];
  std::memcpy(s32, out, 12);
  EXPECT_EQ(s32[0], 2147483647);
  EXPECT_EQ(s32[1], -2147483647 - 1);
  EXPECT_EQ(s32[2], 1073741824);
  ASSERT_EQ(store.WriteInterleaved(orv::StreamUInt8, 0, 4, out, 4), S_OK);
  EXPECT_EQ(out[0], 255);
  EXPECT_EQ(out[1], 0);
  EXPECT_EQ(out[2], 192);
  EXPECT_EQ(out[3], 127);
  ASSERT_EQ(store.WriteInterleaved(orv::StreamFloat32MSB, 2, 1, out, 4), S_OK);
  EXPECT_EQ(out[0], 0x3F);  // 0.5f = 0x3F000000, high byte first
  EXPECT_EQ(out[3], 0x00);
  EXPECT_EQ(store.WriteInterleaved(7, 0, 1, out, 4), E_INVALIDARG);
}

TEST(SampleDataStreams, SlotSelectionAndRanges) {
  CMtSampleData store;
  ASSERT_EQ(store.Allocate(2, 4), S_OK);
  // Three slots a frame; the store reads slots 0 and 2.
  const int16_t frames[6] = {100, 200, 300, 400, 500, 600};
  ASSERT_EQ(store.SetValidFrames(0), S_OK);
  ASSERT_EQ(store.ReadChannels(orv::StreamInt16LSB, 1, 2, frames, 12, 3, 0x5), S_OK);
  EXPECT_EQ(store.GetValidFrames(), 3u);
  EXPECT_EQ(At(store, 0, 1), static_cast<float>(100 * 3.0517578125e-5));
  EXPECT_EQ(At(store, 1, 1), static_cast<float>(300 * 3.0517578125e-5));
  EXPECT_EQ(At(store, 1, 2), static_cast<float>(600 * 3.0517578125e-5));
  EXPECT_EQ(store.ReadChannels(orv::StreamInt16LSB, 0, 2, frames, 12, 3, 0x4), E_INVALIDARG);
  EXPECT_EQ(store.ReadChannels(orv::StreamInt16LSB, 3, 2, frames, 12, 3, 0x5), E_INVALIDARG);
  EXPECT_EQ(store.ReadChannels(orv::StreamFloat32MSB, 0, 2, frames, 12, 3, 0x5), E_INVALIDARG);
  EXPECT_EQ(store.ReadChannel(orv::StreamInt16LSB, 0, 0, 2, frames, 12, 3, 0x6), E_INVALIDARG);
  EXPECT_EQ(store.ReadChannel(orv::StreamInt16LSB, 2, 0, 2, frames, 12, 3, 0x2), E_INVALIDARG);
  ASSERT_EQ(store.ReadChannel(orv::StreamInt16LSB, 1, 0, 2, frames, 12, 3, 0x2), S_OK);
  EXPECT_EQ(At(store, 1, 0), static_cast<float>(200 * 3.0517578125e-5));
  EXPECT_EQ(store.GetValidFrames(), 3u);  // never shrinks on read
  // Zero frames leave the valid count at what SetValidFrames gave.
  ASSERT_EQ(store.SetValidFrames(1), S_OK);
  ASSERT_EQ(store.ReadInterleaved(orv::StreamInt16LSB, 0, 0, frames, 0), S_OK);
  EXPECT_EQ(store.GetValidFrames(), 1u);
  EXPECT_EQ(store.SetValidFrames(5), E_INVALIDARG);
  unsigned char out[16];
  EXPECT_EQ(store.WriteInterleaved(orv::StreamInt16LSB, 0, 2, out, 16), E_INVALIDARG);
  EXPECT_EQ(store.WriteChannel(orv::StreamInt16LSB, 2, 0, 1, out, 16), E_INVALIDARG);
  ASSERT_EQ(store.WriteChannel(orv::StreamInt16LSB, 1, 0, 1, out, 16), S_OK);
  EXPECT_EQ(reinterpret_cast<int16_t*>(out)[0], 200);
  EXPECT_EQ(store.GetSamplePointer(2, 0), nullptr);
  store.Release();
  EXPECT_EQ(store.GetCapacityFrames(), 0u);
  EXPECT_EQ(store.GetChannels(), 2u);
}

TEST(SampleDataMix, MixToMonoAveragesAndClips) {
  CMtSampleData store;
  Fill(&store, {{1.0f, 1.0f, 0.75f}, {1.0f, -1.0f, 0.75f}});
  ASSERT_EQ(store.MixToMono(2.0), S_OK);
  EXPECT_EQ(store.GetChannels(), 1u);
  EXPECT_EQ(At(store, 0, 0), 1.0f);
  EXPECT_EQ(At(store, 0, 1), 0.0f);
  EXPECT_EQ(At(store, 0, 2), 0.75f);
  EXPECT_EQ(store.GetSamplePointer(1, 0), nullptr);
  Fill(&store, {{1.0f}, {1.0f}, {1.0f}});
  ASSERT_EQ(store.MixToMono(2.0), S_OK);
  EXPECT_EQ(At(store, 0, 0), 1.0f);  // 1.5 clipped
}

// 5.1 in mask order L R C LFE Ls Rs.
constexpr float kL = 0.1f, kR = 0.2f, kC = 0.3f, kLfe = 0.9f, kLs = 0.05f, kRs = -0.15f;
const double K = static_cast<double>(0.707f);
const double H = static_cast<double>(1.4f);

TEST(SampleDataMix, FiveOneToMonoAndStereo) {
  CMtSampleData store;
  Fill(&store, {{kL}, {kR}, {kC}, {kLfe}, {kLs}, {kRs}});
  ASSERT_EQ(store.MixDown(0x3F, 0.707, 0.707, 1), S_OK);
  ASSERT_EQ(store.GetChannels(), 1u);
  const float front = static_cast<float>(K * H * kC + K * kL + K * kR);
  EXPECT_EQ(At(store, 0, 0), static_cast<float>(front + K * K * kLs + K * K * kRs));
  EXPECT_NEAR(At(store, 0, 0), 0.707 * kL + 0.707 * kR + 0.9898 * kC + 0.49985 * (kLs + kRs), 1e-6);

  Fill(&store, {{kL}, {kR}, {kC}, {kLfe}, {kLs}, {kRs}});
  ASSERT_EQ(store.MixDown(0x3F, 0.707, 0.707, 2), S_OK);
  ASSERT_EQ(store.GetChannels(), 2u);
  EXPECT_EQ(At(store, 0, 0), static_cast<float>(static_cast<float>(K * kC + kL) + K * kLs));
  EXPECT_EQ(At(store, 1, 0), static_cast<float>(static_cast<float>(K * kC + kR) + K * kRs));
  EXPECT_EQ(store.GetCapacityFrames(), store.GetValidFrames());

  Fill(&store, {{1.0f}, {1.0f}, {1.0f}, {1.0f}, {1.0f}, {1.0f}});
  ASSERT_EQ(store.MixDown(0x3F, 0.707, 0.707, 2), S_OK);
  EXPECT_EQ(At(store, 0, 0), 1.0f);
  EXPECT_EQ(At(store, 1, 0), 1.0f);
}

TEST(SampleDataMix, SurroundLayouts) {
  CMtSampleData store;
  // L R C S: back centre enters both sides at s times K.
  Fill(&store, {{kL}, {kR}, {kC}, {0.4f}});
  ASSERT_EQ(store.MixDown(0x107, 0.707, 0.707, 2), S_OK);
  EXPECT_EQ(At(store, 0, 0), static_cast<float>(static_cast<float>(K * kC + kL) + K * K * 0.4f));
  EXPECT_EQ(At(store, 1, 0), static_cast<float>(static_cast<float>(K * kC + kR) + K * K * 0.4f));
  // 7.1 (0xFF): the surround test fails on five exact bits, nothing is added.
  Fill(&store, {{kL}, {kR}, {kC}, {kLfe}, {kLs}, {kRs}, {0.5f}, {0.5f}});
  ASSERT_EQ(store.MixDown(0xFF, 0.707, 0.707, 2), S_OK);
  EXPECT_EQ(At(store, 0, 0), static_cast<float>(K * kC + kL));
  EXPECT_EQ(At(store, 1, 0), static_cast<float>(K * kC + kR));
  // C Ls Rs to stereo.
  Fill(&store, {{kC}, {kLs}, {kRs}});
  ASSERT_EQ(store.MixDown(0x34, 0.707, 0.707, 2), S_OK);
  EXPECT_EQ(At(store, 0, 0), static_cast<float>(static_cast<float>(K * kC) + K * kLs));
  EXPECT_EQ(At(store, 1, 0), static_cast<float>(static_cast<float>(K * kC) + K * kRs));
  // C alone to mono passes unscaled; L R to mono.
  Fill(&store, {{kC}});
  ASSERT_EQ(store.MixDown(0x4, 0.707, 0.707, 1), S_OK);
  EXPECT_EQ(At(store, 0, 0), kC);
  Fill(&store, {{kL}, {kR}, {0.3f}});
  ASSERT_EQ(store.MixDown(0x103, 0.707, 0.707, 1), S_OK);
  EXPECT_EQ(At(store, 0, 0),
            static_cast<float>(static_cast<float>(K * kL + K * kR) + K * K * 0.3f));
}

TEST(SampleDataMix, RefusalsLeaveChannelsAsTheyWere) {
  CMtSampleData store;
  for (uint32_t mask : {0x05u, 0x06u, 0x01u, 0x02u, 0x30u}) {
    Fill(&store, {{kL}, {kC}, {0.5f}});
    EXPECT_EQ(store.MixDown(mask, 0.707, 0.707, 2), E_UNEXPECTED) << mask;
    EXPECT_EQ(store.GetChannels(), 3u);
    EXPECT_EQ(At(store, 0, 0), kL);
    EXPECT_EQ(At(store, 1, 0), kC);
  }
  EXPECT_EQ(store.MixDown(0x07, 0.707, 0.707, 3), E_INVALIDARG);
  EXPECT_EQ(store.MixDown(0x07, 0.707, 0.707, 0), E_INVALIDARG);
  EXPECT_EQ(store.GetChannels(), 3u);
}

}  // namespace
