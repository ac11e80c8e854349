// Taking one of our mounts away. Only our own type is ever touched.
#pragma once

#include <expected>
#include <string>

namespace tarnel {

enum class UnmountMode {
  whole,  // fails while a file or folder of the mount is in use
  lazy,   // gone from the tree at once, for good when the last user is done
};

// path: absolute, without links. The error is a sentence for the user.
[[nodiscard]] std::expected<void, std::string> unmountOwn(const std::string& path,
                                                          UnmountMode mode);

// Takes away what a killed mount left on the folder; true if there was something.
bool cleanUpDeadMount(const std::string& path);

}  // namespace tarnel
