// COrvFile: one or several files read as one stream, optionally through a
// window, over the handles of platform/os.
//
// Positions are kept by the handles themselves: the current index names the
// file that holds the position, and the position in the stream is that file's
// position plus the sizes of the files before it, less the window's start.
#include <COrvFile.h>
#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <cwchar>
#include <new>

#include "platform/os/os_file.h"

namespace {

// Access rights, sharing and creation of each open mode.
struct OpenModeRow {
  unsigned long access;
  unsigned long share;
  unsigned long disposition;
};

constexpr unsigned int kModeCount = 8;
constexpr unsigned int kFirstWritingMode = 4;

constexpr OpenModeRow kOpenModes[kModeCount] = {
    {GENERIC_READ, 0, OPEN_EXISTING},
    {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING},
    {GENERIC_READ, FILE_SHARE_WRITE, OPEN_EXISTING},
    {GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING},
    {GENERIC_READ | GENERIC_WRITE, 0, CREATE_ALWAYS},
    {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_ALWAYS},
    {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE, CREATE_ALWAYS},
    {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, CREATE_ALWAYS},
};

}  // namespace

COrvFile::COrvFile(const wchar_t* path, unsigned int mode, ORV_OPEN_MODE* window) {
  if (window != nullptr) {
    m_hasWindow = true;
    m_windowStart = window->startOffset;
    m_windowEnd = window->endOffset;
  }
  if (Open(path, mode) != ORV_FILE_OK) {
    m_error = 1;
    return;
  }
  if (!ReadSizesAndWindow()) {
    Close();
    m_error = 1;
    return;
  }
  const size_t length = std::wcslen(path) + 1;
  m_fileName = new (std::nothrow) wchar_t[length];
  if (m_fileName == nullptr) {
    Close();
    m_error = 1;
    return;
  }
  std::wmemcpy(m_fileName, path, length);
  AddRef();
}

COrvFile::~COrvFile() {
  Close();
  FreeArrays();
  delete[] m_fileName;
}

bool COrvFile::isValidFileHandles() {
  if (m_handles == nullptr || m_segmentSizes == nullptr || m_handleCount <= 0) return false;
  for (int i = 0; i < m_handleCount; ++i) {
    if (m_handles[i] == INVALID_HANDLE_VALUE) return false;
  }
  return true;
}

unsigned long COrvFile::Open(const wchar_t* path, unsigned int mode) {
  if (mode >= kModeCount) return ORV_FILE_ERR_MODE;
  if (path == nullptr) return ORV_FILE_ERR_EOF;
  int count = 1;
  for (const wchar_t* c = path; *c; ++c) count += (*c == L'|');
  if (count >= 2 && mode >= kFirstWritingMode) return ORV_FILE_ERR_MODE;

  Close();
  FreeArrays();
  m_handles = new (std::nothrow) HANDLE[count];
  m_segmentSizes = new (std::nothrow) unsigned long long[count];
  if (m_handles == nullptr || m_segmentSizes == nullptr) {
    FreeArrays();
    return ORV_FILE_ERR_MEMORY;
  }
  m_handleCount = count;
  m_currentIndex = 0;
  for (int i = 0; i < count; ++i) {
    m_handles[i] = INVALID_HANDLE_VALUE;
    m_segmentSizes[i] = 0;
  }

  const OpenModeRow& row = kOpenModes[mode];
  const wchar_t* piece = path;
  for (int i = 0; i < count; ++i) {
    const wchar_t* end = std::wcschr(piece, L'|');
    const size_t length = end ? static_cast<size_t>(end - piece) : std::wcslen(piece);
    wchar_t* one = new (std::nothrow) wchar_t[length + 1];
    if (one == nullptr) {
      Close();
      FreeArrays();
      return ORV_FILE_ERR_MEMORY;
    }
    std::wmemcpy(one, piece, length);
    one[length] = 0;
    const unsigned long longLength = AddPrefixToPath(one, nullptr, 0);
    wchar_t* longForm = longLength ? new (std::nothrow) wchar_t[longLength] : nullptr;
    if (longForm == nullptr || AddPrefixToPath(one, longForm, longLength) != longLength) {
      delete[] one;
      delete[] longForm;
      Close();
      FreeArrays();
      return ORV_FILE_ERR_MEMORY;
    }
    delete[] one;
    m_handles[i] =
        CreateFileW(longForm, row.access, row.share, nullptr, row.disposition, 0, nullptr);
    delete[] longForm;
    if (m_handles[i] == INVALID_HANDLE_VALUE) {
      // Nothing of a list stays open when one of its files cannot be opened.
      Close();
      return ORV_FILE_ERR_OPEN;
    }
    piece = end ? end + 1 : piece + length;
  }
  m_openMode = mode;
  return ORV_FILE_OK;
}

