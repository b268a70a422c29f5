#include "platform/primitives/ipp_memory.h"

#include <cstdint>
#include <cstdlib>

namespace orv {
namespace ipp {
namespace {

void* Allocate(int width, int height, int bytesPerPixel, int* pStepBytes) {
  if (pStepBytes == nullptr || width < 1 || height < 1 || width > kIppMaxSide ||
      height > kIppMaxSide)
    return nullptr;
  const uint64_t line = static_cast<uint64_t>(width) * static_cast<uint64_t>(bytesPerPixel);
  const uint64_t step = (line + kIppAlignment - 1) / kIppAlignment * kIppAlignment;
  const uint64_t total = step * static_cast<uint64_t>(height);
  if (step > 0x7FFFFFFFu || total > 0x7FFFFFFFu) return nullptr;
  void* p = std::aligned_alloc(kIppAlignment, static_cast<size_t>(total));
  if (p == nullptr) return nullptr;
  *pStepBytes = static_cast<int>(step);
  return p;
}

}  // namespace

Ipp8u* ippiMalloc_8u_C1(int w, int h, int* s) { return static_cast<Ipp8u*>(Allocate(w, h, 1, s)); }
Ipp8u* ippiMalloc_8u_C2(int w, int h, int* s) { return static_cast<Ipp8u*>(Allocate(w, h, 2, s)); }
Ipp8u* ippiMalloc_8u_C3(int w, int h, int* s) { return static_cast<Ipp8u*>(Allocate(w, h, 3, s)); }
Ipp8u* ippiMalloc_8u_C4(int w, int h, int* s) { return static_cast<Ipp8u*>(Allocate(w, h, 4, s)); }
Ipp8u* ippiMalloc_8u_AC4(int w, int h, int* s) { return static_cast<Ipp8u*>(Allocate(w, h, 4, s)); }
Ipp32f* ippiMalloc_32f_C1(int w, int h, int* s) {
  return static_cast<Ipp32f*>(Allocate(w, h, 4, s));
}
Ipp32f* ippiMalloc_32f_C3(int w, int h, int* s) {
  return static_cast<Ipp32f*>(Allocate(w, h, 12, s));
}
Ipp32f* ippiMalloc_32f_C4(int w, int h, int* s) {
  return static_cast<Ipp32f*>(Allocate(w, h, 16, s));
}
void ippiFree(void* ptr) { std::free(ptr); }

}  // namespace ipp
}  // namespace orv
