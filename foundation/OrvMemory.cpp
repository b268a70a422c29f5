#include <OrvMemory.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <COrvCpuJudgment.h>
#include "foundation/memory_stream.h"

namespace {

constexpr unsigned int kStreamThreshold = 128;

bool IsPowerOfTwo(unsigned int v) { return v != 0 && (v & (v - 1)) == 0; }

// The aligned heap. Alignment 0 means the allocator's natural alignment; any
// other value that is not a power of two fails, as the aligned heap does.
void* AlignedAlloc(unsigned int size, unsigned int alignment) {
  if (size == 0) return nullptr;
  if (alignment != 0 && !IsPowerOfTwo(alignment)) return nullptr;
  size_t align = alignment < sizeof(void*) ? sizeof(void*) : alignment;
  void* p = nullptr;
  if (posix_memalign(&p, align, size) != 0) return nullptr;
  return p;
}

void* AlignedRealloc(void* old, unsigned int oldSize, unsigned int size, unsigned int alignment) {
  void* p = AlignedAlloc(size, alignment);
  if (p && old) std::memcpy(p, old, oldSize < size ? oldSize : size);
  if (p) std::free(old);
  return p;
}

}  // namespace

OrvMemory::OrvMemory() : buffer_(nullptr), size_(0), alignment_(0) {}

OrvMemory::~OrvMemory() { std::free(buffer_); }

bool OrvMemory::Initialize(void** buffer, unsigned int size, unsigned int alignment) {
  if (buffer == nullptr) {
    UnInitialize();
    size_ = size;
    alignment_ = alignment;
    return true;
  }
  void* block = nullptr;
  if (buffer_ == nullptr) {
    block = AlignedAlloc(size, alignment);
  } else if (size == size_) {
    block = buffer_;
  } else if (alignment == alignment_) {
    block = AlignedRealloc(buffer_, size_, size, alignment);
    if (!block) std::free(buffer_);
  } else {
    std::free(buffer_);
    block = AlignedAlloc(size, alignment);
  }
  buffer_ = block;
  *buffer = block;
  if (block == nullptr) {
    size_ = 0;
    alignment_ = 0;
    return false;
  }
  size_ = size;
  alignment_ = alignment;
  return true;
}

void* OrvMemory::GetBuffer() {
  if (buffer_ == nullptr && size_ != 0) buffer_ = AlignedAlloc(size_, alignment_);
  return buffer_;
}

void OrvMemory::ReleaseBuffer() {
  std::free(buffer_);
  buffer_ = nullptr;
}

void OrvMemory::UnInitialize() {
  ReleaseBuffer();
  size_ = 0;
  alignment_ = 0;
}

unsigned int OrvMemory::GetSize() { return size_; }

unsigned int OrvMemory::GetAllocSize() { return buffer_ ? size_ : 0; }

unsigned int OrvMemory::GetAlignment() { return alignment_; }

void OrvMemory::Clear() {
  if (buffer_) Set(buffer_, 0, size_);
}

void* OrvMemory::Set(void* dst, int value, unsigned int size) {
  if (dst == nullptr || size == 0) return dst;
#if ORV_X86_SIMD
  if (size >= kStreamThreshold && COrvCpuJudgment::IsSupportSSE2()) {
    orv::StreamSet(static_cast<uint8_t*>(dst), static_cast<uint8_t>(value), size);
    return dst;
  }
#endif
  std::memset(dst, value & 0xFF, size);
  return dst;
}

void OrvMemory::ZeroClear(void* dst, unsigned int size) { Set(dst, 0, size); }

void* OrvMemory::Copy(void* dst, unsigned int dstSize, const void* src, unsigned int size) {
  // Both paths refuse the same way: nothing is written when the block does not
  // fit or a pointer is missing.
  if (dst == nullptr || src == nullptr || size > dstSize || size == 0) return dst;
#if ORV_X86_SIMD
  const bool samePhase =
      ((reinterpret_cast<uintptr_t>(dst) ^ reinterpret_cast<uintptr_t>(src)) & 15) == 0;
  if (size >= kStreamThreshold && samePhase && COrvCpuJudgment::IsSupportSSE2()) {
    orv::StreamCopy(static_cast<uint8_t*>(dst), static_cast<const uint8_t*>(src), size);
    return dst;
  }
#endif
  std::memcpy(dst, src, size);
  return dst;
}

void* OrvMemory::Move(void* dst, unsigned int dstSize, const void* src, unsigned int size) {
  if (dst == nullptr || src == nullptr || size > dstSize || size == 0) return dst;
  std::memmove(dst, src, size);
  return dst;
}
