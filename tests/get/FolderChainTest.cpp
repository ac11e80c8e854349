#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "get/FolderChain.h"
#include "support/TempDir.h"

namespace tarnel::test {
namespace {

class FolderChainTest : public testing::Test {
 protected:
  FolderChain::Options options() {
    return {.mask = 022, .onUnfinished = [this](const std::string& relpath, const CopyError&) {
              unfinished.push_back(relpath);
            }};
  }
  [[nodiscard]] UniqueFd openRoot() const {
    return UniqueFd(::open(dest.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  [[nodiscard]] struct stat statusOf(const std::string& relative) const {
    struct stat status{};
    EXPECT_EQ(::lstat((dest / relative).c_str(), &status), 0) << relative;
    return status;
  }
  [[nodiscard]] mode_t modeOf(const std::string& relative) const {
    return statusOf(relative).st_mode & 07777;
  }
  static void makeFile(FolderChain& chain, const char* name) {
    UniqueFd file(::openat(chain.folder(), name, O_WRONLY | O_CREAT | O_EXCL, 0644));
    EXPECT_TRUE(file.valid()) << name;
  }

  TempDir dest;
  std::vector<std::string> unfinished;
};

TEST_F(FolderChainTest, foldersGetTheirModeAndTimeWhenTheyAreLeft) {
  FolderChain chain(openRoot(), options());
  ASSERT_TRUE(chain.enterAnnounced({"a"}, {.mode = 0555, .mtimeMs = 1'600'000'000'123}));
  EXPECT_EQ(modeOf("a") & 0700, 0700U) << "its owner can write while it is filled";
  makeFile(chain, "f");
  ASSERT_TRUE(chain.enterAnnounced({"a", "b"}, {.mode = 042777, .mtimeMs = -1'500}));
  makeFile(chain, "g");
  chain.leaveAll();
  EXPECT_EQ(modeOf("a"), 0555U);
  EXPECT_EQ(statusOf("a").st_mtim.tv_sec, 1'600'000'000);
  EXPECT_EQ(statusOf("a").st_mtim.tv_nsec, 123'000'000);
  EXPECT_EQ(modeOf("a/b"), 0755U) << "less the mask, and never the group of the host's";
  EXPECT_EQ(statusOf("a/b").st_mtim.tv_sec, -2);
  EXPECT_EQ(statusOf("a/b").st_mtim.tv_nsec, 500'000'000);
  EXPECT_TRUE(unfinished.empty());
}

TEST_F(FolderChainTest, aLinkIsNeverFollowed) {
  const TempDir outside;
  std::filesystem::create_directory_symlink(outside.path(), dest / "link");
  std::filesystem::create_directory(dest / "real");
  std::filesystem::create_directory_symlink(outside.path(), dest / "real/link");
  FolderChain chain(openRoot(), options());
  for (const EntryPath& path :
       {EntryPath{"link"}, EntryPath{"link", "a"}, EntryPath{"real", "link"}}) {
    const auto entered = chain.enterAnnounced(path, {.mode = 0777, .mtimeMs = 0});
    ASSERT_FALSE(entered);
    EXPECT_EQ(entered.error().error, ENOTDIR);
  }
  EXPECT_TRUE(std::filesystem::is_empty(outside.path()));
}

TEST_F(FolderChainTest, nothingIsBelowAFile) {
  std::ofstream(dest / "f") << "x";
  ASSERT_EQ(::mkfifo((dest / "fifo").c_str(), 0600), 0);
  FolderChain chain(openRoot(), options());
  for (const char* name : {"f", "fifo"}) {
    const auto entered = chain.enter({name, "a"}, 1);
    ASSERT_FALSE(entered);
    EXPECT_EQ(entered.error().error, ENOTDIR);
  }
}

TEST_F(FolderChainTest, aFolderThatWasThereKeepsItsMode) {
  ASSERT_EQ(::mkdir((dest / "a").c_str(), 0700), 0);
  {
    FolderChain chain(openRoot(), options());
    ASSERT_TRUE(chain.enterAnnounced({"a"}, {.mode = 0755, .mtimeMs = 5'000}));
    EXPECT_FALSE(chain.isOurs());
  }
  EXPECT_EQ(modeOf("a"), 0700U);
  EXPECT_EQ(statusOf("a").st_mtim.tv_sec, 5);
  auto resuming = options();
  resuming.restoresModes = true;
  FolderChain(openRoot(), resuming).leaveAll();
  {
    FolderChain chain(openRoot(), resuming);
    ASSERT_TRUE(chain.enterAnnounced({"a"}, {.mode = 0755, .mtimeMs = 5'000}));
  }
  EXPECT_EQ(modeOf("a"), 0755U);
}

TEST_F(FolderChainTest, aFolderThatIsEnteredAgainKeepsItsTime) {
  FolderChain chain(openRoot(), options());
  ASSERT_TRUE(chain.enterAnnounced({"a"}, {.mode = 0755, .mtimeMs = 7'000}));
  ASSERT_TRUE(chain.enterAnnounced({"b"}, {.mode = 0755, .mtimeMs = 8'000}));
  ASSERT_TRUE(chain.enter({"a", "f"}, 1));
  makeFile(chain, "f");
  chain.leaveAll();
  EXPECT_EQ(statusOf("a").st_mtim.tv_sec, 7);
  EXPECT_EQ(statusOf("b").st_mtim.tv_sec, 8);
}

TEST_F(FolderChainTest, deepPathsNeedABoundedNumberOfDescriptors) {
  const std::vector<std::string> names(200, "deep");
  const EntryPath path(names.begin(), names.end());
  FolderChain chain(openRoot(), options());
  for (std::size_t depth = 1; depth <= path.size(); ++depth) {
    ASSERT_TRUE(
        chain.enterAnnounced(EntryPath(path.begin(), path.begin() + static_cast<long>(depth)),
                             {.mode = 0755, .mtimeMs = 1'000 * static_cast<long>(depth)}));
  }
  UniqueFd next(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  EXPECT_LT(next.get(), 100) << "descriptors that are open";
  ASSERT_TRUE(chain.enter(path, 3));  // given up long ago
  makeFile(chain, "back");
  chain.leaveAll();
  EXPECT_TRUE(std::filesystem::exists(dest / "deep/deep/deep/back"));
  EXPECT_EQ(statusOf("deep/deep/deep").st_mtim.tv_sec, 3);
  EXPECT_EQ(statusOf("deep").st_mtim.tv_sec, 1);
  EXPECT_TRUE(unfinished.empty());
}

TEST_F(FolderChainTest, aPathTooDeepLeadsToWhereItCould) {
  const std::vector<std::string> names(maxDepth + 1, "d");
  const EntryPath path(names.begin(), names.end());
  FolderChain chain(openRoot(), options());
  EXPECT_EQ(chain.enter(path, path.size()), copyFailure(ENAMETOOLONG));
  EXPECT_TRUE(chain.isOurs());
  EXPECT_TRUE(chain.enter(path, maxDepth));
}

TEST_F(FolderChainTest, aNameCanBeTakenOnce) {
  FolderChain chain(openRoot(), options());
  EXPECT_TRUE(chain.take("a"));
  EXPECT_TRUE(chain.take("b"));
  EXPECT_FALSE(chain.take("a"));
  ASSERT_TRUE(chain.enterAnnounced({"d"}, {}));
  EXPECT_TRUE(chain.take("a")) << "in another folder";
}

TEST_F(FolderChainTest, aFolderThatIsGoneIsTold) {
  FolderChain chain(openRoot(), options());
  const std::vector<std::string> names(40, "n");
  const EntryPath path(names.begin(), names.end());
  for (std::size_t depth = 1; depth <= path.size(); ++depth) {
    ASSERT_TRUE(
        chain.enterAnnounced(EntryPath(path.begin(), path.begin() + static_cast<long>(depth)),
                             {.mode = 0755, .mtimeMs = 1'000}));
  }
  std::filesystem::remove_all(dest / "n");
  EXPECT_FALSE(chain.enter(path, 1));
  chain.leaveAll();
  EXPECT_FALSE(unfinished.empty());
}

}  // namespace
}  // namespace tarnel::test
