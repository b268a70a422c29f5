#include <OrvMemory.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace {

TEST(OrvMemoryLifecycle, DeferredInitializeAllocatesAtFirstGetBuffer) {
  OrvMemory memory;
  EXPECT_TRUE(memory.Initialize(nullptr, 1024, 32));
  EXPECT_EQ(memory.GetSize(), 1024u);
  EXPECT_EQ(memory.GetAllocSize(), 0u);
  void* block = memory.GetBuffer();
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 32, 0u);
  EXPECT_EQ(memory.GetAllocSize(), 1024u);
  EXPECT_EQ(memory.GetBuffer(), block);  // a second call keeps the block
}

TEST(OrvMemoryLifecycle, ReleaseKeepsDescriptionUninitializeForgetsIt) {
  OrvMemory memory;
  void* block = nullptr;
  ASSERT_TRUE(memory.Initialize(&block, 256, 64));
  memory.ReleaseBuffer();
  EXPECT_EQ(memory.GetAllocSize(), 0u);
  EXPECT_EQ(memory.GetSize(), 256u);
  EXPECT_EQ(memory.GetAlignment(), 64u);
  void* again = memory.GetBuffer();
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(again) % 64, 0u);
  EXPECT_EQ(memory.GetAllocSize(), 256u);
  memory.UnInitialize();
  EXPECT_EQ(memory.GetSize(), 0u);
  EXPECT_EQ(memory.GetAlignment(), 0u);
  EXPECT_EQ(memory.GetBuffer(), nullptr);
}

TEST(OrvMemoryLifecycle, DeferredSizeZeroGivesNoBuffer) {
  OrvMemory memory;
  EXPECT_TRUE(memory.Initialize(nullptr, 0, 16));
  EXPECT_EQ(memory.GetBuffer(), nullptr);
}

TEST(OrvMemoryLifecycle, ImmediateInitializeCases) {
  OrvMemory memory;
  void* first = nullptr;
  ASSERT_TRUE(memory.Initialize(&first, 100, 16));
  std::memset(first, 0x5A, 100);

  // Same size, other alignment: the block stays.
  void* same = nullptr;
  ASSERT_TRUE(memory.Initialize(&same, 100, 4096));
  EXPECT_EQ(same, first);
  EXPECT_EQ(memory.GetAlignment(), 4096u);

  // Another size at the same alignment: contents kept.
  void* grown = nullptr;
  ASSERT_TRUE(memory.Initialize(&grown, 300, 4096));
  EXPECT_EQ(reinterpret_cast<uintptr_t>(grown) % 4096, 0u);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(static_cast<uint8_t*>(grown)[i], 0x5A);

  // Another size and alignment: a fresh block at the new alignment.
  void* fresh = nullptr;
  ASSERT_TRUE(memory.Initialize(&fresh, 50, 128));
  EXPECT_EQ(reinterpret_cast<uintptr_t>(fresh) % 128, 0u);
  EXPECT_EQ(memory.GetAllocSize(), 50u);
}

TEST(OrvMemoryLifecycle, FailedAllocationLeavesObjectEmpty) {
  OrvMemory memory;
  void* block = reinterpret_cast<void*>(1);
  EXPECT_FALSE(memory.Initialize(&block, 64, 3));  // not a power of two
  EXPECT_EQ(block, nullptr);
  EXPECT_EQ(memory.GetSize(), 0u);
  EXPECT_EQ(memory.GetAlignment(), 0u);
}

TEST(OrvMemoryLifecycle, ClearZeroesWholeBlock) {
  OrvMemory memory;
  void* block = nullptr;
  ASSERT_TRUE(memory.Initialize(&block, 1000, 16));
  std::memset(block, 0xFF, 1000);
  memory.Clear();
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(static_cast<uint8_t*>(block)[i], 0) << i;
  OrvMemory empty;
  empty.Clear();  // no block: nothing to do
}

