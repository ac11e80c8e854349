// What every source derives from its share listing.
#include <gtest/gtest.h>

#include "fs/FabricSource.h"
#include "support/Awaited.h"
#include "support/FakeSource.h"

namespace tarnel::test {
namespace {

using Names = std::vector<std::string>;
using NamesResult = FabricSource::Result<Names>;
using Kind = FabricSourceError::Kind;

NamesResult peers(FakeSource& source) {
  Awaited<FabricSource::Reply<Names>> reply;
  source.peers(reply.reply());
  return std::get<0>(reply.wait());
}

NamesResult shares(FakeSource& source, const std::string& peer) {
  Awaited<FabricSource::Reply<Names>> reply;
  source.shares(peer, reply.reply());
  return std::get<0>(reply.wait());
}

TEST(FabricSource, peersAreTheSafeNamesOnceEachAndSorted) {
  FakeSource source;
  for (const char* peer : {"alice", "", ".", "..", "a/b", "bob", "alice"}) {
    source.putShare(peer, "s");
  }
  source.putShare(std::string("a\0b", 3), "s");
  EXPECT_EQ(peers(source), (Names{"alice", "bob"}));
}

TEST(FabricSource, peersAreSortedByCodePointWithUpperCaseFirst) {
  FakeSource source;
  for (const char* peer : {"b", "a", "B", "\u00e9", "Z"}) source.putShare(peer, "s");
  EXPECT_EQ(peers(source), (Names{"B", "Z", "a", "b", "\u00e9"}));
}

TEST(FabricSource, sharesAreThoseOfExactlyThisPeer) {
  FakeSource source;
  source.putShare("bob", "Pictures");
  source.putShare("Bob", "Music");
  source.putShare("bob", "Docs");
  source.putShare("bobby", "Films");
  EXPECT_EQ(shares(source, "bob"), (Names{"Docs", "Pictures"}));
  EXPECT_EQ(shares(source, "nobody"), Names{});
}

TEST(FabricSource, sharesOfAPeerUnderAnotherCompositionAreAnotherPeers) {
  FakeSource source;
  source.putShare("\u00e9", "Docs");
  source.putShare("e\u0301", "Music");
  EXPECT_EQ(shares(source, "\u00e9"), Names{"Docs"});
  EXPECT_EQ(shares(source, "e\u0301"), Names{"Music"});
}

TEST(FabricSource, sharesOfUnsafeNamesAreLeftOut) {
  FakeSource source;
  source.putShare("bob", std::string("a\0b", 3));
  for (const char* name : {"", ".", "..", "a/b", "ok"}) source.putShare("bob", name);
  EXPECT_EQ(shares(source, "bob"), Names{"ok"});
}

TEST(FabricSource, sharesComeOnceEachWhetherRemoteOrNot) {
  FakeSource source;
  source.putShare("bob", "Docs", true);
  source.putShare("bob", "Docs", false);
  source.putShare("bob", "Docs", true);
  EXPECT_EQ(shares(source, "bob"), Names{"Docs"});
  EXPECT_EQ(peers(source), Names{"bob"});
}

TEST(FabricSource, namesThatDifferInCompositionAreTwoNames) {
  FakeSource source;
  source.putShare("p", "\u00e9");
  source.putShare("p", "e\u0301");
  EXPECT_EQ(shares(source, "p")->size(), 2u);
}

TEST(FabricSource, anEmptyShareListingIsEmptyListsAndNoError) {
  FakeSource source;
  EXPECT_EQ(peers(source), Names{});
  EXPECT_EQ(shares(source, "me"), Names{});
}

TEST(FabricSource, aFailureOfTheListingPassesUnchanged) {
  FakeSource source;
  source.putShare("me", "Docs");
  source.failWith(ioFailure("disk"));
  EXPECT_EQ(peers(source).error(), ioFailure("disk"));
  EXPECT_EQ(shares(source, "me").error(), ioFailure("disk"));
  source.failWith(DecodingError{DecodingError::Kind::keyNotFound, "status"});
  EXPECT_TRUE(std::holds_alternative<DecodingError>(peers(source).error()));
}

TEST(FabricSource, cancelAllOfASourceWithoutConnectionsDoesNothing) {
  FakeSource source;
  source.putShare("me", "Docs");
  source.FabricSource::cancelAll();
  EXPECT_EQ(peers(source), Names{"me"});
}

}  // namespace
}  // namespace tarnel::test
