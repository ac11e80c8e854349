#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <vector>

#include "ListeningSocket.h"
#include "control/UnixSocket.h"
#include "support/OpenDescriptors.h"
#include "support/TempDir.h"

namespace tarnel::test {
namespace {

using Kind = UnixSocketError::Kind;

// A path of exactly so many bytes inside the folder.
std::string pathOfLength(const TempDir& folder, std::size_t length, std::string_view unit = "n") {
  std::string path = folder / "";
  while (path.size() + unit.size() <= length) path += unit;
  path.resize(length, 'n');
  return path;
}

TEST(UnixSocket, aPathOf103BytesConnects) {
  const TempDir folder;
  const std::string path = pathOfLength(folder, 103);
  const UniqueFd listening = listeningSocket(path);
  const UniqueFd connected(connectUnixSocket(path).value_or(-1));
  EXPECT_TRUE(connected.valid());
}

TEST(UnixSocket, aPathOf104BytesIsTooLongAndNamed) {
  const TempDir folder;
  const std::string path = pathOfLength(folder, 104);
  const auto connected = connectUnixSocket(path);
  ASSERT_FALSE(connected.has_value());
  EXPECT_EQ(connected.error(), (UnixSocketError{.kind = Kind::pathTooLong, .path = path}));
  EXPECT_EQ(description(connected.error()), "unix socket path too long: " + path);
}

TEST(UnixSocket, charactersOfAPathCountByTheirBytes) {
  const TempDir folder;
  const std::string fits = pathOfLength(folder, 103, "\u00e9");
  const UniqueFd listening = listeningSocket(fits);
  EXPECT_TRUE(UniqueFd(connectUnixSocket(fits).value_or(-1)).valid());
  std::string twoMore = fits.substr(0, 102) + "\u00e9";
  EXPECT_EQ(connectUnixSocket(twoMore).error().kind, Kind::pathTooLong);
}

// Kept as the behaviour of every implementation of the protocol.
TEST(UnixSocket, aPathThatIsTooLongLeavesItsNewDescriptorOpen) {
  const std::size_t before = openDescriptors();
  ASSERT_FALSE(connectUnixSocket(std::string(104, 'x')).has_value());
  EXPECT_EQ(openDescriptors(), before + 1);
}

TEST(UnixSocket, aPathThatNamesNoFileIsMissing) {
  const TempDir folder;
  const UniqueFd listening = listeningSocket(folder / "s");
  const std::size_t before = openDescriptors();
  for (const std::string& path : {std::string(), folder / std::string("s\0t", 3)}) {
    const auto connected = connectUnixSocket(path);
    ASSERT_FALSE(connected.has_value());
    EXPECT_EQ(connected.error(),
              (UnixSocketError{.kind = Kind::connect, .path = {}, .error = ENOENT}));
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST(UnixSocket, aMissingSocketFailsAndLeavesNoDescriptor) {
  const TempDir folder;
  const std::size_t before = openDescriptors();
  const auto connected = connectUnixSocket(folder / "none.sock");
  ASSERT_FALSE(connected.has_value());
  EXPECT_EQ(connected.error(),
            (UnixSocketError{.kind = Kind::connect, .path = {}, .error = ENOENT}));
  EXPECT_EQ(description(connected.error()),
            std::string("connect() failed: ") + std::strerror(ENOENT));
  EXPECT_EQ(openDescriptors(), before);
}

TEST(UnixSocket, aSocketOnWhichNobodyListensRefusesAndLeavesNoDescriptor) {
  const TempDir folder;
  const std::string path = folder / "stale.sock";
  listeningSocket(path).reset();
  const std::size_t before = openDescriptors();
  const auto connected = connectUnixSocket(path);
  ASSERT_FALSE(connected.has_value());
  EXPECT_EQ(description(connected.error()),
            std::string("connect() failed: ") + std::strerror(ECONNREFUSED));
  EXPECT_EQ(openDescriptors(), before);
}

TEST(UnixSocket, theErrorsHaveFixedTexts) {
  const auto text = [](Kind kind) {
    return description(UnixSocketError{.kind = kind, .path = {}, .error = EACCES});
  };
  const std::string reason = std::strerror(EACCES);
  EXPECT_EQ(text(Kind::create), "socket() failed: " + reason);
  EXPECT_EQ(text(Kind::bind), "bind() failed: " + reason);
  EXPECT_EQ(text(Kind::listen), "listen() failed: " + reason);
  EXPECT_EQ(text(Kind::connect), "connect() failed: " + reason);
}

TEST(UnixSocket, theConnectedDescriptorBlocksAndIsClosedOnExec) {
  const TempDir folder;
  const std::string path = folder / "s";
  const UniqueFd listening = listeningSocket(path);
  const UniqueFd fd(connectUnixSocket(path).value_or(-1));
  ASSERT_TRUE(fd.valid());
  EXPECT_EQ(::fcntl(fd.get(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_NE(::fcntl(fd.get(), F_GETFD) & FD_CLOEXEC, 0);
}

TEST(UnixSocket, writingToAPeerThatHasGoneIsAnErrorAndNoSignal) {
  const TempDir folder;
  const std::string path = folder / "s";
  const UniqueFd listening = listeningSocket(path);
  const UniqueFd fd(connectUnixSocket(path).value_or(-1));
  acceptConnection(listening.get()).reset();
  EXPECT_EQ(writeWithoutSignal(fd.get(), "x"), -1);
  EXPECT_EQ(errno, EPIPE);
}

TEST(UnixSocket, aFullBacklogFailsAtOnceAndLeavesNoDescriptor) {
  const TempDir folder;
  const std::string path = folder / "s";
  const UniqueFd listening = listeningSocket(path, 1);
  std::vector<UniqueFd> waiting;
  std::optional<UnixSocketError> error;
  const auto start = std::chrono::steady_clock::now();
  while (!error && waiting.size() < 100) {
    const auto connected = connectUnixSocket(path);
    if (connected) {
      waiting.emplace_back(*connected);
    } else {
      error = connected.error();
    }
  }
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->kind, Kind::connect);
  EXPECT_EQ(error->error, EAGAIN);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  const std::size_t before = openDescriptors();
  EXPECT_FALSE(connectUnixSocket(path).has_value());
  EXPECT_EQ(openDescriptors(), before);
}

// The effective user of this process, for as long as it lives.
class ActingAs {
 public:
  explicit ActingAs(uid_t uid) { EXPECT_EQ(::seteuid(uid), 0); }
  ~ActingAs() { EXPECT_EQ(::seteuid(0), 0); }
};

constexpr uid_t nobody = 65'534;

TEST(UnixSocket, aListenerOfAnotherUserIsRefused) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root, to listen as another user";
  const TempDir folder;
  ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
  const std::string path = folder / "s";
  UniqueFd listening;
  {
    const ActingAs other(nobody);
    listening = listeningSocket(path);
  }
  const std::size_t before = openDescriptors();
  const auto connected = connectUnixSocket(path);
  ASSERT_FALSE(connected.has_value());
  EXPECT_EQ(connected.error(),
            (UnixSocketError{.kind = Kind::connect, .path = {}, .error = EACCES}));
  EXPECT_EQ(openDescriptors(), before);
}

TEST(UnixSocket, aListenerOfRootIsTrustedByEveryUser) {
  if (::getuid() != 0) GTEST_SKIP() << "needs root, to connect as another user";
  const TempDir folder;
  ASSERT_EQ(::chmod(folder.path().c_str(), 0777), 0);
  const std::string path = folder / "s";
  const UniqueFd listening = listeningSocket(path);
  ASSERT_EQ(::chmod(path.c_str(), 0666), 0);
  const ActingAs other(nobody);
  EXPECT_TRUE(UniqueFd(connectUnixSocket(path).value_or(-1)).valid());
}

TEST(UnixSocket, aPeerThatIsNoSocketIsNotTrusted) {
  const UniqueFd file(::open("/dev/null", O_RDONLY));
  EXPECT_FALSE(peerIsTrusted(file.get()));
}

TEST(UnixSocket, aReadableByteIsSeenAndNotTaken) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const UniqueFd reader(ends[0]);
  UniqueFd writer(ends[1]);
  errno = EDOM;
  EXPECT_FALSE(hasReadableByte(reader.get()));
  EXPECT_EQ(errno, EDOM);
  ASSERT_EQ(::write(writer.get(), "x", 1), 1);
  EXPECT_TRUE(hasReadableByte(reader.get()));
  char byte = 0;
  EXPECT_EQ(::read(reader.get(), &byte, 1), 1);
  writer.reset();
  EXPECT_FALSE(hasReadableByte(reader.get()));  // the end of the stream is not a byte
}

}  // namespace
}  // namespace tarnel::test
