// Opens and looks at paths below a share's folder, and never at anything outside it.
//
// A path is what SharePath calls the rest: safe names joined by "/", or nothing for the folder
// itself. Links and mounts below it are treated as PathWalk says; regular files and directories are
// all that exists, and what the share hides does not. Where the system can resolve a path beneath a
// folder in one call and the path holds no link, that call is all; otherwise, and on other systems
// always, PathWalk does it.
// Threads: any. Lifetime: refers to the folder's descriptor, to the predicate and to the hidden
// paths.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "control/UniqueFd.h"
#include "host/HiddenPaths.h"
#include "host/PathWalk.h"
#include "host/Refusal.h"
#include "host/SecretNames.h"

namespace tarnel {

class BeneathResolver {
 public:
  enum class Road { fastest, walkOnly };

  BeneathResolver(int folderFD, const IsOwnMount& ownMount, Road chosen = Road::fastest,
                  const HiddenPaths* hiddenPaths = nullptr)
      : rootFD(folderFD), isOwnMount(&ownMount), road(chosen), hidden(hiddenPaths) {}

  // Of a regular file or a directory.
  [[nodiscard]] HostResult<struct stat> status(const std::string& path) const;
  // A regular file, open for reading. Opening never waits, not even for what stands in its place.
  [[nodiscard]] HostResult<UniqueFd> openFile(const std::string& path) const;
  // A directory, open for listing.
  [[nodiscard]] HostResult<UniqueFd> openDirectory(const std::string& path) const;
  // A walk that stands in the directory.
  [[nodiscard]] HostResult<PathWalk> enter(const std::string& path) const;

  // True when only a walk can tell whether a path that ends in this name is hidden.
  [[nodiscard]] bool mayHide(std::string_view name) const {
    return hidden != nullptr && isSecretName(name);
  }
  [[nodiscard]] bool isForeign(dev_t device) const { return *isOwnMount && (*isOwnMount)(device); }

 private:
  [[nodiscard]] HostResult<UniqueFd> tryDirectly(const std::string& path, int flags) const;
  [[nodiscard]] HostResult<PathWalk::Target> walkTo(const std::string& path) const;

  int rootFD;
  const IsOwnMount* isOwnMount;
  Road road;
  const HiddenPaths* hidden;  // null: nothing is
};

}  // namespace tarnel
