// `readStream`: one file's bytes.
#include <sys/ioctl.h>

#include "StreamFixture.h"
#include "support/Eventually.h"
#include "support/OpenDescriptors.h"

namespace tarnel::test {
namespace {

class FileStreamTest : public StreamTest {
 protected:
  void expectError(const ReceivedFile& received, const std::string& message) {
    EXPECT_EQ(received.end, message);
    EXPECT_EQ(received.bytes, "");
  }
};

TEST_F(FileStreamTest, aFileComesInOneFrameAndEnds) {
  temp.file(docs("a"), "hello");
  const auto received = readStream("me/Docs/a");
  EXPECT_EQ(received.bytes, "hello");
  EXPECT_EQ(received.pieces, std::vector<std::size_t>{5});
  EXPECT_EQ(received.end, "eof");
}

TEST_F(FileStreamTest, anEmptyFileHasNoFrameButTheEnd) {
  temp.file(docs("a"));
  const auto received = readStream("me/Docs/a");
  EXPECT_EQ(received.pieces, std::vector<std::size_t>{});
  EXPECT_EQ(received.end, "eof");
}

TEST_F(FileStreamTest, noFrameHoldsMoreThanTheWindow) {
  constexpr auto window = static_cast<std::size_t>(ControlStreamFrame::window);
  std::string content(2 * window + 7, '\0');
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 31 >> 7);
  temp.file(docs("a"), content);
  const auto received = readStream("me/Docs/a");
  EXPECT_TRUE(received.bytes == content);
  EXPECT_EQ(received.pieces, (std::vector<std::size_t>{window, window, 7}));
  EXPECT_EQ(received.end, "eof");
}

TEST_F(FileStreamTest, aRangeCanBeAskedFor) {
  temp.file(docs("a"), "0123456789");
  EXPECT_EQ(readStream("me/Docs/a", 3).bytes, "3456789");
  EXPECT_EQ(readStream("me/Docs/a", 3, 4).bytes, "3456");
  EXPECT_EQ(readStream("me/Docs/a", {}, 4).bytes, "0123");
  EXPECT_EQ(readStream("me/Docs/a", 8, 100).bytes, "89");
  for (const std::int64_t offset : {std::int64_t{10}, std::int64_t{11}, INT64_MAX}) {
    const auto received = readStream("me/Docs/a", offset);
    EXPECT_EQ(received.bytes, "");
    EXPECT_EQ(received.end, "eof");
  }
  EXPECT_EQ(readStream("me/Docs/a", 0, 0).end, "eof");
}

TEST_F(FileStreamTest, aStreamThatCannotStartFailsWithAnErrorFrame) {
  temp.folder(docs("folder"));
  temp.file(docs("file"));
  expectError(readStream("me/Docs/none"), "no such file");
  expectError(readStream("me/Docs/folder"), "is a directory");
  expectError(readStream("me/Docs"), "is a directory");
  expectError(readStream("me/Docs/file/x"), "not a directory");
  for (const auto* location : {"", "me", "me/", "bob/Docs/file", "me/Docs/../s", "me/Docs/"}) {
    expectError(readStream(location), "no such file");
  }
  expectError(readStream({.op = ControlOp::readStream}), "no location given");
  expectError(readStream("me/Docs/file", -1), "invalid offset");
  expectError(readStream("me/Docs/file", 0, -1), "invalid length");
}

TEST_F(FileStreamTest, theFirstByteTellsAStreamFromALine) {
  startHost();
  RawClient client(socketPath());
  EXPECT_EQ(client.ask(R"({"op":"bridge"})")->front(), '{');
  // The message of the error frame is followed by the line of the next answer.
  const auto answer = client.ask(R"({"op":"readStream","name":"none"})"
                                 "\n"
                                 R"({"op":"bridge"})");
  EXPECT_EQ(answer, std::string("X\0\0\0\x0cno such file", 17) +
                        R"({"status":"error","message":"operation not served"})");
}

TEST_F(FileStreamTest, theConnectionServesTheNextRequest) {
  temp.file(docs("a"), "hello");
  startHost();
  StreamClient client(socketPath());
  for (int i = 0; i < 3; ++i) {
    client.begin(ControlOp::readStream, "me/Docs/a");
    EXPECT_EQ(receiveFile(client).bytes, "hello");
    client.begin(ControlOp::readStream, "me/Docs/none");
    EXPECT_EQ(receiveFile(client).end, "no such file");
    EXPECT_TRUE(client.ask({.op = ControlOp::stat, .name = "me/Docs/a"}).stat);
    EXPECT_EQ(client.ask({.op = ControlOp::read, .name = "me/Docs/a"}).dataBase64, "aGVsbG8=");
  }
}

TEST_F(FileStreamTest, streamsThatAreAskedForTogetherComeInOrder) {
  temp.file(docs("a"), "first");
  temp.file(docs("b"), "second");
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readStream, "me/Docs/a");
  client.begin(ControlOp::readStream, "me/Docs/b");
  EXPECT_EQ(receiveFile(client).bytes, "first");
  EXPECT_EQ(receiveFile(client).bytes, "second");
}

TEST_F(FileStreamTest, aFileThatBecomesShorterEndsWithAnError) {
  sparseFile(docs("a"), muchMore);
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readStream, "me/Docs/a");
  ASSERT_TRUE(client.frame());
  std::filesystem::resize_file(temp / docs("a"), 1'000);
  const auto rest = receiveFile(client);
  EXPECT_EQ(rest.end, "file became shorter while it was sent");
  EXPECT_LT(rest.bytes.size(), static_cast<std::size_t>(muchMore));
}

