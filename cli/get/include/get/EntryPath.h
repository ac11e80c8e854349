// The path of an entry below the root of a copy, as a host tells it: hostile until it is parsed.
//
// Refused: an absolute path, an empty component, "." and "..", NUL (EINVAL, "unsafe name"); a name
// of more than maxNameBytes, more than maxDepth levels (ENAMETOOLONG). Threads: pure.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "get/CopyError.h"

namespace tarnel {

// From the root of the copy down to the entry itself; views of the text that was parsed.
using EntryPath = std::vector<std::string_view>;

inline constexpr std::size_t maxNameBytes = 255;
inline constexpr std::size_t maxDepth = 256;

// Into a path whose memory is used again.
[[nodiscard]] CopyResult<void> parseEntryPath(std::string_view relpath, EntryPath& path);

// The names of a path of ours, which needs no judging: "a/b" has two, "" none.
[[nodiscard]] EntryPath namesOf(std::string_view path);

// One name that a host lists.
[[nodiscard]] CopyResult<void> checkEntryName(std::string_view name);

}  // namespace tarnel
