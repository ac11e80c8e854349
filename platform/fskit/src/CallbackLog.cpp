#include "CallbackLog.h"

#include <array>
#include <charconv>
#include <string>

namespace tarnel {
namespace {

std::string hex(std::uint64_t value) {
  std::array<char, 16> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, 16).ptr;
  return {digits.data(), end};
}

}  // namespace

void CallbackLog::loadResource(std::string_view typeName) {
  lines.loadResource(std::string(typeName).c_str());
}

void CallbackLog::mountOptions(std::string_view joined) {
  lines.mountOptions(std::string(joined).c_str());
}

void CallbackLog::loaded(std::string_view volumeName, std::string_view socketPath) {
  lines.loaded(std::string(volumeName).c_str(), std::string(socketPath).c_str());
}

void CallbackLog::unloaded() { lines.unloaded(); }

void CallbackLog::getAttributes(std::string_view relpath, std::uint64_t wanted) {
  lines.getAttributes(std::string(relpath).c_str(), hex(wanted).c_str());
}

void CallbackLog::getAttributesReply(std::string_view relpath, std::int64_t size,
                                     std::int64_t mtimeMs, std::int64_t lastKnown) {
  lines.getAttributesReply(std::string(relpath).c_str(), size, mtimeMs, lastKnown);
}

void CallbackLog::servedStale(std::string_view relpath, std::int64_t size,
                              std::string_view because) {
  lines.servedStale(std::string(relpath).c_str(), size, std::string(because).c_str());
}

void CallbackLog::getAttributesFailed(std::string_view relpath, std::string_view error) {
  lines.getAttributesFailed(std::string(relpath).c_str(), std::string(error).c_str());
}

void CallbackLog::readBytes(std::string_view relpath, std::int64_t offset, std::int64_t wanted,
                            std::int64_t lastKnownSize) {
  lines.readBytes(std::string(relpath).c_str(), offset, wanted, lastKnownSize);
}

void CallbackLog::reclaimItem(std::string_view relpath, std::uint64_t id) {
  lines.reclaimItem(std::string(relpath).c_str(), id);
}

}  // namespace tarnel
