// The static path and file-system helpers of COrvFile.
//
// Every helper calls the system directly through platform/os. The long form
// that AddPrefixToPath gives is a text rule of the library: it is what the
// helpers hand on, and platform/os removes the prefix before the system sees a
// path. Qualification has no length limit here, so that relative paths of any
// length open as absolute ones do; GetAllocationSizeForAbsolutePath keeps
// answering MAX_PATH for relative paths for callers that size a buffer for
// PathSearchAndQualify themselves, which refuses a result that does not fit.
#include <COrvFile.h>
#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <new>
#include <string>
#include <vector>

#include "file/file_path_rules.h"
#include "platform/os/os_file.h"
#include "platform/os/os_path.h"
#include "platform/os/os_text.h"

namespace orv {
namespace {

constexpr wchar_t kLongPrefix[] = L"\\\\?\\";
constexpr wchar_t kUncLongPrefix[] = L"\\\\?\\UNC\\";

// Length of the "server\share" part at `body` (no separator in either name,
// both non-empty), or 0 when `body` does not start with one.
size_t ServerShareLength(const wchar_t* body) {
  size_t i = 0;
  while (body[i] && !IsPathSeparator(body[i], os::PathForm::kUnc)) ++i;
  if (i == 0 || body[i] == 0) return 0;
  const size_t share = ++i;
  while (body[i] && !IsPathSeparator(body[i], os::PathForm::kUnc)) ++i;
  return i == share ? 0 : i;
}

// The long form of `path` as a string; false when AddPrefixToPath refuses it.
bool LongFormOf(const wchar_t* path, std::wstring* out) {
  const unsigned long length = COrvFile::AddPrefixToPath(path, nullptr, 0);
  if (length == 0) {
    errno = path ? ENAMETOOLONG : EINVAL;
    return false;
  }
  out->assign(length, L'\0');
  if (COrvFile::AddPrefixToPath(path, &(*out)[0], length) != length) return false;
  out->resize(length - 1);
  return true;
}

// The system text of the long form of `path`.
bool SystemLongFormOf(const wchar_t* path, std::string* out) {
  std::wstring form;
  return LongFormOf(path, &form) && os::SystemPathOf(form.c_str(), out);
}

bool CopyOut(const std::wstring& text, wchar_t* dst, unsigned long dstSize) {
  if (text.size() + 1 > dstSize) {
    errno = ERANGE;
    return false;
  }
  std::wmemcpy(dst, text.c_str(), text.size() + 1);
  return true;
}

uint32_t TempNumberSeed() {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<uint32_t>(now.tv_nsec) ^ (static_cast<uint32_t>(getpid()) * 2654435761u);
}

}  // namespace

bool IsPathSeparator(wchar_t c, os::PathForm form) {
  return c == L'/' || (c == L'\\' && os::IsWindowsForm(form));
}

size_t PathRootLength(const wchar_t* path, os::PathForm form) {
  switch (form) {
    case os::PathForm::kRelative:
      return 0;
    case os::PathForm::kPosix:
      return 1;
    case os::PathForm::kPrefixedPosix:
      return 5;
    case os::PathForm::kRooted:
      return 1;
    case os::PathForm::kDrive:
      return IsPathSeparator(path[2], form) ? 3 : 2;
    case os::PathForm::kPrefixedDrive: {
      const wchar_t* body = path + 4;
      if (body[0] == 0 || body[1] != L':') return 4;
      return IsPathSeparator(body[2], form) ? 7 : 6;
    }
    case os::PathForm::kUnc: {
      const size_t share = ServerShareLength(path + 2);
      return share ? 2 + share : std::wcslen(path);
    }
    case os::PathForm::kPrefixedUnc: {
      const size_t share = ServerShareLength(path + 8);
      return share ? 8 + share : std::wcslen(path);
    }
  }
  return 0;
}

bool QualifyPath(const wchar_t* path, std::wstring* out) {
  if (path == nullptr) {
    errno = EINVAL;
    return false;
  }
  if (path[0] == 0) {
    errno = ENOENT;
    return false;
  }
  try {
    if (COrvFile::PathIsRelative(path)) {
      std::wstring directory;
      if (!os::CurrentDirectory(&directory)) return false;
      if (directory.empty() || directory.back() != L'/') directory.push_back(L'/');
      *out = directory + path;
      return true;
    }
    return LongFormOf(path, out);
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return false;
  }
}

}  // namespace orv

