// A program that looks closely at its files is content with the mount.
#include "MountFixture.h"

namespace tarnel::test {
namespace {

class GitTest : public MountFixture {
 protected:
  void SetUp() override {
    MountFixture::SetUp();
    if (IsSkipped()) return;
    if (runProgram({"sh", "-c", "command -v git"}).status != 0) GTEST_SKIP() << "SKIPPED: no git";
  }
  ProgramOutcome git(const std::string& folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"git", "-c", "safe.directory=*", "-C", folder});
    return runProgram(arguments, {.environment = {{"GIT_OPTIONAL_LOCKS", "0"},
                                                  {"GIT_CONFIG_NOSYSTEM", "1"},
                                                  {"GIT_CONFIG_GLOBAL", "/dev/null"},
                                                  {"GIT_AUTHOR_NAME", "A"},
                                                  {"GIT_AUTHOR_EMAIL", "a@example.org"},
                                                  {"GIT_COMMITTER_NAME", "A"},
                                                  {"GIT_COMMITTER_EMAIL", "a@example.org"}}});
  }
  void makeRepository(const std::string& folder) {
    for (int i = 0; i < 40; ++i) {
      const std::string number = std::to_string(i);
      share.file("work/src/" + number + ".txt", someBytes(static_cast<std::size_t>(i) * 999));
    }
    share.file("work/naïve name.txt", "text\n");
    ASSERT_EQ(git(folder, {"init", "-q"}).status, 0);
    ASSERT_EQ(git(folder, {"add", "."}).status, 0);
    ASSERT_EQ(git(folder, {"commit", "-q", "-m", "one"}).status, 0);
    ASSERT_EQ(git(folder, {"gc", "-q"}).status, 0);
    share.file("work/src/1.txt", "changed\n");
    ASSERT_EQ(git(folder, {"commit", "-q", "-a", "-m", "two"}).status, 0);
  }
};

TEST_F(GitTest, aRepositoryIsWholeAndClean) {
  makeRepository(share / "work");
  mountShare();
  const ProgramOutcome checked = git(at("work"), {"fsck", "--full", "--strict"});
  EXPECT_EQ(checked.status, 0) << checked.err;
  const ProgramOutcome status = git(at("work"), {"status", "--porcelain"});
  EXPECT_EQ(status.status, 0) << status.err;
  EXPECT_EQ(status.out, "");
  EXPECT_EQ(git(at("work"), {"log", "--format=%s"}).out, "two\none\n");
}

TEST_F(GitTest, aChangeOfTheWorkingTreeIsSeen) {
  makeRepository(share / "work");
  share.file("work/src/2.txt", "other");
  mountShare();
  EXPECT_EQ(git(at("work"), {"status", "--porcelain"}).out, " M src/2.txt\n");
}

}  // namespace
}  // namespace tarnel::test
