#include <gtest/gtest.h>

#include "RecordJson.h"
#include "control/TreeHeader.h"

namespace tarnel::test {
namespace {

using Kind = DecodingError::Kind;

TEST(TreeHeader, decodesWithoutErrorAndIsWrittenAgainWithTheSameFourKeys) {
  const auto header = decoded<TreeHeader>(R"({"relpath":"a/b","kind":"file","mode":420,"size":3})");
  EXPECT_EQ(header.relpath, "a/b");
  EXPECT_EQ(header.kind, TreeHeader::Kind::file);
  EXPECT_EQ(header.mode, 420U);
  EXPECT_EQ(header.size, 3);
  EXPECT_EQ(header.error, std::nullopt);
  EXPECT_EQ(jsonOf(header), R"({"relpath":"a\/b","kind":"file","mode":420,"size":3})");
}

TEST(TreeHeader, writesAnErrorLastAndOnlyWhenThereIsOne) {
  TreeHeader header{.relpath = "d", .kind = TreeHeader::Kind::dir};
  EXPECT_EQ(jsonOf(header), R"({"relpath":"d","kind":"dir","mode":0,"size":0})");
  header.error = "";
  EXPECT_EQ(jsonOf(header), R"({"relpath":"d","kind":"dir","mode":0,"size":0,"error":""})");
}

TEST(TreeHeader, anErrorMayBeAbsentOrNull) {
  EXPECT_EQ(decoded<TreeHeader>(R"({"relpath":"a","kind":"dir","mode":0,"size":0,"error":null})"),
            (TreeHeader{.relpath = "a", .kind = TreeHeader::Kind::dir}));
  EXPECT_EQ(decoded<TreeHeader>(R"({"relpath":"a","kind":"dir","mode":0,"size":0,"error":"no"})"),
            (TreeHeader{.relpath = "a", .kind = TreeHeader::Kind::dir, .error = "no"}));
}

TEST(TreeHeader, requiresEveryOtherKeyThoughAWriterMayLeaveModeAndSizeOut) {
  for (const char* bad : {
           R"({"relpath":"a","kind":"dir"})",
           R"({"relpath":"a","kind":"dir","mode":0})",
           R"({"relpath":"a","kind":"dir","size":0})",
           R"({"relpath":"a","mode":0,"size":0})",
           R"({"kind":"dir","mode":0,"size":0})",
       }) {
    EXPECT_EQ(failureOf<TreeHeader>(bad), Kind::keyNotFound) << bad;
  }
  EXPECT_EQ(failureOf<TreeHeader>(R"({"relpath":"a","kind":"dir","mode":null,"size":0})"),
            Kind::valueNotFound);
}

TEST(TreeHeader, anUnknownKindFails) {
  for (const char* bad : {"link", "Dir", "", "file "}) {
    EXPECT_EQ(failureOf<TreeHeader>(R"({"relpath":"a","kind":")" + std::string(bad) +
                                    R"(","mode":0,"size":0})"),
              Kind::dataCorrupted)
        << bad;
  }
  EXPECT_EQ(failureOf<TreeHeader>(R"({"relpath":"a","kind":1,"mode":0,"size":0})"),
            Kind::typeMismatch);
}

TEST(TreeHeader, modeHasThirtyTwoBitsAndSizeIsSigned) {
  const auto header = decoded<TreeHeader>(
      R"({"relpath":"","kind":"file","mode":4294967295,"size":-9223372036854775808})");
  EXPECT_EQ(header.mode, 4'294'967'295U);
  EXPECT_EQ(header.size, std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(failureOf<TreeHeader>(R"({"relpath":"","kind":"file","mode":4294967296,"size":0})"),
            Kind::dataCorrupted);
}

TEST(TreeHeader, everyFieldCountsInEquality) {
  const TreeHeader header{.relpath = "a", .kind = TreeHeader::Kind::file};
  for (auto change : {+[](TreeHeader& h) { h.relpath = "b"; }, +[](TreeHeader& h) { h.kind = {}; },
                      +[](TreeHeader& h) { h.mode = 1; }, +[](TreeHeader& h) { h.size = 1; },
                      +[](TreeHeader& h) { h.error = ""; }}) {
    TreeHeader other = header;
    EXPECT_EQ(header, other);
    change(other);
    EXPECT_NE(header, other);
  }
}

TEST(TreeHeader, textsAreEqualByCanonicalEquivalence) {
  const TreeHeader composed{.relpath = "\u00e9", .kind = TreeHeader::Kind::file, .error = "\u00e9"};
  const TreeHeader decomposed{
      .relpath = "e\u0301", .kind = TreeHeader::Kind::file, .error = "e\u0301"};
  EXPECT_EQ(composed, decomposed);
}

TEST(TreeHeader, noiseIsFindersFileAndCompanionFiles) {
  for (const char* noise : {".DS_Store", "._photo.jpg", "._", "._.DS_Store"}) {
    EXPECT_TRUE(TreeHeader::isNoise(noise)) << noise;
  }
  for (const char* name : {"photo.jpg", ".DS_Store2", "a/.DS_Store", ".DS_STORE", "_.x", ".", "",
                           "sub/._a", ".DS_Stor"}) {
    EXPECT_FALSE(TreeHeader::isNoise(name)) << name;
  }
}

TEST(TreeHeader, itsWindowIsTheStreams) {
  EXPECT_EQ(TreeHeader::window, 262'144);
  EXPECT_EQ(TreeHeader::window, ControlStreamFrame::window);
}

}  // namespace
}  // namespace tarnel::test
