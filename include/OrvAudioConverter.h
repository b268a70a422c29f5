// OrvAudioConverter: interleaved 16-bit PCM from one channel layout and sample
// rate to another. Channels are selected by speaker position or mixed (stereo
// to mono, or the multichannel down-mix to mono or stereo); where the rates
// differ a polyphase Kaiser-windowed sinc filter converts the rate.
//
// Beside it stand four stateless helpers on interleaved native-order 16-bit
// samples: ExtractsAudioChannel, IsChannelExtractsPossible, ConvertMono2Stereo
// and ConvertStereo2Mono.
#ifndef ORV_AUDIO_CONVERTER_H_
#define ORV_AUDIO_CONVERTER_H_

#include <OrvExport.h>

#include <cstdint>

class OrvMemory;

// Members whose signatures carry the library's internal types stay inside the
// shared library: they are not part of its exported interface.
#if defined(_WIN32) || defined(ORV_STATIC_INTERNAL)
#define ORV_AUCONV_INTERNAL
#else
#define ORV_AUCONV_INTERNAL __attribute__((visibility("hidden")))
#endif

namespace orv {
class CMtSampleData;
class FsConvEngine;
}  // namespace orv

// One side of a conversion.
struct ORV_AUCONV_PARAM {
  uint32_t channels;     // interleaved channels of one frame
  uint32_t channelMask;  // speaker positions (below), ascending bit order = slot order
  uint32_t samplesPerSec;
  uint32_t bitsPerSample;  // only 16 is accepted
};

enum ORV_AUCONV_DOWNMIX_MODE {
  ORV_AUCONV_DOWNMIX_NONE = 0,            // output slots filled by speaker position only
  ORV_AUCONV_DOWNMIX_STEREO_TO_MONO = 1,  // mono destination: average of front left and right
  ORV_AUCONV_DOWNMIX_FULL = 2,            // three or more channels: matrix to mono or stereo
};

// Speaker positions of the channel mask.
enum ORV_AUCONV_SPEAKER {
  ORV_AUCONV_FRONT_LEFT = 0x001,
  ORV_AUCONV_FRONT_RIGHT = 0x002,
  ORV_AUCONV_FRONT_CENTER = 0x004,
  ORV_AUCONV_LOW_FREQUENCY = 0x008,
  ORV_AUCONV_BACK_LEFT = 0x010,
  ORV_AUCONV_BACK_RIGHT = 0x020,
  ORV_AUCONV_FRONT_LEFT_OF_CENTER = 0x040,
  ORV_AUCONV_FRONT_RIGHT_OF_CENTER = 0x080,
  ORV_AUCONV_BACK_CENTER = 0x100,
};

// Results of OrvAudioConverter, negative numbers carried in an unsigned long:
// compare as (long)result.
enum ORV_AUCONV_RESULT {
  ORV_AUCONV_OK = 0,
  ORV_AUCONV_ERR_MEMORY = -1,    // allocation failed (also: the rate engine cannot be made)
  ORV_AUCONV_ERR_PARAM = -2,     // bad pointer, count or mode, or a failure of the sample store
  ORV_AUCONV_ERR_NOT_INIT = -3,  // Convert before a successful Init
  ORV_AUCONV_ERR_BUFFER = -4,    // destination too small; nothing written
  ORV_AUCONV_ERR_CHANNELS = -5,  // too many channels for rate conversion
  ORV_AUCONV_ERR_MASK = -6,      // channel count and mask disagree, or layout not mixable
  ORV_AUCONV_ERR_RATE = -7,      // ConvertS with two different rates
  ORV_AUCONV_ERR_FORMAT = -8,    // sample size other than 16 bits
};

class ORV_API OrvAudioConverter {
 public:
  OrvAudioConverter();
  virtual ~OrvAudioConverter();
  // The converter owns its store, engine and buffers: it is not copyable.
  OrvAudioConverter(const OrvAudioConverter&) = delete;
  OrvAudioConverter& operator=(const OrvAudioConverter&) = delete;

  // Sets up a conversion. Starts from a cleared object; on failure it stays
  // cleared. A mode other than the three named values answers -2, a channel
  // count of 0 on either side -2, a rate pair that differs with a rate of 0 or
  // above 2^31 - 1 answers -1 (no rate engine can be made for it).
  unsigned long Init(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                     ORV_AUCONV_DOWNMIX_MODE mode);
  // Converts `srcFrames` frames of `src` into `dst` (capacity `dstBytes`),
  // frames written in *dstFrames. With differing rates, `src` null and
  // `srcFrames` 0 is the end of the stream: the filter is drained and the next
  // call starts a new stream. One call carries at most 4 GiB - 1 bytes of PCM
  // on either side; larger frame counts answer -2 before anything is touched.
  unsigned long Convert(unsigned char* src, unsigned long srcFrames, unsigned char* dst,
                        unsigned long dstBytes, unsigned long* dstFrames);
  // One-shot conversion for equal rates; different rates answer -7.
  static unsigned long ConvertS(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                                ORV_AUCONV_DOWNMIX_MODE mode, unsigned char* src,
                                unsigned long srcFrames, unsigned char* dst,
                                unsigned long dstBytes);
  // Frees the working memory and drains the filter without delivering its
  // tail; the configuration stays. 1 when a tail was dropped (or the buffer to
  // drain into could not be had), else 0.
  unsigned long ReleaseBuffer();
  // True when the number of set bits among the nine mask bits equals `channels`.
  static bool CheckChannelMask(unsigned long channels, unsigned long mask);

