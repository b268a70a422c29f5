#include "platform/os/os_module.h"

#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

#include <vector>

#include "platform/os/os_text.h"

namespace orv {
namespace os {

bool GetModuleFileName(HINSTANCE module, std::wstring* path) {
  std::string utf8;
  if (module == nullptr) {
    std::vector<char> buffer(PATH_MAX + 1);
    const ssize_t n = readlink("/proc/self/exe", buffer.data(), buffer.size() - 1);
    if (n <= 0) return false;
    utf8.assign(buffer.data(), static_cast<size_t>(n));
  } else {
    Dl_info info{};
    if (dladdr(module, &info) == 0 || info.dli_fname == nullptr || info.dli_fname[0] == '\0') {
      return false;
    }
    utf8 = info.dli_fname;
    if (utf8[0] != '/') {
      char cwd[PATH_MAX];
      if (getcwd(cwd, sizeof(cwd)) == nullptr) return false;
      utf8 = std::string(cwd) + "/" + utf8;
    }
  }
  *path = Utf8ToWide(utf8);
  return true;
}

}  // namespace os
}  // namespace orv
