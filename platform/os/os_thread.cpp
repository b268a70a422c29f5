#include "platform/os/os_thread.h"

#include <limits.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <new>

#include "platform/os/os_handles.h"

namespace orv {
namespace os {
namespace {

constexpr DWORD kFailedCount = 0xFFFFFFFFu;

// Thrown by EndThreadEx and caught at the bottom of the thread it ends.
struct ThreadExitRequest {
  unsigned exitCode;
};

// Process-wide source of thread numbers; the only state this layer shares
// between threads, and an atomic one.
std::atomic<unsigned long> g_nextThreadId{1};

thread_local int t_creationFailures = 0;

bool IsValidPriority(int priority) {
  switch (priority) {
    case THREAD_PRIORITY_IDLE:
    case THREAD_PRIORITY_LOWEST:
    case THREAD_PRIORITY_BELOW_NORMAL:
    case THREAD_PRIORITY_NORMAL:
    case THREAD_PRIORITY_ABOVE_NORMAL:
    case THREAD_PRIORITY_HIGHEST:
    case THREAD_PRIORITY_TIME_CRITICAL:
      return true;
    default:
      return false;
  }
}

// The nice value that stands for a priority level.
int NiceFor(int priority) {
  switch (priority) {
    case THREAD_PRIORITY_IDLE:
      return 19;
    case THREAD_PRIORITY_LOWEST:
      return 10;
    case THREAD_PRIORITY_BELOW_NORMAL:
      return 5;
    case THREAD_PRIORITY_ABOVE_NORMAL:
      return -5;
    case THREAD_PRIORITY_HIGHEST:
      return -10;
    case THREAD_PRIORITY_TIME_CRITICAL:
      return -20;
    default:
      return 0;
  }
}

class ThreadObject;
thread_local ThreadObject* t_currentThread = nullptr;

class ThreadObject final : public KernelObject {
 public:
  ThreadObject(ThreadStartRoutine start, void* argument, size_t stackSize, DWORD suspendCount)
      : KernelObject(ObjectKind::kThread),
        start_(start),
        argument_(argument),
        stackSize_(stackSize),
        id_(g_nextThreadId.fetch_add(1, std::memory_order_relaxed)),
        suspendCount_(suspendCount) {}

  unsigned long id() const { return id_; }

  // Starts the host thread; called with mutex_ held and the object not started.
  bool StartLocked() {
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0) return false;
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    if (stackSize_ != 0) {
      const size_t minimum = static_cast<size_t>(PTHREAD_STACK_MIN);
      const size_t size = stackSize_ < minimum ? minimum : stackSize_;
      pthread_attr_setstacksize(&attr, size);
    }
    AddRef();  // the running thread's own reference
    pthread_t host;
    const int rc = pthread_create(&host, &attr, &ThreadObject::Entry, this);
    pthread_attr_destroy(&attr);
    if (rc != 0) {
      Release();
      return false;
    }
    state_ = State::kRunning;
    return true;
  }

  DWORD Resume() {
    std::lock_guard<std::mutex> lock(mutex_);
    const DWORD previous = suspendCount_;
    if (previous == 0) return 0;
    if (previous == 1 && state_ == State::kCreated) {
      if (!StartLocked()) return kFailedCount;
    }
    suspendCount_ = previous - 1;
    if (suspendCount_ == 0) cond_.notify_all();
    return previous;
  }

  DWORD Suspend() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (state_ == State::kCreated) return suspendCount_++;
    if (state_ != State::kRunning || t_currentThread != this) return kFailedCount;
    const DWORD previous = suspendCount_++;
    cond_.wait(lock, [this] { return suspendCount_ == 0; });
    return previous;
  }

  int Priority() {
    std::lock_guard<std::mutex> lock(mutex_);
    return priority_;
  }

  void SetPriority(int priority) {
    std::lock_guard<std::mutex> lock(mutex_);
    priority_ = priority;
    priorityChosen_ = true;
    if (state_ == State::kRunning && hostTid_ != 0) ApplyPriorityLocked();
  }

  DWORD ExitCode() {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_ == State::kExited ? exitCode_ : STILL_ACTIVE;
  }

 protected:
  bool TryAcquireLocked() override { return state_ == State::kExited; }

 private:
  enum class State { kCreated, kRunning, kExited };

