// Waits for a condition that another thread brings about, with a bound.
#pragma once

#include <chrono>
#include <thread>

namespace tarnel::test {

inline constexpr std::chrono::seconds waitBound{20};

// Looks at the condition again and again; false when it did not come true within the bound.
template <class Condition>
[[nodiscard]] bool eventually(Condition condition, std::chrono::seconds bound = waitBound) {
  const auto end = std::chrono::steady_clock::now() + bound;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace tarnel::test
