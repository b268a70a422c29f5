// CMtSampleData: the working store of the audio converter. One float array per
// channel (nominal range -1.0 to 1.0), filled from interleaved PCM, mixed in
// place and read back as interleaved PCM or float.
//
// Every operation answers a COM-style result: S_OK, E_INVALIDARG, E_FAIL or
// E_UNEXPECTED. Byte counts passed with the buffers are carried but not tested:
// the converter checks sizes before it calls in.
#ifndef ORV_AUDIO_MT_SAMPLE_DATA_H_
#define ORV_AUDIO_MT_SAMPLE_DATA_H_

#include <OrvPlatformTypes.h>

#include <cstdint>
#include <vector>

namespace orv {

// PCM layouts the store reads and writes.
enum MtStreamType : int {
  StreamInt16MSB = 0,
  StreamInt24MSB = 1,
  StreamFloat32MSB = 3,  // written only
  StreamInt16LSB = 16,
  StreamInt24LSB = 17,
  StreamInt32LSB = 18,
  StreamFloat32LSB = 19,  // native-order float
  StreamUInt8 = 101,      // unsigned, offset 128
};

// Bytes of one sample of `type`, 0 for an unknown type.
unsigned MtStreamSampleBytes(int type);

// Float to 16-bit and 24-bit little-endian PCM: scaled by 2^15 or 2^23, the
// product rounded to single precision and floored (no rounding to nearest, no
// dither), then clipped to the integer range. A NaN writes 0.
void MtFloatToInt16LSB(float value, unsigned char* out);
void MtFloatToInt24LSB(float value, unsigned char* out);

class CMtSampleData {
 public:
  CMtSampleData();
  virtual ~CMtSampleData();
  CMtSampleData(const CMtSampleData&) = delete;
  CMtSampleData& operator=(const CMtSampleData&) = delete;

  // `channels` zero-filled arrays of `frames` floats; valid frames = capacity.
  HRESULT Allocate(uint32_t channels, uint32_t frames);
  // Frees every array; valid frames and capacity 0, the channel count stays.
  HRESULT Release();
  HRESULT SetValidFrames(uint32_t frames);
  HRESULT ClearChannels();
  float* GetSamplePointer(uint32_t channel, uint32_t frame);

  uint32_t GetChannels() const { return channels_; }
  uint32_t GetValidFrames() const { return validFrames_; }
  uint32_t GetCapacityFrames() const { return capacityFrames_; }

  // All channels from interleaved data of exactly the store's channel count.
  HRESULT ReadInterleaved(int streamType, uint32_t start, uint32_t frames, const void* src,
                          uint64_t srcBytes);
  // From data of `stride` samples a frame: store channel n reads the n-th set
  // bit (upward) of `slotMask`.
  HRESULT ReadChannels(int streamType, uint32_t start, uint32_t frames, const void* src,
                       uint64_t srcBytes, uint32_t stride, uint32_t slotMask);
  // One store channel from the single slot that `slotMask` names.
  HRESULT ReadChannel(int streamType, uint32_t channel, uint32_t start, uint32_t frames,
                      const void* src, uint64_t srcBytes, uint32_t stride, uint32_t slotMask);
  HRESULT WriteInterleaved(int streamType, uint32_t start, uint32_t frames, void* dst,
                           uint64_t dstBytes);
  // One channel, its samples adjacent in `dst`.
  HRESULT WriteChannel(int streamType, uint32_t channel, uint32_t start, uint32_t frames, void* dst,
                       uint64_t dstBytes);

  // Sums every channel into channel 0 in single precision, divides by
  // `divisor` (as float) and clips; one channel remains.
  HRESULT MixToMono(double divisor);
  // The multichannel matrix to mono (`target` 1) or stereo (2). `mask` is the
  // speaker mask of the store's channels. On any failure the store is as it was.
  HRESULT MixDown(uint32_t mask, double centreLevel, double surroundLevel, int target);

 private:
  HRESULT ReadSlots(int streamType, uint32_t firstChannel, uint32_t channelCount, uint32_t start,
                    uint32_t frames, const unsigned char* src, uint32_t stride,
                    const uint32_t* slots);
  HRESULT WriteSamples(int streamType, const float* samples, uint32_t frames, unsigned char* dst,
                       uint32_t step);
  void ReplaceChannels(float* const* arrays, uint32_t count);

  std::vector<float*> list_;
  uint32_t validFrames_;
  uint32_t capacityFrames_;
  uint32_t channels_;
};

}  // namespace orv

#endif  // ORV_AUDIO_MT_SAMPLE_DATA_H_
