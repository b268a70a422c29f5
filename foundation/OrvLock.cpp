#include <OrvLock.h>

#include <new>

#include "platform/os/os_critsec.h"
#include "platform/os/os_handles.h"

OrvCritSec::OrvCritSec() { orv::os::InitializeCriticalSection(&section_); }
OrvCritSec::~OrvCritSec() { orv::os::DeleteCriticalSection(&section_); }
void OrvCritSec::Lock() { orv::os::EnterCriticalSection(&section_); }
void OrvCritSec::Unlock() { orv::os::LeaveCriticalSection(&section_); }

OrvAutoLock::OrvAutoLock(OrvCritSec* section) : section_(section) {
  if (section_) section_->Lock();
}
OrvAutoLock::~OrvAutoLock() {
  if (section_) section_->Unlock();
}

OrvMutex::OrvMutex() : section_(new CRITICAL_SECTION) {
  orv::os::InitializeCriticalSection(section_);
}
OrvMutex::~OrvMutex() {
  orv::os::DeleteCriticalSection(section_);
  delete section_;
}
void OrvMutex::lock() { orv::os::EnterCriticalSection(section_); }
void OrvMutex::unlock() { orv::os::LeaveCriticalSection(section_); }

OrvEvent::OrvEvent(int manualReset)
    : handle_(orv::os::CreateEventObject(manualReset != 0, false)) {}
OrvEvent::~OrvEvent() {
  if (handle_) orv::os::CloseHandle(handle_);
}
OrvEvent::operator void*() const { return handle_; }
void OrvEvent::Set() { orv::os::SetEventObject(handle_); }
void OrvEvent::Reset() { orv::os::ResetEventObject(handle_); }
int OrvEvent::Wait(unsigned long timeout) {
  const uint32_t ms = timeout >= INFINITE ? INFINITE : static_cast<uint32_t>(timeout);
  return orv::os::WaitForSingleObject(handle_, ms) == WAIT_OBJECT_0 ? 1 : 0;
}
int OrvEvent::Check() { return Wait(0); }
