// The frame that every format-pair conversion runs in, and the small blocks
// those conversions are made of.
//
// A conversion checks its arguments, answers a size query, refuses a short
// destination before writing, works out whether the picture has to be turned
// upside down (steps of opposite signs), then runs its body. A failure raised
// by the body clears the bytes the conversion promised and becomes its result.
//
// Inside a body both pictures are walked in memory order with positive steps;
// the flip, when asked for, is one mirror about the horizontal axis of a work
// picture or of the result.
#ifndef ORV_IMAGE_CONVERT_FRAME_H_
#define ORV_IMAGE_CONVERT_FRAME_H_

#include <OrvImage.h>
#include <OrvMemory.h>

#include <cstdint>
#include <utility>

#include "image/image_errors.h"
#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace orv {
namespace image {

using ipp::Ipp32f;
using ipp::Ipp8u;
using ipp::IppiRect;
using ipp::IppiSize;

// How the destination's required size is worked out from its step.
enum class Output {
  kPacked,  // |dstStep| x height
  kPlanar,  // (|dstStep| + |dstStep / 2|) x height
  kYuy2A,   // (|dstStep| + A(8)) x height
};

// The bytes of one line that a step must hold, per format family.
enum class Layout {
  kPlanar,  // width (the Y plane)
  kYuy2,    // 2 x width
  kRgb24,   // 3 x width
  kRgb32,   // 4 x width
};

inline uint64_t LineBytes(Layout layout, uint64_t width) {
  switch (layout) {
    case Layout::kPlanar:
      return width;
    case Layout::kYuy2:
      return 2 * width;
    case Layout::kRgb24:
      return 3 * width;
    case Layout::kRgb32:
      return 4 * width;
  }
  return width;
}

// What the body of a conversion is given: sizes and step magnitudes as ints
// (all checked to fit), the flip flag, the required size.
struct Frame {
  Ipp8u* src;
  Ipp8u* dst;
  int width;
  int height;
  int srcStep;  // |srcStep|
  int dstStep;  // |dstStep|
  int srcSign;  // +1 or -1
  int dstSign;
  bool flip;          // the signs differ
  uint32_t required;  // R
};

// The required size R; 0 when the arguments are out of range.
uint64_t RequiredSize(Output output, uint64_t width, uint64_t height, int64_t dstStep);

// Checks sizes and steps: 0 when usable, else 3. Nothing is read or written.
unsigned long CheckPictures(unsigned long width, unsigned long height, int srcStep, int dstStep,
                            Layout srcLayout, Layout dstLayout, Output output);

// Sets up a Frame from checked arguments (CheckPictures returned 0).
Frame MakeFrame(unsigned char* src, unsigned char* dst, unsigned long width, unsigned long height,
                int srcStep, int dstStep, Output output);

// The common frame: checks, size query, capacity, then `body(frame)` under a
// guard that turns raised codes into the result and clears R bytes of `dst`
// on failure.
template <typename Body>
unsigned long RunConversion(unsigned char* src, unsigned char* dst, unsigned long* dstSize,
                            unsigned long width, unsigned long height, int srcStep, int dstStep,
                            Layout srcLayout, Layout dstLayout, Output output, Body&& body) {
  if (dstSize == nullptr) return OrvImage::ORV_IMG_INVALID;
  unsigned long check =
      CheckPictures(width, height, srcStep, dstStep, srcLayout, dstLayout, output);
  if (check != 0) return check;
  Frame frame = MakeFrame(src, dst, width, height, srcStep, dstStep, output);
  if (src == nullptr || dst == nullptr) {
    *dstSize = frame.required;
    return OrvImage::ORV_IMG_INVALID;
  }
  if (*dstSize < frame.required) return OrvImage::ORV_IMG_DST_TOO_SMALL;
  *dstSize = frame.required;
  unsigned long result = Guarded([&]() -> unsigned long {
    body(frame);
    return OrvImage::ORV_IMG_OK;
  });
  if (result != OrvImage::ORV_IMG_OK) OrvMemory::ZeroClear(dst, frame.required);
  return result;
}

// ---- Work memory ------------------------------------------------------------

// A picture from ippiMalloc, freed on every way out. Allocation failure
// raises 1.
class IppPicture {
 public:
  IppPicture() = default;
  ~IppPicture();
  IppPicture(const IppPicture&) = delete;
  IppPicture& operator=(const IppPicture&) = delete;
  // 8-bit pictures of 1 or 3 channels, and float pictures of 3 channels.
  void Allocate8u(int channels, int width, int height);
  void Allocate32fC3(int width, int height);
  Ipp8u* data() const { return static_cast<Ipp8u*>(data_); }
  Ipp32f* data32f() const { return static_cast<Ipp32f*>(data_); }
  int step() const { return step_; }
  Ipp8u* line(int y) const { return data() + static_cast<int64_t>(y) * step_; }

