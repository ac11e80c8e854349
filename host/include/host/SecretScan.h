// Looks through a folder that is about to be shared for names that stand for secrets.
//
// Names only: no file is opened, links are not followed, and a folder that is a secret itself is
// not looked into. Whatever the folder holds, the scan ends: each bound that it met is told in a
// text, and what it did not look at may hold more. Threads: pure but for the file system.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "host/PathWalk.h"

namespace tarnel {

struct SecretScanLimits {
  std::int64_t names = 200'000;
  std::size_t depth = 64;
  std::size_t secrets = 1'000;
  std::size_t secretBytes = 256 * 1024;  // of the listed paths together
  std::chrono::milliseconds time{10'000};
};

struct SecretScan {
  std::int64_t sharedCount = 0;        // files and folders that are no secrets
  std::int64_t excludedCount = 0;      // secrets; a folder counts once
  std::vector<std::string> secrets{};  // their paths below the folder, in the order of a walk
  std::vector<std::string> caps{};     // why not everything was looked at or listed

  // isOver: asked now and then; true makes the scan end early, when nobody waits for it any more.
  [[nodiscard]] static SecretScan of(int folderFD, const IsOwnMount& isOwnMount,
                                     const SecretScanLimits& limits,
                                     const std::function<bool()>& isOver);
};

}  // namespace tarnel
