#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <optional>

#include "control/PosixSocket.h"
#include "control/UnixSocket.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

class Peer {
 public:
  explicit Peer(const ScriptedHost& host) : fd(connectUnixSocket(host.path()).value_or(-1)) {}
  void send(std::string_view text) { EXPECT_GT(writeWithoutSignal(fd.get(), text), 0); }
  // At most `most` bytes of one read; nullopt at the end of the stream.
  std::optional<std::string> readSome(std::size_t most = 100) {
    std::string out(most, '\0');
    const ssize_t got = ::read(fd.get(), out.data(), most);
    if (got <= 0) return std::nullopt;
    return out.substr(0, static_cast<std::size_t>(got));
  }

 private:
  UniqueFd fd;
};

TEST(ScriptedHost, answersLineByLineAndRecordsWhatCame) {
  ScriptedHost host;
  host.expect("one").answer("1");
  host.expect("two", HostReply().answer("2").hangUp());
  Peer peer(host);
  peer.send("one\ntw");
  EXPECT_EQ(peer.readSome(), "1\n");
  peer.send("o\n");
  EXPECT_EQ(peer.readSome(), "2\n");
  EXPECT_EQ(peer.readSome(), std::nullopt);
  EXPECT_EQ(host.requests(), (std::vector<std::string>{"one", "two"}));
  EXPECT_EQ(host.connections(), 1U);
  EXPECT_TRUE(host.waitForEnds(1));
}

TEST(ScriptedHost, sendsPiecesOneAtATime) {
  ScriptedHost host;
  host.expect("go").answer("abc").inPiecesOf(1);
  Peer peer(host);
  peer.send("go\n");
  for (const char* piece : {"a", "b", "c", "\n"}) EXPECT_EQ(peer.readSome(), piece);
}

TEST(ScriptedHost, aStalledReplyGoesOnAfterRelease) {
  ScriptedHost host;
  host.expect("go").send("a").stall().send("b");
  Peer peer(host);
  peer.send("go\n");
  EXPECT_EQ(peer.readSome(), "a");
  host.release();
  EXPECT_EQ(peer.readSome(), "b");
}

TEST(ScriptedHost, goesAwayWhileSomebodyIsStalled) {
  auto host = std::make_unique<ScriptedHost>();
  host->expect("go").stall();
  Peer peer(*host);
  peer.send("go\n");
  ASSERT_TRUE(host->waitForRequests(1));
  host.reset();
  EXPECT_EQ(peer.readSome(), std::nullopt);
}

TEST(ScriptedHost, aStallEndsWhenTheClientHangsUp) {
  ScriptedHost host;
  host.expect("go").stall();
  {
    Peer peer(host);
    peer.send("go\n");
    ASSERT_TRUE(host.waitForRequests(1));
  }
  EXPECT_TRUE(host.waitForEnds(1));
}

TEST(ScriptedHost, greetsBeforeAnyRequest) {
  ScriptedHost host;
  host.greetNext().send("hello").hangUp();
  Peer greeted(host);
  EXPECT_EQ(greeted.readSome(), "hello");
  EXPECT_EQ(greeted.readSome(), std::nullopt);
}

TEST(ScriptedHost, aHandlerDecidesForEachRequest) {
  ScriptedHost host;
  host.answerWith([](const std::string& line) { return HostReply().answer("<" + line + ">"); });
  Peer peer(host);
  peer.send("a\n");
  EXPECT_EQ(peer.readSome(), "<a>\n");
}

TEST(ScriptedHost, whatWasNotExpectedFailsTheTest) {
  EXPECT_NONFATAL_FAILURE(
      {
        ScriptedHost host;
        host.expect("one").answer("1");
      },
      "never requested: one");
  // The failure comes on the host's thread.
  EXPECT_NONFATAL_FAILURE_ON_ALL_THREADS(
      {
        ScriptedHost host;
        Peer peer(host);
        peer.send("zero\n");
        EXPECT_EQ(peer.readSome(), std::nullopt);
      },
      "unexpected request: zero");
}

}  // namespace
}  // namespace tarnel::test
