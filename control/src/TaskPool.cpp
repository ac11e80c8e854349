#include "control/TaskPool.h"

#include <utility>

#include "WorkQueue.h"
#include "control/Thread.h"

namespace tarnel {

struct TaskPool::State {
  WorkQueue work;
};

TaskPool::TaskPool(std::size_t threads) : state(std::make_shared<State>()) {
  for (std::size_t i = 0; i < threads; ++i) {
    startThread("tarnel.pool", [shared = state] { shared->work.run(); }).detach();
  }
}

TaskPool::~TaskPool() { state->work.close(); }

void TaskPool::post(std::function<void()> item) { state->work.post(std::move(item)); }

}  // namespace tarnel
