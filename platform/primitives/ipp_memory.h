// Picture memory with padded, aligned lines.
//
// ippiMalloc_<type>_<channels>(widthPixels, heightPixels, &step) gives a block
// whose first byte is aligned to 64 bytes and whose step (returned through
// pStepBytes) is the line length in bytes rounded up to a multiple of 64, so
// every line starts on a 64-byte boundary. The block holds step x height bytes.
// A width or height below 1 or above 65535, a null pStepBytes, a block beyond
// 31 bits or an allocation failure answers null (and leaves *pStepBytes
// alone). ippiFree gives a block back; null is accepted.
// AC4 blocks have four bytes a pixel, like C4.
#ifndef ORV_PLATFORM_PRIMITIVES_IPP_MEMORY_H_
#define ORV_PLATFORM_PRIMITIVES_IPP_MEMORY_H_

#include "platform/primitives/ipp_types.h"

namespace orv {
namespace ipp {

constexpr int kIppAlignment = 64;

Ipp8u* ippiMalloc_8u_C1(int widthPixels, int heightPixels, int* pStepBytes);
Ipp8u* ippiMalloc_8u_C2(int widthPixels, int heightPixels, int* pStepBytes);
Ipp8u* ippiMalloc_8u_C3(int widthPixels, int heightPixels, int* pStepBytes);
Ipp8u* ippiMalloc_8u_C4(int widthPixels, int heightPixels, int* pStepBytes);
Ipp8u* ippiMalloc_8u_AC4(int widthPixels, int heightPixels, int* pStepBytes);
Ipp32f* ippiMalloc_32f_C1(int widthPixels, int heightPixels, int* pStepBytes);
Ipp32f* ippiMalloc_32f_C3(int widthPixels, int heightPixels, int* pStepBytes);
Ipp32f* ippiMalloc_32f_C4(int widthPixels, int heightPixels, int* pStepBytes);
void ippiFree(void* ptr);

}  // namespace ipp
}  // namespace orv

#endif  // ORV_PLATFORM_PRIMITIVES_IPP_MEMORY_H_
