#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <string>
#include <system_error>

#include "NoMoreThreads.h"
#include "control/Thread.h"

namespace tarnel::test {
namespace {

bool blocks(int signal) {
  sigset_t blocked;
  pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
  return sigismember(&blocked, signal) == 1;
}

TEST(Thread, blocksEverySignalAndLeavesTheCallersMask) {
  const bool before = blocks(SIGTERM);
  bool inside = false;
  startThread("a long name of a thread", [&] {
    inside =
        blocks(SIGTERM) && blocks(SIGINT) && blocks(SIGHUP) && blocks(SIGUSR1) && blocks(SIGPIPE);
  }).join();
  EXPECT_TRUE(inside);
  EXPECT_EQ(blocks(SIGTERM), before);
}

TEST(Thread, bearsTheEndOfItsName) {
  char name[32] = {};
  startThread("tarnel.fskit.control.metadata", [&] {
    pthread_getname_np(pthread_self(), name, sizeof name);
  }).join();
  EXPECT_TRUE(std::string("tarnel.fskit.control.metadata").ends_with(name)) << name;
  EXPECT_GE(std::string(name).size(), 15U);
}

#if defined(__GLIBC__)
TEST(Thread, thatCannotBeMadeThrowsAndLeavesTheCallersMask) {
  const bool before = blocks(SIGTERM);
  {
    const NoMoreThreads none;
    EXPECT_THROW((void)startThread("none", [] {}), std::system_error);
  }
  EXPECT_EQ(blocks(SIGTERM), before);
}
#endif

}  // namespace
}  // namespace tarnel::test
