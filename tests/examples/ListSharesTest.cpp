#include <gmock/gmock.h>

#include "ExampleProgram.h"
#include "support/ScriptedHost.h"

namespace tarnel::test {
namespace {

TEST(ListShares, printsTheHostsOwnSharesAndThoseOfItsPeers) {
  ScriptedHost host;
  host.expect(
      R"({"op":"shares"})",
      HostReply().answer(R"({"status":"ok","shares":[{"name":"Docs","isRemote":false}],)"
                         R"("remoteShares":[{"peer":"alice","name":"Studio","isRemote":true}]})"));
  const ProgramOutcome listed = listShares(host.path());
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_EQ(listed.out, "me/Docs\nalice/Studio\n");
}

TEST(ListShares, aHostWithoutSharesOffersNone) {
  ScriptedHost host;
  host.expect(R"({"op":"shares"})", HostReply().answer(R"({"status":"ok"})"));
  const ProgramOutcome listed = listShares(host.path());
  EXPECT_EQ(listed.status, 0) << listed.err;
  EXPECT_EQ(listed.out, "");
}

TEST(ListShares, aHostThatHangsUpOrIsNotThereIsAFailure) {
  ScriptedHost host;
  host.expect(R"({"op":"shares"})", HostReply().hangUp());
  const ProgramOutcome hungUp = listShares(host.path());
  EXPECT_EQ(hungUp.status, 1);
  EXPECT_EQ(hungUp.err, "list-shares: connection to Tarnel closed\n");

  const TempDir folder;
  const ProgramOutcome missing = listShares(folder / "s");
  EXPECT_EQ(missing.status, 1);
  EXPECT_THAT(missing.err, testing::StartsWith("list-shares: connect() failed: "));
}

}  // namespace
}  // namespace tarnel::test
