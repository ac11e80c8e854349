#include "control/TaskPool.h"

#include <utility>

#include "WorkQueue.h"
#include "control/Thread.h"

namespace tarnel {

TaskPool::TaskPool(std::size_t threads) : work(std::make_shared<WorkQueue>()) {
  for (std::size_t i = 0; i < threads; ++i) {
    startThread("tarnel.pool", [shared = work] { shared->run(); }).detach();
  }
}

TaskPool::~TaskPool() { work->close(); }

void TaskPool::post(std::function<void()> item) { work->post(std::move(item)); }

}  // namespace tarnel
