// Where the lines go, and that they go there until the process is gone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "fusefs/AdapterLog.h"
#include "seam/VolumeLog.h"

namespace tarnel {
namespace {

// What comes to standard error while `say` runs.
template <class Say>
std::string said(Say say) {
  testing::internal::CaptureStderr();
  say();
  return testing::internal::GetCapturedStderr();
}

TEST(AdapterLog, writesEachLineToStandardErrorWithItsControlCharactersEscaped) {
  logToStandardError(false);
  const std::string text = said([] { log().servedStale("me/a\nb", 1, "notFound"); });
  EXPECT_TRUE(text.starts_with("tarnel: getAttributes SERVED STALE relpath=me/a")) << text;
  EXPECT_EQ(text.find('\n'), text.size() - 1);
}

TEST(AdapterLog, saysWhatIsForDebuggingOnlyWhenItIsWanted) {
  const auto all = [] {
    log().reclaimItem("me", 3);
    log().unloaded();
  };
  logToStandardError(true);
  EXPECT_TRUE(log().isDebugEnabled());
  EXPECT_EQ(said(all), "tarnel: reclaimItem relpath=me id=3\ntarnel: unloaded\n");
  logToStandardError(false);
  EXPECT_FALSE(log().isDebugEnabled());
  EXPECT_EQ(said(all), "tarnel: unloaded\n");
}

// A thread that waits for the host is not joined: it may have something to say while the process
// is already taking down what it made.
template <class Choose>
[[noreturn]] void logAtTheVeryEnd(Choose choose) {
  std::atexit([] {
    log().unloaded();
    logLeftOutNames("me", 2);
  });
  choose();  // its end, if it had one, would come before
  std::exit(0);
}

TEST(AdapterLogDeathTest, takesLinesUntilTheProcessIsGone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(logAtTheVeryEnd([] { logToStandardError(false); }), testing::ExitedWithCode(0),
              "tarnel: unloaded\ntarnel: left out 2 names");
  EXPECT_EXIT(logAtTheVeryEnd([] { logToSystemLog(); }), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tarnel
