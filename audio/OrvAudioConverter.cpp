#include <OrvAudioConverter.h>
#include <OrvMemory.h>

#include <climits>
#include <cstring>
#include <new>

#include "audio/fs_conv.h"
#include "audio/mt_sample_data.h"

using orv::CMtSampleData;
using orv::FsConvEngine;

namespace {

constexpr unsigned long kMaskBits = 9;
constexpr unsigned long kFrontLeft = 0x1, kFrontRight = 0x2;
// One call carries at most this many bytes of PCM on either side: the sample
// store counts frames in 32 bits and the block copy takes 32-bit sizes.
constexpr uint64_t kMaxCallBytes = 0xFFFFFFFFull;

inline unsigned long Code(long code) { return static_cast<unsigned long>(code); }

bool KnownMode(ORV_AUCONV_DOWNMIX_MODE mode) {
  return mode == ORV_AUCONV_DOWNMIX_NONE || mode == ORV_AUCONV_DOWNMIX_STEREO_TO_MONO ||
         mode == ORV_AUCONV_DOWNMIX_FULL;
}

// True when `frames` frames of `channels` 16-bit samples stay within one call's limit.
bool FitsCall(unsigned long frames, uint32_t channels) {
  if (channels == 0) return true;
  return static_cast<uint64_t>(frames) <= kMaxCallBytes / (2ull * channels);
}

}  // namespace

// --- small statics ---------------------------------------------------------

unsigned long OrvAudioConverter::GetMaskCount(unsigned long mask) {
  unsigned long count = 0;
  for (unsigned long b = 0; b < kMaskBits; ++b) count += (mask >> b) & 1u;
  return count;
}

bool OrvAudioConverter::CheckChannelMask(unsigned long channels, unsigned long mask) {
  return GetMaskCount(mask) == channels;
}

int OrvAudioConverter::GetChannelOffset(unsigned long mask, unsigned long bit) {
  if (bit == 0 || (bit & (bit - 1)) != 0 || bit >= (1ul << kMaskBits) || !(mask & bit)) return -1;
  return static_cast<int>(GetMaskCount(mask & (bit - 1)));
}

int OrvAudioConverter::GetMtSampleDataStreamType(unsigned long bits) {
  switch (bits) {
    case 8:
      return orv::StreamUInt8;
    case 24:
      return orv::StreamInt24LSB;
    case 32:
      return orv::StreamInt32LSB;
    default:
      return orv::StreamInt16LSB;
  }
}

void OrvAudioConverter::FloatToInt16LSB(const float* value, unsigned char* out) {
  orv::MtFloatToInt16LSB(*value, out);
}

void OrvAudioConverter::FloatToInt24LSB(const float* value, unsigned char* out) {
  orv::MtFloatToInt24LSB(*value, out);
}

unsigned long OrvAudioConverter::GetUseInputChannels(const ORV_AUCONV_PARAM& in,
                                                     const ORV_AUCONV_PARAM& out,
                                                     ORV_AUCONV_DOWNMIX_MODE mode,
                                                     unsigned long* usedMask) {
  unsigned long count = 0, slots = 0;
  const bool outHasFront = (out.channelMask & (kFrontLeft | kFrontRight)) != 0;
  if (in.channels == 1) {
    if (!(out.channels > 1 && !outHasFront)) {
      count = 1;
      slots = 1;
    }
  } else if (in.channels > 2 && mode == ORV_AUCONV_DOWNMIX_FULL) {
    if (!(out.channels > 1 && !outHasFront)) {
      count = in.channels;
      slots = in.channels >= 32 ? 0xFFFFFFFFul : (1ul << in.channels) - 1;
    }
  } else if (out.channels == 1 &&
             ((in.channels == 2 && mode != ORV_AUCONV_DOWNMIX_NONE) ||
              (in.channels > 2 && mode == ORV_AUCONV_DOWNMIX_STEREO_TO_MONO))) {
    const unsigned long m = in.channelMask & 3u;
    if (m == 1 || m == 2) {
      count = 1;
      slots = 1;
    } else if (m == 3) {
      count = 2;
      slots = 3;
    }
  } else {
    unsigned long slot = 0;
    for (unsigned long b = 0; b < kMaskBits; ++b) {
      const unsigned long bit = 1ul << b;
      if ((in.channelMask & bit) && (out.channelMask & bit)) {
        slots |= 1ul << slot;
        ++count;
      }
      if (in.channelMask & bit) ++slot;
    }
  }
  if (usedMask != nullptr) *usedMask = slots;
  return count;
}

