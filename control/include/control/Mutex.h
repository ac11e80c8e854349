// std::mutex with the annotations that clang's thread-safety analysis needs.
//
//   MutexLock hold(lock);                 // for a scope
//   while (!ready) hold.wait(condition); // a wake-up may be spurious
#pragma once

#include <condition_variable>
#include <mutex>

#include "control/ThreadAnnotations.h"

namespace tarnel {

class CAPABILITY("mutex") Mutex {
  friend class MutexLock;
  std::mutex mutex;
};

class SCOPED_CAPABILITY MutexLock {
 public:
  explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : held(mutex.mutex) {}
  ~MutexLock() RELEASE() = default;
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

  // One wake-up, which may be spurious: callers loop on their own condition, under the lock, where
  // the analysis can see it.
  void wait(std::condition_variable& condition) { condition.wait(held); }

 private:
  std::unique_lock<std::mutex> held;
};

}  // namespace tarnel
