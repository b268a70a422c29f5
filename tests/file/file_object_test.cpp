#include <COrvFile.h>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "file/temp_folder.h"
#include "platform/os/os_text.h"

namespace {

using orv::testing::Ramp;
using orv::testing::TempFolder;
using Bytes = std::vector<unsigned char>;

int OpenDescriptorCount() {
  int count = 0;
  if (DIR* dir = opendir("/proc/self/fd")) {
    while (readdir(dir)) ++count;
    closedir(dir);
  }
  return count;
}

struct ReadResult {
  unsigned long code;
  Bytes bytes;
  bool eof;
};

ReadResult ReadFrom(IOrvFile* file, unsigned long size, unsigned long origin, long long offset) {
  ReadResult result{0, Bytes(size + 8, 0xEE), false};
  unsigned long got = 12345;
  result.code = file->Read(result.bytes.data(), size, &got, &result.eof, origin, offset);
  if (got <= size) {
    // Nothing may land past what was read.
    for (size_t i = got; i < result.bytes.size(); ++i) EXPECT_EQ(0xEE, result.bytes[i]);
    result.bytes.resize(got);
  } else {
    ADD_FAILURE() << "read size " << got << " above " << size;
  }
  return result;
}

Bytes Slice(const Bytes& bytes, size_t from, size_t count) {
  return Bytes(bytes.begin() + from, bytes.begin() + from + count);
}

// Two files of 10 and 20 bytes, read as one stream of 30.
class TwoFiles : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.ok());
    first_ = Ramp(10, 0);
    second_ = Ramp(20, 100);
    ASSERT_TRUE(folder_.MakeFile("a.bin", first_));
    ASSERT_TRUE(folder_.MakeFile("b.bin", second_));
    ASSERT_TRUE(folder_.MakeFile("empty.bin", {}));
    stream_ = first_;
    stream_.insert(stream_.end(), second_.begin(), second_.end());
    list_ = folder_.WidePath("a.bin") + L"|" + folder_.WidePath("b.bin");
  }

  TempFolder folder_;
  Bytes first_, second_, stream_;
  std::wstring list_;
};

TEST_F(TwoFiles, ReadCrossesFilesInOneCall) {
  COrvFile* file = new COrvFile(list_.c_str(), 0, nullptr);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_TRUE(file->IsFileOpened());
  EXPECT_EQ(30, file->GetFileSize());
  EXPECT_EQ(list_, file->GetFileName());

  ReadResult r = ReadFrom(file, 15, FILE_BEGIN, 5);
  EXPECT_EQ(0u, r.code);
  EXPECT_EQ(Slice(stream_, 5, 15), r.bytes);
  EXPECT_FALSE(r.eof);
  EXPECT_EQ(20, file->GetCurrentPosition());

  // A read that ends exactly at a file's end leaves the position continuous.
  r = ReadFrom(file, 10, FILE_BEGIN, 0);
  EXPECT_EQ(Slice(stream_, 0, 10), r.bytes);
  EXPECT_EQ(10, file->GetCurrentPosition());
  r = ReadFrom(file, 5, FILE_CURRENT, -99);
  EXPECT_EQ(Slice(stream_, 10, 5), r.bytes);

  // The read that reaches the end succeeds with eof; the next one answers 3.
  r = ReadFrom(file, 100, FILE_CURRENT, 0);
  EXPECT_EQ(0u, r.code);
  EXPECT_EQ(Slice(stream_, 15, 15), r.bytes);
  EXPECT_TRUE(r.eof);
  EXPECT_TRUE(file->IsEOF());
  r = ReadFrom(file, 1, FILE_CURRENT, 0);
  EXPECT_EQ(3u, r.code);
  EXPECT_TRUE(r.eof);
  EXPECT_TRUE(r.bytes.empty());

  // A read of nothing succeeds anywhere before the end.
  r = ReadFrom(file, 0, FILE_BEGIN, 4);
  EXPECT_EQ(0u, r.code);
  EXPECT_FALSE(r.eof);
  file->Release();
}