void OrvAudioConverter::MakeUseInputChannelOffset(int* offsets, const ORV_AUCONV_PARAM& in,
                                                  const ORV_AUCONV_PARAM& out) {
  for (unsigned long i = 0; i < kMaskBits; ++i) offsets[i] = -1;
  if (out.channels == 1 && (in.channelMask == 0 || out.channelMask == 0)) {
    offsets[0] = 0;
    return;
  }
  unsigned long entry = 0;
  for (unsigned long b = 0; b < kMaskBits; ++b) {
    const unsigned long bit = 1ul << b;
    if (!(out.channelMask & bit)) continue;
    if (in.channels == 1) {
      offsets[entry++] = (bit == kFrontLeft || bit == kFrontRight) ? 0 : -1;
    } else {
      offsets[entry++] = GetChannelOffset(in.channelMask, bit);
    }
  }
}

// --- life cycle --------------------------------------------------------------

OrvAudioConverter::OrvAudioConverter()
    : initialised_(false),
      in_(),
      out_(),
      mode_(ORV_AUCONV_DOWNMIX_NONE),
      sampleData_(nullptr),
      usedInputCount_(0),
      usedInputSlots_(0),
      totalInputFrames_(0),
      totalOutputFrames_(0),
      engine_(nullptr),
      maxInputBlock_(0),
      maxOutputBlock_(0),
      rateChannels_(0),
      rateMask_(0),
      inputFloat_(nullptr),
      outputFloat_(nullptr),
      flushed_(true) {
  ClearAll();
}

OrvAudioConverter::~OrvAudioConverter() { ClearAll(); }

void OrvAudioConverter::ClearAll() {
  delete sampleData_;
  sampleData_ = nullptr;
  delete engine_;
  engine_ = nullptr;
  delete inputFloat_;
  inputFloat_ = nullptr;
  delete outputFloat_;
  outputFloat_ = nullptr;
  initialised_ = false;
  maxInputBlock_ = 0;
  maxOutputBlock_ = 0;
  totalInputFrames_ = 0;
  totalOutputFrames_ = 0;
  rateChannels_ = 0;
  rateMask_ = 0;
  usedInputCount_ = 0;
  usedInputSlots_ = 0;
  flushed_ = true;
}

void OrvAudioConverter::ReleaseInternalBuffer() {}

namespace {

// The checks that Init and ConvertChannel share: mode, channel counts, masks
// and sample size, in that order of precedence after the mode.
long CheckLayouts(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                  ORV_AUCONV_DOWNMIX_MODE mode) {
  if (!KnownMode(mode)) return ORV_AUCONV_ERR_PARAM;
  // A frame without channels carries nothing: a bad count, whatever the mask says.
  if (in.channels == 0 || out.channels == 0) return ORV_AUCONV_ERR_PARAM;
  if (in.channels > 1 && !OrvAudioConverter::CheckChannelMask(in.channels, in.channelMask)) {
    return ORV_AUCONV_ERR_MASK;
  }
  if (!OrvAudioConverter::CheckChannelMask(out.channels, out.channelMask)) {
    if (out.channels > 1) return ORV_AUCONV_ERR_MASK;
    if (in.channels > 1 && mode == ORV_AUCONV_DOWNMIX_NONE) return ORV_AUCONV_ERR_MASK;
  }
  if (in.bitsPerSample != 16 || out.bitsPerSample != 16) return ORV_AUCONV_ERR_FORMAT;
  return ORV_AUCONV_OK;
}

}  // namespace

