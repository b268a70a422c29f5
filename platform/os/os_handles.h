// Waitable kernel objects behind HANDLE values: events and semaphores, with
// WaitForSingleObject and CloseHandle semantics. Each object carries its own
// mutex and condition variable, so separate objects share nothing.
//
// A HANDLE made here points at an orv::os::KernelObject. Objects are reference
// counted: CloseHandle drops the caller's reference, and an object that a
// running wait (or a running thread) still uses lives until that ends.
#ifndef ORV_PLATFORM_OS_HANDLES_H_
#define ORV_PLATFORM_OS_HANDLES_H_

#include <OrvPlatformTypes.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace orv {
namespace os {

enum class ObjectKind : uint32_t {
  kEvent = 0x45564E54,
  kSemaphore = 0x53454D41,
  kThread = 0x54485244
};

class KernelObject {
 public:
  explicit KernelObject(ObjectKind kind) : kind_(kind) {}
  virtual ~KernelObject() = default;
  KernelObject(const KernelObject&) = delete;
  KernelObject& operator=(const KernelObject&) = delete;

  ObjectKind kind() const { return kind_; }
  void AddRef() { refs_.fetch_add(1, std::memory_order_relaxed); }
  void Release();

  // Waits until the object is signalled, consuming the signal where the kind
  // does (auto-reset events, semaphores). Answers WAIT_OBJECT_0 or WAIT_TIMEOUT.
  uint32_t Wait(uint32_t timeoutMs);

 protected:
  // Called with mutex_ held: true when signalled; consumes the signal if the kind does.
  virtual bool TryAcquireLocked() = 0;

  std::mutex mutex_;
  std::condition_variable cond_;

 private:
  const ObjectKind kind_;
  std::atomic<int> refs_{1};
};

// Returns the object behind a handle made by this layer, or null for null,
// INVALID_HANDLE_VALUE and the small numbers that file descriptors carried in
// a HANDLE are (so CloseHandle or a wait on a file handle fails cleanly).
KernelObject* FromHandle(HANDLE handle);

HANDLE CreateEventObject(bool manualReset, bool initialState);
bool SetEventObject(HANDLE event);
bool ResetEventObject(HANDLE event);

HANDLE CreateSemaphoreObject(long initialCount, long maximumCount);
// Adds `count` to the semaphore; fails, changing nothing, when that would pass the maximum.
bool ReleaseSemaphoreObject(HANDLE semaphore, long count, long* previousCount);

// WAIT_OBJECT_0 when signalled, WAIT_TIMEOUT, or WAIT_FAILED for a bad handle.
uint32_t WaitForSingleObject(HANDLE handle, uint32_t timeoutMs);
bool CloseHandle(HANDLE handle);

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_HANDLES_H_
