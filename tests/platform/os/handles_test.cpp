#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/os/os_handles.h"
#include "platform/os/os_text.h"

namespace {

using namespace orv::os;

TEST(OsHandles, SemaphoreCountsAndRespectsMaximum) {
  HANDLE sem = CreateSemaphoreObject(0, 2);
  ASSERT_NE(sem, nullptr);
  EXPECT_EQ(WaitForSingleObject(sem, 0), WAIT_TIMEOUT);
  long previous = -1;
  EXPECT_TRUE(ReleaseSemaphoreObject(sem, 2, &previous));
  EXPECT_EQ(previous, 0);
  EXPECT_FALSE(ReleaseSemaphoreObject(sem, 1, nullptr));  // would pass the maximum
  EXPECT_EQ(WaitForSingleObject(sem, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(sem, 0), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(sem, 0), WAIT_TIMEOUT);
  EXPECT_TRUE(CloseHandle(sem));
  EXPECT_EQ(CreateSemaphoreObject(3, 2), nullptr);
}

TEST(OsHandles, BadHandlesFail) {
  EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
  EXPECT_EQ(WaitForSingleObject(INVALID_HANDLE_VALUE, 0), WAIT_FAILED);
  EXPECT_FALSE(CloseHandle(nullptr));
  // A file descriptor carried in a HANDLE is not an object of this layer.
  EXPECT_FALSE(CloseHandle(reinterpret_cast<HANDLE>(static_cast<intptr_t>(3))));
  EXPECT_EQ(WaitForSingleObject(reinterpret_cast<HANDLE>(static_cast<intptr_t>(1000)), 0),
            WAIT_FAILED);
  EXPECT_FALSE(SetEventObject(nullptr));
  HANDLE sem = CreateSemaphoreObject(0, 1);
  EXPECT_FALSE(SetEventObject(sem));  // a semaphore is not an event
  CloseHandle(sem);
}

TEST(OsHandles, ManualEventReleasesEveryWaiter) {
  HANDLE event = CreateEventObject(true, false);
  std::atomic<int> woken{0};  // both waiters add to it at once
  std::thread a([&] { woken += WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0; });
  std::thread b([&] { woken += WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0 ? 10 : 0; });
  SetEventObject(event);
  a.join();
  b.join();
  EXPECT_EQ(woken.load(), 11);
  CloseHandle(event);
}

TEST(OsText, Utf8RoundTripAndRepair) {
  const std::wstring text = L"a\u00e9\u20ac\U0001F600z";
  EXPECT_EQ(Utf8ToWide(WideToUtf8(text)), text);
  EXPECT_EQ(WideToUtf8(text).size(), 1u + 2u + 3u + 4u + 1u);
  EXPECT_EQ(Utf8ToWide(std::string("\xC3", 1)), std::wstring(1, 0xFFFD));  // cut short
  EXPECT_EQ(Utf8ToWide("\xC0\xAF"), std::wstring(2, 0xFFFD));              // overlong
  EXPECT_EQ(Utf8ToWide("x\xFFy"), std::wstring(L"x\uFFFDy"));
}

}  // namespace