TEST_F(TwoFiles, EmptyFilesInAListAddNothing) {
  const std::wstring list = folder_.WidePath("empty.bin") + L"|" + folder_.WidePath("a.bin") +
                            L"|" + folder_.WidePath("empty.bin") + L"|" +
                            folder_.WidePath("b.bin") + L"|" + folder_.WidePath("empty.bin");
  COrvFile* file = new COrvFile(list.c_str(), 1, nullptr);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(30, file->GetFileSize());
  EXPECT_EQ(stream_, ReadFrom(file, 30, FILE_BEGIN, 0).bytes);
  EXPECT_EQ(Slice(stream_, 0, 10), ReadFrom(file, 10, FILE_BEGIN, 0).bytes);
  EXPECT_EQ(Slice(stream_, 10, 20), ReadFrom(file, 25, FILE_CURRENT, 0).bytes);
  EXPECT_EQ(Slice(stream_, 9, 2), ReadFrom(file, 2, FILE_BEGIN, 9).bytes);
  file->Release();
}

TEST_F(TwoFiles, SeeksStayInsideTheStream) {
  COrvFile* file = new COrvFile(list_.c_str(), 3, nullptr);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 8));
  EXPECT_EQ(0u, file->Seek(FILE_CURRENT, 5));
  EXPECT_EQ(13, file->GetCurrentPosition());
  EXPECT_EQ(Slice(stream_, 13, 2), ReadFrom(file, 2, FILE_CURRENT, 0).bytes);
  EXPECT_EQ(0u, file->Seek(FILE_CURRENT, 1000));
  EXPECT_EQ(30, file->GetCurrentPosition());
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 30));
  EXPECT_TRUE(file->IsEOF());
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 1LL << 62));
  EXPECT_EQ(30, file->GetCurrentPosition());
  EXPECT_EQ(0u, file->SeekToBegin());
  EXPECT_EQ(0, file->GetCurrentPosition());
  EXPECT_EQ(0u, file->Seek(FILE_END, 7));
  EXPECT_EQ(30, file->GetCurrentPosition());
  EXPECT_EQ(0u, file->SeekToEnd());
  EXPECT_TRUE(file->IsEOF());

  // Refused seeks move nothing.
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 12));
  EXPECT_EQ(255u, file->Seek(FILE_BEGIN, -1));
  EXPECT_EQ(255u, file->Seek(FILE_CURRENT, -1));
  EXPECT_EQ(255u, file->Seek(3, 0));
  EXPECT_EQ(12, file->GetCurrentPosition());
  EXPECT_EQ(255u, ReadFrom(file, 4, FILE_BEGIN, -3).code);
  EXPECT_EQ(255u, ReadFrom(file, 4, 7, 0).code);
  ReadResult r = ReadFrom(file, 4, FILE_END, 0);
  EXPECT_EQ(3u, r.code);
  EXPECT_TRUE(r.bytes.empty());
  EXPECT_EQ(12, file->GetCurrentPosition());
  file->Release();
}

