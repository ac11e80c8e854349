// Waits for a reply that comes from another thread, with a bound.
//
//   Awaited<CountReply> read;
//   volume->read(item, 0, 5, buffer, read.reply());
//   const auto [count, error] = read.wait();
//
// A reply that never comes is a failure of the test, and so is a second one. Replies may outlive
// the Awaited itself. Threads: the reply from any thread, the rest from the test's.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <tuple>
#include <utility>

#include "control/Mutex.h"

namespace tarnel::test {

inline constexpr std::chrono::seconds replyBound{30};

template <class Reply>
class Awaited;

template <class... Args>
class Awaited<std::function<void(Args...)>> {
 public:
  using Values = std::tuple<Args...>;

  [[nodiscard]] std::function<void(Args...)> reply() {
    return [shared = state](Args... values) {
      if (!shared->take()) {
        ADD_FAILURE() << "a second reply";
        return;
      }
      shared->replier = std::this_thread::get_id();
      shared->promise.set_value(Values(std::move(values)...));
    };
  }

  // The reply's values, once; empty ones and a failure of the test when none come.
  [[nodiscard]] Values wait() {
    if (future.wait_for(replyBound) == std::future_status::ready) return future.get();
    ADD_FAILURE() << "no reply";
    return {};
  }

  // Looks without waiting.
  [[nodiscard]] bool hasCome() const {
    return future.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
  }

  // Which thread replied; after wait().
  [[nodiscard]] std::thread::id replier() const { return state->replier; }

 private:
  struct State {
    [[nodiscard]] bool take() {
      MutexLock hold(lock);
      return !std::exchange(taken, true);
    }

    std::promise<Values> promise;
    std::thread::id replier;  // published by the promise
    Mutex lock;               // guards taken
    bool taken GUARDED_BY(lock) = false;
  };

  std::shared_ptr<State> state = std::make_shared<State>();
  std::future<Values> future = state->promise.get_future();
};

}  // namespace tarnel::test
