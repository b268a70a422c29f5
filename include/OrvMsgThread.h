// Threads with message queues, a runnable thread object, and two message
// threads that forward notifications to an application's interface.
//
// OrvMsgThread: one worker thread takes small messages from a first-in,
// first-out queue and hands each to ThreadMessageProc. Any number of threads
// may post. A sender that wants the handler's result passes an OrvEvent; the
// worker stores the result under the event's address and then sets the event:
//
//   OrvEvent done;
//   long result = E_FAIL;
//   thread.PutThreadMsg(kMyMessage, arg1, arg2, &done);
//   done.Wait(INFINITE);
//   thread.GetResultCode(&done, &result);
//
// The event's address is the key of the answer, so several senders share one
// worker without mixing their results. A result is collected once.
//
// Message number 0xFFFFFFFF (-1) stops the worker after its handler has run;
// messages posted after it stay in the queue and are freed unhandled by the
// destructor.
//
// Rule for derived classes: the worker calls ThreadMessageProc until it has
// stopped, and a base destructor runs only after the derived members are gone.
// So a class derived from OrvMsgThread calls StopThread() first thing in its
// own destructor, before its members go away; otherwise the worker could call
// a handler of a class that is already destroyed. The two notification
// threads below do so.
//
// None of these classes can be copied: a copy would share the queue, the
// results and the thread.
#ifndef ORV_MSG_THREAD_H_
#define ORV_MSG_THREAD_H_

#include <OrvExport.h>
#include <OrvLock.h>
#include <OrvPlatformTypes.h>

#include <atomic>
#include <cstddef>
#include <list>
#include <map>

// A message, copied by value into and out of the queue.
struct ORV_API COrvMsg {
  unsigned int message;
  unsigned long param1;
  void* param2;
  OrvEvent* event;  // may be null; set once the message has been handled
};

class ORV_API OrvMsgThread {
 public:
  // The number of the message that stops the worker.
  static constexpr unsigned int kStopMessage = 0xFFFFFFFFu;

  OrvMsgThread();
  // Stops the worker (posting the stop message and waiting for its end), frees
  // messages still queued, and deletes every OrvEvent whose result was never
  // collected: an uncollected result passes the event to this object, so only
  // events from `new` may be left behind that way.
  virtual ~OrvMsgThread();
  OrvMsgThread(const OrvMsgThread&) = delete;
  OrvMsgThread& operator=(const OrvMsgThread&) = delete;

  // Starts the worker, which enters a component apartment of kind `mode` on
  // itself before the first message. True when the worker runs. False, with no
  // thread, when a thread already exists or none could be created.
  int CreateThread(tagCOINIT mode = COINIT_APARTMENTTHREADED);

  // Appends a message. Messages posted before CreateThread wait for the worker.
  // Raises std::length_error ("list<T> too long") when the queue is full, with
  // the queue lock released and the queue unchanged.
  void PutThreadMsg(unsigned int message, unsigned long param1, void* param2, OrvEvent* event);

  // Stores `code` as the result for `event`, replacing an uncollected one. 0.
  long SetResultCode(OrvEvent* event, long code);
  // Moves the result for `event` to `*code` and answers 0; E_FAIL, leaving
  // `*code` alone, when there is none (or `code` is null).
  long GetResultCode(OrvEvent* event, long* code);

  // 0 without a thread, leaving `*exitCode` alone. Otherwise waits without limit
  // for the worker's end, stores its exit code (the result of the last handled
  // message) and answers non-zero on success.
  int WaitForThreadExit(unsigned long* exitCode);

  // The platform's thread calls on the worker's handle; see the platform layer
  // for what suspension can do on this host: a running worker can suspend only
  // itself (from within a handler), and 0xFFFFFFFF answers any other attempt.
  unsigned long ResumeThread();
  unsigned long SuspendThread();
  int GetThreadPriority();
  int SetThreadPriority(int priority);

  HANDLE GetThreadHandle() const;
  unsigned long GetThreadId() const;

