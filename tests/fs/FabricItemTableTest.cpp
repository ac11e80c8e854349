#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "fs/FabricItemTable.h"

namespace tarnel {
namespace {

FileStat sized(std::int64_t size) { return {.name = "b", .size = size}; }

// For arguments that are looked at inside the call only.
const FileStat* given(const FileStat& stat) { return &stat; }

TEST(FabricItemTable, activatesOneRootWithItsFixedIds) {
  FabricItemTable table;
  const auto root = table.activateRoot();
  EXPECT_EQ(root->relpath, "");
  EXPECT_EQ(root->id, 2u);
  EXPECT_EQ(root->parentID, 1u);
  EXPECT_TRUE(root->isSynthesizedDirectory);
  EXPECT_EQ(root->lastStat(), std::nullopt);
  EXPECT_EQ(table.activateRoot(), root);
}

TEST(FabricItemTable, aReclaimedRootIsMadeAnewWithTheSameId) {
  FabricItemTable table;
  const auto first = table.activateRoot();
  table.reclaim(*first);
  const auto second = table.activateRoot();
  EXPECT_NE(second, first);
  EXPECT_EQ(second->id, 2u);
}

TEST(FabricItemTable, theFirstPathsGetThreeAndFour) {
  FabricItemTable table;
  const auto first = table.lookUpOrCreate("a", 2, true, nullptr);
  const auto second = table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
  EXPECT_EQ(first->id, 3u);
  EXPECT_EQ(second->id, 4u);
  EXPECT_EQ(table.lookUpOrCreate("a", 2, true, nullptr), first);
}

TEST(FabricItemTable, aNewItemCarriesWhatItWasMadeWith) {
  FabricItemTable table;
  const auto item = table.lookUpOrCreate("a/b", 9, false, given(sized(5)));
  EXPECT_EQ(item->relpath, "a/b");
  EXPECT_EQ(item->parentID, 9u);
  EXPECT_FALSE(item->isSynthesizedDirectory);
  EXPECT_EQ(item->lastStat(), sized(5));
}

TEST(FabricItemTable, aLiveItemKeepsItsParentFlagAndStatus) {
  FabricItemTable table;
  const auto item = table.lookUpOrCreate("a/b", 9, false, given(sized(5)));
  EXPECT_EQ(table.lookUpOrCreate("a/b", 10, true, given(sized(6))), item);
  EXPECT_EQ(item->parentID, 9u);
  EXPECT_FALSE(item->isSynthesizedDirectory);
  EXPECT_EQ(item->lastStat(), sized(5));
}

TEST(FabricItemTable, aPathKeepsItsIdBeyondReclaim) {
  FabricItemTable table;
  const auto first = table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
  table.reclaim(*first);
  EXPECT_EQ(table.lookUpOrCreate("other", 2, true, nullptr)->id, first->id + 1);
  const auto second = table.lookUpOrCreate("a/b", 3, false, given(sized(2)));
  EXPECT_NE(second, first);
  EXPECT_EQ(second->id, first->id);
  EXPECT_EQ(second->lastStat(), sized(2));
}

TEST(FabricItemTable, reclaimOfAnOlderObjectKeepsTheNewerOne) {
  FabricItemTable table;
  const auto older = table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
  table.reclaim(*older);
  const auto newer = table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
  table.reclaim(*older);
  EXPECT_EQ(table.lookUpOrCreate("a/b", 3, false, given(sized(1))), newer);
}

TEST(FabricItemTable, reclaimOfAnEqualItemFromElsewhereChangesNothing) {
  FabricItemTable table;
  FabricItemTable other;
  const auto mine = table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
  table.reclaim(*other.lookUpOrCreate("a/b", 3, false, given(sized(1))));
  table.reclaim(*other.lookUpOrCreate("never/seen", 3, false, given(sized(1))));
  EXPECT_EQ(table.lookUpOrCreate("a/b", 3, false, given(sized(1))), mine);
}

TEST(FabricItemTable, reclaimReleasesTheItemThatNobodyElseHolds) {
  FabricItemTable table;
  std::weak_ptr<FabricItem> watched;
  {
    const auto item = table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
    watched = item;
    table.reclaim(*item);
  }
  EXPECT_TRUE(watched.expired());
}

TEST(FabricItemTable, reclaimByReferenceAloneMayReleaseTheLastOwner) {
  FabricItemTable table;
  const FabricItem& item = *table.lookUpOrCreate("a/b", 3, false, given(sized(1)));
  table.reclaim(item);
  EXPECT_EQ(table.lookUpOrCreate("a/b", 3, false, given(sized(2)))->lastStat(), sized(2));
}

TEST(FabricItemTable, keepsAnItemThatNobodyElseHolds) {
  FabricItemTable table;
  table.lookUpOrCreate("a/b", 3, false, nullptr)->setLastStat(sized(8));
  EXPECT_EQ(table.lookUpOrCreate("a/b", 3, false, nullptr)->lastStat(), sized(8));
}

TEST(FabricItemTable, keysAreExactBytes) {
  FabricItemTable table;
  EXPECT_NE(table.lookUpOrCreate("p/\u00e9", 3, false, given(sized(1))),
            table.lookUpOrCreate("p/e\u0301", 3, false, given(sized(1))));
}

TEST(FabricItemTable, racingLookupsOfOnePathYieldOneObject) {
  constexpr int rounds = 500;
  FabricItemTable table;
  for (int round = 0; round < rounds; ++round) {
    const std::string path = "p/" + std::to_string(round);
    std::shared_ptr<FabricItem> mine;
    std::thread other(
        [&table, &path, &mine] { mine = table.lookUpOrCreate(path, 3, false, given(sized(1))); });
    const auto theirs = table.lookUpOrCreate(path, 3, false, given(sized(2)));
    other.join();
    ASSERT_EQ(mine, theirs);
  }
}

TEST(FabricItem, holdsTheStatusThatWasStoredLast) {
  const auto paths = std::make_shared<FSItemIDAllocator>();
  FabricItem item(paths, paths->entry("a/b"), 3, false, given(sized(1)));
  EXPECT_EQ(item.id, 3u);
  item.setLastStat(sized(2));
  item.setLastStat(sized(3));
  EXPECT_EQ(item.lastStat(), sized(3));
}

TEST(FabricItem, keepsAStatusButForItsOwnersUnderTheNameOfThePath) {
  FileStat told = {.name = "another",
                   .size = 1,
                   .mtimeMs = -2,
                   .isDirectory = true,
                   .mode = 3,
                   .nlink = 4,
                   .owner = "o",
                   .group = "g",
                   .isSymlink = true};
  const auto paths = std::make_shared<FSItemIDAllocator>();
  const FabricItem item(paths, paths->entry("a/b"), 3, false, &told);
  told.name = "b";
  told.owner.clear();
  told.group.clear();
  EXPECT_EQ(item.lastStat(), told);
}

TEST(FabricItem, givesWholeStatusesToThreadsThatReadWhileOthersStore) {
  const auto paths = std::make_shared<FSItemIDAllocator>();
  FabricItem item(paths, paths->entry("a/b"), 3, false, nullptr);
  const auto status = [](std::int64_t n) {
    return FileStat{.name = "b", .size = n, .mtimeMs = -n, .mode = static_cast<std::uint32_t>(n)};
  };
  item.setLastStat(status(0));
  std::thread storing([&] {
    for (int i = 0; i < 2000; ++i) item.setLastStat(status(i % 2));
  });
  for (int i = 0; i < 2000; ++i) {
    const auto seen = item.lastStat();
    ASSERT_EQ(seen, status(seen->size));
  }
  storing.join();
}

}  // namespace
}  // namespace tarnel
