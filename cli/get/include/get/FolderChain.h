// The folders from the root of a copy down to where it writes, each held by a descriptor that was
// opened in the one above it without following a link: whatever names a host sends and whatever
// links somebody plants, nothing is reached that is not below the root.
//
// Going elsewhere leaves the folders that are not on the new path; a folder that is left gets the
// permissions and the time that are meant for it, which would not have lasted while it was filled.
// Bounds: maxOpen descriptors; one that was given up is opened again from the root.
// Threads: one.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "control/UniqueFd.h"
#include "get/CopyError.h"
#include "get/EntryPath.h"

namespace tarnel {

// What a folder of the copy is to look like in the end.
struct FolderLook {
  std::optional<mode_t> mode = {};  // permission bits as the host has them
  std::optional<std::int64_t> mtimeMs = {};
};

class FolderChain {
 public:
  static constexpr std::size_t maxOpen = 32;

  struct Options {
    mode_t mask = 022;           // taken off every mode
    bool restoresModes = false;  // give folders that were there before their mode, too
    // A folder, by its path below the root, that did not get its permissions or its time.
    std::function<void(const std::string& relpath, const CopyError&)> onUnfinished = {};
  };
  // root: a folder of the user's, never changed itself.
  FolderChain(UniqueFd root, const Options& options);
  FolderChain(FolderChain&&) = default;
  FolderChain& operator=(FolderChain&&) = delete;
  ~FolderChain();  // as leaveAll

  // Goes to the folder of the first `depth` names, which are made where they are missing. ENOTDIR
  // where something else stands, a link included; ENAMETOOLONG past maxDepth. After a failure it
  // stands in the last folder that it could go to.
  [[nodiscard]] CopyResult<void> enter(const EntryPath& path, std::size_t depth);
  // Goes to the folder of the whole path and says what it is to look like when it is left.
  [[nodiscard]] CopyResult<void> enterAnnounced(const EntryPath& path, const FolderLook& look);
  void leaveAll();
  // Leaves every folder as one that did not become whole: without the host's time, by which a later
  // copy would know it.
  void abandon();

  // Of the folder that was entered last. The descriptor is valid until the next call.
  [[nodiscard]] int folder() const { return levels.back().fd.get(); }
  // Made by this copy: whatever it holds, the copy has put there.
  [[nodiscard]] bool isOurs() const { return levels.back().made; }
  // False when this name was already taken here by this copy. Remembers at most maxRemembered
  // names of one folder.
  [[nodiscard]] bool take(std::string_view name);
  // Something in it could not be copied: it does not get the host's time.
  void spoil();
  // Lets its owner write in the folder; its own permissions come back when it is left.
  [[nodiscard]] bool makeWritable();

  static constexpr std::size_t maxRemembered = 200'000;

 private:
  struct Level {
    std::string name;  // empty for the root
    UniqueFd fd;       // invalid once given up
    bool made = false;
    std::optional<mode_t> finalMode = {};  // when it is not what the folder has now
    std::optional<std::int64_t> mtimeMs = {};
    std::unordered_set<std::size_t> taken = {};  // hashes of names
  };

  [[nodiscard]] CopyResult<void> goBackTo(std::size_t depth);
  void leaveLast();
  [[nodiscard]] CopyResult<void> finish(const Level& level) const;
  [[nodiscard]] CopyResult<void> step(std::string_view name, std::optional<mode_t> hostMode);
  [[nodiscard]] CopyResult<void> reopen(std::size_t level);

  const Options options;
  std::vector<Level> levels;  // the root first
};

}  // namespace tarnel
