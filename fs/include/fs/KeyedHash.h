// A hash of texts that a host chooses, under a key that it cannot know.
//
// A table whose hash is known can be filled on purpose with texts that all want one place; each of a
// hundred thousand names would then be compared with every one before it, and one listing would
// hold up everything else for longer than any time limit. SipHash-2-4 (Aumasson and Bernstein,
// 2012). Threads: pure but for random().
#pragma once

#include <cstdint>
#include <string_view>

namespace tarnel {

struct HashKey {
  std::uint64_t first;
  std::uint64_t second;

  [[nodiscard]] static HashKey random();
};

[[nodiscard]] std::uint64_t keyedHash(const HashKey& key, std::string_view text);

}  // namespace tarnel