unsigned long OrvAudioConverter::Init(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                                      ORV_AUCONV_DOWNMIX_MODE mode) {
  ClearAll();
  const long layout = CheckLayouts(in, out, mode);
  if (layout != ORV_AUCONV_OK) return Code(layout);
  const bool ratesDiffer = in.samplesPerSec != out.samplesPerSec;
  if (ratesDiffer && in.channels >= 9 && (mode == ORV_AUCONV_DOWNMIX_FULL || out.channels >= 9)) {
    return Code(ORV_AUCONV_ERR_CHANNELS);
  }
  // No rate engine exists for a rate of 0 or one beyond a signed 32-bit count;
  // refused here even when the output would be silence, whose length also
  // divides by the input rate.
  if (ratesDiffer && (in.samplesPerSec == 0 || out.samplesPerSec == 0 ||
                      in.samplesPerSec > INT_MAX || out.samplesPerSec > INT_MAX)) {
    return Code(ORV_AUCONV_ERR_MEMORY);
  }
  in_ = in;
  out_ = out;
  mode_ = mode;
  sampleData_ = new (std::nothrow) CMtSampleData();
  if (sampleData_ == nullptr) return Code(ORV_AUCONV_ERR_MEMORY);
  usedInputCount_ = GetUseInputChannels(in, out, mode, &usedInputSlots_);
  if (usedInputCount_ != 0 && ratesDiffer) {
    const unsigned long result = InitFsConv();
    if (result != 0) {
      ClearAll();
      return result;
    }
  }
  initialised_ = true;
  return 0;
}

unsigned long OrvAudioConverter::InitFsConv() {
  if (in_.bitsPerSample != 16 && in_.bitsPerSample != 24) return Code(ORV_AUCONV_ERR_FORMAT);
  engine_ = new (std::nothrow) FsConvEngine();
  if (engine_ == nullptr) return Code(ORV_AUCONV_ERR_MEMORY);
  if (in_.channels >= 3 && out_.channels >= 2 && mode_ == ORV_AUCONV_DOWNMIX_FULL) {
    rateChannels_ = 2;
    rateMask_ = 3;
  } else {
    rateChannels_ = usedInputCount_ < out_.channels ? usedInputCount_ : out_.channels;
    rateMask_ = 0;
    if (in_.channels > 1 && (out_.channels > 1 || mode_ == ORV_AUCONV_DOWNMIX_NONE)) {
      rateMask_ = in_.channelMask & out_.channelMask;
    }
  }
  const int block =
      engine_->Configure(static_cast<int>(in_.samplesPerSec), static_cast<int>(out_.samplesPerSec),
                         16, static_cast<int>(rateChannels_), 0, orv::kFsConvDefaultBlock);
  if (block < 0) return Code(ORV_AUCONV_ERR_MEMORY);
  maxInputBlock_ = static_cast<unsigned long>(block);
  maxOutputBlock_ = static_cast<unsigned long>(engine_->GetMaxOutputFrames());
  inputFloat_ = new (std::nothrow) OrvMemory();
  outputFloat_ = new (std::nothrow) OrvMemory();
  if (inputFloat_ == nullptr || outputFloat_ == nullptr) return Code(ORV_AUCONV_ERR_MEMORY);
  const uint64_t inBytes = static_cast<uint64_t>(maxInputBlock_) * rateChannels_ * 4;
  const uint64_t outBytes = static_cast<uint64_t>(maxOutputBlock_) * rateChannels_ * 4;
  if (inBytes > 0xFFFFFFFFull || outBytes > 0xFFFFFFFFull) return Code(ORV_AUCONV_ERR_MEMORY);
  if (!inputFloat_->Initialize(nullptr, static_cast<unsigned>(inBytes), 16) ||
      !outputFloat_->Initialize(nullptr, static_cast<unsigned>(outBytes), 16)) {
    return Code(ORV_AUCONV_ERR_MEMORY);
  }
  return 0;
}

// --- streaming ---------------------------------------------------------------

