#include <gtest/gtest.h>

#include "control/SourcesAnnouncement.h"

namespace tarnel::test {
namespace {

const SourceShare docs{.name = "Docs", .isRemote = false};
const SourceShare studio{.name = "Studio", .isRemote = true};

TEST(SourcesAnnouncement, travelsInAnEnvelopeOfItsFamily) {
  EXPECT_EQ(
      (SourcesAnnouncement{.shares = {docs, studio}}.encoded()),
      R"({"v":1,"p":{"shares":[{"name":"Docs","isRemote":false},{"name":"Studio","isRemote":true}]}})");
}

TEST(SourcesAnnouncement, withoutSharesDecodesBackToAnEqualOne) {
  const SourcesAnnouncement none{.shares = {}};
  EXPECT_EQ(none.encoded(), R"({"v":1,"p":{"shares":[]}})");
  EXPECT_EQ(SourcesAnnouncement::decode(none.encoded()), none);
}

TEST(SourcesAnnouncement, keepsOrderAndDuplicates) {
  const SourcesAnnouncement announcement{.shares = {studio, docs, studio}};
  EXPECT_EQ(SourcesAnnouncement::decode(announcement.encoded()), announcement);
}

TEST(SourcesAnnouncement, anotherVersionAndAMalformedOneAreAbsentAlike) {
  for (const char* bad : {
           R"({"v":2,"p":{"shares":[]}})",
           R"({"v":0,"p":{"shares":[]}})",
           R"({"v":1,"p":{}})",
           R"({"v":1,"p":{"shares":null}})",
           R"({"v":1,"p":{"shares":[{"name":"Docs"}]}})",
           R"({"shares":[]})",
           "",
       }) {
    EXPECT_EQ(SourcesAnnouncement::decode(BytesView(bad)), std::nullopt) << bad;
  }
}

TEST(SourcesAnnouncement, ignoresUnknownKeys) {
  EXPECT_EQ(
      SourcesAnnouncement::decode(BytesView(
          R"({"v":1,"p":{"shares":[{"name":"Docs","isRemote":false,"peer":"x"}],"more":0}})")),
      (SourcesAnnouncement{.shares = {docs}}));
}

TEST(SourcesAnnouncement, theSameSharesInAnotherOrderAreUnequal) {
  EXPECT_NE((SourcesAnnouncement{.shares = {docs, studio}}),
            (SourcesAnnouncement{.shares = {studio, docs}}));
  EXPECT_NE((SourcesAnnouncement{.shares = {docs}}),
            (SourcesAnnouncement{.shares = {docs, studio}}));
}

TEST(SourcesAnnouncement, namesAreEqualByCanonicalEquivalence) {
  EXPECT_EQ((SourcesAnnouncement{.shares = {{.name = "\u00e9", .isRemote = false}}}),
            (SourcesAnnouncement{.shares = {{.name = "e\u0301", .isRemote = false}}}));
}

TEST(SourcesAnnouncement, aNameThatIsNotUtf8LeavesNothingToSend) {
  EXPECT_EQ((SourcesAnnouncement{.shares = {{.name = "\xFF", .isRemote = false}}}.encoded()), "");
}

}  // namespace
}  // namespace tarnel::test
