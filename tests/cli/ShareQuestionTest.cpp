// `tarnel share` at a terminal: the review is shown and asked about.
#include <signal.h>

#include "CommandFixture.h"
#include "support/Terminal.h"

namespace tarnel::test {
namespace {

class ShareQuestionTest : public CommandFixture {
 protected:
  ShareQuestionTest() { startHost(); }

  // Runs the command at the terminal and types the answer to its question.
  ProgramOutcome share(const std::string& folder, std::string_view answer) {
    Program program({tarnelProgram(), "share", "Home=" + folder},
                    {.environment = {{"TARNEL_SOCKET", socket()}}, .terminal = terminal.path()});
    EXPECT_TRUE(terminal.waitFor("[n] ")) << terminal.shown();
    terminal.type(answer);
    return program.wait();
  }

  FileTree home;
  Terminal terminal;
};

TEST_F(ShareQuestionTest, theReviewIsShownAndYesLeavesTheSecretsOut) {
  home.file(".env");
  home.file("a/id_rsa");
  home.file("a/text", "words");
  const ProgramOutcome added = share(home.path(), "y\n");
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(added.out, "sharing " + home.path() + " as me/Home, without 2 likely secrets\n");
  EXPECT_THAT(terminal.shown(),
              HasSubstr(home.path() + " holds 2 likely secrets:\r\n  .env\r\n  a/id_rsa\r\n"));
  EXPECT_THAT(terminal.shown(),
              HasSubstr("Without likely secrets, 2 files and folders are shared as me/Home.\r\n"));
  EXPECT_EQ(tarnel({"ls", "me/Home"}).out, "a\n");
  EXPECT_EQ(tarnel({"ls", "me/Home/a"}).out, "text\n");
}

TEST_F(ShareQuestionTest, everythingIsSharedWhenThatIsTheAnswer) {
  home.file(".env", "env");
  const ProgramOutcome added = share(home.path(), "e\n");
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(added.out, "sharing " + home.path() + " as me/Home\n");
  EXPECT_EQ(tarnel({"cat", "me/Home/.env"}).out, "env");
}

TEST_F(ShareQuestionTest, anyOtherAnswerSharesNothing) {
  home.file(".env");
  for (const std::string_view answer : {"n\n", "\n", "\x04", "what\n", "yesterday\n"}) {
    const ProgramOutcome refused = share(home.path(), answer);
    EXPECT_EQ(refused.status, 1) << answer;
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\n");
    EXPECT_TRUE(terminal.waitFor("tarnel: nothing is shared as Home\r\n"));
    terminal.clear();
  }
}

TEST_F(ShareQuestionTest, namesCannotControlTheTerminal) {
  home.file("a\x1b[2J\n.env.key");
  (void)share(home.path(), "n\n");
  EXPECT_THAT(terminal.shown(), HasSubstr("  a\\x1b[2J\\x0a.env.key\r\n"));
  EXPECT_THAT(terminal.shown(), Not(HasSubstr("\x1b")));
}

TEST_F(ShareQuestionTest, aLongReviewIsCut) {
  for (int i = 0; i < 50; ++i) home.file(std::to_string(100 + i) + ".key");
  (void)share(home.path(), "n\n");
  EXPECT_THAT(terminal.shown(), HasSubstr("  139.key\r\n  and 10 more\r\n"));
}

TEST_F(ShareQuestionTest, aFolderThatIsASecretItselfIsSharedWholeOrNotAtAll) {
  home.file(".ssh/config", "hosts");
  EXPECT_EQ(share(home / ".ssh", "y\n").status, 1);
  EXPECT_THAT(terminal.shown(), HasSubstr(home / ".ssh" + " is a likely secret itself.\r\n"));
  terminal.clear();
  EXPECT_EQ(share(home / ".ssh", "e\n").status, 0);
  EXPECT_EQ(tarnel({"cat", "me/Home/config"}).out, "hosts");
}

TEST_F(ShareQuestionTest, nothingIsAskedWithoutAReason) {
  home.file("text");
  const ProgramOutcome added =
      runTarnel({"share", "Home=" + home.path()},
                {.environment = {{"TARNEL_SOCKET", socket()}}, .terminal = terminal.path()});
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(terminal.shown(), "");
}

TEST_F(ShareQuestionTest, aHostThatGoesBeforeTheAnswerIsAFailure) {
  home.file(".env");
  Program program({tarnelProgram(), "share", "Home=" + home.path()},
                  {.environment = {{"TARNEL_SOCKET", socket()}}, .terminal = terminal.path()});
  ASSERT_TRUE(terminal.waitFor("[n] "));
  host->end(SIGKILL);
  terminal.type("y\n");
  EXPECT_EQ(program.wait().status, 1);
  EXPECT_TRUE(terminal.waitFor("tarnel: no host answers on " + socket()));
}

}  // namespace
}  // namespace tarnel::test
