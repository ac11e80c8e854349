// `readTreeStream`: a whole tree in one answer.
#include <fcntl.h>
#include <sys/stat.h>

#include <thread>

#include "StreamFixture.h"
#include "support/Eventually.h"
#include "support/NoMoreDescriptors.h"
#include "support/OpenDescriptors.h"

#if defined(__linux__)
#include <sys/fsuid.h>
#include <unistd.h>
#endif

namespace tarnel::test {
namespace {

class TreeStreamTest : public StreamTest {
 protected:
  void file(const std::string& relative, std::string_view content = {}, mode_t mode = 0644) {
    temp.file(docs(relative), content);
    ::chmod((temp / docs(relative)).c_str(), mode);
  }
  void folder(const std::string& relative, mode_t mode = 0755) {
    temp.folder(docs(relative));
    ::chmod((temp / docs(relative)).c_str(), mode);
  }
};

TEST_F(TreeStreamTest, aFolderComesBeforeItsContentsAndTheRootHasNoRecord) {
  folder("a");
  file("a/x", "1");
  folder("a/deep", 0700);
  file("a/deep/y", "22", 0600);
  file("a.txt", "333");
  folder("b");
  EXPECT_EQ(tree("me/Docs"),
            (ReceivedTree{"dir a 755", "dir a/deep 700", "file a/deep/y 600 22", "file a/x 644 1",
                          "file a.txt 644 333", "dir b 755", "eof"}));
}

TEST_F(TreeStreamTest, pathsAreRelativeToWhereTheWalkBegan) {
  folder("a/b");
  file("a/b/c", "1");
  ::chmod((temp / docs("a")).c_str(), 0755);
  EXPECT_EQ(tree("me/Docs/a"), (ReceivedTree{"dir b 755", "file b/c 644 1", "eof"}));
  EXPECT_EQ(tree("me/Docs/a/b"), (ReceivedTree{"file c 644 1", "eof"}));
}

TEST_F(TreeStreamTest, aWalkOfOneFileHasTheFilesNameAsItsPath) {
  file("a/b.txt", "hello", 0640);
  EXPECT_EQ(tree("me/Docs/a/b.txt"), (ReceivedTree{"file b.txt 640 hello", "eof"}));
}

TEST_F(TreeStreamTest, anEmptyFolderIsTheEndAlone) {
  EXPECT_EQ(tree("me/Docs"), ReceivedTree{"eof"});
}

TEST_F(TreeStreamTest, headersTellTheSizeAndFoldersHaveNone) {
  file("a/f", "12345");
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readTreeStream, "me/Docs");
  const auto received = receiveTree(client);
  ASSERT_EQ(received.headers.size(), 2U);
  EXPECT_EQ(received.headers[0].size, 0);
  EXPECT_EQ(
      received.headers[1],
      (TreeHeader{.relpath = "a/f", .kind = TreeHeader::Kind::file, .mode = 0644, .size = 5}));
}

TEST_F(TreeStreamTest, namesAreInTheOrderOfListings) {
  const std::string composed = "\xc3\xa9", decomposed = "e\xcc\x81x";
  for (const std::string& name : {std::string("b"), std::string("B"), std::string("z"), composed,
                                  decomposed, std::string("a")}) {
    file(name);
  }
  EXPECT_EQ(tree("me/Docs"),
            (ReceivedTree{"file B 644", "file a 644", "file b 644", "file z 644",
                          "file " + composed + " 644", "file " + decomposed + " 644", "eof"}));
}

TEST_F(TreeStreamTest, noiseIsLeftOut) {
  file(".DS_Store", "x");
  file("._photo.jpg", "x");
  file("._folder/inside", "x");
  folder("a");
  file("a/.DS_Store", "x");
  file("a/.DS_Store2", "x");
  EXPECT_EQ(tree("me/Docs"), (ReceivedTree{"dir a 755", "file a/.DS_Store2 644 x", "eof"}));
}

TEST_F(TreeStreamTest, namesThatAreNotUtf8AreLeftOutAndCountedInTheLog) {
  const UniqueFd made(::open((temp / docs("\xff")).c_str(), O_WRONLY | O_CREAT, 0644));
  if (!made.valid()) GTEST_SKIP() << "the file system takes only names in UTF-8";
  file("a");
  file("b/\xfe");
  ::chmod((temp / docs("b")).c_str(), 0755);
  EXPECT_EQ(tree("me/Docs"), (ReceivedTree{"file a 644", "dir b 755", "eof"}));
  EXPECT_TRUE(eventually([&] { return !log().empty(); }));
  EXPECT_EQ(log(),
            std::vector<std::string>{"left out 2 names that are not valid UTF-8 in me/Docs"});
}

TEST_F(TreeStreamTest, aLinkToAFileIsThatFileAndOneToAFolderIsLeftOut) {
  folder("a");
  file("a/f", "words");
  temp.link(docs("toFile"), "a/f");
  temp.link(docs("toFolder"), "a");
  temp.link(docs("a/up"), "..");
  temp.link(docs("a/self"), ".");
  temp.link(docs("dangling"), "none");
  temp.link(docs("out"), "../s");
  temp.fifo(docs("fifo"));
  EXPECT_EQ(tree("me/Docs"),
            (ReceivedTree{"dir a 755", "file a/f 644 words", "file toFile 644 words", "eof"}));
}

TEST_F(TreeStreamTest, aWalkMayBeginBehindALink) {
  folder("a/b");
  file("a/b/f", "words");
  temp.link(docs("link"), "a");
  ::chmod((temp / docs("a")).c_str(), 0755);
  EXPECT_EQ(tree("me/Docs/link"), (ReceivedTree{"dir b 755", "file b/f 644 words", "eof"}));
  EXPECT_EQ(tree("me/Docs/link/b"), (ReceivedTree{"file f 644 words", "eof"}));
  EXPECT_EQ(tree("me/Docs/link/b/f"), (ReceivedTree{"file f 644 words", "eof"}));
}

TEST_F(TreeStreamTest, aStreamThatCannotStartFailsWithAnErrorFrame) {
  file("f");
  EXPECT_EQ(tree("me/Docs/none"), ReceivedTree{"error: no such file"});
  EXPECT_EQ(tree("me/Docs/f/x"), ReceivedTree{"error: not a directory"});
  for (const auto* location : {"", "me", "bob/Docs", "me/Docs/", "me/Docs/.."}) {
    EXPECT_EQ(tree(location), ReceivedTree{"error: no such file"}) << location;
  }
  StreamClient client(socketPath());
  client.begin({.op = ControlOp::readTreeStream});
  EXPECT_EQ(receiveTree(client).lines, ReceivedTree{"error: no location given"});
}

TEST_F(TreeStreamTest, theConnectionServesTheNextRequest) {
  file("f", "1");
  startHost();
  StreamClient client(socketPath());
  for (int i = 0; i < 3; ++i) {
    client.begin(ControlOp::readTreeStream, "me/Docs");
    EXPECT_EQ(receiveTree(client).lines, (ReceivedTree{"file f 644 1", "eof"}));
    EXPECT_TRUE(client.ask({.op = ControlOp::list, .name = "me/Docs"}).entries);
    client.begin(ControlOp::readTreeStream, "me/None");
    EXPECT_EQ(receiveTree(client).lines, ReceivedTree{"error: no such file"});
  }
}

TEST_F(TreeStreamTest, aFileThatBecomesShorterHasFailedAndTheWalkGoesOn) {
  sparseFile(docs("a"), muchMore);
  file("b", "next");
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readTreeStream, "me/Docs");
  TreeReceiver received;
  ASSERT_TRUE(received.take(*client.frame()));
  std::filesystem::resize_file(temp / docs("a"), 1'000);
  while (auto frame = client.frame()) {
    if (!received.take(std::move(*frame))) break;
  }
  ASSERT_EQ(received.headers.size(), 2U);
  EXPECT_LT(received.sizes[0], received.headers[0].size);
  EXPECT_EQ(received.lines[1], "failed: file became shorter while it was sent");
  EXPECT_EQ(received.lines[2], "file b 644 next");
  EXPECT_EQ(received.lines[3], "eof");
}

TEST_F(TreeStreamTest, aFileThatGrowsSendsNoMoreThanItsHeaderSaid) {
  sparseFile(docs("a"), muchMore);
  file("b", "next");
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readTreeStream, "me/Docs");
  TreeReceiver received;
  ASSERT_TRUE(received.take(*client.frame()));
  std::filesystem::resize_file(temp / docs("a"), muchMore + 1'000'000);
  while (auto frame = client.frame()) {
    if (!received.take(std::move(*frame))) break;
  }
  EXPECT_EQ(received.sizes[0], muchMore);
  EXPECT_EQ(received.lines[1], "file b 644 next");
  EXPECT_EQ(received.lines[2], "eof");
}

