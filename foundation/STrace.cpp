#include <STrace.h>

#include <cstdarg>
#include <cwchar>
#include <string>
#include <vector>

#include "platform/os/os_trace.h"

namespace {
constexpr size_t kTraceChars = 255;
// Longest line formatted before it is cut; a longer one is cut at this size.
constexpr size_t kFormatLimit = 64 * 1024;
}  // namespace

void STrace(const wchar_t* format, ...) {
  if (format == nullptr) return;
  // swprintf-style formatting fails outright when the text does not fit, so
  // the line is formatted into a buffer that grows, then cut to 255 characters.
  std::vector<wchar_t> buffer(kTraceChars + 1);
  for (;;) {
    va_list args;
    va_start(args, format);
    const int n = std::vswprintf(buffer.data(), buffer.size(), format, args);
    va_end(args);
    if (n >= 0) break;
    if (buffer.size() >= kFormatLimit) {
      buffer[0] = L'\0';
      break;
    }
    buffer.assign(buffer.size() * 4, L'\0');
  }
  std::wstring line(buffer.data());
  if (line.size() > kTraceChars) line.resize(kTraceChars);
  orv::os::OutputDebugString(line);
}
