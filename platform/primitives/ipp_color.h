// Colour conversions, chroma sampling and 4:2:2 split/join.
//
// The arithmetic is that of ipp_color_math.h: studio-range ITU-R BT.601 for
// the names without _JPEG, the full-swing JFIF matrix for those with it, in
// fixed point whose products each fit a 16-bit multiply-high (6 fractional
// bits for studio YCbCr to RGB, 8 for studio luma, 7 for chroma and JFIF
// luma, 13 for JFIF YCbCr to RGB), rounded to nearest at the end and
// saturated; every output is within one level of the formula in double.
// Region sizes are in pixels, steps in bytes.
//
// Subsampled chroma. A 4:2:0 chroma plane holds (W/2) x (H/2) samples and a
// 4:2:2 one W/2 samples a line (integer division): sample (i, j) belongs to
// the pixels 2i, 2i+1 of lines 2j, 2j+1 (4:2:0) or of its line (4:2:2).
//   - Reading chroma: a pixel in the lone last column or line of an odd size
//     takes the chroma of the pair before it; a picture one pixel wide (or,
//     for 4:2:0, one line high) has no chroma and is converted as neutral
//     (Cb = Cr = 128). No chroma sample outside (W/2) x (H/2) is read.
//   - Making chroma: a sample is the matrix applied to the mean R, G, B of its
//     2 x 2 block (4:2:0) or pixel pair (4:2:2), rounded once. The lone last
//     column or line of an odd size gets luma only, except in the packed
//     4:2:2 output, where the lone last pixel's chroma byte is its own Cb.
//
// ippiYCbCr420ToBGR_8u_P3C3R   Y, Cb, Cr planes (steps srcStep[0..2]) to B G R.
// ippiYCbCr422ToRGB_8u_C2C3R   packed Y0 Cb Y1 Cr to R G B pixels.
// ippiYCbCr422ToRGB_8u_C2P3R   packed Y0 Cb Y1 Cr to planes R, G, B (one step).
// ippiRGBToYCbCr420_8u_C3P3R   R G B pixels to Y, Cb, Cr planes (steps dstStep[0..2]).
// ippiRGBToYCbCr422_8u_P3C2R   planes R, G, B (one step) to packed Y0 Cb Y1 Cr.
// ippiYCbCrToBGR_JPEG_8u_P3C3R full-resolution Y, Cb, Cr planes (one step) to B G R.
// ippiYCbCrToRGB_JPEG_8u_P3R   the same to planes R, G, B (one step).
// ippiBGRToYCbCr_JPEG_8u_C3P3R B G R pixels to full-resolution Y, Cb, Cr planes.
// ippiSampleDownH2V2_JPEG_8u_C1R  dst(x, y) = (s(2x,2y) + s(2x+1,2y) + s(2x,2y+1)
//                                 + s(2x+1,2y+1) + 2) >> 2.
// ippiSampleDownH2V1_JPEG_8u_C1R  dst(x, y) = (s(2x,y) + s(2x+1,y) + 1) >> 1.
//   The destination may be at most half the source, rounded up; a source
//   column or line beyond the source size is replaced by its last one. A
//   larger destination answers ippStsSizeErr.
// ippiYCbCr422_8u_C2P3R        split packed Y0 Cb Y1 Cr into Y (W a line), Cb
//                              and Cr (W/2 a line); values unchanged.
// ippiYCbCr422_8u_P3C2R        join them again. With an odd width the lone last
//                              pixel gets its Y and, as its chroma byte, the Cb
//                              of the pair before it (128 for a width of 1).
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_COLOR_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_COLOR_H_

#include "platform/primitives/ipp_kernels.h"
#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

IppStatus ippiYCbCr420ToBGR_8u_P3C3R(const Ipp8u* const pSrc[3], int srcStep[3], Ipp8u* pDst,
                                     int dstStep, IppiSize roiSize);
IppStatus ippiYCbCr422ToRGB_8u_C2C3R(const Ipp8u* pSrc, int srcStep, Ipp8u* pDst, int dstStep,
                                     IppiSize roiSize);
