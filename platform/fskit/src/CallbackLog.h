// The volume's log over the adapter's functions: each line a call with texts that end with a zero.
#pragma once

#include <cstdint>
#include <string_view>

#include "fskit/TarnelCore.h"
#include "seam/VolumeLog.h"

namespace tarnel {

class CallbackLog final : public VolumeLog {
 public:
  explicit CallbackLog(const TarnelLogLines& functions) : lines(functions) {}

  [[nodiscard]] bool isDebugEnabled() const override { return lines.isDebugEnabled(); }
  void loadResource(std::string_view typeName) override;
  void mountOptions(std::string_view joined) override;
  void loaded(std::string_view volumeName, std::string_view socketPath) override;
  void unloaded() override;
  void getAttributes(std::string_view relpath, std::uint64_t wanted) override;
  void getAttributesReply(std::string_view relpath, std::int64_t size, std::int64_t mtimeMs,
                          std::int64_t lastKnown) override;
  void servedStale(std::string_view relpath, std::int64_t size, std::string_view because) override;
  void getAttributesFailed(std::string_view relpath, std::string_view error) override;
  void readBytes(std::string_view relpath, std::int64_t offset, std::int64_t wanted,
                 std::int64_t lastKnownSize) override;
  void reclaimItem(std::string_view relpath, std::uint64_t id) override;

 private:
  const TarnelLogLines& lines;
};

}  // namespace tarnel
