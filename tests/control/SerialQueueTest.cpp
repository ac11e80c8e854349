#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

#include "control/SerialQueue.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

TEST(SerialQueue, runsItemsInOrderOnOneThreadOfItsOwn) {
  SerialQueue queue("tests.queue");
  std::vector<int> order;  // the queue's thread only, until the promise
  std::vector<std::thread::id> threads;
  std::promise<void> done;
  for (int i = 0; i < 1000; ++i) {
    queue.post([&, i] {
      order.push_back(i);
      threads.push_back(std::this_thread::get_id());
    });
  }
  queue.post([&] { done.set_value(); });
  ASSERT_EQ(done.get_future().wait_for(waitBound), std::future_status::ready);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(order[static_cast<std::size_t>(i)], i);
  EXPECT_NE(threads.front(), std::this_thread::get_id());
  EXPECT_EQ(threads.front(), threads.back());
}

TEST(SerialQueue, anItemMayPostAnother) {
  SerialQueue queue("tests.queue");
  std::promise<void> done;
  queue.post([&] { queue.post([&] { done.set_value(); }); });
  EXPECT_EQ(done.get_future().wait_for(waitBound), std::future_status::ready);
}

TEST(SerialQueue, tellsWhetherItemsWaitBehindTheRunningOne) {
  SerialQueue queue("tests.queue");
  EXPECT_FALSE(queue.hasWaiting());
  std::promise<void> started;
  std::promise<void> goOn;
  queue.post([&, waiting = goOn.get_future().share()] {
    started.set_value();
    waiting.wait();
  });
  started.get_future().wait();
  EXPECT_FALSE(queue.hasWaiting());
  std::promise<void> done;
  queue.post([&] { done.set_value(); });
  EXPECT_TRUE(queue.hasWaiting());
  goOn.set_value();
  done.get_future().wait();
  EXPECT_FALSE(queue.hasWaiting());
}

TEST(SerialQueue, whatIsQueuedRunsAfterTheQueueWasReleasedAndReleasingDoesNotWait) {
  std::promise<void> goOn;
  std::promise<void> done;
  {
    SerialQueue queue("tests.queue");
    queue.post([waiting = goOn.get_future().share()] { waiting.wait(); });
    queue.post([&] { done.set_value(); });
  }
  goOn.set_value();
  EXPECT_EQ(done.get_future().wait_for(waitBound), std::future_status::ready);
}

// Its own last item may hold the owner of the queue.
TEST(SerialQueue, mayBeReleasedByItsOwnItem) {
  auto queue = std::make_shared<SerialQueue>("tests.queue");
  std::weak_ptr<SerialQueue> weak = queue;
  queue->post([queue] {});
  queue.reset();
  EXPECT_TRUE(eventually([&] { return weak.expired(); }));
}

TEST(SerialQueue, bearsItsLabel) { EXPECT_EQ(SerialQueue("a.label").label(), "a.label"); }

}  // namespace
}  // namespace tarnel::test
