// The names of one directory in the order of listings (Text.h), packed: a name costs its bytes and
// six more, so that a folder of any size that is walked at all fits into maxBytes.
//
// Left out: "." and "..", names that are not valid UTF-8 (they cannot travel in JSON), whatever is
// no file, directory or link, and what the caller does not want. Threads: plain values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "control/UniqueFd.h"
#include "host/Refusal.h"

namespace tarnel {

class DirectoryNames {
 public:
  // Of all directories that one walk holds the names of.
  static constexpr std::size_t maxBytes = 16 * 1024 * 1024;

  enum class Kind : char { file, directory, link };
  struct Name {
    std::string_view text;  // ends in NUL; valid as long as the names are
    Kind kind;
  };
  using Wanted = std::function<bool(std::string_view name)>;

  DirectoryNames() = default;
  // Refusal::folderTooLarge when they take more than `budget` bytes.
  [[nodiscard]] static HostResult<DirectoryNames> read(UniqueFd directory, std::size_t budget,
                                                       const Wanted& wanted);

  [[nodiscard]] std::size_t size() const { return starts.size(); }
  [[nodiscard]] Name operator[](std::size_t index) const { return at(starts[index]); }
  // For not being UTF-8.
  [[nodiscard]] std::size_t leftOut() const { return notUtf8; }
  [[nodiscard]] std::size_t bytes() const {
    return packed.size() + starts.size() * sizeof starts.front();
  }

 private:
  void add(std::string_view name, Kind kind);
  void sort();
  [[nodiscard]] Name at(std::uint32_t start) const;

  std::string packed;  // for each: its kind, its text, NUL
  std::vector<std::uint32_t> starts;
  std::size_t notUtf8 = 0;
  bool isAllAscii = true;
};

}  // namespace tarnel
