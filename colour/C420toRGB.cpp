#include "colour/C420toRGB.h"

#include <cstdlib>
#include <cstring>

namespace orv {

using colour::PixelKind;
using colour::RgbWalk;

namespace {

struct MatrixRow {
  int32_t uToB, uToG, vToG, vToR, yGain, yGain24;
};

// 0: BT.601 studio to full range; 1: BT.601 unit gain; 2: BT.709 studio to
// full range; 3: BT.709 unit gain. 13 fractional bits; gains 14 and 13.
const MatrixRow kMatrices[4] = {
    {16531, -3203, -6660, 13074, 19076, 9535},
    {14508, -2818, -5849, 11485, 16384, 8192},
    {17309, -1744, -4366, 14688, 19076, 9535},
    {15202, -1531, -3832, 12902, 16384, 8192},
};

}  // namespace

void* C420toRGB::operator new(std::size_t size) noexcept {
  unsigned char* block = static_cast<unsigned char*>(std::malloc(size + 16));
  if (!block) return nullptr;
  const uintptr_t start = reinterpret_cast<uintptr_t>(block);
  const uintptr_t object = (start + 16) & ~static_cast<uintptr_t>(15);
  unsigned char* p = reinterpret_cast<unsigned char*>(object);
  p[-1] = static_cast<unsigned char>(object - start);
  return p;
}

void C420toRGB::operator delete(void* p) noexcept {
  if (!p) return;
  unsigned char* object = static_cast<unsigned char*>(p);
  std::free(object - object[-1]);
}

C420toRGB::C420toRGB()
    : yOffset_(-32),
      uToB_(0),
      uToG_(0),
      vToG_(0),
      vToR_(0),
      yGain_(0),
      status_(0),
      chromaZero_{128, 128, 128, 128},
      yOffset24_(),
      yGain24_(),
      colourTable_() {}

C420toRGB::~C420toRGB() = default;

void C420toRGB::ReleaseBuffers() { store_.Release(); }

void C420toRGB::SetMatrix(int32_t matrix, int32_t black) {
  const MatrixRow& row = kMatrices[(matrix >= 0 && matrix < 4) ? matrix : 0];
  uToB_ = row.uToB;
  uToG_ = row.uToG;
  vToG_ = row.vToG;
  vToR_ = row.vToR;
  yGain_ = row.yGain;
  yOffset_ = static_cast<int32_t>((static_cast<int64_t>(yGain_) * (16 - black) * 128) >> 15) - 32;
  const int32_t offset24 =
      static_cast<int32_t>((static_cast<int64_t>(row.yGain24) * (16 - black) * 128) >> 16) - 8;
  for (int i = 0; i < 4; ++i) {
    yOffset24_[i] = static_cast<int16_t>(offset24);
    yGain24_[i] = static_cast<int16_t>(row.yGain24);
  }
  // Per output byte of four BGR pixels: the factor of U and the factor of V.
  for (int i = 0; i < 12; ++i) {
    const int c = i % 3;
    colourTable_[2 * i] = static_cast<int16_t>(c == 0 ? uToB_ : c == 1 ? uToG_ : 0);
    colourTable_[2 * i + 1] = static_cast<int16_t>(c == 0 ? 0 : c == 1 ? vToG_ : vToR_);
  }
}

const colour::RgbRows& C420toRGB::Rows() const { return colour::PlainRgbRows(); }

bool C420toRGB::Matrix(colour::RgbMatrix* m) const {
  *m = colour::RgbMatrix{yOffset_, uToB_, uToG_, vToG_, vToR_, yGain_, yOffset24_[0], yGain24_[0]};
  return true;
}

uint32_t C420toRGB::Run(RgbWalk walk, PixelKind kind, const uint8_t* y, const uint8_t* u,
                        const uint8_t* v, uint8_t* dst, int32_t width, int32_t height,
                        int32_t dstPitch, int32_t yPitch) {
  const bool route24 = kind == colour::kPixBgr && Route24() == Route::k24;
  if (!y || !u || !v || !dst) return kResultRefused;
  if (!colour::RgbWalkAccepts(walk, route24, width, height)) return kResultRefused;
  colour::RgbMatrix m;
  if (!Matrix(&m)) return status_ | kStatusNoMemory;
  const colour::RgbJob job{y, u, v, yPitch, yPitch / 2, dst, dstPitch, width, height};
  if (route24) {
    colour::Walk24(Rows(), m, walk, job);
    return 0;
  }
  if (!store_.Reserve(width)) {
    status_ |= kStatusNoMemory;
    return status_;
  }
  // A store that failed once stays failed: status keeps its bit.
  if (status_ & kStatusNoMemory) return status_;
  colour::WalkGeneral(Rows(), m, store_, walk, true, kind, job);
  return 0;
}

#define ORV_DEFINE_OP(Name, walk, kind)                                                        \
  uint32_t C420toRGB::Name(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, \
                           int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch) {  \
    return Run(walk, kind, y, u, v, dst, width, height, dstPitch, yPitch);                     \
  }
ORV_DEFINE_OP(ToRGB555, RgbWalk::kFrame, colour::kPix555)
ORV_DEFINE_OP(ToRGB555Interlaced, RgbWalk::kInterlaced, colour::kPix555)
ORV_DEFINE_OP(ToRGB555Field, RgbWalk::kField, colour::kPix555)
ORV_DEFINE_OP(ToRGB565, RgbWalk::kFrame, colour::kPix565)
ORV_DEFINE_OP(ToRGB565Interlaced, RgbWalk::kInterlaced, colour::kPix565)
ORV_DEFINE_OP(ToRGB565Field, RgbWalk::kField, colour::kPix565)
ORV_DEFINE_OP(ToRGB24, RgbWalk::kFrame, colour::kPixBgr)
ORV_DEFINE_OP(ToRGB24Interlaced, RgbWalk::kInterlaced, colour::kPixBgr)
ORV_DEFINE_OP(ToRGB24Field, RgbWalk::kField, colour::kPixBgr)
ORV_DEFINE_OP(ToRGB32, RgbWalk::kFrame, colour::kPixBgr0)
ORV_DEFINE_OP(ToRGB32Interlaced, RgbWalk::kInterlaced, colour::kPixBgr0)
ORV_DEFINE_OP(ToRGB32Field, RgbWalk::kField, colour::kPixBgr0)
ORV_DEFINE_OP(To0RGB, RgbWalk::kFrame, colour::kPix0rgb)
ORV_DEFINE_OP(To0RGBInterlaced, RgbWalk::kInterlaced, colour::kPix0rgb)
ORV_DEFINE_OP(To0RGBField, RgbWalk::kField, colour::kPix0rgb)
ORV_DEFINE_OP(ToRGBA, RgbWalk::kFrame, colour::kPixBgra)
ORV_DEFINE_OP(ToRGBAInterlaced, RgbWalk::kInterlaced, colour::kPixBgra)
ORV_DEFINE_OP(ToRGBAField, RgbWalk::kField, colour::kPixBgra)
ORV_DEFINE_OP(ToRGB32ShiftUp, RgbWalk::kShiftUp, colour::kPixBgr0)
ORV_DEFINE_OP(ToRGB32ShiftDown, RgbWalk::kShiftDown, colour::kPixBgr0)
#undef ORV_DEFINE_OP

// ---------------------------------------------------------------------------

C420toRGB_MMX::C420toRGB_MMX(SimdLevel level)
    : vectorBlock_(nullptr), vectors_(nullptr), level_(level) {
  LoadVectors();
}

C420toRGB_MMX::~C420toRGB_MMX() { std::free(vectorBlock_); }

void C420toRGB_MMX::ReleaseBuffers() {
  std::free(vectorBlock_);
  vectorBlock_ = nullptr;
  vectors_ = nullptr;
}

void C420toRGB_MMX::LoadVectors() {
  if (!vectorBlock_) {
    vectorBlock_ = std::malloc(112);
    if (!vectorBlock_) {
      status_ |= kStatusNoMemory;
      return;
    }
    const uintptr_t p = (reinterpret_cast<uintptr_t>(vectorBlock_) + 31) & ~uintptr_t(31);
    vectors_ = reinterpret_cast<RgbVectorBlock*>(p);
  }
  for (int i = 0; i < 4; ++i) {
    vectors_->yOffset[i] = static_cast<int16_t>(yOffset_);
    vectors_->uToB[i] = static_cast<int16_t>(uToB_);
    vectors_->green[2 * i] = static_cast<int16_t>(uToG_);
    vectors_->green[2 * i + 1] = static_cast<int16_t>(vToG_);
    vectors_->vToR[i] = static_cast<int16_t>(vToR_);
    vectors_->yGain[i] = static_cast<int16_t>(yGain_);
  }
}

void C420toRGB_MMX::SetMatrix(int32_t matrix, int32_t black) {
  C420toRGB::SetMatrix(matrix, black);
  LoadVectors();
}

const colour::RgbRows& C420toRGB_MMX::Rows() const { return colour::GetRgbRows(level_); }

bool C420toRGB_MMX::Matrix(colour::RgbMatrix* m) const {
  if (!vectors_) return false;
  const RgbVectorBlock& v = *vectors_;
  *m = colour::RgbMatrix{v.yOffset[0], v.uToB[0],  v.green[0],    v.green[1],
                         v.vToR[0],    v.yGain[0], yOffset24_[0], yGain24_[0]};
  return true;
}

C420toRGB_KNI::C420toRGB_KNI(SimdLevel level)
    : C420toRGB_MMX(level),
      kniChromaZero_{128, 128, 128, 128},
      kniYOffset24_(),
      kniYGain24_(),
      kniColourTable_() {}

void C420toRGB_KNI::SetMatrix(int32_t matrix, int32_t black) {
  C420toRGB_MMX::SetMatrix(matrix, black);
  std::memcpy(kniYOffset24_, yOffset24_, sizeof(kniYOffset24_));
  std::memcpy(kniYGain24_, yGain24_, sizeof(kniYGain24_));
  std::memcpy(kniColourTable_, colourTable_, sizeof(kniColourTable_));
}

C420toRGB_SSE2::C420toRGB_SSE2(SimdLevel level)
    : C420toRGB_MMX(level), wideOffset_(), wideUToB_(), wideGreen_(), wideVToR_(), wideGain_() {
  SetMatrix(0, 0);
}

void C420toRGB_SSE2::SetMatrix(int32_t matrix, int32_t black) {
  C420toRGB_MMX::SetMatrix(matrix, black);
  for (int i = 0; i < 8; ++i) {
    wideOffset_[i] = static_cast<int16_t>(yOffset_);
    wideUToB_[i] = static_cast<int16_t>(uToB_);
    wideGreen_[i] = static_cast<int16_t>((i & 1) ? vToG_ : uToG_);
    wideVToR_[i] = static_cast<int16_t>(vToR_);
    wideGain_[i] = static_cast<int16_t>(yGain_);
  }
}

bool C420toRGB_SSE2::Matrix(colour::RgbMatrix* m) const {
  *m = colour::RgbMatrix{wideOffset_[0], wideUToB_[0], wideGreen_[0], wideGreen_[1],
                         wideVToR_[0],   wideGain_[0], yOffset24_[0], yGain24_[0]};
  return true;
}

}  // namespace orv
