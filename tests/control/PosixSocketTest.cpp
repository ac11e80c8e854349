#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "control/PosixSocket.h"

namespace tarnel::test {
namespace {

constexpr timeval noLimit{};

class SleepUntilReadable : public testing::Test {
 protected:
  SleepUntilReadable() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    ours = UniqueFd(ends[0]);
    theirs = UniqueFd(ends[1]);
  }

  UniqueFd ours;
  UniqueFd theirs;
};

TEST_F(SleepUntilReadable, endsWithAByteOfThePeers) {
  std::thread peer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(::write(theirs.get(), "x", 1), 1);
  });
  EXPECT_TRUE(sleepUntilReadable(ours.get(), noLimit));
  EXPECT_TRUE(hasReadableByte(ours.get()));
  peer.join();
}

TEST_F(SleepUntilReadable, endsWithThePeersHangUp) {
  theirs = UniqueFd();
  EXPECT_TRUE(sleepUntilReadable(ours.get(), noLimit));
}

TEST_F(SleepUntilReadable, endsWhenThisEndIsShutDown) {
  std::thread aborting([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(::shutdown(ours.get(), SHUT_RDWR), 0);
  });
  EXPECT_TRUE(sleepUntilReadable(ours.get(), noLimit));
  aborting.join();
}

#if defined(__linux__)

long sleepsOfThisThread() {
  rusage usage{};
  EXPECT_EQ(::getrusage(RUSAGE_THREAD, &usage), 0);
  return usage.ru_nvcsw;
}

TEST_F(SleepUntilReadable, endsAtTheLimitAsAReadWould) {
  errno = 0;
  EXPECT_FALSE(sleepUntilReadable(ours.get(), {.tv_sec = 0, .tv_usec = 50'000}));
  EXPECT_EQ(errno, EAGAIN);
}

TEST_F(SleepUntilReadable, endsWithASignalThatIsHandledAsAReadWould) {
  struct sigaction before{};
  struct sigaction handled{};
  handled.sa_handler = [](int) {};
  handled.sa_flags = SA_RESTART;
  ASSERT_EQ(::sigaction(SIGUSR1, &handled, &before), 0);
  const pthread_t sleeper = ::pthread_self();
  std::atomic<bool> awake = false;
  std::thread signalling([&] {
    while (!awake) {
      ::pthread_kill(sleeper, SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  });
  errno = 0;
  const bool readable = sleepUntilReadable(ours.get(), {.tv_sec = 30, .tv_usec = 0});
  const int error = errno;
  awake = true;
  signalling.join();
  EXPECT_FALSE(readable);
  EXPECT_EQ(error, EINTR);
  ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(SleepUntilReadable, isNotWokenByAPeerThatTakesWhatWasSent) {
  constexpr int sent = 20;
  for (int i = 0; i < sent; ++i) ASSERT_EQ(::write(ours.get(), "x", 1), 1);
  std::thread peer([&] {
    for (int i = 0; i < sent; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      char taken = 0;
      EXPECT_EQ(::read(theirs.get(), &taken, 1), 1);
    }
    EXPECT_EQ(::write(theirs.get(), "x", 1), 1);
  });
  const long before = sleepsOfThisThread();
  EXPECT_TRUE(sleepUntilReadable(ours.get(), noLimit));
  EXPECT_LT(sleepsOfThisThread() - before, sent / 2);  // once, and what a busy system adds
  peer.join();
}

#endif

}  // namespace
}  // namespace tarnel::test
