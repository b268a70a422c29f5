#include "platform/os/os_file.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

#include "file/temp_folder.h"

namespace {

using orv::testing::TempFolder;

TEST(OsFile, OpenFlags) {
  int flags = 0;
  ASSERT_TRUE(orv::os::OpenFlagsFor(GENERIC_READ, OPEN_EXISTING, false, &flags));
  EXPECT_EQ(O_RDONLY | O_CLOEXEC, flags);
  ASSERT_TRUE(orv::os::OpenFlagsFor(GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS, true, &flags));
  EXPECT_EQ(O_RDWR | O_CREAT | O_TRUNC, flags);
  ASSERT_TRUE(orv::os::OpenFlagsFor(GENERIC_WRITE, CREATE_NEW, false, &flags));
  EXPECT_EQ(O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, flags);
  ASSERT_TRUE(orv::os::OpenFlagsFor(GENERIC_WRITE, OPEN_ALWAYS, true, &flags));
  EXPECT_EQ(O_WRONLY | O_CREAT, flags);
  ASSERT_TRUE(orv::os::OpenFlagsFor(0, OPEN_EXISTING, true, &flags));
  EXPECT_EQ(O_PATH, flags);
  EXPECT_FALSE(orv::os::OpenFlagsFor(GENERIC_READ, TRUNCATE_EXISTING, false, &flags));
  EXPECT_FALSE(orv::os::OpenFlagsFor(GENERIC_READ, 0, false, &flags));
  EXPECT_FALSE(orv::os::OpenFlagsFor(GENERIC_READ, 6, false, &flags));
  EXPECT_FALSE(orv::os::OpenFlagsFor(0x1, OPEN_EXISTING, false, &flags));
}

TEST(OsFile, HandlesCarryDescriptorsAboveZero) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  ASSERT_TRUE(folder.MakeFile("a.bin", orv::testing::Ramp(10)));
  // With descriptor 0 free, a new file would get it: the handle must not be null.
  const int savedInput = dup(0);
  ASSERT_GE(savedInput, 0);
  close(0);
  HANDLE handle = orv::os::OpenFileHandle(folder.Path("a.bin"), O_RDONLY | O_CLOEXEC, false);
  dup2(savedInput, 0);
  close(savedInput);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  EXPECT_NE(nullptr, handle);
  EXPECT_GT(orv::os::DescriptorFromHandle(handle), 0);
  EXPECT_TRUE(orv::os::CloseFileHandle(handle));
  EXPECT_EQ(-1, orv::os::DescriptorFromHandle(INVALID_HANDLE_VALUE));
  EXPECT_EQ(-1, orv::os::DescriptorFromHandle(nullptr));
}

TEST(OsFile, TransfersAndPositions) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  HANDLE handle =
      orv::os::OpenFileHandle(folder.Path("t.bin"), O_RDWR | O_CREAT | O_CLOEXEC, false);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  const std::vector<unsigned char> bytes = orv::testing::Ramp(1000, 3);
  uint64_t done = 0;
  ASSERT_TRUE(orv::os::WriteFileHandle(handle, bytes.data(), bytes.size(), &done));
  EXPECT_EQ(1000u, done);
  int64_t size = 0, position = 0;
  ASSERT_TRUE(orv::os::FileHandleSize(handle, &size));
  EXPECT_EQ(1000, size);
  ASSERT_TRUE(orv::os::SeekFileHandle(handle, 990, SEEK_SET, &position));
  EXPECT_EQ(990, position);
  std::vector<unsigned char> in(50, 0xEE);
  ASSERT_TRUE(orv::os::ReadFileHandle(handle, in.data(), in.size(), &done));
  EXPECT_EQ(10u, done);
  EXPECT_EQ(std::vector<unsigned char>(bytes.end() - 10, bytes.end()),
            std::vector<unsigned char>(in.begin(), in.begin() + 10));
  EXPECT_EQ(0xEE, in[10]);
  EXPECT_FALSE(orv::os::SeekFileHandle(handle, -1, SEEK_SET, &position));
  EXPECT_TRUE(orv::os::CloseFileHandle(handle));
  EXPECT_FALSE(orv::os::ReadFileHandle(INVALID_HANDLE_VALUE, in.data(), 1, &done));
  EXPECT_EQ(EBADF, errno);

  EXPECT_EQ(INVALID_HANDLE_VALUE, orv::os::OpenFileHandle(folder.path(), O_RDONLY, false));
  EXPECT_EQ(EISDIR, errno);
}

TEST(OsFile, FullDeviceReportsNoSpace) {
  HANDLE handle = orv::os::OpenFileHandle("/dev/full", O_WRONLY | O_CLOEXEC, false);
  if (handle == INVALID_HANDLE_VALUE) GTEST_SKIP() << "/dev/full is not available";
  const char bytes[4] = {1, 2, 3, 4};
  uint64_t done = 99;
  EXPECT_FALSE(orv::os::WriteFileHandle(handle, bytes, 4, &done));
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(0u, done);
  orv::os::CloseFileHandle(handle);
}

}  // namespace
