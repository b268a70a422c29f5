#include "colour/C420toRGB2.h"

namespace orv {

using colour::PixelKind;
using colour::RgbWalk;

namespace {
// BT.601 at studio levels to full range, and at unit gain.
const int32_t kStudio[5] = {16531, -3203, -6660, 13074, 19076};
const int32_t kStraight[5] = {14508, -2818, -5849, 11485, 16384};
}  // namespace

C420toRGB2::C420toRGB2()
    : yOffset_(16),
      uToB_(kStudio[0]),
      uToG_(kStudio[1]),
      vToG_(kStudio[2]),
      vToR_(kStudio[3]),
      yGain_(kStudio[4]) {}

C420toRGB2::~C420toRGB2() = default;

void C420toRGB2::SetRange(int32_t straight, int32_t black) {
  const int32_t* m = straight ? kStraight : kStudio;
  uToB_ = m[0];
  uToG_ = m[1];
  vToG_ = m[2];
  vToR_ = m[3];
  yGain_ = m[4];
  // 16 x gain in 6 fractional bits, less the rounding half (32).
  yOffset_ = static_cast<int32_t>((static_cast<int64_t>((16 - black) * yGain_) * 128) >> 15) - 32;
}

int32_t C420toRGB2::Run(const colour::RgbRows& rows, RgbWalk walk, PixelKind kind, const uint8_t* y,
                        const uint8_t* u, const uint8_t* v, uint8_t* dst, int32_t width,
                        int32_t height, int32_t dstPitch, int32_t yPitch, int32_t chromaPitch) {
  if (!y || !u || !v || !dst) return 0;
  if (!colour::RgbWalkAccepts(walk, false, width, height)) return 0;
  if (!store_.Reserve(width)) return 0;
  const colour::RgbMatrix m{yOffset_, uToB_, uToG_, vToG_, vToR_, yGain_, 0, 0};
  const colour::RgbJob job{y, u, v, yPitch, chromaPitch, dst, dstPitch, width, height};
  colour::WalkGeneral(rows, m, store_, walk, false, kind, job);
  return 1;
}

#define ORV_DEFINE_OP(Class, Name, rowsExpr, walk, kind)                                          \
  int32_t Class::Name(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,         \
                      int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch,            \
                      int32_t chromaPitch) {                                                      \
    return Run(rowsExpr, walk, kind, y, u, v, dst, width, height, dstPitch, yPitch, chromaPitch); \
  }
#define ORV_DEFINE_ALL(Class, rowsExpr)                                                     \
  ORV_DEFINE_OP(Class, ToRGB555, rowsExpr, RgbWalk::kFrame, colour::kPix555)                \
  ORV_DEFINE_OP(Class, ToRGB555Interlaced, rowsExpr, RgbWalk::kInterlaced, colour::kPix555) \
  ORV_DEFINE_OP(Class, ToRGB555Field, rowsExpr, RgbWalk::kField, colour::kPix555)           \
  ORV_DEFINE_OP(Class, ToRGB565, rowsExpr, RgbWalk::kFrame, colour::kPix565)                \
  ORV_DEFINE_OP(Class, ToRGB565Interlaced, rowsExpr, RgbWalk::kInterlaced, colour::kPix565) \
  ORV_DEFINE_OP(Class, ToRGB565Field, rowsExpr, RgbWalk::kField, colour::kPix565)           \
  ORV_DEFINE_OP(Class, ToRGB24, rowsExpr, RgbWalk::kFrame, colour::kPixBgr)                 \
  ORV_DEFINE_OP(Class, ToRGB24Interlaced, rowsExpr, RgbWalk::kInterlaced, colour::kPixBgr)  \
  ORV_DEFINE_OP(Class, ToRGB24Field, rowsExpr, RgbWalk::kField, colour::kPixBgr)            \
  ORV_DEFINE_OP(Class, ToRGB32, rowsExpr, RgbWalk::kFrame, colour::kPixBgr0)                \
  ORV_DEFINE_OP(Class, ToRGB32Interlaced, rowsExpr, RgbWalk::kInterlaced, colour::kPixBgr0) \
  ORV_DEFINE_OP(Class, ToRGB32Field, rowsExpr, RgbWalk::kField, colour::kPixBgr0)           \
  ORV_DEFINE_OP(Class, To0RGB, rowsExpr, RgbWalk::kFrame, colour::kPix0rgb)                 \
  ORV_DEFINE_OP(Class, To0RGBInterlaced, rowsExpr, RgbWalk::kInterlaced, colour::kPix0rgb)  \
  ORV_DEFINE_OP(Class, To0RGBField, rowsExpr, RgbWalk::kField, colour::kPix0rgb)            \
  ORV_DEFINE_OP(Class, ToRGB32ShiftUp, rowsExpr, RgbWalk::kShiftUp, colour::kPixBgr0)       \
  ORV_DEFINE_OP(Class, ToRGB32ShiftDown, rowsExpr, RgbWalk::kShiftDown, colour::kPixBgr0)

ORV_DEFINE_ALL(C420toRGB2_C, colour::PlainRgbRows())
ORV_DEFINE_ALL(C420toRGB2_MMX, colour::GetRgbRows(level_))
ORV_DEFINE_OP(C420toRGB2_KNI, ToRGB24Field, colour::GetRgbRows(level_), RgbWalk::kField,
              colour::kPixBgr)
ORV_DEFINE_OP(C420toRGB2_KNI, ToRGB32Field, colour::GetRgbRows(level_), RgbWalk::kField,
              colour::kPixBgr0)
ORV_DEFINE_OP(C420toRGB2_KNI, To0RGBField, colour::GetRgbRows(level_), RgbWalk::kField,
              colour::kPix0rgb)
#undef ORV_DEFINE_ALL
#undef ORV_DEFINE_OP

C420toRGB2_MMX::C420toRGB2_MMX(SimdLevel level) : vectors_(), level_(level) { LoadVectors(); }

void C420toRGB2_MMX::SetRange(int32_t straight, int32_t black) {
  C420toRGB2::SetRange(straight, black);
  LoadVectors();
}

void C420toRGB2_MMX::LoadVectors() {
  for (int i = 0; i < 4; ++i) {
    vectors_.yOffset[i] = static_cast<int16_t>(yOffset_);
    vectors_.uToB[i] = static_cast<int16_t>(uToB_);
    vectors_.vToR[i] = static_cast<int16_t>(vToR_);
    vectors_.yGain[i] = static_cast<int16_t>(yGain_);
    vectors_.green[2 * i] = static_cast<int16_t>(vToG_);
    vectors_.green[2 * i + 1] = static_cast<int16_t>(uToG_);
  }
}

}  // namespace orv
