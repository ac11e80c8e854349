#include <gtest/gtest.h>

#include "DirectoryHandle.h"
#include "support/MadeItem.h"

namespace tarnel {
namespace {

using SnapshotPointer = std::shared_ptr<const DirectorySnapshot>;

SnapshotPointer makeSnapshot() { return std::make_shared<DirectorySnapshot>(); }

class DirectoryHandleTest : public testing::Test {
 protected:
  DirectoryHandle handle{madeItem("me", 3, 2, true, std::nullopt)};
};

TEST_F(DirectoryHandleTest, nothingIsHeldBeforeTheFirstRead) {
  EXPECT_EQ(handle.at(0), nullptr);
  EXPECT_EQ(handle.at(7), nullptr);  // a seek before the first read
}

TEST_F(DirectoryHandleTest, aListingServesEveryOffsetOfItsPass) {
  const SnapshotPointer taken = makeSnapshot();
  handle.replace(taken);
  EXPECT_EQ(handle.at(1), taken);
  EXPECT_EQ(handle.at(7), taken);
  EXPECT_EQ(handle.at(3), taken);
}

TEST_F(DirectoryHandleTest, aRewindWantsANewListingWhichThenServes) {
  handle.replace(makeSnapshot());
  EXPECT_EQ(handle.at(0), nullptr);
  const SnapshotPointer second = makeSnapshot();
  handle.replace(second);
  EXPECT_EQ(handle.at(5), second);
}

TEST_F(DirectoryHandleTest, theOldListingStaysWhileSomebodyIsServedFromIt) {
  const std::weak_ptr<const DirectorySnapshot> watched = [&] {
    auto own = makeSnapshot();
    handle.replace(own);
    return std::weak_ptr<const DirectorySnapshot>(own);
  }();
  const auto serving = handle.at(1);
  handle.replace(makeSnapshot());
  EXPECT_EQ(watched.lock(), serving);
}

}  // namespace
}  // namespace tarnel