unsigned long OrvAudioConverter::Convert(unsigned char* src, unsigned long srcFrames,
                                         unsigned char* dst, unsigned long dstBytes,
                                         unsigned long* dstFrames) {
  if (!initialised_) return Code(ORV_AUCONV_ERR_NOT_INIT);
  if (dstFrames == nullptr) return Code(ORV_AUCONV_ERR_PARAM);
  *dstFrames = 0;
  if (in_.samplesPerSec == out_.samplesPerSec) {
    const unsigned long result =
        ConvertChannel(in_, out_, mode_, src, srcFrames, dst, dstBytes, sampleData_);
    if (result == 0) *dstFrames = srcFrames;
    return result;
  }
  if (dst == nullptr || (srcFrames > 0 && src == nullptr)) return Code(ORV_AUCONV_ERR_PARAM);
  // A frame count whose byte size no call can carry is refused before the totals move.
  if (!FitsCall(srcFrames, in_.channels)) return Code(ORV_AUCONV_ERR_PARAM);

  totalInputFrames_ += srcFrames;
  const unsigned __int128 product =
      static_cast<unsigned __int128>(totalInputFrames_) * out_.samplesPerSec;
  const uint64_t produced = static_cast<uint64_t>(product / in_.samplesPerSec);
  const uint64_t due = produced > totalOutputFrames_ ? produced - totalOutputFrames_ : 0;
  const unsigned __int128 needed =
      static_cast<unsigned __int128>(out_.bitsPerSample / 8) * out_.channels * due;
  if (static_cast<unsigned __int128>(dstBytes) < needed) return Code(ORV_AUCONV_ERR_BUFFER);

  if (usedInputCount_ == 0) {
    *dstFrames = static_cast<unsigned long>(due);
    totalOutputFrames_ += due;
    std::memset(dst, 0, static_cast<size_t>(needed));
    if (src == nullptr) {
      totalInputFrames_ = 0;
      totalOutputFrames_ = 0;
    }
    return 0;
  }

  int offsets[kMaskBits];
  ORV_AUCONV_PARAM rateIn = in_;
  rateIn.channels = static_cast<uint32_t>(rateChannels_);
  rateIn.channelMask = static_cast<uint32_t>(rateMask_);
  MakeUseInputChannelOffset(offsets, rateIn, out_);

  if (src == nullptr) {
    if (totalInputFrames_ == 0) return 0;
    float* buffer = static_cast<float*>(outputFloat_->GetBuffer());
    if (buffer == nullptr) return Code(ORV_AUCONV_ERR_MEMORY);
    const int frames = engine_->Flush(buffer);
    const unsigned long result = SetFsConvOutDataToOutputBuffer(
        buffer, static_cast<unsigned long>(frames), rateChannels_, offsets, dst, dstBytes);
    *dstFrames = static_cast<unsigned long>(frames);
    totalOutputFrames_ += static_cast<uint64_t>(frames);
    flushed_ = true;
    totalInputFrames_ = 0;
    totalOutputFrames_ = 0;
    return result;
  }
  if (srcFrames == 0) return 0;

  // The store holds the channels the channel stage reads. For a stereo-to-mono
  // average that is always two, also when only one front channel is named and
  // the used count is 1: this corner then gives what the equal-rate path gives.
  const bool stereoToMono =
      out_.channels == 1 && ((in_.channels == 2 && mode_ != ORV_AUCONV_DOWNMIX_NONE) ||
                             (in_.channels > 2 && mode_ == ORV_AUCONV_DOWNMIX_STEREO_TO_MONO));
  const bool downMix = !stereoToMono && in_.channels > 2 && mode_ == ORV_AUCONV_DOWNMIX_FULL;
  const uint32_t storeChannels =
      stereoToMono ? 2u : (downMix ? in_.channels : static_cast<uint32_t>(usedInputCount_));
  if (sampleData_->GetChannels() != storeChannels || sampleData_->GetCapacityFrames() < srcFrames ||
      sampleData_->GetCapacityFrames() == 0) {
    if (FAILED(sampleData_->Allocate(storeChannels, static_cast<uint32_t>(srcFrames)))) {
      return Code(ORV_AUCONV_ERR_MEMORY);
    }
  }
  unsigned long stage = 0;
  if (stereoToMono) {
    stage = ConvertStereoToMono(in_, src, srcFrames, sampleData_);
  } else if (downMix) {
    stage = DownMix(in_, src, srcFrames, out_.channels, sampleData_);
  } else {
    sampleData_->SetValidFrames(0);
    if (FAILED(sampleData_->ReadChannels(GetMtSampleDataStreamType(in_.bitsPerSample), 0,
                                         static_cast<uint32_t>(srcFrames), src,
                                         static_cast<uint64_t>(srcFrames) * in_.channels * 2,
                                         in_.channels, static_cast<uint32_t>(usedInputSlots_)))) {
      stage = Code(ORV_AUCONV_ERR_PARAM);
    }
  }
  if (stage != 0) return stage;
  const unsigned long result = DoFsConv(sampleData_, offsets, dst, dstBytes, dstFrames);
  totalOutputFrames_ += *dstFrames;
  flushed_ = false;
  return result;
}

