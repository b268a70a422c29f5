// Streaming block fill and copy: 16-byte non-temporal stores for blocks that
// would otherwise evict the working set. Only built with x86 SIMD.
#ifndef ORV_FOUNDATION_MEMORY_STREAM_H_
#define ORV_FOUNDATION_MEMORY_STREAM_H_

#include <cstddef>
#include <cstdint>

namespace orv {

// Head bytes up to the first 16-byte boundary with memset, aligned 16-byte
// blocks with non-temporal stores, the tail with memset.
void StreamSet(uint8_t* dst, uint8_t value, size_t size);
// `dst` and `src` must share their position within 16 bytes. Head and tail
// bytes one by one, the aligned blocks with aligned loads and streaming stores.
void StreamCopy(uint8_t* dst, const uint8_t* src, size_t size);

}  // namespace orv

#endif  // ORV_FOUNDATION_MEMORY_STREAM_H_
