// Mirrors of 8-bit pictures with 1, 3 or 4 channels.
//
// flip = ippAxsHorizontal (0): about the horizontal axis, upside down:
//        destination line y = source line height - 1 - y.
// flip = ippAxsVertical (1): about the vertical axis, left to right:
//        destination pixel x = source pixel width - 1 - x (pixels move whole).
// flip = ippAxsBoth (2): both at once (a half turn).
// Any other axis answers ippStsMirrorFlipErr before anything is written.
// The R forms read pSrc and write pDst, which must not overlap; the IR forms
// work in place. Only the region is touched: bytes between the end of a line
// and the next step are neither read nor written.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_MIRROR_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_MIRROR_H_

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiMirror_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, IppiAxis flip);
IppStatus ippiMirror_8u_C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, IppiAxis flip);
IppStatus ippiMirror_8u_C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize, IppiAxis flip);
IppStatus ippiMirror_8u_C1IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, IppiAxis flip);
IppStatus ippiMirror_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, IppiAxis flip);
IppStatus ippiMirror_8u_C4IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize, IppiAxis flip);

namespace forms {
// channels is 1, 3 or 4.
IppStatus Mirror(const Kernels& k, int channels, const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                 int dstStep, IppiSize roiSize, IppiAxis flip);
IppStatus MirrorInPlace(const Kernels& k, int channels, Ipp8u* pSrcDst, int srcDstStep,
                        IppiSize roiSize, IppiAxis flip);
}  // namespace forms

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_MIRROR_H_
