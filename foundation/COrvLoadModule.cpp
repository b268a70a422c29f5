#include <COrvLoadModule.h>

#include <cwchar>
#include <string>

#include "platform/os/os_module.h"

bool COrvLoadModule::GetLoadModuleName(wchar_t* buffer, unsigned int size, HINSTANCE module,
                                       const wchar_t* fileName) {
  if (buffer == nullptr || fileName == nullptr) return false;
  std::wstring path;
  if (!orv::os::GetModuleFileName(module, &path)) return false;
  const size_t cut = path.rfind(orv::os::kPathSeparator);
  if (cut == std::wstring::npos) return false;
  path.resize(cut + 1);
  path += fileName;
  if (size == 0) return false;
  if (path.size() + 1 > size) {
    buffer[0] = L'\0';
    return false;
  }
  std::wmemcpy(buffer, path.c_str(), path.size() + 1);
  return true;
}
