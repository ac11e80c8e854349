#include "seam/VolumeLog.h"

#include <array>
#include <atomic>
#include <charconv>

namespace tarnel {
namespace {

using Level = VolumeLog::Level;

std::string hexadecimal(std::uint64_t value) {
  std::array<char, 16> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
  return std::string(digits.data(), end);
}

class SilentLog final : public TextLog {
 public:
  [[nodiscard]] bool isDebugEnabled() const override { return false; }
  void line(Level, const std::string&) override {}
};

std::atomic<VolumeLog*>& current() {
  // Never destroyed: a thread that is blocked in a socket call may log after the end of main.
  static SilentLog& silent = *new SilentLog;
  static std::atomic<VolumeLog*>& log = *new std::atomic<VolumeLog*>(&silent);
  return log;
}

}  // namespace

VolumeLog& log() { return *current().load(std::memory_order_acquire); }

void setLog(VolumeLog& log) { current().store(&log, std::memory_order_release); }

void TextLog::loadResource(std::string_view typeName) {
  line(Level::notice, "loadResource: resource is " + std::string(typeName));
}

void TextLog::mountOptions(std::string_view joined) {
  line(Level::notice, "mount options are populated on this OS (they were empty on 26.5.2): " +
                          std::string(joined));
}

void TextLog::loaded(std::string_view volumeName, std::string_view socketPath) {
  line(Level::notice, "loaded: serving " + std::string(volumeName) + " over " +
                          std::string(socketPath) + " (read-only volume)");
}

void TextLog::unloaded() { line(Level::notice, "unloaded"); }

void TextLog::getAttributes(std::string_view relpath, std::uint64_t wanted) {
  line(Level::debug,
       "getAttributes relpath=" + std::string(relpath) + " wanted=0x" + hexadecimal(wanted));
}

void TextLog::getAttributesReply(std::string_view relpath, std::int64_t size, std::int64_t mtimeMs,
                                 std::int64_t lastKnown) {
  line(Level::debug, "getAttributes reply relpath=" + std::string(relpath) +
                         " size=" + std::to_string(size) + " mtimeMs=" + std::to_string(mtimeMs) +
                         " lastKnown=" + std::to_string(lastKnown));
}

void TextLog::servedStale(std::string_view relpath, std::int64_t size, std::string_view because) {
  line(Level::error, "getAttributes SERVED STALE relpath=" + std::string(relpath) +
                         " size=" + std::to_string(size) + " because=" + std::string(because));
}

void TextLog::getAttributesFailed(std::string_view relpath, std::string_view error) {
  line(Level::error,
       "getAttributes FAILED relpath=" + std::string(relpath) + " error=" + std::string(error));
}

void TextLog::readBytes(std::string_view relpath, std::int64_t offset, std::int64_t wanted,
                        std::int64_t lastKnownSize) {
  line(Level::debug, "readBytes relpath=" + std::string(relpath) +
                         " offset=" + std::to_string(offset) + " wanted=" + std::to_string(wanted) +
                         " lastKnownSize=" + std::to_string(lastKnownSize));
}

void TextLog::reclaimItem(std::string_view relpath, std::uint64_t id) {
  line(Level::debug, "reclaimItem relpath=" + std::string(relpath) + " id=" + std::to_string(id));
}

}  // namespace tarnel
