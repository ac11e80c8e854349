// The queue under SerialQueue and TaskPool: items in order of arrival, taken by one or more threads
// until it is closed and empty. Shared between its owner and its threads.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>

#include "control/Mutex.h"

namespace tarnel {

class WorkQueue {
 public:
  void post(std::function<void()> item) EXCLUDES(lock);
  void close() EXCLUDES(lock);
  [[nodiscard]] bool hasWaiting() EXCLUDES(lock);
  // The body of a thread: runs items until close() was called and nothing is left.
  void run() EXCLUDES(lock);

 private:
  [[nodiscard]] std::function<void()> take() EXCLUDES(lock);  // empty at the end

  Mutex lock;  // guards items and closed; not held while an item runs
  std::condition_variable changed;
  std::deque<std::function<void()>> items GUARDED_BY(lock);
  bool closed GUARDED_BY(lock) = false;
};

}  // namespace tarnel
