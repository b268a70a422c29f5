#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/os/os_handles.h"
#include "platform/os/os_thread.h"

namespace {

using namespace orv::os;

struct Gate {
  HANDLE release = CreateEventObject(true, false);
  std::atomic<int> runs{0};
  std::atomic<unsigned long> seenId{0};
  ~Gate() { CloseHandle(release); }
};

unsigned WaitForGateThenAnswer(void* argument) {
  Gate* gate = static_cast<Gate*>(argument);
  gate->seenId = GetCurrentThreadId();
  gate->runs.fetch_add(1);
  WaitForSingleObject(gate->release, INFINITE);
  return 42;
}

unsigned CountRun(void* argument) {
  static_cast<Gate*>(argument)->runs.fetch_add(1);
  return 7;
}

struct Witness {
  bool* destroyed;
  ~Witness() { *destroyed = true; }
};

unsigned EndEarly(void* argument) {
  Witness witness{static_cast<bool*>(argument)};
  EndThreadEx(0xBEEF);
}

TEST(OsThread, RunningThreadReportsStillActiveThenItsExitCode) {
  Gate gate;
  unsigned long id = 0;
  HANDLE thread = BeginThreadEx(nullptr, 0, &WaitForGateThenAnswer, &gate, 0, &id);
  ASSERT_NE(thread, nullptr);
  EXPECT_NE(id, 0u);
  EXPECT_EQ(GetThreadId(thread), id);
  DWORD code = 0;
  EXPECT_EQ(WaitForSingleObject(thread, 20), WAIT_TIMEOUT);
  ASSERT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, STILL_ACTIVE);
  SetEventObject(gate.release);
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(thread, 0), WAIT_OBJECT_0);  // stays signalled
  ASSERT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 42u);
  EXPECT_EQ(gate.seenId.load(), id);
  EXPECT_TRUE(CloseHandle(thread));
}

TEST(OsThread, SuspendedThreadStartsWhenItsCountReachesZero) {
  Gate gate;
  HANDLE thread = BeginThreadEx(nullptr, 0, &CountRun, &gate, CREATE_SUSPENDED, nullptr);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(SuspendThread(thread), 1u);  // not started yet: counts
  EXPECT_EQ(ResumeThread(thread), 2u);
  EXPECT_EQ(WaitForSingleObject(thread, 30), WAIT_TIMEOUT);
  EXPECT_EQ(gate.runs.load(), 0);
  EXPECT_EQ(ResumeThread(thread), 1u);  // starts now
  EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_EQ(gate.runs.load(), 1);
  EXPECT_EQ(ResumeThread(thread), 0u);  // not suspended
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 7u);
  CloseHandle(thread);
}

TEST(OsThread, SuspendedThreadWhoseHandleIsClosedNeverRuns) {
  Gate gate;
  HANDLE thread = BeginThreadEx(nullptr, 0, &CountRun, &gate, CREATE_SUSPENDED, nullptr);
  ASSERT_NE(thread, nullptr);
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, STILL_ACTIVE);
  EXPECT_TRUE(CloseHandle(thread));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(gate.runs.load(), 0);
}

