// Text between the library's wide strings (UTF-32 wchar_t) and the system's
// UTF-8. Invalid input becomes U+FFFD rather than failing.
#ifndef ORV_PLATFORM_OS_TEXT_H_
#define ORV_PLATFORM_OS_TEXT_H_

#include <string>

namespace orv {
namespace os {

std::string WideToUtf8(const std::wstring& text);
std::string WideToUtf8(const wchar_t* text, size_t length);
std::wstring Utf8ToWide(const std::string& text);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_TEXT_H_
