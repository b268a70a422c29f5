#include <OrvMsgThread.h>

#include <mutex>

#include "platform/os/os_handles.h"
#include "platform/os/os_thread.h"

OrvThread::OrvThread()
    : thread_(orv::os::BeginThreadEx(nullptr, 0, &OrvThread::ThreadEntry, this, CREATE_SUSPENDED,
                                     nullptr)),
      joinable_(false),
      priority_(THREAD_PRIORITY_NORMAL) {}

OrvThread::~OrvThread() {
  if (thread_) orv::os::CloseHandle(thread_);
}

void OrvThread::start() {
  if (!thread_) return;
  orv::os::SetThreadPriority(thread_, priority_);
  orv::os::ResumeThread(thread_);
}

int OrvThread::join() {
  if (!thread_) return 0;
  orv::os::WaitForSingleObject(thread_, INFINITE);
  delete this;
  return 0;
}

void OrvThread::setPriority(int priority) {
  priority_ = priority;
  if (thread_) orv::os::SetThreadPriority(thread_, priority);
}

void OrvThread::selfDelete() {
  bool joinable;
  {
    // Released before the delete: the mutex is a member of what is deleted.
    std::lock_guard<OrvMutex> lock(mutex_);
    joinable = joinable_;
  }
  if (!joinable) delete this;
}

void OrvThread::run() {}

void OrvThread::setJoinable(bool joinable) {
  std::lock_guard<OrvMutex> lock(mutex_);
  joinable_ = joinable;
}

unsigned int OrvThread::ThreadEntry(void* argument) {
  OrvThread* self = static_cast<OrvThread*>(argument);
  if (self) {
    self->run();
    self->selfDelete();
  }
  // The thread ends with exit code 0.
  return 0;
}
