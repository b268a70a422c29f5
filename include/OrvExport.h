// Export control for the OrvUtility shared library.
//
// The library is built with hidden visibility; only what carries ORV_API is
// exported. The static twin used by the test suite defines ORV_STATIC_INTERNAL
// and exports nothing.
#ifndef ORV_EXPORT_H_
#define ORV_EXPORT_H_

#if defined(ORV_STATIC_INTERNAL)
#define ORV_API
#elif defined(_WIN32)
#if defined(ORV_BUILDING_LIBRARY)
#define ORV_API __declspec(dllexport)
#else
#define ORV_API __declspec(dllimport)
#endif
#else
#define ORV_API __attribute__((visibility("default")))
#endif

// Members of an exported class that only the library itself calls (private
// stages whose signatures name internal types) stay out of the shared
// library's symbol table.
#if defined(_WIN32) || defined(ORV_STATIC_INTERNAL)
#define ORV_HIDDEN
#else
#define ORV_HIDDEN __attribute__((visibility("hidden")))
#endif

#endif  // ORV_EXPORT_H_
