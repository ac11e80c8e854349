#include <gtest/gtest.h>
#include <unistd.h>

#include "FatalSignal.h"

namespace tarnel {
namespace {

TEST(FatalSignal, isAPendingKillOfTheThread) {
  EXPECT_TRUE(
      showsFatalSignal("Name:\tcat\nSigPnd:\t0000000000000100\nShdPnd:\t0000000000000002\n"));
  EXPECT_TRUE(showsFatalSignal("SigPnd:\t0000000000000102\n"));
}

TEST(FatalSignal, isNotASignalThatTheProgramHandles) {
  EXPECT_FALSE(showsFatalSignal("SigPnd:\t0000000000000000\nShdPnd:\t0000000000002000\n"));
  EXPECT_FALSE(showsFatalSignal("SigPnd:\t0000000000002002\n"));
}

TEST(FatalSignal, isNotSeenInWhatCannotBeRead) {
  EXPECT_FALSE(showsFatalSignal(""));
  EXPECT_FALSE(showsFatalSignal("SigPnd:\tzzz\n"));
  EXPECT_FALSE(hasFatalSignal(0));
  EXPECT_FALSE(hasFatalSignal(::gettid()));
}

}  // namespace
}  // namespace tarnel
