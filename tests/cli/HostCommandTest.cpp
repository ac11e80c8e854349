// `tarnel host`.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "CommandFixture.h"
#include "host/RawClient.h"
#include "support/Eventually.h"
#include "support/Sanitized.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

namespace fs = std::filesystem;

class HostCommandTest : public CommandFixture {
 protected:
  // `tarnel host` that is expected to refuse.
  ProgramOutcome hostFails(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "host");
    return tarnel(std::move(arguments));
  }
};

TEST_F(HostCommandTest, saysInOneLineThatItIsReady) {
  Program program({tarnelProgram(), "host", "--socket", socket(), share.path()});
  ASSERT_TRUE(program.waitForOutput("\n"));
  program.signal(SIGTERM);
  const ProgramOutcome outcome = program.wait();
  EXPECT_EQ(outcome.out, "tarnel host: sharing 1 folder on " + socket() + "\n");
  EXPECT_EQ(outcome.err, "");
}

TEST_F(HostCommandTest, servesAlsoWhenItCannotSayThatItIsReady) {
  Program program({"sh", "-c", R"(exec "$T" host --socket "$S" "$D" > /dev/full)"},
                  {.environment = {{"T", tarnelProgram()}, {"S", socket()}, {"D", share.path()}}});
  ASSERT_TRUE(program.waitForError("cannot write to standard output (ENOSPC)\n"));
  EXPECT_EQ(tarnel({"ls"}).status, 0);
  program.signal(SIGTERM);
  EXPECT_EQ(program.wait().status, 0);
}

TEST_F(HostCommandTest, everySignalEndsItAndItsSocketGoes) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    startHost();
    struct stat status{};
    ASSERT_EQ(::lstat(socket().c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(host->end(signal), 0);
    EXPECT_FALSE(fs::exists(socket()));
  }
}

#if defined(__linux__)
TEST_F(HostCommandTest, clientsThatTakeAllItsMemoryAreHungUpOnAndDoNotEndIt) {
  if (builtWithSanitizer) GTEST_SKIP() << "a sanitizer takes more than any limit leaves";
  Program program({"sh", "-c", "ulimit -v 300000; exec \"$0\" host --socket \"$1\" --share Docs=/",
                   tarnelProgram(), socket()});
  ASSERT_TRUE(program.waitForOutput("tarnel host: sharing"));
  const std::string endless(15'000'000, 'x');
  std::vector<RawClient> clients;
  bool isHungUpOn = false;
  for (int i = 0; i < 20 && !isHungUpOn; ++i) {
    clients.emplace_back(socket());
    isHungUpOn = !clients.back().send(endless);
  }
  EXPECT_TRUE(isHungUpOn);
  clients.clear();
  EXPECT_TRUE(eventually([&] { return tarnel({"stat", "me/Docs"}).status == 0; }));
  EXPECT_FALSE(program.hasEnded());
}
#endif

TEST_F(HostCommandTest, foldersAreSharedUnderEachFormOfName) {
  share.file("Pictures/p", "1");
  share.file("Music/m", "2");
  share.file("Films/f", "3");
  const TestHost own(socket(),
                     {"--share", "Docs=" + share.path(), "--peer", "bob/Films=" + share / "Films",
                      share / "Pictures", share / "Music/"});
  EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\nme/Pictures\nme/Music\nbob/Films\tremote\n");
  EXPECT_EQ(tarnel({"ls", "bob/Films"}).out, "f\n");
  EXPECT_EQ(tarnel({"cat", "me/Pictures/p", "me/Music/m"}).out, "12");
}

TEST_F(HostCommandTest, optionsAndFoldersMayComeInAnyOrder) {
  share.folder("Music");
  share.folder("Films");
  Program program({tarnelProgram(), "host", "--share", "Docs=" + share.path(), share / "Music",
                   "--peer", "bob/x=" + share.path(), share / "Films", "--socket", socket()});
  ASSERT_TRUE(program.waitForOutput("sharing 4 folders"));
}

TEST_F(HostCommandTest, theCurrentFolderHasItsRealName) {
  share.folder("Pictures");
  Program program({tarnelProgram(), "host", "--socket", socket(), "."},
                  {.folder = share / "Pictures"});
  ASSERT_TRUE(program.waitForOutput("sharing"));
  EXPECT_EQ(tarnel({"shares"}).out, "me/Pictures\n");
}

TEST_F(HostCommandTest, aMissingFolderIsRefusedByName) {
  expectFailure(hostFails({share / "missing"}), 1, share / "missing");
  expectFailure(hostFails({"--share", "Docs=" + share / "missing"}), 1, share / "missing");
  share.file("file");
  expectFailure(hostFails({share / "file"}), 1, share / "file");
  EXPECT_FALSE(fs::exists(socket()));
}

TEST_F(HostCommandTest, aFolderThatItsUserMayNotReadIsRefused) {
  if (::getuid() != 0) GTEST_SKIP() << "SKIPPED: needs root, to be another user";
  share.folder("closed");
  fs::permissions(share.path(), fs::perms(0755));
  fs::permissions(sockets.path(), fs::perms(0755));
  fs::copy_file(tarnelProgram(), sockets / "t");  // where that user finds it
  for (const int mode : {0700, 0711, 0744}) {
    fs::permissions(share / "closed", fs::perms(mode));
    const ProgramOutcome refused =
        runProgram({"setpriv", "--reuid", "65534", "--regid", "65534", "--clear-groups",
                    sockets / "t", "host", "--socket", sockets / "s", share / "closed"});
    expectFailure(refused, 1, share / "closed: permission denied");
  }
}

TEST_F(HostCommandTest, aNameThatNoVolumeShowsIsRefused) {
  for (const char* name : {"", ".", "..", "a/b"}) {
    const auto outcome = hostFails({"--share", std::string(name) + "=" + share.path()});
    expectFailure(outcome, 1, "name");
  }
  expectFailure(hostFails({"--share", "A=" + share.path(), "--share", "A=" + share.path()}), 1,
                "same name");
}

TEST_F(HostCommandTest, aSocketOnWhichSomebodyAnswersIsLeftAlone) {
  startHost();
  expectFailure(hostFails({share.path()}), 1, socket());
  EXPECT_EQ(tarnel({"shares"}).status, 0);
}

TEST_F(HostCommandTest, whatIsNoSocketIsNotReplaced) {
  const TempDir other;
  fs::create_directory(other / "d");
  expectFailure(hostFails({"--socket", other / "d", share.path()}), 1, other / "d");
  share.file("precious", "data");
  expectFailure(hostFails({"--socket", share / "precious", share.path()}), 1, share / "precious");
  EXPECT_EQ(fs::file_size(share / "precious"), 4U);
}

TEST_F(HostCommandTest, aDeadHostsSocketIsReplaced) {
  startHost();
  host->end(SIGKILL);
  ASSERT_TRUE(fs::exists(socket()));
  startHost();
  EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\n");
}

TEST_F(HostCommandTest, aSocketPathThatIsTooLongOrWithoutFolderIsRefused) {
  const std::string tooLong = "/tmp/" + std::string(99, 'x');
  ASSERT_EQ(tooLong.size(), 104U);
  expectFailure(hostFails({"--socket", tooLong, share.path()}), 1, tooLong);
  expectFailure(hostFails({"--socket", share / "no/s", share.path()}), 1, share / "no/s");
}

}  // namespace
}  // namespace tarnel::test
