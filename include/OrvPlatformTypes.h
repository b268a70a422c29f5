// The Windows-named types that appear in the public interface, for hosts other
// than Windows. Field widths and layouts are Windows' own, so records keep
// their sizes (BITMAPINFOHEADER is 40 bytes) and code written against the
// interface compiles unchanged.
#ifndef ORV_PLATFORM_TYPES_H_
#define ORV_PLATFORM_TYPES_H_

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>

#include <cstdint>

typedef int32_t LONG;
typedef uint32_t DWORD;
typedef uint16_t WORD;
typedef uint8_t BYTE;
typedef int BOOL;
typedef int32_t HRESULT;
typedef void* HANDLE;
typedef void* LPVOID;
typedef uint32_t UINT;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;

// The address of anything inside a loaded module; null names the main program.
typedef void* HINSTANCE;
typedef HINSTANCE HMODULE;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1)))
#define INFINITE 0xFFFFFFFFu
#define WAIT_OBJECT_0 0x00000000u
#define WAIT_ABANDONED 0x00000080u
#define WAIT_TIMEOUT 0x00000102u
#define WAIT_FAILED 0xFFFFFFFFu
#define MAX_PATH 260

// HRESULT values, with Windows' numbers.
#define S_OK (static_cast<HRESULT>(0x00000000L))
#define S_FALSE (static_cast<HRESULT>(0x00000001L))
#define E_NOTIMPL (static_cast<HRESULT>(0x80004001L))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80004002L))
#define E_POINTER (static_cast<HRESULT>(0x80004003L))
#define E_ABORT (static_cast<HRESULT>(0x80004004L))
#define E_FAIL (static_cast<HRESULT>(0x80004005L))
#define E_UNEXPECTED (static_cast<HRESULT>(0x8000FFFFL))
#define E_OUTOFMEMORY (static_cast<HRESULT>(0x8007000EL))
#define E_INVALIDARG (static_cast<HRESULT>(0x80070057L))
#define RPC_E_CHANGED_MODE (static_cast<HRESULT>(0x80010106L))
#define CO_E_NOTINITIALIZED (static_cast<HRESULT>(0x800401F0L))
#define CO_E_OBJISREG (static_cast<HRESULT>(0x800401FBL))
#define CO_E_OBJNOTREG (static_cast<HRESULT>(0x800401FCL))
#define CLASS_E_NOAGGREGATION (static_cast<HRESULT>(0x80040110L))
#define REGDB_E_CLASSNOTREG (static_cast<HRESULT>(0x80040154L))
#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

// Thread creation flags, exit code and priority levels, with Windows' numbers.
#define CREATE_SUSPENDED 0x00000004u
#define STILL_ACTIVE 259u
#define THREAD_PRIORITY_IDLE (-15)
#define THREAD_PRIORITY_LOWEST (-2)
#define THREAD_PRIORITY_BELOW_NORMAL (-1)
#define THREAD_PRIORITY_NORMAL 0
#define THREAD_PRIORITY_ABOVE_NORMAL 1
#define THREAD_PRIORITY_HIGHEST 2
#define THREAD_PRIORITY_TIME_CRITICAL 15
#define THREAD_PRIORITY_ERROR_RETURN 0x7FFFFFFF

typedef struct tagRECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
} RECT;

typedef struct tagRGBQUAD {
  BYTE rgbBlue;
  BYTE rgbGreen;
  BYTE rgbRed;
  BYTE rgbReserved;
} RGBQUAD;

typedef struct tagBITMAPINFOHEADER {
  DWORD biSize;
  LONG biWidth;
  LONG biHeight;
  WORD biPlanes;
  WORD biBitCount;
  DWORD biCompression;
  DWORD biSizeImage;
  LONG biXPelsPerMeter;
  LONG biYPelsPerMeter;
  DWORD biClrUsed;
  DWORD biClrImportant;
} BITMAPINFOHEADER;

typedef struct tagBITMAPINFO {
  BITMAPINFOHEADER bmiHeader;
  RGBQUAD bmiColors[1];
} BITMAPINFO;

#define BI_RGB 0u
#define BI_RLE8 1u
#define BI_RLE4 2u
#define BI_BITFIELDS 3u

typedef struct _SECURITY_ATTRIBUTES {
  DWORD nLength;
  LPVOID lpSecurityDescriptor;
  BOOL bInheritHandle;
} SECURITY_ATTRIBUTES;

// Files: access rights, sharing, creation dispositions, seek origins and volume
// flags of the file calls, with Windows' numbers.
#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_WRITE 0x00000002u
#define FILE_SHARE_DELETE 0x00000004u
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define TRUNCATE_EXISTING 5u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_FLAG_BACKUP_SEMANTICS 0x02000000u
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u
#define ERROR_DISK_FULL 112u
#define FILE_CASE_SENSITIVE_SEARCH 0x00000001u
#define FILE_CASE_PRESERVED_NAMES 0x00000002u
#define FILE_UNICODE_ON_DISK 0x00000004u
#define FILE_SUPPORTS_SPARSE_FILES 0x00000040u
#define FILE_READ_ONLY_VOLUME 0x00080000u

typedef enum tagCOINIT {
  COINIT_APARTMENTTHREADED = 0x2,
  COINIT_MULTITHREADED = 0x0,
  COINIT_DISABLE_OLE1DDE = 0x4,
  COINIT_SPEED_OVER_MEMORY = 0x8
} COINIT;

typedef struct _GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;

// Class contexts of object creation.
#define CLSCTX_INPROC_SERVER 0x1u
#define CLSCTX_INPROC_HANDLER 0x2u
#define CLSCTX_LOCAL_SERVER 0x4u
#define CLSCTX_REMOTE_SERVER 0x10u

// A critical section: a recursive lock owned by one thread at a time.
typedef struct _RTL_CRITICAL_SECTION {
  pthread_mutex_t mutex;
} CRITICAL_SECTION;

static_assert(sizeof(BITMAPINFOHEADER) == 40, "BITMAPINFOHEADER keeps its Windows layout");
static_assert(sizeof(RGBQUAD) == 4, "RGBQUAD keeps its Windows layout");
static_assert(sizeof(RECT) == 16, "RECT keeps its Windows layout");

#endif  // _WIN32

#endif  // ORV_PLATFORM_TYPES_H_