TEST_F(TwoFiles, Windows) {
  ORV_OPEN_MODE window{0, 5, 14};
  COrvFile* file = new COrvFile(list_.c_str(), 0, &window);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(10, file->GetFileSize());
  EXPECT_EQ(0, file->GetCurrentPosition());
  ReadResult r = ReadFrom(file, 20, FILE_CURRENT, 0);
  EXPECT_EQ(0u, r.code);
  EXPECT_EQ(Slice(stream_, 5, 10), r.bytes);
  EXPECT_TRUE(r.eof);
  EXPECT_EQ(3u, ReadFrom(file, 1, FILE_CURRENT, 0).code);

  // Relative moves inside the window, and a seek past its end lands on its end.
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 4));
  EXPECT_EQ(0u, file->Seek(FILE_CURRENT, 3));
  EXPECT_EQ(7, file->GetCurrentPosition());
  EXPECT_EQ(Slice(stream_, 12, 3), ReadFrom(file, 5, FILE_CURRENT, 0).bytes);
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 100));
  EXPECT_EQ(10, file->GetCurrentPosition());
  EXPECT_TRUE(file->IsEOF());
  r = ReadFrom(file, 1, FILE_CURRENT, 0);
  EXPECT_EQ(3u, r.code);
  EXPECT_TRUE(r.eof);
  EXPECT_EQ(0u, file->SeekToEnd());
  EXPECT_EQ(10, file->GetCurrentPosition());
  file->Release();

  // An end of -1 means the end of the stream.
  ORV_OPEN_MODE toEnd{0, 12, -1};
  file = new COrvFile(list_.c_str(), 0, &toEnd);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(18, file->GetFileSize());
  EXPECT_EQ(Slice(stream_, 12, 18), ReadFrom(file, 18, FILE_BEGIN, 0).bytes);
  file->Release();

  ORV_OPEN_MODE single{0, 29, 29};
  file = new COrvFile(list_.c_str(), 0, &single);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(Slice(stream_, 29, 1), ReadFrom(file, 9, FILE_BEGIN, 0).bytes);
  file->Release();
}

TEST_F(TwoFiles, RefusedWindowsLeaveNothingOpen) {
  const ORV_OPEN_MODE refused[] = {
      {0, 5, 30}, {0, -1, 10}, {0, 8, 7}, {0, 30, -1}, {0, 0, -2}, {0, 1LL << 40, -1},
  };
  const int before = OpenDescriptorCount();
  for (ORV_OPEN_MODE window : refused) {
    COrvFile* file = new COrvFile(list_.c_str(), 0, &window);
    EXPECT_EQ(1u, file->GetError()) << window.startOffset << ".." << window.endOffset;
    EXPECT_FALSE(file->IsFileOpened());
    EXPECT_EQ(-1, file->GetFileSize());
    EXPECT_EQ(-1, file->GetCurrentPosition());
    EXPECT_EQ(before, OpenDescriptorCount());
    unsigned long got = 0;
    unsigned char byte;
    EXPECT_EQ(7u, file->Read(&byte, 1, &got, nullptr, FILE_BEGIN, 0));
    EXPECT_EQ(7u, file->Seek(FILE_BEGIN, 0));
    EXPECT_EQ(7u, file->Write(&byte, 1, &got));
    delete file;
  }
  // A window on an empty stream has nothing to show.
  ORV_OPEN_MODE all{0, 0, -1};
  COrvFile* file = new COrvFile(folder_.WidePath("empty.bin").c_str(), 0, &all);
  EXPECT_EQ(1u, file->GetError());
  delete file;
}

TEST_F(TwoFiles, CloseAndReopenKeepThePosition) {
  ORV_OPEN_MODE window{0, 3, 24};
  COrvFile* file = new COrvFile(list_.c_str(), 1, &window);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(7u, file->OpenFile());
  ASSERT_EQ(0u, file->Seek(FILE_BEGIN, 9));
  const int before = OpenDescriptorCount();
  file->CloseFile();
  EXPECT_EQ(before - 2, OpenDescriptorCount());
  EXPECT_FALSE(file->IsFileOpened());
  EXPECT_EQ(-1, file->GetFileSize());
  EXPECT_EQ(7u, ReadFrom(file, 1, FILE_CURRENT, 0).code);
  EXPECT_EQ(0u, file->OpenFile());
  EXPECT_EQ(22, file->GetFileSize());
  EXPECT_EQ(9, file->GetCurrentPosition());
  EXPECT_EQ(Slice(stream_, 12, 4), ReadFrom(file, 4, FILE_CURRENT, 0).bytes);

  // A window that no longer fits is refused on re-opening.
  file->CloseFile();
  ASSERT_TRUE(folder_.MakeFile("b.bin", Ramp(5)));
  EXPECT_EQ(1u, file->OpenFile());
  EXPECT_FALSE(file->IsFileOpened());
  EXPECT_EQ(before - 2, OpenDescriptorCount());
  file->Release();
}

