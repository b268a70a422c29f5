// Rotation of 8-bit 3- and 4-channel pictures about the origin, with a shift.
//
// Coordinates are pixel indices (pixel centres at whole numbers), counted
// from the picture's origin (pSrc, pDst), not from the regions. A source point
// (x, y) goes to
//   x' =  x cos(angle) + y sin(angle) + xShift
//   y' = -x sin(angle) + y cos(angle) + yShift
// with angle in degrees; angle 90 with yShift = width - 1 turns a picture of
// width x height into one of height x width whose first column is the
// source's first line, read from the bottom up. Multiples of 90 degrees use
// exact sines and cosines, so such turns move whole pixels and copy them
// exactly with every interpolation.
// Each destination pixel of dstRoi is mapped back; it is written only if the
// source position lies inside the source region clipped to the picture, i.e.
// within [x0 - 0.5, x1 - 0.5) x [y0 - 0.5, y1 - 0.5) for the region's columns
// x0..x1-1 and lines y0..y1-1. IPPI_INTER_NN takes the nearest pixel,
// IPPI_INTER_LINEAR is bilinear, IPPI_INTER_CUBIC Catmull-Rom; samples beyond
// the region repeat its edge; results are rounded to nearest and saturated.
// IPPI_INTER_SUPER and other values answer ippStsInterpolationErr. No pixel
// written answers the warning ippStsWrongIntersectROI.
// dstRoi must start at x, y >= 0 (else ippStsRectErr), and dstStep must hold
// its last column (else ippStsStepErr).
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_ROTATE_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_ROTATE_H_

#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiRotate_8u_C3R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcRoi,
                            Ipp8u* pDst, int dstStep, IppiRect dstRoi, double angle, double xShift,
                            double yShift, int interpolation);
IppStatus ippiRotate_8u_C4R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcRoi,
                            Ipp8u* pDst, int dstStep, IppiRect dstRoi, double angle, double xShift,
                            double yShift, int interpolation);

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_ROTATE_H_
