// Arithmetic on pictures: constants with a scale factor, range mapping
// between 8-bit and float pictures, and float accumulation.
//
// AddC / SubC (Sfs forms): each channel becomes (src +/- value) x 2^-scaleFactor,
//   rounded to nearest with ties to even, saturated to 0..255. Scale factor 0
//   is plain saturating arithmetic: SubC of 16 maps 10 to 0, AddC of 16 maps
//   250 to 255. The C3 forms take one value per channel.
// Scale_8u32f: dst = vMin + (vMax - vMin) x src / 255, computed in double and
//   stored as float; vMax must exceed vMin (else ippStsScaleRangeErr).
// Scale_32f8u: dst = (src - vMin) x 255 / (vMax - vMin), computed in double,
//   rounded to nearest (ties away from zero), saturated to 0..255; NaN gives 0.
//   vMax must exceed vMin.
// Convert_8u32f: the value as a float.
// Convert_32f8u: rounded by roundMode (ippRndZero truncates, ippRndNear ties to
//   even, ippRndFinancial ties away from zero), saturated to 0..255; NaN gives
//   0. Another mode answers ippStsRoundModeNotSupportedErr.
// AddWeighted_8u32f_C1IR: acc = acc x (1 - alpha) + src x alpha, in float.
// Float steps are in bytes, like all steps.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_ARITH_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_ARITH_H_

#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiAddC_8u_C3RSfs(const Ipp8u* pSrc, int srcStep, const Ipp8u value[3], Ipp8u* pDst,
                             int dstStep, IppiSize roiSize, int scaleFactor);
IppStatus ippiAddC_8u_C3IRSfs(const Ipp8u value[3], Ipp8u* pSrcDst, int srcDstStep,
                              IppiSize roiSize, int scaleFactor);
IppStatus ippiSubC_8u_C3IRSfs(const Ipp8u value[3], Ipp8u* pSrcDst, int srcDstStep,
                              IppiSize roiSize, int scaleFactor);
IppStatus ippiSubC_8u_C1IRSfs(Ipp8u value, Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                              int scaleFactor);

IppStatus ippiScale_8u32f_C3R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                              IppiSize roiSize, Ipp32f vMin, Ipp32f vMax);
IppStatus ippiScale_32f8u_C3R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                              IppiSize roiSize, Ipp32f vMin, Ipp32f vMax);
IppStatus ippiConvert_8u32f_C1R(const Ipp8u* pSrc, int srcStep, Ipp32f* pDst, int dstStep,
                                IppiSize roiSize);
IppStatus ippiConvert_32f8u_C1R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize, IppRoundMode roundMode);
IppStatus ippiConvert_32f8u_C3R(const Ipp32f* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize, IppRoundMode roundMode);
IppStatus ippiAddWeighted_8u32f_C1IR(const Ipp8u* pSrc, int srcStep, Ipp32f* pSrcDst,
                                     int srcDstStep, IppiSize roiSize, Ipp32f alpha);

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_ARITH_H_
