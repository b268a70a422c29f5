// C420toRGB: the converter that serves all RGB output of the picture engine.
//
// Planar 4:2:0 (chroma pitch = Y pitch / 2) to 16-, 24- and 32-bit RGB by the
// method of C420toRGB2 (colour terms per chroma line, vertical filter, on-the-fly
// horizontal interpolation), with four matrices (BT.601 / BT.709, each at studio
// levels to full range and at unit gain) and two changes:
//  - in the interlaced walks the second field is filtered with mirrored weights
//    (first field 5/8 3/8 and 1/8 7/8; second 7/8 1/8 and 3/8 5/8), the siting
//    of interlaced 4:2:0 chroma;
//  - 24-bit output takes a route of its own with 4 fractional bits: chroma is
//    interpolated horizontally first, from raw samples, then vertically, and
//    each product is truncated by itself. It can differ from the general route
//    by one level.
//
// Forms: C420toRGB (plain rows, 24-bit route), C420toRGB_MMX (row kernels of a
// SimdLevel; 24-bit output by the general route), C420toRGB_KNI and
// C420toRGB_SSE2 (row kernels of a SimdLevel, 24-bit route). Apart from the
// 24-bit route of the MMX form, all forms give the same bytes.
//
// Objects are placed on 16-byte boundaries: operator new takes the object's
// size plus 16 bytes from malloc, puts the object on the next 16-byte boundary
// strictly above the block start and keeps the distance in the byte below the
// object; operator delete frees the block through that byte. It answers null
// when memory cannot be had.
//
// Picture operations take (Y, U, V, dst, width, height, dstPitch, yPitch); the
// picture's first line goes to dst + (height - 1) x dstPitch. Result 0 is
// success; kStatusNoMemory (with `status`) when the line store could not be
// had; kResultRefused, with nothing written, for null planes or a geometry the
// walk does not serve: width even and at least 2; height even and at least 4
// for the progressive walks (2 for ToRGB24); a multiple of 4 and at least 8 for
// the Interlaced, Field and Shift walks (4 for ToRGB24Interlaced).
#ifndef ORV_COLOUR_C420TORGB_H_
#define ORV_COLOUR_C420TORGB_H_

#include <cstddef>
#include <cstdint>

#include "colour/colour_rows.h"
#include "colour/rgb_walk.h"
#include "foundation/cpu_info.h"

namespace orv {

// clang-format off
#define ORV_C420TORGB_OPS(X) \
  X(ToRGB555) \
  X(ToRGB555Interlaced) \
  X(ToRGB555Field) \
  X(ToRGB565) \
  X(ToRGB565Interlaced) \
  X(ToRGB565Field) \
  X(ToRGB24) \
  X(ToRGB24Interlaced) \
  X(ToRGB24Field) \
  X(ToRGB32) \
  X(ToRGB32Interlaced) \
  X(ToRGB32Field) \
  X(To0RGB) \
  X(To0RGBInterlaced) \
  X(To0RGBField) \
  X(ToRGBA) \
  X(ToRGBAInterlaced) \
  X(ToRGBAField) \
  X(ToRGB32ShiftUp) \
  X(ToRGB32ShiftDown)
// clang-format on

#define ORV_C420TORGB_DECLARE(Name)                                                         \
  virtual uint32_t Name(const uint8_t* y, const uint8_t* u, const uint8_t* v, uint8_t* dst, \
                        int32_t width, int32_t height, int32_t dstPitch, int32_t yPitch);

class C420toRGB {
 public:
  static constexpr uint32_t kStatusNoMemory = 0x81000000u;
  static constexpr uint32_t kResultRefused = 0x80000003u;

  C420toRGB();
  virtual ~C420toRGB();
  C420toRGB(const C420toRGB&) = delete;
  C420toRGB& operator=(const C420toRGB&) = delete;

  static void* operator new(std::size_t size) noexcept;
  static void operator delete(void* p) noexcept;

