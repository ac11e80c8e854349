// The agreed places of the control socket. A home is used exactly as given: a trailing "/" yields a
// doubled separator.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnel {

// The socket that the file-system extension connects to, seen from both sides of its container.
namespace TarnelFSKitSocket {
inline constexpr std::string_view appexBundleID = "com.tarnel.desktop.fskitext";
inline constexpr std::string_view fileSystemType = "tarnelfs";
inline constexpr std::string_view fileName = "tarnel-control.sock";

// For the extension: its home is its container's Data directory.
[[nodiscard]] std::string appexPath(std::string_view home);
// For the host: the same file, from the user's real home.
[[nodiscard]] std::string hostPath(std::string_view home);
}  // namespace TarnelFSKitSocket

// The host's per-user socket in the shared temporary directory.
namespace TarnelControlSocket {
[[nodiscard]] std::string path(std::uint32_t uid);
}

}  // namespace tarnel
