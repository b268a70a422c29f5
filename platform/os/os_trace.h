// The system's debug output: the system log at debug level.
#ifndef ORV_PLATFORM_OS_TRACE_H_
#define ORV_PLATFORM_OS_TRACE_H_

#include <string>

namespace orv {
namespace os {

void OutputDebugString(const std::wstring& text);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_TRACE_H_
