#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "ControlChannelFixture.h"
#include "ListeningSocket.h"
#include "control/UnixSocket.h"
#include "support/Eventually.h"
#include "support/OpenDescriptors.h"

namespace tarnel::test {
namespace {

TEST_F(ControlChannelTest, theFirstRequestConnectsAndTheNextReusesTheConnection) {
  EXPECT_EQ(host.connections(), 0U);
  host.expect(stat).answer(ok);
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(host.connections(), 1U);
}

TEST_F(ControlChannelTest, withNoHostARequestFailsAndOnceTheHostListensTheNextSucceeds) {
  const TempDir folder;
  const std::string path = folder / "later.sock";
  channel = ControlChannel::make(path, "tests.channel");
  EXPECT_EQ(ask(), disconnected);
  EXPECT_EQ(ask(), disconnected);
  ScriptedHost later(path);
  later.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
}

TEST_F(ControlChannelTest, aSilentHostTimesOutAndTheNextRequestConnectsAnew) {
  host.expect(stat).stall();
  host.expect(stat).answer(ok);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(ask(0.2), timedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(190));
  EXPECT_TRUE(host.waitForEnds(1));  // the connection was closed
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(host.connections(), 2U);
}

TEST_F(ControlChannelTest, everyRequestSetsItsOwnDeadline) {
  host.expect(stat).answer(ok);
  host.expect(stat).stall();
  EXPECT_EQ(ask(20), "ok");
  EXPECT_EQ(ask(0.1), timedOut);
}

TEST_F(ControlChannelTest, aHostThatHangsUpDisconnectsAndTheNextRequestConnectsAnew) {
  host.expect(stat).hangUp();
  host.expect(stat).send(R"({"status":)").hangUp();
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), disconnected);
  EXPECT_EQ(ask(), disconnected);
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(host.connections(), 3U);
}

// The look for unrequested bytes on a kept connection must not turn this into a time limit reached.
TEST_F(ControlChannelTest, aHostThatHangsUpOnAKeptConnectionDisconnects) {
  host.expect(stat).answer(ok);
  host.expect(stat).hangUp();
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(ask(), disconnected);
  EXPECT_EQ(host.connections(), 1U);
}

TEST_F(ControlChannelTest, aHostThatHangsUpAtOnceDisconnects) {
  host.greetNext().hangUp();
  EXPECT_EQ(ask(), disconnected);
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
}

TEST_F(ControlChannelTest, aConnectionThatEndedWhileIdleFailsOneRequestAndHeals) {
  host.expect(stat).answer(ok).hangUp();
  EXPECT_EQ(ask(), "ok");
  ASSERT_TRUE(host.waitForEnds(1));
  EXPECT_EQ(ask(), disconnected);  // there is no retry inside a request
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
}

TEST_F(ControlChannelTest, anAnswerPastTheCapDisconnects) {
  host.expect(stat).send(std::string(17 * 1024 * 1024, 'x'));
  EXPECT_EQ(ask(), disconnected);
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(host.connections(), 2U);
}

TEST_F(ControlChannelTest, aLineThatIsNotAResponseKeepsTheConnection) {
  for (const char* line : {"not JSON", R"({"status":"ok")", R"({"status":5})", ""}) {
    host.expect(stat).answer(line);
    EXPECT_EQ(ask(), "decoding error") << line;
  }
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(host.connections(), 1U);
}

TEST_F(ControlChannelTest, aRequestThatCannotBeEncodedIsNeverSentAndKeepsTheConnection) {
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(textOf(start(*channel, statOf("\xff")).wait()), "encoding error");
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
  EXPECT_EQ(host.connections(), 1U);
  EXPECT_EQ(host.requests().size(), 2U);
}

TEST_F(ControlChannelTest, anErrorStatusIsAnAnswer) {
  host.expect(stat).answer(R"({"status":"error","message":"no such file"})");
  const auto result = start(*channel, statRequest).wait();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, ControlResponse::error("no such file"));
}

