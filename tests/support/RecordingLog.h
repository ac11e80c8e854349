// A log that keeps its lines. Threads: any.
#pragma once

#include <atomic>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "control/Mutex.h"
#include "seam/VolumeLog.h"

namespace tarnel::test {

struct LogLine {
  VolumeLog::Level level;
  std::string text;

  friend bool operator==(const LogLine&, const LogLine&) = default;
  friend void PrintTo(const LogLine& line, std::ostream* out) {
    *out << static_cast<int>(line.level) << ": " << line.text;
  }
};

[[nodiscard]] inline LogLine debugLine(std::string text) {
  return {.level = VolumeLog::Level::debug, .text = std::move(text)};
}
[[nodiscard]] inline LogLine noticeLine(std::string text) {
  return {.level = VolumeLog::Level::notice, .text = std::move(text)};
}
[[nodiscard]] inline LogLine errorLine(std::string text) {
  return {.level = VolumeLog::Level::error, .text = std::move(text)};
}

class RecordingLog final : public TextLog {
 public:
  // The one that this makes the process's log; it is never destroyed, since late replies may log.
  [[nodiscard]] static RecordingLog& installed() {
    static auto& log = *new RecordingLog;
    setLog(log);
    return log;
  }

  void setDebug(bool on) { debug = on; }
  [[nodiscard]] bool isDebugEnabled() const override { return debug; }

  void line(Level level, const std::string& text) override {
    MutexLock hold(lock);
    kept.push_back({.level = level, .text = text});
  }

  [[nodiscard]] std::vector<LogLine> lines() const {
    MutexLock hold(lock);
    return kept;
  }

  void clear() {
    MutexLock hold(lock);
    kept.clear();
  }

 private:
  std::atomic<bool> debug = false;
  mutable Mutex lock;  // guards kept
  std::vector<LogLine> kept GUARDED_BY(lock);
};

}  // namespace tarnel::test
