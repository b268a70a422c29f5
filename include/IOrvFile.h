// IOrvFile: a seekable byte source with 64-bit positions and an explicit,
// plain-integer reference count. Objects end by Release.
#ifndef ORV_IORVFILE_H_
#define ORV_IORVFILE_H_

#include <OrvExport.h>
#include <OrvPlatformTypes.h>

// Result codes of Read, Write, Seek and the open operations.
enum : unsigned long {
  ORV_FILE_OK = 0,             // success
  ORV_FILE_ERR_OPEN = 1,       // a path could not be opened
  ORV_FILE_ERR_MODE = 2,       // mode above 7, or a writing mode with several paths
  ORV_FILE_ERR_EOF = 3,        // at end of file, or a null path
  ORV_FILE_ERR_DISK_FULL = 4,  // the write failed because the volume is full
  ORV_FILE_ERR_NOT_OPEN = 7,   // the object holds no valid handles
  ORV_FILE_ERR_MEMORY = 8,     // allocation failed, or a path could not be prefixed
  ORV_FILE_ERR_IO = 255        // any other failure, including invalid arguments
};

// A window on a stream: position 0 and the size of the object refer to the
// bytes from startOffset to endOffset, both included.
struct ORV_OPEN_MODE {
  unsigned long long reserved;  // not read
  long long startOffset;        // first byte of the window
  long long endOffset;          // last byte of the window, inclusive; -1: end of the stream
};

class IOrvFile {
 public:
  virtual void AddRef() = 0;
  // Drops one reference; the last one destroys the object.
  virtual void Release() = 0;
  // Bytes visible through the object, or -1 when it is not open.
  virtual long long GetFileSize() = 0;
  // Reads up to `size` bytes. `origin` FILE_BEGIN seeks to `offset` first,
  // FILE_CURRENT reads at the current position (offset ignored), FILE_END
  // answers ORV_FILE_ERR_EOF. `eof` may be null.
  virtual unsigned long Read(void* buffer, unsigned long size, unsigned long* readSize, bool* eof,
                             unsigned long origin, long long offset) = 0;
  virtual unsigned long Write(void* buffer, unsigned long size, unsigned long* writtenSize) = 0;
  virtual unsigned long Seek(unsigned long origin, long long offset) = 0;
  virtual unsigned long SeekToBegin() = 0;
  virtual unsigned long SeekToEnd() = 0;
  // Position relative to the start of the object, or -1 when it is not open.
  virtual long long GetCurrentPosition() = 0;
  virtual bool IsEOF() = 0;
  virtual const wchar_t* GetFileName() = 0;
  virtual unsigned long GetError() = 0;
  virtual unsigned long OpenFile() = 0;
  virtual void CloseFile() = 0;
  virtual bool IsFileOpened() = 0;

 protected:
  // Objects are destroyed by Release, never through this interface.
  ~IOrvFile() = default;
};

#endif  // ORV_IORVFILE_H_
