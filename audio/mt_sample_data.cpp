#include "audio/mt_sample_data.h"

#include <cmath>
#include <cstring>
#include <new>

namespace orv {
namespace {

constexpr double kScale16 = 3.0517578125e-5;        // 2^-15
constexpr double kScale24 = 1.1920928955078125e-7;  // 2^-23
constexpr double kScale32 = 4.656612873077393e-10;  // 2^-31

bool ReadableType(int type) {
  switch (type) {
    case StreamInt16MSB:
    case StreamInt24MSB:
    case StreamInt16LSB:
    case StreamInt24LSB:
    case StreamInt32LSB:
    case StreamFloat32LSB:
    case StreamUInt8:
      return true;
    default:
      return false;
  }
}

float ReadSample(int type, const unsigned char* p) {
  switch (type) {
    case StreamInt16MSB:
      return static_cast<float>(static_cast<int16_t>((p[0] << 8) | p[1]) * kScale16);
    case StreamInt16LSB:
      return static_cast<float>(static_cast<int16_t>((p[1] << 8) | p[0]) * kScale16);
    case StreamInt24MSB: {
      int32_t v = (p[0] << 16) | (p[1] << 8) | p[2];
      if (v & 0x800000) v -= 0x1000000;
      return static_cast<float>(v * kScale24);
    }
    case StreamInt24LSB: {
      int32_t v = (p[2] << 16) | (p[1] << 8) | p[0];
      if (v & 0x800000) v -= 0x1000000;
      return static_cast<float>(v * kScale24);
    }
    case StreamInt32LSB: {
      uint32_t u = static_cast<uint32_t>(p[0]) | (static_cast<uint32_t>(p[1]) << 8) |
                   (static_cast<uint32_t>(p[2]) << 16) | (static_cast<uint32_t>(p[3]) << 24);
      return static_cast<float>(static_cast<int32_t>(u) * kScale32);
    }
    case StreamFloat32LSB: {
      float f;
      std::memcpy(&f, p, 4);
      return f;
    }
    case StreamUInt8:
      return static_cast<float>((p[0] * 2 - 256) * 0.00390625);
    default:
      return 0.0f;
  }
}

// Floor of a single-precision product, clipped to [lo, hi]; NaN gives 0.
int32_t FloorClip(float value, double scale, int32_t lo, int32_t hi) {
  const float scaled = static_cast<float>(value * scale);
  if (std::isnan(scaled)) return 0;
  const float f = std::floor(scaled);
  if (f < static_cast<float>(lo)) return lo;
  if (f > static_cast<float>(hi)) return hi;
  return static_cast<int32_t>(f);
}

}  // namespace

unsigned MtStreamSampleBytes(int type) {
  switch (type) {
    case StreamInt16MSB:
    case StreamInt16LSB:
      return 2;
    case StreamInt24MSB:
    case StreamInt24LSB:
      return 3;
    case StreamFloat32MSB:
    case StreamInt32LSB:
    case StreamFloat32LSB:
      return 4;
    case StreamUInt8:
      return 1;
    default:
      return 0;
  }
}

void MtFloatToInt16LSB(float value, unsigned char* out) {
  const int32_t v = FloorClip(value, 32768.0, -32768, 32767);
  out[0] = static_cast<unsigned char>(v & 0xFF);
  out[1] = static_cast<unsigned char>((v >> 8) & 0xFF);
}

void MtFloatToInt24LSB(float value, unsigned char* out) {
  const int32_t v = FloorClip(value, 8388608.0, -8388608, 8388607);
  out[0] = static_cast<unsigned char>(v & 0xFF);
  out[1] = static_cast<unsigned char>((v >> 8) & 0xFF);
  out[2] = static_cast<unsigned char>((v >> 16) & 0xFF);
}

CMtSampleData::CMtSampleData() : validFrames_(0), capacityFrames_(0), channels_(0) {}

CMtSampleData::~CMtSampleData() { Release(); }

HRESULT CMtSampleData::Allocate(uint32_t channels, uint32_t frames) {
  Release();
  try {
    list_.reserve(channels);
  } catch (...) {
    return E_UNEXPECTED;
  }
  for (uint32_t c = 0; c < channels; ++c) {
    float* array = new (std::nothrow) float[frames == 0 ? 1 : frames]();
    if (array == nullptr) {
      Release();
      return E_FAIL;
    }
    list_.push_back(array);
  }
  validFrames_ = frames;
  capacityFrames_ = frames;
  channels_ = channels;
  return S_OK;
}

HRESULT CMtSampleData::Release() {
  for (float* array : list_) delete[] array;
  list_.clear();
  validFrames_ = 0;
  capacityFrames_ = 0;
  return S_OK;
}

HRESULT CMtSampleData::SetValidFrames(uint32_t frames) {
  if (frames > capacityFrames_) return E_INVALIDARG;
  validFrames_ = frames;
  return S_OK;
}

HRESULT CMtSampleData::ClearChannels() {
  for (float* array : list_) std::memset(array, 0, sizeof(float) * capacityFrames_);
  return S_OK;
}

float* CMtSampleData::GetSamplePointer(uint32_t channel, uint32_t frame) {
  if (channel >= list_.size()) return nullptr;
  return list_[channel] + frame;
}

HRESULT CMtSampleData::ReadSlots(int streamType, uint32_t firstChannel, uint32_t channelCount,
                                 uint32_t start, uint32_t frames, const unsigned char* src,
                                 uint32_t stride, const uint32_t* slots) {
  if (!ReadableType(streamType)) return E_INVALIDARG;
  if (static_cast<uint64_t>(start) + frames > capacityFrames_) return E_INVALIDARG;
  if (frames == 0) return S_OK;
  if (src == nullptr || firstChannel + channelCount > list_.size()) return E_INVALIDARG;
  const uint32_t bytes = MtStreamSampleBytes(streamType);
  const size_t frameBytes = static_cast<size_t>(stride) * bytes;
  // Channel by channel over the frame stride, so each store array is written linearly.
  for (uint32_t n = 0; n < channelCount; ++n) {
    float* dst = list_[firstChannel + n] + start;
    const unsigned char* p = src + static_cast<size_t>(slots[n]) * bytes;
    for (uint32_t f = 0; f < frames; ++f, p += frameBytes) dst[f] = ReadSample(streamType, p);
  }
  if (start + frames > validFrames_) validFrames_ = start + frames;
  return S_OK;
}

HRESULT CMtSampleData::ReadInterleaved(int streamType, uint32_t start, uint32_t frames,
                                       const void* src, uint64_t /*srcBytes*/) {
  if (channels_ > 32 || channels_ > list_.size()) {
    if (frames == 0 && static_cast<uint64_t>(start) <= capacityFrames_) return S_OK;
    return E_INVALIDARG;
  }
  uint32_t slots[32];
  for (uint32_t n = 0; n < channels_; ++n) slots[n] = n;
  return ReadSlots(streamType, 0, channels_, start, frames, static_cast<const unsigned char*>(src),
                   channels_, slots);
}

HRESULT CMtSampleData::ReadChannels(int streamType, uint32_t start, uint32_t frames,
                                    const void* src, uint64_t /*srcBytes*/, uint32_t stride,
                                    uint32_t slotMask) {
  uint32_t slots[32];
  uint32_t count = 0;
  for (uint32_t bit = 0; bit < 32; ++bit) {
    if (slotMask & (1u << bit)) slots[count++] = bit;
  }
  if (count < channels_ || channels_ > list_.size()) return E_INVALIDARG;
  for (uint32_t n = 0; n < channels_; ++n) {
    if (slots[n] >= stride) return E_INVALIDARG;  // a slot outside the frame
  }
  return ReadSlots(streamType, 0, channels_, start, frames, static_cast<const unsigned char*>(src),
                   stride, slots);
}

HRESULT CMtSampleData::ReadChannel(int streamType, uint32_t channel, uint32_t start,
                                   uint32_t frames, const void* src, uint64_t /*srcBytes*/,
                                   uint32_t stride, uint32_t slotMask) {
  if (slotMask == 0 || (slotMask & (slotMask - 1)) != 0) return E_INVALIDARG;
  if (channel >= list_.size()) return E_INVALIDARG;
  uint32_t slot = 0;
  while (!(slotMask & (1u << slot))) ++slot;
  if (slot >= stride) return E_INVALIDARG;
  return ReadSlots(streamType, channel, 1, start, frames, static_cast<const unsigned char*>(src),
                   stride, &slot);
}

HRESULT CMtSampleData::WriteSamples(int streamType, const float* samples, uint32_t frames,
                                    unsigned char* dst, uint32_t step) {
  const uint32_t bytes = MtStreamSampleBytes(streamType);
  const size_t stepBytes = static_cast<size_t>(step) * bytes;
  unsigned char* p = dst;
  for (uint32_t f = 0; f < frames; ++f, p += stepBytes) {
    const float x = samples[f];
    switch (streamType) {
      case StreamInt16LSB:
        MtFloatToInt16LSB(x, p);
        break;
      case StreamInt16MSB: {
        unsigned char t[2];
        MtFloatToInt16LSB(x, t);
        p[0] = t[1];
        p[1] = t[0];
        break;
      }
      case StreamInt24LSB:
        MtFloatToInt24LSB(x, p);
        break;
      case StreamInt24MSB: {
        unsigned char t[3];
        MtFloatToInt24LSB(x, t);
        p[0] = t[2];
        p[1] = t[1];
        p[2] = t[0];
        break;
      }
      case StreamInt32LSB: {
        int32_t v;
        if (x >= 1.0f) {
          v = 2147483647;
        } else if (x <= -1.0f) {
          v = -2147483647 - 1;
        } else if (std::isnan(x)) {
          v = 0;
        } else {
          // Below 1.0 the single-precision product stays below 2^31.
          v = static_cast<int32_t>(std::floor(static_cast<float>(x * 2147483648.0)));
        }
        const uint32_t u = static_cast<uint32_t>(v);
        p[0] = static_cast<unsigned char>(u);
        p[1] = static_cast<unsigned char>(u >> 8);
        p[2] = static_cast<unsigned char>(u >> 16);
        p[3] = static_cast<unsigned char>(u >> 24);
        break;
      }
      case StreamFloat32LSB:
        std::memcpy(p, &x, 4);
        break;
      case StreamFloat32MSB: {
        unsigned char t[4];
        std::memcpy(t, &x, 4);
        p[0] = t[3];
        p[1] = t[2];
        p[2] = t[1];
        p[3] = t[0];
        break;
      }
      case StreamUInt8: {
        double v = std::floor((static_cast<double>(x) + 1.0) * 128.0);
        if (!(v >= 0.0)) v = 0.0;  // also NaN
        if (v > 255.0) v = 255.0;
        p[0] = static_cast<unsigned char>(v);
        break;
      }
      default:
        return E_INVALIDARG;
    }
  }
  return S_OK;
}

HRESULT CMtSampleData::WriteInterleaved(int streamType, uint32_t start, uint32_t frames, void* dst,
                                        uint64_t /*dstBytes*/) {
  if (MtStreamSampleBytes(streamType) == 0) return E_INVALIDARG;
  if (static_cast<uint64_t>(start) + frames > validFrames_) return E_INVALIDARG;
  if (frames == 0) return S_OK;
  if (dst == nullptr || channels_ > list_.size()) return E_INVALIDARG;
  const uint32_t bytes = MtStreamSampleBytes(streamType);
  unsigned char* base = static_cast<unsigned char*>(dst);
  for (uint32_t c = 0; c < channels_; ++c) {
    HRESULT hr = WriteSamples(streamType, list_[c] + start, frames, base + c * bytes, channels_);
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

HRESULT CMtSampleData::WriteChannel(int streamType, uint32_t channel, uint32_t start,
                                    uint32_t frames, void* dst, uint64_t /*dstBytes*/) {
  if (MtStreamSampleBytes(streamType) == 0) return E_INVALIDARG;
  if (channel >= list_.size()) return E_INVALIDARG;
  if (static_cast<uint64_t>(start) + frames > validFrames_) return E_INVALIDARG;
  if (frames == 0) return S_OK;
  if (dst == nullptr) return E_INVALIDARG;
  return WriteSamples(streamType, list_[channel] + start, frames, static_cast<unsigned char*>(dst),
                      1);
}

void CMtSampleData::ReplaceChannels(float* const* arrays, uint32_t count) {
  for (float* array : list_) delete[] array;
  list_.assign(arrays, arrays + count);
  channels_ = count;
  // The new arrays are exactly as long as the valid frames: capacity follows,
  // so that no later read or clear runs past them.
  capacityFrames_ = validFrames_;
}

HRESULT CMtSampleData::MixToMono(double divisor) {
  if (list_.empty()) return E_UNEXPECTED;
  const float d = static_cast<float>(divisor);
  float* out = list_[0];
  const size_t channels = list_.size();
  for (uint32_t f = 0; f < validFrames_; ++f) {
    float sum = out[f];
    for (size_t c = 1; c < channels; ++c) sum += list_[c][f];
    sum /= d;
    if (sum > 1.0f) sum = 1.0f;
    if (sum < -1.0f) sum = -1.0f;
    out[f] = sum;
  }
  while (list_.size() > 1) {
    delete[] list_.back();
    list_.pop_back();
  }
  channels_ = 1;
  return S_OK;
}

namespace {

inline float Clip(double v) {
  float f = static_cast<float>(v);
  if (f > 1.0f) f = 1.0f;
  if (f < -1.0f) f = -1.0f;
  return f;
}

}  // namespace

HRESULT CMtSampleData::MixDown(uint32_t mask, double centreLevel, double surroundLevel,
                               int target) {
  // Speaker bit -> channel number, walking the 18 positions upward; a position
  // the mask lacks reads channel 0, but is looked up only where the layout has it.
  int map[18];
  int next = 0;
  for (int b = 0; b < 18; ++b) map[b] = (mask & (1u << b)) ? next++ : 0;
  if (target != 1 && target != 2) return E_INVALIDARG;
  if (list_.empty() || static_cast<uint32_t>(next) > list_.size()) return E_INVALIDARG;

  const uint32_t front = mask & 7u;
  const uint32_t surround = mask & 0x1F0u;
  if (front != 3 && front != 4 && front != 7) return E_UNEXPECTED;  // unsupported front layout

  const double c = static_cast<float>(centreLevel);
  const double s = static_cast<float>(surroundLevel);
  const double K = static_cast<double>(0.707f);
  const double H = static_cast<double>(1.4f);
  const double sK = s * K;
  const float* L = list_[map[0]];
  const float* R = list_[map[1]];
  const float* C = list_[map[2]];
  const float* Ls = list_[map[4]];
  const float* Rs = list_[map[5]];
  const float* S = list_[map[8]];
  const uint32_t frames = validFrames_;
  const size_t length = frames == 0 ? 1 : frames;

  float* out[2] = {nullptr, nullptr};
  for (int t = 0; t < target; ++t) {
    out[t] = new (std::nothrow) float[length]();
    if (out[t] == nullptr) {
      delete[] out[0];
      return E_FAIL;
    }
  }

  if (target == 1) {
    float* M = out[0];
    const double cH = c * H;
    for (uint32_t f = 0; f < frames; ++f) {
      float m;
      if (front == 3) {
        m = static_cast<float>(K * L[f] + K * R[f]);
      } else if (front == 4) {
        m = C[f];
      } else {
        m = static_cast<float>(cH * C[f] + K * L[f] + K * R[f]);
      }
      double v = m;
      if (surround == 0x030) {
        v = v + sK * Ls[f] + sK * Rs[f];
      } else if (surround == 0x100) {
        v = v + sK * S[f];
      }
      M[f] = Clip(v);
    }
  } else {
    float* Lo = out[0];
    float* Ro = out[1];
    for (uint32_t f = 0; f < frames; ++f) {
      float l, r;
      if (front == 3) {
        l = L[f];
        r = R[f];
      } else if (front == 4) {
        l = r = static_cast<float>(K * C[f]);
      } else {
        l = static_cast<float>(c * C[f] + L[f]);
        r = static_cast<float>(c * C[f] + R[f]);
      }
      double vl = l, vr = r;
      if (surround == 0x030) {
        vl = vl + s * Ls[f];
        vr = vr + s * Rs[f];
      } else if (surround == 0x100) {
        vl = vl + sK * S[f];
        vr = vr + sK * S[f];
      }
      Lo[f] = Clip(vl);
      Ro[f] = Clip(vr);
    }
  }
  ReplaceChannels(out, static_cast<uint32_t>(target));
  return S_OK;
}

}  // namespace orv
