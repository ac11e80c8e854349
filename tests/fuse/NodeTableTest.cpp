#include <gtest/gtest.h>

#include "NodeTable.h"
#include "fs/FSItemIDAllocator.h"
#include "support/MadeItem.h"

namespace tarnel {
namespace {

using Clock = NodeTable::Clock;
using ItemPointer = NodeTable::ItemPointer;

ItemPointer makeItem(std::uint64_t id, const std::string& path = "me/Docs/a") {
  return madeItem(path, id, 3, false, std::nullopt);
}

class NodeTableTest : public testing::Test {
 protected:
  const ItemPointer root = makeItem(FSItemIDAllocator::root, "");
  const Clock::time_point now = Clock::now();
  NodeTable nodes{root};
};

TEST_F(NodeTableTest, theRootIsNodeOneAndIsNeverForgotten) {
  EXPECT_EQ(NodeTable::nodeID(*root), 1U);
  EXPECT_EQ(nodes.item(1), root);
  EXPECT_EQ(nodes.forget(1, 1000), nullptr);
  EXPECT_EQ(nodes.item(1), root);
}

TEST_F(NodeTableTest, everyOtherNodeHasItsItemsId) {
  const auto item = makeItem(42);
  EXPECT_EQ(NodeTable::nodeID(*item), 42U);
  EXPECT_EQ(nodes.item(42), nullptr);
  EXPECT_FALSE(nodes.knows(*item));
  EXPECT_EQ(nodes.addLookup(item, now), nullptr);
  EXPECT_EQ(nodes.item(42), item);
  EXPECT_TRUE(nodes.knows(*item));
}

TEST_F(NodeTableTest, theLastLookupReturnedGivesTheItemBack) {
  const auto item = makeItem(42);
  for (int i = 0; i < 3; ++i) (void)nodes.addLookup(item, now);
  EXPECT_EQ(nodes.forget(42, 2), nullptr);
  EXPECT_EQ(nodes.item(42), item);
  EXPECT_EQ(nodes.forget(42, 1), item);
  EXPECT_EQ(nodes.item(42), nullptr);
}

TEST_F(NodeTableTest, forgettingMoreThanWasGivenEndsTheNodeOnce) {
  (void)nodes.addLookup(makeItem(42), now);
  EXPECT_NE(nodes.forget(42, 5), nullptr);
  EXPECT_EQ(nodes.forget(42, 1), nullptr);
  EXPECT_EQ(nodes.forget(4711, 1), nullptr);
}

TEST_F(NodeTableTest, aNewItemOfThePathTakesTheNodeOverAndTheOldOneIsReturned) {
  const auto old = makeItem(42);
  const auto fresh = makeItem(42);
  (void)nodes.addLookup(old, now);
  EXPECT_EQ(nodes.addLookup(fresh, now), old);
  EXPECT_EQ(nodes.item(42), fresh);
  EXPECT_EQ(nodes.forget(42, 1), nullptr);  // the old item's lookup counts on
  EXPECT_EQ(nodes.forget(42, 1), fresh);
}

TEST_F(NodeTableTest, freshnessOnlyGrows) {
  (void)nodes.addLookup(makeItem(42), now);
  EXPECT_TRUE(nodes.isFresherThan(42, now - std::chrono::seconds(1)));
  EXPECT_FALSE(nodes.isFresherThan(42, now));
  nodes.refreshed(42, now + std::chrono::seconds(2));
  (void)nodes.addLookup(nodes.item(42), now + std::chrono::seconds(1));
  EXPECT_TRUE(nodes.isFresherThan(42, now + std::chrono::seconds(1)));
  EXPECT_FALSE(nodes.isFresherThan(42, now + std::chrono::seconds(2)));
}

TEST_F(NodeTableTest, anUnknownNodeIsFresherThanNothing) {
  nodes.refreshed(42, now);
  EXPECT_FALSE(nodes.isFresherThan(42, now - std::chrono::hours(1)));
  EXPECT_EQ(nodes.item(42), nullptr);
}

}  // namespace
}  // namespace tarnel