IppStatus ippiYCbCr422ToRGB_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                                     int dstStep, IppiSize roiSize);
IppStatus ippiRGBToYCbCr420_8u_C3P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                                     int dstStep[3], IppiSize roiSize);
IppStatus ippiRGBToYCbCr422_8u_P3C2R(const Ipp8u* const pSrc[3], int srcStep, Ipp8u* pDst,
                                     int dstStep, IppiSize roiSize);
IppStatus ippiYCbCrToBGR_JPEG_8u_P3C3R(const Ipp8u* const pSrcYCbCr[3], int srcStep, Ipp8u* pDstBGR,
                                       int dstStep, IppiSize roiSize);
IppStatus ippiYCbCrToRGB_JPEG_8u_P3R(const Ipp8u* const pSrcYCbCr[3], int srcStep,
                                     Ipp8u* const pDstRGB[3], int dstStep, IppiSize roiSize);
IppStatus ippiBGRToYCbCr_JPEG_8u_C3P3R(const Ipp8u* pSrcBGR, int srcStep, Ipp8u* const pDstYCbCr[3],
                                       int dstStep, IppiSize roiSize);
IppStatus ippiSampleDownH2V2_JPEG_8u_C1R(const Ipp8u* pSrc, int srcStep, IppiSize srcSize,
                                         Ipp8u* pDst, int dstStep, IppiSize dstSize);
IppStatus ippiSampleDownH2V1_JPEG_8u_C1R(const Ipp8u* pSrc, int srcStep, IppiSize srcSize,
                                         Ipp8u* pDst, int dstStep, IppiSize dstSize);
IppStatus ippiYCbCr422_8u_C2P3R(const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                                int dstStep[3], IppiSize roiSize);
IppStatus ippiYCbCr422_8u_P3C2R(const Ipp8u* const pSrc[3], int srcStep[3], Ipp8u* pDst,
                                int dstStep, IppiSize roiSize);

namespace forms {
IppStatus YCbCr420ToBGR(const Kernels& k, const Ipp8u* const pSrc[3], int srcStep[3], Ipp8u* pDst,
                        int dstStep, IppiSize roiSize);
IppStatus YCbCr422ToRGB_C2C3R(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* pDst,
                              int dstStep, IppiSize roiSize);
IppStatus YCbCr422ToRGB_C2P3R(const Kernels& k, const Ipp8u* pSrc, int srcStep,
                              Ipp8u* const pDst[3], int dstStep, IppiSize roiSize);
IppStatus RGBToYCbCr420(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                        int dstStep[3], IppiSize roiSize);
IppStatus RGBToYCbCr422(const Kernels& k, const Ipp8u* const pSrc[3], int srcStep, Ipp8u* pDst,
                        int dstStep, IppiSize roiSize);
IppStatus YCbCrToBGR_JPEG(const Kernels& k, const Ipp8u* const pSrc[3], int srcStep, Ipp8u* pDst,
                          int dstStep, IppiSize roiSize);
IppStatus YCbCrToRGB_JPEG_P3R(const Kernels& k, const Ipp8u* const pSrc[3], int srcStep,
                              Ipp8u* const pDst[3], int dstStep, IppiSize roiSize);
IppStatus BGRToYCbCr_JPEG(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                          int dstStep, IppiSize roiSize);
IppStatus SampleDown(const Kernels& k, bool vertical, const Ipp8u* pSrc, int srcStep,
                     IppiSize srcSize, Ipp8u* pDst, int dstStep, IppiSize dstSize);
IppStatus YCbCr422Split(const Kernels& k, const Ipp8u* pSrc, int srcStep, Ipp8u* const pDst[3],
                        int dstStep[3], IppiSize roiSize);
IppStatus YCbCr422Join(const Kernels& k, const Ipp8u* const pSrc[3], int srcStep[3], Ipp8u* pDst,
                       int dstStep, IppiSize roiSize);
}  // namespace forms

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_COLOR_H_
