// What is mounted on macOS, from what the kernel knows: no file system is asked, so none can hold
// the caller.
#pragma once

#include <sys/types.h>

#include <string>

namespace tarnel {

// The type of what is mounted on the folder, the topmost; empty when nothing is.
[[nodiscard]] std::string typeOfMount(const std::string& folder);

// True for the device of a mounted volume of ours.
[[nodiscard]] bool isOwnMount(dev_t device);

}  // namespace tarnel
