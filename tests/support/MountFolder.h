// An empty folder to mount on, freed of every mount and removed at the end.
#pragma once

#include <sys/mount.h>

#include <filesystem>
#include <string>

#include "support/TempDir.h"

namespace tarnel::test {

class MountFolder {
 public:
  MountFolder() : folder(parent / "mnt") { std::filesystem::create_directory(folder); }
  ~MountFolder() {
    while (::umount2(folder.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW) == 0) {
    }
  }
  MountFolder(const MountFolder&) = delete;
  MountFolder& operator=(const MountFolder&) = delete;

  [[nodiscard]] const std::string& path() const { return folder; }
  [[nodiscard]] std::string operator/(const std::string& relative) const {
    return folder + "/" + relative;
  }

 private:
  TempDir parent;
  const std::string folder;
};

}  // namespace tarnel::test
