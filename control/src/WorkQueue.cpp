#include "WorkQueue.h"

#include <utility>

namespace tarnel {

void WorkQueue::post(std::function<void()> item) {
  {
    MutexLock hold(lock);
    items.push_back(std::move(item));
  }
  changed.notify_one();
}

void WorkQueue::close() {
  {
    MutexLock hold(lock);
    closed = true;
  }
  changed.notify_all();
}

bool WorkQueue::hasWaiting() {
  MutexLock hold(lock);
  return !items.empty();
}

void WorkQueue::run() {
  while (auto item = take()) item();
}

std::function<void()> WorkQueue::take() {
  MutexLock hold(lock);
  while (items.empty() && !closed) hold.wait(changed);
  if (items.empty()) return {};
  auto item = std::move(items.front());
  items.pop_front();
  return item;
}

}  // namespace tarnel
