// The contract through which the volume asks the host for everything it serves.
//
// Every operation is asynchronous: it returns at once and calls `reply` exactly once, later, from a
// thread of the source's own, never from inside the call: a reply may ask again, chunk after chunk,
// and a source that answered inside the call would deepen the stack with each. A reply must not
// block.
// Several operations may run at once. A relative path addresses a node below the volume's root.
// Lifetime: the volume owns one source for its whole life; a reply may come after the source's
// owner has let go of it.
#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <string>
#include <vector>

#include "control/Bytes.h"
#include "control/FileStat.h"
#include "fs/FabricShare.h"
#include "fs/FabricSourceError.h"

namespace tarnel {

class FabricSource {
 public:
  template <class T>
  using Result = std::expected<T, FabricFailure>;
  template <class T>
  using Reply = std::function<void(Result<T>)>;

  FabricSource() = default;
  FabricSource(const FabricSource&) = delete;
  FabricSource& operator=(const FabricSource&) = delete;
  virtual ~FabricSource() = default;

  // Every share that the host offers now, in its order; duplicates are possible.
  virtual void shareListing(Reply<std::vector<FabricShare>> reply) = 0;
  // The status of exactly this path.
  virtual void stat(const std::string& relpath, Reply<FileStat> reply) = 0;
  // One status for each child of this directory, in the host's order, with the child's own name.
  virtual void list(const std::string& relpath, Reply<std::vector<FileStat>> reply) = 0;
  // At most `length` bytes (at most 262,144) from `offset`; fewer are possible, none is the end.
  virtual void read(const std::string& relpath, std::int64_t offset, std::int64_t length,
                    Reply<Bytes> reply) = 0;
  // Ends what is under way and what waits, with `disconnected`. Never waits.
  virtual void cancelAll() {}

  // Derived from shareListing: distinct safe names, sorted by text.
  void peers(Reply<std::vector<std::string>> reply);
  void shares(std::string ofPeer, Reply<std::vector<std::string>> reply);
};

}  // namespace tarnel
