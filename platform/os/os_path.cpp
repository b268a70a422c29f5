#include "platform/os/os_path.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <OrvPlatformTypes.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <sstream>

#include "platform/os/os_text.h"

namespace orv {
namespace os {
namespace {

bool IsDriveLetter(wchar_t c) { return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z'); }

// A directory descriptor and what is left of a long path below it, such that
// the *at form of a call on (dirfd, rest) reaches the whole path. Paths that
// fit the system's limit are used as they stand against the current directory.
class AtPath {
 public:
  explicit AtPath(const std::string& path) { ok_ = Resolve(path); }
  ~AtPath() {
    if (dirfd_ >= 0) close(dirfd_);
  }
  AtPath(const AtPath&) = delete;
  AtPath& operator=(const AtPath&) = delete;

  bool ok() const { return ok_; }
  int dirfd() const { return dirfd_; }
  const char* rest() const { return rest_.c_str(); }

 private:
  bool Resolve(const std::string& path) {
    if (path.empty()) {
      errno = ENOENT;
      return false;
    }
    if (path.size() < PATH_MAX) {
      rest_ = path;
      return true;
    }
    size_t pos = 0;
    while (path.size() - pos >= PATH_MAX) {
      // The longest run of whole directories that the system takes in one piece.
      const size_t cut = path.rfind('/', pos + PATH_MAX - 1);
      if (cut == std::string::npos || cut <= pos) {
        errno = ENAMETOOLONG;
        return false;
      }
      const std::string piece = path.substr(pos, cut - pos);
      const int next = openat(dirfd_, piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
      if (next < 0) return false;
      if (dirfd_ >= 0) close(dirfd_);
      dirfd_ = next;
      pos = cut + 1;
      while (pos < path.size() && path[pos] == '/') ++pos;
    }
    rest_ = pos < path.size() ? path.substr(pos) : std::string(".");
    return true;
  }

  bool ok_ = false;
  int dirfd_ = AT_FDCWD;
  std::string rest_;
};

std::string ParentOf(const std::string& path) {
  size_t end = path.size();
  while (end > 1 && path[end - 1] == '/') --end;
  const size_t slash = path.rfind('/', end - 1);
  if (slash == std::string::npos) return ".";
  size_t keep = slash;
  while (keep > 0 && path[keep - 1] == '/') --keep;
  return keep == 0 ? std::string("/") : path.substr(0, keep);
}

std::string StripTrailingSlashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// Undoes the octal escapes (\040 for a space ...) of the mount table.
std::string Unescape(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] >= '0' && text[i + 1] <= '3') {
      out.push_back(static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 +
                                      (text[i + 3] - '0')));
      i += 3;
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

struct MagicName {
  long magic;
  const char* name;
};

// Names of the common file systems by the magic number statfs reports, for
// when the mount table cannot be read.
constexpr MagicName kMagicNames[] = {
    {0xEF53, "ext4"},      {0x58465342, "xfs"},     {static_cast<long>(0x9123683E), "btrfs"},
    {0x01021994, "tmpfs"}, {0x5346544E, "NTFS"},    {0x4d44, "vfat"},
    {0x2011BAB0, "exfat"}, {0x794c7630, "overlay"}, {0x6969, "nfs"},
    {0x65735546, "fuse"},  {0x9fa0, "proc"},        {0x62656572, "sysfs"},
    {0x1373, "devtmpfs"},  {0xF2F52010, "f2fs"},    {0x2fc12fc1, "zfs"},
    {0x9660, "iso9660"},   {0x15013346, "udf"},
};

constexpr long kNtfsMagic = 0x5346544E;

bool EndsWith(const std::string& text, const char* tail) {
  const size_t n = std::strlen(tail);
  return text.size() >= n && text.compare(text.size() - n, n, tail) == 0;
}

bool IsNtfsName(const std::string& type) {
  return type == "ntfs" || type == "ntfs3" || EndsWith(type, ".ntfs") ||
         EndsWith(type, ".ntfs-3g") || EndsWith(type, ".ntfs3");
}

}  // namespace

PathForm ClassifyPath(const wchar_t* path) {
  if (path == nullptr) return PathForm::kRelative;
  if (path[0] == L'/') return PathForm::kPosix;
  if (path[0] == L'\\') {
    if (path[1] != L'\\') return PathForm::kRooted;
    if (path[2] == L'?' && path[3] == L'\\') {
      const wchar_t* body = path + 4;
      if (body[0] == L'/') return PathForm::kPrefixedPosix;
      if (std::wcsncmp(body, L"UNC\\", 4) == 0) return PathForm::kPrefixedUnc;
      if (IsDriveLetter(body[0]) && body[1] == L':') return PathForm::kPrefixedDrive;
      // Any other text behind the prefix is taken as it stands: a drive-less
      // Windows form that this host cannot reach.
      return PathForm::kPrefixedDrive;
    }
    return PathForm::kUnc;
  }
  if (IsDriveLetter(path[0]) && path[1] == L':') return PathForm::kDrive;
  return PathForm::kRelative;
}

bool IsWindowsForm(PathForm form) {
  switch (form) {
    case PathForm::kDrive:
    case PathForm::kPrefixedDrive:
    case PathForm::kRooted:
    case PathForm::kUnc:
    case PathForm::kPrefixedUnc:
      return true;
    default:
      return false;
  }
}

size_t LongPrefixLength(const wchar_t* path) {
  return (path && std::wcsncmp(path, L"\\\\?\\", 4) == 0) ? 4 : 0;
}

bool SystemPathOf(const wchar_t* path, std::string* out) {
  if (path == nullptr || path[0] == 0) {
    errno = path ? ENOENT : EINVAL;
    return false;
  }
  const PathForm form = ClassifyPath(path);
  if (IsWindowsForm(form)) {
    errno = ENOENT;
    return false;
  }
  const wchar_t* body = path + LongPrefixLength(path);
  *out = WideToUtf8(body, std::wcslen(body));
  return true;
}

bool CurrentDirectory(std::wstring* out) {
  char* text = getcwd(nullptr, 0);
  if (text == nullptr) return false;
  *out = Utf8ToWide(text);
  std::free(text);
  return true;
}

int OpenLongPath(const std::string& path, int flags, unsigned int createMode) {
  AtPath at(path);
  if (!at.ok()) return -1;
  return openat(at.dirfd(), at.rest(), flags, static_cast<mode_t>(createMode));
}

bool StatLongPath(const std::string& path, struct stat* status) {
  AtPath at(path);
  return at.ok() && fstatat(at.dirfd(), at.rest(), status, 0) == 0;
}

bool StatFsLongPath(const std::string& path, struct statfs* status) {
  const int fd = OpenLongPath(path, O_PATH | O_CLOEXEC, 0);
  if (fd < 0) return false;
  const bool ok = fstatfs(fd, status) == 0;
  const int error = errno;
  close(fd);
  errno = error;
  return ok;
}

bool UnlinkLongPath(const std::string& path) {
  AtPath at(path);
  return at.ok() && unlinkat(at.dirfd(), at.rest(), 0) == 0;
}

bool VolumeMountPoint(const std::string& path, std::string* mountPoint) {
  if (path.empty() || path[0] != '/') {
    errno = EINVAL;
    return false;
  }
  std::string current = StripTrailingSlashes(path);
  struct stat status;
  while (!StatLongPath(current, &status)) {
    if (current == "/") return false;
    current = ParentOf(current);
  }
  const dev_t device = status.st_dev;
  while (current != "/") {
    const std::string parent = ParentOf(current);
    struct stat parentStatus;
    if (!StatLongPath(parent, &parentStatus) || parentStatus.st_dev != device) break;
    current = parent;
  }
  *mountPoint = current;
  return true;
}

std::string FileSystemNameOf(uint64_t device, const std::string& mountPoint, long magic) {
  std::string found;
  std::ifstream table("/proc/self/mountinfo");
  char wanted[64];
  std::snprintf(wanted, sizeof(wanted), "%u:%u", major(static_cast<dev_t>(device)),
                minor(static_cast<dev_t>(device)));
  std::string line;
  while (std::getline(table, line)) {
    // id parent major:minor root mount-point options [optional...] - type source ...
    std::istringstream fields(line);
    std::string id, parent, numbers, root, point, field;
    if (!(fields >> id >> parent >> numbers >> root >> point)) continue;
    if (numbers != wanted) continue;
    std::string type;
    while (fields >> field) {
      if (field == "-") {
        fields >> type;
        break;
      }
    }
    if (type.empty()) continue;
    found = type;
    if (Unescape(point) == mountPoint) break;
  }
  if (magic == kNtfsMagic || IsNtfsName(found)) return "NTFS";
  if (!found.empty()) return found;
  for (const MagicName& entry : kMagicNames) {
    if (entry.magic == magic) return entry.name;
  }
  char unknown[32];
  std::snprintf(unknown, sizeof(unknown), "0x%lx", static_cast<unsigned long>(magic));
  return unknown;
}

bool DescribeVolume(const std::string& path, VolumeDescription* out) {
  struct statfs fs;
  struct stat status;
  if (!StatFsLongPath(path, &fs) || !StatLongPath(path, &status)) return false;
  std::string mountPoint;
  if (path[0] != '/' || !VolumeMountPoint(path, &mountPoint)) mountPoint.clear();
  const long magic = static_cast<long>(fs.f_type);
  out->fileSystemName = FileSystemNameOf(static_cast<uint64_t>(status.st_dev), mountPoint, magic);

  uint32_t serial =
      static_cast<uint32_t>(fs.f_fsid.__val[0]) ^ static_cast<uint32_t>(fs.f_fsid.__val[1]);
  if (serial == 0) serial = static_cast<uint32_t>(status.st_dev);
  out->serial = serial;
  out->maxComponentLength = static_cast<uint32_t>(fs.f_namelen);

  const std::string& name = out->fileSystemName;
  const bool caseFolding = name == "vfat" || name == "msdos" || name == "exfat" ||
                           magic == 0x4d44 || magic == 0x2011BAB0;
  uint32_t flags = FILE_CASE_PRESERVED_NAMES;
  if (!caseFolding) flags |= FILE_CASE_SENSITIVE_SEARCH;
  if (name == "NTFS" || caseFolding) flags |= FILE_UNICODE_ON_DISK;
  switch (magic) {
    case 0xEF53:
    case 0x58465342:
    case static_cast<long>(0x9123683E):
    case 0x01021994:
    case kNtfsMagic:
    case 0xF2F52010:
    case 0x2fc12fc1:
      flags |= FILE_SUPPORTS_SPARSE_FILES;
      break;
    default:
      break;
  }
  if (fs.f_flags & ST_RDONLY) flags |= FILE_READ_ONLY_VOLUME;
  out->flags = flags;
  return true;
}

}  // namespace os
}  // namespace orv
