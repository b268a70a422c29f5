#include <OrvMsgThread.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

#include "platform/com/com_apartment.h"
#include "platform/os/os_thread.h"

namespace {

constexpr unsigned kAdd = 1;       // result: param1 + 1000
constexpr unsigned kRepost = 2;    // posts kAdd to its own queue
constexpr unsigned kSuspend = 3;   // suspends the worker itself
constexpr unsigned kCallerId = 4;  // result: the number of the handling thread

// A worker that records what it handled, in order.
class RecordingThread : public OrvMsgThread {
 public:
  ~RecordingThread() override { StopThread(); }

  std::vector<unsigned> Handled() {
    std::lock_guard<std::mutex> lock(mutex_);
    return handled_;
  }
  orv::com::ApartmentKind apartment() const { return apartment_.load(); }
  using OrvMsgThread::SetQueueLimit;
  using OrvMsgThread::StopThread;

 protected:
  void OnThreadInit() override { apartment_ = orv::com::CurrentApartment(); }

  long ThreadMessageProc(unsigned int message, unsigned long param1, void* param2) override {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      handled_.push_back(message);
    }
    switch (message) {
      case kAdd:
        return static_cast<long>(param1) + 1000;
      case kRepost:
        PutThreadMsg(kAdd, param1, nullptr, static_cast<OrvEvent*>(param2));
        return 0;
      case kSuspend:
        return static_cast<long>(SuspendThread());
      case kCallerId:
        return static_cast<long>(orv::os::GetCurrentThreadId());
      case kStopMessage:
        return -77;
      default:
        return -1;
    }
  }

 private:
  std::mutex mutex_;
  std::vector<unsigned> handled_;
  std::atomic<orv::com::ApartmentKind> apartment_{orv::com::ApartmentKind::kNone};
};

long Request(OrvMsgThread& thread, unsigned message, unsigned long param1) {
  OrvEvent done;
  long result = E_FAIL;
  thread.PutThreadMsg(message, param1, nullptr, &done);
  done.Wait(INFINITE);
  EXPECT_EQ(thread.GetResultCode(&done, &result), 0);
  return result;
}

TEST(OrvMsgThread, SynchronousRequestGetsItsResult) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  EXPECT_NE(thread.GetThreadHandle(), nullptr);
  EXPECT_NE(thread.GetThreadId(), 0u);
  EXPECT_EQ(Request(thread, kAdd, 5), 1005);
  EXPECT_EQ(Request(thread, kCallerId, 0), static_cast<long>(thread.GetThreadId()));
  EXPECT_FALSE(thread.CreateThread());  // one worker per object
}

TEST(OrvMsgThread, ResultsAreCollectedOnceAndOnlyWhenPresent) {
  RecordingThread thread;
  OrvEvent event;
  long value = 123;
  EXPECT_EQ(thread.GetResultCode(&event, &value), E_FAIL);
  EXPECT_EQ(value, 123);
  EXPECT_EQ(thread.SetResultCode(&event, 5), 0);
  EXPECT_EQ(thread.SetResultCode(&event, 6), 0);  // replaces the uncollected 5
  EXPECT_EQ(thread.GetResultCode(&event, nullptr), E_FAIL);
  EXPECT_EQ(thread.GetResultCode(&event, &value), 0);
  EXPECT_EQ(value, 6);
  value = 9;
  EXPECT_EQ(thread.GetResultCode(&event, &value), E_FAIL);
  EXPECT_EQ(value, 9);
}

TEST(OrvMsgThread, MessageWithoutEventLeavesNoResult) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  thread.PutThreadMsg(kAdd, 1, nullptr, nullptr);
  EXPECT_EQ(Request(thread, kAdd, 2), 1002);  // the first one has been handled too
  long value = 55;
  EXPECT_EQ(thread.GetResultCode(nullptr, &value), E_FAIL);
  EXPECT_EQ(value, 55);
  EXPECT_EQ(thread.Handled(), (std::vector<unsigned>{kAdd, kAdd}));
}

TEST(OrvMsgThread, MessagesPostedBeforeTheThreadRunOnceItStarts) {
  RecordingThread thread;
  thread.PutThreadMsg(10, 0, nullptr, nullptr);
  thread.PutThreadMsg(11, 0, nullptr, nullptr);
  OrvEvent done;
  thread.PutThreadMsg(kAdd, 7, nullptr, &done);
  EXPECT_EQ(done.Wait(20), 0);  // nothing runs yet
  EXPECT_TRUE(thread.Handled().empty());
  ASSERT_TRUE(thread.CreateThread());
  ASSERT_NE(done.Wait(INFINITE), 0);
  long result = 0;
  EXPECT_EQ(thread.GetResultCode(&done, &result), 0);
  EXPECT_EQ(result, 1007);
  EXPECT_EQ(thread.Handled(), (std::vector<unsigned>{10, 11, kAdd}));
}

