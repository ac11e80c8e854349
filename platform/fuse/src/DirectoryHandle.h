// An open directory: one listing of the volume, taken when it is first read and again after a
// rewind, from which every readdir at any offset is served. The volume itself lists anew at each
// call, which would cost the square of a directory's size for a kernel that asks for 4 KiB at a
// time. Opening alone asks nothing: programs open folders that they never list (df does), and must
// not wait for the host then.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "NodeTable.h"
#include "control/Mutex.h"
#include "fs/FabricEntry.h"

namespace tarnel {

struct DirectorySnapshot {
  std::vector<FabricChild> children;
  NodeTable::Clock::time_point takenAt;  // before the host was asked
};

class DirectoryHandle {
 public:
  explicit DirectoryHandle(std::shared_ptr<FabricItem> item) : directory(std::move(item)) {}

  const std::shared_ptr<FabricItem> directory;

  // What serves a readdir at this offset; nullptr at the start, where every pass takes a new one.
  [[nodiscard]] std::shared_ptr<const DirectorySnapshot> at(std::uint64_t offset) EXCLUDES(lock) {
    MutexLock hold(lock);
    return offset == 0 ? nullptr : snapshot;
  }
  void replace(std::shared_ptr<const DirectorySnapshot> taken) EXCLUDES(lock) {
    MutexLock hold(lock);
    snapshot = std::move(taken);
  }

 private:
  Mutex lock;  // guards snapshot
  std::shared_ptr<const DirectorySnapshot> snapshot GUARDED_BY(lock);
};

}  // namespace tarnel