 private:
  void* data_ = nullptr;
  int step_ = 0;
};

// `count` planes of `lineBytes` x `height` bytes each, sharing one step, in
// one 16-byte aligned OrvMemory block. Allocation failure raises 1.
class WorkPlanes {
 public:
  WorkPlanes(int count, int lineBytes, int height);
  Ipp8u* plane(int index) const { return base_ + static_cast<int64_t>(index) * planeBytes_; }
  int step() const { return step_; }

 private:
  OrvMemory memory_;
  Ipp8u* base_ = nullptr;
  int step_ = 0;
  int64_t planeBytes_ = 0;
};

// ---- Primitive calls ---------------------------------------------------------
// A region with no pixels is nothing to do; the primitives are not called for
// one. A non-zero status raises 4.

inline bool IsEmpty(IppiSize size) { return size.width <= 0 || size.height <= 0; }

void MirrorInPlace(int channels, Ipp8u* picture, int step, IppiSize size);

// Fills one plane (1 channel) with a value.
void FillPlane(Ipp8u value, Ipp8u* plane, int step, IppiSize size);

// ---- Shared blocks -----------------------------------------------------------

// Pointers of a planar 4:2:0 picture (memory order): Y, first chroma plane,
// second chroma plane, as the picture model lays them out.
struct Planes420 {
  Ipp8u* y;
  Ipp8u* c1;
  Ipp8u* c2;
  int yStep;
  int cStep;
};
Planes420 Planar420(Ipp8u* base, int yStep, int height);

// The lines of one field run over a 4:2:0 picture of `height` lines: run 0
// starts at line 0, run 1 at line 1.
int FieldRunLines420(int height, int run);

// ALPHA-SET: the alpha plane of a CF_YUY2A destination filled with 255.
void AlphaSet(const Frame& frame);
// The alpha plane of a CF_YUY2A picture.
inline Ipp8u* AlphaPlane(Ipp8u* base, int yuy2Step, int height) {
  return base + static_cast<int64_t>(yuy2Step) * height;
}
inline int AlphaStep(int width) { return static_cast<int>(AlignedLine(8, width)); }

// PLANES4: four planes of one step into 32-bit pixels.
void JoinPlanes4(Ipp8u* const planes[4], int planeStep, Ipp8u* dst, int dstStep, IppiSize size);

// Pixels of a plane beyond the covered region repeat the last covered column,
// then the last covered line (128 when nothing was covered).
void FillEdges(Ipp8u* plane, int step, int coveredWidth, int coveredHeight, int width, int height);

// EXPAND-H: YUY2 split into Y (W x H) and chroma planes brought to W x H by
// nearest-neighbour doubling. `planes` receives Y, Cb, Cr; all share `step`
// (at least W bytes).
void ExpandHorizontal(const Ipp8u* yuy2, int yuy2Step, int width, int height,
                      Ipp8u* const planes[3], int step);

// The widening of EXPAND-H alone: a (W/2) x H chroma plane to W x H.
void WidenChroma422(const Ipp8u* half, int halfStep, int width, int height, Ipp8u* out,
                    int outStep);

// Doubles a chroma plane of (W/2) x (H/2) to W x H with nearest neighbour,
// per field when not `progressive` (each field's H/4 chroma lines to its H/2
// lines). Lines or columns that an odd size leaves repeat their neighbours.
void ExpandChroma420(const Ipp8u* chroma, int chromaStep, Ipp8u* out, int outStep, int width,
                     int height, bool progressive);

// The shift down of straight RGB: 16 off every channel, saturating at 0.
void ShiftDownPlane(Ipp8u* plane, int step, IppiSize size);

}  // namespace image
}  // namespace orv

#endif  // ORV_IMAGE_CONVERT_FRAME_H_
