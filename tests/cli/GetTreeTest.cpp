// A folder of the host, copied as a stream.
#include "GetFixture.h"

namespace tarnel::test {
namespace {

using testing::ElementsAre;

class GetTreeTest : public GetFixture {
 protected:
  GetTreeTest() {
    host.folder("me/Docs/sub");
    host.folder("me/Docs/empty");
    host.file("me/Docs/a.txt", "hello", 1'700'000'000'005);
    host.file("me/Docs/sub/b", "world", 86'400'000);
    streamDocs(whole());
  }
  static StreamBytes whole() {
    return StreamBytes()
        .file("a.txt", "hello", 0100640)
        .folder("empty", 040700)
        .folder("sub", 042555)
        .file("sub/b", "world", 0104755)
        .eof();
  }
};

TEST_F(GetTreeTest, everythingIsThereWithModesAndTimes) {
  expectDone(getDocs());
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/a.txt", "Docs/empty", "Docs/sub", "Docs/sub/b"));
  EXPECT_EQ(content("Docs/a.txt"), "hello");
  EXPECT_EQ(content("Docs/sub/b"), "world");
  EXPECT_EQ(modeOf("Docs/a.txt"), 0640U);
  EXPECT_EQ(modeOf("Docs/empty"), 0700U);
  EXPECT_EQ(modeOf("Docs/sub"), 0555U) << "no set-group bit";
  EXPECT_EQ(modeOf("Docs/sub/b"), 0755U) << "no set-user bit";
  EXPECT_EQ(secondsOf("Docs/a.txt"), 1'700'000'000);
  EXPECT_EQ(statusOf("Docs/a.txt").st_mtim.tv_nsec, 5'000'000);
  EXPECT_EQ(secondsOf("Docs/sub/b"), 86'400);
  EXPECT_EQ(secondsOf("Docs"), TreeHost::someTime / 1000);
  EXPECT_EQ(secondsOf("Docs/sub"), TreeHost::someTime / 1000);
  EXPECT_EQ(secondsOf("Docs/empty"), TreeHost::someTime / 1000);
}

TEST_F(GetTreeTest, timesNeedOneListingOfEachFolder) {
  expectDone(getDocs());
  EXPECT_EQ(host.asked({.op = ControlOp::list, .path = docs}), 1U);
  EXPECT_EQ(host.asked({.op = ControlOp::list, .path = "me/Docs/sub"}), 1U);
  EXPECT_EQ(host.asked(ControlOp::readTreeStream), 1U);
  EXPECT_EQ(host.asked(ControlOp::stat), 1U);
  EXPECT_EQ(host.asked(ControlOp::read) + host.asked(ControlOp::readStream), 0U);
}

TEST_F(GetTreeTest, aStreamMayComeInPieces) {
  for (const std::size_t piece : {1, 7}) {
    host.answer({.op = ControlOp::readTreeStream, .path = docs}, whole().reply().inPiecesOf(piece));
    expectDone(get({docs, dest / std::to_string(piece)}));
    EXPECT_EQ(content(std::to_string(piece) + "/sub/b"), "world");
  }
}

TEST_F(GetTreeTest, aFileInManyFramesIsJoined) {
  std::string large;
  StreamBytes stream;
  stream.announce("large", 700'000);
  for (int i = 0; i < 7; ++i) {
    const std::string part(100'000, static_cast<char>('a' + i));
    stream.data(part);
    large += part;
  }
  host.file("me/Docs/large", large);
  streamDocs(stream.file("z", "last").eof());
  host.file("me/Docs/z", "last");
  expectDone(getDocs());
  EXPECT_TRUE(content("Docs/large") == large);
  EXPECT_EQ(content("Docs/z"), "last");
}

TEST_F(GetTreeTest, theDestinationIsAFolderOrTheNewName) {
  expectDone(get({docs, dest / "new"}));
  EXPECT_EQ(content("new/a.txt"), "hello");
  expectDone(get({docs, dest / "new/"}));
  EXPECT_EQ(content("new/Docs/a.txt"), "hello");
  expectDone(get({"/me//Docs/", dest / "other/"}));
  EXPECT_EQ(content("other/a.txt"), "hello");
  expectFailed(get({docs, dest / "no/where"}), "no/where: ENOENT");
}

TEST_F(GetTreeTest, whatTheHostDoesNotTellGetsTheUsualMode) {
  streamDocs(StreamBytes().folder("d", 0).file("d/f", "x", 0).file("d/g", "x", 0100000).eof());
  host.file("me/Docs/d/f", "x");
  host.file("me/Docs/d/g", "x");
  host.folder("me/Docs/d");
  expectDone(getDocs());
  const mode_t mask = ::umask(0);
  ::umask(mask);
  EXPECT_EQ(modeOf("Docs/d"), 0777U & ~mask);
  EXPECT_EQ(modeOf("Docs/d/f"), 0666U & ~mask);
  EXPECT_EQ(modeOf("Docs/d/g"), 0U) << "closed at the host: closed here";
}

TEST_F(GetTreeTest, aFileThatFailsIsListedAndTheRestIsThere) {
  streamDocs(StreamBytes()
                 .announce("a.txt", 5)
                 .data("he")
                 .fileError("permission denied")
                 .announce("b", 0)
                 .fileError("no such file")
                 .folder("sub")
                 .file("sub/b", "world")
                 .eof());
  const ProgramOutcome outcome = getDocs();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/a.txt: EACCES\ntarnel: me/Docs/b: ENOENT\n");
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/sub", "Docs/sub/b"));
}

TEST_F(GetTreeTest, anUnreadableFolderIsListedAndThere) {
  streamDocs(StreamBytes()
                 .header({.relpath = "sub",
                          .kind = TreeHeader::Kind::dir,
                          .mode = 040000,
                          .error = "permission denied"})
                 .file("z", "last")
                 .eof());
  host.file("me/Docs/z", "last");
  expectFailed(getDocs(), "me/Docs/sub: EACCES\n");
  EXPECT_TRUE(exists("Docs/sub"));
  EXPECT_EQ(content("Docs/z"), "last");
}

TEST_F(GetTreeTest, aStreamThatFailsLeavesWhatCameBefore) {
  streamDocs(StreamBytes().file("a.txt", "hello").announce("b", 3).data("x").error("i/o error"));
  expectFailed(getDocs(), "me/Docs: EIO (i/o error)\n");
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/a.txt"));
}

TEST_F(GetTreeTest, foldersOfSharesAreMadeUp) {
  host.folder("me/More");
  host.answer({.op = ControlOp::readTreeStream, .path = "me/More"}, StreamBytes().eof().reply());
  expectDone(get({"me", dest.path()}));
  expectDone(get({"/", dest / "all"}));
  EXPECT_EQ(content("me/Docs/a.txt"), "hello");
  EXPECT_EQ(content("all/me/Docs/a.txt"), "hello");
  EXPECT_TRUE(exists("me/More"));
  expectFailed(get({"you", dest.path()}), "you: ENOENT");
}

TEST_F(GetTreeTest, jsonTellsFailuresAndSums) {
  streamDocs(StreamBytes().folder("sub").file("sub/b", "world").announce("z", 1).eof());
  host.file("me/Docs/z", "x");
  const ProgramOutcome outcome = getDocs({"--json"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out,
            R"({"path":"me\/Docs\/z","error":"EIO","message":"fewer bytes than announced"})"
            "\n"
            R"({"files":1,"folders":2,"skipped":0,"bytes":5,"failed":1})"
            "\n");
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/z: EIO (fewer bytes than announced)\n");
}

TEST_F(GetTreeTest, aFileWhoseTimeIsNotKnownIsThereAndTold) {
  streamDocs(StreamBytes().file("a.txt", "hello").eof());
  host.answer({.op = ControlOp::list, .path = "me/Docs"}, HostReply().hangUp());
  const ProgramOutcome outcome = getDocs();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/a.txt: ENOTCONN (its time is not known)\n");
  EXPECT_EQ(content("Docs/a.txt"), "hello");
  EXPECT_EQ(host.asked(ControlOp::stat), 1U) << "of the folder; a host that is gone is not asked";
}

TEST_F(GetTreeTest, aFullDiskEndsTheCopy) {
  // A file system of 64 KiB that only the command's own namespace has.
  const auto onSmallDisk = [&](const std::string& then) {
    return runProgram(
        {"unshare", "-rm", "sh", "-c", "mount -t tmpfs -o size=64k none \"$D\" && " + then},
        {.environment = {
             {"TARNEL_SOCKET", host.path()}, {"T", tarnelProgram()}, {"D", dest.path()}}});
  };
  if (onSmallDisk("true").status != 0) GTEST_SKIP() << "SKIPPED: no file systems of one's own";
  const std::string large(200'000, 'x');
  streamDocs(StreamBytes().file("a.txt", "hello").file("b", large).file("c", "last").eof());
  const ProgramOutcome outcome = onSmallDisk(R"({ "$T" get me/Docs "$D"; ls -A "$D/Docs"; })");
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/b: ENOSPC\n");
  EXPECT_EQ(outcome.out, "a.txt\n") << "nothing half, and nothing behind it";
}

TEST_F(GetTreeTest, whatAnEndCarriesIsNobodys) {
  streamDocs(StreamBytes().file("a.txt", "hello").frame(ControlStreamFrame::eof, "more"));
  streamFile("me/Docs/sub/b", StreamBytes().data("world").eof());
  expectDone(get({docs, "me/Docs/sub/b", dest.path()}));
  EXPECT_EQ(content("Docs/a.txt"), "hello");
  EXPECT_EQ(content("b"), "world");
}

TEST_F(GetTreeTest, timesThatCannotBeListedAreAskedForOneByOne) {
  host.answer({.op = ControlOp::list, .path = "me/Docs"},
              HostReply().answer(R"({"status":"error","message":"listing too large"})"));
  expectDone(getDocs());
  EXPECT_EQ(secondsOf("Docs/a.txt"), 1'700'000'000);
  EXPECT_EQ(host.asked({.op = ControlOp::list, .path = docs}), 1U);
}

}  // namespace
}  // namespace tarnel::test