TEST(OrvMsgThread, StopMessageWithEventStoresItsResultAndEndsTheThread) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  OrvEvent done;
  thread.PutThreadMsg(OrvMsgThread::kStopMessage, 0, nullptr, &done);
  ASSERT_NE(done.Wait(INFINITE), 0);
  long result = 0;
  EXPECT_EQ(thread.GetResultCode(&done, &result), 0);
  EXPECT_EQ(result, -77);
  unsigned long code = 0;
  EXPECT_TRUE(thread.WaitForThreadExit(&code));
  // The exit code is the last result, as a 32-bit thread exit code.
  EXPECT_EQ(code, static_cast<unsigned long>(static_cast<uint32_t>(-77)));
}

TEST(OrvMsgThread, MessagesAfterTheStopStayUnhandled) {
  RecordingThread thread;
  thread.PutThreadMsg(kAdd, 1, nullptr, nullptr);
  thread.PutThreadMsg(OrvMsgThread::kStopMessage, 0, nullptr, nullptr);
  thread.PutThreadMsg(kAdd, 2, nullptr, nullptr);
  OrvEvent late;
  thread.PutThreadMsg(kAdd, 3, nullptr, &late);
  ASSERT_TRUE(thread.CreateThread());
  unsigned long code = 0;
  EXPECT_TRUE(thread.WaitForThreadExit(&code));
  EXPECT_EQ(thread.Handled(), (std::vector<unsigned>{kAdd, OrvMsgThread::kStopMessage}));
  EXPECT_EQ(late.Check(), 0);  // never answered; the destructor frees both
}

TEST(OrvMsgThread, WaitForThreadExitWithoutThreadAnswersZero) {
  RecordingThread thread;
  unsigned long code = 31;
  EXPECT_EQ(thread.WaitForThreadExit(&code), 0);
  EXPECT_EQ(code, 31u);
  EXPECT_EQ(thread.GetThreadHandle(), nullptr);
  EXPECT_EQ(thread.GetThreadId(), 0u);
  EXPECT_EQ(thread.ResumeThread(), 0xFFFFFFFFul);
  EXPECT_EQ(thread.SuspendThread(), 0xFFFFFFFFul);
  EXPECT_EQ(thread.GetThreadPriority(), THREAD_PRIORITY_ERROR_RETURN);
  EXPECT_FALSE(thread.SetThreadPriority(0));
}

TEST(OrvMsgThread, FailedCreationLeavesTheQueueForALaterStart) {
  RecordingThread thread;
  thread.PutThreadMsg(kAdd, 1, nullptr, nullptr);
  {
    orv::os::ScopedThreadCreationFailure failure;
    EXPECT_FALSE(thread.CreateThread());
  }
  EXPECT_EQ(thread.GetThreadHandle(), nullptr);
  ASSERT_TRUE(thread.CreateThread());
  EXPECT_EQ(Request(thread, kAdd, 2), 1002);
  EXPECT_EQ(thread.Handled(), (std::vector<unsigned>{kAdd, kAdd}));
}

TEST(OrvMsgThread, WorkerEntersTheApartmentItWasGiven) {
  RecordingThread sta;
  ASSERT_TRUE(sta.CreateThread());
  Request(sta, kAdd, 0);
  EXPECT_EQ(sta.apartment(), orv::com::ApartmentKind::kSingleThreaded);
  RecordingThread mta;
  ASSERT_TRUE(mta.CreateThread(COINIT_MULTITHREADED));
  Request(mta, kAdd, 0);
  EXPECT_EQ(mta.apartment(), orv::com::ApartmentKind::kMultiThreaded);
  // The caller's own thread is untouched.
  EXPECT_EQ(orv::com::CurrentApartment(), orv::com::ApartmentKind::kNone);
}

TEST(OrvMsgThread, HandlerMayPostToItsOwnQueue) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  OrvEvent done;
  thread.PutThreadMsg(kRepost, 40, &done, nullptr);
  ASSERT_NE(done.Wait(INFINITE), 0);
  long result = 0;
  EXPECT_EQ(thread.GetResultCode(&done, &result), 0);
  EXPECT_EQ(result, 1040);
}