TEST_F(TreeStreamTest, hiddenSecretsAreInNoStream) {
  temp.file("home/.env", "env");
  temp.file("home/.ssh/id_rsa", "key");
  temp.file("home/text", "words");
  temp.link("home/link", ".env");
  startHost();
  EXPECT_EQ(ask({.op = ControlOp::share,
                 .name = "Home",
                 .folder = temp / "home",
                 .policy = SharePolicy::yes})
                .status,
            ControlResponse::Status::ok);
  EXPECT_EQ(tree("me/Home"), (ReceivedTree{"file text 644 words", "eof"}));
  EXPECT_EQ(tree("me/Home/.ssh"), ReceivedTree{"error: no such file"});
  for (const auto* secret : {".env", ".ssh/id_rsa", "link"}) {
    EXPECT_EQ(tree(std::string("me/Home/") + secret), ReceivedTree{"error: no such file"});
    EXPECT_EQ(readStream(std::string("me/Home/") + secret).end, "no such file");
  }
}

TEST_F(TreeStreamTest, aTreeOfAnyDepthEnds) {
  std::string path;
  for (int i = 0; i < 300; ++i) path += path.empty() ? "d" : "/d";
  folder(path);
  const auto received = tree("me/Docs");
  ASSERT_EQ(received.size(), 257U);
  EXPECT_TRUE(received[254].ends_with("/d 755"));
  EXPECT_TRUE(received[255].ends_with("/d 755: folder too deep"));
  EXPECT_EQ(received[256], "eof");
}