using orv::os::PathForm;

unsigned long COrvFile::AddPrefixToPath(const wchar_t* path, wchar_t* dst, unsigned long dstSize) {
  if (path == nullptr) return 0;
  const size_t length = std::wcslen(path);
  const wchar_t* head = L"";
  const wchar_t* tail = path;
  size_t needed;
  if (PathIsRelative(path)) {
    needed = length + 1;
  } else if (length < 4) {
    return 0;
  } else if (path[0] == L'\\' && path[1] == L'\\') {
    if (path[2] == L'?' && path[3] == L'\\') {
      needed = length + 1;
    } else {
      head = orv::kUncLongPrefix;
      tail = path + 2;
      needed = length + 7;
    }
  } else {
    head = orv::kLongPrefix;
    needed = length + 5;
  }
  if (dst == nullptr) return needed;
  if (needed > dstSize) return 0;
  const size_t headLength = std::wcslen(head);
  std::wmemcpy(dst, head, headLength);
  std::wmemcpy(dst + headLength, tail, std::wcslen(tail) + 1);
  return needed;
}

unsigned long COrvFile::GetAllocationSizeForAbsolutePath(const wchar_t* path) {
  if (path == nullptr) return 0;
  if (PathIsRelative(path)) return MAX_PATH;
  return AddPrefixToPath(path, nullptr, 0);
}

int COrvFile::PathIsRelative(const wchar_t* path) {
  return orv::os::ClassifyPath(path) == PathForm::kRelative ? TRUE : FALSE;
}

int COrvFile::PathFileExists(const wchar_t* path) {
  try {
    std::string system;
    struct stat status;
    return orv::SystemLongFormOf(path, &system) && orv::os::StatLongPath(system, &status) ? TRUE
                                                                                          : FALSE;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return FALSE;
  }
}

int COrvFile::PathIsUNCServerShare(const wchar_t* path) {
  try {
    std::wstring form;
    if (!orv::LongFormOf(path, &form)) return FALSE;
    if (orv::os::ClassifyPath(form.c_str()) != PathForm::kPrefixedUnc) return FALSE;
    const wchar_t* body = form.c_str() + 8;
    const size_t share = orv::ServerShareLength(body);
    return share != 0 && body[share] == 0 ? TRUE : FALSE;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return FALSE;
  }
}

int COrvFile::PathRemoveFileSpec(wchar_t* path) {
  if (path == nullptr) return FALSE;
  const PathForm form = orv::os::ClassifyPath(path);
  const size_t root = orv::PathRootLength(path, form);
  const size_t length = std::wcslen(path);
  if (length <= root) return FALSE;
  size_t cut = length;
  for (size_t i = length; i > root; --i) {
    if (orv::IsPathSeparator(path[i - 1], form)) {
      cut = i - 1;
      break;
    }
  }
  if (cut == length) {
    path[root] = 0;
    return TRUE;
  }
  while (cut > root && orv::IsPathSeparator(path[cut - 1], form)) --cut;
  path[cut] = 0;
  return TRUE;
}

int COrvFile::PathStripToRoot(wchar_t* path) {
  if (path == nullptr) return FALSE;
  const PathForm form = orv::os::ClassifyPath(path);
  if (form == PathForm::kRelative) return FALSE;
  if (orv::os::IsWindowsForm(form)) {
    path[orv::PathRootLength(path, form)] = 0;
    return TRUE;
  }
  try {
    std::string system;
    std::string mountPoint;
    if (!orv::os::SystemPathOf(path, &system) || !orv::os::VolumeMountPoint(system, &mountPoint)) {
      return FALSE;
    }
    // The mount point is found by cutting components off the path's own text,
    // so it is a leading part of it.
    const size_t keep = orv::os::LongPrefixLength(path) + orv::os::Utf8ToWide(mountPoint).size();
    if (keep > std::wcslen(path)) return FALSE;
    path[keep] = 0;
    return TRUE;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return FALSE;
  }
}

