// Hosts that answer badly: no crash, no hang, no wrong byte, and the mount works on afterwards.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>

#include "DirectoryStream.h"
#include "ScriptedMountFixture.h"
#include "control/Base64.h"

namespace tarnel::test {
namespace {

using Names = std::vector<std::string>;

constexpr const char* garbage[] = {"nonsense",
                                   "",
                                   "{",
                                   "[]",
                                   "null",
                                   "\xff\xfe",
                                   "{\"status\":\"ok\"",
                                   R"({"status":"fine"})",
                                   R"({"status":7})",
                                   R"({"stat":{}})",
                                   R"({"status":"ok","stat":7,"entries":7,"dataBase64":7})",
                                   (R"({"status":"ok","stat":{"name":"a"},"entries":[7],)"
                                    R"("dataBase64":[]})")};

std::string escapedStatus(const std::string& fields) {
  return R"({"status":"ok","stat":{"name":"a","size":5,"mtimeMs":0,"isDirectory":false,)"
         R"("mode":420,"nlink":1,"owner":"o","group":"g")" +
         fields + "}}";
}

int statError(const std::string& path) {
  struct stat status{};
  return errnoOf([&] { return ::stat(path.c_str(), &status); });
}

class BadHostTest : public ScriptedMountFixture {
 protected:
  BadHostTest() {
    host.file("me/Docs/a", "bytes of a");
    host.file("me/Docs/good", "good bytes");
    host.folder("me/Docs/d");
  }
  void TearDown() override {
    host.answerAsUsual();
    if (mount) {
      EXPECT_FALSE(mount->program().hasEnded()) << "the mount crashed";
      EXPECT_EQ(contentOf(at("good")), "good bytes");
    }
    ScriptedMountFixture::TearDown();
  }
  void list(const std::vector<ControlStat>& entries) {
    ControlResponse response;
    response.entries = entries;
    host.answer({.op = ControlOp::list, .path = "me/Docs/d"},
                HostReply().answer(TreeHost::lineOf(response)));
  }
  static ControlStat entry(const std::string& name) {
    ControlStat status;
    status.name = name;
    status.mode = 0644;
    status.nlink = 1;
    return status;
  }
  Names listed() {
    Names names = DirectoryStream(at("d")).rest();
    std::sort(names.begin(), names.end());
    return names;
  }
};

TEST_F(BadHostTest, linesThatAreNoAnswersAreInputOutputErrors) {
  mountTree();
  for (const char* line : garbage) {
    host.answer({.op = ControlOp::stat, .path = "me/Docs/a"}, HostReply().answer(line));
    EXPECT_EQ(named(statError(at("a"))), "EIO") << line;
    host.answerAsUsual();
    host.answer({.op = ControlOp::list, .path = "me/Docs/d"}, HostReply().answer(line));
    EXPECT_EQ(named(listError(at("d"))), "EIO") << line;
    host.answer({.op = ControlOp::read, .path = "me/Docs/a"}, HostReply().answer(line));
    EXPECT_EQ(contentOf(at("a")), std::unexpected(EIO)) << line;
    host.answer({.op = ControlOp::shares}, HostReply().answer(line));
    EXPECT_EQ(named(listError(mount->path())), "EIO") << line;
    host.answerAsUsual();
    EXPECT_EQ(contentOf(at("good")), "good bytes") << line;
  }
}

TEST_F(BadHostTest, anAnswerWithoutItsPayloadIsARefusal) {
  mountTree();
  const std::pair<const char*, int> answers[] = {
      {R"({"status":"ok"})", ENOENT},
      {R"({"status":"error","message":"it is a directory!"})", EISDIR},
      {R"({"status":"error","message":"Not A Directory"})", ENOTDIR},
      {R"({"status":"ok","dataBase64":"a"})", ENOENT},  // no base64
      {R"({"status":"ok","dataBase64":"YQ==="})", ENOENT},
      {R"({"status":"ok","dataBase64":"Y Q="})", ENOENT}};
  for (const auto& [line, error] : answers) {
    host.answer({.op = ControlOp::read, .path = "me/Docs/a"}, HostReply().answer(line));
    EXPECT_EQ(contentOf(at("a")), std::unexpected(error)) << line;
    host.answer({.op = ControlOp::stat, .path = "me/Docs/d"}, HostReply().answer(line));
    EXPECT_EQ(named(statError(at("d"))), named(error)) << line;
  }
}

// readdir(3) takes ENOENT for the end.
TEST_F(BadHostTest, aListingThatIsRefusedIsNoEmptyFolder) {
  mountTree();
  const std::pair<const char*, int> answers[] = {
      {R"({"status":"ok"})", EIO},
      {R"({"status":"error","message":"no such file"})", EIO},
      {R"({"status":"error","message":"not a directory"})", ENOTDIR}};
  for (const auto& [line, error] : answers) {
    host.answer({.op = ControlOp::list, .path = "me/Docs/d"}, HostReply().answer(line));
    EXPECT_EQ(named(listError(at("d"))), named(error)) << line;
  }
}

TEST_F(BadHostTest, aPayloadCountsEvenWithARefusal) {
  std::string line = escapedStatus("");
  line.replace(line.find("\"ok\""), 4, "\"error\"");
  host.answer({.op = ControlOp::stat, .path = "me/Docs/a"}, HostReply().answer(line));
  mountTree();
  EXPECT_EQ(statError(at("a")), 0);
}

TEST_F(BadHostTest, aConnectionThatBreaksIsMadeAnew) {
  mountTree();
  const HostReply replies[] = {HostReply().hangUp(), HostReply().send("{\"sta").hangUp(),
                               HostReply().send(std::string(17 << 20, 'x'))};
  for (const HostReply& reply : replies) {
    host.answer({.op = ControlOp::stat, .path = "me/Docs/a"}, reply);
    const int error = statError(at("a"));
    EXPECT_TRUE(error == ENOTCONN || error == ETIMEDOUT) << named(error);
    EXPECT_EQ(contentOf(at("good")), "good bytes");
  }
}

TEST_F(BadHostTest, oneByteAtATimeIsAnAnswer) {
  ControlResponse response;
  response.stat = host.statusOf("me/Docs/a");
  host.answer({.op = ControlOp::stat, .path = "me/Docs/a"},
              HostReply().answer(TreeHost::lineOf(response)).inPiecesOf(1));
  mountTree();
  EXPECT_EQ(contentOf(at("a")), "bytes of a");
}

TEST_F(BadHostTest, anAnswerTooManyIsNobodysAnswer) {
  ControlResponse other;
  other.dataBase64 = base64::encode("WRONG");
  ControlResponse right;
  right.dataBase64 = base64::encode("");
  host.answer({.op = ControlOp::read, .path = "me/Docs/a"},
              HostReply().send(TreeHost::lineOf(right) + "\n" + TreeHost::lineOf(other) + "\n"));
  mountTree();
  (void)contentOf(at("a"));
  EXPECT_EQ(contentOf(at("good")), "good bytes");
}

TEST_F(BadHostTest, bytesThatNobodyAskedForAreDropped) {
  ControlResponse response;
  response.dataBase64 = base64::encode(someBytes(400'000));
  host.answer({.op = ControlOp::read, .path = "me/Docs/a"},
              HostReply().answer(TreeHost::lineOf(response)));
  mountTree();
  EXPECT_EQ(contentOf(at("a")), someBytes(400'000).substr(0, 10));  // the status says 10
}

TEST_F(BadHostTest, negativeSizesAreNothing) {
  ControlResponse response;
  response.stat = host.statusOf("me/Docs/a");
  response.stat->size = -7;
  response.stat->mtimeMs = INT64_MIN;
  host.answer({.op = ControlOp::stat, .path = "me/Docs/a"},
              HostReply().answer(TreeHost::lineOf(response)));
  mountTree();
  struct stat status{};
  ASSERT_EQ(::stat(at("a").c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 0);
  EXPECT_EQ(contentOf(at("a")), "");
  list({entry("x"), *response.stat});
  EXPECT_EQ(listed(), (Names{".", "..", "a", "x"}));
}

TEST_F(BadHostTest, numbersOutOfRangeFailTheAnswer) {
  mountTree();
  for (const char* size : {"9223372036854775808", "1.5", "\"5\"", "true"}) {
    std::string line = escapedStatus("");
    line.replace(line.find("\"size\":5"), 8, std::string("\"size\":") + size);
    host.answer({.op = ControlOp::stat, .path = "me/Docs/a"}, HostReply().answer(line));
    EXPECT_EQ(named(statError(at("a"))), "EIO") << size;
  }
}

TEST_F(BadHostTest, namesThatCannotBeShownAreLeftOut) {
  const std::string nul("n\0l", 3);
  list({entry(""), entry("."), entry(".."), entry("a/b"), entry("/"), entry("/etc"), entry(nul),
        entry("x"), entry(std::string(2000, 'l')), entry("y")});
  mountTree();
  EXPECT_EQ(listed(), (Names{".", "..", "x", "y"}));
}

TEST_F(BadHostTest, aNameOfManyBytesNeedsNoMoreThanTheSystemTakes) {
  const std::string longest(1024, 'n');
  list({entry(longest), entry(std::string(1025, 'n'))});
  mountTree();
  EXPECT_EQ(listed(), (Names{".", "..", longest}));
}

TEST_F(BadHostTest, aNameTwiceInAListingIsOneFile) {
  host.file("me/Docs/d/x", "the x");
  list({entry("x"), entry("y"), entry("x")});
  mountTree();
  EXPECT_EQ(listed(), (Names{".", "..", "x", "x", "y"}));
  EXPECT_EQ(contentOf(at("d/x")), "the x");
}

TEST_F(BadHostTest, badShareNamesAreLeftOut) {
  host.answer(
      {.op = ControlOp::shares},
      HostReply().answer(
          R"({"status":"ok","shares":[{"name":"..","isRemote":false},)"
          R"({"name":"a/b","isRemote":false},{"name":"Docs","isRemote":false},)"
          R"({"name":"Docs","isRemote":false}],"remoteShares":[)"
          R"({"peer":"","name":"x","isRemote":true},{"peer":"..","name":"x","isRemote":true},)"
          R"({"peer":"bob","name":"","isRemote":true}]})"));
  mountTree();
  Names peers = DirectoryStream(mount->path()).rest();
  std::sort(peers.begin(), peers.end());
  EXPECT_EQ(peers, (Names{".", "..", "bob", "me"}));
  EXPECT_EQ(DirectoryStream(*mount / "me").rest().size(), 3U);
  EXPECT_EQ(DirectoryStream(*mount / "bob").rest().size(), 2U);
}

TEST_F(BadHostTest, aFileThatTurnsIntoAFolderIsOne) {
  mountTree();
  EXPECT_EQ(contentOf(at("a")), "bytes of a");
  host.remove("me/Docs/a");
  host.folder("me/Docs/a");
  host.file("me/Docs/a/b", "below");
  EXPECT_EQ(contentOf(at("a/b")), "below");
  EXPECT_EQ(contentOf(at("a")), std::unexpected(EISDIR));
}

}  // namespace
}  // namespace tarnel::test
