#include "platform/os/os_handles.h"

#include <chrono>
#include <new>

namespace orv {
namespace os {
namespace {

constexpr uintptr_t kLowestObjectAddress = 0x10000;

class EventObject final : public KernelObject {
 public:
  EventObject(bool manualReset, bool initialState)
      : KernelObject(ObjectKind::kEvent), manualReset_(manualReset), signalled_(initialState) {}

  void Set() {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      signalled_ = true;
    }
    if (manualReset_) {
      cond_.notify_all();
    } else {
      cond_.notify_one();
    }
  }
  void Reset() {
    std::lock_guard<std::mutex> lock(mutex_);
    signalled_ = false;
  }

 protected:
  bool TryAcquireLocked() override {
    if (!signalled_) return false;
    if (!manualReset_) signalled_ = false;
    return true;
  }

 private:
  const bool manualReset_;
  bool signalled_;
};

class SemaphoreObject final : public KernelObject {
 public:
  SemaphoreObject(long initialCount, long maximumCount)
      : KernelObject(ObjectKind::kSemaphore), count_(initialCount), maximum_(maximumCount) {}

  bool Release(long count, long* previous) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (count <= 0 || count > maximum_ - count_) return false;
      if (previous) *previous = count_;
      count_ += count;
    }
    if (count == 1) {
      cond_.notify_one();
    } else {
      cond_.notify_all();
    }
    return true;
  }

 protected:
  bool TryAcquireLocked() override {
    if (count_ <= 0) return false;
    --count_;
    return true;
  }

 private:
  long count_;
  const long maximum_;
};

template <typename T>
T* As(HANDLE handle, ObjectKind kind) {
  KernelObject* object = FromHandle(handle);
  if (!object || object->kind() != kind) return nullptr;
  return static_cast<T*>(object);
}

}  // namespace

void KernelObject::Release() {
  if (refs_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

uint32_t KernelObject::Wait(uint32_t timeoutMs) {
  std::unique_lock<std::mutex> lock(mutex_);
  if (TryAcquireLocked()) return WAIT_OBJECT_0;
  if (timeoutMs == 0) return WAIT_TIMEOUT;
  if (timeoutMs == INFINITE) {
    cond_.wait(lock, [this] { return TryAcquireLocked(); });
    return WAIT_OBJECT_0;
  }
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  return cond_.wait_until(lock, deadline, [this] { return TryAcquireLocked(); }) ? WAIT_OBJECT_0
                                                                                 : WAIT_TIMEOUT;
}

KernelObject* FromHandle(HANDLE handle) {
  // File handles of the file layer are descriptors carried in a HANDLE: small
  // numbers that no object of this layer can have as its address (the lowest
  // 64 KiB are never mapped). They are refused here instead of followed.
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE ||
      reinterpret_cast<uintptr_t>(handle) < kLowestObjectAddress) {
    return nullptr;
  }
  return static_cast<KernelObject*>(handle);
}

HANDLE CreateEventObject(bool manualReset, bool initialState) {
  return static_cast<KernelObject*>(new (std::nothrow) EventObject(manualReset, initialState));
}

// The setter holds a reference while it signals: a waiter woken by the signal
// may close the last handle before Set has finished notifying.
bool SetEventObject(HANDLE event) {
  EventObject* object = As<EventObject>(event, ObjectKind::kEvent);
  if (!object) return false;
  object->AddRef();
  object->Set();
  object->Release();
  return true;
}

bool ResetEventObject(HANDLE event) {
  EventObject* object = As<EventObject>(event, ObjectKind::kEvent);
  if (!object) return false;
  object->Reset();
  return true;
}

HANDLE CreateSemaphoreObject(long initialCount, long maximumCount) {
  if (maximumCount <= 0 || initialCount < 0 || initialCount > maximumCount) return nullptr;
  return static_cast<KernelObject*>(new (std::nothrow) SemaphoreObject(initialCount, maximumCount));
}

bool ReleaseSemaphoreObject(HANDLE semaphore, long count, long* previousCount) {
  SemaphoreObject* object = As<SemaphoreObject>(semaphore, ObjectKind::kSemaphore);
  if (!object) return false;
  object->AddRef();  // as for events: a woken waiter may close the handle at once
  const bool released = object->Release(count, previousCount);
  object->KernelObject::Release();
  return released;
}

uint32_t WaitForSingleObject(HANDLE handle, uint32_t timeoutMs) {
  KernelObject* object = FromHandle(handle);
  if (!object) return WAIT_FAILED;
  object->AddRef();
  const uint32_t result = object->Wait(timeoutMs);
  object->Release();
  return result;
}

bool CloseHandle(HANDLE handle) {
  KernelObject* object = FromHandle(handle);
  if (!object) return false;
  object->Release();
  return true;
}

}  // namespace os
}  // namespace orv
