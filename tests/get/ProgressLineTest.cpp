#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "get/ProgressLine.h"

namespace tarnel::test {
namespace {

constexpr std::int64_t mib = 1 << 20;

CopyProgress halfWay() {
  return {.bytes = 512 * mib,
          .files = 3,
          .received = 512 * mib,
          .elapsed = std::chrono::seconds(2),
          .totals = CopyTotals{.bytes = 1024 * mib, .files = 20'000}};
}

TEST(ProgressLine, tellsBytesFilesRateAndTimeLeft) {
  EXPECT_EQ(progressText(halfWay(), 80),
            "512.0 MiB of 1.0 GiB, 3 of 20000 files, 256.0 MiB/s, 0:02 left");
}

TEST(ProgressLine, withoutTotalsTellsWhatItKnows) {
  CopyProgress progress = halfWay();
  progress.totals.reset();
  progress.files = 1;
  EXPECT_EQ(progressText(progress, 80), "512.0 MiB, 1 file, 256.0 MiB/s");
}

TEST(ProgressLine, isNarrowerThanEveryTerminal) {
  std::size_t longest = 0;
  for (std::size_t columns = 0; columns <= 100; ++columns) {
    const std::string text = progressText(halfWay(), columns);
    EXPECT_LT(text.size(), std::max<std::size_t>(columns, 1)) << columns;
    EXPECT_GE(text.size(), longest);
    longest = text.size();
  }
  EXPECT_EQ(progressText(halfWay(), 50), "512.0 MiB of 1.0 GiB, 256.0 MiB/s, 0:02 left");
  EXPECT_EQ(progressText(halfWay(), 22), "512.0 MiB of 1.0 GiB");
}

TEST(ProgressLine, aTreeThatGrewHasNoTotals) {
  CopyProgress progress = halfWay();
  progress.bytes = 2048 * mib;
  EXPECT_EQ(progressText(progress, 80), "2.0 GiB, 3 files, 256.0 MiB/s");
}

TEST(ProgressLine, whatWasSkippedTookNoTime) {
  CopyProgress progress = halfWay();
  progress.received = 0;
  EXPECT_THAT(progressText(progress, 80), testing::HasSubstr(", 0 B/s"));
  EXPECT_THAT(progressText(progress, 80), testing::Not(testing::HasSubstr("left")));
}

TEST(ProgressLine, longTimesHaveHours) {
  CopyProgress progress = halfWay();
  progress.elapsed = std::chrono::seconds(4000);
  EXPECT_THAT(progressText(progress, 80), testing::HasSubstr("1:06:40 left"));
}

}  // namespace
}  // namespace tarnel::test