TEST(OrvMsgThread, WorkerSuspendsItselfUntilResumed) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  // From outside, a running worker cannot be suspended on this host.
  EXPECT_EQ(thread.SuspendThread(), 0xFFFFFFFFul);
  OrvEvent done;
  thread.PutThreadMsg(kSuspend, 0, nullptr, &done);
  unsigned long previous = 0;
  while ((previous = thread.ResumeThread()) == 0) {
    EXPECT_EQ(done.Check(), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(previous, 1u);
  ASSERT_NE(done.Wait(INFINITE), 0);
  long result = -5;
  EXPECT_EQ(thread.GetResultCode(&done, &result), 0);
  EXPECT_EQ(result, 0);  // the suspend count before the worker's own call
}

TEST(OrvMsgThread, PriorityCallsReachTheWorker) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  EXPECT_EQ(thread.GetThreadPriority(), THREAD_PRIORITY_NORMAL);
  EXPECT_TRUE(thread.SetThreadPriority(THREAD_PRIORITY_BELOW_NORMAL));
  EXPECT_EQ(thread.GetThreadPriority(), THREAD_PRIORITY_BELOW_NORMAL);
  EXPECT_FALSE(thread.SetThreadPriority(7));
  EXPECT_EQ(Request(thread, kAdd, 1), 1001);
}

TEST(OrvMsgThread, OverfullQueueThrowsWithTheLockReleased) {
  RecordingThread thread;
  thread.SetQueueLimit(2);
  thread.PutThreadMsg(kAdd, 1, nullptr, nullptr);
  thread.PutThreadMsg(kAdd, 2, nullptr, nullptr);
  try {
    thread.PutThreadMsg(kAdd, 3, nullptr, nullptr);
    FAIL() << "a full queue must refuse";
  } catch (const std::length_error& e) {
    EXPECT_STREQ(e.what(), "list<T> too long");
  }
  // Another thread can take the queue lock at once: the throw released it.
  auto other = std::async(std::launch::async, [&] {
    thread.SetQueueLimit(0);
    thread.PutThreadMsg(kAdd, 4, nullptr, nullptr);
  });
  ASSERT_EQ(other.wait_for(std::chrono::seconds(10)), std::future_status::ready);
  other.get();
  ASSERT_TRUE(thread.CreateThread());
  EXPECT_EQ(Request(thread, kAdd, 5), 1005);
  EXPECT_EQ(thread.Handled().size(), 4u);  // 1, 2, 4 and 5: the refused one never entered
}

TEST(OrvMsgThread, DestructorFreesUncollectedEventsItWasLeft) {
  // Run under the leak checker: the heap event must be freed by the thread
  // object, exactly once.
  OrvEvent* left = new OrvEvent(1);
  {
    RecordingThread thread;
    ASSERT_TRUE(thread.CreateThread());
    thread.PutThreadMsg(kAdd, 1, nullptr, left);
    ASSERT_NE(left->Wait(INFINITE), 0);
  }
  SUCCEED();
}

// Senders on many threads share one worker; every sender must get the answer
// to its own request, never another's.
TEST(OrvMsgThread, ManySendersNeverMixResults) {
  RecordingThread thread;
  ASSERT_TRUE(thread.CreateThread());
  constexpr int kSenders = 8;
  constexpr int kRequests = 500;
  std::atomic<int> wrong{0};
  std::vector<std::thread> senders;
  for (int s = 0; s < kSenders; ++s) {
    senders.emplace_back([&, s] {
      OrvEvent done;
      for (int i = 0; i < kRequests; ++i) {
        const unsigned long key = static_cast<unsigned long>(s) * 100000 + i;
        long result = E_FAIL;
        thread.PutThreadMsg(kAdd, key, nullptr, &done);
        done.Wait(INFINITE);
        if (thread.GetResultCode(&done, &result) != 0 || result != static_cast<long>(key) + 1000) {
          wrong.fetch_add(1);
        }
      }
    });
  }
  for (auto& sender : senders) sender.join();
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_EQ(thread.Handled().size(), static_cast<size_t>(kSenders * kRequests));
}

// An application's notification interface that records its calls.
class RecordingNotify : public IOrvRenderNotify, public IOrvSceneChangeNotify {
 public:
  struct Call {
    int which;
    unsigned message;
    void* data;
    bool operator==(const Call& o) const {
      return which == o.which && message == o.message && data == o.data;
    }
  };
  void Notify1(unsigned int message, void* data) override { Add({1, message, data}); }
  void Notify2(unsigned int message, void* data) override { Add({2, message, data}); }
  void Notify2(unsigned int message) override { Add({3, message, nullptr}); }
  std::vector<Call> Calls() {
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
  }

