#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "control/ControlClient.h"
#include "control/ControlWire.h"
#include "support/OpenDescriptors.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

using Kind = ControlClientError::Kind;
using Clock = std::chrono::steady_clock;
using StreamRefusal = std::expected<std::optional<ControlResponse>, ControlClientFailure>;

constexpr const char* stat = R"({"op":"stat"})";
constexpr const char* ok = R"({"status":"ok"})";
const ControlRequest statRequest{.op = ControlOp::stat};

template <class Failure>
std::string textOf(const Failure& failure) {
  return std::visit([](const auto& error) { return std::string(description(error)); }, failure);
}

// A client of a scripted host, closed at the end, with a bound on its silence.
class ControlClientTest : public testing::Test {
 protected:
  ControlClientTest() { client.setDeadline(20); }
  ~ControlClientTest() override { client.close(); }

  [[nodiscard]] ControlClientFailure failureOfSend() {
    auto response = client.send(statRequest);
    if (!response) return response.error();
    ADD_FAILURE() << "an answer was not expected";
    return EncodingError{};
  }
  void expectAnswer(const char* message) {
    const auto response = client.send(statRequest);
    ASSERT_TRUE(response.has_value()) << textOf(response.error());
    EXPECT_EQ(response->message, message);
  }

  ScriptedHost host;
  ControlClient client = ControlClient::connect(host.path()).value();
};

TEST_F(ControlClientTest, oneRequestOneAnswer) {
  host.expect(R"({"op":"stat","name":"me\/Docs"})").answer(R"({"status":"error","message":"no"})");
  const auto response = client.send({.op = ControlOp::stat, .name = "me/Docs"});
  ASSERT_TRUE(response.has_value());
  EXPECT_EQ(*response, ControlResponse::error("no"));
}

TEST_F(ControlClientTest, twoAnswersInOneReadBelongToTwoRequests) {
  host.expect(stat).send(
      "{\"status\":\"ok\",\"message\":\"1\"}\n{\"status\":\"ok\",\"message\":\"2\"}\n");
  host.expect(stat);
  expectAnswer("1");
  EXPECT_TRUE(client.hasUnrequestedBytes());
  expectAnswer("2");
  EXPECT_FALSE(client.hasUnrequestedBytes());
}

TEST_F(ControlClientTest, anAnswerOverSeveralReadsIsJoined) {
  host.expect(stat)
      .send(R"({"status":)")
      .send("\"ok\",\"mess")
      .inPiecesOf(3)
      .send("age\":\"x\"}\n");
  expectAnswer("x");
}

TEST_F(ControlClientTest, anAnswerOneByteAtATimeIsJoined) {
  host.expect(stat).answer(R"({"status":"ok","message":"byte by byte"})").inPiecesOf(1);
  expectAnswer("byte by byte");
}

TEST_F(ControlClientTest, oneByteTooManyWithoutALineFeedIsOversized) {
  host.expect(stat).send(std::string(16'777'217, 'x'));
  EXPECT_EQ(textOf(failureOfSend()), "oversized response from Tarnel");
}

TEST_F(ControlClientTest, aStreamWithoutALineFeedIsOversizedBeforeItEnds) {
  host.expect(stat).send(std::string(17 * 1024 * 1024, 'x'));
  EXPECT_EQ(textOf(failureOfSend()), "oversized response from Tarnel");
}

TEST_F(ControlClientTest, exactlyTheCapWithItsLineFeedIsRead) {
  const std::string head = R"({"status":"ok","message":")";
  const std::string message(ControlWire::maxFrameBytes - head.size() - 3, 'x');
  host.expect(stat).answer(head + message + "\"}");
  const auto response = client.send(statRequest);
  ASSERT_TRUE(response.has_value()) << textOf(response.error());
  EXPECT_EQ(response->message->size(), message.size());
}

// The check counts the whole buffer, also when the last read brought the line feed.
TEST_F(ControlClientTest, oneByteOverTheCapIsOversizedAlsoWithItsLineFeed) {
  const std::string head = R"({"status":"ok","message":")";
  const std::string message(ControlWire::maxFrameBytes - head.size() - 2, 'x');
  host.expect(stat).answer(head + message + "\"}");
  EXPECT_EQ(textOf(failureOfSend()), "oversized response from Tarnel");
}

TEST_F(ControlClientTest, aHostThatHangsUpBeforeItsAnswerHasClosed) {
  host.expect(stat).hangUp();
  EXPECT_EQ(textOf(failureOfSend()), "connection to Tarnel closed");
}

TEST_F(ControlClientTest, aHostThatHangsUpInMidAnswerHasClosed) {
  host.expect(stat).send(R"({"status":"o)").hangUp();
  EXPECT_EQ(textOf(failureOfSend()), "connection to Tarnel closed");
}

