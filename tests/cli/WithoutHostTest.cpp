// What a user is told where no host answers.
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string_view>

#include "CommandFixture.h"
#include "control/ListeningSocket.h"
#include "support/TreeHost.h"

namespace tarnel::test {
namespace {

const std::vector<std::vector<std::string>>& readers() {
  static const std::vector<std::vector<std::string>> all = {
      {"shares"},    {"ls"},         {"ls", "-l", "me"},   {"ls", "me/Docs"},
      {"stat", "/"}, {"stat", "me"}, {"cat", "me/Docs/a"}, {"ls", "--json"}};
  return all;
}

// Whatever asks a host for something.
const std::vector<std::vector<std::string>>& askers() {
  static const auto all = [] {
    std::vector<std::vector<std::string>> commands = readers();
    commands.insert(commands.end(), {{"share", "N=/tmp"},
                                     {"unshare", "N"},
                                     {"check-host"},
                                     {"check-host", "--json"},
                                     {"get", "me/Docs", "/tmp/none"}});
    return commands;
  }();
  return all;
}

class WithoutHostTest : public CommandFixture {};

TEST_F(WithoutHostTest, everyCommandThatAsksFailsWithOneLineThatSaysWhatToDo) {
  for (const auto& arguments : askers()) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramOutcome outcome = tarnel(arguments);
    expectFailure(outcome, 1, socket());
    EXPECT_THAT(outcome.err, HasSubstr("tarnel host"));
  }
}

TEST_F(WithoutHostTest, theSocketOfADeadHostIsNoHost) {
  startHost();
  host->end(SIGKILL);
  for (const auto& arguments : askers()) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    expectFailure(tarnel(arguments), 1, socket());
  }
}

TEST_F(WithoutHostTest, aSocketPathOf104BytesIsTooLong) {
  const std::string tooLong = "/tmp/" + std::string(99, 'x');
  for (std::vector<std::string> arguments : askers()) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    arguments.insert(arguments.end(), {"--socket", tooLong});
    const ProgramOutcome outcome = tarnel(arguments);
    expectFailure(outcome, 1, tooLong);
    EXPECT_THAT(outcome.err, HasSubstr("too long"));
  }
}

TEST_F(WithoutHostTest, theHostOfAnotherUserIsCalledThat) {
  if (::getuid() != 0) GTEST_SKIP() << "SKIPPED: needs root, to listen as another user";
  ASSERT_EQ(::chmod(sockets.path().c_str(), 0777), 0);
  constexpr uid_t nobody = 65'534;
  ASSERT_EQ(::seteuid(nobody), 0);
  const UniqueFd listening = listeningSocket(socket(), 64);
  ASSERT_EQ(::seteuid(0), 0);
  for (const auto& arguments : askers()) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const ProgramOutcome outcome = tarnel(arguments);
    expectFailure(outcome, 1, socket());
    EXPECT_THAT(outcome.err, HasSubstr("another user's"));
  }
}

TEST_F(WithoutHostTest, aHostThatHangsUpOrTalksNonsenseIsAFailureOfOneLine) {
  TreeHost bad;
  bad.file("me/Docs/a", "hello");
  const auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"--socket", bad.path()});
    return runTarnel(std::move(arguments));
  };
  for (const HostReply& reply : {HostReply().hangUp(), HostReply().answer("nonsense")}) {
    bad.answer({.op = ControlOp::shares}, reply);
    for (const auto& arguments : readers()) {
      SCOPED_TRACE(testing::PrintToString(arguments));
      expectFailure(run(arguments), 1, bad.path());
    }
  }
  bad.answerAsUsual();
  bad.answer({.op = ControlOp::stat, .path = "me/Docs/a"}, HostReply().answer("nonsense"));
  expectFailure(run({"stat", "me/Docs/a"}), 1, "me/Docs/a: EIO");
}

TEST_F(WithoutHostTest, aHostThatHangsUpOnAReadIsAFailure) {
  TreeHost bad;
  bad.file("me/Docs/a", "hello");
  bad.answer({.op = ControlOp::read, .path = "me/Docs/a"}, HostReply().hangUp());
  const ProgramOutcome outcome = runTarnel({"cat", "--socket", bad.path(), "me/Docs/a"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errorLines(), 1U) << outcome.err;
  EXPECT_THAT(outcome.err,
              testing::AnyOf(HasSubstr("me/Docs/a: ENOTCONN"), HasSubstr("me/Docs/a: ETIMEDOUT")));
}

}  // namespace
}  // namespace tarnel::test