TEST_F(TreeStreamTest, manySmallFilesComeWhole) {
  constexpr int count = 2'000;
  for (int i = 0; i < count; ++i) {
    file("d" + std::to_string(i % 10) + "/" + std::to_string(i),
         std::string(static_cast<std::size_t>(i), 'x'));
  }
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readTreeStream, "me/Docs");
  const auto received = receiveTree(client);
  EXPECT_EQ(received.lines.back(), "eof");
  ASSERT_EQ(received.headers.size(), count + 10U);
  for (std::size_t i = 0; i < received.headers.size(); ++i) {
    EXPECT_EQ(received.headers[i].size, received.sizes[i]) << received.headers[i].relpath;
  }
}

TEST_F(TreeStreamTest, aHeaderThatIsLargerThanAWindowComesWhole) {
  constexpr int levels = 180;
  // Each of these characters takes six in JSON.
  const std::string name(250, '\x01');
  std::string path = name;
  UniqueFd at(::open((temp / "docs").c_str(), O_RDONLY | O_DIRECTORY));
  for (int i = 1; i < levels; ++i) path += "/" + name;
  for (int i = 0; i < levels; ++i) {
    ASSERT_EQ(::mkdirat(at.get(), name.c_str(), 0755), 0);
    at = UniqueFd(::openat(at.get(), name.c_str(), O_RDONLY | O_DIRECTORY));
  }
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readTreeStream, "me/Docs");
  const auto received = receiveTree(client);
  ASSERT_EQ(received.headers.size(), std::size_t{levels});
  EXPECT_EQ(received.headers.back().relpath, path);
  EXPECT_EQ(received.lines.back(), "eof");
}

TEST_F(TreeStreamTest, whatCannotBeOpenedForWantOfDescriptorsIsTold) {
  file("a/b/c", "1");
  temp.link(docs("z"), "a/b/c");
  startHost();
  const auto atRest = openDescriptors();
  for (int spare = 0; spare < 6; ++spare) {
    ASSERT_TRUE(eventually([&] { return openDescriptors() == atRest; }));
    StreamClient client(socketPath());
    ASSERT_TRUE(client.ask({.op = ControlOp::shares}).shares);
    const NoMoreDescriptors few(spare);
    client.begin(ControlOp::readTreeStream, "me/Docs");
    const auto received = receiveTree(client);
    if (received.headers.empty()) {
      EXPECT_EQ(received.lines, ReceivedTree{"error: out of descriptors or memory"});
    } else {
      EXPECT_EQ(received.headers.back().relpath, "z") << "with " << spare << " descriptors";
      EXPECT_EQ(received.lines.back(), "eof");
    }
  }
}

TEST_F(TreeStreamTest, aClientThatStopsReadingDoesNotHoldUpTheHostsEnd) {
  sparseFile(docs("a"), muchMore);
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readTreeStream, "me/Docs");
  ASSERT_TRUE(client.frame());
  host->stop();
  while (const auto frame = client.frame()) EXPECT_EQ(frame->tag, ControlStreamFrame::data);
}

TEST_F(TreeStreamTest, aClientThatHangsUpInMidStreamLeavesNothingBehind) {
  sparseFile(docs("a/b/c"), muchMore);
  startHost();
  const auto before = openDescriptors();
  {
    StreamClient client(socketPath());
    client.begin(ControlOp::readTreeStream, "me/Docs");
    ASSERT_TRUE(client.frame());
  }
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
}

#if defined(__linux__)
TEST_F(TreeStreamTest, whatMayNotBeReadIsToldAndTheWalkGoesOn) {
  folder("closed", 0);
  folder("listed");
  file("listed/f", "1");
  folder("listed/d");
  file("secret", "12345", 0);
  file("z", "end");
  ::chmod((temp / docs("listed")).c_str(), 0744);
  ::chmod(temp.path().c_str(), 0777);
  // The threads of a host that this one starts are no root's either.
  std::thread([&] {
    if (::geteuid() == 0) ::setfsuid(65'534);
    startHost();
    EXPECT_EQ(tree("me/Docs"),
              (ReceivedTree{"dir closed 0: permission denied", "dir listed 744",
                            "dir listed/d 0: permission denied", "file listed/f 0",
                            "failed: permission denied", "file secret 0",
                            "failed: permission denied", "file z 644 end", "eof"}));
    EXPECT_EQ(tree("me/Docs/closed"), ReceivedTree{"error: permission denied"});
    EXPECT_EQ(tree("me/Docs/secret"),
              (ReceivedTree{"file secret 0", "failed: permission denied", "eof"}));
    EXPECT_EQ(readStream("me/Docs/secret").end, "permission denied");
    host.reset();
  }).join();
  for (const auto* shut : {"closed", "listed"}) ::chmod((temp / docs(shut)).c_str(), 0755);
}
#endif

}  // namespace
}  // namespace tarnel::test
