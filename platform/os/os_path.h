// Paths between the library's wide strings and the system.
//
// The library's path texts come in two grammars. POSIX paths ("/a/b", "a/b")
// are this host's own; '/' is their only separator. Windows-form paths ("C:\x",
// "\\srv\share\x", "\x", and the long forms "\\?\C:\x", "\\?\UNC\srv\share")
// name drives and shares that this host does not have; they keep their text
// rules ('\' and '/' both separate) but the system answers them as not found.
// A long-form prefix "\\?\" in front of a POSIX path ("\\?\/a/b") is removed
// before the system sees it.
//
// The calls below take system paths (UTF-8) of any length: a path longer than
// the system's limit is resolved directory by directory with openat, so every
// call works past PATH_MAX.
#ifndef ORV_PLATFORM_OS_PATH_H_
#define ORV_PLATFORM_OS_PATH_H_

#include <sys/stat.h>
#include <sys/statfs.h>

#include <cstdint>
#include <string>

namespace orv {
namespace os {

enum class PathForm {
  kRelative,       // "a/b", "dir\f.bin", ""
  kPosix,          // "/a/b"
  kPrefixedPosix,  // "\\?\/a/b"
  kDrive,          // "C:\x", "C:x"
  kPrefixedDrive,  // "\\?\C:\x"
  kRooted,         // "\x": the root of the current drive
  kUnc,            // "\\srv\share\x"
  kPrefixedUnc,    // "\\?\UNC\srv\share\x"
};

// The grammar of `path`; a null path is relative.
PathForm ClassifyPath(const wchar_t* path);
// True for the grammars whose separators are '\' and '/'.
bool IsWindowsForm(PathForm form);
// Length of the "\\?\" prefix at the start of `path` (4), or 0.
size_t LongPrefixLength(const wchar_t* path);

// The text the system sees for `path`: the long-form prefix removed, UTF-8.
// False with errno ENOENT for Windows-form paths, EINVAL for null or empty.
bool SystemPathOf(const wchar_t* path, std::string* out);
// The current directory as a wide string; false (errno set) when the system
// cannot tell it.
bool CurrentDirectory(std::wstring* out);

// System calls on system paths of any length. Each answers like the call it
// is named after, with errno set on failure.
int OpenLongPath(const std::string& path, int flags, unsigned int createMode);
bool StatLongPath(const std::string& path, struct stat* status);
bool StatFsLongPath(const std::string& path, struct statfs* status);
bool UnlinkLongPath(const std::string& path);

// The directory where the volume holding `path` (absolute) is mounted: the
// nearest existing ancestor of `path` is walked up while its parent lies on
// the same device. False when nothing of the path exists.
bool VolumeMountPoint(const std::string& path, std::string* mountPoint);

struct VolumeDescription {
  std::string fileSystemName;  // as the system mounts it; "NTFS" for NTFS
  uint32_t serial = 0;
  uint32_t maxComponentLength = 0;
  uint32_t flags = 0;  // FILE_CASE_SENSITIVE_SEARCH, FILE_READ_ONLY_VOLUME, ...
};
// Describes the volume that holds `path`.
bool DescribeVolume(const std::string& path, VolumeDescription* out);
// The name of a file system as the system mounts it ("ext4", "proc"...), from
// the mount table line of `device` (mounted at `mountPoint` when several are)
// or, failing that, from the magic number that statfs reports.
std::string FileSystemNameOf(uint64_t device, const std::string& mountPoint, long magic);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_PATH_H_
