// Of two equal keys the first counts, in every record.
#include <gtest/gtest.h>

#include "RecordJson.h"
#include "control/FileStat.h"
#include "control/SourceShare.h"

namespace tarnel::test {
namespace {

TEST(DuplicateKeys, theFirstCounts) {
  EXPECT_EQ(decoded<SourceShare>(R"({"name":"a","isRemote":true,"name":"b","isRemote":7})"),
            (SourceShare{.name = "a", .isRemote = true}));
}

TEST(DuplicateKeys, theFirstCountsAlsoWhenItDoesNotDecode) {
  EXPECT_EQ(failureOf<SourceShare>(R"({"name":1,"name":"b","isRemote":true})"),
            DecodingError::Kind::typeMismatch);
  EXPECT_EQ(failureOf<SourceShare>(R"({"name":null,"name":"b","isRemote":true})"),
            DecodingError::Kind::valueNotFound);
}

TEST(DuplicateKeys, aFirstNullIsAbsence) {
  EXPECT_EQ(decoded<FileStat>(
                R"({"name":"a","size":0,"mtimeMs":0,"isDirectory":true,"mode":null,"mode":5})")
                .mode,
            0U);
}

TEST(DuplicateKeys, areFoundBehindTheirEscapes) {
  EXPECT_EQ(decoded<SourceShare>(R"({"\u006eame":"a","name":"b","isRemote":true})").name, "a");
}

TEST(DuplicateKeys, aLaterOneMustStillBeJson) {
  EXPECT_EQ(failureOf<SourceShare>(R"({"name":"a","isRemote":true,"name":nul})"),
            DecodingError::Kind::dataCorrupted);
}

}  // namespace
}  // namespace tarnel::test
