// One line on a terminal that tells how far a copy is, drawn over itself.
//
//   340.2 MiB of 1.0 GiB, 1204 of 20000 files, 610.5 MiB/s, 0:01 left
//
// Never wider than the terminal, of which the last column stays free: what does not fit is left
// out, from the least telling to the bytes alone. It holds no names, so a column is a byte. Drawn
// at most ten times a second. Threads: one.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace tarnel {

struct CopyTotals {
  std::int64_t bytes = 0;
  std::int64_t files = 0;
};

struct CopyProgress {
  std::int64_t bytes = 0;  // done, those that were already whole included
  std::int64_t files = 0;
  std::int64_t received = 0;  // bytes that took time
  std::chrono::milliseconds elapsed{0};
  std::optional<CopyTotals> totals = {};
};

// The line for a terminal of this many columns; may be empty.
[[nodiscard]] std::string progressText(const CopyProgress& progress, std::size_t columns);

class ProgressLine {
 public:
  using Clock = std::chrono::steady_clock;

  // fd: a terminal, not owned.
  explicit ProgressLine(int terminalFD) : fd(terminalFD) {}
  ~ProgressLine() { clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  [[nodiscard]] bool isDue() const { return Clock::now() >= next; }
  void draw(const CopyProgress& progress);
  // Takes the line away, so that something else can be written.
  void clear();

 private:
  void write(const std::string& text) const;

  const int fd;
  Clock::time_point next = Clock::now();
  std::size_t shown = 0;  // columns
};

}  // namespace tarnel