unsigned long OrvAudioConverter::DoFsConv(CMtSampleData* sampleData, const int* offsets,
                                          unsigned char* dst, unsigned long dstBytes,
                                          unsigned long* dstFrames) {
  float* inBuffer = static_cast<float*>(inputFloat_->GetBuffer());
  float* outBuffer = static_cast<float*>(outputFloat_->GetBuffer());
  if (inBuffer == nullptr || outBuffer == nullptr) return Code(ORV_AUCONV_ERR_MEMORY);
  const uint32_t total = sampleData->GetValidFrames();
  const uint64_t frameBytes = static_cast<uint64_t>(out_.channels) * (out_.bitsPerSample / 8);
  for (uint32_t start = 0; start < total;) {
    uint32_t frames = total - start;
    if (frames > maxInputBlock_) frames = static_cast<uint32_t>(maxInputBlock_);
    if (FAILED(sampleData->WriteInterleaved(orv::StreamFloat32LSB, start, frames, inBuffer,
                                            static_cast<uint64_t>(frames) * rateChannels_ * 4))) {
      return Code(ORV_AUCONV_ERR_PARAM);
    }
    const int made = engine_->Process(static_cast<int>(frames), inBuffer, outBuffer);
    const uint64_t written = static_cast<uint64_t>(*dstFrames) * frameBytes;
    const unsigned long result =
        SetFsConvOutDataToOutputBuffer(outBuffer, static_cast<unsigned long>(made), rateChannels_,
                                       offsets, dst + written, dstBytes - written);
    if (result != 0) return result;
    *dstFrames += static_cast<unsigned long>(made);
    start += frames;
  }
  return 0;
}

unsigned long OrvAudioConverter::SetFsConvOutDataToOutputBuffer(
    const float* floatData, unsigned long frames, unsigned long stride, const int* offsets,
    unsigned char* dst, unsigned long dstBytes) {
  const unsigned __int128 needed = static_cast<unsigned __int128>(frames) * out_.channels * 2;
  if (static_cast<unsigned __int128>(dstBytes) < needed) return Code(ORV_AUCONV_ERR_BUFFER);
  unsigned char* p = dst;
  const float* frame = floatData;
  const unsigned long slots = out_.channels < kMaskBits ? out_.channels : kMaskBits;
  for (unsigned long f = 0; f < frames; ++f, frame += stride) {
    for (unsigned long s = 0; s < out_.channels; ++s, p += 2) {
      const int offset = s < slots ? offsets[s] : -1;
      if (offset < 0) {
        p[0] = p[1] = 0;
      } else {
        FloatToInt16LSB(frame + offset, p);
      }
    }
  }
  return 0;
}

