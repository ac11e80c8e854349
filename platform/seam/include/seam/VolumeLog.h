// The log of a volume: one typed call for each line, so that an adapter whose system wants literal
// formats (os_log) can hold them. TextLog renders the same lines as text for everything else.
//
// Levels: life-cycle lines are notices, per-request lines are debug, failures and stale answers are
// errors. Texts are views, without a terminating zero. Threads: every call from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnel {

class VolumeLog {
 public:
  enum class Level { debug, notice, error };

  VolumeLog() = default;
  VolumeLog(const VolumeLog&) = delete;
  VolumeLog& operator=(const VolumeLog&) = delete;
  virtual ~VolumeLog() = default;

  // Callers ask before each debug line, so that a line that nobody wants costs nothing.
  [[nodiscard]] virtual bool isDebugEnabled() const = 0;

  virtual void loadResource(std::string_view typeName) = 0;
  virtual void mountOptions(std::string_view joined) = 0;
  virtual void loaded(std::string_view volumeName, std::string_view socketPath) = 0;
  virtual void unloaded() = 0;
  virtual void getAttributes(std::string_view relpath, std::uint64_t wanted) = 0;
  virtual void getAttributesReply(std::string_view relpath, std::int64_t size, std::int64_t mtimeMs,
                                  std::int64_t lastKnown) = 0;
  virtual void servedStale(std::string_view relpath, std::int64_t size,
                           std::string_view because) = 0;
  virtual void getAttributesFailed(std::string_view relpath, std::string_view error) = 0;
  virtual void readBytes(std::string_view relpath, std::int64_t offset, std::int64_t wanted,
                         std::int64_t lastKnownSize) = 0;
  virtual void reclaimItem(std::string_view relpath, std::uint64_t id) = 0;
};

// Renders each line and hands it to `line`, which subclasses give.
class TextLog : public VolumeLog {
 public:
  virtual void line(Level level, const std::string& text) = 0;

  void loadResource(std::string_view typeName) final;
  void mountOptions(std::string_view joined) final;
  void loaded(std::string_view volumeName, std::string_view socketPath) final;
  void unloaded() final;
  void getAttributes(std::string_view relpath, std::uint64_t wanted) final;
  void getAttributesReply(std::string_view relpath, std::int64_t size, std::int64_t mtimeMs,
                          std::int64_t lastKnown) final;
  void servedStale(std::string_view relpath, std::int64_t size, std::string_view because) final;
  void getAttributesFailed(std::string_view relpath, std::string_view error) final;
  void readBytes(std::string_view relpath, std::int64_t offset, std::int64_t wanted,
                 std::int64_t lastKnownSize) final;
  void reclaimItem(std::string_view relpath, std::uint64_t id) final;
};

// The one log of the process. Silent until an adapter sets its own, before the first file system is
// made. A log is never destroyed: threads that nobody joins may still use it at the very end.
[[nodiscard]] VolumeLog& log();
void setLog(VolumeLog& log);

}  // namespace tarnel
