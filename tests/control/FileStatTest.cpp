#include <gtest/gtest.h>

#include "RecordJson.h"
#include "control/FileStat.h"

namespace tarnel::test {
namespace {

using Kind = DecodingError::Kind;

std::string with(const std::string& more) {
  return R"({"name":"a","size":0,"mtimeMs":0,"isDirectory":false)" + more + "}";
}

TEST(FileStat, absentOptionalKeysTakeTheInitialValuesAndAreWrittenAgain) {
  const auto stat = decoded<FileStat>(with(""));
  EXPECT_EQ(stat.mode, 0U);
  EXPECT_EQ(stat.nlink, 0U);
  EXPECT_EQ(stat.owner, "");
  EXPECT_EQ(stat.group, "");
  EXPECT_FALSE(stat.isSymlink);
  EXPECT_EQ(jsonOf(stat), with(R"(,"mode":0,"nlink":0,"owner":"","group":"","isSymlink":false)"));
}

TEST(FileStat, nullIsAbsenceForOptionalKeysAndAFailureForRequiredOnes) {
  EXPECT_EQ(decoded<FileStat>(
                with(R"(,"mode":null,"nlink":null,"owner":null,"group":null,"isSymlink":null)")),
            decoded<FileStat>(with("")));
  EXPECT_EQ(failureOf<FileStat>(R"({"name":null,"size":0,"mtimeMs":0,"isDirectory":false})"),
            Kind::valueNotFound);
  EXPECT_EQ(failureOf<FileStat>(R"({"name":"a","size":0,"mtimeMs":0,"isDirectory":null})"),
            Kind::valueNotFound);
}

TEST(FileStat, requiresTheFirstFourKeys) {
  EXPECT_EQ(failureOf<FileStat>(R"({"size":0,"mtimeMs":0,"isDirectory":false})"),
            Kind::keyNotFound);
  EXPECT_EQ(failureOf<FileStat>(R"({"name":"a","mtimeMs":0,"isDirectory":false})"),
            Kind::keyNotFound);
  EXPECT_EQ(failureOf<FileStat>(R"({"name":"a","size":0,"isDirectory":false})"), Kind::keyNotFound);
  EXPECT_EQ(failureOf<FileStat>(R"({"name":"a","size":0,"mtimeMs":0})"), Kind::keyNotFound);
}

TEST(FileStat, modeAndLinkCountHaveThirtyTwoBits) {
  EXPECT_EQ(decoded<FileStat>(with(R"(,"mode":4294967295)")).mode, 4294967295U);
  for (const char* bad : {R"(,"mode":-1)", R"(,"mode":4294967296)", R"(,"nlink":-1)",
                          R"(,"nlink":4294967296)", R"(,"mode":1.5)"}) {
    EXPECT_EQ(failureOf<FileStat>(with(bad)), Kind::dataCorrupted) << bad;
  }
}

TEST(FileStat, anOptionalKeyOfTheWrongTypeFails) {
  for (const char* bad :
       {R"(,"mode":"1")", R"(,"owner":1)", R"(,"isSymlink":0)", R"(,"group":[])"}) {
    EXPECT_EQ(failureOf<FileStat>(with(bad)), Kind::typeMismatch) << bad;
  }
  EXPECT_EQ(failureOf<FileStat>("[]"), Kind::typeMismatch);
}

TEST(FileStat, aNegativeSizeDecodes) {
  EXPECT_EQ(decoded<FileStat>(R"({"name":"a","size":-5,"mtimeMs":-1,"isDirectory":false})").size,
            -5);
}

TEST(FileStat, keyOrderDoesNotMatterAndUnknownKeysAreIgnored) {
  const auto stat = decoded<FileStat>(
      R"({"x":{},"isSymlink":true,"isDirectory":true,"mtimeMs":3,"size":2,"name":"b"})");
  EXPECT_EQ(stat, (FileStat{.name = "b",
                            .size = 2,
                            .mtimeMs = 3,
                            .isDirectory = true,
                            .owner = {},
                            .group = {},
                            .isSymlink = true}));
}

TEST(FileStat, everyFieldCountsInEquality) {
  const FileStat stat = decoded<FileStat>(with(""));
  for (auto change :
       {+[](FileStat& s) { s.name = "b"; }, +[](FileStat& s) { s.size = 1; },
        +[](FileStat& s) { s.mtimeMs = 1; }, +[](FileStat& s) { s.isDirectory = true; },
        +[](FileStat& s) { s.mode = 1; }, +[](FileStat& s) { s.nlink = 1; },
        +[](FileStat& s) { s.owner = "o"; }, +[](FileStat& s) { s.group = "g"; },
        +[](FileStat& s) { s.isSymlink = true; }}) {
    FileStat other = stat;
    EXPECT_EQ(stat, other);
    change(other);
    EXPECT_NE(stat, other);
  }
}

TEST(FileStat, canonicallyEquivalentNamesAreEqual) {
  FileStat composed = decoded<FileStat>(with(""));
  FileStat decomposed = composed;
  composed.name = "\u00e9";
  decomposed.name = "e\u0301";
  EXPECT_EQ(composed, decomposed);
}

}  // namespace
}  // namespace tarnel::test
