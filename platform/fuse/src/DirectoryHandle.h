// An open directory: one listing of the volume, taken when it was opened and again after a rewind,
// from which every readdir at any offset is served. The volume itself lists anew at each call,
// which would cost the square of a directory's size for a kernel that asks for 4 KiB at a time.
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
  DirectoryHandle(std::shared_ptr<FabricItem> item, std::shared_ptr<const DirectorySnapshot> first)
      : directory(std::move(item)), snapshot(std::move(first)) {}

  const std::shared_ptr<FabricItem> directory;

  // What serves a readdir at this offset; nullptr after a rewind: take a new one.
  [[nodiscard]] std::shared_ptr<const DirectorySnapshot> at(std::uint64_t offset) EXCLUDES(lock) {
    MutexLock hold(lock);
    if (offset != 0) return snapshot;
    return std::exchange(begun, true) ? nullptr : snapshot;
  }
  void replace(std::shared_ptr<const DirectorySnapshot> taken) EXCLUDES(lock) {
    MutexLock hold(lock);
    snapshot = std::move(taken);
  }

 private:
  Mutex lock;  // guards snapshot and begun
  std::shared_ptr<const DirectorySnapshot> snapshot GUARDED_BY(lock);
  bool begun GUARDED_BY(lock) = false;  // offset 0 was served
};

}  // namespace tarnel