wchar_t* COrvFile::PathAddBackslash(wchar_t* path) {
  if (path == nullptr) return nullptr;
  const size_t length = std::wcslen(path);
  if (length == 0) return path;
  const PathForm form = orv::os::ClassifyPath(path);
  if (orv::IsPathSeparator(path[length - 1], form)) return path + length;
  if (length + 2 > MAX_PATH) {
    errno = ENAMETOOLONG;
    return nullptr;
  }
  path[length] = orv::os::IsWindowsForm(form) ? L'\\' : L'/';
  path[length + 1] = 0;
  return path + length + 1;
}

int COrvFile::PathSearchAndQualify(const wchar_t* path, wchar_t* dst, unsigned int dstSize) {
  if (path == nullptr || dst == nullptr) {
    errno = EINVAL;
    return FALSE;
  }
  std::wstring qualified;
  if (!orv::QualifyPath(path, &qualified)) return FALSE;
  return orv::CopyOut(qualified, dst, dstSize) ? TRUE : FALSE;
}

void* COrvFile::CreateFileW(const wchar_t* path, unsigned long access, unsigned long share,
                            SECURITY_ATTRIBUTES* attributes, unsigned long disposition,
                            unsigned long flags, void* templateFile) {
  // `share` and `templateFile` have no counterpart on this host.
  (void)share;
  (void)templateFile;
  if (path == nullptr || access > 0xFFFFFFFFul || disposition > 0xFFFFFFFFul) {
    errno = EINVAL;
    return INVALID_HANDLE_VALUE;
  }
  try {
    int openFlags;
    const bool inheritable = attributes != nullptr && attributes->bInheritHandle;
    if (!orv::os::OpenFlagsFor(static_cast<uint32_t>(access), static_cast<uint32_t>(disposition),
                               inheritable, &openFlags)) {
      return INVALID_HANDLE_VALUE;
    }
    std::wstring qualified;
    std::string system;
    if (!orv::QualifyPath(path, &qualified) || !orv::os::SystemPathOf(qualified.c_str(), &system)) {
      return INVALID_HANDLE_VALUE;
    }
    return orv::os::OpenFileHandle(system, openFlags, (flags & FILE_FLAG_BACKUP_SEMANTICS) != 0);
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return INVALID_HANDLE_VALUE;
  }
}

int COrvFile::DeleteFileW(const wchar_t* path) {
  try {
    std::string system;
    return orv::SystemLongFormOf(path, &system) && orv::os::UnlinkLongPath(system) ? TRUE : FALSE;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return FALSE;
  }
}

