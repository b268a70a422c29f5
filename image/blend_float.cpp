// The float form of the YUY2 blend: the packed pictures are split into Y, Cb
// and Cr planes, the destination's planes are mixed in float with the
// source's, and the result is rounded to nearest and packed again.
#include <OrvImage.h>

#include "image/picture_limits.h"
#include "platform/primitives/ipp.h"

namespace {

namespace ipp = orv::ipp;

// Three 8-bit planes of a 4:2:2 picture (Y full width, Cb and Cr half).
struct Planes {
  ipp::Ipp8u* plane[3] = {nullptr, nullptr, nullptr};
  int step[3] = {0, 0, 0};

  bool Allocate(ipp::IppiSize size) {
    plane[0] = ipp::ippiMalloc_8u_C1(size.width, size.height, &step[0]);
    plane[1] = ipp::ippiMalloc_8u_C1(size.width / 2, size.height, &step[1]);
    plane[2] = ipp::ippiMalloc_8u_C1(size.width / 2, size.height, &step[2]);
    return plane[0] != nullptr && plane[1] != nullptr && plane[2] != nullptr;
  }
  ~Planes() {
    for (ipp::Ipp8u* p : plane) ipp::ippiFree(p);
  }
};

struct FloatPlanes {
  ipp::Ipp32f* plane[3] = {nullptr, nullptr, nullptr};
  int step[3] = {0, 0, 0};

  bool Allocate(ipp::IppiSize size) {
    plane[0] = ipp::ippiMalloc_32f_C1(size.width, size.height, &step[0]);
    plane[1] = ipp::ippiMalloc_32f_C1(size.width / 2, size.height, &step[1]);
    plane[2] = ipp::ippiMalloc_32f_C1(size.width / 2, size.height, &step[2]);
    return plane[0] != nullptr && plane[1] != nullptr && plane[2] != nullptr;
  }
  ~FloatPlanes() {
    for (ipp::Ipp32f* p : plane) ipp::ippiFree(p);
  }
};

}  // namespace

bool OrvImage::BlendYUY2(const unsigned char* src, unsigned char* dst, IppiSize size, float ratio) {
  if (src == nullptr || dst == nullptr || size.width < 2 || size.height < 1 ||
      !orv::image::AreSidesValid(size.width, size.height)) {
    return false;
  }
  const int line = static_cast<int>(orv::image::AlignedLine(16, size.width));
  Planes from;
  Planes to;
  FloatPlanes mix;
  if (!from.Allocate(size) || !to.Allocate(size) || !mix.Allocate(size)) return false;
  if (ipp::ippiYCbCr422_8u_C2P3R(src, line, from.plane, from.step, size) != 0 ||
      ipp::ippiYCbCr422_8u_C2P3R(dst, line, to.plane, to.step, size) != 0) {
    return false;
  }
  for (int c = 0; c < 3; ++c) {
    const ipp::IppiSize planeSize = {c == 0 ? size.width : size.width / 2, size.height};
    if (ipp::ippiConvert_8u32f_C1R(to.plane[c], to.step[c], mix.plane[c], mix.step[c], planeSize) !=
            0 ||
        ipp::ippiAddWeighted_8u32f_C1IR(from.plane[c], from.step[c], mix.plane[c], mix.step[c],
                                        planeSize, ratio) != 0 ||
        ipp::ippiConvert_32f8u_C1R(mix.plane[c], mix.step[c], to.plane[c], to.step[c], planeSize,
                                   ipp::ippRndNear) != 0) {
      return false;
    }
  }
  return ipp::ippiYCbCr422_8u_P3C2R(to.plane, to.step, dst, line, size) == 0;
}
