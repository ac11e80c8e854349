// Bytes of files through a mount.
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "ScriptedMountFixture.h"

namespace tarnel::test {
namespace {

constexpr std::size_t chunk = 262'144;  // the most bytes of one request to the host

// pread until the count or the end.
std::string readAt(int fd, std::size_t offset, std::size_t count) {
  std::string bytes(count, '\0');
  std::size_t have = 0;
  while (have < count) {
    const ssize_t got =
        ::pread(fd, bytes.data() + have, count - have, static_cast<off_t>(offset + have));
    EXPECT_GE(got, 0) << named(errno);
    if (got <= 0) break;
    have += static_cast<std::size_t>(got);
  }
  bytes.resize(have);
  return bytes;
}

UniqueFd openToRead(const std::string& path, int flags = 0) {
  UniqueFd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | flags));
  EXPECT_TRUE(fd.valid()) << path << ": " << named(errno);
  return fd;
}

class ReadTest : public MountFixture {};

TEST_F(ReadTest, filesOfEverySizeAroundAChunkAreWhole) {
  const std::size_t sizes[] = {0, 1, 4095, 4096, 4097, chunk - 1, chunk, chunk + 1, 3 * chunk + 17};
  for (const std::size_t size : sizes) {
    share.file(std::to_string(size), someBytes(size, static_cast<std::uint32_t>(size)));
  }
  mountShare();
  for (const std::size_t size : sizes) {
    EXPECT_TRUE(contentOf(at(std::to_string(size))) ==
                someBytes(size, static_cast<std::uint32_t>(size)))
        << size;
  }
}

TEST_F(ReadTest, anyPlaceCanBeReadInAnyOrder) {
  const std::string bytes = someBytes(2'000'003);
  share.file("a", bytes);
  mountShare();
  const UniqueFd fd = openToRead(at("a"));
  const UniqueFd direct = openToRead(at("a"), O_DIRECT);
  std::uint32_t random = 7;
  for (int i = 0; i < 200; ++i) {
    random = random * 1'664'525 + 1'013'904'223;
    const std::size_t offset = random % bytes.size();
    const std::size_t count = (random >> 8) % 40'000 + 1;
    EXPECT_TRUE(readAt(fd.get(), offset, count) == bytes.substr(offset, count)) << offset;
    if (i % 10 == 0) {
      EXPECT_TRUE(readAt(direct.get(), offset, count) == bytes.substr(offset, count)) << offset;
    }
  }
  EXPECT_TRUE(readAt(fd.get(), chunk - 5, 10) == bytes.substr(chunk - 5, 10));
}

TEST_F(ReadTest, atAndPastTheEndThereIsNothing) {
  share.file("a", "hello");
  mountShare();
  const UniqueFd fd = openToRead(at("a"));
  EXPECT_EQ(readAt(fd.get(), 5, 10), "");
  EXPECT_EQ(readAt(fd.get(), 1'000'000'000'000, 10), "");
  EXPECT_EQ(readAt(fd.get(), 3, 10), "lo");
}

TEST_F(ReadTest, aMappedFileHoldsItsBytesAndZeroesBehindThem) {
  const std::string bytes = someBytes(chunk * 2 + 100);
  share.file("a", bytes);
  mountShare();
  const UniqueFd fd = openToRead(at("a"));
  const std::size_t mapped = (bytes.size() + 4095) / 4096 * 4096;
  void* const place = ::mmap(nullptr, mapped, PROT_READ, MAP_SHARED, fd.get(), 0);
  ASSERT_NE(place, MAP_FAILED);
  const std::string_view seen(static_cast<const char*>(place), mapped);
  EXPECT_EQ(seen[chunk], bytes[chunk]);  // not the first page first
  EXPECT_TRUE(seen.substr(0, bytes.size()) == bytes);
  EXPECT_EQ(seen.find_first_not_of('\0', bytes.size()), std::string_view::npos);
  ::munmap(place, mapped);
}

