// A host that listens for the extension as well as at its own place.
#if defined(__linux__)
#include <sys/fsuid.h>
#endif
#include <sys/stat.h>
#include <unistd.h>

#include "HostFixture.h"
#include "control/PosixSocket.h"
#include "control/SocketPaths.h"
#include "host/ExtensionSocket.h"

namespace tarnel::test {
namespace {

using Kind = ExtensionSocketError::Kind;

class ExtensionSocket : public HostFixture {
 protected:
  void makeContainer() { temp.folder("h/Library/Containers/com.tarnel.desktop.fskitext/Data"); }
  [[nodiscard]] std::string home() const { return temp / "h"; }
  [[nodiscard]] std::string path() const { return TarnelFSKitSocket::hostPath(home()); }

  [[nodiscard]] ExtensionSocketError failure() {
    auto listening = listenForExtension(*host, home());
    if (!listening) return listening.error();
    ADD_FAILURE() << "it listens on " << *listening;
    return {};
  }

  // The names of the shares as a client at this path sees them.
  [[nodiscard]] static std::vector<std::string> sharesAt(const std::string& socket) {
    RawClient connection(socket);
    EXPECT_TRUE(connection.connected());
    ControlClient client(connection.release());
    client.setDeadline(20);
    const auto response = client.send({.op = ControlOp::shares});
    client.close();
    std::vector<std::string> names;
    if (!response || !response->shares) return names;
    for (const SourceShare& share : *response->shares) names.push_back(share.name);
    return names;
  }
};

TEST_F(ExtensionSocket, theSameSharesAreServedAtBothPlaces) {
  makeContainer();
  startHost();
  EXPECT_EQ(listenForExtension(*host, home()).value_or("failed"), path());
  EXPECT_EQ(sharesAt(path()), std::vector<std::string>{"Docs"});
  EXPECT_EQ(sharesAt(socketPath()), std::vector<std::string>{"Docs"});
}

TEST_F(ExtensionSocket, theSocketIsTheUsersAloneAndGoesWithTheHost) {
  makeContainer();
  startHost();
  ASSERT_TRUE(listenForExtension(*host, home()));
  struct stat status{};
  ASSERT_EQ(::lstat(path().c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  host->stop();
  EXPECT_NE(::lstat(path().c_str(), &status), 0);
  EXPECT_NE(::lstat(socketPath().c_str(), &status), 0);
}

TEST_F(ExtensionSocket, theContainerIsNeverMadeAndTheReasonSaysWhatToDo) {
  for (const char* made : {"h", "h/Library/Containers/com.tarnel.desktop.fskitext"}) {
    temp.folder(made);
    startHost();
    const ExtensionSocketError error = failure();
    EXPECT_EQ(error, (ExtensionSocketError{.kind = Kind::noContainer, .path = path()}));
    EXPECT_FALSE(isTaken(error));
    EXPECT_EQ(description(error),
              path() +
                  ": the extension's container is not there: enable the extension and mount once,"
                  " then start this host again");
    EXPECT_FALSE(
        std::filesystem::exists(home() + "/Library/Containers/com.tarnel.desktop.fskitext/Data"));
    EXPECT_EQ(sharesAt(socketPath()), std::vector<std::string>{"Docs"});
    host->stop();
  }
}

TEST_F(ExtensionSocket, aContainerThatIsNoFolderIsNone) {
  temp.file("h/Library/Containers/com.tarnel.desktop.fskitext/Data");
  startHost();
  EXPECT_EQ(failure().kind, Kind::noContainer);
}

TEST_F(ExtensionSocket, aContainerThatKeepsUsOutIsToldApart) {
#if !defined(__linux__)
  if (::geteuid() == 0) GTEST_SKIP() << "root is kept out of nothing";
#endif
  makeContainer();
  const std::string folder = path().substr(0, path().rfind('/'));
  ::chmod(folder.c_str(), 0500);
  startHost();
#if defined(__linux__)
  // Root is kept out of nothing: this thread is nobody to the file system meanwhile.
  if (::geteuid() == 0) ::setfsuid(65534);
#endif
  const ExtensionSocketError error = failure();
#if defined(__linux__)
  if (::geteuid() == 0) ::setfsuid(0);
#endif
  ::chmod(folder.c_str(), 0700);
  EXPECT_EQ(error.kind, Kind::keptOut);
  EXPECT_TRUE(description(error).ends_with("(EACCES)"));
}

TEST_F(ExtensionSocket, beingKeptOutSaysWhatToAllow) {
  const ExtensionSocketError error{
      .kind = Kind::keptOut,
      .path = "/s",
      .reason = {.kind = HostStartError::Kind::socket, .path = "/s", .error = EPERM}};
  EXPECT_FALSE(isTaken(error));
  EXPECT_EQ(description(error),
            "/s: the system keeps this program out of the extension's container: allow it when"
            " asked, or give the terminal Full Disk Access, then start this host again (EPERM)");
}

TEST_F(ExtensionSocket, anotherHostThereIsLeftAlone) {
  makeContainer();
  startHost();
  ASSERT_TRUE(listenForExtension(*host, home()));
  auto second = options();
  second.socketPath = temp / "s2";
  auto other = ReferenceHost::start(std::move(second));
  ASSERT_TRUE(other);
  const auto listening = listenForExtension(**other, home());
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error().reason.kind, HostStartError::Kind::socketInUse);
  EXPECT_TRUE(isTaken(listening.error()));
  EXPECT_EQ(sharesAt(path()), std::vector<std::string>{"Docs"});
}

TEST_F(ExtensionSocket, whatIsNoSocketIsNotReplaced) {
  makeContainer();
  startHost();
  temp.file("h/Library/Containers/com.tarnel.desktop.fskitext/Data/tarnel-control.sock", "data");
  const ExtensionSocketError error = failure();
  EXPECT_EQ(error.reason.kind, HostStartError::Kind::notASocket);
  EXPECT_TRUE(isTaken(error));
  EXPECT_EQ(std::filesystem::file_size(path()), 4U);
}

TEST_F(ExtensionSocket, aHomeThatMakesThePathTooLongIsTold) {
  temp.folder(std::string("h/") + std::string(60, 'u') +
              "/Library/Containers/com.tarnel.desktop.fskitext/Data");
  startHost();
  const auto listening = listenForExtension(*host, home() + "/" + std::string(60, 'u'));
  ASSERT_FALSE(listening);
  EXPECT_FALSE(isTaken(listening.error()));
  EXPECT_TRUE(
      description(listening.error())
          .ends_with(" bytes of at most 103: the volume cannot be served to a user whose home"
                     " is this long; `tarnel ls` and `tarnel cat` work (ENAMETOOLONG)"));
}

}  // namespace
}  // namespace tarnel::test