  void ApplyPriorityLocked() {
    // Best effort: an unprivileged thread may lower its nice value but not raise it.
    setpriority(PRIO_PROCESS, static_cast<id_t>(hostTid_), NiceFor(priority_));
  }

  static void* Entry(void* argument) {
    ThreadObject* self = static_cast<ThreadObject*>(argument);
    t_currentThread = self;
    {
      std::lock_guard<std::mutex> lock(self->mutex_);
      self->hostTid_ = static_cast<long>(syscall(SYS_gettid));
      if (self->priorityChosen_) self->ApplyPriorityLocked();
    }
    unsigned code = 0;
    try {
      code = self->start_(self->argument_);
    } catch (const ThreadExitRequest& request) {
      code = request.exitCode;
    }
    {
      std::lock_guard<std::mutex> lock(self->mutex_);
      self->exitCode_ = code;
      self->state_ = State::kExited;
    }
    self->cond_.notify_all();
    t_currentThread = nullptr;
    self->Release();
    return nullptr;
  }

  const ThreadStartRoutine start_;
  void* const argument_;
  const size_t stackSize_;
  const unsigned long id_;
  // Guarded by mutex_.
  State state_ = State::kCreated;
  DWORD suspendCount_;
  int priority_ = THREAD_PRIORITY_NORMAL;
  bool priorityChosen_ = false;
  long hostTid_ = 0;
  DWORD exitCode_ = STILL_ACTIVE;
};

ThreadObject* AsThread(HANDLE handle) {
  KernelObject* object = FromHandle(handle);
  if (!object || object->kind() != ObjectKind::kThread) return nullptr;
  return static_cast<ThreadObject*>(object);
}

}  // namespace

HANDLE BeginThreadEx(SECURITY_ATTRIBUTES* security, unsigned stackSize, ThreadStartRoutine start,
                     void* argument, unsigned initFlag, unsigned long* threadId) {
  (void)security;
  if (!start || (initFlag != 0 && initFlag != CREATE_SUSPENDED)) return nullptr;
  if (t_creationFailures > 0) return nullptr;
  // Every thread is born with a suspend count of 1; a running start is the
  // same ResumeThread that a caller of a suspended thread makes later.
  ThreadObject* thread = new (std::nothrow) ThreadObject(start, argument, stackSize, 1u);
  if (!thread) return nullptr;
  if (initFlag != CREATE_SUSPENDED && thread->Resume() == kFailedCount) {
    thread->Release();
    return nullptr;
  }
  if (threadId) *threadId = thread->id();
  return static_cast<KernelObject*>(thread);
}

void EndThreadEx(unsigned exitCode) {
  if (t_currentThread) throw ThreadExitRequest{exitCode};
  pthread_exit(nullptr);
}

DWORD ResumeThread(HANDLE handle) {
  ThreadObject* thread = AsThread(handle);
  return thread ? thread->Resume() : kFailedCount;
}

DWORD SuspendThread(HANDLE handle) {
  ThreadObject* thread = AsThread(handle);
  return thread ? thread->Suspend() : kFailedCount;
}

int GetThreadPriority(HANDLE handle) {
  ThreadObject* thread = AsThread(handle);
  return thread ? thread->Priority() : THREAD_PRIORITY_ERROR_RETURN;
}

BOOL SetThreadPriority(HANDLE handle, int priority) {
  ThreadObject* thread = AsThread(handle);
  if (!thread || !IsValidPriority(priority)) return FALSE;
  thread->SetPriority(priority);
  return TRUE;
}

BOOL GetExitCodeThread(HANDLE handle, DWORD* exitCode) {
  ThreadObject* thread = AsThread(handle);
  if (!thread || !exitCode) return FALSE;
  *exitCode = thread->ExitCode();
  return TRUE;
}

unsigned long GetThreadId(HANDLE handle) {
  ThreadObject* thread = AsThread(handle);
  return thread ? thread->id() : 0;
}

unsigned long GetCurrentThreadId() { return t_currentThread ? t_currentThread->id() : 0; }

ScopedThreadCreationFailure::ScopedThreadCreationFailure() { ++t_creationFailures; }
ScopedThreadCreationFailure::~ScopedThreadCreationFailure() { --t_creationFailures; }

}  // namespace os
}  // namespace orv
