#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

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

// SIGQUIT, 3, to the thread or to the whole process.
TEST(FatalSignal, isAPendingSignalThatDumpsCoreUnlessTheProgramSaysOtherwise) {
  const std::string none = "0000000000000000\n";
  const std::string quit = "0000000000000004\n";
  const auto status = [&](const std::string& own, const std::string& shared,
                          const std::string& blocked, const std::string& ignored,
                          const std::string& caught) {
    return "SigQ:\t0/95000\nSigPnd:\t" + own + "ShdPnd:\t" + shared + "SigBlk:\t" + blocked +
           "SigIgn:\t" + ignored + "SigCgt:\t" + caught;
  };
  EXPECT_TRUE(showsFatalSignal(status(quit, none, none, none, none)));
  EXPECT_TRUE(showsFatalSignal(status(none, quit, none, none, none)));
  EXPECT_FALSE(showsFatalSignal(status(none, quit, quit, none, none)));
  EXPECT_FALSE(showsFatalSignal(status(none, quit, none, quit, none)));
  EXPECT_FALSE(showsFatalSignal(status(none, quit, none, none, quit)));
  EXPECT_FALSE(showsFatalSignal(status(none, none, none, none, none)));
}

TEST(FatalSignal, isNotSeenInWhatCannotBeRead) {
  EXPECT_FALSE(showsFatalSignal(""));
  EXPECT_FALSE(showsFatalSignal("SigPnd:\tzzz\n"));
  EXPECT_FALSE(hasFatalSignal(0));
  EXPECT_FALSE(hasFatalSignal(::gettid()));
}

}  // namespace
}  // namespace tarnel
