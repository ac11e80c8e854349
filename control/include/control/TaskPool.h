// The small shared pool: runs the ends of asynchronous work that must not run where they became
// ready, as the decoding of a large listing, behind which other answers would wait. Items never
// wait for the host, so two threads are enough.
//
// Releasing the pool lets what is queued run and then ends the threads; nobody joins them.
// Threads: post may be called from any thread.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace tarnel {

class WorkQueue;

class TaskPool {
 public:
  explicit TaskPool(std::size_t threads = 2);
  ~TaskPool();
  TaskPool(const TaskPool&) = delete;
  TaskPool& operator=(const TaskPool&) = delete;

  void post(std::function<void()> item);

 private:
  const std::shared_ptr<WorkQueue> work;  // shared with the threads
};

}  // namespace tarnel
