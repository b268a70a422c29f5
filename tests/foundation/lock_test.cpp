#include <OrvLock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

TEST(OrvEvent, AutoResetEventSignalsOneWait) {
  OrvEvent event(0);
  ASSERT_NE(static_cast<void*>(event), nullptr);
  EXPECT_EQ(event.Check(), 0);  // starts unset
  event.Set();
  EXPECT_NE(event.Wait(0), 0);
  EXPECT_EQ(event.Check(), 0);  // consumed by the successful wait
}

TEST(OrvEvent, ManualResetEventStaysSetUntilReset) {
  OrvEvent event(1);
  event.Set();
  EXPECT_NE(event.Check(), 0);
  EXPECT_NE(event.Check(), 0);
  event.Reset();
  EXPECT_EQ(event.Check(), 0);
}

TEST(OrvEvent, WaitTimesOutAndWakesAcrossThreads) {
  OrvEvent event;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(event.Wait(30), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(25));

  std::thread setter([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    event.Set();
  });
  EXPECT_NE(event.Wait(0xFFFFFFFFul), 0);
  setter.join();
}

TEST(OrvLocks, CritSecIsRecursiveAndExcludesOtherThreads) {
  OrvCritSec section;
  long counter = 0;
  auto work = [&] {
    for (int i = 0; i < 20000; ++i) {
      OrvAutoLock outer(&section);
      OrvAutoLock inner(&section);  // re-entry by the owner
      ++counter;
    }
  };
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) threads.emplace_back(work);
  for (auto& t : threads) t.join();
  EXPECT_EQ(counter, 80000);
}

TEST(OrvLocks, MutexIsRecursiveAndExcludesOtherThreads) {
  OrvMutex mutex;
  long counter = 0;
  auto work = [&] {
    for (int i = 0; i < 20000; ++i) {
      mutex.lock();
      mutex.lock();
      ++counter;
      mutex.unlock();
      mutex.unlock();
    }
  };
  std::thread a(work), b(work);
  a.join();
  b.join();
  EXPECT_EQ(counter, 40000);
}

TEST(OrvLocks, AutoLockToleratesNull) { OrvAutoLock lock(nullptr); }

}  // namespace
