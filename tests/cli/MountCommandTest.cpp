// `tarnel mount` in the background, with and without a host.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "CommandFixture.h"
#include "control/UniqueFd.h"
#include "support/Eventually.h"
#include "support/MountFolder.h"
#include "support/TestMount.h"

namespace tarnel::test {
namespace {

class MountCommandTest : public CommandFixture {
 protected:
  void SetUp() override {
    if (const std::string why = whyNoMounts(); !why.empty()) GTEST_SKIP() << "SKIPPED: " << why;
    share.file("a.txt", "hello\n");
  }
  ProgramOutcome catMounted() { return runProgram({"cat", folder / "me/Docs/a.txt"}); }

  MountFolder folder;
};

TEST_F(MountCommandTest, returnsOnceTheVolumeServesAndLeavesNothingOnTheTerminal) {
  startHost();
  const ProgramOutcome mounted = tarnel({"mount", folder.path()});
  EXPECT_EQ(mounted.status, 0);
  EXPECT_EQ(mounted.out, "");
  EXPECT_EQ(mounted.err, "");
  EXPECT_TRUE(isMounted(folder.path()));
  EXPECT_EQ(catMounted().out, "hello\n");
  const ProgramOutcome unmounted = tarnel({"unmount", folder.path()});
  EXPECT_EQ(unmounted.status, 0);
  EXPECT_EQ(unmounted.out + unmounted.err, "");
  EXPECT_FALSE(isMounted(folder.path()));
}

TEST_F(MountCommandTest, withoutAHostWarnsOnceAndFillsWhenOneComes) {
  const ProgramOutcome mounted =
      tarnel({"mount", "-o", "attr_timeout=0,entry_timeout=0", folder.path()});
  EXPECT_EQ(mounted.status, 0);
  EXPECT_EQ(mounted.errorLines(), 1U) << mounted.err;
  EXPECT_THAT(mounted.err, HasSubstr(socket()));
  EXPECT_NE(catMounted().status, 0);
  startHost();
  EXPECT_EQ(catMounted().out, "hello\n");
}

// A named pipe that is full: whoever prints into it waits until it is drained.
class FullPipe {
 public:
  explicit FullPipe(std::string at) : path(std::move(at)) {
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    ends = UniqueFd(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    while (::write(ends.get(), "x", 1) == 1) {
    }
  }
  void drain() const {
    char bytes[4096];
    while (::read(ends.get(), bytes, sizeof bytes) > 0) {
    }
  }
  const std::string path;

 private:
  UniqueFd ends;
};

TEST_F(MountCommandTest, interruptedBeforeItIsReadyLeavesNoMount) {
  const TempDir files;
  const FullPipe error(files / "error");  // keeps the daemon at its warning that there is no host
  Program program({"sh", "-c", R"(exec "$@" 2>"$0")", error.path, tarnelProgram(), "mount",
                   "--socket", socket(), folder.path()});
  ASSERT_TRUE(eventually([&] { return isMounted(folder.path()); }));
  program.signal(SIGINT);
  EXPECT_EQ(program.wait().status, 128 + SIGINT);
  EXPECT_TRUE(isMounted(folder.path()));
  error.drain();
  EXPECT_TRUE(eventually([&] { return !isMounted(folder.path()); }));
}

TEST_F(MountCommandTest, optionsMayComeBeforeAndAfterTheFolder) {
  startHost();
  const std::vector<std::vector<std::string>> orders = {
      {"mount", "-o", "ro", folder.path(), "--socket", socket()},
      {"mount", folder.path(), "-o", "ro,attr_timeout=3", "-o", "entry_timeout=4"},
      {"mount", "--socket", socket(), "-o", "allow_other", "-o", "default_permissions",
       folder.path()}};
  for (const auto& arguments : orders) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramOutcome mounted = tarnel(arguments);
    EXPECT_EQ(mounted.status, 0) << mounted.err;
    EXPECT_EQ(catMounted().out, "hello\n");
    EXPECT_EQ(tarnel({"unmount", folder.path()}).status, 0);
  }
}

TEST_F(MountCommandTest, relativePathsHoldThoughTheDaemonLeavesTheFolder) {
  startHost();
  const std::string parent = std::filesystem::path(folder.path()).parent_path();
  const std::string relative = std::filesystem::relative(socket(), parent);
  const ProgramOutcome mounted =
      runTarnel({"mount", "--socket", relative, "mnt"}, {.folder = parent});
  EXPECT_EQ(mounted.status, 0) << mounted.err;
  EXPECT_EQ(catMounted().out, "hello\n");
}

TEST_F(MountCommandTest, aSocketThatOnlyARelativePathReachesIsRefusedInTheBackground) {
  const TempDir deep;
  const std::string far = deep / std::string(100, 'd');
  std::filesystem::create_directory(far);
  const TestHost there("/tmp/" + std::filesystem::path(deep.path()).filename().string() + "/s",
                       {"--share", "Docs=" + share.path()});
  std::filesystem::rename(deep / "s", far + "/s");
  const ProgramOutcome mounted =
      runTarnel({"mount", "--socket", "s", folder.path()}, {.folder = far});
  expectFailure(mounted, 1, "too long");
  EXPECT_FALSE(isMounted(folder.path()));
  // Nobody leaves the folder in the foreground.
  Program foreground({tarnelProgram(), "mount", "-f", "--socket", "s", folder.path()},
                     {.folder = far});
  EXPECT_TRUE(eventually([&] { return isMounted(folder.path()); }));
  EXPECT_EQ(catMounted().out, "hello\n");
}

TEST_F(MountCommandTest, theForegroundLogsToStandardErrorAndEndsWithTheMount) {
  startHost();
  Program program({tarnelProgram(), "mount", "-f", "--debug", "--socket", socket(), folder.path()});
  ASSERT_TRUE(eventually([&] { return isMounted(folder.path()); }));
  EXPECT_EQ(catMounted().out, "hello\n");
  EXPECT_TRUE(program.waitForError("readBytes relpath=me/Docs/a.txt"));
  EXPECT_EQ(tarnel({"unmount", folder.path()}).status, 0);
  EXPECT_EQ(program.wait().status, 0);
}

TEST_F(MountCommandTest, aHostDoesNotServeTheVolumeToItself) {
  std::filesystem::create_directory(share / "mnt");
  startHost();
  const TestMount below(socket());
  EXPECT_EQ(runProgram({"ls", below / "me/Docs"}).out, "a.txt\nmnt\n");
}

}  // namespace
}  // namespace tarnel::test
