#include "get/FolderNames.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <memory>

namespace tarnel {

bool forEachName(int folder, const std::function<bool(const std::string&)>& use) {
  const int fd = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return false;
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(fd), &::closedir);
  if (!entries) {
    ::close(fd);
    return false;
  }
  while (const dirent* entry = ::readdir(entries.get())) {
    const std::string name(entry->d_name);
    if (name != "." && name != ".." && !use(name)) return false;
  }
  return true;
}

}  // namespace tarnel