  // Frees this form's block: the line store here, the coefficient vectors in
  // the MMX and KNI forms; nothing in the SSE2 form.
  virtual void ReleaseBuffers();

  // Matrix 0 BT.601 studio, 1 BT.601 unit gain, 2 BT.709 studio, 3 BT.709 unit
  // gain; any other value loads matrix 0. `black` is the luma of black.
  virtual void SetMatrix(int32_t matrix, int32_t black);

  ORV_C420TORGB_OPS(ORV_C420TORGB_DECLARE)

  uint32_t status() const { return status_; }
  int32_t yOffset() const { return yOffset_; }
  int32_t yOffset24() const { return yOffset24_[0]; }
  int32_t lineCapacity() const { return store_.capacity(); }
  const int16_t* colourTable() const { return colourTable_; }

 protected:
  enum class Route { kGeneral, k24 };
  // The rows a form computes with and the route of its 24-bit output.
  virtual const colour::RgbRows& Rows() const;
  virtual Route Route24() const { return Route::k24; }
  // The matrix the rows take; false if the form's coefficient block is missing.
  virtual bool Matrix(colour::RgbMatrix* m) const;

  uint32_t Run(colour::RgbWalk walk, colour::PixelKind kind, const uint8_t* y, const uint8_t* u,
               const uint8_t* v, uint8_t* dst, int32_t width, int32_t height, int32_t dstPitch,
               int32_t yPitch);

  int32_t yOffset_;
  int32_t uToB_, uToG_, vToG_, vToR_;
  int32_t yGain_;
  colour::TermStore store_;
  uint32_t status_;
  int16_t chromaZero_[4];
  int16_t yOffset24_[4];
  int16_t yGain24_[4];
  int16_t colourTable_[24];
};

// Five vectors of four 16-bit lanes: offset, uToB, the green pair, vToR, gain.
struct RgbVectorBlock {
  int16_t yOffset[4];
  int16_t uToB[4];
  int16_t green[8];  // uToG, vToG per 32-bit lane
  int16_t vToR[4];
  int16_t yGain[4];
};

class C420toRGB_MMX : public C420toRGB {
 public:
  explicit C420toRGB_MMX(SimdLevel level = DetectSimdLevel());
  ~C420toRGB_MMX() override;
  void ReleaseBuffers() override;
  void SetMatrix(int32_t matrix, int32_t black) override;
  SimdLevel level() const { return level_; }

 protected:
  const colour::RgbRows& Rows() const override;
  Route Route24() const override { return Route::kGeneral; }
  bool Matrix(colour::RgbMatrix* m) const override;
  void LoadVectors();

  // 112 bytes from malloc, the vectors on a 32-byte boundary inside.
  void* vectorBlock_;
  RgbVectorBlock* vectors_;
  SimdLevel level_;
};

class C420toRGB_KNI : public C420toRGB_MMX {
 public:
  explicit C420toRGB_KNI(SimdLevel level = DetectSimdLevel());
  void SetMatrix(int32_t matrix, int32_t black) override;

 protected:
  Route Route24() const override { return Route::k24; }
  int16_t kniChromaZero_[4];
  int16_t kniYOffset24_[4];
  int16_t kniYGain24_[4];
  int16_t kniColourTable_[24];
};

class C420toRGB_SSE2 : public C420toRGB_MMX {
 public:
  explicit C420toRGB_SSE2(SimdLevel level = DetectSimdLevel());
  void ReleaseBuffers() override {}
  void SetMatrix(int32_t matrix, int32_t black) override;

 protected:
  Route Route24() const override { return Route::k24; }
  bool Matrix(colour::RgbMatrix* m) const override;
  // Each MMX vector twice.
  alignas(16) int16_t wideOffset_[8];
  alignas(16) int16_t wideUToB_[8];
  alignas(16) int16_t wideGreen_[8];
  alignas(16) int16_t wideVToR_[8];
  alignas(16) int16_t wideGain_[8];
};

#undef ORV_C420TORGB_DECLARE

}  // namespace orv

#endif  // ORV_COLOUR_C420TORGB_H_
