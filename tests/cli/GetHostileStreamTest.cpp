// A host that wants to write where it should not, or that does not keep to the stream's order.
#include <sys/resource.h>

#include "GetFixture.h"

namespace tarnel::test {
namespace {

using testing::ElementsAre;

class GetHostileStreamTest : public GetFixture {
 protected:
  GetHostileStreamTest() {
    host.file("me/Docs/good", "good");
    host.file("me/Docs/z", "last");
    host.folder("me/Docs/d");
  }
  // What stands between two good files fails with these words; they arrive all the same.
  void expectSkipped(StreamBytes middle, const std::string& words) {
    StreamBytes stream;
    stream.file("good", "good");
    streamDocs(StreamBytes(stream).raw(middle.bytes()).file("z", "last").eof());
    const TempDir around;
    std::filesystem::create_directory(around / "dest");
    expectFailed(get({docs, around / "dest"}), words);
    EXPECT_THAT(below(around.path()),
                ElementsAre("dest", "dest/Docs", "dest/Docs/good", "dest/Docs/z"))
        << words;
  }
  // The stream ends there, with what was whole before.
  void expectRefused(StreamBytes rest, const std::string& words) {
    streamDocs(
        StreamBytes().file("good", "good").folder("d").raw(rest.bytes()).file("z", "last").eof());
    const TempDir into;
    expectFailed(get({docs, into.path()}), words);
    EXPECT_THAT(below(into.path()), ElementsAre("Docs", "Docs/d", "Docs/good")) << words;
  }
};

TEST_F(GetHostileStreamTest, namesThatLeadElsewhereAreRefused) {
  const std::string unsafe = "EINVAL (unsafe name)";
  const std::string nul("a\0b", 3);
  for (const std::string& relpath :
       {std::string("/tmp/tarnel-evil"), std::string("../evil"), std::string("a/../../../evil"),
        std::string(".."), std::string("."), std::string(""), std::string("a//b"),
        std::string("a/"), std::string("./a"), nul}) {
    SCOPED_TRACE(relpath);
    expectSkipped(StreamBytes().file(relpath, "evil"), unsafe);
    expectSkipped(StreamBytes().folder(relpath), unsafe);
  }
  EXPECT_FALSE(std::filesystem::exists("/tmp/tarnel-evil"));
}

TEST_F(GetHostileStreamTest, namesOfSharesAndPeersAreNotTrustedEither) {
  ControlResponse shares;
  shares.shares.emplace();
  shares.remoteShares.emplace();
  for (const char* name : {"..", "../..", "", "Docs"}) {
    shares.shares->push_back({.name = name, .isRemote = false});
  }
  shares.remoteShares->push_back({.peer = "..", .name = "evil", .isRemote = true});
  host.answer({.op = ControlOp::shares}, HostReply().answer(TreeHost::lineOf(shares)));
  for (const char* path : {"me/..", "me/../..", "me/", "../evil"}) {
    host.folder(path);
    host.answer({.op = ControlOp::readTreeStream, .path = path},
                StreamBytes().file("evil", "evil").eof().reply());
  }
  streamDocs(StreamBytes().file("good", "good").eof());
  const TempDir around;
  std::filesystem::create_directories(around / "a/dest");
  const ProgramOutcome outcome = get({"/", around / "a/dest"});
  EXPECT_EQ(outcome.errorLines(), 4U);
  expectFailed(outcome, "me/..: EINVAL (unsafe name)");
  expectFailed(outcome, "../evil: EINVAL (unsafe name)");
  EXPECT_THAT(below(around.path()),
              ElementsAre("a", "a/dest", "a/dest/me", "a/dest/me/Docs", "a/dest/me/Docs/good"));
}

TEST_F(GetHostileStreamTest, namesThatAreTooLongAreRefused) {
  expectSkipped(StreamBytes().file(std::string(256, 'n'), "x"), "ENAMETOOLONG");
  std::string deep = "d";
  for (int i = 0; i < 300; ++i) deep += "/d";
  expectSkipped(StreamBytes().file(deep, "x"), "ENAMETOOLONG");
  expectSkipped(StreamBytes().file(std::string(500'000, 'n'), "x"), "ENAMETOOLONG");
}

TEST_F(GetHostileStreamTest, nothingIsBelowAFile) {
  expectSkipped(StreamBytes().file("good/below", "x"), "me/Docs/good/below: ENOTDIR");
  expectSkipped(StreamBytes().folder("good"), "me/Docs/good: ENOTDIR");
  expectSkipped(StreamBytes().folder("good/below"), "me/Docs/good/below: ENOTDIR");
}

TEST_F(GetHostileStreamTest, aFolderThatCannotBeIsToldOnce) {
  const StreamBytes below =
      StreamBytes().folder("good").file("good/a", "x").folder("good/b").file("good/b/c", "x");
  expectSkipped(below, "me/Docs/good: ENOTDIR");
  EXPECT_EQ(getDocs({"--force"}).errorLines(), 1U);
}

TEST_F(GetHostileStreamTest, theSameNameComesOnce) {
  expectSkipped(StreamBytes().file("good", "evil"), "me/Docs/good: EEXIST");
  std::filesystem::remove_all(dest / "Docs");
  std::filesystem::create_directory(dest / "Docs");
  std::ofstream(dest / "Docs/good") << "mine";
  const ProgramOutcome forced = getDocs({"--force"});
  expectFailed(forced, "me/Docs/good: EEXIST (named twice)");
  EXPECT_EQ(content("Docs/good"), "good");
}

TEST_F(GetHostileStreamTest, aLinkInTheDestinationIsNeverFollowed) {
  const TempDir outside;
  std::ofstream(outside / "target") << "mine";
  std::filesystem::create_directory(dest / "Docs");
  std::filesystem::create_directory_symlink(outside.path(), dest / "Docs/dir");
  std::filesystem::create_symlink(outside / "target", dest / "Docs/file");
  std::filesystem::create_symlink(outside / "new", dest / "Docs/dangling");
  streamDocs(StreamBytes()
                 .folder("dir")
                 .file("dir/target", "evil")
                 .file("dir/other", "evil")
                 .file("file", "evil")
                 .file("dangling", "evil")
                 .eof());
  for (const char* name : {"dir", "file", "dangling"})
    host.file(std::string("me/Docs/") + name, "");
  const ProgramOutcome plain = getDocs();
  EXPECT_EQ(plain.status, 1);
  EXPECT_THAT(plain.err, HasSubstr("me/Docs/dir: ENOTDIR"));
  EXPECT_THAT(plain.err, HasSubstr("me/Docs/file: EEXIST"));
  EXPECT_THAT(plain.err, HasSubstr("me/Docs/dangling: EEXIST"));
  const ProgramOutcome forced = getDocs({"--force"});
  expectFailed(forced, "me/Docs/dir: ENOTDIR");
  EXPECT_EQ(content("Docs/file"), "evil") << "the link is replaced";
  EXPECT_THAT(below(outside.path()), ElementsAre("target"));
  EXPECT_EQ(std::filesystem::file_size(outside / "target"), 4U);
}

TEST_F(GetHostileStreamTest, aLinkInThePlaceOfTheCopyItselfIsNotFollowed) {
  const TempDir outside;
  std::filesystem::create_directory_symlink(outside.path(), dest / "Docs");
  streamDocs(StreamBytes().file("good", "good").eof());
  expectFailed(getDocs({"--force"}), "me/Docs: ENOTDIR");
  EXPECT_THAT(below(outside.path()), ElementsAre());
}

TEST_F(GetHostileStreamTest, aFileIsAsLongAsAnnounced) {
  expectSkipped(StreamBytes().announce("f", 3).data("xy"), "me/Docs/f: EIO (fewer bytes");
  expectSkipped(StreamBytes().announce("f", 3), "me/Docs/f: EIO (fewer bytes");
  expectRefused(StreamBytes().announce("f", 3).data("xyzw"), "me/Docs: EIO (more bytes");
  expectRefused(StreamBytes().announce("f", 3).data("xyz").data("w"), "me/Docs: EIO (more bytes");
  expectRefused(StreamBytes().announce("f", 0).data("w"), "me/Docs: EIO (more bytes");
  expectRefused(StreamBytes().announce("../f", 1).data("ww"), "me/Docs: EIO (more bytes");
  expectRefused(StreamBytes().announce("f", -1), "me/Docs: EIO (a negative size");
}

TEST_F(GetHostileStreamTest, framesOutOfOrderEndTheStream) {
  streamDocs(StreamBytes().data("x").file("z", "last").eof());
  expectFailed(getDocs(), "me/Docs: EIO (bytes without a file)");
  EXPECT_THAT(copied(), ElementsAre("Docs"));
  // Behind a folder there is no file, either, and a failure is one file's.
  streamDocs(StreamBytes().folder("d").data("x").eof());
  expectFailed(getDocs(), "me/Docs: EIO (bytes without a file)");
  streamDocs(StreamBytes().fileError("x").eof());
  expectFailed(getDocs(), "me/Docs: EIO (the failure of no file)");
}

TEST_F(GetHostileStreamTest, whatIsNoFrameEndsTheStream) {
  expectRefused(StreamBytes().frame('Z', "x"), "me/Docs: EIO (an unknown frame)");
  expectRefused(StreamBytes().frame('d', ""), "me/Docs: EIO (an unknown frame)");
  expectRefused(StreamBytes().raw(std::string("D\0\x80\0\1", 5)), "a frame of 8388609 bytes");
  expectRefused(StreamBytes().raw("H\xff\xff\xff\xff"), "a frame of 4294967295 bytes");
  expectRefused(StreamBytes().frame('H', "{}"), "a header that is none");
  expectRefused(StreamBytes().frame('H', ""), "a header that is none");
  expectRefused(StreamBytes().frame('H', R"({"relpath":"a","kind":"link","mode":0,"size":0})"),
                "a header that is none");
  expectRefused(StreamBytes().frame('H', std::string(2'000'000, ' ')), "a header of 2000000 bytes");
}

TEST_F(GetHostileStreamTest, aStreamWithoutItsEndIsNotWhole) {
  host.answer({.op = ControlOp::readTreeStream, .path = docs},
              StreamBytes().file("good", "good").file("z", "last").reply().hangUp());
  expectFailed(getDocs(), "me/Docs: ENOTCONN (connection to Tarnel closed)");
  EXPECT_EQ(content("Docs/good"), "good");
  EXPECT_FALSE(exists("Docs/z")) << "its failure may have been on its way";
}

TEST_F(GetHostileStreamTest, emptyFramesDoNotGoOnForEver) {
  StreamBytes stream;
  stream.announce("f", 3);
  host.file("me/Docs/f", "x");
  for (int i = 0; i < 2'000; ++i) stream.data("");
  streamDocs(stream);
  expectFailed(getDocs(), "me/Docs: EIO (empty frames)");
}

TEST_F(GetHostileStreamTest, onlySomeOfManyFailuresAreListed) {
  StreamBytes stream;
  for (int i = 0; i < 500; ++i) stream.file("../evil" + std::to_string(i), "x");
  streamDocs(stream.file("z", "last").eof());
  const ProgramOutcome outcome = getDocs();
  EXPECT_EQ(outcome.errorLines(), 101U);
  EXPECT_THAT(outcome.err, HasSubstr("tarnel: and 400 more\n"));
  EXPECT_EQ(content("Docs/z"), "last");
}

TEST_F(GetHostileStreamTest, unsafeNamesWithoutEndEndTheStream) {
  StreamBytes stream;
  for (int i = 0; i < 1'500; ++i) stream.folder("..");
  streamDocs(stream);
  expectFailed(getDocs(), "tarnel: and 902 more\n");
}

TEST_F(GetHostileStreamTest, namesThatAWalkLeavesOutAreDropped) {
  streamDocs(StreamBytes()
                 .file(".DS_Store", "x")
                 .file("._good", "x")
                 .folder("._d")
                 .file("._d/f", "x")
                 .file("good", "good")
                 .eof());
  expectDone(getDocs());
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/good"));
}

TEST_F(GetHostileStreamTest, controlCharactersInNamesAreShownEscaped) {
  expectSkipped(StreamBytes().file("../\x1b[2J\n", "x"), "me/Docs/../\\x1b[2J\\x0a: EINVAL");
}

}  // namespace
}  // namespace tarnel::test