TEST_F(ControlChannelTest, requestsRunOneAfterAnotherInOrderOfArrival) {
  host.answerWith([](const std::string& line) {
    return HostReply().answer(message(std::to_string(line.size())));
  });
  std::vector<ChannelOutcome> outcomes;
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < 50; ++i) {
    outcomes.push_back(start(*channel, statOf(std::string(i, 'n'))));
    lines.push_back(lineOf(std::string(i, 'n')));
  }
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    EXPECT_EQ(textOf(outcomes[i].wait()), std::to_string(lines[i].size()));
  }
  EXPECT_EQ(host.requests(), lines);
  EXPECT_EQ(host.connections(), 1U);
}

TEST_F(ControlChannelTest, aReplyMayMakeTheNextRequest) {
  host.expect(stat).answer(ok);
  host.expect(lineOf("next")).answer(message("second"));
  ChannelOutcome second;
  channel->request(statRequest, 20, [&](const ControlChannelResult& first) {
    EXPECT_EQ(textOf(first), "ok");
    channel->request(statOf("next"), 20, second.reply());
  });
  EXPECT_EQ(textOf(second.wait()), "second");
}

TEST_F(ControlChannelTest, anAnswerTooManyInTheSameReadIsNeverTakenForTheNext) {
  host.expect(stat).send(message("right") + "\n" + message("stale") + "\n");
  host.expect(stat).answer(message("fresh"));
  EXPECT_EQ(ask(), "right");
  EXPECT_EQ(ask(), "fresh");
  EXPECT_EQ(host.connections(), 2U);
}

TEST_F(ControlChannelTest, anAnswerTooManyThatComesLaterIsNeverTakenForTheNext) {
  host.expect(stat).answer(message("right")).stall().answer(message("stale"));
  host.expect(stat).answer(message("fresh"));
  EXPECT_EQ(ask(), "right");
  host.release();
  ASSERT_TRUE(host.waitForSends(2));
  EXPECT_EQ(ask(), "fresh");
  EXPECT_EQ(host.connections(), 2U);
  EXPECT_TRUE(host.waitForEnds(1));
}

TEST_F(ControlChannelTest, aHostThatTalksFirstNeverShiftsTheAnswers) {
  host.greetNext().answer("welcome");
  host.expect(stat).answer(message("first"));
  host.expect(stat).answer(message("second"));
  EXPECT_EQ(ask(), "decoding error");  // the greeting
  ASSERT_TRUE(host.waitForSends(2));
  EXPECT_EQ(ask(), "second");
}

TEST_F(ControlChannelTest,
       cancelFailsTheBlockedRequestAtOnceAndTheQueuedOnesWithoutReachingTheHost) {
  host.expect(lineOf("blocked")).stall();
  auto blocked = start(*channel, statOf("blocked"));
  ASSERT_TRUE(host.waitForRequests(1));
  std::vector<ChannelOutcome> queued;
  for (int i = 0; i < 3; ++i) queued.push_back(start(*channel, statOf("queued")));
  const auto before = std::chrono::steady_clock::now();
  channel->cancelAll();
  EXPECT_TRUE(hasLostItsHost(textOf(blocked.wait())));
  for (auto& outcome : queued) EXPECT_EQ(textOf(outcome.wait()), disconnected);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(10));

  host.expect(lineOf("after")).answer(message("afterwards"));
  EXPECT_EQ(textOf(start(*channel, statOf("after")).wait()), "afterwards");
  EXPECT_EQ(host.requests(), (std::vector<std::string>{lineOf("blocked"), lineOf("after")}));
}

TEST_F(ControlChannelTest, cancelWithoutAConnectionDoesNoHarm) {
  channel->cancelAll();
  channel->cancelAll();
  host.expect(stat).answer(ok);
  EXPECT_EQ(ask(), "ok");
}