TEST_F(ReadTest, aFileThatGrowsShrinksOrIsReplacedShowsItsNewBytesAlone) {
  const std::string versions[] = {
      someBytes(500'000, 1), someBytes(600'000, 2), someBytes(100, 3), someBytes(300'000, 4), "",
      someBytes(chunk, 5)};
  share.file("a", versions[0]);
  mountShare(nothingKept);
  EXPECT_TRUE(contentOf(at("a")) == versions[0]);
  for (const std::string& version : versions) {
    share.file("new", version);
    std::filesystem::rename(share / "new", share / "a");
    EXPECT_TRUE(contentOf(at("a")) == version) << version.size();
    struct stat status{};
    ASSERT_EQ(::stat(at("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_size, static_cast<off_t>(version.size()));
  }
}

class CountedReadTest : public ScriptedMountFixture {};

TEST_F(CountedReadTest, equalSizesDoNotHideThatAFileChanged) {
  host.file("me/Docs/a", someBytes(500'000, 1), 1000);
  mountTree();
  const UniqueFd fd = openToRead(at("a"));
  EXPECT_TRUE(readAt(fd.get(), 0, 500'000) == someBytes(500'000, 1));
  host.file("me/Docs/a", someBytes(500'000, 2), 2000);
  EXPECT_TRUE(readAt(fd.get(), 0, 500'000) == someBytes(500'000, 2));
  EXPECT_TRUE(contentOf(at("a")) == someBytes(500'000, 2));
}

TEST_F(CountedReadTest, anOpenFileThatIsNotChangedIsReadFromTheHostOnce) {
  host.file("me/Docs/a", someBytes(500'000));
  mountTree();
  const UniqueFd fd = openToRead(at("a"));
  EXPECT_TRUE(readAt(fd.get(), 0, 500'000) == someBytes(500'000));
  const std::size_t reads = host.asked(ControlOp::read);
  EXPECT_GT(reads, 0U);
  EXPECT_TRUE(readAt(fd.get(), 0, 500'000) == someBytes(500'000));
  EXPECT_TRUE(readAt(fd.get(), 100'000, 5) == someBytes(500'000).substr(100'000, 5));
  EXPECT_EQ(host.asked(ControlOp::read), reads);
}

TEST_F(CountedReadTest, aFileReplacedByOneOfEqualSizeAndTimeShowsItsBytesWhenOpened) {
  host.file("me/Docs/a", someBytes(500'000, 1));
  mountTree(everythingKept);
  EXPECT_TRUE(contentOf(at("a")) == someBytes(500'000, 1));
  host.file("me/Docs/a", someBytes(500'000, 2));
  EXPECT_TRUE(contentOf(at("a")) == someBytes(500'000, 2));
}

TEST_F(CountedReadTest, aSmallFileCostsTwoReadsSinceOnlyAnEmptyChunkIsItsEnd) {
  host.file("me/Docs/a", "hello");
  mountTree();
  EXPECT_EQ(contentOf(at("a")), "hello");
  EXPECT_EQ(host.asked(ControlOp::read), 2U);
}

TEST_F(CountedReadTest, aHostThatLikesSmallAnswersIsReadToTheEnd) {
  const std::string bytes = someBytes(100'000);
  host.file("me/Docs/a", bytes);
  host.limitChunks(777);
  mountTree();
  EXPECT_TRUE(contentOf(at("a")) == bytes);
}

// The kernel believes only the first short answer of its read-ahead, and fills with zeros what the
// others lack.
TEST_F(CountedReadTest, aFileThatShrankUnseenEndsWhereItEnds) {
  const std::string bytes = someBytes(2'000'000);
  host.folder("me/Docs");
  for (int round = 0; round < 10; ++round) {
    host.file("me/Docs/a" + std::to_string(round), bytes);
  }
  mountTree(everythingKept);
  for (int round = 0; round < 10; ++round) {
    const std::string name = "a" + std::to_string(round);
    struct stat status{};
    ASSERT_EQ(::stat(at(name).c_str(), &status), 0);
    const std::size_t left = 300'001 + static_cast<std::size_t>(round) * 50'000;
    host.file("me/Docs/" + name, bytes.substr(0, left));
    const auto content = contentOf(at(name));
    ASSERT_TRUE(content.has_value());
    EXPECT_EQ(content->size(), left);
    EXPECT_TRUE(*content == bytes.substr(0, left));
  }
}

TEST_F(CountedReadTest, aFileThatIsLongerThanItsStatusSaidIsNotShortenedByIt) {
  host.file("me/Docs/a", "first");
  mountTree("attr_timeout=0,entry_timeout=600");
  struct stat status{};
  ASSERT_EQ(::stat(at("a").c_str(), &status), 0);
  host.file("me/Docs/a", "first and more", 5000);
  EXPECT_EQ(contentOf(at("a")), "first and more");
}

}  // namespace
}  // namespace tarnel::test
