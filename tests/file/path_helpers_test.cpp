#include <COrvFile.h>
#include <gtest/gtest.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <cwchar>
#include <fstream>
#include <sstream>
#include <string>

#include "file/temp_folder.h"
#include "platform/os/os_text.h"

namespace {

using orv::testing::TempFolder;

std::wstring LongForm(const wchar_t* path) {
  const unsigned long length = COrvFile::AddPrefixToPath(path, nullptr, 0);
  if (length == 0) return L"<refused>";
  std::wstring out(length, L'#');
  EXPECT_EQ(length, COrvFile::AddPrefixToPath(path, &out[0], length));
  EXPECT_EQ(L'\0', out[length - 1]);
  out.resize(length - 1);
  return out;
}

std::wstring CurrentDirectory() {
  char* text = getcwd(nullptr, 0);
  std::wstring out = orv::os::Utf8ToWide(text ? text : "");
  free(text);
  return out;
}

// The mount point of `path` by the mount table: the longest mount point that
// is a leading part of it.
std::string MountPointByTable(const std::string& path) {
  std::ifstream table("/proc/self/mountinfo");
  std::string line, best = "/";
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string id, parent, numbers, root, point;
    fields >> id >> parent >> numbers >> root >> point;
    const bool prefix = point == "/" || path == point || path.rfind(point + "/", 0) == 0;
    if (prefix && point.size() > best.size()) best = point;
  }
  return best;
}

std::wstring FileSystemName(const wchar_t* root) {
  wchar_t name[64] = L"untouched";
  if (!COrvFile::GetVolumeInformationW(root, nullptr, 0, nullptr, nullptr, nullptr, name, 64)) {
    return L"<failed>";
  }
  return name;
}

TEST(AddPrefixToPath, WorkedValues) {
  EXPECT_EQ(L"\\\\?\\C:\\dir\\f.bin", LongForm(L"C:\\dir\\f.bin"));
  EXPECT_EQ(12u + 4 + 1, COrvFile::AddPrefixToPath(L"C:\\dir\\f.bin", nullptr, 0));
  EXPECT_EQ(L"\\\\?\\UNC\\srv\\share\\f.bin", LongForm(L"\\\\srv\\share\\f.bin"));
  EXPECT_EQ(17u + 7, COrvFile::AddPrefixToPath(L"\\\\srv\\share\\f.bin", nullptr, 0));
  EXPECT_EQ(L"\\\\?\\C:\\x", LongForm(L"\\\\?\\C:\\x"));
  EXPECT_EQ(L"\\\\?\\UNC\\srv\\s", LongForm(L"\\\\?\\UNC\\srv\\s"));
  EXPECT_EQ(L"dir\\f.bin", LongForm(L"dir\\f.bin"));
  EXPECT_EQ(L"\\\\?\\/media/a.mts", LongForm(L"/media/a.mts"));
  // A device path has no rule of its own: it is a server share.
  EXPECT_EQ(L"\\\\?\\UNC\\.\\dev", LongForm(L"\\\\.\\dev"));
  EXPECT_EQ(0u, COrvFile::AddPrefixToPath(L"C:\\", nullptr, 0));
  EXPECT_EQ(0u, COrvFile::AddPrefixToPath(L"/ab", nullptr, 0));
  EXPECT_EQ(0u, COrvFile::AddPrefixToPath(nullptr, nullptr, 0));
  EXPECT_EQ(0, COrvFile::PathFileExists(L"C:\\"));
}

TEST(AddPrefixToPath, ShortBufferWritesNothing) {
  const unsigned long length = COrvFile::AddPrefixToPath(L"C:\\dir\\f.bin", nullptr, 0);
  std::wstring buffer(length + 4, L'#');
  EXPECT_EQ(0u, COrvFile::AddPrefixToPath(L"C:\\dir\\f.bin", &buffer[0], length - 1));
  EXPECT_EQ(std::wstring(length + 4, L'#'), buffer);
  EXPECT_EQ(length, COrvFile::AddPrefixToPath(L"C:\\dir\\f.bin", &buffer[0], length));
  EXPECT_EQ(L'#', buffer[length]);
}

TEST(PathHelpers, AllocationSizeAndRelativity) {
  EXPECT_EQ(260u, COrvFile::GetAllocationSizeForAbsolutePath(L"a"));
  EXPECT_EQ(260u, COrvFile::GetAllocationSizeForAbsolutePath(std::wstring(1000, L'a').c_str()));
  EXPECT_EQ(13u, COrvFile::GetAllocationSizeForAbsolutePath(L"/a/b/c.d"));
  EXPECT_EQ(0u, COrvFile::GetAllocationSizeForAbsolutePath(nullptr));
  EXPECT_TRUE(COrvFile::PathIsRelative(L"a/b"));
  EXPECT_TRUE(COrvFile::PathIsRelative(L""));
  EXPECT_FALSE(COrvFile::PathIsRelative(L"/a"));
  EXPECT_FALSE(COrvFile::PathIsRelative(L"\\a"));
  EXPECT_FALSE(COrvFile::PathIsRelative(L"d:x"));
}

