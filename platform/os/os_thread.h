// Threads in the shape of the C runtime's thread calls: a thread is created
// running or suspended, and its HANDLE is a waitable kernel object (see
// os_handles.h) that becomes signalled when the thread has ended. The handle
// works with WaitForSingleObject and CloseHandle like any other.
//
// How the host's threads map onto this model:
//  - A thread created suspended has no host thread yet: the host thread is
//    started by the ResumeThread call that brings the suspend count to 0. So a
//    suspended thread whose last handle is closed simply never runs, and costs
//    nothing.
//  - POSIX cannot stop another running thread from outside. SuspendThread
//    therefore works on a thread that has not started yet and on the calling
//    thread itself (which then blocks until another thread resumes it). On any
//    other running thread it answers 0xFFFFFFFF and changes nothing.
//  - Priorities are the seven Windows levels. The level is stored with the
//    thread and is what GetThreadPriority answers; the host thread's nice value
//    follows it where the host allows (lowering always works, raising needs the
//    privilege to do so, and a refusal is not reported).
//  - Thread numbers are handed out by this layer, unique within the process and
//    never 0; they are known as soon as the thread is created.
//  - Host threads are detached: a thread needs no join, its handle (and every
//    other reference) keeps the object alive, and closing the last handle of a
//    running thread lets it run on to its end.
#ifndef ORV_PLATFORM_OS_THREAD_H_
#define ORV_PLATFORM_OS_THREAD_H_

#include <OrvPlatformTypes.h>

namespace orv {
namespace os {

typedef unsigned (*ThreadStartRoutine)(void* argument);

// Creates a thread that runs `start(argument)`. `initFlag` is 0 (run at once) or
// CREATE_SUSPENDED; any other value fails. `stackSize` 0 takes the host's
// default; other sizes are raised to the host's minimum. `security` is ignored.
// The new thread number lands in `*threadId` when that pointer is given. Answers
// the thread's handle, or null when the thread could not be created.
HANDLE BeginThreadEx(SECURITY_ATTRIBUTES* security, unsigned stackSize, ThreadStartRoutine start,
                     void* argument, unsigned initFlag, unsigned long* threadId);

// Ends the calling thread with `exitCode`, unwinding its stack (destructors
// run). Only for threads made by BeginThreadEx; code between the thread's
// start routine and this call must not swallow the unwinding with catch (...)
// without re-throwing. On a thread not made here it ends the host thread.
[[noreturn]] void EndThreadEx(unsigned exitCode);

// Decrements the suspend count and answers the count before the call; a thread
// created suspended starts when it reaches 0. 0xFFFFFFFF for a bad handle or when
// the host thread could not be started (the count is then left as it was).
DWORD ResumeThread(HANDLE thread);
// Increments the suspend count and answers the count before the call, for a
// thread that has not started yet or for the calling thread; see the file
// comment. 0xFFFFFFFF otherwise.
DWORD SuspendThread(HANDLE thread);

// THREAD_PRIORITY_ERROR_RETURN for a bad handle.
int GetThreadPriority(HANDLE thread);
// FALSE for a bad handle or a level that is not one of the seven
// THREAD_PRIORITY_ values.
BOOL SetThreadPriority(HANDLE thread, int priority);

// STILL_ACTIVE until the thread has ended, then the value its start routine
// returned or EndThreadEx was given. FALSE for a bad handle or a null pointer.
BOOL GetExitCodeThread(HANDLE thread, DWORD* exitCode);

// The thread number, or 0 for a bad handle.
unsigned long GetThreadId(HANDLE thread);
// The number of the calling thread when BeginThreadEx made it, else 0.
unsigned long GetCurrentThreadId();

// For tests: while an object of this class lives, BeginThreadEx calls made on
// the same thread fail as when the host has no thread to give. The state is
// per thread, so other threads are never affected.
class ScopedThreadCreationFailure {
 public:
  ScopedThreadCreationFailure();
  ~ScopedThreadCreationFailure();
  ScopedThreadCreationFailure(const ScopedThreadCreationFailure&) = delete;
  ScopedThreadCreationFailure& operator=(const ScopedThreadCreationFailure&) = delete;
};

}  // namespace os
}  // namespace orv

#endif  // ORV_PLATFORM_OS_THREAD_H_