TEST_F(TwoFiles, ModesAndBadInput) {
  const std::wstring created = folder_.WidePath("new.bin");
  const std::wstring twoNew = created + L"|" + folder_.WidePath("new2.bin");
  const std::wstring trailingBar = list_ + L"|";
  const std::wstring oneMissing = folder_.WidePath("a.bin") + L"|/none";
  const int before = OpenDescriptorCount();
  struct Case {
    const wchar_t* path;
    unsigned int mode;
  } refused[] = {
      {list_.c_str(), 8},
      {list_.c_str(), 0xFFFFFFFFu},
      {twoNew.c_str(), 4},
      {twoNew.c_str(), 7},
      {nullptr, 0},
      {L"/no/such/file.bin", 0},
      {L"/ab", 0},
      {L"C:\\clip.mts", 0},
      {trailingBar.c_str(), 0},
      {oneMissing.c_str(), 0},
  };
  for (const Case& c : refused) {
    COrvFile* file = new COrvFile(c.path, c.mode, nullptr);
    EXPECT_EQ(1u, file->GetError()) << c.mode;
    EXPECT_FALSE(file->IsFileOpened());
    EXPECT_EQ(nullptr, file->GetFileName());
    EXPECT_EQ(before, OpenDescriptorCount());
    delete file;
  }
  EXPECT_FALSE(COrvFile::IsFileExist(created.c_str()));

  COrvFile* file = new COrvFile(list_.c_str(), 0, nullptr);
  ASSERT_EQ(0u, file->GetError());
  unsigned char bytes[4] = {9, 9, 9, 9};
  unsigned long count = 77;
  EXPECT_EQ(255u, file->Write(bytes, 4, &count));
  EXPECT_EQ(0u, count);
  ASSERT_EQ(0u, file->Seek(FILE_BEGIN, 6));
  EXPECT_EQ(255u, file->Read(nullptr, 4, &count, nullptr, FILE_BEGIN, 0));
  EXPECT_EQ(255u, file->Read(bytes, 4, nullptr, nullptr, FILE_BEGIN, 0));
  EXPECT_EQ(255u, file->Write(nullptr, 4, &count));
  EXPECT_EQ(255u, file->Write(bytes, 4, nullptr));
  EXPECT_EQ(6, file->GetCurrentPosition());
  file->Release();
  file = new COrvFile(list_.c_str(), 0, nullptr);
  EXPECT_EQ(first_, ReadFrom(file, 10, FILE_BEGIN, 0).bytes);
  file->Release();
}

TEST_F(TwoFiles, WritingModeStartsEmpty) {
  const std::wstring path = folder_.WidePath("a.bin");
  COrvFile* file = new COrvFile(path.c_str(), 4, nullptr);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(0, file->GetFileSize());
  EXPECT_TRUE(file->IsEOF());
  Bytes data = Ramp(100, 50);
  unsigned long written = 0;
  EXPECT_EQ(0u, file->Write(data.data(), 100, &written));
  EXPECT_EQ(100u, written);
  EXPECT_EQ(100, file->GetFileSize());
  EXPECT_EQ(0u, file->Seek(FILE_BEGIN, 90));
  EXPECT_EQ(0u, file->Write(data.data(), 20, &written));
  EXPECT_EQ(110, file->GetFileSize());
  EXPECT_EQ(0u, file->SeekToBegin());
  Bytes expected = data;
  expected.resize(90);
  expected.insert(expected.end(), data.begin(), data.begin() + 20);
  EXPECT_EQ(expected, ReadFrom(file, 200, FILE_CURRENT, 0).bytes);
  EXPECT_EQ(0u, file->SeekToEnd());
  EXPECT_EQ(110, file->GetCurrentPosition());
  file->AddRef();
  file->Release();
  EXPECT_TRUE(file->IsFileOpened());
  file->Release();

  struct stat status;
  ASSERT_EQ(0, stat(folder_.Path("a.bin").c_str(), &status));
  EXPECT_EQ(110, status.st_size);
}

