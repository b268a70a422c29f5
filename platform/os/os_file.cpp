#include "platform/os/os_file.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "platform/os/os_path.h"

namespace orv {
namespace os {
namespace {

// The largest transfer that read(2) and write(2) perform in one call.
constexpr uint64_t kMaxTransfer = 0x7FFFF000u;

}  // namespace

HANDLE HandleFromDescriptor(int fd) { return reinterpret_cast<HANDLE>(static_cast<intptr_t>(fd)); }

int DescriptorFromHandle(HANDLE handle) {
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE) return -1;
  const intptr_t value = reinterpret_cast<intptr_t>(handle);
  if (value < 0 || value > INT32_MAX) return -1;
  return static_cast<int>(value);
}

bool OpenFlagsFor(uint32_t access, uint32_t disposition, bool inheritable, int* flags) {
  const uint32_t known = GENERIC_READ | GENERIC_WRITE;
  if ((access & ~known) != 0) {
    errno = EINVAL;
    return false;
  }
  const bool read = (access & GENERIC_READ) != 0;
  const bool write = (access & GENERIC_WRITE) != 0;
  int result;
  if (read && write) {
    result = O_RDWR;
  } else if (write) {
    result = O_WRONLY;
  } else if (read) {
    result = O_RDONLY;
  } else {
    result = O_PATH;
  }
  switch (disposition) {
    case CREATE_NEW:
      result |= O_CREAT | O_EXCL;
      break;
    case CREATE_ALWAYS:
      result |= O_CREAT | O_TRUNC;
      break;
    case OPEN_EXISTING:
      break;
    case OPEN_ALWAYS:
      result |= O_CREAT;
      break;
    case TRUNCATE_EXISTING:
      if (!write) {
        errno = EINVAL;
        return false;
      }
      result |= O_TRUNC;
      break;
    default:
      errno = EINVAL;
      return false;
  }
  // Creating needs a real open, not a size-only handle.
  if ((result & O_PATH) && (result & O_CREAT)) result = (result & ~O_PATH) | O_RDONLY;
  if (!inheritable) result |= O_CLOEXEC;
  *flags = result;
  return true;
}

HANDLE OpenFileHandle(const std::string& path, int flags, bool allowDirectory) {
  int fd = OpenLongPath(path, flags, 0666);
  if (fd < 0) return INVALID_HANDLE_VALUE;
  if (!allowDirectory) {
    struct stat status;
    int error = 0;
    if (fstat(fd, &status) != 0) {
      error = errno;
    } else if (S_ISDIR(status.st_mode)) {
      error = EISDIR;
    }
    if (error != 0) {
      close(fd);
      errno = error;
      return INVALID_HANDLE_VALUE;
    }
  }
  if (fd == 0) {
    // Descriptor 0 would read as a null handle: move it.
    const int moved = fcntl(fd, (flags & O_CLOEXEC) ? F_DUPFD_CLOEXEC : F_DUPFD, 1);
    const int error = errno;
    close(fd);
    if (moved < 0) {
      errno = error;
      return INVALID_HANDLE_VALUE;
    }
    fd = moved;
  }
  return HandleFromDescriptor(fd);
}

bool ReadFileHandle(HANDLE handle, void* buffer, uint64_t size, uint64_t* done) {
  *done = 0;
  const int fd = DescriptorFromHandle(handle);
  if (fd < 0) {
    errno = EBADF;
    return false;
  }
  auto* out = static_cast<char*>(buffer);
  while (*done < size) {
    const size_t ask = static_cast<size_t>(std::min(size - *done, kMaxTransfer));
    const ssize_t got = read(fd, out + *done, ask);
    if (got < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (got == 0) break;
    *done += static_cast<uint64_t>(got);
  }
  return true;
}

bool WriteFileHandle(HANDLE handle, const void* buffer, uint64_t size, uint64_t* done) {
  *done = 0;
  const int fd = DescriptorFromHandle(handle);
  if (fd < 0) {
    errno = EBADF;
    return false;
  }
  const auto* in = static_cast<const char*>(buffer);
  while (*done < size) {
    const size_t ask = static_cast<size_t>(std::min(size - *done, kMaxTransfer));
    const ssize_t put = write(fd, in + *done, ask);
    if (put < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (put == 0) {
      errno = ENOSPC;
      return false;
    }
    *done += static_cast<uint64_t>(put);
  }
  return true;
}

bool SeekFileHandle(HANDLE handle, int64_t distance, int whence, int64_t* position) {
  const int fd = DescriptorFromHandle(handle);
  if (fd < 0) {
    errno = EBADF;
    return false;
  }
  const off_t result = lseek(fd, static_cast<off_t>(distance), whence);
  if (result < 0) return false;
  if (position) *position = static_cast<int64_t>(result);
  return true;
}

bool FileHandleSize(HANDLE handle, int64_t* size) {
  const int fd = DescriptorFromHandle(handle);
  if (fd < 0) {
    errno = EBADF;
    return false;
  }
  struct stat status;
  if (fstat(fd, &status) != 0) return false;
  *size = static_cast<int64_t>(status.st_size);
  return true;
}

bool CloseFileHandle(HANDLE handle) {
  const int fd = DescriptorFromHandle(handle);
  if (fd < 0) {
    errno = EBADF;
    return false;
  }
  return close(fd) == 0;
}

}  // namespace os
}  // namespace orv
