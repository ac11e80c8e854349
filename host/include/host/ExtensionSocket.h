// The socket that the file-system extension connects to. It lies in the extension's container,
// which is the system's to make, when the extension first starts: a folder made here in its place
// would have the wrong owner, and the system would refuse it.
#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "host/HostStartError.h"
#include "host/ReferenceHost.h"

namespace tarnel {

struct ExtensionSocketError {
  enum class Kind {
    noContainer,  // the extension has not run yet
    keptOut,      // the system does not let this program into the container
    socket,       // anything else: `reason`
  };
  Kind kind;
  std::string path;  // of the socket
  HostStartError reason = {};

  friend bool operator==(const ExtensionSocketError&, const ExtensionSocketError&) = default;
};

// For people: one line with what to do.
[[nodiscard]] std::string description(const ExtensionSocketError& error);

// True when another host answers there, or something other than a socket stands there: a host that
// went on without the extension would look as if it served the volume.
[[nodiscard]] bool isTaken(const ExtensionSocketError& error);

// Lets the host listen for the extension too. `home` is the user's real home. The socket's path.
[[nodiscard]] std::expected<std::string, ExtensionSocketError> listenForExtension(
    ReferenceHost& host, std::string_view home);

}  // namespace tarnel
