#include "control/SocketPaths.h"

namespace tarnel {

std::string TarnelFSKitSocket::appexPath(std::string_view home) {
  return std::string(home) + "/" + std::string(fileName);
}

std::string TarnelFSKitSocket::hostPath(std::string_view home) {
  return std::string(home) + "/Library/Containers/" + std::string(appexBundleID) + "/Data/" +
         std::string(fileName);
}

std::string TarnelControlSocket::path(std::uint32_t uid) {
  return "/tmp/tarnel-control-" + std::to_string(uid) + ".sock";
}

}  // namespace tarnel
