#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <limits>

#include "HostFixture.h"
#include "control/ControlWire.h"
#include "support/Eventually.h"
#include "support/OpenDescriptors.h"
#include "support/SomeBytes.h"

namespace tarnel::test {
namespace {

class HostRead : public HostFixture {
 protected:
  // What the host reads, encodes and sends at a time.
  static constexpr std::int64_t pieceBytes = 48'000;

  static Bytes dataOf(const std::optional<std::string>& line) {
    const auto response = ControlWire::decode<ControlResponse>(line.value_or(""));
    EXPECT_TRUE(response && response->dataBase64) << line.value_or("(no line)").substr(0, 80);
    if (!response || !response->dataBase64) return {};
    const auto decoded = base64::decode(*response->dataBase64);
    EXPECT_TRUE(decoded);
    return decoded.value_or(Bytes());
  }
};

TEST_F(HostRead, aRangeOfAFile) {
  temp.file(docs("a/file.txt"), "hello, world");
  EXPECT_EQ(bytes("me/Docs/a/file.txt", 7, 3), "wor");
  EXPECT_EQ(bytes("me/Docs/a/file.txt", 0, 5), "hello");
}

TEST_F(HostRead, anAbsentOffsetIsTheBeginningAndAnAbsentLengthAllThatOneAnswerHolds) {
  const Bytes content = someBytes(300'000);
  temp.file(docs("file"), content);
  EXPECT_EQ(bytes("me/Docs/file", {}, 10), content.substr(0, 10));
  EXPECT_EQ(bytes("me/Docs/file", 100), content.substr(100, 262'144));
  EXPECT_EQ(bytes("me/Docs/file"), content.substr(0, 262'144));
}

TEST_F(HostRead, aLargerLengthThanOneAnswerHoldsIsCutToIt) {
  const Bytes content = someBytes(300'000);
  temp.file(docs("file"), content);
  EXPECT_EQ(bytes("me/Docs/file", 0, 262'145), content.substr(0, 262'144));
  EXPECT_EQ(bytes("me/Docs/file", 0, std::numeric_limits<std::int64_t>::max()),
            content.substr(0, 262'144));
}

TEST_F(HostRead, chunkByChunkGivesTheWholeFile) {
  const Bytes content = someBytes(1'000'003);
  temp.file(docs("file"), content);
  Bytes joined;
  while (true) {
    const auto chunk = bytes("me/Docs/file", static_cast<std::int64_t>(joined.size()), 262'144);
    ASSERT_TRUE(chunk);
    if (chunk->empty()) break;
    joined += *chunk;
  }
  EXPECT_EQ(joined, content);
}

TEST_F(HostRead, theLastChunkIsShort) {
  temp.file(docs("file"), "0123456789");
  EXPECT_EQ(bytes("me/Docs/file", 8, 5), "89");
}

TEST_F(HostRead, atAndPastTheEndThereIsEmptyData) {
  temp.file(docs("file"), "0123456789");
  temp.file(docs("empty"));
  EXPECT_EQ(bytes("me/Docs/file", 10, 5), "");
  EXPECT_EQ(bytes("me/Docs/file", 11, 5), "");
  EXPECT_EQ(bytes("me/Docs/file", std::numeric_limits<std::int64_t>::max() - 2, 5), "");
  EXPECT_EQ(bytes("me/Docs/file", std::numeric_limits<std::int64_t>::max(), 5), "");
  EXPECT_EQ(bytes("me/Docs/empty", 0, 5), "");
}

TEST_F(HostRead, aLengthOfZeroIsEmptyDataOfAFileThatExists) {
  temp.file(docs("file"), "0123456789");
  EXPECT_EQ(bytes("me/Docs/file", 2, 0), "");
  expectRefused(read("me/Docs/nothing", 0, 0), "no such file");
}

TEST_F(HostRead, negativeOffsetsAndLengthsAreRefused) {
  temp.file(docs("file"), "0123456789");
  expectRefused(read("me/Docs/file", -1, 5), "invalid offset");
  expectRefused(read("me/Docs/file", std::numeric_limits<std::int64_t>::min(), 5),
                "invalid offset");
  expectRefused(read("me/Docs/file", 0, -1), "invalid length");
}

TEST_F(HostRead, aFolderIsADirectory) {
  temp.folder(docs("folder"));
  expectRefused(read("me/Docs/folder"), "is a directory");
  expectRefused(read("me/Docs"), "is a directory");
}

TEST_F(HostRead, aPathThroughAFileIsNotADirectory) {
  temp.file(docs("file"));
  expectRefused(read("me/Docs/file/x"), "not a directory");
}

TEST_F(HostRead, aFifoIsMissingAndDoesNotBlock) {
  temp.fifo(docs("fifo"));
  temp.link(docs("link"), "fifo");
  expectRefused(read("me/Docs/fifo"), "no such file");
  expectRefused(read("me/Docs/link"), "no such file");
  expectRefused(list("me/Docs/fifo"), "no such file");
}

TEST_F(HostRead, linksAreReadInsideTheShareOnly) {
  temp.file("outside.txt", "outside");
  temp.file(docs("a/file"), "inside");
  temp.link(docs("link"), "a/file");
  temp.link(docs("folder"), "a");
  temp.link(docs("out"), "../outside.txt");
  EXPECT_EQ(bytes("me/Docs/link"), "inside");
  EXPECT_EQ(bytes("me/Docs/folder/file"), "inside");
  expectRefused(read("me/Docs/out"), "no such file");
}

TEST_F(HostRead, slashesAreEscapedInTheAnswersBytes) {
  temp.file(docs("file"), "\xff\xff\xff");
  startHost();
  RawClient client(socketPath());
  EXPECT_EQ(client.ask(R"({"op":"read","name":"me\/Docs\/file"})"),
            R"({"status":"ok","dataBase64":"\/\/\/\/"})");
  // Both spellings of a slash are read.
  EXPECT_EQ(client.ask(R"({"op":"read","name":"me/Docs/file","offset":2})"),
            R"({"status":"ok","dataBase64":"\/w=="})");
}

TEST_F(HostRead, shorterReadsAfterLongOnesHoldNoOldBytes) {
  const Bytes content = someBytes(262'144);
  temp.file(docs("long"), content);
  temp.file(docs("short"), "short");
  startHost();
  RawClient client(socketPath());
  ASSERT_TRUE(client.ask(R"({"op":"read","name":"me/Docs/long"})"));
  EXPECT_EQ(client.ask(R"({"op":"read","name":"me/Docs/short"})"),
            R"({"status":"ok","dataBase64":"c2hvcnQ="})");
}

TEST_F(HostRead, filesAroundTheEndOfAPieceAreWhole) {
  for (const std::int64_t pieces : {1, 2, 3, 5}) {
    for (const std::int64_t more : {-2, -1, 0, 1, 2}) {
      const Bytes content = someBytes(static_cast<std::size_t>(pieces * pieceBytes + more));
      temp.file(docs("file"), content);
      EXPECT_EQ(bytes("me/Docs/file"), content) << content.size();
      EXPECT_EQ(bytes("me/Docs/file", 1), content.substr(1)) << content.size();
    }
  }
}

TEST_F(HostRead, aLengthMayEndAnywhereInsideAPiece) {
  const Bytes content = someBytes(300'000);
  temp.file(docs("file"), content);
  for (const std::int64_t length :
       {1L, pieceBytes - 1, pieceBytes, pieceBytes + 1, 70'000L, 2 * pieceBytes - 1, 2 * pieceBytes,
        5 * pieceBytes + 1, 262'142L, 262'143L, 262'144L}) {
    for (const std::int64_t offset : {0, 1, 12'345}) {
      EXPECT_EQ(bytes("me/Docs/file", offset, length),
                content.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(length)))
          << offset << " " << length;
    }
  }
}

// More answers than any socket holds: while nobody reads, the host stands in the middle of one.
TEST_F(HostRead, aFileThatShrinksBetweenPiecesIsAShortAnswer) {
  const Bytes content = someBytes(262'144);
  temp.file(docs("file"), content);
  startHost();
  RawClient client(socketPath());
  constexpr int requests = 100;
  for (int i = 0; i < requests; ++i) {
    ASSERT_TRUE(client.send("{\"op\":\"read\",\"name\":\"me/Docs/file\"}\n"));
  }
  ASSERT_TRUE(client.sawFirstBytes());
  ASSERT_EQ(::truncate((temp / docs("file")).c_str(), 10), 0);
  std::size_t last = content.size();
  for (int i = 0; i < requests; ++i) {
    const Bytes answered = dataOf(client.line());
    EXPECT_EQ(answered, content.substr(0, answered.size()));
    EXPECT_LE(answered.size(), last);
    last = answered.size();
  }
  EXPECT_EQ(last, 10U);
}

#if defined(__linux__)
// This process's own memory as a file: it cannot be read where a mapping has no bytes behind it.
TEST_F(HostRead, anErrorBehindTheFirstPieceIsAShortAnswerAndTheNextQuestionMeetsIt) {
  const std::int64_t page = ::sysconf(_SC_PAGESIZE);
  const std::int64_t good = (pieceBytes / page + 4) * page;
  const Bytes content = someBytes(static_cast<std::size_t>(good));
  temp.file("backing", content);
  const UniqueFd backing(::open((temp / "backing").c_str(), O_RDONLY | O_CLOEXEC));
  void* const mapped = ::mmap(nullptr, 262'144, PROT_READ, MAP_SHARED, backing.get(), 0);
  ASSERT_NE(mapped, MAP_FAILED);
  auto chosen = options();
  chosen.shares.push_back({.name = "Process", .folder = "/proc/self"});
  startHost(std::move(chosen));
  const auto start = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(mapped));
  const auto first = bytes("me/Process/mem", start, 262'144);
  ASSERT_TRUE(first);
  EXPECT_EQ(*first, content.substr(0, pieceBytes));
  EXPECT_EQ(bytes("me/Process/mem", start + pieceBytes, good - pieceBytes),
            content.substr(pieceBytes));
  expectRefused(read("me/Process/mem", start + good, 100), "i/o error");
  ::munmap(mapped, 262'144);
}
#endif

TEST_F(HostRead, aFileIsOpenOnlyWhileItIsRead) {
  temp.file(docs("file"), "content");
  temp.folder(docs("folder"));
  startHost();
  RawClient client(socketPath());
  ASSERT_TRUE(client.ask(R"({"op":"shares"})"));
  const auto before = openDescriptors();
  for (const auto* request :
       {R"({"op":"read","name":"me/Docs/file"})", R"({"op":"read","name":"me/Docs/folder"})",
        R"({"op":"list","name":"me/Docs"})", R"({"op":"list","name":"me/Docs/file"})",
        R"({"op":"stat","name":"me/Docs/file/x"})"}) {
    ASSERT_TRUE(client.ask(request));
    // The end of a read's answer is sent before its file is closed.
    EXPECT_TRUE(eventually([&] { return openDescriptors() == before; })) << request;
  }
}

}  // namespace
}  // namespace tarnel::test
