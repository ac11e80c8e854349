#include <fcntl.h>
#include <gtest/gtest.h>

#include <string>

#include "control/UniqueFd.h"
#include "host/SecretScan.h"
#include "support/FileTree.h"
#include "support/OpenDescriptors.h"

namespace tarnel {
namespace {

class SecretScanTest : public testing::Test {
 protected:
  SecretScan scan(const SecretScanLimits& limits = {}) {
    const UniqueFd folder(::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return SecretScan::of(folder.get(), {}, limits, [] { return false; });
  }
  using Texts = std::vector<std::string>;

  test::FileTree tree;
};

TEST_F(SecretScanTest, aCleanFolderIsCounted) {
  tree.file("a/b/c");
  tree.file("d");
  const auto found = scan();
  EXPECT_EQ(found.sharedCount, 4);
  EXPECT_EQ(found.excludedCount, 0);
  EXPECT_EQ(found.secrets, Texts{});
  EXPECT_EQ(found.caps, Texts{});
}

TEST_F(SecretScanTest, secretsAreListedInTheOrderOfAWalkAndNotLookedInto) {
  tree.file("z.pem");
  tree.file("a/.ssh/id_rsa");
  tree.file("a/b/.env");
  tree.file("a/b/text");
  const auto found = scan();
  EXPECT_EQ(found.secrets, (Texts{"a/.ssh", "a/b/.env", "z.pem"}));
  EXPECT_EQ(found.excludedCount, 3);
  EXPECT_EQ(found.sharedCount, 3);
}

TEST_F(SecretScanTest, linksAreNotFollowed) {
  tree.file("a/.env");
  tree.link("loop", ".");
  tree.link("a/up", "..");
  EXPECT_EQ(scan().secrets, Texts{"a/.env"});
}

TEST_F(SecretScanTest, aFolderThatIsTooDeepIsTold) {
  tree.file("a/b/c/.env");
  const auto found = scan({.depth = 3});
  EXPECT_EQ(found.secrets, Texts{});
  EXPECT_EQ(found.caps, Texts{"folders more than 3 deep were not looked at"});
  EXPECT_EQ(scan({.depth = 4}).secrets, Texts{"a/b/c/.env"});
}

TEST_F(SecretScanTest, theScanEndsAfterSoManyNames) {
  for (int i = 0; i < 30; ++i) tree.file("f" + std::to_string(i));
  tree.file("z.pem");
  const auto found = scan({.names = 30});
  EXPECT_EQ(found.sharedCount, 30);
  EXPECT_EQ(found.secrets, Texts{});
  EXPECT_EQ(found.caps, Texts{"more than 30 names: the rest was not looked at"});
  EXPECT_EQ(scan({.names = 31}).caps, Texts{});
}

TEST_F(SecretScanTest, onlySoManySecretsAreListedAndAllAreCounted) {
  for (int i = 0; i < 5; ++i) tree.file(std::to_string(i) + ".key");
  for (const SecretScanLimits& limits :
       {SecretScanLimits{.secrets = 2}, SecretScanLimits{.secretBytes = 10}}) {
    const auto found = scan(limits);
    EXPECT_EQ(found.secrets, (Texts{"0.key", "1.key"}));
    EXPECT_EQ(found.excludedCount, 5);
    EXPECT_EQ(found.caps, Texts{"there are more likely secrets than are listed"});
  }
}

TEST_F(SecretScanTest, aScanThatTakesTooLongIsToldAndEnds) {
  tree.file("a/.env");
  EXPECT_EQ(scan({.time = std::chrono::milliseconds(-1)}).caps,
            Texts{"it took too long to look at everything"});
}

TEST_F(SecretScanTest, aScanThatNobodyWaitsForEnds) {
  for (int i = 0; i < 10; ++i) tree.file("a" + std::to_string(i));
  const UniqueFd folder(::open(tree.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  EXPECT_EQ(SecretScan::of(folder.get(), {}, {}, [] { return true; }).sharedCount, 0);
}

TEST_F(SecretScanTest, noDescriptorIsLeftOpen) {
  tree.file("a/b/c/.env");
  const auto before = test::openDescriptors();
  (void)scan();
  EXPECT_EQ(test::openDescriptors(), before);
}

}  // namespace
}  // namespace tarnel
