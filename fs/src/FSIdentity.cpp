#include "fs/FSIdentity.h"

#include <charconv>
#include <cstdlib>

#include "fs/FabricVolume.h"

namespace tarnel {
namespace {

constexpr std::string_view uuidText = "6D2E9A14-7C3B-4F58-9E01-2A5B8C4D6E7F";

// RFC 4122, section 3: 8-4-4-4-12 hexadecimal digits. The text is ours, so a bad one ends the
// process.
Uuid parseUuid(std::string_view text) {
  Uuid uuid{};
  std::size_t at = 0;
  for (std::size_t i = 0; i < uuid.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) {
      if (text.at(at) != '-') std::abort();
      ++at;
    }
    const char* const digits = text.substr(at, 2).data();
    const auto [rest, error] = std::from_chars(digits, digits + 2, uuid[i], 16);
    if (error != std::errc() || rest != digits + 2) std::abort();
    at += 2;
  }
  if (at != text.size()) std::abort();
  return uuid;
}

}  // namespace

std::string_view FSIdentity::shortName() { return FabricVolume::fileSystemTypeName; }

const Uuid& FSIdentity::uuid() {
  static const Uuid uuid = parseUuid(uuidText);
  return uuid;
}

}  // namespace tarnel
