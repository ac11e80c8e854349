// Listing directories through a mount: positions, snapshots, size and what it costs the host.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "DirectoryStream.h"
#include "ScriptedMountFixture.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

using Names = std::vector<std::string>;

Names numbered(std::size_t count) {
  Names names;
  for (std::size_t i = 0; i < count; ++i) names.push_back("f" + std::to_string(i));
  return names;
}

Names sorted(Names names) {
  std::sort(names.begin(), names.end());
  return names;
}

Names withDots(Names names) {
  names.insert(names.end(), {".", ".."});
  return sorted(std::move(names));
}

class DirectoryTest : public MountFixture {
 protected:
  // Hard links for the most part: some file systems take long to make an inode.
  void fill(const std::string& folder, const Names& names) {
    constexpr std::size_t linksOfAFile = 20'000;  // common file systems allow more
    for (std::size_t i = 0; i < names.size(); ++i) {
      const std::string path = folder + "/" + names[i];
      if (i % linksOfAFile == 0) {
        share.file(path);
      } else {
        std::filesystem::create_hard_link(share / (folder + "/" + names[i - i % linksOfAFile]),
                                          share / path);
      }
    }
  }
};

TEST_F(DirectoryTest, everyNameComesOnceTheDotsFirst) {
  fill("d", numbered(1000));
  mountShare();
  DirectoryStream stream(at("d"));
  ASSERT_TRUE(stream.isOpen());
  EXPECT_EQ(stream.next(), ".");
  EXPECT_EQ(stream.next(), "..");
  EXPECT_EQ(sorted(stream.rest()), sorted(numbered(1000)));
}

TEST_F(DirectoryTest, anEmptyFolderHoldsItsDots) {
  share.folder("d");
  mountShare();
  EXPECT_EQ(sorted(DirectoryStream(at("d")).rest()), withDots({}));
}

TEST_F(DirectoryTest, aSeekReturnsToTheEntryOfItsPosition) {
  fill("d", numbered(3000));
  mountShare();
  DirectoryStream stream(at("d"));
  ASSERT_TRUE(stream.isOpen());
  std::vector<std::pair<long, std::string>> places;
  while (true) {
    const long place = ::telldir(stream.get());
    const auto name = stream.next();
    if (!name) break;
    places.emplace_back(place, *name);
  }
  ASSERT_EQ(places.size(), 3002U);
  for (std::size_t i = 0; i < places.size(); i += 271) {
    const auto& [place, name] = places[places.size() - 1 - i];
    ::seekdir(stream.get(), place);
    EXPECT_EQ(stream.next(), name);
  }
  ::seekdir(stream.get(), places[2990].first);
  EXPECT_EQ(stream.rest().size(), 12U);
}

TEST_F(DirectoryTest, anOpenDirectoryStaysAsItWasUntilItIsRewound) {
  fill("d", numbered(3000));
  mountShare();
  DirectoryStream stream(at("d"));
  ASSERT_TRUE(stream.isOpen());
  Names seen = {stream.next().value_or("")};
  share.file("d/later");
  for (const std::string& name : stream.rest()) seen.push_back(name);
  EXPECT_EQ(sorted(seen), withDots(numbered(3000)));
  ::rewinddir(stream.get());
  Names expected = numbered(3000);
  expected.emplace_back("later");
  EXPECT_EQ(sorted(stream.rest()), withDots(expected));
}