 protected:
  // Takes the next message, blocking while there is none.
  virtual void GetThreadMsg(COrvMsg* msg);
  // Called once on the worker before the first message. Does nothing here.
  virtual void OnThreadInit();
  virtual long ThreadMessageProc(unsigned int message, unsigned long param1, void* param2) = 0;

  // Posts the stop message, waits for the worker's end and closes its handle.
  // Does nothing without a thread, so it may be called more than once. Derived
  // classes call it in their destructors (see the file comment). Never call it
  // from the worker itself, and resume a worker that suspended itself first:
  // otherwise the wait for its end never returns.
  void StopThread();

  // Bounds the queue to `limit` messages (0 restores the list's own limit).
  void SetQueueLimit(size_t limit);

 private:
  static unsigned int DefaultThreadProc(void* self);

  unsigned long threadId_;
  HANDLE thread_;
  tagCOINIT comMode_;
  std::list<COrvMsg*>* queue_;
  OrvCritSec queueLock_;
  HANDLE semaphore_;
  uint32_t waiters_;
  size_t queueLimit_;
  OrvCritSec resultLock_;
  std::map<OrvEvent*, long>* results_;
};

// A thread object in the manner of a runnable: derive, override run(), create
// with new, then start(). A non-joinable object deletes itself when run()
// returns; a joinable one (setJoinable(true) before start()) is deleted by
// join(). When the host could not create the thread, start() and join() do
// nothing and the owner ends the object with selfDelete().
class ORV_API OrvThread {
 public:
  OrvThread();
  OrvThread(const OrvThread&) = delete;
  OrvThread& operator=(const OrvThread&) = delete;

  // Applies the stored priority and lets the thread run.
  void start();
  // Waits for the end of run() and deletes the object. 0.
  int join();
  void setPriority(int priority);
  // Deletes the object unless it is joinable.
  void selfDelete();

  virtual void run();
  virtual void setJoinable(bool joinable);

 protected:
  virtual ~OrvThread();

 private:
  static unsigned int ThreadEntry(void* self);

  HANDLE thread_;
  OrvMutex mutex_;
  bool joinable_;
  int priority_;
};

// Implemented by the application; called on the notification thread.
// param1 1 of a posted message calls Notify1, 2 calls Notify2.
class ORV_API IOrvRenderNotify {
 public:
  virtual void Notify1(unsigned int message, void* data) = 0;
  virtual void Notify2(unsigned int message, void* data) = 0;

 protected:
  virtual ~IOrvRenderNotify() {}
};

class ORV_API IOrvSceneChangeNotify {
 public:
  virtual void Notify1(unsigned int message, void* data) = 0;
  virtual void Notify2(unsigned int message) = 0;

 protected:
  virtual ~IOrvSceneChangeNotify() {}
};

// Forwards messages to an IOrvRenderNotify on a thread of their own. The
// constructor does not start the thread: call CreateThread. The interface is
// not reference counted: it must outlive the thread, or be replaced first.
class ORV_API COrvRenderNotifyMsgThread : public OrvMsgThread {
 public:
  explicit COrvRenderNotifyMsgThread(IOrvRenderNotify* notify);
  ~COrvRenderNotifyMsgThread() override;

  // Replaces the interface; a call already running on the old one completes.
  void SetNotifyInterface(IOrvRenderNotify* notify);
  long ThreadMessageProc(unsigned int message, unsigned long param1, void* param2) override;

 private:
  std::atomic<IOrvRenderNotify*> notify_;
};

// As COrvRenderNotifyMsgThread, for an IOrvSceneChangeNotify; Notify2 gets
// only the message number.
class ORV_API COrvSceneChgNotifyMsgThread : public OrvMsgThread {
 public:
  explicit COrvSceneChgNotifyMsgThread(IOrvSceneChangeNotify* notify);
  ~COrvSceneChgNotifyMsgThread() override;

  void SetNotifyInterface(IOrvSceneChangeNotify* notify);
  long ThreadMessageProc(unsigned int message, unsigned long param1, void* param2) override;

 private:
  std::atomic<IOrvSceneChangeNotify*> notify_;
};

#endif  // ORV_MSG_THREAD_H_