unsigned long OrvAudioConverter::ReleaseBuffer() {
  unsigned long result = 0;
  if (sampleData_ != nullptr) sampleData_->Release();
  if (engine_ != nullptr && !flushed_) {
    float* buffer =
        outputFloat_ != nullptr ? static_cast<float*>(outputFloat_->GetBuffer()) : nullptr;
    if (buffer == nullptr) {
      result = 1;
    } else if (engine_->Flush(buffer) > 0) {
      result = 1;
    }
    flushed_ = true;
  }
  if (inputFloat_ != nullptr) inputFloat_->ReleaseBuffer();
  if (outputFloat_ != nullptr) outputFloat_->ReleaseBuffer();
  return result;
}

// --- one-shot channel stage ----------------------------------------------------

unsigned long OrvAudioConverter::ConvertS(const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out,
                                          ORV_AUCONV_DOWNMIX_MODE mode, unsigned char* src,
                                          unsigned long srcFrames, unsigned char* dst,
                                          unsigned long dstBytes) {
  return ConvertChannel(in, out, mode, src, srcFrames, dst, dstBytes, nullptr);
}

unsigned long OrvAudioConverter::ConvertChannel(const ORV_AUCONV_PARAM& in,
                                                const ORV_AUCONV_PARAM& out,
                                                ORV_AUCONV_DOWNMIX_MODE mode, unsigned char* src,
                                                unsigned long frames, unsigned char* dst,
                                                unsigned long dstBytes, CMtSampleData* sampleData) {
  if (frames > 0 && (src == nullptr || dst == nullptr)) return Code(ORV_AUCONV_ERR_PARAM);
  if (in.samplesPerSec != out.samplesPerSec) return Code(ORV_AUCONV_ERR_RATE);
  const long layout = CheckLayouts(in, out, mode);
  if (layout != ORV_AUCONV_OK) return Code(layout);
  if (frames == 0) return 0;
  if (!FitsCall(frames, in.channels) || !FitsCall(frames, out.channels)) {
    return Code(ORV_AUCONV_ERR_PARAM);
  }
  const uint64_t outBytes = static_cast<uint64_t>(out.channels) * frames * 2;
  if (dstBytes < outBytes) return Code(ORV_AUCONV_ERR_BUFFER);

  const bool fullMix = in.channels >= 3 && mode == ORV_AUCONV_DOWNMIX_FULL;
  if (in.channels == out.channels && (in.channels == 1 || in.channelMask == out.channelMask) &&
      !fullMix) {
    OrvMemory::Copy(dst, static_cast<unsigned>(outBytes), src, static_cast<unsigned>(outBytes));
    return 0;
  }
  if (GetUseInputChannels(in, out, mode, nullptr) == 0) {
    std::memset(dst, 0, static_cast<size_t>(outBytes));
    return 0;
  }
  if (in.channels == 1 || (out.channels > 1 && !fullMix) ||
      (out.channels == 1 && mode == ORV_AUCONV_DOWNMIX_NONE)) {
    return ConvertChannelWithoutChannelMix(in, out, src, frames, dst, dstBytes);
  }
  if (fullMix && !(in.channelMask & 7u)) return Code(ORV_AUCONV_ERR_MASK);

  CMtSampleData* store = sampleData;
  CMtSampleData* created = nullptr;
  if (store == nullptr) {
    store = created = new (std::nothrow) CMtSampleData();
    if (store == nullptr) return Code(ORV_AUCONV_ERR_MEMORY);
  }
  const bool stereoToMono = mode == ORV_AUCONV_DOWNMIX_STEREO_TO_MONO || in.channels == 2;
  const uint32_t required = mode == ORV_AUCONV_DOWNMIX_STEREO_TO_MONO ? 2u : in.channels;
  unsigned long result = 0;
  if (store->GetChannels() != required || store->GetCapacityFrames() < frames ||
      store->GetCapacityFrames() == 0) {
    if (FAILED(store->Allocate(required, static_cast<uint32_t>(frames)))) {
      result = Code(ORV_AUCONV_ERR_MEMORY);
    }
  }
  if (result == 0) {
    result = stereoToMono ? ConvertStereoToMono(in, src, frames, store)
                          : DownMix(in, src, frames, out.channels, store);
  }
  if (result == 0) {
    const int type = GetMtSampleDataStreamType(out.bitsPerSample);
    if (out.channels == 1 || (out.channels == 2 && out.channelMask == 3)) {
      if (FAILED(store->WriteInterleaved(type, 0, static_cast<uint32_t>(frames), dst, dstBytes))) {
        result = Code(ORV_AUCONV_ERR_PARAM);
      }
    } else {
      // Front left and front right, when present, are always a frame's first slots.
      std::memset(dst, 0, static_cast<size_t>(outBytes));
      const size_t frameBytes = static_cast<size_t>(out.channels) * 2;
      const float* ch0 = store->GetSamplePointer(0, 0);
      const float* ch1 = store->GetSamplePointer(1, 0);
      for (unsigned long f = 0; f < frames; ++f) {
        unsigned char* p = dst + f * frameBytes;
        if ((out.channelMask & kFrontLeft) && ch0 != nullptr) {
          FloatToInt16LSB(ch0 + f, p);
          p += 2;
        }
        if ((out.channelMask & kFrontRight) && ch1 != nullptr) FloatToInt16LSB(ch1 + f, p);
      }
    }
  }
  delete created;
  return result;
}

