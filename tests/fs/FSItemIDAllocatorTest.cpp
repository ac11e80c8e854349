#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

#include "fs/FSItemIDAllocator.h"

namespace tarnel {
namespace {

TEST(FSItemIDAllocator, theRootIsTwoAndItsParentOne) {
  FSItemIDAllocator allocator;
  EXPECT_EQ(allocator.id(""), 2u);
  EXPECT_EQ(FSItemIDAllocator::root, 2u);
  EXPECT_EQ(FSItemIDAllocator::parentOfRoot, 1u);
}

TEST(FSItemIDAllocator, newPathsCountUpFromThree) {
  FSItemIDAllocator allocator;
  EXPECT_EQ(allocator.id("me"), 3u);
  EXPECT_EQ(allocator.id("me/Docs"), 4u);
  EXPECT_EQ(allocator.id("me"), 3u);
  EXPECT_EQ(allocator.id(""), 2u);
  EXPECT_EQ(allocator.id("a"), 5u);
}

TEST(FSItemIDAllocator, keysAreExactBytes) {
  FSItemIDAllocator allocator;
  EXPECT_NE(allocator.id("\u00e9"), allocator.id("e\u0301"));
  EXPECT_NE(allocator.id("A"), allocator.id("a"));
}

TEST(FSItemIDAllocator, threadsAgreeOnTheIdOfEachPath) {
  constexpr std::size_t threads = 4;
  constexpr std::size_t paths = 500;
  FSItemIDAllocator allocator;
  std::vector<std::vector<std::uint64_t>> seen(threads);
  std::vector<std::thread> running;
  for (std::size_t t = 0; t < threads; ++t) {
    running.emplace_back([&allocator, &mine = seen[t]] {
      for (std::size_t i = 0; i < paths; ++i) mine.push_back(allocator.id(std::to_string(i)));
    });
  }
  for (std::thread& thread : running) thread.join();

  for (const auto& ids : seen) EXPECT_EQ(ids, seen[0]);
  const std::set<std::uint64_t> distinct(seen[0].begin(), seen[0].end());
  EXPECT_EQ(distinct.size(), paths);
  EXPECT_EQ(*distinct.begin(), 3u);
  EXPECT_EQ(*distinct.rbegin(), 2 + paths);
}

TEST(FSItemIDAllocator, keepsTheTextOfEveryPathWhereItIs) {
  FSItemIDAllocator allocator;
  std::vector<FSItemIDAllocator::Entry> entries;
  const auto path = [](std::size_t i) {
    return "me/" + std::to_string(i) + std::string(i % 50 == 0 ? 20'000 : 0, 'x');
  };
  for (std::size_t i = 0; i < 2000; ++i) entries.push_back(allocator.entry(path(i)));
  for (std::size_t i = 0; i < 2000; ++i) {
    ASSERT_EQ(entries[i].relpath, path(i));
    const auto again = allocator.entry(path(i));
    ASSERT_EQ(again.id, entries[i].id);
    ASSERT_EQ(again.relpath.data(), entries[i].relpath.data());
  }
}

}  // namespace
}  // namespace tarnel
