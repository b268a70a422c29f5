// The path of a file beside a loaded module.
#ifndef ORV_LOAD_MODULE_H_
#define ORV_LOAD_MODULE_H_

#include <OrvExport.h>
#include <OrvPlatformTypes.h>

class ORV_API COrvLoadModule {
 public:
  // Writes the directory of `module` (any address inside a loaded module; null
  // for the main program), with its trailing '/', followed by `fileName`, into
  // `buffer` of `size` wide characters. False, with `buffer` untouched, when the
  // module is unknown or a pointer is null; false with `buffer` emptied when the
  // result does not fit.
  static bool GetLoadModuleName(wchar_t* buffer, unsigned int size, HINSTANCE module,
                                const wchar_t* fileName);
};

#endif  // ORV_LOAD_MODULE_H_