TEST(FileObject, FullVolumeGivesDiskFull) {
  if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "/dev/full is not available";
  COrvFile* file = new COrvFile(L"/dev/full", 4, nullptr);
  ASSERT_EQ(0u, file->GetError());
  unsigned char bytes[512] = {};
  unsigned long written = 1;
  EXPECT_EQ(4u, file->Write(bytes, sizeof(bytes), &written));
  EXPECT_EQ(0u, written);
  file->Release();
}

TEST(FileObject, StreamsAbove4GiB) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  const long long big = (5LL << 30) + 17;
  const int fd = open(folder.Path("big.bin").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(fd, 0);
  if (ftruncate(fd, big) != 0) {
    close(fd);
    GTEST_SKIP() << "the volume of /tmp takes no sparse file of 5 GiB";
  }
  const Bytes marker = Ramp(8, 200);
  const long long at4G = (4LL << 30) - 3;
  ASSERT_EQ(8, pwrite(fd, marker.data(), 8, at4G));
  ASSERT_EQ(8, pwrite(fd, marker.data(), 8, big - 8));
  close(fd);
  ASSERT_TRUE(folder.MakeFile("tail.bin", Ramp(16, 40)));

  const std::wstring list = folder.WidePath("big.bin") + L"|" + folder.WidePath("tail.bin");
  COrvFile* file = new COrvFile(list.c_str(), 0, nullptr);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(big + 16, file->GetFileSize());
  EXPECT_EQ(marker, ReadFrom(file, 8, FILE_BEGIN, at4G).bytes);
  EXPECT_EQ(at4G + 8, file->GetCurrentPosition());
  Bytes across = marker;
  const Bytes tail = Ramp(16, 40);
  across.insert(across.end(), tail.begin(), tail.begin() + 4);
  EXPECT_EQ(across, ReadFrom(file, 12, FILE_BEGIN, big - 8).bytes);
  EXPECT_EQ(big + 4, file->GetCurrentPosition());
  EXPECT_EQ(0u, file->Seek(FILE_END, 0));
  EXPECT_EQ(big + 16, file->GetCurrentPosition());
  file->Release();

  ORV_OPEN_MODE window{0, at4G + 2, big + 1};
  file = new COrvFile(list.c_str(), 0, &window);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(big + 1 - at4G - 2 + 1, file->GetFileSize());
  EXPECT_EQ(Slice(marker, 2, 6), ReadFrom(file, 6, FILE_BEGIN, 0).bytes);
  ReadResult r = ReadFrom(file, 8, FILE_BEGIN, big - 8 - at4G - 2 + 6);
  EXPECT_EQ(Bytes({marker[6], marker[7], 40, 41}), r.bytes);
  EXPECT_TRUE(r.eof);
  file->Release();
}

TEST(FileObject, PathLongerThanTheSystemLimit) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  const std::string deep = orv::testing::MakeDeepFolder(folder.path(), 4200);
  ASSERT_FALSE(deep.empty());
  const std::wstring path = orv::os::Utf8ToWide(deep + "/clip.mts");
  ASSERT_GT(path.size(), 4096u);

  COrvFile* file = new COrvFile(path.c_str(), 5, nullptr);
  ASSERT_EQ(0u, file->GetError());
  const Bytes data = Ramp(300, 1);
  unsigned long written = 0;
  ASSERT_EQ(0u, file->Write(const_cast<unsigned char*>(data.data()), 300, &written));
  file->Release();
  EXPECT_TRUE(COrvFile::IsFileExist(path.c_str()));
  EXPECT_TRUE(COrvFile::IsFileExist((path + L"|" + path).c_str()));

  file = new COrvFile((path + L"|" + path).c_str(), 0, nullptr);
  ASSERT_EQ(0u, file->GetError());
  EXPECT_EQ(600, file->GetFileSize());
  Bytes twice = data;
  twice.insert(twice.end(), data.begin(), data.end());
  EXPECT_EQ(twice, ReadFrom(file, 600, FILE_BEGIN, 0).bytes);
  file->Release();

  EXPECT_TRUE(COrvFile::DeleteFileW(path.c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist(path.c_str()));
}

}  // namespace
