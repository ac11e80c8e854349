#include <gtest/gtest.h>

#include <map>

#include "fs/ControlFabricSource.h"
#include "support/GoldenFile.h"

namespace tarnel::test {
namespace {

using Kind = FabricSourceError::Kind;

TEST(Classify, goldenRefusals) {
  const std::map<std::string, Kind> kinds = {{"notFound", Kind::notFound},
                                             {"isDirectory", Kind::isDirectory},
                                             {"notADirectory", Kind::notADirectory}};
  for (const GoldenLine& line : readGolden("refusals.jsonl")) {
    const std::string message = line.bytes("message");
    ASSERT_TRUE(kinds.contains(line.text("error"))) << line.text("error");
    EXPECT_EQ(ControlFabricSource::classify(message).kind, kinds.at(line.text("error")))
        << "line " << line.number() << ": " << readable(message);
  }
}

TEST(Classify, anAbsentMessageIsNotFound) {
  EXPECT_EQ(ControlFabricSource::classify(std::nullopt), FabricSourceError{Kind::notFound});
}

TEST(Classify, theFirstMatchWins) {
  EXPECT_EQ(ControlFabricSource::classify("not a file: is a directory").kind, Kind::isDirectory);
  EXPECT_EQ(ControlFabricSource::classify("not a file, not a directory").kind, Kind::notADirectory);
}

}  // namespace
}  // namespace tarnel::test
