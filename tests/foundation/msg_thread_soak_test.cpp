// Soak test of the message thread: 8 producer threads make one million
// synchronous requests to one worker, with fire-and-forget messages between
// them. It is disabled in the default run (a few seconds in a release build,
// minutes under the sanitizers). Run it with (each command on one line):
//
//   build/tests/orv_foundation_tests --gtest_also_run_disabled_tests
//       --gtest_filter='OrvMsgThreadSoak.*'
//
// and under AddressSanitizer's leak checker (a build made with
// -DORV_SANITIZE=ON), which fails the run on any leaked message or event:
//
//   ASAN_OPTIONS=detect_leaks=1 build-asan/tests/orv_foundation_tests
//       --gtest_also_run_disabled_tests --gtest_filter='OrvMsgThreadSoak.*'
//
// or under ThreadSanitizer (-DORV_SANITIZE=thread) in the same way.
#include <OrvMsgThread.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr unsigned kRequest = 1;
constexpr unsigned kNotice = 2;
constexpr int kProducers = 8;
constexpr int kRequestsPerProducer = 1000000 / kProducers;

// Checks, on the worker, that each producer's messages arrive once each and in
// the order they were sent.
class SoakThread : public OrvMsgThread {
 public:
  ~SoakThread() override { StopThread(); }

  long outOfOrder() const { return outOfOrder_; }
  long requests() const { return requests_; }
  long notices() const { return notices_; }

 protected:
  long ThreadMessageProc(unsigned int message, unsigned long param1, void* param2) override {
    if (message == kStopMessage) return 0;
    const unsigned producer = static_cast<unsigned>(param1 >> 32);
    const long sequence = static_cast<long>(param1 & 0xFFFFFFFFul);
    if (producer >= kProducers) return -1;
    if (message == kNotice) {
      ++notices_;
      return 0;
    }
    if (sequence != next_[producer]) ++outOfOrder_;
    next_[producer] = sequence + 1;
    ++requests_;
    return sequence * 3 + producer;
  }

 private:
  // Touched by the worker only; read after it has stopped.
  long next_[kProducers] = {};
  long outOfOrder_ = 0;
  long requests_ = 0;
  long notices_ = 0;
};

TEST(OrvMsgThreadSoak, DISABLED_EightProducersOneMillionRequests) {
  std::atomic<long> wrong{0};
  std::atomic<long> lostWakeUps{0};
  long requests = 0;
  long notices = 0;
  long outOfOrder = 0;
  {
    SoakThread thread;
    ASSERT_TRUE(thread.CreateThread());
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p) {
      producers.emplace_back([&, p] {
        // A fresh heap event every so often, so that the result map sees many
        // keys come and go.
        OrvEvent* done = new OrvEvent;
        for (long i = 0; i < kRequestsPerProducer; ++i) {
          const unsigned long key = (static_cast<unsigned long>(p) << 32) | i;
          if (i % 4 == 0) thread.PutThreadMsg(kNotice, key, nullptr, nullptr);
          long result = E_FAIL;
          thread.PutThreadMsg(kRequest, key, nullptr, done);
          // A minute without an answer can only be a lost wake-up.
          if (!done->Wait(60000)) {
            lostWakeUps.fetch_add(1);
            break;
          }
          if (thread.GetResultCode(done, &result) != 0 || result != i * 3 + p) wrong.fetch_add(1);
          if (i % 1000 == 999) {
            delete done;
            done = new OrvEvent;
          }
        }
        delete done;
      });
    }
    for (auto& producer : producers) producer.join();
    unsigned long code = 1;
    thread.PutThreadMsg(OrvMsgThread::kStopMessage, 0, nullptr, nullptr);
    EXPECT_TRUE(thread.WaitForThreadExit(&code));
    EXPECT_EQ(code, 0u);
    requests = thread.requests();
    notices = thread.notices();
    outOfOrder = thread.outOfOrder();
  }
  EXPECT_EQ(lostWakeUps.load(), 0);
  EXPECT_EQ(wrong.load(), 0);
  EXPECT_EQ(outOfOrder, 0);
  EXPECT_EQ(requests, 1000000);
  EXPECT_EQ(notices, 1000000 / 4);
}

}  // namespace
