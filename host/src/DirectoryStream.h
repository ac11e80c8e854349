// The entries of an open directory, one after another, without "." and "..". Threads: one.
#pragma once

#include <dirent.h>

#include <memory>

#include "control/UniqueFd.h"
#include "host/Refusal.h"

namespace tarnel {

class DirectoryStream {
 public:
  [[nodiscard]] static HostResult<DirectoryStream> open(UniqueFd directory);

  // The directory's descriptor, valid as long as this.
  [[nodiscard]] int fd() const { return ::dirfd(stream.get()); }
  // Null at the end; valid until the next call.
  [[nodiscard]] HostResult<const dirent*> next();

 private:
  struct Close {
    void operator()(DIR* opened) const { ::closedir(opened); }
  };

  explicit DirectoryStream(DIR* opened) : stream(opened) {}

  std::unique_ptr<DIR, Close> stream;
};

}  // namespace tarnel
