// Float to text and back in a fixed format with six decimals.
#ifndef ORV_STR_UTIL_H_
#define ORV_STR_UTIL_H_

#include <OrvExport.h>

class ORV_API OrvStrUtil {
 public:
  // Writes "%d.%06d" of the value, with a leading '-' unless the value is above
  // 0.0 (so 0.0 and NaN print as "-0.000000"). The magnitude is defined below
  // 2147.483648; larger ones saturate to 2147.483647. A buffer too small gets
  // an empty string; a null buffer or a size below 1 is left alone.
  static void ftow(float value, wchar_t* buffer, int size);
  // Reads an optional leading '-', digits of the whole part (other characters
  // are skipped) up to '.', then the fraction. No exponent; no error: text
  // without digits, or null, gives 0.0.
  static float wtof(wchar_t* text);
};

#endif  // ORV_STR_UTIL_H_
