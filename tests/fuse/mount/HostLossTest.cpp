// A host that goes away under its readers, and comes back.
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "DirectoryStream.h"
#include "ScriptedMountFixture.h"
#include "support/Eventually.h"

namespace tarnel::test {
namespace {

using Clock = std::chrono::steady_clock;

// What a lost host may look like: which one it is depends on the errno that the end of the stream
// happened to find.
bool saysThatTheHostIsGone(int error) { return error == ENOTCONN || error == ETIMEDOUT; }

int statError(const std::string& path) {
  struct stat status{};
  return errnoOf([&] { return ::stat(path.c_str(), &status); });
}

class HostLossTest : public MountFixture {
 protected:
  HostLossTest() {
    share.file("a", bytes);
    share.file("b", "bee");
  }
  // A read that no cache answers.
  int directReadError(int fd) {
    alignas(4096) static thread_local char buffer[65'536];
    const ssize_t got = ::pread(fd, buffer, sizeof buffer, 0);
    if (got < 0) return errno;
    EXPECT_TRUE(std::string_view(buffer, sizeof buffer) ==
                std::string_view(bytes).substr(0, sizeof buffer));
    return 0;
  }
  const std::string bytes = someBytes(300'000);
};

TEST_F(HostLossTest, everythingFailsCleanlyAndWorksAgainWhenTheHostIsBack) {
  mountShare(nothingKept);
  EXPECT_TRUE(contentOf(at("a")) == bytes);
  const UniqueFd fd(::open(at("a").c_str(), O_RDONLY | O_DIRECT | O_CLOEXEC));
  ASSERT_TRUE(fd.valid());
  for (const int signal : {SIGKILL, SIGTERM}) {
    host->end(signal);
    EXPECT_TRUE(saysThatTheHostIsGone(statError(at("b"))));
    EXPECT_TRUE(saysThatTheHostIsGone(directReadError(fd.get())));
    EXPECT_TRUE(saysThatTheHostIsGone(listError(*mount / "me")));
    EXPECT_EQ(statError(*mount / ""), 0);
    startHost();
    EXPECT_EQ(contentOf(at("b")), "bee");
    EXPECT_EQ(directReadError(fd.get()), 0);
    EXPECT_EQ(DirectoryStream(at("")).rest().size(), 4U);
  }
}

TEST_F(HostLossTest, readersUnderARestartingHostGetTheirBytesOrAnErrorAndNeverAnythingElse) {
  mountShare(nothingKept);
  std::atomic<bool> over = false;
  std::atomic<int> good = 0;
  std::atomic<int> bad = 0;
  const auto count = [&](int error) {
    EXPECT_TRUE(error == 0 || saysThatTheHostIsGone(error)) << named(error);
    ++(error == 0 ? good : bad);
  };
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&, path = at("a"), small = at("b")] {
      const UniqueFd fd(::open(path.c_str(), O_RDONLY | O_DIRECT | O_CLOEXEC));
      while (!over) {
        count(directReadError(fd.get()));
        const auto content = contentOf(small);
        count(content ? 0 : content.error());
        EXPECT_EQ(content.value_or("bee"), "bee");
      }
    });
  }
  for (int i = 0; i < 4; ++i) {
    const int before = good;
    EXPECT_TRUE(eventually([&] { return good > before + 20; }));
    host->end(SIGKILL);
    const int failures = bad;
    EXPECT_TRUE(eventually([&] { return bad > failures + 3; }));
    startHost();
  }
  over = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_TRUE(contentOf(at("a")) == bytes);
}

TEST_F(HostLossTest, knownAttributesAreServedWhileTheHostIsAway) {
  mountShare("attr_timeout=0,entry_timeout=600");
  ASSERT_EQ(statError(at("a")), 0);
  host->end(SIGKILL);
  struct stat status{};
  // The first question may find the old connection just closing: a time-out serves nothing.
  ASSERT_TRUE(eventually([&] { return ::stat(at("a").c_str(), &status) == 0; }));
  EXPECT_EQ(status.st_size, 300'000);
  EXPECT_EQ(::stat(at("a").c_str(), &status), 0);
  EXPECT_TRUE(saysThatTheHostIsGone(statError(at("b"))));  // never seen
}

TEST_F(HostLossTest, aMountWithoutAHostFillsWhenOneComes) {
  mount = std::make_unique<TestMount>(socket(), nothingKept);
  EXPECT_EQ(statError(mount->path()), 0);
  EXPECT_EQ(statError(at("b")), ENOTCONN);
  startHost();
  EXPECT_EQ(contentOf(at("b")), "bee");
}

class SilentHostTest : public ScriptedMountFixture {};

TEST_F(SilentHostTest, statisticsAndTheRootsAttributesNeverWait) {
  host.answer({.op = ControlOp::shares}, HostReply().stall());
  host.answer({.op = ControlOp::stat, .path = "me/Docs"}, HostReply().stall());
  mountTree();
  Program waiting({"stat", at("")});
  ASSERT_TRUE(eventually([&] { return host.asked(ControlOp::shares) > 0; }));
  const auto begun = Clock::now();
  struct statvfs facts{};
  EXPECT_EQ(::statvfs(mount->path().c_str(), &facts), 0);
  EXPECT_EQ(statError(mount->path()), 0);
  EXPECT_EQ(runProgram({"df", mount->path()}).status, 0);
  EXPECT_EQ(runProgram({"ls", "-ld", mount->path()}).status, 0);
  EXPECT_LT(Clock::now() - begun, std::chrono::seconds(2));
  EXPECT_FALSE(waiting.hasEnded());
}

TEST_F(SilentHostTest, aQuestionEndsAtTheDeadline) {
  host.answer({.op = ControlOp::stat, .path = "me/Docs/a"}, HostReply().stall());
  host.file("me/Docs/b", "bee");
  mountTree();
  const auto begun = Clock::now();
  EXPECT_EQ(statError(at("a")), ETIMEDOUT);
  EXPECT_GE(Clock::now() - begun, std::chrono::milliseconds(4900));
  EXPECT_LT(Clock::now() - begun, std::chrono::seconds(8));
  EXPECT_EQ(contentOf(at("b")), "bee");
}

}  // namespace
}  // namespace tarnel::test
