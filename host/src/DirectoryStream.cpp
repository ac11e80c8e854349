#include "DirectoryStream.h"

#include <cerrno>
#include <string_view>

namespace tarnel {

HostResult<DirectoryStream> DirectoryStream::open(UniqueFd directory) {
  DIR* const opened = ::fdopendir(directory.get());
  if (opened == nullptr) return std::unexpected(refusalFor(errno));
  (void)directory.release();  // the stream's now
  return DirectoryStream(opened);
}

HostResult<const dirent*> DirectoryStream::next() {
  while (true) {
    errno = 0;  // readdir tells the end from a failure by errno alone
    const dirent* const entry = ::readdir(stream.get());
    if (entry == nullptr && errno != 0) return std::unexpected(refusalFor(errno));
    if (entry == nullptr) return nullptr;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") return entry;
  }
}

}  // namespace tarnel