TEST_F(DirectoryTest, hundredThousandNamesComeOnceEachInTimeThatGrowsLikeTheirNumber) {
  using Clock = std::chrono::steady_clock;
  fill("ten", numbered(10'000));
  fill("hundred", numbered(100'000));
  mountShare();
  const auto list = [this](const std::string& folder, const Names& expected) {
    const auto begun = Clock::now();
    const Names names = DirectoryStream(at(folder)).rest();
    const auto took = Clock::now() - begun;
    EXPECT_TRUE(sorted(names) == expected) << folder << " showed " << names.size() << " names";
    return took;
  };
  const Names ten = withDots(numbered(10'000));
  const Names hundred = withDots(numbered(100'000));
  const auto small = std::min({list("ten", ten), list("ten", ten), list("ten", ten)});
  const auto large = std::min(list("hundred", hundred), list("hundred", hundred));
  EXPECT_LT(large.count(), 25 * small.count());  // the square would be 100 times
}

class CountedDirectoryTest : public ScriptedMountFixture {
 protected:
  CountedDirectoryTest() {
    for (const std::string& name : names) host.file("me/Docs/d/" + name, "12345");
    host.folder("me/Docs/d");
  }
  const Names names = numbered(2000);
};

TEST_F(CountedDirectoryTest, attributesComeWithTheListingAndCostNoQuestionEach) {
  mountTree(everythingKept);
  struct stat status{};
  ASSERT_EQ(::stat(at("d").c_str(), &status), 0);
  const std::size_t before = host.asked(ControlOp::stat);
  DirectoryStream stream(at("d"));
  ASSERT_TRUE(stream.isOpen());
  while (const dirent* const entry = ::readdir(stream.get())) {
    if (entry->d_name[0] == '.') continue;
    ASSERT_EQ(::stat(at("d/" + std::string(entry->d_name)).c_str(), &status), 0);
    EXPECT_EQ(status.st_size, 5);
    EXPECT_EQ(status.st_ino, entry->d_ino);
    EXPECT_EQ(entry->d_type, DT_REG);
  }
  EXPECT_EQ(host.asked(ControlOp::stat), before);
  EXPECT_EQ(host.asked({.op = ControlOp::list, .path = "me/Docs/d"}), 1U);
}

TEST_F(CountedDirectoryTest, aListingAtManyOffsetsIsAskedForOnce) {
  mountTree();
  DirectoryStream stream(at("d"));
  EXPECT_EQ(stream.rest().size(), names.size() + 2);
  EXPECT_EQ(host.asked({.op = ControlOp::list, .path = "me/Docs/d"}), 1U);
  ::rewinddir(stream.get());
  EXPECT_EQ(stream.rest().size(), names.size() + 2);
  EXPECT_EQ(host.asked({.op = ControlOp::list, .path = "me/Docs/d"}), 2U);
}

TEST_F(CountedDirectoryTest, aListingDoesNotBringBackAttributesThatAreOlderThanALookups) {
  mountTree(everythingKept);
  DirectoryStream stream(at("d"));
  ASSERT_TRUE(stream.isOpen());
  ASSERT_EQ(stream.next(), ".");  // listed now, f7 is read later
  host.file("me/Docs/d/f7", "1234567");
  struct stat status{};
  ASSERT_EQ(::stat(at("d/f7").c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 7);
  EXPECT_EQ(stream.rest().size(), names.size() + 1);
  ASSERT_EQ(::stat(at("d/f7").c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 7);
}

TEST_F(CountedDirectoryTest, openingWithoutReadingAsksTheHostNothing) {
  mountTree(everythingKept);
  struct stat status{};
  ASSERT_EQ(::stat(at("d").c_str(), &status), 0);
  const std::size_t before = host.asked(ControlOp::shares);
  for (const std::string& path : {at("d"), *mount / "me", mount->path()}) {
    EXPECT_TRUE(DirectoryStream(path).isOpen()) << path;
  }
  EXPECT_EQ(host.asked(ControlOp::list), 0U);
  EXPECT_EQ(host.asked(ControlOp::shares), before);
}

TEST_F(CountedDirectoryTest, theRootAndAPeerAreListedFromTheShares) {
  mountTree();
  EXPECT_EQ(sorted(DirectoryStream(mount->path()).rest()), withDots({"me"}));
  EXPECT_EQ(sorted(DirectoryStream(*mount / "me").rest()), withDots({"Docs"}));
  EXPECT_EQ(host.asked(ControlOp::list), 0U);
}

}  // namespace
}  // namespace tarnel::test
