#include <emmintrin.h>

#include <cstring>

#include "foundation/memory_stream.h"

namespace orv {

static size_t HeadLength(const void* p, size_t size) {
  const size_t misalign = reinterpret_cast<uintptr_t>(p) & 15;
  const size_t head = misalign ? 16 - misalign : 0;
  return head < size ? head : size;
}

void StreamSet(uint8_t* dst, uint8_t value, size_t size) {
  const size_t head = HeadLength(dst, size);
  std::memset(dst, value, head);
  dst += head;
  size -= head;
  const __m128i v = _mm_set1_epi8(static_cast<char>(value));
  size_t blocks = size / 16;
  for (; blocks; --blocks, dst += 16) _mm_stream_si128(reinterpret_cast<__m128i*>(dst), v);
  std::memset(dst, value, size & 15);
}

void StreamCopy(uint8_t* dst, const uint8_t* src, size_t size) {
  const size_t head = HeadLength(dst, size);
  for (size_t i = 0; i < head; ++i) dst[i] = src[i];
  dst += head;
  src += head;
  size -= head;
  size_t blocks = size / 16;
  for (; blocks; --blocks, dst += 16, src += 16) {
    _mm_stream_si128(reinterpret_cast<__m128i*>(dst),
                     _mm_load_si128(reinterpret_cast<const __m128i*>(src)));
  }
  for (size_t i = 0; i < (size & 15); ++i) dst[i] = src[i];
}

}  // namespace orv
