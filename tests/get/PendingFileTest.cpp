#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "get/PendingFile.h"
#include "support/TempDir.h"

namespace tarnel::test {
namespace {

using Over = PendingFile::Over;

class PendingFileTest : public testing::Test {
 protected:
  PendingFileTest() : folder(::open(dest.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}

  PendingFile created(mode_t mode = 0644) {
    auto made = PendingFile::create(folder.get(), mode, interruption);
    EXPECT_TRUE(made);
    EXPECT_TRUE(made->write("whole"));
    return std::move(*made);
  }
  [[nodiscard]] std::size_t entries() const {
    return static_cast<std::size_t>(
        std::distance(std::filesystem::directory_iterator(dest.path()), {}));
  }
  [[nodiscard]] std::string content(const std::string& name) const {
    std::ifstream file(dest / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  TempDir dest;
  UniqueFd folder;
  Interruption interruption;
};

TEST_F(PendingFileTest, appearsUnderItsNameOnlyWhenPublished) {
  PendingFile file = created(0640);
  EXPECT_FALSE(std::filesystem::exists(dest / "a"));
  EXPECT_EQ(entries(), 1U);
  ASSERT_TRUE(file.publish("a", 1'234'567, Over::nothing));
  EXPECT_EQ(entries(), 1U);
  EXPECT_EQ(content("a"), "whole");
  struct stat status{};
  ASSERT_EQ(::stat((dest / "a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(status.st_mtim.tv_sec, 1'234);
  EXPECT_EQ(status.st_mtim.tv_nsec, 567'000'000);
}

TEST_F(PendingFileTest, isRemovedWhenItIsNotPublished) {
  {
    const PendingFile file = created();
  }
  EXPECT_EQ(entries(), 0U);
}

TEST_F(PendingFileTest, aModeWithoutPermissionsStaysClosed) {
  PendingFile file = created(0);
  ASSERT_TRUE(file.publish("a", std::nullopt, Over::nothing));
  struct stat status{};
  ASSERT_EQ(::stat((dest / "a").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0U);
}

TEST_F(PendingFileTest, overNothingNothingIsReplaced) {
  std::ofstream(dest / "a") << "mine";
  std::filesystem::create_symlink("nowhere", dest / "link");
  for (const char* name : {"a", "link"}) {
    PendingFile file = created();
    const auto published = file.publish(name, 0, Over::nothing);
    ASSERT_FALSE(published) << name;
    EXPECT_EQ(published.error().error, EEXIST);
  }
  EXPECT_EQ(content("a"), "mine");
  EXPECT_EQ(entries(), 2U);
}

TEST_F(PendingFileTest, overAFileALinkIsReplacedAndNotFollowed) {
  const TempDir outside;
  std::ofstream(outside / "target") << "mine";
  std::filesystem::create_symlink(outside / "target", dest / "link");
  PendingFile file = created();
  ASSERT_TRUE(file.publish("link", 0, Over::aFile));
  EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(dest / "link")));
  EXPECT_EQ(content("link"), "whole");
  EXPECT_EQ(std::filesystem::file_size(outside / "target"), 4U);
}

TEST_F(PendingFileTest, anInterruptionRemovesItFromAnotherThread) {
  PendingFile file = created();
  interruption.raise();
  interruption.removePendingFile();
  EXPECT_EQ(entries(), 0U);
}

TEST_F(PendingFileTest, whatWasPublishedIsNoLongerRemoved) {
  PendingFile file = created();
  ASSERT_TRUE(file.publish("a", 0, Over::nothing));
  interruption.removePendingFile();
  EXPECT_EQ(content("a"), "whole");
}

TEST_F(PendingFileTest, aFolderThatIsGoneIsAnError) {
  std::filesystem::remove(dest.path());
  const auto made = PendingFile::create(folder.get(), 0644, interruption);
  ASSERT_FALSE(made);
  EXPECT_EQ(made.error().error, ENOENT);
}

}  // namespace
}  // namespace tarnel::test