unsigned int COrvFile::GetTempFileNameW(const wchar_t* folder, const wchar_t* prefix,
                                        unsigned int unique, wchar_t* result) {
  if (folder == nullptr || result == nullptr) {
    errno = EINVAL;
    return 0;
  }
  try {
    const PathForm form = orv::os::ClassifyPath(folder);
    std::wstring stem = folder;
    if (!stem.empty() && !orv::IsPathSeparator(stem.back(), form)) {
      stem.push_back(orv::os::IsWindowsForm(form) ? L'\\' : L'/');
    }
    if (prefix != nullptr) stem.append(prefix, std::min<size_t>(std::wcslen(prefix), 3));

    auto nameFor = [&stem](unsigned int number) {
      wchar_t digits[16];
      std::swprintf(digits, 16, L"%04X.TMP", number & 0xFFFFu);
      return stem + digits;
    };
    if (stem.size() + 8 + 1 > MAX_PATH) {
      errno = ENAMETOOLONG;
      return 0;
    }
    if (unique != 0) {
      const std::wstring name = nameFor(unique);
      std::wmemcpy(result, name.c_str(), name.size() + 1);
      return unique;
    }
    // Try every number from a varying start until a file can be made that did
    // not exist before.
    const uint32_t start = orv::TempNumberSeed();
    for (uint32_t step = 0; step < 0xFFFFu; ++step) {
      const unsigned int number = (start + step) % 0xFFFFu + 1;
      const std::wstring name = nameFor(number);
      std::string system;
      if (!orv::os::SystemPathOf(name.c_str(), &system)) return 0;
      const int fd = orv::os::OpenLongPath(system, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
      if (fd >= 0) {
        close(fd);
        std::wmemcpy(result, name.c_str(), name.size() + 1);
        return number;
      }
      if (errno != EEXIST) return 0;
    }
    errno = EEXIST;
    return 0;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return 0;
  }
}

int COrvFile::GetVolumeInformationW(const wchar_t* root, wchar_t* volumeName,
                                    unsigned long volumeNameSize, unsigned long* serial,
                                    unsigned long* maxComponentLength,
                                    unsigned long* fileSystemFlags, wchar_t* fileSystemName,
                                    unsigned long fileSystemNameSize) {
  try {
    std::wstring qualified;
    if (root != nullptr) {
      if (!orv::QualifyPath(root, &qualified)) return FALSE;
    } else if (!orv::os::CurrentDirectory(&qualified)) {
      return FALSE;
    }
    std::string system;
    orv::os::VolumeDescription volume;
    if (!orv::os::SystemPathOf(qualified.c_str(), &system) ||
        !orv::os::DescribeVolume(system, &volume)) {
      return FALSE;
    }
    const std::wstring name = orv::os::Utf8ToWide(volume.fileSystemName);
    // Check every buffer before writing any.
    if ((volumeName != nullptr && volumeNameSize < 1) ||
        (fileSystemName != nullptr && name.size() + 1 > fileSystemNameSize)) {
      errno = ERANGE;
      return FALSE;
    }
    if (volumeName != nullptr) volumeName[0] = 0;
    if (serial != nullptr) *serial = volume.serial;
    if (maxComponentLength != nullptr) *maxComponentLength = volume.maxComponentLength;
    if (fileSystemFlags != nullptr) *fileSystemFlags = volume.flags;
    if (fileSystemName != nullptr) std::wmemcpy(fileSystemName, name.c_str(), name.size() + 1);
    return TRUE;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return FALSE;
  }
}

bool COrvFile::IsFileExist(const wchar_t* path) {
  if (path == nullptr) return false;
  try {
    const wchar_t* bar = std::wcschr(path, L'|');
    if (bar == nullptr) {
      std::wstring qualified;
      return orv::QualifyPath(path, &qualified) && PathFileExists(qualified.c_str());
    }
    // Every file of a list must exist; the walk stops at the first that does not.
    const wchar_t* piece = path;
    bool exists = false;
    for (;;) {
      const wchar_t* end = std::wcschr(piece, L'|');
      const std::wstring one = end ? std::wstring(piece, end) : std::wstring(piece);
      exists = IsFileExist(one.c_str());
      if (!exists || end == nullptr) break;
      piece = end + 1;
    }
    return exists;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return false;
  }
}

bool COrvFile::IsPathNTFS(const wchar_t* path) {
  try {
    std::wstring qualified;
    if (!orv::QualifyPath(path, &qualified)) return false;
    std::vector<wchar_t> root(qualified.begin(), qualified.end());
    root.resize(std::max<size_t>(root.size() + 2, MAX_PATH), L'\0');
    if (!PathStripToRoot(root.data())) return false;
    if (PathIsUNCServerShare(root.data()) && PathAddBackslash(root.data()) == nullptr) return false;
    wchar_t name[32];
    unsigned long flags = 0;
    unsigned long componentLength = 0;
    if (!GetVolumeInformationW(root.data(), nullptr, 0, nullptr, &componentLength, &flags, name,
                               32)) {
      return false;
    }
    return std::wcsncmp(name, L"NTFS", 4) == 0;
  } catch (const std::bad_alloc&) {
    errno = ENOMEM;
    return false;
  }
}
