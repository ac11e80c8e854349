// The connections that are being served: how many there may be, and how they end together.
//
// A descriptor is closed under the lock, in the same step that takes it out of the set: shutting
// all down can never hit a number that another file has got meanwhile, and once the set is empty
// nothing of any connection is left. Threads: any.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <unordered_set>

#include "control/Mutex.h"
#include "control/UniqueFd.h"

namespace tarnel {

class ConnectionRegistry {
 public:
  explicit ConnectionRegistry(std::size_t maxConnections) : most(maxConnections) {}

  // False when there are as many as there may be, or when all have been ended.
  [[nodiscard]] bool add(int fd);
  // Closes a connection that was added.
  void finish(UniqueFd fd);
  // Hangs up on every client, waits until each connection has finished, and takes no more.
  void endAll();

 private:
  const std::size_t most;
  Mutex lock;  // guards what follows
  std::condition_variable emptied;
  std::unordered_set<int> live GUARDED_BY(lock);
  bool ended GUARDED_BY(lock) = false;
};

}  // namespace tarnel
