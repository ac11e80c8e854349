// Mounting and unmounting where the system itself starts the file system: this program runs the
// system's mount, which finds the extension by the type's name, and waits for the volume's root.
//
// Nothing here is one system's alone, so all of it is tested anywhere, with programs and a mount
// table of the test's.
#pragma once

#include <chrono>
#include <expected>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

// One line for people each; the first says what failed.
using FailureLines = std::vector<std::string>;

// What is mounted on a folder, as a type's name; empty when nothing is. Never asks what is mounted.
using TypeOfMount = std::function<std::string(const std::string& folder)>;

namespace SystemMount {

// What the extension is mounted from. It never looks at it.
inline constexpr std::string_view resourceURL = "tarnel://volume";

// Where the user switches the extension on.
inline constexpr std::string_view whereToEnable =
    "System Settings > General > Login Items & Extensions > Extensions > By Category >"
    " File System Extensions > Tarnel";

// What the user asked for besides the folder.
struct Wishes {
  bool socket = false;                    // a socket of the user's choice
  bool foreground = false;                // that this program serves the mount
  bool debug = false;                     // that it logs what it serves
  std::vector<std::string> options = {};  // each may hold several, between commas
};

inline constexpr std::string_view optionNames = "ro, nobrowse";

// The options that the system's mount is to be given; `ro` needs none. Otherwise why one of the
// wishes cannot come true here.
[[nodiscard]] std::expected<std::vector<std::string>, std::string> optionsFor(const Wishes& wishes);

struct Request {
  std::string folder;                     // absolute
  std::vector<std::string> options = {};  // as optionsFor gives them
  std::string program = "/sbin/mount";
  TypeOfMount typeOfMount = {};
  std::chrono::milliseconds patience{30'000};  // for the root's answer
};

// Returns once the root has answered. The program's own words come first in a failure.
[[nodiscard]] std::expected<void, FailureLines> mount(const Request& request);

// Takes away a mount of ours and no other. `folder` is absolute and has no links in it.
[[nodiscard]] std::expected<void, FailureLines> unmount(const std::string& folder,
                                                        const std::string& program,
                                                        const TypeOfMount& typeOfMount);

}  // namespace SystemMount
}  // namespace tarnel
