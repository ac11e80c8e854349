#include "fusefs/AdapterLog.h"

#include <syslog.h>
#include <unistd.h>

#include <string>

#include "control/Printable.h"
#include "seam/VolumeLog.h"

namespace tarnel {
namespace {

using Level = VolumeLog::Level;

class StandardErrorLog final : public TextLog {
 public:
  explicit StandardErrorLog(bool withDebug) : debug(withDebug) {}
  [[nodiscard]] bool isDebugEnabled() const override { return debug; }
  void line(Level level, const std::string& text) override {
    if (level == Level::debug && !debug) return;
    const std::string whole = "tarnel: " + printable(text) + "\n";
    (void)!::write(STDERR_FILENO, whole.data(), whole.size());  // one write: lines never mix
  }

 private:
  const bool debug;
};

class SystemLog final : public TextLog {
 public:
  SystemLog() { ::openlog("tarnel", LOG_PID, LOG_DAEMON); }
  [[nodiscard]] bool isDebugEnabled() const override { return false; }
  void line(Level level, const std::string& text) override {
    if (level == Level::debug) return;
    ::syslog(level == Level::error ? LOG_ERR : LOG_NOTICE, "%s", printable(text).c_str());
  }
};

TextLog* ownLog = nullptr;  // set once, before the first mount

}  // namespace

void logToStandardError(bool debug) {
  auto& log = *new StandardErrorLog(debug);  // never destroyed: VolumeLog.h
  ownLog = &log;
  setLog(log);
}

void logToSystemLog() {
  auto& log = *new SystemLog;  // never destroyed: VolumeLog.h
  ownLog = &log;
  setLog(log);
}

void logLeftOutNames(std::string_view directory, std::size_t count) {
  if (ownLog == nullptr) return;
  ownLog->line(Level::error, "left out " + std::to_string(count) +
                                 " names that are too long for this system in " +
                                 std::string(directory));
}

}  // namespace tarnel
