#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "HostFixture.h"
#include "support/Eventually.h"
#include "support/OpenDescriptors.h"

namespace tarnel::test {
namespace {

using Kind = HostStartError::Kind;

class HostStart : public HostFixture {
 protected:
  HostStartError failure(HostOptions chosen) {
    auto started = ReferenceHost::start(std::move(chosen));
    if (!started) return started.error();
    ADD_FAILURE() << "the host started";
    return {};
  }
  HostStartError failureOfShares(std::vector<ShareDefinition> shares) {
    auto chosen = options();
    chosen.shares = std::move(shares);
    auto error = failure(std::move(chosen));
    EXPECT_FALSE(std::filesystem::exists(socketPath()));
    return error;
  }
  // A bound socket whose listener is gone.
  void leaveStaleSocket() {
    const UniqueFd fd = makeUnixStreamSocket();
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, socketPath().c_str());
    ASSERT_EQ(::bind(fd.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
};

TEST_F(HostStart, sharesAreListedAsLocalAndRemoteInTheirOrder) {
  auto chosen = options();
  chosen.shares = {{.name = "Zoo", .folder = temp / "docs"},
                   {.peer = "bob", .name = "Docs", .folder = temp / "docs"},
                   {.name = "Docs", .folder = temp / "docs"}};
  startHost(std::move(chosen));
  const auto answer = ask({.op = ControlOp::shares});
  EXPECT_EQ(answer.status, ControlResponse::Status::ok);
  EXPECT_EQ(answer.shares, (std::vector<SourceShare>{{"Zoo", false}, {"Docs", false}}));
  EXPECT_EQ(answer.remoteShares, (std::vector<RemoteShareInfo>{{"bob", "Docs", true}}));
}

TEST_F(HostStart, aPeersShareIsServedUnderThePeersName) {
  temp.file("other/file", "bob's");
  auto chosen = options();
  chosen.shares.push_back({.peer = "bob", .name = "Docs", .folder = temp / "other"});
  startHost(std::move(chosen));
  EXPECT_EQ(bytes("bob/Docs/file"), "bob's");
  expectRefused(read("me/Docs/file"), "no such file");
}

TEST_F(HostStart, withoutSharesTheListIsEmpty) {
  auto chosen = options();
  chosen.shares.clear();
  startHost(std::move(chosen));
  EXPECT_EQ(ask({.op = ControlOp::shares}).shares, std::vector<SourceShare>{});
}

TEST_F(HostStart, aMissingFolderIsRefused) {
  const auto error = failureOfShares({{.name = "Docs", .folder = temp / "nothing"}});
  EXPECT_EQ(error.kind, Kind::folder);
  EXPECT_EQ(description(error), (temp / "nothing") +
                                    ": no such folder: make it first,"
                                    " or name another (ENOENT)");
}

TEST_F(HostStart, aFileIsRefused) {
  temp.file("file");
  const auto error = failureOfShares({{.name = "Docs", .folder = temp / "file"}});
  EXPECT_EQ(description(error), (temp / "file") +
                                    ": not a folder: name the folder that holds it"
                                    " (ENOTDIR)");
}

TEST_F(HostStart, twoSharesOfOnePeerCannotHaveOneName) {
  const auto error = failureOfShares({{.peer = "bob", .name = "Docs", .folder = temp / "docs"},
                                      {.name = "Docs", .folder = temp / "docs"},
                                      {.name = "Docs", .folder = temp / "docs"}});
  EXPECT_EQ(error.kind, Kind::duplicateName);
  EXPECT_EQ(description(error), (temp / "docs") +
                                    ": another share has the same name \"Docs\":"
                                    " give this one its own with --share NAME=" +
                                    (temp / "docs"));
}

TEST_F(HostStart, twoSharesOfAPeerAreToldApartWithThePeersOption) {
  const auto error = failureOfShares({{.peer = "bob", .name = "Docs", .folder = temp / "docs"},
                                      {.peer = "bob", .name = "Docs", .folder = "/"}});
  EXPECT_EQ(description(error),
            "/: another share has the same name \"bob/Docs\": give this one its"
            " own with --peer PEER/NAME=/");
}

TEST_F(HostStart, aFolderWithoutANameIsToldHowToGetOne) {
  EXPECT_EQ(description(failureOfShares({{.name = "", .folder = "/"}})),
            "/: \"\" is not a usable name: give it one with --share NAME=/");
  EXPECT_EQ(description(failureOfShares({{.name = "a/b", .folder = "/"}})),
            "/: \"a/b\" is not a usable name: give it one with --share NAME=/");
  EXPECT_EQ(description(failureOfShares({{.peer = "..", .name = "Docs", .folder = "/"}})),
            "/: \"../Docs\" is not a usable name: give it one with --peer PEER/NAME=/");
}

TEST_F(HostStart, unsafeNamesAreRefused) {
  for (const auto& name : {std::string(), std::string("."), std::string(".."), std::string("a/b"),
                           std::string("a\0b", 3), std::string("\xff")}) {
    EXPECT_EQ(failureOfShares({{.name = name, .folder = temp / "docs"}}).kind, Kind::unsafeName);
    EXPECT_EQ(failureOfShares({{.peer = name, .name = "Docs", .folder = temp / "docs"}}).kind,
              Kind::unsafeName);
  }
}

TEST_F(HostStart, theSocketIsTheOwnersAlone) {
  startHost();
  struct stat status;
  ASSERT_EQ(::lstat(socketPath().c_str(), &status), 0);
  EXPECT_TRUE(S_ISSOCK(status.st_mode));
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(HostStart, aStaleSocketIsReplaced) {
  leaveStaleSocket();
  startHost();
  EXPECT_TRUE(stat("me/Docs").stat);
}

TEST_F(HostStart, aSocketOnWhichSomebodyAnswersIsLeftAlone) {
  temp.file(docs("first"));
  startHost();
  const auto error = failure(options());
  EXPECT_EQ(error.kind, Kind::socketInUse);
  EXPECT_EQ(description(error), "another host already answers on " + socketPath() +
                                    ": stop it, or choose another --socket");
  EXPECT_TRUE(stat("me/Docs/first").stat);
}

TEST_F(HostStart, aSocketWhoseQueueIsFullIsLeftAlone) {
  const UniqueFd busy = makeUnixStreamSocket();
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, socketPath().c_str());
  ASSERT_EQ(::bind(busy.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(::listen(busy.get(), 0), 0);
  std::vector<UniqueFd> waiting;
  while (const auto fd = connectUnixSocket(socketPath())) waiting.emplace_back(*fd);
  EXPECT_EQ(failure(options()).kind, Kind::socketInUse);
}

TEST_F(HostStart, whateverIsNotASocketIsLeftAlone) {
  temp.file("s", "precious");
  EXPECT_EQ(failure(options()).kind, Kind::notASocket);
  EXPECT_EQ(std::filesystem::file_size(socketPath()), 8U);
  std::filesystem::remove(socketPath());
  temp.folder("s");
  const auto error = failure(options());
  EXPECT_EQ(description(error), socketPath() +
                                    ": exists and is not a socket: move it away, or"
                                    " choose another --socket");
  std::filesystem::remove(socketPath());
  temp.link("s", "elsewhere");
  EXPECT_EQ(failure(options()).kind, Kind::notASocket);
  EXPECT_TRUE(std::filesystem::is_symlink(socketPath()));
}

TEST_F(HostStart, aSocketPathOf104BytesIsRefusedWithoutALeak) {
  auto chosen = options();
  chosen.socketPath = temp / std::string(103 - temp.path().size(), 's');
  ASSERT_EQ(chosen.socketPath.size(), 104U);
  const std::string path = chosen.socketPath;
  const auto before = openDescriptors();
  EXPECT_EQ(description(failure(std::move(chosen))),
            path +
                ": too long for a socket, 104 bytes: choose a --socket of at most 103"
                " (ENAMETOOLONG)");
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(HostStart, aSocketInAMissingFolderIsRefused) {
  auto chosen = options();
  chosen.socketPath = temp / "nothing/s";
  EXPECT_EQ(description(failure(std::move(chosen))),
            (temp / "nothing/s") +
                ": its folder does not exist: make it first, or choose another"
                " --socket (ENOENT)");
}

TEST_F(HostStart, stopHangsUpOnOpenConnectionsAndLeavesNothing) {
  const auto before = openDescriptors();
  startHost();
  {
    RawClient idle(socketPath()), halfway(socketPath()), used(socketPath());
    ASSERT_TRUE(halfway.send(R"({"op":"sta)"));
    ASSERT_TRUE(used.ask(R"({"op":"shares"})"));
    host->stop();
    EXPECT_TRUE(idle.sawHangUp());
    EXPECT_TRUE(halfway.sawHangUp());
    EXPECT_TRUE(used.sawHangUp());
    EXPECT_FALSE(std::filesystem::exists(socketPath()));
    EXPECT_FALSE(RawClient(socketPath()).connected());
  }
  host->stop();
  host = nullptr;
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(HostStart, stopDoesNotWaitForAClientThatDoesNotRead) {
  temp.file(docs("file"), std::string(262'144, 'x'));
  startHost();
  RawClient deaf(socketPath());
  for (int i = 0; i < 20; ++i)
    ASSERT_TRUE(deaf.send("{\"op\":\"read\",\"name\":\"me/Docs/file\"}\n"));
  host->stop();
  SUCCEED();
}

TEST_F(HostStart, aStoppedHostCanBeFollowedByAnotherOnTheSamePath) {
  startHost();
  host->stop();
  startHost();
  EXPECT_TRUE(stat("me/Docs").stat);
}

TEST_F(HostStart, clientsOfAnotherUserAreHungUpOn) {
  if (::geteuid() != 0) GTEST_SKIP() << "only root can be another user";
  startHost();
  ASSERT_EQ(::chmod(temp.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(socketPath().c_str(), 0666), 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, socketPath().c_str());
  const pid_t child = ::fork();
  if (child == 0) {  // system calls only: the other threads do not exist here
    char byte = 0;
    if (::setresuid(65'534, 65'534, 65'534) != 0) ::_exit(2);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) ::_exit(3);
    (void)writeWithoutSignal(fd, "{\"op\":\"shares\"}\n");
    ::_exit(::read(fd, &byte, 1) <= 0 ? 0 : 4);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace tarnel::test
