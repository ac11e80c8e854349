#include <gtest/gtest.h>

#include "control/ControlStreamFrame.h"
#include "get/CopySource.h"
#include "support/ScriptedHost.h"
#include "support/TreeHost.h"

namespace tarnel::test {
namespace {

class CopySourceTest : public testing::Test {
 protected:
  static constexpr const char* docs = "me/Docs";
  static constexpr double hasty = 0.05;
  const TreeHost::Question listing{.op = ControlOp::list, .path = docs};
  const TreeHost::Question status{.op = ControlOp::stat, .path = docs};

  CopySourceTest() { host.file("me/Docs/a", "hello", 1'700'000'000'005); }

  TreeHost host;
  Interruption interruption;
  CopySource source{host.path(), interruption};
};

TEST_F(CopySourceTest, aListingIsAskedForOnce) {
  for (int i = 0; i < 3; ++i) EXPECT_EQ(source.timeOf(docs, "a"), 1'700'000'000'005);
  EXPECT_EQ(host.asked(listing), 1U);
  EXPECT_EQ(host.asked(ControlOp::stat), 0U);
}

TEST_F(CopySourceTest, aListingThatIsRefusedIsAskedForOnce) {
  host.answer(listing, HostReply().answer(R"({"status":"error","message":"permission denied"})"));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(source.timeOf(docs, "a"), 1'700'000'000'005);
  EXPECT_EQ(host.asked(listing), 1U);
}

TEST_F(CopySourceTest, aListingThatWasNotWaitedForIsAskedForAgain) {
  host.answer(listing, HostReply().stall());
  const auto impatient = source.list(docs, hasty);
  ASSERT_FALSE(impatient);
  EXPECT_EQ(impatient.error().error, ETIMEDOUT);
  host.answerAsUsual();
  EXPECT_EQ(source.timeOf(docs, "a"), 1'700'000'000'005);
}

TEST_F(CopySourceTest, aHostThatStaysSilentIsNotAskedForEver) {
  host.answer(status, HostReply().stall());
  for (int i = 0; i < HostStream::maxSilences + 2; ++i) {
    const auto silent = source.stat(docs, hasty);
    ASSERT_FALSE(silent);
    EXPECT_EQ(silent.error().error, ETIMEDOUT);
    EXPECT_EQ(silent.error().detail, "control socket timed out");
  }
  EXPECT_LE(host.asked(status), unsigned{HostStream::maxSilences});
}

TEST_F(CopySourceTest, aHostThatAnswersNowAndThenIsAskedOn) {
  for (int i = 0; i < HostStream::maxSilences; ++i) {
    host.answer(status, HostReply().stall());
    EXPECT_FALSE(source.stat(docs, hasty));
    host.answerAsUsual();
    EXPECT_TRUE(source.stat(docs));
  }
}

TEST(CopySourceStream, aHostThatHungUpIsCalledAgain) {
  ScriptedHost host;
  const std::string line = R"({"op":"stat","name":"me\/Docs"})";
  const std::string answer = R"({"status":"error","message":"no such file"})";
  host.expect(line).answer(answer).hangUp();
  host.expect(line).answer(answer);
  Interruption interruption;
  CopySource source(host.path(), interruption);
  for (int i = 1; i <= 2; ++i) {
    const auto status = source.stat("me/Docs");
    ASSERT_FALSE(status);
    EXPECT_EQ(status.error(), CopyError{.error = ENOENT});
    ASSERT_TRUE(i == 2 || host.waitForEnds(1));
  }
}

TEST(CopySourceStream, noMoreIsAskedForThanAFileHad) {
  ScriptedHost host;
  const std::string end = ControlStreamFrame::encode(ControlStreamFrame::eof, "");
  host.expect(R"({"op":"readStream","name":"me\/Docs\/a","offset":0,"length":5})").send(end);
  host.expect(R"({"op":"readStream","name":"me\/Docs\/empty"})").send(end);
  Interruption interruption;
  CopySource source(host.path(), interruption);
  EXPECT_EQ(source.openFile("me/Docs/a", 5), true);
  EXPECT_TRUE(source.stream().readHead());
  EXPECT_EQ(source.openFile("me/Docs/empty", 0), true);
}

}  // namespace
}  // namespace tarnel::test
