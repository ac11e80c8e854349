// What a share does not show of its folder, whichever way it is asked for.
#include "SharingFixture.h"

namespace tarnel::test {
namespace {

class HiddenSecretsTest : public SharingTest {};

TEST_F(HiddenSecretsTest, chosenSecretsAreSharedAfterAll) {
  temp.file("home/.ssh/id_rsa", "key");
  temp.file("home/.env", "env");
  temp.file("home/b/.env", "other");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  expectRefused(owner->ask({.op = ControlOp::confirm, .name = "Home", .includeSecrets = {{"b"}}}),
                "includeSecrets names a path that the review does not");
  EXPECT_EQ(
      owner->ask({.op = ControlOp::confirm, .name = "Home", .includeSecrets = {{".ssh", ".env"}}}),
      ControlResponse::ok());
  EXPECT_EQ(names("me/Home"), (Names{".env", ".ssh", "b"}));
  EXPECT_EQ(names("me/Home/.ssh"), Names{"id_rsa"});
  EXPECT_EQ(bytes("me/Home/.ssh/id_rsa"), "key");
  EXPECT_EQ(bytes("me/Home/.env"), "env");
  EXPECT_EQ(names("me/Home/b"), Names{});
  expectMissing("me/Home/b/.env");
}

TEST_F(HiddenSecretsTest, yesSharesWithoutTheSecretsAndTellsWhatIsLeftOut) {
  temp.file("home/.env");
  temp.file("home/text", "words");
  const auto answer = share("Home", "home", SharePolicy::yes);
  EXPECT_EQ(answer.status, Status::ok);
  ASSERT_TRUE(answer.review);
  EXPECT_EQ(answer.review->secrets, Names{".env"});
  EXPECT_EQ(names("me/Home"), Names{"text"});
  expectMissing("me/Home/.env");
}

TEST_F(HiddenSecretsTest, yesOnACleanFolderHasNothingToTell) {
  EXPECT_EQ(share("Clean", "docs", SharePolicy::yes), ControlResponse::ok());
}

TEST_F(HiddenSecretsTest, forceSharesEverything) {
  temp.file("home/.ssh/id_rsa", "key");
  temp.file("home/.env", "env");
  EXPECT_EQ(share("Home", "home", SharePolicy::force), ControlResponse::ok());
  EXPECT_EQ(names("me/Home"), (Names{".env", ".ssh"}));
  EXPECT_EQ(bytes("me/Home/.ssh/id_rsa"), "key");
}

TEST_F(HiddenSecretsTest, linksToHiddenSecretsAreMissing) {
  temp.file("home/.env", "env");
  temp.file("home/.ssh/id_rsa", "key");
  temp.link("home/innocent", ".env");
  temp.link("home/folder", ".ssh");
  temp.link("home/a/deep", "../.ssh/id_rsa");
  temp.link("home/twice", "a/deep");
  temp.link("home/around", ".ssh/../text");
  temp.file("home/text", "words");
  temp.link("home/good", "text");
  EXPECT_EQ(share("Home", "home", SharePolicy::yes).status, Status::ok);
  EXPECT_EQ(names("me/Home"), (Names{"a", "good", "text"}));
  EXPECT_EQ(names("me/Home/a"), Names{});
  for (const auto* link : {"innocent", "folder", "folder/id_rsa", "a/deep", "twice", "around"}) {
    expectMissing(std::string("me/Home/") + link);
  }
  EXPECT_EQ(bytes("me/Home/good"), "words");
}

TEST_F(HiddenSecretsTest, secretsBehindALinkToAFolderAreHiddenAndChosenOnesShown) {
  temp.file("home/real/.env", "env");
  temp.file("home/real/id_rsa", "key");
  temp.link("home/link", "real");
  EXPECT_EQ(share("Home", "home").status, Status::review);
  EXPECT_EQ(
      owner->ask({.op = ControlOp::confirm, .name = "Home", .includeSecrets = {{"real/.env"}}}),
      ControlResponse::ok());
  EXPECT_EQ(names("me/Home/link"), Names{".env"});
  EXPECT_EQ(bytes("me/Home/link/.env"), "env");
  expectMissing("me/Home/link/id_rsa");
}

TEST_F(HiddenSecretsTest, aSecretThatAppearsLaterIsHiddenToo) {
  temp.folder("home/a");
  EXPECT_EQ(share("Home", "home"), ControlResponse::ok());
  temp.file("home/a/.env");
  EXPECT_EQ(names("me/Home/a"), Names{});
  expectMissing("me/Home/a/.env");
}

TEST_F(HiddenSecretsTest, aNameWithANewCaseHidesToo) {
  temp.file("home/.ENV");
  temp.file("home/Server.PEM");
  EXPECT_EQ(share("Home", "home", SharePolicy::yes).status, Status::ok);
  EXPECT_EQ(names("me/Home"), Names{});
  expectMissing("me/Home/.ENV");
  expectMissing("me/Home/Server.PEM");
}

TEST_F(HiddenSecretsTest, aFolderThatIsASecretItselfIsSharedOnlyWhenThatWasChosen) {
  temp.file("home/.ssh/config", "hosts");
  temp.folder("home/.ssh/sub");
  for (const auto* folder : {"home/.ssh", "home/.ssh/sub"}) {
    const auto answer = share("Ssh", folder);
    EXPECT_EQ(answer.status, Status::review);
    EXPECT_EQ(answer.review->secrets, Names{"."});
    EXPECT_EQ(answer.review->excludedCount, 1);
    expectRefused(owner->confirm("Ssh"),
                  "the folder itself is a likely secret: nothing is left without it");
    expectRefused(share("Ssh", folder, SharePolicy::yes),
                  "the folder itself is a likely secret: nothing is left without it");
  }
  (void)share("Ssh", "home/.ssh");
  EXPECT_EQ(owner->ask({.op = ControlOp::confirm, .name = "Ssh", .includeSecrets = {{"."}}}),
            ControlResponse::ok());
  EXPECT_EQ(bytes("me/Ssh/config"), "hosts");
}

TEST_F(HiddenSecretsTest, aLinkToAFolderOfSecretsIsOneToo) {
  temp.file("home/.ssh/config");
  temp.link("innocent", "home/.ssh");
  EXPECT_EQ(share("Ssh", "innocent").status, Status::review);
}

TEST_F(HiddenSecretsTest, sharesOfTheBeginningShowEverything) {
  temp.file(docs(".env"), "env");
  EXPECT_EQ(bytes("me/Docs/.env"), "env");
}

}  // namespace
}  // namespace tarnel::test
