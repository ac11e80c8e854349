#include <gtest/gtest.h>

#include "control/SocketPaths.h"

namespace tarnel::test {
namespace {

TEST(SocketPaths, theExtensionsSocketLiesInItsHome) {
  EXPECT_EQ(TarnelFSKitSocket::appexPath("/Users/u/Library/Containers/X/Data"),
            "/Users/u/Library/Containers/X/Data/tarnel-control.sock");
}

TEST(SocketPaths, theHostReachesTheSameFileThroughTheContainer) {
  const std::string container =
      "/Users/u/Library/Containers/" + std::string(TarnelFSKitSocket::appexBundleID) + "/Data";
  EXPECT_EQ(TarnelFSKitSocket::hostPath("/Users/u"), container + "/tarnel-control.sock");
  EXPECT_EQ(TarnelFSKitSocket::hostPath("/Users/u"), TarnelFSKitSocket::appexPath(container));
}

TEST(SocketPaths, aHomeIsUsedExactlyAsGiven) {
  EXPECT_EQ(TarnelFSKitSocket::appexPath("/h/"), "/h//tarnel-control.sock");
  EXPECT_EQ(TarnelFSKitSocket::appexPath(""), "/tarnel-control.sock");
  EXPECT_EQ(TarnelFSKitSocket::hostPath("/h/").substr(0, 11), "/h//Library");
}

TEST(SocketPaths, theHostsOwnSocketCarriesTheUserId) {
  EXPECT_EQ(TarnelControlSocket::path(0), "/tmp/tarnel-control-0.sock");
  EXPECT_EQ(TarnelControlSocket::path(501), "/tmp/tarnel-control-501.sock");
  EXPECT_EQ(TarnelControlSocket::path(4294967295U), "/tmp/tarnel-control-4294967295.sock");
}

TEST(SocketPaths, theIdentitiesAreFixed) {
  EXPECT_EQ(TarnelFSKitSocket::appexBundleID.size(), 27U);
  EXPECT_EQ(TarnelFSKitSocket::fileSystemType, "tarnelfs");
}

}  // namespace
}  // namespace tarnel::test
