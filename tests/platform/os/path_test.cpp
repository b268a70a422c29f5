#include "platform/os/os_path.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <unistd.h>

#include <string>

#include "file/temp_folder.h"

namespace {

using orv::os::PathForm;
using orv::testing::TempFolder;

TEST(OsPath, Grammar) {
  EXPECT_EQ(PathForm::kRelative, orv::os::ClassifyPath(L"a\\b"));
  EXPECT_EQ(PathForm::kRelative, orv::os::ClassifyPath(nullptr));
  EXPECT_EQ(PathForm::kPosix, orv::os::ClassifyPath(L"/a"));
  EXPECT_EQ(PathForm::kPrefixedPosix, orv::os::ClassifyPath(L"\\\\?\\/a"));
  EXPECT_EQ(PathForm::kDrive, orv::os::ClassifyPath(L"z:\\a"));
  EXPECT_EQ(PathForm::kPrefixedDrive, orv::os::ClassifyPath(L"\\\\?\\C:\\a"));
  EXPECT_EQ(PathForm::kRooted, orv::os::ClassifyPath(L"\\a"));
  EXPECT_EQ(PathForm::kUnc, orv::os::ClassifyPath(L"\\\\srv\\s"));
  EXPECT_EQ(PathForm::kPrefixedUnc, orv::os::ClassifyPath(L"\\\\?\\UNC\\srv\\s"));
}

TEST(OsPath, SystemText) {
  std::string out;
  ASSERT_TRUE(orv::os::SystemPathOf(L"\\\\?\\/m\u00e9dia/a b", &out));
  EXPECT_EQ(
      "/m\xc3\xa9"
      "dia/a b",
      out);
  ASSERT_TRUE(orv::os::SystemPathOf(L"dir\\f.bin", &out));
  EXPECT_EQ("dir\\f.bin", out);
  errno = 0;
  EXPECT_FALSE(orv::os::SystemPathOf(L"\\\\?\\C:\\x", &out));
  EXPECT_EQ(ENOENT, errno);
  EXPECT_FALSE(orv::os::SystemPathOf(L"\\\\srv\\share\\x", &out));
  EXPECT_FALSE(orv::os::SystemPathOf(L"", &out));
  EXPECT_FALSE(orv::os::SystemPathOf(nullptr, &out));
}

TEST(OsPath, PathsBeyondTheSystemLimit) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  const std::string deep = orv::testing::MakeDeepFolder(folder.path(), PATH_MAX + 500);
  ASSERT_FALSE(deep.empty());
  const std::string file = deep + "/leaf.bin";
  ASSERT_GT(file.size(), static_cast<size_t>(PATH_MAX));
  // The system alone refuses the path.
  EXPECT_LT(open(file.c_str(), O_RDONLY | O_CREAT, 0644), 0);

  const int fd = orv::os::OpenLongPath(file, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(3, write(fd, "abc", 3));
  close(fd);
  struct stat status;
  ASSERT_TRUE(orv::os::StatLongPath(file, &status));
  EXPECT_EQ(3, status.st_size);
  struct statfs fs;
  EXPECT_TRUE(orv::os::StatFsLongPath(file, &fs));
  std::string root;
  ASSERT_TRUE(orv::os::VolumeMountPoint(file + "/not/yet", &root));
  EXPECT_EQ(0u, folder.path().rfind(root, 0));
  EXPECT_TRUE(orv::os::UnlinkLongPath(file));
  EXPECT_FALSE(orv::os::StatLongPath(file, &status));
  EXPECT_EQ(ENOENT, errno);

  // A single component longer than the system's limit cannot be reached.
  const std::string huge = folder.path() + "/" + std::string(PATH_MAX + 10, 'x');
  EXPECT_LT(orv::os::OpenLongPath(huge, O_RDONLY, 0), 0);
  EXPECT_EQ(ENAMETOOLONG, errno);
}

TEST(OsPath, FileSystemNames) {
  struct stat status;
  struct statfs fs;
  ASSERT_EQ(0, stat("/proc", &status));
  ASSERT_EQ(0, statfs("/proc", &fs));
  EXPECT_EQ("proc", orv::os::FileSystemNameOf(status.st_dev, "/proc", fs.f_type));
  // Without a mount-table line, the magic number names the file system.
  EXPECT_EQ("tmpfs", orv::os::FileSystemNameOf(~0ull, "", 0x01021994));
  EXPECT_EQ("NTFS", orv::os::FileSystemNameOf(~0ull, "", 0x5346544E));
  EXPECT_EQ("0x1234", orv::os::FileSystemNameOf(~0ull, "", 0x1234));
}

}  // namespace