TEST_F(FileStreamTest, whatWasPromisedOfAFileThatBecameShorterIsZeros) {
  temp.file(docs("before"), Bytes(60'000, 'b'));
  sparseFile(docs("a"), muchMore);
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readStream, "me/Docs/before");
  EXPECT_EQ(receiveFile(client).bytes.size(), 60'000U);
  client.begin(ControlOp::readStream, "me/Docs/a");
  ASSERT_TRUE(client.frame());
  std::filesystem::resize_file(temp / docs("a"), 1'000);
  const auto rest = receiveFile(client);
  EXPECT_EQ(rest.bytes.find_first_not_of('\0'), Bytes::npos) << "bytes of another file";
}

// The system empties what it holds of a file behind the file's new end, also where a socket still
// refers to it. The end of a stream says that every byte was the file's.
TEST_F(FileStreamTest, aFileThatBecomesShorterWhileItIsUnderWayArrivesWholeOrFails) {
  constexpr std::size_t frames = 32;
  constexpr std::size_t size = frames * static_cast<std::size_t>(ControlStreamFrame::window);
  constexpr std::size_t streamed = size + (frames + 1) * 5;
  constexpr std::size_t alwaysFits = 100'000;  // between host and reader
  const Bytes content(size, 'x');
  startHost();
  // How much the reader has not taken yet when it happens.
  for (const std::size_t left : {100'000, 300'000, 1'000'000, 2'000'000, 4'000'000}) {
    temp.file(docs("a"), content);
    RawClient client(socketPath());
    ASSERT_TRUE(client.send("{\"op\":\"readStream\",\"name\":\"me/Docs/a\"}\n"));
    const UniqueFd connection(client.release());
    ReceiveBuffer received;
    while (received.size() < streamed - left) ASSERT_GT(received.fill(connection.get()), 0);
    const auto isUnderWay = [&] {
      int waiting = 0;
      EXPECT_EQ(::ioctl(connection.get(), FIONREAD, &waiting), 0);
      return static_cast<std::size_t>(waiting) >= std::min(streamed - received.size(), alwaysFits);
    };
    ASSERT_TRUE(eventually(isUnderWay));
    std::filesystem::resize_file(temp / docs("a"), size - 20'001);
    Bytes bytes;
    std::uint8_t end = 0;
    while (end == 0) {
      auto frame = ControlStreamFrame::parse(received);
      ASSERT_TRUE(frame);
      if (!*frame) {
        ASSERT_GT(received.fill(connection.get()), 0);
      } else if ((*frame)->tag == ControlStreamFrame::data) {
        bytes += (*frame)->payload;
      } else {
        end = (*frame)->tag;
      }
    }
    EXPECT_TRUE(end == ControlStreamFrame::error || bytes == content) << left;
  }
}

TEST_F(FileStreamTest, aFileThatGrowsEndsWhereItEndedBefore) {
  sparseFile(docs("a"), muchMore);
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readStream, "me/Docs/a");
  const auto first = client.frame();
  ASSERT_TRUE(first);
  std::filesystem::resize_file(temp / docs("a"), muchMore + 1'000'000);
  const auto rest = receiveFile(client);
  EXPECT_EQ(rest.end, "eof");
  EXPECT_EQ(first->payload.size() + rest.bytes.size(), static_cast<std::size_t>(muchMore));
}

TEST_F(FileStreamTest, aWithdrawnShareGoesOnServingTheStreamThatHadBegun) {
  sparseFile(docs("a"), muchMore);
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readStream, "me/Docs/a");
  ASSERT_TRUE(client.frame());
  EXPECT_EQ(ask({.op = ControlOp::unshare, .name = "Docs"}), ControlResponse::ok());
  EXPECT_EQ(receiveFile(client).end, "eof");
  client.begin(ControlOp::readStream, "me/Docs/a");
  EXPECT_EQ(receiveFile(client).end, "no such file");
}

TEST_F(FileStreamTest, aClientThatStopsReadingDoesNotHoldUpTheHostsEnd) {
  sparseFile(docs("a"), muchMore);
  startHost();
  StreamClient client(socketPath());
  client.begin(ControlOp::readStream, "me/Docs/a");
  ASSERT_TRUE(client.frame());
  EXPECT_EQ(bytes("me/Docs/a", 0, 1), std::string(1, '\0')) << "others are served meanwhile";
  host->stop();
  EXPECT_EQ(receiveFile(client).end, "hung up");
}

TEST_F(FileStreamTest, aClientThatHangsUpInMidStreamLeavesNothingBehind) {
  sparseFile(docs("a"), muchMore);
  startHost();
  const auto before = openDescriptors();
  for (int i = 0; i < 5; ++i) {
    StreamClient client(socketPath());
    client.begin(ControlOp::readStream, "me/Docs/a");
    ASSERT_TRUE(client.frame());
  }
  EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
  EXPECT_TRUE(stat("me/Docs/a").stat);
}

#if defined(__linux__)
TEST_F(FileStreamTest, aFileWithoutASizeIsReadToItsEnd) {
  auto chosen = options();
  chosen.shares = {{.name = "Proc", .folder = "/proc/self"}};
  startHost(std::move(chosen));
  const auto received = readStream("me/Proc/status");
  EXPECT_EQ(received.end, "eof");
  EXPECT_TRUE(received.bytes.starts_with("Name:"));
}
#endif

}  // namespace
}  // namespace tarnel::test
