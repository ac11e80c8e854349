// What a copy has done so far, and what it could not do. Bounds: the texts of at most maxKept
// failures, each cut to maxTextBytes; the others are only counted. Threads: one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "get/CopyError.h"

namespace tarnel {

class CopyReport {
 public:
  static constexpr std::size_t maxKept = 100;
  static constexpr std::size_t maxTextBytes = 4096;

  struct Failure {
    std::string path;  // in the volume, or of this machine
    CopyError error;
  };

  // Files that are whole under their names, those that already were, folders, bytes received.
  std::int64_t files = 0;
  std::int64_t skipped = 0;
  std::int64_t folders = 0;
  std::int64_t bytes = 0;
  std::int64_t skippedBytes = 0;  // of the files that already were whole

  void fail(std::string_view path, const CopyError& error);

  [[nodiscard]] const std::vector<Failure>& failures() const { return kept; }
  [[nodiscard]] std::int64_t failed() const { return count; }

 private:
  std::vector<Failure> kept;
  std::int64_t count = 0;
};

}  // namespace tarnel
