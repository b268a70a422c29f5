// C420toRGB2: planar 4:2:0 to 16-, 24- and 32-bit RGB, BT.601 only, with
// separate luma and chroma pitches.
//
// Method: for each chroma line, three 16-bit lines of colour terms (5 fractional
// bits); a vertical filter between term lines (frame: 3/4 and 1/4; field: 5/8,
// 3/8 and 1/8, 7/8, the same orientation in both fields); chroma on the even
// columns, the odd columns taking the mean of both neighbours, the last odd
// pixel repeating its left neighbour; then luma added, shift by 6, clamp, pack.
//
// Every picture operation takes (Y, U, V, dst, width, height, dstPitch, yPitch,
// chromaPitch) and places the picture's first line at dst + (height - 1) x
// dstPitch. It returns 0, with nothing written, when the line store cannot be
// had or when the geometry is not one its walk serves (width even and at least
// 2; height even and at least 4 for the progressive walks, a multiple of 4 and
// at least 8 for the Interlaced, Field and Shift walks). Any other result means
// success.
//
// Three forms, byte for byte equal: C420toRGB2_C (plain rows), C420toRGB2_MMX
// and C420toRGB2_KNI (the row kernels of a SimdLevel).
#ifndef ORV_COLOUR_C420TORGB2_H_
#define ORV_COLOUR_C420TORGB2_H_

#include <cstdint>

#include "colour/colour_rows.h"
#include "colour/rgb_walk.h"
#include "foundation/cpu_info.h"

namespace orv {

#define ORV_C420TORGB2_OP(Name)                                                            \
  virtual int32_t Name(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, \
                       int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch,    \
                       int32_t chromaPitch) = 0;

class C420toRGB2 {
 public:
  C420toRGB2();
  virtual ~C420toRGB2();
  C420toRGB2(const C420toRGB2&) = delete;
  C420toRGB2& operator=(const C420toRGB2&) = delete;

  // `straight` 0: studio levels to full range (gain 255/219); non-zero: unit
  // gain, black at `black`.
  virtual void SetRange(int32_t straight, int32_t black);

  ORV_C420TORGB2_OP(ToRGB555)
  ORV_C420TORGB2_OP(ToRGB555Interlaced)
  ORV_C420TORGB2_OP(ToRGB555Field)
  ORV_C420TORGB2_OP(ToRGB565)
  ORV_C420TORGB2_OP(ToRGB565Interlaced)
  ORV_C420TORGB2_OP(ToRGB565Field)
  ORV_C420TORGB2_OP(ToRGB24)
  ORV_C420TORGB2_OP(ToRGB24Interlaced)
  ORV_C420TORGB2_OP(ToRGB24Field)
  ORV_C420TORGB2_OP(ToRGB32)
  ORV_C420TORGB2_OP(ToRGB32Interlaced)
  ORV_C420TORGB2_OP(ToRGB32Field)
  ORV_C420TORGB2_OP(To0RGB)
  ORV_C420TORGB2_OP(To0RGBInterlaced)
  ORV_C420TORGB2_OP(To0RGBField)
  ORV_C420TORGB2_OP(ToRGB32ShiftUp)
  ORV_C420TORGB2_OP(ToRGB32ShiftDown)

  int32_t yOffset() const { return yOffset_; }
  int32_t lineCapacity() const { return store_.capacity(); }

 protected:
  // Runs one walk of the general route with the given row kernels.
  int32_t Run(const colour::RgbRows& rows, colour::RgbWalk walk, colour::PixelKind kind,
              const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, int32_t width,
              int32_t height, int32_t dstPitch, int32_t yPitch, int32_t chromaPitch);

  int32_t yOffset_;
  int32_t uToB_, uToG_, vToG_, vToR_;
  int32_t yGain_;
  colour::TermStore store_;
};
#undef ORV_C420TORGB2_OP

#define ORV_C420TORGB2_DECL(Name)                                                                 \
  int32_t Name(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, int32_t width, \
               int32_t height, int32_t dstPitch, int32_t yPitch, int32_t chromaPitch) override;
#define ORV_C420TORGB2_ALL_DECL           \
  ORV_C420TORGB2_DECL(ToRGB555)           \
  ORV_C420TORGB2_DECL(ToRGB555Interlaced) \
  ORV_C420TORGB2_DECL(ToRGB555Field)      \
  ORV_C420TORGB2_DECL(ToRGB565)           \
  ORV_C420TORGB2_DECL(ToRGB565Interlaced) \
  ORV_C420TORGB2_DECL(ToRGB565Field)      \
  ORV_C420TORGB2_DECL(ToRGB24)            \
  ORV_C420TORGB2_DECL(ToRGB24Interlaced)  \
  ORV_C420TORGB2_DECL(ToRGB24Field)       \
  ORV_C420TORGB2_DECL(ToRGB32)            \
  ORV_C420TORGB2_DECL(ToRGB32Interlaced)  \
  ORV_C420TORGB2_DECL(ToRGB32Field)       \
  ORV_C420TORGB2_DECL(To0RGB)             \
  ORV_C420TORGB2_DECL(To0RGBInterlaced)   \
  ORV_C420TORGB2_DECL(To0RGBField)        \
  ORV_C420TORGB2_DECL(ToRGB32ShiftUp)     \
  ORV_C420TORGB2_DECL(ToRGB32ShiftDown)

// The plain form.
class C420toRGB2_C : public C420toRGB2 {
 public:
  ORV_C420TORGB2_ALL_DECL
};

// The processor form: the same walks on the row kernels of `level`.
class C420toRGB2_MMX : public C420toRGB2 {
 public:
  explicit C420toRGB2_MMX(SimdLevel level = DetectSimdLevel());
  void SetRange(int32_t straight, int32_t black) override;
  SimdLevel level() const { return level_; }
  ORV_C420TORGB2_ALL_DECL

 protected:
  // The matrix as four-lane vectors: offset, uToB, vToR, gain, and the green
  // pair (uToG high, vToG low in each 32-bit lane).
  struct Vectors {
    int16_t yOffset[4], uToB[4], vToR[4], yGain[4];
    int16_t green[8];
  };
  void LoadVectors();
  Vectors vectors_;
  SimdLevel level_;
};

// As C420toRGB2_MMX; its Field operations of 24-bit, 32-bit and 0RGB output
// take the line mean by byte average, which gives the same bytes.
class C420toRGB2_KNI : public C420toRGB2_MMX {
 public:
  explicit C420toRGB2_KNI(SimdLevel level = DetectSimdLevel()) : C420toRGB2_MMX(level) {}
  int32_t ToRGB24Field(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,
                       int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch,
                       int32_t chromaPitch) override;
  int32_t ToRGB32Field(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,
                       int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch,
                       int32_t chromaPitch) override;
  int32_t To0RGBField(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst,
                      int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch,
                      int32_t chromaPitch) override;
};

#undef ORV_C420TORGB2_DECL
#undef ORV_C420TORGB2_ALL_DECL

}  // namespace orv

#endif  // ORV_COLOUR_C420TORGB2_H_