void COrvFile::Close() {
  if (m_handles == nullptr) return;
  for (int i = 0; i < m_handleCount; ++i) {
    if (m_handles[i] != INVALID_HANDLE_VALUE) {
      orv::os::CloseFileHandle(m_handles[i]);
      m_handles[i] = INVALID_HANDLE_VALUE;
    }
  }
}

void COrvFile::FreeArrays() {
  delete[] m_handles;
  delete[] m_segmentSizes;
  m_handles = nullptr;
  m_segmentSizes = nullptr;
  m_handleCount = 0;
  m_currentIndex = 0;
}

bool COrvFile::ReadSizesAndWindow() {
  long long total = 0;
  for (int i = 0; i < m_handleCount; ++i) {
    int64_t size = 0;
    if (!orv::os::FileHandleSize(m_handles[i], &size) || size < 0) return false;
    m_segmentSizes[i] = static_cast<unsigned long long>(size);
    total += size;
  }
  m_currentIndex = 0;
  if (!m_hasWindow) {
    m_startOffset = 0;
    m_endOffset = total - 1;
    m_fileSize = total;
    return true;
  }
  // A window lies inside the stream and holds at least one byte.
  const long long start = m_windowStart;
  const long long end = m_windowEnd == -1 ? total - 1 : m_windowEnd;
  if (start < 0 || end < start || end > total - 1) return false;
  m_startOffset = start;
  m_endOffset = end;
  m_fileSize = end - start + 1;
  return SeekAbsolute(0) == ORV_FILE_OK;
}

unsigned long COrvFile::SeekAbsolute(long long position) {
  const long long absolute = position + m_startOffset;
  long long before = 0;
  for (int i = 0; i < m_handleCount; ++i) {
    const long long size = static_cast<long long>(m_segmentSizes[i]);
    if (absolute < before + size) {
      if (!orv::os::SeekFileHandle(m_handles[i], absolute - before, SEEK_SET, nullptr)) {
        return ORV_FILE_ERR_IO;
      }
      m_currentIndex = i;
      return ORV_FILE_OK;
    }
    before += size;
  }
  // The end of the stream: the end of the last file.
  const int last = m_handleCount - 1;
  if (!orv::os::SeekFileHandle(m_handles[last], static_cast<long long>(m_segmentSizes[last]),
                               SEEK_SET, nullptr)) {
    return ORV_FILE_ERR_IO;
  }
  m_currentIndex = last;
  return ORV_FILE_OK;
}

void COrvFile::AddRef() { ++m_refCount; }

void COrvFile::Release() {
  // An object whose construction failed holds no reference; its owner deletes it.
  if (m_refCount == 0) return;
  if (--m_refCount == 0) delete this;
}

long long COrvFile::GetFileSize() { return isValidFileHandles() ? m_fileSize : -1; }

unsigned long COrvFile::GetError() { return m_error; }

const wchar_t* COrvFile::GetFileName() { return m_fileName; }

bool COrvFile::IsFileOpened() { return isValidFileHandles(); }

long long COrvFile::GetCurrentPosition() {
  if (!isValidFileHandles()) return -1;
  int64_t inFile = 0;
  if (!orv::os::SeekFileHandle(m_handles[m_currentIndex], 0, SEEK_CUR, &inFile)) return -1;
  long long before = 0;
  for (int i = 0; i < m_currentIndex; ++i) before += static_cast<long long>(m_segmentSizes[i]);
  return inFile + before - m_startOffset;
}

bool COrvFile::IsEOF() {
  const long long position = GetCurrentPosition();
  return position >= 0 && position == m_fileSize;
}

unsigned long COrvFile::Seek(unsigned long origin, long long offset) {
  if (!isValidFileHandles()) return ORV_FILE_ERR_NOT_OPEN;
  if (offset < 0 || origin > FILE_END) return ORV_FILE_ERR_IO;
  long long base = 0;
  if (origin == FILE_CURRENT) {
    base = GetCurrentPosition();
    if (base < 0) return ORV_FILE_ERR_IO;
  } else if (origin == FILE_END) {
    base = m_fileSize;
  }
  // A target at or past the end lands on the end of the stream or window.
  const long long target =
      base >= m_fileSize || offset >= m_fileSize - base ? m_fileSize : base + offset;
  return SeekAbsolute(target);
}

unsigned long COrvFile::SeekToBegin() { return Seek(FILE_BEGIN, 0); }

unsigned long COrvFile::SeekToEnd() { return Seek(FILE_END, 0); }

