#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "ExampleProgram.h"
#include "control/Base64.h"
#include "control/ControlClient.h"
#include "host/RawClient.h"
#include "support/FileTree.h"
#include "support/Sanitized.h"

namespace tarnel::test {
namespace {

using testing::HasSubstr;

class MinimalHostTest : public testing::Test {
 protected:
  MinimalHostTest() {
    tree.file("Docs/a.txt", "hello\n");
    tree.file("Docs/sub/b.txt", "more");
    tree.file("outside.txt", "secret");
    host.emplace(socket(), tree / "Docs");
    client.emplace(ControlClient::connect(socket()).value());
    client->setDeadline(30);
  }
  ~MinimalHostTest() override { client->close(); }

  [[nodiscard]] std::string socket() const { return sockets / "s"; }
  ControlResponse ask(const ControlRequest& request) {
    auto response = client->send(request);
    EXPECT_TRUE(response.has_value());
    return response.value_or(ControlResponse());
  }
  ControlResponse stat(const std::string& name) {
    return ask({.op = ControlOp::stat, .name = name});
  }
  std::string messageOf(ControlOp op, const std::string& name) {
    return ask({.op = op, .name = name}).message.value_or("no message");
  }
  std::string read(const std::string& name, std::int64_t offset, std::int64_t length) {
    const auto response =
        ask({.op = ControlOp::read, .name = name, .offset = offset, .length = length});
    return base64::decode(response.dataBase64.value_or("?")).value_or("no data");
  }
  ProgramOutcome tarnel(std::vector<std::string> arguments) {
    return runTarnel(std::move(arguments), {.environment = {{"TARNEL_SOCKET", socket()}}});
  }

