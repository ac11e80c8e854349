// A mutual-exclusion lock of one byte, for the lock that every item has: a volume holds items by
// the hundred thousand, and std::mutex is forty bytes. Held for a copy of a few words; who meets it
// held waits in the kernel.
#pragma once

#include <atomic>

#include "control/ThreadAnnotations.h"

namespace tarnel {

class CAPABILITY("mutex") ItemLock {
 public:
  void lock() ACQUIRE() {
    while (held.test_and_set(std::memory_order_acquire)) held.wait(true);
  }
  void unlock() RELEASE() {
    held.clear(std::memory_order_release);
    held.notify_one();
  }

 private:
  std::atomic_flag held = ATOMIC_FLAG_INIT;
};

class SCOPED_CAPABILITY ItemLockHold {
 public:
  explicit ItemLockHold(ItemLock& itemLock) ACQUIRE(itemLock) : lock(itemLock) { lock.lock(); }
  ~ItemLockHold() RELEASE() { lock.unlock(); }
  ItemLockHold(const ItemLockHold&) = delete;
  ItemLockHold& operator=(const ItemLockHold&) = delete;

 private:
  ItemLock& lock;
};

}  // namespace tarnel
