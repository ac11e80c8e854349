#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <future>
#include <iterator>
#include <latch>
#include <memory>
#include <thread>

#include "control/TaskPool.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

TEST(TaskPool, runsEveryItem) {
  TaskPool pool;
  std::atomic<int> ran = 0;
  for (int i = 0; i < 1000; ++i) pool.post([&] { ++ran; });
  EXPECT_TRUE(eventually([&] { return ran == 1000; }));
}

TEST(TaskPool, oneBusyThreadDoesNotHoldUpTheOther) {
  TaskPool pool(2);
  std::promise<void> goOn;
  std::promise<void> firstDone;
  pool.post([&, waiting = goOn.get_future().share()] {
    waiting.wait();
    firstDone.set_value();
  });
  std::promise<void> done;
  pool.post([&] { done.set_value(); });
  EXPECT_EQ(done.get_future().wait_for(waitBound), std::future_status::ready);
  goOn.set_value();
  firstDone.get_future().wait();
}

TEST(TaskPool, whatIsQueuedRunsAfterThePoolWasReleased) {
  std::promise<void> goOn;
  std::promise<void> done;
  {
    TaskPool pool(1);
    pool.post([waiting = goOn.get_future().share()] { waiting.wait(); });
    pool.post([&] { done.set_value(); });
  }
  goOn.set_value();
  EXPECT_EQ(done.get_future().wait_for(waitBound), std::future_status::ready);
}

#if defined(__linux__)
std::ptrdiff_t threadsOfThisProcess() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {});
}

TEST(TaskPool, releasingItEndsItsThreads) {
  std::thread([] {}).join();  // the first thread may bring others, a sanitizer's, that stay
  const std::ptrdiff_t before = threadsOfThisProcess();
  {
    TaskPool pool(4);
    const auto together = std::make_shared<std::latch>(5);  // each thread has run an item
    for (int i = 0; i < 4; ++i) pool.post([together] { together->arrive_and_wait(); });
    together->arrive_and_wait();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // and most wait for another
  }
  EXPECT_TRUE(eventually([&] { return threadsOfThisProcess() <= before; }));
}
#endif

TEST(TaskPool, mayBeReleasedByItsOwnItem) {
  auto pool = std::make_shared<TaskPool>();
  std::weak_ptr<TaskPool> weak = pool;
  pool->post([pool] {});
  pool.reset();
  EXPECT_TRUE(eventually([&] { return weak.expired(); }));
}

}  // namespace
}  // namespace tarnel::test
