// What a relative path inside the volume addresses, and the one gate for names.
//
// A relative path is "" for the root, else names from the root down joined by "/". Threads: pure.
#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace tarnel {

// The one rule for names, from the system and from the host alike: not empty, not "." or "..", no
// "/" and no NUL. No limit on length, no other characters refused: the host has the last word.
[[nodiscard]] bool isSafeFabricName(std::string_view name);

struct FabricLocation {
  struct Peer {
    std::string peer;
    friend bool operator==(const Peer& a, const Peer& b);
  };
  struct InShare {
    std::string address;  // the whole path, re-joined; what the host is asked about
    std::string peer;     // its first component
    std::string share;    // its second component
    friend bool operator==(const InShare& a, const InShare& b);
  };
  struct Root {
    friend bool operator==(const Root&, const Root&) = default;
  };

  std::variant<Peer, InShare, Root> value;

  // Never fails. Leading, trailing and repeated slashes vanish; names are not tested.
  [[nodiscard]] static FabricLocation parse(std::string_view relpath);

  [[nodiscard]] const Peer* peer() const { return std::get_if<Peer>(&value); }
  [[nodiscard]] const InShare* inShare() const { return std::get_if<InShare>(&value); }
  [[nodiscard]] bool isRoot() const { return std::holds_alternative<Root>(value); }

  friend bool operator==(const FabricLocation&, const FabricLocation&) = default;
};

// The path of a child: the name alone below the root.
[[nodiscard]] std::string childPath(std::string_view directory, std::string_view name);

}  // namespace tarnel
