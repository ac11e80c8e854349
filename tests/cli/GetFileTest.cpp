// Single files, and hosts that do not serve streams.
#include "GetFixture.h"

namespace tarnel::test {
namespace {

using testing::ElementsAre;

class GetFileTest : public GetFixture {
 protected:
  GetFileTest() {
    host.file("me/Docs/a", "hello", 1'700'000'000'005);
    host.file("me/Docs/b", "world");
  }
};

TEST_F(GetFileTest, aFileComesAsAStream) {
  streamFile("me/Docs/a", StreamBytes().data("he").data("llo").eof());
  expectDone(get({"me/Docs/a", dest.path()}));
  expectDone(get({"me/Docs/a", dest / "new name"}));
  EXPECT_EQ(content("a"), "hello");
  EXPECT_EQ(content("new name"), "hello");
  EXPECT_EQ(secondsOf("a"), 1'700'000'000);
  EXPECT_EQ(modeOf("a"), 0644U);
  EXPECT_EQ(host.asked(ControlOp::read), 0U);
}

TEST_F(GetFileTest, severalPathsNeedAFolder) {
  streamFile("me/Docs/a", StreamBytes().data("hello").eof());
  streamFile("me/Docs/b", StreamBytes().data("world").eof());
  expectFailed(get({"me/Docs/a", "me/Docs/b", dest / "no"}), "/no: ENOTDIR");
  EXPECT_THAT(copied(), ElementsAre());
  expectDone(get({"me/Docs/a", "me/Docs/b", dest.path()}));
  EXPECT_THAT(copied(), ElementsAre("a", "b"));
}

TEST_F(GetFileTest, aPathThatFailsDoesNotEndTheOthers) {
  streamFile("me/Docs/b", StreamBytes().data("world").eof());
  const ProgramOutcome outcome =
      get({"me/Docs/no", "me/No/x", "me/Docs/..", "a\xff/b/c", "me/Docs/b", dest.path()});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "tarnel: me/Docs/no: ENOENT\ntarnel: me/No/x: ENOENT\ntarnel: me/Docs/..: ENOENT\n"
            "tarnel: a\\xff/b/c: EILSEQ\n");
  EXPECT_EQ(content("b"), "world");
}

TEST_F(GetFileTest, aHostThatGoesAwayIsToldOnceBehindWhatFailed) {
  host.answer({.op = ControlOp::readStream, .path = "me/Docs/a"},
              StreamBytes().data("he").reply().stall().hangUp());
  Program program(
      {tarnelProgram(), "get", "--socket", host.path(), "me/Docs/a", "me/Docs/b", dest.path()});
  ASSERT_TRUE(host.waitUntilAsked({.op = ControlOp::readStream, .path = "me/Docs/a"}));
  std::filesystem::remove(host.path());
  host.release();
  const ProgramOutcome outcome = program.wait();
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err,
            "tarnel: me/Docs/a: ENOTCONN (connection to Tarnel closed)\n"
            "tarnel: me/Docs/b: ENOTCONN (connect() failed: No such file or directory)\n"
            "tarnel: no host answers on " +
                host.path() +
                " (ENOENT): start one with `tarnel host DIR`; --resume copies the rest\n");
  EXPECT_THAT(copied(), ElementsAre());
}

TEST_F(GetFileTest, aStreamOfAnotherLengthIsNoWholeFile) {
  streamFile("me/Docs/a", StreamBytes().data("hell").eof());
  expectFailed(get({"me/Docs/a", dest.path()}), "me/Docs/a: EIO (fewer bytes");
  streamFile("me/Docs/a", StreamBytes().data("hello").data("!").eof());
  expectFailed(get({"me/Docs/a", dest.path()}), "me/Docs/a: EIO (more bytes");
  streamFile("me/Docs/a", StreamBytes().data("hello").frame('H', "{}").eof());
  expectFailed(get({"me/Docs/a", dest.path()}), "me/Docs/a: EIO (an unknown frame");
  streamFile("me/Docs/a", StreamBytes().data("hello").error("permission denied"));
  expectFailed(get({"me/Docs/a", dest.path()}), "me/Docs/a: EACCES");
  EXPECT_THAT(copied(), ElementsAre());
}

TEST_F(GetFileTest, bytesThatNobodyAskedForAreNotTheNextFiles) {
  // Behind the first file's end stands a whole answer to the next request.
  streamFile("me/Docs/a", StreamBytes().data("hello").eof().data("wrong").eof());
  streamFile("me/Docs/b", StreamBytes().data("world").eof());
  expectDone(get({"me/Docs/a", "me/Docs/b", dest.path()}));
  EXPECT_EQ(content("a"), "hello");
  EXPECT_EQ(content("b"), "world");
}

TEST_F(GetFileTest, aFileIsNotTakenForAnotherAfterAFailure) {
  streamFile("me/Docs/a", StreamBytes().data("hello!").data("wrong").eof());
  streamFile("me/Docs/b", StreamBytes().data("world").eof());
  expectFailed(get({"me/Docs/a", "me/Docs/b", dest.path()}), "me/Docs/a: EIO");
  EXPECT_THAT(copied(), ElementsAre("b"));
  EXPECT_EQ(content("b"), "world");
}

TEST_F(GetFileTest, aHostWithoutStreamsIsReadInChunks) {
  std::string large;
  for (int i = 0; i < 600'000; ++i) large += static_cast<char>(i * 7 + i / 256);
  host.file("me/Docs/sub/large", large);
  host.folder("me/Docs/sub");
  host.folder("me/Docs/sub/empty");
  host.file("me/Docs/sub/zero", "");
  expectDone(getDocs());
  EXPECT_EQ(content("Docs/a"), "hello");
  EXPECT_TRUE(content("Docs/sub/large") == large);
  EXPECT_TRUE(exists("Docs/sub/zero"));
  EXPECT_TRUE(exists("Docs/sub/empty"));
  EXPECT_EQ(secondsOf("Docs/a"), 1'700'000'000);
  EXPECT_EQ(secondsOf("Docs/sub"), TreeHost::someTime / 1000);
  EXPECT_EQ(host.asked(ControlOp::readTreeStream), 1U) << "asked once, and known from then on";
  EXPECT_EQ(host.asked(ControlOp::readStream), 1U);
  const std::size_t reads = host.asked(ControlOp::read);
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(host.asked(ControlOp::read), reads);
}

TEST_F(GetFileTest, aFileThatGrowsEndsWhereItEndedAtFirst) {
  const ControlStat before = host.statusOf("me/Docs/a");
  host.file("me/Docs/a", "hello and more");
  ControlResponse answer;
  answer.stat = before;
  host.answer({.op = ControlOp::stat, .path = "me/Docs/a"},
              HostReply().answer(TreeHost::lineOf(answer)));
  expectDone(get({"me/Docs/a", dest.path()}));
  EXPECT_EQ(content("a"), "hello");
  EXPECT_EQ(secondsOf("a"), 1'700'000'000);
}

TEST_F(GetFileTest, aFileThatIsSaidToBeEmptyMayNotBe) {
  ControlStat empty = host.statusOf("me/Docs/a");
  empty.size = 0;
  ControlResponse answer;
  answer.stat = empty;
  host.answer({.op = ControlOp::stat, .path = "me/Docs/a"},
              HostReply().answer(TreeHost::lineOf(answer)));
  expectFailed(get({"me/Docs/a", dest.path()}), "me/Docs/a: EIO (more bytes");
  EXPECT_THAT(copied(), ElementsAre());
}

TEST_F(GetFileTest, chunksAreNotTrustedEither) {
  host.answer({.op = ControlOp::read, .path = "me/Docs/a"},
              HostReply().answer(R"({"status":"ok","dataBase64":"aGVs"})"));  // without end
  host.answer({.op = ControlOp::read, .path = "me/Docs/b"},
              HostReply().answer(R"({"status":"ok","dataBase64":"a b="})"));
  expectFailed(get({"me/Docs/a", dest.path()}), "me/Docs/a: EIO (more bytes");
  expectFailed(get({"me/Docs/b", dest.path()}), "me/Docs/b: EIO (bytes that are not base64)");
  EXPECT_THAT(copied(), ElementsAre());
}

TEST_F(GetFileTest, listingsAreNotTrustedEither) {
  const auto entry = [](const std::string& name, bool isDirectory) {
    ControlStat stat;
    stat.name = name;
    stat.isDirectory = isDirectory;
    stat.size = isDirectory ? 0 : 5;
    return stat;
  };
  ControlResponse listing;
  listing.entries = {entry("../evil", false), entry("/evil", true), entry("a", false),
                     entry("a", false),       entry("..", true),    entry("", true)};
  host.answer({.op = ControlOp::list, .path = docs}, HostReply().answer(TreeHost::lineOf(listing)));
  const ProgramOutcome outcome = getDocs();
  expectFailed(outcome, "me/Docs: EINVAL (4 names that cannot be)");
  EXPECT_THAT(outcome.err, HasSubstr("me/Docs/a: EEXIST (named twice)"));
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/a"));
}

TEST_F(GetFileTest, foldersThatHoldThemselvesComeToAnEnd) {
  // Every listing says the same, however deep: two folders that lead to each other.
  host.folder("me/Docs/d");
  std::string path = docs;
  ControlResponse listing;
  ControlStat folder = host.statusOf("me/Docs/d");
  listing.entries = {folder};
  for (int i = 0; i < 40; ++i) {
    host.answer({.op = ControlOp::list, .path = path},
                HostReply().answer(TreeHost::lineOf(listing)));
    path += "/d";
  }
  expectFailed(getDocs(), "ELOOP (folders that hold themselves)");
  EXPECT_LT(host.asked(ControlOp::list), 20U);
}

TEST_F(GetFileTest, aListingThatFailsIsListed) {
  host.folder("me/Docs/sub");
  host.answer({.op = ControlOp::list, .path = "me/Docs/sub"},
              HostReply().answer(R"({"status":"error","message":"permission denied"})"));
  const ProgramOutcome outcome = getDocs();
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/sub: EACCES\n");
  EXPECT_EQ(content("Docs/b"), "world");
}

}  // namespace
}  // namespace tarnel::test
