#include "platform/os/os_text.h"

#include <cstdint>

namespace orv {
namespace os {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

void AppendUtf8(std::string* out, char32_t c) {
  if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacement;
  if (c < 0x80) {
    out->push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (c >> 6)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (c >> 12)));
    out->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (c >> 18)));
    out->push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

}  // namespace

std::string WideToUtf8(const wchar_t* text, size_t length) {
  std::string out;
  out.reserve(length);
  for (size_t i = 0; i < length; ++i) AppendUtf8(&out, static_cast<char32_t>(text[i]));
  return out;
}

std::string WideToUtf8(const std::wstring& text) { return WideToUtf8(text.data(), text.size()); }

std::wstring Utf8ToWide(const std::string& text) {
  std::wstring out;
  out.reserve(text.size());
  const auto* s = reinterpret_cast<const uint8_t*>(text.data());
  const size_t n = text.size();
  size_t i = 0;
  while (i < n) {
    const uint8_t b = s[i];
    int extra;
    char32_t c;
    if (b < 0x80) {
      extra = 0;
      c = b;
    } else if ((b & 0xE0) == 0xC0) {
      extra = 1;
      c = b & 0x1F;
    } else if ((b & 0xF0) == 0xE0) {
      extra = 2;
      c = b & 0x0F;
    } else if ((b & 0xF8) == 0xF0) {
      extra = 3;
      c = b & 0x07;
    } else {
      out.push_back(static_cast<wchar_t>(kReplacement));
      ++i;
      continue;
    }
    bool ok = true;
    for (int k = 1; k <= extra; ++k) {
      if (i + k >= n || (s[i + k] & 0xC0) != 0x80) {
        ok = false;
        break;
      }
      c = (c << 6) | (s[i + k] & 0x3F);
    }
    static const char32_t kMin[4] = {0, 0x80, 0x800, 0x10000};
    if (!ok || c < kMin[extra] || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
      out.push_back(static_cast<wchar_t>(kReplacement));
      ++i;
      continue;
    }
    out.push_back(static_cast<wchar_t>(c));
    i += extra + 1;
  }
  return out;
}

}  // namespace os
}  // namespace orv
