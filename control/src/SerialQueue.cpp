#include "control/SerialQueue.h"

#include <utility>

#include "WorkQueue.h"
#include "control/Thread.h"

namespace tarnel {

struct SerialQueue::State {
  explicit State(std::string text) : label(std::move(text)) {}
  const std::string label;
  WorkQueue work;
};

SerialQueue::SerialQueue(std::string label) : state(std::make_shared<State>(std::move(label))) {
  startThread(state->label, [shared = state] { shared->work.run(); }).detach();
}

SerialQueue::~SerialQueue() { state->work.close(); }

void SerialQueue::post(std::function<void()> item) { state->work.post(std::move(item)); }

bool SerialQueue::hasWaiting() const { return state->work.hasWaiting(); }

const std::string& SerialQueue::label() const { return state->label; }

}  // namespace tarnel
