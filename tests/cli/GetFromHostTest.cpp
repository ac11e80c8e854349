// Copies from the reference host, end to end.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "CommandFixture.h"

namespace tarnel::test {
namespace {

class GetFromHostTest : public CommandFixture {
 protected:
  // Names, kinds, modes, times and contents of everything below a folder.
  [[nodiscard]] static std::map<std::string, std::string> below(const std::string& folder) {
    std::map<std::string, std::string> all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      struct stat status{};
      EXPECT_EQ(::lstat(entry.path().c_str(), &status), 0);
      std::string text =
          std::to_string(status.st_mode) + " " +
          std::to_string(status.st_mtim.tv_sec * 1000 + status.st_mtim.tv_nsec / 1'000'000);
      if (S_ISREG(status.st_mode)) {
        std::ifstream file(entry.path(), std::ios::binary);
        text += " " + std::string(std::istreambuf_iterator<char>(file), {});
      }
      all[std::filesystem::relative(entry.path(), folder).string()] = text;
    }
    return all;
  }
  static void setTime(const std::string& path, std::int64_t seconds) {
    const timespec times[2] = {{.tv_sec = seconds, .tv_nsec = 0},
                               {.tv_sec = seconds, .tv_nsec = 123'000'000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  }
  void makeTree() {
    std::string large;
    for (int i = 0; i < 900'000; ++i) large += static_cast<char>(i * 7 + i / 256);
    share.file("large", large);
    share.file("zero", "");
    share.file("sub/deep/er/file", "deep");
    share.file("sub/naïve 日本語", "text");
    share.folder("sub/empty");
    for (int i = 0; i < 50; ++i) share.file("many/" + std::to_string(i), std::to_string(i));
    std::int64_t seconds = 1'500'000'000;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(share.path())) {
      setTime(entry.path(), seconds++);
    }
    for (const char* name : {"sub", "sub/deep", "sub/deep/er", "many"})
      setTime(share / name, 1'000);
    ASSERT_EQ(::chmod((share / "large").c_str(), 0750), 0);
  }

  TempDir dest;
};

TEST_F(GetFromHostTest, aTreeArrivesAsItIs) {
  makeTree();
  startHost();
  const ProgramOutcome outcome = tarnel({"get", "me/Docs", dest / "copy"});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_TRUE(below(dest / "copy") == below(share.path()));
}

TEST_F(GetFromHostTest, resumingChangesNothingAndBringsWhatIsNew) {
  makeTree();
  std::filesystem::create_directory_symlink("sub", share / "link");
  startHost();
  ASSERT_EQ(tarnel({"get", "me/Docs", dest.path()}).status, 0);
  const auto first = below(dest / "Docs");
  EXPECT_FALSE(first.contains("link"));
  const ProgramOutcome again = tarnel({"get", "--resume", "--json", "me/Docs", dest.path()});
  EXPECT_EQ(again.out, R"({"files":0,"folders":0,"skipped":54,"bytes":0,"failed":0})"
                       "\n");
  EXPECT_TRUE(below(dest / "Docs") == first);
  share.file("sub/new/file", "new");
  std::filesystem::remove(dest / "Docs/many/7");
  const ProgramOutcome more = tarnel({"get", "--resume", "--json", "me/Docs", dest.path()});
  EXPECT_EQ(more.out, R"({"files":2,"folders":1,"skipped":53,"bytes":4,"failed":0})"
                      "\n");
  std::filesystem::remove(share / "link");
  auto source = below(share.path());
  EXPECT_TRUE(below(dest / "Docs") == source);
}

TEST_F(GetFromHostTest, oneFileArrives) {
  makeTree();
  startHost();
  const ProgramOutcome outcome =
      tarnel({"get", "me/Docs/large", "me/Docs/zero", "me/Docs/sub/deep", dest.path()});
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  const auto copied = below(dest.path());
  const auto source = below(share.path());
  EXPECT_EQ(copied.at("large"), source.at("large"));
  EXPECT_EQ(copied.at("zero"), source.at("zero"));
  EXPECT_EQ(copied.at("deep/er/file"), source.at("sub/deep/er/file"));
}

TEST_F(GetFromHostTest, aFileThatCannotBeReadIsListed) {
  if (::geteuid() == 0) GTEST_SKIP() << "SKIPPED: root reads everything";
  makeTree();
  ASSERT_EQ(::chmod((share / "many/7").c_str(), 0), 0);
  startHost();
  const ProgramOutcome outcome = tarnel({"get", "me/Docs", dest / "copy"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/many/7: EACCES\n");
}

TEST_F(GetFromHostTest, wrongUsageIsStatusTwo) {
  EXPECT_EQ(tarnel({"get", "me/Docs"}).status, 2);
  EXPECT_EQ(tarnel({"get"}).status, 2);
  EXPECT_EQ(tarnel({"get", "--no-such-option", "a", "b"}).status, 2);
}

}  // namespace
}  // namespace tarnel::test
