#include <gtest/gtest.h>

#include <string>

#include "ReadOrder.h"

namespace tarnel {
namespace {

class ReadOrderTest : public testing::Test {
 protected:
  ReadOrder::Answer say(const std::string& text) {
    return [this, text] { given += text; };
  }
  ReadOrder order;
  std::string given;
};

TEST_F(ReadOrderTest, aShortAnswerAloneIsGivenAtOnce) {
  const auto read = order.begin(1, 0);
  order.endShort(read, say("a"));
  EXPECT_EQ(given, "a");
}

TEST_F(ReadOrderTest, aShortAnswerWaitsForTheReadsOfSmallerOffsets) {
  const auto first = order.begin(1, 0);
  const auto second = order.begin(1, 100);
  const auto third = order.begin(1, 200);
  order.endShort(third, say("c"));
  order.endShort(second, say("b"));
  EXPECT_EQ(given, "");
  order.end(first);
  EXPECT_EQ(given, "bc");
}

TEST_F(ReadOrderTest, shortAnswersOfAllAreGivenFromTheSmallestOn) {
  const auto third = order.begin(1, 200);
  const auto first = order.begin(1, 0);
  const auto second = order.begin(1, 100);
  order.endShort(second, say("b"));
  order.endShort(third, say("c"));
  order.endShort(first, say("a"));
  EXPECT_EQ(given, "abc");
}

TEST_F(ReadOrderTest, aReadOfALargerOffsetHoldsNothingUp) {
  const auto later = order.begin(1, 100);
  const auto earlier = order.begin(1, 0);
  order.endShort(earlier, say("a"));
  EXPECT_EQ(given, "a");
  order.endShort(later, say("b"));
  EXPECT_EQ(given, "ab");
}

TEST_F(ReadOrderTest, filesDoNotWaitForEachOther) {
  const auto other = order.begin(2, 0);
  const auto read = order.begin(1, 100);
  order.endShort(read, say("a"));
  EXPECT_EQ(given, "a");
  order.end(other);
}

}  // namespace
}  // namespace tarnel
