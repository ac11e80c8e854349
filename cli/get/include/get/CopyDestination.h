// Where a copy goes, as with `cp`: a folder that exists takes each path under its last name;
// otherwise the destination is the new name of the one path.
#pragma once

#include <optional>
#include <string>

#include "control/UniqueFd.h"
#include "get/CopyError.h"

namespace tarnel {

struct CopyDestination {
  UniqueFd folder;                          // that the copy is put into
  std::optional<std::string> newName = {};  // what it is called there; absent: its own name

  // The text is the user's: links in it are followed. ENOENT when not even its folder is there.
  [[nodiscard]] static CopyResult<CopyDestination> open(const std::string& path);
  // A folder that exists, as the new name of what is copied.
  [[nodiscard]] static CopyResult<CopyDestination> openAsCopy(const std::string& path);
};

}  // namespace tarnel
