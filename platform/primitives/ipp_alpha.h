// Alpha composition of two 8-bit pictures.
//
// Alphas are read as fractions of 255. With D(x) = (x + 127) / 255 (integer
// division: x / 255 rounded to nearest), the two pictures A (pSrc1) and B
// (pSrc2) are mixed by a weight for each, from their alphas a and b:
//
//   type              weight of A          weight of B
//   ippAlphaOver      a                    D(b x (255 - a))
//   ippAlphaIn        D(a x b)             0
//   ippAlphaOut       D(a x (255 - b))     0
//   ippAlphaATop      D(a x b)             D(b x (255 - a))
//   ippAlphaXor       D(a x (255 - b))     D(b x (255 - a))
//   ippAlphaPlus      a                    b
//
// and every channel becomes min(255, D(wA x A + wB x B)). So ippAlphaPlus with
// alphas 128 and 128 gives D(128 x (A + B)), and with 255 and 0 copies A.
//
// AlphaCompC (C1R, C3R, C4R): one constant alpha for each picture; every byte
// of a pixel is mixed, the fourth of C4 too.
// AlphaComp_8u_AC4R: the fourth byte of each pixel is its alpha; the first
// three bytes are mixed as above and the fourth byte of the result is
// min(255, wA + wB) (for ippAlphaOver: a + b(1 - a), the alpha of A over B).
// The premultiplied types answer ippStsAlphaTypeErr, as does any other value.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_ALPHA_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_ALPHA_H_

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiAlphaCompC_8u_C1R(const Ipp8u* pSrc1, int src1Step, Ipp8u alpha1, const Ipp8u* pSrc2,
                                int src2Step, Ipp8u alpha2, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize, IppiAlphaType alphaType);
IppStatus ippiAlphaCompC_8u_C3R(const Ipp8u* pSrc1, int src1Step, Ipp8u alpha1, const Ipp8u* pSrc2,
                                int src2Step, Ipp8u alpha2, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize, IppiAlphaType alphaType);
IppStatus ippiAlphaCompC_8u_C4R(const Ipp8u* pSrc1, int src1Step, Ipp8u alpha1, const Ipp8u* pSrc2,
                                int src2Step, Ipp8u alpha2, Ipp8u* pDst, int dstStep,
                                IppiSize roiSize, IppiAlphaType alphaType);
IppStatus ippiAlphaComp_8u_AC4R(const Ipp8u* pSrc1, int src1Step, const Ipp8u* pSrc2, int src2Step,
                                Ipp8u* pDst, int dstStep, IppiSize roiSize,
                                IppiAlphaType alphaType);

namespace forms {
IppStatus AlphaCompC(const Kernels& k, int channels, const Ipp8u* pSrc1, int src1Step, Ipp8u alpha1,
                     const Ipp8u* pSrc2, int src2Step, Ipp8u alpha2, Ipp8u* pDst, int dstStep,
                     IppiSize roiSize, IppiAlphaType alphaType);
IppStatus AlphaComp_AC4R(const Kernels& k, const Ipp8u* pSrc1, int src1Step, const Ipp8u* pSrc2,
                         int src2Step, Ipp8u* pDst, int dstStep, IppiSize roiSize,
                         IppiAlphaType alphaType);
}  // namespace forms

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_ALPHA_H_
