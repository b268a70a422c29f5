// OrvMemory: one aligned buffer that can be described first and allocated at
// first use, dropped and brought back; and the library's block fill and copy,
// which stream large blocks past the cache on processors with SSE2.
#ifndef ORV_MEMORY_H_
#define ORV_MEMORY_H_

#include <OrvExport.h>

class ORV_API OrvMemory {
 public:
  OrvMemory();
  virtual ~OrvMemory();
  OrvMemory(const OrvMemory&) = delete;
  OrvMemory& operator=(const OrvMemory&) = delete;

  // With `buffer` null: forgets any block and only records size and alignment;
  // the first GetBuffer allocates. With `buffer` given: allocates now (a block
  // of the same size stays as it is; another size at the same alignment is
  // re-allocated with its contents kept) and stores the block through `buffer`.
  // False, with the object left empty and null stored, when allocation fails.
  // `alignment` must be a power of two (0 means the allocator's natural one).
  bool Initialize(void** buffer, unsigned int size, unsigned int alignment);
  // The block, allocated now if only described. Null when the size is 0 or the
  // allocation fails (the size is kept, so a later call tries again).
  void* GetBuffer();
  // Frees the block; size and alignment stay, so GetBuffer can bring it back.
  void ReleaseBuffer();
  // Frees the block and forgets size and alignment.
  void UnInitialize();
  unsigned int GetSize();
  // The size when a block exists, else 0.
  unsigned int GetAllocSize();
  unsigned int GetAlignment();
  // Zero-fills the whole block, when there is one.
  void Clear();

  // Fills `size` bytes with the low byte of `value`. Blocks of 128 bytes and
  // more are written with 16-byte non-temporal stores (no fence is issued).
  // A null `dst` writes nothing. Returns `dst`.
  static void* Set(void* dst, int value, unsigned int size);
  static void ZeroClear(void* dst, unsigned int size);
  // Copies `size` bytes when they fit in `dstSize`; otherwise, or with a null
  // pointer, writes nothing at all. Blocks of 128 bytes and more whose two
  // pointers share their position within 16 bytes are streamed. Returns `dst`.
  static void* Copy(void* dst, unsigned int dstSize, const void* src, unsigned int size);
  // As Copy, for overlapping blocks; never streams. Returns `dst`.
  static void* Move(void* dst, unsigned int dstSize, const void* src, unsigned int size);

 private:
  void* buffer_;
  unsigned int size_;
  unsigned int alignment_;
};

#endif  // ORV_MEMORY_H_