TEST(PathHelpers, RemoveFileSpec) {
  struct Case {
    const wchar_t* in;
    const wchar_t* out;
    int result;
  };
  const Case cases[] = {
      {L"/a/b", L"/a", 1},
      {L"/a", L"/", 1},
      {L"/", L"/", 0},
      {L"a/b/", L"a/b", 1},
      {L"name", L"", 1},
      {L"dir\\f.bin", L"", 1},
      {L"C:\\dir\\f", L"C:\\dir", 1},
      {L"C:\\f", L"C:\\", 1},
      {L"C:\\", L"C:\\", 0},
      {L"\\\\srv\\share\\f", L"\\\\srv\\share", 1},
      {L"\\\\srv\\share", L"\\\\srv\\share", 0},
      {L"\\\\?\\/x/y", L"\\\\?\\/x", 1},
  };
  for (const Case& c : cases) {
    std::wstring text = c.in;
    EXPECT_EQ(c.result, COrvFile::PathRemoveFileSpec(&text[0])) << orv::os::WideToUtf8(c.in);
    EXPECT_EQ(std::wstring(c.out), std::wstring(text.c_str())) << orv::os::WideToUtf8(c.in);
  }
  EXPECT_EQ(0, COrvFile::PathRemoveFileSpec(nullptr));
}

TEST(PathHelpers, StripToRoot) {
  std::wstring drive = L"C:\\dir\\f.bin";
  EXPECT_TRUE(COrvFile::PathStripToRoot(&drive[0]));
  EXPECT_EQ(L"C:\\", std::wstring(drive.c_str()));
  std::wstring share = L"\\\\srv\\share\\dir\\f";
  EXPECT_TRUE(COrvFile::PathStripToRoot(&share[0]));
  EXPECT_EQ(L"\\\\srv\\share", std::wstring(share.c_str()));
  std::wstring relative = L"dir/f";
  EXPECT_FALSE(COrvFile::PathStripToRoot(&relative[0]));
  EXPECT_EQ(L"dir/f", relative);

  // A POSIX path is cut to the mount point of its volume, even below a part
  // of the path that does not exist yet.
  std::wstring proc = L"/proc/self/no/such/file";
  EXPECT_TRUE(COrvFile::PathStripToRoot(&proc[0]));
  EXPECT_EQ(L"/proc", std::wstring(proc.c_str()));
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  std::wstring inside = L"\\\\?\\" + folder.WidePath("f.bin");
  EXPECT_TRUE(COrvFile::PathStripToRoot(&inside[0]));
  EXPECT_EQ(L"\\\\?\\" + orv::os::Utf8ToWide(MountPointByTable(folder.path())),
            std::wstring(inside.c_str()));
}

TEST(PathHelpers, AddBackslashAndServerShares) {
  wchar_t text[MAX_PATH] = L"/a/b";
  wchar_t* end = COrvFile::PathAddBackslash(text);
  EXPECT_EQ(std::wstring(L"/a/b/"), text);
  EXPECT_EQ(text + 5, end);
  EXPECT_EQ(text + 5, COrvFile::PathAddBackslash(text));
  wchar_t drive[MAX_PATH] = L"C:\\x";
  COrvFile::PathAddBackslash(drive);
  EXPECT_EQ(std::wstring(L"C:\\x\\"), drive);
  wchar_t full[MAX_PATH];
  std::wmemset(full, L'a', MAX_PATH - 1);
  full[MAX_PATH - 1] = 0;
  EXPECT_EQ(nullptr, COrvFile::PathAddBackslash(full));
  EXPECT_EQ(L'\0', full[MAX_PATH - 1]);
  EXPECT_EQ(nullptr, COrvFile::PathAddBackslash(nullptr));

  EXPECT_TRUE(COrvFile::PathIsUNCServerShare(L"\\\\srv\\share"));
  EXPECT_TRUE(COrvFile::PathIsUNCServerShare(L"\\\\?\\UNC\\srv\\share"));
  EXPECT_FALSE(COrvFile::PathIsUNCServerShare(L"\\\\srv\\share\\f"));
  EXPECT_FALSE(COrvFile::PathIsUNCServerShare(L"\\\\server"));
  EXPECT_FALSE(COrvFile::PathIsUNCServerShare(L"/srv/share"));
  EXPECT_FALSE(COrvFile::PathIsUNCServerShare(nullptr));
}

