// When, where and in which order a channel decodes and gives its answers.
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ControlChannelFixture.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

TEST_F(ControlChannelTest, anAnswerIsGivenAfterTheRequestBehindItIsWritten) {
  host.expect(lineOf("first")).stall().answer(message("first"));
  host.expect(lineOf("next")).answer(message("next"));
  std::promise<bool> nextWasAtTheHost;
  channel->request(statOf("first"), 20, [&](const ControlChannelResult& result) {
    EXPECT_EQ(textOf(result), "first");
    nextWasAtTheHost.set_value(host.waitForRequests(2));
  });
  ASSERT_TRUE(host.waitForRequests(1));
  auto next = start(*channel, statOf("next"));
  host.release();
  auto told = nextWasAtTheHost.get_future();
  ASSERT_EQ(told.wait_for(waitBound), std::future_status::ready);
  EXPECT_TRUE(told.get());
  EXPECT_EQ(textOf(next.wait()), "next");
}

TEST_F(ControlChannelTest, everyRequestIsRepliedOnceAndInOrderWhateverBecomesOfIt) {
  host.answerWith([](const std::string& line) {
    if (line == lineOf("first")) return HostReply().stall().answer(ok);
    if (line == lineOf("bad")) return HostReply().answer("not JSON");
    if (line == lineOf("gone")) return HostReply().hangUp();
    return HostReply().answer(ok);
  });
  std::vector<std::string> replies;  // the channel's thread only, until the last one
  const auto ask = [&](
                       const std::string& name, std::function<void()> then = [] {}) {
    channel->request(statOf(name), 20, [&, name, then](const ControlChannelResult& result) {
      replies.push_back(name + ": " + textOf(result));
      then();
    });
  };
  ask("first");
  ASSERT_TRUE(host.waitForRequests(1));
  std::vector<std::string> expected = {"first: ok"};
  const std::pair<std::string, std::string> kinds[] = {
      {"good", "ok"},           {"bad", "decoding error"},
      {"good", "ok"},           {"\xff", "encoding error"},
      {"gone", disconnected},   {"gone", disconnected},
      {"bad", "decoding error"}};
  for (int round = 0; round < 5; ++round) {
    for (const auto& [name, outcome] : kinds) {
      ask(name);
      expected.push_back(name + ": " + outcome);
    }
  }
  // Given when the request behind it has been written, which may therefore be answered still.
  ask("last", [&] { channel->cancelAll(); });
  ask("written");
  for (int i = 0; i < 3; ++i) ask("queued");
  host.release();
  // Behind all of them, on the channel's thread too.
  ASSERT_TRUE(eventually([&] { return textOf(start(*channel, statOf("end")).wait()) == "ok"; }));
  ASSERT_EQ(replies.size(), expected.size() + 5);
  EXPECT_TRUE(replies[expected.size() + 1].starts_with("written: "));
  replies.erase(replies.end() - 4);
  expected.emplace_back("last: ok");
  expected.insert(expected.end(), 3, std::string("queued: ") + disconnected);
  EXPECT_EQ(replies, expected);
}

TEST_F(ControlChannelTest, anAnswerIsGivenWhileTheHostIsSilentAboutTheNextRequest) {
  host.expect(lineOf("first")).stall().answer(message("first"));
  host.expect(lineOf("next")).stall();
  auto first = start(*channel, statOf("first"));
  ASSERT_TRUE(host.waitForRequests(1));
  auto next = start(*channel, statOf("next"));
  host.release();
  EXPECT_EQ(textOf(first.wait()), "first");
  EXPECT_FALSE(next.isThere());
  channel->cancelAll();
  EXPECT_EQ(textOf(next.wait()), disconnected);
}

TEST_F(ControlChannelTest, aRequestThatCannotBeWrittenDoesNotKeepTheAnswerBeforeIt) {
  host.expect(lineOf("first")).stall().answer(message("first"));
  auto first = start(*channel, statOf("first"));
  ASSERT_TRUE(host.waitForRequests(1));
  auto next = start(*channel, statOf("not text \xff"));
  host.release();
  EXPECT_EQ(textOf(first.wait()), "first");
  EXPECT_EQ(textOf(next.wait()), "encoding error");
}

TEST_F(ControlChannelTest, anAnswerThatOnlyACancellationWaitsBehindIsGiven) {
  host.expect(lineOf("first")).stall().answer(message("first"));
  host.expect(lineOf("next")).answer(message("next"));
  // Given between the writing of the next request and the reading of its answer.
  channel->request(statOf("first"), 20, [&](const ControlChannelResult&) {
    EXPECT_TRUE(host.waitForSends(2));
    channel->cancelAll();
  });
  ASSERT_TRUE(host.waitForRequests(1));
  auto next = start(*channel, statOf("next"));
  host.release();
  EXPECT_EQ(textOf(next.wait()), "next");
}

// A channel whose large answers are decoded by a pool of one thread, which the test holds up.
class ControlChannelDecoding : public testing::Test {
 protected:
  ControlChannelDecoding() {
    pool->post([waiting = freePool.get_future().share()] { waiting.wait(); });
  }
  ~ControlChannelDecoding() override { channel->cancelAll(); }

  const std::string large = std::string(ControlChannel::elsewhereDecodeBytes, 'x');
  std::promise<void> freePool;
  ScriptedHost host;
  std::shared_ptr<TaskPool> pool = std::make_shared<TaskPool>(1);
  std::shared_ptr<ControlChannel> channel =
      ControlChannel::make(host.path(), "tests.channel", pool);
};

TEST_F(ControlChannelDecoding, aLargeAnswerIsDecodedElsewhere) {
  host.expect(lineOf("large")).answer(message(large));
  host.expect(lineOf("next")).answer(message("next"));
  auto first = start(*channel, statOf("large"));
  ASSERT_TRUE(host.waitForSends(1));
  EXPECT_EQ(textOf(start(*channel, statOf("next")).wait()), "next");
  EXPECT_FALSE(first.isThere());
  freePool.set_value();
  EXPECT_EQ(textOf(first.wait()), large);
}

TEST_F(ControlChannelDecoding, anAnswerThatIsNotLargeNeedsNoOtherThread) {
  const std::string half = large.substr(0, large.size() / 2);
  host.expect(stat).answer(message(half));
  EXPECT_EQ(textOf(start(*channel, statRequest).wait()), half);
  freePool.set_value();
}

TEST_F(ControlChannelDecoding, withoutDecodersALargeAnswerIsDecodedByTheChannel) {
  channel->cancelAll();
  channel = ControlChannel::make(host.path(), "tests.channel");
  host.expect(stat).answer(message(large));
  EXPECT_EQ(textOf(start(*channel, statRequest).wait()), large);
  freePool.set_value();
}

TEST_F(ControlChannelDecoding, aLargeLineThatIsNotAResponseKeepsTheConnection) {
  host.expect(lineOf("large")).answer(large);
  host.expect(lineOf("next")).answer(message("next"));
  auto first = start(*channel, statOf("large"));
  ASSERT_TRUE(host.waitForSends(1));
  EXPECT_EQ(textOf(start(*channel, statOf("next")).wait()), "next");
  freePool.set_value();
  EXPECT_EQ(textOf(first.wait()), "decoding error");
  EXPECT_EQ(host.connections(), 1U);
}

}  // namespace
}  // namespace tarnel::test
