#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "MemoryLeft.h"
#include "control/PosixSocket.h"
#include "control/ReceiveBuffer.h"
#include "control/UniqueFd.h"
#include "support/Sanitized.h"

namespace tarnel::test {
namespace {

TEST(ReceiveBuffer, aLineEndsAtTheFirstLineFeed) {
  ReceiveBuffer buffer;
  buffer.append("one\ntwo\nthr");
  EXPECT_EQ(buffer.takeLine(), "one");
  EXPECT_EQ(buffer.takeLine(), "two");
  EXPECT_EQ(buffer.takeLine(), std::nullopt);
  EXPECT_EQ(buffer.view(), "thr");
  buffer.append("ee\n");
  EXPECT_EQ(buffer.takeLine(), "three");
  EXPECT_EQ(buffer.size(), 0U);
}

TEST(ReceiveBuffer, anEmptyLineIsALine) {
  ReceiveBuffer buffer;
  buffer.append("\n\na\n");
  EXPECT_EQ(buffer.takeLine(), "");
  EXPECT_EQ(buffer.takeLine(), "");
  EXPECT_EQ(buffer.takeLine(), "a");
  EXPECT_EQ(buffer.takeLine(), std::nullopt);
}

TEST(ReceiveBuffer, onlyTheLineFeedEndsALine) {
  ReceiveBuffer buffer;
  buffer.append(std::string_view("a\r\0\v\u2028b\n", 9));
  EXPECT_EQ(buffer.takeLine(), std::string("a\r\0\v\u2028b", 8));
}

TEST(ReceiveBuffer, everySplitGivesTheSameLines) {
  const std::string bytes = "first\n\nthird line\nx\nrest";
  for (std::size_t a = 0; a <= bytes.size(); ++a) {
    for (std::size_t b = a; b <= bytes.size(); ++b) {
      ReceiveBuffer buffer;
      std::vector<std::string> lines;
      for (const std::string& piece :
           {bytes.substr(0, a), bytes.substr(a, b - a), bytes.substr(b)}) {
        buffer.append(piece);
        while (auto line = buffer.takeLine()) lines.push_back(*line);
      }
      EXPECT_EQ(lines, (std::vector<std::string>{"first", "", "third line", "x"}));
      EXPECT_EQ(buffer.view(), "rest");
    }
  }
}

TEST(ReceiveBuffer, consumesFromTheFrontAndKeepsTheSurplus) {
  ReceiveBuffer buffer;
  buffer.append("abcdef\n");
  buffer.consume(2);
  EXPECT_EQ(buffer.view(), "cdef\n");
  EXPECT_EQ(buffer.takeLine(), "cdef");
  EXPECT_EQ(buffer.size(), 0U);
}

TEST(ReceiveBuffer, aLineFoundAfterALongLookWithoutOneIsWhole) {
  ReceiveBuffer buffer;
  std::string expected;
  for (int i = 0; i < 100; ++i) {
    const std::string piece(10'000, static_cast<char>('a' + i % 26));
    expected += piece;
    buffer.append(piece);
    ASSERT_EQ(buffer.takeLine(), std::nullopt);
  }
  buffer.append("\nnext");
  EXPECT_EQ(buffer.takeLine(), expected);
  EXPECT_EQ(buffer.view(), "next");
}

// Long runs of lines move the front again and again.
TEST(ReceiveBuffer, manyLinesOfEveryLengthComeOutAsTheyWentIn) {
  std::mt19937 random(1);
  ReceiveBuffer buffer;
  std::vector<std::string> in;
  std::vector<std::string> out;
  for (int round = 0; round < 3000; ++round) {
    in.emplace_back(random() % 900, static_cast<char>('a' + round % 26));
    buffer.append(in.back() + "\n");
    if (random() % 50 != 0) continue;
    while (auto line = buffer.takeLine()) out.push_back(std::move(*line));
  }
  while (auto line = buffer.takeLine()) out.push_back(std::move(*line));
  EXPECT_EQ(in, out);
}

#if defined(__linux__)
// A peer that writes its next line before the last one is taken never lets the buffer become empty.
TEST(ReceiveBuffer, holdsWhatWaitsHoweverMuchHasGoneThrough) {
  if (builtWithSanitizer) GTEST_SKIP() << "a sanitizer has memory of its own";
  const std::string piece = std::string(99'999, 'x') + "\n" + std::string(100, 'y');
  ReceiveBuffer buffer;
  const MemoryLeft little(16 << 20);
  for (int i = 0; i < 2'500; ++i) {  // 250 MB
    buffer.append(piece);
    ASSERT_TRUE(buffer.takeLine().has_value());
  }
  EXPECT_EQ(buffer.view(), std::string(100, 'y'));
}
#endif

class ReceiveBufferFill : public testing::Test {
 protected:
  ReceiveBufferFill() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    readEnd.reset(ends[0]);
    writeEnd.reset(ends[1]);
  }
  UniqueFd readEnd;
  UniqueFd writeEnd;
  ReceiveBuffer buffer;
};

TEST_F(ReceiveBufferFill, appendsOneReadOfAtMostItsSize) {
  const std::string some(60'000, 'x');
  ASSERT_EQ(::write(writeEnd.get(), some.data(), some.size()), 60'000);
  EXPECT_EQ(buffer.fill(readEnd.get()), 60'000);
  EXPECT_EQ(buffer.view(), some);
  ASSERT_EQ(::write(writeEnd.get(), "yz", 2), 2);
  EXPECT_EQ(buffer.fill(readEnd.get()), 2);
  EXPECT_EQ(buffer.view(), some + "yz");
}

TEST_F(ReceiveBufferFill, theEndOfTheStreamAndAnErrorLeaveTheBufferAsItWas) {
  buffer.append("kept");
  writeEnd.reset();
  errno = EDOM;
  EXPECT_EQ(buffer.fill(readEnd.get()), 0);
  EXPECT_EQ(errno, EDOM);
  EXPECT_EQ(buffer.view(), "kept");
  EXPECT_EQ(buffer.fill(-1), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(buffer.view(), "kept");
}

TEST_F(ReceiveBufferFill, sleepsOnlyWhenItIsAskedTo) {
  setNonBlocking(readEnd.get(), true);
  EXPECT_EQ(buffer.fill(readEnd.get()), -1);
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(buffer.awaitAndFill(readEnd.get(), {.tv_sec = 0, .tv_usec = 1'000}), -1);
  EXPECT_EQ(errno, EAGAIN);
#ifdef __linux__  // elsewhere read() does the sleeping, which this one cannot
  std::thread late([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(::write(writeEnd.get(), "x", 1), 1);
  });
  EXPECT_EQ(buffer.awaitAndFill(readEnd.get(), {}), 1);
  late.join();
#endif
}

}  // namespace
}  // namespace tarnel::test
