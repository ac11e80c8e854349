// `tarnel share` and `tarnel unshare` where nobody can be asked.
#include <filesystem>

#include "CommandFixture.h"

namespace tarnel::test {
namespace {

class ShareCommandTest : public CommandFixture {
 protected:
  ShareCommandTest() { startHost(); }

  FileTree home;
};

TEST_F(ShareCommandTest, aFolderIsSharedAndWithdrawn) {
  home.file("song", "la");
  const ProgramOutcome added = tarnel({"share", "Music=" + home.path()});
  EXPECT_EQ(added.status, 0) << added.err;
  EXPECT_EQ(added.out, "sharing " + home.path() + " as me/Music\n");
  EXPECT_EQ(added.err, "");
  EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\nme/Music\n");
  EXPECT_EQ(tarnel({"cat", "me/Music/song"}).out, "la");
  const ProgramOutcome withdrawn = tarnel({"unshare", "Music"});
  EXPECT_EQ(withdrawn.status, 0) << withdrawn.err;
  EXPECT_EQ(withdrawn.out, "no longer sharing me/Music\n");
  EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\n");
  expectFailure(tarnel({"cat", "me/Music/song"}), 1, "ENOENT");
}

TEST_F(ShareCommandTest, aShareIsWithdrawnByTheNameThatIsListed) {
  EXPECT_EQ(tarnel({"unshare", "me/Docs"}).out, "no longer sharing me/Docs\n");
  EXPECT_EQ(tarnel({"shares"}).out, "");
}

TEST_F(ShareCommandTest, aRelativeFolderIsTheUsersOwn) {
  home.file("a/f", "1");
  const ProgramOutcome added = runTarnel(
      {"share", "A=a"}, {.environment = {{"TARNEL_SOCKET", socket()}}, .folder = home.path()});
  EXPECT_EQ(added.out, "sharing " + home / "a" + " as me/A\n");
  EXPECT_EQ(tarnel({"cat", "me/A/f"}).out, "1");
}

TEST_F(ShareCommandTest, aReviewThatNobodyCanAnswerIsRefused) {
  home.file(".env");
  home.file("a/id_rsa");
  home.file("b/x.pem");
  home.file("c\n.key");
  const ProgramOutcome refused = tarnel({"share", "Home=" + home.path()});
  expectFailure(refused, 1, "cannot share " + home.path() + " as Home");
  EXPECT_THAT(refused.err, HasSubstr("4 likely secrets (.env, a/id_rsa, b/x.pem, ...)"));
  EXPECT_THAT(refused.err, HasSubstr("--yes"));
  EXPECT_THAT(refused.err, HasSubstr("--force"));
  EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\n");
}

TEST_F(ShareCommandTest, namesOfSecretsCannotControlATerminal) {
  home.file("\x1b[2J.key");
  const ProgramOutcome refused = tarnel({"share", "Home=" + home.path()});
  expectFailure(refused, 1, "1 likely secret (\\x1b[2J.key)");
}

TEST_F(ShareCommandTest, yesLeavesSecretsOut) {
  home.file(".env", "env");
  home.file("text", "words");
  const ProgramOutcome added = tarnel({"share", "--yes", "Home=" + home.path()});
  EXPECT_EQ(added.out, "sharing " + home.path() + " as me/Home, without 1 likely secret\n");
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(tarnel({"ls", "me/Home"}).out, "text\n");
  expectFailure(tarnel({"cat", "me/Home/.env"}), 1, "ENOENT");
}

TEST_F(ShareCommandTest, forceSharesEverything) {
  home.file(".env", "env");
  const ProgramOutcome added = tarnel({"share", "Home=" + home.path(), "--force"});
  EXPECT_EQ(added.out, "sharing " + home.path() + " as me/Home\n");
  EXPECT_EQ(tarnel({"cat", "me/Home/.env"}).out, "env");
}

TEST_F(ShareCommandTest, aFolderThatIsASecretItselfNeedsForce) {
  home.file(".ssh/config", "hosts");
  const std::string offer = "Ssh=" + home / ".ssh";
  expectFailure(tarnel({"share", offer}), 1, "use --force");
  expectFailure(tarnel({"share", "--yes", offer}), 1, "likely secret");
  EXPECT_EQ(tarnel({"share", "--force", offer}).status, 0);
  EXPECT_EQ(tarnel({"cat", "me/Ssh/config"}).out, "hosts");
}

TEST_F(ShareCommandTest, jsonIsOneObjectAndNeverAsks) {
  home.file(".env");
  const std::string folder = home.path();
  std::string escaped;
  for (const char c : folder) escaped += c == '/' ? "\\/" : std::string(1, c);
  const std::string review = R"("review":{"sharedCount":0,"excludedCount":1,"secrets":[".env"],)"
                             R"("caps":[],"isRemote":false}})";
  const std::string about = R"(,"name":"Home","folder":")" + escaped + R"(",)";
  const ProgramOutcome refused = tarnel({"share", "--json", "Home=" + folder});
  EXPECT_EQ(refused.status, 1);
  EXPECT_EQ(refused.out, R"({"status":"review")" + about + review + "\n");
  EXPECT_EQ(refused.errorLines(), 1U);
  const ProgramOutcome added = tarnel({"share", "--json", "--yes", "Home=" + folder});
  EXPECT_EQ(added.status, 0);
  EXPECT_EQ(added.out, R"({"status":"ok")" + about + review + "\n");
  EXPECT_EQ(tarnel({"unshare", "--json", "Home"}).out, R"({"status":"ok","name":"Home"})"
                                                       "\n");
}

TEST_F(ShareCommandTest, failuresAreOneLine) {
  home.file("file");
  expectFailure(tarnel({"share", "Docs=" + home.path()}), 1, "another share has this name");
  expectFailure(tarnel({"share", "me/Home=" + home.path()}), 1, "not a usable share name");
  expectFailure(tarnel({"share", "..=" + home.path()}), 1, "not a usable share name");
  expectFailure(tarnel({"share", "Home=" + home / "missing"}), 1, home / "missing");
  expectFailure(tarnel({"share", "Home=" + home / "file"}), 1, "not a directory");
  expectFailure(tarnel({"share", "H\xff=" + home.path()}), 1, "");
  expectFailure(tarnel({"unshare", "Music"}), 1, "Music: no such share");
  expectFailure(tarnel({"unshare", "bob/Docs"}), 1, "bob/Docs: no such share");
}

TEST_F(ShareCommandTest, outputThatCannotBeWrittenIsAFailure) {
  const ProgramOutcome full = shell("\"$T\" share Home=" + home.path() + " > /dev/full");
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.err, HasSubstr("standard output"));
}

}  // namespace
}  // namespace tarnel::test