unsigned long COrvFile::Read(void* buffer, unsigned long size, unsigned long* readSize, bool* eof,
                             unsigned long origin, long long offset) {
  if (readSize != nullptr) *readSize = 0;
  if (!isValidFileHandles()) return ORV_FILE_ERR_NOT_OPEN;
  if (readSize == nullptr || (buffer == nullptr && size > 0)) return ORV_FILE_ERR_IO;
  if (origin == FILE_END) return ORV_FILE_ERR_EOF;
  if (origin != FILE_CURRENT) {
    const unsigned long result = Seek(origin, offset);
    if (result != ORV_FILE_OK) return result;
  }
  const long long position = GetCurrentPosition();
  if (position < 0) return ORV_FILE_ERR_IO;
  if (position >= m_fileSize) {
    if (eof != nullptr) *eof = true;
    return ORV_FILE_ERR_EOF;
  }
  const unsigned long long available = static_cast<unsigned long long>(m_fileSize - position);
  unsigned long long left = std::min<unsigned long long>(size, available);

  long long before = 0;
  for (int i = 0; i < m_currentIndex; ++i) before += static_cast<long long>(m_segmentSizes[i]);
  long long inFile = position + m_startOffset - before;
  auto* out = static_cast<unsigned char*>(buffer);
  for (int i = m_currentIndex; i < m_handleCount && left > 0; ++i) {
    if (i > m_currentIndex) {
      if (!orv::os::SeekFileHandle(m_handles[i], 0, SEEK_SET, nullptr)) return ORV_FILE_ERR_IO;
      m_currentIndex = i;
      inFile = 0;
    }
    const long long inThisFile = static_cast<long long>(m_segmentSizes[i]) - inFile;
    if (inThisFile <= 0) continue;  // an empty file, or the end of this one
    const unsigned long long ask = std::min<unsigned long long>(left, inThisFile);
    uint64_t got = 0;
    const bool ok = orv::os::ReadFileHandle(m_handles[i], out + *readSize, ask, &got);
    *readSize += got;
    left -= got;
    inFile += static_cast<long long>(got);
    // A file that gives less than it held when it was opened has shrunk: the
    // stream no longer lines up.
    if (!ok || got < ask) return ORV_FILE_ERR_IO;
  }
  const bool atEnd = position + static_cast<long long>(*readSize) >= m_fileSize;
  if (left == 0 && !atEnd && m_currentIndex + 1 < m_handleCount &&
      inFile == static_cast<long long>(m_segmentSizes[m_currentIndex])) {
    // The read ended at a file's end: the next read starts in the next file.
    if (!orv::os::SeekFileHandle(m_handles[m_currentIndex + 1], 0, SEEK_SET, nullptr)) {
      return ORV_FILE_ERR_IO;
    }
    ++m_currentIndex;
  }
  if (eof != nullptr) *eof = atEnd || *readSize < size;
  return ORV_FILE_OK;
}

unsigned long COrvFile::Write(void* buffer, unsigned long size, unsigned long* writtenSize) {
  if (writtenSize != nullptr) *writtenSize = 0;
  if (!isValidFileHandles()) return ORV_FILE_ERR_NOT_OPEN;
  if (writtenSize == nullptr || (buffer == nullptr && size > 0)) return ORV_FILE_ERR_IO;
  uint64_t done = 0;
  const bool ok = orv::os::WriteFileHandle(m_handles[0], buffer, size, &done);
  const int error = errno;
  *writtenSize = done;
  if (ok || done > 0) {
    // What reached the file is part of the stream, even when the write stopped early.
    int64_t newSize = 0;
    if (!orv::os::FileHandleSize(m_handles[0], &newSize)) return ORV_FILE_ERR_IO;
    m_segmentSizes[0] = static_cast<unsigned long long>(newSize);
    m_fileSize = newSize - m_startOffset;
    m_endOffset = newSize - 1;
  }
  if (!ok) return (error == ENOSPC || error == EDQUOT) ? ORV_FILE_ERR_DISK_FULL : ORV_FILE_ERR_IO;
  return ORV_FILE_OK;
}

void COrvFile::CloseFile() {
  if (m_handles != nullptr) {
    const long long position = GetCurrentPosition();
    if (position >= 0) m_savedPosition = position;
    Close();
  }
  FreeArrays();
}

unsigned long COrvFile::OpenFile() {
  if (isValidFileHandles()) return ORV_FILE_ERR_NOT_OPEN;
  const unsigned long result = Open(m_fileName, m_openMode);
  if (result != ORV_FILE_OK) return result;
  if (!ReadSizesAndWindow()) {
    Close();
    return ORV_FILE_ERR_OPEN;
  }
  return Seek(FILE_BEGIN, m_savedPosition);
}
