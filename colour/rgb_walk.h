// Line walks shared by the planar-to-RGB families (C420toRGB2, C420toRGB).
//
// The general route works per chroma line: colour terms (what Cr and Cb add to
// red, green and blue, 16-bit with 5 fractional bits), a vertical filter between
// two term lines, then per luma line the pixels with the horizontal
// interpolation done on the fly. The 24-bit route keeps no term lines: it
// filters raw chroma per pixel.
//
// Output placement: picture line r goes to dst + (height - 1 - r) x pitch, so a
// positive pitch gives a bottom-up bitmap and a negative pitch with the address
// of the last line a top-down one.
#ifndef ORV_COLOUR_RGB_WALK_H_
#define ORV_COLOUR_RGB_WALK_H_

#include <cstdint>

#include "colour/colour_rows.h"

namespace orv {
namespace colour {

// The growing line store of one kernel object: four term lines of each colour.
class TermStore {
 public:
  TermStore() = default;
  ~TermStore();
  TermStore(const TermStore&) = delete;
  TermStore& operator=(const TermStore&) = delete;

  // Makes room for pictures `width` wide. False (and no store, capacity 0) if
  // memory cannot be had.
  bool Reserve(int32_t width);
  void Release();
  int32_t capacity() const { return capacity_; }

  // Term line `set` (0..3) of colour `c` (0 red, 1 green, 2 blue).
  int16_t* Line(int set, int c) const { return lines_[set][c]; }

 private:
  void* block_ = nullptr;
  int32_t capacity_ = 0;
  int16_t* lines_[4][3] = {};
};

// The source planes and the destination of one walk.
struct RgbJob {
  const uint8_t* y;
  const uint8_t* u;
  const uint8_t* v;
  int32_t yPitch;
  int32_t chromaPitch;
  uint8_t* dst;
  int32_t dstPitch;
  int32_t width;
  int32_t height;

  uint8_t* Out(int32_t r) const { return dst + static_cast<intptr_t>(height - 1 - r) * dstPitch; }
  const uint8_t* Y(int32_t r) const { return y + static_cast<intptr_t>(r) * yPitch; }
  const uint8_t* U(int32_t c) const { return u + static_cast<intptr_t>(c) * chromaPitch; }
  const uint8_t* V(int32_t c) const { return v + static_cast<intptr_t>(c) * chromaPitch; }
};

// The kinds of walk.
enum class RgbWalk { kFrame, kInterlaced, kField, kShiftUp, kShiftDown };

// Geometry each walk accepts: width even and at least 2; height even and at
// least 4 for the frame walk, a multiple of 4 and at least 8 for the others.
// The 24-bit route's frame walk takes a height of 2, its interlaced walk 4.
bool RgbWalkAccepts(RgbWalk walk, bool route24, int32_t width, int32_t height);

// The general route. `mirrorSecond` filters the second field with mirrored
// weights. The store must hold width / 2 + 1 entries per line.
void WalkGeneral(const RgbRows& rows, const RgbMatrix& m, const TermStore& store, RgbWalk walk,
                 bool mirrorSecond, PixelKind kind, const RgbJob& job);

// The 24-bit route (frame, interlaced with the mirrored second field, field).
void Walk24(const RgbRows& rows, const RgbMatrix& m, RgbWalk walk, const RgbJob& job);

}  // namespace colour
}  // namespace orv

#endif  // ORV_COLOUR_RGB_WALK_H_
