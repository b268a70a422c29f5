// Resizing of 8-bit pictures with 1, 3 or 4 channels.
//
// Geometry. Coordinates are continuous: pixel i of a line covers [i, i + 1)
// and has its centre at i + 0.5. The destination pixel d (counted from the
// destination region's corner) takes the source position
//   ippiResize:        u = srcRoi.x + (d + 0.5) / factor
//   ippiResizeCenter:  u = srcRoi.x + xCenter + (d + 0.5 - dstRoiSize.width / 2) / factor
// and the same in y. So ippiResize anchors the source region's corner to the
// destination's corner, and ippiResizeCenter maps the source point (xCenter,
// yCenter), counted from the source region's corner, onto the centre of the
// destination region: a smaller picture lands centred in a larger one and a
// crop takes both sides alike. The source region is first clipped to the
// picture (srcSize); a destination pixel whose position u (or v) falls outside
// the clipped region is NOT written, so callers clear or fill the destination
// first. If no destination pixel is written the answer is the warning
// ippStsWrongIntersectROI (positive), with nothing written.
//
// Interpolation (samples beyond the clipped region repeat its edge samples):
//   IPPI_INTER_NN      the source pixel that contains u: floor(u). Factor 1.0
//                      copies exactly; factor 2.0 fills 2 x 2 blocks from one
//                      source sample.
//   IPPI_INTER_LINEAR  bilinear between the two samples around u - 0.5.
//   IPPI_INTER_CUBIC   Catmull-Rom (a = -0.5) over the four samples around u - 0.5.
//   IPPI_INTER_SUPER   exact area averaging: the destination pixel's footprint
//                      [u - 0.5/factor, u + 0.5/factor), clipped to the region,
//                      weights each source pixel by the length it covers.
// Arithmetic. The filter is separable. Weights are computed in double and
// quantised to Q14 per destination pixel with their sum exactly 16384 (so a
// flat picture stays flat and factor 1.0 copies exactly). The vertical pass
// runs first: t = (sum of samples x weights + 128) >> 8 (Q6, 16-bit); then the
// horizontal pass: value = (sum of t x weights + 2^19) >> 20, saturated to
// 0..255. So results are rounded to nearest and saturated. NN copies bytes.
//
// Bad input: null pointer ippStsNullPtrErr; a size or region side below 1 (or
// above 65535) ippStsSizeErr; a step below the line ippStsStepErr; a factor
// that is not a positive finite number (or a centre that is not finite)
// ippStsResizeFactorErr; an unknown interpolation ippStsInterpolationErr.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_H_

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiResize_8u_C1R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcRoi,
                            Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                            double yFactor, int interpolation);
IppStatus ippiResize_8u_C3R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcRoi,
                            Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                            double yFactor, int interpolation);
IppStatus ippiResize_8u_C4R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcRoi,
                            Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                            double yFactor, int interpolation);
IppStatus ippiResizeCenter_8u_C1R(const Ipp8u* pSrc, IppiSize srcSize, int srcStep, IppiRect srcRoi,
                                  Ipp8u* pDst, int dstStep, IppiSize dstRoiSize, double xFactor,
                                  double yFactor, double xCenter, double yCenter,
                                  int interpolation);

namespace forms {
// centered false: ippiResize geometry (xCenter, yCenter unused).
IppStatus Resize(const Kernels& k, int channels, bool centered, const Ipp8u* pSrc, IppiSize srcSize,
                 int srcStep, IppiRect srcRoi, Ipp8u* pDst, int dstStep, IppiSize dstRoiSize,
                 double xFactor, double yFactor, double xCenter, double yCenter, int interpolation);
}  // namespace forms

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_RESIZE_H_
