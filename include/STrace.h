// Debug trace: one formatted line to the system log at debug level.
#ifndef ORV_STRACE_H_
#define ORV_STRACE_H_

#include <OrvExport.h>

// Formats like swprintf and writes the text, cut to 255 characters, to the
// system's debug output. Always on; there are no levels.
ORV_API void STrace(const wchar_t* format, ...);

#endif  // ORV_STRACE_H_
