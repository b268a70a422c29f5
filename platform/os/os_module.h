// Module paths: which file a loaded module came from.
#ifndef ORV_PLATFORM_OS_MODULE_H_
#define ORV_PLATFORM_OS_MODULE_H_

#include <OrvPlatformTypes.h>

#include <string>

namespace orv {
namespace os {

// The separator of the parts of a module's path on this host.
constexpr wchar_t kPathSeparator = L'/';

// The absolute path of the module that contains `module` (any address inside
// it); null names the main program. False when the address is in no module.
bool GetModuleFileName(HINSTANCE module, std::wstring* path);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_MODULE_H_
