// shares, ls, stat and cat.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>

#include "CommandFixture.h"

namespace tarnel::test {
namespace {

class ReadCommandsTest : public CommandFixture {
 protected:
  ReadCommandsTest() {
    share.file("a.txt", "hello\n");
    share.file("tool", "#!");
    share.folder("sub");
    setFile("a.txt", 0640, 1'700'000'000);
    setFile("tool", 0755, 86'400);
    setFile("sub", 0750, 1'600'000'000);
    startHost();
  }
  void setFile(const std::string& relative, mode_t mode, std::int64_t seconds) {
    ASSERT_EQ(::chmod((share / relative).c_str(), mode), 0);
    const timespec times[2] = {{.tv_sec = seconds, .tv_nsec = 0},
                               {.tv_sec = seconds, .tv_nsec = 5'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (share / relative).c_str(), times, 0), 0);
  }
  // A number of standard output's lines as the shell line leaves them on a terminal.
  std::string onTerminal(const std::string& line) {
    return shell("script -qec '" + line + "' /dev/null").out;
  }
};

TEST_F(ReadCommandsTest, sharesAreListedWithTheirPeers) {
  const ProgramOutcome shares = tarnel({"shares"});
  EXPECT_EQ(shares.status, 0);
  EXPECT_EQ(shares.out, "me/Docs\n");
  EXPECT_EQ(tarnel({"shares", "--json"}).out, R"({"peer":"me","name":"Docs","isRemote":false})"
                                              "\n");
}

TEST_F(ReadCommandsTest, everyLevelIsListed) {
  EXPECT_EQ(tarnel({"ls"}).out, "me\n");
  EXPECT_EQ(tarnel({"ls", "/"}).out, "me\n");
  EXPECT_EQ(tarnel({"ls", "me"}).out, "Docs\n");
  EXPECT_EQ(tarnel({"ls", "/me/Docs/"}).out, "a.txt\nsub\ntool\n");
  EXPECT_EQ(tarnel({"ls", "me/Docs/sub"}).out, "");
  EXPECT_EQ(tarnel({"ls", "me//Docs/a.txt"}).out, "a.txt\n");
}

TEST_F(ReadCommandsTest, theLongFormShowsModesSizesAndTimes) {
  const ProgramOutcome listed = runTarnel(
      {"ls", "-l", "me/Docs"}, {.environment = {{"TARNEL_SOCKET", socket()}, {"TZ", "UTC"}}});
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_THAT(listed.out,
              testing::ContainsRegex("-r--r----- 1 [^ ]+ [^ ]+ +6 2023-11-14 22:13 a.txt\n"
                                     "dr-xr-x--- [0-9]+ [^ ]+ [^ ]+ +4096 2020-09-13 12:26 sub\n"
                                     "-r-xr-xr-x 1 [^ ]+ [^ ]+ +2 1970-01-02 00:00 tool\n"));
}

TEST_F(ReadCommandsTest, jsonHasTheKeysOfTheProtocol) {
  const std::string line = tarnel({"stat", "--json", "me/Docs/a.txt"}).out;
  EXPECT_THAT(line, StartsWith(R"({"name":"a.txt","size":6,"mtimeMs":1700000000005,)"
                               R"("isDirectory":false,"mode":288,"nlink":1,"owner":")"));
  EXPECT_THAT(line, HasSubstr(R"(","group":")"));
  EXPECT_THAT(tarnel({"ls", "--json", "me/Docs"}).out, StartsWith(line));
}

TEST_F(ReadCommandsTest, statShowsFilesAndFoldersOfEveryLevel) {
  const ProgramOutcome file = tarnel({"stat", "me/Docs/a.txt"});
  EXPECT_EQ(file.status, 0);
  EXPECT_THAT(file.out, StartsWith("name   a.txt\ntype   file\nsize   6\nmode   -r--r-----\n"));
  for (const char* path : {"/", "me", "me/Docs", "me/Docs/sub"}) {
    const ProgramOutcome folder = tarnel({"stat", path});
    EXPECT_EQ(folder.status, 0) << path;
    EXPECT_THAT(folder.out, HasSubstr("type   directory\nsize   4096\n")) << path;
  }
}

TEST_F(ReadCommandsTest, catJoinsFilesByteForByte) {
  std::string large;
  for (int i = 0; i < 300'000; ++i) large += static_cast<char>(i * 7 + i / 256);
  share.file("large", large);
  const ProgramOutcome both = tarnel({"cat", "me/Docs/large", "me/Docs/a.txt"});
  EXPECT_EQ(both.status, 0);
  EXPECT_TRUE(both.out == large + "hello\n");
  EXPECT_EQ(both.err, "");
}

TEST_F(ReadCommandsTest, catGoesOnAfterAFileItCannotRead) {
  const ProgramOutcome mixed = tarnel({"cat", "me/Docs/no", "me/Docs/a.txt", "me/Docs/sub"});
  EXPECT_EQ(mixed.status, 1);
  EXPECT_EQ(mixed.out, "hello\n");
  EXPECT_EQ(mixed.err, "tarnel: me/Docs/no: ENOENT\ntarnel: me/Docs/sub: EISDIR\n");
}

TEST_F(ReadCommandsTest, failuresNameThePathAndTheErrno) {
  expectFailure(tarnel({"ls", "me/Docs/no"}), 1, "me/Docs/no: ENOENT");
  expectFailure(tarnel({"stat", "me/No"}), 1, "me/No: ENOENT");
  expectFailure(tarnel({"stat", "you"}), 1, "you: ENOENT");
  expectFailure(tarnel({"stat", "me/Docs/.."}), 1, "me/Docs/..: ENOENT");
  expectFailure(tarnel({"cat", "me/Docs"}), 1, "me/Docs: EISDIR");
  expectFailure(tarnel({"cat", "/"}), 1, "/: EISDIR");
  expectFailure(tarnel({"stat", "me/Docs/a.txt/b"}), 1, "me/Docs/a.txt/b: ENOTDIR");
  expectFailure(tarnel({"stat", "a\nb"}), 1, "a\\x0ab: ENOENT");
  expectFailure(tarnel({"stat", "a\xff"}), 1, "a\\xff: ENOENT");
}

TEST_F(ReadCommandsTest, aReaderThatHasEnoughEndsCatQuietly) {
  share.file("large", std::string(4'000'000, 'a'));
  const ProgramOutcome piped =
      shell("{ \"$T\" cat me/Docs/large me/Docs/no; echo status $? >&2; } | head -c 3");
  EXPECT_EQ(piped.out, "aaa");
  EXPECT_EQ(piped.err, "status 0\n");
}

TEST_F(ReadCommandsTest, outputThatCannotBeWrittenIsAFailure) {
  for (const char* command : {"cat me/Docs/a.txt", "ls", "stat /", "shares", "--help"}) {
    SCOPED_TRACE(command);
    const std::string run = "\"$T\" " + std::string(command);
    expectFailure(shell(run + " > /dev/full"), 1, "cannot write to standard output (ENOSPC)");
    expectFailure(shell(run + " >&-"), 1, "cannot write to standard output (EBADF)");
  }
}

TEST_F(ReadCommandsTest, controlCharactersAreEscapedOnATerminalAlone) {
  if (shell("command -v script").status != 0) GTEST_SKIP() << "SKIPPED: no script(1)";
  share.file("odd/a\x1b[31mb\n\x7f\tc");
  EXPECT_EQ(tarnel({"ls", "me/Docs/odd"}).out, "a\x1b[31mb\n\x7f\tc\n");
  EXPECT_EQ(onTerminal("\"$T\" ls me/Docs/odd"), "a\\x1b[31mb\\x0a\\x7f\\x09c\r\n");
  EXPECT_THAT(onTerminal("\"$T\" ls -l me/Docs/odd"),
              HasSubstr(" a\\x1b[31mb\\x0a\\x7f\\x09c\r\n"));
}

TEST_F(ReadCommandsTest, namesInOtherScriptsStayReadableOnATerminal) {
  if (shell("command -v script").status != 0) GTEST_SKIP() << "SKIPPED: no script(1)";
  share.file("scripts/日本語 naïve");
  EXPECT_EQ(onTerminal("\"$T\" ls me/Docs/scripts"), "日本語 naïve\r\n");
}

TEST_F(ReadCommandsTest, theSocketIsTheOptionsElseTheEnvironments) {
  const TempDir other;
  const auto with = [](const std::string& environment, std::vector<std::string> arguments) {
    return runTarnel(std::move(arguments), {.environment = {{"TARNEL_SOCKET", environment}}});
  };
  EXPECT_EQ(with(socket(), {"ls"}).out, "me\n");
  EXPECT_EQ(with(other / "s", {"ls", "--socket", socket()}).out, "me\n");
  expectFailure(with(socket(), {"ls", "--socket", other / "s"}), 1, other / "s");
  EXPECT_THAT(with("", {"ls", "--help"}).out, HasSubstr("/tmp/"));
}

}  // namespace
}  // namespace tarnel::test
