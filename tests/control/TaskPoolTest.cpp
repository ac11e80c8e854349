#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>

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

TEST(TaskPool, mayBeReleasedByItsOwnItem) {
  auto pool = std::make_shared<TaskPool>();
  std::weak_ptr<TaskPool> weak = pool;
  pool->post([pool] {});
  pool.reset();
  EXPECT_TRUE(eventually([&] { return weak.expired(); }));
}

}  // namespace
}  // namespace tarnel::test
