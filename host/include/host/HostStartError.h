// Why the reference host could not start. Plain values.
#pragma once

#include <string>

namespace tarnel {

struct HostStartError {
  enum class Kind {
    unsafeName,         // a share's or a peer's name that no path can hold
    duplicateName,      // two shares of one peer with the same name
    folder,             // the folder cannot be opened as one: missing, a file, no permission
    ownMount,           // the folder is on a mount of this program's own type
    notASocket,         // something other than a socket stands at the socket's path
    socketInUse,        // somebody answers on the socket
    socketPathTooLong,  // no system call takes the path
    socket,             // the socket cannot be made
  };
  Kind kind;
  std::string path;       // of the folder or of the socket
  std::string peer = {};  // unsafeName and duplicateName only, as the share's definition has it
  std::string name = {};  // likewise
  int error = 0;          // folder and socket only: errno

  friend bool operator==(const HostStartError&, const HostStartError&) = default;
};

// For people: the path, what is wrong with it, what to do and, where the system refused, the
// errno's name. One line as long as path and name are; they are in it as they are, so who shows it
// on a terminal escapes control characters.
[[nodiscard]] std::string description(const HostStartError& error);

}  // namespace tarnel
