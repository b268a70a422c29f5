// Copies, channel moves, fills and channel reordering of 8-bit pictures.
//
// All take the region size in pixels and steps in bytes. Regions of a copy
// must not overlap unless said otherwise.
//   Copy C1R, C3R, C4R   copy width x 1, 3 or 4 bytes a line (overlap allowed:
//                        each line moves as by memmove, lines in order).
//   Copy C3AC4R          3-channel pixels into the first three bytes of
//                        4-channel pixels; the fourth byte is not written.
//   Copy AC4C3R          the first three bytes of 4-channel pixels into
//                        3-channel pixels; the fourth byte is not read.
//   Copy C3P3R, C4P4R    split channel c into plane pDst[c] (one step for all
//                        planes).
//   Copy P4C4R           join four planes (one step for all) into 4-channel
//                        pixels.
//   Copy C4C1R           pSrc points at the chosen channel of the first pixel
//                        (e.g. base + 3 for the fourth byte); every fourth byte
//                        from there goes to the 1-channel destination. srcStep
//                        must hold 4 x width bytes.
//   Set C1R, C4R         fill every pixel with the value(s).
//   Set C4CR             pDst points at the chosen channel; that byte of every
//                        pixel is set, the other three are not written.
//   SwapChannels C3R/C3IR  destination channel c = source channel dstOrder[c];
//                        each entry must be 0, 1 or 2 (else
//                        ippStsChannelOrderErr). Order (2, 1, 0) turns B G R
//                        into R G B. The in-place form reads each pixel whole
//                        before it writes it.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_COPY_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_COPY_H_

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiCopy_8u_C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize);
IppStatus ippiCopy_8u_C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize);
IppStatus ippiCopy_8u_C4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                          IppiSize roiSize);
IppStatus ippiCopy_8u_C3AC4R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize roiSize);
IppStatus ippiCopy_8u_AC4C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                             IppiSize roiSize);
IppStatus ippiCopy_8u_C3P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3], int dstStep,
                            IppiSize roiSize);
IppStatus ippiCopy_8u_C4P4R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[4], int dstStep,
                            IppiSize roiSize);
IppStatus ippiCopy_8u_P4C4R(const Ipp8u* const pSrc[4], int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize);
IppStatus ippiCopy_8u_C4C1R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                            IppiSize roiSize);

IppStatus ippiSet_8u_C1R(Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roiSize);
IppStatus ippiSet_8u_C4R(const Ipp8u value[4], Ipp8u* pDst, int dstStep, IppiSize roiSize);
IppStatus ippiSet_8u_C4CR(Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roiSize);

IppStatus ippiSwapChannels_8u_C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                  IppiSize roiSize, const int dstOrder[3]);
IppStatus ippiSwapChannels_8u_C3IR(Ipp8u* pSrcDst, int srcDstStep, IppiSize roiSize,
                                   const int dstOrder[3]);

// The same operations with the row kernels of a named processor level.
namespace forms {
IppStatus Copy_C3AC4R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                      IppiSize roiSize);
IppStatus Copy_AC4C3R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                      IppiSize roiSize);
IppStatus Copy_C3P3R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                     int dstStep, IppiSize roiSize);
IppStatus Copy_C4P4R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[4],
                     int dstStep, IppiSize roiSize);
IppStatus Copy_P4C4R(const Kernels& k, const Ipp8u* const pSrc[4], int srcStep, Ipp8u* pDst,
                     int dstStep, IppiSize roiSize);
IppStatus Copy_C4C1R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                     IppiSize roiSize);
IppStatus Set_C4R(const Kernels& k, const Ipp8u value[4], Ipp8u* pDst, int dstStep,
                  IppiSize roiSize);
IppStatus Set_C4CR(const Kernels& k, Ipp8u value, Ipp8u* pDst, int dstStep, IppiSize roiSize);
IppStatus SwapChannels_C3R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                           int dstStep, IppiSize roiSize, const int dstOrder[3]);
}  // namespace forms

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_COPY_H_
