// Why the reference host could not start. Plain values; description() is one line for people.
#pragma once

#include <string>

namespace tarnel {

struct HostStartError {
  enum class Kind {
    unsafeName,     // a share's or a peer's name that no path can hold
    duplicateName,  // two shares of one peer with the same name
    folder,         // the folder cannot be opened as one: missing, a file, no permission
    ownMount,       // the folder is on a mount of this program's own type
    notASocket,     // something other than a socket stands at the socket's path
    socketInUse,    // somebody answers on the socket
    socket,         // the socket cannot be made
  };
  Kind kind;
  std::string subject;      // the name, the folder or the path
  std::string reason = {};  // folder and socket only

  friend bool operator==(const HostStartError&, const HostStartError&) = default;
};
[[nodiscard]] std::string description(const HostStartError& error);

}  // namespace tarnel