// Sets and copies at every size and offset around the streaming threshold,
// inside a guarded buffer: every byte in range is written, none outside.
class OrvMemoryBlockOps : public ::testing::TestWithParam<unsigned int> {};

TEST_P(OrvMemoryBlockOps, SetWritesExactlyTheRange) {
  const unsigned int size = GetParam();
  std::vector<uint8_t> buffer(size + 64, 0xEE);
  for (unsigned int offset = 0; offset < 16; ++offset) {
    std::fill(buffer.begin(), buffer.end(), 0xEE);
    uint8_t* dst = buffer.data() + 16 + offset;
    if (offset + 16 + size > buffer.size()) break;
    EXPECT_EQ(OrvMemory::Set(dst, 0x1234, size), dst);
    for (unsigned int i = 0; i < buffer.size(); ++i) {
      const bool inside = buffer.data() + i >= dst && buffer.data() + i < dst + size;
      ASSERT_EQ(buffer[i], inside ? 0x34 : 0xEE) << "size " << size << " offset " << offset;
    }
  }
}

TEST_P(OrvMemoryBlockOps, CopyWritesExactlyTheRangeForAnyPhase) {
  const unsigned int size = GetParam();
  std::vector<uint8_t> src(size + 32);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 7 + 3);
  for (unsigned int srcOffset : {0u, 3u}) {
    for (unsigned int dstOffset : {0u, 3u, 8u}) {
      std::vector<uint8_t> dst(size + 64, 0xEE);
      uint8_t* d = dst.data() + 16 + dstOffset;
      const uint8_t* s = src.data() + srcOffset;
      EXPECT_EQ(OrvMemory::Copy(d, size, s, size), d);
      for (unsigned int i = 0; i < dst.size(); ++i) {
        const bool inside = dst.data() + i >= d && dst.data() + i < d + size;
        const uint8_t want = inside ? s[dst.data() + i - d] : 0xEE;
        ASSERT_EQ(dst[i], want) << "size " << size << " src+" << srcOffset << " dst+" << dstOffset;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, OrvMemoryBlockOps,
                         ::testing::Values(1u, 15u, 16u, 127u, 128u, 129u, 143u, 4096u, 65537u));

TEST(OrvMemoryBlockOps, CopyRefusesOversizeOnBothPaths) {
  for (unsigned int size : {64u, 4096u}) {
    alignas(16) uint8_t src[4096];
    alignas(16) uint8_t dst[4096];
    std::memset(src, 1, sizeof(src));
    std::memset(dst, 9, sizeof(dst));
    EXPECT_EQ(OrvMemory::Copy(dst, size - 1, src, size), dst);
    for (unsigned int i = 0; i < size; ++i) ASSERT_EQ(dst[i], 9) << size;
  }
}

TEST(OrvMemoryBlockOps, NullPointersWriteNothing) {
  uint8_t buffer[8] = {};
  EXPECT_EQ(OrvMemory::Set(nullptr, 1, 1000), nullptr);
  EXPECT_EQ(OrvMemory::Copy(nullptr, 1000, buffer, 8), nullptr);
  EXPECT_EQ(OrvMemory::Copy(buffer, 8, nullptr, 8), buffer);
  EXPECT_EQ(OrvMemory::Move(nullptr, 8, buffer, 8), nullptr);
  OrvMemory::ZeroClear(nullptr, 100);
}

TEST(OrvMemoryBlockOps, MoveHandlesOverlapAndRefusesOversize) {
  uint8_t buffer[300];
  for (int i = 0; i < 300; ++i) buffer[i] = static_cast<uint8_t>(i);
  EXPECT_EQ(OrvMemory::Move(buffer + 10, 290, buffer, 200), buffer + 10);
  for (int i = 0; i < 200; ++i) ASSERT_EQ(buffer[10 + i], static_cast<uint8_t>(i));
  uint8_t small[4] = {7, 7, 7, 7};
  OrvMemory::Move(small, 3, buffer, 4);
  EXPECT_EQ(small[0], 7);
}

}  // namespace
