#pragma once

#define FUSE_USE_VERSION 312
#include <fuse_lowlevel.h>

#include <cstddef>
#include <vector>

#include "Tree.h"

namespace tarnel::nullfs {

// What a mount serves; the session's user data. Constant while the session lives.
struct Volume {
  static constexpr std::size_t patternBytes = std::size_t{1} << 20;

  Tree tree;
  // Every file's contents are this, again and again: sizes are true, bytes are not. A copy of the
  // true contents would add cache misses that say nothing about FUSE.
  std::vector<char> pattern;
};

[[nodiscard]] Volume makeVolume(Tree tree);

// lookup, getattr, opendir, readdir, readdirplus, open and read; the kernel or the library answers
// everything else. The session's user data must be a Volume.
[[nodiscard]] fuse_lowlevel_ops operations();

}  // namespace tarnel::nullfs
