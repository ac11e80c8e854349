// The options of a mount, as `-o a,b=c` gives them.
#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace tarnel {

struct MountOptions {
  double attributeTimeout = 1.0;  // seconds that the kernel may keep attributes
  double entryTimeout = 1.0;      // seconds that the kernel may keep a name
  bool allowOther = false;
  bool defaultPermissions = false;
  bool readOnlyFlag = true;  // false on a test's mount alone, so that refusals reach the adapter

  // Takes ro, allow_other, default_permissions, attr_timeout=S and entry_timeout=S; everything
  // else, rw included, is refused with a sentence for the user.
  [[nodiscard]] static std::expected<MountOptions, std::string> parse(std::string_view text);
};

}  // namespace tarnel
