// Copies into a folder that holds something already: plain, with --force, with --resume.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <map>

#include "GetFixture.h"

namespace tarnel::test {
namespace {

using testing::ElementsAre;

class GetAgainTest : public GetFixture {
 protected:
  GetAgainTest() {
    host.file("me/Docs/a", "hello", 1'700'000'000'005);
    host.folder("me/Docs/sub");
    host.file("me/Docs/sub/b", "world");
    streamDocs(StreamBytes().file("a", "hello").folder("sub").file("sub/b", "world").eof());
    streamFile("me/Docs/a", StreamBytes().data("hello").eof());
    streamFile("me/Docs/sub/b", StreamBytes().data("world").eof());
    host.answer({.op = ControlOp::readTreeStream, .path = "me/Docs/sub"},
                StreamBytes().file("b", "world").eof().reply());
  }
  // What a second copy could have changed of each entry.
  [[nodiscard]] std::map<std::string, std::string> everything() const {
    std::map<std::string, std::string> all;
    for (const std::string& relative : copied()) {
      const struct stat status = statusOf(relative);
      all[relative] = std::to_string(status.st_ino) + " " + std::to_string(status.st_mode) + " " +
                      std::to_string(status.st_ctim.tv_sec) + "." +
                      std::to_string(status.st_ctim.tv_nsec);
    }
    return all;
  }
  [[nodiscard]] std::size_t transfers() const {
    return host.asked(ControlOp::readTreeStream) + host.asked(ControlOp::readStream) +
           host.asked(ControlOp::read);
  }
  void put(const std::string& relative, const std::string& content) const {
    std::filesystem::create_directories(std::filesystem::path(dest / relative).parent_path());
    std::ofstream(dest / relative) << content;
  }
};

TEST_F(GetAgainTest, nothingIsOverwritten) {
  put("Docs/a", "mine");
  put("Docs/sub/other", "mine");
  expectFailed(getDocs(), "tarnel: me/Docs/a: EEXIST\n");
  EXPECT_EQ(content("Docs/a"), "mine");
  EXPECT_EQ(content("Docs/sub/b"), "world") << "a folder that exists is merged into";
  EXPECT_EQ(content("Docs/sub/other"), "mine");
}

TEST_F(GetAgainTest, forceReplacesFiles) {
  put("Docs/a", "mine");
  expectDone(getDocs({"--force"}));
  EXPECT_EQ(content("Docs/a"), "hello");
  EXPECT_EQ(secondsOf("Docs/a"), 1'700'000'000);
  expectDone(getDocs({"--force"}));
}

TEST_F(GetAgainTest, forceReplacesNothingButFilesAndLinks) {
  std::filesystem::create_directories(dest / "Docs/a");
  std::filesystem::create_directories(dest / "Docs/sub");
  ASSERT_EQ(::mkfifo((dest / "Docs/sub/b").c_str(), 0600), 0);
  const ProgramOutcome outcome = getDocs({"--force"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "tarnel: me/Docs/a: EISDIR\ntarnel: me/Docs/sub/b: EEXIST (not a file)\n");
  EXPECT_TRUE(S_ISFIFO(statusOf("Docs/sub/b").st_mode));
  EXPECT_TRUE(S_ISDIR(statusOf("Docs/a").st_mode));
}

TEST_F(GetAgainTest, aFileIsNoPlaceForAFolder) {
  put("Docs", "mine");
  expectFailed(getDocs({"--force"}), "tarnel: me/Docs: ENOTDIR\n");
  EXPECT_EQ(content("Docs"), "mine");
}

TEST_F(GetAgainTest, resumingACompleteCopyChangesAndTransfersNothing) {
  expectDone(getDocs());
  const auto before = everything();
  const std::size_t asked = transfers();
  for (const bool force : {false, true}) {
    expectDone(getDocs(force ? std::vector<std::string>{"--resume", "--force"}
                             : std::vector<std::string>{"--resume"}));
    EXPECT_EQ(everything(), before);
    EXPECT_EQ(transfers(), asked);
  }
  EXPECT_EQ(getDocs({"--resume", "--json"}).out,
            R"({"files":0,"folders":0,"skipped":2,"bytes":0,"failed":0})"
            "\n");
}

TEST_F(GetAgainTest, resumingBringsWhatIsMissing) {
  expectDone(getDocs());
  put("Docs/mine", "stays");
  std::filesystem::remove(dest / "Docs/a");
  std::filesystem::remove_all(dest / "Docs/sub");
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/a"), "hello");
  EXPECT_EQ(content("Docs/sub/b"), "world");
  EXPECT_EQ(secondsOf("Docs/a"), 1'700'000'000);
  EXPECT_EQ(secondsOf("Docs/sub/b"), TreeHost::someTime / 1000);
  EXPECT_EQ(secondsOf("Docs/sub"), TreeHost::someTime / 1000);
  EXPECT_EQ(secondsOf("Docs"), TreeHost::someTime / 1000);
  EXPECT_EQ(host.asked({.op = ControlOp::readTreeStream, .path = docs}), 1U);
  EXPECT_EQ(host.asked({.op = ControlOp::readTreeStream, .path = "me/Docs/sub"}), 1U)
      << "a folder that is missing comes as a whole";
}

TEST_F(GetAgainTest, aCopyUnderANewNameIsResumedInItsPlace) {
  expectDone(get({docs, dest / "new"}));
  std::filesystem::remove(dest / "new/sub/b");
  const std::size_t asked = transfers();
  for (int i = 0; i < 2; ++i) {
    expectDone(get({"--resume", docs, dest / "new"}));
    EXPECT_THAT(copied(), ElementsAre("new", "new/a", "new/sub", "new/sub/b"));
    EXPECT_EQ(transfers(), asked + 1);
  }
  // A folder with something else in it is what the copy is put into; so is an empty one.
  put("new/mine", "stays");
  expectDone(get({"--resume", docs, dest / "new"}));
  EXPECT_EQ(content("new/Docs/a"), "hello");
  std::filesystem::create_directory(dest / "empty");
  expectDone(get({"--resume", docs, dest / "empty"}));
  EXPECT_EQ(content("empty/Docs/a"), "hello");
}

TEST_F(GetAgainTest, aCopyOfEveryShareUnderANewNameIsResumedInItsPlace) {
  expectDone(get({"me", dest / "new"}));
  const auto before = everything();
  const std::size_t asked = transfers();
  expectDone(get({"--resume", "me", dest / "new"}));
  EXPECT_EQ(everything(), before);
  EXPECT_EQ(transfers(), asked);
  put("new/mine", "stays");
  expectDone(get({"--resume", "me", dest / "new"}));
  EXPECT_EQ(content("new/me/Docs/a"), "hello");
}

TEST_F(GetAgainTest, resumingWithNothingThereIsAFreshCopy) {
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/sub/b"), "world");
  EXPECT_EQ(host.asked(ControlOp::readStream), 0U);
}

TEST_F(GetAgainTest, aFileThatChangedIsOnlyReplacedByForce) {
  expectDone(getDocs());
  host.file("me/Docs/a", "HELLO", 1'700'000'000'006);
  streamFile("me/Docs/a", StreamBytes().data("HELLO").eof());
  expectFailed(getDocs({"--resume"}), "tarnel: me/Docs/a: EEXIST\n");
  EXPECT_EQ(content("Docs/a"), "hello");
  const std::size_t asked = transfers();
  expectDone(getDocs({"--resume", "--force"}));
  EXPECT_EQ(content("Docs/a"), "HELLO");
  EXPECT_EQ(transfers(), asked + 1);
}

TEST_F(GetAgainTest, anInterruptedCopyIsResumed) {
  host.answer({.op = ControlOp::readTreeStream, .path = docs},
              StreamBytes().file("a", "hello").folder("sub").reply().hangUp());
  EXPECT_EQ(getDocs().status, 1);
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/a", "Docs/sub"));
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/sub/b"), "world");
  EXPECT_EQ(secondsOf("Docs/sub"), TreeHost::someTime / 1000);
  EXPECT_EQ(modeOf("Docs/sub"), modeOf("Docs"));
}

TEST_F(GetAgainTest, aFolderWhoseOnlyFileFailedIsNotTakenForAnEmptyOne) {
  const auto streamSub = [&](const StreamBytes& sub) {
    host.answer({.op = ControlOp::readTreeStream, .path = "me/Docs/sub"}, sub.reply());
  };
  streamDocs(StreamBytes().folder("sub").announce("sub/b", 5).fileError("i/o error").eof());
  streamSub(StreamBytes().announce("b", 5).fileError("i/o error").eof());
  for (int i = 0; i < 3; ++i) expectFailed(getDocs({"--resume"}), "me/Docs/sub/b: EIO");
  streamSub(StreamBytes().file("b", "world").eof());
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/sub/b"), "world");
  EXPECT_EQ(secondsOf("Docs/sub"), TreeHost::someTime / 1000);
}

TEST_F(GetAgainTest, norIsOneOfAHostWithoutStreams) {
  host.answerAsUsual();
  host.answer({.op = ControlOp::read, .path = "me/Docs/sub/b"},
              HostReply().answer(R"({"status":"error","message":"i/o error"})"));
  for (int i = 0; i < 2; ++i) expectFailed(getDocs({"--resume"}), "me/Docs/sub/b: EIO");
  host.answerAsUsual();
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(content("Docs/sub/b"), "world");
}

TEST_F(GetAgainTest, resumingAsksForNoNamesThatAWalkLeavesOut) {
  expectDone(getDocs());
  host.file("me/Docs/.DS_Store", "x");
  host.file("me/Docs/._a", "x");
  host.folder("me/Docs/._d");
  expectDone(getDocs({"--resume"}));
  EXPECT_THAT(copied(), ElementsAre("Docs", "Docs/a", "Docs/sub", "Docs/sub/b"));
}

TEST_F(GetAgainTest, resumingLeavesAloneWhatAStreamDidNotGoInto) {
  // A link to a folder: listed with what it leads to, but no stream goes through it.
  streamDocs(StreamBytes().folder("link").eof());
  host.folder("me/Docs/link");
  host.file("me/Docs/link/b", "world");
  host.remove("me/Docs/a");
  host.remove("me/Docs/sub/b");
  host.remove("me/Docs/sub");
  expectDone(getDocs());
  const auto before = everything();
  const std::size_t asked = transfers();
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(everything(), before);
  EXPECT_EQ(transfers(), asked);
}

TEST_F(GetAgainTest, resumingDoesNotMissWhatAStreamLeftOut) {
  // A link to a folder of the share: listed as that folder, and not in the stream.
  expectDone(getDocs());
  host.folder("me/Docs/link");
  host.file("me/Docs/link/b", "world");
  const auto before = everything();
  const std::size_t asked = transfers();
  expectDone(getDocs({"--resume"}));
  EXPECT_EQ(everything(), before);
  EXPECT_EQ(transfers(), asked);
}

TEST_F(GetAgainTest, aFolderThatCannotBeMadeIsMissedEachTime) {
  // The last one is one level too deep: the destination's "Docs" is the first of 257.
  StreamBytes stream;
  std::string relpath;
  for (int level = 2; level <= 257; ++level) {
    if (level == 257) {
      host.file("me/Docs/" + relpath + "/beside", "it");
      stream.file(relpath + "/beside", "it");
    }
    relpath += relpath.empty() ? "d" : "/d";
    host.folder("me/Docs/" + relpath);
    stream.folder(relpath);
  }
  streamDocs(stream.eof());
  for (const char* other : {"a", "sub/b", "sub"}) host.remove(std::string("me/Docs/") + other);
  for (int i = 0; i < 3; ++i) {  // as a stream, by listings, and by those of a resumed copy
    const ProgramOutcome outcome = getDocs({"--resume"});
    expectFailed(outcome, "me/Docs/" + relpath + ": ENAMETOOLONG\n");
    EXPECT_EQ(outcome.errorLines(), 1U);
  }
  EXPECT_EQ(host.asked(ControlOp::readTreeStream), 1U);
}

TEST_F(GetAgainTest, oneFileIsResumedToo) {
  expectDone(get({"me/Docs/a", dest.path()}));
  const std::size_t asked = transfers();
  expectFailed(get({"me/Docs/a", dest.path()}), "tarnel: me/Docs/a: EEXIST\n");
  expectDone(get({"--resume", "me/Docs/a", dest.path()}));
  EXPECT_EQ(transfers(), asked);
  expectDone(get({"--force", "me/Docs/a", dest / "a"}));
  EXPECT_EQ(transfers(), asked + 1);
}

}  // namespace
}  // namespace tarnel::test
