#include "fusefs/AdapterLog.h"

#include <syslog.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

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

TextLog* ownLog = nullptr;  // set before the first mount

// For good: a log is never destroyed (VolumeLog.h), nor is one that another follows.
void use(std::unique_ptr<TextLog> log) {
  static auto& kept = *new std::vector<std::unique_ptr<TextLog>>;
  kept.push_back(std::move(log));
  ownLog = kept.back().get();
  setLog(*ownLog);
}

}  // namespace

void logToStandardError(bool debug) { use(std::make_unique<StandardErrorLog>(debug)); }

void logToSystemLog() { use(std::make_unique<SystemLog>()); }

void logLeftOutNames(std::string_view directory, std::size_t count) {
  if (ownLog == nullptr) return;
  ownLog->line(Level::error, "left out " + std::to_string(count) +
                                 " names that are too long for this system in " +
                                 std::string(directory));
}

}  // namespace tarnel
