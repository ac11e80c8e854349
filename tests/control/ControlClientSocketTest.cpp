// What a client makes of its socket: time limits, errno, and how it waits.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <thread>

#include "control/ControlClient.h"
#include "control/PosixSocket.h"
#include "control/UniqueFd.h"

namespace tarnel::test {
namespace {

using Kind = ControlClientError::Kind;
using Clock = std::chrono::steady_clock;

const ControlRequest statRequest{.op = ControlOp::stat};

// Both ends of a connection in the test's hands.
class ControlClientPair : public testing::Test {
 protected:
  ControlClientPair() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    near.reset(ends[0]);
    far.reset(ends[1]);
  }
  [[nodiscard]] ControlClientError errorOfSendWithErrno(int before) {
    ControlClient client(near.get());
    errno = before;
    return std::get<ControlClientError>(client.send(statRequest).error());
  }
  UniqueFd near;
  UniqueFd far;
};

// A deadline is silence: each byte begins it anew.
TEST_F(ControlClientPair, theDeadlineCountsFromTheLastByte) {
  ControlClient client(near.get());
  client.setDeadline(2);
  const auto start = Clock::now();
  std::thread host([&] {
    for (const std::string_view piece : {"{\"sta", "tus\"", ":\"o", "k\"}", "\n"}) {
      std::this_thread::sleep_for(std::chrono::milliseconds(500));
      EXPECT_EQ(writeWithoutSignal(far.get(), piece), static_cast<ssize_t>(piece.size()));
    }
  });
  EXPECT_TRUE(client.send(statRequest).has_value());
  host.join();
  EXPECT_GT(Clock::now() - start, std::chrono::seconds(2));
}

#if defined(__linux__)
long sleepsOfThisThread() {
  rusage usage{};
  EXPECT_EQ(::getrusage(RUSAGE_THREAD, &usage), 0);
  return usage.ru_nvcsw;
}

TEST_F(ControlClientPair, aWaitForAnAnswerIsOneSleepAlsoWhenTheRequestIsTakenMeanwhile) {
  ControlClient client(near.get());
  client.setDeadline(20);
  // One thread for all rounds: one that begins or ends may hold up whoever wants memory meanwhile.
  std::thread host([&] {
    while (true) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      char request[64];
      if (::read(far.get(), request, sizeof request) <= 0) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
      EXPECT_GT(writeWithoutSignal(far.get(), "{\"status\":\"ok\"}\n"), 0);
    }
  });
  long fewest = std::numeric_limits<long>::max();  // the machine may make a thread sleep as well
  for (int round = 0; round < 20 && fewest > 1; ++round) {
    const long before = sleepsOfThisThread();
    EXPECT_TRUE(client.send(statRequest).has_value());
    fewest = std::min(fewest, sleepsOfThisThread() - before);
  }
  EXPECT_LE(fewest, 1);
  client.shutdownForAbort();
  host.join();
}
#endif

// errno is read after an orderly end of stream too, where it is whatever the thread last had.
TEST_F(ControlClientPair, anEndOfStreamReadsAsAClosedConnection) {
  ::shutdown(far.get(), SHUT_WR);
  EXPECT_EQ(errorOfSendWithErrno(0).kind, Kind::connectionClosed);
}

TEST_F(ControlClientPair, anEndOfStreamReadsAsTimedOutWhenTheThreadHadEagainBefore) {
  ::shutdown(far.get(), SHUT_WR);
  EXPECT_EQ(errorOfSendWithErrno(EAGAIN).kind, Kind::timedOut);
}

TEST_F(ControlClientPair, aResetReadsAsAClosedConnectionWhateverErrnoWas) {
  far.reset();
  EXPECT_EQ(errorOfSendWithErrno(EAGAIN).kind, Kind::connectionClosed);
}

TEST_F(ControlClientPair, aDeadlineIsBothTimeLimitsInSecondsAndMicroseconds) {
  ControlClient client(near.get());
  client.setDeadline(5.25);
  for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO}) {
    timeval limit{};
    socklen_t length = sizeof limit;
    ASSERT_EQ(::getsockopt(near.get(), SOL_SOCKET, option, &limit, &length), 0);
    EXPECT_EQ(limit.tv_sec, 5);
    EXPECT_NEAR(static_cast<double>(limit.tv_usec), 250'000, 10'000);  // a tick of the system's
  }
  client.setDeadline(0);
  timeval limit{};
  socklen_t length = sizeof limit;
  ASSERT_EQ(::getsockopt(near.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, &length), 0);
  EXPECT_EQ(limit.tv_sec, 0);
  EXPECT_EQ(limit.tv_usec, 0);
}

TEST_F(ControlClientPair, aFailureToSetTheDeadlineIsIgnored) {
  ControlClient client(-1);
  client.setDeadline(1);
  client.setDeadline(-0.5);
}

TEST_F(ControlClientPair, aDeadlineThatNoTimeHoldsEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ControlClient client(near.get());
  EXPECT_DEATH(client.setDeadline(std::numeric_limits<double>::infinity()), "");
  EXPECT_DEATH(client.setDeadline(std::nan("")), "");
  EXPECT_DEATH(client.setDeadline(0x1p63), "");
  EXPECT_DEATH(client.setDeadline(-0x1.0000000000001p63), "");
}

TEST_F(ControlClientPair, everyDeadlineThatATimeHoldsIsPassedOn) {
  ControlClient client(near.get());
  client.setDeadline(0x1.fffffffffffffp62);
  client.setDeadline(-0x1p63);
}

}  // namespace
}  // namespace tarnel::test
