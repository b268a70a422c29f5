// COrvFile: IOrvFile over the system's files, and the library's path and
// file-system helpers.
//
// A path may name several files joined by '|'; they read as one concatenated
// stream, and a read crosses from one file to the next within one call. An
// ORV_OPEN_MODE window restricts the object to part of that stream.
//
// Open modes (the constructor's `mode`):
//   0..3  read an existing file                      (O_RDONLY)
//   4..7  read and write a new, empty file, one path  (O_RDWR | O_CREAT | O_TRUNC)
// Within each group the modes differ only in what they share with other openers:
// 0 and 4 share nothing, 1 and 5 share reading, 2 and 6 share writing, 3 and 7
// share both. This host has no mandatory sharing: every mode lets other openers
// in, so the sharing part of a mode is recorded and passed on, never enforced.
//
// Paths are wide strings (UTF-32), handed to the system as UTF-8. Absolute
// paths are POSIX paths ("/media/clip.mts"); relative paths are resolved against
// the current directory at the time of the call. '\' is an ordinary file-name
// character on this host, except in Windows-form paths ("C:\x", "\\srv\share",
// "\x"), which name drives and server shares that this host does not have: they
// follow the text rules below, and the system answers them as not found.
// The prefix "\\?\" that AddPrefixToPath adds is removed before the system sees
// a path, and paths longer than the system's limit are opened directory by
// directory, so a path of any length works.
//
// Positions never leave the stream or the window: a seek at or past the end
// lands on the end. Seek offsets are never negative (ORV_FILE_ERR_IO).
//
// Objects are not copyable. A constructed object holds one reference and ends
// by Release; an object whose construction failed (GetError() 1) holds none and
// is destroyed by its owner with delete.
#ifndef ORV_COORVFILE_H_
#define ORV_COORVFILE_H_

#include <IOrvFile.h>
#include <OrvExport.h>
#include <OrvPlatformTypes.h>

class ORV_API COrvFile : public IOrvFile {
 public:
  // Opens `path` (one path, or several joined by '|') in `mode` (0..7), with an
  // optional window. GetError() is 0 on success; 1 when the mode, a path or the
  // window was refused, in which case nothing is left open.
  COrvFile(const wchar_t* path, unsigned int mode, ORV_OPEN_MODE* window);
  COrvFile(const COrvFile&) = delete;
  COrvFile& operator=(const COrvFile&) = delete;

  void AddRef() override;
  void Release() override;
  long long GetFileSize() override;
  // Reads `size` bytes or up to the end. `readSize` is required and `buffer`
  // must not be null when `size` is above 0 (ORV_FILE_ERR_IO, nothing done).
  // ORV_FILE_ERR_EOF with *eof true when nothing is left; otherwise 0, with
  // *eof true when the read reached the end. A read of 0 bytes succeeds.
  unsigned long Read(void* buffer, unsigned long size, unsigned long* readSize, bool* eof,
                     unsigned long origin, long long offset) override;
  // Writes at the current position of a writing-mode object (modes 4..7).
  // ORV_FILE_ERR_DISK_FULL when the volume is full; *writtenSize (required)
  // tells what reached the file.
  unsigned long Write(void* buffer, unsigned long size, unsigned long* writtenSize) override;
  // Moves to `offset` (>= 0) from FILE_BEGIN, FILE_CURRENT or FILE_END, within
  // the stream or window; a target at or past the end lands on the end.
  unsigned long Seek(unsigned long origin, long long offset) override;
  unsigned long SeekToBegin() override;
  unsigned long SeekToEnd() override;
  long long GetCurrentPosition() override;
  bool IsEOF() override;
  const wchar_t* GetFileName() override;
  unsigned long GetError() override;
  // Re-opens an object closed by CloseFile, at the position it had then. The
  // window is checked again against the files as they are now (ORV_FILE_ERR_OPEN
  // when it no longer fits). A writing mode opens its file as it always does:
  // empty, so the position lands on its start.
  unsigned long OpenFile() override;
  // Closes every file and remembers the position; the object stays alive.
  void CloseFile() override;
  bool IsFileOpened() override;
  virtual ~COrvFile();

  // Path and system helpers. Lengths are in wide characters and include the
  // terminator. Each answers its failure value (0, null or
  // INVALID_HANDLE_VALUE) for null pointers and refused paths, and leaves errno
  // as the failing system call left it.

  // The long form of `path`: relative paths unchanged; "\\srv\share\x" becomes
  // "\\?\UNC\srv\share\x"; a path already starting "\\?\" is unchanged; any
  // other absolute path of 4 or more characters gets "\\?\" in front
  // ("/media/a.mts" becomes "\\?\/media/a.mts"). Absolute paths shorter than 4
  // characters give 0. With a null `dst` answers the length needed; with a
  // `dst` of `dstSize` characters writes the form and answers its length, or 0,
  // writing nothing, when it does not fit.
  static unsigned long AddPrefixToPath(const wchar_t* path, wchar_t* dst, unsigned long dstSize);
  // MAX_PATH (260) for a relative path, else the length of its long form.
  static unsigned long GetAllocationSizeForAbsolutePath(const wchar_t* path);