unsigned long OrvAudioConverter::ConvertChannelWithoutChannelMix(
    const ORV_AUCONV_PARAM& in, const ORV_AUCONV_PARAM& out, unsigned char* src,
    unsigned long frames, unsigned char* dst, unsigned long dstBytes) {
  if (frames == 0) return 0;
  if (src == nullptr || dst == nullptr) return Code(ORV_AUCONV_ERR_PARAM);
  if (static_cast<uint64_t>(dstBytes) < static_cast<uint64_t>(out.channels) * frames * 2) {
    return Code(ORV_AUCONV_ERR_BUFFER);
  }
  int offsets[kMaskBits];
  MakeUseInputChannelOffset(offsets, in, out);
  const size_t inStep = static_cast<size_t>(in.channels) * 2;
  const size_t outStep = static_cast<size_t>(out.channels) * 2;
  for (unsigned long f = 0; f < frames; ++f) {
    const unsigned char* s = src + f * inStep;
    unsigned char* d = dst + f * outStep;
    for (unsigned long slot = 0; slot < out.channels; ++slot, d += 2) {
      const int offset = slot < kMaskBits ? offsets[slot] : -1;
      if (offset < 0 || static_cast<uint32_t>(offset) >= in.channels) {
        d[0] = d[1] = 0;
      } else {
        d[0] = s[offset * 2];
        d[1] = s[offset * 2 + 1];
      }
    }
  }
  return 0;
}

unsigned long OrvAudioConverter::ConvertStereoToMono(const ORV_AUCONV_PARAM& in, unsigned char* src,
                                                     unsigned long frames,
                                                     CMtSampleData* sampleData) {
  if (sampleData == nullptr || sampleData->GetChannels() != 2 ||
      sampleData->GetCapacityFrames() < frames || frames > 0xFFFFFFFFul) {
    return Code(ORV_AUCONV_ERR_PARAM);
  }
  const uint32_t n = static_cast<uint32_t>(frames);
  const int type = GetMtSampleDataStreamType(in.bitsPerSample);
  const uint64_t bytes = static_cast<uint64_t>(frames) * in.channels * 2;
  sampleData->SetValidFrames(0);
  HRESULT hr = S_OK;
  const unsigned long front = in.channelMask & 3u;
  if (front == 3) {
    hr = sampleData->ReadChannels(type, 0, n, src, bytes, in.channels, 3);
  } else if (front != 0) {
    sampleData->ClearChannels();
    hr = sampleData->ReadChannel(type, front == 1 ? 0 : 1, 0, n, src, bytes, in.channels, 1);
  } else {
    hr = E_INVALIDARG;
  }
  if (SUCCEEDED(hr)) hr = sampleData->MixToMono(2.0);
  return FAILED(hr) ? Code(ORV_AUCONV_ERR_PARAM) : 0;
}

