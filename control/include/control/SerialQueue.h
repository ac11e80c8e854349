// Runs work items one after another, in order of arrival, on one thread of its own.
//
// The thread is there from the start: one that cannot be had is the constructor's
// std::system_error, where somebody can be told, and never a later post's. Releasing the queue lets
// what is queued run to its end and then ends the thread; nobody joins it, since an item may be
// blocked in a socket call and the end of the process must not wait for that. Threads: post may be
// called from any thread, also from an item.
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace tarnel {

class SerialQueue {
 public:
  explicit SerialQueue(std::string label);
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  void post(std::function<void()> item);
  // Items that wait behind the one that is running.
  [[nodiscard]] bool hasWaiting() const;
  [[nodiscard]] const std::string& label() const;

 private:
  struct State;
  std::shared_ptr<State> state;  // shared with the thread
};

}  // namespace tarnel
