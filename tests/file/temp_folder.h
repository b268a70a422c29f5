// A temporary folder under /tmp for tests that use the real file system,
// removed with everything in it (however deep) when the object ends.
#ifndef ORV_TESTS_FILE_TEMP_FOLDER_H_
#define ORV_TESTS_FILE_TEMP_FOLDER_H_

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "platform/os/os_text.h"

namespace orv {
namespace testing {

class TempFolder {
 public:
  TempFolder() {
    char pattern[] = "/tmp/orv_file_test_XXXXXX";
    const char* made = mkdtemp(pattern);
    if (made) path_ = made;
  }
  ~TempFolder() {
    if (path_.empty()) return;
    const int fd = open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) RemoveContents(fd);
    rmdir(path_.c_str());
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  bool ok() const { return !path_.empty(); }
  const std::string& path() const { return path_; }
  std::string Path(const std::string& name) const { return path_ + "/" + name; }
  std::wstring WidePath(const std::string& name) const { return os::Utf8ToWide(Path(name)); }

  // Makes a file holding `bytes`.
  bool MakeFile(const std::string& name, const std::vector<unsigned char>& bytes) const {
    const int fd = open(Path(name).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return false;
    const bool ok = bytes.empty() ||
                    write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    close(fd);
    return ok;
  }

 private:
  // Removes everything below the directory `fd` (closed on return), through
  // descriptors so that no path length limit applies.
  static void RemoveContents(int fd) {
    DIR* dir = fdopendir(fd);
    if (!dir) {
      close(fd);
      return;
    }
    std::vector<std::string> names;
    while (dirent* entry = readdir(dir)) {
      if (std::strcmp(entry->d_name, ".") && std::strcmp(entry->d_name, "..")) {
        names.push_back(entry->d_name);
      }
    }
    for (const std::string& name : names) {
      struct stat status;
      if (fstatat(dirfd(dir), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
      if (S_ISDIR(status.st_mode)) {
        const int child = openat(dirfd(dir), name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (child >= 0) RemoveContents(child);
        unlinkat(dirfd(dir), name.c_str(), AT_REMOVEDIR);
      } else {
        unlinkat(dirfd(dir), name.c_str(), 0);
      }
    }
    closedir(dir);
  }

  std::string path_;
};

// Bytes 0, 1, 2 ... from `first`, wrapping at 256.
inline std::vector<unsigned char> Ramp(size_t count, unsigned first = 0) {
  std::vector<unsigned char> bytes(count);
  for (size_t i = 0; i < count; ++i) bytes[i] = static_cast<unsigned char>(first + i);
  return bytes;
}

// Makes directories below `base` until the path is at least `minimumBytes`
// long, one mkdirat at a time; answers the deepest directory's path.
inline std::string MakeDeepFolder(const std::string& base, size_t minimumBytes) {
  const std::string component(200, 'd');
  std::string path = base;
  int fd = open(base.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  int level = 0;
  while (fd >= 0 && path.size() < minimumBytes) {
    const std::string name = component + std::to_string(level++);
    if (mkdirat(fd, name.c_str(), 0755) != 0) {
      close(fd);
      return std::string();
    }
    const int next = openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    close(fd);
    fd = next;
    path += "/" + name;
  }
  if (fd < 0) return std::string();
  close(fd);
  return path;
}

}  // namespace testing
}  // namespace orv

#endif  // ORV_TESTS_FILE_TEMP_FOLDER_H_
