#include "platform/os/os_trace.h"

#include <syslog.h>

#include "platform/os/os_text.h"

namespace orv {
namespace os {

void OutputDebugString(const std::wstring& text) {
  // No openlog: the application's own identity and facility are kept.
  syslog(LOG_DEBUG, "%s", WideToUtf8(text).c_str());
}

}  // namespace os
}  // namespace orv