 protected:
  void ClearAll();
  unsigned long InitFsConv();
  ORV_AUCONV_INTERNAL unsigned long DoFsConv(orv::CMtSampleData* sampleData, const int* offsets,
                                             unsigned char* dst, unsigned long dstBytes,
                                             unsigned long* dstFrames);
  unsigned long SetFsConvOutDataToOutputBuffer(const float* floatData, unsigned long frames,
                                               unsigned long stride, const int* offsets,
                                               unsigned char* dst, unsigned long dstBytes);
  void ReleaseInternalBuffer();

  ORV_AUCONV_INTERNAL static unsigned long ConvertChannel(
      const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out, ORV_AUCONV_DOWNMIX_MODE mode,
      unsigned char* src, unsigned long frames, unsigned char* dst, unsigned long dstBytes,
      orv::CMtSampleData* sampleData);
  static unsigned long ConvertChannelWithoutChannelMix(const ORV_AUCONV_PARAM& in,
                                                       const ORV_AUCONV_PARAM& out,
                                                       unsigned char* src, unsigned long frames,
                                                       unsigned char* dst, unsigned long dstBytes);
  ORV_AUCONV_INTERNAL static unsigned long ConvertStereoToMono(const ORV_AUCONV_PARAM& in,
                                                               unsigned char* src,
                                                               unsigned long frames,
                                                               orv::CMtSampleData* sampleData);
  ORV_AUCONV_INTERNAL static unsigned long DownMix(const ORV_AUCONV_PARAM& in, unsigned char* src,
                                                   unsigned long frames, unsigned long outChannels,
                                                   orv::CMtSampleData* sampleData);
  static void FloatToInt16LSB(const float* value, unsigned char* out);
  static void FloatToInt24LSB(const float* value, unsigned char* out);
  static int GetChannelOffset(unsigned long mask, unsigned long bit);
  static unsigned long GetMaskCount(unsigned long mask);
  static int GetMtSampleDataStreamType(unsigned long bits);
  static unsigned long GetUseInputChannels(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                                           ORV_AUCONV_DOWNMIX_MODE mode, unsigned long* usedMask);
  static void MakeUseInputChannelOffset(int* offsets, const ORV_AUCONV_PARAM& in,
                                        const ORV_AUCONV_PARAM& out);

 private:
  bool initialised_;
  ORV_AUCONV_PARAM in_;
  ORV_AUCONV_PARAM out_;
  ORV_AUCONV_DOWNMIX_MODE mode_;
  orv::CMtSampleData* sampleData_;
  unsigned long usedInputCount_;
  unsigned long usedInputSlots_;
  uint64_t totalInputFrames_;
  uint64_t totalOutputFrames_;
  orv::FsConvEngine* engine_;
  unsigned long maxInputBlock_;
  unsigned long maxOutputBlock_;
  unsigned long rateChannels_;
  unsigned long rateMask_;
  OrvMemory* inputFloat_;
  OrvMemory* outputFloat_;
  bool flushed_;
};

// Copies the samples of every destination position that the source holds;
// positions: front left, front right, front centre, low frequency, back left,
// back right (mask bits 0x01 to 0x20, higher bits ignored). Destination slots
// whose position the source lacks keep what `dst` held. Always true.
ORV_API bool ExtractsAudioChannel(unsigned long frames, unsigned long srcChannels,
                                  unsigned long srcMask, unsigned char* src,
                                  unsigned long dstChannels, unsigned long dstMask,
                                  unsigned char* dst);
// True when the six positions set in `mask` number exactly `channels`.
ORV_API bool IsChannelExtractsPossible(unsigned long channels, unsigned long mask);
// Each mono sample to both samples of a stereo frame.
ORV_API void ConvertMono2Stereo(unsigned long frames, unsigned char* src, unsigned char* dst);
// left / 2 + right / 2, each halved with truncation toward zero before adding.
ORV_API void ConvertStereo2Mono(unsigned long frames, unsigned char* src, unsigned char* dst);

#endif  // ORV_AUDIO_CONVERTER_H_
