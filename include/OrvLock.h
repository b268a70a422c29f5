// Locks and events over the operating system's synchronisation objects.
//
// OrvCritSec and OrvMutex are recursive for the owning thread. None of these
// classes can be copied: a copy would share or duplicate a live lock.
#ifndef ORV_LOCK_H_
#define ORV_LOCK_H_

#include <OrvExport.h>
#include <OrvPlatformTypes.h>

class ORV_API OrvCritSec {
 public:
  OrvCritSec();
  virtual ~OrvCritSec();
  OrvCritSec(const OrvCritSec&) = delete;
  OrvCritSec& operator=(const OrvCritSec&) = delete;

  void Lock();
  void Unlock();

 private:
  CRITICAL_SECTION section_;
};

// Locks the given critical section for its own lifetime. A null section is
// tolerated and locks nothing.
class ORV_API OrvAutoLock {
 public:
  explicit OrvAutoLock(OrvCritSec* section);
  virtual ~OrvAutoLock();
  OrvAutoLock(const OrvAutoLock&) = delete;
  OrvAutoLock& operator=(const OrvAutoLock&) = delete;

 private:
  OrvCritSec* section_;
};

class ORV_API OrvMutex {
 public:
  OrvMutex();
  virtual ~OrvMutex();
  OrvMutex(const OrvMutex&) = delete;
  OrvMutex& operator=(const OrvMutex&) = delete;

  void lock();
  void unlock();

 private:
  CRITICAL_SECTION* section_;
};

// An event, initially not signalled. With `manualReset` 0 it resets itself when
// a wait succeeds; otherwise it stays set until Reset.
class ORV_API OrvEvent {
 public:
  explicit OrvEvent(int manualReset = 0);
  ~OrvEvent();
  OrvEvent(const OrvEvent&) = delete;
  OrvEvent& operator=(const OrvEvent&) = delete;

  // The handle, for the wait functions of the platform layer. Null when the
  // event could not be created.
  operator void*() const;
  void Set();
  void Reset();
  // Non-zero when the event was signalled within `timeout` milliseconds
  // (0xFFFFFFFF waits without limit); 0 on timeout or failure.
  int Wait(unsigned long timeout);
  int Check();

 private:
  HANDLE handle_;
};

#endif  // ORV_LOCK_H_
