#include <gtest/gtest.h>

#include "RecordJson.h"
#include "control/SourceShare.h"

namespace tarnel::test {
namespace {

using Kind = DecodingError::Kind;

TEST(SourceShare, requiresBothKeys) {
  const auto share = decoded<SourceShare>(R"({"name":"Docs","isRemote":false})");
  EXPECT_EQ(share.name, "Docs");
  EXPECT_FALSE(share.isRemote);
  EXPECT_EQ(failureOf<SourceShare>(R"({"name":"Docs"})"), Kind::keyNotFound);
  EXPECT_EQ(failureOf<SourceShare>(R"({"isRemote":true})"), Kind::keyNotFound);
  EXPECT_EQ(failureOf<SourceShare>(R"({"name":null,"isRemote":true})"), Kind::valueNotFound);
  EXPECT_EQ(failureOf<SourceShare>(R"({"name":"Docs","isRemote":"false"})"), Kind::typeMismatch);
}

TEST(SourceShare, ignoresUnknownKeys) {
  EXPECT_EQ(decoded<SourceShare>(R"({"name":"Docs","isRemote":false,"peer":"x"})"),
            (SourceShare{.name = "Docs", .isRemote = false}));
}

TEST(SourceShare, writesNameThenIsRemoteAlsoWhenFalse) {
  EXPECT_EQ(jsonOf(SourceShare{.name = "Docs", .isRemote = false}),
            R"({"name":"Docs","isRemote":false})");
}

TEST(SourceShare, isEqualFieldByFieldWithTextsByCanonicalEquivalence) {
  EXPECT_EQ((SourceShare{.name = "\u00e9", .isRemote = true}),
            (SourceShare{.name = "e\u0301", .isRemote = true}));
  EXPECT_NE((SourceShare{.name = "a", .isRemote = true}),
            (SourceShare{.name = "a", .isRemote = false}));
}

}  // namespace
}  // namespace tarnel::test
