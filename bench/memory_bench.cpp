// OrvMemory::Copy and Set against memcpy and memset, below and at the
// streaming threshold and for blocks that pass the cache. Bytes per second.
#include <OrvMemory.h>
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

namespace {

struct Blocks {
  explicit Blocks(size_t size) : size(size) {
    src = static_cast<char*>(std::aligned_alloc(64, size + 64));
    dst = static_cast<char*>(std::aligned_alloc(64, size + 64));
    std::memset(src, 1, size + 64);
    std::memset(dst, 2, size + 64);
  }
  ~Blocks() {
    std::free(src);
    std::free(dst);
  }
  size_t size;
  char* src;
  char* dst;
};

void BM_OrvCopy(benchmark::State& state) {
  Blocks b(state.range(0));
  for (auto _ : state) {
    OrvMemory::Copy(b.dst, b.size, b.src, b.size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_Memcpy(benchmark::State& state) {
  Blocks b(state.range(0));
  for (auto _ : state) {
    std::memcpy(b.dst, b.src, b.size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_OrvSet(benchmark::State& state) {
  Blocks b(state.range(0));
  for (auto _ : state) {
    OrvMemory::Set(b.dst, 0x5A, b.size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void BM_Memset(benchmark::State& state) {
  Blocks b(state.range(0));
  for (auto _ : state) {
    std::memset(b.dst, 0x5A, b.size);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

#define ORV_MEMORY_SIZES Arg(127)->Arg(128)->Arg(4 << 10)->Arg(1 << 20)->Arg(8 << 20)
BENCHMARK(BM_OrvCopy)->ORV_MEMORY_SIZES;
BENCHMARK(BM_Memcpy)->ORV_MEMORY_SIZES;
BENCHMARK(BM_OrvSet)->ORV_MEMORY_SIZES;
BENCHMARK(BM_Memset)->ORV_MEMORY_SIZES;

}  // namespace

BENCHMARK_MAIN();