TEST(OsThread, AnotherRunningThreadCannotBeSuspended) {
  Gate gate;
  HANDLE thread = BeginThreadEx(nullptr, 0, &WaitForGateThenAnswer, &gate, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  while (gate.runs.load() == 0) std::this_thread::yield();
  EXPECT_EQ(SuspendThread(thread), 0xFFFFFFFFu);
  EXPECT_EQ(ResumeThread(thread), 0u);  // count unchanged
  SetEventObject(gate.release);
  WaitForSingleObject(thread, INFINITE);
  EXPECT_EQ(SuspendThread(thread), 0xFFFFFFFFu);  // ended
  CloseHandle(thread);
}

struct SelfSuspend {
  HANDLE self = nullptr;
  std::atomic<DWORD> answer{0};
  std::atomic<bool> resumed{false};
};

unsigned SuspendItself(void* argument) {
  SelfSuspend* s = static_cast<SelfSuspend*>(argument);
  while (!s->self) std::this_thread::yield();
  s->answer = SuspendThread(s->self);
  s->resumed = true;
  return 0;
}

TEST(OsThread, ThreadSuspendsItselfUntilResumed) {
  SelfSuspend s;
  HANDLE thread = BeginThreadEx(nullptr, 0, &SuspendItself, &s, CREATE_SUSPENDED, nullptr);
  ASSERT_NE(thread, nullptr);
  s.self = thread;
  ResumeThread(thread);
  // Resume answers 0 until the thread has suspended itself, then 1.
  DWORD previous = 0;
  while ((previous = ResumeThread(thread)) == 0) {
    EXPECT_FALSE(s.resumed.load());
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(previous, 1u);
  WaitForSingleObject(thread, INFINITE);
  EXPECT_TRUE(s.resumed.load());
  EXPECT_EQ(s.answer.load(), 0u);
  CloseHandle(thread);
}

TEST(OsThread, EndThreadExUnwindsAndSetsTheExitCode) {
  bool destroyed = false;
  HANDLE thread = BeginThreadEx(nullptr, 64 * 1024, &EndEarly, &destroyed, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  WaitForSingleObject(thread, INFINITE);
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread, &code));
  EXPECT_EQ(code, 0xBEEFu);
  EXPECT_TRUE(destroyed);
  CloseHandle(thread);
}

TEST(OsThread, PriorityIsStoredForTheSevenLevelsOnly) {
  Gate gate;
  HANDLE thread = BeginThreadEx(nullptr, 0, &CountRun, &gate, CREATE_SUSPENDED, nullptr);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(GetThreadPriority(thread), THREAD_PRIORITY_NORMAL);
  EXPECT_TRUE(SetThreadPriority(thread, THREAD_PRIORITY_LOWEST));
  EXPECT_EQ(GetThreadPriority(thread), THREAD_PRIORITY_LOWEST);
  EXPECT_FALSE(SetThreadPriority(thread, 3));
  EXPECT_FALSE(SetThreadPriority(thread, -3));
  EXPECT_EQ(GetThreadPriority(thread), THREAD_PRIORITY_LOWEST);
  EXPECT_TRUE(SetThreadPriority(thread, THREAD_PRIORITY_IDLE));
  ResumeThread(thread);
  WaitForSingleObject(thread, INFINITE);
  EXPECT_EQ(GetThreadPriority(thread), THREAD_PRIORITY_IDLE);
  CloseHandle(thread);
}

TEST(OsThread, BadHandlesAndArgumentsFail) {
  HANDLE event = CreateEventObject(true, false);
  for (HANDLE bad : {static_cast<HANDLE>(nullptr), INVALID_HANDLE_VALUE, event}) {
    DWORD code = 5;
    EXPECT_EQ(ResumeThread(bad), 0xFFFFFFFFu);
    EXPECT_EQ(SuspendThread(bad), 0xFFFFFFFFu);
    EXPECT_EQ(GetThreadPriority(bad), THREAD_PRIORITY_ERROR_RETURN);
    EXPECT_FALSE(SetThreadPriority(bad, 0));
    EXPECT_FALSE(GetExitCodeThread(bad, &code));
    EXPECT_EQ(code, 5u);
    EXPECT_EQ(GetThreadId(bad), 0u);
  }
  CloseHandle(event);
  Gate gate;
  EXPECT_EQ(BeginThreadEx(nullptr, 0, nullptr, &gate, 0, nullptr), nullptr);
  EXPECT_EQ(BeginThreadEx(nullptr, 0, &CountRun, &gate, 2, nullptr), nullptr);
  HANDLE thread = BeginThreadEx(nullptr, 0, &CountRun, &gate, CREATE_SUSPENDED, nullptr);
  EXPECT_FALSE(GetExitCodeThread(thread, nullptr));
  CloseHandle(thread);
  EXPECT_EQ(gate.runs.load(), 0);
  EXPECT_EQ(GetCurrentThreadId(), 0u);  // not a thread of this layer
}

TEST(OsThread, CreationFailureIsPerThreadAndScoped) {
  Gate gate;
  {
    ScopedThreadCreationFailure failure;
    unsigned long id = 99;
    EXPECT_EQ(BeginThreadEx(nullptr, 0, &CountRun, &gate, 0, &id), nullptr);
    EXPECT_EQ(id, 99u);
    // Another thread still creates threads.
    HANDLE other = nullptr;
    std::thread([&] { other = BeginThreadEx(nullptr, 0, &CountRun, &gate, 0, nullptr); }).join();
    ASSERT_NE(other, nullptr);
    WaitForSingleObject(other, INFINITE);
    CloseHandle(other);
  }
  HANDLE thread = BeginThreadEx(nullptr, 0, &CountRun, &gate, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  EXPECT_EQ(gate.runs.load(), 2);
}

TEST(OsThread, ThreadNumbersAreDistinct) {
  Gate gate;
  HANDLE a = BeginThreadEx(nullptr, 0, &CountRun, &gate, CREATE_SUSPENDED, nullptr);
  HANDLE b = BeginThreadEx(nullptr, 0, &CountRun, &gate, CREATE_SUSPENDED, nullptr);
  EXPECT_NE(GetThreadId(a), 0u);
  EXPECT_NE(GetThreadId(a), GetThreadId(b));
  CloseHandle(a);
  CloseHandle(b);
}

unsigned SetEventOf(void* argument) {
  SetEventObject(*static_cast<HANDLE*>(argument));
  return 0;
}

// The waiter of a synchronous hand-off closes its event as soon as it wakes,
// while the setting thread may still be inside SetEventObject. Under the
// sanitizers this catches a setter that does not keep the object alive.
TEST(OsThread, WaiterMayCloseAnEventTheMomentItIsSignalled) {
  for (int i = 0; i < 300; ++i) {
    HANDLE event = CreateEventObject(false, false);
    HANDLE thread = BeginThreadEx(nullptr, 0, &SetEventOf, &event, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    ASSERT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(event));
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
  }
}

}  // namespace
