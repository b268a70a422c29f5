#include <OrvStrUtil.h>

#include <cmath>
#include <cstdint>
#include <cwchar>
#include <cwctype>

void OrvStrUtil::ftow(float value, wchar_t* buffer, int size) {
  if (buffer == nullptr || size < 1) return;
  // value x 1000000 in double, rounded to single precision, magnitude
  // truncated to 32 bits. NaN counts as 0; magnitudes past the 32-bit range
  // saturate instead of overflowing.
  const float scaledF = std::fabs(static_cast<float>(static_cast<double>(value) * 1000000.0));
  int32_t scaled;
  if (std::isnan(scaledF)) {
    scaled = 0;
  } else if (scaledF >= 2147483647.0f) {
    scaled = INT32_MAX;
  } else {
    scaled = static_cast<int32_t>(scaledF);
  }
  const int whole = scaled / 1000000;
  const int fraction = scaled % 1000000;
  const wchar_t* format = (0.0f < value) ? L"%d.%06d" : L"-%d.%06d";
  if (std::swprintf(buffer, static_cast<size_t>(size), format, whole, fraction) < 0) {
    buffer[0] = L'\0';
  }
}

float OrvStrUtil::wtof(wchar_t* text) {
  if (text == nullptr) return 0.0f;
  float sign = 1.0f;
  const wchar_t* p = text;
  if (*p == L'-') {
    sign = -1.0f;
    ++p;
  }
  float whole = 0.0f;
  for (; *p; ++p) {
    if (std::iswdigit(static_cast<wint_t>(*p))) {
      whole = whole * 10.0f + static_cast<float>(*p - L'0');
    } else if (*p == L'.') {
      ++p;
      break;
    }
  }
  float fraction = 0.0f;
  float scale = 0.1f;
  for (; *p; ++p) {
    if (std::iswdigit(static_cast<wint_t>(*p))) {
      fraction += static_cast<float>(*p - L'0') * scale;
    }
    scale *= 0.1f;
  }
  return (fraction + whole) * sign;
}
