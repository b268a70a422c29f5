// Sequential reading of a 1 GiB stream made of three files, in 1 MiB reads:
// COrvFile reading the list as one stream against read(2) walking the same
// files one after the other. Figures are bytes per second.
//
// The files are made under /tmp before the runs and removed after them.
#include <COrvFile.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/os/os_text.h"

namespace {

constexpr size_t kChunk = 1 << 20;
constexpr size_t kFileSizes[3] = {341u << 20, 342u << 20, 341u << 20};  // 1 GiB together

struct StreamFiles {
  std::string folder;
  std::vector<std::string> paths;
  std::wstring list;
  long long total = 0;
};

StreamFiles* g_files = nullptr;

bool MakeFiles(StreamFiles* files) {
  char pattern[] = "/tmp/orv_file_bench_XXXXXX";
  if (!mkdtemp(pattern)) return false;
  files->folder = pattern;
  std::vector<unsigned char> block(kChunk);
  for (size_t i = 0; i < block.size(); ++i) block[i] = static_cast<unsigned char>(i * 7 + 1);
  for (int f = 0; f < 3; ++f) {
    const std::string path = files->folder + "/part" + std::to_string(f) + ".bin";
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    files->paths.push_back(path);
    for (size_t done = 0; done < kFileSizes[f]; done += kChunk) {
      if (write(fd, block.data(), kChunk) != static_cast<ssize_t>(kChunk)) {
        close(fd);
        return false;
      }
    }
    close(fd);
    if (!files->list.empty()) files->list += L"|";
    files->list += orv::os::Utf8ToWide(path);
    files->total += static_cast<long long>(kFileSizes[f]);
  }
  return true;
}

void RemoveFiles(const StreamFiles& files) {
  for (const std::string& path : files.paths) unlink(path.c_str());
  if (!files.folder.empty()) rmdir(files.folder.c_str());
}

void BM_COrvFileRead(benchmark::State& state) {
  std::vector<unsigned char> buffer(kChunk);
  COrvFile* file = new COrvFile(g_files->list.c_str(), 1, nullptr);
  if (file->GetError() != 0) {
    delete file;
    state.SkipWithError("the stream could not be opened");
    return;
  }
  long long bytes = 0;
  for (auto _ : state) {
    file->SeekToBegin();
    unsigned long got = 0;
    bool eof = false;
    while (file->Read(buffer.data(), kChunk, &got, &eof, FILE_CURRENT, 0) == ORV_FILE_OK) {
      bytes += static_cast<long long>(got);
      if (eof) break;
    }
    benchmark::DoNotOptimize(buffer.data());
  }
  file->Release();
  state.SetBytesProcessed(bytes);
}

void BM_SystemRead(benchmark::State& state) {
  std::vector<unsigned char> buffer(kChunk);
  long long bytes = 0;
  for (auto _ : state) {
    for (const std::string& path : g_files->paths) {
      const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
      if (fd < 0) {
        state.SkipWithError("a file could not be opened");
        return;
      }
      ssize_t got;
      while ((got = read(fd, buffer.data(), kChunk)) > 0) bytes += got;
      close(fd);
    }
    benchmark::DoNotOptimize(buffer.data());
  }
  state.SetBytesProcessed(bytes);
}

BENCHMARK(BM_COrvFileRead)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SystemRead)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  StreamFiles files;
  if (!MakeFiles(&files)) {
    std::fprintf(stderr, "could not make the stream files under /tmp\n");
    RemoveFiles(files);
    return 1;
  }
  g_files = &files;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  RemoveFiles(files);
  return 0;
}
