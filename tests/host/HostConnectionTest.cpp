#include <thread>

#include "HostFixture.h"
#include "control/ControlWire.h"
#include "support/Eventually.h"
#include "support/NoMoreDescriptors.h"
#include "support/OpenDescriptors.h"

namespace tarnel::test {
namespace {

class HostConnections : public HostFixture {
 protected:
  static constexpr const char* statDocs = R"({"op":"stat","name":"me\/Docs"})";
  static constexpr const char* malformed = R"({"status":"error","message":"malformed request"})";
  static constexpr const char* notServed = R"({"status":"error","message":"operation not served"})";

  static bool isGood(const std::optional<std::string>& line) {
    return line && line->starts_with(R"({"status":"ok","stat":{"name":"Docs",)");
  }
};

TEST_F(HostConnections, aLineThatIsNoRequestIsAnsweredAndTheConnectionGoesOn) {
  startHost();
  RawClient client(socketPath());
  for (const auto* line :
       {"garbage", "", "{}", "[]", "null", R"({"op":"Stat","name":"me"})", R"({"op":"nonsense"})",
        R"({"name":"me"})", R"({"op":"stat","name":5})", R"({"op":"read","offset":1e30})",
        R"({"op":"stat")", "\xff\xfe", R"({"op":"stat"} x)"}) {
    EXPECT_EQ(client.ask(line), malformed) << line;
  }
  EXPECT_TRUE(isGood(client.ask(statDocs)));
}

TEST_F(HostConnections, deeplyNestedLinesAreAnswered) {
  startHost();
  RawClient client(socketPath());
  EXPECT_EQ(client.ask(std::string(1'000'000, '[')), malformed);
  EXPECT_EQ(client.ask(R"({"op":"shares","x":)" + std::string(1'000'000, '[') +
                       std::string(1'000'000, ']') + "}"),
            malformed);
  EXPECT_TRUE(isGood(client.ask(statDocs)));
}

TEST_F(HostConnections, unknownKeysAreIgnored) {
  startHost();
  RawClient client(socketPath());
  EXPECT_TRUE(isGood(client.ask(R"({"op":"stat","future":{"a":[1]},"name":"me/Docs"})")));
}

TEST_F(HostConnections, operationsThatAreNotServedAreAnsweredWithAnError) {
  startHost();
  RawClient client(socketPath());
  EXPECT_EQ(client.ask(R"({"op":"bridge","name":"me\/Docs"})"), notServed);
  EXPECT_TRUE(isGood(client.ask(statDocs)));
}

TEST_F(HostConnections, aRequestMayArriveByteByByte) {
  startHost();
  RawClient client(socketPath());
  for (const char byte : std::string(statDocs) + "\n") ASSERT_TRUE(client.send({&byte, 1}));
  EXPECT_TRUE(isGood(client.line()));
}

TEST_F(HostConnections, requestsThatArriveTogetherAreAnsweredInOrder) {
  startHost();
  RawClient client(socketPath());
  const std::string request = statDocs;
  ASSERT_TRUE(client.send(request + "\nnoise\n" + request + "\n{\"op\":\"bridge\"}\n"));
  EXPECT_TRUE(isGood(client.line()));
  EXPECT_EQ(client.line(), malformed);
  EXPECT_TRUE(isGood(client.line()));
  EXPECT_EQ(client.line(), notServed);
}

TEST_F(HostConnections, aLineOfSixteenMebibytesIsReadAndOneByteMoreEndsTheConnection) {
  startHost();
  const std::string head = R"({"op":"stat","name":"me\/Docs","x":")", tail = "\"}\n";
  const auto lineOf = [&](std::size_t bytes) {
    return head + std::string(bytes - head.size() - tail.size(), 'x') + tail;
  };
  RawClient fits(socketPath());
  ASSERT_TRUE(fits.send(lineOf(ControlWire::maxFrameBytes)));
  EXPECT_TRUE(isGood(fits.line()));
  RawClient tooLong(socketPath());
  (void)tooLong.send(lineOf(ControlWire::maxFrameBytes + 1));
  EXPECT_TRUE(tooLong.sawHangUp());
  EXPECT_TRUE(isGood(fits.ask(statDocs)));
}

TEST_F(HostConnections, seventeenMebibytesWithoutALineFeedEndOnlyThatConnection) {
  startHost();
  RawClient other(socketPath());
  RawClient flood(socketPath());
  (void)flood.send(std::string(17 * 1'048'576, 'x'));
  EXPECT_TRUE(flood.sawHangUp());
  EXPECT_TRUE(isGood(other.ask(statDocs)));
}

TEST_F(HostConnections, halfARequestThenAHangUpLeavesNothingBehind) {
  startHost();
  RawClient other(socketPath());
  ASSERT_TRUE(isGood(other.ask(statDocs)));
  const auto before = openDescriptors();
  for (int i = 0; i < 100; ++i) {
    RawClient client(socketPath());
    ASSERT_TRUE(client.send(R"({"op":"stat","na)"));
  }
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
  EXPECT_TRUE(isGood(other.ask(statDocs)));
}

TEST_F(HostConnections, aHangUpWhileTheAnswerIsWrittenEndsOnlyThatConnection) {
  temp.file(docs("file"), std::string(262'144, 'x'));
  startHost();
  for (int i = 0; i < 20; ++i) {
    RawClient client(socketPath());
    for (int k = 0; k < 5; ++k) (void)client.send("{\"op\":\"read\",\"name\":\"me/Docs/file\"}\n");
  }
  EXPECT_TRUE(stat("me/Docs").stat);
}

TEST_F(HostConnections, aClientThatDoesNotReadHoldsUpNobodyElse) {
  temp.file(docs("file"), std::string(262'144, 'x'));
  startHost();
  RawClient deaf(socketPath());
  for (int i = 0; i < 20; ++i)
    ASSERT_TRUE(deaf.send("{\"op\":\"read\",\"name\":\"me/Docs/file\"}\n"));
  EXPECT_TRUE(stat("me/Docs").stat);
}

TEST_F(HostConnections, manyConnectionsAreServedAtOnce) {
  constexpr int clients = 8, rounds = 50;
  for (int i = 0; i < clients; ++i) {
    temp.file(docs("file" + std::to_string(i)), std::string(10'000, static_cast<char>('a' + i)));
  }
  startHost();
  std::vector<std::thread> threads;
  for (int i = 0; i < clients; ++i) {
    threads.emplace_back([this, i] {
      RawClient client(socketPath());
      const std::string request =
          R"({"op":"read","name":"me/Docs/file)" + std::to_string(i) + "\"}";
      const std::string expected = R"({"status":"ok","dataBase64":")" +
                                   base64::encode(std::string(10'000, static_cast<char>('a' + i))) +
                                   "\"}";
      for (int k = 0; k < rounds; ++k) ASSERT_EQ(client.ask(request), expected);
    });
  }
  for (auto& thread : threads) thread.join();
}

// A reader takes every refusal for a missing path, and a listing without an entry for one that has
// gone; a hang-up it takes for what it is.
TEST_F(HostConnections, withoutDescriptorsAnAnswerIsWholeOrThereIsNone) {
  temp.file(docs("folder/file"), "bytes");
  temp.link(docs("folder/link"), "file");
  temp.link(docs("way"), "folder");
  startHost();
  const auto atRest = openDescriptors();
  const std::vector<std::string> requests = {
      R"({"op":"stat","name":"me/Docs/folder/link"})", R"({"op":"list","name":"me/Docs/folder"})",
      R"({"op":"list","name":"me/Docs/way"})", R"({"op":"read","name":"me/Docs/way/link"})"};
  for (const std::string& request : requests) {
    const auto whole = RawClient(socketPath()).ask(request);
    ASSERT_TRUE(whole);
    EXPECT_TRUE(whole->starts_with(R"({"status":"ok")")) << *whole;
    int hangUps = 0;
    for (int spare = 0; spare < 8; ++spare) {
      ASSERT_TRUE(eventually([&] { return openDescriptors() == atRest; }));
      RawClient client(socketPath());
      ASSERT_TRUE(isGood(client.ask(statDocs)));
      const NoMoreDescriptors few(spare);
      const auto answer = client.ask(request);
      if (!answer) ++hangUps;
      EXPECT_EQ(answer.value_or(*whole), *whole) << spare << " of " << request;
    }
    EXPECT_GE(hangUps, 1) << request;
    EXPECT_LT(hangUps, 8) << request;
  }
}

TEST_F(HostConnections, oneConnectionTooManyIsClosedAtOnceAndAPlaceIsFreeAgainAfterAHangUp) {
  auto chosen = options();
  chosen.maxConnections = 2;
  startHost(std::move(chosen));
  RawClient first(socketPath()), second(socketPath());
  ASSERT_TRUE(isGood(first.ask(statDocs)));
  ASSERT_TRUE(isGood(second.ask(statDocs)));
  RawClient third(socketPath());
  EXPECT_TRUE(third.sawHangUp());
  EXPECT_TRUE(isGood(first.ask(statDocs)));
  first.hangUp();
  EXPECT_TRUE(eventually([&] { return isGood(RawClient(socketPath()).ask(statDocs)); }));
}

}  // namespace
}  // namespace tarnel::test