 private:
  void Add(const Call& call) {
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back(call);
  }
  std::mutex mutex_;
  std::vector<Call> calls_;
};

template <typename T>
void PostAndWait(T& thread, unsigned message, unsigned long param1, void* data) {
  OrvEvent done;
  thread.PutThreadMsg(message, param1, data, &done);
  ASSERT_NE(done.Wait(INFINITE), 0);
  long result = -1;
  EXPECT_EQ(thread.GetResultCode(&done, &result), 0);
  EXPECT_EQ(result, 0);
}

TEST(NotifyThreads, RenderNotificationsAreForwardedByParam1) {
  RecordingNotify notify;
  int payload = 0;
  {
    COrvRenderNotifyMsgThread thread(&notify);
    EXPECT_EQ(thread.GetThreadHandle(), nullptr);  // the caller starts it
    ASSERT_TRUE(thread.CreateThread());
    PostAndWait(thread, 20, 1, &payload);
    PostAndWait(thread, 21, 2, &payload);
    PostAndWait(thread, 22, 3, &payload);  // no such call
    PostAndWait(thread, 23, 0, &payload);
    thread.SetNotifyInterface(nullptr);
    PostAndWait(thread, 24, 1, &payload);
    thread.SetNotifyInterface(&notify);
    PostAndWait(thread, OrvMsgThread::kStopMessage, 1, &payload);  // never forwarded
  }
  using Call = RecordingNotify::Call;
  EXPECT_EQ(notify.Calls(), (std::vector<Call>{{1, 20, &payload}, {2, 21, &payload}}));
}

TEST(NotifyThreads, SceneChangeNotify2GetsOnlyTheMessage) {
  RecordingNotify notify;
  int payload = 0;
  {
    COrvSceneChgNotifyMsgThread thread(&notify);
    ASSERT_TRUE(thread.CreateThread(COINIT_MULTITHREADED));
    PostAndWait(thread, 30, 1, &payload);
    PostAndWait(thread, 31, 2, &payload);
    PostAndWait(thread, 32, 9, &payload);
    // Left for the destructor, which stops the worker before the object goes.
    thread.PutThreadMsg(33, 1, &payload, nullptr);
  }
  using Call = RecordingNotify::Call;
  EXPECT_EQ(notify.Calls(),
            (std::vector<Call>{{1, 30, &payload}, {3, 31, nullptr}, {1, 33, &payload}}));
}

// OrvThread: runnable objects that delete themselves or are joined.
class CountingThread : public OrvThread {
 public:
  CountingThread(std::atomic<int>* runs, std::atomic<int>* deleted)
      : runs_(runs), deleted_(deleted) {}
  void run() override { runs_->fetch_add(1); }

 protected:
  ~CountingThread() override { deleted_->fetch_add(1); }

 private:
  std::atomic<int>* runs_;
  std::atomic<int>* deleted_;
};

TEST(OrvThread, NonJoinableThreadDeletesItselfAfterRun) {
  std::atomic<int> runs{0};
  std::atomic<int> deleted{0};
  CountingThread* thread = new CountingThread(&runs, &deleted);
  thread->setPriority(THREAD_PRIORITY_BELOW_NORMAL);
  thread->start();
  while (deleted.load() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_EQ(runs.load(), 1);
  EXPECT_EQ(deleted.load(), 1);
}

TEST(OrvThread, JoinableThreadIsDeletedByJoin) {
  std::atomic<int> runs{0};
  std::atomic<int> deleted{0};
  CountingThread* thread = new CountingThread(&runs, &deleted);
  thread->setJoinable(true);
  thread->start();
  EXPECT_EQ(thread->join(), 0);
  EXPECT_EQ(runs.load(), 1);
  EXPECT_EQ(deleted.load(), 1);
}

TEST(OrvThread, ThreadThatCouldNotBeCreatedIgnoresStartAndJoin) {
  std::atomic<int> runs{0};
  std::atomic<int> deleted{0};
  CountingThread* thread = nullptr;
  {
    orv::os::ScopedThreadCreationFailure failure;
    thread = new CountingThread(&runs, &deleted);
  }
  thread->start();
  EXPECT_EQ(thread->join(), 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(runs.load(), 0);
  EXPECT_EQ(deleted.load(), 0);
  thread->selfDelete();  // the owner ends it
  EXPECT_EQ(deleted.load(), 1);
}

TEST(OrvThread, DefaultRunDoesNothingAndCleansUp) {
  class Plain : public OrvThread {};
  Plain* thread = new Plain;
  thread->setJoinable(true);
  thread->start();
  EXPECT_EQ(thread->join(), 0);
}

}  // namespace