TEST_F(ControlClientTest, aSilentHostTimesOutAfterTheDeadline) {
  host.expect(stat).stall();
  client.setDeadline(0.25);
  const auto start = Clock::now();
  EXPECT_EQ(textOf(failureOfSend()), "control socket timed out");
  const std::chrono::duration<double> taken = Clock::now() - start;
  EXPECT_GE(taken.count(), 0.24);
  EXPECT_LT(taken.count(), 5.0);
}

TEST_F(ControlClientTest, aHostThatStopsInMidAnswerTimesOut) {
  host.expect(stat).send(R"({"status")").stall();
  client.setDeadline(0.1);
  EXPECT_EQ(textOf(failureOfSend()), "control socket timed out");
}

TEST_F(ControlClientTest, aLineThatIsNotJsonIsADecodingErrorAndTheNextAnswerIsItsOwn) {
  host.expect(stat).answer("this is not JSON");
  host.expect(stat).answer(ok);
  EXPECT_TRUE(std::holds_alternative<DecodingError>(failureOfSend()));
  EXPECT_TRUE(client.send(statRequest).has_value());
}

TEST_F(ControlClientTest, linesThatAreNoResponsesAreDecodingErrors) {
  for (const char* line :
       {"", "{", R"({"status":"ok")", R"({"status":"OK"})", R"({"status":"ok","entries":[{}]})",
        "[]", "null", R"({"status":"ok","dataBase64":7})", "\xff\xfe", R"({"status":"ok"}})"}) {
    host.expect(stat).answer(line);
    EXPECT_TRUE(std::holds_alternative<DecodingError>(failureOfSend())) << line;
  }
}

TEST_F(ControlClientTest, aTextThatIsNotUtf8IsNeverWritten) {
  EXPECT_TRUE(std::holds_alternative<EncodingError>(
      client.send({.op = ControlOp::stat, .name = "\xff"}).error()));
  host.expect(stat).answer(ok);
  EXPECT_TRUE(client.send(statRequest).has_value());
  EXPECT_EQ(host.requests().size(), 1U);
}

TEST_F(ControlClientTest, aLargeRequestIsWrittenWhole) {
  const std::string name(3'000'000, 'n');
  host.expect(R"({"op":"stat","name":")" + name + "\"}").answer(ok);
  EXPECT_TRUE(client.send({.op = ControlOp::stat, .name = name}).has_value());
}

TEST_F(ControlClientTest, aHostThatReadsNothingTimesOutTheWriter) {
  host.expect(stat).stall();
  client.setDeadline(0.2);
  ASSERT_TRUE(client.sendRaw(statRequest).has_value());
  ASSERT_TRUE(host.waitForRequests(1));  // from here on it reads no more
  const auto sent = client.sendRaw({.op = ControlOp::stat, .name = std::string(8'000'000, 'n')});
  ASSERT_FALSE(sent.has_value());
  EXPECT_EQ(textOf(sent.error()), "control socket timed out");
}

TEST_F(ControlClientTest, shutdownFromAnotherThreadEndsABlockedRead) {
  host.expect(stat).stall();
  std::thread aborting([&] {
    EXPECT_TRUE(host.waitForRequests(1));
    client.shutdownForAbort();
  });
  const auto failure = failureOfSend();
  aborting.join();
  // errno is read after an end of stream too: both outcomes are right.
  EXPECT_TRUE(textOf(failure) == "connection to Tarnel closed" ||
              textOf(failure) == "control socket timed out");
}

TEST_F(ControlClientTest, readsFramesBehindTheAnswersOfOneSocket) {
  const Bytes large(1'000'000, 'f');
  host.expect(R"({"op":"readStream","name":"a"})")
      .send(ControlStreamFrame::encode(ControlStreamFrame::data, "abc") +
            ControlStreamFrame::encode(ControlStreamFrame::data, large))
      .send(ControlStreamFrame::encode(ControlStreamFrame::eof, ""))
      .inPiecesOf(1);
  ASSERT_TRUE(client.sendRaw({.op = ControlOp::readStream, .name = "a"}).has_value());
  EXPECT_EQ(client.readFrame(), (StreamFrame{.tag = 0x44, .payload = "abc"}));
  EXPECT_EQ(client.readFrame(), (StreamFrame{.tag = 0x44, .payload = large}));
  EXPECT_EQ(client.readFrame(), (StreamFrame{.tag = 0x45, .payload = ""}));
}

TEST_F(ControlClientTest, anOversizedFrameIsAMalformedResponse) {
  host.expect(stat).send("\x44\xff\xff\xff\xff");
  ASSERT_TRUE(client.sendRaw(statRequest).has_value());
  const auto frame = client.readFrame();
  ASSERT_FALSE(frame.has_value());
  EXPECT_EQ(description(frame.error()), "malformed response from Tarnel (oversized(4294967295))");
}

