// Text rules of the file layer's paths, shared by the path helpers of
// COrvFile and the file object: roots, separators and qualification.
#ifndef ORV_FILE_FILE_PATH_RULES_H_
#define ORV_FILE_FILE_PATH_RULES_H_

#include <cstddef>
#include <string>

#include "platform/os/os_path.h"

namespace orv {

// True when `c` separates components in a path of grammar `form`.
bool IsPathSeparator(wchar_t c, os::PathForm form);
// Length of the part of `path` that no component removal may cut: "/" of a
// POSIX path, "C:\" of a drive path, "\\srv\share" of a server share, the
// long-form prefix in front of these; 0 for a relative path.
size_t PathRootLength(const wchar_t* path, os::PathForm form);
// The fully qualified long form of `path`, of any length: a relative path is
// joined to the current directory, an absolute one gets its long form.
// False (errno set) for null and empty paths, absolute paths too short for a
// long form, and when the current directory cannot be told. Never throws.
bool QualifyPath(const wchar_t* path, std::wstring* out);

}  // namespace orv

#endif  // ORV_FILE_FILE_PATH_RULES_H_
