// File handles of the file layer. A HANDLE made here carries the file
// descriptor itself ((int)(intptr_t)handle); descriptor 0 is never handed out,
// so a handle is never null. Close these handles with CloseFileHandle, never
// with the kernel-object CloseHandle of os_handles.h.
//
// Reads and writes loop until the whole size is done (or, for reads, the end
// of the file), so one call behaves like the single transfer a caller asked for.
#ifndef ORV_PLATFORM_OS_FILE_H_
#define ORV_PLATFORM_OS_FILE_H_

#include <OrvPlatformTypes.h>

#include <cstdint>
#include <string>

namespace orv {
namespace os {

HANDLE HandleFromDescriptor(int fd);
// The descriptor of a file handle, or -1 for null and INVALID_HANDLE_VALUE.
int DescriptorFromHandle(HANDLE handle);

// open(2) flags for Windows' access rights and creation disposition:
// GENERIC_READ / GENERIC_WRITE select O_RDONLY, O_WRONLY or O_RDWR, no right
// at all a handle that only answers sizes (O_PATH); CREATE_NEW is
// O_CREAT | O_EXCL, CREATE_ALWAYS O_CREAT | O_TRUNC, OPEN_EXISTING nothing,
// OPEN_ALWAYS O_CREAT, TRUNCATE_EXISTING O_TRUNC (needs GENERIC_WRITE).
// False (errno EINVAL) for an unknown disposition or access bit.
bool OpenFlagsFor(uint32_t access, uint32_t disposition, bool inheritable, int* flags);

// Opens a system path of any length; new files get mode 0666 less the umask.
// Directories are refused (EISDIR) unless `allowDirectory`.
HANDLE OpenFileHandle(const std::string& path, int flags, bool allowDirectory);
// Reads until `size` bytes are in or the file ends; *done tells how many.
bool ReadFileHandle(HANDLE handle, void* buffer, uint64_t size, uint64_t* done);
// Writes all `size` bytes; on failure *done tells how many reached the file.
bool WriteFileHandle(HANDLE handle, const void* buffer, uint64_t size, uint64_t* done);
// lseek(2): `whence` SEEK_SET, SEEK_CUR or SEEK_END.
bool SeekFileHandle(HANDLE handle, int64_t distance, int whence, int64_t* position);
bool FileHandleSize(HANDLE handle, int64_t* size);
bool CloseFileHandle(HANDLE handle);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_FILE_H_
