#include <OrvMsgThread.h>

#include <new>
#include <stdexcept>

#include "platform/com/com_apartment.h"
#include "platform/os/os_handles.h"
#include "platform/os/os_thread.h"

namespace {

// The semaphore counts wake-ups; its maximum is the platform's largest count.
constexpr long kSemaphoreMaximum = 2147483647L;

}  // namespace

OrvMsgThread::OrvMsgThread()
    : threadId_(0),
      thread_(nullptr),
      comMode_(COINIT_APARTMENTTHREADED),
      queue_(new std::list<COrvMsg*>),
      semaphore_(nullptr),
      waiters_(0),
      queueLimit_(0),
      results_(new std::map<OrvEvent*, long>) {}

OrvMsgThread::~OrvMsgThread() {
  StopThread();
  // The worker has stopped: what is still queued will never be handled.
  for (COrvMsg* msg : *queue_) delete msg;
  delete queue_;
  // An uncollected result hands its event over to this object.
  for (auto& entry : *results_) delete entry.first;
  delete results_;
  if (semaphore_) orv::os::CloseHandle(semaphore_);
}

int OrvMsgThread::CreateThread(tagCOINIT mode) {
  if (thread_) return FALSE;
  if (!semaphore_) {
    semaphore_ = orv::os::CreateSemaphoreObject(0, kSemaphoreMaximum);
    if (!semaphore_) return FALSE;
  }
  comMode_ = mode;
  // Created suspended and resumed at once, so that handle and number are in
  // place before the worker's first handler could ask for them.
  unsigned long id = 0;
  HANDLE thread = orv::os::BeginThreadEx(nullptr, 0, &OrvMsgThread::DefaultThreadProc, this,
                                         CREATE_SUSPENDED, &id);
  if (!thread) return FALSE;
  thread_ = thread;
  threadId_ = id;
  if (orv::os::ResumeThread(thread) == 0xFFFFFFFFu) {
    orv::os::CloseHandle(thread);
    thread_ = nullptr;
    threadId_ = 0;
    return FALSE;
  }
  return TRUE;
}

void OrvMsgThread::PutThreadMsg(unsigned int message, unsigned long param1, void* param2,
                                OrvEvent* event) {
  OrvAutoLock lock(&queueLock_);
  const size_t limit = queueLimit_ != 0 ? queueLimit_ : queue_->max_size();
  if (queue_->size() >= limit) throw std::length_error("list<T> too long");
  COrvMsg* msg = new (std::nothrow) COrvMsg{message, param1, param2, event};
  // A queue that cannot get memory for one more message is as full as one at
  // its limit, and reports the same way.
  if (!msg) throw std::length_error("list<T> too long");
  try {
    queue_->push_back(msg);
  } catch (const std::bad_alloc&) {
    delete msg;
    throw std::length_error("list<T> too long");
  }
  if (waiters_ > 0) {
    orv::os::ReleaseSemaphoreObject(semaphore_, static_cast<long>(waiters_), nullptr);
    waiters_ = 0;
  }
}

void OrvMsgThread::GetThreadMsg(COrvMsg* msg) {
  queueLock_.Lock();
  while (queue_->empty()) {
    if (!semaphore_) {
      // Only the worker takes messages, and it exists only with a semaphore.
      // Anyone else asking on an empty queue without one is told to stop
      // rather than left waiting for ever.
      queueLock_.Unlock();
      *msg = COrvMsg{kStopMessage, 0, nullptr, nullptr};
      return;
    }
    ++waiters_;
    queueLock_.Unlock();
    orv::os::WaitForSingleObject(semaphore_, INFINITE);
    queueLock_.Lock();
  }
  COrvMsg* head = queue_->front();
  queue_->pop_front();
  queueLock_.Unlock();
  *msg = *head;
  delete head;
}

void OrvMsgThread::OnThreadInit() {}

long OrvMsgThread::SetResultCode(OrvEvent* event, long code) {
  OrvAutoLock lock(&resultLock_);
  results_->erase(event);
  results_->emplace(event, code);
  return 0;
}

long OrvMsgThread::GetResultCode(OrvEvent* event, long* code) {
  OrvAutoLock lock(&resultLock_);
  auto found = results_->find(event);
  if (found == results_->end() || !code) return E_FAIL;
  *code = found->second;
  results_->erase(found);
  return 0;
}

int OrvMsgThread::WaitForThreadExit(unsigned long* exitCode) {
  if (!thread_) return 0;
  orv::os::WaitForSingleObject(thread_, INFINITE);
  DWORD code = 0;
  const BOOL ok = orv::os::GetExitCodeThread(thread_, &code);
  if (ok && exitCode) *exitCode = code;
  return ok;
}

unsigned long OrvMsgThread::ResumeThread() { return orv::os::ResumeThread(thread_); }
unsigned long OrvMsgThread::SuspendThread() { return orv::os::SuspendThread(thread_); }
int OrvMsgThread::GetThreadPriority() { return orv::os::GetThreadPriority(thread_); }
int OrvMsgThread::SetThreadPriority(int priority) {
  return orv::os::SetThreadPriority(thread_, priority);
}

HANDLE OrvMsgThread::GetThreadHandle() const { return thread_; }
unsigned long OrvMsgThread::GetThreadId() const { return threadId_; }

void OrvMsgThread::StopThread() {
  if (!thread_) return;
  PutThreadMsg(kStopMessage, 0, nullptr, nullptr);
  orv::os::WaitForSingleObject(thread_, INFINITE);
  orv::os::CloseHandle(thread_);
  thread_ = nullptr;
}

void OrvMsgThread::SetQueueLimit(size_t limit) {
  OrvAutoLock lock(&queueLock_);
  queueLimit_ = limit;
}

unsigned int OrvMsgThread::DefaultThreadProc(void* argument) {
  OrvMsgThread* self = static_cast<OrvMsgThread*>(argument);
  const HRESULT apartment = orv::com::CoInitializeEx(nullptr, self->comMode_);
  self->OnThreadInit();
  long result = 0;
  for (;;) {
    COrvMsg msg;
    self->GetThreadMsg(&msg);
    result = self->ThreadMessageProc(msg.message, msg.param1, msg.param2);
    if (msg.event) {
      // The result is in place before the event is set, so a sender woken by
      // the event always finds it.
      self->SetResultCode(msg.event, result);
      msg.event->Set();
    }
    if (msg.message == kStopMessage) break;
  }
  if (SUCCEEDED(apartment)) orv::com::CoUninitialize();
  return static_cast<unsigned int>(result);
}