  FileTree tree;
  TempDir sockets;
  std::optional<MinimalHost> host;
  std::optional<ControlClient> client;
};

TEST_F(MinimalHostTest, isUnderstoodByTheCommand) {
  EXPECT_EQ(tarnel({"shares"}).out, "me/Docs\n");
  EXPECT_EQ(tarnel({"ls", "me/Docs"}).out, "a.txt\nsub\n");
  EXPECT_EQ(tarnel({"cat", "me/Docs/a.txt", "me/Docs/sub/b.txt"}).out, "hello\nmore");
  EXPECT_THAT(tarnel({"cat", "me/Docs/sub"}).err, HasSubstr("EISDIR"));
  EXPECT_THAT(tarnel({"cat", "me/Docs/none"}).err, HasSubstr("ENOENT"));
  EXPECT_EQ(listShares(socket()).out, "me/Docs\n");
}

TEST_F(MinimalHostTest, statAndListAgree) {
  ASSERT_EQ(::chmod((tree / "Docs/a.txt").c_str(), 0640), 0);
  const auto one = stat("me/Docs/a.txt").stat;
  ASSERT_TRUE(one.has_value());
  EXPECT_EQ(one->name, "a.txt");
  EXPECT_EQ(one->size, 6);
  EXPECT_EQ(one->mode, 0640U);
  EXPECT_FALSE(one->isDirectory);
  const auto entries = ask({.op = ControlOp::list, .name = "me/Docs"}).entries;
  ASSERT_TRUE(entries.has_value());
  EXPECT_EQ(entries->size(), 2U);
  EXPECT_NE(std::ranges::find(*entries, *one), entries->end());
  EXPECT_EQ(stat("me/Docs").stat.value_or(ControlStat()).name, "Docs");
}

TEST_F(MinimalHostTest, listsNamesAloneAndNoMoreThanTheLimit) {
  const auto names = ask({.op = ControlOp::list, .name = "me/Docs", .namesOnly = true});
  EXPECT_FALSE(names.entries.has_value());
  EXPECT_THAT(names.names.value(),
              testing::UnorderedElementsAre(ControlName("a.txt", false), ControlName("sub", true)));
  EXPECT_EQ(ask({.op = ControlOp::list, .name = "me/Docs", .limit = 1}).entries.value().size(), 1U);
  EXPECT_EQ(ask({.op = ControlOp::list, .name = "me/Docs", .limit = 0}).entries.value().size(), 0U);
  EXPECT_EQ(ask({.op = ControlOp::list, .name = "me/Docs", .limit = -1}).message, "invalid limit");
}

TEST_F(MinimalHostTest, isFoundWithoutFaultByTheCommandThatChecksHosts) {
  if (builtWithSanitizer) GTEST_SKIP() << "the checks' own bounds are for code without sanitizers";
  const ProgramOutcome checked = tarnel({"check-host"});
  EXPECT_THAT(checked.out, HasSubstr("PASS 401"));
  // 9xx are about speed, which is this machine's at the moment.
  EXPECT_THAT(checked.out, testing::Not(testing::ContainsRegex("FAIL [1-8]")));
}

TEST_F(MinimalHostTest, readsAtAnyOffsetAndGivesNothingPastTheEnd) {
  EXPECT_EQ(read("me/Docs/a.txt", 0, 100), "hello\n");
  EXPECT_EQ(read("me/Docs/a.txt", 1, 3), "ell");
  EXPECT_EQ(read("me/Docs/a.txt", 6, 1), "");
  EXPECT_EQ(read("me/Docs/a.txt", std::numeric_limits<std::int64_t>::max(), 1), "");
  EXPECT_EQ(read("me/Docs/a.txt", 0, std::numeric_limits<std::int64_t>::max()), "hello\n");
  EXPECT_EQ(read("me/Docs/a.txt", -1, 1), "no data");
  EXPECT_EQ(read("me/Docs/a.txt", 0, -1), "no data");
}

TEST_F(MinimalHostTest, aFileThatMayNotBeReadIsNotCalledMissing) {
  if (::geteuid() == 0) GTEST_SKIP() << "SKIPPED: root reads everything";
  ASSERT_EQ(::chmod((tree / "Docs/a.txt").c_str(), 0), 0);
  EXPECT_EQ(messageOf(ControlOp::read, "me/Docs/a.txt"), "permission denied");
}

TEST_F(MinimalHostTest, refusesInWordsThatAReaderUnderstands) {
  EXPECT_EQ(messageOf(ControlOp::stat, "me/Docs/none"), "no such file");
  EXPECT_EQ(messageOf(ControlOp::stat, "me/Other"), "no such file");
  EXPECT_EQ(messageOf(ControlOp::list, "me/Docs/a.txt"), "not a directory");
  EXPECT_EQ(messageOf(ControlOp::stat, "me/Docs/a.txt/b"), "not a directory");
  EXPECT_EQ(messageOf(ControlOp::read, "me/Docs/sub"), "is a directory");
  for (const ControlOp op : {ControlOp::share, ControlOp::unshare, ControlOp::readStream,
                             ControlOp::readTreeStream, ControlOp::bridge}) {
    EXPECT_EQ(messageOf(op, "me/Docs"), "operation not served");
  }
}

TEST_F(MinimalHostTest, nothingOutsideTheShareIsReached) {
  tree.link("Docs/out.txt", "../outside.txt");
  tree.link("Docs/up", "..");
  tree.link("Docs/inside", "a.txt");
  tree.fifo("Docs/pipe");
  for (const char* bad :
       {"", "me", "me/", "me/Docs/", "me/Docs/..", "me/Docs/../outside.txt", "me/Docs/./a.txt",
        "me/Docs//a.txt", "me/Docs/out.txt", "me/Docs/up", "me/Docs/up/outside.txt", "me/Docs2",
        "me/Docs/inside", "me/Docs/pipe", "you/Docs", "me/Docs/a.txt/"}) {
    EXPECT_FALSE(stat(bad).stat.has_value()) << bad;
    EXPECT_EQ(read(bad, 0, 10), "no data") << bad;
  }
  EXPECT_FALSE(stat(std::string("me/Docs/a.txt\0x", 15)).stat.has_value());
  EXPECT_EQ(ask({.op = ControlOp::list, .name = "me/Docs"}).entries.value().size(), 2U);
}

TEST_F(MinimalHostTest, namesThatAreNotUtf8AreLeftOut) {
  tree.file("Docs/bad\xFF.txt", "x");
  EXPECT_EQ(ask({.op = ControlOp::list, .name = "me/Docs"}).entries.value().size(), 2U);
}

TEST_F(MinimalHostTest, aLineThatIsNoRequestIsAnsweredAndTheConnectionGoesOn) {
  RawClient raw(socket());
  constexpr const char* malformed = R"({"status":"error","message":"malformed request"})";
  EXPECT_EQ(raw.ask("nonsense"), malformed);
  EXPECT_EQ(raw.ask(R"({"op":"dance"})"), malformed);
  EXPECT_EQ(raw.ask(R"({"op":"shares"})"),
            R"({"status":"ok","shares":[{"name":"Docs","isRemote":false}]})");
}

TEST(MinimalHostSource, staysWithinItsPromisedLength) {
  std::ifstream source(std::string(TARNEL_EXAMPLES) + "/MinimalHost.cpp");
  const auto lines = std::count(std::istreambuf_iterator<char>(source), {}, '\n');
  EXPECT_GT(lines, 50);
  EXPECT_LE(lines, 150);
}

}  // namespace
}  // namespace tarnel::test
