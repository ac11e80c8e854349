// Help, and wrong usage.
#include "CommandFixture.h"

namespace tarnel::test {
namespace {

const std::vector<std::string>& commands() {
  static const std::vector<std::string> all = {"host",  "share",  "unshare",    "shares", "ls",
                                               "stat",  "cat",    "check-host", "get",
#if defined(__linux__)
                                               "mount", "unmount"
#endif
  };
  return all;
}

TEST(Help, theCommandNamesItsCommandsStatusesAndSocket) {
  const ProgramOutcome help = runTarnel({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_EQ(help.err, "");
  for (const std::string& command : commands()) EXPECT_THAT(help.out, HasSubstr(command));
  EXPECT_THAT(help.out, HasSubstr("TARNEL_SOCKET"));
  EXPECT_THAT(help.out, HasSubstr("Exit status"));
}

TEST(Help, everyCommandHasItsOwn) {
  for (const std::string& command : commands()) {
    const ProgramOutcome help = runTarnel({command, "--help"});
    EXPECT_EQ(help.status, 0) << command;
    EXPECT_EQ(help.err, "") << command;
    EXPECT_THAT(help.out, HasSubstr("--help")) << command;
    EXPECT_THAT(help.out, HasSubstr(command == "unmount" ? "--lazy" : "--socket")) << command;
    EXPECT_THAT(help.out, HasSubstr("Exit status")) << command;
  }
}

TEST(Help, wrongUsageIsOneLineAndStatusTwo) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"frobnicate"},
      {"ls", "--frobnicate"},
      {"ls", "one", "two"},
      {"ls", "--socket", ""},
      {"stat"},
      {"cat"},
      {"host"},
      {"host", "--share", "NoEquals"},
      {"host", "--peer", "bob=/tmp"},
      {"host", "--peer", "bob/Docs="},
      {"host", "--share", "Docs="},
      {"host", "--socket"},
      {"host", "--socket", "a", "--socket", "b", "/tmp"},
      {"host", ""},
      {"share"},
      {"share", "NoEquals"},
      {"share", "=/tmp"},
      {"share", "Name="},
      {"share", "A=/tmp", "B=/tmp"},
      {"share", "--yes", "--force", "A=/tmp"},
      {"unshare"},
      {"unshare", "A", "B"},
      {"unshare", ""},
      {"get"},
      {"get", "me/Docs"},
#if defined(__linux__)
      {"mount"},
      {"mount", "a", "b"},
      {"mount", "--debug", "/tmp"},
      {"mount", ""},
      {"unmount"},
      {"unmount", ""},
      {"mount", "-o", "rw", "/tmp"},
      {"mount", "-o", "ro,frobnicate", "/tmp"},
      {"mount", "-o", "attr_timeout=soon", "/tmp"},
#endif
  };
  for (const auto& arguments : wrong) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    expectFailure(runTarnel(arguments), 2, "");
  }
}

TEST(Help, wrongUsageSaysWhatIsWrongAndWhichHelpToRead) {
  expectFailure(runTarnel({}), 2, "a command is required (see `tarnel --help`)");
  expectFailure(runTarnel({"frobnicate"}), 2, "frobnicate (see `tarnel --help`)");
  expectFailure(runTarnel({"ls", "--frobnicate"}), 2, "--frobnicate (see `tarnel ls --help`)");
  expectFailure(runTarnel({"ls", "--socket", ""}), 2, "--socket: cannot be empty");
}

}  // namespace
}  // namespace tarnel::test
