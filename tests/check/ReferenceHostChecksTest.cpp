// The reference host speaks the protocol.
#include <gmock/gmock.h>

#include <string>

#include "CheckRun.h"
#include "host/ReferenceHost.h"
#include "support/FileTree.h"
#include "support/TempDir.h"

namespace tarnel::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ReferenceHostChecks : public testing::Test {
 protected:
  void start(std::vector<ShareDefinition> shares) {
    auto started = ReferenceHost::start({.socketPath = socket(), .shares = std::move(shares)});
    ASSERT_TRUE(started) << description(started.error());
    host = std::move(*started);
  }
  void startWithTree() {
    std::string bytes;
    for (int i = 0; i < 300'000; ++i) bytes.push_back(static_cast<char>(i * 7 + i / 256));
    tree.file("Docs/a.txt", bytes.substr(0, 5'000));
    tree.file("Docs/big", bytes);
    tree.file("Docs/empty");
    tree.file("Docs/na\tme \"quoted\" \xc3\xa4", "x");
    tree.file("Docs/sub/b", "bytes of b");
    tree.file("Docs/.DS_Store", "noise");
    tree.folder("Docs/none");
    tree.link("Docs/link", "a.txt");
    tree.file("Other/c", "bytes of c");
    start({{.name = "Docs", .folder = tree / "Docs"},
           {.peer = "bob", .name = "Other", .folder = tree / "Other"}});
  }
  [[nodiscard]] std::string socket() const { return sockets / "s"; }

  FileTree tree;
  TempDir sockets;
  std::unique_ptr<ReferenceHost> host;
};

TEST_F(ReferenceHostChecks, noneFailsAndOnlyWhatItCannotShowIsSkipped) {
  startWithTree();
  const CheckRun run = runChecks(socket());
  EXPECT_EQ(run.verdicts.size(), hostChecks().size());
  EXPECT_THAT(run.failed(), IsEmpty()) << run;
  EXPECT_THAT(run.skipped(), ElementsAre(510, 614)) << run;
}

TEST_F(ReferenceHostChecks, nothingSharedIsNoFault) {
  start({});
  const CheckRun run = runChecks(socket());
  EXPECT_THAT(run.failed(), IsEmpty()) << run;
  EXPECT_GT(run.skipped().size(), 20U);
}

TEST_F(ReferenceHostChecks, theChecksThatAreWantedAreRunAlone) {
  startWithTree();
  const CheckRun run = runChecks(socket(), {301, 602});
  EXPECT_EQ(run.verdicts.size(), 2U);
  EXPECT_THAT(run.with(CheckOutcome::pass), ElementsAre(301, 602)) << run;
}

TEST_F(ReferenceHostChecks, aRunEndsWhenNobodyWantsMore) {
  startWithTree();
  int reported = 0;
  const CheckCounts counts = runHostChecks(
      socket(), patientLimits(), {}, [&](const auto&, const auto&) { return ++reported < 3; });
  EXPECT_EQ(reported, 3);
  EXPECT_EQ(counts.passed, 3);
}

TEST_F(ReferenceHostChecks, whatIsLeftWhenTheTimeIsOverIsSkipped) {
  startWithTree();
  CheckLimits limits = patientLimits();
  limits.whole = std::chrono::milliseconds(0);
  const CheckRun run = runChecks(socket(), {}, limits);
  EXPECT_EQ(run.skipped().size(), hostChecks().size()) << run;
}

}  // namespace
}  // namespace tarnel::test