unsigned long OrvAudioConverter::DownMix(const ORV_AUCONV_PARAM& in, unsigned char* src,
                                         unsigned long frames, unsigned long outChannels,
                                         CMtSampleData* sampleData) {
  if (sampleData == nullptr || sampleData->GetChannels() != in.channels ||
      sampleData->GetCapacityFrames() < frames || frames > 0xFFFFFFFFul) {
    return Code(ORV_AUCONV_ERR_PARAM);
  }
  const uint32_t n = static_cast<uint32_t>(frames);
  sampleData->SetValidFrames(0);
  HRESULT hr = sampleData->ReadInterleaved(GetMtSampleDataStreamType(in.bitsPerSample), 0, n, src,
                                           static_cast<uint64_t>(frames) * in.channels * 2);
  if (SUCCEEDED(hr))
    hr = sampleData->MixDown(in.channelMask, 0.707, 0.707, outChannels == 1 ? 1 : 2);
  return FAILED(hr) ? Code(ORV_AUCONV_ERR_PARAM) : 0;
}

// --- stateless channel helpers -------------------------------------------------

namespace {

constexpr unsigned long kExtractPositions[6] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20};

}  // namespace

bool IsChannelExtractsPossible(unsigned long channels, unsigned long mask) {
  unsigned long count = 0;
  for (unsigned long bit : kExtractPositions) count += (mask & bit) ? 1 : 0;
  return count == channels;
}

bool ExtractsAudioChannel(unsigned long frames, unsigned long srcChannels, unsigned long srcMask,
                          unsigned char* src, unsigned long dstChannels, unsigned long dstMask,
                          unsigned char* dst) {
  if (frames == 0) return true;
  // Null buffers with frames to move: nothing is read or written.
  if (src == nullptr || dst == nullptr) return false;
  unsigned long srcList[6], dstList[6];
  unsigned long srcCount = 0, dstCount = 0;
  for (unsigned long bit : kExtractPositions) {
    if (srcMask & bit) srcList[srcCount++] = bit;
    if (dstMask & bit) dstList[dstCount++] = bit;
  }
  // Only list entries that exist take part: a channel count beyond its mask's
  // positions neither reads nor writes a slot that the mask does not name.
  const unsigned long dstUsed = dstChannels < dstCount ? dstChannels : dstCount;
  const unsigned long srcUsed = srcChannels < srcCount ? srcChannels : srcCount;
  const int16_t* s = reinterpret_cast<const int16_t*>(src);
  int16_t* d = reinterpret_cast<int16_t*>(dst);
  for (unsigned long f = 0; f < frames; ++f, s += srcChannels, d += dstChannels) {
    for (unsigned long j = 0; j < dstUsed; ++j) {
      for (unsigned long i = 0; i < srcUsed; ++i) {
        if (srcList[i] == dstList[j]) std::memcpy(d + j, s + i, sizeof(int16_t));
      }
    }
  }
  return true;
}

void ConvertMono2Stereo(unsigned long frames, unsigned char* src, unsigned char* dst) {
  if (src == nullptr || dst == nullptr) return;
  for (unsigned long n = 0; n < frames; ++n) {
    int16_t v;
    std::memcpy(&v, src + n * 2, 2);
    std::memcpy(dst + n * 4, &v, 2);
    std::memcpy(dst + n * 4 + 2, &v, 2);
  }
}

void ConvertStereo2Mono(unsigned long frames, unsigned char* src, unsigned char* dst) {
  if (src == nullptr || dst == nullptr) return;
  for (unsigned long n = 0; n < frames; ++n) {
    int16_t l, r;
    std::memcpy(&l, src + n * 4, 2);
    std::memcpy(&r, src + n * 4 + 2, 2);
    const int16_t v = static_cast<int16_t>(l / 2 + r / 2);
    std::memcpy(dst + n * 2, &v, 2);
  }
}