TEST_F(ControlChannelTest, cancelClosesAnIdleConnection) {
  host.expect(stat).answer(ok);
  const std::size_t before = openDescriptors();
  EXPECT_EQ(ask(), "ok");
  channel->cancelAll();
  EXPECT_TRUE(host.waitForEnds(1));
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
}

TEST_F(ControlChannelTest, cancelNeverClosesTheDescriptorUnderTheRunningRequest) {
  host.expect(stat).stall();
  const std::size_t before = openDescriptors();
  std::promise<void> failed;
  std::promise<void> goOn;
  // The reply runs on the channel's thread, as a part of the request.
  channel->request(statRequest, 20, [&](const ControlChannelResult& result) {
    EXPECT_TRUE(hasLostItsHost(textOf(result)));
    failed.set_value();
    goOn.get_future().wait();
  });
  ASSERT_TRUE(host.waitForRequests(1));
  channel->cancelAll();
  ASSERT_EQ(failed.get_future().wait_for(waitBound), std::future_status::ready);
  ASSERT_TRUE(host.waitForEnds(1));          // the host saw the hang-up and closed its end
  EXPECT_EQ(openDescriptors(), before + 1);  // ours is open still
  goOn.set_value();
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
}

TEST_F(ControlChannelTest, manyFailuresLeakNoDescriptor) {
  host.answerWith([](const std::string& line) {
    if (line == lineOf("stall")) return HostReply().stall();
    if (line == lineOf("half")) return HostReply().send("{").hangUp();
    return HostReply().hangUp();
  });
  const std::size_t before = openDescriptors();
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(textOf(start(*channel, statOf("stall"), 0.01).wait()), timedOut);
    // The time limit left EAGAIN in errno, which is read after an end of stream too.
    EXPECT_TRUE(hasLostItsHost(textOf(start(*channel, statOf("half")).wait())));
    EXPECT_TRUE(hasLostItsHost(textOf(start(*channel, statOf("gone")).wait())));
  }
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
}

// On purpose: the owner calls cancelAll().
TEST_F(ControlChannelTest, releasingAChannelLeavesItsConnectionOpen) {
  host.expect(stat).answer(ok);
  const std::size_t before = openDescriptors();
  EXPECT_EQ(ask(), "ok");
  const std::weak_ptr<ControlChannel> weak = channel;
  channel = ControlChannel::make(host.path(), "tests.channel");
  ASSERT_TRUE(eventually([&] { return weak.expired(); }));
  EXPECT_EQ(openDescriptors(), before + 2);  // our end and the host's
}

TEST_F(ControlChannelTest, aPathThatIsTooLongDisconnectsAndLeavesOneDescriptorEachTime) {
  channel = ControlChannel::make(std::string(104, 'x'), "tests.channel");
  const std::size_t before = openDescriptors();
  EXPECT_EQ(ask(), disconnected);
  EXPECT_EQ(ask(), disconnected);
  EXPECT_EQ(openDescriptors(), before + 2);
}

TEST_F(ControlChannelTest, aFullBacklogDisconnectsAtOnce) {
  const TempDir folder;
  const std::string path = folder / "busy.sock";
  const UniqueFd listening = listeningSocket(path, 0);
  std::vector<UniqueFd> waiting;
  for (auto fd = connectUnixSocket(path); fd; fd = connectUnixSocket(path))
    waiting.emplace_back(*fd);
  channel = ControlChannel::make(path, "tests.channel");
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(ask(), disconnected);
  EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
}

TEST_F(ControlChannelTest, anAnswerOneByteAtATimeIsRead) {
  host.expect(stat).answer(message("slow")).inPiecesOf(1);
  EXPECT_EQ(ask(), "slow");
}

TEST(ControlChannelErrors, haveFixedTexts) {
  EXPECT_EQ(description(ControlChannelError::timedOut), "control request timed out");
  EXPECT_EQ(description(ControlChannelError::disconnected), "control connection unavailable");
}

}  // namespace
}  // namespace tarnel::test