TEST_F(ControlClientTest, aFrameThatIsCutOffOrLateFailsLikeALine) {
  host.expect(stat)
      .send(std::string("\x44\0\0\0\x05"
                        "ab",
                        7))
      .stall()
      .hangUp();
  ASSERT_TRUE(client.sendRaw(statRequest).has_value());
  client.setDeadline(0.1);
  EXPECT_EQ(client.readFrame(), std::unexpected(ControlClientError{.kind = Kind::timedOut}));
  client.setDeadline(20);
  host.release();
  errno = 0;
  EXPECT_EQ(client.readFrame(),
            std::unexpected(ControlClientError{.kind = Kind::connectionClosed}));
}

TEST_F(ControlClientTest, aLineInThePlaceOfAStreamIsTheRefusalAndTheNextAnswerIsItsOwn) {
  host.expect(R"({"op":"readStream"})")
      .answer(R"({"status":"error","message":"no"})")
      .inPiecesOf(1);
  host.expect(stat).answer(R"({"status":"ok","message":"next"})");
  ASSERT_TRUE(client.sendRaw({.op = ControlOp::readStream}).has_value());
  EXPECT_EQ(client.streamRefusal(), StreamRefusal(ControlResponse::error("no")));
  EXPECT_FALSE(client.hasUnrequestedBytes());
  expectAnswer("next");
}

TEST_F(ControlClientTest, aStreamIsNoRefusalAlsoWhenItsFirstFrameIsAnError) {
  host.expect(R"({"op":"readStream"})")
      .send(ControlStreamFrame::encode(ControlStreamFrame::error, "no"))
      .inPiecesOf(1);
  ASSERT_TRUE(client.sendRaw({.op = ControlOp::readStream}).has_value());
  EXPECT_EQ(client.streamRefusal(), StreamRefusal(std::nullopt));
  EXPECT_EQ(client.readFrame(), (StreamFrame{.tag = 'X', .payload = "no"}));
}

TEST_F(ControlClientTest, aRefusalThatIsNoResponseOrNeverComesFailsLikeAnAnswer) {
  host.expect(R"({"op":"readStream"})").answer("{}");
  host.expect(R"({"op":"readStream"})").hangUp();
  ASSERT_TRUE(client.sendRaw({.op = ControlOp::readStream}).has_value());
  auto refusal = client.streamRefusal();
  ASSERT_FALSE(refusal.has_value());
  EXPECT_TRUE(std::holds_alternative<DecodingError>(refusal.error()));
  ASSERT_TRUE(client.sendRaw({.op = ControlOp::readStream}).has_value());
  errno = 0;
  refusal = client.streamRefusal();
  ASSERT_FALSE(refusal.has_value());
  EXPECT_EQ(textOf(refusal.error()), "connection to Tarnel closed");
}

TEST(ControlClientErrors, areEqualUpToTheCompositionOfTheirDetail) {
  const auto malformed = [](const char* detail) {
    return ControlClientError{.kind = Kind::malformedResponse, .detail = detail};
  };
  EXPECT_EQ(malformed("caf\u00e9"), malformed("cafe\u0301"));
  EXPECT_NE(malformed("cafe"), malformed("caf\u00e9"));
  EXPECT_NE(ControlClientError{.kind = Kind::timedOut},
            ControlClientError{.kind = Kind::connectionClosed});
}

TEST(ControlClientErrors, haveFixedTexts) {
  EXPECT_EQ(description(ControlClientError{.kind = Kind::malformedResponse, .detail = "why"}),
            "malformed response from Tarnel (why)");
  EXPECT_EQ(description(ControlClientError{.kind = Kind::connectionClosed}),
            "connection to Tarnel closed");
  EXPECT_EQ(description(ControlClientError{.kind = Kind::oversizedResponse}),
            "oversized response from Tarnel");
  EXPECT_EQ(description(ControlClientError{.kind = Kind::timedOut}), "control socket timed out");
}

TEST(ControlClientConnect, passesTheSocketsErrorUp) {
  const TempDir folder;
  const auto client = ControlClient::connect(folder / "none");
  ASSERT_FALSE(client.has_value());
  EXPECT_EQ(client.error(),
            (UnixSocketError{.kind = UnixSocketError::Kind::connect, .path = {}, .error = ENOENT}));
}

TEST(ControlClientConnect, releasingAClientLeavesItsDescriptorAndCloseClosesIt) {
  const ScriptedHost host;
  const std::size_t before = openDescriptors();
  {
    ControlClient closed = ControlClient::connect(host.path()).value();
    ASSERT_TRUE(host.waitForConnections(1));
    closed.close();
  }
  ASSERT_TRUE(host.waitForEnds(1));
  EXPECT_EQ(openDescriptors(), before);
  {
    const ControlClient released = ControlClient::connect(host.path()).value();
  }
  ASSERT_TRUE(host.waitForConnections(2));
  EXPECT_EQ(openDescriptors(), before + 2);  // both ends
}

}  // namespace
}  // namespace tarnel::test