TEST(PathHelpers, SearchAndQualify) {
  wchar_t out[4096];
  ASSERT_TRUE(COrvFile::PathSearchAndQualify(L"clip.mts", out, 4096));
  EXPECT_EQ(CurrentDirectory() + L"/clip.mts", std::wstring(out));
  ASSERT_TRUE(COrvFile::PathSearchAndQualify(L"/media/clip.mts", out, 4096));
  EXPECT_EQ(L"\\\\?\\/media/clip.mts", std::wstring(out));
  ASSERT_TRUE(COrvFile::PathSearchAndQualify(L"\\\\?\\/media/x", out, 4096));
  EXPECT_EQ(L"\\\\?\\/media/x", std::wstring(out));

  std::wmemset(out, L'#', 20);
  EXPECT_FALSE(COrvFile::PathSearchAndQualify(L"/media/clip.mts", out, 19));
  EXPECT_EQ(std::wstring(20, L'#'), std::wstring(out, 20));
  EXPECT_FALSE(COrvFile::PathSearchAndQualify(nullptr, out, 4096));
  EXPECT_FALSE(COrvFile::PathSearchAndQualify(L"a", nullptr, 4096));
  EXPECT_FALSE(COrvFile::PathSearchAndQualify(L"", out, 4096));
}

TEST(FileSystemCalls, CreateExistDelete) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  const std::wstring a = folder.WidePath("a.bin");
  const std::wstring b = folder.WidePath("b.bin");
  EXPECT_FALSE(COrvFile::IsFileExist(a.c_str()));
  void* handle = COrvFile::CreateFileW(a.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                       CREATE_NEW, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  EXPECT_NE(nullptr, handle);
  EXPECT_EQ(0, close(static_cast<int>(reinterpret_cast<intptr_t>(handle))));
  // CREATE_NEW refuses an existing file.
  EXPECT_EQ(INVALID_HANDLE_VALUE,
            COrvFile::CreateFileW(a.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
  // Directories open only when asked for, and never from a Windows-form path.
  const std::wstring dir = orv::os::Utf8ToWide(folder.path());
  EXPECT_EQ(INVALID_HANDLE_VALUE, COrvFile::CreateFileW(dir.c_str(), GENERIC_READ, 0, nullptr,
                                                        OPEN_EXISTING, 0, nullptr));
  handle = COrvFile::CreateFileW(dir.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, handle);
  close(static_cast<int>(reinterpret_cast<intptr_t>(handle)));
  EXPECT_EQ(INVALID_HANDLE_VALUE, COrvFile::CreateFileW(L"C:\\x.bin", GENERIC_READ, 0, nullptr,
                                                        OPEN_EXISTING, 0, nullptr));
  EXPECT_EQ(INVALID_HANDLE_VALUE,
            COrvFile::CreateFileW(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_EQ(INVALID_HANDLE_VALUE,
            COrvFile::CreateFileW(a.c_str(), GENERIC_READ, 0, nullptr, 9, 0, nullptr));

  EXPECT_TRUE(COrvFile::IsFileExist(a.c_str()));
  EXPECT_TRUE(COrvFile::PathFileExists(a.c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist((a + L"|" + b).c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist((b + L"|" + a).c_str()));
  ASSERT_TRUE(folder.MakeFile("b.bin", {1, 2, 3}));
  EXPECT_TRUE(COrvFile::IsFileExist((a + L"|" + b).c_str()));
  EXPECT_TRUE(COrvFile::IsFileExist((a + L"|" + b + L"|" + a).c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist((a + L"||" + b).c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist((a + L"|").c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist(nullptr));

  EXPECT_TRUE(COrvFile::DeleteFileW(a.c_str()));
  EXPECT_FALSE(COrvFile::IsFileExist(a.c_str()));
  EXPECT_FALSE(COrvFile::DeleteFileW(a.c_str()));
  EXPECT_FALSE(COrvFile::DeleteFileW(nullptr));
}

TEST(FileSystemCalls, RelativePathsFollowTheCurrentDirectory) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  ASSERT_TRUE(folder.MakeFile("rel.bin", {7}));
  char* previous = getcwd(nullptr, 0);
  ASSERT_EQ(0, chdir(folder.path().c_str()));
  EXPECT_TRUE(COrvFile::IsFileExist(L"rel.bin"));
  EXPECT_TRUE(COrvFile::IsFileExist(L"./rel.bin|rel.bin"));
  EXPECT_FALSE(COrvFile::IsFileExist(L"missing.bin"));
  // A relative path on /proc takes the volume of the current directory.
  ASSERT_EQ(0, chdir("/proc"));
  EXPECT_EQ(L"proc", FileSystemName(nullptr));
  EXPECT_FALSE(COrvFile::IsPathNTFS(L"self"));
  ASSERT_EQ(0, chdir(previous));
  free(previous);
}

TEST(FileSystemCalls, TempFileNames) {
  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  const std::wstring dir = orv::os::Utf8ToWide(folder.path());
  wchar_t name[MAX_PATH];
  EXPECT_EQ(0x1234u, COrvFile::GetTempFileNameW(dir.c_str(), L"orvx", 0x1234, name));
  EXPECT_EQ(dir + L"/orv1234.TMP", std::wstring(name));
  EXPECT_FALSE(COrvFile::IsFileExist(name));
  EXPECT_EQ(0x2ABCDu, COrvFile::GetTempFileNameW((dir + L"/").c_str(), L"a", 0x2ABCD, name));
  EXPECT_EQ(dir + L"/aABCD.TMP", std::wstring(name));

  wchar_t first[MAX_PATH], second[MAX_PATH];
  const unsigned int one = COrvFile::GetTempFileNameW(dir.c_str(), L"t", 0, first);
  const unsigned int two = COrvFile::GetTempFileNameW(dir.c_str(), L"t", 0, second);
  ASSERT_NE(0u, one);
  ASSERT_NE(0u, two);
  EXPECT_NE(std::wstring(first), std::wstring(second));
  EXPECT_TRUE(COrvFile::IsFileExist(first));
  EXPECT_TRUE(COrvFile::IsFileExist(second));
  wchar_t expected[32];
  std::swprintf(expected, 32, L"/t%04X.TMP", one);
  EXPECT_EQ(dir + expected, std::wstring(first));

  EXPECT_EQ(0u, COrvFile::GetTempFileNameW(nullptr, L"t", 0, name));
  EXPECT_EQ(0u, COrvFile::GetTempFileNameW(dir.c_str(), L"t", 0, nullptr));
  EXPECT_EQ(0u, COrvFile::GetTempFileNameW((dir + L"/missing").c_str(), L"t", 0, name));
  std::wmemset(name, L'#', MAX_PATH);
  const std::wstring deep = L"/" + std::wstring(MAX_PATH, L'x');
  EXPECT_EQ(0u, COrvFile::GetTempFileNameW(deep.c_str(), L"t", 5, name));
  EXPECT_EQ(L'#', name[0]);
}

TEST(FileSystemCalls, VolumeInformation) {
  EXPECT_EQ(L"proc", FileSystemName(L"/proc"));
  EXPECT_EQ(L"proc", FileSystemName(L"/proc/self/status"));
  EXPECT_EQ(L"sysfs", FileSystemName(L"/sys"));
  EXPECT_EQ(L"<failed>", FileSystemName(L"C:\\"));
  EXPECT_EQ(L"<failed>", FileSystemName(L"/no/such/place"));
  EXPECT_FALSE(COrvFile::IsPathNTFS(L"/proc/self"));
  EXPECT_FALSE(COrvFile::IsPathNTFS(nullptr));

  TempFolder folder;
  ASSERT_TRUE(folder.ok());
  struct statfs fs;
  ASSERT_EQ(0, statfs(folder.path().c_str(), &fs));
  const std::wstring root = orv::os::Utf8ToWide(folder.path());
  wchar_t volume[8] = L"label";
  wchar_t name[32];
  unsigned long serial = 0, component = 0, flags = 0;
  ASSERT_TRUE(COrvFile::GetVolumeInformationW(root.c_str(), volume, 8, &serial, &component, &flags,
                                              name, 32));
  EXPECT_EQ(L'\0', volume[0]);
  EXPECT_EQ(static_cast<unsigned long>(fs.f_namelen), component);
  EXPECT_NE(0u, flags & FILE_CASE_PRESERVED_NAMES);
  EXPECT_EQ(fs.f_type == 0x5346544E, COrvFile::IsPathNTFS(root.c_str()));
  EXPECT_EQ(fs.f_type == 0x5346544E, std::wstring(name) == L"NTFS");

  // A name that does not fit fails the call and writes nothing.
  wchar_t tiny[2] = {L'#', L'#'};
  EXPECT_FALSE(COrvFile::GetVolumeInformationW(root.c_str(), nullptr, 0, nullptr, nullptr, nullptr,
                                               tiny, 2));
  EXPECT_EQ(L'#', tiny[0]);
}

TEST(FileSystemCalls, NtfsMountIsRecognised) {
  std::ifstream table("/proc/self/mountinfo");
  std::string line, point;
  while (std::getline(table, line)) {
    std::istringstream fields(line);
    std::string id, parent, numbers, root, where, field, type;
    fields >> id >> parent >> numbers >> root >> where;
    while (fields >> field && field != "-") {
    }
    fields >> type;
    if (type == "ntfs" || type == "ntfs3") point = where;
  }
  if (point.empty()) GTEST_SKIP() << "no NTFS volume is mounted here";
  EXPECT_TRUE(COrvFile::IsPathNTFS(orv::os::Utf8ToWide(point + "/x").c_str()));
}

}  // namespace