  // Absolute: starts with '/', with '\', or with a drive letter and ':'.
  static int PathIsRelative(const wchar_t* path);
  // True when the file or directory exists.
  static int PathFileExists(const wchar_t* path);
  // True for a bare server share: "\\srv\share" or "\\?\UNC\srv\share".
  static int PathIsUNCServerShare(const wchar_t* path);
  // Cuts the last component (and its separator) off, in place.
  static int PathRemoveFileSpec(wchar_t* path);
  // Cuts an absolute path to its root, in place. The root of a POSIX path is
  // the directory where the volume holding it is mounted ("/mnt/disk"); that of
  // a Windows-form path is its drive ("C:\") or share ("\\srv\share"). Relative
  // paths have no root: 0, unchanged.
  static int PathStripToRoot(wchar_t* path);
  // Appends a separator ('\' in Windows-form paths, else '/') unless the path
  // ends with one; answers the address of the terminator. The buffer is taken
  // to hold MAX_PATH characters: null, nothing written, when it would not.
  static wchar_t* PathAddBackslash(wchar_t* path);
  // Writes the fully qualified long form of `path` into `dst` (`dstSize`
  // characters): relative paths are joined to the current directory, absolute
  // ones are given their long form. 0, `dst` untouched, when it does not fit.
  static int PathSearchAndQualify(const wchar_t* path, wchar_t* dst, unsigned int dstSize);

  // Opens or creates a file with Windows' access rights (GENERIC_READ,
  // GENERIC_WRITE, or 0 for a handle that only answers sizes), creation
  // dispositions (CREATE_NEW .. TRUNCATE_EXISTING) and flags. Directories open
  // only with FILE_FLAG_BACKUP_SEMANTICS. `share` and `templateFile` have no
  // effect on this host; a handle is inherited by child programs only when
  // `attributes` says so. On this host the handle is the file descriptor:
  // (int)(intptr_t)handle, closed with close(2). INVALID_HANDLE_VALUE on failure.
  static void* CreateFileW(const wchar_t* path, unsigned long access, unsigned long share,
                           SECURITY_ATTRIBUTES* attributes, unsigned long disposition,
                           unsigned long flags, void* templateFile);
  static int DeleteFileW(const wchar_t* path);
  // Makes "<folder>/<up to 3 characters of prefix><4 hex digits>.TMP" in
  // `result`, which must hold MAX_PATH characters. With `unique` 0 a free
  // number is chosen and the file is created empty; otherwise the low 16 bits
  // of `unique` are used and nothing is created. Answers the number used, or 0.
  static unsigned int GetTempFileNameW(const wchar_t* folder, const wchar_t* prefix,
                                       unsigned int unique, wchar_t* result);
  // Describes the volume holding `root` (the current directory when null). The
  // file-system name is the one the system mounts it under ("ext4", "tmpfs",
  // "proc"...), and "NTFS" for an NTFS volume. This host keeps no volume
  // labels: the volume name is empty. Any output may be null; a string that
  // does not fit its buffer fails the call.
  static int GetVolumeInformationW(const wchar_t* root, wchar_t* volumeName,
                                   unsigned long volumeNameSize, unsigned long* serial,
                                   unsigned long* maxComponentLength,
                                   unsigned long* fileSystemFlags, wchar_t* fileSystemName,
                                   unsigned long fileSystemNameSize);

  // True when the file exists (a directory counts, as for PathFileExists); for a
  // list joined by '|', when every file of it does. An empty piece names nothing.
  static bool IsFileExist(const wchar_t* path);
  // True when `path` (relative: the current directory) lies on an NTFS volume.
  static bool IsPathNTFS(const wchar_t* path);

 private:
  bool isValidFileHandles();
  unsigned long Open(const wchar_t* path, unsigned int mode);
  void Close();
  // Reads the segment sizes and applies the window; false when either fails.
  bool ReadSizesAndWindow();
  void FreeArrays();
  unsigned long SeekAbsolute(long long position);

  HANDLE* m_handles = nullptr;
  unsigned long long* m_segmentSizes = nullptr;
  int m_handleCount = 0;
  int m_currentIndex = 0;
  long long m_startOffset = 0;
  long long m_endOffset = -1;
  long long m_fileSize = 0;
  long long m_savedPosition = 0;
  wchar_t* m_fileName = nullptr;
  unsigned int m_refCount = 0;
  unsigned int m_openMode = 0;
  unsigned int m_error = 0;
  // The window as the caller asked for it, applied again by OpenFile.
  bool m_hasWindow = false;
  long long m_windowStart = 0;
  long long m_windowEnd = -1;
};

#endif  // ORV_COORVFILE_H_
